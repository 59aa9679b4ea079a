#include <vrxmath/colorimetry/color_spaces.h>

#include <atomic>
#include <cmath>

#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

// Up to this ratio to white the cube root gives way to a straight line (CIE 15, in its four-digit form).
constexpr double kLinearLimit = 0.008856;
constexpr double kLinearSlope = 7.787;
constexpr double kLinearOffset = 0.13793103448275862;     // 16/116
constexpr double kInverseOffset = 0.137931;               // the inverse has always used six digits
constexpr double kLinearRootLimit = 0.20689655172413793;  // 6/29
constexpr double kLuvSlope = 903.29;

constexpr double kHalfPi = 1.570796326795;
constexpr double kThreeHalvesPi = 4.7123889803850005;
constexpr double kFullCircleMargin = 0.005;  // degrees

std::atomic<bool> hueInDegrees{true};

struct White {
  double X, Y, Z;
};

// The white point of a pair; false, with the index message shown, when it has none.
bool FindWhite(vrxIlluminant illuminant, int32_t observer, White& white) {
  const double* table = WeightTable(illuminant, observer);
  if (table == nullptr) return false;
  white = {table[kTableWhite], table[kTableWhite + 1], table[kTableWhite + 2]};
  return true;
}

double LightnessResponse(double t) {
  return t > kLinearLimit ? CubeRoot(t) : kLinearSlope * t + kLinearOffset;
}

double InverseLightnessResponse(double f) {
  return f > kLinearRootLimit ? f * f * f : (f - kInverseOffset) / kLinearSlope;
}

double ResponseDerivative(double t) {
  if (t <= kLinearLimit) return kLinearSlope;
  const double root = CubeRoot(t);
  return 1.0 / (3.0 * root * root);
}

double HueRadians(double a, double b) {
  if (NearlyEqual(a, 0.0)) {
    if (NearlyEqual(b, 0.0)) return 0.0;
    return b >= 0.0 ? kHalfPi : kThreeHalvesPi;
  }
  if (NearlyEqual(b, 0.0)) return a < 0.0 ? kPi : 0.0;
  const double h = Atan2(b, a);
  return h < 0.0 ? h + kTwoPi : h;
}

// The classic Hunter scale, defined for C and 2 degrees without a white point.
bool IsClassicHunter(vrxIlluminant illuminant, int32_t observer) {
  return illuminant == vrxIllumC && observer == kObserver2;
}

}  // namespace

bool HueInDegrees() {
  return hueInDegrees.load(std::memory_order_relaxed);
}
void SetHueInDegrees(bool degrees) {
  hueInDegrees.store(degrees, std::memory_order_relaxed);
}

double HueDegreesOf(const CLabValues& lab) {
  return HueInDegrees() ? lab[4] : lab[4] * kDegreesPerRadian;
}
double HueRadiansOf(const CLabValues& lab) {
  return HueInDegrees() ? lab[4] * kRadiansPerDegree : lab[4];
}

void ChromaHue(CLabValues& lab) {
  const double a = lab[1], b = lab[2];
  lab[3] = std::sqrt(a * a + b * b);
  double h = HueRadians(a, b);
  if (HueInDegrees()) {
    h *= kDegreesPerRadian;
    if (360.0 - h < kFullCircleMargin) h = 0.0;
  }
  lab[4] = h;
}

void XyzToLab(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz, CLabValues& lab) {
  White n;
  if (!FindWhite(illuminant, observer, n)) return lab.Fill(kUnset);
  const double fx = LightnessResponse(xyz[0] / n.X);
  const double fy = LightnessResponse(xyz[1] / n.Y);
  const double fz = LightnessResponse(xyz[2] / n.Z);
  lab[0] = 116.0 * fy - 16.0;
  lab[1] = 500.0 * (fx - fy);
  lab[2] = 200.0 * (fy - fz);
  ChromaHue(lab);
}

void LabToXyz(vrxIlluminant illuminant, int32_t observer, const CLabValues& lab, CTrisValues& xyz) {
  White n;
  if (!FindWhite(illuminant, observer, n)) return xyz.Fill(kUnset);
  const double fy = (lab[0] + 16.0) / 116.0;
  const double fx = fy + lab[1] / 500.0;
  const double fz = fy - lab[2] / 200.0;
  xyz[0] = n.X * InverseLightnessResponse(fx);
  xyz[1] = n.Y * InverseLightnessResponse(fy);
  xyz[2] = n.Z * InverseLightnessResponse(fz);
}

