#include <vrxmath/colorimetry/single_figures.h>

#include <array>
#include <cmath>
#include <cstddef>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/space_formulas.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

// Dominant wavelength -----------------------------------------------------------------------------------------

constexpr int32_t kLocusPoints = 341;  // 360 to 700 nm, beyond which the locus turns back on itself

Xy LocusPoint(int32_t observer, int32_t i) {
  return Chromaticity(MatchingFunctionsAt(observer, kFirstWavelength + i));
}

struct Line {
  Xy from, to;
};

// Where a ray from `origin` along `direction` meets a line: how far along the ray, in units of `direction`, and along the line,
// 0 to 1. False when it passes it by.
bool Meets(const Xy& origin, const Xy& direction, const Line& line, double& alongRay, double& alongLine) {
  const double ex = line.to.x - line.from.x, ey = line.to.y - line.from.y;
  const double ox = line.from.x - origin.x, oy = line.from.y - origin.y;
  const double determinant = ex * direction.y - ey * direction.x;
  if (determinant == 0.0) return false;
  alongRay = (ex * oy - ey * ox) / determinant;
  alongLine = (direction.x * oy - direction.y * ox) / determinant;
  return alongRay > 0.0 && alongLine >= 0.0 && alongLine <= 1.0;
}

// The wavelength at which a ray leaves by the spectral locus; false when it leaves among the purples.
bool MeetsLocus(const Xy& origin, const Xy& direction, int32_t observer, double& wavelength,
                double& alongRay) {
  double alongLine;
  Xy from = LocusPoint(observer, 0);
  for (int32_t i = 1; i < kLocusPoints; ++i) {
    const Xy to = LocusPoint(observer, i);
    if (Meets(origin, direction, {from, to}, alongRay, alongLine)) {
      wavelength = kFirstWavelength + i - 1 + alongLine;
      return true;
    }
    from = to;
  }
  return false;
}

// A figure of a colour against the white of its illuminant.
DominantWavelengthResult DominantOf(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  White n;
  if (!FindWhite(illuminant, observer, n)) return {};
  return FindDominantWavelength(Chromaticity(xyz.Values()), Chromaticity(Xyz{n.X, n.Y, n.Z}), observer);
}

// Colour temperature --------------------------------------------------------------------------------------------

// The locus over mireds (1e6 / K), in which it is evenly spaced to the eye.
Uv1960 Planckian(double mired) {
  constexpr double kC2 = 1.4388e7;
  return Cie1960(SpectrumToXyz(PlanckianSpectrum(1e6 / mired, kC2), kObserver2));
}

// How far `uv` lies along the locus from the point at `mired`, as the cosine that vanishes at the foot of the perpendicular.
double AlongLocus(const Uv1960& uv, double mired) {
  constexpr double kStep = 0.01;
  const Uv1960 a = Planckian(mired - kStep), b = Planckian(mired + kStep);
  return (uv.u - (a.u + b.u) / 2.0) * (b.u - a.u) + (uv.v - (a.v + b.v) / 2.0) * (b.v - a.v);
}

constexpr double kHottest = 10.0, kCoolest = 1000.0;  // mireds
constexpr int32_t kGridPoints = 100;
constexpr double kGridStep = (kCoolest - kHottest) / (kGridPoints - 1);

const std::array<Uv1960, kGridPoints>& LocusGrid() {
  static const std::array<Uv1960, kGridPoints> grid = [] {
    std::array<Uv1960, kGridPoints> points{};
    for (int32_t i = 0; i < kGridPoints; ++i) {
      points[static_cast<std::size_t>(i)] = Planckian(kHottest + i * kGridStep);
    }
    return points;
  }();
  return grid;
}

double SquaredDistance(const Uv1960& a, const Uv1960& b) {
  return (a.u - b.u) * (a.u - b.u) + (a.v - b.v) * (a.v - b.v);
}

// The foot of the perpendicular within a step of the nearest point of the grid, by halving.
double NearestMired(const Uv1960& uv) {
  const auto& grid = LocusGrid();
  std::size_t nearest = 0;
  for (std::size_t i = 1; i < grid.size(); ++i) {
    if (SquaredDistance(uv, grid[i]) < SquaredDistance(uv, grid[nearest])) nearest = i;
  }
  const double middle = kHottest + static_cast<double>(nearest) * kGridStep;
  double low = Max(middle - kGridStep, kHottest), high = Min(middle + kGridStep, kCoolest);
  for (int32_t step = 0; step < 40; ++step) {
    const double half = (low + high) / 2.0;
    (AlongLocus(uv, half) > 0.0 ? low : high) = half;
  }
  return (low + high) / 2.0;
}

