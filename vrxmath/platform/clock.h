// The clock: the time of day, the tick count and the local time zone, as one replaceable object.
//
// Tests set a clock of their own (memory/fake_clock.h), so that leap days, daylight-saving changes and the
// wrap of the tick count are inputs like any other.

#ifndef VRXMATH_PLATFORM_CLOCK_H_
#define VRXMATH_PLATFORM_CLOCK_H_

#include <cstdint>
#include <optional>

#include <vrxmath/export.h>

namespace vrx {

/// A moment broken down in the Gregorian calendar. The default value stands for a moment that could not be
/// broken down: date fields 0, hour, minute and second 0xFFFF.
struct CalendarTime {
  uint16_t year = 0;       ///< 1 to 9999
  uint16_t month = 0;      ///< 1 to 12
  uint16_t dayOfWeek = 0;  ///< 1 = Sunday to 7 = Saturday
  uint16_t day = 0;        ///< 1 to 31
  uint16_t hour = 0xFFFF;  ///< 0 to 23
  uint16_t minute = 0xFFFF;
  uint16_t second = 0xFFFF;  ///< 0 to 60: a leap second is shown where the system counts it
  uint16_t milliseconds = 0;
  bool operator==(const CalendarTime&) const = default;

  /// True when every field that is shown lies in its range.
  [[nodiscard]] bool IsValid() const {
    return year >= 1 && year <= 9999 && month >= 1 && month <= 12 && dayOfWeek >= 1 && dayOfWeek <= 7 &&
           day >= 1 && day <= 31 && hour <= 23 && minute <= 59 && second <= 60;
  }
};

/// Breaks down seconds since 1970-01-01 00:00 UTC in UTC. Outside the years 1 to 9999: the default value.
[[nodiscard]] VRX_API CalendarTime UtcCalendar(int64_t seconds);

/// The inverse: seconds since 1970-01-01 00:00 of the fields, read as UTC. `dayOfWeek` takes no part.
[[nodiscard]] VRX_API int64_t SecondsOfUtc(const CalendarTime& time);

/// Where the time comes from.
class VRX_API Clock {
 public:
  virtual ~Clock();
  /// Now, in seconds since 1970-01-01 00:00 UTC.
  [[nodiscard]] virtual int64_t UtcSeconds() const = 0;
  /// Milliseconds of a count that runs evenly, begins anywhere and wraps at 2^32. Differences of two counts,
  /// taken in 32 bits, are right across the wrap.
  [[nodiscard]] virtual uint32_t Ticks() const = 0;
  /// The local time of a moment; the default value where the system or the calendar cannot express it.
  [[nodiscard]] virtual CalendarTime ToLocal(int64_t seconds) const = 0;
  /// The moment at which local clocks show `local`; the system decides on daylight saving. None when there
  /// is no such moment that the system can express.
  [[nodiscard]] virtual std::optional<int64_t> FromLocal(const CalendarTime& local) const = 0;
};

/// The clock in use: the system's, unless it was replaced.
[[nodiscard]] VRX_API Clock& CurrentClock();

/// Replaces the clock for the whole process; null restores the system's. The clock must outlive its use.
VRX_API void SetClock(Clock* clock);

namespace platform_internal {
/// The operating system's clock and time zone.
Clock& SystemClock();
}  // namespace platform_internal

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_CLOCK_H_
