// The shapes that controls draw, and where they stand.

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/platform/locale.h>

#include "controls/layout/chart_pictures.h"
#include "controls/layout/color_pictures.h"

namespace vrx::controls {
namespace {

using Kind = Shape::Kind;
constexpr Look kLook{1, 16, 7};
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<Shape> ShapesOf(const Picture& picture, Kind kind, std::optional<Paint> paint = {}) {
  std::vector<Shape> found;
  for (const Shape& shape : picture.Shapes()) {
    if (shape.kind == kind && (!paint || shape.fill == paint || shape.stroke == paint))
      found.push_back(shape);
  }
  return found;
}

TEST(Axes, TicksAreRound) {
  const struct {
    Interval values;
    int32_t steps;
    const char* labels;
  } rows[] = {
      {{0, 1}, 5, "0.0 0.2 0.4 0.6 0.8 1.0"},
      {{0, 100}, 4, "0 50 100"},
      {{-1.5, 1.5}, 6, "-1.5 -1.0 -0.5 0.0 0.5 1.0 1.5"},
      {{360, 750}, 4, "300 400 500 600 700 800"},
      {{0.001, 0.0042}, 4, "0.001 0.002 0.003 0.004 0.005"},
      {{5, 5}, 5, "5.0 5.2 5.4 5.6 5.8 6.0"},
      {{kNaN, 3}, 2, "0.0 0.5 1.0"},
      {kNoInterval, 2, "0.0 0.5 1.0"},
  };
  for (const auto& row : rows) {
    const Ticks ticks = TicksFor(row.values, row.steps);
    std::string labels;
    for (int32_t i = 0; i < ticks.count; ++i) labels += (i ? " " : "") + ticks.Label(i).ToUtf8();
    EXPECT_EQ(labels, row.labels);
  }
  LocaleConventions german;
  german.decimalSeparator = u",";
  const FixedLocale locale(german);
  SetLocale(&locale);
  EXPECT_EQ(TicksFor({0, 1}, 5).Label(1).ToUtf8(), "0,2");
  SetLocale(nullptr);
}

TEST(Polyline, StandsWhereItsValuesAre) {
  CDblPolyline line;
  line.marked = true;
  line.name = u"x";
  for (const CDblPoint point : {CDblPoint{0, 0}, {5, 10}, {6, kNaN}, {7, kUnset}, {8, 5}, {10, 0}})
    line.Add(point);
  for (const Verdict verdict : {kPass, kWarning, kPass, kPass, kFail}) line.verdicts.Add(verdict);
  Picture picture;
  DrawPolylines(picture, {10, 20, 400, 300}, {&line, 1}, kLook);
  const std::vector<Shape> frames = ShapesOf(picture, Kind::kRectangle, Role::kFrame);
  ASSERT_EQ(frames.size(), 1U);
  const Rect box = frames[0].box;
  EXPECT_GE(box.left, 10);
  EXPECT_LE(box.Right(), 410);
  EXPECT_LE(box.Bottom() + 2 * kLook.textHeight, 320);
  // Both axes run from 0 to 10. The two missing points part the line.
  const std::vector<Shape> pieces = ShapesOf(picture, Kind::kLine, Role::kStandard);
  ASSERT_EQ(pieces.size(), 2U);
  EXPECT_EQ(pieces[0].points, (std::vector<CDblPoint>{{box.left, box.Bottom()}, {box.Centre().x, box.top}}));
  EXPECT_EQ(pieces[1].points.back(), (CDblPoint{box.Right(), box.Bottom()}));
  ASSERT_EQ(picture.Targets().size(), 4U);
  EXPECT_EQ(picture.Targets()[2].index, 4);
  EXPECT_EQ(PointName({&line, 1}, picture.Targets()[2]).ToUtf8(), "x: 8.00; 5.00");
  EXPECT_EQ(picture.TargetAt({box.Right() - 3, box.Bottom()}, 5), 3);
  EXPECT_EQ(picture.TargetAt({box.left + 40, box.top}, 5), -1);
  // Verdicts differ in shape: dots for the pass and for the point without a verdict, a triangle, a cross.
  EXPECT_EQ(ShapesOf(picture, Kind::kEllipse).size(), 2U);
  EXPECT_EQ(ShapesOf(picture, Kind::kPolygon, Role::kWarning).size(), 1U);
  EXPECT_EQ(ShapesOf(picture, Kind::kLine, Role::kFail).size(), 2U);

  // A window of no size, and no lines at all.
  Picture none;
  DrawPolylines(none, {0, 0, 0, 0}, {&line, 1}, kLook);
  DrawPolylines(none, {0, 0, 50, 50}, {}, kLook);
  for (const Shape& shape : none.Shapes()) {
    for (const CDblPoint& point : shape.points) EXPECT_TRUE(std::isfinite(point.x) && std::isfinite(point.y));
  }
}

TEST(Plane, OutlinesAreTheTolerances) {
  CEllipseData ellipse;
  const double values[] = {0.1, 0.5, -0.2, 1, 2, 0.75, 30, 1, 1};
  for (int32_t i = 0; i < CEllipseData::kValues; ++i) ellipse[i] = values[i];
  DifferencePlane plane;
  SetOutlines(plane, ellipse, 0.6);
  for (const auto& [outline, value] : {std::pair{&plane.limit, 1.0}, std::pair{&plane.warning, 0.6}}) {
    for (const CDblPoint& point : *outline) {
      const Difference difference{0.1, point.x, point.y, 0, 0, 0, 0};
      ASSERT_NEAR(ellipse.Value(difference), value, 1e-12);
    }
  }
  CBoxTolData box;
  box.SetTolerance(1, 3, 1);
  SetOutlines(plane, box, 0.5);
  EXPECT_EQ(plane.limit[2], (CDblPoint{3, 1.5}));
  EXPECT_EQ(plane.warning[0], (CDblPoint{0, -0.75}));

  plane.trials = {{2, -1, 0.5, kPass, u"near"}, {0, 8, 0, kFail, u"far"}, {kNaN, 0, 0, kFail, u"lost"}};
  Picture picture;
  DrawDifferencePlane(picture, {0, 0, 300, 400}, plane, kLook);
  const Rect frame = ShapesOf(picture, Kind::kRectangle, Role::kFrame)[0].box;
  EXPECT_EQ(frame.width, frame.height);
  ASSERT_EQ(picture.Targets().size(), 2U);
  const CDblPoint near = picture.Targets()[0].at, far = picture.Targets()[1].at;
  EXPECT_NEAR(far.x, frame.Centre().x, 1e-9);
  const double unit = (frame.Centre().y - far.y) / 8;
  EXPECT_NEAR(near.x - frame.Centre().x, 2 * unit, 1e-9);
  EXPECT_NEAR(near.y - frame.Centre().y, unit, 1e-9);
  EXPECT_TRUE(frame.Contains(far));

  LightnessBar bar;
  bar.limit = {-1, 2};
  bar.trials = plane.trials;
  Picture lightness;
  DrawLightnessBar(lightness, {0, 0, 60, 300}, bar, kLook);
  const Rect track = ShapesOf(lightness, Kind::kRectangle, Role::kFrame)[0].box;
  const std::vector<Shape> limits = ShapesOf(lightness, Kind::kLine, Role::kFail);
  ASSERT_EQ(limits.size(), 4U);  // two limits, and the cross of the fail
  const double perUnit = (limits[0].points[0].y - limits[1].points[0].y) / 3;
  EXPECT_NEAR(track.Centre().y - lightness.Targets()[0].at.y, 0.5 * perUnit, 1e-9);
}

// The white of any illuminant is the white of the screen; the primaries of IEC 61966-2-1 under D65 are its corners.
TEST(Swatches, ShowTheDisplaysColours) {
  const struct {
    vrxIlluminant illuminant;
    CTrisValues xyz;
    uint32_t color;
    bool inGamut;
  } rows[] = {
      {vrxIllumD65, {95.047, 100, 108.883}, 0xFFFFFF, true},
      {vrxIllumD65, {41.24, 21.26, 1.93}, 0x0000FF, true},
      {vrxIllumD65, {60, 10, 1}, 0, false},
      {vrxIllumA, {0, 0, 0}, 0x000000, true},
  };
  for (const auto& row : rows) {
    const Swatch swatch = SwatchOf(row.xyz, row.illuminant, kObserver2);
    EXPECT_EQ(swatch.inGamut, row.inGamut);
    for (uint32_t shift = 0; row.inGamut && shift < 24; shift += 8) {
      EXPECT_NEAR(swatch.color >> shift & 0xFF, row.color >> shift & 0xFF, 2);
    }
  }
  SwatchPair pair;
  pair.standard = {0x112233, true};
  pair.trial = {0x445566, false};
  for (const bool framed : {false, true}) {
    pair.framed = framed;
    Picture picture;
    DrawSwatchPair(picture, {0, 0, 101, 40}, pair, kLook);
    const std::vector<Shape> trial = ShapesOf(picture, Kind::kRectangle, Paint::Fixed(0x445566));
    ASSERT_EQ(trial.size(), 1U);
    const Rect standard = ShapesOf(picture, Kind::kRectangle, Paint::Fixed(0x112233))[0].box;
    // Split, they touch and leave nothing; framed, the standard is all around.
    if (framed)
      EXPECT_EQ(trial[0].box, (Rect{25.25, 10, 50.5, 20}));
    else
      EXPECT_EQ(standard.Right(), trial[0].box.left);
    EXPECT_EQ(framed ? standard.Right() : trial[0].box.Right(), 101);
    ASSERT_EQ(ShapesOf(picture, Kind::kPolygon).size(), 1U);
    EXPECT_EQ(ShapesOf(picture, Kind::kPolygon)[0].points[0],
              (CDblPoint{trial[0].box.Right(), trial[0].box.top}));
  }
}

TEST(Shapes, FollowTheSystem) {
  Palette dark;
  dark.paper = 0;
  dark.text = 0x00FF00;
  dark.muted = 0x3FF23F;
  dark.highContrast = true;
  for (const Role role : {Role::kPass, Role::kFail, Role::kFrame, Role::kTrial, Role::kStandard}) {
    EXPECT_EQ(ColorOf(role, dark), dark.text);
    EXPECT_NE(ColorOf(role, Palette()), Palette().paper);
  }
  EXPECT_EQ(ColorOf(Paint::Fixed(0x123456), dark), 0x123456U);
  Picture picture;
  picture.Text({10, 0, 20, 16}, u"text", Role::kText);
  picture.Line({0, 0}, {5, 5}, Role::kText);
  picture.Line({10, 0}, {20, 5}, Role::kText);
  picture.KeepDirection();
  picture.MirrorIn(100);
  EXPECT_EQ(picture.Shapes()[0].box, (Rect{70, 0, 20, 16}));
  EXPECT_EQ(picture.Shapes()[0].align, Align::kEnd);
  EXPECT_EQ(picture.Shapes()[1].points[1], (CDblPoint{95, 5}));
  EXPECT_EQ(picture.Shapes()[2].points, (std::vector<CDblPoint>{{80, 0}, {90, 5}}));
}

TEST(Charts, AreMadeOfTheirData) {
  CurvesData curves;
  curves.first = 400;
  curves.curves = {{10, 20, kUnset, 40}, {11, 19, 30}};
  const std::vector<CDblPolyline> differences = CurveDifferences(curves);
  ASSERT_EQ(differences.size(), 1U);
  EXPECT_EQ(differences[0][0], (CDblPoint{400, 1}));
  EXPECT_EQ(differences[0][1], (CDblPoint{410, -1}));
  EXPECT_TRUE(IsUnset(differences[0][2].y) && IsUnset(differences[0][3].y));
  Picture picture;
  DrawCurves(picture, {0, 0, 400, 400}, curves, kLook);
  ASSERT_EQ(picture.Targets().size(), 3U + 3U + 2U);
  EXPECT_EQ(picture.Targets().back().line, 2);
  EXPECT_EQ(picture.Targets()[0].at.x, picture.Targets()[6].at.x);  // one wavelength, one place

  const AnglesData angles{u"dE", {15, 25, 45}, {{1, 2, 3}}, {2, 2, 2}, 0.75};
  const std::vector<CDblPolyline> lines = AngleLines(angles);
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0].verdicts[0], kPass);
  EXPECT_EQ(lines[0].verdicts[1], kWarning);
  EXPECT_EQ(lines[0].verdicts[2], kFail);
  EXPECT_EQ(lines[2][1], (CDblPoint{25, 1.5}));

