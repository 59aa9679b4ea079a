#include <vrxmath/tolerance/box_tolerance.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/record_archive.h>

namespace vrx {
Verdict GradeTotal(double value, double limit, double warningFactor) {
  if (value > limit) return kFail;
  return value > limit * warningFactor ? kWarning : kPass;
}

CValueRange ToleranceRange(const CDifferenceSettings& settings, int32_t dimension) {
  if (dimension == 3) return {0.05, 80.0, 0.05, 100.0, 2};
  if (settings.system == vrxSystemXyz) return {-999.9, 999.9, 1.0, 10.0, 1};
  return {-80.0, 80.0, 0.05, 100.0, 2};
}

void CBoxTolData::SetTolerance(int32_t dimension, double plus, double minus) {
  if (dimension < 0 || dimension > 2) {
    (*this)[6] = plus;
    return;
  }
  (*this)[2 * dimension] = plus;
  (*this)[2 * dimension + 1] = minus;
}

Interval CBoxTolData::Limits(int32_t dimension) const {
  return {-(*this)[2 * dimension + 1], (*this)[2 * dimension]};
}

void CBoxTolData::GetDimension0(double& upper, double& lower) const {
  const Interval limits = Limits(0);
  upper = limits.upper;
  lower = limits.lower;
}

void CBoxTolData::GetAll(double (&values)[7]) const {
  for (int32_t i = 0; i < 7; ++i) values[i] = (*this)[i];
}

void CBoxTolData::SetAll(const double (&values)[7]) {
  for (int32_t i = 0; i < 7; ++i) (*this)[i] = values[i];
}

void CBoxTolData::ClampToRanges(const CDifferenceSettings& settings) {
  for (int32_t i = 0; i < 7; ++i) {
    const CValueRange range = ToleranceRange(settings, i / 2);
    (*this)[i] = std::clamp((*this)[i], range.lower, range.upper);
  }
}

int32_t CBoxTolData::GetInteger(int32_t i, const CDifferenceSettings& settings) const {
  const double scaled = (*this)[i] * ToleranceRange(settings, i / 2).scale;
  const double rounded = scaled >= 0.0 ? scaled + 0.5 : scaled - 0.5;
  // A limit beyond 32 bits ends at the nearest whole number there is; NaN counts as 0.
  if (std::isnan(rounded)) return 0;
  return static_cast<int32_t>(std::clamp(rounded, -2147483648.0, 2147483647.0));
}

void CBoxTolData::SetFromInteger(int32_t i, int16_t whole, const CDifferenceSettings& settings) {
  (*this)[i] = whole / ToleranceRange(settings, i / 2).scale;
}

void CBoxTolData::OffsetBy(double d0, double d1, double d2) {
  const double offsets[] = {d0, d1, d2};
  for (int32_t k = 0; k < 3; ++k) {
    (*this)[2 * k] += offsets[k];
    (*this)[2 * k + 1] -= offsets[k];
  }
}

bool CBoxTolData::Accepts(const CDeltaValues& delta, double factor) const {
  for (const int32_t k : {1, 2, 0}) {
    if (!ScaledAboutCentre(Limits(k), factor).Contains(delta[k])) return false;
  }
  return true;
}

bool CBoxTolData::AcceptsInSector(double d0, double d1, double factor, double start, double end,
                                  double hue) const {
  return ScaledAboutCentre(Limits(1), factor).Contains(d1) &&
         ScaledAboutCentre(Limits(0), factor).Contains(d0) && HueInSector(hue, start, end);
}

double CBoxTolData::LargestLimit(bool lightnessTenfold) const {
  double largest = std::max((*this)[0], (*this)[1]);
  if (lightnessTenfold) largest *= 10.0;
  for (int32_t i = 2; i <= 5; ++i) largest = std::max(largest, (*this)[i]);
  return largest;
}

void CBoxTolData::SerializeValues(CArchive& archive) {
  SerializeDoubles(archive, *this, 7);
}

bool HueInSector(double hue, double start, double end) {
  if (NearlyEqual(start, end)) return true;
  if (start < end) return start <= hue && hue <= end;
  return (start <= hue && hue <= kTwoPi) || (0.0 <= hue && hue <= end);
}

void CBlockSizeData::SerializeValues(CArchive& archive) {
  SerializeDoubles(archive, *this, 3);
}

double BlockCode(const CBlockSizeData& blocks, const CColorValues& standard, const CColorValues& sample,
                 vrxIlluminant illuminant, int32_t observer, const CDifferenceSettings& settings) {
  if (IsUnset(standard)) return kUnset;
  CDeltaValues delta;
  ComputeDifference(settings, illuminant, observer, standard, sample, 0.0, delta);
  uint32_t code = 0;
  for (int32_t k = 0; k < 3; ++k) {
    double edge = -9.0 * blocks[k] * 0.5;
    uint32_t cell = 0;
    for (; cell < 10 && !(edge > delta[k]); ++cell) edge += blocks[k];
    code = code << 4 | cell;
  }
  return static_cast<double>(code & 0xFFFF);
}

}  // namespace vrx
