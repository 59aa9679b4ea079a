// Single figures of many tristimulus values: whiteness, tint and yellowness indices, and the colour on a display.
//
// Errors of every function: CInvalidArgException, before anything is written, for counts that do not fit and for an
// illuminant and observer without a weighting table. Each returns false when the progress callback stopped it.

#ifndef VRXMATH_BATCH_COLOR_VALUE_BATCH_H_
#define VRXMATH_BATCH_COLOR_VALUE_BATCH_H_

#include <cstdint>
#include <span>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/batch/batch_view.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/export.h>

namespace vrx {

/// An index (a function of indices.h, or one of ColorIndices) of every row. Unset where the index is.
VRX_API bool IndexBatch(IndexFunction index, vrxIlluminant illuminant, std::int32_t observer,
                        const BatchView<const double, 3>& xyz, std::span<double> values,
                        const BatchRun& run = {});

/// The 8-bit red, green and blue of every row, as XyzToDisplayRgb. `displayable`: 1 where the display can show the colour,
/// else 0; may be empty.
VRX_API bool DisplayColorBatch(vrxIlluminant illuminant, std::int32_t observer,
                               const BatchView<const double, 3>& xyz, const BatchView<std::uint8_t, 3>& rgb,
                               std::span<std::uint8_t> displayable = {}, const BatchRun& run = {});

}  // namespace vrx

#endif  // VRXMATH_BATCH_COLOR_VALUE_BATCH_H_
