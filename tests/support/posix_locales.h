// The answers of five locales of GNU libc to nl_langinfo, but for padding: machines need not have them installed.

#ifndef TESTS_SUPPORT_POSIX_LOCALES_H_
#define TESTS_SUPPORT_POSIX_LOCALES_H_

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>
#include <string>

#include <vrxmath/platform/posix/locale_texts.h>

namespace vrx {

struct NamedLocale {
  const char* name;
  platform_internal::PosixLocaleTexts texts;
};

/// The words of a text, which are as many as `Count`.
template <std::size_t Count>
std::array<CString, Count> Words(WideView text) {
  std::array<CString, Count> words;
  for (CString& word : words) {
    const std::size_t length = std::min(text.find(u' '), text.size());
    word = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
  }
  return words;
}

inline NamedLocale MakeLocale(const char* name, std::initializer_list<WideView> formatsAndMarks,
                              std::span<const WideView, 4> names) {
  NamedLocale locale{name, {}};
  auto& t = locale.texts;
  auto text = formatsAndMarks.begin();
  for (CString* member :
       {&t.dFmt, &t.tFmt, &t.tFmtAmPm, &t.dTFmt, &t.amStr, &t.pmStr, &t.radixChar, &t.thouSep}) {
    *member = *text++;
  }
  t.grouping = "\3";
  t.abDay = Words<7>(names[0]);
  t.day = Words<7>(names[1]);
  t.abMon = Words<12>(names[2]);
  t.mon = t.altMon = Words<12>(names[3]);
  return locale;
}

inline constexpr WideView kEnglishNames[] = {
    u"Sun Mon Tue Wed Thu Fri Sat", u"Sunday Monday Tuesday Wednesday Thursday Friday Saturday",
    u"Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec",
    u"January February March April May June July August September October November December"};
inline constexpr WideView kGermanNames[] = {
    u"So Mo Di Mi Do Fr Sa", u"Sonntag Montag Dienstag Mittwoch Donnerstag Freitag Samstag",
    u"Jan Feb M\u00E4r Apr Mai Jun Jul Aug Sep Okt Nov Dez",
    u"Januar Februar M\u00E4rz April Mai Juni Juli August September Oktober November Dezember"};
inline constexpr WideView kFrenchNames[] = {
    u"dim. lun. mar. mer. jeu. ven. sam.", u"dimanche lundi mardi mercredi jeudi vendredi samedi",
    u"janv. f\u00E9vr. mars avril mai juin juil. ao\u00FBt sept. oct. nov. d\u00E9c.",
    u"janvier f\u00E9vrier mars avril mai juin juillet ao\u00FBt septembre octobre novembre d\u00E9cembre"};
inline constexpr WideView kJapaneseMonths =
    u"1\u6708 2\u6708 3\u6708 4\u6708 5\u6708 6\u6708 7\u6708 8\u6708 9\u6708 10\u6708 11\u6708 12\u6708";
inline constexpr WideView kJapaneseNames[] = {
    u"\u65E5 \u6708 \u706B \u6C34 \u6728 \u91D1 \u571F",
    u"\u65E5\u66DC\u65E5 \u6708\u66DC\u65E5 \u706B\u66DC\u65E5 \u6C34\u66DC\u65E5 "
    u"\u6728\u66DC\u65E5 \u91D1\u66DC\u65E5 \u571F\u66DC\u65E5",
    kJapaneseMonths, kJapaneseMonths};

inline const NamedLocale kPosixLocales[] = {
    MakeLocale("C",
               {u"%m/%d/%y", u"%H:%M:%S", u"%I:%M:%S %p", u"%a %b %e %H:%M:%S %Y", u"AM", u"PM", u".", u""},
               kEnglishNames),
    MakeLocale("en_US", {u"%m/%d/%Y", u"%r", u"%I:%M:%S %p", u"%a %d %b %Y %r %Z", u"AM", u"PM", u".", u","},
               kEnglishNames),
    MakeLocale("de_DE", {u"%d.%m.%Y", u"%T", u"", u"%a %d %b %Y %T %Z", u"", u"", u",", u"."}, kGermanNames),
    MakeLocale("fr_FR", {u"%d/%m/%Y", u"%T", u"", u"%a %d %b %Y %T", u"", u"", u",", u"\u202F"},
               kFrenchNames),
    MakeLocale(
        "ja_JP",
        {u"%Y\u5E74%m\u6708%d\u65E5", u"%H\u6642%M\u5206%S\u79D2", u"%p%I\u6642%M\u5206%S\u79D2",
         u"%Y\u5E74%m\u6708%d\u65E5 %H\u6642%M\u5206%S\u79D2", u"\u5348\u524D", u"\u5348\u5F8C", u".", u","},
        kJapaneseNames),
};

/// The conventions of one of them while this lives.
class ScopedLocale {
 public:
  explicit ScopedLocale(const std::string& name) : locale_(Find(name)) { SetLocale(&locale_); }
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;
  ~ScopedLocale() { SetLocale(nullptr); }

 private:
  static LocaleConventions Find(const std::string& name) {
    for (const NamedLocale& row : kPosixLocales) {
      if (name == row.name) return platform_internal::ConventionsOf(row.texts);
    }
    return {};
  }
  FixedLocale locale_;
};

}  // namespace vrx

#endif  // TESTS_SUPPORT_POSIX_LOCALES_H_
