// What the tests of calibrate, match and correct have in common: real paints and their formulas, flat curves, and curves of
// formulas as files.

#ifndef TESTS_TOOLS_MATCHING_COMMANDS_H_
#define TESTS_TOOLS_MATCHING_COMMANDS_H_

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "tests/testing/tool_process.h"

namespace vrx::tool {

using nlohmann::json;
using vrx::test::ReadJson;

inline const std::string kPaints = VRX_SOURCE_DIR "/examples/acrylic_paints.json";
inline const std::string kFormulas = VRX_SOURCE_DIR "/examples/acrylic_formulas.json";

/// A row of a curve that is the same at every wavelength, but for a hole at 500 nm if one is asked for.
inline std::string FlatRow(std::string row, const char* percent, bool hasHole = false) {
  for (int nm = 360; nm <= 750; nm += 10) row += nm == 500 && hasHole ? "," : std::string(",") + percent;
  return row + "\n";
}

class MatchingCommands : public test::ToolProcess {
 protected:
  static std::string Wide() { return Header("id", 360, 750); }
  // The exit status of `vrx ARGUMENTS`.
  int Run(const std::string& arguments) { return ToolProcess::Run(arguments + " </dev/null").status; }
  // Refuses `rows`, and nothing that begins with "new" was written.
  void ExpectRefusals(std::initializer_list<std::pair<std::string, std::string>> rows) {
    ExpectRefused(rows);
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "")) {
      EXPECT_FALSE(entry.path().filename().string().starts_with("new")) << entry.path();
    }
  }
  // Curves of formulas, as a file of the folder.
  void WriteCurves(const std::string& system, const std::string& formulas, const char* name,
                   double noise = 0.0) {
    std::string rows = Wide();
    uint32_t state = 1;
    for (const json& row : RunJson("predict " + system + " " + formulas)) {
      rows += row["id"];
      for (int nm = 360; nm <= 750; nm += 10) {
        state = 1664525u * state + 1013904223u;
        const double off = noise * (state / 2147483648.0 - 1.0);
        rows += "," + json(row[std::to_string(nm)].get<double>() + off).dump();
      }
      rows += "\n";
    }
    folder_.Write(name, rows);
  }
};

/// The total of the amounts of a text such as 1:94;7:6.
inline double TotalOf(const std::string& formula) {
  double total = 0.0;
  for (std::size_t at = 0; (at = formula.find(':', at)) != std::string::npos;) {
    total += std::strtod(formula.c_str() + ++at, nullptr);
  }
  return total;
}

}  // namespace vrx::tool

#endif  // TESTS_TOOLS_MATCHING_COMMANDS_H_
