// vrx munsell: the Munsell notation of samples, and the colour of a notation.

#include <memory>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/munsell.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/input/sample_color.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct MunsellOptions {
  std::string file;
  std::string notations;  // separated by commas
  CurveInputOptions input;
  Format format = Format::kTable;
};

std::unique_ptr<RowWriter> MunsellRows(const MunsellOptions& options, bool hasGeometries,
                                       OutputStream& output) {
  std::vector<Column> columns{{"id"}};
  if (hasGeometries) columns.push_back({"geometry"});
  for (const Column& column : std::vector<Column>{{"notation"},
                                                  {"hue", "hue", 2},
                                                  {"value", "value", 2},
                                                  {"chroma", "chroma", 2},
                                                  {"extrapolated"},
                                                  {"X"},
                                                  {"Y"},
                                                  {"Z"}})
    columns.push_back(column);
  return MakeRowWriter(options.format, output, columns);
}

void AddNotationRow(const MunsellColor& notation, const Xyz& xyz, RowWriter& rows) {
  rows.Text(MunsellText(notation));
  const bool isKnown = !IsUnset(notation.value);
  for (const double number : {notation.hue, notation.value, notation.chroma})
    isKnown ? rows.Known(number) : rows.Number(kUnset);
  rows.Text(!isKnown                  ? ""
            : notation.isExtrapolated ? "yes"
                                      : "no",
            notation.isExtrapolated ? Tint::kWarning : Tint::kPlain);
  for (const double number : {xyz.X, xyz.Y, xyz.Z}) rows.Number(number);
  rows.EndRow();
}

void AddNotations(const MunsellOptions& options, OutputStream& output) {
  const auto rows = MunsellRows(options, false, output);
  for (const std::string& text : SplitList(options.notations, ',')) {
    std::optional<MunsellColor> notation = ParseMunsell(text);
    if (!notation)
      throw InputError("--notation: \"" + text + "\" is no Munsell notation such as \"5R 4/10\" or \"N 5\"");
    const Xyz xyz = XyzFromMunsell(*notation);
    rows->Text(text);
    AddNotationRow(*notation, xyz, *rows);
  }
  rows->Finish();
}

void AddMunsellSamples(const MunsellOptions& options, OutputStream& output) {
  CurveReader samples = OpenCurves(options.file, options.input, Content::kCurvesOrColors);
  samples.RequireLight(vrxIllumC, kObserver2);
  const auto rows = MunsellRows(options, samples.HasGeometries(), output);
  CurveRow row;
  while (samples.Next(row)) {
    const Xyz xyz = XyzOf(row, vrxIllumC, kObserver2);
    rows->Text(row.id);
    if (samples.HasGeometries()) rows->Text(GeometryName(row.geometry));
    AddNotationRow(MunsellFromXyz(xyz), xyz, *rows);
  }
  rows->Finish();
  WarnAboutInput(samples);
}

void RunMunsell(const MunsellOptions& options) {
  if (options.file.empty() == options.notations.empty())
    throw InputError("FILE or --notation says of what: one of them is needed");
  OutputStream output;
  options.file.empty() ? AddNotations(options, output) : AddMunsellSamples(options, output);
  output.Finish();
}

}  // namespace

void AddMunsell(Command& tool) {
  const auto options = std::make_shared<MunsellOptions>();
  Command command =
      tool.AddCommand("munsell", "Find the Munsell notation of samples, or the colour of a notation");
  command.AddOption("FILE", options->file, "Curves, or colours under C and 2 degrees (- for standard input)")
      .ReadsFile();
  command.AddOption("--notation", options->notations, "Compute the colour of these notations instead")
      .Shows("NOTATION,...");
  AddCurveInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "The renotation of 1943 is for illuminant C and 2 degrees. Value follows ASTM D1535, in which 10 is "
      "the\n"
      "perfect diffuser. Results beyond real chips are marked as extrapolated.\n\n"
      "Examples:\n"
      "  vrx munsell examples/chart_average.csv\n"
      "  vrx munsell --notation \"5R 4/10,N 5\"\n");
  command.SetAction([options] {
    RunMunsell(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
