// What five locales of GNU libc answer to nl_langinfo: machines need not have them installed.

#ifndef TESTS_SUPPORT_LIB_POSIX_LOCALES_H_
#define TESTS_SUPPORT_LIB_POSIX_LOCALES_H_

#include <vrxmath/platform/posix/locale_texts.h>

namespace vrx {

struct NamedLocale {
  const char* name;
  platform_internal::PosixLocaleTexts texts;
};

inline const NamedLocale kPosixLocales[] = {
    {"C",
     {u"%m/%d/%y",
      u"%H:%M:%S",
      u"%I:%M:%S %p",
      u"%a %b %e %H:%M:%S %Y",
      u"AM",
      u"PM",
      u".",
      u"",
      {u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"},
      {u"Sunday", u"Monday", u"Tuesday", u"Wednesday", u"Thursday", u"Friday", u"Saturday"},
      {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun", u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"},
      {u"January", u"February", u"March", u"April", u"May", u"June", u"July", u"August", u"September",
       u"October", u"November", u"December"},
      {u"January", u"February", u"March", u"April", u"May", u"June", u"July", u"August", u"September",
       u"October", u"November", u"December"}}},
    {"en_US",
     {u"%m/%d/%Y",
      u"%r",
      u"%I:%M:%S %p",
      u"%a %d %b %Y %r %Z",
      u"AM",
      u"PM",
      u".",
      u",",
      {u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"},
      {u"Sunday", u"Monday", u"Tuesday", u"Wednesday", u"Thursday", u"Friday", u"Saturday"},
      {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun", u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"},
      {u"January", u"February", u"March", u"April", u"May", u"June", u"July", u"August", u"September",
       u"October", u"November", u"December"},
      {u"January", u"February", u"March", u"April", u"May", u"June", u"July", u"August", u"September",
       u"October", u"November", u"December"}}},
    {"de_DE",
     {u"%d.%m.%Y",
      u"%T",
      u"",
      u"%a %d %b %Y %T %Z",
      u"",
      u"",
      u",",
      u".",
      {u"So", u"Mo", u"Di", u"Mi", u"Do", u"Fr", u"Sa"},
      {u"Sonntag", u"Montag", u"Dienstag", u"Mittwoch", u"Donnerstag", u"Freitag", u"Samstag"},
      {u"Jan", u"Feb", u"M\u00E4r", u"Apr", u"Mai", u"Jun", u"Jul", u"Aug", u"Sep", u"Okt", u"Nov", u"Dez"},
      {u"Januar", u"Februar", u"M\u00E4rz", u"April", u"Mai", u"Juni", u"Juli", u"August", u"September",
       u"Oktober", u"November", u"Dezember"},
      {u"Januar", u"Februar", u"M\u00E4rz", u"April", u"Mai", u"Juni", u"Juli", u"August", u"September",
       u"Oktober", u"November", u"Dezember"}}},
    {"fr_FR",
     {u"%d/%m/%Y",
      u"%T",
      u"",
      u"%a %d %b %Y %T",
      u"",
      u"",
      u",",
      u"\u202F",
      {u"dim.", u"lun.", u"mar.", u"mer.", u"jeu.", u"ven.", u"sam."},
      {u"dimanche", u"lundi", u"mardi", u"mercredi", u"jeudi", u"vendredi", u"samedi"},
      {u"janv.", u"f\u00E9vr.", u"mars", u"avril", u"mai", u"juin", u"juil.", u"ao\u00FBt", u"sept.", u"oct.",
       u"nov.", u"d\u00E9c."},
      {u"janvier", u"f\u00E9vrier", u"mars", u"avril", u"mai", u"juin", u"juillet", u"ao\u00FBt",
       u"septembre", u"octobre", u"novembre", u"d\u00E9cembre"},
      {u"janvier", u"f\u00E9vrier", u"mars", u"avril", u"mai", u"juin", u"juillet", u"ao\u00FBt",
       u"septembre", u"octobre", u"novembre", u"d\u00E9cembre"}}},
    {"ja_JP",
     {u"%Y\u5E74%m\u6708%d\u65E5",
      u"%H\u6642%M\u5206%S\u79D2",
      u"%p%I\u6642%M\u5206%S\u79D2",
      u"%Y\u5E74%m\u6708%d\u65E5 %H\u6642%M\u5206%S\u79D2",
      u"\u5348\u524D",
      u"\u5348\u5F8C",
      u".",
      u",",
      {u"\u65E5", u"\u6708", u"\u706B", u"\u6C34", u"\u6728", u"\u91D1", u"\u571F"},
      {u"\u65E5\u66DC\u65E5", u"\u6708\u66DC\u65E5", u"\u706B\u66DC\u65E5", u"\u6C34\u66DC\u65E5",
       u"\u6728\u66DC\u65E5", u"\u91D1\u66DC\u65E5", u"\u571F\u66DC\u65E5"},
      {u" 1\u6708", u" 2\u6708", u" 3\u6708", u" 4\u6708", u" 5\u6708", u" 6\u6708", u" 7\u6708", u" 8\u6708",
       u" 9\u6708", u"10\u6708", u"11\u6708", u"12\u6708"},
      {u"1\u6708", u"2\u6708", u"3\u6708", u"4\u6708", u"5\u6708", u"6\u6708", u"7\u6708", u"8\u6708",
       u"9\u6708", u"10\u6708", u"11\u6708", u"12\u6708"},
      {u"1\u6708", u"2\u6708", u"3\u6708", u"4\u6708", u"5\u6708", u"6\u6708", u"7\u6708", u"8\u6708",
       u"9\u6708", u"10\u6708", u"11\u6708", u"12\u6708"}}},
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

#endif  // TESTS_SUPPORT_LIB_POSIX_LOCALES_H_
