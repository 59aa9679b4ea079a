// The shortest decimal text of a double, for rows of millions of results.

#ifndef TOOLS_VRX_OUTPUT_SHORTEST_DECIMAL_H_
#define TOOLS_VRX_OUTPUT_SHORTEST_DECIMAL_H_

namespace vrx::tool {

/// From here on, and below kLargestFastDecimal, numbers are written in whole-number arithmetic: none has a shorter text with an
/// exponent.
inline constexpr double kSmallestFastDecimal = 1e-3;
inline constexpr double kLargestFastDecimal = 1e5;

/// Writes the shortest text that reads back to `value`, of several the one nearest to it: the same characters as
/// std::to_chars without a format. Returns its end; `out` has room for 32 characters.
char* WriteShortest(double value, char* out);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_SHORTEST_DECIMAL_H_
