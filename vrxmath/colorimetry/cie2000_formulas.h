// CIEDE2000, ISO/CIE 11664-6, in the steps and symbols of Sharma, Wu and Dalal, "The CIEDE2000 color-difference
// formula: implementation notes, supplementary test data, and mathematical observations" (2005), as formulas over
// values.

#ifndef VRXMATH_COLORIMETRY_CIE2000_FORMULAS_H_
#define VRXMATH_COLORIMETRY_CIE2000_FORMULAS_H_

#include <vrxmath/colorimetry/hue.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// What CIEDE2000 computes on the way: weights, rotation term and mean hue in degrees.
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

/// A colour with a' = (1 + G) a and the chroma and hue that go with it.
template <class T>
VRX_LANE_INLINE LabOf<T> Cie2000Primed(const LabOf<T>& lab, T G) {
  LabOf<T> p;
  p.L = lab.L;
  p.a = (1.0 + G) * lab.a;
  p.b = lab.b;
  p.C = Sqrt(p.a * p.a + p.b * p.b);
  const auto aIsZero = NearlyEqual(p.a, T(0.0)), bIsZero = NearlyEqual(p.b, T(0.0));
  p.h = Branch(
      aIsZero & bIsZero, [&] { return T(0.0); },
      [&] {
        const T h = Atan2(p.b, p.a) * kDegreesPerRadian;
        return Select(h < 0.0, h + 360.0, h);
      });
  return p;
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
  const T G = 0.5 * (1.0 - Cie2000ChromaRatio((standard.C + sample.C) / 2.0));
  pair.standard = Cie2000Primed(standard, G);
  pair.sample = Cie2000Primed(sample, G);

  const T meanL = (pair.standard.L + pair.sample.L) / 2.0;
  const T meanC = (pair.standard.C + pair.sample.C) / 2.0;
  const T h = Cie2000MeanHue(pair.standard, pair.sample);
  const T hueTerm = 1.0 - 0.17 * CosDegrees(h - 30.0) + 0.24 * CosDegrees(2.0 * h) +
                    0.32 * CosDegrees(3.0 * h + 6.0) - 0.2 * CosDegrees(4.0 * h - 63.0);
  const T L50 = (meanL - 50.0) * (meanL - 50.0);
  const T turn = (h - 275.0) / 25.0;
  const T rotation = 30.0 * Exp(-(turn * turn));
  pair.terms.weights.SL = 1.0 + 0.015 * L50 / Sqrt(20.0 + L50);
  pair.terms.weights.SC = 1.0 + 0.045 * meanC;
  pair.terms.weights.SH = 1.0 + 0.015 * meanC * hueTerm;
  pair.terms.RT = -2.0 * Cie2000ChromaRatio(meanC) * SinDegrees(2.0 * rotation);
  pair.terms.meanHue = h;
  return pair;
}

/// Replaces the last four of a difference by dL', dC', dH' (not divided by their weights) and dE00. With hues exactly 180
/// degrees apart the mean hue, and so the result, hangs on the last digits of pi; see docs/colour_notes.md.
template <class T>
VRX_LANE_INLINE void WeightCie2000(const LabOf<T>& standard, const LabOf<T>& sample, double kL, double kC,
                                   double kH, DifferenceOf<T>& d) {
  const Cie2000PairOf<T> pair = Cie2000Pair(standard, sample);
  const LabOf<T>&s = pair.standard, &t = pair.sample;
  d.weightedL = t.L - s.L;
  d.dC = t.C - s.C;
  d.dH = 2.0 * Sqrt(s.C * t.C) * SinDegrees(Cie2000HueStep(s, t) / 2.0);
  const T l = d.weightedL / (kL * pair.terms.weights.SL);
  const T c = d.dC / (kC * pair.terms.weights.SC);
  const T h = d.dH / (kH * pair.terms.weights.SH);
  d.dE = Sqrt(l * l + c * c + h * h + pair.terms.RT * c * h);
}

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_CIE2000_FORMULAS_H_
