#include <vrxmath/matching/dye_ladder.h>

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <initializer_list>

#include <vrxmath/formula/prediction.h>

namespace vrx {
namespace {

// K/S of a made-up dye on cotton: proportional to its concentration, or to what the fibre takes up of it.
double RatioOf(int32_t w, double concentration, bool saturates) {
  const double taken = saturates ? 0.01 * (1.0 - std::exp(-concentration / 0.01)) : concentration;
  const double cotton = 0.02 + 0.001 * w;
  return cotton + 500.0 * taken * std::exp(-0.01 * (w - 18.0) * (w - 18.0));
}

CDrawdown Dyeing(std::initializer_list<double> shares, double concentration, bool saturates) {
  CDrawdown dyeing;
  for (const double share : shares) dyeing.shares.Add(share);
  for (int32_t w = 0; w < kWavelengths; ++w) {
    dyeing.opaque[w] = 100.0 * KubelkaMunkReflectance(RatioOf(w, concentration, saturates));
  }
  return dyeing;
}

// Cotton, a dye that builds up for ever, and one that does not.
CDrawdownArray Ladders() {
  CDrawdownArray ladders;
  ladders.Add(Dyeing({100.0, 0.0, 0.0}, 0.0, false));
  for (const double percent : {0.1, 0.5, 1.0, 2.0, 4.0}) {
    ladders.Add(Dyeing({100.0, percent, 0.0}, 0.01 * percent, false));
    ladders.Add(Dyeing({50.0, 0.0, 0.5 * percent}, 0.01 * percent, true));
  }
  return ladders;
}

struct Result {
  CalibrationOutcome outcome;
  CColorantSystemData system;
  CDrawdownFitArray fits;
  CDyeBuildUpArray buildUps;
};

Result Calibrate(const CDrawdownArray& dyeings, int32_t model = kModelTextiles, int32_t white = 0) {
  CStringArray1 names;
  for (const WideChar* name : {u"cotton", u"blue", u"red"}) names.Add(name);
  CCalibrationSettings settings;
  settings.mode = SaundersonMode::kNone;
  settings.white = white;
  Result result;
  result.system.opticalModel = model;
  result.outcome = CalibrateDyes(names, dyeings, settings, result.system, result.fits, result.buildUps);
  return result;
}

TEST(DyeLadder, LevelsGiveTheirDyeingsBackAndSaturationIsTold) {
  const CDrawdownArray ladders = Ladders();
  const Result result = Calibrate(ladders);
  ASSERT_EQ(result.outcome.fault, CalibrationFault::kNone);
  for (const CDrawdownFit& fit : result.fits) EXPECT_NEAR(fit.deltaE, 0.0, 1e-6);
  // Between levels a linear build-up is met, a bent one is not.
  EXPECT_NEAR(result.fits[5].leaveOneOut, 0.0, 1e-6);
  EXPECT_GT(result.fits[6].leaveOneOut, 0.05);
  EXPECT_TRUE(IsUnset(result.fits[1].leaveOneOut)) << "the first level has one neighbour";
  ASSERT_EQ(result.buildUps.GetSize(), 2);
  EXPECT_EQ(result.buildUps[0].levels, 5);
  EXPECT_TRUE(IsUnset(result.buildUps[0].saturatesFrom));
  EXPECT_EQ(result.buildUps[1].saturatesFrom, 0.01);
  CDbFormula formula(2);
  formula[0].componentId = 1, formula[0].amount = 1000.0;
  formula[1].componentId = 2, formula[1].amount = 30.0;  // 3 % of the fibre
  const CReflData curve = PredictReflectance(formula, result.system, SaundersonMode::kNone);
  for (int32_t w = 0; w < kWavelengths; ++w) {
    EXPECT_NEAR(curve[w], 100.0 * KubelkaMunkReflectance(RatioOf(w, 0.03, false)), 1e-9) << w;
  }
  const CComponentCalibrationArray ranges = CalibratedComponents(result.system, ladders, result.fits);
  EXPECT_NEAR(ranges[1].leastShare, 0.001, 1e-12);
  EXPECT_NEAR(ranges[2].mostShare, 0.04, 1e-12);
}

TEST(DyeLadder, TellsWhatCannotBeUsed) {
  struct Row {
    const char* label;
    CalibrationFault fault;
    int32_t drawdown;
    void (*change)(CDrawdownArray& ladders, int32_t& model, int32_t& white);
  };
  const Row rows[] = {
      {"two dyes", CalibrationFault::kShares, 1, [](auto& of, auto&, auto&) { of[1].shares[2] = 1.0; }},
      {"no substrate in it", CalibrationFault::kShares, 1,
       [](auto& of, auto&, auto&) { of[1].shares[0] = 0.0; }},
      {"more dye than fibre", CalibrationFault::kShares, 1,
       [](auto& of, auto&, auto&) { of[1].shares[1] = 101.0; }},
      {"a film", CalibrationFault::kShares, 1, [](auto& of, auto&, auto&) { of[1].isFilm = true; }},
      {"a hole", CalibrationFault::kNotMeasured, 2, [](auto& of, auto&, auto&) { of[2].opaque[7] = NAN; }},
      {"no light", CalibrationFault::kBelowSurface, 2, [](auto& of, auto&, auto&) { of[2].opaque[7] = 0.0; }},
      {"never bare", CalibrationFault::kNoWhite, -1, [](auto& of, auto&, auto&) { of.RemoveAt(0); }},
      {"no red", CalibrationFault::kNeverUsed, -1, [](auto& of, auto&, auto&) { of.SetSize(2); }},
      {"two-constant", CalibrationFault::kShares, -1,
       [](auto&, auto& model, auto&) { model = kModelCoatings; }},
      {"no such white", CalibrationFault::kNoWhite, -1, [](auto&, auto&, auto& white) { white = 3; }},
  };
  for (const Row& row : rows) {
    CDrawdownArray ladders = Ladders();
    int32_t model = kModelTextiles, white = 0;
    row.change(ladders, model, white);
    const Result result = Calibrate(ladders, model, white);
    EXPECT_EQ(result.outcome.fault, row.fault) << row.label;
    EXPECT_EQ(result.outcome.drawdown, row.drawdown) << row.label;
    EXPECT_TRUE(result.system.colorants.IsEmpty() && result.fits.IsEmpty()) << row.label;
  }
}

}  // namespace
}  // namespace vrx
