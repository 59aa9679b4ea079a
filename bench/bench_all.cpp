// Runs every benchmark program, prints one table of ratios, and writes the plots.
//
//   bench_all [--svg FOLDER]

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "bench/svg_plot.h"

namespace vrx::bench {
namespace {

constexpr const char* kPrograms[] = {
    "batch_bench",          "colorimetry_bench",   "numeric_elementary_bench",
    "numeric_matrix_bench", "display_color_bench", "colorant_bench",
    "ellipse_fit_bench",    "xml_bench",           "judge_bench"};

// The fields of a line; they are parted by tabs.
std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields;
  std::size_t from = 0;
  for (std::size_t tab; (tab = line.find('\t', from)) != std::string::npos; from = tab + 1) {
    fields.push_back(line.substr(from, tab - from));
  }
  fields.push_back(line.substr(from, line.find('\n', from) - from));
  return fields;
}

// Prints the rows of a program as they come, and adds those that are ratios of speed to `bars`. False when it fails.
bool RunProgram(const std::string& command, const char* name, std::vector<Bar>& bars) {
  std::FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return false;
  char buffer[1024];
  while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) {
    const std::vector<std::string> fields = Fields(buffer);
    if (fields.size() != 7) continue;
    const double ratio = std::atof(fields[4].c_str());
    std::printf("%-24s %-44s %-30s %12s %12s %8.2f   %s\n", name, fields[0].c_str(), fields[1].c_str(),
                fields[2].c_str(), fields[3].c_str(), ratio, fields[5].c_str());
    std::fflush(stdout);
    if (fields[6] == "0" && fields[1] != "on one") bars.push_back({fields[0] + " / " + fields[1], ratio});
  }
  return pclose(pipe) == 0;
}

}  // namespace
}  // namespace vrx::bench

int main(int argc, char** argv) {
  using namespace vrx::bench;
  const std::string self = argv[0];
  const std::string folder = self.find('/') == std::string::npos ? "" : self.substr(0, self.rfind('/') + 1);
  const bool plots = argc == 3 && std::strcmp(argv[1], "--svg") == 0;
  std::vector<Bar> bars;
  bool good = true;
  std::printf("%-24s %-44s %-30s %12s %12s %8s   %s\n", "program", "work", "peer", "ours", "peer's", "ratio",
              "reach");
  for (const char* name : kPrograms) {
    std::string command = "'" + folder + name + "' --tsv";
    if (plots && std::strcmp(name, "batch_bench") == 0) command += std::string(" --svg '") + argv[2] + "'";
    if (!RunProgram(command, name, bars)) std::fprintf(stderr, "%s failed\n", name), good = false;
  }
  if (plots)
    WriteBarPlot(std::string(argv[2]) + "/bench_peers.svg", "How many times faster than the peer", bars);
  return good ? 0 : 1;
}
