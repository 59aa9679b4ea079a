#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <span>

#include <vrxmath/colorimetry/illuminants.h>
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

}  // namespace
}  // namespace vrx
