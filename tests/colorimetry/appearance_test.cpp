#include <array>
#include <cmath>
#include <gtest/gtest.h>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/grade_formulas.h>
#include <vrxmath/colorimetry/uniform_space_formulas.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/numeric/matrix.h>

namespace vrx {
namespace {

constexpr White kD65{95.047, 100.0, 108.883}, kA{109.85, 100.0, 35.585};

// The matrix from D65 to D50 as it is printed for profiles, from the whites with five digits.
TEST(Adaptation, BradfordIsThePublishedMatrix) {
  const Matrix3 matrix = AdaptationMatrix(AdaptationTransform::kBradford, kD65, {96.422, 100.0, 82.521});
  constexpr double kPublished[3][3] = {{1.0478112, 0.0228866, -0.0501270},
                                       {0.0295424, 0.9904844, -0.0170491},
                                       {-0.0092345, 0.0150436, 0.7521316}};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) EXPECT_NEAR(matrix.at[i][j], kPublished[i][j], 6e-8) << i << j;
  }
}

TEST(Adaptation, WhitesBecomeWhitesAndDegreesLieBetween) {
  for (const auto transform :
       {AdaptationTransform::kCat02, AdaptationTransform::kCat16, AdaptationTransform::kBradford}) {
    const Matrix3 whole = AdaptationMatrix(transform, kD65, kA),
                  none = AdaptationMatrix(transform, kD65, kA, 0.0),
                  half = AdaptationMatrix(transform, kD65, kA, 0.5);
    const Xyz white = Adapt(Xyz{kD65.X, kD65.Y, kD65.Z}, whole);
    EXPECT_NEAR(white.X, kA.X, 1e-12);
    EXPECT_NEAR(white.Y, kA.Y, 1e-12);
    EXPECT_NEAR(white.Z, kA.Z, 1e-12);
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        EXPECT_NEAR(none.at[i][j], i == j ? 1.0 : 0.0, 1e-14);
        EXPECT_NEAR(half.at[i][j], (whole.at[i][j] + none.at[i][j]) / 2.0, 1e-14);
      }
    }
    EXPECT_TRUE(IsUnset(Adapt(Xyz{kUnset, kUnset, kUnset}, whole)));
  }
}

// The example of CIE 159 for CIECAM02, with more digits from the Python package colorspacious 1.1.2; CAM16 for the same
// colour as the Python package colour 0.4 gives it.
TEST(Appearance, KnownAnswers) {
  struct Row {
    AppearanceModel model;
    double J, C, h, Q, M, s, H;
  };
  const Row rows[] = {{AppearanceModel::kCiecam02, 41.73109113251393, 0.1047077571710474, 219.0484326583568,
                       195.3713259660767, 0.10884217566916592, 2.360305373919792, 278.06073585673334},
                      {AppearanceModel::kCam16, 41.731207905126638, 0.1033557387095838, 217.06795976739301,
                       195.37170899282242, 0.10743677233590453, 2.3450150729795514, 275.59498615208833}};
  ViewingConditions conditions;
  conditions.adaptingLuminance = 318.31;
  for (const Row& row : rows) {
    const AppearanceTerms terms = AppearanceTermsOf(row.model, {95.05, 100.0, 108.88}, conditions);
    const Appearance look = AppearanceFromXyz(terms, Xyz{19.01, 20.0, 21.78});
    EXPECT_NEAR(look.J, row.J, 1e-9);
    EXPECT_NEAR(look.C, row.C, 1e-7);
    EXPECT_NEAR(look.h, row.h, 1e-5);
    EXPECT_NEAR(look.Q, row.Q, 1e-8);
    EXPECT_NEAR(look.M, row.M, 1e-7);
    EXPECT_NEAR(look.s, row.s, 1e-6);
    EXPECT_NEAR(HueQuadrature(look.h), row.H, 1e-5);
  }
}

