#include <vrxmath/colorimetry/ganz_griesser.h>

#include <cmath>

#include <vrxmath/foundation/decimal_text.h>

namespace vrx {
namespace {

bool HasChromaticity(const Xyz& xyz) {
  return !IsUnset(xyz) && xyz.X + xyz.Y + xyz.Z > 0.0;
}

// a x + b y + c of a chromaticity.
double Plane(const Xyz& xyz, double a, double b, double c) {
  const double sum = xyz.X + xyz.Y + xyz.Z;
  return a * xyz.X / sum + b * xyz.Y / sum + c;
}

struct Line {
  bool isKnown = false;
  double factor = 1.0, constant = 0.0;
};

// The straight line through points, by least squares; unknown for fewer than three and for points above each other.
Line FitLine(std::span<const double> x, std::span<const double> y) {
  constexpr std::size_t kFewest = 3;
  const auto count = static_cast<double>(x.size());
  if (x.size() < kFewest) return {};
  double meanX = 0.0, meanY = 0.0, squares = 0.0, products = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) meanX += x[i] / count, meanY += y[i] / count;
  for (std::size_t i = 0; i < x.size(); ++i) {
    squares += (x[i] - meanX) * (x[i] - meanX);
    products += (x[i] - meanX) * (y[i] - meanY);
  }
  constexpr double kOnePoint = 1e-6;
  if (!(squares > kOnePoint)) return {};
  const double factor = products / squares;
  return {true, factor, meanY - factor * meanX};
}

// The line of what a certificate says, less the luminance where `withY`, over what the nominal parameters say.
Line FitOver(std::span<const WhitenessStandard> standards, double WhitenessStandard::*nominal, bool withY,
             double a, double b, double c) {
  std::vector<double> computed, certified;
  for (const WhitenessStandard& one : standards) {
    if (IsUnset(one.*nominal) || !HasChromaticity(one.xyz)) continue;
    computed.push_back(Plane(one.xyz, a, b, c));
    certified.push_back(one.*nominal - (withY ? one.xyz.Y : 0.0));
  }
  return FitLine(computed, certified);
}

// A factor of the nominal parameters, with two decimals.
std::string FactorText(double factor) {
  return DecimalText(factor, 2, u".").ToUtf8();
}

double WhitenessFactor(const GanzGriesserFit& fit) {
  return fit.parameters.P / GanzGriesser{}.P;
}
double TintFactor(const GanzGriesserFit& fit) {
  return fit.parameters.m / GanzGriesser{}.m;
}

}  // namespace

double GanzGriesser::Whiteness(const Xyz& xyz) const {
  return HasChromaticity(xyz) ? xyz.Y + Plane(xyz, P, Q, C) : kUnset;
}

double GanzGriesser::Tint(const Xyz& xyz) const {
  return HasChromaticity(xyz) ? Plane(xyz, m, n, k) : kUnset;
}

GanzGriesserFit FitGanzGriesser(std::span<const WhitenessStandard> standards) {
  GanzGriesserFit fit;
  GanzGriesser& p = fit.parameters;
  const Line whiteness = FitOver(standards, &WhitenessStandard::whiteness, true, p.P, p.Q, p.C);
  const Line tint = FitOver(standards, &WhitenessStandard::tint, false, p.m, p.n, p.k);
  fit.hasWhiteness = whiteness.isKnown;
  fit.hasTint = tint.isKnown;
  p.P *= whiteness.factor, p.Q *= whiteness.factor, p.C = p.C * whiteness.factor + whiteness.constant;
  p.m *= tint.factor, p.n *= tint.factor, p.k = p.k * tint.factor + tint.constant;
  for (const WhitenessStandard& one : standards) {
    const auto residual = [](bool isFitted, double nominal, double fitted) {
      return !isFitted || IsUnset(nominal) || IsUnset(fitted) ? kUnset : nominal - fitted;
    };
    fit.whitenessResiduals.push_back(residual(fit.hasWhiteness, one.whiteness, p.Whiteness(one.xyz)));
    fit.tintResiduals.push_back(residual(fit.hasTint, one.tint, p.Tint(one.xyz)));
  }
  return fit;
}

std::string GanzGriesserFit::Contradiction() const {
  constexpr double kNoScale = 0.1;
  if (hasWhiteness && !(WhitenessFactor(*this) > kNoScale)) {
    return "whiteness does not grow with saturation as it should (" + FactorText(WhitenessFactor(*this)) +
           " times as fast as by the nominal parameters): are certificates exchanged?";
  }
  if (hasTint && !(TintFactor(*this) > kNoScale)) {
    return "tint does not change from red to green as it should (" + FactorText(TintFactor(*this)) +
           " times as fast as by the nominal parameters): are certificates exchanged, or do "
           "the standards differ too little in tint? Without tint whiteness alone is fitted";
  }
  return {};
}

std::string GanzGriesserFit::Doubt() const {
  constexpr double kLeast = 0.6, kMost = 1.6;
  const double factor = hasWhiteness ? WhitenessFactor(*this) : 1.0;
  if (factor >= kLeast && factor <= kMost) return {};
  return "whiteness grows with saturation " + FactorText(factor) +
         " times as fast as by the nominal parameters: do the certificates state another whiteness, such as "
         "that of CIE (about 0.45)?";
}

std::vector<std::size_t> GanzGriesserFit::Outlying() const {
  constexpr double kVisibleWhiteness = 5.0, kVisibleTint = 0.5;
  const auto isVisible = [](double residual, double visible) {
    return !IsUnset(residual) && std::fabs(residual) > visible;
  };
  std::vector<std::size_t> outlying;
  for (std::size_t i = 0; i < whitenessResiduals.size(); ++i) {
    if (isVisible(whitenessResiduals[i], kVisibleWhiteness) || isVisible(tintResiduals[i], kVisibleTint))
      outlying.push_back(i);
  }
  return outlying;
}

}  // namespace vrx
