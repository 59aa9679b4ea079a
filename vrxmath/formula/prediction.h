// Prediction: the reflectance curve that a formula gives, opaque or as a film over a backing.

#ifndef VRXMATH_FORMULA_PREDICTION_H_
#define VRXMATH_FORMULA_PREDICTION_H_

#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/colorant/optical_transforms.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/export.h>
#include <vrxmath/formula/formula.h>

namespace vrx {

/// How the colorants of an optical model add up.
enum class MixingLaw { kTwoConstant, kOneConstant, kNone };

/// The mixing law of an OpticalModel; kNone for models that mix by other laws (filters, radiative transfer).
[[nodiscard]] VRX_API MixingLaw MixingLawOf(int32_t opticalModel);

/// True for what scatters under the one-constant models: resins and calibration whites with levels.
[[nodiscard]] VRX_API bool IsSubstrate(const CComponent& component);

/// K and S of a unit of a component at a concentration, interpolated as in PredictReflectance. False, with `curves`
/// unchanged, for a component without levels.
[[nodiscard]] VRX_API bool ComponentConstants(const CComponent& component, double concentration,
                                              CColorantValues& curves);

/// K and S of a formula's mixture, the sums over its components of share x unit curve; see PredictReflectance for
/// the shares. False, with `sums` unchanged, when the formula cannot be predicted.
[[nodiscard]] VRX_API bool MixtureConstants(const CDbFormula& formula, const CColorantSystemData& system,
                                            CColorantValues& sums);

/// The reflectance of an opaque film made by a formula of the colour system's colorants and resins.
///
/// In:      amounts of one unit, none negative; lines of the same component add up. A component's unit
///          curves are those of the first values entry of its levels, interpolated linearly at its
///          concentration and held beyond the first and last level; levels ascend. A component without
///          levels, such as a clear resin, dilutes and adds nothing.
/// Out:     percent, with the surface; unset when a line's component is not in the system, an amount is
///          negative or not finite, K and S of a wavelength have no ratio, or the optical model mixes by other laws
///          (filters, radiative transfer).
/// Formula: two-constant Kubelka-Munk theory (Duncan 1940): K/S = sum of c K over sum of c S, with c the
///          share of the total amount. Under the one-constant models only the substrate scatters (resins and
///          calibration whites with levels): K/S = sum of a K over all lines / sum of a S over the substrate's, with the
///          concentration of a colorant its amount over that of the substrate; a formula without a substrate
///          line stands on one part of the first calibration white. Then the reflectance of an opaque film,
///          and Saunderson's surface correction with the system's k1 and k2.
///          `mode` says whether the curve holds what the surface reflects.
/// State:   components add up in the order of the system, so the order of a formula's lines has no influence
///          on the bits of the result. Nothing is allocated but the curve.
[[nodiscard]] VRX_API CReflData PredictReflectance(const CDbFormula& formula,
                                                   const CColorantSystemData& system,
                                                   SaundersonMode mode = SaundersonMode::kIncluded);

/// The reflectance of a film of finite thickness over a backing, made by a formula.
/// In:      as PredictReflectance; the backing as measured bare, in percent; the thickness in the unit of length
///          to which the colorants' K and S belong (the film of the calibration), 0 or more.
/// Out:     percent, measured in the same way as the backing; the backing itself for a thickness of 0, and what
///          PredictReflectance gives where the film hides it. Unset as there, and for a thickness that is
///          negative or not finite. Contrast ratio: that of two such curves, over black and over white.
/// Formula: FilmReflectance (Kubelka 1948) between Saunderson's corrections.
[[nodiscard]] VRX_API CReflData PredictFilm(const CDbFormula& formula, const CColorantSystemData& system,
                                            const CReflData& backing, double thickness,
                                            SaundersonMode mode = SaundersonMode::kIncluded);

}  // namespace vrx

#endif  // VRXMATH_FORMULA_PREDICTION_H_
