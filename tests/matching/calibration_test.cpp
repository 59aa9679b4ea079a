#include <vrxmath/matching/calibration.h>

#include <cmath>
#include <gtest/gtest.h>
#include <initializer_list>

#include <vrxmath/colorant/film.h>

namespace vrx {
namespace {

constexpr double k1 = 0.04, k2 = 0.6;

// Made-up paints: a white, a blue and a red, at sample w.
double TrueK(int32_t paint, int32_t w) {
  return paint == 0   ? 0.01 + 0.002 * w
         : paint == 1 ? 3.0 * std::exp(-0.01 * (w - 25.0) * (w - 25.0))
                      : 8.0 / (1.0 + w);
}
double TrueS(int32_t paint, int32_t w) {
  return paint == 0 ? 1.0 : paint == 1 ? 0.05 + 0.003 * w : 0.4;
}

CDrawdown Drawdown(std::initializer_list<double> shares, double thickness, SaundersonMode mode) {
  CDrawdown drawdown;
  double total = 0.0;
  for (const double share : shares) drawdown.shares.Add(share), total += share;
  drawdown.isFilm = thickness > 0.0;
  drawdown.black.Fill(5.0), drawdown.white.Fill(85.0);
  for (int32_t w = 0; w < kWavelengths; ++w) {
    double K = 0.0, S = 0.0;
    for (int32_t paint = 0; paint < drawdown.shares.GetSize(); ++paint) {
      K += drawdown.shares[paint] / total * TrueK(paint, w);
      S += drawdown.shares[paint] / total * TrueS(paint, w);
    }
    const auto measured = [&](double internal) {
      return 100.0 * SaundersonToMeasured(internal, k1, k2, mode);
    };
    const auto film = [&](double backing) {
      const double below = SaundersonToInternal(0.01 * backing, k1, k2, mode);
      return measured(FilmReflectance(K * thickness, S * thickness, below));
    };
    drawdown.opaque[w] = measured(KubelkaMunkReflectance(K / S));
    drawdown.overBlack[w] = film(5.0);
    drawdown.overWhite[w] = film(85.0);
  }
  return drawdown;
}

CDrawdownArray Ladder(SaundersonMode mode) {
  CDrawdownArray ladder;
  for (const double share : {5.0, 20.0, 60.0, 100.0}) {
    ladder.Add(Drawdown({100.0 - share, share, 0.0}, 0.0, mode));
    ladder.Add(Drawdown({100.0 - share, 0.0, share}, share == 20.0 ? 0.9 : 0.0, mode));
  }
  return ladder;
}

CStringArray1 Names() {
  CStringArray1 names;
  for (const WideChar* name : {u"white", u"blue", u"red"}) names.Add(name);
  return names;
}

TEST(Calibration, LaddersGiveTheirConstantsBack) {
  for (const auto mode : {SaundersonMode::kIncluded, SaundersonMode::kExcluded, SaundersonMode::kNone}) {
    CColorantSystemData system;
    CDrawdownFitArray fits;
    CCalibrationSettings settings;
    settings.mode = mode;
    const CDrawdownArray ladder = Ladder(mode);
    ASSERT_EQ(CalibrateColorants(Names(), ladder, settings, system, fits).fault, CalibrationFault::kNone);
    for (int32_t paint = 0; paint < 3; ++paint) {
      const CColorantValues& curves = system.colorants[paint].GetLevel(0).values[0];
      for (int32_t w = 0; w < kWavelengths; ++w) {
        ASSERT_NEAR(curves.absorption[w], TrueK(paint, w), 1e-9) << paint << " " << w;
        ASSERT_NEAR(curves.scattering[w], TrueS(paint, w), 1e-9) << paint << " " << w;
      }
    }
    EXPECT_EQ(system.colorants[0].GetKind(), kKindCalibrationWhite);
    EXPECT_NEAR(fits[3].thickness, 0.9, 1e-5);
    EXPECT_NEAR(fits[3].predictedContrast, fits[3].measuredContrast, 1e-6);
    for (const CDrawdownFit& fit : fits) EXPECT_NEAR(fit.leaveOneOut, 0.0, 1e-4);
  }
}

TEST(Calibration, LeavingOneOutIsACalibrationWithoutIt) {
  CColorantSystemData system, without;
  CDrawdownFitArray fits, rest;
  CDrawdownArray ladder = Ladder(SaundersonMode::kIncluded);
  for (double& percent : ladder[2].opaque) percent *= 1.1;
  ASSERT_EQ(CalibrateColorants(Names(), ladder, {}, system, fits).fault, CalibrationFault::kNone);
  CDrawdownArray good = ladder;
  good.RemoveAt(2);
  ASSERT_EQ(CalibrateColorants(Names(), good, {}, without, rest).fault, CalibrationFault::kNone);
  EXPECT_NEAR(fits[2].leaveOneOut, FitDrawdown(without, ladder[2], {}).deltaE, 1e-9);
  EXPECT_GT(fits[2].leaveOneOut, fits[2].deltaE);
  EXPECT_TRUE(IsUnset(FitDrawdown(CColorantSystemData(), ladder[2], {}).deltaE));
}

TEST(Calibration, TellsWhatCannotBeUsed) {
  constexpr auto mode = SaundersonMode::kIncluded;
  struct Row {
    const char* label;
    int32_t white;
    CDrawdown extra;
    int32_t removed;  // drawdowns of the ladder's end
    CalibrationOutcome outcome;
  };
  CDrawdown hole = Drawdown({1, 1, 0}, 0.0, mode), film = Drawdown({1, 1, 0}, 1.0, mode);
  hole.opaque[9] = NAN;
  film.white = CReflData();
  const CDrawdown good = Drawdown({1, 1, 0}, 0.0, mode);
  const Row rows[] = {
      {"no white", 3, good, 0, {CalibrationFault::kNoWhite}},
      {"a negative share", 0, Drawdown({2, -1, 0}, 0.0, mode), 0, {CalibrationFault::kShares, 8}},
      {"nothing in it", 0, Drawdown({0, 0, 0}, 0.0, mode), 0, {CalibrationFault::kShares, 8}},
      {"a share too few", 0, Drawdown({1, 1}, 0.0, mode), 0, {CalibrationFault::kShares, 8}},
      {"a hole", 0, hole, 0, {CalibrationFault::kNotMeasured, 8}},
      {"a film without its card", 0, film, 0, {CalibrationFault::kNotMeasured, 8}},
      {"red at one share", 0, good, 6, {CalibrationFault::kOneShareOnly, -1, 2}},
      {"red in none", 0, good, 7, {CalibrationFault::kNeverUsed, -1, 2}},
  };
  for (const Row& row : rows) {
    CColorantSystemData system;
    CDrawdownFitArray fits;
    CDrawdownArray ladder = Ladder(mode);
    ladder.SetSize(ladder.GetSize() - row.removed);
    ladder.Add(row.extra);
    CCalibrationSettings settings;
    settings.white = row.white;
    const CalibrationOutcome outcome = CalibrateColorants(Names(), ladder, settings, system, fits);
    EXPECT_EQ(outcome.fault, row.outcome.fault) << row.label;
    EXPECT_EQ(outcome.drawdown, row.outcome.drawdown) << row.label;
    EXPECT_EQ(outcome.component, row.outcome.component) << row.label;
    EXPECT_TRUE(system.colorants.IsEmpty() && fits.IsEmpty()) << row.label;
  }
}

}  // namespace
}  // namespace vrx
