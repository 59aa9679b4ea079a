// Which of the processor's instruction sets the kernels for many numbers at once use. Every set gives the same bits.
//
// The widest that the processor has is chosen when a kernel is first needed, without help from the loader. The
// environment variable VRX_INSTRUCTION_SET (sse2, avx2, avx512) sets an upper limit, for measurements and for doubts about
// a machine; a name that is unknown or beyond the processor changes nothing.

#ifndef VRXMATH_NUMERIC_INSTRUCTION_SET_H_
#define VRXMATH_NUMERIC_INSTRUCTION_SET_H_

#include <cstdint>

#include <vrxmath/export.h>

namespace vrx {

/// The sets, narrowest first. kBase is what every processor of the platform has: SSE2 on x86, NEON on 64-bit ARM. kAvx2 is AVX2
/// with FMA; kAvx512 has F, DQ and VL, too.
enum class InstructionSet : std::int32_t { kBase = 0, kAvx2 = 1, kAvx512 = 2 };

/// The sets in order, for loops over those that are available.
inline constexpr InstructionSet kInstructionSets[] = {InstructionSet::kBase, InstructionSet::kAvx2,
                                                      InstructionSet::kAvx512};

/// True when this build and this processor have the set.
[[nodiscard]] VRX_API bool IsAvailable(InstructionSet set) noexcept;

/// "sse2", "avx2", "avx512"; "base" where the first is not SSE2.
VRX_API const char* InstructionSetName(InstructionSet set) noexcept;

/// The set in use.
[[nodiscard]] VRX_API InstructionSet CurrentInstructionSet() noexcept;

/// Uses a set from now on, in every thread. False, and nothing changes, when it is not available.
VRX_API bool UseInstructionSet(InstructionSet set) noexcept;

}  // namespace vrx

#endif  // VRXMATH_NUMERIC_INSTRUCTION_SET_H_
