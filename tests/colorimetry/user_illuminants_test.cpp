#include <algorithm>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/fine_weights.h>
#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/colorimetry/user_illuminants.h>
#include <vrxmath/colorimetry/weight_tables.h>

#include "tests/testing/messages.h"

namespace vrx {
namespace {

constexpr auto kLamp = static_cast<vrxUserIllum>(1000);
constexpr auto kOtherLamp = static_cast<vrxUserIllum>(1255);

// Leaves no illuminant behind for the next test.
class UserIlluminants : public testing::Test {
 protected:
  ~UserIlluminants() override {
    for (const vrxUserIllum number : RegisteredUserIlluminants()) RemoveUserIlluminant(number);
  }
};

struct Spectrum {
  int32_t first = 0;
  std::vector<double> power;
};

// The published spectra by name, 5 nm apart.
std::map<std::string, Spectrum> PublishedSpectra() {
  std::ifstream file(VRX_SOURCE_DIR "/resources/published/illuminants.txt");
  std::map<std::string, Spectrum> spectra;
  std::vector<std::string> names;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream cells(line);
    const std::vector<std::string> row{std::istream_iterator<std::string>(cells), {}};
    if (names.empty()) {
      names = row;
      continue;
    }
    for (std::size_t i = 1; i < row.size(); ++i) {
      if (row[i] == "-") continue;
      Spectrum& spectrum = spectra[names[i]];
      if (spectrum.power.empty()) spectrum.first = std::stoi(row[0]);
      spectrum.power.push_back(std::stod(row[i]));
    }
  }
  return spectra;
}

void ExpectBuiltInTable(vrxIlluminant builtIn, const std::string& label) {
  // Two things keep white points of built-in tables off the sums: ASTM E308 prints its own last digit, and
  // that of LED-B1 at 10 degrees is one of old measurements.
  for (const int32_t observer : {kObserver2, kObserver10}) {
    const double* got = WeightTable(IlluminantOf(kLamp), observer);
    const double* expected = WeightTable(builtIn, observer);
    for (int32_t i = 0; i < kTableWhite; ++i) ASSERT_EQ(got[i], expected[i]) << label << ' ' << i;
    const double whiteTolerance = builtIn == vrxIllumLB1 && observer == kObserver10 ? 0.0051 : 0.0011;
    for (int32_t i = kTableWhite; i < kTableDoubles; ++i) {
      EXPECT_NEAR(got[i], expected[i], whiteTolerance) << label << ' ' << observer << ' ' << i;
    }
  }
}

TEST_F(UserIlluminants, TheSpectrumOfABuiltInOneGivesItsTable) {
  const std::pair<vrxIlluminant, const char*> rows[] = {{vrxIllumC, "C"},        {vrxIllumD65, "D65"},
                                                        {vrxIllumD50, "D50"},    {vrxIllumT84, "F11"},
                                                        {vrxIllumLB1, "LED-B1"}, {vrxIllumLV2, "LED-V2"}};
  const auto spectra = PublishedSpectra();
  for (const auto& [builtIn, name] : rows) {
    const Spectrum& spectrum = spectra.at(name);
    const auto interpolation =
        builtIn == vrxIllumD65 ? SpectralInterpolation::kLinear : SpectralInterpolation::kLagrange;
    ASSERT_EQ(RegisterUserIlluminant(kLamp, u"Lamp", spectrum.power, spectrum.first, 5, interpolation),
              IlluminantError::kNone);
    ExpectBuiltInTable(builtIn, name);
    for (const int32_t interval : {5, 1}) {
      const double* own = FineWeightTable(IlluminantOf(kLamp), kObserver10, interval);
      EXPECT_TRUE(
          std::equal(own, own + 3 * FineSamples(interval), FineWeightTable(builtIn, kObserver10, interval)))
          << name;
    }
  }
  // The radiators are defined by Planck's law, so at any step that the law is sampled at; here every 1 nm.
  for (const auto& [builtIn, kelvin, c2] :
       {std::tuple{vrxIllumA, 2848.0, 1.435e7}, std::tuple{vrxIllumH23, 2300.0, 1.4388e7}}) {
    const SpectralPower power = PlanckianSpectrum(kelvin, c2);
    ASSERT_EQ(RegisterUserIlluminant(kLamp, u"Lamp", power, 360, 1), IlluminantError::kNone);
    ExpectBuiltInTable(builtIn, "Planck");
  }
}

// A lamp with the same power everywhere is illuminant E, whose white has the chromaticity 1/3, 1/3 to within
// the digits of the matching functions.
TEST_F(UserIlluminants, EqualEnergyAtEveryStep) {
  for (const int32_t step : {1, 5, 10}) {
    const std::vector<double> power(static_cast<std::size_t>(420 / step + 1), 0.25);
    ASSERT_EQ(RegisterUserIlluminant(kLamp, u"E", power, 360, step), IlluminantError::kNone);
    for (const int32_t observer : {kObserver2, kObserver10}) {
      CTrisValues white;
      WhitePoint(IlluminantOf(kLamp), observer, white);
      EXPECT_NEAR(white[0], 100.0, 0.04) << step;
      EXPECT_EQ(white[1], 100.0);
      EXPECT_NEAR(white[2], 100.0, 0.04) << step;
    }
  }
}

TEST_F(UserIlluminants, EveryColourFunctionTakesThem) {
  const std::vector<double> power(81, 100.0);
  ASSERT_EQ(RegisterUserIlluminant(kOtherLamp, u"E|Equal energy", power, 380, 5), IlluminantError::kNone);
  const vrxIlluminant E = IlluminantOf(kOtherLamp);
  EXPECT_EQ(IlluminantCode(E), u"E");
  EXPECT_EQ(IlluminantName(E, kObserver10, kNameSlashObserver), u"E/10\u00B0");
  EXPECT_EQ(IlluminantName(E, kObserver10, kNameDescription), u"Equal energy");
  vrxIlluminant found;
  EXPECT_TRUE(FindIlluminant(u"e", found));
  EXPECT_EQ(found, E);
  CReflData curve;
  curve.Fill(100.0);
  CTrisValues xyz;
  curve.Tristimulus(E, kObserver10, xyz);
  CLabValues lab;
  XyzToLab(E, kObserver10, xyz, lab);
  EXPECT_NEAR(lab[0], 100.0, 0.01);
  EXPECT_NEAR(lab[3], 0.0, 0.02);
  EXPECT_NEAR(WhitenessCie(E, kObserver10, xyz), 100.0, 0.1);
  EXPECT_TRUE(IsUnset(WhitenessBerger(E, kObserver10, xyz)));

  RemoveUserIlluminant(kOtherLamp);
  test::MessageRecorder messages;
  curve.Tristimulus(E, kObserver10, xyz);
  EXPECT_TRUE(IsUnset(xyz));
  EXPECT_TRUE(IlluminantCode(E).IsEmpty());
  EXPECT_FALSE(FindIlluminant(u"E", found));
  EXPECT_EQ(messages.Take(), test::IndexErrors());
}

TEST_F(UserIlluminants, ReplacingKeepsTheTableInPlace) {
  std::vector<double> power(81, 100.0);
  ASSERT_EQ(RegisterUserIlluminant(kLamp, u"One", power, 380, 5), IlluminantError::kNone);
  ASSERT_EQ(RegisterUserIlluminant(kOtherLamp, u"Two", power, 380, 5), IlluminantError::kNone);
  const double* table = WeightTable(IlluminantOf(kLamp), kObserver2);
  const double before = table[kTableWhite];
  const double* fine = FineWeightTable(IlluminantOf(kLamp), kObserver2, 5);
  const double fineBefore = fine[80];
  for (std::size_t i = 60; i < power.size(); ++i) power[i] *= 2.0;  // redder
  ASSERT_EQ(RegisterUserIlluminant(kLamp, u"one", power, 380, 5), IlluminantError::kNone);
  EXPECT_EQ(WeightTable(IlluminantOf(kLamp), kObserver2), table);
  EXPECT_EQ(FineWeightTable(IlluminantOf(kLamp), kObserver2, 5), fine);
  EXPECT_GT(fine[80], fineBefore);
  EXPECT_GT(table[kTableWhite], before);
  const CUserIllumArray numbers = RegisteredUserIlluminants();
  ASSERT_EQ(numbers.GetSize(), 2);
  EXPECT_EQ(numbers[0], kLamp);
  EXPECT_EQ(numbers[1], kOtherLamp);
}

TEST_F(UserIlluminants, BadDataIsRefusedWithAReason) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const auto flat = [](std::size_t count, double value = 1.0) { return std::vector<double>(count, value); };
  const auto with = [&](std::size_t at, double value) {
    auto power = flat(81);
    power[at] = value;
    return power;
  };
  auto infraredOnly = flat(81, 0.0);
  infraredOnly.back() = 5.0;  // 780 nm
  struct Row {
    int32_t number;
    WideView name;
    std::vector<double> power;
    int32_t first, step;
    IlluminantError expected;
  };
  const Row rows[] = {
      {999, u"L", flat(81), 380, 5, IlluminantError::kNumber},
      {1256, u"L", flat(81), 380, 5, IlluminantError::kNumber},
      {1000, u"", flat(81), 380, 5, IlluminantError::kName},
      {1000, u"|Lamp", flat(81), 380, 5, IlluminantError::kName},
      {1000, u"17", flat(81), 380, 5, IlluminantError::kName},
      {1000, u"d65|Mine", flat(81), 380, 5, IlluminantError::kName},
      {1000, u"taken", flat(81), 380, 5, IlluminantError::kName},
      {1000, u"L", flat(81), 380, 2, IlluminantError::kStep},
      {1000, u"L", flat(30), 400, 10, IlluminantError::kTooShort},
      {1000, u"L", flat(31), 400, 10, IlluminantError::kNone},
      {1000, u"L", flat(31), 401, 10, IlluminantError::kRange},
      {1000, u"L", flat(81), -2147483647, 5, IlluminantError::kRange},
      {1000, u"L", flat(20000), 380, 10, IlluminantError::kRange},
      {1000, u"L", with(40, std::nan("")), 380, 5, IlluminantError::kNumeric},
      {1000, u"L", with(0, kInfinity), 380, 5, IlluminantError::kNumeric},
      {1000, u"L", flat(81, 1e308), 380, 5, IlluminantError::kNumeric},
      {1000, u"L", with(80, -1e-9), 380, 5, IlluminantError::kNegative},
      {1000, u"L", with(80, -0.0), 380, 5, IlluminantError::kNone},
      {1000, u"L", flat(81, 0.0), 380, 5, IlluminantError::kNoPower},
      {1000, u"L", infraredOnly, 380, 5, IlluminantError::kNoPower},
  };
  ASSERT_EQ(RegisterUserIlluminant(kOtherLamp, u"Taken", flat(81), 380, 5), IlluminantError::kNone);
  for (const Row& row : rows) {
    const auto number = static_cast<vrxUserIllum>(row.number);
    const auto got = RegisterUserIlluminant(number, row.name, row.power, row.first, row.step);
    const bool good = row.expected == IlluminantError::kNone;
    const auto line = &row - rows;
    EXPECT_EQ(got, row.expected) << line;
    EXPECT_EQ(IlluminantErrorText(got).IsEmpty(), good) << line;
    EXPECT_EQ(RegisteredUserIlluminants().GetSize(), good ? 2 : 1) << line;
    if (good) RemoveUserIlluminant(number);
  }
}

}  // namespace
}  // namespace vrx
