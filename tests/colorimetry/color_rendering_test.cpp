#include <vrxmath/colorimetry/color_rendering.h>

#include <cmath>
#include <gtest/gtest.h>

#include <vrxmath/colorimetry/illuminant_spectra.h>

namespace vrx {
namespace {

SpectralPower Published(const char* name) {
  SpectralPower power{};
  EXPECT_TRUE(FindPublishedSpectrum(name, power)) << name;
  return power;
}

// The tables of CIE 15 and ISO/CIE 11664-2, which rounded on the way.
TEST(Daylight, IsThatOfTheTables) {
  for (const auto& [name, kelvin] :
       {std::pair{"D50", 5003.0}, {"D55", 5503.0}, {"D65", 6504.0}, {"D75", 7504.0}}) {
    const SpectralPower table = Published(name), daylight = DaylightSpectrum(kelvin);
    for (std::size_t i = 0; i < table.size(); i += 10)
      EXPECT_NEAR(daylight[i], table[i], 0.05) << name << " " << i;
  }
  EXPECT_EQ(DaylightSpectrum(3999.0)[200], 0.0);
}

// Ra of CIE 15 for its fluorescent lamps, printed as whole numbers. R9 of F4 and F12: an independent computation by sums over 5 nm.
TEST(ColorRendering, KnownAnswers) {
  struct Row {
    const char* lamp;
    double kelvin, Ra;
  };
  for (const Row& row : {Row{"F2", 4230, 64}, Row{"F4", 2940, 51}, Row{"F6", 4150, 59}, Row{"F7", 6500, 90},
                         Row{"F8", 5000, 95}, Row{"F10", 5000, 81}, Row{"F11", 4000, 83},
                         Row{"F12", 3000, 83}, Row{"A", 2856, 100}, Row{"D65", 6504, 100}}) {
    const ColorRendering found = FindColorRendering(Published(row.lamp));
    EXPECT_NEAR(found.temperature.kelvin, row.kelvin, 6.0) << row.lamp;
    EXPECT_NEAR(found.Ra, row.Ra, 0.52) << row.lamp;
  }
  const ColorRendering warm = FindColorRendering(Published("F4"));
  EXPECT_NEAR(warm.R[8], -111.3, 0.5);
  EXPECT_NEAR(FindColorRendering(Published("F12")).R[8], 1.0, 0.5);
  EXPECT_LT(warm.referenceDistance, kFarthestReference);
  EXPECT_GT(FindColorRendering(Published("F6")).referenceDistance, kFarthestReference);
  SpectralPower green{};
  green[170] = 1.0;
  EXPECT_TRUE(IsUnset(FindColorRendering(green).Ra) && IsUnset(FindColorRendering({}).R[0]));
}

}  // namespace
}  // namespace vrx
