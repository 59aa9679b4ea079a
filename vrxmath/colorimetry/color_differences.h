// Colour differences: sample minus standard, weighted where a system weights them by the standard.
//
// The functions over records. Chroma and hue of the colours must be filled, as the conversions of color_spaces.h, the
// constructor CLabValues(L, a, b) and ChromaHue fill them: a record in which they are unset gives a plausible, wrong
// difference. Nothing is validated: a zero weight (l, c, kL ...) gives an infinity or NaN. The formulas themselves are in
// difference_formulas.h and cie2000_formulas.h.

#ifndef VRXMATH_COLORIMETRY_COLOR_DIFFERENCES_H_
#define VRXMATH_COLORIMETRY_COLOR_DIFFERENCES_H_

#include <array>
#include <cstdint>

#include <vrxmath/colorimetry/cie2000_formulas.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/export.h>

namespace vrx {

/// CIE 1976 difference of two colours in L*a*b* or L*u*v*. All seven elements: dL, da, db, dL again, dC,
/// dH, dE. Formula: CIE 15. dH = sqrt(dE^2 - dL^2 - dC^2), 0 where that is not positive; it is negative
/// when the sample lies clockwise from the standard. Reads the chroma of both records.
VRX_API void DeltaEab(const CLabValues& standard, const CLabValues& sample, CDeltaValues& delta);

/// CMC(l:c) weights at the standard, from its L*, C* and h. Formula: BS 6923, ISO 105-J03. L* = 16 takes the formula, below it SL
/// is 0.511; the hues 164 and 345 belong to the blue branch.
[[nodiscard]] VRX_API DifferenceWeights CmcWeights(const CLabValues& standard);
/// Replaces elements 3 to 6 of a record from DeltaEab by dL/(l SL), dC/(c SC), dH/SH and their root sum of
/// squares. The commercial factor takes no part.
VRX_API void DeltaCmc(const CLabValues& standard, double l, double c, CDeltaValues& delta);

/// CIE94 weights at the standard. Formula: CIE 116, with the standard's own chroma.
[[nodiscard]] VRX_API DifferenceWeights Cie94Weights(const CLabValues& standard);
/// Replaces elements 3 to 6 of a record from DeltaEab by dL/(kL SL), dC/(kC SC), dH/(kH SH) and dE94.
VRX_API void DeltaCie94(const CLabValues& standard, double kL, double kC, double kH, CDeltaValues& delta);

/// CIEDE2000 weights of a pair, with copies of both colours whose a, C and h are the primed ones (h in
/// degrees). Formula: ISO/CIE 11664-6.
[[nodiscard]] VRX_API Cie2000Terms Cie2000Weights(const CLabValues& standard, const CLabValues& sample,
                                                  CLabValues& primedStandard, CLabValues& primedSample);
/// Writes elements 3 to 6: dL', dC', dH' (not divided by their weights) and dE00. With hues exactly 180
/// degrees apart the mean hue, and so the result, hangs on the last digits of pi; see docs/colour_notes.md.
VRX_API void DeltaCie2000(const CLabValues& standard, const CLabValues& sample, double kL, double kC,
                          double kH, CDeltaValues& delta);

/// FMC-2 difference in MacAdam units: elements 0 to 2 dL, drg, dyb; 4 dC; 6 dE; 3 and 5 unset.
/// Formula: Chickering's FMC-2 (ASTM D2244-85), at the standard.
VRX_API void DeltaFmc2(const CTrisValues& standard, const CTrisValues& sample, CDeltaValues& delta);

/// GE-PQS II: elements 0 to 2 are 100 dY / Y of the standard, 10000 dx and 10000 dy; 6 is the chromaticity
/// difference in MacAdam units by the FMC-2 chromaticity term at the standard; the others are unset. No
/// formula of this system was published: the definition is ours, from its column headings.
VRX_API void DeltaGePqs2(const CTrisValues& standard, const CTrisValues& sample, CDeltaValues& delta);

/// Audi L*a*b*: replaces element 6 of a record from DeltaEab. `angle`: aspecular measuring angle in
/// degrees; 0 counts as 1.
/// Formula: the Audi 2000 weights for effect paints, which widen towards the gloss. Reds below 10 degrees of
///          hue (18 above L* = 27) are judged by da* and db* instead of dC* and dH*.
VRX_API void DeltaAudi(const CLabValues& standard, double angle, CDeltaValues& delta);

/// DIN 6175-2: replaces element 6 of a record from DeltaEab. `angle` as for DeltaAudi; gL, gC, gH divide
/// the weights in.
VRX_API void DeltaDin6175(const CLabValues& standard, double gL, double gC, double gH, double angle,
                          CDeltaValues& delta);

/// DIN99 difference: dL99, da99, db99, dL99 again, dC99, dH99, dE99.
/// Formula: DIN 6176:2001 with the factors kCH and kE. dH99 has the sign of DeltaEab's rule in the a99-b99
///          plane.
VRX_API void DeltaDin99(const CLabValues& standard, const CLabValues& sample, double kCH, double kE,
                        CDeltaValues& delta);

/// Converts tristimulus values into the space in which a system judges (DifferenceSystem::space): L*a*b* for a number that no
/// system has. `color.lab` is unset when the values are.
VRX_API void FillCoordinates(int32_t system, vrxIlluminant illuminant, int32_t observer, CColorValues& color);

/// The same over values, of which the tristimulus values are set. False, after the index message, for a pair without a
/// weighting table.
[[nodiscard]] VRX_API bool FillCoordinates(int32_t system, vrxIlluminant illuminant, int32_t observer,
                                           Color& color);

/// The difference of two colours in one of the systems, over values: both with the coordinates of the system
/// (Coordinates). `angle`: the aspecular measuring angle in degrees, for Audi and DIN 6175-2. kUnsetDifference when the
/// tristimulus values of either are unset. A number that no system has is dE*ab.
[[nodiscard]] VRX_API Difference ComputeDifference(const CDifferenceSettings& settings, const Color& standard,
                                                   const Color& sample, double angle);

/// Which of the seven elements of a difference a system fills, in the order of CDeltaValues; the others are unset for every
/// pair.
[[nodiscard]] VRX_API std::array<bool, 7> FilledElements(const CDifferenceSettings& settings);

/// Number of a pseudo-system of ComputeDifference that gives the sample's chromaticity x, y as elements 0
/// and 1.
inline constexpr int32_t kSystemChromaticity = 100;

/// The difference of two colours in a system of the table.
/// In:  both colours with the coordinates of the system (FillCoordinates); the settings' parameters in the
///      order of the system's name; `angle`, the aspecular measuring angle in degrees, for Audi and
///      DIN6175.
/// Out: the elements as the system's own function fills them. Hunter: dL, da, db and dE. XYZ/Yxy: 10 dX, 10
///      dY, 10 dZ, 10000 dx, 10000 dy (elements 4 and 5, within 999.99), dE*ab. L*C*h is dE*ab, and so is DIN99
///      unless the settings ask for its own formula (`ownFormula`). A number that no system has is dE*ab of the
///      coordinates. All seven unset when either colour is.
VRX_API void ComputeDifference(const CDifferenceSettings& settings, vrxIlluminant illuminant,
                               int32_t observer, const CColorValues& standard, const CColorValues& sample,
                               double angle, CDeltaValues& delta);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_COLOR_DIFFERENCES_H_
