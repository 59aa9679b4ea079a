// vrx job trend, statistics: control charts and capability of what a job holds.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include <vrxstore/charts/control_chart.h>
#include <vrxstore/last_judgements.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/foundation/numbers.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/job_commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/job/job_filter.h"
#include "tools/vrx/judging/verdict_texts.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/report/job_series.h"
#include "tools/vrx/report/result_report.h"

namespace vrx::tool {
namespace {

struct ChartOptions : JobFilterOptions {
  std::string illuminant, value;
  ReportOptions report;
};

constexpr std::size_t kMostPoints = 1'000'000;  // that a chart is made of

// The values of a series in the order of time, as charts take them.
struct Series {
  struct Point {
    int64_t number;
    std::string taken, trial;
  };
  SeriesFacts facts;
  std::string heading, element;
  std::vector<Point> points;
  std::vector<double> values;
  std::vector<store::Triple> lab;
  std::unordered_map<std::string, std::size_t> places;  // of measurements, by their keys
  std::int64_t accepted = 0;
  double lower = -HUGE_VAL, upper = HUGE_VAL;  // the tolerance of the last trial
};

// The elements of a system's difference by their names: the total where none is asked for.
int32_t ElementByName(int32_t system, const std::string& name) {
  if (name.empty()) return CDeltaValues::kTotal;
  std::string known;
  for (const DifferenceColumn& column : DifferenceColumnsOf(system)) {
    const std::string element = ElementName(column.heading);
    if (EqualsIgnoringCase(element, name)) return column.element;
    known += " " + element;
  }
  throw InputError("--value: \"" + name + "\" is not one of" + known);
}

// The limits that a trial's element was judged by: those of the total or of a component of its box.
void TakeTolerance(const store::StoredTrial& trial, std::size_t illuminant, int32_t element, Series& series) {
  series.lower = -HUGE_VAL;
  series.upper = HUGE_VAL;
  const JudgeLimits& limits = trial.limits[illuminant];
  const auto* box = std::get_if<CBoxTolData>(&limits);
  if (element == CDeltaValues::kTotal) {
    series.upper = TotalLimitOf(limits);
  } else if (box != nullptr) {
    for (int32_t d = 0; d < 3; ++d) {
      const auto limit = static_cast<BrokenLimit>(static_cast<int32_t>(BrokenLimit::kFirst) + d);
      if (ElementOf(limit, trial.conditions.difference.system) != element) continue;
      const Interval interval = box->Limits(d);
      series.lower = interval.lower;
      series.upper = interval.upper;
    }
  }
}

class SeriesOfJob {
 public:
  SeriesOfJob(const ChartOptions& options, const store::LastJudgements& last)
      : options_(options), last_(last) {
    if (!options.illuminant.empty()) illuminant_ = ParseIlluminant(options.illuminant);
  }

  void Take(const store::StoredTrial& trial) {
    for (std::size_t i = 0; i < trial.judgement.under.size(); ++i) {
      if (illuminant_ && trial.conditions.illuminants[i] != *illuminant_) continue;
      const JudgementUnder& under = trial.judgement.under[i];
      if (!under.available || !std::isfinite(under.difference.back())) {
        ++unavailable_;
        continue;
      }
      Add(trial, i, under);
    }
  }
  // By the names of standards, with what the series have in common.
  std::vector<Series> Finish() {
    std::vector<std::string> elements;
    for (const Series& series : series_) elements.push_back(series.element);
    const std::vector<std::string> headings = list_.Headings(elements);
    std::vector<Series> all;
    for (const std::size_t number : list_.Order()) {
      Series& series = all.emplace_back(std::move(series_[number]));
      series.facts = list_.All()[number];
      series.heading = headings[number];
    }
    return all;
  }
  void Warn(const std::string& file) const {
    if (unavailable_ > 0)
      PrintMessage(file + ": warning: " + std::to_string(unavailable_) +
                   " outcomes without a difference are left out");
  }

 private:
  void Add(const store::StoredTrial& trial, std::size_t i, const JudgementUnder& under) {
    const std::size_t number = list_.NumberOf(trial, i);
    const int32_t element = ElementByName(trial.conditions.difference.system, options_.value);
    if (number == series_.size())
      series_.emplace_back().element = NameOfElement(trial.conditions.difference.system, element);
    Series& series = series_[number];
    if (series.values.size() == kMostPoints)
      throw InputError("more than 1000000 trials for one chart; --since leaves fewer");
    // A measurement that was judged again is one point, where it was first, with its last judgement of this series.
    const auto [place, isNew] = series.places.try_emplace(store::MeasurementKey(trial), series.values.size());
    if (isNew) {
      series.points.emplace_back();
      series.values.emplace_back();
      series.lab.emplace_back();
      series.accepted += last_.IsAccepted(trial);
    }
    series.points[place->second] = {trial.number, trial.taken, trial.name};
    series.values[place->second] = under.difference[static_cast<std::size_t>(element)];
    series.lab[place->second] = {under.trial.lab.L, under.trial.lab.a, under.trial.lab.b};
    TakeTolerance(trial, i, element, series);
  }

