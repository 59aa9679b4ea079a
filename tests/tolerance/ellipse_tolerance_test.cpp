#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/tolerance/ellipse_fit.h>
#include <vrxmath/tolerance/ellipse_tolerance.h>
#include <vrxmath/tolerance/lone_difference.h>

#include "tests/testing/archives.h"
#include "tests/testing/colors.h"

namespace vrx {
namespace {

using test::MakeDelta;
using test::MakeLab;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

CEllipseData Ellipse(const std::vector<double>& values) {
  CEllipseData ellipse;
  for (int32_t i = 0; i < CEllipseData::kValues; ++i) ellipse[i] = values[static_cast<std::size_t>(i)];
  return ellipse;
}

const CEllipseData kTilted = Ellipse({0.2, -0.3, 0.1, 1.0, 2.0, 0.5, 30.0, 1.5, 1.0});

TEST(Ellipse, ValueAndVerdict) {
  struct Row {
    std::vector<double> ellipse;
    double dL, da, db, value, factor;
    Verdict verdict;
  };
  const std::vector<double> round = {0, 0, 0, 2, 2, 2, 0, 1, 1}, offset = {1, 1, 1, 2, 2, 2, 0, 1, 1},
                            upright = {0, 0, 0, 1, 4, 2, 90, 1, 1}, flat = {0, 0, 0, 1, 4, 0, 0, 1, 1};
  const Row rows[] = {
      {round, 2, 0, 0, 1.0, 0.75, kWarning},    {round, 1.5, 0, 0, 0.75, 0.75, kPass},
      {round, 2, 0, 0, 1.0, 1.0, kPass},        {round, 2.0000001, 0, 0, 1.00000005, 1.0, kFail},
      {offset, 3, 1, 1, 1.0, 0.75, kWarning},   {offset, -1.5, 1, 1, 1.25, 0.75, kFail},
      {upright, 0, 0, 4, 1.0, 0.9, kWarning},   {upright, 0, 2, 0, 1.0, 0.9, kWarning},
      {upright, 0, 0, -4.1, 1.025, 0.9, kFail}, {flat, 0, 3, 0, 0.75, 0.75, kPass},
      {flat, 0, 0, 1e-9, INFINITY, 1.0, kFail}, {round, kNaN, 0, 0, kNaN, 1.0, kFail},
  };
  for (const Row& row : rows) {
    const CEllipseData ellipse = Ellipse(row.ellipse);
    const CDeltaValues delta = MakeDelta(row.dL, row.da, row.db);
    const double value = ellipse.Value(delta);
    EXPECT_TRUE(value == row.value || std::fabs(value - row.value) < 1e-11 || std::isnan(row.value)) << value;
    EXPECT_EQ(ellipse.Judge(delta, row.factor), row.verdict) << row.dL << ' ' << row.da << ' ' << row.db;
  }
  EXPECT_EQ(CEllipseData(), Ellipse({0, 0, 0, 1.5, 1.5, 1.5, 0, 1.5, 1}));
  EXPECT_EQ(CEllipseData().JudgeTotal(1.5, 0.8), kWarning);
}

TEST(Ellipse, FormInverseAndSectionsAgree) {
  const CMatrix form = kTilted.Form();
  CMatrix inverse;
  ASSERT_EQ(kTilted.InverseForm(inverse), 1u);
  // Half-width of a tilted ellipse: sqrt(p^2 cos^2 + q^2 sin^2).
  EXPECT_NEAR(std::sqrt(inverse[1][1]), std::sqrt(4.0 * 0.75 + 0.25 * 0.25), 1e-11);
  EXPECT_NEAR(inverse[0][0], 1.0, 1e-15);
  for (const EllipsePlane plane : {EllipsePlane::kAB, EllipsePlane::kAL, EllipsePlane::kBL}) {
    const std::vector<PlanePoint> line = kTilted.Section(plane, 24);
    ASSERT_EQ(line.size(), 25u);
    EXPECT_EQ(line.front().x, line.back().x);
    for (const PlanePoint& p : line) {
      const CDeltaValues delta = plane == EllipsePlane::kAB   ? MakeDelta(0.2, p.x, p.y)
                                 : plane == EllipsePlane::kAL ? MakeDelta(p.y, p.x, 0.1)
                                                              : MakeDelta(p.y, -0.3, p.x);
      EXPECT_NEAR(kTilted.Value(delta), 1.0, 1e-11);
      const double d[] = {delta[0] - 0.2, delta[1] + 0.3, delta[2] - 0.1};
      double q = 0.0;
      for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) q += d[i] * form[i][j] * d[j];
      }
      EXPECT_NEAR(q, 1.0, 1e-11);
    }
  }
  CMatrix none;
  EXPECT_EQ(Ellipse({0, 0, 0, 1e12, 1, 1, 0, 1, 1}).InverseForm(none), 0u);
}

