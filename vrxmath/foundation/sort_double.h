// Numbers that remember their places while they are sorted.

#ifndef VRXMATH_FOUNDATION_SORT_DOUBLE_H_
#define VRXMATH_FOUNDATION_SORT_DOUBLE_H_

#include <cstddef>
#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/foundation/checked_array.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/platform/archive.h>

namespace vrx {

/// A value with the place that it came from, so that a list can be sorted and still point back.
struct VRX_API CSortDouble {
  double value = kUnset;
  int32_t index = -1;  ///< place in the unsorted list; -1 means none

  bool operator==(const CSortDouble& other) const {
    return NearlyEqual(value, other.value) && index == other.index;
  }

  /// Archive form: value (64 bits), index (32 bits). Throws as CArchive does; the record is
  /// then unchanged.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 12;
};

using CSortDoubleArray = CArrayVarex<CSortDouble>;

/// Sorts by value, ascending; equal values keep their order, and NaN comes last.
VRX_API void SortByValue(CSortDoubleArray& values);

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_SORT_DOUBLE_H_
