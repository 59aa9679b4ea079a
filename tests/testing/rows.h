// Comparing the numbers of a table row: a failure tells which element of which row is off, and by how much.

#ifndef TESTS_TESTING_ROWS_H_
#define TESTS_TESTING_ROWS_H_

#include <cmath>
#include <gtest/gtest.h>
#include <iterator>
#include <ranges>
#include <sstream>
#include <string>

namespace vrx::test {

/// For EXPECT_TRUE: succeeds when both ranges of doubles have the same length and every element of `got` is
/// within `tolerance` of `expected`, inclusive (so 0.0 asks for equality). Equal infinities match, and NaN
/// matches NaN.
template <class Got, class Expected>
testing::AssertionResult RowMatches(const std::string& label, const Got& got, const Expected& expected,
                                    double tolerance) {
  if (std::ranges::size(got) != std::ranges::size(expected)) {
    return testing::AssertionFailure() << label << ": " << std::ranges::size(got) << " elements instead of "
                                       << std::ranges::size(expected);
  }
  std::ostringstream failures;
  auto want = std::begin(expected);
  std::size_t index = 0;
  for (const double value : got) {
    const double error = std::fabs(value - *want);
    if (!(error <= tolerance || value == *want || (std::isnan(value) && std::isnan(*want)))) {
      failures << '\n'
               << label << " [" << index << "]: " << testing::PrintToString(value) << " instead of "
               << testing::PrintToString(*want) << ", off by " << error << " = " << error / tolerance
               << " tolerances";
    }
    ++want;
    ++index;
  }
  if (failures.str().empty()) return testing::AssertionSuccess();
  return testing::AssertionFailure() << failures.str();
}

}  // namespace vrx::test

#endif  // TESTS_TESTING_ROWS_H_
