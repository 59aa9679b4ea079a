// The named arrays of plain values. The digit is the depth: a CDoubleArray3 is an array of arrays of arrays
// of doubles.

#ifndef VRXMATH_FOUNDATION_TYPED_ARRAYS_H_
#define VRXMATH_FOUNDATION_TYPED_ARRAYS_H_

#include <cstdint>

#include <vrxmath/foundation/checked_array.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

using CByteArray1 = CArrayVarex<uint8_t, uint8_t>;

using CWordArray1 = CArrayVarex<uint16_t, uint16_t>;
using CWordArray2 = CArrayVarex<CWordArray1>;
using CWordArray3 = CArrayVarex<CWordArray2>;

using CIntArray1 = CArrayVarex<int32_t, int32_t>;
using CUintArray1 = CArrayVarex<uint32_t, uint32_t>;

using CDWordArray1 = CArrayVarex<uint32_t, uint32_t>;
using CDWordArray2 = CArrayVarex<CDWordArray1>;
using CDWordArray3 = CArrayVarex<CDWordArray2>;
using CDWordArray4 = CArrayVarex<CDWordArray3>;

/// The array of doubles from which the fixed-length records derive.
using CDoubleArray1 = CArrayVarex<double, double>;
using CDoubleArray2 = CArrayVarex<CDoubleArray1>;
using CDoubleArray3 = CArrayVarex<CDoubleArray2>;
using CDoubleArray4 = CArrayVarex<CDoubleArray3>;

using CStringArray1 = CArrayVarex<CString, const WideChar*>;
using CStringArray2 = CArrayVarex<CStringArray1>;

/// A rectangle in pixels or any other whole unit.
struct CRect {
  int32_t left = 0;
  int32_t top = 0;
  int32_t right = 0;
  int32_t bottom = 0;
  bool operator==(const CRect&) const = default;
};
template <>
inline constexpr bool kHasPlainArchiveForm<CRect> = true;

using CRectArray1 = CArrayVarex<CRect>;

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_TYPED_ARRAYS_H_
