#include <vrxmath/colorimetry/color_differences.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

double Square(double x) {
  return x * x;
}

double CosDegrees(double degrees) {
  return Cos(degrees * kRadiansPerDegree);
}
double SinDegrees(double degrees) {
  return Sin(degrees * kRadiansPerDegree);
}

// Elements 3 to 6 of a weighted system: the three weighted differences and their root sum of squares.
void StoreWeighted(double dL, double dC, double dH, CDeltaValues& delta) {
  delta[3] = dL;
  delta[4] = dC;
  delta[5] = dH;
  delta[6] = std::sqrt(Square(dL) + Square(dC) + Square(dH));
}

// The hue difference that is left when lightness and chroma are taken out of a total difference, with its
// sign: negative when the sample (a2, b2) lies clockwise from the standard (a1, b1).
double SignedHueDifference(double dE, double dL, double dC, double a1, double b1, double a2, double b2) {
  const double q = dE * dE - dL * dL - dC * dC;
  const double dH = q > 0.0 ? std::sqrt(q) : 0.0;
  return a2 * b1 - a1 * b2 > 0.0 ? -dH : dH;
}

}  // namespace

namespace {

// Over records, whose every access is checked, or over plain arrays of the full length.
template <class LAB, class DELTA>
void FillDeltaEab(const LAB& standard, const LAB& sample, DELTA& delta) {
  const double dL = sample[0] - standard[0];
  const double da = sample[1] - standard[1];
  const double db = sample[2] - standard[2];
  const double dC = sample[3] - standard[3];
  const double dE = std::sqrt(dL * dL + da * da + db * db);
  const double dH = SignedHueDifference(dE, dL, dC, standard[1], standard[2], sample[1], sample[2]);
  delta[0] = dL;
  delta[1] = da;
  delta[2] = db;
  delta[3] = dL;
  delta[4] = dC;
  delta[5] = dH;
  delta[6] = dE;
}

}  // namespace

void DeltaEab(const CLabValues& standard, const CLabValues& sample, CDeltaValues& delta) {
  if (standard.GetSize() < 4 || sample.GetSize() < 4 || delta.GetSize() < 7) {
    return FillDeltaEab(standard, sample, delta);
  }
  double* elements = delta.GetData();
  FillDeltaEab(standard.GetData(), sample.GetData(), elements);
}

DifferenceWeights CmcWeights(const CLabValues& standard) {
  const double L = standard[0], C = standard[3], h = HueDegreesOf(standard);
  const double C4 = Square(Square(C));
  const double F = std::sqrt(C4 / (C4 + 1900.0));
  const double T = h >= 164.0 && h <= 345.0 ? 0.56 + std::fabs(0.2 * CosDegrees(h + 168.0))
                                            : 0.36 + std::fabs(0.4 * CosDegrees(h + 35.0));
  DifferenceWeights w;
  w.SL = L < 16.0 ? 0.511 : 0.040975 * L / (1.0 + 0.01765 * L);
  w.SC = 0.0638 * C / (1.0 + 0.0131 * C) + 0.638;
  w.SH = w.SC * (F * T + 1.0 - F);
  return w;
}

void DeltaCmc(const CLabValues& standard, double l, double c, CDeltaValues& delta) {
  const DifferenceWeights w = CmcWeights(standard);
  StoreWeighted(delta[0] / (l * w.SL), delta[4] / (c * w.SC), delta[5] / w.SH, delta);
}

DifferenceWeights Cie94Weights(const CLabValues& standard) {
  const double C = standard[3];
  return {1.0, 1.0 + 0.045 * C, 1.0 + 0.015 * C};
}

void DeltaCie94(const CLabValues& standard, double kL, double kC, double kH, CDeltaValues& delta) {
  const DifferenceWeights w = Cie94Weights(standard);
  StoreWeighted(delta[0] / (kL * w.SL), delta[4] / (kC * w.SC), delta[5] / (kH * w.SH), delta);
}

