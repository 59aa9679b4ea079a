#include <vrxmath/platform/clock.h>

#include <vrxmath/platform/win32/win32.h>

namespace vrx {
namespace {

using platform_internal::ToSystemTime;

// FILETIME counts 100 ns from 1601-01-01, where the system's calendar begins as well.
constexpr int64_t kFirstSystemSecond = -11644473600;

CalendarTime FromSystemTime(const SYSTEMTIME& fields) {
  CalendarTime time;
  time.year = fields.wYear;
  time.month = fields.wMonth;
  time.dayOfWeek = static_cast<uint16_t>(fields.wDayOfWeek + 1);
  time.day = fields.wDay;
  time.hour = fields.wHour;
  time.minute = fields.wMinute;
  time.second = fields.wSecond;
  return time;
}

// The seconds that are added to UTC outside daylight saving.
int64_t StandardOffset() {
  TIME_ZONE_INFORMATION zone = {};
  if (::GetTimeZoneInformation(&zone) == TIME_ZONE_ID_INVALID) return 0;
  return -60 * int64_t{zone.Bias + zone.StandardBias};
}

class SystemClockOfWindows : public Clock {
 public:
  int64_t UtcSeconds() const override {
    FILETIME now = {};
    ::GetSystemTimeAsFileTime(&now);
    const uint64_t ticks = uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime;
    return static_cast<int64_t>(ticks / 10'000'000) + kFirstSystemSecond;
  }

  uint32_t Ticks() const override { return ::GetTickCount(); }

  CalendarTime ToLocal(int64_t seconds) const override {
    const CalendarTime utc = UtcCalendar(seconds);
    if (!utc.IsValid()) return {};
    const SYSTEMTIME fields = ToSystemTime(utc);
    SYSTEMTIME local = {};
    // Before the system's calendar there was no daylight saving either.
    if (seconds < kFirstSystemSecond || !::SystemTimeToTzSpecificLocalTime(nullptr, &fields, &local))
      return UtcCalendar(seconds + StandardOffset());
    return local.wYear <= 9999 ? FromSystemTime(local) : CalendarTime();
  }

  std::optional<int64_t> FromLocal(const CalendarTime& local) const override {
    if (!local.IsValid()) return std::nullopt;
    const SYSTEMTIME fields = ToSystemTime(local);
    SYSTEMTIME utc = {};
    if (local.year < 1602 || !::TzSpecificLocalTimeToSystemTime(nullptr, &fields, &utc))
      return SecondsOfUtc(local) - StandardOffset();
    return SecondsOfUtc(FromSystemTime(utc));
  }
};

}  // namespace

Clock& platform_internal::SystemClock() {
  static SystemClockOfWindows clock;
  return clock;
}

}  // namespace vrx
