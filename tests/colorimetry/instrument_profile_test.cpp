// A simulated instrument with known faults is found again, and readings of tiles that took no part are corrected.

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/instrument_profile.h>
#include <vrxmath/foundation/units.h>

namespace vrx {
namespace {

// Tiles like those of ceramic sets: steps and peaks at many wavelengths, and greys.
double TileAt(std::size_t tile, double nm) {
  const double edge = 420.0 + 25.0 * static_cast<double>(tile % 11);
  const double step = 1.0 / (1.0 + std::exp((edge - nm) / (10.0 + static_cast<double>(tile))));
  const double peak = std::exp(-std::pow((nm - edge) / 40.0, 2.0));
  const double level = 5.0 + 6.0 * static_cast<double>(tile);
  if (tile % 4 == 3) return level;
  return level + 60.0 * (tile % 2 == 0 ? step : peak) * (1.0 - level / 110.0);
}

template <class READ>
std::vector<CReflData> Readings(std::size_t tiles, const READ& read) {
  std::vector<CReflData> curves(tiles);
  for (std::size_t t = 0; t < tiles; ++t) {
    for (std::int32_t i = 0; i < kWavelengths; ++i) curves[t][i] = read(t, 360.0 + 10.0 * i);
  }
  return curves;
}

double LargestError(const std::vector<CReflData>& a, const std::vector<CReflData>& b) {
  double largest = 0.0;
  for (std::size_t t = 0; t < a.size(); ++t) {
    for (std::int32_t i = 2; i < kWavelengths - 2; ++i)
      largest = std::max(largest, std::fabs(a[t][i] - b[t][i]));
  }
  return largest;
}

std::vector<CReflData> Corrected(const InstrumentProfile& profile, const std::vector<CReflData>& readings) {
  std::vector<CReflData> corrected;
  for (const CReflData& reading : readings) corrected.push_back(profile.Corrected(reading));
  return corrected;
}

// Each fault alone, as physics makes it, with the factor that takes it out.
TEST(InstrumentProfile, FindsKnownFaults) {
  const auto reference = Readings(12, TileAt);
  const struct {
    const char* fault;
    double (*read)(std::size_t, double);
    std::size_t term;
    double factor, slack, left;
  } kRows[] = {
      {"zero", [](std::size_t t, double nm) { return TileAt(t, nm) + 0.3; }, 0, -0.3, 1e-9, 1e-9},
      {"scale", [](std::size_t t, double nm) { return 0.98 * TileAt(t, nm); }, 1, 1 / 0.98 - 1, 1e-9, 1e-9},
      {"wavelengths", [](std::size_t t, double nm) { return TileAt(t, nm + 0.5); }, 3, -0.5, 0.06, 0.08},
      {"bandwidth",
       [](std::size_t t, double nm) {
         return (TileAt(t, nm - 4) + 2 * TileAt(t, nm) + TileAt(t, nm + 4)) / 4;
       },
       4, -4.0, 1.2, 0.12},
  };
  for (const auto& row : kRows) {
    const auto other = Readings(12, row.read);
    const auto profile = InstrumentProfile::Fit(reference, other, 1U << row.term);
    ASSERT_TRUE(profile) << row.fault;
    double mean = 0.0;
    for (std::size_t i = 5; i < 35; ++i) mean += profile->FactorsAt(i)[row.term] / 30.0;
    EXPECT_NEAR(mean, row.factor, row.slack) << row.fault;
    EXPECT_LE(LargestError(Corrected(*profile, other), reference), row.left) << row.fault;
    EXPECT_LE(LargestError(Corrected(*profile, other), reference), 0.35 * LargestError(other, reference))
        << row.fault;
  }
}

// Zero, scale and a shift together, found from ten tiles, hold for others.
TEST(InstrumentProfile, CorrectsTilesThatTookNoPart) {
  const auto read = [](std::size_t t, double nm) { return 0.2 + 0.985 * TileAt(t, nm + 0.6); };
  const std::vector<CReflData> reference = Readings(14, TileAt), other = Readings(14, read);
  const auto profile = InstrumentProfile::Fit({reference.data(), 10}, {other.data(), 10},
                                              kZeroTerm | kScaleTerm | kWavelengthTerm);
  ASSERT_TRUE(profile);
  const std::vector<CReflData> restOther(other.begin() + 10, other.end()),
      rest(reference.begin() + 10, reference.end());
  EXPECT_LT(LargestError(Corrected(*profile, restOther), rest), 0.2 * LargestError(restOther, rest));
}

TEST(InstrumentProfile, SaysLittleOfWhatTilesDoNotShow) {
  // Greys have no slope: the term gets no factor, and the others are found.
  const auto greys = Readings(6, [](std::size_t t, double) { return 10.0 + 12.0 * static_cast<double>(t); });
  const auto read =
      Readings(6, [](std::size_t t, double) { return 0.5 + 10.0 + 12.0 * static_cast<double>(t); });
  const auto profile = InstrumentProfile::Fit(greys, read, kZeroTerm | kWavelengthTerm | kBandwidthTerm);
  ASSERT_TRUE(profile);
  EXPECT_NEAR(profile->FactorsAt(20)[0], -0.5, 1e-9);
  EXPECT_EQ(profile->FactorsAt(20)[3], 0.0);
  EXPECT_EQ(profile->FactorsAt(20)[4], 0.0);
  EXPECT_FALSE(InstrumentProfile::Fit({greys.data(), 2}, {read.data(), 2}, kZeroTerm | kScaleTerm));
  EXPECT_FALSE(InstrumentProfile::Fit(greys, {read.data(), 5}, kZeroTerm));
  EXPECT_FALSE(InstrumentProfile::Fit(greys, read, 0));
  EXPECT_FALSE(InstrumentProfile::Fit(greys, read, 64));
  auto unset = read;
  unset[1] = CReflData();
  EXPECT_FALSE(InstrumentProfile::Fit(greys, unset, kZeroTerm));
}

// Exchanged tiles and one that was read twice are found behind an instrument's own faults; an instrument that is 4 percent off is not
// taken for exchanged tiles, although each of its readings lies on the next tile.
TEST(InstrumentProfile, FindsTilesThatStandInTheWrongPlace) {
  const auto reference = Readings(12, TileAt);
  const auto faulty = [](std::size_t t, double nm) { return 0.1 + 0.97 * TileAt(t, nm + 0.3); };
  const struct {
    const char* mistake;
    std::vector<std::size_t> order;
    std::vector<std::pair<std::size_t, std::size_t>> misplaced;
  } kRows[] = {
      {"none", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, {}},
      {"exchanged", {0, 1, 5, 3, 4, 2, 6, 7, 8, 9, 10, 11}, {{2, 5}, {5, 2}}},
      {"read twice", {0, 1, 2, 3, 4, 5, 6, 6, 8, 9, 10, 11}, {{7, 6}}},
  };
  const std::uint32_t terms = kZeroTerm | kScaleTerm | kWavelengthTerm;
  for (const auto& row : kRows) {
    const auto other = Readings(12, [&](std::size_t t, double nm) { return faulty(row.order[t], nm); });
    std::vector<std::pair<std::size_t, std::size_t>> found;
    for (const MisplacedTile& place : InstrumentProfile::FindMisplaced(reference, other, terms)) {
      found.emplace_back(place.tile, place.looksLike);
      EXPECT_LT(place.fromTheOther, 0.5) << row.mistake;
    }
    EXPECT_EQ(found, row.misplaced) << row.mistake;
  }
  const auto greys = Readings(6, [](std::size_t t, double) { return 10.0 + 4.0 * static_cast<double>(t); });
  const auto lighter = Readings(6, [](std::size_t t, double) { return 14.0 + 4.0 * static_cast<double>(t); });
  EXPECT_TRUE(InstrumentProfile::FindMisplaced(greys, lighter, kZeroTerm | kScaleTerm).empty());
}

}  // namespace
}  // namespace vrx