void DeltaFmc2(const CTrisValues& standard, const CTrisValues& sample, CDeltaValues& delta) {
  // Cone-like responses P, Q, S of a stimulus, and of a difference of stimuli.
  struct Responses {
    double P, Q, S;
  };
  const auto responses = [](double X, double Y, double Z) {
    return Responses{0.724 * X + 0.382 * Y - 0.098 * Z, -0.48 * X + 1.37 * Y + 0.1276 * Z, 0.686 * Z};
  };
  const double Y = standard[1];
  const auto [P, Q, S] = responses(standard[0], Y, standard[2]);
  const auto [dP, dQ, dS] = responses(sample[0] - standard[0], sample[1] - Y, sample[2] - standard[2]);
  const double P2 = P * P, Q2 = Q * Q, PQ2 = P2 + Q2;

  // The semi-axes of MacAdam's ellipses, and the two factors that fit them to the luminance.
  const double a = std::sqrt(1.73e-5 * PQ2 / (1.0 + 2.73 * P2 * Q2 / (P2 * P2 + Q2 * Q2)));
  const double b = std::sqrt(0.0003098 * (S * S + 0.2015 * Y * Y));
  const double Y2 = Y * Y, Y3 = Y2 * Y, Y4 = Y2 * Y2;
  const double K1 = 0.55669 + 0.049434 * Y - 0.00082575 * Y2 + 7.9172e-6 * Y3 - 3.0087e-8 * Y4;
  const double K2 = 0.17548 + 0.027556 * Y - 0.00057262 * Y2 + 6.3893e-6 * Y3 - 2.6731e-8 * Y4;

  const double along = P * dP + Q * dQ;
  const double dL = 0.279 * K2 * along / (a * std::sqrt(PQ2));
  const double rg = K1 * (Q * dP - P * dQ) / (a * std::sqrt(PQ2));
  const double yb = K1 * S * along / (PQ2 * b) - K1 * dS / b;
  const double dC = std::sqrt(rg * rg + yb * yb);
  delta[0] = dL;
  delta[1] = rg;
  delta[2] = yb;
  delta[3] = kUnset;
  delta[4] = dC;
  delta[5] = kUnset;
  delta[6] = std::sqrt(dL * dL + dC * dC);
}

void DeltaGePqs2(const CTrisValues& standard, const CTrisValues& sample, CDeltaValues& delta) {
  double x1, y1, x2, y2;
  Chromaticity(standard, x1, y1);
  Chromaticity(sample, x2, y2);
  DeltaFmc2(standard, sample, delta);
  const double chromaticityPart = delta[4];
  delta.Fill(kUnset);
  delta[0] = 100.0 * (sample[1] - standard[1]) / standard[1];
  delta[1] = 10000.0 * (x2 - x1);
  delta[2] = 10000.0 * (y2 - y1);
  delta[6] = chromaticityPart;
}

void DeltaAudi(const CLabValues& standard, double angle, CDeltaValues& delta) {
  const double L = standard[0], C = standard[3], h = HueDegreesOf(standard);
  const double f = NearlyEqual(angle, 0.0) ? 1.0 : angle;
  const double SL = 0.11 * std::sqrt(L) + 22.5 / f;
  double SC = 0.5, SH = 0.5;
  bool rectangular = h < 10.0 || (L > 27.0 && h < 18.0);
  if (!rectangular) {
    SC = 0.34 * std::sqrt(C) - 0.25 * std::sqrt(L) + 30.0 / f;
    SH = 0.1 * std::sqrt(C) + 0.5 - 0.14 * std::sqrt(L) + 15.0 / f;
    rectangular = SC == 0.5;  // an exact test, on purpose
  }
  const double first = rectangular ? delta[1] : delta[4];
  const double second = rectangular ? delta[2] : delta[5];
  delta[6] = std::sqrt(Square(first / SC) + Square(delta[0] / SL) + Square(second / SH));
}

void DeltaDin6175(const CLabValues& standard, double gL, double gC, double gH, double angle,
                  CDeltaValues& delta) {
  const double L = standard[0], C = standard[3], h = HueDegreesOf(standard);
  const double f = NearlyEqual(angle, 0.0) ? 1.0 : angle;
  constexpr double kSmallest = 0.7;
  double SL = 0.15 * std::sqrt(L) + 31.5 / f;
  double SC = kSmallest, SH = kSmallest;
  const bool rectangular = C < 10.0 || (C < 18.0 && h >= 27.0);
  if (!rectangular) {
    SC = std::max(0.48 * std::sqrt(C) - 0.35 * std::sqrt(L) + 42.0 / f, kSmallest);
    SH = 0.14 * std::sqrt(C) + 0.7 - 0.2 * std::sqrt(L) + 21.0 / f;
    SL = std::max(SL, kSmallest);
  }
  const double first = rectangular ? delta[1] : delta[4];
  const double second = rectangular ? delta[2] : delta[5];
  delta[6] = std::sqrt(Square(first / (gC * SC)) + Square(delta[0] / (gL * SL)) + Square(second / (gH * SH)));
}

