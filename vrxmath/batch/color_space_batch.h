// Many colours from one space to another (CIE 15, ASTM E308), as color_spaces.h does it for one.
//
// Views of 5 numbers hold L, a, b, chroma and hue in degrees, whatever the hue-unit flag says; views of 3 numbers hold L, a,
// b alone and are faster to fill. Unset colours stay unset. A target may lie over its source where both have the same
// numbers in the same places.
//
// Errors of every function: CInvalidArgException, before anything is written, when the two views differ in their count of
// rows, or the illuminant and observer have no weighting table. Each returns false when the progress callback stopped it.

#ifndef VRXMATH_BATCH_COLOR_SPACE_BATCH_H_
#define VRXMATH_BATCH_COLOR_SPACE_BATCH_H_

#include <cstdint>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/batch/batch_view.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/export.h>

namespace vrx {

/// XYZ to CIE L*a*b*, with or without C* and h.
VRX_API bool XyzToLabBatch(vrxIlluminant illuminant, std::int32_t observer,
                           const BatchView<const double, 3>& xyz, const BatchView<double, 5>& lab,
                           const BatchRun& run = {});
VRX_API bool XyzToLabOnlyBatch(vrxIlluminant illuminant, std::int32_t observer,
                               const BatchView<const double, 3>& xyz, const BatchView<double, 3>& lab,
                               const BatchRun& run = {});
/// CIE L*a*b* to XYZ.
VRX_API bool LabToXyzBatch(vrxIlluminant illuminant, std::int32_t observer,
                           const BatchView<const double, 3>& lab, const BatchView<double, 3>& xyz,
                           const BatchRun& run = {});

/// XYZ to CIE L*u*v*, with or without C*uv and huv, and back.
VRX_API bool XyzToLuvBatch(vrxIlluminant illuminant, std::int32_t observer,
                           const BatchView<const double, 3>& xyz, const BatchView<double, 5>& luv,
                           const BatchRun& run = {});
VRX_API bool XyzToLuvOnlyBatch(vrxIlluminant illuminant, std::int32_t observer,
                               const BatchView<const double, 3>& xyz, const BatchView<double, 3>& luv,
                               const BatchRun& run = {});
VRX_API bool LuvToXyzBatch(vrxIlluminant illuminant, std::int32_t observer,
                           const BatchView<const double, 3>& luv, const BatchView<double, 3>& xyz,
                           const BatchRun& run = {});

/// XYZ to Hunter L, a, b, and back.
VRX_API bool XyzToHunterBatch(vrxIlluminant illuminant, std::int32_t observer,
                              const BatchView<const double, 3>& xyz, const BatchView<double, 3>& lab,
                              const BatchRun& run = {});
VRX_API bool HunterToXyzBatch(vrxIlluminant illuminant, std::int32_t observer,
                              const BatchView<const double, 3>& lab, const BatchView<double, 3>& xyz,
                              const BatchRun& run = {});

/// Fills chroma and hue (degrees) of rows whose first three numbers are L, a, b. `lab` is read and written.
VRX_API bool ChromaHueBatch(const BatchView<double, 5>& lab, const BatchRun& run = {});

/// XYZ to the coordinates in which a difference system judges, as FillCoordinates.
/// CInvalidArgException for an unknown system.
VRX_API bool CoordinatesBatch(std::int32_t system, vrxIlluminant illuminant, std::int32_t observer,
                              const BatchView<const double, 3>& xyz, const BatchView<double, 5>& lab,
                              const BatchRun& run = {});

}  // namespace vrx

#endif  // VRXMATH_BATCH_COLOR_SPACE_BATCH_H_
