
#include "tools/vrx/report/charts.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <vrxio/text/decimal.h>

#include "pictures/svg_painter.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/report/report_texts.h"

namespace vrx::tool {
namespace {

using pictures::GradedTotal;
using pictures::kPaperLook;

constexpr int32_t kWide = 690, kNarrow = 340;
constexpr int32_t kStrip = 120, kLabels = 30;  // of strips below each other

std::string Decimals(double value, int32_t decimals) {
  return io::FixedDecimals(value == 0 ? 0 : value, decimals);  // no "-0"
}

std::string CountsOf(const std::vector<GradedTotal>& totals) {
  std::array<std::size_t, 3> counts{};
  for (const GradedTotal& total : totals) ++counts[static_cast<std::size_t>(total.verdict)];
  return CountsText(counts);
}

std::string LargestText(const CString& heading, const std::vector<GradedTotal>& totals) {
  double largest = 0;
  for (const GradedTotal& total : totals) {
    if (IsShown(total.value)) largest = std::max(largest, total.value);
  }
  return TextOf(ReportText::kLargestSummary, {heading.ToUtf8(), Decimals(largest, 2)});
}

Chart NewChart(std::string title, const char* kind, int32_t width, int32_t height) {
  Chart chart;
  chart.title = std::move(title);
  chart.kind = kind;
  chart.width = width;
  chart.height = height;
  return chart;
}

pictures::Rect BoxOf(const Chart& chart) {
  return {0, 0, static_cast<double>(chart.width), static_cast<double>(chart.height)};
}

// The samples that were measured.
std::vector<double> Measured(const PlottedCurve& curve, const MeasuredRange& range) {
  return {curve.begin() + range.first, curve.begin() + range.last + 1};
}

pictures::CurvesData CurvesOf(const CurvesChart& data) {
  pictures::CurvesData curves;
  curves.first = kFirstWavelength + kWavelengthStep * static_cast<double>(data.range.first);
  curves.step = kWavelengthStep;
  curves.hasStandard = data.standard != nullptr;
  if (data.standard != nullptr) curves.curves.push_back(Measured(*data.standard, data.range));
  for (const PlottedCurve* trial : data.trials) curves.curves.push_back(Measured(*trial, data.range));
  if (data.lower != nullptr && data.upper != nullptr) {
    curves.lower = Measured(*data.lower, data.range);
    curves.upper = Measured(*data.upper, data.range);
  }
  curves.manyTrialsName =
      ForPicture(TextOf(ReportText::kWorstTrialsKey, {std::to_string(pictures::kMostTrialLines)}));
  if (!data.areRecipes) return curves;
  curves.standardName = ForPicture(Text(ReportText::kTarget));
  curves.trialName = ForPicture(Text(ReportText::kRecipes));
  return curves;
}

}  // namespace

std::string Chart::Scales() const {
  std::string scales = kind;
  for (const pictures::Scale& scale : picture.Scales()) {
    scales += "|" + Decimals(scale.x0, 3) + "|" + Decimals(scale.perX, 5) + "|" + Decimals(scale.y0, 3) +
              "|" + Decimals(scale.perY, 5);
  }
  return scales;
}

CString ForPicture(std::string_view utf8) {
  return CString::FromUtf8(ShownText(utf8));
}

PlottedCurve Plotted(const CReflData& curve) {
  PlottedCurve plotted{};
  for (std::size_t i = 0; i < plotted.size(); ++i) {
    plotted[i] = static_cast<float>(curve[static_cast<std::ptrdiff_t>(i)]);
  }
  return plotted;
}

void MeasuredRange::Set(double firstWavelength, double lastWavelength) {
  const auto sample = [](double nm) { return (nm - kFirstWavelength) / kWavelengthStep; };
  first =
      static_cast<int32_t>(std::clamp(std::ceil(sample(firstWavelength) - 1e-6), 0.0, kWavelengths - 2.0));
  last = static_cast<int32_t>(
      std::clamp(std::floor(sample(lastWavelength) + 1e-6), first + 1.0, kWavelengths - 1.0));
}

Chart MakeChart(const CurvesChart& data) {
  const bool hasDifferences = data.standard != nullptr && !data.trials.empty();
  Chart chart = NewChart(data.title, "curves", kWide, hasDifferences ? 390 : 260);
  const ReportText summary = data.areRecipes            ? ReportText::kTargetCurvesSummary
                             : data.standard != nullptr ? ReportText::kCurvesSummary
                                                        : ReportText::kCurvesOnlySummary;
  chart.summary = TextOf(summary, {std::to_string(data.trials.size())});
  pictures::DrawCurves(chart.picture, BoxOf(chart), CurvesOf(data), kPaperLook);
  return chart;
}

Chart MakeChart(const PlaneChart& data) {
  Chart chart = NewChart(data.title, "plane", kNarrow, 312);
  std::array<std::size_t, 3> counts{};
  for (const pictures::TrialPoint& trial : data.plane.trials)
    ++counts[static_cast<std::size_t>(trial.verdict)];
  chart.summary =
      TextOf(ReportText::kPlaneSummary,
             {data.plane.xHeading.ToUtf8(), data.plane.yHeading.ToUtf8(),
              data.plane.areJudged ? CountsText(counts) : std::to_string(data.plane.trials.size())});
  if (data.lightness.heading.IsEmpty())
    pictures::DrawDifferencePlane(chart.picture, BoxOf(chart), data.plane, kPaperLook);
  else
    pictures::DrawPlaneAndLightness(chart.picture, BoxOf(chart), data.plane, data.lightness, kPaperLook);
  return chart;
}

Chart MakeChart(const TrendChart& data) {
  Chart chart =
      NewChart(data.title, "trend", kWide, static_cast<int32_t>(data.strips.size()) * kStrip + kLabels);
  for (const pictures::TrendData& strip : data.strips) {
    for (const pictures::TotalsSeries& series : strip.series) {
      const std::string stripName = strip.series.size() > 1 ? strip.heading.ToUtf8() + ", " : "";
      chart.summary += (chart.summary.empty() ? "" : "; ") + stripName + series.name.ToUtf8() + ": " +
                       LargestText(strip.heading, series.totals) + ", " + CountsOf(series.totals);
    }
  }
  pictures::DrawTrends(chart.picture, BoxOf(chart), data.strips, kPaperLook);
  return chart;
}

Chart MakeChart(const ControlChart& data) {
  Chart chart =
      NewChart(data.title, "control", kWide, static_cast<int32_t>(data.strips.size()) * kStrip + kLabels);
  for (const pictures::ControlStrip& strip : data.strips) {
    const auto signals = std::ranges::count_if(strip.marks, [](Verdict mark) { return mark != kPass; });
    chart.summary +=
        (chart.summary.empty() ? "" : "; ") +
        TextOf(ReportText::kControlSummary,
               {strip.heading.ToUtf8(), std::to_string(strip.values.size()), std::to_string(signals)});
  }
  pictures::DrawControlStrips(chart.picture, BoxOf(chart), data.strips, kPaperLook);
  return chart;
}

Chart MakeChart(const HistogramChart& data) {
  Chart chart = NewChart(data.title, "histogram", kNarrow, 224);
  chart.summary =
      LargestText(data.histogram.heading, data.histogram.totals) + ", " + CountsOf(data.histogram.totals);
  pictures::DrawHistogram(chart.picture, BoxOf(chart), data.histogram, kPaperLook);
  return chart;
}

Chart MakeChart(const ProfileChart& data) {
  Chart chart = NewChart(data.title, "profile", kNarrow, 264);
  std::vector<GradedTotal> all;
  for (const auto& trial : data.profile.trials)
    all.insert(all.end(), trial.totals.begin(), trial.totals.end());
  chart.summary = LargestText(data.profile.heading, all);
  pictures::DrawProfile(chart.picture, BoxOf(chart), data.profile, kPaperLook);
  return chart;
}

}  // namespace vrx::tool
