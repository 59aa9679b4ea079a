#include <vrxmath/support/date_time.h>

#include <algorithm>
#include <string>

#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/locale.h>
#include <vrxmath/platform/message_box.h>
#include <vrxmath/platform/resources.h>

namespace vrx {
namespace {

constexpr WideView kTimeLetters = u"hHmst";
constexpr WideView kTimeLettersAndBlank = u"hHmst ";
constexpr WideView kPatternLetters = u"n'";

constexpr int kFirstYear = 1970;
constexpr int kLastYear = 2037;

CalendarTime LocalTimeOf(std::optional<int64_t> time) {
  const Clock& clock = CurrentClock();
  return clock.ToLocal(time ? *time : clock.UtcSeconds());
}

bool Assign(CString& out, const std::optional<CString>& text) {
  out = text.value_or(CString());
  return text.has_value();
}

CString Digits(uint32_t value, std::size_t width) {
  std::string digits = std::to_string(value);
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  return CString::FromUtf8(digits);
}

// The longest beginning of `text` without, or of nothing but, the units of `set`.
WideView PrefixWithout(WideView text, WideView set) {
  return text.substr(0, text.find_first_of(set));
}
WideView PrefixOf(WideView text, WideView set) {
  return text.substr(0, text.find_first_not_of(set));
}

// A piece of a pattern is taken off its front and appended; false ends the pattern.
class PatternExpander {
 public:
  PatternExpander(CString& out, WideView pattern, uint32_t number, std::optional<int64_t> time)
      : out_(out), pattern_(pattern), number_(number), time_(LocalTimeOf(time)) {}

  bool Expand() {
    while (!pattern_.empty()) {
      if (!ExpandPictures() || !ExpandApostrophes()) return false;
      ExpandNumber();
    }
    return true;
  }

 private:
  WideView Take(WideView prefix) {
    pattern_.remove_prefix(prefix.size());
    return prefix;
  }

  bool AppendPicture(const std::optional<CString>& text) {
    if (!text || text->GetLength() > kMaxPictureText) return false;
    out_ += *text;
    return true;
  }

  bool ExpandPictures() {
    WideView run = Take(PrefixWithout(pattern_, kPatternLetters));
    while (!run.empty()) {
      const WideView date = PrefixWithout(run, kTimeLetters);
      const WideView piece = date.empty() ? PrefixOf(run, kTimeLettersAndBlank) : date;
      const Locale& locale = CurrentLocale();
      if (!AppendPicture(date.empty() ? locale.FormatTime(piece, time_) : locale.FormatDate(piece, time_))) {
        return false;
      }
      run.remove_prefix(piece.size());
    }
    return true;
  }

  // One or three apostrophes open a literal, two are nothing, four are one apostrophe. A longer run is taken
  // four at a time.
  bool ExpandApostrophes() {
    std::size_t count = Take(PrefixOf(pattern_, u"'")).size();
    for (; count >= 4; count -= 4) out_ += u'\'';
    if (count % 2 == 0) return true;
    const std::size_t end = pattern_.find(u'\'');
    if (end == WideView::npos) return false;
    out_ += Take(pattern_.substr(0, end));
    Take(u"'");
    return true;
  }

  void ExpandNumber() {
    const std::size_t width = Take(PrefixOf(pattern_, u"n")).size();
    if (width == 0) return;
    out_ += Digits(number_, width);
  }

  CString& out_;
  WideView pattern_;
  uint32_t number_;
  CalendarTime time_;
};

struct Countdown {
  CString separator;
  uint32_t start = 0;  // ms
  uint32_t limit = 0;  // s
};

Countdown& TheCountdown() {
  static Countdown countdown;
  return countdown;
}

CString DurationText(uint32_t seconds, const CString& separator) {
  const uint32_t minutes = seconds / 60;
  CString text;
  if (seconds < 3600) {
    text = Digits(minutes, 1);
  } else {
    text = Digits(minutes / 60, 1);
    text += separator;
    text += Digits(minutes % 60, 2);
  }
  text += separator;
  text += Digits(seconds - 60 * minutes, 2);
  return text;
}

}  // namespace

bool TimeToText(CString& out, std::optional<int64_t> time) {
  const Locale& locale = CurrentLocale();
  return Assign(out, locale.FormatTime(locale.Conventions().timePicture, LocalTimeOf(time)));
}

bool ShortDateText(CString& out, std::optional<int64_t> time) {
  const Locale& locale = CurrentLocale();
  return Assign(out, locale.FormatDate(locale.Conventions().shortDatePicture, LocalTimeOf(time)));
}

bool LongDateText(CString& out, std::optional<int64_t> time) {
  const Locale& locale = CurrentLocale();
  return Assign(out, locale.FormatDate(locale.Conventions().longDatePicture, LocalTimeOf(time)));
}

void AppendDateTime(CString& out, std::optional<int64_t> time) {
  const int64_t moment = time ? *time : CurrentClock().UtcSeconds();  // one for both texts
  CString date;
  CString timeOfDay;
  ShortDateText(date, moment);
  TimeToText(timeOfDay, moment);
  out += date;
  out += u" -- ";
  out += timeOfDay;
}

bool FormatDateTime(CString& out, WideView pattern, uint32_t number, std::optional<int64_t> time) {
  return PatternExpander(out, pattern, number, time).Expand();
}

int64_t CurrentTimeChecked() {
  const int64_t now = CurrentClock().UtcSeconds();
  const int year = UtcCalendar(now).year;
  if (year >= kFirstYear && year <= kLastYear) return now;
  ShowMessage(FindString(kStringClockOutOfRange), MessageIcon::kExclamation);
  CalendarTime fallback;
  fallback.year = 1990;
  fallback.month = 1;
  fallback.dayOfWeek = 2;
  fallback.day = 1;
  fallback.hour = fallback.minute = fallback.second = 0;
  const std::optional<int64_t> time = CurrentClock().FromLocal(fallback);
  if (!time) throw CInvalidArgException();
  return *time;
}

int32_t CountdownText(CString* out, uint32_t limit) {
  Countdown& countdown = TheCountdown();
  const uint32_t now = CurrentClock().Ticks();
  if (limit != kPollCountdown) {
    const CString& separator = CurrentLocale().Conventions().timeSeparator;
    countdown = {separator.IsEmpty() ? CString(u":") : separator, now, limit};
  }
  const uint32_t elapsed = (now - countdown.start) / 1000;
  const bool runs = countdown.limit == 0 || elapsed <= countdown.limit;
  const uint32_t shown = countdown.limit == 0 ? elapsed : runs ? countdown.limit - elapsed : 0;
  if (out != nullptr) *out = DurationText(shown, countdown.separator);
  return runs ? 1 : 0;
}

}  // namespace vrx
