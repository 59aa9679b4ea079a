#include <cmath>
#include <gtest/gtest.h>

#include <vrxmath/colorant/film.h>

namespace vrx {
namespace {

// Kubelka's hyperbolic solution as textbooks print it.
double Textbook(double KX, double SX, double backing) {
  const double a = 1.0 + KX / SX, b = std::sqrt(a * a - 1.0);
  const double coth = 1.0 / std::tanh(b * SX);
  return (1.0 - backing * (a - b * coth)) / (a - backing + b * coth);
}

TEST(Film, HyperbolicSolutionAndItsLimits) {
  for (const double KX : {0.003, 0.1, 0.6, 4.0}) {
    for (const double SX : {0.02, 0.4, 3.0}) {
      for (const double backing : {0.0, 0.3, 0.95}) {
        EXPECT_NEAR(FilmReflectance(KX, SX, backing), Textbook(KX, SX, backing), 1e-13) << KX << " " << SX;
      }
    }
  }
  const double rows[][4] = {
      {0.0, 0.0, 0.37, 0.37},                 // no film
      {0.8, 0.0, 0.5, 0.5 * std::exp(-1.6)},  // light goes through twice (Bouguer)
      {0.0, 3.0, 0.0, 0.75},                  // SX / (SX + 1)
      {500.0, 2000.0, 0.9, KubelkaMunkReflectance(0.25)},
  };
  for (const auto& [KX, SX, backing, R] : rows) EXPECT_NEAR(FilmReflectance(KX, SX, backing), R, 1e-15);
}

TEST(Film, ConstantsComeBackFromTwoReadings) {
  constexpr double k1 = 0.04, k2 = 0.6;
  const double rows[][2] = {{0.3, 1.2}, {0.0, 2.0}, {1.0, 0.0}, {1e-4, 5.0}, {0.05, 0.04}};
  for (const auto mode : {SaundersonMode::kIncluded, SaundersonMode::kExcluded, SaundersonMode::kNone}) {
    CReflData black, white, overBlack, overWhite;
    const auto measured = [&](double internal) {
      return 100.0 * SaundersonToMeasured(internal, k1, k2, mode);
    };
    black.Fill(measured(0.01)), white.Fill(measured(0.8));
    overBlack.Fill(measured(0.3)), overWhite.Fill(measured(0.3001));
    for (int32_t i = 0; i < 5; ++i) {
      overBlack[i] = measured(FilmReflectance(rows[i][0], rows[i][1], 0.01));
      overWhite[i] = measured(FilmReflectance(rows[i][0], rows[i][1], 0.8));
    }
    const CFilmConstants film = FilmConstants(overBlack, overWhite, black, white, k1, k2, mode);
    for (int32_t i = 0; i < 5; ++i) {
      EXPECT_NEAR(film.absorption[i], rows[i][0], 1e-12) << i;
      EXPECT_NEAR(film.scattering[i], rows[i][1], 1e-12) << i;
      EXPECT_FALSE(film.isOpaque[static_cast<std::size_t>(i)]);
    }
    EXPECT_NEAR(film.ratio[0], 0.25, 1e-12);
    EXPECT_NEAR(film.ratio[2], 4999.00005, 1e-9) << "nothing scatters";
    EXPECT_TRUE(film.isOpaque[5]);
    EXPECT_TRUE(IsUnset(film.scattering[5]));
    EXPECT_NEAR(film.ratio[5], 0.7 * 0.7 / 0.6, 1e-3);
  }
}

}  // namespace
}  // namespace vrx
