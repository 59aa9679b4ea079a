
#include "tools/vrx/report/judged_trials.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <variant>

#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/foundation/angles.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"

namespace vrx::tool {
namespace {

// The ellipsoid scaled about its centre.
CEllipseData Scaled(CEllipseData ellipse, double factor) {
  for (const int32_t axis :
       {CEllipseData::kLightnessAxis, CEllipseData::kMajorAxis, CEllipseData::kMinorAxis}) {
    ellipse[axis] *= factor;
  }
  return ellipse;
}

Interval LightnessOf(const CEllipseData& ellipse) {
  const double centre = ellipse[CEllipseData::kCentreL], axis = ellipse[CEllipseData::kLightnessAxis];
  return {centre - axis, centre + axis};
}

CTrisValues RecordOf(const Xyz& xyz) {
  return {xyz.X, xyz.Y, xyz.Z};
}

bool IsAspecular(int32_t geometry) {
  const auto code = static_cast<uint8_t>(geometry);
  CAngles angles;
  const std::array<uint8_t, 2> codes{code, code};
  angles.SetCodes(codes);
  return geometry >= 0 && angles.IsMultiAngle();
}

}  // namespace

std::pair<int32_t, double> JudgedTrial::Badness() const {
  int32_t verdict = kPass;
  double total = 0;
  for (const JudgedResult& result : results) {
    verdict = std::min<int32_t>(verdict, result.verdict);
    if (result.Total() > total) total = result.Total();
  }
  return {-verdict, total};
}

double JudgedView::Colour::TotalLimit() const {
  if (const auto* ellipse = std::get_if<CEllipseData>(&limits)) return (*ellipse)[CEllipseData::kTotalLimit];
  return std::get<CBoxTolData>(limits)[CBoxTolData::kTotal];
}

JudgedTrials::JudgedTrials(const JudgeSettings& settings)
    : settings_(settings), columns_(DifferenceColumnsOf(settings.difference.system)) {}

std::size_t JudgedTrials::ViewOf(const CurveRow& trial, const Standard& standard, const Judge& judge,
                                 std::size_t standardIndex) {
  const auto [entry, isNew] = viewOf_.try_emplace({standard.id, trial.geometry}, views_.size());
  if (!isNew) return entry->second;
  JudgedView& view = views_.emplace_back();
  view.standard = Shortened(standard.id, kLongestCell);
  view.geometry = trial.geometry;
  view.hasCurve = standard.sample.kind == Sample::kCurve && !IsUnset(standard.sample.curve);
  if (view.hasCurve) view.curve = tool::Plotted(standard.sample.curve);
  for (std::size_t i = 0; i < IlluminantCount(); ++i) {
    const Color color = judge.StandardColor(standardIndex, i);
    view.colours.push_back({Shown(settings_.illuminants[i], settings_.observer, RecordOf(color.xyz)),
                            color.lab, judge.LimitsOf(standardIndex, i)});
  }
  return entry->second;
}

bool JudgedTrials::PlotsLab() const {
  return settings_.ByEllipse() || settings_.difference.system == vrxSystemLch;
}

std::array<double, 3> JudgedTrials::Plotted(const JudgementUnder& judgement) const {
  const auto& d = PlotsLab() ? judgement.labDifference : judgement.difference;
  return {d[CDeltaValues::kA], d[CDeltaValues::kB], d[CDeltaValues::kL]};
}

void JudgedTrials::Add(const CurveRow& row, const TrialJudgement& judgement, const Standard& standard,
                       const Judge& judge, std::size_t standardIndex) {
  if ((trials_.size() + 1) * IlluminantCount() > kMost) {
    throw InputError("--report: more than " + std::to_string(kMost) +
                     " judgements; report a part of the trials, or write csv or json");
  }
  JudgedTrial& trial = trials_.emplace_back();
  trial.id = Shortened(row.id, kLongestCell);
  trial.name = Shortened(row.name, kLongestCell);
  trial.view = ViewOf(row, standard, judge, standardIndex);
  trial.hasCurve = row.kind == Sample::kCurve && views_[trial.view].hasCurve;
  if (trial.hasCurve) trial.curve = tool::Plotted(row.curve);
  for (std::size_t i = 0; i < IlluminantCount(); ++i) {
    const vrxIlluminant illuminant = settings_.illuminants[i];
    JudgedResult& result = trial.results.emplace_back();
    static_cast<JudgementUnder&>(result) = judgement.under[i];
    result.plotted = Plotted(result);
    if (i > 0 && trial.hasCurve) {
      result.metamerism = MetamerismIndex(settings_.illuminants[0], illuminant, settings_.observer,
                                          standard.sample.curve, row.curve);
    }
    result.colour = Shown(illuminant, settings_.observer, RecordOf(result.JudgementUnder::trial.xyz));
  }
  views_[trial.view].trials.push_back(trials_.size() - 1);
}

std::string JudgedTrials::IlluminantAt(std::size_t i) const {
  return IlluminantName(settings_.illuminants[i], settings_.observer, kNameSlashObserver).ToUtf8();
}

std::string JudgedTrials::NameOf(const JudgedView& view) {
  const std::string geometry = GeometryName(view.geometry);
  return geometry.empty() ? view.standard : view.standard + ", " + geometry;
}

GradedTotal JudgedTrials::TotalOf(const JudgedTrial& trial, std::size_t i) const {
  const JudgedView::Colour& colour = views_[trial.view].colours[i];
  const double limit = colour.TotalLimit();
  return {trial.results[i].Total(), limit, limit * settings_.warningFactor, trial.results[i].verdict};
}

std::vector<std::size_t> JudgedTrials::WorstFirst(const JudgedView& view) const {
  std::vector<std::size_t> order = view.trials;
  std::ranges::stable_sort(order, std::greater<>(), [this](std::size_t t) { return trials_[t].Badness(); });
  return order;
}

// Charts ------------------------------------------------------------------------------------------------------

Chart JudgedTrials::Curves(const JudgedView& view) const {
  CurvesChart chart = measured_;
  chart.title = Text(ReportText::kCurves);
  chart.standard = &view.curve;
  for (const std::size_t t : WorstFirst(view)) {
    if (trials_[t].hasCurve) chart.trials.push_back(&trials_[t].curve);
  }
  return MakeChart(chart);
}

std::string JudgedTrials::HeadingOf(int32_t element, const char* other) const {
  const auto found = std::ranges::find(columns_, element, &DifferenceColumn::element);
  return PlotsLab() || found == columns_.end() ? other : found->heading;
}

void JudgedTrials::SetLimits(const JudgedView::Colour& colour, PlaneChart& chart) const {
  const double factor = settings_.warningFactor;
  if (const auto* ellipse = std::get_if<CEllipseData>(&colour.limits)) {
    const CEllipseData inner = Scaled(*ellipse, factor);
    chart.limit = ellipse->Section(EllipsePlane::kAB);
    chart.warning = inner.Section(EllipsePlane::kAB);
    chart.lightness = LightnessOf(*ellipse);
    chart.lightnessWarning = LightnessOf(inner);
    return;
  }
  const auto& box = std::get<CBoxTolData>(colour.limits);
  CLabValues lab;
  lab.SetValues(colour.lab);
  const auto outline = [&](double scale) {
    const Interval x = ScaledAboutCentre(box.Limits(1), scale);
    const Interval y = ScaledAboutCentre(box.Limits(2), scale);
    return settings_.difference.system == vrxSystemLch ? ChromaHueOutline(lab, x, y) : BoxOutline(x, y);
  };
  chart.limit = outline(1);
  chart.warning = outline(factor);
  chart.lightness = box.Limits(0);
  chart.lightnessWarning = ScaledAboutCentre(chart.lightness, factor);
}

Chart JudgedTrials::Plane(const JudgedView& view, std::size_t i) const {
  PlaneChart chart;
  chart.title = IlluminantAt(i);
  chart.xHeading = HeadingOf(1,
                             "\xCE\x94"
                             "a*");
  chart.yHeading = HeadingOf(2,
                             "\xCE\x94"
                             "b*");
  chart.lightnessHeading = HeadingOf(0, "\xCE\x94L*");
  SetLimits(view.colours[i], chart);
  for (const std::size_t t : view.trials) {
    for (const JudgedResult& result : trials_[t].results) {
      for (const double value : result.plotted) chart.reach = std::max(chart.reach, std::fabs(value));
    }
    const JudgedResult& result = trials_[t].results[i];
    chart.trials.push_back({result.plotted[0], result.plotted[1], result.plotted[2], result.verdict});
  }
  return MakeChart(chart);
}

Chart JudgedTrials::Trend(const std::vector<std::size_t>& trials) const {
  TrendChart chart{Text(ReportText::kTrend), TotalHeading(), {}, {}};
  for (std::size_t i = 0; i < IlluminantCount(); ++i) {
    chart.names.push_back(IlluminantAt(i));
    auto& series = chart.series.emplace_back();
    for (const std::size_t t : trials) series.push_back(TotalOf(trials_[t], i));
  }
  return MakeChart(chart);
}

Chart JudgedTrials::Histogram(const std::vector<std::size_t>& trials, std::size_t i) const {
  HistogramChart chart{Text(ReportText::kHistogram) + ": " + IlluminantAt(i), TotalHeading(), {}, 0};
  for (const std::size_t t : trials) {
    for (const JudgedResult& result : trials_[t].results) {
      if (result.Total() > chart.upper) chart.upper = result.Total();
    }
  }
  for (const std::size_t t : trials) chart.totals.push_back(TotalOf(trials_[t], i));
  return MakeChart(chart);
}

Chart JudgedTrials::OverIlluminants(const JudgedView& view) const {
  ProfileChart chart{
      Text(ReportText::kProfileIlluminants), TotalHeading(), Text(ReportText::kIlluminantAxis), {}, {}, {}};
  for (std::size_t i = 0; i < IlluminantCount(); ++i) {
    chart.names.push_back(IlluminantAt(i));
    chart.positions.push_back(static_cast<double>(i));
  }
  for (const std::size_t t : WorstFirst(view)) {
    auto& totals = chart.trials.emplace_back();
    for (std::size_t i = 0; i < IlluminantCount(); ++i) totals.push_back(TotalOf(trials_[t], i));
  }
  return MakeChart(chart);
}

bool JudgedTrials::AreAngles(const std::vector<std::size_t>& views) const {
  return views.size() > 1 &&
         std::ranges::all_of(views, [this](std::size_t v) { return IsAspecular(views_[v].geometry); });
}

Chart JudgedTrials::OverAngles(const std::vector<std::size_t>& views, std::size_t i) const {
  ProfileChart chart{Text(ReportText::kProfileAngles) + ": " + IlluminantAt(i),
                     TotalHeading(),
                     Text(ReportText::kAngleAxis),
                     {},
                     {},
                     {}};
  const auto angle = [this](std::size_t v) { return AngleOfCode(static_cast<uint8_t>(views_[v].geometry)); };
  std::vector<std::size_t> order = views;
  std::ranges::stable_sort(order, {}, angle);
  std::map<std::string, std::vector<GradedTotal>> trials;
  for (std::size_t place = 0; place < order.size(); ++place) {
    const JudgedView& view = views_[order[place]];
    chart.names.push_back(GeometryName(view.geometry));
    chart.positions.push_back(angle(order[place]));
    for (const std::size_t t : view.trials) {
      auto& totals = trials[trials_[t].id];
      totals.resize(order.size());
      totals[place] = TotalOf(trials_[t], i);
    }
  }
  for (auto& [id, totals] : trials) chart.trials.push_back(std::move(totals));
  const auto worst = [](const std::vector<GradedTotal>& totals) {
    double largest = 0;
    for (const GradedTotal& total : totals) largest = std::max(largest, total.value);
    return largest;
  };
  std::ranges::stable_sort(chart.trials, std::greater<>(), worst);
  return MakeChart(chart);
}

}  // namespace vrx::tool
