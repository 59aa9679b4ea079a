// The tool as a process: arguments, files and pipes in, an exit status and two streams out.

#ifndef TESTS_TESTING_TOOL_PROCESS_H_
#define TESTS_TESTING_TOOL_PROCESS_H_

#include <cstdlib>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/wait.h>

#include "tests/testing/temporary_folder.h"

namespace vrx::test {

/// A test of the tool, in a folder of its own. VRX_TOOL is its path.
class ToolProcess : public testing::Test {
 protected:
  struct Result {
    int status;
    std::string out, err;
  };

  /// Runs `vrx ARGUMENTS`; a redirection may follow them. File names are those of the folder.
  Result Run(const std::string& arguments) {
    const std::string command = "cd " + (folder_ / "") + " && " VRX_TOOL " " + arguments;
    const int ended =
        std::system(("{ " + command + " ; } >" + (folder_ / "out") + " 2>" + (folder_ / "err")).c_str());
    return {WIFEXITED(ended) ? WEXITSTATUS(ended) : -1, folder_.Read("out"), folder_.Read("err")};
  }

  /// Runs `vrx ARGUMENTS --format json`, which must end well, and gives what it printed.
  nlohmann::json RunJson(const std::string& arguments) {
    const Result result = Run(arguments + " --format json");
    EXPECT_EQ(result.status, 0) << arguments << "\n" << result.err;
    return nlohmann::json::parse(result.out, nullptr, false);
  }

  TemporaryFolder folder_;
};

}  // namespace vrx::test

#endif  // TESTS_TESTING_TOOL_PROCESS_H_
