// The value range: what a number that a user edits may be, and how it is shown and stored.

#ifndef VRXMATH_FOUNDATION_VALUE_RANGE_H_
#define VRXMATH_FOUNDATION_VALUE_RANGE_H_

#include <cstdint>

namespace vrx {

/// Limits, step and decimals of an edited number.
struct CValueRange {
  double lower = -1000000.0;
  double upper = 1000000.0;
  double increment = 1.0;  ///< one step of a spin button
  double scale = 100.0;    ///< 10 to the power of `decimals`: value x scale is the stored whole number
  int32_t decimals = 2;
  bool operator==(const CValueRange&) const = default;
};

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_VALUE_RANGE_H_
