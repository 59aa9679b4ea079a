#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include <vrxmath/foundation/decimal_text.h>
#include <vrxmath/support/number_text.h>

#include "tests/support/posix_locales.h"
#include "tests/support/round_trip.h"

namespace vrx {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(NumberText, DecimalsSeparatorAndSign) {
  struct Row {
    double value;
    int32_t decimals;
    const char* text;
    const char* german;
  };
  const Row rows[] = {
      {-0.0, 2, "0.00", "0,00"},
      {-0.004999, 2, "0.00", "0,00"},
      {-0.005, 2, "-0.01", "-0,01"},
      {0.125, 2, "0.13", "0,13"},  // a half goes away from zero
      {-0.125, 2, "-0.13", "-0,13"},
      {0.49999999999999994, 0, "0", "0"},
      {1e22, 0, "10000000000000000000000", "10000000000000000000000"},
      {4503599627370497.0, 1, "4503599627370497.0", "4503599627370497,0"},
      {0.1, 15, "0.100000000000000", "0,100000000000000"},
      {1.5, 99, "1.500000000000000", "1,500000000000000"},
      {1.5, -7, "2", "2"},
      {kUnset, 2, "", ""},
      {1.1e-5, 6, "0.000011", "0,000011"},
      {kInfinity, 2, "inf", "inf"},
      {std::nan(""), 2, "nan", "nan"},
  };
  for (const Row& row : rows) {
    CValueRange range;
    range.decimals = row.decimals;
    const ScopedLocale locale("C");
    EXPECT_EQ(NumberText(row.value, range).ToUtf8(), row.text);
    const ScopedLocale german("de_DE");
    EXPECT_EQ(NumberText(row.value, range).ToUtf8(), row.german);
  }
  EXPECT_EQ(NumberText(std::numeric_limits<double>::max()).GetLength(), 309 + 3);
  EXPECT_EQ(RoundToScale(1.5, 0.0), 1.5) << "no scale";
}

TEST(NumberText, ParsingSaysWhereTheTextWentWrong) {
  struct Row {
    const WideChar* text;
    NumberError error;
    int32_t position;
    double value;
  };
  constexpr NumberError kNot = NumberError::kNotANumber;
  const Row rows[] = {
      {u"", NumberError::kNone, 0, kUnset},
      {u" \u00A0\t", NumberError::kNone, 0, kUnset},
      {u"  +12,5\u202F", NumberError::kNone, 0, 12.5},
      {u"-,5", NumberError::kNone, 0, -0.5},
      {u"\u22125,", NumberError::kNone, 0, -5.0},
      {u"1,239", NumberError::kNone, 0, 1.24},
      {u"-0,001", NumberError::kNone, 0, 0.0},
      {u"x", kNot, 0, kUnset},
      {u" -", kNot, 2, kUnset},
      {u",", kNot, 1, kUnset},
      {u"1.5", kNot, 1, kUnset},  // sets thousands apart here
      {u"1 5", kNot, 2, kUnset},
      {u"1e5", kNot, 1, kUnset},
      {u"inf", kNot, 0, kUnset},
      {u"12 mm", kNot, 3, kUnset},
      {u"\u0661", kNot, 0, kUnset},
      {u" 1000000,01", NumberError::kAboveRange, 1, 1000000.01},
      {u"1000000,001", NumberError::kNone, 0, 1000000.0},
      {u"-1000000,01", NumberError::kBelowRange, 0, -1000000.01},
  };
  const ScopedLocale german("de_DE");
  for (const Row& row : rows) {
    const ParsedNumber parsed = ParseNumber(row.text);
    EXPECT_EQ(parsed.error, row.error) << CString(row.text).ToUtf8();
    EXPECT_EQ(parsed.position, row.position) << CString(row.text).ToUtf8();
    EXPECT_EQ(parsed.value, row.value) << CString(row.text).ToUtf8();
    EXPECT_FALSE(parsed.value == 0.0 && std::signbit(parsed.value));
  }
}

TEST(NumberText, TextsOfAnyLengthHaveAValue) {
  const ScopedLocale locale("C");
  const std::u16string digits(100000, u'9');
  EXPECT_EQ(ParseNumber(digits).error, NumberError::kAboveRange);
  EXPECT_EQ(ParseNumber(u"-" + digits).value, -kInfinity);
  EXPECT_EQ(ParseNumber(u"0." + std::u16string(100000, u'0') + u"1").value, 0.0);
  EXPECT_EQ(ParseNumber(u"0." + digits).value, 1.0);
  EXPECT_EQ(ParseNumber(std::u16string(100000, u'0') + u"7").value, 7.0);
}

TEST(NumberText, RandomValuesRoundTrip) {
  const ScopedLocale german("de_DE");
  EXPECT_EQ(CountRoundTripFailures(20000, 7), 0);
}

TEST(NumberText, Steps) {
  const CValueRange range = {-80.0, 80.0, 0.05, 100.0, 2};
  struct Row {
    double value;
    int32_t steps;
    double result;
  };
  const Row rows[] = {{0.1, 1, 0.15},   {0.1, 4, 0.3},    {0.0, -1, -0.05},        {79.98, 1, 80.0},
                      {1.234, 0, 1.23}, {-0.05, 1, 0.0},  {80.0, INT32_MAX, 80.0}, {0.0, INT32_MIN, -80.0},
                      {kUnset, 1, 0.0}, {500.0, -1, 80.0}};
  for (const Row& row : rows) EXPECT_EQ(StepValue(row.value, row.steps, range), row.result);
  EXPECT_EQ(StepValue(kUnset, 1, {0.05, 80.0, 0.05, 100.0, 2}), 0.05);
}

TEST(NumberText, Pictures) {
  struct Row {
    const WideChar* picture;
    double value;
    const char* text;
  };
  const Row rows[] = {
      {u"##0.00", 1234.565, "1234.57"},
      {u"##0.00", -0.001, "0.00"},
      {u"##0.00", kUnset, ""},
      {u"000", -7.4, "-007"},
      {u"0.0##", 1.5, "1.5"},
      {u"0.0##", 1.2345, "1.235"},
      {u"#.##", 0.5, ".5"},
      {u"#.##", -0.5, "-.5"},
      {u"#.##", 0.0, "0"},
      {u".00", 1.5, "1.50"},
      {u"#,##0.0", 1234567.0, "1,234,567.0"},
      {u"#,##0", -999.0, "-999"},
      {u"0,000", 12.0, "0,012"},
      {u"approx. 0", 3.0, "approx. 3"},
      {u"'#0.'0' #'", 3.0, "#0.3 #"},
      {u"0.", 3.0, "3"},
      {u"<0>", kInfinity, "<inf>"},
      {u"0.0000000000000000", 1.0, "none"},
      {u"", 1.0, "none"},
      {u"'0'", 1.0, "none"},
  };
  const ScopedLocale locale("en_US");
  for (const Row& row : rows) {
    const std::optional<CString> text = PictureText(row.picture, row.value);
    EXPECT_EQ(text ? text->ToUtf8() : "none", row.text) << CString(row.picture).ToUtf8() << ' ' << row.value;
  }
  const ScopedLocale german("de_DE");
  EXPECT_EQ(PictureText(u"#,##0.00", 1234.5)->ToUtf8(), "1.234,50");
  const ScopedLocale c("C");
  EXPECT_EQ(PictureText(u"#,##0.00", 1234.5)->ToUtf8(), "1234.50");
  for (const auto& [grouping, text] : {std::pair{"\3\2", "12,34,56,789"},  // hi_IN
                                       {"\3\177", "123456,789"},
                                       {"", "123456789"}}) {
    platform_internal::PosixLocaleTexts texts;
    texts.thouSep = u",";
    texts.grouping = grouping;
    const FixedLocale grouped(platform_internal::ConventionsOf(texts));
    SetLocale(&grouped);
    EXPECT_EQ(PictureText(u"#,##0", 123456789.0)->ToUtf8(), text);
  }
}

TEST(NumberText, AmountsInTheirUnits) {
  struct Row {
    double amount;
    AmountUnit unit;
    const char* text;
  };
  constexpr auto kWeight = AmountUnit::kWeight;
  constexpr auto kVolume = AmountUnit::kVolume;
  const Row rows[] = {
      {12.5, {kWeight, 3}, "12.50 Grams"},
      {0.123456, {kWeight, 2}, "0.12346 Kilograms"},
      {1.0, {kWeight, 5}, "1.00 Parts (Auto)"},
      {2.0, {kVolume, 0}, "2.00000 Gallons"},
      {-0.0004, {kVolume, 4}, "0.000 Ounces"},
      {3.0, {kVolume, 24}, "3.00 Shots Aus"},
      {1.0, {kVolume, 25}, "1.00"},
      {1.0, {kVolume, -1}, "1.00"},
      {kUnset, {kWeight, 3}, ""},
  };
  const ScopedLocale locale("C");
  for (const Row& row : rows) EXPECT_EQ(AmountText(row.amount, row.unit).ToUtf8(), row.text);

  // Litres or kilograms per unit: the decimals tell a drop (0.05 ml or g) apart, and no fewer would.
  const std::pair<AmountUnit, double> sizes[] = {
      {{kWeight, 0}, 0.45359237},  {{kWeight, 1}, 0.028349523}, {{kWeight, 2}, 1.0},
      {{kWeight, 3}, 0.001},       {{kWeight, 4}, 6.479891e-5}, {{kVolume, 0}, 3.785411784},
      {{kVolume, 1}, 0.946352946}, {{kVolume, 2}, 0.473176473}, {{kVolume, 3}, 0.2365882365},
      {{kVolume, 4}, 0.0295735},   {{kVolume, 5}, 4.54609},     {{kVolume, 6}, 1.0},
      {{kVolume, 7}, 0.001}};
  for (const auto& [unit, size] : sizes) {
    const double lastPlace = size * std::pow(10.0, -AmountDecimals(unit));
    EXPECT_LE(lastPlace, 5e-5) << AmountUnitName(unit).ToUtf8();
    EXPECT_GT(lastPlace * 10.0, 5e-5) << AmountUnitName(unit).ToUtf8();
  }
}

}  // namespace
}  // namespace vrx
