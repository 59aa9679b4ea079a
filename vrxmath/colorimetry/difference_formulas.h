// Colour differences as formulas over values: sample minus standard, weighted where a system weights them by the
// standard. One source for a pair of colours and for a pack of pairs; color_differences.h has the same over records.
// CIEDE2000 has a header of its own (cie2000_formulas.h).
//
// Nothing is validated: a zero weight (l, c, kL ...) gives an infinity or NaN. Chroma and hue of the colours must be
// filled (XyzToLab fills them, FillChromaHue does it for coordinates from elsewhere).

#ifndef VRXMATH_COLORIMETRY_DIFFERENCE_FORMULAS_H_
#define VRXMATH_COLORIMETRY_DIFFERENCE_FORMULAS_H_

#include <vrxmath/colorimetry/hue.h>
#include <vrxmath/colorimetry/space_formulas.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// Root of a sum of three squares.
template <class T>
VRX_LANE_INLINE T RootSumOfSquares(T x, T y, T z) {
  return Sqrt(Square(x) + Square(y) + Square(z));
}

/// The hue difference that is left when lightness and chroma are taken out of a total difference, with its sign:
/// negative when the sample lies clockwise from the standard; 0 where rounding leaves nothing.
template <class T>
VRX_LANE_INLINE T SignedHueDifference(T dE, T dL, T dC, const LabOf<T>& standard, const LabOf<T>& sample) {
  const T q = dE * dE - dL * dL - dC * dC;
  const T dH = Sqrt(Select(q > 0.0, q, T(0.0)));
  return Select(sample.a * standard.b - standard.a * sample.b > 0.0, -dH, dH);
}

/// CIE 1976 difference in L*a*b* or L*u*v*. Formula: CIE 15. The weighted lightness difference is dL.
template <class T>
VRX_LANE_INLINE DifferenceOf<T> EabDifference(const LabOf<T>& standard, const LabOf<T>& sample) {
  DifferenceOf<T> d;
  d.dL = d.weightedL = sample.L - standard.L;
  d.da = sample.a - standard.a;
  d.db = sample.b - standard.b;
  d.dC = sample.C - standard.C;
  d.dE = RootSumOfSquares(d.dL, d.da, d.db);
  d.dH = SignedHueDifference(d.dE, d.dL, d.dC, standard, sample);
  return d;
}

/// HyAB: |dL*| + sqrt(da*^2 + db*^2) as the total of a CIE 1976 difference, for large differences.
/// Formula: Abasi, Amani Tehran and Fairchild, Color Res. Appl. 45, 2020, 332-343.
template <class T>
VRX_LANE_INLINE DifferenceOf<T> HyabDifference(const LabOf<T>& standard, const LabOf<T>& sample) {
  DifferenceOf<T> d = EabDifference(standard, sample);
  d.dE = Abs(d.dL) + Sqrt(Square(d.da) + Square(d.db));
  return d;
}

/// Replaces the last four of a difference by the weighted ones of a system and their root sum of squares.
template <class T>
VRX_LANE_INLINE void StoreWeighted(T dL, T dC, T dH, DifferenceOf<T>& d) {
  d.weightedL = dL;
  d.dC = dC;
  d.dH = dH;
  d.dE = RootSumOfSquares(dL, dC, dH);
}

/// CMC(l:c) weights at the standard. Formula: BS 6923, ISO 105-J03. L* = 16 takes the formula, below it SL is 0.511; the
/// hues 164 and 345 belong to the blue branch.
template <class T>
VRX_LANE_INLINE WeightsOf<T> CmcWeights(const LabOf<T>& standard) {
  const T L = standard.L, C = standard.C, h = standard.h;
  const T C4 = Square(Square(C));
  const T F = Sqrt(C4 / (C4 + 1900.0));
  const auto blue = (h >= 164.0) & (h <= 345.0);
  const T turned = CosDegrees(h + Select(blue, T(168.0), T(35.0)));
  const T hueTerm = Select(blue, T(0.56), T(0.36)) + Abs(Select(blue, T(0.2), T(0.4)) * turned);
  const T SC = 0.0638 * C / (1.0 + 0.0131 * C) + 0.638;
  return {Select(L < 16.0, T(0.511), 0.040975 * L / (1.0 + 0.01765 * L)), SC, SC * (F * hueTerm + 1.0 - F)};
}

