// Texts from outside: Unicode as RFC 3629 defines it. And the steps of curves: interpolation against polynomials.

#include <vrxio/text/text.h>

#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxio/measurement/wavelength_grid.h>
#include <vrxio/text/shown_text.h>
#include "tests/testing/rows.h"

namespace {

using namespace vrx::io;

// A text that can be taken has no fault; a zero byte is one wherever it stands, and comes before the encoding.
TEST(Utf8, FaultsOfTexts) {
  using namespace std::string_view_literals;
  const std::pair<std::string_view, const char*> kRows[] = {
      {"", nullptr},
      {"P1 \xC3\xA4", nullptr},
      {"a\0"sv, "a text holds a zero byte"},
      {"\0"sv, "a text holds a zero byte"},
      {"\xE4\0"sv, "a text holds a zero byte"},
      {"\xE4", "a text is not UTF-8"},
  };
  for (const auto& [text, fault] : kRows) EXPECT_STREQ(TextFault(text, false), fault);
  EXPECT_STREQ(TextFault("\xE4", true), "a text is not UTF-8; --latin1 reads files in Latin-1");
}

TEST(Utf8, EveryCharacterThereAndBack) {
  for (char32_t c = 0; c <= 0x10FFFF; c += c == 0xD7FF ? 0x801 : 1) {
    std::string text;
    AppendUtf8(c, text);
    ASSERT_EQ(text.size(), c < 0x80 ? 1U : c < 0x800 ? 2U : c < 0x10000 ? 3U : 4U) << std::hex << uint32_t{c};
    ASSERT_TRUE(IsUtf8(text)) << std::hex << uint32_t{c};
    ASSERT_FALSE(text.size() > 1 && IsUtf8(text.substr(0, text.size() - 1))) << std::hex << uint32_t{c};
    std::string_view rest = text;
    ASSERT_EQ(TakeCharacter(rest), c);
    ASSERT_TRUE(rest.empty());
  }
}

TEST(Utf8, WhatRfc3629Forbids) {
  const std::pair<const char*, bool> kRows[] = {{"\x80", false},
                                                {"\xBF", false},
                                                {"\xC0\x80", false},
                                                {"\xC1\xBF", false},
                                                {"\xC2\x7F", false},
                                                {"\xE0\x9F\xBF", false},
                                                {"\xE0\xA0\x80", true},
                                                {"\xED\x9F\xBF", true},
                                                {"\xED\xA0\x80", false},
                                                {"\xED\xBF\xBF", false},
                                                {"\xF0\x8F\xBF\xBF", false},
                                                {"\xF0\x90\x80\x80", true},
                                                {"\xF4\x8F\xBF\xBF", true},
                                                {"\xF4\x90\x80\x80", false},
                                                {"\xF5\x80\x80\x80", false},
                                                {"\xFF", false},
                                                {"\xE2\x82", false},
                                                {"\xF0\x90\x80", false},
                                                {"\xE2\x28\xA1", false}};
  for (const auto& [bytes, isValid] : kRows) {
    // Wherever it stands among the eight bytes that are looked at together.
    for (std::size_t before = 0; before < 10; ++before) {
      const std::string text = std::string(before, 'a') + bytes + std::string(9, 'b');
      ASSERT_EQ(IsUtf8(text), isValid) << before << ' ' << text;
      ASSERT_TRUE(IsUtf8(ShownText(text)));
    }
    std::string_view rest = bytes;
    EXPECT_EQ(TakeCharacter(rest) != 0xFFFD, isValid);
    if (!isValid) {
      EXPECT_EQ(rest.size() + 1, std::string_view(bytes).size());  // one byte goes
    }
  }
}

TEST(ShownText, HidesAndCuts) {
  const std::pair<char32_t, bool> kHidden[] = {
      {0x1F, true},    {' ', false},    {0x7E, false},   {0x7F, true},    {0x9F, true},    {0xA0, false},
      {0x061C, true},  {0x200D, false}, {0x200E, true},  {0x2028, true},  {0x202E, true},  {0x202F, false},
      {0x2066, true},  {0x2069, true},  {0x206A, false}, {0xFDD0, true},  {0xFDF0, false}, {0xFFF9, true},
      {0xFFFC, false}, {0xFFFD, false}, {0xFFFE, true},  {0x1FFFF, true}, {0x10FFFE, true}};
  for (const auto& [character, isHidden] : kHidden)
    EXPECT_EQ(IsHidden(character), isHidden) << uint32_t{character};
  EXPECT_EQ(ShownText("a\x1B[2J\xE2\x80\xAE"
                      "b\xFF"),
            "a [2J b\xEF\xBF\xBD");
  const struct {
    const char* text;
    std::size_t length;
    const char* shown;
  } kCuts[] = {{"abcdef", 6, "abcdef"},
               {"abcdefg", 6, "abc..."},
               {"\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F"
                "e",
                4, "\xC3\xA4..."},
               {"abcd", 3, "..."},
               {"", 5, ""},
               {"a\tb\nc", 9, "a b c"}};
  for (const auto& row : kCuts) EXPECT_EQ(Shortened(row.text, row.length), row.shown) << row.text;
  EXPECT_EQ(DisplayWidth("\xC3\xA4\xE2\x82\xAC"
                         "x"),
            3U);
  EXPECT_EQ(Trimmed(" \t a b\t "), "a b");
  EXPECT_EQ(Trimmed(" \t"), "");
  const std::string quote(80, 'q');
  EXPECT_EQ(MessageText("f: \"" + quote + "\" is not a number"),
            "f: \"" + quote.substr(0, 57) + "...\" is not a number");
  EXPECT_EQ(MessageText("f: \"" + quote), "f: \"" + quote.substr(0, 57) + "...");
  EXPECT_EQ(MessageText("\"a\"\n\"b\""), "\"a\" \"b\"");
}

TEST(Resampler, IsExactForWhatItsPolynomialsAre) {
  const auto square = [](double nm) { return 3 + (nm - 500) * (nm - 430) / 1000; };
  const auto cubic = [&](double nm) { return square(nm) + std::pow((nm - 450) / 50, 3); };
  // Quadratics at both ends, cubics between; outside the last value goes on. Even and uneven wavelengths, and three alone.
  const std::vector<double> kNodes[] = {
      {400, 420, 440, 460, 480, 500}, {400, 413, 440, 461, 477, 500}, {400, 450, 500}, {400, 430, 500}};
  for (const std::vector<double>& nodes : kNodes) {
    const std::vector<double> to{390, 400, 405, nodes[1], 441, 449.5, 455, 499, 500, 510};
    const SpectralResampler resampler(nodes, to);
    EXPECT_TRUE(resampler.Interpolates());
    std::vector<double> y, expected, got(to.size());
    const auto measure = [&](const auto& law) {
      y.clear(), expected.clear();
      for (const double nm : nodes) y.push_back(law(nm));
      for (const double nm : to) expected.push_back(law(nm < 400 ? 400 : nm > 500 ? 500 : nm));
      resampler.Convert(y, got.data());
    };
    measure(square);
    EXPECT_TRUE(vrx::test::RowMatches("square", got, expected, 1e-12));
    if (nodes.size() < 6) continue;
    measure(cubic);
    for (std::size_t i = 3; i < 7; ++i) EXPECT_NEAR(got[i], expected[i], 1e-12) << to[i];
    EXPECT_GT(std::fabs(got[2] - expected[2]), 1e-4);  // a quadratic is no cubic
    EXPECT_GT(std::fabs(got[7] - expected[7]), 1e-4);
    // Between 440 and 460 the two nearest on each side count, and at the ends the three: no others do.
    const std::vector<double> before = got, all = y;
    const std::pair<std::vector<std::size_t>, std::vector<std::size_t>> kWithout[] = {
        {{0, 5}, {4, 5, 6}}, {{3, 4, 5}, {2}}, {{0, 1, 2}, {7}}};
    for (const auto& [changed, kept] : kWithout) {
      y = all;
      for (const std::size_t node : changed) y[node] += 1000;
      resampler.Convert(y, got.data());
      for (const std::size_t i : kept) EXPECT_EQ(got[i], before[i]) << to[i];
    }
  }
  // Of finer wavelengths every second value is taken as it is, whatever lies between.
  const std::vector<double> fine{400, 405, 410, 415, 420}, y{1, 99, 2, 99, 3};
  const SpectralResampler second(fine, std::vector<double>{400, 410, 420});
  std::vector<double> got(3);
  second.Convert(y, got.data());
  EXPECT_FALSE(second.Interpolates());
  EXPECT_EQ(got, (std::vector<double>{1, 2, 3}));
  const SpectralResampler part(fine, std::vector<double>{405, 410, 415});
  part.Convert(y, got.data());
  EXPECT_EQ(got, (std::vector<double>{99, 2, 99}));
}

// Between even wavelengths the coefficients of the middle are -1, 9, 9, -1 sixteenths, at the ends 3, 6, -1 eighths; those of
// uneven ones were worked out by hand.
TEST(Resampler, TakesTheCoefficientsOfLagrange) {
  const struct {
    std::vector<double> from, measured, to, expected;
  } kRows[] = {
      {{400, 410, 420, 430, 440},
       {1, 2, 4, 8, 16},
       {395, 400, 405, 412, 415, 425, 430, 435, 445},
       // at 412 nm -0.048, 0.864, 0.216, -0.032
       {1, 1, 1.375, 2.288, 2.8125, 5.625, 8, 11.5, 16}},
      {{400, 410, 420, 430, 440}, {1, 2, 4, 8, 16}, {415, 425}, {2.8125, 5.625}},  // no part of the values
      // at 405 nm 5/12, 5/8, -1/24; at 420 nm -1/6, 2/3, 2/3, -1/6; at 450 nm -1/3, 1, 1/3
      {{400, 410, 430, 440, 460},
       {6, 3, 9, 12, 6},
       {390, 400, 405, 410, 420, 440, 450, 470},
       {6, 6, 4, 3, 5, 12, 11, 6}},
  };
  for (const auto& row : kRows) {
    const SpectralResampler resampler(row.from, row.to);
    EXPECT_EQ(resampler.IsEven(), row.from[2] == 420);
    std::vector<double> got(row.to.size());
    resampler.Convert(row.measured, got.data());
    EXPECT_TRUE(vrx::test::RowMatches("values", got, row.expected, 1e-13));
  }
}

// Instruments round the wavelengths of their headings: a value that was measured there stays what it is, to the bit.
TEST(Resampler, RoundedWavelengthsAreThoseThatWereMeant) {
  const struct {
    std::vector<double> from, to;
    bool interpolates;
    std::vector<double> expected;
  } kRows[] = {
      {{400, 403.33, 406.67, 410}, {400 + 10.0 / 3, 400 + 20.0 / 3}, false, {0.2, 0.7}},
      {{400, 403.33, 406.67, 410}, {400, 400 + 20.0 / 3, 410}, false, {0.1, 0.7, 0.4}},
      {{400, 410.005, 420, 430}, {410, 420.005}, false, {0.2, 0.7}},
      {{400, 410.05, 420, 430}, {410.05, 430}, false, {0.2, 0.4}},
      {{400, 410.05, 420, 430}, {410, 430}, true, {}},
      {{400, 410, 420, 430}, {410.1, 430}, true, {}},
  };
  for (const auto& row : kRows) {
    const SpectralResampler resampler(row.from, row.to);
    EXPECT_EQ(resampler.Interpolates(), row.interpolates) << row.from[1] << ' ' << row.to[0];
    std::vector<double> got(row.to.size());
    resampler.Convert(std::vector<double>{0.1, 0.2, 0.7, 0.4}, got.data());
    if (row.interpolates) continue;
    EXPECT_EQ(got, row.expected) << row.from[1] << ' ' << row.to[0];
  }
}

TEST(Resampler, SaysWhichWavelengths) {
  const std::pair<std::vector<double>, const char*> kRows[] = {
      {{400}, "400 to 400 nm"},
      {{400, 410, 420}, "400 to 420 nm at 10 nm"},
      {{400, 403.33, 406.67, 410}, "400 to 410 nm at 3.33 nm"},  // rounded wavelengths are even
      {{400, 403.3, 406.7, 410}, "400 to 410 nm, 3.3 to 3.4 nm apart"},
      {{380.2, 380.5, 381}, "380.2 to 381 nm, 0.3 to 0.5 nm apart"}};
  for (const auto& [wavelengths, text] : kRows) EXPECT_EQ(DescribeWavelengths(wavelengths), text);
  const struct {
    double first, last;
    bool narrow;
  } kRanges[] = {{400, 700, false}, {410, 700, true}, {400, 690, true}, {360, 750, false}};
  for (const auto& row : kRanges) {
    std::vector<double> wavelengths;
    for (double nm = row.first; nm <= row.last; nm += 10) wavelengths.push_back(nm);
    const WavelengthGrid grid(wavelengths);
    EXPECT_EQ(grid.IsNarrow(), row.narrow);
    EXPECT_EQ(grid.FirstWavelength(), row.first);
    EXPECT_EQ(grid.LastWavelength(), row.last);
    if (row.first == 360) {
      EXPECT_EQ(grid.Description(), "360 to 750 nm at 10 nm: used as they are");
    }
  }
}

}  // namespace