  const TrendData trend{u"dE", {0.5, 3}, 2, 1};
  EXPECT_EQ(TrendLine(trend).verdicts[1], kFail);
  EXPECT_EQ(TrendLevels(trend).size(), 1U);
  EXPECT_TRUE(TrendLevels({u"", {1}, kUnset, 1}).empty());
}

TEST(Progress, TellsHowFarAndHowLong) {
  const struct {
    ProgressData data;
    double part;
    const char* text;
  } rows[] = {
      {{0, 200, 50, -1, -1, u""}, 0.25, "25 %"},
      {{0, 100, 99.9, 61, -1, u""}, 0.999, "99 %  1:01 left"},
      {{0, 100, 500, 3725, kFail, u"last lot"}, 1, "last lot  1:02:05 left"},
      {{5, 5, 5, -1, -1, u""}, 0, "0 %"},
      {{0, 1, kNaN, kNaN, -1, u""}, 0, "0 %"},
  };
  for (const auto& row : rows) {
    EXPECT_DOUBLE_EQ(PartDone(row.data), row.part);
    EXPECT_EQ(ProgressText(row.data).ToUtf8(), row.text);
  }
  Picture picture;
  DrawProgress(picture, {0, 0, 200, 20}, rows[0].data, kLook);
  EXPECT_EQ(ShapesOf(picture, Kind::kRectangle, Role::kSelection)[0].box, (Rect{0, 0, 50, 20}));
  EXPECT_EQ(PicturePlace({0, 0, 100, 100}, 50, 20, PictureMode::kFit), (Rect{0, 30, 100, 40}));
  EXPECT_EQ(PicturePlace({0, 0, 100, 100}, 50, 20, PictureMode::kCentre), (Rect{25, 40, 50, 20}));
  EXPECT_EQ(PicturePlace({0, 0, 100, 100}, 0, 20, PictureMode::kFit), (Rect{0, 0, 100, 100}));
}

}  // namespace
}  // namespace vrx::controls
