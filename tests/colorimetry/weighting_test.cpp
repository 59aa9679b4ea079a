#include <algorithm>
#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>
#include <span>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/fine_weights.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/platform/resources.h>

#include "tests/testing/rows.h"
#include "tools/make_weights/built_in_tables.h"

namespace vrx {
namespace {

WeightingTable EmbeddedTable(const std::string& name) {
  WeightingTable table{};
  const auto bytes = FindBinaryResource("PWD", name);
  EXPECT_EQ(bytes.size(), sizeof table) << name;
  if (bytes.size() == sizeof table) std::memcpy(table.data(), bytes.data(), sizeof table);
  return table;
}

TEST(WeightingTables, AreWhatThePublishedFiguresGive) {
  const auto tables = make_weights::ComputeBuiltInTables(VRX_SOURCE_DIR "/resources/published");
  ASSERT_EQ(tables.size(), 2u * static_cast<std::size_t>(kBuiltInIlluminants));
  for (const auto& built : tables) {
    const WeightingTable embedded = EmbeddedTable(built.name);
    EXPECT_TRUE(test::RowMatches(built.name, embedded, built.table, 0.0));
  }
}

TEST(WeightingTables, KnownWeights) {
  const WeightingTable d65 = EmbeddedTable("ILL02_02");
  const std::array firstX = {0.0, 0.002, 0.006, 0.022, 0.101, 0.376, 1.2, 2.396};
  EXPECT_TRUE(test::RowMatches("X of D65", std::span(d65).first(8), firstX, 0.0));
  EXPECT_EQ(d65[39], 0.003);
  EXPECT_EQ(d65[40 + 19], 9.752);
  EXPECT_EQ(EmbeddedTable("ILL02_10")[40 + 19], 8.855);
}

TEST(WeightingTables, KnownWhitePoints) {
  struct Row {
    const char* name;
    double white[3];
  };
  // CIE 15 and ASTM E308.
  const Row rows[] = {
      {"ILL00_02", {109.85, 100.0, 35.585}},    {"ILL01_02", {98.074, 100.0, 118.232}},
      {"ILL02_02", {95.047, 100.0, 108.883}},   {"ILL02_10", {94.811, 100.0, 107.304}},
      {"ILL03_02", {99.186, 100.0, 67.393}},    {"ILL04_02", {100.962, 100.0, 64.35}},
      {"ILL05_02", {96.422, 100.0, 82.521}},    {"ILL11_02", {95.041, 100.0, 108.747}},
      {"ILL17_10", {114.757, 100.005, 33.356}},
  };
  for (const Row& row : rows) {
    const WeightingTable table = EmbeddedTable(row.name);
    EXPECT_TRUE(test::RowMatches(row.name, std::span(table).subspan(kTableWhite, 3), row.white, 0.0));
  }
}

TEST(WeightingTables, EveryBlockAddsUpToItsWhite) {
  for (int illuminant = 0; illuminant < kBuiltInIlluminants; ++illuminant) {
    for (const int degrees : {2, 10}) {
      char name[16];
      std::snprintf(name, sizeof name, "ILL%02d_%02d", illuminant, degrees);
      const WeightingTable table = EmbeddedTable(name);
      for (std::size_t k = 0; k < 3; ++k) {
        double sum = 0.0;
        for (std::size_t i = 0; i < 40; ++i) sum += table[40 * k + i];
        EXPECT_NEAR(sum, table[kTableWhite + k], 0.0105)
            << name << ' ' << k;  // 40 roundings of 0.0005, and LB1's white
      }
    }
  }
}

// Percent at every `interval` nm from 360 nm on, of a parabola over the wavelength.
std::vector<double> Parabola(int32_t interval) {
  std::vector<double> curve;
  for (int32_t nm = 360; nm <= 780; nm += interval) curve.push_back(20.0 + (nm - 540) * (nm - 540) * 1e-3);
  return curve;
}

TEST(FineWeights, AddUpToTheWhiteAndGiveTheSumsOfEveryNanometre) {
  for (int32_t i = 0; i < kBuiltInIlluminants; ++i) {
    for (const int32_t observer : {kObserver2, kObserver10}) {
      const auto illuminant = static_cast<vrxIlluminant>(i);
      White white;
      ASSERT_TRUE(FindWhite(illuminant, observer, white));
      Xyz parabola[2];
      for (const int32_t interval : {5, 1}) {
        const std::vector<double> whole(static_cast<std::size_t>(FineSamples(interval)), 100.0);
        Xyz sum;
        ASSERT_TRUE(FineTristimulus(whole, interval, illuminant, observer, sum));
        const double tolerance = i == vrxIllumLB1 && observer == kObserver10 ? 0.0051 : 0.001;
        EXPECT_TRUE(test::RowMatches(std::to_string(i), std::array{sum.X, sum.Y, sum.Z},
                                     std::array{white.X, white.Y, white.Z}, tolerance));
        ASSERT_TRUE(
            FineTristimulus(Parabola(interval), interval, illuminant, observer, parabola[interval == 1]));
      }
      // Lagrange's polynomials go through a parabola, so that shares of 5 nm lose nothing of it.
      EXPECT_NEAR(parabola[0].X, parabola[1].X, 1e-11) << i;
      EXPECT_NEAR(parabola[0].Z, parabola[1].Z, 1e-11) << i;
    }
  }
}

// The sums of the matching functions of 2 degrees that CIE 15 prints: 106.8655, 106.8569 and 106.8923.
TEST(FineWeights, OfEqualEnergyAreTheMatchingFunctions) {
  SpectralPower power;
  power.fill(3.0);
  const std::vector<double> weights = ComputeFineWeights(power, kObserver2, 1);
  ASSERT_EQ(weights.size(), 3u * 421u);
  EXPECT_NEAR(weights[421 + 195], 100.0 / 106.8569, 2e-6);
  EXPECT_NEAR(std::accumulate(weights.begin(), weights.begin() + 421, 0.0), 10686.55 / 106.8569, 5e-4);
  EXPECT_NEAR(std::accumulate(weights.end() - 421, weights.end(), 0.0), 10689.23 / 106.8569, 5e-4);
}

// ASTM E308: where a measurement ends early, the weights of the missing wavelengths are added to that of the last one.
TEST(FineWeights, LastValueThatGoesOnTakesTheWeightsOfWhatIsMissing) {
  std::vector<double> curve = Parabola(5),
                      weights = ComputeFineWeights(DaylightSpectrum(6504), kObserver10, 5);
  const std::size_t last = (700 - 360) / 5, first = (400 - 360) / 5;
  std::fill(curve.begin(), curve.begin() + first, curve[first]);
  std::fill(curve.begin() + last, curve.end(), curve[last]);
  const double completed = std::inner_product(curve.begin(), curve.end(), weights.begin(), 0.0);
  for (std::size_t i = 0; i < curve.size(); ++i)
    if (i < first || i > last) weights[std::clamp(i, first, last)] += weights[i];
  double gathered = 0.0;
  for (std::size_t i = first; i <= last; ++i) gathered += weights[i] * curve[i];
  EXPECT_NEAR(completed, gathered, 1e-9);
}

TEST(FineWeights, WhatHasNoneIsRefused) {
  Xyz xyz;
  std::vector<double> curve(85, 50.0);
  EXPECT_FALSE(FineTristimulus(curve, 1, vrxIllumD65, kObserver10, xyz));
  EXPECT_EQ(FineWeightTable(vrxIllumD65, kObserver10, 10), nullptr);
  for (const int32_t number : {-1, 26, 1000}) {
    EXPECT_FALSE(FineTristimulus(curve, 5, static_cast<vrxIlluminant>(number), kObserver10, xyz)) << number;
  }
  curve[0] = kUnset;
  EXPECT_FALSE(FineTristimulus(curve, 5, vrxIllumD65, kObserver10, xyz));
}

}  // namespace
}  // namespace vrx
