#include "tools/vrx/input/sample_color.h"

#include <algorithm>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/fine_weights.h>

namespace vrx::tool {

Xyz XyzOf(const Sample& sample, vrxIlluminant illuminant, int32_t observer) {
  CTrisValues xyz;
  if (sample.kind == Sample::kXyz) {
    std::ranges::copy(sample.color, xyz.begin());
  } else if (sample.kind == Sample::kLab) {
    CLabValues lab;
    for (int32_t k = 0; k < 3; ++k) lab[k] = sample.color[static_cast<std::size_t>(k)];
    LabToXyz(illuminant, observer, lab, xyz);
  } else if (sample.fine.empty()) {
    sample.curve.Tristimulus(illuminant, observer, xyz);
  } else if (Xyz sums; FineTristimulus(sample.fine, sample.Interval(), illuminant, observer, sums)) {
    return sums;
  }
  return {xyz[0], xyz[1], xyz[2]};
}

}  // namespace vrx::tool
