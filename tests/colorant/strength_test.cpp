#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include <vrxmath/colorant/optical_transforms.h>
#include <vrxmath/colorant/strength.h>

#include "tests/testing/messages.h"

namespace vrx {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double k1 = 0.04, k2 = 0.6;

TEST(OpticalTransforms, KnownValues) {
  struct Row {
    const char* label;
    double got, expected;
  };
  const Row rows[] = {
      {"K/S 100", KubelkaMunkKs(100.0), 0.0},
      {"K/S 50", KubelkaMunkKs(50.0), 0.25},
      {"K/S 10", KubelkaMunkKs(10.0), 4.05},
      {"K/S 0.01 takes the formula", KubelkaMunkKs(0.01), 4999.00005},
      {"K/S below", KubelkaMunkKs(0.005), 9999.0},
      {"K/S of NaN", KubelkaMunkKs(kNan), 9999.0},
      {"A 10", Absorbance(10.0), 1.0},
      {"A 0.01 takes the formula", Absorbance(0.01), 4.0},
      {"A 0", Absorbance(0.0), 4.3},
      {"A of NaN", Absorbance(kNan), 4.3},
      {"A 100", Absorbance(100.0), 0.0},
      {"A 150", Absorbance(150.0), 0.0},
      {"R of no absorption", KubelkaMunkReflectance(0.0), 1.0},
      {"R of all absorption", KubelkaMunkReflectance(INFINITY), 0.0},
      {"the surface alone", SaundersonToInternal(0.04, k1, k2), 0.0},
      {"and back", SaundersonToMeasured(0.0, k1, k2), 0.04},
      {"the perfect white", SaundersonToInternal(1.0, k1, k2), 1.0},
      {"a denominator below the least", SaundersonToInternal(0.5, 0.4, 1.2), 0.1 / 1e-5},
      {"without the specular component", SaundersonToMeasured(0.5, k1, k2, SaundersonMode::kExcluded),
       0.192 / 0.7},
      {"uncorrected", SaundersonToInternal(0.5, k1, k2, SaundersonMode::kNone), 0.5},
      {"and that of the inverse", SaundersonToMeasured(2.0, k1, k2), k1 + 2.0 * 0.4 * 0.96 / 1e-5},
  };
  for (const Row& row : rows) EXPECT_DOUBLE_EQ(row.got, row.expected) << row.label;
}

TEST(OpticalTransforms, InversesOverAGrid) {
  for (int i = 0; i <= 1000; ++i) {
    const double R = 0.0005 * i * 2.0;
    for (const double surface : {0.0, 0.04, 0.1}) {
      for (const double back : {0.0, 0.4, 0.6}) {
        for (const auto mode :
             {SaundersonMode::kIncluded, SaundersonMode::kExcluded, SaundersonMode::kNone}) {
          const double measured = SaundersonToMeasured(R, surface, back, mode);
          ASSERT_NEAR(SaundersonToInternal(measured, surface, back, mode), R, 1e-14) << R << " " << surface;
        }
      }
    }
    if (R >= 0.0001) {
      ASSERT_NEAR(KubelkaMunkReflectance(KubelkaMunkKs(100.0 * R)), R, 1e-8 * std::sqrt(R)) << R;
    }
  }
}

TEST(OpticalTransforms, CorrectedCurve) {
  CReflData source, target;
  source.Fill(4.0);
  source[1] = kUnset, source[2] = 100.0, source[3] = kNan;
  CorrectCurve(source, target, k1, k2);
  EXPECT_EQ(target[0], 0.0001);
  EXPECT_EQ(target[1], 0.0001) << "unset is corrected like any value";
  EXPECT_DOUBLE_EQ(target[2], 1.0);
  EXPECT_EQ(target[3], 0.0001);
  EXPECT_EQ(CountAtFloor(source, 0, 39, k1, k2), 39);
  EXPECT_EQ(CountAtFloor(source, -7, 99, k1, k2, SaundersonMode::kExcluded), 2) << "unset and NaN remain";
  EXPECT_EQ(CountAtFloor(source, 2, 2, k1, k2), 0);
  EXPECT_EQ(CountAtFloor(CTrisValues(4.0, 4.1, 3.0), k1, k2), 2);
  SetCorrectedSample(target, 0, 3000.0);
  SetCorrectedSample(target, 1, 1e-5);
  EXPECT_EQ(target[0], 2000.0);
  EXPECT_EQ(target[1], 1e-5);
  test::MessageRecorder messages;
  SetCorrectedSample(target, 40, 0.5);
  EXPECT_EQ(messages.Take(), test::IndexErrors());
}

// The measured curve of an opaque film whose K/S is `amount` times a band of absorption about 500 nm.
CReflData Dyed(double amount) {
  CReflData curve;
  for (int32_t i = 0; i < kWavelengths; ++i) {
    const double distance = (i - 14) / 6.0;
    const double ks = amount * (0.05 + 2.0 / (1.0 + distance * distance));
    curve[i] = 100.0 * SaundersonToMeasured(KubelkaMunkReflectance(ks), k1, k2);
  }
  return curve;
}

double MeasuredPercent(double ks) {
  return 100.0 * SaundersonToMeasured(KubelkaMunkReflectance(ks), k1, k2);
}

TEST(Strength, DilutionSeriesReadsItsOwnAmounts) {
  const CReflData standard = Dyed(1.0);
  const CTrisValues standardValues =
      FromFilterReadings({MeasuredPercent(0.3), MeasuredPercent(0.9), MeasuredPercent(2.0)});
  for (const double amount : {0.1, 0.5, 0.95, 1.0, 1.05, 2.0, 5.0}) {
    const CReflData batch = Dyed(amount);
    const double percent = 100.0 * amount;
    EXPECT_NEAR(StrengthPercent(standard, batch, false, 4, 34, k1, k2), percent, 1e-9 * percent);
    EXPECT_NEAR(ChromaticStrength(standard, batch, 20, k1, k2), percent, 1e-9 * percent);
    const double weaker = StrengthPercent(standard, batch, true, 4, 34, k1, k2);
    EXPECT_EQ(weaker < 100.0, amount < 1.0) << "absorbance orders the series too";

    const CTrisValues values = FromFilterReadings(
        {MeasuredPercent(0.3 * amount), MeasuredPercent(0.9 * amount), MeasuredPercent(2.0 * amount)});
    EXPECT_NEAR(LuminousStrength(standardValues, values), percent, 1e-9 * percent);
    // The constants of the filter readings have four digits.
    EXPECT_NEAR(PseudoTristimulusStrength(standardValues, values, k1, k2), percent, 2e-3 * percent);
    const CTrisValues adjusted = AdjustedToStrength(standardValues, values, k1, k2);
    for (int32_t i = 0; i < 3; ++i) EXPECT_NEAR(adjusted[i], standardValues[i], 2e-3 * standardValues[i]);
  }
  EXPECT_EQ(MaximumAbsorption(standard, 0, 39, k1, k2), 14);
  EXPECT_EQ(MaximumAbsorption(standard, 20, 39, k1, k2), 20);
  EXPECT_EQ(MaximumAbsorption(standard, 3, 2, k1, k2), -1);
}

TEST(Strength, LimitsOfCurves) {
  CReflData white, black, unset;
  white.Fill(100.0);
  black.Fill(4.0);
  struct Row {
    const char* label;
    const CReflData &standard, &batch;
    bool absorbance;
    int32_t first, last;
    double percent;
  };
  const Row rows[] = {
      {"same", black, black, false, 0, 39, 100.0},
      {"empty band", white, black, false, 20, 19, 100.0},
      {"nothing absorbs in the standard", white, black, false, 0, 39, 999.99},
      {"nothing absorbs in the batch", black, white, false, 0, 39, 0.01},
      {"both white: floored sums", white, white, true, 0, 39, 100.0},
      {"unset samples", unset, unset, false, 0, 39, 100.0},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(StrengthPercent(row.standard, row.batch, row.absorbance, row.first, row.last, k1, k2),
              row.percent)
        << row.label;
  }
  test::MessageRecorder messages;
  EXPECT_EQ(StrengthPercent(black, black, false, -5, std::numeric_limits<int32_t>::max(), k1, k2), 100.0);
  EXPECT_EQ(messages.Take(), test::IndexErrors());
}

TEST(Strength, RatioPercentHasNoLowerLimit) {
  const double rows[][3] = {{1.0, 10.0, 999.99}, {1.0, 9.9999, 999.99}, {1.0, -2.0, -200.0},
                            {4.0, 1.0, 25.0},    {0.0, 1e-8, 100.0},    {kNan, 1.0, 999.99},
                            {1.0, 9.99, 999.0},  {1.0, -1e9, -1e11}};
  for (const auto& [a, b, percent] : rows) EXPECT_DOUBLE_EQ(RatioPercent(a, b), percent) << a << " " << b;
}

TEST(Strength, TristimulusForms) {
  const CTrisValues standard(40.0, 42.0, 30.0), weaker(44.0, 46.0, 35.0), unset;
  const auto internal = [](double percent) {
    return (percent / 100.0 - 0.04) / (0.96 - 0.6 + 0.6 * percent / 100.0);
  };
  const double expected = 100.0 * (internal(40.0) + internal(42.0) + internal(30.0)) /
                          (internal(44.0) + internal(46.0) + internal(35.0));
  EXPECT_NEAR(TristimulusStrength(standard, weaker, k1, k2), expected, 1e-12);
  EXPECT_LT(expected, 100.0);
  EXPECT_DOUBLE_EQ(ComponentStrength(standard, weaker, 2), 100.0 * 30.0 / 35.0);
  EXPECT_EQ(TristimulusStrength(standard, unset, k1, k2), 1e-5);
  EXPECT_EQ(ComponentStrength(unset, weaker, 0), 1e-5);
  EXPECT_EQ(LuminousStrength(standard, unset), 1e-5);
  EXPECT_EQ(PseudoTristimulusStrength(unset, weaker, k1, k2), 1e-5);
  EXPECT_TRUE(IsUnset(AdjustedToStrength(standard, unset, k1, k2)));

  // The white of illuminant C reads 100 in every filter.
  const FilterReadings white = ToFilterReadings(CTrisValues(98.06, 100.0, 118.22));
  EXPECT_NEAR(white.amber, 100.0, 0.03);
  EXPECT_EQ(white.green, 100.0);
  EXPECT_NEAR(white.blue, 100.0, 1e-12);
}

}  // namespace
}  // namespace vrx
