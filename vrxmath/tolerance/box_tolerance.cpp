#include <vrxmath/tolerance/box_tolerance.h>

#include <algorithm>
#include <cmath>
#include <string_view>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/hue.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/record_archive.h>

namespace vrx {

CValueRange ToleranceRange(const CDifferenceSettings& settings, int32_t dimension) {
  constexpr CValueRange kTotalRange{0.05, 80.0, 0.05, 100.0, 2};
  if (dimension == CBoxTolData::kDimensions) return kTotalRange;
  const DifferenceSystem* system = FindDifferenceSystem(settings.system);
  if (system == nullptr) foundation_internal::ReportIndexError();
  return (system != nullptr ? *system : DifferenceSystems().front()).componentRange;
}

void CBoxTolData::SetTolerance(int32_t dimension, double plus, double minus) {
  if (dimension < 0 || dimension >= kDimensions) {
    (*this)[kTotal] = plus;
    return;
  }
  (*this)[kPlus0 + 2 * dimension] = plus;
  (*this)[kMinus0 + 2 * dimension] = minus;
}

Interval CBoxTolData::Limits(int32_t dimension) const {
  return {-(*this)[kMinus0 + 2 * dimension], (*this)[kPlus0 + 2 * dimension]};
}

void CBoxTolData::GetDimension0(double& upper, double& lower) const {
  const Interval limits = Limits(0);
  upper = limits.upper;
  lower = limits.lower;
}

void CBoxTolData::GetAll(double (&values)[kValues]) const {
  for (int32_t i = 0; i < kValues; ++i) values[i] = (*this)[i];
}

void CBoxTolData::SetAll(const double (&values)[kValues]) {
  for (int32_t i = 0; i < kValues; ++i) (*this)[i] = values[i];
}

void CBoxTolData::ClampToRanges(const CDifferenceSettings& settings) {
  for (int32_t i = 0; i < kValues; ++i) {
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
  const double offsets[kDimensions] = {d0, d1, d2};
  for (int32_t k = 0; k < kDimensions; ++k) {
    (*this)[kPlus0 + 2 * k] += offsets[k];
    (*this)[kMinus0 + 2 * k] -= offsets[k];
  }
}

bool CBoxTolData::Accepts(const Difference& difference, double factor) const {
  return ScaledAboutCentre(Limits(0), factor).Contains(difference.dL) &&
         ScaledAboutCentre(Limits(1), factor).Contains(difference.da) &&
         ScaledAboutCentre(Limits(2), factor).Contains(difference.db);
}

bool CBoxTolData::AcceptsInSector(double d0, double d1, double factor, double start, double end,
                                  double hue) const {
  return ScaledAboutCentre(Limits(1), factor).Contains(d1) &&
         ScaledAboutCentre(Limits(0), factor).Contains(d0) && HueInSector(hue, start, end);
}

double CBoxTolData::LargestLimit(bool lightnessTenfold) const {
  double largest = std::max((*this)[kPlus0], (*this)[kMinus0]);
  if (lightnessTenfold) largest *= 10.0;
  for (const int32_t i : {kPlus1, kMinus1, kPlus2, kMinus2}) largest = std::max(largest, (*this)[i]);
  return largest;
}

void CBoxTolData::SerializeValues(CArchive& archive) {
  SerializeDoubles(archive, *this, kValues);
}

bool HueInSector(double hue, double start, double end) {
  if (NearlyEqual(start, end)) return true;
  if (start < end) return start <= hue && hue <= end;
  return (start <= hue && hue <= kTwoPi) || (0.0 <= hue && hue <= end);
}

void CBlockSizeData::SerializeValues(CArchive& archive) {
  SerializeDoubles(archive, *this, kValues);
}

double BlockCode(const CBlockSizeData& blocks, const CColorValues& standard, const CColorValues& sample,
                 vrxIlluminant, int32_t, const CDifferenceSettings& settings) {
  return IsUnset(standard) ? kUnset : BlockCode(blocks, standard.Values(), sample.Values(), settings);
}

double BlockCode(const CBlockSizeData& blocks, const Color& standard, const Color& sample,
                 const CDifferenceSettings& settings) {
  if (IsUnset(standard.xyz)) return kUnset;
  const Difference d = ComputeDifference(settings, standard, sample, 0.0);
  const double components[CBlockSizeData::kValues] = {d.dL, d.da, d.db};
  uint32_t code = 0;
  for (int32_t k = 0; k < CBlockSizeData::kValues; ++k) {
    double edge = -9.0 * blocks[k] * 0.5;
    uint32_t cell = 0;
    for (; cell < 10 && !(edge > components[k]); ++cell) edge += blocks[k];
    code = code << 4 | cell;
  }
  return static_cast<double>(code & 0xFFFF);
}

std::string BlockText(int32_t code) {
  constexpr std::string_view kDigits = "0123456789A";
  std::string text;
  for (const int32_t cell : {code >> 8, code >> 4 & 0xF, code & 0xF})
    text += kDigits[static_cast<std::size_t>(cell)];
  return text;
}

}  // namespace vrx
