#include <vrxmath/platform/locale.h>

#include <vrxmath/platform/win32/win32.h>

namespace vrx {
namespace {

using platform_internal::FromSystem;
using platform_internal::ToSystem;
using platform_internal::ToSystemTime;

// A text of the user's locale; empty when the system has none.
CString Text(LCTYPE type) {
  wchar_t buffer[256];
  const int length = ::GetLocaleInfoW(LOCALE_USER_DEFAULT, type, buffer, std::size(buffer));
  return length > 1 ? CString(FromSystem({buffer, static_cast<std::size_t>(length - 1)})) : CString();
}

void ReplaceUnlessEmpty(CString& value, const CString& text) {
  if (!text.IsEmpty()) value = text;
}

// The system counts days from Monday.
void ReadDays(std::array<CString, 7>& names, LCTYPE monday) {
  for (std::size_t i = 0; i < names.size(); ++i)
    ReplaceUnlessEmpty(names[i], Text(static_cast<LCTYPE>(monday + (i + 6) % 7)));
}

void ReadMonths(std::array<CString, 12>& names, LCTYPE january, LCTYPE form = 0) {
  for (std::size_t i = 0; i < names.size(); ++i)
    ReplaceUnlessEmpty(names[i], Text((january + static_cast<LCTYPE>(i)) | form));
}

// "3;2;0" is groups of three, then of two. Without the 0 at its end the rest stays in one piece.
std::vector<uint8_t> GroupSizesOf(WideView text) {
  std::vector<uint8_t> sizes;
  for (const WideChar unit : text) {
    if (unit >= u'0' && unit <= u'9') sizes.push_back(static_cast<uint8_t>(unit - u'0'));
  }
  if (sizes.empty()) return sizes;
  if (sizes.back() == 0) {
    sizes.pop_back();
  } else {
    sizes.push_back(0);
  }
  return sizes;
}

LocaleConventions ReadConventions() {
  LocaleConventions conventions;
  ReplaceUnlessEmpty(conventions.decimalSeparator, Text(LOCALE_SDECIMAL));
  conventions.groupSeparator = Text(LOCALE_STHOUSAND);
  conventions.groupSizes = GroupSizesOf(Text(LOCALE_SGROUPING));
  ReplaceUnlessEmpty(conventions.timeSeparator, Text(LOCALE_STIME));
  ReplaceUnlessEmpty(conventions.shortDatePicture, Text(LOCALE_SSHORTDATE));
  ReplaceUnlessEmpty(conventions.longDatePicture, Text(LOCALE_SLONGDATE));
  ReplaceUnlessEmpty(conventions.timePicture, Text(LOCALE_STIMEFORMAT));
  ReadDays(conventions.dayNames, LOCALE_SDAYNAME1);
  ReadDays(conventions.shortDayNames, LOCALE_SABBREVDAYNAME1);
  ReadMonths(conventions.standaloneMonthNames, LOCALE_SMONTHNAME1);
  conventions.monthNames = conventions.standaloneMonthNames;
  ReadMonths(conventions.monthNames, LOCALE_SMONTHNAME1, LOCALE_RETURN_GENITIVE_NAMES);
  ReadMonths(conventions.shortMonthNames, LOCALE_SABBREVMONTHNAME1);
  conventions.am = Text(LOCALE_S1159);
  conventions.pm = Text(LOCALE_S2359);
  return conventions;
}

using FormatCall = int WINAPI(LCID, DWORD, const SYSTEMTIME*, LPCWSTR, LPWSTR, int);

// The system's text for a picture; none when it refuses.
std::optional<CString> Format(FormatCall* call, WideView picture, const CalendarTime& time) {
  if (picture.empty()) return CString();
  const SYSTEMTIME fields = ToSystemTime(time);
  const CString terminated(picture);
  wchar_t buffer[1024];
  const int length = call(LOCALE_USER_DEFAULT, 0, &fields, ToSystem(terminated), buffer, std::size(buffer));
  if (length <= 0) return std::nullopt;
  return CString(FromSystem({buffer, static_cast<std::size_t>(length - 1)}));
}

class LocaleOfWindows : public Locale {
 public:
  const LocaleConventions& Conventions() const override { return conventions_; }

  // The system's calendar begins in 1601; before that the library's own formatter serves.
  std::optional<CString> FormatDate(WideView picture, const CalendarTime& time) const override {
    if (!time.IsValid()) return std::nullopt;
    if (time.year < 1601) return FormatDatePicture(picture, time, conventions_);
    return Format(&::GetDateFormatW, picture, time);
  }

  std::optional<CString> FormatTime(WideView picture, const CalendarTime& time) const override {
    if (!time.IsValid()) return std::nullopt;
    if (time.year < 1601) return FormatTimePicture(picture, time, conventions_);
    return Format(&::GetTimeFormatW, picture, time);
  }

 private:
  LocaleConventions conventions_ = ReadConventions();
};

}  // namespace

const Locale& platform_internal::SystemLocale() {
  static const LocaleOfWindows locale;
  return locale;
}

}  // namespace vrx
