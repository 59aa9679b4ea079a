// vrx info: what a file of measurements holds, and what of it is not used.

#include <algorithm>
#include <map>
#include <memory>
#include <string>

#include <vrxmath/support/condition_text.h>

#include <vrxio/files/measurement_files.h>
#include <vrxio/measurement/wavelength_grid.h>
#include <vrxio/text/decimal.h>
#include "tools/vrx/base/command.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct InfoOptions {
  std::string file;
  CurveInputOptions input;
  Format format;
};

// The counts of a file.
struct Contents {
  int64_t samples = 0, curves = 0, colors = 0;
  std::map<const MeasurementLayout*, int64_t> layouts;
  std::map<int32_t, int64_t> geometries;
  double smallest = 0, largest = 0;
};

Contents Count(MeasurementReader& reader) {
  Contents contents;
  ProgressBar progress(reader.Size());
  Measurement sample;
  while (reader.Next(sample)) {
    ++contents.samples;
    ++contents.layouts[sample.layout];
    if (sample.geometry != kNoGeometry) ++contents.geometries[sample.geometry];
    contents.colors += sample.hasXyz || sample.hasLab;
    if (sample.reflectance.empty()) continue;
    const auto [least, most] = std::ranges::minmax(sample.reflectance);
    if (contents.curves == 0) contents.smallest = contents.largest = least;
    contents.smallest = std::min(contents.smallest, least);
    contents.largest = std::max(contents.largest, most);
    ++contents.curves;
    progress.Update(reader.Position());
  }
  return contents;
}

class InfoRows {
 public:
  InfoRows(const Format& format, OutputStream& output)
      : rows_(MakeRowWriter(format, output, {{"what"}, {"value"}})) {}

  void Add(std::string_view what, const std::string& value) {
    if (value.empty()) return;
    rows_->Text(what);
    rows_->Text(value);
    rows_->EndRow();
  }
  void AddConditions(const MeasuringConditions& conditions) {
    Add("geometry", GeometryName(conditions.geometry));
    Add("warning", UnknownGeometryWarning(conditions));
    if (conditions.specular != Specular::kUnknown) {
      Add("specular component", conditions.specular == Specular::kIncluded ? "included" : "excluded");
    }
    if (conditions.mCondition >= 0) Add("M condition", "M" + std::to_string(conditions.mCondition));
    Add("filter", conditions.filter);
    Add("backing", conditions.backing);
    Add("aperture", conditions.aperture);
    Add("instrument", conditions.instrument);
    Add("date", conditions.date);
    if (conditions.illuminant >= 0)
      Add("illuminant", CodeOf(static_cast<vrxIlluminant>(conditions.illuminant)));
    if (conditions.observer >= 0) Add("observer", std::to_string(DegreesOf(conditions.observer)));
    const std::string code = ConditionCode(conditions);
    if (code.empty()) return;
    CString text = CString::FromUtf8(code);
    Add("condition code", code + ": " + ConditionText(text).ToUtf8());
  }
  void Finish() { rows_->Finish(); }

 private:
  std::unique_ptr<RowWriter> rows_;
};

void AddLayout(const MeasurementLayout& layout, int64_t samples, bool isOnly, InfoRows& rows) {
  if (!isOnly) rows.Add("samples of one kind", std::to_string(samples));
  if (!layout.wavelengths.empty()) {
    rows.Add("wavelengths", DescribeWavelengths(layout.wavelengths));
    rows.Add("used as", WavelengthGrid(layout.wavelengths).Description());
  }
  rows.AddConditions(layout.conditions);
}

void RunInfo(const InfoOptions& options) {
  const auto reader = OpenMeasurements(options.file, options.input.Reading());
  const Contents contents = Count(*reader);
  OutputStream output;
  InfoRows rows(options.format, output);
  rows.Add("file", reader->Name());
  rows.Add("format", std::string(reader->FormName()));
  rows.Add("samples", std::to_string(contents.samples));
  rows.Add("curves", std::to_string(contents.curves));
  rows.Add("colours", std::to_string(contents.colors));
  if (contents.curves > 0) {
    rows.Add("reflectance",
             FixedDecimals(contents.smallest, 2) + " to " + FixedDecimals(contents.largest, 2) + " percent");
  }
  for (const auto& [geometry, samples] : contents.geometries) {
    rows.Add("samples at " + GeometryName(geometry), std::to_string(samples));
  }
  constexpr std::size_t kMostLayouts = 20;
  std::size_t shown = 0;
  for (const auto& [layout, samples] : contents.layouts) {
    if (shown++ < kMostLayouts) AddLayout(*layout, samples, contents.layouts.size() == 1, rows);
  }
  for (const std::string& note : reader->Notes()) rows.Add("note", note);
  rows.Finish();
  output.Finish();
}

}  // namespace

void AddInfo(Command& tool) {
  const auto options = std::make_shared<InfoOptions>();
  Command command = tool.AddCommand("info", "Show what a file of measurements holds, and what is ignored");
  command.AddOption("FILE", options->file, "CSV, CGATS, CxF3 or JSON (- for standard input)")
      .ReadsFile()
      .Required();
  AddReadOptions(command, options->input);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "The format is recognised by the content. Notes say what was ignored, and why.\n\n"
      "Example:\n"
      "  vrx info examples/chart_ohta.csv\n");
  command.SetAction([options] {
    RunInfo(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
