// The colour of a sample, whatever kind it is of.

#ifndef TOOLS_VRX_INPUT_SAMPLE_COLOR_H_
#define TOOLS_VRX_INPUT_SAMPLE_COLOR_H_

#include <cstdint>

#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/values.h>

#include <vrxio/files/curve_reader.h>

#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {

/// The tristimulus values of a sample under an illuminant and observer, which are those of a sample that is a colour.
Xyz XyzOf(const Sample& sample, vrxIlluminant illuminant, int32_t observer);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_INPUT_SAMPLE_COLOR_H_
