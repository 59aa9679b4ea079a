#include "tools/vrx/base/build_facts.h"

#include <vrxmath/numeric/instruction_set.h>

// Numbers of the preprocessor as text.
#define VRX_TEXT_OF(number) #number
#define VRX_NUMBER(number) VRX_TEXT_OF(number)

namespace vrx::tool {
namespace {

// The compiler's __VERSION__ has words in it that differ between distributions.
#if defined(__clang__)
constexpr const char* kCompiler = "clang++ " VRX_NUMBER(__clang_major__) "." VRX_NUMBER(
    __clang_minor__) "." VRX_NUMBER(__clang_patchlevel__);
#elif defined(__GNUC__)
constexpr const char* kCompiler =
    "g++ " VRX_NUMBER(__GNUC__) "." VRX_NUMBER(__GNUC_MINOR__) "." VRX_NUMBER(__GNUC_PATCHLEVEL__);
#else
constexpr const char* kCompiler = "unknown 0";
#endif

#if defined(_LIBCPP_VERSION)
constexpr const char* kStandardLibrary = "libc++ " VRX_NUMBER(_LIBCPP_VERSION);
#elif defined(_GLIBCXX_RELEASE)
constexpr const char* kStandardLibrary = "libstdc++ " VRX_NUMBER(_GLIBCXX_RELEASE);
#else
constexpr const char* kStandardLibrary = "unknown 0";
#endif

#if defined(__x86_64__)
#define VRX_PROCESSOR "x86_64"
#elif defined(__i386__)
#define VRX_PROCESSOR "i686"
#elif defined(__aarch64__)
#define VRX_PROCESSOR "aarch64"
#elif defined(__wasm__)
#define VRX_PROCESSOR "wasm32"
#else
#define VRX_PROCESSOR "other"
#endif

#if defined(_WIN32)
constexpr const char* kTarget = VRX_PROCESSOR "-windows";
#elif defined(__EMSCRIPTEN__)
constexpr const char* kTarget = VRX_PROCESSOR "-emscripten";
#elif defined(__linux__)
constexpr const char* kTarget = VRX_PROCESSOR "-linux";
#else
constexpr const char* kTarget = VRX_PROCESSOR "-other";
#endif

}  // namespace

std::string BuildFacts() {
  std::string text;
  text.append("compiled by ").append(kCompiler).append(" for ").append(kTarget);
  text.append(", C++ library ").append(kStandardLibrary);
  text.append("\ninstruction sets: ")
      .append(InstructionSetName(InstructionSet::kBase))
      .append(VRX_WIDER_SETS);
  return text.append("; in use: ").append(InstructionSetName(CurrentInstructionSet()));
}

}  // namespace vrx::tool