// The ellipsoid is straight where dC* and dH* are curved: a difference dH across lies C - sqrt(C^2 - dH^2)
// nearer to the hue circle. Verdicts may differ where the total is nearer to its limit than that is worth.
TEST(Ellipse, JudgesAsTheSystemDoes) {
  const double standards[][3] = {{50, 0, 0},   {62, 40, 25},  {12, -8, 3},
                                 {35, 6, -45}, {80, -30, 60}, {90, 1, 4}};
  const CDifferenceSettings systems[] = {{vrxSystemCmc, {2.0, 1.0, 0.8, 1.0}},
                                         {vrxSystemCmc, {1.0, 1.0, 1.2, 1.0}},
                                         {vrxSystemCie94, {1.0, 1.0, 1.0, 0.7}}};
  for (const auto& [L, a, b] : standards) {
    for (const CDifferenceSettings& settings : systems) {
      const CLabValues standard = MakeLab(L, a, b);
      const bool cmc = settings.system == vrxSystemCmc;
      const double factor = settings.parameters[cmc ? 2 : 3], C = standard[3];
      const CEllipseData ellipse = EllipseForStandard(standard, settings);
      const double narrowest = std::min(ellipse[4], ellipse[5]);
      int compared = 0, accepted = 0;
      for (double dL = -3.05; dL < 3.2; dL += 0.5) {
        for (double da = -3.05; da < 3.2; da += 0.25) {
          for (double db = -3.05; db < 3.2; db += 0.25) {
            const CLabValues sample = MakeLab(L + dL, a + da, b + db);
            CDeltaValues delta;
            DeltaEab(standard, sample, delta);
            const double across2 = da * da + db * db;
            const double bend = C > 0.0 ? across2 / (2.0 * std::max(C, 0.5 * std::sqrt(across2))) : 0.0;
            const auto& [l, c, h, de] = settings.parameters;
            cmc ? DeltaCmc(standard, l, c, delta) : DeltaCie94(standard, l, c, h, delta);
            const double total = delta[6] / factor;
            if (std::fabs(total - 1.0) <= bend / narrowest + 1e-9) continue;
            ++compared;
            accepted += total <= 1.0;
            EXPECT_EQ(ellipse.Judge(delta, 1.0) != kFail, total <= 1.0) << dL << ' ' << da << ' ' << db;
          }
        }
      }
      EXPECT_GT(compared, 1000) << L << ' ' << a << ' ' << b;
      EXPECT_GT(accepted, 0);
    }
  }
}

TEST(Ellipse, BuildsFromAStandard) {
  const CLabValues standard = MakeLab(50.0, 30.0, 40.0);
  const CEllipseData cie94 = EllipseForStandard(standard, {vrxSystemCie94, {2.0, 1.0, 1.0, 0.5}});
  EXPECT_NEAR(cie94[6], 53.13010235, 1e-7);
  const double expected[] = {0, 0, 0, 1.0, 0.5 * 3.25, 0.5 * 1.75};
  for (int i = 0; i < 6; ++i) EXPECT_NEAR(cie94[i], expected[i], 1e-12) << i;
  EXPECT_EQ(cie94[7], 0.5);
  // CIEDE2000 at a neutral standard is round in a*-b* but for a' = 1.5 a'; SL of L* = 50 is 1.
  const CEllipseData cie2000 =
      EllipseForStandard(MakeLab(50.0, 0.0, 0.0), {vrxSystemCie2000, {1.0, 1.0, 1.0, 2.0}});
  for (int i = 3; i < 6; ++i) EXPECT_NEAR(cie2000[i], 2.0, 1e-12) << i;
  EXPECT_EQ(EllipseForStandard(standard, {vrxSystemHunter, {}}), CEllipseData());
  EXPECT_EQ(EllipseForStandard(CLabValues(), DefaultSettings(vrxSystemCmc)), CEllipseData());

  // Settings applied later give what building with them gives.
  CEllipseData rescaled = EllipseForStandard(standard, {vrxSystemCmc, {2.0, 1.0, 1.0, 1.0}});
  rescaled.ApplySettings({vrxSystemCmc, {2.0, 1.0, 0.25, 1.0}});
  EXPECT_EQ(rescaled, EllipseForStandard(standard, {vrxSystemCmc, {2.0, 1.0, 0.25, 1.0}}));
  rescaled.ApplySettings({vrxSystemCmc, {2.0, 1.0, 0.0, 1.0}});
  rescaled.ApplySettings({vrxSystemDin6175, {3.0, 3.0, 3.0, 3.0}});
  EXPECT_EQ(rescaled[CEllipseData::kCommercialFactor], 0.25);
}

