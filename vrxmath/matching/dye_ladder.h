// Dye ladders: the constants of dyes from dyeings of one dye each on a substrate, at growing concentrations.

#ifndef VRXMATH_MATCHING_DYE_LADDER_H_
#define VRXMATH_MATCHING_DYE_LADDER_H_

#include <vrxmath/export.h>
#include <vrxmath/matching/calibration.h>

namespace vrx {

/// The build-up of one dye.
struct CDyeBuildUp {
  uint32_t componentId = kNewComponentId;
  int32_t levels = 0;
  /// The concentration, as a part of the substrate, from which more dye adds less than a quarter of what the first of it
  /// added, at the wavelength where it absorbs most; unset for a dye that keeps building up.
  double saturatesFrom = kUnset;
};
using CDyeBuildUpArray = CArrayVarex<CDyeBuildUp>;

/// Calibrates the dyes `names` on the substrate `names[settings.white]` and makes them the colorants of `system`, numbered
/// from 1 in their order: the substrate as calibration white with S = 1, each dye with one level per concentration, whose K
/// is what a unit of it adds to the K/S of the substrate. The optical model of `system` must be a one-constant one and
/// stays.
/// In:      dyeings, none of them films: their shares are amounts in any one unit, that of the substrate above 0, and of at
///          most one dye; a dyeing without dye is the bare substrate, of which there is at least one. The concentration
///          of a dye is its amount over that of the substrate, at most 1. Dyeings at one concentration, and bare ones, are
///          averaged in K/S.
/// Out:     the system, a fit per dyeing, and the build-up of each dye in the order of the system. A fit's leaveOneOut is the
///          difference from what the levels on both sides of a dyeing foresee by interpolation; unset at the ends and
///          where there is another dyeing at the same concentration. With a fault nothing is changed: kNoWhite without a
///          bare substrate, kShares for other shares than these or another model, the others as in CalibrateColorants.
/// Formula: one-constant Kubelka-Munk theory: K/S of a dyeing is that of the substrate and the concentration times the
///          dye's unit K; that this depends on the concentration is what the levels are for.
[[nodiscard]] VRX_API CalibrationOutcome CalibrateDyes(const CStringArray1& names,
                                                       const CDrawdownArray& dyeings,
                                                       const CCalibrationSettings& settings,
                                                       CColorantSystemData& system, CDrawdownFitArray& fits,
                                                       CDyeBuildUpArray& buildUps);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_DYE_LADDER_H_
