// CIEDE2000, ISO/CIE 11664-6, in the steps and symbols of Sharma, Wu and Dalal, "The CIEDE2000 color-difference
// formula: implementation notes, supplementary test data, and mathematical observations" (2005), as formulas over
// values.

#ifndef VRXMATH_COLORIMETRY_CIE2000_FORMULAS_H_
#define VRXMATH_COLORIMETRY_CIE2000_FORMULAS_H_

#include <vrxmath/colorimetry/hue.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// The intermediate results of CIEDE2000: weights, rotation term and mean hue in degrees.
template <class T>
struct Cie2000TermsOf {
  WeightsOf<T> weights;
  T RT;
  T meanHue;
};
using Cie2000Terms = Cie2000TermsOf<double>;

/// A pair with the primed a, C and h (degrees) of CIEDE2000, and the terms that follow from them.
template <class T>
struct Cie2000PairOf {
  LabOf<T> standard, sample;
  Cie2000TermsOf<T> terms;
};

/// sqrt(C^7 / (C^7 + 25^7)): how far a chroma lies in the region where the formula bends a* and hue.
template <class T>
VRX_LANE_INLINE T Cie2000ChromaRatio(T C) {
  constexpr double k25To7 = 6103515625.0;
  const T C2 = C * C;
  const T C4 = C2 * C2;
  const T C7 = C4 * C2 * C;
  return Sqrt(C7 / (C7 + k25To7));
}

/// The stretch G of a* for a pair.
template <class T>
VRX_LANE_INLINE T Cie2000AStretch(const LabOf<T>& standard, const LabOf<T>& sample) {
  return 0.5 * (1.0 - Cie2000ChromaRatio((standard.C + sample.C) / 2.0));
}

/// A colour with a' = (1 + G) a and its chroma; the hue is unset.
template <class T>
VRX_LANE_INLINE LabOf<T> Cie2000WithoutHue(const LabOf<T>& lab, T G) {
  const T a = (1.0 + G) * lab.a;
  return {lab.L, a, lab.b, Sqrt(a * a + lab.b * lab.b), T(kUnset)};
}

/// The direction of a point (a', b) that is not the origin, in degrees in [0, 360].
template <class T>
VRX_LANE_INLINE T Cie2000Direction(T a, T b) {
  const T h = Atan2(b, a) * kDegreesPerRadian;
  return Select(h < 0.0, h + 360.0, h);
}

/// The hue in degrees of a point (a', b), 0 for a grey.
template <class T>
VRX_LANE_INLINE T Cie2000PrimedHue(T a, T b) {
  const auto aIsZero = NearlyEqual(a, T(0.0)), bIsZero = NearlyEqual(b, T(0.0));
  return Branch(
      aIsZero & bIsZero, [&] { return T(0.0); }, [&] { return Cie2000Direction(a, b); });
}

/// The term T of a mean hue, and the rotation dtheta; all in degrees.
template <class T>
VRX_LANE_INLINE T Cie2000HueTerm(T h) {
  return 1.0 - 0.17 * CosDegrees(h - 30.0) + 0.24 * CosDegrees(2.0 * h) + 0.32 * CosDegrees(3.0 * h + 6.0) -
         0.2 * CosDegrees(4.0 * h - 63.0);
}
template <class T>
VRX_LANE_INLINE T Cie2000Rotation(T h) {
  const T turn = (h - 275.0) / 25.0;
  return 30.0 * Exp(-(turn * turn));
}

/// The weights at a mean lightness, mean primed chroma, and the term T of the mean hue.
template <class T>
VRX_LANE_INLINE WeightsOf<T> Cie2000WeightsAt(T meanL, T meanC, T hueTerm) {
  const T L50 = (meanL - 50.0) * (meanL - 50.0);
  return {1.0 + 0.015 * L50 / Sqrt(20.0 + L50), 1.0 + 0.045 * meanC, 1.0 + 0.015 * meanC * hueTerm};
}

/// True where a colour of the pair has no hue.
template <class T>
VRX_LANE_INLINE auto Cie2000EitherIsGrey(const LabOf<T>& s, const LabOf<T>& t) {
  return NearlyEqual(s.C * t.C, T(0.0));
}

/// The mean of two primed hues in degrees, on the shorter way between them; their sum where one colour is grey.
template <class T>
VRX_LANE_INLINE T Cie2000MeanHue(const LabOf<T>& s, const LabOf<T>& t) {
  const T sum = s.h + t.h;
  const T distance = Abs(t.h - s.h);
  const auto opposite = NearlyEqual(distance, T(180.0));
  const T across = Select(sum < 360.0, sum + 360.0, sum - 360.0) / 2.0;
  const T mean = Select((distance < 180.0) | opposite, sum / 2.0, across);
  return Select(Cie2000EitherIsGrey(s, t), sum, mean);
}

