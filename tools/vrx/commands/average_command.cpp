// vrx average: the mean of repeated readings, and how far they scatter.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/tolerance/repeated_readings.h>

#include <vrxio/files/measurement_writer.h>
#include <vrxio/measurement/wavelength_grid.h>
#include <vrxio/text/decimal.h>

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
  double limit = 0;  // of the scatter; 0 for none
  bool strict = false;
  double within = 0;  // the wanted uncertainty of a mean; 0 for none
  double certainty = 95;
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

std::vector<Column> StatisticsColumns(const AverageOptions& options) {
  std::vector<Column> columns{{"id"},
                              {.name = "geometry", .room = Room::kSpare},
                              {"readings"},
                              {"sdL", "sd L*", 3},
                              {"sda", "sd a*", 3},
                              {"sdb", "sd b*", 3},
                              {"rangeL", "range L*", 3, Room::kSpare},
                              {"rangea", "range a*", 3, Room::kSpare},
                              {"rangeb", "range b*", 3, Room::kSpare},
                              {"mean_difference",
                               "mean \xCE\x94"
                               "E*ab",
                               3},
                              {"largest_difference",
                               "largest \xCE\x94"
                               "E*ab",
                               3},
                              {"outliers"}};
  if (options.within > 0) {
    columns.push_back({"uncertainty", "mean \xC2\xB1", 3});
    columns.push_back({"needed", "readings needed"});
  }
  if (options.limit > 0) {
    columns.push_back({.name = "verdict", .room = Room::kWhole});
    columns.push_back({.name = "reason", .room = Room::kWhole});
  }
  return columns;
}

// How far a reading may be from the mean, and why readings are not trusted.
struct ScatterVerdict {
  bool passes = true;
  std::string reason;
};

ScatterVerdict VerdictOn(const Readings& readings, const ReadingStatistics& statistics, double limit) {
  if (readings.samples.size() < 2) return {false, "one reading"};
  const double excess = statistics.largestDifference - limit;
  if (excess <= 0) return {};
  return {false,
          "largest \xCE\x94"
          "E*ab +" +
              FixedDecimals(excess, 3)};
}

// The uncertainty of the mean colour, and how many readings the wanted one takes.
void WriteCertainty(const ReadingStatistics& statistics, const AverageOptions& options, RowWriter& rows) {
  const double deviation = statistics.Deviation(), certainty = options.certainty / 100;
  const auto known = static_cast<int64_t>(statistics.stats.GetSetting());
  rows.Number(UncertaintyOfMean(deviation, known, known, certainty));
  const int64_t needed = ReadingsNeeded(deviation, known, options.within, certainty);
  needed > 0 ? rows.Integer(needed) : rows.Number(kUnset);
}

void WriteStatistics(const Readings& readings, const ReadingStatistics& statistics,
                     const AverageOptions& options, RowWriter& rows) {
  rows.Text(readings.id);
  rows.Text(GeometryName(readings.geometry));
  rows.Integer(static_cast<int64_t>(readings.samples.size()));
  for (int32_t k = 0; k < 3; ++k) rows.Number(statistics.stats.First(k));
  for (int32_t k = 0; k < 3; ++k) rows.Number(statistics.stats.Second(k));
  rows.Number(statistics.meanDifference);
  rows.Number(statistics.largestDifference);
  rows.Text(NumbersOf(statistics.outliers), Tint::kWarning);
  if (options.within > 0) WriteCertainty(statistics, options, rows);
  if (options.limit > 0) {
    const ScatterVerdict verdict = VerdictOn(readings, statistics, options.limit);
    rows.Text(verdict.passes ? "pass" : "fail", verdict.passes ? Tint::kGood : Tint::kBad);
    rows.Text(verdict.reason);
  }
  rows.EndRow();
}

// The wavelengths of all means: those that every sample was measured at, or those of the library's grid within.
std::vector<double> CommonWavelengths(const std::vector<Readings>& all) {
  std::vector<double> common = all.front().wavelengths;
  bool areSame = true;
  double first = common.empty() ? 0 : common.front(), last = common.empty() ? 0 : common.back();
  for (const Readings& readings : all) {
    areSame = areSame && readings.wavelengths == common;
    if (readings.wavelengths.empty()) continue;
    first = std::max(first, readings.wavelengths.front());
    last = std::min(last, readings.wavelengths.back());
  }
  if (areSame) return common;
  common = LibraryWavelengths();
  std::erase_if(common, [&](double nm) { return nm < first || nm > last; });
  return common;
}

