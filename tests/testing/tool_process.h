// The tool as a process: arguments, files and pipes in, an exit status and two streams out.

#ifndef TESTS_TESTING_TOOL_PROCESS_H_
#define TESTS_TESTING_TOOL_PROCESS_H_

#include <gtest/gtest.h>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "tests/testing/temporary_folder.h"

namespace vrx::test {

/// The value that a text or a file has; a discarded one when it is not JSON. Made in one source: a parser is much to compile.
nlohmann::json ParseJson(const std::string& text);
nlohmann::json ReadJson(const std::string& path);

std::vector<std::string> Lines(const std::string& text);

/// A test of the tool, in a folder of its own.
class ToolProcess : public testing::Test {
 protected:
  struct Result {
    int status;
    std::string out, err;
  };

  /// Runs `vrx ARGUMENTS`; a redirection may follow them. File names are those of the folder.
  Result Run(const std::string& arguments);
  /// Runs a command of the shell, in the folder.
  Result RunByShell(const std::string& command);

  /// Runs that are refused (arguments, what the message has in it): status 2, and nothing on standard output.
  void ExpectRefused(std::initializer_list<std::pair<std::string, std::string>> rows);

  /// Runs `vrx ARGUMENTS --format json`, which must end well, and gives what it printed.
  nlohmann::json RunJson(const std::string& arguments);

  /// The first line of a table of curves, measured every 10 nm, and a curve of so many percent from 400 to 700 nm.
  static std::string Header(const std::string& columns = "id", int first = 400, int last = 700);
  static std::string Flat(const std::string& label, const std::string& percent);

  TemporaryFolder folder_;
};

}  // namespace vrx::test

#endif  // TESTS_TESTING_TOOL_PROCESS_H_