/// The step from the standard's primed hue to the sample's in degrees, on the shorter way; 0 where one colour is grey.
template <class T>
VRX_LANE_INLINE T Cie2000HueStep(const LabOf<T>& s, const LabOf<T>& t) {
  const T step = t.h - s.h;
  const T shorter = Select(step < -180.0, step + 360.0, Select(step > 180.0, step - 360.0, step));
  return Select(Cie2000EitherIsGrey(s, t), T(0.0), shorter);
}

/// Primed colours, weights, rotation term and mean hue of a pair. Chroma must be filled.
template <class T>
VRX_LANE_INLINE Cie2000PairOf<T> Cie2000Pair(const LabOf<T>& standard, const LabOf<T>& sample) {
  Cie2000PairOf<T> pair;
  const T G = Cie2000AStretch(standard, sample);
  pair.standard = Cie2000WithoutHue(standard, G);
  pair.sample = Cie2000WithoutHue(sample, G);
  pair.standard.h = Cie2000PrimedHue(pair.standard.a, pair.standard.b);
  pair.sample.h = Cie2000PrimedHue(pair.sample.a, pair.sample.b);

  const T meanC = (pair.standard.C + pair.sample.C) / 2.0;
  const T h = Cie2000MeanHue(pair.standard, pair.sample);
  pair.terms.weights = Cie2000WeightsAt((pair.standard.L + pair.sample.L) / 2.0, meanC, Cie2000HueTerm(h));
  pair.terms.RT = -2.0 * Cie2000ChromaRatio(meanC) * SinDegrees(2.0 * Cie2000Rotation(h));
  pair.terms.meanHue = h;
  return pair;
}

/// The part that the hues of a pair have in its difference.
template <class T>
struct Cie2000HueParts {
  T dH;            ///< dH', not divided by its weight
  T hueTerm;       ///< T, the hue's part of SH
  T rotationSine;  ///< sin(2 dtheta) of the rotation term
};

/// The parts from the hues themselves, step by step as the formula is written.
template <class T>
VRX_LANE_INLINE Cie2000HueParts<T> Cie2000PartsFromHues(LabOf<T> s, LabOf<T> t) {
  s.h = Cie2000PrimedHue(s.a, s.b);
  t.h = Cie2000PrimedHue(t.a, t.b);
  const T h = Cie2000MeanHue(s, t);
  return {2.0 * Sqrt(s.C * t.C) * SinDegrees(Cie2000HueStep(s, t) / 2.0), Cie2000HueTerm(h),
          SinDegrees(2.0 * Cie2000Rotation(h))};
}

/// sin x for 0 <= x <= pi / 3 to 1e-14, by Taylor's series.
template <class T>
VRX_LANE_INLINE T SineOfSmall(T x) {
  const T x2 = x * x;
  const T high = -1.0 / 39916800 + x2 * (1.0 / 6227020800.0 - x2 * (1.0 / 1307674368000.0));
  return x + x * x2 * (-1.0 / 6 + x2 * (1.0 / 120 + x2 * (-1.0 / 5040 + x2 * (1.0 / 362880 + x2 * high))));
}

/// Sum of the unit vectors of two points (a', b), times C'1 C'2: it has the mean hue on the shorter way between them.
template <class T>
struct Cie2000Mean {
  T x, y;
};
template <class T>
VRX_LANE_INLINE Cie2000Mean<T> Cie2000MeanOfPoints(const LabOf<T>& s, const LabOf<T>& t) {
  return {s.a * t.C + t.a * s.C, s.b * t.C + t.b * s.C};
}

/// sin(2 dtheta) of a mean hue in degrees.
template <class T>
VRX_LANE_INLINE T Cie2000RotationSine(T h) {
  return SineOfSmall(2.0 * Cie2000Rotation(h) * kRadiansPerDegree);
}