/// Turns a difference from EabDifference into dL/(l SL), dC/(c SC), dH/SH and their root sum of squares.
template <class T>
VRX_LANE_INLINE void WeightCmc(const LabOf<T>& standard, double l, double c, DifferenceOf<T>& d) {
  const WeightsOf<T> w = CmcWeights(standard);
  StoreWeighted(d.dL / (l * w.SL), d.dC / (c * w.SC), d.dH / w.SH, d);
}

/// CIE94 weights at the standard. Formula: CIE 116, with the standard's own chroma.
template <class T>
VRX_LANE_INLINE WeightsOf<T> Cie94Weights(const LabOf<T>& standard) {
  return {T(1.0), 1.0 + 0.045 * standard.C, 1.0 + 0.015 * standard.C};
}

/// Turns a difference from EabDifference into dL/(kL SL), dC/(kC SC), dH/(kH SH) and dE94. A quotient by SL = 1 and the usual
/// kL = 1 is not computed: divisions and roots are all that this formula waits for.
template <class T>
VRX_LANE_INLINE void WeightCie94(const LabOf<T>& standard, double kL, double kC, double kH,
                                 DifferenceOf<T>& d) {
  const WeightsOf<T> w = Cie94Weights(standard);
  StoreWeighted(kL == 1.0 ? d.dL : d.dL / kL, d.dC / (kC * w.SC), d.dH / (kH * w.SH), d);
}

/// FMC-2 difference in MacAdam units: dL, drg, dyb; dC; dE; the weighted lightness and the hue difference are unset.
/// Formula: Chickering's FMC-2 (ASTM D2244-85), at the standard.
template <class T>
VRX_LANE_INLINE DifferenceOf<T> Fmc2Difference(const XyzOf<T>& standard, const XyzOf<T>& sample) {
  // Cone-like responses P, Q, S of a stimulus, and of a difference of stimuli.
  const auto responseP = [](T X, T Y, T Z) { return 0.724 * X + 0.382 * Y - 0.098 * Z; };
  const auto responseQ = [](T X, T Y, T Z) { return -0.48 * X + 1.37 * Y + 0.1276 * Z; };
  const T X = standard.X, Y = standard.Y, Z = standard.Z;
  const T dX = sample.X - X, dY = sample.Y - Y, dZ = sample.Z - Z;
  const T P = responseP(X, Y, Z), Q = responseQ(X, Y, Z), S = 0.686 * Z;
  const T dP = responseP(dX, dY, dZ), dQ = responseQ(dX, dY, dZ), dS = 0.686 * dZ;
  const T P2 = P * P, Q2 = Q * Q, PQ2 = P2 + Q2;

  // The semi-axes of MacAdam's ellipses, and the two factors that fit them to the luminance.
  const T a = Sqrt(1.73e-5 * PQ2 / (1.0 + 2.73 * P2 * Q2 / (P2 * P2 + Q2 * Q2)));
  const T b = Sqrt(0.0003098 * (S * S + 0.2015 * Y * Y));
  const T Y2 = Y * Y, Y3 = Y2 * Y, Y4 = Y2 * Y2;
  const T K1 = 0.55669 + 0.049434 * Y - 0.00082575 * Y2 + 7.9172e-6 * Y3 - 3.0087e-8 * Y4;
  const T K2 = 0.17548 + 0.027556 * Y - 0.00057262 * Y2 + 6.3893e-6 * Y3 - 2.6731e-8 * Y4;

  const T along = P * dP + Q * dQ, root = Sqrt(PQ2);
  DifferenceOf<T> d;
  d.dL = 0.279 * K2 * along / (a * root);
  d.da = K1 * (Q * dP - P * dQ) / (a * root);
  d.db = K1 * S * along / (PQ2 * b) - K1 * dS / b;
  d.weightedL = d.dH = T(kUnset);
  d.dC = Sqrt(d.da * d.da + d.db * d.db);
  d.dE = Sqrt(d.dL * d.dL + d.dC * d.dC);
  return d;
}

