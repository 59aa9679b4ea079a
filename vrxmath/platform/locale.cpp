#include <vrxmath/platform/locale.h>

#include <algorithm>
#include <span>
#include <string>
#include <utility>

namespace vrx {
namespace {

// The moment and the conventions that a run of picture letters is expanded from.
struct PictureContext {
  const CalendarTime& time;
  const LocaleConventions& conventions;
  bool showsDay;  // the picture has the day of the month: month names take the form used beside it
};

// A picture letter and the text of a run of `count` of it.
struct PictureField {
  WideChar letter;
  CString (*text)(std::size_t count, const PictureContext& context);
};

CString Digits(unsigned value, std::size_t width) {
  std::string digits = std::to_string(value);
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  return CString::FromUtf8(digits);
}

CString OneOrTwoDigits(unsigned value, std::size_t count) {
  return Digits(value, std::min<std::size_t>(count, 2));
}

CString DayText(std::size_t count, const PictureContext& context) {
  const std::size_t day = context.time.dayOfWeek - 1U;
  if (count <= 2) return OneOrTwoDigits(context.time.day, count);
  return count == 3 ? context.conventions.shortDayNames[day] : context.conventions.dayNames[day];
}

CString MonthText(std::size_t count, const PictureContext& context) {
  const std::size_t month = context.time.month - 1U;
  if (count <= 2) return OneOrTwoDigits(context.time.month, count);
  if (count == 3) return context.conventions.shortMonthNames[month];
  return context.showsDay ? context.conventions.monthNames[month]
                          : context.conventions.standaloneMonthNames[month];
}

CString YearText(std::size_t count, const PictureContext& context) {
  return count <= 2 ? Digits(context.time.year % 100U, count) : Digits(context.time.year, 4);
}

CString EraText(std::size_t, const PictureContext& context) {
  return context.conventions.era;
}

CString Hour12Text(std::size_t count, const PictureContext& context) {
  return OneOrTwoDigits((context.time.hour + 11U) % 12U + 1U, count);
}

CString Hour24Text(std::size_t count, const PictureContext& context) {
  return OneOrTwoDigits(context.time.hour, count);
}

CString MinuteText(std::size_t count, const PictureContext& context) {
  return OneOrTwoDigits(context.time.minute, count);
}

CString SecondText(std::size_t count, const PictureContext& context) {
  return OneOrTwoDigits(context.time.second, count);
}

CString HalfDayText(std::size_t count, const PictureContext& context) {
  const CString& text = context.time.hour < 12 ? context.conventions.am : context.conventions.pm;
  return count == 1 ? CString(text.View().substr(0, 1)) : text;
}

constexpr PictureField kDateFields[] = {
    {u'd', DayText}, {u'M', MonthText}, {u'y', YearText}, {u'g', EraText}};
constexpr PictureField kTimeFields[] = {
    {u'h', Hour12Text}, {u'H', Hour24Text}, {u'm', MinuteText}, {u's', SecondText}, {u't', HalfDayText}};

std::size_t RunLength(WideView picture, std::size_t i) {
  const std::size_t end = picture.find_first_not_of(picture[i], i);
  return (end == WideView::npos ? picture.size() : end) - i;
}

// Appends the quoted text that begins at the apostrophe `i` and returns the position behind it. Two
// apostrophes within it give one; a missing closing one ends with the picture.
std::size_t AppendQuoted(CString& out, WideView picture, std::size_t i) {
  for (++i; i < picture.size(); ++i) {
    if (picture[i] == u'\'') {
      if (i + 1 >= picture.size() || picture[i + 1] != u'\'') return i + 1;
      ++i;
    }
    out += picture[i];
  }
  return i;
}

bool ShowsDayOfMonth(WideView picture) {
  bool quoted = false;
  for (std::size_t i = 0; i < picture.size(); i += RunLength(picture, i)) {
    if (picture[i] == u'\'' && RunLength(picture, i) % 2 == 1) quoted = !quoted;
    if (!quoted && picture[i] == u'd' && RunLength(picture, i) <= 2) return true;
  }
  return false;
}

CString ExpandPicture(WideView picture, std::span<const PictureField> fields, const PictureContext& context) {
  CString out;
  for (std::size_t i = 0; i < picture.size();) {
    if (picture.substr(i, 2) == u"''") {
      out += u'\'';
      i += 2;
    } else if (picture[i] == u'\'') {
      i = AppendQuoted(out, picture, i);
    } else {
      const auto field = std::find_if(fields.begin(), fields.end(),
                                      [&](const PictureField& f) { return f.letter == picture[i]; });
      const std::size_t count = RunLength(picture, i);
      out += field == fields.end() ? picture.substr(i, count) : field->text(count, context).View();
      i += count;
    }
  }
  return out;
}

const Locale*& LocaleReplacement() {
  static const Locale* locale = nullptr;
  return locale;
}

}  // namespace

std::optional<CString> FormatDatePicture(WideView picture, const CalendarTime& time,
                                         const LocaleConventions& conventions) {
  if (!time.IsValid()) return std::nullopt;
  return ExpandPicture(picture, kDateFields, {time, conventions, ShowsDayOfMonth(picture)});
}

std::optional<CString> FormatTimePicture(WideView picture, const CalendarTime& time,
                                         const LocaleConventions& conventions) {
  if (!time.IsValid()) return std::nullopt;
  return ExpandPicture(picture, kTimeFields, {time, conventions, false});
}

Locale::~Locale() = default;

std::optional<CString> Locale::FormatDate(WideView picture, const CalendarTime& time) const {
  return FormatDatePicture(picture, time, Conventions());
}

std::optional<CString> Locale::FormatTime(WideView picture, const CalendarTime& time) const {
  return FormatTimePicture(picture, time, Conventions());
}

FixedLocale::FixedLocale(LocaleConventions conventions) : conventions_(std::move(conventions)) {}
FixedLocale::~FixedLocale() = default;

const Locale& CurrentLocale() {
  return LocaleReplacement() != nullptr ? *LocaleReplacement() : platform_internal::SystemLocale();
}

void SetLocale(const Locale* locale) {
  LocaleReplacement() = locale;
}

}  // namespace vrx
