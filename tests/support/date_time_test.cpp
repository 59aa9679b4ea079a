#include <gtest/gtest.h>

#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/exceptions.h>
#include <vrxmath/support/date_time.h>

#include "tests/support/posix_locales.h"
#include "tests/support/test_environment.h"

namespace vrx {
namespace {

// Moments and weekdays by the C library's `date -u`.
constexpr int64_t kChristmasEve = 1798135509;  // Thursday 2026-12-24 18:05:09 UTC
constexpr int64_t kMoonLanding = -14182940;    // Sunday 1969-07-20 20:17:40
constexpr int64_t kFirstSecond = -62135596800;
constexpr int64_t kLastSecond = 253402300799;

// Central European time in 2026.
constexpr int64_t kSpring = 1774746000;
constexpr int64_t kAutumn = 1792890000;
const std::vector<ZoneChange> kCentralEurope = {{kFirstSecond, 3600}, {kSpring, 7200}, {kAutumn, 3600}};

std::string Expanded(WideView pattern, uint32_t number, int64_t time) {
  CString out;
  return FormatDateTime(out, pattern, number, time) ? out.ToUtf8() : out.ToUtf8() + "<failed>";
}

TEST(DateTime, LocalesGiveTheirDefaultTexts) {
  struct Row {
    const char* locale;
    const char* shortDate;
    const char* longDate;
    const char* time;
    const char* names;  // "dddd ddd MMMM MMM tt t"
  };
  const Row rows[] = {
      {"C", "12/24/26", "Thursday December 24 2026", "18:05:09", "Thursday Thu December Dec PM P"},
      {"en_US", "12/24/2026", "Thursday 24 December 2026", "06:05:09 PM", "Thursday Thu December Dec PM P"},
      {"de_DE", "24.12.2026", "Donnerstag 24 Dezember 2026", "18:05:09", "Donnerstag Do Dezember Dez  "},
      {"fr_FR", "24/12/2026", "jeudi 24 d\u00E9cembre 2026", "18:05:09",
       "jeudi jeu. d\u00E9cembre d\u00E9c.  "},
      {"ja_JP", "2026\u5E7412\u670824\u65E5", "2026\u5E7412\u670824\u65E5", "18\u664205\u520609\u79D2",
       "\u6728\u66DC\u65E5 \u6728 12\u6708 12\u6708 \u5348\u5F8C \u5348"},
  };
  FakePlatform platform;
  for (const Row& row : rows) {
    const ScopedLocale locale(row.locale);
    CString text;
    EXPECT_TRUE(ShortDateText(text, kChristmasEve));
    EXPECT_EQ(text.ToUtf8(), row.shortDate) << row.locale;
    EXPECT_TRUE(LongDateText(text, kChristmasEve));
    EXPECT_EQ(text.ToUtf8(), row.longDate) << row.locale;
    EXPECT_TRUE(TimeToText(text, kChristmasEve));
    EXPECT_EQ(text.ToUtf8(), row.time) << row.locale;
    EXPECT_EQ(Expanded(u"dddd ddd MMMM MMM tt t", 0, kChristmasEve), row.names) << row.locale;
    CString both(u"at ");
    AppendDateTime(both, kChristmasEve);
    EXPECT_EQ(both.ToUtf8(), std::string("at ") + row.shortDate + " -- " + row.time);
  }
}

TEST(DateTime, PosixFormatsBecomePictures) {
  struct Row {
    const WideChar* format;
    const char* datePicture;
    const char* timePicture;
    const char* separator;
  };
  const Row rows[] = {
      {u"%-d. %m. %Y", "d. MM. yyyy", "HH:mm:ss", ":"},
      {u"%A, %e de %B de %EY", "dddd, d' de 'MMMM' de 'yyyy", "HH:mm:ss", ":"},
      {u"%F %H.%M.%S Uhr", "yyyy-MM-dd", "HH.mm.ss' Uhr'", "."},
      {u"%D%n%l:%M %P %Z", "MM/dd/yy", "h:mm tt", ":"},
      {u"d'%d", "'d'''dd", "HH:mm:ss", ":"},
      {u"%x%X%%", "MM/dd/yy", "HH:mm:ss", ":"},  // a format that names itself ends
      {u"%", "MM/dd/yy", "HH:mm:ss", ":"},
      {u"", "MM/dd/yy", "HH:mm:ss", ":"},
  };
  for (const Row& row : rows) {
    platform_internal::PosixLocaleTexts texts;
    texts.dFmt = texts.tFmt = row.format;
    const LocaleConventions conventions = platform_internal::ConventionsOf(texts);
    EXPECT_EQ(conventions.shortDatePicture.ToUtf8(), row.datePicture);
    EXPECT_EQ(conventions.timePicture.ToUtf8(), row.timePicture);
    EXPECT_EQ(conventions.timeSeparator.ToUtf8(), row.separator);
  }
}

// The long date is the date within a format of both, without what belongs to the time.
TEST(DateTime, DatesWithinFormatsOfDateAndTime) {
  const std::pair<const WideChar*, const char*> rows[] = {
      {u"%a %d. %b %Y kl. %H.%M %z", "dddd dd. MMMM yyyy"},            // nb_NO
      {u"%Y-%m-%dT%T %Z", "yyyy-MM-dd"},                               // en_DK
      {u"%Y m. %B %d d. %T", "yyyy' m. 'MMMM dd' d.'"},                // lt_LT
      {u"%x (%a) %r", "MM/dd/yyyy (dddd)"},                            // ko_KR, but for %x
      {u"%Y\u5E74%m\u6708%d\u65E5 %T", "yyyy\u5E74MM\u6708dd\u65E5"},  // ja_JP
      {u"%H:%M:%S %Y %b %d %a", "yyyy MMMM dd dddd"},                  // he_IL
  };
  for (const auto& [format, picture] : rows) {
    platform_internal::PosixLocaleTexts texts;
    texts.dFmt = u"%m/%d/%y";
    texts.dTFmt = format;
    EXPECT_EQ(platform_internal::ConventionsOf(texts).longDatePicture.ToUtf8(), picture);
  }
}

#if !defined(_WIN32)
TEST(DateTime, TheSystemsLocaleIsRead) {
  const platform_internal::PosixLocaleTexts& expected = kPosixLocales[0].texts;
  for (const char* name : {"C", "no_WHERE"}) {
    const platform_internal::PosixLocaleTexts texts = platform_internal::ReadPosixLocaleTexts(name);
    EXPECT_EQ(texts.dTFmt, expected.dTFmt);
    EXPECT_EQ(texts.radixChar, expected.radixChar);
    EXPECT_EQ(texts.day, expected.day);
    EXPECT_EQ(texts.altMon, expected.altMon);
  }
}
#endif

TEST(DateTime, PicturesByLetter) {
  struct Row {
    const WideChar* pattern;
    int64_t time;
    const char* text;
  };
  const Row rows[] = {
      {u"d dd ddd dddd ddddd", kMoonLanding, "20 20 Sun Sunday Sunday"},
      {u"M MM MMM MMMM MMMMM", kMoonLanding, "7 07 Jul July July"},
      {u"y yy yyy yyyy yyyyy", 951782400, "0 00 2000 2000 2000"},  // 2000-02-29 00:00:00
      {u"dd MMM yyyy", 951782400, "29 Feb 2000"},
      {u"dd MMM yyyy", -2203891200, "01 Mar 1900"},  // no leap day in 1900
      {u"g gg", kMoonLanding, " "},
      {u"h hh H HH hhh", 951782400, "12 12 0 00 12"},
      {u"h:mm tt", 951782400 + 12 * 3600, "12:00 PM"},
      {u"h:mm t", 951782400 + 13 * 3600 + 120, "1:02 P"},
      {u"m mm s ss", kChristmasEve, "5 05 9 09"},
      {u"d MMMM yyyy HH:mm:ss", kFirstSecond, "1 January 0001 00:00:00"},
      {u"d MMMM yyyy HH:mm:ss", kLastSecond, "31 December 9999 23:59:59"},
      {u"x/+", kMoonLanding, "x/+"},
  };
  FakePlatform platform;
  for (const Row& row : rows) EXPECT_EQ(Expanded(row.pattern, 0, row.time), row.text);
}

TEST(DateTime, MonthNamesFollowTheDay) {
  LocaleConventions conventions;
  conventions.monthNames[11] = u"grudnia";
  conventions.standaloneMonthNames[11] = u"grudzie\u0144";
  conventions.era = u"A.D.";
  const CalendarTime time = UtcCalendar(kChristmasEve);
  for (const auto& [picture, text] : {std::pair{u"d MMMM", "24 grudnia"},
                                      {u"dddd MMMM yyyy", "Thursday grudzie\u0144 2026"},
                                      {u"'d' MMMM", "d grudzie\u0144"},
                                      {u"''d'd''d' yy gg", "'24d'd 26 A.D."}}) {
    EXPECT_EQ(FormatDatePicture(picture, time, conventions)->ToUtf8(), text);
  }
  EXPECT_FALSE(FormatDatePicture(u"d", CalendarTime(), conventions));
  EXPECT_FALSE(FormatTimePicture(u"h", CalendarTime(), conventions));
}

TEST(DateTime, PatternsWithLiteralsAndNumbers) {
  struct Row {
    const WideChar* pattern;
    uint32_t number;
    const char* text;
  };
  const Row rows[] = {
      {u"dd'.'MM nnn", 7, "24.12 007"},
      {u"nn", 4294967295u, "4294967295"},
      {u"yyyy'''on h'd", 0, "2026on h24"},
      {u"d''''M", 0, "24'12"},
      {u"d'''''n'M", 0, "24'n12"},  // five: one apostrophe, and a literal
      {u"d''''''M", 0, "24'12"},    // six: one apostrophe, and nothing
      {u"", 0, ""},
      {u"'", 0, "<failed>"},
      {u"dd'.", 0, "24<failed>"},
      {u"d'''x", 0, "24<failed>"},
      {u"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", 0, "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"},  // 38
      {u"nxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", 5, "5<failed>"},                             // 39
  };
  FakePlatform platform;
  for (const Row& row : rows) EXPECT_EQ(Expanded(row.pattern, row.number, kChristmasEve), row.text);
}

TEST(DateTime, TimesWithoutALocalFormFail) {
  FakePlatform platform;
  for (const int64_t time : {kFirstSecond - 1, kLastSecond + 1, INT64_MIN, INT64_MAX}) {
    CString text(u"old");
    EXPECT_FALSE(ShortDateText(text, time));
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_FALSE(LongDateText(text, time));
    EXPECT_FALSE(TimeToText(text, time));
    EXPECT_EQ(Expanded(u"n'x'd", 1, time), "1x<failed>");
    EXPECT_EQ(UtcCalendar(time), CalendarTime());
  }
}

// The system's own zone rules and the fake clock's table have to agree on every side of a change.
TEST(DateTime, DaylightSavingGapsAndOverlaps) {
  struct Row {
    int64_t time;
    const char* local;
  };
  const Row rows[] = {
      {kSpring - 1, "29.03.2026 01:59:59"},    {kSpring, "29.03.2026 03:00:00"},
      {kAutumn - 1, "25.10.2026 02:59:59"},    {kAutumn, "25.10.2026 02:00:00"},
      {kAutumn - 3600, "25.10.2026 02:00:00"}, {kAutumn + 3600, "25.10.2026 03:00:00"},
  };
  FakePlatform platform(kCentralEurope);
  const auto check = [&](const char* clock) {
    for (const Row& row : rows) {
      EXPECT_EQ(Expanded(u"dd.MM.yyyy HH:mm:ss", 0, row.time), row.local) << clock;
      const CalendarTime local = CurrentClock().ToLocal(row.time);
      EXPECT_EQ(CurrentClock().ToLocal(*CurrentClock().FromLocal(local)), local) << row.local;
    }
    return !testing::Test::HasFailure();
  };
  EXPECT_TRUE(check("fake"));
#if !defined(_WIN32)
  EXPECT_TRUE(RunInChild([&] {
    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    SetClock(nullptr);
    return check("system");
  }));
#endif
  CalendarTime skipped = UtcCalendar(kSpring);
  skipped.hour = 2;
  skipped.minute = 30;
  EXPECT_FALSE(platform.clock.FromLocal(skipped));
}

#if !defined(_WIN32)
TEST(DateTime, TheSystemsClockKnowsTimesBefore1970AndAfter2037) {
  EXPECT_TRUE(RunInChild([] {
    ::setenv("TZ", "UTC0", 1);
    for (const int64_t time :
         {kFirstSecond, kMoonLanding, int64_t{-1}, int64_t{0}, int64_t{2147483648}, kLastSecond}) {
      const CalendarTime local = CurrentClock().ToLocal(time);
      if (local != UtcCalendar(time) || CurrentClock().FromLocal(local) != time) return false;
    }
    return CurrentClock().ToLocal(kLastSecond + 1) == CalendarTime() &&
           CurrentClock().ToLocal(INT64_MAX) == CalendarTime() && !CurrentClock().FromLocal(CalendarTime());
  }));
}
#endif

TEST(DateTime, AClockOutOfRangeIsReportedEveryTime) {
  FakePlatform platform(kCentralEurope);
  constexpr int64_t kEnd = 2145916800;  // 2038-01-01
  CString text;
  AppendDateTime(text);  // without a time it is now
  EXPECT_EQ(text.ToUtf8(), "01/01/70 -- 01:00:00");
  for (const int64_t now : {int64_t{0}, kEnd - 1}) {
    platform.clock.now = now;
    EXPECT_EQ(CurrentTimeChecked(), now);
  }
  EXPECT_TRUE(platform.messages.Take().empty());
  for (const int64_t now : {int64_t{-1}, kEnd, kLastSecond + 1}) {
    platform.clock.now = now;
    EXPECT_EQ(CurrentTimeChecked(), 631152000 - 3600);  // midnight of 1990-01-01 in central Europe
    EXPECT_EQ(platform.messages.Take(), std::vector{CString::Load(kStringClockOutOfRange).ToUtf8()});
    EXPECT_EQ(platform.messages.LastIcon(), MessageIcon::kExclamation);
  }
  FakeClock noSuchTime({{631152000, 3600}});  // clocks skip the first hour of 1990
  noSuchTime.now = -1;
  SetClock(&noSuchTime);
  EXPECT_THROW(CurrentTimeChecked(), CInvalidArgException);
}

TEST(DateTime, Countdowns) {
  struct Row {
    uint32_t limit;
    uint32_t startTicks;
    uint64_t elapsedMs;
    int result;
    const char* text;
  };
  const Row rows[] = {
      {90, 0, 0, 1, "1:30"},
      {90, 0, 30999, 1, "1:00"},
      {90, 0, 90999, 1, "0:00"},
      {90, 0, 91000, 0, "0:00"},
      {90, 0xFFFFFF00u, 31000, 1, "0:59"},  // across the wrap of the tick count
      {0, 0, 3599999, 1, "59:59"},
      {0, 0, 3725000, 1, "1:02:05"},
      {0, 0, 0xFFFFFFFF, 1, "1193:02:47"},
      {0xFFFFFFFE, 0, 1000, 1, "1193046:28:13"},
  };
  FakePlatform platform;
  for (const Row& row : rows) {
    platform.clock.ticks = row.startTicks;
    EXPECT_EQ(CountdownText(nullptr, row.limit), 1);
    platform.clock.ticks = static_cast<uint32_t>(row.startTicks + row.elapsedMs);
    CString text;
    EXPECT_EQ(CountdownText(&text, kPollCountdown), row.result) << row.text;
    EXPECT_EQ(text.ToUtf8(), row.text);
  }
  LocaleConventions conventions;
  conventions.timeSeparator = u"";
  const FixedLocale locale(conventions);
  SetLocale(&locale);
  CString text;
  CountdownText(&text, 61);
  EXPECT_EQ(text.ToUtf8(), "1:01");
}

}  // namespace
}  // namespace vrx
