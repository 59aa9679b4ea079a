// The weighting table of an illuminant and observer, and its white point.

#ifndef VRXMATH_COLORIMETRY_WEIGHT_TABLES_H_
#define VRXMATH_COLORIMETRY_WEIGHT_TABLES_H_

#include <cstdint>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/export.h>

namespace vrx {

/// The 123 doubles of a pair's weighting table: 40 X, 40 Y and 40 Z weights for 360, 370 ... 750 nm, then
/// the white point. Null, after the index message, when the pair has none. Any observer other than 1 is the
/// 2 degree one. A built-in table is looked up among the resources once; every table stays in place for the
/// life of the process, that of a user illuminant with the weights registered last. Safe on any number of
/// threads.
VRX_API const double* WeightTable(vrxIlluminant illuminant, int32_t observer);

/// The white point of a pair; false, after the index message, when the pair has no table.
[[nodiscard]] VRX_API bool FindWhite(vrxIlluminant illuminant, int32_t observer, White& white);
/// The same with what else the pair contributes to a formula.
[[nodiscard]] VRX_API bool FindViewing(vrxIlluminant illuminant, int32_t observer, Viewing& viewing);

/// White point Xn, Yn, Zn of a pair on the scale Yn = 100; unset when the pair has no table.
VRX_API void WhitePoint(vrxIlluminant illuminant, int32_t observer, CTrisValues& white);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_WEIGHT_TABLES_H_
