#include <vrxmath/colorant/strength.h>

#include <algorithm>
#include <cmath>

namespace vrx {
namespace {

constexpr double kLeastSum = 1e-7;
constexpr double kLargestPercent = 999.99;
constexpr double kLeastPercent = 0.01;
constexpr double kLargestRatio = 9.9999;

double AwayFromZero(double sum) {
  return std::fabs(sum) < kLeastSum ? kLeastSum : sum;
}

// The internal reflectance of a measured curve, in percent.
CReflData InternalPercent(const CReflData& measured, double k1, double k2, SaundersonMode mode) {
  CReflData curve;
  CorrectCurve(measured, curve, k1, k2, mode);
  for (double& sample : curve) {
    if (!IsUnset(sample)) sample *= 100.0;
  }
  return curve;
}

// A run of samples, both ends inclusive; empty when first > last.
struct Band {
  int32_t first;
  int32_t last;
};

Band WithinCurve(Band band) {
  if (band.first > band.last || (band.first >= 0 && band.last < kWavelengths)) return band;
  foundation_internal::ReportIndexError();
  return {std::max(band.first, 0), std::min(band.last, kWavelengths - 1)};
}

double SumOverBand(const CReflData& measured, double (*transform)(double), Band band, double k1, double k2,
                   SaundersonMode mode) {
  const CReflData curve = InternalPercent(measured, k1, k2, mode);
  double sum = 0.0;
  for (int32_t i = band.first; i <= band.last; ++i) sum += transform(curve[i]);
  return AwayFromZero(sum);
}

// K/S of the internal reflectance of a reading in percent.
double InternalKs(double reading, double k1, double k2, SaundersonMode mode) {
  return KubelkaMunkKs(100.0 * SaundersonToInternal(reading / 100.0, k1, k2, mode));
}

double InternalSum(const CTrisValues& values, double k1, double k2, SaundersonMode mode) {
  const auto [X, Y, Z] = values.Values();
  double sum = SaundersonToInternal(Y / 100.0, k1, k2, mode);
  sum += SaundersonToInternal(X / 100.0, k1, k2, mode);
  sum += SaundersonToInternal(Z / 100.0, k1, k2, mode);
  return sum;
}

double FilterKsSum(const CTrisValues& values, double k1, double k2, SaundersonMode mode) {
  const FilterReadings readings = ToFilterReadings(values);
  return InternalKs(readings.amber, k1, k2, mode) + InternalKs(readings.green, k1, k2, mode) +
         InternalKs(readings.blue, k1, k2, mode);
}

}  // namespace

double StrengthRatio(const CReflData& standard, const CReflData& batch, bool useAbsorbance, int32_t first,
                     int32_t last, double k1, double k2, SaundersonMode mode) {
  const auto transform = useAbsorbance ? Absorbance : KubelkaMunkKs;
  const Band band = WithinCurve({first, last});
  const double standardSum = SumOverBand(standard, transform, band, k1, k2, mode);
  return SumOverBand(batch, transform, band, k1, k2, mode) / standardSum;
}

double StrengthPercent(const CReflData& standard, const CReflData& batch, bool useAbsorbance, int32_t first,
                       int32_t last, double k1, double k2, SaundersonMode mode) {
  const double percent = 100.0 * StrengthRatio(standard, batch, useAbsorbance, first, last, k1, k2, mode);
  if (!(percent <= kLargestPercent)) return kLargestPercent;
  return percent < kLeastPercent ? kLeastPercent : percent;
}

int32_t MaximumAbsorption(const CReflData& standard, int32_t first, int32_t last, double k1, double k2,
                          SaundersonMode mode) {
  const CReflData curve = InternalPercent(standard, k1, k2, mode);
  const Band band = WithinCurve({first, last});
  int32_t index = -1;
  double largest = -1.0;
  for (int32_t i = band.first; i <= band.last; ++i) {
    const double ks = KubelkaMunkKs(curve[i]);
    if (ks > largest) {
      largest = ks;
      index = i;
    }
  }
  return index;
}

double ChromaticStrength(const CReflData& standard, const CReflData& batch, int32_t index, double k1,
                         double k2, SaundersonMode mode) {
  return StrengthPercent(standard, batch, false, index, index, k1, k2, mode);
}

double RatioPercent(double a, double b) {
  const double ratio = AwayFromZero(b) / AwayFromZero(a);
  return ratio <= kLargestRatio ? 100.0 * ratio : kLargestPercent;
}

double TristimulusStrength(const CTrisValues& standard, const CTrisValues& batch, double k1, double k2,
                           SaundersonMode mode) {
  if (IsUnset(standard) || IsUnset(batch)) return kUnset;
  return RatioPercent(InternalSum(batch, k1, k2, mode), InternalSum(standard, k1, k2, mode));
}

double ComponentStrength(const CTrisValues& standard, const CTrisValues& batch, int32_t component) {
  if (IsUnset(standard) || IsUnset(batch)) return kUnset;
  return RatioPercent(batch[component], standard[component]);
}

double LuminousStrength(const CTrisValues& standard, const CTrisValues& batch, SaundersonMode mode) {
  constexpr double k1 = 0.04;
  constexpr double k2 = 0.6;
  if (IsUnset(standard) || IsUnset(batch)) return kUnset;
  return RatioPercent(InternalKs(standard[CTrisValues::kY], k1, k2, mode),
                      InternalKs(batch[CTrisValues::kY], k1, k2, mode));
}

FilterReadings ToFilterReadings(const CTrisValues& values) {
  const auto [X, Y, Z] = values.Values();
  return {1.2746 * X - 0.21157 * Z, Y, Z / 1.1822};
}

CTrisValues FromFilterReadings(const FilterReadings& readings) {
  return {0.7846 * readings.amber + 0.196 * readings.blue, readings.green, 1.1822 * readings.blue};
}

double PseudoTristimulusStrength(const CTrisValues& standard, const CTrisValues& batch, double k1, double k2,
                                 SaundersonMode mode) {
  if (IsUnset(standard) || IsUnset(batch)) return kUnset;
  return RatioPercent(FilterKsSum(standard, k1, k2, mode), FilterKsSum(batch, k1, k2, mode));
}

CTrisValues AdjustedToStrength(const CTrisValues& standard, const CTrisValues& batch, double k1, double k2,
                               SaundersonMode mode) {
  if (IsUnset(standard) || IsUnset(batch)) return {};
  const double strength =
      AwayFromZero(FilterKsSum(batch, k1, k2, mode)) / AwayFromZero(FilterKsSum(standard, k1, k2, mode));
  const auto adjusted = [&](double reading) {
    const double internal = KubelkaMunkReflectance(InternalKs(reading, k1, k2, mode) / strength);
    return 100.0 * SaundersonToMeasured(internal, k1, k2, mode);
  };
  const FilterReadings readings = ToFilterReadings(batch);
  return FromFilterReadings({adjusted(readings.amber), adjusted(readings.green), adjusted(readings.blue)});
}

}  // namespace vrx
