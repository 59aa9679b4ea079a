// Single-figure indices of a colour: whiteness, tint and yellowness of near-white samples, metamerism of a
// pair, contrast ratio of a coating.
//
// A whiteness or yellowness index exists in two forms. The direct form holds only for the illuminants and
// observers for which its coefficients were published and is unset for every other pair. The recalculated
// form takes any pair: it scales the sample's X and Z from the white of its own pair to the white of the
// published one and applies the same formula.
//
// Every index is unset for unset tristimulus values and for a pair without a weighting table where it needs
// the white point. Nothing else is checked: Y = 0 gives an infinite or NaN yellowness.

#ifndef VRXMATH_COLORIMETRY_INDICES_H_
#define VRXMATH_COLORIMETRY_INDICES_H_

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/index_formulas.h>
#include <vrxmath/export.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

// Whiteness: 100 for the perfect white, more for a bluish one. -----------------------------------------

/// ASTM E313-1973 whiteness 4B - 3G = 3.388 Z - 3 Y. Direct for C and 2 degrees.
[[nodiscard]] VRX_API double WhitenessE313(vrxIlluminant illuminant, int32_t observer,
                                           const CTrisValues& xyz);
[[nodiscard]] VRX_API double WhitenessE313Recalculated(vrxIlluminant illuminant, int32_t observer,
                                                       const CTrisValues& xyz);

/// Taube whiteness 3.3834 Z - 3 Y: 4B - 3G with B scaled by the Z of the perfect white under C instead of
/// by 0.847. Direct for C and 2 degrees.
[[nodiscard]] VRX_API double WhitenessTaube(vrxIlluminant illuminant, int32_t observer,
                                            const CTrisValues& xyz);
[[nodiscard]] VRX_API double WhitenessTaubeRecalculated(vrxIlluminant illuminant, int32_t observer,
                                                        const CTrisValues& xyz);

/// Berger whiteness. Direct for D65: Y + 3.4 Z - 3.895 X at 2 degrees, Y + 3.448 Z - 3.904 X at 10 degrees.
/// Recalculated by the former at either observer.
[[nodiscard]] VRX_API double WhitenessBerger(vrxIlluminant illuminant, int32_t observer,
                                             const CTrisValues& xyz);
[[nodiscard]] VRX_API double WhitenessBergerRecalculated(vrxIlluminant illuminant, int32_t observer,
                                                         const CTrisValues& xyz);

/// CIE whiteness W = Y + 800 (xn - x) + 1700 (yn - y) with the white point of the pair (CIE 15). `D65` is
/// the same for D65 only. Meaningful for 40 < W < 5 Y - 280. Unset for a sample without chromaticity (X + Y
/// + Z = 0).
[[nodiscard]] VRX_API double WhitenessCie(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz);
[[nodiscard]] VRX_API double WhitenessCieD65(vrxIlluminant illuminant, int32_t observer,
                                             const CTrisValues& xyz);

/// ASTM E313-20 whiteness: the CIE equation with the standard's own four-digit white points, which exist for
/// C, D65 and D50 at both observers. Recalculated: the same where there is one, else WhitenessCie.
[[nodiscard]] VRX_API double WhitenessE313Cie(vrxIlluminant illuminant, int32_t observer,
                                              const CTrisValues& xyz);
[[nodiscard]] VRX_API double WhitenessE313CieRecalculated(vrxIlluminant illuminant, int32_t observer,
                                                          const CTrisValues& xyz);

/// Stensby whiteness L - 3b + 3a and Hunter whiteness L - 3b in Hunter Lab of the pair. Hunter Lab refers to
/// the white of its pair already, so there is no second form.
[[nodiscard]] VRX_API double WhitenessStensby(vrxIlluminant illuminant, int32_t observer,
                                              const CTrisValues& xyz);
[[nodiscard]] VRX_API double WhitenessHunter(vrxIlluminant illuminant, int32_t observer,
                                             const CTrisValues& xyz);

// Tint: positive towards green, negative towards red. ---------------------------------------------------

/// CIE tint T = k (xn - x) - 650 (yn - y), k = 1000 at 2 degrees and 900 at 10 degrees; whites as for the
/// whiteness functions of the same names.
[[nodiscard]] VRX_API double TintCie(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz);
[[nodiscard]] VRX_API double TintCieD65(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz);
[[nodiscard]] VRX_API double TintE313Cie(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz);
[[nodiscard]] VRX_API double TintE313CieRecalculated(vrxIlluminant illuminant, int32_t observer,
                                                     const CTrisValues& xyz);

// Yellowness: 0 for the perfect white. ------------------------------------------------------------------

/// ASTM E313-1973 yellowness 100 (1 - 0.847 Z / Y). Direct for C and 2 degrees.
[[nodiscard]] VRX_API double YellownessE313(vrxIlluminant illuminant, int32_t observer,
                                            const CTrisValues& xyz);
[[nodiscard]] VRX_API double YellownessE313Recalculated(vrxIlluminant illuminant, int32_t observer,
                                                        const CTrisValues& xyz);

/// ASTM E313-20 yellowness 100 (Cx X - Cz Z) / Y, coefficients of four decimals. Direct for C and D65 at
/// both observers.
[[nodiscard]] VRX_API double YellownessE313Cie(vrxIlluminant illuminant, int32_t observer,
                                               const CTrisValues& xyz);
