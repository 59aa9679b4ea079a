// A clock that stands still until it is set, with a time zone given as a table. For tests.

#ifndef VRXMATH_PLATFORM_MEMORY_FAKE_CLOCK_H_
#define VRXMATH_PLATFORM_MEMORY_FAKE_CLOCK_H_

#include <cstddef>
#include <utility>
#include <vector>

#include <vrxmath/platform/clock.h>

namespace vrx {

/// From the moment `from` on (seconds UTC) local clocks are `offset` seconds ahead of UTC.
struct ZoneChange {
  int64_t from;
  int32_t offset;
};

class FakeClock : public Clock {
 public:
  /// `zone` is in ascending order; before its first change, and without one, local time is UTC.
  explicit FakeClock(std::vector<ZoneChange> zone = {}) : zone_(std::move(zone)) {}

  int64_t now = 0;
  uint32_t ticks = 0;

  int64_t UtcSeconds() const override { return now; }
  uint32_t Ticks() const override { return ticks; }
  CalendarTime ToLocal(int64_t seconds) const override { return UtcCalendar(seconds + OffsetAt(seconds)); }

  /// A time that clocks show twice is the first of the two; one that they skip is none.
  std::optional<int64_t> FromLocal(const CalendarTime& local) const override {
    const int64_t shown = SecondsOfUtc(local);
    int32_t offset = 0;
    for (std::size_t i = 0; i <= zone_.size(); ++i) {
      if (OffsetAt(shown - offset) == offset) return shown - offset;
      if (i < zone_.size()) offset = zone_[i].offset;
    }
    return std::nullopt;
  }

 private:
  int32_t OffsetAt(int64_t seconds) const {
    int32_t offset = 0;
    for (const ZoneChange& change : zone_) {
      if (seconds >= change.from) offset = change.offset;
    }
    return offset;
  }

  std::vector<ZoneChange> zone_;
};

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_MEMORY_FAKE_CLOCK_H_
