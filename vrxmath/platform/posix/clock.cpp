#include <vrxmath/platform/clock.h>

#include <ctime>

namespace vrx {
namespace {

CalendarTime FromBrokenDown(const std::tm& fields) {
  const int64_t year = int64_t{fields.tm_year} + 1900;
  if (year < 1 || year > 9999) return {};
  CalendarTime time;
  time.year = static_cast<uint16_t>(year);
  time.month = static_cast<uint16_t>(fields.tm_mon + 1);
  time.dayOfWeek = static_cast<uint16_t>(fields.tm_wday + 1);
  time.day = static_cast<uint16_t>(fields.tm_mday);
  time.hour = static_cast<uint16_t>(fields.tm_hour);
  time.minute = static_cast<uint16_t>(fields.tm_min);
  time.second = static_cast<uint16_t>(fields.tm_sec);
  return time;
}

class PosixClock : public Clock {
 public:
  int64_t UtcSeconds() const override { return std::time(nullptr); }

  uint32_t Ticks() const override {
    std::timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint32_t>(int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000);
  }

  CalendarTime ToLocal(int64_t seconds) const override {
    const auto moment = static_cast<std::time_t>(seconds);
    if (moment != seconds) return {};  // a 32-bit time_t
    std::tm fields = {};
    ::tzset();
    return ::localtime_r(&moment, &fields) != nullptr ? FromBrokenDown(fields) : CalendarTime();
  }

  std::optional<int64_t> FromLocal(const CalendarTime& local) const override {
    if (!local.IsValid()) return std::nullopt;
    std::tm fields = {};
    fields.tm_year = local.year - 1900;
    fields.tm_mon = local.month - 1;
    fields.tm_mday = local.day;
    fields.tm_hour = local.hour;
    fields.tm_min = local.minute;
    fields.tm_sec = local.second;
    fields.tm_isdst = -1;
    fields.tm_wday = -1;  // set by a success: -1 is also the last second of 1969
    const std::time_t seconds = std::mktime(&fields);
    if (fields.tm_wday < 0) return std::nullopt;
    return seconds;
  }
};

}  // namespace

Clock& platform_internal::SystemClock() {
  static PosixClock clock;
  return clock;
}

}  // namespace vrx
