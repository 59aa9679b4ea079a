
#include "tools/vrx/report/judged_trials.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>
#include <variant>

#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/foundation/angles.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"

namespace vrx::tool {
namespace {

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
    view.colours.push_back({pictures::SwatchOf(color.xyz, settings_.illuminants[i], settings_.observer),
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
      result.metamerism = MetamerismIndex(
          illuminant, settings_.observer,
          {judge.StandardColor(standardIndex, 0).xyz, judge.StandardColor(standardIndex, i).xyz},
          {judgement.under[0].trial.xyz, judgement.under[i].trial.xyz});
    }
    result.colour = pictures::SwatchOf(result.JudgementUnder::trial.xyz, illuminant, settings_.observer);
  }
  views_[trial.view].trials.push_back(trials_.size() - 1);
}

std::string JudgedTrials::IlluminantAt(std::size_t i) const {
  return ShownLight(settings_.illuminants[i], settings_.observer);
}

std::string JudgedTrials::NameOf(const JudgedView& view) {
  const std::string geometry = GeometryName(view.geometry);
  return geometry.empty() ? view.standard : view.standard + ", " + geometry;
}

pictures::GradedTotal JudgedTrials::TotalOf(const JudgedTrial& trial, std::size_t i) const {
  const double limit = TotalLimitOf(views_[trial.view].colours[i].limits);
  const JudgedResult& result = trial.results[i];
  return {result.Total(), limit, limit * settings_.warningFactor, result.verdict, true};
}

std::vector<std::size_t> JudgedTrials::WorstFirst(const JudgedView& view) const {
  std::vector<std::size_t> order = view.trials;
  std::ranges::stable_sort(order, std::greater<>(), [this](std::size_t t) { return trials_[t].Badness(); });
  return order;
}

// Charts ------------------------------------------------------------------------------------------------------

Chart JudgedTrials::Curves(const JudgedView& view) const {
  CurvesChart chart;
  chart.range = measured_;
  chart.title = Text(ReportText::kCurves);
  chart.standard = &view.curve;
  for (const std::size_t t : WorstFirst(view)) {
    if (trials_[t].hasCurve) chart.trials.push_back(&trials_[t].curve);
  }
  return MakeChart(chart);
}

CString JudgedTrials::HeadingOf(int32_t element, const char* other) const {
  const auto found = std::ranges::find(columns_, element, &DifferenceColumn::element);
  return ForPicture(PlotsLab() || found == columns_.end() ? other : found->heading);
}

void JudgedTrials::SetLimits(const JudgedView::Colour& colour, PlaneChart& chart) const {
  const double factor = settings_.warningFactor;
  if (const auto* ellipse = std::get_if<CEllipseData>(&colour.limits)) {
    pictures::SetOutlines(chart.plane, *ellipse, factor);
    chart.lightness.limit = pictures::EllipseLightness(*ellipse, 1);
    chart.lightness.warning = pictures::EllipseLightness(*ellipse, factor);
    return;
  }
  const auto& box = std::get<CBoxTolData>(colour.limits);
  const auto isLimited = [&box](int32_t k) {
    return std::isfinite(box.Limits(k).upper - box.Limits(k).lower);
  };
  if (isLimited(0)) {
    chart.lightness.limit = box.Limits(0);
    chart.lightness.warning = ScaledAboutCentre(chart.lightness.limit, factor);
  }
  if (!isLimited(1) || !isLimited(2)) return;
  pictures::SetOutlines(chart.plane, box, factor);
  if (settings_.difference.system != vrxSystemLch) return;
  CLabValues lab;
  lab.SetValues(colour.lab);
  const auto outline = [&](double scale) {
    return pictures::ChromaHueOutline(lab, ScaledAboutCentre(box.Limits(1), scale),
                                      ScaledAboutCentre(box.Limits(2), scale));
  };
  chart.plane.limit = outline(1);
  chart.plane.warning = outline(factor);
}

Chart JudgedTrials::Plane(const JudgedView& view, std::size_t i) const {
  PlaneChart chart;
  chart.title = IlluminantAt(i);
  chart.plane.xHeading = HeadingOf(1,
                                   "\xCE\x94"
                                   "a*");
  chart.plane.yHeading = HeadingOf(2,
                                   "\xCE\x94"
                                   "b*");
  chart.lightness.heading = HeadingOf(0, "\xCE\x94L*");
  SetLimits(view.colours[i], chart);
  for (const std::size_t t : view.trials) {
    for (const JudgedResult& result : trials_[t].results) {
      for (const double value : result.plotted) {
        if (IsShown(value)) chart.plane.reach = std::max(chart.plane.reach, std::fabs(value));
      }
    }
    const JudgedResult& result = trials_[t].results[i];
    const auto& [x, y, lightness] = result.plotted;
    // What a picture shows of a trial has its own verdict: a trial that is too light is well where only its hue is seen. A
    // picture without limits has none, and shows that of the trial.
    const Verdict inPlane =
        chart.plane.limit.empty() ? result.verdict : pictures::VerdictInPlane(chart.plane, {x, y});
    const Verdict onBar = IsShown(chart.lightness.limit.lower)
                              ? pictures::VerdictOfLightness(chart.lightness, lightness)
                              : result.verdict;
    chart.plane.trials.push_back({x, y, lightness, inPlane, {}});
    chart.lightness.trials.push_back({x, y, lightness, onBar, {}});
  }
  return MakeChart(chart);
}

std::vector<std::size_t> JudgedTrials::TrendPlaces(const std::vector<std::size_t>& trials) const {
  using Key = std::tuple<std::string, std::string, std::size_t>;  // standard, trial, the how manieth of them
  std::map<std::pair<std::size_t, std::string>, std::size_t> seen;
  std::map<Key, std::size_t> placeOf;
  std::vector<std::size_t> places;
  places.reserve(trials.size());
  for (const std::size_t t : trials) {
    const JudgedTrial& trial = trials_[t];
    const std::size_t nth = seen[{trial.view, trial.id}]++;
    const Key key{views_[trial.view].standard, trial.id, nth};
    places.push_back(placeOf.try_emplace(key, placeOf.size() + 1).first->second);
  }
  return places;
}

// One line, or one for each geometry.
pictures::TrendData JudgedTrials::TrendOf(const std::vector<std::size_t>& trials, std::size_t i) const {
  pictures::TrendData trend;
  trend.heading = ForPicture(IlluminantAt(i) + "  " + TotalHeading());
  trend.orderHeading = ForPicture(Text(ReportText::kOrderAxis));
  const std::vector<std::size_t> places = TrendPlaces(trials);
  const std::size_t count = places.empty() ? 0 : *std::ranges::max_element(places);
  std::map<int32_t, std::vector<pictures::GradedTotal>> totals;
  for (std::size_t k = 0; k < trials.size(); ++k) {
    auto& series = totals[views_[trials_[trials[k]].view].geometry];
    series.resize(count);
    series[places[k] - 1] = TotalOf(trials_[trials[k]], i);
  }
  for (auto& [geometry, series] : totals)
    trend.series.push_back(
        {ForPicture(totals.size() > 1 ? GeometryName(geometry) : IlluminantAt(i)), std::move(series)});
  return trend;
}

Chart JudgedTrials::Trend(const std::vector<std::size_t>& trials) const {
  TrendChart chart{Text(ReportText::kTrend), {}};
  for (std::size_t i = 0; i < IlluminantCount(); ++i) chart.strips.push_back(TrendOf(trials, i));
  return MakeChart(chart);
}

Chart JudgedTrials::Histogram(const std::vector<std::size_t>& trials, std::size_t i) const {
  HistogramChart chart{Text(ReportText::kHistogram) + ": " + IlluminantAt(i), {}};
  chart.histogram.heading = ForPicture(TotalHeading());
  chart.histogram.countHeading = ForPicture(Text(ReportText::kCountAxis));
  for (const std::size_t t : trials) {
    for (const JudgedResult& result : trials_[t].results) {
      if (result.Total() > chart.histogram.upper) chart.histogram.upper = result.Total();
    }
  }
  for (const std::size_t t : trials) chart.histogram.totals.push_back(TotalOf(trials_[t], i));
  return MakeChart(chart);
}

Chart JudgedTrials::OverIlluminants(const JudgedView& view) const {
  ProfileChart chart{Text(ReportText::kProfileIlluminants), {}};
  pictures::ProfileData& profile = chart.profile;
  profile.heading = ForPicture(TotalHeading());
  profile.placeHeading = ForPicture(Text(ReportText::kIlluminantAxis));
  for (std::size_t i = 0; i < IlluminantCount(); ++i) {
    profile.names.push_back(ForPicture(IlluminantAt(i)));
    profile.places.push_back(static_cast<double>(i));
  }
  for (const std::size_t t : WorstFirst(view)) {
    auto& totals = profile.trials.emplace_back().totals;
    for (std::size_t i = 0; i < IlluminantCount(); ++i) totals.push_back(TotalOf(trials_[t], i));
  }
  return MakeChart(chart);
}

bool JudgedTrials::AreAngles(const std::vector<std::size_t>& views) const {
  return views.size() > 1 &&
         std::ranges::all_of(views, [this](std::size_t v) { return IsAspecular(views_[v].geometry); });
}

Chart JudgedTrials::OverAngles(const std::vector<std::size_t>& views, std::size_t i) const {
  ProfileChart chart{Text(ReportText::kProfileAngles) + ": " + IlluminantAt(i), {}};
  pictures::ProfileData& profile = chart.profile;
  profile.heading = ForPicture(TotalHeading());
  profile.placeHeading = ForPicture(Text(ReportText::kAngleAxis));
  const auto angle = [this](std::size_t v) { return AngleOfCode(static_cast<uint8_t>(views_[v].geometry)); };
  std::vector<std::size_t> order = views;
  std::ranges::stable_sort(order, {}, angle);
  std::map<std::string, std::vector<pictures::GradedTotal>> trials;
  for (std::size_t place = 0; place < order.size(); ++place) {
    const JudgedView& view = views_[order[place]];
    profile.names.push_back(ForPicture(GeometryName(view.geometry)));
    profile.places.push_back(angle(order[place]));
    for (const std::size_t t : view.trials) {
      auto& totals = trials[trials_[t].id];
      totals.resize(order.size());
      totals[place] = TotalOf(trials_[t], i);
    }
  }
  for (auto& [id, totals] : trials) profile.trials.push_back({ForPicture(id), std::move(totals)});
  const auto worst = [](const pictures::TotalsSeries& trial) {
    double largest = 0;
    for (const pictures::GradedTotal& total : trial.totals) largest = std::max(largest, total.value);
    return largest;
  };
  std::ranges::stable_sort(profile.trials, std::greater<>(), worst);
  return MakeChart(chart);
}

}  // namespace vrx::tool