// The conditions that some sample has, by place in ConditionTexts. A column of geometries stands for the first.
std::vector<bool> KnownConditions(const std::vector<Readings>& all, bool hasGeometries) {
  std::vector<bool> known;
  for (const Readings& readings : all) {
    const auto texts = ConditionTexts(readings.layout->conditions);
    known.resize(texts.size());
    for (std::size_t i = hasGeometries ? 1 : 0; i < texts.size(); ++i) {
      if (!texts[i].second.empty()) known[i] = true;
    }
  }
  return known;
}

// What the rows of means have in common.
struct MeanLayout {
  std::vector<double> wavelengths;
  std::vector<bool> conditions;
};

// The columns in which the means can be read again.
std::vector<Column> MeanColumns(const CurveReader& reader, const MeanLayout& layout) {
  std::vector<Column> columns{{"id"}};
  if (reader.HasIdsAndNames()) columns.push_back({"name"});
  if (reader.HasStandards()) columns.push_back({"standard"});
  if (reader.HasGeometries()) columns.push_back({"geometry"});
  const auto texts = ConditionTexts({});
  for (std::size_t i = 0; i < layout.conditions.size(); ++i) {
    if (layout.conditions[i]) columns.push_back({texts[i].first});
  }
  if (reader.Kind() == Sample::kCurve) {
    for (const double nm : layout.wavelengths) columns.push_back({ShortestText(nm)});
  } else {
    for (const char* name : {"X", "Y", "Z"}) columns.push_back({name});
    if (reader.Kind() == Sample::kLab)
      columns.end()[-3] = {"L"}, columns.end()[-2] = {"a"}, columns.end()[-1] = {"b"};
  }
  return columns;
}

// The mean of curves at wavelengths that all of them have, or within what they have on the library's grid.
std::vector<double> CurveOf(const Readings& readings, const std::vector<double>& wavelengths) {
  std::vector<double> mean = readings.MeasuredMean();
  if (readings.wavelengths == wavelengths) return mean;
  std::vector<double> curve(wavelengths.size());
  SpectralResampler(readings.wavelengths, wavelengths).Convert(mean, curve.data());
  return curve;
}

void WriteMean(const Readings& readings, const CurveReader& reader, const MeanLayout& layout,
               RowWriter& rows) {
  const CurveRow mean = readings.Mean();
  rows.Text(mean.id);
  if (reader.HasIdsAndNames()) rows.Text(mean.name);
  if (reader.HasStandards()) rows.Text(mean.standard);
  if (reader.HasGeometries()) rows.Text(GeometryName(mean.geometry));
  const auto texts = ConditionTexts(readings.layout->conditions);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (layout.conditions[i]) rows.Text(texts[i].second);
  }
  if (mean.kind == Sample::kCurve) {
    for (const double percent : CurveOf(readings, layout.wavelengths)) rows.Number(percent);
  } else {
    for (const double value : mean.color) rows.Number(value);
  }
  rows.EndRow();
}

void TellOutliers(const std::string& file, const Readings& readings, const ReadingStatistics& statistics) {
  if (statistics.outliers.empty()) return;
  PrintMessage(file + ": of the readings of \"" + readings.id + "\" " + NumbersOf(statistics.outliers) +
               (statistics.outliers.size() == 1 ? " is an outlier" : " are outliers"));
}

// Says which readings scatter beyond the limit.
bool ScatterPasses(const std::string& file, const Readings& readings, const ReadingStatistics& statistics,
                   double limit) {
  if (!(limit > 0)) return true;
  const ScatterVerdict verdict = VerdictOn(readings, statistics, limit);
  if (!verdict.passes)
    PrintMessage(file + ": the readings of \"" + readings.id +
                 "\" fail the limit of scatter: " + verdict.reason);
  return verdict.passes;
}

