// The export macro, VRX_API, which marks what a host may call; and what the headers ask of a host's compiler.
//
// The shared library hides everything else. On Windows the macro also tells the two sides of the DLL apart:
// VRX_BUILDING is defined while the library itself is compiled, VRX_STATIC wherever it is linked statically.

#ifndef VRXMATH_EXPORT_H_
#define VRXMATH_EXPORT_H_

#include <cfloat>

#if (defined(_MSVC_LANG) ? _MSVC_LANG : __cplusplus) < 202002L
#error "vrxmath needs C++20 or later: -std=c++20"
#endif

// Products and sums in 80-bit registers round twice: most results would end in other bits. Method 16 differs from 0
// for half-precision numbers alone.
static_assert(FLT_EVAL_METHOD == 0 || FLT_EVAL_METHOD == 16,
              "compile for SSE2 arithmetic: -msse2 -mfpmath=sse");

#if defined(_WIN32)
#if defined(VRX_STATIC)
#define VRX_API
#elif defined(VRX_BUILDING)
#define VRX_API __declspec(dllexport)
#else
#define VRX_API __declspec(dllimport)
#endif
#else
#define VRX_API __attribute__((visibility("default")))
#endif

#endif  // VRXMATH_EXPORT_H_
