#include "tests/testing/tool_process.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/wait.h>

namespace vrx::test {

nlohmann::json ParseJson(const std::string& text) {
  return nlohmann::json::parse(text, nullptr, false);
}

nlohmann::json ReadJson(const std::string& path) {
  return nlohmann::json::parse(std::ifstream(path), nullptr, false);
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

ToolProcess::Result ToolProcess::Run(const std::string& arguments) {
  return RunByShell(VRX_TOOL " " + arguments);
}

ToolProcess::Result ToolProcess::RunByShell(const std::string& command) {
  const std::string there = "{ cd " + (folder_ / "") + " && " + command + " ; }";
  const int ended = std::system((there + " >" + (folder_ / "out") + " 2>" + (folder_ / "err")).c_str());
  return {WIFEXITED(ended) ? WEXITSTATUS(ended) : -1, folder_.Read("out"), folder_.Read("err")};
}

void ToolProcess::ExpectRefused(std::initializer_list<std::pair<std::string, std::string>> rows) {
  for (const auto& [arguments, reason] : rows) {
    const Result result = Run(arguments);
    EXPECT_EQ(result.status, 2) << arguments;
    EXPECT_NE(result.err.find(reason), std::string::npos) << arguments << "\n" << result.err;
    EXPECT_EQ(result.out, "") << arguments;
  }
}

nlohmann::json ToolProcess::RunJson(const std::string& arguments) {
  const Result result = Run(arguments + " --format json");
  EXPECT_EQ(result.status, 0) << arguments << "\n" << result.err;
  return ParseJson(result.out);
}

std::string ToolProcess::Header(const std::string& columns, int first, int last) {
  std::string row = columns;
  for (int nm = first; nm <= last; nm += 10) row += "," + std::to_string(nm);
  return row + "\n";
}

std::string ToolProcess::Flat(const std::string& label, const std::string& percent) {
  std::string row = label;
  for (int i = 0; i < 31; ++i) row += "," + percent;
  return row + "\n";
}

}  // namespace vrx::test
