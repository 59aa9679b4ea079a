// How controls show progress and place pictures.

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/tolerance/verdict.h>

#include "controls/layout/progress_picture.h"

namespace vrx::controls {
namespace {

constexpr Look kLook{1, 16, 7};
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<Shape> Rectangles(const Picture& picture, Role role) {
  std::vector<Shape> found;
  std::ranges::copy_if(picture.Shapes(), std::back_inserter(found), [role](const Shape& shape) {
    return shape.kind == Shape::Kind::kRectangle && shape.fill == Paint(role);
  });
  return found;
}

TEST(Progress, RoundsAsOneExpects) {
  const std::pair<double, const char*> times[] = {{0, "50 %  0:00 left"},
                                                  {0.2, "50 %  0:01 left"},
                                                  {59.2, "50 %  1:00 left"},
                                                  {3599, "50 %  59:59 left"},
                                                  {3599.5, "50 %  1:00:00 left"},
                                                  {86'400, "50 %  24:00:00 left"},
                                                  {31 * 86'400.0, "50 %"},
                                                  {HUGE_VAL, "50 %"},
                                                  {-0.5, "50 %"}};
  for (const auto& [seconds, text] : times) {
    EXPECT_EQ(ProgressText({0, 2, 1, seconds, -1, u""}).ToUtf8(), text);
  }
  const std::pair<int32_t, Role> bars[] = {{kPass, Role::kPass},
                                           {kWarning, Role::kWarning},
                                           {kFail, Role::kFail},
                                           {-1, Role::kSelection},
                                           {99, Role::kSelection}};
  for (const auto& [verdict, role] : bars) {
    Picture picture;
    DrawProgress(picture, {5, 0, 201, 20}, {10, 20, 12.5, -1, verdict, u""}, kLook);
    const std::vector<Shape> bar = Rectangles(picture, role);
    ASSERT_EQ(bar.size(), 1U) << verdict;
    EXPECT_EQ(bar[0].box, (Rect{5, 0, 50, 20}));
  }
  EXPECT_EQ(PartDone({20, 10, 15, -1, -1, u""}), 0);
  EXPECT_EQ(PartDone({10, 20, 5, -1, -1, u""}), 0);
  const struct {
    double width, height;
    PictureMode mode;
    Rect place;
  } places[] = {{50, 20, PictureMode::kStretch, {10, 20, 100, 60}},
                {20, 60, PictureMode::kFit, {50, 20, 20, 60}},
                {300, 60, PictureMode::kFit, {10, 40, 100, 20}},
                {200, 100, PictureMode::kCentre, {-40, 0, 200, 100}},
                {50, -1, PictureMode::kFit, {10, 20, 100, 60}}};
  for (const auto& row : places)
    EXPECT_EQ(PicturePlace({10, 20, 100, 60}, row.width, row.height, row.mode), row.place);
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
  EXPECT_EQ(Rectangles(picture, Role::kSelection)[0].box, (Rect{0, 0, 50, 20}));
  EXPECT_EQ(PicturePlace({0, 0, 100, 100}, 50, 20, PictureMode::kFit), (Rect{0, 30, 100, 40}));
  EXPECT_EQ(PicturePlace({0, 0, 100, 100}, 50, 20, PictureMode::kCentre), (Rect{25, 40, 50, 20}));
  EXPECT_EQ(PicturePlace({0, 0, 100, 100}, 0, 20, PictureMode::kFit), (Rect{0, 0, 100, 100}));
}

}  // namespace
}  // namespace vrx::controls
