// The user's conventions for numbers, dates and times, and the formatting of date and time pictures.
//
// A picture spells a date in letters: "dd.MM.yyyy", "h:mm tt". The formatter is the library's own, so that a
// picture gives the same text on every system; only the conventions come from the system.

#ifndef VRXMATH_PLATFORM_LOCALE_H_
#define VRXMATH_PLATFORM_LOCALE_H_

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include <vrxmath/export.h>
#include <vrxmath/platform/clock.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// How a locale writes numbers, dates and times. The defaults are those of the "C" locale.
struct LocaleConventions {
  CString decimalSeparator = u".";
  CString groupSeparator;  ///< between groups of digits; empty where none is written
  /// Digits of the groups before the decimal separator, the one beside it first. The last size repeats; a 0 at the
  /// end leaves what is left in one piece. Empty: no groups.
  std::vector<uint8_t> groupSizes = {3};
  CString timeSeparator = u":";
  CString shortDatePicture = u"MM/dd/yy";
  CString longDatePicture = u"dddd MMMM d yyyy";
  CString timePicture = u"HH:mm:ss";
  std::array<CString, 7> dayNames = {u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                                     u"Thursday", u"Friday", u"Saturday"};
  std::array<CString, 7> shortDayNames = {u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"};
  /// As they stand beside a day ("1 stycznia") ...
  std::array<CString, 12> monthNames = {u"January",   u"February", u"March",    u"April",
                                        u"May",       u"June",     u"July",     u"August",
                                        u"September", u"October",  u"November", u"December"};
  /// ... and alone ("styczen").
  std::array<CString, 12> standaloneMonthNames = monthNames;
  std::array<CString, 12> shortMonthNames = {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun",
                                             u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"};
  CString am = u"AM";
  CString pm = u"PM";
  CString era;  ///< of the Gregorian years that are counted up; empty where dates are written without one
};

/// Formats a date by a picture:
///   d dd        day of the month, plain or in two digits      ddd dddd   name of the day, short or full
///   M MM        month                                         MMM MMMM   name of the month, short or full
///   y yy yyyy   year in one or two digits of the century, or in four   g gg   era
/// A longer run means the longest of its kind. Text between apostrophes is copied, two apostrophes give one,
/// every other character stands for itself. None when `time` holds no date.
[[nodiscard]] VRX_API std::optional<CString> FormatDatePicture(WideView picture, const CalendarTime& time,
                                                               const LocaleConventions& conventions);

/// The same for a time of day: h hh (1 to 12), H HH (0 to 23), m mm, s ss, t (first letter of AM or PM), tt.
[[nodiscard]] VRX_API std::optional<CString> FormatTimePicture(WideView picture, const CalendarTime& time,
                                                               const LocaleConventions& conventions);

/// A user's locale. A platform whose system formats dates itself overrides the two Format functions.
class VRX_API Locale {
 public:
  virtual ~Locale();
  [[nodiscard]] virtual const LocaleConventions& Conventions() const = 0;
  [[nodiscard]] virtual std::optional<CString> FormatDate(WideView picture, const CalendarTime& time) const;
  [[nodiscard]] virtual std::optional<CString> FormatTime(WideView picture, const CalendarTime& time) const;
};

/// A locale of given conventions.
class VRX_API FixedLocale : public Locale {
 public:
  explicit FixedLocale(LocaleConventions conventions);
  ~FixedLocale() override;
  [[nodiscard]] const LocaleConventions& Conventions() const override { return conventions_; }

 private:
  LocaleConventions conventions_;
};

/// The locale in use: the user's, read at the first call, unless it was replaced.
[[nodiscard]] VRX_API const Locale& CurrentLocale();

/// Replaces the locale for the whole process; null restores the user's. The locale must outlive its use.
VRX_API void SetLocale(const Locale* locale);

namespace platform_internal {
/// The locale that the user's environment names.
const Locale& SystemLocale();
}  // namespace platform_internal

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_LOCALE_H_
