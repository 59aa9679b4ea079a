// Densities and tone values against printed figures and laws; whiteness parameters of a simulated instrument; Munsell chips there
// and back.

#include <array>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/density.h>
#include <vrxmath/colorimetry/ganz_griesser.h>
#include <vrxmath/colorimetry/munsell.h>
#include <vrxmath/colorimetry/munsell_renotation.h>

namespace vrx {
namespace {

CReflData Flat(double percent) {
  CReflData curve;
  curve.Fill(percent);
  return curve;
}

TEST(Density, OfGreysAndOfAFilterAlone) {
  for (const DensityStatus status :
       {DensityStatus::kA, DensityStatus::kE, DensityStatus::kM, DensityStatus::kT}) {
    for (const auto& [percent, density] : {std::pair{100.0, 0.0}, {10.0, 1.0}, {1.0, 2.0}, {50.0, 0.30103}}) {
      const Densities grey = DensitiesOf(Flat(percent), status);
      for (const double one : {grey.red, grey.green, grey.blue, grey.visual}) EXPECT_NEAR(one, density, 1e-5);
    }
  }
  EXPECT_TRUE(IsUnset(DensitiesOf(Flat(kUnset), DensityStatus::kT).red));
  EXPECT_TRUE(IsUnset(DensitiesOf(Flat(0.0), DensityStatus::kT).visual));
}

// By the printed products of status T: red begins at 570 nm, green is shared.
TEST(Density, OfAColourBySums) {
  CReflData curve = Flat(0.0);
  // A cyan ink: all light up to 550 nm, a tenth beyond.
  for (std::int32_t i = 0; i < 40; ++i) curve[i] = i < 20 ? 100.0 : 10.0;
  const Densities t = DensitiesOf(curve, DensityStatus::kT);
  EXPECT_NEAR(t.blue, 0.0, 1e-9);
  EXPECT_NEAR(t.red, 1.0, 1e-9);
  const double green = 1 + 5 + 27.99 + 68.08 + 92.04 + 100 + 87.9 + 66.07,
               rest = 41.98 + 21.98 + 8.99 + 2.5 + 0.7 + 0.09 + 0.01;
  EXPECT_NEAR(t.green, -std::log10((green + 0.1 * rest) / (green + rest)), 1e-12);
}

// Murray-Davies and Yule-Nielsen by hand, and laws: a tint of both colours side by side has its share, paper 0 and solid 100.
TEST(ToneValue, ByHandAndByItsLaws) {
  EXPECT_NEAR(ToneValue(0.0, 0.30103, 2.0), 100 * 0.5 / 0.99, 1e-4);
  EXPECT_NEAR(ToneValue(0.1, 0.1 + 0.30103, 2.1), 100 * 0.5 / 0.99, 1e-4);  // relative to the paper
  EXPECT_NEAR(ToneValue(0.0, 0.60206, 2.0, 2.0), 100 * 0.5 / 0.9, 1e-4);    // 10^-0.30103 and 10^-1
  EXPECT_EQ(ToneValue(0.1, 0.1, 1.5), 0.0);
  EXPECT_EQ(ToneValue(0.1, 1.5, 1.5), 100.0);
  EXPECT_TRUE(IsUnset(ToneValue(0.5, 0.6, 0.5)) && IsUnset(ToneValue(0.1, 0.3, 1.5, 0.5)) &&
              IsUnset(ToneValue(kUnset, 0.3, 1.5)));
}

TEST(SpotColorToneValue, IsTheWayInCubeRoots) {
  constexpr White kD50{96.422, 100.0, 82.521};
  // Cube roots of the white's 1, and of solids 0.125 and 0.343 of it; V of the tint is halfway in each.
  const Xyz paper{kD50.X, kD50.Y, kD50.Z};
  const Xyz solid{0.125 * kD50.X, 0.343 * kD50.Y, kD50.Z};
  const Xyz tint{std::pow(0.75, 3) * kD50.X, std::pow(0.85, 3) * kD50.Y, kD50.Z};
  EXPECT_NEAR(SpotColorToneValue(paper, tint, solid, kD50), 50.0, 1e-9);
  EXPECT_EQ(SpotColorToneValue(paper, paper, solid, kD50), 0.0);
  EXPECT_EQ(SpotColorToneValue(paper, solid, solid, kD50), 100.0);
  EXPECT_TRUE(IsUnset(SpotColorToneValue(paper, tint, paper, kD50)));
}

Xyz FromXyY(double x, double y, double Y) {
  return {Y * x / y, Y, Y * (1 - x - y) / y};
}

// An instrument that sees whiteness 4 % too low and 1.5 off, and tint 0.9 times with 0.4 off, is found again; the perfect white has
// about whiteness 100 by the nominal parameters.
TEST(GanzGriesser, FindsTheParametersOfAnInstrument) {
  const GanzGriesser nominal;
  EXPECT_NEAR(nominal.Whiteness(FromXyY(0.3138, 0.3310, 100.0)), 100.0, 0.3);
  std::vector<WhitenessStandard> standards;
  for (int i = 0; i < 4; ++i) {
    WhitenessStandard one{FromXyY(0.3138 - 0.006 * i, 0.3310 - 0.0072 * i + 0.0003 * (i % 2), 86.0 + i)};
    const double chromatic = nominal.Whiteness(one.xyz) - one.xyz.Y;
    one.whiteness = one.xyz.Y + 1.04 * chromatic + 1.5;
    one.tint = 0.9 * nominal.Tint(one.xyz) + 0.4;
    standards.push_back(one);
  }
  GanzGriesserFit fit = FitGanzGriesser(standards);
  EXPECT_TRUE(fit.hasWhiteness && fit.hasTint);
  EXPECT_NEAR(fit.parameters.P, 1.04 * nominal.P, 1e-6);
  EXPECT_NEAR(fit.parameters.C, 1.04 * nominal.C + 1.5, 1e-6);
  EXPECT_NEAR(fit.parameters.n, 0.9 * nominal.n, 1e-6);
  for (const double residual : fit.whitenessResiduals) EXPECT_NEAR(residual, 0.0, 1e-9);
  EXPECT_TRUE(fit.Contradiction().empty() && fit.Doubt().empty() && fit.Outlying().empty());
  // Certificates in the reverse order fit as well, and would rank all samples upside down; a whiteness by the formula of CIE 15 has less
  // than half the scale.
  auto reversed = standards, ofCie = standards, ofOneTint = standards;
  for (std::size_t i = 0; i < 4; ++i) {
    const auto& [X, Y, Z] = standards[i].xyz;
    const double sum = X + Y + Z;
    reversed[i].whiteness = standards[3 - i].whiteness;
    ofCie[i].whiteness = Y + 800.0 * (0.3138 - X / sum) + 1700.0 * (0.3310 - Y / sum);
    ofOneTint[i].tint = 0.0;
  }
  EXPECT_NE(FitGanzGriesser(reversed).Contradiction().find("whiteness does not grow"), std::string::npos);
  EXPECT_NE(FitGanzGriesser(ofOneTint).Contradiction().find("tint does not change"), std::string::npos);
  EXPECT_NE(FitGanzGriesser(ofCie).Doubt().find("0.45 times as fast"), std::string::npos)
      << FitGanzGriesser(ofCie).Doubt();
  standards[2].whiteness += 30.0;
  EXPECT_FALSE(FitGanzGriesser(standards).Outlying().empty());
  standards[2].whiteness -= 30.0;
  // A wrong certificate stands out, and a missing tint is no tint of 0.
  standards[2].whiteness += 8.0;
  standards[0].tint = standards[1].tint = kUnset;
  fit = FitGanzGriesser(standards);
  EXPECT_GT(fit.whitenessResiduals[2], 4.0);
  EXPECT_FALSE(fit.hasTint);
  EXPECT_EQ(fit.parameters.m, nominal.m);
  EXPECT_TRUE(IsUnset(fit.tintResiduals[0]));
  EXPECT_FALSE(FitGanzGriesser(std::vector<WhitenessStandard>(5, standards[0])).hasWhiteness);  // one point
  EXPECT_TRUE(IsUnset(nominal.Whiteness({0, 0, 0})));
}

// Value by Y: the renotation's luminance factors, which count from magnesium oxide, 102.57 of which are 100 here.
TEST(Munsell, ValuesOfTheRenotation) {
  const struct {
    double value, Y;
  } kRows[] = {{0.2, 0.237}, {1, 1.210}, {2, 3.126}, {3, 6.555}, {4, 12.00},
               {5, 19.77},   {6, 30.05}, {7, 43.06}, {8, 59.10}, {9, 78.66}};
  for (const auto& [value, Y] : kRows) {
    const double ofPerfectWhite = LuminanceOfMunsellValue(value);
    EXPECT_NEAR(ofPerfectWhite * 1.0257, Y, 0.05 + 0.001 * Y) << value;
    EXPECT_NEAR(MunsellValueOfLuminance(ofPerfectWhite), value, 1e-9);
  }
  EXPECT_NEAR(LuminanceOfMunsellValue(10.0), 100.0, 0.01);
  EXPECT_TRUE(IsUnset(MunsellValueOfLuminance(101.0)) && IsUnset(MunsellValueOfLuminance(-1.0)));
}

// Every chip of the renotation goes there and back: real ones without a flag, the others with it. Below value 1 the extrapolated
// chips of different hues lie on each other in places, and only the colour comes back.
TEST(Munsell, EveryChipThereAndBack) {
  std::size_t chips = 0, real = 0, others = 0;
  for (std::size_t v = 0; v < munsell_data::kValues; ++v) {
    for (std::size_t h = 0; h < munsell_data::kHues; ++h) {
      for (std::size_t c = 1; c <= munsell_data::kChromas[v][h]; ++c, ++chips) {
        MunsellColor chip{2.5 * static_cast<double>(h + 1), munsell_data::kValueAt[v],
                          2.0 * static_cast<double>(c)};
        const Xyz xyz = XyzFromMunsell(chip);
        if (IsUnset(xyz)) continue;  // a chromaticity below the diagram
        const bool isReal = v >= 4 && c <= munsell_data::kRealChromas[v][h];
        EXPECT_EQ(chip.isExtrapolated, !isReal) << MunsellText(chip);
        const double sum = xyz.X + xyz.Y + xyz.Z;
        const std::int16_t* printed = munsell_data::kChromaticities + 2 * chips;
        EXPECT_NEAR(xyz.X / sum, printed[0] / 1e4, 1e-9) << MunsellText(chip);
        EXPECT_NEAR(xyz.Y / sum, printed[1] / 1e4, 1e-9) << MunsellText(chip);
        if (!(sum > 0.0)) continue;
        MunsellColor back = MunsellFromXyz(xyz);
        if (isReal) {
          ++real;
          EXPECT_EQ(MunsellText(back), MunsellText(chip));
          EXPECT_FALSE(back.isExtrapolated) << MunsellText(chip);
        } else {
          const Xyz again = XyzFromMunsell(back);
          others += std::fabs(again.X - xyz.X) + std::fabs(again.Z - xyz.Z) < 1e-4 * sum ? 0U : 1U;
        }
      }
    }
  }
  EXPECT_EQ(chips, 4995U);
  EXPECT_GT(real, 2600U);
  EXPECT_EQ(others, 0U);
}

TEST(Munsell, TextsAndNeutrals) {
  for (const char* text :
       {"5R 4/10", "2.5YR 6/4", "10RP 3/2", "0.1R 5/1", "7.3PB 2.5/3.9", "N 5/", "N 9.5/"}) {
    const auto parsed = ParseMunsell(text);
    ASSERT_TRUE(parsed) << text;
    EXPECT_EQ(MunsellText(*parsed), text);
  }
  EXPECT_EQ(MunsellText(*ParseMunsell("10 yr 6 / 4")), "10YR 6/4");
  EXPECT_EQ(MunsellText(*ParseMunsell("0YR 6/4")), "10R 6/4");
  EXPECT_EQ(MunsellText(*ParseMunsell("N5")), "N 5/");
  EXPECT_EQ(MunsellText({99.97, 5, 4}), "10RP 5/4");
  for (const char* text : {"", "5", "5R", "5R 4", "5R 4/", "11R 4/2", "5X 4/2", "5R 11/2", "5R 4/2x", "N 5/2",
                           "5R 4/-2", "nan R 4/2"})
    EXPECT_FALSE(ParseMunsell(text)) << text;
  const Xyz grey = FromXyY(0.31006, 0.31616, 20.0);
  EXPECT_EQ(MunsellText(MunsellFromXyz(grey)).substr(0, 2), "N ");
  EXPECT_EQ(MunsellText(MunsellFromXyz({0, 0, 0})), "N 0/");
  EXPECT_TRUE(IsUnset(MunsellFromXyz({kUnset, kUnset, kUnset}).value));
  EXPECT_TRUE(IsUnset(MunsellFromXyz({95, 120, 100}).value));
  EXPECT_TRUE(IsUnset(MunsellFromXyz({std::nan(""), 20, 20}).value));
}

}  // namespace
}  // namespace vrx
