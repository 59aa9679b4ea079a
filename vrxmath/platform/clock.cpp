#include <vrxmath/platform/clock.h>

#include <chrono>

namespace vrx {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr int64_t kSecondsPerDay = 86400;

constexpr int64_t SecondsOfDay(int year, unsigned month, unsigned day) {
  const sys_days date =
      year_month_day(std::chrono::year(year), std::chrono::month(month), std::chrono::day(day));
  return date.time_since_epoch().count() * kSecondsPerDay;
}

constexpr int64_t kFirstSecond = SecondsOfDay(1, 1, 1);
constexpr int64_t kEnd = SecondsOfDay(10000, 1, 1);

Clock*& ClockReplacement() {
  static Clock* clock = nullptr;
  return clock;
}

}  // namespace

Clock::~Clock() = default;

CalendarTime UtcCalendar(int64_t seconds) {
  if (seconds < kFirstSecond || seconds >= kEnd) return {};
  const int64_t ofDay = ((seconds % kSecondsPerDay) + kSecondsPerDay) % kSecondsPerDay;
  const sys_days date{days((seconds - ofDay) / kSecondsPerDay)};
  const year_month_day fields(date);
  CalendarTime time;
  time.year = static_cast<uint16_t>(static_cast<int>(fields.year()));
  time.month = static_cast<uint16_t>(static_cast<unsigned>(fields.month()));
  time.dayOfWeek = static_cast<uint16_t>(std::chrono::weekday(date).c_encoding() + 1);
  time.day = static_cast<uint16_t>(static_cast<unsigned>(fields.day()));
  time.hour = static_cast<uint16_t>(ofDay / 3600);
  time.minute = static_cast<uint16_t>(ofDay / 60 % 60);
  time.second = static_cast<uint16_t>(ofDay % 60);
  return time;
}

int64_t SecondsOfUtc(const CalendarTime& time) {
  return SecondsOfDay(time.year, time.month, time.day) + int64_t{time.hour} * 3600 +
         int64_t{time.minute} * 60 + time.second;
}

Clock& CurrentClock() {
  return ClockReplacement() != nullptr ? *ClockReplacement() : platform_internal::SystemClock();
}

void SetClock(Clock* clock) {
  ClockReplacement() = clock;
}

}  // namespace vrx