void XyzToLuv(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz, CLabValues& luv) {
  White n;
  if (!FindWhite(illuminant, observer, n)) return luv.Fill(kUnset);
  const double X = xyz[0], Y = xyz[1], Z = xyz[2];
  const double y = Y / n.Y;
  const double L = y <= kLinearLimit ? kLuvSlope * y : 116.0 * CubeRoot(y) - 16.0;
  const double d = X + 15.0 * Y + 3.0 * Z;
  const double dn = n.X + 15.0 * n.Y + 3.0 * n.Z;
  luv[0] = L;
  luv[1] = 13.0 * L * (4.0 * X / d - 4.0 * n.X / dn);
  luv[2] = 13.0 * L * (9.0 * Y / d - 9.0 * n.Y / dn);
  ChromaHue(luv);
}

void LuvToXyz(vrxIlluminant illuminant, int32_t observer, const CLabValues& luv, CTrisValues& xyz) {
  White n;
  if (!FindWhite(illuminant, observer, n)) return xyz.Fill(kUnset);
  const double dn = n.X + 15.0 * n.Y + 3.0 * n.Z;
  const double L = luv[0];
  const double u = luv[1] / (13.0 * L) + 4.0 * n.X / dn;
  const double v = luv[2] / (13.0 * L) + 9.0 * n.Y / dn;
  double y = L / kLuvSlope;
  if (y > kLinearLimit) {
    const double f = (L + 16.0) / 116.0;
    y = f * f * f;
  }
  const double Y = y * n.Y;
  const double X = 9.0 * Y * u / (4.0 * v);
  xyz[0] = X;
  xyz[1] = Y;
  xyz[2] = (4.0 * X / u - X - 15.0 * Y) / 3.0;
}

void XyzToHunter(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz, CLabValues& lab) {
  lab.Fill(kUnset);
  const double X = xyz[0], Y = xyz[1], Z = xyz[2];
  if (IsClassicHunter(illuminant, observer)) {
    const double root = std::sqrt(Y);
    lab[0] = 10.0 * root;
    lab[1] = 17.5 * (1.02 * X - Y) / root;
    lab[2] = 7.0 * (Y - 0.847 * Z) / root;
    return;
  }
  White n;
  if (!FindWhite(illuminant, observer, n)) return;
  const double y = Y / n.Y;
  lab[0] = 100.0 * std::sqrt(y);
  lab[1] = 175.0 * std::sqrt(0.0102 * n.X / y) * (X / n.X - y);
  lab[2] = 70.0 * std::sqrt(0.00847 * n.Z / y) * (y - Z / n.Z);
}

void HunterToXyz(vrxIlluminant illuminant, int32_t observer, const CLabValues& lab, CTrisValues& xyz) {
  const double L = lab[0], a = lab[1], b = lab[2];
  if (IsClassicHunter(illuminant, observer)) {
    const double q = L / 10.0;
    const double Y = q * q;
    xyz[0] = (a * q / 17.5 + Y) / 1.02;
    xyz[1] = Y;
    xyz[2] = (b * q / 7.0 - Y) / -0.847;
    return;
  }
  White n;
  if (!FindWhite(illuminant, observer, n)) return xyz.Fill(kUnset);
  const double Y = L * L / 10000.0 * n.Y;
  const double y = Y / n.Y;
  xyz.Fill(0.0);
  xyz[1] = Y;
  if (NearlyEqual(y, 0.0)) return;
  xyz[0] = (a / (175.0 * std::sqrt(0.0102 * n.X / y)) + y) * n.X;
  xyz[2] = (y - b / (70.0 * std::sqrt(0.00847 * n.Z / y))) * n.Z;
}

void LabDerivative(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz,
                   const CTrisValues& change, CLabValues& result) {
  White n;
  if (!FindWhite(illuminant, observer, n)) return result.Fill(kUnset);
  const double dx = ResponseDerivative(xyz[0] / n.X) * change[0] / n.X;
  const double dy = ResponseDerivative(xyz[1] / n.Y) * change[1] / n.Y;
  const double dz = ResponseDerivative(xyz[2] / n.Z) * change[2] / n.Z;
  result[0] = 116.0 * dy;
  result[1] = 500.0 * (dx - dy);
  result[2] = 200.0 * (dy - dz);
}

void Chromaticity(const CTrisValues& xyz, double& x, double& y) {
  x = y = kUnset;
  if (IsUnset(xyz)) return;
  const double sum = xyz[0] + xyz[1] + xyz[2];
  if (NearlyEqual(sum, 0.0)) return;
  x = xyz[0] / sum;
  y = xyz[1] / sum;
}

}  // namespace vrx
