// What calibrations, diagnoses and searches ask of curves.

#ifndef VRXMATH_MATCHING_CURVES_H_
#define VRXMATH_MATCHING_CURVES_H_

#include <cstddef>
#include <cstdint>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/illuminants.h>

namespace vrx {

/// The samples of a curve, as a count.
inline constexpr std::size_t kSamples = kWavelengths;

/// The samples at 400 and 700 nm, between which shades are compared by their curves.
inline constexpr int32_t kFirstVisible = 4, kLastVisible = 34;

/// Whether every sample was measured: set, and a finite number.
bool IsMeasured(const CReflData& curve);

/// The total difference of CIEDE2000 of a trial's curve from a standard's, in percent both, all weights 1.
double CurveDifference(const CReflData& standard, const CReflData& trial, vrxIlluminant illuminant,
                       int32_t observer);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_CURVES_H_
