// The shapes of charts, and where they stand.

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/platform/locale.h>

#include "pictures/control_chart.h"
#include "pictures/curves.h"
#include "pictures/marks.h"
#include "pictures/plane.h"
#include "pictures/swatches.h"
#include "pictures/totals.h"

namespace vrx::pictures {
namespace {

using Kind = Shape::Kind;
constexpr Look kLook{1, 16, 7};
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<Shape> ShapesOf(const Picture& picture, Kind kind, std::optional<Paint> paint = {}) {
  std::vector<Shape> found;
  const auto take = [&](const Shape& shape) {
    if (shape.kind == kind && (!paint || shape.fill == paint || shape.stroke == paint))
      found.push_back(shape);
  };
  for (const Shape& shape : picture.Shapes()) {
    take(shape);
    if (shape.kind == Kind::kMarks) std::ranges::for_each(ShapesOfMarks(shape), take);
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
      {{5, 5}, 5, "4.6 4.8 5.0 5.2 5.4"},  // 4.5 to 5.5
      {{kNaN, 3}, 2, "0.0 0.5 1.0"},
      {kNoInterval, 2, "0.0 0.5 1.0"},
  };
  for (const auto& row : rows) {
    const Ticks ticks = TicksFor(row.values, row.steps);
    std::string labels;
    for (const NamedValue& tick : ticks.Shown(kLook))
      labels += (labels.empty() ? "" : " ") + tick.name.ToUtf8();
    EXPECT_EQ(labels, row.labels);
  }
  LocaleConventions german;
  german.decimalSeparator = u",";
  const FixedLocale locale(german);
  SetLocale(&locale);
  EXPECT_EQ(TicksFor({0, 1}, 5).Shown(kLook)[1].name.ToUtf8(), "0,2");
  EXPECT_EQ(TicksFor({0, 1}, 5).Shown({1, 16, 7, false})[1].name.ToUtf8(),
            "0.2");  // a file is the same everywhere
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

// The contrast of WCAG 2.1: (L1 + 0.05) / (L2 + 0.05) of the relative luminances, from the sRGB of 0x00BBGGRR.
double Contrast(uint32_t one, uint32_t other) {
  const auto luminance = [](uint32_t color) {
    const auto linear = [&](uint32_t shift) {
      const double c = (color >> shift & 0xFF) / 255.0;
      return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(0) + 0.7152 * linear(8) + 0.0722 * linear(16);
  };
  const double a = luminance(one), b = luminance(other);
  return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

// Success criteria 1.4.3 and 1.4.11: texts stand out by 4.5 to 1, what has to be told apart by 3 to 1.
TEST(Shapes, AreSeenOnTheirPaper) {
  Palette dark;
  dark.paper = 0x202020;
  dark.text = 0xF0F0F0;
  for (const Palette& palette : {Palette(), dark}) {
    for (const Role role : {Role::kText, Role::kLabel, Role::kStandard}) {
      EXPECT_GE(Contrast(ColorOf(role, palette), palette.paper), 4.5) << static_cast<int>(role);
    }
    for (const Role role :
         {Role::kTrial, Role::kOther, Role::kPass, Role::kWarning, Role::kFail, Role::kFrame}) {
      EXPECT_GE(Contrast(ColorOf(role, palette), palette.paper), 3.0) << static_cast<int>(role);
    }
    EXPECT_LT(Contrast(ColorOf(Role::kGrid, palette), palette.paper), 1.6);  // it stays behind
  }
  EXPECT_EQ(ColorOf(Role::kFrame, Palette()), 0x8C8C8CU);
  // The name on a swatch is black or white, and read on every grey and on pure hues.
  std::vector<uint32_t> colors = {0x0000FF, 0x00FF00, 0xFF0000, 0x00FFFF, 0xFF00FF, 0xFFFF00};
  for (uint32_t grey = 0; grey < 256; grey += 5) colors.push_back(grey * 0x010101);
  for (const uint32_t color : colors) {
    SwatchPair pair;
    pair.hasTrial = false;
    pair.standard = {color, true};
    pair.standardName = u"name";
    Picture picture;
    DrawSwatchPair(picture, {0, 0, 90, 60}, pair, kLook);
    ASSERT_EQ(picture.Shapes().size(), 2U);
    EXPECT_EQ(picture.Shapes()[0].box, (Rect{0, 0, 90, 60}));
    EXPECT_EQ(picture.Shapes()[1].box, (Rect{3, 41, 84, 16}));
    EXPECT_GE(Contrast(picture.Shapes()[1].fill->FixedColor(), color), 3.0) << std::hex << color;
    Picture low;  // no room for the name
    DrawSwatchPair(low, {0, 0, 90, 22}, pair, kLook);
    EXPECT_EQ(low.Shapes().size(), 1U);
  }
}

TEST(Shapes, KeepTheirSizeAndPlace) {
  EXPECT_EQ((Rect{10, 20, 30, 8}.Inset(2)), (Rect{12, 22, 26, 4}));
  EXPECT_EQ((Rect{10, 20, 30, 8}.Inset(5)), (Rect{15, 24, 20, 0}));
  const Rect box{1, 2, 3, 4};
  const std::pair<CDblPoint, bool> points[] = {{{1, 2}, true},     {{4, 2}, false},   {{1, 6}, false},
                                               {{3.9, 5.9}, true}, {{0.9, 3}, false}, {{2, 1.9}, false}};
  for (const auto& [point, isInside] : points)
    EXPECT_EQ(box.Contains(point), isInside) << point.x << ' ' << point.y;

  // A mark reaches as far as its radius on every side.
  for (const Mark mark : {Mark::kDot, Mark::kTriangle, Mark::kCross, Mark::kPlus}) {
    Picture picture;
    picture.AddMark({50, 40}, mark, Role::kPass, 3);
    double left = 1e9, right = -1e9, top = 1e9, bottom = -1e9;
    for (const Shape& shape : ShapesOfMarks(picture.Shapes()[0])) {
      std::vector<CDblPoint> corners = shape.points;
      if (shape.kind == Kind::kEllipse)
        corners = {{shape.box.left, shape.box.top}, {shape.box.Right(), shape.box.Bottom()}};
      for (const CDblPoint& point : corners) {
        left = std::min(left, point.x), right = std::max(right, point.x);
        top = std::min(top, point.y), bottom = std::max(bottom, point.y);
      }
    }
    EXPECT_EQ((Rect{left, top, right - left, bottom - top}), (Rect{47, 37, 6, 6})) << static_cast<int>(mark);
  }
  Picture picture;
  for (const double x : {10.0, 20.0, 20.0}) picture.AddTarget({{x, 0}, 1, static_cast<int32_t>(x)});
  const std::pair<CDblPoint, int32_t> reaches[] = {
      {{15, 0}, 0}, {{16, 0}, 1}, {{20, 5}, 1}, {{20, 5.1}, -1}, {{5, 0}, 0}, {{4.9, 0}, -1}, {{14, 4}, -1}};
  for (const auto& [point, target] : reaches)
    EXPECT_EQ(picture.TargetAt(point, 5), target) << point.x << ' ' << point.y;
  // Mirrored twice, a picture is what it was.
  picture.Text({10, 0, 20, 16}, u"text", Role::kText);
  picture.Text({10, 0, 20, 16}, u"text", Role::kText, Align::kMiddle);
  picture.AddMark({40, 9}, Mark::kTriangle, Role::kWarning, 3);
  picture.Line(std::vector<CDblPoint>{{1, 2}, {3, 9}, {8, 4}}, Role::kText);
  picture.KeepDirection();
  Picture mirrored = picture;
  mirrored.MirrorIn(120);
  EXPECT_EQ(mirrored.Targets()[0].at, (CDblPoint{110, 0}));
  EXPECT_EQ(mirrored.Shapes()[1].align, Align::kMiddle);
  mirrored.MirrorIn(120);
  for (std::size_t i = 0; i < picture.Shapes().size(); ++i) {
    const Shape &one = picture.Shapes()[i], &other = mirrored.Shapes()[i];
    EXPECT_EQ(one.box, other.box);
    EXPECT_EQ(one.align, other.align);
    ASSERT_EQ(one.points.size(), other.points.size());
    for (std::size_t k = 0; k < one.points.size(); ++k)
      EXPECT_NEAR(one.points[k].x, other.points[k].x, 1e-12);
  }
  Picture ring;
  ring.AddTarget({{30, 40}});
  for (const int32_t nobody : {-1, 1}) MarkCurrent(ring, nobody, kLook);
  EXPECT_TRUE(ring.Shapes().empty());
  MarkCurrent(ring, 0, {2, 16, 7});
  ASSERT_EQ(ring.Shapes().size(), 1U);
  EXPECT_EQ(ring.Shapes()[0].box, (Rect{18, 28, 24, 24}));
}

TEST(Axes, CarryValuesToPixels) {
  const PlotArea area({100, 50, 200, 80}, TicksFor({0, 10}, 5), TicksFor({-1, 1}, 4));
  const struct {
    CDblPoint value, at, within;
  } rows[] = {{{0, -1}, {100, 130}, {100, 130}},
              {{10, 1}, {300, 50}, {300, 50}},
              {{2.5, 0.5}, {150, 70}, {150, 70}},
              {{-5, 2}, {0, 10}, {100, 50}},
              {{15, -2}, {400, 170}, {300, 130}}};
  for (const auto& row : rows) {
    EXPECT_EQ(area.At(row.value.x, row.value.y), row.at);
    EXPECT_EQ(area.Within(row.value.x, row.value.y), row.within);
  }
  Picture picture;
  for (const double y : {-1.0, 0.0, 1.0, 1.01, -1.01, kUnset, kNaN})
    area.Horizontal(picture, y, Role::kFail, 1, true);
  ASSERT_EQ(picture.Shapes().size(), 3U);
  EXPECT_EQ(picture.Shapes()[1].points, (std::vector<CDblPoint>{{100, 90}, {300, 90}}));
  Interval interval = kNoInterval;
  for (const double value : {kNaN, kUnset, 3.0, HUGE_VAL, -2.0, -HUGE_VAL}) Widen(interval, value);
  EXPECT_EQ(interval.lower, -2);
  EXPECT_EQ(interval.upper, 3);
  // Labels of x that would touch are left out; each tick has its line all the same.
  for (const double width : {40.0, 120.0, 600.0}) {
    const PlotArea narrow({0, 0, width, 80}, TicksFor({0, 1}, 10), TicksFor({0, 1}, 1));
    Picture labelled;
    narrow.PaintX(labelled, kLook, u"");
    EXPECT_EQ(ShapesOf(labelled, Kind::kLine).size(), 11U);
    const std::vector<Shape> labels = ShapesOf(labelled, Kind::kText, Role::kLabel);
    EXPECT_GE(labels.size(), 2U);
    EXPECT_EQ(labels.size() == 11, width == 600);
    for (std::size_t i = 1; i < labels.size(); ++i) EXPECT_GE(labels[i].box.left, labels[i - 1].box.Right());
  }
}

// Of a crowd one of each verdict is marked, the worst on top, wherever they stand in the order.
TEST(Polyline, OfACrowdTheWorstIsSeen) {
  CDblPolyline line;
  line.marked = true;
  for (int32_t i = 0; i < 60; ++i) {
    line.Add({1 + i * 1e-9, 1});
    line.verdicts.Add(i == 30 ? kWarning : i % 20 == 19 ? kFail : kPass);
  }
  line.Add({0, 0}), line.Add({2, 2});
  Picture picture;
  DrawPolylines(picture, {0, 0, 300, 300}, {&line, 1}, kLook);
  EXPECT_EQ(picture.Targets().size(), 62U);
  std::vector<Mark> marks;
  for (const Shape& shape : picture.Shapes()) {
    if (shape.kind == Kind::kMarks) marks.push_back(shape.mark);
  }
  EXPECT_EQ(marks, (std::vector{Mark::kDot, Mark::kDot, Mark::kTriangle, Mark::kCross}));
  EXPECT_EQ(ShapesOf(picture, Kind::kLine, Role::kFail).size(), 2U);
  EXPECT_EQ(ShapesOf(picture, Kind::kEllipse, Role::kPass).size(), 1U);
  EXPECT_EQ(ShapesOf(picture, Kind::kEllipse, Role::kStandard).size(), 2U);
  // The name of a point goes before that of its line.
  line.name = u"line";
  line.names.Add(u"first");
  EXPECT_EQ(PointName({&line, 1}, {{}, 0, 0}).ToUtf8().substr(0, 7), "first: ");
  EXPECT_EQ(PointName({&line, 1}, {{}, 0, 1}).ToUtf8().substr(0, 6), "line: ");
  for (const Target& target : {Target{{}, 1, 0}, Target{{}, 0, 62}, Target{{}, 0, -1}}) {
    EXPECT_TRUE(PointName({&line, 1}, target).IsEmpty());
  }
  // The line of no width, and ranges that the axes show at least.
  line.width = 0;
  line.xRange = {-10, 10};
  line.yRange = {0, 20};
  Picture wide;
  DrawPolylines(wide, {0, 0, 300, 300}, {&line, 1}, kLook);
  EXPECT_TRUE(ShapesOf(wide, Kind::kLine, Role::kStandard).empty());
  const Rect frame = ShapesOf(wide, Kind::kRectangle, Role::kFrame)[0].box;
  EXPECT_NEAR(wide.Targets()[60].at.x, frame.Centre().x, 1e-9);
  EXPECT_NEAR(wide.Targets()[60].at.y, frame.Bottom(), 1e-9);
  EXPECT_NEAR(wide.Targets()[61].at.y, frame.Bottom() - frame.height / 10, 1e-9);
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
  const std::vector<Shape> limits = ShapesOf(lightness, Kind::kLine, Role::kText);
  ASSERT_EQ(limits.size(), 2U);
  const double perUnit = (limits[0].points[0].y - limits[1].points[0].y) / 3;
  EXPECT_NEAR(track.Centre().y - lightness.Targets()[0].at.y, 0.5 * perUnit, 1e-9);
  // Beside the plane the strip has its scale, and its middle is the plane's.
  Picture both;
  DrawPlaneAndLightness(both, {0, 0, 400, 400}, plane, bar, kLook);
  ASSERT_EQ(both.Scales().size(), 2U);
  EXPECT_NEAR(both.Scales()[0].perY, both.Scales()[1].perY, 1e-9);
  EXPECT_NEAR(both.Scales()[0].y0, both.Scales()[1].y0, 1e-9);
}

// What a picture shows of a trial has a verdict of its own: the outlines' in the plane, the interval's on the strip.
TEST(Plane, GradesWhatItShows) {
  CBoxTolData box;
  box.SetTolerance(1, 3, 1);
  DifferencePlane plane;
  EXPECT_EQ(VerdictInPlane(plane, {9, 9}), kPass);  // there are no limits
  SetOutlines(plane, box,
              0.5);  // -1 to 3 across and -1.5 to 1.5 up; without a warning 0 to 2 and -0.75 to 0.75
  const std::pair<CDblPoint, Verdict> points[] = {
      {{1, 0}, kPass},   {{0, 0.75}, kPass}, {{3, 1.5}, kWarning},   {{-0.5, 0}, kWarning},
      {{3.1, 0}, kFail}, {{0, -2}, kFail},   {{2.001, 0}, kWarning}, {{1, 1.501}, kFail}};
  for (const auto& [point, verdict] : points)
    EXPECT_EQ(VerdictInPlane(plane, point), verdict) << point.x << ' ' << point.y;
  CEllipseData ellipse;
  const double values[] = {0.1, 0.5, -0.2, 1, 2, 0.75, 30, 1, 1};
  for (int32_t i = 0; i < CEllipseData::kValues; ++i) ellipse[i] = values[i];
  SetOutlines(plane, ellipse, 0.6);
  for (double x = -2; x <= 3; x += 0.37) {
    for (double y = -2; y <= 2; y += 0.29) {
      const double value = ellipse.Value(Difference{0.1, x, y, 0, 0, 0, 0});
      if (std::fabs(value - 1) < 0.02 || std::fabs(value - 0.6) < 0.02)
        continue;  // the outline is of short lines
      EXPECT_EQ(VerdictInPlane(plane, {x, y}), value > 1     ? kFail
                                               : value > 0.6 ? kWarning
                                                             : kPass)
          << x << ' ' << y;
    }
  }
  LightnessBar bar;
  EXPECT_EQ(VerdictOfLightness(bar, 9), kPass);
  bar.limit = {-1, 2};
  bar.warning = {-0.5, 1};
  const std::pair<double, Verdict> heights[] = {
      {0, kPass}, {1, kPass}, {-1, kWarning}, {2.1, kFail}, {-1.1, kFail}};
  for (const auto& [lightness, verdict] : heights)
    EXPECT_EQ(VerdictOfLightness(bar, lightness), verdict) << lightness;
}

// Ten thousand marks do not overlap, all are of one size, and tell how many points each stands for.
TEST(Marks, OfManyStandForACrowd) {
  MarkLayer layer;
  for (int32_t i = 0; i < 10'000; ++i) layer.Add({50 + 40 * std::sin(i * 0.7), 50 + 0.004 * i}, kPass);
  layer.Add({200, 50}, kPass);  // alone
  layer.Add({50, 50}, kFail);
  Picture picture;
  layer.Draw(picture, kLook);
  std::vector<CDblPoint> passes;
  std::vector<double> strengths;
  for (const Shape& shape : picture.Shapes()) {
    EXPECT_EQ(shape.radius, kMarkRadius);
    if (shape.mark != Mark::kDot) continue;
    passes.insert(passes.end(), shape.points.begin(), shape.points.end());
    strengths.push_back(shape.strength);
  }
  EXPECT_EQ(picture.Shapes().back().mark, Mark::kCross);
  EXPECT_LT(passes.size(), 100U);
  EXPECT_TRUE(std::ranges::is_sorted(strengths) && strengths.size() > 1);
  const std::vector<CDblPoint> few(10, CDblPoint{1, 1});
  const std::vector<Crowd> one = Thinned(few, 2);
  ASSERT_EQ(one.size(), 1U);
  EXPECT_EQ(one[0].count, 10U);
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

  // Lines of trials, then the limit and the beginning of the warning band.
  const double at15[] = {1, 2, 3}, limits[] = {2, 2, 2};
  ProfileData angles;
  angles.places = {15, 25, 45};
  angles.trials = {{u"", Graded(at15, limits, 0.75)}};
  const std::vector<CDblPolyline> lines = ProfileLines(angles);
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0].verdicts[0], kPass);
  EXPECT_EQ(lines[0].verdicts[1], kWarning);
  EXPECT_EQ(lines[0].verdicts[2], kFail);
  EXPECT_EQ(lines[2][1], (CDblPoint{25, 1.5}));
}

TEST(Charts, ControlChartsShowCentreLimitsAndSignals) {
  ControlStrip strip{u"dL", u"Trial", {-1, 0.5, 3}, {kPass, kWarning, kFail}, 0.5, -2, 2.5};
  ControlStrip single{u"dE", u"Trial", {1}, {kPass}};
  Picture picture;
  DrawControlStrips(picture, {0, 0, 400, 270}, {strip, single}, kLook);
  ASSERT_EQ(picture.Targets().size(), 4U);  // values alone: lines of limits are none
  EXPECT_EQ(picture.Targets()[3].line, 1);
  ASSERT_EQ(picture.Scales().size(), 2U);
  const Scale& scale = picture.Scales()[0];
  const auto heightOf = [&](double value) { return scale.y0 + scale.perY * value; };
  EXPECT_NEAR(picture.Targets()[2].at.y, heightOf(3), 1e-9);
  std::map<Mark, int> marks;
  int levels = 0;
  for (const Shape& shape : picture.Shapes()) {
    if (shape.kind == Shape::Kind::kMarks) marks[shape.mark] += static_cast<int>(shape.points.size());
    for (const auto& [level, dashed] : {std::pair{0.5, false}, std::pair{-2.0, true}, std::pair{2.5, true}}) {
      levels += shape.kind == Shape::Kind::kLine && shape.dashed == dashed && shape.points.size() == 2 &&
                shape.stroke == Role::kText && std::abs(shape.points[0].y - heightOf(level)) < 1e-9;
    }
  }
  EXPECT_EQ(marks, (std::map<Mark, int>{{Mark::kDot, 2}, {Mark::kTriangle, 1}, {Mark::kCross, 1}}));
  EXPECT_EQ(levels, 3);  // the second strip has no chart, and so no lines
}

// A trend of one limit for all.
TrendData TrendOf(std::vector<double> totals, double limit, double warningFactor) {
  TrendData trend;
  trend.series = {{u"", Graded(totals, std::array{limit}, warningFactor)}};
  return trend;
}

TEST(Charts, GradeByTheirLimits) {
  // Exactly at the limit and at the beginning of the warning band a value still passes on the better side.
  const std::vector<double> totals = {0, 1.5, 1.6, 2, 2.1, kUnset};
  const std::vector<CDblPolyline> trend = TrendLines(TrendOf(totals, 2, 0.75));
  ASSERT_EQ(trend.size(), 3U);
  const Verdict expected[] = {kPass, kPass, kWarning, kWarning, kFail};
  for (int32_t i = 0; i < 5; ++i) {
    EXPECT_EQ(trend[0].verdicts[i], expected[i]) << i;
    EXPECT_EQ(trend[0][i].x, i + 1);  // trials are counted from 1
  }
  // A limit of one height is one piece across all places.
  ASSERT_EQ(trend[1].GetSize(), 2);
  EXPECT_EQ(trend[1][0], (CDblPoint{0.5, 2}));
  EXPECT_EQ(trend[1][1], (CDblPoint{6.5, 2}));
  EXPECT_EQ(trend[2][0], (CDblPoint{0.5, 1.5}));
  EXPECT_TRUE(!trend[1].dashed && trend[2].dashed);
  EXPECT_EQ(TrendLines(TrendOf(totals, 2, 1)).size(), 2U);
  const std::vector<CDblPolyline> unlimited = TrendLines(TrendOf(totals, kUnset, 0.75));
  ASSERT_EQ(unlimited.size(), 1U);
  EXPECT_EQ(unlimited[0].verdicts.GetSize(), 0);
  // Limits that change from trial to trial are steps; a trial without one parts them.
  TrendData steps;
  steps.series = {{u"", Graded(std::array{1.0, 1.0, 1.0, 1.0}, std::array{2.0, 2.0, kUnset, 3.0}, 1)}};
  const CDblPolyline limit = TrendLines(steps)[1];
  ASSERT_EQ(limit.GetSize(), 5);
  EXPECT_EQ(limit[1], (CDblPoint{2.5, 2}));
  EXPECT_TRUE(IsUnset(limit[2].y));
  EXPECT_EQ(limit[3], (CDblPoint{3.5, 3}));

  // At each place the limit of the first trial that has one.
  ProfileData angles;
  angles.places = {15, 25, 45};
  angles.trials = {{u"", Graded(std::array{1.0, 2.0}, std::array{2.0, kUnset}, 1)},
                   {u"", Graded(std::array{1.0, 1.0, 1.0}, std::array{9.0, kUnset, 4.0}, 1)}};
  const std::vector<CDblPolyline> lines = ProfileLines(angles);
  ASSERT_EQ(lines.size(), 3U);  // no warning band
  EXPECT_EQ(lines[2][0], (CDblPoint{15, 2}));
  EXPECT_TRUE(IsUnset(lines[2][1].y));
  EXPECT_EQ(lines[2][2], (CDblPoint{45, 4}));

  CurvesData curves;
  curves.first = 380;
  curves.step = 20;
  curves.curves = {{10, 20}, {11, 19}, {12, 22}, {13, 23}};
  const std::vector<CDblPolyline> all = CurveLines(curves), differences = CurveDifferences(curves);
  ASSERT_EQ(all.size(), 4U);
  ASSERT_EQ(differences.size(), 3U);
  EXPECT_EQ(all[1][1], (CDblPoint{400, 19}));
  EXPECT_EQ(all[0].paint, Paint(Role::kStandard));
  EXPECT_EQ(all[0].width, 2);
  for (std::size_t i = 1; i < 4; ++i) {
    EXPECT_LT(all[i].width, 2);
    EXPECT_EQ(all[i].paint, differences[i - 1].paint);  // a trial's difference looks like its curve
    EXPECT_EQ(all[i].dashed, differences[i - 1].dashed);
    for (std::size_t k = 0; k < i; ++k)
      EXPECT_FALSE(all[i].paint == all[k].paint && all[i].dashed == all[k].dashed);
  }
  curves.curves.resize(1);
  Picture alone, without;
  DrawCurves(alone, {0, 0, 400, 400}, curves, kLook);
  curves.withDifference = false;
  DrawCurves(without, {0, 0, 400, 400}, curves, kLook);
  EXPECT_EQ(alone.Shapes().size(),
            without.Shapes().size());  // nothing to subtract: the curve has all the room
  EXPECT_EQ(ShapesOf(alone, Kind::kRectangle, Role::kFrame).size(), 1U);
}

}  // namespace
}  // namespace vrx::pictures
