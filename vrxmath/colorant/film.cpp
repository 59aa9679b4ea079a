#include <vrxmath/colorant/film.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

constexpr double kThin = 0.5;  // optical thickness below which the continued fraction serves

// tanh(x) / x for 0 <= x <= 0.5 (Lambert's continued fraction, exact to rounding there).
double HyperbolicTangentRatio(double x) {
  const double square = x * x;
  double fraction = 15.0;
  for (double term = 13.0; term >= 1.0; term -= 2.0) fraction = term + square / fraction;
  return 1.0 / fraction;
}

// artanh(x) / x for 0 <= x < 1.
double InverseTangentRatio(double x) {
  constexpr double kSmall = 0.03;
  const double square = x * x;
  if (x > kSmall) return 0.5 * Log((1.0 + x) / (1.0 - x)) / x;
  return 1.0 + square * (1.0 / 3.0 + square * (0.2 + square * (1.0 / 7.0 + square / 9.0)));
}

double InternalOf(double percent, double k1, double k2, SaundersonMode mode) {
  return std::max(SaundersonToInternal(percent * 0.01, k1, k2, mode), kLeastInternal);
}

// A film's two readings and its backings at one wavelength, internal.
struct FilmReadings {
  double overBlack, overWhite, black, white;
};

struct FilmSample {
  double KX = kUnset;
  double SX = kUnset;
};

// With t = tanh(bSX) / b and Rg the backing, R = (Rg + (S - a Rg) t) / (1 + (a - S Rg) t), a = K + S: linear in u = S t and
// w = K t, of which the two readings give two equations. False when no film of finite thickness has these readings.
bool SolveFilm(const FilmReadings& r, FilmSample& sample) {
  const double sumB = r.overBlack + r.black, sumW = r.overWhite + r.white;
  const double lossB = (1.0 - r.overBlack) * (1.0 - r.black), lossW = (1.0 - r.overWhite) * (1.0 - r.white);
  const double gainB = r.black - r.overBlack, gainW = r.white - r.overWhite;
  const double determinant = sumW * lossB - sumB * lossW;
  const double w = std::max((gainW * lossB - gainB * lossW) / determinant, 0.0);
  const double u = std::max((sumB * gainW - sumW * gainB) / determinant, 0.0);
  const double x = std::sqrt(w * (w + 2.0 * u));  // tanh(b S X)
  if (!(x < 1.0)) return false;
  const double ratio = InverseTangentRatio(x);
  sample = {w * ratio, u * ratio};
  return true;
}

}  // namespace

double FilmReflectance(double KX, double SX, double backing) {
  const double a = KX + SX;
  const double x = std::sqrt(KX * (KX + 2.0 * SX));
  if (x < kThin) {
    const double t = HyperbolicTangentRatio(x);
    return (backing + (SX - a * backing) * t) / (1.0 + (a - SX * backing) * t);
  }
  const double opaque = SX / (a + x);
  const double through = Exp(-2.0 * x) * (backing - opaque);
  const double rest = 1.0 - opaque * backing;
  return (opaque * rest + through) / (rest + opaque * through);
}

CFilmConstants FilmConstants(const CReflData& overBlack, const CReflData& overWhite, const CReflData& black,
                             const CReflData& white, double k1, double k2, SaundersonMode mode) {
  constexpr double kOpaqueDifference = 0.01;
  const double largestRatio = KubelkaMunkKs(100.0 * kLeastInternal);
  CFilmConstants film;
  for (int32_t i = 0; i < kWavelengths; ++i) {
    const FilmReadings readings{InternalOf(overBlack[i], k1, k2, mode),
                                InternalOf(overWhite[i], k1, k2, mode), InternalOf(black[i], k1, k2, mode),
                                InternalOf(white[i], k1, k2, mode)};
    const double difference = std::fabs(overWhite[i] - overBlack[i]);
    FilmSample sample;
    const bool isOpaque =
        difference < kOpaqueDifference * std::max(overWhite[i], overBlack[i]) || !SolveFilm(readings, sample);
    film.isOpaque[static_cast<std::size_t>(i)] = isOpaque;
    film.absorption[i] = sample.KX;
    film.scattering[i] = sample.SX;
    film.ratio[i] = isOpaque ? KubelkaMunkKs(50.0 * (readings.overBlack + readings.overWhite))
                             : std::min(sample.KX / sample.SX, largestRatio);
  }
  return film;
}

}  // namespace vrx
