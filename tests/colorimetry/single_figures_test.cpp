#include <cmath>
#include <gtest/gtest.h>
#include <string>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/single_figures.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/colorimetry/weighting.h>

namespace vrx {
namespace {

CTrisValues WhiteOf(vrxIlluminant illuminant, int32_t observer) {
  CTrisValues white;
  WhitePoint(illuminant, observer, white);
  return white;
}

// The Python package colour 0.4 names the nearest whole nanometre; purity by its polygon of every nanometre.
TEST(DominantWavelength, KnownAnswers) {
  const Xy white{0.31270, 0.32900};
  const auto red = FindDominantWavelength({0.54369557, 0.32107944}, white, kObserver2);
  EXPECT_NEAR(red.wavelength, 616.0, 0.6);
  EXPECT_NEAR(red.purity, 0.622885671878446, 1e-4);
  const auto purple = FindDominantWavelength({0.37605506, 0.24452225}, white, kObserver2);
  EXPECT_NEAR(purple.wavelength, -509.0, 0.6);
}

TEST(DominantWavelength, OfMonochromaticLightIsItsOwn) {
  for (const int32_t observer : {kObserver2, kObserver10}) {
    for (const double nm : {450.0, 480.0, 520.0, 580.5, 620.0}) {
      const auto at = [&](int32_t wavelength) {
        return Chromaticity(MatchingFunctionsAt(observer, wavelength));
      };
      const auto whole = static_cast<int32_t>(nm);
      const Xy a = at(whole), b = at(whole + 1);
      const double t = nm - whole;
      const Xy point{a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
      const auto found = FindDominantWavelength(point, {0.33, 0.33}, observer);
      EXPECT_NEAR(found.wavelength, nm, 1e-6) << nm;
      EXPECT_NEAR(found.purity, 1.0, 1e-9) << nm;
    }
  }
  EXPECT_TRUE(IsUnset(DominantWavelength(vrxIllumD65, kObserver10, WhiteOf(vrxIllumD65, kObserver10))));
  EXPECT_TRUE(IsUnset(DominantWavelength(vrxIllumD65, kObserver10, {0, 0, 0})));
  EXPECT_TRUE(IsUnset(ExcitationPurity(vrxIllumD65, kObserver10, {kUnset, kUnset, kUnset})));
  EXPECT_TRUE(IsUnset(ExcitationPurity(vrxIllumD65, kObserver10, {})));
}

// Ohno's method in the Python package colour 0.4 for the first; the definitions of A and of the daylight illuminants (CIE 15).
TEST(ColorTemperature, KnownAnswers) {
  const double u = 0.1978, v = 0.3122, d = 2.0 * u - 8.0 * v + 4.0;
  const ColorTemperature daylight = FindColorTemperature({3.0 * u / d, 2.0 * v / d});
  EXPECT_NEAR(daylight.kelvin, 6507.4751282, 1.0);
  EXPECT_NEAR(daylight.Duv, 0.00322335, 1e-6);
  struct Row {
    vrxIlluminant illuminant;
    double kelvin, tolerance, Duv;
  };
  for (const Row& row : {Row{vrxIllumA, 2855.5, 1.0, 0.0}, Row{vrxIllumD65, 6504.0, 5.0, 0.0032},
                         Row{vrxIllumD50, 5003.0, 5.0, 0.0033}, Row{vrxIllumD75, 7504.0, 8.0, 0.0031}}) {
    const CTrisValues white = WhiteOf(row.illuminant, kObserver2);
    EXPECT_NEAR(CorrelatedColorTemperature(row.illuminant, kObserver2, white), row.kelvin, row.tolerance);
    EXPECT_NEAR(PlanckianDistance(row.illuminant, kObserver2, white), row.Duv, 2e-4);
  }
  EXPECT_TRUE(IsUnset(FindColorTemperature({0.2, 0.6}).kelvin)) << "a green light has none";
  EXPECT_TRUE(IsUnset(CorrelatedColorTemperature(vrxIllumA, kObserver10, WhiteOf(vrxIllumA, kObserver10))));
}

TEST(Inconstancy, AGreyLooksTheSameUnderEveryLamp) {
  CReflData grey, blue;
  grey.Fill(40.0);
  for (int32_t i = 0; i < 40; ++i) blue[i] = i < 14 ? 45.0 : 8.0;
  for (const auto transform : {AdaptationTransform::kCat02, AdaptationTransform::kCat16}) {
    for (const int32_t system : {vrxSystemCie2000, vrxSystemCmc}) {
      const CDifferenceSettings settings = DefaultSettings(system);
      EXPECT_LT(InconstancyIndex(vrxIllumD65, vrxIllumT84, kObserver10, grey, settings, transform), 0.02);
      EXPECT_GT(InconstancyIndex(vrxIllumD65, vrxIllumA, kObserver10, blue, settings, transform), 1.0);
      EXPECT_NEAR(InconstancyIndex(vrxIllumA, vrxIllumA, kObserver10, blue, settings, transform), 0.0, 1e-9);
    }
  }
  EXPECT_TRUE(IsUnset(InconstancyIndex(vrxIllumD65, vrxIllumA, kObserver10, {}, DefaultSettings(0))));
}

}  // namespace
}  // namespace vrx
