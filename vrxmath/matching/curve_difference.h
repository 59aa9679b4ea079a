// CIEDE2000 between two curves, by which calibrations, diagnoses and predictions state how far off they are.

#ifndef VRXMATH_MATCHING_CURVE_DIFFERENCE_H_
#define VRXMATH_MATCHING_CURVE_DIFFERENCE_H_

#include <cstdint>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/illuminants.h>

namespace vrx {

/// The total difference of a trial's curve from a standard's, in percent both, all weights 1.
double CurveDifference(const CReflData& standard, const CReflData& trial, vrxIlluminant illuminant,
                       int32_t observer);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_CURVE_DIFFERENCE_H_
