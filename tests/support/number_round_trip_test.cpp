#include <gtest/gtest.h>

#include "tests/support/posix_locales.h"
#include "tests/support/round_trip.h"

namespace vrx {
namespace {

TEST(NumberRoundTrip, TenMillionRandomValues) {
  const ScopedLocale german("de_DE");
  EXPECT_EQ(CountRoundTripFailures(10000000, 20261124), 0);
}

}  // namespace
}  // namespace vrx
