// Optical transforms: reflectance into the quantities that add up when colorants are mixed, and back.
//
// Curves and tristimulus values are in percent; the Saunderson functions work on fractions. Internal
// reflectance is what the film would show without a surface; what the surface does to it depends on how the
// instrument was set, which SaundersonMode says. Everything here is silent: values out of range give the fixed
// answers stated.

#ifndef VRXMATH_COLORANT_OPTICAL_TRANSFORMS_H_
#define VRXMATH_COLORANT_OPTICAL_TRANSFORMS_H_

#include <cstdint>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/export.h>

namespace vrx {

/// The least internal reflectance, a fraction, that a correction gives.
inline constexpr double kLeastInternal = 0.0001;

/// The surface's part in a measured reflectance.
enum class SaundersonMode {
  kIncluded,  ///< d/8 with the specular component: what the surface reflects (k1) is part of the reading
  kExcluded,  ///< 45/0, or d/8 with a gloss trap: the reading holds only light that has been in the film
  kNone,      ///< nothing is corrected: textiles, powders, curves that are internal already
};

/// Ratio of absorption to scattering of an opaque film of reflectance R in percent: (1 - r)^2 / (2 r).
/// Formula: Kubelka and Munk (1931). Edges: 9999 when R is below 0.01 or NaN.
[[nodiscard]] VRX_API double KubelkaMunkKs(double R);

/// Reflectance, as a fraction, of an opaque film with the ratio K/S: the inverse of KubelkaMunkKs, 1 for 0
/// and 0 for infinity. Written as 1 / (1 + K/S + sqrt(K/S (K/S + 2))), which keeps its digits for dark films
/// where the usual difference cancels.
[[nodiscard]] VRX_API double KubelkaMunkReflectance(double ks);

/// Optical density log10(100 / R) of a reflectance or transmittance in percent.
/// Edges: 4.3 when R is below 0.01 or NaN, 0 when it is above 100.
[[nodiscard]] VRX_API double Absorbance(double R);

/// Internal reflectance of a measured one, both fractions: (Rm - k1) / (1 - k1 - (1 - Rm) k2) with the specular
/// component, Rm / ((1 - k1) (1 - k2) + k2 Rm) without it, Rm when nothing is corrected.
/// Formula: Saunderson (1942). Edges: a denominator below 1e-5 counts as 1e-5.
[[nodiscard]] VRX_API double SaundersonToInternal(double Rm, double k1, double k2,
                                                  SaundersonMode mode = SaundersonMode::kIncluded);

/// Measured reflectance of an internal one, both fractions: (1 - k1) (1 - k2) Ri / (1 - k2 Ri), and k1 more with the
/// specular component; Ri when nothing is corrected.
/// Formula: Saunderson (1942). Edges: a denominator below 1e-5 counts as 1e-5.
[[nodiscard]] VRX_API double SaundersonToMeasured(double Ri, double k1, double k2,
                                                  SaundersonMode mode = SaundersonMode::kIncluded);

/// Stores an internal reflectance as sample `i`, moved into 0.0001 to 2000 (NaN: 0.0001); an unset value
/// stays unset. A bad index shows the index message.
VRX_API void SetCorrectedSample(CReflData& curve, int32_t i, double value);

/// The internal reflectance, as fractions, of a measured curve in percent; all 40 samples, by
/// SetCorrectedSample. An unset sample is corrected like any value. `target` may be `source`.
VRX_API void CorrectCurve(const CReflData& source, CReflData& target, double k1, double k2,
                          SaundersonMode mode = SaundersonMode::kIncluded);

/// How many samples of a band of a measured curve in percent lie at the floor: their internal reflectance is
/// below kLeastInternal (or NaN), because they were measured darker than the surface alone. SetCorrectedSample moves
/// them all to one value, of which K/S and absorbance are large and say nothing.
/// In: first and last sample, both inclusive; samples beyond the curve do not count.
[[nodiscard]] VRX_API int32_t CountAtFloor(const CReflData& curve, int32_t first, int32_t last, double k1,
                                           double k2, SaundersonMode mode = SaundersonMode::kIncluded);

/// How many of X, Y and Z lie at the floor, by the same limit.
[[nodiscard]] VRX_API int32_t CountAtFloor(const CTrisValues& values, double k1, double k2,
                                           SaundersonMode mode = SaundersonMode::kIncluded);

}  // namespace vrx

#endif  // VRXMATH_COLORANT_OPTICAL_TRANSFORMS_H_
