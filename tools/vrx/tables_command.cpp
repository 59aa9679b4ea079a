// vrx tables: the illuminants, or one weighting table with its white point.

#include <array>
#include <bit>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/platform/resources.h>

#include "tools/vrx/command.h"
#include "tools/vrx/commands.h"
#include "tools/vrx/conditions.h"
#include "tools/vrx/output.h"

namespace vrx::tool {
namespace {

struct TablesOptions {
  std::string illuminant;
  std::string observer = "10";
  Format format = Format::kTable;
};

WeightingTable LoadTable(int32_t illuminant, int32_t observer) {
  char name[16];
  std::snprintf(name, sizeof name, "ILL%02d_%02d", illuminant, ObserverDegrees(observer));
  WeightingTable table{};
  std::memcpy(table.data(), FindResource("PWD", name).data(), sizeof table);
  return table;
}

void ListIlluminants(Format format) {
  std::vector<Column> columns{{"number"}, {"code"}, {"description"}};
  for (int32_t observer = 0; observer < 2; ++observer) {
    for (const char* component : {"Xn", "Yn", "Zn"}) {
      columns.push_back({component + std::to_string(ObserverDegrees(observer)),
                         std::string(component) + " " + ObserverName(observer), 3});
    }
  }
  OutputStream output;
  const auto rows = MakeRowWriter(format, output, std::move(columns));
  for (const int32_t illuminant : IlluminantsInDisplayOrder()) {
    rows->Integer(illuminant);
    rows->Text(IlluminantCode(illuminant));
    rows->Text(IlluminantDescription(illuminant));
    for (int32_t observer = 0; observer < 2; ++observer) {
      const WeightingTable table = LoadTable(illuminant, observer);
      for (std::size_t k = kTableWhite; k < kTableDoubles; ++k) rows->Number(table[k]);
    }
    rows->EndRow();
  }
  rows->Finish();
  output.Finish();
}

void PrintTable(int32_t illuminant, int32_t observer, Format format) {
  OutputStream output;
  const auto rows = MakeRowWriter(format, output, {{"nm"}, {"X", "", 3}, {"Y", "", 3}, {"Z", "", 3}});
  const WeightingTable table = LoadTable(illuminant, observer);
  const auto row = [&](const std::string& label, double x, double y, double z) {
    rows->Text(label);
    for (const double value : {x, y, z}) rows->Number(value);
    rows->EndRow();
  };
  for (std::size_t i = 0; i < kWavelengths; ++i) {
    const auto nm = static_cast<std::size_t>(kFirstWavelength) + kWavelengthStep * i;
    row(std::to_string(nm), table[i], table[kWavelengths + i], table[2 * kWavelengths + i]);
  }
  row("white", table[kTableWhite], table[kTableWhite + 1], table[kTableWhite + 2]);
  rows->Finish();
  output.Finish();
}

void RunTables(const TablesOptions& options) {
  if (options.illuminant.empty()) return ListIlluminants(options.format);
  PrintTable(ParseIlluminant(options.illuminant), ParseObserver(options.observer), options.format);
}

}  // namespace

void AddTables(CLI::App& app, int& status) {
  const auto options = std::make_shared<TablesOptions>();
  CLI::App* command = app.add_subcommand("tables", "List the illuminants, or print one weighting table");
  command->add_option("ILLUMINANT", options->illuminant, "Code (D65) or number of an illuminant");
  command->add_option("OBSERVER", options->observer, "2 or 10 (degrees)")->option_text("[10]");
  AddFormatOption(*command, options->format);
  command->footer(
      "Examples:\n"
      "  vrx tables                        the illuminants in display order, with their white points\n"
      "  vrx tables D65 10                 the weights at 360 ... 750 nm and the white point\n"
      "  vrx tables CWF 2 --format csv     the same for another program\n");
  command->callback([options, &status] {
    RunTables(*options);
    status = kExitPass;
  });
}

}  // namespace vrx::tool
