// vrx density: densities of print, and how much of the paper tints cover.

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/density.h>
#include <vrxmath/colorimetry/weight_tables.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/input/sample_color.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/report/result_report.h"

namespace vrx::tool {
namespace {

struct DensityOptions {
  std::string file;
  DensityStatus status = DensityStatus::kT;
  std::string paper, solid;
  double factor = 1;  // of Yule and Nielsen
  CurveInputOptions input;
  Format format = Format::kTable;
  ReportOptions report;
};

// A patch with what its tone value is made of.
struct Patch {
  std::string id;
  int32_t geometry = kNoGeometry;
  Densities densities;
  Xyz xyz;
};

std::vector<Patch> ReadPatches(CurveReader& reader, DensityStatus status, ResultReport& report) {
  constexpr std::size_t kMost = 200'000;
  std::vector<Patch> patches;
  CurveRow row;
  report.SetMeasured(reader);
  while (reader.Next(row)) {
    if (patches.size() == kMost) reader.Source().FailRow("more than 200000 patches");
    patches.push_back({std::string(row.id), row.geometry, DensitiesOf(row.curve, status),
                       XyzOf(row, vrxIllumD50, kObserver2)});
    report.AddCurve(row.curve);
  }
  return patches;
}

// The only patch of an id.
const Patch& PatchNamed(const std::vector<Patch>& patches, const std::string& id, const char* option) {
  const auto found = std::ranges::find(patches, id, &Patch::id);
  if (found == patches.end()) throw InputError(std::string(option) + ": there is no patch \"" + id + "\"");
  if (std::ranges::find(found + 1, patches.end(), id, &Patch::id) != patches.end())
    throw InputError(std::string(option) + ": there are several patches \"" + id + "\"");
  return *found;
}

// The tone values of patches between a paper and a solid, in the filter in which these differ most.
class Tones {
 public:
  Tones(const Patch& paper, const Patch& solid, double factor)
      : paper_(paper), solid_(solid), factor_(factor) {
    CTrisValues white;
    WhitePoint(vrxIllumD50, kObserver2, white);
    white_ = {white[0], white[1], white[2]};
    const auto from = paper.densities.Filters(), to = solid.densities.Filters();
    for (std::size_t k = 1; k < from.size(); ++k) {
      if (to[k] - from[k] > to[filter_] - from[filter_]) filter_ = k;
    }
  }

  /// False where the two were given in the wrong order, or are one: there is no tone value then, and the SCTV runs backwards.
  bool IsSolidDarker() const {
    return solid_.densities.Filters()[filter_] > paper_.densities.Filters()[filter_];
  }
  const char* FilterName() const { return kNames[filter_]; }
  double ToneOf(const Patch& patch) const {
    return ToneValue(paper_.densities.Filters()[filter_], patch.densities.Filters()[filter_],
                     solid_.densities.Filters()[filter_], factor_);
  }
  double SpotToneOf(const Patch& patch) const {
    return SpotColorToneValue(paper_.xyz, patch.xyz, solid_.xyz, white_);
  }

 private:
  static constexpr const char* kNames[] = {"red", "green", "blue"};
  const Patch &paper_, &solid_;
  double factor_;
  White white_{};
  std::size_t filter_ = 0;
};

std::vector<Column> DensityColumns(bool hasGeometries, bool withTones) {
  std::vector<Column> columns{{"id"}};
  if (hasGeometries) columns.push_back({"geometry"});
  for (const char* name : {"red", "green", "blue", "visual"}) columns.push_back({name, name, 3});
  if (!withTones) return columns;
  columns.push_back({"filter"});
  columns.push_back({"tone_value", "tone value, %", 1});
  columns.push_back({"sctv", "SCTV, %", 1});
  return columns;
}

// What a reader of the report has to know of the figures.
std::string MethodText(const DensityOptions& options) {
  constexpr const char* kStatuses[] = {"A", "E", "M", "T"};
  std::string text = std::string("ISO 5-3, status ") + kStatuses[static_cast<int32_t>(options.status)];
  if (options.paper.empty()) return text;
  text += "; " + options.paper + " - " + options.solid;
  return options.factor == 1 ? text + ", Murray-Davies"
                             : text + ", Yule-Nielsen " + FixedText(options.factor);
}

void RunDensity(const DensityOptions& options) {
  if (options.paper.empty() != options.solid.empty())
    throw InputError("--paper and --solid: tone values need both");
  if (!(options.factor >= 1 && options.factor <= 10)) throw InputError("--n: must be a factor from 1 to 10");
  CurveReader reader = OpenCurves(options.file, options.input);
  ResultReport report(options.report, ReportText::kDensities);
  report.AddFile(ReportText::kInputFile, options.file);
  report.AddFact(ReportText::kMethod, MethodText(options));
  const std::vector<Patch> patches = ReadPatches(reader, options.status, report);
  report.AddInput(reader);
  std::optional<Tones> tones;
  if (!options.paper.empty()) {
    tones.emplace(PatchNamed(patches, options.paper, "--paper"),
                  PatchNamed(patches, options.solid, "--solid"), options.factor);
    if (!tones->IsSolidDarker()) {
      PrintMessage(options.file + ": warning: the solid \"" + options.solid +
                   "\" is in no filter darker than the paper \"" + options.paper +
                   "\", so that there are no tone values: are --paper and --solid exchanged?");
    }
  }
  OutputStream output;
  const auto rows =
      report.Rows(options.format, output, DensityColumns(reader.HasGeometries(), tones.has_value()));
  for (const Patch& patch : patches) {
    const Densities& d = patch.densities;
    rows->Text(patch.id);
    if (reader.HasGeometries()) rows->Text(GeometryName(patch.geometry));
    for (const double density : {d.red, d.green, d.blue, d.visual}) rows->Number(density);
    if (tones) {
      rows->Text(tones->FilterName());
      for (const double tone : {tones->ToneOf(patch), tones->SpotToneOf(patch)}) rows->Number(tone);
    }
    rows->EndRow();
  }
  rows->Finish();
  report.Save();
  output.Finish();
  WarnAboutInput(reader);
}

}  // namespace

void AddDensity(Command& tool) {
  const auto options = std::make_shared<DensityOptions>();
  Command command = tool.AddCommand("density", "Compute the densities of print, and tone values");
  command.AddOption("FILE", options->file, "Curves of patches (- for standard input)").ReadsFile().Required();
  command.AddChoice("--status", options->status, {"a", "e", "m", "t"}, "Spectral products of ISO 5-3")
      .Shows("a|e|m|t [t]");
  command.AddOption("--paper", options->paper, "Id of the patch without ink, for tone values").Shows("ID");
  command.AddOption("--solid", options->solid, "Id of the patch that is covered with ink").Shows("ID");
  command.AddOption("--n", options->factor, "Factor of Yule and Nielsen, 1 to 10; 1 is Murray-Davies")
      .Shows("FACTOR [1]");
  AddCurveInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  AddReportOptions(command, options->report);
  command.SetNotes(
      "Densities are absolute, the paper's included. The tone value is that of the filter in which paper "
      "and\n"
      "solid differ most; SCTV (ISO 20654) looks at the colours under D50 and 2 degrees.\n\n"
      "Examples:\n"
      "  vrx density examples/chart_average.csv\n"
      "  vrx density lot.csv --status e --paper P19 --solid P24\n");
  command.SetAction([options] {
    RunDensity(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
