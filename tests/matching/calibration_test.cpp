#include <vrxmath/matching/calibration.h>

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <utility>

#include <vrxmath/colorant/film.h>
#include <vrxmath/matching/exchanged_drawdowns.h>

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
  EXPECT_NEAR(fits[2].leaveOneOut, FitDrawdown(without, ladder[2], {}).deltaE, 1e-4);
  EXPECT_GT(fits[2].leaveOneOut, fits[2].deltaE);
  EXPECT_TRUE(IsUnset(FitDrawdown(CColorantSystemData(), ladder[2], {}).deltaE));
}

// A little noise that is the same everywhere, in parts of the reading.
CDrawdownArray NoisyLadder(double size) {
  CDrawdownArray ladder = Ladder(SaundersonMode::kIncluded);
  uint32_t state = 1;
  for (CDrawdown& drawdown : ladder) {
    for (CReflData* curve : {&drawdown.opaque, &drawdown.overBlack, &drawdown.overWhite}) {
      for (double& percent : *curve) {
        state = 1664525u * state + 1013904223u;
        percent *= 1.0 + size * (state / 2147483648.0 - 1.0);
      }
    }
  }
  return ladder;
}

// With noise, a paint that hardly scatters used to pull everything along as the white.
TEST(Calibration, TheChoiceOfTheWhiteChangesNoPrediction) {
  const CDrawdownArray ladder = NoisyLadder(0.01), exact = Ladder(SaundersonMode::kIncluded);
  CCalibrationSettings settings;
  CColorantSystemData first, system;
  CDrawdownFitArray fits, firstFits;
  ASSERT_EQ(CalibrateColorants(Names(), ladder, settings, first, firstFits).fault, CalibrationFault::kNone);
  for (int32_t i = 0; i < exact.GetSize(); ++i) {
    if (exact[i].isFilm) continue;
    EXPECT_LT(FitDrawdown(first, exact[i], settings).deltaE, 0.5) << i;
  }
  for (settings.white = 1; settings.white < 3; ++settings.white) {
    ASSERT_EQ(CalibrateColorants(Names(), ladder, settings, system, fits).fault, CalibrationFault::kNone);
    EXPECT_EQ(system.colorants[settings.white].GetLevel(0).values[0].scattering[20], 1.0);
    for (int32_t i = 0; i < ladder.GetSize(); ++i) {
      if (ladder[i].isFilm) continue;
      EXPECT_NEAR(fits[i].deltaE, firstFits[i].deltaE, 1e-6) << settings.white << " " << i;
      EXPECT_NEAR(fits[i].leaveOneOut, firstFits[i].leaveOneOut, 1e-6) << settings.white << " " << i;
    }
  }
}

// A resin that neither absorbs nor scatters to speak of has a colour all the same, and a figure.
TEST(Calibration, APlaqueOfResinHasAFigure) {
  CDrawdownArray ladder = Ladder(SaundersonMode::kIncluded);
  for (CDrawdown& drawdown : ladder) drawdown.shares.Add(0.0);
  for (const double resin : {50.0, 90.0}) {
    CDrawdown diluted = ladder[2];
    diluted.shares[3] = resin;
    ladder.Add(diluted);
  }
  CDrawdown plaque = Drawdown({1.0, 0.0, 0.0}, 0.0, SaundersonMode::kIncluded);
  plaque.shares = CDoubleArray1();
  for (const double share : {0.0, 0.0, 0.0, 1.0}) plaque.shares.Add(share);
  ladder.Add(plaque);
  CStringArray1 names = Names();
  names.Add(u"resin");
  CCalibrationSettings settings;
  settings.resins.Add(3);
  CColorantSystemData system;
  CDrawdownFitArray fits;
  ASSERT_EQ(CalibrateColorants(names, ladder, settings, system, fits).fault, CalibrationFault::kNone);
  ASSERT_EQ(system.resins.GetSize(), 1);
  for (const CDrawdownFit& fit : fits) {
    EXPECT_TRUE(std::isfinite(fit.deltaE));
    EXPECT_TRUE(IsUnset(fit.leaveOneOut) || std::isfinite(fit.leaveOneOut));
  }
  const CComponentCalibrationArray components = CalibratedComponents(system, ladder, fits);
  ASSERT_EQ(components.GetSize(), 4);
  EXPECT_NEAR(components[1].leastShare, 0.05, 1e-12);
  EXPECT_NEAR(components[1].mostShare, 1.0, 1e-12);
  EXPECT_EQ(components[3].componentId, 4u);
  EXPECT_EQ(components[3].drawdowns, 3);
}

