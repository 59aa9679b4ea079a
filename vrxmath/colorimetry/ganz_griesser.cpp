#include <vrxmath/colorimetry/ganz_griesser.h>

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

}  // namespace vrx
