#include <vrxmath/numeric/instruction_set.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace vrx {
namespace {

#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
#define VRX_WIDE_SETS 1
#endif

// The sets that the build has beside the base (VRX_LANE_SETS in cmake/LaneSets.cmake).
#if defined(VRX_WITHOUT_AVX2)
[[maybe_unused]] constexpr bool kBuiltAvx2 = false;
#else
[[maybe_unused]] constexpr bool kBuiltAvx2 = true;
#endif
#if defined(VRX_WITHOUT_AVX512)
[[maybe_unused]] constexpr bool kBuiltAvx512 = false;
#else
[[maybe_unused]] constexpr bool kBuiltAvx512 = true;
#endif

// The set in use; negative until one was chosen.
std::atomic<std::int32_t> current{-1};

InstructionSet Widest() {
  const char* limit = std::getenv("VRX_INSTRUCTION_SET");
  bool named = false;
  for (const InstructionSet set : kInstructionSets) {
    named |= limit != nullptr && std::strcmp(limit, InstructionSetName(set)) == 0;
  }
  InstructionSet widest = InstructionSet::kBase;
  for (const InstructionSet set : kInstructionSets) {
    if (IsAvailable(set)) widest = set;
    if (named && std::strcmp(limit, InstructionSetName(set)) == 0) break;
  }
  return widest;
}

}  // namespace

bool IsAvailable(InstructionSet set) noexcept {
#if defined(VRX_WIDE_SETS)
  // The answers take into account whether the operating system keeps the registers.
  __builtin_cpu_init();
  const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  if (set == InstructionSet::kAvx2) return kBuiltAvx2 && avx2;
  if (set == InstructionSet::kAvx512) {
    return kBuiltAvx512 && avx2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
           __builtin_cpu_supports("avx512vl");
  }
#endif
  return set == InstructionSet::kBase;
}

const char* InstructionSetName(InstructionSet set) noexcept {
  if (set == InstructionSet::kAvx2) return "avx2";
  if (set == InstructionSet::kAvx512) return "avx512";
#if defined(VRX_WIDE_SETS)
  return "sse2";
#else
  return "base";
#endif
}

InstructionSet CurrentInstructionSet() noexcept {
  std::int32_t set = current.load(std::memory_order_relaxed);
  if (set < 0) {
    set = static_cast<std::int32_t>(Widest());
    current.store(set, std::memory_order_relaxed);
  }
  return static_cast<InstructionSet>(set);
}

bool UseInstructionSet(InstructionSet set) noexcept {
  if (!IsAvailable(set)) return false;
  current.store(static_cast<std::int32_t>(set), std::memory_order_relaxed);
  return true;
}

}  // namespace vrx