TEST(Appearance, GoesThereAndBack) {
  for (const AppearanceModel model : {AppearanceModel::kCiecam02, AppearanceModel::kCam16}) {
    for (const Surround& surround : {kAverageSurround, kDimSurround, kDarkSurround}) {
      ViewingConditions conditions;
      conditions.surround = surround;
      const AppearanceTerms terms = AppearanceTermsOf(model, kA, conditions);
      for (const Xyz& xyz : {Xyz{57.06, 43.06, 31.96}, Xyz{3.53, 6.56, 2.14}, Xyz{109.85, 100.0, 35.585},
                             Xyz{0.5, 0.4, 0.1}, Xyz{0.0, 0.0, 0.0}, Xyz{40.0, 60.0, 4.0}}) {
        const Appearance look = AppearanceFromXyz(terms, xyz);
        for (const Xyz& back : {XyzFromAppearance(terms, look.J, look.C, look.h),
                                XyzFromUniform(terms, UniformFromXyz(terms, xyz))}) {
          EXPECT_NEAR(back.X, xyz.X, 1e-9);
          EXPECT_NEAR(back.Y, xyz.Y, 1e-9);
          EXPECT_NEAR(back.Z, xyz.Z, 1e-9);
        }
      }
      EXPECT_TRUE(IsUnset(AppearanceFromXyz(terms, Xyz{kUnset, kUnset, kUnset}).J));
    }
  }
}

// CAM02-UCS under A: colorspacious 1.1.2. DIN99o: what the Python package coloraide
// documents for the red of sRGB. DIN99b, c, d from L*, a*, b*: the Python package colour 0.3.16. Oklab: the table of its
// author for X, Y, Z as they stand. ICtCp: the signal of 100 cd/m^2 in ITU-R BT.2100, and the example of the package colour.
TEST(UniformSpaces, KnownAnswers) {
  const Lab green{55.11636304, -41.08791787, 30.91825778, 0.0, 0.0};
  const AppearanceTerms underA = AppearanceTermsOf(AppearanceModel::kCiecam02, kA);
  Matrix3 oklab = uniform_constants::kOklabResponse;
  using uniform_constants::kRgb2020ToLms;
  using uniform_constants::kXyzToRgb2020;
  const Matrix3 lms = Product(kRgb2020ToLms, kXyzToRgb2020);
  const Xyz rgb = Times(Inverse(kXyzToRgb2020), 0.45620519, 0.03081071, 0.04091952);
  struct Row {
    const char* what;
    Lab got;
    double scale, L, a, b, tolerance;
  };
  const Row rows[] = {
      {"CAM02-UCS", UniformFromXyz(underA, Xyz{57.06, 43.06, 31.96}), 1, 76.21142598, 19.56208178,
       -22.30663293, 2e-8},
      {"CAM02-UCS", UniformFromXyz(underA, Xyz{3.53, 6.56, 2.14}), 1, 31.89458619, -29.28094241, 2.45308125,
       2e-8},
      {"DIN99o", LabToDin99Variant(Lab{53.2371, 80.0882, 67.2010, 0, 0}, kDin99o), 1, 57.289, 39.498, 30.518,
       0.002},
      {"DIN99b", LabToDin99Variant(green, kDin99b), 1, 59.12639059, -28.53302263, 18.11595447, 1e-7},
      {"DIN99c", LabToDin99Variant(green, kDin99c), 1, 58.95318981, -27.48315361, 19.43995694, 1e-7},
      {"DIN99d", LabToDin99Variant(green, kDin99d), 1, 58.86583159, -26.97194924, 20.57222052, 1e-7},
      {"Oklab, X", XyzToOklab(Xyz{1, 0, 0}, oklab), 100, 0.450, 1.236, -0.019, 6e-4},
      {"Oklab, Y", XyzToOklab(Xyz{0, 1, 0}, oklab), 100, 0.922, -0.671, 0.263, 6e-4},
      {"Oklab, Z", XyzToOklab(Xyz{0, 0, 1}, oklab), 100, 0.153, -1.415, -0.449, 6e-4},
      {"Oklab", XyzToOklab(Xyz{0.20654008, 0.12197225, 0.05136952}, oklab), 100, 0.51634019, 0.15469500,
       0.06289579, 1e-7},
      {"ITP, white", XyzToItp(Xyz{95.047, 100.0, 108.883}, lms), 720, 0.5080784, 0.0, 0.0, 3e-5},
      {"ITP", XyzToItp(rgb, lms), 720, 0.07351364, 0.00475253 / 2.0, 0.09351596, 1e-7},
  };
  for (const Row& row : rows) {
    EXPECT_NEAR(row.got.L / row.scale, row.L, row.tolerance) << row.what;
    EXPECT_NEAR(row.got.a / row.scale, row.a, row.tolerance) << row.what;
    EXPECT_NEAR(row.got.b / row.scale, row.b, row.tolerance) << row.what;
  }
}