// A drawdown that counts for little moves the calibration little.
TEST(Calibration, WeightsCount) {
  CDrawdownArray ladder = Ladder(SaundersonMode::kIncluded);
  CDrawdown wrong = ladder[2];
  for (double& percent : wrong.opaque) percent *= 1.2;
  ladder.Add(wrong);
  double errors[2] = {};
  for (const int heavy : {0, 1}) {
    ladder[ladder.GetSize() - 1].weight = heavy == 1 ? 100.0 : 1e-4;
    CColorantSystemData system;
    CDrawdownFitArray fits;
    ASSERT_EQ(CalibrateColorants(Names(), ladder, {}, system, fits).fault, CalibrationFault::kNone);
    errors[heavy] = fits[2].deltaE;
  }
  EXPECT_LT(errors[0], 0.01);
  EXPECT_GT(errors[1], 1.0);
}

// Two letdowns under each other's formulas are named with what they cost; a ladder in order has none, and neither has one whose drawdowns
// are all described badly.
TEST(Calibration, NamesExchangedDrawdowns) {
  CDrawdownArray ladder = Ladder(SaundersonMode::kIncluded);
  EXPECT_FALSE(FindExchangedDrawdowns(Names(), ladder, {}));
  ladder[3].id = u"red 20", ladder[4].id = u"blue 60";
  std::swap(ladder[3].shares, ladder[4].shares);
  const auto found = FindExchangedDrawdowns(Names(), ladder, {});
  ASSERT_TRUE(found);
  EXPECT_EQ(found->first, 3);
  EXPECT_EQ(found->second, 4);
  EXPECT_LT(found->exchanged, 0.1);
  EXPECT_GT(found->asTheyAre, 5.0);
  EXPECT_EQ(found->Text(ladder).find(
                "drawdowns \"red 20\" and \"blue 60\" look exchanged, or a share of one is wrong: "),
            0u);
  std::swap(ladder[3].shares, ladder[4].shares);
  for (int32_t i = 0; i < ladder.GetSize(); ++i) {
    for (int32_t w = 0; w < kWavelengths; ++w) ladder[i].opaque[w] *= i % 2 == 0 ? 0.85 : 1.1;
  }
  EXPECT_FALSE(FindExchangedDrawdowns(Names(), ladder, {}));
}

TEST(Calibration, TellsWhatCannotBeUsed) {
  constexpr auto mode = SaundersonMode::kIncluded;
  struct Row {
    const char* label;
    int32_t white;
    CDrawdown extra;
    int32_t removed;  // drawdowns of the ladder's end
    CalibrationOutcome outcome;
    int32_t components = 0;  // that the fault concerns
  };
  CDrawdown hole = Drawdown({1, 1, 0}, 0.0, mode), film = Drawdown({1, 1, 0}, 1.0, mode);
  hole.opaque[9] = NAN;
  film.white = CReflData();
  CDrawdown dark = Drawdown({1, 1, 0}, 0.0, mode), swapped = Drawdown({1, 0, 0}, 0.2, mode);
  dark.opaque[9] = 2.0;
  CDrawdown cards = swapped, weightless = dark;
  std::swap(swapped.overBlack, swapped.overWhite);
  std::swap(cards.black, cards.white);
  weightless.weight = 0.0;
  CDrawdown twice = Drawdown({1, 1, 0}, 0.2, mode);
  twice.overBlack = twice.overWhite;
  const CDrawdown good = Drawdown({1, 1, 0}, 0.0, mode);
  const Row rows[] = {
      {"no white", 3, good, 0, {CalibrationFault::kNoWhite}},
      {"a negative share", 0, Drawdown({2, -1, 0}, 0.0, mode), 0, {CalibrationFault::kShares, 8}},
      {"nothing in it", 0, Drawdown({0, 0, 0}, 0.0, mode), 0, {CalibrationFault::kShares, 8}},
      {"a share too few", 0, Drawdown({1, 1}, 0.0, mode), 0, {CalibrationFault::kShares, 8}},
      {"a hole", 0, hole, 0, {CalibrationFault::kNotMeasured, 8}},
      {"a film without its card", 0, film, 0, {CalibrationFault::kNotMeasured, 8}},
      {"no weight", 0, weightless, 0, {CalibrationFault::kWeight, 8}},
      {"darker than the surface", 0, dark, 0, {CalibrationFault::kBelowSurface, 8}},
      {"over white before over black", 0, swapped, 0, {CalibrationFault::kFilmSwapped, 8}},
      {"the white card before the black one", 0, cards, 0, {CalibrationFault::kCardsSwapped, 8}},
      {"over white twice", 0, twice, 0, {CalibrationFault::kSameReadings, 8}},
      {"red at one share", 0, good, 6, {CalibrationFault::kOneShareOnly, -1, 2}, 1},
      {"red in none", 0, good, 7, {CalibrationFault::kNeverUsed, -1, 2}, 1},
      {"blue and red at one share",
       0,
       Drawdown({6, 1, 3}, 0.0, mode),
       8,
       {CalibrationFault::kOneShareOnly, -1, 1},
       2},
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
    EXPECT_EQ(outcome.components.GetSize(), row.components) << row.label;
    EXPECT_TRUE(system.colorants.IsEmpty() && fits.IsEmpty()) << row.label;
  }
}

}  // namespace
}  // namespace vrx
