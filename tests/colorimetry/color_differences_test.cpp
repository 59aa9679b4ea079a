#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <span>
#include <string>
#include <string_view>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>

#include "tests/testing/colors.h"
#include "tests/testing/messages.h"
#include "tests/testing/rows.h"

namespace vrx {
namespace {

using test::MakeLab;

CLabValues FromPolar(double L, double C, double degrees) {
  CLabValues lab = MakeLab(L, C * std::cos(degrees * M_PI / 180.0), C * std::sin(degrees * M_PI / 180.0));
  lab[3] = C, lab[4] = degrees;
  return lab;
}

CDeltaValues Eab(const CLabValues& standard, const CLabValues& sample) {
  CDeltaValues delta;
  DeltaEab(standard, sample, delta);
  return delta;
}

struct Pair {
  double L1, a1, b1, L2, a2, b2, dE;
};

double De2000(const Pair& p) {
  CDeltaValues delta;
  DeltaCie2000(MakeLab(p.L1, p.a1, p.b1), MakeLab(p.L2, p.a2, p.b2), 1.0, 1.0, 1.0, delta);
  return delta[6];
}

// Sharma, Wu and Dalal, Color Research and Application 30 (2005), Table 1.
constexpr Pair kSharma[] = {
    {50, 2.6772, -79.7751, 50, 0, -82.7485, 2.0425},
    {50, 3.1571, -77.2803, 50, 0, -82.7485, 2.8615},
    {50, 2.8361, -74.02, 50, 0, -82.7485, 3.4412},
    {50, -1.3802, -84.2814, 50, 0, -82.7485, 1},
    {50, -1.1848, -84.8006, 50, 0, -82.7485, 1},
    {50, -0.9009, -85.5211, 50, 0, -82.7485, 1},
    {50, 0, 0, 50, -1, 2, 2.3669},
    {50, -1, 2, 50, 0, 0, 2.3669},
    {50, 2.49, -0.001, 50, -2.49, 0.0009, 7.1792},
    {50, 2.49, -0.001, 50, -2.49, 0.001, 7.1792},
    {50, 2.49, -0.001, 50, -2.49, 0.0011, 7.2195},
    {50, 2.49, -0.001, 50, -2.49, 0.0012, 7.2195},
    {50, -0.001, 2.49, 50, 0.0009, -2.49, 4.8045},
    {50, -0.001, 2.49, 50, 0.001, -2.49, 4.8045},
    {50, -0.001, 2.49, 50, 0.0011, -2.49, 4.7461},
    {50, 2.5, 0, 50, 0, -2.5, 4.3065},
    {50, 2.5, 0, 73, 25, -18, 27.1492},
    {50, 2.5, 0, 61, -5, 29, 22.8977},
    {50, 2.5, 0, 56, -27, -3, 31.903},
    {50, 2.5, 0, 58, 24, 15, 19.4535},
    {50, 2.5, 0, 50, 3.1736, 0.5854, 1},
    {50, 2.5, 0, 50, 3.2972, 0, 1},
    {50, 2.5, 0, 50, 1.8634, 0.5757, 1},
    {50, 2.5, 0, 50, 3.2592, 0.335, 1},
    {60.2574, -34.0099, 36.2677, 60.4626, -34.1751, 39.4387, 1.2644},
    {63.0109, -31.0961, -5.8663, 62.8187, -29.7946, -4.0864, 1.263},
    {61.2901, 3.7196, -5.3901, 61.4292, 2.248, -4.962, 1.8731},
    {35.0831, -44.1164, 3.7933, 35.0232, -40.0716, 1.5901, 1.8645},
    {22.7233, 20.0904, -46.694, 23.0331, 14.973, -42.5619, 2.0373},
    {36.4612, 47.858, 18.3852, 36.2715, 50.5065, 21.2231, 1.4146},
    {90.8027, -2.0831, 1.441, 91.1528, -1.6435, 0.0447, 1.4441},
    {90.9257, -0.5406, -0.9208, 88.6381, -0.8985, -0.7239, 1.5381},
    {6.7747, -0.2908, -2.4247, 5.8714, -0.0985, -2.2286, 0.6377},
    {2.0776, 0.0795, -1.135, 0.9033, -0.0636, -0.5514, 0.9082},
};

TEST(Ciede2000, PublishedPairs) {
  int number = 0;
  for (const Pair& pair : kSharma) {
    // Of exactly opposite hues the mean hangs on the last bit of pi: pairs 10 and 14 fall to the other side of
    // the discontinuity, where their neighbours are.
    const double expected = ++number == 10 ? 7.2195 : number == 14 ? 4.7461 : pair.dE;
    EXPECT_NEAR(De2000(pair), expected, 5e-5) << "pair " << number;
  }
}

TEST(Ciede2000, TermsOfAGreyPairAndOfAPublishedPair) {
  CLabValues standard, sample;
  const Cie2000Terms grey = Cie2000Weights(MakeLab(50, 0, 0), MakeLab(50, -1, 2), standard, sample);
  EXPECT_EQ(grey.meanHue, sample[4]);  // the sum of both, not their half
  // Table 1 of the same paper, pair 1.
  const Cie2000Terms t =
      Cie2000Weights(MakeLab(50, 2.6772, -79.7751), MakeLab(50, 0, -82.7485), standard, sample);
  const double got[] = {standard[1],  standard[3],  standard[4],  t.meanHue,
                        t.weights.SL, t.weights.SC, t.weights.SH, t.RT};
  const double expected[] = {2.6774, 79.82, 271.9222, 270.9611, 1.0, 4.6578, 1.8421, -1.7042};
  EXPECT_TRUE(test::RowMatches("pair 1", got, expected, 5e-5));
}

TEST(Differences, ValuesQuotedByOtherLibraries) {
  // The pair that colour-science libraries document for their difference functions.
  const CLabValues standard = MakeLab(100.0, 21.57210357, 272.2281935);
  const CLabValues sample = MakeLab(100.0, 426.67945353, 72.39590835);
  CDeltaValues delta = Eab(standard, sample);
  EXPECT_NEAR(delta[6], 451.7133019, 5e-7);
  DeltaCmc(standard, 2.0, 1.0, delta);
  EXPECT_NEAR(delta[6], 172.7047712, 5e-7);
  delta = Eab(standard, sample);
  DeltaCie94(standard, 1.0, 1.0, 1.0, delta);
  EXPECT_NEAR(delta[6], 83.7792255, 5e-7);
  DeltaCie2000(standard, sample, 1.0, 1.0, 1.0, delta);
  EXPECT_NEAR(delta[6], 94.0356490, 5e-7);
  DeltaDin99(MakeLab(60.2574, -34.0099, 36.2677), MakeLab(60.4626, -34.1751, 39.4387), 1.0, 1.0, delta);
  EXPECT_NEAR(delta[6], 1.1772166, 5e-7);
}

// As other libraries document it by ASTM D2244, whose factor of the lightness is 105.509 where DIN 6176 has 105.51.
TEST(Din99, Coordinates) {
  CLabValues din99;
  LabToDin99(CLabValues(41.52787529, 52.63858304, 26.92317922), 1.0, 1.0, din99);
  EXPECT_TRUE(test::RowMatches("L99 a99 b99", std::span(&din99[0], 3),
                               std::array{53.22821988 / 105.509 * 105.51, 28.41634656, 3.89839552}, 2e-8));
  EXPECT_NEAR(din99[4], std::atan2(din99[2], din99[1]) * 180.0 / M_PI, 1e-9);
  CDifferenceSettings settings = DefaultSettings(vrxSystemDin99);
  settings.ownFormula = true;
  CColorValues standard{{20, 20, 20}, {60.2574, -34.0099, 36.2677}};
  CColorValues sample{{20, 20, 20}, {60.4626, -34.1751, 39.4387}};
  CDeltaValues delta;
  ComputeDifference(settings, vrxIllumD65, kObserver10, standard, sample, 0.0, delta);
  EXPECT_NEAR(delta[6], 1.1772166, 5e-7);
}

TEST(DeltaEab, ReadsRecordsThatAHostMadeLonger) {
  CLabValues standard(50, 10, 0), sample(50, 0, 10);
  const CDeltaValues expected = Eab(standard, sample);
  standard.Add(7.0);
  sample.Add(8.0);
  EXPECT_EQ(Eab(standard, sample), expected);
}

TEST(DeltaEab, HueDifferenceIsPositiveCounterClockwise) {
  const CLabValues red = MakeLab(50, 10, 0), yellow = MakeLab(50, 0, 10);
  EXPECT_NEAR(Eab(red, yellow)[5], std::sqrt(200.0), 1e-12);
  EXPECT_NEAR(Eab(yellow, red)[5], -std::sqrt(200.0), 1e-12);
  const CDeltaValues none = Eab(red, red);
  for (int k = 0; k < 7; ++k) EXPECT_EQ(none[k], 0.0) << k;
}

TEST(DeltaEab, PartsAddUpToTheTotal) {
  for (double a = -60.0; a <= 60.0; a += 17.0) {
    for (double b = -60.0; b <= 60.0; b += 13.0) {
      const CDeltaValues delta = Eab(MakeLab(40, 12, -7), MakeLab(43, a, b));
      EXPECT_NEAR(delta[0] * delta[0] + delta[4] * delta[4] + delta[5] * delta[5], delta[6] * delta[6], 1e-9);
    }
  }
}

TEST(Cmc, BothSidesOfEveryLimit) {
  EXPECT_NEAR(CmcWeights(FromPolar(16.0, 20, 0)).SL, 0.040975 * 16 / 1.2824, 1e-15);
  EXPECT_EQ(CmcWeights(FromPolar(15.999, 20, 0)).SL, 0.511);
  // SH / SC = F T + 1 - F isolates T, which has another form between 164 and 345 degrees, both ends included.
  const double C = 40.0, F = std::sqrt(std::pow(C, 4) / (std::pow(C, 4) + 1900.0));
  const auto T = [&](double h) {
    const DifferenceWeights w = CmcWeights(FromPolar(50, C, h));
    return (w.SH / w.SC - 1.0 + F) / F;
  };
  const auto blue = [](double h) { return 0.56 + std::fabs(0.2 * std::cos((h + 168.0) * M_PI / 180.0)); };
  const auto other = [](double h) { return 0.36 + std::fabs(0.4 * std::cos((h + 35.0) * M_PI / 180.0)); };
  for (const double h : {164.0, 200.0, 345.0}) EXPECT_NEAR(T(h), blue(h), 1e-9) << h;
  for (const double h : {163.999, 345.001, 0.0, 90.0}) EXPECT_NEAR(T(h), other(h), 1e-9) << h;
}

TEST(Fmc2, LawsOfTheFormula) {
  CDeltaValues delta;
  // A change of luminance alone is no chromaticity difference.
  DeltaFmc2(CTrisValues(20, 25, 30), CTrisValues(21, 26.25, 31.5), delta);
  EXPECT_GT(delta[0], 0.0);
  EXPECT_NEAR(delta[4], 0.0, 1e-12);
  EXPECT_NEAR(delta[6], std::fabs(delta[0]), 1e-12);
  EXPECT_TRUE(IsUnset(delta[3]) && IsUnset(delta[5]));
  // At Y = 10.69, the luminance of MacAdam's experiment, K1 is 1. Along dS alone the chromaticity part is K1 dS / b.
  const double Y = 10.69, Z = 12.0, dZ = 0.01, S = 0.686 * Z;
  const double b = std::sqrt(0.0003098 * (S * S + 0.2015 * Y * Y));
  // A step in Z that leaves P and Q: 0.724 dX + 0.382 dY = 0.098 dZ, -0.48 dX + 1.37 dY = -0.1276 dZ.
  const double det = 0.724 * 1.37 + 0.48 * 0.382;
  const double dX = (0.098 * 1.37 + 0.1276 * 0.382) * dZ / det,
               dY = (-0.1276 * 0.724 + 0.48 * 0.098) * dZ / det;
  DeltaFmc2(CTrisValues(9.0, Y, Z), CTrisValues(9.0 + dX, Y + dY, Z + dZ), delta);
  EXPECT_NEAR(delta[4], 0.686 * dZ / b, 2e-4 * delta[4]);
}

TEST(GePqs2, ColumnsByHand) {
  CDeltaValues delta, fmc2;
  const CTrisValues standard(20, 20, 20), sample(22, 21, 20);
  DeltaGePqs2(standard, sample, delta);
  DeltaFmc2(standard, sample, fmc2);
  EXPECT_NEAR(delta[0], 5.0, 1e-12);
  EXPECT_NEAR(delta[1], 10000.0 * (22.0 / 63.0 - 1.0 / 3.0), 1e-9);
  EXPECT_NEAR(delta[2], 0.0, 1e-9);
  EXPECT_EQ(delta[6], fmc2[4]);
  for (const int k : {3, 4, 5}) EXPECT_TRUE(IsUnset(delta[k])) << k;
}

TEST(EffectPaintSystems, EveryBranch) {
  // dE* = (dL 0.6, da 0.3, db -0.4), so that each term shows which weights were used: of lightness, and of da*
  // and db* or, where the difference counts as polar, of dC* and dH*.
  struct Row {
    const char* label;
    bool din;
    double L, C, h, angle;
    bool polar;
    double SL, S1, S2;
  };
  const double third = 1.0 / 3.0, root17 = std::sqrt(17.99), root18 = std::sqrt(18.0);
  const Row rows[] = {
      {"Audi red below 10 degrees", false, 25, 36, 9.99, 45, false, 1.05, 0.5, 0.5},
      {"Audi dark red at 12 degrees", false, 25, 36, 12, 45, true, 1.05, 0.79 + 2 * third, 0.4 + third},
      {"Audi light red at 12 degrees", false, 36, 36, 12, 45, false, 1.16, 0.5, 0.5},
      {"Audi angle 0 counts as 1", false, 25, 36, 5, 0, false, 23.05, 0.5, 0.5},
      {"DIN grey", true, 25, 9.99, 100, 45, false, 1.45, 0.7, 0.7},
      {"DIN pale, hue 27", true, 25, 17.99, 27, 45, false, 1.45, 0.7, 0.7},
      {"DIN pale, hue below 27", true, 25, 17.99, 26.99, 45, true, 1.45, 0.48 * root17 - 1.75 + 42.0 / 45,
       0.14 * root17 - 0.3 + 21.0 / 45},
      {"DIN chromatic", true, 25, 18, 27, 45, true, 1.45, 0.48 * root18 - 1.75 + 42.0 / 45,
       0.14 * root18 - 0.3 + 21.0 / 45},
  };
  for (const Row& row : rows) {
    const CLabValues standard = FromPolar(row.L, row.C, row.h);
    CDeltaValues delta = Eab(standard, MakeLab(row.L + 0.6, standard[1] + 0.3, standard[2] - 0.4));
    const double dC = delta[4], first = row.polar ? dC : 0.3, second = row.polar ? delta[5] : 0.4;
    if (row.din) {
      DeltaDin6175(standard, 1.0, 1.0, 1.0, row.angle, delta);
    } else {
      DeltaAudi(standard, row.angle, delta);
    }
    EXPECT_NEAR(delta[6], std::hypot(0.6 / row.SL, first / row.S1, second / row.S2), 1e-12) << row.label;
    EXPECT_EQ(delta[4], dC) << row.label;  // no other element changes
  }
}

CColorValues MakeColor(double X, double Y, double Z, int system) {
  CColorValues color;
  color.tristimulus = CTrisValues(X, Y, Z);
  FillCoordinates(system, vrxIllumD65, kObserver10, color);
  return color;
}

CDeltaValues Compute(int system, const CColorValues& standard, const CColorValues& sample) {
  CDeltaValues delta;
  ComputeDifference(DefaultSettings(system), vrxIllumD65, kObserver10, standard, sample, 45.0, delta);
  return delta;
}

TEST(ComputeDifference, EverySystemIsZeroForEqualColoursAndUnsetForUnsetOnes) {
  for (int system = 0; system < kDifferenceSystems; ++system) {
    const CColorValues color = MakeColor(30, 25, 20, system);
    const CDeltaValues none = Compute(system, color, color);
    for (int k = 0; k < 7; ++k) EXPECT_TRUE(none[k] == 0.0 || IsUnset(none[k])) << system << ' ' << k;
    EXPECT_EQ(none[6], 0.0) << system;
    for (const CDeltaValues& unset :
         {Compute(system, CColorValues(), color), Compute(system, color, CColorValues())}) {
      EXPECT_TRUE(IsUnset(unset)) << system;
    }
  }
}

TEST(ComputeDifference, ElementsThatASystemDoesNotDefineAreUnset) {
  std::map<int, std::string> expected = {{2, "345"}, {3, "35"}, {7, "3"}, {8, "345"}};
  for (int system = 0; system < kDifferenceSystems; ++system) {
    const CDeltaValues delta =
        Compute(system, MakeColor(30, 25, 20, system), MakeColor(31, 25.5, 22, system));
    std::string unset;
    for (int k = 0; k < 7; ++k) {
      if (IsUnset(delta[k])) unset += std::to_string(k);
    }
    EXPECT_EQ(unset, expected[system]) << system;
    // No heading stands over an element without a value.
    for (const int k : DifferenceColumnElements(system)) EXPECT_FALSE(IsUnset(delta[k])) << system << k;
  }
}

TEST(ComputeDifference, TakesHuesInEitherUnit) {
  for (int system = 0; system < kDifferenceSystems; ++system) {
    const auto total = [&] {
      return Compute(system, MakeColor(15, 20, 35, system), MakeColor(16, 21, 35.5, system))[6];
    };
    const double degrees = total();
    SetHueInDegrees(false);
    EXPECT_NEAR(total(), degrees, 1e-11) << system;
    SetHueInDegrees(true);
  }
}

TEST(ComputeDifference, XyzScalesAndClamps) {
  const CDeltaValues delta = Compute(7, MakeColor(30, 25, 20, 7), MakeColor(31, 24, 20.5, 7));
  EXPECT_NEAR(delta[0], 10.0, 1e-9);
  EXPECT_NEAR(delta[1], -10.0, 1e-9);
  EXPECT_NEAR(delta[2], 5.0, 1e-9);
  EXPECT_NEAR(delta[4], 10000.0 * (31.0 / 75.5 - 30.0 / 75.0), 1e-9);
  const CDeltaValues wide = Compute(7, MakeColor(90, 5, 5, 7), MakeColor(5, 90, 5, 7));
  EXPECT_EQ(wide[4], -999.99);
  EXPECT_EQ(wide[5], 999.99);
}

TEST(ComputeDifference, ChromaticityPseudoSystem) {
  const test::MessageRecorder messages;  // no system of that number, which is persistent, has parameters
  const CDeltaValues delta = Compute(100, MakeColor(30, 25, 20, 0), MakeColor(20, 20, 20, 0));
  EXPECT_DOUBLE_EQ(delta[0], 1.0 / 3.0);
  EXPECT_DOUBLE_EQ(delta[1], 1.0 / 3.0);
}

// Stored results of numbers that no system has are dE*ab; such a number has no settings and no texts.
TEST(DifferenceSystems, ANumberWithoutASystemIsEab) {
  test::MessageRecorder messages;
  const CColorValues standard = MakeColor(30, 25, 20, vrxSystemLab),
                     sample = MakeColor(33, 27, 18, vrxSystemLab);
  const CDeltaValues expected = Compute(vrxSystemLab, standard, sample);
  for (const int32_t system : {kDifferenceSystems, -1, 99, 255}) {
    EXPECT_EQ(MakeColor(30, 25, 20, system).lab, standard.lab) << system;
    EXPECT_EQ(Compute(system, standard, sample), expected) << system;
    const Difference values =
        ComputeDifference({system, {2, 1, 1, 1}}, standard.Values(), sample.Values(), 45.0);
    EXPECT_EQ(values.dE, expected[CDeltaValues::kTotal]) << system;
    EXPECT_EQ(messages.Take(), test::IndexErrors(1)) << system;  // of the settings alone
    EXPECT_TRUE(ColumnHeadings(system, ColumnList::kTotal).IsEmpty());
    EXPECT_TRUE(DifferenceColumnElements(system).empty() && CoordinateColumnElements(system).empty());
  }
}

std::size_t CountOf(std::string_view part, const std::string& text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + part.size())) ++count;
  return count;
}

