// Colour spaces: CIE L*a*b* and L*u*v* with their polar forms, Hunter Lab, chromaticity, in both directions
// (CIE 15).
//
// Every conversion takes an illuminant and observer, whose white point comes from the weighting table, and
// checks nothing: a zero denominator gives an infinity or NaN. Results are unset when the pair has no
// table. The formulas themselves are in space_formulas.h.

#ifndef VRXMATH_COLORIMETRY_COLOR_SPACES_H_
#define VRXMATH_COLORIMETRY_COLOR_SPACES_H_

#include <cstdint>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/hue.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/export.h>

namespace vrx {

/// Writes the chroma and hue of a record's a and b.
/// Formula: C = sqrt(a^2 + b^2), h = atan2(b, a); a hue less than 0.005 degrees below 360 becomes 0; grey
///          has hue 0.
VRX_API void ChromaHue(CLabValues& lab);

/// XYZ to CIE L*a*b* with C* and h. Formula: CIE 15, with the linear branch 7.787 t + 16/116 up to t =
/// 0.008856.
VRX_API void XyzToLab(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz, CLabValues& lab);
/// CIE L*a*b* to XYZ. The linear branch uses 0.137931, so a round trip through it moves a
/// dark colour by some 4e-7.
VRX_API void LabToXyz(vrxIlluminant illuminant, int32_t observer, const CLabValues& lab, CTrisValues& xyz);

/// XYZ to CIE L*u*v* with C*uv and huv. Formula: CIE 15, with 903.29 as the slope of the linear branch.
VRX_API void XyzToLuv(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz, CLabValues& luv);
/// CIE L*u*v* to XYZ. L* = 0 gives NaN.
VRX_API void LuvToXyz(vrxIlluminant illuminant, int32_t observer, const CLabValues& luv, CTrisValues& xyz);

/// XYZ to Hunter L, a, b; C and h become unset. For C and 2 degrees the fixed coefficients of the original
/// instrument's scale hold, for every other pair those scaled by its white point.
VRX_API void XyzToHunter(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz, CLabValues& lab);
VRX_API void HunterToXyz(vrxIlluminant illuminant, int32_t observer, const CLabValues& lab, CTrisValues& xyz);

/// CIE L*a*b* to DIN99 coordinates L99, a99, b99, C99, h99. Formula: DIN 6176:2001 with the factors kCH and kE, 1 each as a
/// rule.
VRX_API void LabToDin99(const CLabValues& lab, double kCH, double kE, CLabValues& din99);

/// The change dL*, da*, db* that a small change dX, dY, dZ makes at X, Y, Z: the first derivative, three
/// elements written.
VRX_API void LabDerivative(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz,
                           const CTrisValues& change, CLabValues& result);

/// Chromaticity x = X / (X + Y + Z), y likewise; both unset when the record is unset or the sum is 0.
VRX_API void Chromaticity(const CTrisValues& xyz, double& x, double& y);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_COLOR_SPACES_H_
