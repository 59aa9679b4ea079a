// How a kernel that is compiled once per instruction set is found at run time.
//
// A family of kernels is a struct of function pointers. The source that implements it is compiled for each set with
// VRX_LANES defined (cmake/LaneSets.cmake) and defines one specialisation:
//
//   template <>
//   const SpaceKernels& KernelsOf<SpaceKernels, VRX_LANES>() { static const SpaceKernels kernels = {...}; return kernels; }
//
// Callers write CurrentKernels<SpaceKernels>().xyzToLab(...).

#ifndef VRXMATH_NUMERIC_LANE_KERNELS_H_
#define VRXMATH_NUMERIC_LANE_KERNELS_H_

#include <vrxmath/numeric/instruction_set.h>

namespace vrx {

/// The kernels of a family for packs of `kLanes`.
template <class KERNELS, int kLanes>
const KERNELS& KernelsOf();

/// The kernels of a family for the set in use.
template <class KERNELS>
const KERNELS& CurrentKernels() {
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
  [[maybe_unused]] const InstructionSet set = CurrentInstructionSet();
#if !defined(VRX_WITHOUT_AVX512)
  if (set == InstructionSet::kAvx512) return KernelsOf<KERNELS, 8>();
#endif
#if !defined(VRX_WITHOUT_AVX2)
  if (set == InstructionSet::kAvx2) return KernelsOf<KERNELS, 4>();
#endif
#endif
#if defined(__GNUC__) && !defined(VRX_PLAIN_LANES)
  return KernelsOf<KERNELS, 2>();
#else
  return KernelsOf<KERNELS, 1>();
#endif
}

}  // namespace vrx

#endif  // VRXMATH_NUMERIC_LANE_KERNELS_H_
