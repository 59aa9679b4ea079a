// vrx tables: the illuminants, or one weighting table with its white point.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/single_figures.h>
#include <vrxmath/colorimetry/user_illuminants.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/colorimetry/weighting.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct TablesOptions {
  std::string illuminant;
  std::string observer = "10";
  IlluminantFileOptions illuminantFiles;
  Format format = Format::kTable;
};

void ListIlluminants(Format format) {
  std::vector<Column> columns{{"number"}, {"code"}, {"description"}};
  for (int32_t observer = 0; observer < 2; ++observer) {
    for (const char* component : {"Xn", "Yn", "Zn"}) {
      columns.push_back(
          {component + std::to_string(DegreesOf(observer)),
           std::string(component) + " " + IlluminantName(vrxIllumA, observer, kNameObserver).ToUtf8(), 3});
    }
  }
  columns.push_back({"cct", "CCT, K", 0});
  columns.push_back({"duv", "Duv", 5});
  OutputStream output;
  const auto rows = MakeRowWriter(format, output, std::move(columns));
  CTrisValues white;
  CIllumArray illuminants = IlluminantDisplayOrder();
  for (const vrxUserIllum number : RegisteredUserIlluminants()) illuminants.Add(IlluminantOf(number));
  for (const vrxIlluminant illuminant : illuminants) {
    rows->Integer(illuminant);
    rows->Text(CodeOf(illuminant));
    rows->Text(IlluminantName(illuminant, kObserver10, kNameDescription).ToUtf8());
    for (int32_t observer = 0; observer < 2; ++observer) {
      WhitePoint(illuminant, observer, white);
      for (const double component : white) rows->Number(component);
    }
    WhitePoint(illuminant, kObserver2, white);
    rows->Number(CorrelatedColorTemperature(illuminant, kObserver2, white));
    rows->Number(PlanckianDistance(illuminant, kObserver2, white));
    rows->EndRow();
  }
  rows->Finish();
  output.Finish();
}

void PrintTable(vrxIlluminant illuminant, int32_t observer, Format format) {
  OutputStream output;
  const auto rows = MakeRowWriter(format, output, {{"nm"}, {"X", "", 3}, {"Y", "", 3}, {"Z", "", 3}});
  const double* const table = WeightTable(illuminant, observer);
  const auto row = [&](const std::string& label, double x, double y, double z) {
    rows->Text(label);
    for (const double value : {x, y, z}) rows->Number(value);
    rows->EndRow();
  };
  for (int32_t i = 0; i < kWavelengths; ++i) {
    row(std::to_string(kFirstWavelength + kWavelengthStep * i), table[i], table[kWavelengths + i],
        table[2 * kWavelengths + i]);
  }
  row("white", table[kTableWhite], table[kTableWhite + 1], table[kTableWhite + 2]);
  rows->Finish();
  output.Finish();
}

void RunTables(const TablesOptions& options) {
  options.illuminantFiles.Register();
  if (options.illuminant.empty()) return ListIlluminants(options.format);
  PrintTable(ParseIlluminant(options.illuminant), ParseObserver(options.observer), options.format);
}

}  // namespace

void AddTables(Command& tool) {
  const auto options = std::make_shared<TablesOptions>();
  Command command = tool.AddCommand("tables", "List the illuminants, or print one weighting table");
  command.AddOption("ILLUMINANT", options->illuminant, "Code or number of an illuminant, such as D65");
  command.AddOption("OBSERVER", options->observer, "Observer in degrees, 2 or 10").Shows("[10]");
  AddIlluminantFileOptions(command, options->illuminantFiles);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "Examples:\n"
      "  vrx tables                        # the illuminants in display order, with their white points\n"
      "  vrx tables D65 10                 # the weights at 360 ... 750 nm and the white point\n"
      "  vrx tables CWF 2 --format csv     # the same for another program\n");
  command.SetAction([options] {
    RunTables(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