/// GE-PQS II: 100 dY / Y of the standard, 10000 dx and 10000 dy; the total is the chromaticity difference in MacAdam
/// units by the FMC-2 chromaticity term at the standard; the others are unset. No formula of this system was
/// published: the definition is ours, from its column headings.
template <class T>
VRX_LANE_INLINE DifferenceOf<T> GePqs2Difference(const XyzOf<T>& standard, const XyzOf<T>& sample) {
  const XyOf<T> s = Chromaticity(standard), t = Chromaticity(sample);
  DifferenceOf<T> d;
  d.dL = 100.0 * (sample.Y - standard.Y) / standard.Y;
  d.da = 10000.0 * (t.x - s.x);
  d.db = 10000.0 * (t.y - s.y);
  d.weightedL = d.dC = d.dH = T(kUnset);
  d.dE = Fmc2Difference(standard, sample).dC;
  return d;
}

/// The measuring angle in the weights for effect paints: 0 counts as 1 degree.
VRX_LANE_INLINE double EffectAngle(double degrees) {
  return Abs(degrees) < kDoubleEpsilon ? 1.0 : degrees;
}

/// Audi L*a*b*: replaces the total of a difference from EabDifference. `angle`: aspecular measuring angle in degrees; 0
/// counts as 1.
/// Formula: the Audi 2000 weights for effect paints, which widen towards the gloss. Reds below 10 degrees of
///          hue (18 above L* = 27) are judged by da* and db* instead of dC* and dH*.
template <class T>
VRX_LANE_INLINE void WeightAudi(const LabOf<T>& standard, double angle, DifferenceOf<T>& d) {
  const T rootL = Sqrt(standard.L), rootC = Sqrt(standard.C);
  const double f = EffectAngle(angle);
  const auto red = (standard.h < 10.0) | ((standard.L > 27.0) & (standard.h < 18.0));
  const T SL = 0.11 * rootL + 22.5 / f;
  const T SC = Select(red, T(0.5), 0.34 * rootC - 0.25 * rootL + 30.0 / f);
  const T SH = Select(red, T(0.5), 0.1 * rootC + 0.5 - 0.14 * rootL + 15.0 / f);
  const auto rectangular = SC == 0.5;  // an exact test, on purpose; every such red passes it
  const T first = Select(rectangular, d.da, d.dC), second = Select(rectangular, d.db, d.dH);
  d.dE = RootSumOfSquares(first / SC, d.dL / SL, second / SH);
}

/// DIN 6175-2: replaces the total of a difference from EabDifference. `angle` as for WeightAudi; gL, gC, gH divide the
/// weights in.
template <class T>
VRX_LANE_INLINE void WeightDin6175(const LabOf<T>& standard, double gL, double gC, double gH, double angle,
                                   DifferenceOf<T>& d) {
  constexpr double kSmallest = 0.7;
  const T rootL = Sqrt(standard.L), rootC = Sqrt(standard.C);
  const double f = EffectAngle(angle);
  const auto rectangular = (standard.C < 10.0) | ((standard.C < 18.0) & (standard.h >= 27.0));
  const T lightness = 0.15 * rootL + 31.5 / f;
  const T SL = Select(rectangular, lightness, Max(lightness, T(kSmallest)));
  const T SC = Select(rectangular, T(kSmallest), Max(0.48 * rootC - 0.35 * rootL + 42.0 / f, T(kSmallest)));
  const T SH = Select(rectangular, T(kSmallest), 0.14 * rootC + 0.7 - 0.2 * rootL + 21.0 / f);
  const T first = Select(rectangular, d.da, d.dC), second = Select(rectangular, d.db, d.dH);
  d.dE = RootSumOfSquares(first / (gC * SC), d.dL / (gL * SL), second / (gH * SH));
}