TEST(Ellipse, TablesAndArchive) {
  CEllipseStd4 table;
  table.SetAngleCount(2);
  ASSERT_EQ(table.GetSize(), 1);
  ASSERT_EQ(table[0].GetSize(), 2);
  ASSERT_EQ(table[0][1].GetSize(), 3);
  table[0][1][2] = kTilted;
  CAngles two, three;
  two.SetCodes(2);
  three.SetCodes(3);
  CEllipseAngle3& angles = table[0];
  ResizeByNearestAngle(angles, three, two);
  ASSERT_EQ(angles.GetSize(), 3);
  EXPECT_EQ(angles[2][2], kTilted);
  EXPECT_EQ(angles[0][2], CEllipseData());

  const test::ValuesForm<CEllipseData> form{kTilted};
  EXPECT_EQ(test::Stored(form).size(), 72u);
  test::ExpectRoundTripAndTruncations(form);
}

/// Points of an ellipsoid with the tilt of kTilted: on its surface for size 1.
LabDifference PointOn(double size, double theta, double phi) {
  const double c = std::cos(30.0 * kRadiansPerDegree), s = std::sin(30.0 * kRadiansPerDegree);
  const double p = size * 2.0 * std::cos(theta) * std::cos(phi),
               q = size * 0.5 * std::cos(theta) * std::sin(phi);
  return {0.2 + size * std::sin(theta), -0.3 + p * c - q * s, 0.1 + p * s + q * c};
}

TEST(EllipseFit, RecoversWhatTheDataCameFrom) {
  std::mt19937_64 generator(3);
  std::uniform_real_distribution<double> angle(-3.2, 3.2), share(0.0, 1.0);
  std::vector<LabDifference> surface, filled;
  for (int i = 0; i < 400; ++i) {
    surface.push_back(PointOn(1.0, angle(generator), angle(generator)));
    filled.push_back(surface.back());
    filled.push_back(PointOn(share(generator), angle(generator), angle(generator)));
  }
  CEllipseData fitted, smallest;
  ASSERT_EQ(FitEllipseSurface(surface, EllipseCentre::kFree, fitted), 1u);
  ASSERT_EQ(FitSmallestEllipse(filled, EllipseCentre::kFree, smallest), 1u);
  for (int i = 0; i < 6; ++i) {
    EXPECT_NEAR(fitted[i], kTilted[i], 1e-10) << i;
    EXPECT_NEAR(smallest[i], kTilted[i], 0.02) << i;
  }
  EXPECT_NEAR(fitted[CEllipseData::kAngle], 30.0, 1e-8);
  EXPECT_NEAR(smallest[CEllipseData::kAngle], 30.0, 0.5);
  for (const LabDifference& d : filled) EXPECT_LE(smallest.Value(MakeDelta(d.dL, d.da, d.db)), 1.0);
}

TEST(EllipseFit, SmallestAboutKnownBodies) {
  struct Row {
    const char* name;
    std::vector<LabDifference> points;
    EllipseCentre centre;
    double axes[3];
  };
  const double r3 = std::sqrt(3.0);
  const Row rows[] = {
      {"corners of a box: the box scaled sphere",
       {{1, 2, 3}, {1, 2, -3}, {1, -2, 3}, {1, -2, -3}, {-1, 2, 3}, {-1, 2, -3}, {-1, -2, 3}, {-1, -2, -3}},
       EllipseCentre::kFree,
       {r3, 3 * r3, 2 * r3}},
      {"tips of an octahedron",
       {{2, 0, 0}, {-2, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 5}, {0, 0, -5}},
       EllipseCentre::kFree,
       {2, 5, 1}},
      {"half of it about the standard",
       {{2, 0, 0}, {0, 1, 0}, {0, 0, 5}, {0.1, 0.1, 0.1}},
       EllipseCentre::kAtStandard,
       {2, 5, 1}},
  };
  for (const Row& row : rows) {
    CEllipseData ellipse;
    ASSERT_EQ(FitSmallestEllipse(row.points, row.centre, ellipse), 1u) << row.name;
    for (int i = 0; i < 3; ++i) {
      EXPECT_NEAR(ellipse[i], 0.0, 1e-3) << row.name << i;
      EXPECT_NEAR(ellipse[3 + i] / row.axes[i], 1.0, 2e-4) << row.name << i;
    }
    EXPECT_NEAR(ellipse[CEllipseData::kAngle], 90.0, 0.1) << row.name;
  }
}

