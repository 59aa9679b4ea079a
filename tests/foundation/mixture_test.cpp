#include <cmath>
#include <gtest/gtest.h>
#include <span>
#include <string_view>
#include <tuple>

#include <vrxmath/foundation/archive_frame.h>
#include <vrxmath/foundation/mixture.h>

#include "tests/testing/archives.h"

namespace vrx {
namespace {

TEST(Mixture, EqualityOfElements) {
  CMixtureElement a(1), b(1);
  a.amount = 0.1 + 0.2, b.amount = 0.3;
  EXPECT_TRUE(a == b) << "5.6e-17 apart";
  b.flags = 0xFFF0;
  EXPECT_TRUE(a == b) << "the remainder does not count";
  for (const uint16_t flag : std::initializer_list<uint16_t>{1, 2, 4, 8}) {
    b.flags = flag;
    EXPECT_FALSE(a == b) << flag;
  }
  b = a;
  a.amount = 1.0, b.amount = std::nextafter(std::nextafter(1.0, 2.0), 2.0);
  EXPECT_FALSE(a == b) << "4.4e-16 apart";
  b = a;
  b.values[0].scattering[39] += 1e-15;
  EXPECT_FALSE(a == b);
}

TEST(Mixture, LevelUpdatesKeepTheMixture) {
  // 20 % of the colorant in the base, then a concentration of 50 %.
  CColorantValues base;
  base.absorption.Fill(0.25);
  base.scattering.Fill(2.0);
  CColorantLevel level(2);
  level.values[0].absorption.Fill(4.0);
  level.values[0].scattering.Fill(0.5);
  const double c = 0.2, converted = 0.5;

  CColorantLevel unit = level;
  unit.RescaleUnitCurves(c / converted);
  for (const int32_t w : {0, 39}) {
    EXPECT_DOUBLE_EQ(converted * unit.values[0].absorption[w], c * 4.0);
    EXPECT_DOUBLE_EQ(converted * unit.values[0].scattering[w], c * 0.5);
  }
  EXPECT_DOUBLE_EQ(unit.values[1].scattering[7], 1e-5 * c / converted) << "every geometry follows";

  const auto mixture = [](double share, double ofBase, double ofColorant) {
    return (1.0 - share) * ofBase + share * ofColorant;
  };
  // A base of its own, and the one that scatters 1 and absorbs nothing.
  for (const auto& [given, K, S] : {std::tuple{base, 0.25, 2.0}, std::tuple{UnitBase(), 0.0, 1.0}}) {
    CColorantLevel absolute = level;
    absolute.KeepContributionOverBase(c / converted, given);
    for (const int32_t w : {0, 39}) {
      EXPECT_DOUBLE_EQ(mixture(converted, K, absolute.values[0].absorption[w]), mixture(c, K, 4.0));
      EXPECT_DOUBLE_EQ(mixture(converted, S, absolute.values[0].scattering[w]), mixture(c, S, 0.5));
    }
  }
}

TEST(Mixture, ArchiveForm) {
  CMixture mixture;
  CMixtureElement element(1);
  element.flags = 0xABC5, element.amount = 2.5;
  element.values[0].absorption[39] = 7.0;
  mixture.Add(element);
  mixture.Add(CMixtureElement());
  test::ExpectRoundTripAndTruncations(mixture);
  test::ExpectHostileCountsRefused(mixture);
  test::ExpectRoundTripAndTruncations(element);
  test::ExpectRoundTripAndTruncations(element.values[0]);
  CColorantLevel level(2);
  level.concentration = 0.5;
  test::ExpectRoundTripAndTruncations(level);
}

// The smallest framed record.
constexpr ArchiveFormat kFormat = {0x44434241, 2};  // "ABCD"
struct Framed {
  double x;
  void Serialize(CArchive& archive) {
    SerializeFramed(archive, kFormat, *this, [](CArchive& inner, Framed& f) { SerializeField(inner, f.x); });
  }
  bool operator==(const Framed&) const = default;
};

TEST(ArchiveFrame, ChecksumAndRefusals) {
  constexpr std::string_view kCheck = "123456789";
  EXPECT_EQ(Crc32(std::as_bytes(std::span(kCheck))), 0xCBF43926u);  // the standard's check value

  const test::Bytes sound = test::Stored(Framed{1.5});
  ASSERT_EQ(sound.size(), 4u + 2u + 4u + 2u + 8u);
  struct Row {
    std::size_t position;
    int value;
    int failure;
  };
  const Row rows[] = {
      {0, 'X', CArchiveException::kBadFormat},   // another tag
      {4, 0, CArchiveException::kBadFormat},     // version 0
      {4, 3, CArchiveException::kNewVersion},    //
      {6, 0x55, CArchiveException::kBadFormat},  // checksum
      {10, 9, CArchiveException::kEndOfFile},    // count of bytes
      {15, 1, CArchiveException::kBadFormat},    // content
  };
  for (const Row& row : rows) {
    test::Bytes damaged = sound;
    damaged[row.position] = static_cast<std::byte>(row.value);
    Framed target{4.0};
    EXPECT_EQ(test::ArchiveFailure([&] { test::Load(target, damaged); }), row.failure) << row.position;
    EXPECT_EQ(target.x, 4.0) << row.position;
  }
  test::ExpectRoundTripAndTruncations(Framed{1.5}, Framed{4.0});
  const std::span<const std::byte> tooLong(sound.data(), std::size_t{1} << 31);
  EXPECT_THROW(test::StoredBy([&](CArchive& archive) { StoreFrame(archive, kFormat, tooLong); }),
               CInvalidArgException);
}

}  // namespace
}  // namespace vrx
