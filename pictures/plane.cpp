#include "pictures/plane.h"

#include <algorithm>
#include <cmath>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/numeric/elementary.h>

#include "pictures/axes.h"
#include "pictures/marks.h"

namespace vrx::pictures {
namespace {

// The largest size of the shown coordinates.
void Reach(double& reach, double value) {
  if (IsShown(value)) reach = std::max(reach, std::fabs(value));
}

double ReachOf(const DifferencePlane& plane) {
  double reach = plane.reach;
  for (const CDblPoint& point : plane.limit) Reach(reach, point.x), Reach(reach, point.y);
  for (const TrialPoint& trial : plane.trials) Reach(reach, trial.x), Reach(reach, trial.y);
  return reach;
}

double ReachOf(const LightnessBar& bar) {
  double reach = bar.reach;
  Reach(reach, bar.limit.lower), Reach(reach, bar.limit.upper);
  for (const TrialPoint& trial : bar.trials) Reach(reach, trial.lightness);
  return reach;
}

// An outline as an area with its edge.
void DrawOutline(Picture& picture, const PlotArea& area, const std::vector<CDblPoint>& outline, Role fill,
                 double width, bool dashed) {
  std::vector<CDblPoint> points;
  points.reserve(outline.size());
  for (const CDblPoint& point : outline) points.push_back(area.Within(point.x, point.y));
  picture.Polygon(points, fill);
  picture.Line(points, Role::kText, width, dashed);
}

void DrawInterval(Picture& picture, const PlotArea& area, Interval interval, Role fill, double width,
                  bool dashed) {
  if (!IsShown(interval.lower) || !IsShown(interval.upper)) return;
  const double left = area.Box().left, top = area.Within(0, interval.upper).y;
  picture.Rectangle({left, top, area.Box().width, area.Within(0, interval.lower).y - top}, fill);
  area.Horizontal(picture, interval.lower, Role::kText, width, dashed);
  area.Horizontal(picture, interval.upper, Role::kText, width, dashed);
}

void AddMark(MarkLayer& marks, CDblPoint at, const TrialPoint& trial, bool isJudged) {
  if (isJudged)
    marks.Add(at, trial.verdict);
  else
    marks.Add(at, Role::kTrial);
}

void DrawStrip(Picture& picture, const PlotArea& area, const LightnessBar& bar, const Look& look) {
  picture.AddScale(area.GetScale());
  area.Horizontal(picture, 0, Role::kStandard, look.scale, false);
  picture.Frame(area.Box(), Role::kFrame);
  MarkLayer marks;
  for (std::size_t i = 0; i < bar.trials.size(); ++i) {
    if (!IsShown(bar.trials[i].lightness)) continue;
    const CDblPoint at = area.Within(0.5, bar.trials[i].lightness);
    AddMark(marks, at, bar.trials[i], bar.areJudged);
    picture.AddTarget({at, 0, static_cast<int32_t>(i)});
  }
  marks.DrawTicks(picture, std::min(area.Box().width / 2, 2 * kMarkRadius * look.scale));
}

}  // namespace

std::vector<CDblPoint> BoxOutline(Interval x, Interval y) {
  return {{x.lower, y.lower}, {x.upper, y.lower}, {x.upper, y.upper}, {x.lower, y.upper}, {x.lower, y.lower}};
}

std::vector<CDblPoint> ChromaHueOutline(const CLabValues& standard, Interval chroma, Interval hue) {
  constexpr int32_t kSteps = 36;
  const double C = standard[CLabValues::kChroma], h = HueRadiansOf(standard);
  const auto angle = [C](double limit) {
    const double half = std::clamp(limit / std::max(2 * C, 1e-9), -1.0, 1.0);
    return 2 * Asin(half);
  };
  std::vector<CDblPoint> outline;
  const auto arc = [&](double radius, double from, double to) {
    for (int32_t i = 0; i <= kSteps; ++i) {
      const double at = h + from + (to - from) * i / kSteps;
      outline.push_back(
          {radius * Cos(at) - standard[CLabValues::kA], radius * Sin(at) - standard[CLabValues::kB]});
    }
  };
  arc(C + chroma.upper, angle(hue.lower), angle(hue.upper));
  arc(std::max(C + chroma.lower, 0.0), angle(hue.upper), angle(hue.lower));
  outline.push_back(outline.front());
  return outline;
}

std::vector<CDblPoint> EllipseOutline(const CEllipseData& ellipse, double factor) {
  const double a = ellipse[CEllipseData::kCentreA], b = ellipse[CEllipseData::kCentreB];
  std::vector<CDblPoint> outline;
  for (const PlanePoint& point : ellipse.Section(EllipsePlane::kAB))
    outline.push_back({a + (point.x - a) * factor, b + (point.y - b) * factor});
  return outline;
}

Interval EllipseLightness(const CEllipseData& ellipse, double factor) {
  const double centre = ellipse[CEllipseData::kCentreL];
  const double axis = ellipse[CEllipseData::kLightnessAxis] * factor;
  return {centre - axis, centre + axis};
}

void SetOutlines(DifferencePlane& plane, const CBoxTolData& box, double warningFactor) {
  const Interval x = box.Limits(1), y = box.Limits(2);
  plane.limit = BoxOutline(x, y);
  plane.warning = BoxOutline(ScaledAboutCentre(x, warningFactor), ScaledAboutCentre(y, warningFactor));
}

void SetOutlines(DifferencePlane& plane, const CEllipseData& ellipse, double warningFactor) {
  plane.limit = EllipseOutline(ellipse, 1);
  plane.warning = EllipseOutline(ellipse, warningFactor);
}

// The sides of a polygon that a ray from the point crosses: an odd number of them from inside. A point on a side, to within
// rounding, is inside.
bool IsInside(const std::vector<CDblPoint>& outline, CDblPoint point) {
  bool isInside = false;
  for (std::size_t i = 1; i < outline.size(); ++i) {
    const CDblPoint &p = outline[i - 1], &q = outline[i];
    const double dx = q.x - p.x, dy = q.y - p.y;
    const double across = dx * (point.y - p.y) - dy * (point.x - p.x),
                 along = dx * (point.x - p.x) + dy * (point.y - p.y);
    const double length = dx * dx + dy * dy;
    if (std::fabs(across) <= 1e-9 * length && along >= 0 && along <= length) return true;
    if ((p.y > point.y) == (q.y > point.y)) continue;
    if (point.x < p.x + (point.y - p.y) / dy * dx) isInside = !isInside;
  }
  return isInside;
}

Verdict VerdictInPlane(const DifferencePlane& plane, CDblPoint point) {
  if (!plane.limit.empty() && !IsInside(plane.limit, point)) return kFail;
  return plane.warning.empty() || IsInside(plane.warning, point) ? kPass : kWarning;
}

Verdict VerdictOfLightness(const LightnessBar& bar, double lightness) {
  const auto holds = [lightness](Interval limit) {
    return !IsShown(limit.lower) || !IsShown(limit.upper) ||
           (limit.lower <= lightness && lightness <= limit.upper);
  };
  return !holds(bar.limit) ? kFail : holds(bar.warning) ? kPass : kWarning;
}

void DrawDifferencePlane(Picture& picture, Rect box, const DifferencePlane& plane, const Look& look) {
  const Ticks ticks = SymmetricTicks(ReachOf(plane));
  Rect inner = PlotArea::Inner(box, ticks, look);
  inner.width = inner.height = std::max(std::min(inner.width, inner.height), 1.0);
  const PlotArea area(inner, ticks, ticks);
  DrawOutline(picture, area, plane.limit, Role::kBand, 1.4 * look.scale, false);
  DrawOutline(picture, area, plane.warning, Role::kInside, look.scale, true);
  area.PaintX(picture, look, plane.xHeading);
  area.PaintY(picture, look, plane.yHeading);
  area.Vertical(picture, 0, Role::kFrame, look.scale, false);
  area.Horizontal(picture, 0, Role::kFrame, look.scale, false);
  picture.Frame(area.Box(), Role::kFrame);
  picture.AddMark(area.At(0, 0), Mark::kPlus, Role::kStandard, 2 * kMarkRadius * look.scale);
  MarkLayer marks;
  for (std::size_t i = 0; i < plane.trials.size(); ++i) {
    const TrialPoint& trial = plane.trials[i];
    if (!IsShown(trial.x) || !IsShown(trial.y)) continue;
    const CDblPoint at = area.Within(trial.x, trial.y);
    AddMark(marks, at, trial, plane.areJudged);
    picture.AddTarget({at, 0, static_cast<int32_t>(i)});
  }
  marks.Draw(picture, look);
  picture.AddScale(area.GetScale());
}

void DrawLightnessBar(Picture& picture, Rect box, const LightnessBar& bar, const Look& look) {
  const Ticks ticks = SymmetricTicks(ReachOf(bar));
  const double left = PlotArea::LabelWidth(ticks, look) + 8 * look.scale;
  const PlotArea area({box.left + left, box.top + 2 * look.textHeight, box.width - left - 4 * look.scale,
                       box.height - 3 * look.textHeight},
                      Ticks{}, ticks);
  DrawInterval(picture, area, bar.limit, Role::kBand, 1.4 * look.scale, false);
  DrawInterval(picture, area, bar.warning, Role::kInside, look.scale, true);
  area.PaintY(picture, look, bar.heading);
  DrawStrip(picture, area, bar, look);
}

void DrawPlaneAndLightness(Picture& picture, Rect box, DifferencePlane plane, const LightnessBar& bar,
                           const Look& look) {
  constexpr double kStrip = 24, kGap = 24;
  plane.reach = std::max(ReachOf(plane), ReachOf(bar));
  Picture left;
  DrawDifferencePlane(left, {box.left, box.top, box.width - (kStrip + kGap) * look.scale, box.height}, plane,
                      look);
  const Scale scale = left.Scales()[0];
  const Ticks ticks = SymmetricTicks(plane.reach);
  const double side = scale.perX * (ticks.Upper() - ticks.Lower());
  const double right = scale.x0 + side / 2;
  const PlotArea area({right + kGap * look.scale, scale.y0 - side / 2, kStrip * look.scale, side}, Ticks{},
                      ticks);
  picture.Append(left, 0);
  DrawInterval(picture, area, bar.limit, Role::kBand, 1.4 * look.scale, false);
  DrawInterval(picture, area, bar.warning, Role::kInside, look.scale, true);
  area.PaintY(picture, look, {}, {.hasLabels = false});
  const double width = look.TextWidth(bar.heading) + 2;
  picture.Text(
      {area.Box().Centre().x - width / 2, area.Box().top - 1.5 * look.textHeight, width, look.textHeight},
      bar.heading, Role::kText, Align::kMiddle);
  DrawStrip(picture, area, bar, look);
}

}  // namespace vrx::pictures