void RequireSound(const AverageOptions& options, const Command& command) {
  const auto isPositive = [](double value) { return value > 0 && std::isfinite(value); };
  if (command.IsGiven("--count") && options.count < 1)
    throw InputError("--count: must be a whole number of readings, 1 or more");
  if (command.IsGiven("--limit") && !isPositive(options.limit))
    throw InputError("--limit: must be a difference above 0");
  if (command.IsGiven("--within") && !isPositive(options.within))
    throw InputError("--within: must be a difference above 0");
  if (!(options.certainty > 0 && options.certainty < 100))
    throw InputError("--certainty: must be percent above 0 and below 100");
  if (options.strict && options.limit == 0) throw InputError("--strict needs --limit");
}

ExitStatus RunAverage(AverageOptions& options, const Command& command) {
  RequireSound(options, command);
  options.viewing.RequireOneIlluminant();
  CurveReader reader = OpenCurves(options.file, options.input, Content::kCurvesOrColors);
  options.viewing.Follow({&reader});
  const std::vector<vrxIlluminant> illuminants = options.viewing.Illuminants();
  const bool showsStatistics = options.statistics || options.format == Format::kTable;
  OutputStream output;
  const std::vector<Readings> all = ReadReadings(reader, static_cast<std::size_t>(options.count));
  if (all.empty()) throw InputError(reader.Source().Name() + ": there are no readings");
  const MeanLayout layout{CommonWavelengths(all), KnownConditions(all, reader.HasGeometries())};
  const auto rows = MakeRowWriter(options.format, output,
                                  showsStatistics ? StatisticsColumns(options) : MeanColumns(reader, layout));
  bool allPass = true;
  for (const Readings& readings : all) {
    const ReadingStatistics statistics =
        StatisticsOf(readings, illuminants.front(), options.viewing.Observer());
    showsStatistics ? WriteStatistics(readings, statistics, options, *rows)
                    : WriteMean(readings, reader, layout, *rows);
    TellOutliers(reader.Source().Name(), readings, statistics);
    allPass = ScatterPasses(reader.Source().Name(), readings, statistics, options.limit) && allPass;
    if (!readings.mixture.empty()) {
      PrintMessage(reader.Source().Name() + ": the readings of \"" + readings.id +
                   "\" were made under different conditions: " + readings.mixture);
    }
  }
  rows->Finish();
  output.Finish();
  WarnAboutInput(reader);
  return options.strict && !allPass ? kExitNotPassed : kExitPass;
}

}  // namespace

void AddAverage(Command& tool) {
  const auto options = std::make_shared<AverageOptions>();
  Command command = tool.AddCommand("average", "Average repeated readings and report their scatter");
  command.AddOption("FILE", options->file, "Curves or colours (- for standard input)").ReadsFile().Required();
  command
      .AddOption("--count", options->count,
                 "Treat each N rows in turn as the readings of one sample, whatever their ids")
      .Shows("N [the rows of each id]");
  command.AddFlag("--statistics", options->statistics,
                  "Write the statistics, not the means, in csv and json too");
  command
      .AddOption("--limit", options->limit,
                 "Give a verdict on the scatter: fail where a reading is farther from the mean, in dE*ab")
      .Shows("DIFFERENCE [none]");
  command.AddFlag("--strict", options->strict, "Exit with status 1 if any sample fails --limit");
  command
      .AddOption("--within", options->within,
                 "Say how many readings bring the mean colour this near to that of very many, in dE*ab")
      .Shows("DIFFERENCE [none]");
  command.AddOption("--certainty", options->certainty, "How sure --within has to be, in percent")
      .Shows("PERCENT [95]");
  AddViewingOptions(command, options->viewing, "D65");
  AddUncorrectedInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "Tables show the statistics; csv and json have the means, as curves or colours that other commands "
      "can\n"
      "read, at the measured wavelengths and with their conditions. A reading is an outlier if it is more "
      "than\n"
      "0.1 away from the median colour and three times as far as half of the readings are (of three "
      "readings:\n"
      "sixteen times as far as the nearer other one). Outliers are reported and stay in the mean.\n\n"
      "Examples:\n"
      "  vrx average examples/chart_ohta.csv --count 4\n"
      "  vrx average readings.csv --limit 0.3 --strict --within 0.1\n"
      "  vrx average readings.csv --format csv > means.csv\n");
  command.SetAction([options, command] { return RunAverage(*options, command); });
}

}  // namespace vrx::tool