namespace {

struct Din99Color {
  double L, a, b, C;
};

Din99Color ToDin99(const CLabValues& lab, double kCH, double kE) {
  const double cos16 = CosDegrees(16.0), sin16 = SinDegrees(16.0);
  const double e = lab[1] * cos16 + lab[2] * sin16;
  const double f = 0.7 * (lab[2] * cos16 - lab[1] * sin16);
  const double G = std::sqrt(e * e + f * f);
  const double C = Log(1.0 + 0.045 * G) / (0.045 * kCH * kE);
  const bool grey = NearlyEqual(G, 0.0);
  return {105.51 * Log(1.0 + 0.0158 * lab[0]) / kE, grey ? 0.0 : C * e / G, grey ? 0.0 : C * f / G, C};
}

}  // namespace

void DeltaDin99(const CLabValues& standard, const CLabValues& sample, double kCH, double kE,
                CDeltaValues& delta) {
  const Din99Color s = ToDin99(standard, kCH, kE);
  const Din99Color t = ToDin99(sample, kCH, kE);
  const double dL = t.L - s.L, da = t.a - s.a, db = t.b - s.b, dC = t.C - s.C;
  const double dE = std::sqrt(dL * dL + da * da + db * db);
  delta[0] = dL;
  delta[1] = da;
  delta[2] = db;
  delta[3] = dL;
  delta[4] = dC;
  delta[5] = SignedHueDifference(dE, dL, dC, s.a, s.b, t.a, t.b);
  delta[6] = dE;
}

void FillCoordinates(int32_t system, vrxIlluminant illuminant, int32_t observer, CColorValues& color) {
  if (IsUnset(color)) return color.lab.Fill(kUnset);
  switch (system) {
    case vrxSystemHunter:
      return XyzToHunter(illuminant, observer, color.tristimulus, color.lab);
    case vrxSystemLuv:
      return XyzToLuv(illuminant, observer, color.tristimulus, color.lab);
    default:
      return XyzToLab(illuminant, observer, color.tristimulus, color.lab);
  }
}

namespace {

void DeltaHunter(const CLabValues& standard, const CLabValues& sample, CDeltaValues& delta) {
  const double dL = sample[0] - standard[0];
  const double da = sample[1] - standard[1];
  const double db = sample[2] - standard[2];
  const double dC = std::sqrt(da * da + db * db);
  delta.Fill(kUnset);
  delta[0] = dL;
  delta[1] = da;
  delta[2] = db;
  delta[6] = std::sqrt(dL * dL + dC * dC);
}

// Expects the record that DeltaEab filled; its total difference stays.
void DeltaXyz(const CTrisValues& standard, const CTrisValues& sample, CDeltaValues& delta) {
  constexpr double kLargest = 999.99;
  double x1, y1, x2, y2;
  Chromaticity(standard, x1, y1);
  Chromaticity(sample, x2, y2);
  for (int32_t k = 0; k < 3; ++k) delta[k] = 10.0 * (sample[k] - standard[k]);
  delta[3] = kUnset;
  delta[4] = std::clamp(10000.0 * (x2 - x1), -kLargest, kLargest);
  delta[5] = std::clamp(10000.0 * (y2 - y1), -kLargest, kLargest);
}

}  // namespace

void ComputeDifference(const CDifferenceSettings& settings, vrxIlluminant, int32_t,
                       const CColorValues& standard, const CColorValues& sample, double angle,
                       CDeltaValues& delta) {
  if (IsUnset(standard) || IsUnset(sample)) return delta.Fill(kUnset);
  const auto& p = settings.parameters;
  switch (settings.system) {
    case kSystemChromaticity:
      return Chromaticity(sample.tristimulus, delta[0], delta[1]);
    case vrxSystemFmc2:
      return DeltaFmc2(standard.tristimulus, sample.tristimulus, delta);
    case vrxSystemGePqs2:
      return DeltaGePqs2(standard.tristimulus, sample.tristimulus, delta);
    case vrxSystemHunter:
      return DeltaHunter(standard.lab, sample.lab, delta);
    default:
      break;
  }
  DeltaEab(standard.lab, sample.lab, delta);
  switch (settings.system) {
    case vrxSystemCmc:
      return DeltaCmc(standard.lab, p[0], p[1], delta);
    case vrxSystemCie94:
      return DeltaCie94(standard.lab, p[0], p[1], p[2], delta);
    case vrxSystemCie2000:
      return DeltaCie2000(standard.lab, sample.lab, p[0], p[1], p[2], delta);
    case vrxSystemXyz:
      return DeltaXyz(standard.tristimulus, sample.tristimulus, delta);
    case vrxSystemAudi:
      return DeltaAudi(standard.lab, angle, delta);
    case vrxSystemDin6175:
      return DeltaDin6175(standard.lab, p[0], p[1], p[2], angle, delta);
    default:
      return;
  }
}

}  // namespace vrx