  const ChartOptions& options_;
  const store::LastJudgements& last_;
  std::optional<vrxIlluminant> illuminant_;
  SeriesList list_;
  std::vector<Series> series_;
  int64_t unavailable_ = 0;
};

std::vector<Series> SeriesOf(const ChartOptions& options, ResultReport& report) {
  const auto job = OpenJob(options.job);
  report.AddJob(job->Info());
  const store::TrialFilter filter = options.Filter(*job);
  const store::LastJudgements last(*job, filter);
  const auto cursor = job->Trials(filter);
  SeriesOfJob series(options, last);
  for (store::StoredTrial trial; cursor->Next(trial);) series.Take(trial);
  std::vector<Series> all = series.Finish();
  if (all.empty()) throw InputError(options.job.Shown() + ": the job has no trials of these");
  series.Warn(options.job.Shown());
  TellEarlier(options.job.Shown(), last);
  if (last.Earlier() > 0) report.AddWarning({options.job.Shown(), EarlierText(last)});
  return all;
}

std::string RulesText(const store::BrokenRules& broken) {
  std::string text;
  for (std::size_t k = 0; k < broken.size(); ++k) {
    if (broken[k]) text.append(text.empty() ? "" : " ").append(NameOf(static_cast<store::ChartRule>(k)));
  }
  return text;
}

// A series as the report draws it: what a point says of the process is its mark.
pictures::ControlStrip StripOf(const Series& series, const store::IndividualsChart& chart) {
  pictures::ControlStrip strip;
  strip.heading = ForPicture(series.heading);
  strip.orderHeading = ForPicture(Text(ReportText::kOrderAxis));
  strip.values = series.values;
  for (const store::BrokenRules& broken : chart.broken) {
    const bool isBeyond = broken[static_cast<std::size_t>(store::ChartRule::kBeyond3Sigma)];
    strip.marks.push_back(isBeyond ? kFail : broken == store::BrokenRules{} ? kPass : kWarning);
  }
  strip.marks.resize(strip.values.size(), kPass);
  if (series.values.size() > 1)
    strip.centre = chart.centre, strip.lower = chart.lower, strip.upper = chart.upper;
  return strip;
}

void DrawSeries(const std::vector<Series>& all, ResultReport& report) {
  if (!report.IsWanted()) return;
  ControlChart chart{Text(ReportText::kControlCharts), {}};
  for (const Series& series : all) {
    if (chart.strips.size() < kDrawnSeries)
      chart.strips.push_back(StripOf(series, store::MakeIndividualsChart(series.values)));
  }
  const std::size_t drawn = chart.strips.size(), count = all.size();
  const std::string note =
      drawn < count ? TextOf(ReportText::kFirstCharts, {std::to_string(drawn), std::to_string(count)}) : "";
  report.AddControlChart(std::move(chart), note);
}

void PutFacts(const SeriesFacts& facts, RowWriter& rows) {
  rows.Text(facts.standard);
  rows.Text(facts.VersionsText());
  rows.Text(facts.geometry);
  rows.Text(facts.illuminant);
  rows.Integer(facts.observer);
  rows.Text(facts.system);
}

void RunTrend(const ChartOptions& options) {
  ResultReport report(options.report, ReportText::kControlCharts);
  const std::vector<Series> all = SeriesOf(options, report);
  DrawSeries(all, report);
  OutputStream output;
  const auto rows = report.Rows(options.format, output,
                                {{"standard"},
                                 {"versions"},
                                 {.name = "geometry", .room = Room::kSpare},
                                 {"illuminant"},
                                 {"observer"},
                                 {.name = "system", .room = Room::kSpare},
                                 {"number"},
                                 {.name = "taken", .room = Room::kSpare},
                                 {"trial"},
                                 {.name = "element", .room = Room::kSpare},
                                 {"value"},
                                 {.name = "range", .room = Room::kSpare},
                                 {"centre"},
                                 {"lower"},
                                 {"upper"},
                                 {.name = "rules", .room = Room::kWhole},
                                 {"T2"},
                                 {"T2 limit"}});
  for (const Series& series : all) {
    const store::IndividualsChart chart = store::MakeIndividualsChart(series.values);
    const store::HotellingChart hotelling = store::MakeHotellingChart(series.lab);
    for (std::size_t i = 0; i < series.values.size(); ++i) {
      PutFacts(series.facts, *rows);
      rows->Integer(series.points[i].number);
      rows->Text(series.points[i].taken);
      rows->Text(series.points[i].trial);
      rows->Text(series.element);
      rows->Known(series.values[i]);
      i == 0 ? rows->Number(kUnset) : rows->Known(chart.ranges[i]);
      for (const double line : {chart.centre, chart.lower, chart.upper})
        series.values.size() > 1 ? rows->Known(line) : rows->Number(kUnset);
      const std::string rules = RulesText(chart.broken[i]);
      rows->Text(rules, rules.empty() ? Tint::kPlain : Tint::kWarning);
      hotelling.isKnown ? rows->Known(hotelling.t2[i]) : rows->Number(kUnset);
      hotelling.isKnown ? rows->Known(hotelling.limit) : rows->Number(kUnset);
      rows->EndRow();
    }
  }
  rows->Finish();
  report.Save();
  output.Finish();
}

// Capability in a tolerance of one side has no Cp, and in none at all nothing.
double Shown(double value) {
  return std::isfinite(value) ? value : kUnset;
}

void RunStatistics(const ChartOptions& options) {
  ResultReport report(options.report, ReportText::kStatistics);
  const std::vector<Series> all = SeriesOf(options, report);
  OutputStream output;
  const auto rows = report.Rows(options.format, output,
                                {{"standard"},
                                 {"versions"},
                                 {.name = "geometry", .room = Room::kSpare},
                                 {"illuminant"},
                                 {"observer"},
                                 {.name = "system", .room = Room::kSpare},
                                 {"element"},
                                 {"trials"},
                                 {"accepted"},
                                 {"mean"},
                                 {.name = "deviation", .heading = "s.d."},
                                 {.name = "lower", .room = Room::kSpare},
                                 {.name = "upper", .room = Room::kSpare},
                                 {.name = "tolerance_lower", .heading = "lower limit", .room = Room::kSpare},
                                 {.name = "tolerance", .heading = "limit"},
                                 {"Cp"},
                                 {"Cpk"},
                                 {"signals"},
                                 {"T2 beyond"}});
  for (const Series& series : all) {
    const store::IndividualsChart chart = store::MakeIndividualsChart(series.values);
    const store::HotellingChart hotelling = store::MakeHotellingChart(series.lab);
    const store::Capability capability = store::CapabilityOf(series.values, series.lower, series.upper);
    const bool isChart = series.values.size() > 1;
    PutFacts(series.facts, *rows);
    rows->Text(series.element);
    rows->Integer(static_cast<int64_t>(series.values.size()));
    rows->Integer(series.accepted);
    isChart ? rows->Known(capability.mean) : rows->Known(series.values.front());
    rows->Number(capability.deviation);
    isChart ? rows->Known(chart.lower) : rows->Number(kUnset);
    isChart ? rows->Known(chart.upper) : rows->Number(kUnset);
    rows->Number(Shown(series.lower));
    rows->Number(Shown(series.upper));
    rows->Number(Shown(capability.cp));
    rows->Number(Shown(capability.cpk));
    rows->Integer(std::ranges::count_if(
        chart.broken, [](const store::BrokenRules& broken) { return broken != store::BrokenRules{}; }));
    rows->Integer(std::ranges::count_if(hotelling.t2, [&](double t2) { return t2 > hotelling.limit; }));
    rows->EndRow();
  }
  rows->Finish();
  report.Save();
  output.Finish();
}

}  // namespace

void AddJobCharts(Command& job) {
  const auto options = std::make_shared<ChartOptions>();
  Command trend = job.AddCommand(
      "trend", "Chart the trials of a standard: individuals, moving ranges and Hotelling's T2");
  Command statistics =
      job.AddCommand("statistics", "Summarise each standard: mean, spread, Cp, Cpk and signals");
  for (Command command : {trend, statistics}) {
    AddJobFilterOptions(command, *options);
    command.AddOption("--illuminant", options->illuminant, "Only this illuminant").Shows("CODE");
    command.AddOption("--value", options->value, "Element of the difference, such as dL; otherwise the total")
        .Shows("NAME");
    AddReportOptions(command, options->report);
  }
  SetAction(trend, options, RunTrend);
  SetAction(statistics, options, RunStatistics);
  trend.SetNotes(
      "The limits lie three sigma about the mean; sigma comes from the mean moving range. A point that "
      "breaks one\n"
      "of the Western Electric rules has its name beside it. T2 takes L*, a* and b* together: a colour "
      "difference\n"
      "is never below 0, and misleads as a control variable.\n\n"
      "Example:\n  vrx job trend P01 --job plant.vrxjob --illuminant D65\n");
  statistics.SetNotes(
      "Cp and Cpk are held against the limits of the last trial; a total has an upper limit only, and no "
      "Cp.\n\n"
      "Example:\n  vrx job statistics --job plant.vrxjob --value dL --illuminant D65\n");
}

}  // namespace vrx::tool
