// The kernel of decimal_run.cpp, one per instruction set (numeric/lane_kernels.h).

#ifndef TOOLS_VRX_OUTPUT_DECIMAL_KERNELS_H_
#define TOOLS_VRX_OUTPUT_DECIMAL_KERNELS_H_

#include <cstddef>
#include <cstdint>

#include <vrxmath/numeric/lane_kernels.h>

namespace vrx::tool {

struct DecimalKernels {
  /// The digits of numbers, as DecimalRun keeps them. `count` is a multiple of eight.
  void (*find)(const double* numbers, std::size_t count, std::uint64_t* starts, std::uint64_t* middles,
               std::uint64_t* ends);
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_DECIMAL_KERNELS_H_
