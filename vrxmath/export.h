// The export macro: VRX_API marks what a host may call.
//
// The shared library hides everything else. On Windows the macro also tells the two sides of the DLL apart:
// VRX_BUILDING is defined while the library itself is compiled, VRX_STATIC wherever it is linked statically.

#ifndef VRXMATH_EXPORT_H_
#define VRXMATH_EXPORT_H_

#include <cfloat>

// Products and sums in 80-bit registers round twice: most results would end in other bits.
static_assert(FLT_EVAL_METHOD == 0, "compile for SSE2 arithmetic: -msse2 -mfpmath=sse");

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