// The table of the systems against their texts.
TEST(DifferenceSystems, TextsFitTheTable) {
  for (const DifferenceSystem& system : DifferenceSystems()) {
    const int32_t k = system.number;
    const double p[] = {9.0, 9.0, 9.0, 9.0};
    EXPECT_EQ(CountOf("9.00", DifferenceSystemName(k, NameLength::kLong, p).ToUtf8()),
              static_cast<std::size_t>(system.parameterCount))
        << system.shortName;
    const auto headings = [&](ColumnList list) { return ColumnHeadings(k, list).ToUtf8(); };
    EXPECT_EQ(headings(ColumnList::kFull),
              headings(ColumnList::kCoordinates) + "||" + headings(ColumnList::kDifferences));
    EXPECT_EQ(CountOf("|", headings(ColumnList::kCoordinates)) + 1, CoordinateColumnElements(k).size());
    for (const ColumnList list : {ColumnList::kDifferences, ColumnList::kComponents, ColumnList::kTotal}) {
      EXPECT_EQ(CountOf("|", headings(list)) + 1, DifferenceColumnElements(k, list).size());
    }
  }
  EXPECT_EQ(ColumnHeadings(vrxSystemLch, ColumnList::kComponents).ToUtf8(),
            "\u0394L*|\u0394a*|\u0394b*|\u0394E*ab");
  EXPECT_EQ(ColumnHeadings(vrxSystemHunter, ColumnList::kTotal).ToUtf8(), "\u0394Eab");
  // L*|C*|h over a record of L*, a*, b*, C*, h; Y|x|y.
  EXPECT_EQ(CoordinateColumnElements(vrxSystemLch)[1],
            (CoordinateColumn{CoordinateSource::kCoordinates, CLabValues::kChroma}));
  EXPECT_EQ(CoordinateColumnElements(vrxSystemGePqs2)[0],
            (CoordinateColumn{CoordinateSource::kTristimulus, CTrisValues::kY}));
}

TEST(DifferenceSystems, Names) {
  const double p[] = {2.0, 1.0, 0.004999, -0.001};
  struct Row {
    int system;
    NameLength length;
    bool withParameters;
    const char* name;
  };
  const Row rows[] = {
      {0, NameLength::kLong, true, "CIE L*a*b*"},
      {1, NameLength::kLong, true, "CMC (L:C) = 2,00 : 1,00, cf = 0,00"},
      {1, NameLength::kShort, true, "CMC (2,00:1,00) cf=0,00"},
      {4, NameLength::kShort, true, "CIE94 (2,00:1,00:0,00) DE=0,00"},
      {10, NameLength::kLong, true, "DIN99 (KCH:KE) = 2,00 : 1,00"},
      {11, NameLength::kLong, false, "CIE2000"},
      {kDifferenceSystems, NameLength::kLong, true, ""},
      {-1, NameLength::kShort, false, ""},
  };
  for (const Row& row : rows) {
    const auto parameters = row.withParameters ? std::span<const double>(p) : std::span<const double>();
    EXPECT_EQ(DifferenceSystemName(row.system, row.length, parameters, u',').ToUtf8(), row.name)
        << row.system;
  }
}

}  // namespace
}  // namespace vrx
