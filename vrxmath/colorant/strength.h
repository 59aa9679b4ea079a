// Strength: how much colour a batch of a colorant gives compared with the standard, in percent.
//
// Both are measured in the same let-down, so that only their strength differs. The forms, by what they look
// at:
//
//   apparent              StrengthPercent          sum of K/S, or of absorbance, over a band of the spectrum
//   chromatic             ChromaticStrength        K/S at one wavelength: where the standard absorbs most
//                                                  (MaximumAbsorption), or one that the user chose
//   luminous              LuminousStrength         K/S of Y
//   pseudo-tristimulus    PseudoTristimulusStrength  K/S of amber, green and blue reflectances
//   tristimulus           TristimulusStrength      sum of the corrected X, Y and Z
//   component             ComponentStrength        one of X, Y, Z as it is
//
// A stronger batch reads above 100 in every form. Strengths are capped at 999.99. Nothing is reported:
// vanishing quantities count as 1e-7, unset tristimulus values give the unset value. A reading darker than the
// surface alone has no internal reflectance; its K/S is that of the floor and swamps every sum that it enters.
// CountAtFloor (optical_transforms.h) tells of such readings, and another SaundersonMode may be what fits them.

#ifndef VRXMATH_COLORANT_STRENGTH_H_
#define VRXMATH_COLORANT_STRENGTH_H_

#include <cstdint>

#include <vrxmath/colorant/optical_transforms.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/export.h>

namespace vrx {

/// Sum over a band of the batch over that of the standard, of K/S (or absorbance) of the internal reflectance.
/// In:    curves in percent; first and last sample of the band, both inclusive, 0 to 39; Saunderson's k1, k2.
/// Edges: sums of magnitude below 1e-7 count as +1e-7, so that an empty band (first > last) gives 1.
///        A band beyond the curve shows the index message, and the samples that exist count.
[[nodiscard]] VRX_API double StrengthRatio(const CReflData& standard, const CReflData& batch,
                                           bool useAbsorbance, int32_t first, int32_t last, double k1,
                                           double k2, SaundersonMode mode = SaundersonMode::kIncluded);

/// The ratio in percent, within 0.01 to 999.99 (NaN: 999.99): over the visible band, the apparent strength.
[[nodiscard]] VRX_API double StrengthPercent(const CReflData& standard, const CReflData& batch,
                                             bool useAbsorbance, int32_t first, int32_t last, double k1,
                                             double k2, SaundersonMode mode = SaundersonMode::kIncluded);

/// Index of the sample in the band at which the standard absorbs most: largest K/S of its internal
/// reflectance, the first of equals. -1 for an empty band.
[[nodiscard]] VRX_API int32_t MaximumAbsorption(const CReflData& standard, int32_t first, int32_t last,
                                                double k1, double k2,
                                                SaundersonMode mode = SaundersonMode::kIncluded);

/// Strength by K/S at one sample, as StrengthPercent gives it for the band that holds only that sample.
[[nodiscard]] VRX_API double ChromaticStrength(const CReflData& standard, const CReflData& batch,
                                               int32_t index, double k1, double k2,
                                               SaundersonMode mode = SaundersonMode::kIncluded);

/// 100 b / a, capped at 999.99 (also for NaN); there is no lower limit. Values of magnitude below 1e-7 count
/// as +1e-7.
[[nodiscard]] VRX_API double RatioPercent(double a, double b);

/// Sum of the internal X, Y and Z of the standard over that of the batch, in percent.
[[nodiscard]] VRX_API double TristimulusStrength(const CTrisValues& standard, const CTrisValues& batch,
                                                 double k1, double k2,
                                                 SaundersonMode mode = SaundersonMode::kIncluded);

/// One component, 0 to 2, of the standard over that of the batch, in percent, without surface correction. A
/// bad index shows the index message.
[[nodiscard]] VRX_API double ComponentStrength(const CTrisValues& standard, const CTrisValues& batch,
                                               int32_t component);

/// K/S of the internal Y, with Saunderson's constants 0.04 and 0.6, of the batch over that of the standard,
/// in percent.
[[nodiscard]] VRX_API double LuminousStrength(const CTrisValues& standard, const CTrisValues& batch,
                                              SaundersonMode mode = SaundersonMode::kIncluded);

/// The readings of a colorimeter with amber, green and blue filters, in percent: X comes from a long and a short
/// wavelength band, and the two are told apart.
struct FilterReadings {
  double amber;
  double green;
  double blue;
};

/// Amber = 1.2746 X - 0.21157 Z, green = Y, blue = Z / 1.1822.
/// Formula: the three-filter colorimeter under illuminant C (Hunter, NBS Circular C429, 1942).
[[nodiscard]] VRX_API FilterReadings ToFilterReadings(const CTrisValues& values);

/// X = 0.7846 amber + 0.196 blue, Y = green, Z = 1.1822 blue. The constants have four digits: there and back
/// restores X within 0.0004 of its value.
[[nodiscard]] VRX_API CTrisValues FromFilterReadings(const FilterReadings& readings);

/// Sum of K/S of the three internal filter readings of the batch over that of the standard, in percent.
[[nodiscard]] VRX_API double PseudoTristimulusStrength(const CTrisValues& standard, const CTrisValues& batch,
                                                       double k1, double k2,
                                                       SaundersonMode mode = SaundersonMode::kIncluded);

/// The colour that a batch would have at the strength of the standard: K/S of each internal filter reading
/// divided by the pseudo-tristimulus strength, and back to tristimulus values. What then remains as a
/// difference is not a matter of strength. Unset when either is unset.
[[nodiscard]] VRX_API CTrisValues AdjustedToStrength(const CTrisValues& standard, const CTrisValues& batch,
                                                     double k1, double k2,
                                                     SaundersonMode mode = SaundersonMode::kIncluded);

}  // namespace vrx

#endif  // VRXMATH_COLORANT_STRENGTH_H_
