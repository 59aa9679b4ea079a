// The raw texts of a POSIX locale (LC_TIME, LC_NUMERIC), and what they mean as conventions.

#ifndef VRXMATH_PLATFORM_POSIX_LOCALE_TEXTS_H_
#define VRXMATH_PLATFORM_POSIX_LOCALE_TEXTS_H_

#include <array>
#include <string>

#include <vrxmath/platform/locale.h>

namespace vrx::platform_internal {

/// The answers of nl_langinfo and localeconv, each member under the name of its item.
struct PosixLocaleTexts {
  CString dFmt, tFmt, tFmtAmPm, dTFmt;  // strftime formats
  CString amStr, pmStr, radixChar, thouSep;
  std::string grouping;  // sizes of groups of digits as in localeconv
  std::array<CString, 7> abDay, day;
  std::array<CString, 12> abMon, mon, altMon;
};

/// The texts of the locale `name`; "" is the one that the environment names. A locale that is not installed
/// gives the texts of "C".
PosixLocaleTexts ReadPosixLocaleTexts(const char* name);

/// The conventions. A strftime format becomes a picture; the long date is the date within D_T_FMT with the
/// names in full, since POSIX knows no long date. The time separator is the mark between hours and minutes
/// in T_FMT, or ":" where that is a word.
LocaleConventions ConventionsOf(const PosixLocaleTexts& texts);

}  // namespace vrx::platform_internal

#endif  // VRXMATH_PLATFORM_POSIX_LOCALE_TEXTS_H_
