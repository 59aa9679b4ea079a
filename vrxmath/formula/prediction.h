// Prediction: the reflectance curve that a formula gives.

#ifndef VRXMATH_FORMULA_PREDICTION_H_
#define VRXMATH_FORMULA_PREDICTION_H_

#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/export.h>
#include <vrxmath/formula/formula.h>

namespace vrx {

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
/// State:   components add up in the order of the system, so the order of a formula's lines has no influence
///          on the bits of the result. Nothing is allocated but the curve.
VRX_API CReflData PredictReflectance(const CDbFormula& formula, const CColorantSystemData& system);

}  // namespace vrx

#endif  // VRXMATH_FORMULA_PREDICTION_H_