/// Coordinates L99, a99, b99, C99 of a colour in L*a*b*; the hue stays unset.
/// Formula: DIN 6176:2001 with the factors kCH and kE.
template <class T>
VRX_LANE_INLINE LabOf<T> Din99WithoutHue(const LabOf<T>& lab, double kCH, double kE) {
  constexpr double kCos16 = 0.96126169593831379,
                   kSin16 = 0.27563735581701682;  // of 16 degrees, by the library's pi
  const T e = lab.a * kCos16 + lab.b * kSin16;
  const T f = 0.7 * (lab.b * kCos16 - lab.a * kSin16);
  const T G = Sqrt(e * e + f * f);
  const T C = Log(1.0 + 0.045 * G) / (0.045 * kCH * kE);
  const auto grey = NearlyEqual(G, T(0.0));
  return {105.51 * Log(1.0 + 0.0158 * lab.L) / kE, Select(grey, T(0.0), C * e / G),
          Select(grey, T(0.0), C * f / G), C, T(kUnset)};
}

/// The same with the hue h99 in degrees.
template <class T>
VRX_LANE_INLINE LabOf<T> LabToDin99(const LabOf<T>& lab, double kCH, double kE) {
  LabOf<T> din99 = Din99WithoutHue(lab, kCH, kE);
  din99.h = HueDegrees(din99.a, din99.b);
  return din99;
}

/// DIN99 difference of two colours in L*a*b*: dL99, da99, db99, dL99 again, dC99, dH99, dE99. dH99 has the sign of
/// EabDifference's rule in the a99-b99 plane.
template <class T>
VRX_LANE_INLINE DifferenceOf<T> Din99Difference(const LabOf<T>& standard, const LabOf<T>& sample, double kCH,
                                                double kE) {
  return EabDifference(Din99WithoutHue(standard, kCH, kE), Din99WithoutHue(sample, kCH, kE));
}

/// Hunter Lab: dL, da, db and their root sum of squares; the others are unset.
template <class T>
VRX_LANE_INLINE DifferenceOf<T> HunterDifference(const LabOf<T>& standard, const LabOf<T>& sample) {
  DifferenceOf<T> d;
  d.dL = sample.L - standard.L;
  d.da = sample.a - standard.a;
  d.db = sample.b - standard.b;
  const T dC = Sqrt(d.da * d.da + d.db * d.db);
  d.weightedL = d.dC = d.dH = T(kUnset);
  d.dE = Sqrt(d.dL * d.dL + dC * dC);
  return d;
}

/// XYZ/Yxy: 10 dX, 10 dY, 10 dZ; 10000 dx and 10000 dy within 999.99 as chroma and hue difference; the total is dE*ab. The
/// weighted lightness difference is unset.
template <class T>
VRX_LANE_INLINE DifferenceOf<T> XyzDifference(const ColorOf<T>& standard, const ColorOf<T>& sample) {
  constexpr double kLargest = 999.99;
  const XyOf<T> s = Chromaticity(standard.xyz), t = Chromaticity(sample.xyz);
  const auto clamped = [](T value) { return Min(Max(value, T(-kLargest)), T(kLargest)); };
  DifferenceOf<T> d;
  d.dL = 10.0 * (sample.xyz.X - standard.xyz.X);
  d.da = 10.0 * (sample.xyz.Y - standard.xyz.Y);
  d.db = 10.0 * (sample.xyz.Z - standard.xyz.Z);
  d.weightedL = T(kUnset);
  d.dC = clamped(10000.0 * (t.x - s.x));
  d.dH = clamped(10000.0 * (t.y - s.y));
  d.dE = EabDifference(standard.lab, sample.lab).dE;
  return d;
}

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_DIFFERENCE_FORMULAS_H_