// A tolerance is the body times the margin; what cannot be fitted leaves it alone.
TEST(EllipseFit, MakesATolerance) {
  const std::vector<LabDifference> octahedron{{2, 0, 0},  {-2, 0, 0},  {0, 1, 0},
                                              {0, -1, 0}, {0, 0, 0.5}, {0, 0, -0.5}};
  ToleranceFitSettings settings;
  settings.centre = EllipseCentre::kAtStandard;
  settings.margin = 1.5;
  CEllipseData ellipse, untouched;
  ASSERT_EQ(FitTolerance(octahedron, 0.8, settings, ellipse), ToleranceFitError::kNone);
  EXPECT_NEAR(ellipse[CEllipseData::kLightnessAxis], 3.0, 1e-6);
  EXPECT_NEAR(ellipse[CEllipseData::kMajorAxis], 1.5, 1e-6);
  EXPECT_NEAR(ellipse[CEllipseData::kMinorAxis], 0.75, 1e-6);
  EXPECT_DOUBLE_EQ(ellipse[CEllipseData::kTotalLimit], 1.2);
  EXPECT_EQ(ellipse[CEllipseData::kCommercialFactor], 1.5);
  const CEllipseData before = untouched;
  EXPECT_EQ(FitTolerance({octahedron.data(), 3}, 1, settings, untouched), ToleranceFitError::kTooFew);
  const std::vector<LabDifference> flat{{0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1},
                                        {0, 1, 1}, {0, 2, 1},  {0, 1, 2}};
  for (const auto method : {ToleranceFitSettings::kSmallest, ToleranceFitSettings::kSurface}) {
    settings.method = method;
    EXPECT_EQ(FitTolerance(flat, 1, settings, untouched), ToleranceFitError::kFlat) << method;
  }
  settings.centre = EllipseCentre::kFree;
  EXPECT_EQ(FitTolerance(octahedron, 1, settings, untouched),
            ToleranceFitError::kTooFew);  // nine unknowns but one
  for (std::int32_t i = 0; i < CEllipseData::kValues; ++i) EXPECT_EQ(untouched[i], before[i]);
}

// A mistyped difference among the corners of three boxes is found and priced; the corners alone have none, and among few differences
// nothing is said.
TEST(EllipseFit, NamesADifferenceThatAloneMakesItLarge) {
  std::vector<LabDifference> corners;
  for (const double size : {1.0, 0.8, 0.5}) {
    for (int i = 0; i < 8; ++i)
      corners.push_back(
          {size * (i & 1 ? 0.5 : -0.5), size * (i & 2 ? 0.4 : -0.4), size * (i & 4 ? 0.3 : -0.3)});
  }
  ToleranceFitSettings settings;
  EXPECT_FALSE(FindLoneDifference(corners, settings));
  corners.insert(corners.begin() + 5, LabDifference{8.0, 0.1, 0.1});
  const auto lone = FindLoneDifference(corners, settings);
  ASSERT_TRUE(lone);
  EXPECT_EQ(lone->index, 5u);
  EXPECT_GT(lone->growth, 4.0);
  EXPECT_EQ(lone->Text().find("one accepted difference (dL* 8.00, da* 0.10, db* 0.10) makes the ellipsoid "),
            0u);
  EXPECT_FALSE(FindLoneDifference({corners.data(), 11}, settings));
  settings.method = ToleranceFitSettings::kSurface;
  EXPECT_FALSE(FindLoneDifference(corners, settings));
}

TEST(EllipseFit, RefusesWhatSpansNoSpace) {
  const std::vector<std::vector<LabDifference>> sets = {
      {},
      {{1, 2, 3}},
      {{1, 1, 0}, {2, 1, 0}, {3, 2, 0}, {1, 5, 0}, {2, 2, 0}},                // no db*
      {{1, 1, 1}, {2, 2, 2}, {-1, 3, 3}, {0, 4, 4}, {0, 1, 1}, {3, 2, 2}},    // da* = db*
      {{1, 0, 1}, {0, 1, kNaN}, {1, 2, 3}, {0, 0, 1}, {3, 1, 2}, {1, 1, 1}},  // not finite
  };
  for (const auto& set : sets) {
    CEllipseData ellipse;
    EXPECT_EQ(FitSmallestEllipse(set, EllipseCentre::kFree, ellipse), 0u) << set.size();
    EXPECT_EQ(FitEllipseSurface(set, EllipseCentre::kFree, ellipse), 0u) << set.size();
    EXPECT_EQ(ellipse, CEllipseData());
  }
}

}  // namespace
}  // namespace vrx