// Whites and greys are grey in every space under every lamp, and a colour difference is the distance of its coordinates.
TEST(UniformSpaces, GreysAreGreyAndDifferencesAreDistances) {
  for (int32_t system = vrxSystemDin99o; system <= vrxSystemItp; ++system) {
    for (const vrxIlluminant lamp : {vrxIllumD65, vrxIllumA, vrxIllumT84}) {
      CTrisValues white;
      WhitePoint(lamp, kObserver10, white);
      CColorValues grey, other;
      grey.tristimulus = {0.2 * white[0], 0.2 * white[1], 0.2 * white[2]};
      other.tristimulus = {24.0, 20.0, 9.0};
      FillCoordinates(system, lamp, kObserver10, grey);
      FillCoordinates(system, lamp, kObserver10, other);
      // The models adapt to a white only in part.
      const bool isModel = system == vrxSystemCam02Ucs || system == vrxSystemCam16Ucs;
      EXPECT_LT(grey.lab[CLabValues::kChroma], isModel ? 3.0 : 0.2) << system << ' ' << lamp;
      CDeltaValues delta;
      ComputeDifference(DefaultSettings(system), lamp, kObserver10, grey, other, 0.0, delta);
      EXPECT_NEAR(delta[6], Distance3(grey.lab, other.lab), 1e-12);
    }
  }
}

TEST(HyAB, AddsLightnessToTheChromaticDistance) {
  Lab standard{50.0, 10.0, -4.0, 0.0, 0.0}, sample{62.0, 13.0, 0.0, 0.0, 0.0};
  FillChromaHue(standard);
  FillChromaHue(sample);
  EXPECT_DOUBLE_EQ(HyabDifference(standard, sample).dE, 12.0 + 5.0);
}

// The scales' own steps on greys (ISO 105-A02 and A03), and chromatic pairs worked out apart from the library.
TEST(Grades, OfGreyScalesAndOfColours) {
  constexpr double kChange[] = {0.0, 0.8, 1.7, 2.5, 3.4, 4.8, 6.8, 9.6, 13.6},
                   kStaining[] = {0.0, 2.2, 4.3, 6.0, 8.5, 12.0, 16.9, 24.0, 34.1};
  for (int i = 0; i < 9; ++i) {
    const Lab grey{60.0, 0.0, 0.0, 0.0, 0.0};
    Lab changed = grey, stained = grey;
    changed.L -= kChange[i], stained.L -= kStaining[i];
    EXPECT_NEAR(ChangeGrade(grey, changed), 5.0 - 0.5 * i, 0.04) << i;
    EXPECT_NEAR(StainingGrade(grey, stained), 5.0 - 0.5 * i, 0.04) << i;
    EXPECT_EQ(HalfStepGrade(ChangeGrade(grey, changed)), 5.0 - 0.5 * i);
    EXPECT_EQ(HalfStepGrade(StainingGrade(grey, stained)), 5.0 - 0.5 * i);
  }
  struct Row {
    Lab standard, sample;
    double change, staining;
  };
  const Row rows[] = {
      {{45, 60, 30, 0, 0}, {47, 54, 26, 0, 0}, 2.976801611191836, 3.887573415984859},
      {{30, 8, -40, 0, 0}, {33, 7, -34, 0, 0}, 2.6183626817170604, 3.968503390619055},  // blue
      {{60, 50, 5, 0, 0}, {61, 48, -6, 0, 0}, 1.6001042615745233, 3.3305542369594154},  // across hue 0
      {{60, 0, 0, 0, 0}, {58, 3, 2, 0, 0}, 2.7232361760914126, 4.383396423450625},      // from grey
      {{40, -30, 20, 0, 0}, {60, -12, 9, 0, 0}, 1.0, 1.711156364490658},                // the worst grade
  };
  for (Row row : rows) {
    FillChromaHue(row.standard);
    FillChromaHue(row.sample);
    EXPECT_NEAR(ChangeGrade(row.standard, row.sample), row.change, 1e-9) << row.standard.L;
    EXPECT_NEAR(StainingGrade(row.standard, row.sample), row.staining, 1e-9) << row.standard.L;
  }
  EXPECT_EQ(HalfStepGrade(4.25), 4.5);
  EXPECT_EQ(HalfStepGrade(4.2499), 4.0);
}

}  // namespace
}  // namespace vrx
