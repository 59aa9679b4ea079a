#include <vrxmath/colorant/optical_transforms.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

constexpr double kDarkest = 0.01;        // percent: below it a reflectance carries no information
constexpr double kLargestKs = 9999.0;    // of such a reflectance
constexpr double kLargestDensity = 4.3;  // of such a reflectance
constexpr double kLeastDenominator = 1e-5;
constexpr double kLargestInternal = 2000.0;  // a fraction

bool IsAtFloor(double percent, double k1, double k2, SaundersonMode mode) {
  return !(SaundersonToInternal(percent * 0.01, k1, k2, mode) >= kLeastInternal);
}

}  // namespace

double KubelkaMunkKs(double R) {
  if (!(R >= kDarkest)) return kLargestKs;
  const double r = R / 100.0;
  return (1.0 - r) * (1.0 - r) / (2.0 * r);
}

double KubelkaMunkReflectance(double ks) {
  return 1.0 / (1.0 + ks + std::sqrt(ks * (ks + 2.0)));
}

double Absorbance(double R) {
  if (!(R >= kDarkest)) return kLargestDensity;
  return R > 100.0 ? 0.0 : Log10(100.0 / R);
}

double SaundersonToInternal(double Rm, double k1, double k2, SaundersonMode mode) {
  if (mode == SaundersonMode::kNone) return Rm;
  if (mode == SaundersonMode::kExcluded)
    return Rm / std::max((1.0 - k1) * (1.0 - k2) + k2 * Rm, kLeastDenominator);
  const double d = 1.0 - k1 - (1.0 - Rm) * k2;
  return (Rm - k1) / (d >= kLeastDenominator ? d : kLeastDenominator);
}

double SaundersonToMeasured(double Ri, double k1, double k2, SaundersonMode mode) {
  if (mode == SaundersonMode::kNone) return Ri;
  const double d = 1.0 - Ri * k2;
  const double returned = Ri * (1.0 - k2) * (1.0 - k1) / (d < kLeastDenominator ? kLeastDenominator : d);
  return mode == SaundersonMode::kIncluded ? k1 + returned : returned;
}

void SetCorrectedSample(CReflData& curve, int32_t i, double value) {
  if (!IsUnset(value)) {
    if (!(value >= kLeastInternal)) value = kLeastInternal;
    if (value > kLargestInternal) value = kLargestInternal;
  }
  curve[i] = value;
}

void CorrectCurve(const CReflData& source, CReflData& target, double k1, double k2, SaundersonMode mode) {
  for (int32_t i = 0; i < kWavelengths; ++i) {
    SetCorrectedSample(target, i, SaundersonToInternal(source[i] * 0.01, k1, k2, mode));
  }
}

int32_t CountAtFloor(const CReflData& curve, int32_t first, int32_t last, double k1, double k2,
                     SaundersonMode mode) {
  int32_t count = 0;
  for (int32_t i = std::max(first, 0); i <= std::min(last, kWavelengths - 1); ++i) {
    count += IsAtFloor(curve[i], k1, k2, mode);
  }
  return count;
}

int32_t CountAtFloor(const CTrisValues& values, double k1, double k2, SaundersonMode mode) {
  return IsAtFloor(values[0], k1, k2, mode) + IsAtFloor(values[1], k1, k2, mode) +
         IsAtFloor(values[2], k1, k2, mode);
}

}  // namespace vrx
