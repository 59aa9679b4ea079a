#include <cmath>
#include <gtest/gtest.h>
#include <initializer_list>
#include <limits>
#include <utility>

#include <vrxmath/colorant/film.h>
#include <vrxmath/formula/prediction.h>

#include "tests/matching/made_up_paints.h"
#include "tests/testing/messages.h"

namespace vrx {
namespace {

using test::Mixture;

CColorant Colorant(uint32_t id, int32_t kind, std::initializer_list<std::array<double, 3>> levels) {
  CColorant colorant;
  colorant.SetId(id);
  colorant.SetKind(kind);
  for (const auto& [concentration, K, S] : levels) {
    CColorantLevel level(1);
    level.concentration = concentration;
    level.values[0].absorption.Fill(K);
    level.values[0].scattering.Fill(S);
    colorant.AppendLevel(level);
  }
  return colorant;
}

// White 1 (K 0.01, S 1), black 2 (K 9, S 0.5), a red 3 with three levels, clear resin 4 and dye 5.
CColorantSystemData MakeSystem(int32_t model = kModelCoatings) {
  CColorantSystemData system;
  system.opticalModel = model;
  system.colorants.Add(Colorant(1, kKindCalibrationWhite, {{1.0, 0.01, 1.0}}));
  system.colorants.Add(Colorant(2, kKindColorant, {{1.0, 9.0, 0.5}}));
  system.colorants.Add(Colorant(3, kKindColorant, {{0.1, 4.0, 0.2}, {0.5, 3.0, 0.3}, {1.0, 2.0, 0.4}}));
  CResin resin;
  resin.SetId(4);
  system.resins.Add(resin);
  return system;
}

// The textbook's form, which the library's is algebraically equal to.
double MeasuredPercent(double ks) {
  const double internal = 1.0 + ks - std::sqrt(ks * ks + 2.0 * ks);
  return 100.0 * (0.04 + 0.96 * 0.4 * internal / (1.0 - 0.6 * internal));
}

TEST(Prediction, MixesAsKubelkaAndMunk) {
  struct Row {
    const char* label;
    int32_t model;
    CDbFormula formula;
    double ks;
  };
  const Row rows[] = {
      {"pure white", kModelCoatings, Mixture({{1, 7.0}}), 0.01},
      {"pure colorant at its last level", kModelPlastics, Mixture({{3, 1.0}}), 2.0 / 0.4},
      {"grey", kModelCoatings, Mixture({{1, 3.0}, {2, 1.0}}), (0.0075 + 2.25) / (0.75 + 0.125)},
      {"a clear resin cancels out", kModelTradeSales, Mixture({{1, 3.0}, {2, 1.0}, {4, 96.0}}),
       (0.0075 + 2.25) / (0.75 + 0.125)},
      {"lines of one component add up", kModelCoatings, Mixture({{1, 0.5}, {3, 0.2}, {3, 0.3}}),
       (0.005 + 1.5) / (0.5 + 0.15)},
      {"between two levels", kModelCoatings, Mixture({{1, 0.7}, {3, 0.3}}),
       (0.007 + 0.3 * 3.5) / (0.7 + 0.3 * 0.25)},
      {"below the first level", kModelCoatings, Mixture({{1, 0.96}, {3, 0.04}}),
       (0.0096 + 0.04 * 4.0) / (0.96 + 0.04 * 0.2)},
      {"one-constant: only the white scatters", kModelTextiles, Mixture({{1, 2.0}, {2, 1.0}}),
       0.01 + 0.5 * 9.0},
      {"on the calibration white", kModelContinuousDye, Mixture({{2, 0.02}}), 0.01 + 0.02 * 9.0},
      {"a clear resin is no substrate", kModelTransparents, Mixture({{2, 0.02}, {4, 5.0}}),
       0.01 + 0.02 * 9.0},
      {"no lines: the calibration white", kModelTextiles, {}, 0.01},
  };
  for (const Row& row : rows) {
    const CReflData curve = PredictReflectance(row.formula, MakeSystem(row.model));
    for (const double percent : curve) ASSERT_NEAR(percent, MeasuredPercent(row.ks), 1e-11) << row.label;
  }
}

TEST(Prediction, LineOrderDoesNotTouchTheBits) {
  const CColorantSystemData system = MakeSystem();
  const CReflData a = PredictReflectance(Mixture({{1, 0.31}, {2, 0.17}, {3, 0.52}}), system);
  const CReflData b = PredictReflectance(Mixture({{3, 0.52}, {1, 0.31}, {2, 0.17}}), system);
  for (int32_t i = 0; i < kWavelengths; ++i) EXPECT_EQ(a[i], b[i]);
}

TEST(Prediction, WhatCannotBePredictedIsUnset) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  struct Row {
    const char* label;
    int32_t model;
    CDbFormula formula;
  };
  const Row rows[] = {
      {"unknown component", kModelCoatings, Mixture({{1, 1.0}, {77, 0.1}})},
      {"negative amount", kModelCoatings, Mixture({{1, 1.0}, {2, -0.1}})},
      {"NaN", kModelCoatings, Mixture({{1, std::nan("")}})},
      {"infinity", kModelCoatings, Mixture({{1, kInfinity}})},
      {"no lines", kModelCoatings, {}},
      {"nothing in it", kModelCoatings, Mixture({{1, 0.0}})},
      {"clear resin alone", kModelCoatings, Mixture({{4, 1.0}})},
      {"filters", kModelFilter, Mixture({{1, 1.0}})},
      {"radiative transfer", kModelMetallics, Mixture({{1, 1.0}})},
      {"no such model", 99, Mixture({{1, 1.0}})},
  };
  test::MessageRecorder messages;
  for (const Row& row : rows) {
    EXPECT_TRUE(IsUnset(PredictReflectance(row.formula, MakeSystem(row.model)))) << row.label;
  }
  CColorantSystemData noWhite = MakeSystem(kModelTextiles);
  noWhite.colorants[0].SetKind(kKindColorant);
  EXPECT_TRUE(IsUnset(PredictReflectance(Mixture({{2, 0.02}}), noWhite)));
  EXPECT_TRUE(messages.Take().empty());
}

TEST(Prediction, FilmsReachFromTheBackingToTheOpaqueCurve) {
  const CColorantSystemData system = MakeSystem();
  const CDbFormula grey = Mixture({{1, 3.0}, {2, 1.0}});
  CReflData backing;
  backing.Fill(60.0);
  for (const auto mode : {SaundersonMode::kIncluded, SaundersonMode::kExcluded}) {
    EXPECT_NEAR(PredictFilm(grey, system, backing, 0.0, mode)[7], 60.0, 1e-12);
    EXPECT_NEAR(PredictFilm(grey, system, backing, 1e3, mode)[7], PredictReflectance(grey, system, mode)[7],
                1e-12);
    const double below = SaundersonToInternal(0.6, 0.04, 0.6, mode);
    const double film = FilmReflectance(2.2575 * 0.5, 0.875 * 0.5, below);  // K and S of 3 white and 1 black
    EXPECT_NEAR(PredictFilm(grey, system, backing, 0.5, mode)[7],
                100.0 * SaundersonToMeasured(film, 0.04, 0.6, mode), 1e-12);
  }
  for (const double thickness : {-1.0, HUGE_VAL, std::nan("")}) {
    EXPECT_TRUE(IsUnset(PredictFilm(grey, system, backing, thickness)));
  }
  EXPECT_TRUE(IsUnset(PredictFilm(Mixture({{77, 1.0}}), system, backing, 1.0)));
}

}  // namespace
}  // namespace vrx
