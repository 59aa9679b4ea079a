#include <vrxmath/colorant/optical_transforms.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/colorant/optical_formulas.h>

namespace vrx {
namespace {

bool IsAtFloor(double percent, double k1, double k2, SaundersonMode mode) {
  return !(SaundersonToInternal(percent * 0.01, k1, k2, mode) >= kLeastInternal);
}

}  // namespace

double KubelkaMunkKs(double R) {
  return KsOfReflectance(R);
}

double KubelkaMunkReflectance(double ks) {
  return 1.0 / (1.0 + ks + std::sqrt(ks * (ks + 2.0)));
}

double Absorbance(double R) {
  return DensityOfReflectance(R);
}

double SaundersonToInternal(double Rm, double k1, double k2, SaundersonMode mode) {
  return InternalReflectance(Rm, k1, k2, mode);
}

double SaundersonToMeasured(double Ri, double k1, double k2, SaundersonMode mode) {
  return MeasuredReflectance(Ri, k1, k2, mode);
}

void SetCorrectedSample(CReflData& curve, int32_t i, double value) {
  curve[i] = CorrectedSample(value);
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
  const auto [X, Y, Z] = values.Values();
  return IsAtFloor(X, k1, k2, mode) + IsAtFloor(Y, k1, k2, mode) + IsAtFloor(Z, k1, k2, mode);
}

}  // namespace vrx
