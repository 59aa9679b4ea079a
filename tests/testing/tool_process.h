// The tool as a process: arguments, files and pipes in, an exit status and two streams out.

#ifndef TESTS_TESTING_TOOL_PROCESS_H_
#define TESTS_TESTING_TOOL_PROCESS_H_

#include <cstdlib>
#include <gtest/gtest.h>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/wait.h>
#include <utility>

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

  /// Runs that are refused (arguments, what the message has in it): status 2, and nothing on standard output.
  void ExpectRefused(std::initializer_list<std::pair<std::string, std::string>> rows) {
    for (const auto& [arguments, reason] : rows) {
      const Result result = Run(arguments);
      EXPECT_EQ(result.status, 2) << arguments;
      EXPECT_NE(result.err.find(reason), std::string::npos) << arguments << "\n" << result.err;
      EXPECT_EQ(result.out, "") << arguments;
    }
  }

  /// Runs `vrx ARGUMENTS --format json`, which must end well, and gives what it printed.
  nlohmann::json RunJson(const std::string& arguments) {
    const Result result = Run(arguments + " --format json");
    EXPECT_EQ(result.status, 0) << arguments << "\n" << result.err;
    return nlohmann::json::parse(result.out, nullptr, false);
  }

  /// The first line of a table of curves, measured every 10 nm, and a curve of so many percent from 400 to 700 nm.
  static std::string Header(const std::string& columns = "id", int first = 400, int last = 700) {
    std::string row = columns;
    for (int nm = first; nm <= last; nm += 10) row += "," + std::to_string(nm);
    return row + "\n";
  }
  static std::string Flat(const std::string& label, const std::string& percent) {
    std::string row = label;
    for (int i = 0; i < 31; ++i) row += "," + percent;
    return row + "\n";
  }

  TemporaryFolder folder_;
};

}  // namespace vrx::test

#endif  // TESTS_TESTING_TOOL_PROCESS_H_
