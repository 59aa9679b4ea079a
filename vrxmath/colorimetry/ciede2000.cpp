// CIEDE2000, ISO/CIE 11664-6, in the steps and symbols of Sharma, Wu and Dalal, "The CIEDE2000
// color-difference formula: implementation notes, supplementary test data, and mathematical observations"
// (2005).

#include <vrxmath/colorimetry/color_differences.h>

#include <cmath>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

constexpr double k25To7 = 6103515625.0;

double Seventh(double x) {
  const double x2 = x * x;
  const double x4 = x2 * x2;
  return x4 * x2 * x;
}

// sqrt(C^7 / (C^7 + 25^7)): how far a chroma lies in the region where the formula bends a* and hue.
double ChromaRatio(double C) {
  const double C7 = Seventh(C);
  return std::sqrt(C7 / (C7 + k25To7));
}

double CosDegrees(double degrees) {
  return Cos(degrees * kRadiansPerDegree);
}

struct Primed {
  double L, a, b, C, h;
};

Primed ToPrimed(const CLabValues& lab, double G) {
  Primed p;
  p.L = lab[0];
  p.a = (1.0 + G) * lab[1];
  p.b = lab[2];
  p.C = std::sqrt(p.a * p.a + p.b * p.b);
  if (NearlyEqual(p.b, 0.0) && NearlyEqual(p.a, 0.0)) {
    p.h = 0.0;
  } else {
    p.h = Atan2(p.b, p.a) * kDegreesPerRadian;
    if (p.h < 0.0) p.h += 360.0;
  }
  return p;
}

bool EitherIsGrey(const Primed& s, const Primed& t) {
  return NearlyEqual(s.C * t.C, 0.0);
}

double MeanHue(const Primed& s, const Primed& t) {
  const double sum = s.h + t.h;
  if (EitherIsGrey(s, t)) return sum;
  const double distance = std::fabs(t.h - s.h);
  if (distance < 180.0 || NearlyEqual(distance, 180.0)) return sum / 2.0;
  return (sum < 360.0 ? sum + 360.0 : sum - 360.0) / 2.0;
}

double HueStep(const Primed& s, const Primed& t) {
  if (EitherIsGrey(s, t)) return 0.0;
  const double step = t.h - s.h;
  if (step < -180.0) return step + 360.0;
  return step > 180.0 ? step - 360.0 : step;
}

struct Pair {
  Primed standard, sample;
  Cie2000Terms terms;
};

Pair PrimedPair(const CLabValues& standard, const CLabValues& sample) {
  Pair pair;
  const double G = 0.5 * (1.0 - ChromaRatio((standard[3] + sample[3]) / 2.0));
  pair.standard = ToPrimed(standard, G);
  pair.sample = ToPrimed(sample, G);

  const double meanL = (pair.standard.L + pair.sample.L) / 2.0;
  const double meanC = (pair.standard.C + pair.sample.C) / 2.0;
  const double h = MeanHue(pair.standard, pair.sample);
  const double T = 1.0 - 0.17 * CosDegrees(h - 30.0) + 0.24 * CosDegrees(2.0 * h) +
                   0.32 * CosDegrees(3.0 * h + 6.0) - 0.2 * CosDegrees(4.0 * h - 63.0);
  const double L50 = (meanL - 50.0) * (meanL - 50.0);
  const double turn = (h - 275.0) / 25.0;
  const double rotation = 30.0 * Exp(-(turn * turn));
  pair.terms.weights.SL = 1.0 + 0.015 * L50 / std::sqrt(20.0 + L50);
  pair.terms.weights.SC = 1.0 + 0.045 * meanC;
  pair.terms.weights.SH = 1.0 + 0.015 * meanC * T;
  pair.terms.RT = -2.0 * ChromaRatio(meanC) * Sin(2.0 * rotation * kRadiansPerDegree);
  pair.terms.meanHue = h;
  return pair;
}

void StorePrimed(const CLabValues& lab, const Primed& p, CLabValues& primed) {
  primed = lab;
  primed[1] = p.a;
  primed[3] = p.C;
  primed[4] = p.h;
}

}  // namespace

Cie2000Terms Cie2000Weights(const CLabValues& standard, const CLabValues& sample, CLabValues& primedStandard,
                            CLabValues& primedSample) {
  const Pair pair = PrimedPair(standard, sample);
  StorePrimed(standard, pair.standard, primedStandard);
  StorePrimed(sample, pair.sample, primedSample);
  return pair.terms;
}

void DeltaCie2000(const CLabValues& standard, const CLabValues& sample, double kL, double kC, double kH,
                  CDeltaValues& delta) {
  const Pair pair = PrimedPair(standard, sample);
  const auto& [s, t, terms] = pair;
  const double dL = t.L - s.L;
  const double dC = t.C - s.C;
  const double dH = 2.0 * std::sqrt(s.C * t.C) * Sin(HueStep(s, t) / 2.0 * kRadiansPerDegree);
  const double l = dL / (kL * terms.weights.SL);
  const double c = dC / (kC * terms.weights.SC);
  const double h = dH / (kH * terms.weights.SH);
  delta[3] = dL;
  delta[4] = dC;
  delta[5] = dH;
  delta[6] = std::sqrt(l * l + c * c + h * h + terms.RT * c * h);
}

}  // namespace vrx
