#include <vrxmath/colorant/optical_transforms.h>

#include <cmath>

#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

constexpr double kDarkest = 0.01;        // percent: below it a reflectance carries no information
constexpr double kLargestKs = 9999.0;    // of such a reflectance
constexpr double kLargestDensity = 4.3;  // of such a reflectance
constexpr double kLeastDenominator = 1e-5;
constexpr double kLeastInternal = 0.0001;  // fractions
constexpr double kLargestInternal = 2000.0;

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

double SaundersonToInternal(double Rm, double k1, double k2) {
  const double d = 1.0 - k1 - (1.0 - Rm) * k2;
  return (Rm - k1) / (d >= kLeastDenominator ? d : kLeastDenominator);
}

double SaundersonToMeasured(double Ri, double k1, double k2) {
  const double d = 1.0 - Ri * k2;
  return k1 + Ri * (1.0 - k2) * (1.0 - k1) / (d < kLeastDenominator ? kLeastDenominator : d);
}

void SetCorrectedSample(CReflData& curve, int32_t i, double value) {
  if (!IsUnset(value)) {
    if (!(value >= kLeastInternal)) value = kLeastInternal;
    if (value > kLargestInternal) value = kLargestInternal;
  }
  curve[i] = value;
}

void CorrectCurve(const CReflData& source, CReflData& target, double k1, double k2) {
  for (int32_t i = 0; i < kWavelengths; ++i) {
    SetCorrectedSample(target, i, SaundersonToInternal(source[i] * 0.01, k1, k2));
  }
}

}  // namespace vrx