ColorTemperature TemperatureOf(int32_t observer, const CTrisValues& xyz) {
  if (IsUnset(xyz) || observer != kObserver2) return {};
  return FindColorTemperature(Chromaticity(xyz.Values()));
}

}  // namespace

DominantWavelengthResult FindDominantWavelength(const Xy& color, const Xy& white, int32_t observer) {
  DominantWavelengthResult result;
  if (IsUnset(color.x) && IsUnset(color.y)) return result;
  const Xy direction = {color.x - white.x, color.y - white.y};
  if (!(std::fabs(direction.x) + std::fabs(direction.y) > 1e-9)) return result;
  double wavelength, alongRay, alongLine;
  if (MeetsLocus(white, direction, observer, wavelength, alongRay)) {
    return {wavelength, 1.0 / alongRay};
  }
  const Line purples = {LocusPoint(observer, kLocusPoints - 1), LocusPoint(observer, 0)};
  if (!Meets(white, direction, purples, alongRay, alongLine)) return result;
  result.purity = 1.0 / alongRay;
  double opposite;
  if (MeetsLocus(white, {-direction.x, -direction.y}, observer, wavelength, opposite)) {
    result.wavelength = -wavelength;
  }
  return result;
}

double DominantWavelength(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return DominantOf(illuminant, observer, xyz).wavelength;
}
double ExcitationPurity(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return DominantOf(illuminant, observer, xyz).purity;
}

ColorTemperature FindColorTemperature(const Xy& color) {
  constexpr double kFarthest = 0.05;
  const Uv1960 uv = Cie1960({color.x, color.y, 1.0 - color.x - color.y});
  if (!(std::fabs(uv.u) < 10.0 && std::fabs(uv.v) < 10.0)) return {};
  const double mired = NearestMired(uv);
  const Uv1960 foot = Planckian(mired);
  const double distance = std::sqrt(SquaredDistance(uv, foot));
  if (distance > kFarthest || mired < kHottest + 1e-6 || mired > kCoolest - 1e-6) return {};
  return {1e6 / mired, uv.v > foot.v ? distance : -distance};
}

double CorrelatedColorTemperature(vrxIlluminant, int32_t observer, const CTrisValues& xyz) {
  return TemperatureOf(observer, xyz).kelvin;
}
double PlanckianDistance(vrxIlluminant, int32_t observer, const CTrisValues& xyz) {
  return TemperatureOf(observer, xyz).Duv;
}

std::span<const ColorFigure> ColorFigures() {
  static constexpr ColorFigure kFigures[] = {
      {"dominant", "Dominant wavelength, nm", DominantWavelength,
       "line from the white through the colour to the spectral locus; negative: complementary wavelength of "
       "a purple",
       1},
      {"purity", "Excitation purity", ExcitationPurity,
       "distance from the white / that of the border on the same line", 4},
      {"cct", "Correlated colour temperature, K", CorrelatedColorTemperature,
       "nearest Planckian radiator in CIE 1960 u, v; 2 degrees, within 0.05", 0},
      {"duv", "Duv", PlanckianDistance,
       "distance from the Planckian locus in CIE 1960 u, v, positive above it", 5},
  };
  return kFigures;
}

double InconstancyIndex(vrxIlluminant reference, vrxIlluminant test, int32_t observer, const CReflData& curve,
                        const CDifferenceSettings& settings, AdaptationTransform transform) {
  Color seen, corresponding;
  White referenceWhite, testWhite;
  const bool measured = curve.Tristimulus(reference, observer, seen.xyz) &&
                        curve.Tristimulus(test, observer, corresponding.xyz) &&
                        FindWhite(reference, observer, referenceWhite) &&
                        FindWhite(test, observer, testWhite);
  if (!measured) return kUnset;
  corresponding.xyz = Adapt(corresponding.xyz, AdaptationMatrix(transform, testWhite, referenceWhite));
  for (Color* color : {&seen, &corresponding}) {
    if (!FillCoordinates(settings.system, reference, observer, *color)) return kUnset;
  }
  constexpr double kNoAngle = 0.0;
  return ComputeDifference(settings, seen, corresponding, kNoAngle).dE;
}

bool IsWithinCieLimits(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return IsCieWhite(WhitenessCie(illuminant, observer, xyz), TintCie(illuminant, observer, xyz),
                    xyz[CTrisValues::kY]);
}

}  // namespace vrx
