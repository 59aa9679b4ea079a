// vrx average: the mean of repeated readings, and how far they scatter.

#include <cmath>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/color_records.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/input/readings.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct AverageOptions {
  std::string file;
  int count = 0;
  bool statistics = false;
  ViewingOptions viewing;
  CurveInputOptions input;
  Format format = Format::kTable;
};

// The numbers of readings, from 1, as "3, 7".
std::string NumbersOf(const std::vector<std::size_t>& outliers) {
  std::string text;
  for (const std::size_t i : outliers) text.append(text.empty() ? "" : ", ").append(std::to_string(i + 1));
  return text;
}

std::vector<Column> StatisticsColumns() {
  return {{"id"},
          {.name = "geometry", .spare = true},
          {"readings"},
          {"sdL", "sd L*", 3},
          {"sda", "sd a*", 3},
          {"sdb", "sd b*", 3},
          {"rangeL", "range L*", 3, true},
          {"rangea", "range a*", 3, true},
          {"rangeb", "range b*", 3, true},
          {"mean_difference",
           "mean \xCE\x94"
           "E*ab",
           3},
          {"largest_difference",
           "largest \xCE\x94"
           "E*ab",
           3},
          {"outliers"}};
}

void WriteStatistics(const Readings& readings, const ReadingStatistics& statistics, RowWriter& rows) {
  rows.Text(readings.id);
  rows.Text(GeometryName(readings.geometry));
  rows.Integer(static_cast<int64_t>(readings.samples.size()));
  for (int32_t k = 0; k < 3; ++k) rows.Number(statistics.stats.First(k));
  for (int32_t k = 0; k < 3; ++k) rows.Number(statistics.stats.Second(k));
  rows.Number(statistics.meanDifference);
  rows.Number(statistics.largestDifference);
  rows.Text(NumbersOf(statistics.outliers), Tint::kWarning);
  rows.EndRow();
}

// The columns in which the means can be read again.
std::vector<Column> MeanColumns(const CurveReader& reader) {
  std::vector<Column> columns{{"id"}};
  if (reader.HasIdsAndNames()) columns.push_back({"name"});
  if (reader.HasStandards()) columns.push_back({"standard"});
  if (reader.HasGeometries()) columns.push_back({"geometry"});
  if (reader.Kind() == Sample::kCurve) {
    for (int32_t i = 0; i < kWavelengths; ++i) columns.push_back({std::to_string(WavelengthAt(i))});
  } else {
    for (const char* name : {"X", "Y", "Z"}) columns.push_back({name});
    if (reader.Kind() == Sample::kLab)
      columns.end()[-3] = {"L"}, columns.end()[-2] = {"a"}, columns.end()[-1] = {"b"};
  }
  return columns;
}

void WriteMean(const Readings& readings, const CurveReader& reader, RowWriter& rows) {
  const CurveRow mean = readings.Mean();
  rows.Text(mean.id);
  if (reader.HasIdsAndNames()) rows.Text(mean.name);
  if (reader.HasStandards()) rows.Text(mean.standard);
  if (reader.HasGeometries()) rows.Text(GeometryName(mean.geometry));
  if (mean.kind == Sample::kCurve) {
    for (const double percent : mean.curve) rows.Number(percent);
  } else {
    for (const double value : mean.color) rows.Number(value);
  }
  rows.EndRow();
}

void TellOutliers(const std::string& file, const Readings& readings, const ReadingStatistics& statistics) {
  if (statistics.outliers.empty()) return;
  PrintMessage(file + ": of the readings of \"" + readings.id + "\" " + NumbersOf(statistics.outliers) +
               (statistics.outliers.size() == 1 ? " lies" : " lie") + " apart from the others");
}

void RunAverage(const AverageOptions& options) {
  const std::vector<vrxIlluminant> illuminants = options.viewing.Illuminants();
  if (illuminants.size() != 1) throw InputError("--illuminants: one is expected");
  if (options.count < 0) throw InputError("--count: the number of readings of each sample, from 1");
  CurveReader reader = OpenCurves(options.file, options.input, Content::kCurvesOrColors);
  const bool showsStatistics = options.statistics || options.format == Format::kTable;
  OutputStream output;
  const auto rows =
      MakeRowWriter(options.format, output, showsStatistics ? StatisticsColumns() : MeanColumns(reader));
  for (const Readings& readings : ReadReadings(reader, static_cast<std::size_t>(options.count))) {
    const ReadingStatistics statistics =
        StatisticsOf(readings, illuminants.front(), options.viewing.Observer());
    showsStatistics ? WriteStatistics(readings, statistics, *rows) : WriteMean(readings, reader, *rows);
    TellOutliers(reader.Source().Name(), readings, statistics);
  }
  rows->Finish();
  output.Finish();
  WarnAboutInput(reader);
}

}  // namespace

void AddAverage(Command& tool) {
  const auto options = std::make_shared<AverageOptions>();
  Command command = tool.AddCommand("average", "The mean of repeated readings, and how far they scatter");
  command.AddOption("FILE", options->file, "Curves or colours (- reads standard input)").Required();
  command
      .AddOption("--count", options->count,
                 "So many rows in turn are readings of one sample, whatever their ids")
      .Shows("N [rows of one id]");
  command.AddFlag("--statistics", options->statistics,
                  "Write the statistics in csv and json too, not the means");
  AddViewingOptions(command, options->viewing, "D65");
  AddCurveInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "A table has the statistics; csv and json have the means, as curves or colours that other commands\n"
      "read. A reading lies apart when it is three times as far from the median colour as half of them are,\n"
      "and more than 0.1 away; it is told and stays in the mean.\n\n"
      "Examples:\n"
      "  vrx average examples/chart_ohta.csv --count 4\n"
      "  vrx average readings.csv --format csv > means.csv\n");
  command.SetAction([options] {
    RunAverage(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
