#include "controls/layout/color_pictures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

#include <vrxmath/colorimetry/display_color.h>

#include "controls/layout/axes.h"
#include "controls/layout/plot_picture.h"

namespace vrx::controls {
namespace {

constexpr Paint kBlack = Paint::Fixed(0x000000), kWhite = Paint::Fixed(0xFFFFFF);

// Black or white, whichever is read more easily on a colour.
Paint ReadableOn(uint32_t color) {
  const uint32_t red = color & 0xFF, green = color >> 8 & 0xFF, blue = color >> 16 & 0xFF;
  return 299 * red + 587 * green + 114 * blue > 140'000 ? kBlack : kWhite;
}

// One colour with its name at the bottom and, out of gamut, the mark in its corner.
void DrawSwatch(Picture& picture, Rect box, const Swatch& swatch, WideView name, const Look& look) {
  picture.Rectangle(box, Paint::Fixed(swatch.color));
  const double gap = 3 * look.scale;
  if (box.height > look.textHeight + 2 * gap) {
    picture.Text({box.left + gap, box.Bottom() - look.textHeight - gap, box.width - 2 * gap, look.textHeight},
                 name, ReadableOn(swatch.color));
  }
  if (swatch.inGamut) return;
  const double side = std::min({12 * look.scale, box.width / 2, box.height / 2});
  const CDblPoint corner{box.Right(), box.top};
  picture.Polygon(
      std::array{corner, CDblPoint{corner.x - side, corner.y}, CDblPoint{corner.x, corner.y + side}}, kWhite);
  picture.Line({corner.x - side, corner.y}, {corner.x, corner.y + side}, kBlack, 2 * look.scale);
}

std::vector<CDblPoint> Corners(Interval x, Interval y) {
  return {{x.lower, y.lower}, {x.upper, y.lower}, {x.upper, y.upper}, {x.lower, y.upper}, {x.lower, y.lower}};
}

// The largest size of the shown coordinates.
void Reach(double& reach, double value) {
  if (IsShown(value)) reach = std::max(reach, std::fabs(value));
}

// An axis that has zero in its middle and reaches as far as `reach`.
Ticks SymmetricTicks(double reach, double pixels, const Look& look) {
  const double steps = std::clamp(pixels / (6 * look.digitWidth), 2.0, 8.0);
  return TicksFor({-reach, reach}, static_cast<int32_t>(steps));
}

void DrawTrials(Picture& picture, const std::vector<TrialPoint>& trials, const Look& look, auto position) {
  for (const Verdict verdict : {kPass, kWarning, kFail}) {  // the worse ones over the better ones
    for (std::size_t i = 0; i < trials.size(); ++i) {
      const TrialPoint& trial = trials[i];
      if (trial.verdict != verdict || !IsShown(trial.x) || !IsShown(trial.y) || !IsShown(trial.lightness)) {
        continue;
      }
      picture.AddMark(position(trial), MarkOf(verdict), PaintOf(verdict), 3 * look.scale);
    }
  }
  for (std::size_t i = 0; i < trials.size(); ++i) {
    const TrialPoint& trial = trials[i];
    if (!IsShown(trial.x) || !IsShown(trial.y) || !IsShown(trial.lightness)) continue;
    picture.AddTarget({position(trial), 0, static_cast<int32_t>(i)});
  }
}

}  // namespace

Swatch SwatchOf(const CTrisValues& xyz, vrxIlluminant illuminant, int32_t observer) {
  int32_t red = 0, green = 0, blue = 0;
  const bool inGamut = XyzToDisplayRgb(illuminant, observer, xyz, red, green, blue);
  return {static_cast<uint32_t>(red) | static_cast<uint32_t>(green) << 8 | static_cast<uint32_t>(blue) << 16,
          inGamut};
}

void DrawSwatchPair(Picture& picture, Rect box, const SwatchPair& pair, const Look& look) {
  if (!pair.hasTrial || pair.framed) {
    DrawSwatch(picture, box, pair.standard, pair.standardName, look);
    const Rect inner{box.left + box.width / 4, box.top + box.height / 4, box.width / 2, box.height / 2};
    if (pair.hasTrial) DrawSwatch(picture, inner, pair.trial, pair.trialName, look);
    return;
  }
  const double middle = std::floor(box.width / 2);
  DrawSwatch(picture, {box.left, box.top, middle, box.height}, pair.standard, pair.standardName, look);
  DrawSwatch(picture, {box.left + middle, box.top, box.width - middle, box.height}, pair.trial,
             pair.trialName, look);
}

void SetOutlines(DifferencePlane& plane, const CBoxTolData& box, double warningFactor) {
  const Interval x = box.Limits(1), y = box.Limits(2);
  plane.limit = Corners(x, y);
  plane.warning = Corners(ScaledAboutCentre(x, warningFactor), ScaledAboutCentre(y, warningFactor));
}

void SetOutlines(DifferencePlane& plane, const CEllipseData& ellipse, double warningFactor) {
  const double a = ellipse[CEllipseData::kCentreA], b = ellipse[CEllipseData::kCentreB];
  plane.limit.clear();
  plane.warning.clear();
  for (const PlanePoint& point : ellipse.Section(EllipsePlane::kAB)) {
    plane.limit.push_back({point.x, point.y});
    plane.warning.push_back({a + (point.x - a) * warningFactor, b + (point.y - b) * warningFactor});
  }
}

void DrawDifferencePlane(Picture& picture, Rect box, const DifferencePlane& plane, const Look& look) {
  double reach = plane.reach;
  for (const CDblPoint& point : plane.limit) Reach(reach, point.x), Reach(reach, point.y);
  for (const TrialPoint& trial : plane.trials) Reach(reach, trial.x), Reach(reach, trial.y);
  if (!(reach > 0)) reach = 1;
  const Ticks ticks = SymmetricTicks(reach * 1.05, std::min(box.width, box.height), look);
  const double left = PlotArea::LabelWidth(ticks, look) + 8 * look.scale;
  const double top = 2 * look.textHeight, below = 2 * look.textHeight + 4 * look.scale;
  const double side =
      std::max(std::min(box.width - left - 2 * look.digitWidth, box.height - top - below), 1.0);
  const PlotArea area({box.left + left, box.top + top, side, side}, ticks, ticks);
  area.PaintX(picture, look, plane.xHeading);
  area.PaintY(picture, look, plane.yHeading);
  picture.Line(area.At(0, ticks.first), area.At(0, ticks.Last()), Role::kFrame);
  picture.Line(area.At(ticks.first, 0), area.At(ticks.Last(), 0), Role::kFrame);
  for (const auto& [outline, paint, dashed] :
       {std::tuple{&plane.warning, Role::kWarning, true}, std::tuple{&plane.limit, Role::kFail, false}}) {
    std::vector<CDblPoint> points;
    points.reserve(outline->size());
    for (const CDblPoint& point : *outline) points.push_back(area.Within(point.x, point.y));
    picture.Line(points, paint, look.scale, dashed);
  }
  picture.Frame(area.Box(), Role::kFrame);
  picture.AddMark(area.At(0, 0), Mark::kPlus, Role::kStandard, 6 * look.scale);
  DrawTrials(picture, plane.trials, look,
             [&](const TrialPoint& trial) { return area.Within(trial.x, trial.y); });
}

void DrawLightnessBar(Picture& picture, Rect box, const LightnessBar& bar, const Look& look) {
  double reach = bar.reach;
  Reach(reach, bar.limit.lower), Reach(reach, bar.limit.upper);
  for (const TrialPoint& trial : bar.trials) Reach(reach, trial.lightness);
  if (!(reach > 0)) reach = 1;
  const Ticks ticks = SymmetricTicks(reach * 1.05, box.height, look);
  const double left = PlotArea::LabelWidth(ticks, look) + 8 * look.scale;
  const PlotArea area({box.left + left, box.top + 2 * look.textHeight, box.width - left - 4 * look.scale,
                       box.height - 3 * look.textHeight},
                      Ticks{}, ticks);
  for (const auto& [interval, paint, dashed] :
       {std::tuple{&bar.warning, Role::kWarning, true}, std::tuple{&bar.limit, Role::kFail, false}}) {
    area.Horizontal(picture, interval->lower, paint, look.scale, dashed);
    area.Horizontal(picture, interval->upper, paint, look.scale, dashed);
  }
  area.PaintY(picture, look, bar.heading);
  area.Horizontal(picture, 0, Role::kStandard, 2 * look.scale, false);
  picture.Frame(area.Box(), Role::kFrame);
  DrawTrials(picture, bar.trials, look,
             [&](const TrialPoint& trial) { return area.Within(0.5, trial.lightness); });
}

}  // namespace vrx::controls