/// The same parts from the points (a', b): multiples of the mean hue follow by the addition theorems, and dH' = cross product /
/// sqrt((C'1 C'2 + dot product) / 2). `product` and `dot`: C'1 C'2 and the dot product; their sum must not be small beside
/// the product. `rotationSine()`: Cie2000RotationSine of the mean's direction, the one arc tangent of the formula.
template <class T, class F>
VRX_LANE_INLINE Cie2000HueParts<T> Cie2000PartsFromPoints(const LabOf<T>& s, const LabOf<T>& t, T product,
                                                          T dot, const Cie2000Mean<T>& mean,
                                                          const F& rotationSine) {
  constexpr double kCos30 = 0.86602540378443865, kSin30 = 0.5, kCos6 = 0.99452189536827333,
                   kSin6 = 0.10452846326765347, kCos63 = 0.45399049973954675, kSin63 = 0.89100652418836786;
  const T inverse = 1.0 / Sqrt(mean.x * mean.x + mean.y * mean.y);
  const T c1 = mean.x * inverse, s1 = mean.y * inverse;
  const T c2 = c1 * c1 - s1 * s1, s2 = 2.0 * s1 * c1;
  const T c3 = c2 * c1 - s2 * s1, s3 = s2 * c1 + c2 * s1;
  const T c4 = c2 * c2 - s2 * s2, s4 = 2.0 * s2 * c2;
  const T hueTerm = 1.0 - 0.17 * (c1 * kCos30 + s1 * kSin30) + 0.24 * c2 + 0.32 * (c3 * kCos6 - s3 * kSin6) -
                    0.2 * (c4 * kCos63 + s4 * kSin63);
  const T sine = rotationSine();
  return {(s.a * t.b - t.a * s.b) / Sqrt(0.5 * (product + dot)), hueTerm, sine};
}

/// The parts by points where that is as exact as by hues: neither for a grey colour, which has no hue, nor for hues
/// within a degree of opposite, where the mean hue hangs on the last digits of pi and the points cancel. The two differ by
/// less than 1e-9 in the total difference. `rotationSine()`: as for Cie2000PartsFromPoints.
template <class T, class F>
VRX_LANE_INLINE Cie2000HueParts<T> Cie2000Parts(const LabOf<T>& s, const LabOf<T>& t,
                                                const Cie2000Mean<T>& mean, const F& rotationSine) {
  constexpr double kGreyProduct = 1e-9, kOpposite = 1e-4;
  const T product = s.C * t.C, dot = s.a * t.a + s.b * t.b;
  const auto plain = (product > kGreyProduct) & (product + dot > kOpposite * product);
  Cie2000HueParts<T> parts = {};
  if (Any(plain)) parts = Cie2000PartsFromPoints(s, t, product, dot, mean, rotationSine);
  if (!All(plain)) {
    const Cie2000HueParts<T> byHues = Cie2000PartsFromHues(s, t);
    parts.dH = Select(plain, parts.dH, byHues.dH);
    parts.hueTerm = Select(plain, parts.hueTerm, byHues.hueTerm);
    parts.rotationSine = Select(plain, parts.rotationSine, byHues.rotationSine);
  }
  return parts;
}

/// Sets the last four of a difference to dL', dC', dH' (not divided by their weights) and dE00, from colours with a' and
/// C', and their hue parts.
template <class T>
VRX_LANE_INLINE void WeightCie2000Primed(const LabOf<T>& s, const LabOf<T>& t,
                                         const Cie2000HueParts<T>& parts, double kL, double kC, double kH,
                                         DifferenceOf<T>& d) {
  const T meanC = (s.C + t.C) / 2.0;
  const WeightsOf<T> w = Cie2000WeightsAt((s.L + t.L) / 2.0, meanC, parts.hueTerm);
  d.weightedL = t.L - s.L;
  d.dC = t.C - s.C;
  d.dH = parts.dH;
  const T l = d.weightedL / (kL * w.SL);
  const T c = d.dC / (kC * w.SC);
  const T h = d.dH / (kH * w.SH);
  const T RT = -2.0 * Cie2000ChromaRatio(meanC) * parts.rotationSine;
  d.dE = Sqrt(l * l + c * c + h * h + RT * c * h);
}

/// Replaces the last four of a difference by dL', dC', dH' (not divided by their weights) and dE00. With hues exactly 180
/// degrees apart the mean hue, and so the result, hangs on the last digits of pi; see docs/colour_notes.md.
template <class T>
VRX_LANE_INLINE void WeightCie2000(const LabOf<T>& standard, const LabOf<T>& sample, double kL, double kC,
                                   double kH, DifferenceOf<T>& d) {
  const T G = Cie2000AStretch(standard, sample);
  const LabOf<T> s = Cie2000WithoutHue(standard, G), t = Cie2000WithoutHue(sample, G);
  const Cie2000Mean<T> mean = Cie2000MeanOfPoints(s, t);
  const auto parts =
      Cie2000Parts(s, t, mean, [&] { return Cie2000RotationSine(Cie2000Direction(mean.x, mean.y)); });
  WeightCie2000Primed(s, t, parts, kL, kC, kH, d);
}

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_CIE2000_FORMULAS_H_