[[nodiscard]] VRX_API double YellownessE313CieRecalculated(vrxIlluminant illuminant, int32_t observer,
                                                           const CTrisValues& xyz);

/// ASTM D1925 yellowness 100 (1.28 X - 1.06 Z) / Y. Direct for C and 2 degrees.
[[nodiscard]] VRX_API double YellownessD1925(vrxIlluminant illuminant, int32_t observer,
                                             const CTrisValues& xyz);
[[nodiscard]] VRX_API double YellownessD1925Recalculated(vrxIlluminant illuminant, int32_t observer,
                                                         const CTrisValues& xyz);

/// DIN 6167 yellowness 100 (a X - b Z) / Y, coefficients of three decimals. Direct for C at 2 degrees and
/// D65 at both observers.
[[nodiscard]] VRX_API double YellownessDin6167(vrxIlluminant illuminant, int32_t observer,
                                               const CTrisValues& xyz);
[[nodiscard]] VRX_API double YellownessDin6167Recalculated(vrxIlluminant illuminant, int32_t observer,
                                                           const CTrisValues& xyz);

/// 253.1 - 620.88511 Z / (1.275 X + Y + 0.635025 Z), for C and 2 degrees only: a yellowness by the share of
/// Z. No standard that we know of publishes it; it is offered under a neutral name.
[[nodiscard]] VRX_API double IndexC2(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz);

// The list of them ---------------------------------------------------------------------------------------

enum class IndexForm { kDirect, kRecalculated };

using IndexFunction = double (*)(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz);

/// Finds what an illuminant and observer contribute to an index; false when it is not defined for them. A pair that needs a
/// weighting table and has none shows the index message.
using IndexTermsFunction = bool (*)(vrxIlluminant illuminant, int32_t observer, IndexTerms& terms);

/// The equation of an index in words.
struct IndexFormulaText {
  std::string_view formula;
  std::string_view direct;        ///< the illuminants and observers of the direct form
  std::string_view recalculated;  ///< what the other form does; empty where there is none
};

/// One index of the list: its text number, its name and its forms; a form that does not exist is null. The terms of a form,
/// with IndexValue, give what its function gives, for many samples of one pair.
struct ColorIndex {
  uint32_t label;         ///< string number
  std::string_view name;  ///< in ASCII, as a command line names it: "wi-cie"
  IndexFunction direct;
  IndexFunction recalculated;
  IndexTermsFunction directTerms;
  IndexTermsFunction recalculatedTerms;
  IndexFormulaText text;
  uint32_t columnLabel = 0;  ///< string number of the short label of the direct form, 0 for none

  IndexFunction Function(IndexForm form) const { return form == IndexForm::kDirect ? direct : recalculated; }
  IndexTermsFunction Terms(IndexForm form) const {
    return form == IndexForm::kDirect ? directTerms : recalculatedTerms;
  }
};

/// All whiteness, tint and yellowness indices in the order in which they are offered.
[[nodiscard]] VRX_API std::span<const ColorIndex> ColorIndices();

/// The label of an index. That of the recalculated form ends in "(Recalc)"; the direct form's is without it.
[[nodiscard]] VRX_API CString IndexLabel(const ColorIndex& index, IndexForm form);

/// The label for the head of a narrow column, such as "WI CIE" and, recalculated, "WI CIE (R)"; the label
/// itself for an index without one.
[[nodiscard]] VRX_API CString IndexColumnLabel(const ColorIndex& index, IndexForm form);

// Pairs ----------------------------------------------------------------------------------------------------

/// Special metamerism index, change of illuminant (CIE 15): the colour difference under `test` of two curves
/// that match under `reference`. A residual mismatch there is corrected first: the trial's X, Y and Z under
/// `test` are multiplied by the ratios of standard to trial under `reference`. `settings`: the difference
/// system, dE*ab as CIE 15 has it if not given; `angle`: the aspecular measuring angle in degrees, for the systems whose
/// weights depend on it. Unset when a curve is or a pair has no weighting table; a trial of 0 under the reference gives NaN.
[[nodiscard]] VRX_API double MetamerismIndex(vrxIlluminant reference, vrxIlluminant test, int32_t observer,
                                             const CReflData& standard, const CReflData& trial,
                                             const CDifferenceSettings& settings = {}, double angle = 45.0);
/// The same of colours: `standard` and `trial` are X, Y, Z under the reference and under `test`, in this order.
[[nodiscard]] VRX_API double MetamerismIndex(vrxIlluminant test, int32_t observer,
                                             const std::array<Xyz, 2>& standard,
                                             const std::array<Xyz, 2>& trial,
                                             const CDifferenceSettings& settings = {}, double angle = 45.0);

/// Contrast ratio of a coating: Y over black / Y over white, 1 for complete hiding (ISO 6504-3 states it in
/// percent). Unset when either record is.
[[nodiscard]] VRX_API double ContrastRatio(const CTrisValues& overBlack, const CTrisValues& overWhite);
/// Opacity: the contrast ratio in percent.
[[nodiscard]] VRX_API double Opacity(const CTrisValues& overBlack, const CTrisValues& overWhite);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_INDICES_H_
