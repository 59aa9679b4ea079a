#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <span>
#include <string>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/weight_tables.h>

#include "tests/testing/colors.h"
#include "tests/testing/messages.h"
#include "tests/testing/rows.h"

namespace vrx {
namespace {

using test::MakeLab;

TEST(Tristimulus, ConstantCurvesGiveTheBlockSums) {
  CReflData curve;
  CTrisValues xyz;
  curve.Fill(50.0);
  curve.Tristimulus(vrxIllumD65, kObserver2, xyz);
  EXPECT_TRUE(test::RowMatches("50 %", xyz, std::array{95.049 / 2, 99.999 / 2, 108.882 / 2}, 1e-10));
  curve[0] = kUnset;  // the first sample decides
  curve.Tristimulus(vrxIllumD65, kObserver2, xyz);
  EXPECT_TRUE(IsUnset(xyz));
}

TEST(Tristimulus, MissingTablesShowTheMessageAndLeaveResultsUnset) {
  test::MessageRecorder messages;
  CReflData curve;
  curve.Fill(50.0);
  for (const int number : {26, 30, 31, -1, 99}) {
    const auto illuminant = static_cast<vrxIlluminant>(number);
    CTrisValues xyz(1.0, 2.0, 3.0);
    curve.Tristimulus(illuminant, kObserver2, xyz);
    EXPECT_TRUE(IsUnset(xyz)) << number;
    CLabValues lab = MakeLab(50.0, 1.0, 1.0);
    XyzToLab(illuminant, kObserver2, CTrisValues(10.0, 10.0, 10.0), lab);
    EXPECT_TRUE(IsUnset(lab)) << number;
    EXPECT_EQ(messages.Take(), test::IndexErrors(2)) << number;
  }
  curve.SetSize(39);
  CTrisValues xyz;
  curve.Tristimulus(vrxIllumD65, kObserver2, xyz);
  EXPECT_TRUE(IsUnset(xyz));
  EXPECT_EQ(messages.Take(), test::IndexErrors());
}

TEST(WeightTable, IsLoadedOnceAndTakesAnyOtherObserverAsTwoDegrees) {
  EXPECT_EQ(WeightTable(vrxIllumF7, kObserver10), WeightTable(vrxIllumF7, kObserver10));
  EXPECT_EQ(WeightTable(vrxIllumF7, 7), WeightTable(vrxIllumF7, kObserver2));
  EXPECT_NE(WeightTable(vrxIllumF7, kObserver10), WeightTable(vrxIllumF7, kObserver2));
}

TEST(ColorRecords, ThoseThatAHostMadeShorterShowAMessageForEachElementThatIsMissed) {
  test::MessageRecorder messages;
  CLabValues lab(50, 10, 0);
  lab.SetSize(3);
  for (const int32_t elements : {3, 4, 5}) {
    EXPECT_EQ(lab.Values(elements).a, 10.0);
    EXPECT_EQ(messages.Take(), test::IndexErrors(static_cast<std::size_t>(elements) - 3)) << elements;
  }
  CTrisValues xyz;
  LabToXyz(vrxIllumD65, kObserver10, lab, xyz);
  LuvToXyz(vrxIllumD65, kObserver10, lab, xyz);
  HunterToXyz(vrxIllumD65, kObserver10, lab, xyz);
  CLabValues din99;
  LabToDin99(lab, 1.0, 1.0, din99);
  EXPECT_EQ(messages.Take(), test::IndexErrors(0)) << "chroma and hue are not read";
}

TEST(ChromaHue, AxesAndTheHairBelow360) {
  struct Row {
    double a, b, C, h;
  };
  const Row rows[] = {
      {0.0, 0.0, 0.0, 0.0},
      {0.0, -5.0, 5.0, 270.0},
      {-3.0, 0.0, 3.0, 180.0},
      {3.0, 0.0, 3.0, 0.0},
      {0.0005, 0.0, 0.0005, 0.0},
      {3.0, -4.0, 5.0, 306.86989764584402},
      {100.0, -0.005, 100.0, 0.0},       // 0.0029 degrees below the full circle
      {100.0, -0.01, 100.0, 359.99427},  // 0.0057 degrees below
  };
  for (const Row& row : rows) {
    const CLabValues lab = MakeLab(50.0, row.a, row.b);
    EXPECT_NEAR(lab[3], row.C, 1e-6) << row.a << ' ' << row.b;
    EXPECT_NEAR(lab[4], row.h, 1e-5) << row.a << ' ' << row.b;
  }
  EXPECT_EQ(MakeLab(50.0, 0.0, 5.0)[4], 1.570796326795 * 57.29577951307855);
  SetHueInDegrees(false);
  EXPECT_EQ(MakeLab(50.0, -3.0, 0.0)[4], 3.14159265359);
  EXPECT_GT(MakeLab(50.0, 100.0, -0.001)[4], 6.28);  // radians keep the hair
  SetHueInDegrees(true);
}

TEST(XyzToLab, KnownColours) {
  struct Row {
    vrxIlluminant illuminant;
    int observer;
    double X, Y, Z, L, a, b;
  };
  // White is L* = 100; ratios of 1/8 and 1/64 have the cube roots 1/2 and 1/4.
  const Row rows[] = {
      {vrxIllumD65, 0, 95.047, 100.0, 108.883, 100.0, 0.0, 0.0},
      {vrxIllumA, 1, 111.144, 100.0, 35.2, 100.0, 0.0, 0.0},
      {vrxIllumD65, 0, 95.047 / 8, 12.5, 108.883 / 64, 42.0, 0.0, 50.0},
  };
  for (const Row& row : rows) {
    CLabValues lab;
    XyzToLab(row.illuminant, row.observer, CTrisValues(row.X, row.Y, row.Z), lab);
    EXPECT_TRUE(test::RowMatches("", std::span(&lab[0], 3), std::array{row.L, row.a, row.b}, 1e-8)) << row.X;
  }
}

TEST(XyzToLab, TheLimitItselfIsLinear) {
  double Y = 0.8856;
  while (Y / 100.0 > 0.008856) Y = std::nextafter(Y, 0.0);
  ASSERT_EQ(Y / 100.0, 0.008856);
  CLabValues lab;
  XyzToLab(vrxIllumD65, 0, CTrisValues(0.8, Y, 0.9), lab);
  EXPECT_DOUBLE_EQ(lab[0], 116.0 * (7.787 * 0.008856 + 16.0 / 116.0) - 16.0);
  XyzToLab(vrxIllumD65, 0, CTrisValues(0.8, Y * (1.0 + 1e-15), 0.9), lab);
  EXPECT_NEAR(lab[0], 116.0 * std::cbrt(0.008856) - 16.0, 1e-12);
}

TEST(XyzToLuv, SlopeOfTheLinearBranchIs90329) {
  CLabValues luv;
  XyzToLuv(vrxIllumD65, 0, CTrisValues(0.5, 0.6, 0.9), luv);
  EXPECT_DOUBLE_EQ(luv[0], 903.29 * 0.006);
  XyzToLuv(vrxIllumD65, 0, CTrisValues(95.047, 100.0, 108.883), luv);
  EXPECT_NEAR(luv[0], 100.0, 1e-12);
  EXPECT_NEAR(luv[3], 0.0, 1e-12);
}

TEST(XyzToHunter, ClassicScaleIgnoresTheWhitePoint) {
  CLabValues lab;
  XyzToHunter(vrxIllumC, kObserver2, CTrisValues(20.0, 25.0, 30.0), lab);
  EXPECT_DOUBLE_EQ(lab[0], 50.0);
  EXPECT_DOUBLE_EQ(lab[1], 17.5 * (20.4 - 25.0) / 5.0);
  EXPECT_DOUBLE_EQ(lab[2], 7.0 * (25.0 - 25.41) / 5.0);
  EXPECT_TRUE(IsUnset(lab[3]) && IsUnset(lab[4]));
  CTrisValues white;
  WhitePoint(vrxIllumC, kObserver10, white);
  XyzToHunter(vrxIllumC, kObserver10, white, lab);  // a white is neutral on the scaled form
  EXPECT_NEAR(lab[0], 100.0, 1e-12);
  EXPECT_NEAR(std::fabs(lab[1]) + std::fabs(lab[2]), 0.0, 1e-12);
}

TEST(ColorSpaces, RoundTripOverAGridUnderEveryPair) {
  using Forward = void (*)(vrxIlluminant, int32_t, const CTrisValues&, CLabValues&);
  using Back = void (*)(vrxIlluminant, int32_t, const CLabValues&, CTrisValues&);
  struct Space {
    const char* name;
    Forward forward;
    Back back;
  };
  const Space spaces[] = {
      {"Lab", XyzToLab, LabToXyz}, {"Luv", XyzToLuv, LuvToXyz}, {"Hunter", XyzToHunter, HunterToXyz}};
  for (const Space& space : spaces) {
    for (int illuminant = 0; illuminant < kBuiltInIlluminants; ++illuminant) {
      for (const int observer : {0, 1}) {
        for (const double X : {1.2, 9.0, 33.0, 90.0}) {
          for (const double Y : {1.0, 18.0, 60.0, 99.0}) {
            for (const double Z : {1.3, 20.0, 75.0}) {
              CLabValues lab;
              CTrisValues back;
              space.forward(static_cast<vrxIlluminant>(illuminant), observer, CTrisValues(X, Y, Z), lab);
              space.back(static_cast<vrxIlluminant>(illuminant), observer, lab, back);
              ASSERT_TRUE(test::RowMatches(space.name, back, std::array{X, Y, Z}, 1e-10 * (X + Y + Z)))
                  << illuminant << ' ' << observer;
            }
          }
        }
      }
    }
  }
}

TEST(ColorSpaces, TheLinearBranchComesBackOffByItsSixDigitOffset) {
  CLabValues lab;
  CTrisValues back;
  XyzToLab(vrxIllumD65, 0, CTrisValues(0.2, 0.2, 0.2), lab);
  LabToXyz(vrxIllumD65, 0, lab, back);
  // (16/116 - 0.137931) / 7.787 of the white
  EXPECT_NEAR(back[1] - 0.2, (16.0 / 116.0 - 0.137931) / 7.787 * 100.0, 1e-14);
  EXPECT_GT(back[1], 0.2);
}

TEST(HunterToXyz, BlackHasNoChromaticPart) {
  CTrisValues xyz;
  HunterToXyz(vrxIllumD65, 0, MakeLab(0.0, 3.0, 4.0), xyz);
  for (int k = 0; k < 3; ++k) EXPECT_EQ(xyz[k], 0.0) << k;
}

TEST(LabDerivative, IsTheLimitOfDifferences) {
  const CTrisValues colours[] = {{20.0, 30.0, 10.0}, {0.5, 0.4, 0.3}, {90.0, 0.6, 70.0}};
  const CTrisValues step(3e-7, -2e-7, 1e-7);
  for (const CTrisValues& xyz : colours) {
    CTrisValues moved;
    for (int k = 0; k < 3; ++k) moved[k] = xyz[k] + step[k];
    CLabValues before, after, derivative;
    XyzToLab(vrxIllumD50, 1, xyz, before);
    XyzToLab(vrxIllumD50, 1, moved, after);
    LabDerivative(vrxIllumD50, 1, xyz, step, derivative);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(derivative[k], after[k] - before[k], 1e-11) << k;
  }
}

TEST(Chromaticity, UnsetWhereThereIsNone) {
  double x = 0.0, y = 0.0;
  Chromaticity(CTrisValues(95.047, 100.0, 108.883), x, y);
  EXPECT_NEAR(x, 0.31273, 5e-6);  // CIE 15
  EXPECT_NEAR(y, 0.32902, 5e-6);
  for (const CTrisValues& none : {CTrisValues(), CTrisValues(0.0, 0.0, 0.0), CTrisValues(1.0, -0.5, -0.5)}) {
    Chromaticity(none, x, y);
    EXPECT_TRUE(IsUnset(x) && IsUnset(y));
  }
}

TEST(Illuminants, NamesInEveryStyle) {
  struct Row {
    int illuminant, observer, style;
    const char* name;
  };
  const Row rows[] = {
      {2, 1, 0, "D65 - 10\u00B0"},
      {2, 1, 1, "D65/10\u00B0"},
      {2, 1, 2, "Illuminant D65"},
      {2, 1, 4, "D65"},
      {2, 1, 5, "Illuminant D65 - 10\u00B0"},
      {2, 1, 6, "10\u00B0"},
      {2, 1, 7, "Daylight 6500\u00B0 Kelvin"},
      {26, 1, 1, "None"},
      {30, 0, 7, "None"},
      {-1, 0, 0, ""},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(IlluminantName(static_cast<vrxIlluminant>(row.illuminant), row.observer, row.style).ToUtf8(),
              row.name);
  }
}

TEST(Illuminants, DisplayOrderHoldsEachOnceAndCodesAreFound) {
  const CIllumArray order = IlluminantDisplayOrder();
  ASSERT_EQ(order.GetSize(), 26);
  std::string codes;
  for (const vrxIlluminant illuminant : order) {
    vrxIlluminant found = vrxIllumA;
    EXPECT_TRUE(FindIlluminant(IlluminantCode(illuminant), found));
    EXPECT_EQ(found, illuminant);
    codes += IlluminantCode(illuminant).ToUtf8() + ' ';
  }
  EXPECT_EQ(codes,
            "A C CWF D50 D55 D65 D75 F4 F6 F7 F8 F10 H23 HM LB1 LB2 LB3 LB4 LB5 LH L3 LV1 LV2 T84 U30 U50 ");
  vrxIlluminant found = vrxIllumA;
  EXPECT_TRUE(FindIlluminant(u"cwf", found));
  EXPECT_EQ(found, vrxIllumCWF);
  EXPECT_TRUE(FindIlluminant(u"a", found));
  EXPECT_EQ(found, vrxIllumA);
  EXPECT_FALSE(FindIlluminant(u"D6", found));
  EXPECT_FALSE(FindIlluminant(u"None", found));
}

}  // namespace
}  // namespace vrx
