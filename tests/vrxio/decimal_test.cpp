// Decimal texts to doubles: the standard library's from_chars is the oracle.

#include <vrxio/text/decimal.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <string_view>

#include <vrxio/text/number_shape.h>

namespace {

using vrx::io::NumberShape;
using vrx::io::ParseDecimal;
using vrx::io::ParseFractionAsPercent;
using vrx::io::ParseShortDecimal;
using vrx::io::ReadShortDecimal;
using vrx::io::ShortDecimal;

double Oracle(const std::string& text) {
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

// Both halves, as the reader uses them.
void ExpectBothExact(const std::string& text) {
  const uint64_t expected = std::bit_cast<uint64_t>(Oracle(text));
  double value = 0;
  ASSERT_TRUE(ParseDecimal(text, '.', value)) << text;
  EXPECT_EQ(std::bit_cast<uint64_t>(value), expected) << text;
  const std::string line = text + "\n";
  if (const char* const end = ParseShortDecimal(line.c_str(), '.', value)) {
    EXPECT_EQ(end, line.c_str() + text.size()) << text;
    EXPECT_EQ(std::bit_cast<uint64_t>(value), expected) << text;
  }
  double percent = 0;
  if (ParseShortDecimal<2>(line.c_str(), '.', value) != nullptr && ParseFractionAsPercent(text, percent)) {
    EXPECT_EQ(std::bit_cast<uint64_t>(value), std::bit_cast<uint64_t>(percent)) << text;
  }
}

TEST(Decimal, RandomNumbersAreExact) {
  std::mt19937_64 random(20);
  const auto digits = [&](int most) {
    std::string text;
    for (auto n = random() % static_cast<unsigned>(most + 1); n > 0; --n)
      text += static_cast<char>('0' + random() % 10);
    return text;
  };
  for (int i = 0; i < 200'000; ++i) {
    std::string text(random() % 4 == 0 ? "-" : "");
    text.append(digits(12)).append(1, '.').append(digits(12));
    if (text.find_first_of("0123456789") == std::string::npos) text.append(1, '0');
    if (random() % 8 == 0) text.append(1, 'e').append(std::to_string(static_cast<int>(random() % 40) - 20));
    ExpectBothExact(text);
  }
}

// The text with a 0 for each digit.
std::string PatternOf(std::string text) {
  std::ranges::replace_if(
      text, [](char c) { return c >= '0' && c <= '9'; }, '0');
  return text;
}

TEST(Decimal, NumbersOfAShapeAreExactAndOthersRefused) {
  constexpr std::string_view kOthers = "0123456789.,;:/-e\n\x80\xff";
  std::mt19937 generator(21);
  const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(generator()) % limit; };
  const auto digit = [&](char c) { return c == '0' ? static_cast<char>('0' + below(10)) : c; };
  for (int i = 0; i < 100'000; ++i) {
    std::string first(1 + below(9), '0');
    const char separator = i % 2 == 0 ? '.' : ',';
    if (i % 8 != 0) first[below(first.size())] = separator;
    std::string next = first;
    std::ranges::transform(next, next.begin(), digit);
    if (i % 16 > 12) next[below(next.size())] = kOthers[below(kOthers.size())];
    ShortDecimal number;
    const std::string line = first + "\n", text = next + "77777777";
    if (ReadShortDecimal(line.data(), separator, number) == nullptr) continue;  // a separator alone
    const NumberShape shape = NumberShape::Of(line.data(), line.data() + first.size(), number);
    double whole = 0;
    const bool isOfShape = first.size() <= NumberShape::kBytes && first.back() != separator &&
                           PatternOf(first) == PatternOf(next);
    ASSERT_EQ(shape.Read(text.data(), whole), isOfShape) << first << ' ' << next;
    std::ranges::replace(next, ',', '.');
    ASSERT_TRUE(!isOfShape || whole / shape.Scale() == Oracle(next)) << next;
  }
}

TEST(Decimal, EdgesAreExact) {
  // 15 digits go the short way and 16 do not; 2^53 + 1 rounds to even; a half-way case of 17 digits.
  for (const char* text : {"0", "-0", "5.", ".5", "007.50", "999999999999999", "0.99999999999999",
                           "9999999999999999", "9007199254740993", "0.1000000000000000055", "1e22", "4.35",
                           "1.7976931348623157e308", "2.2250738585072014e-308"}) {
    ExpectBothExact(text);
  }
  double value = 0;
  EXPECT_TRUE(ParseDecimal("+12,5", ',', value));
  EXPECT_EQ(value, 12.5);
}

TEST(Decimal, RefusesWhatIsNoNumber) {
  for (const char* text : {"",    "-",    "+",    ".",  "-.", "abc", "1x",  "1 2",   "1.2.3",  "1,2", "nan",
                           "inf", "-inf", "0x10", "1e", "e5", "--1", "+-1", "1e400", "1e-400", "1-2"}) {
    double value = 0;
    EXPECT_FALSE(ParseDecimal(text, '.', value)) << text;
  }
  double value = 0;
  EXPECT_FALSE(ParseDecimal("1.234,5", ',', value)) << "thousands separators";
  EXPECT_FALSE(ParseDecimal("1,234,5", ',', value));
}

// Half-way between two doubles, next to it, at the ends of the range: the bits by IEEE 754, computed apart in whole numbers.
TEST(Decimal, HardCasesAreRoundedOnce) {
  static constexpr struct {
    const char* text;
    uint64_t bits;
  } kRows[] = {
      {"9007199254740993", 0x4340000000000000},
      {"9007199254740992.999999999999999999999", 0x4340000000000000},
      {"9007199254740993.00000000000000000001", 0x4340000000000001},
      {"1e23", 0x44b52d02c7e14af6},
      {"8.5e22", 0x44b1ffdbf6b2b2eb},
      {"2.2250738585072011e-308", 0x000fffffffffffff},
      {"2.2250738585072012e-308", 0x0010000000000000},
      {"4.9406564584124654e-324", 0x0000000000000001},
      {"2.4703282292062328e-324", 0x0000000000000001},
      {"1.7976931348623158e308", 0x7fefffffffffffff},
      {"0.000000000000000000000000000000000000011754943508222875", 0x3810000000000000},
      {"6.631236846766476e-316", 0x0000000008000000},
      {"3.237883913302901e-319", 0x000000000000ffff},
      {"7.2057594037927933e16", 0x4370000000000000},
      {"1.00000000000000011102230246251565404236316680908203124", 0x3ff0000000000000},
      {"1.00000000000000011102230246251565404236316680908203125", 0x3ff0000000000000},
      {"1.00000000000000011102230246251565404236316680908203126", 0x3ff0000000000001},
  };
  for (const auto& row : kRows) {
    double value = 0;
    ASSERT_TRUE(ParseDecimal(row.text, '.', value)) << row.text;
    EXPECT_EQ(std::bit_cast<uint64_t>(value), row.bits) << row.text;
  }
  for (const char* const refused : {"1.8e308", "2.4703282292062327e-324", "1e+"}) {
    double value = 0;
    EXPECT_FALSE(ParseDecimal(refused, '.', value)) << refused;
  }
}

// The shortest decimals that read back, and of these the nearest; below a power of two the gap is half as wide as above it. Fixed
// decimals are rounded from all digits of the double.
TEST(Decimal, TextsAreTheShortestOrExact) {
  static constexpr struct {
    double value;
    const char* text;
  } kRows[] = {
      {5e-324, "5e-324"},
      {0x1p-1017, "7.120236347223045e-307"},
      {0x1p-1007, "7.291122019556398e-304"},
      {0x1p-44, "5.684341886080802e-14"},
      {0x1p-1022, "2.2250738585072014e-308"},
      {1e23, "1e+23"},
      {9007199254740993.0, "9007199254740992"},
      {0x1.fffffffffffffp+1023, "1.7976931348623157e+308"},
      {123456789012345680000.0, "123456789012345683968"},
      {0.1 + 0.2, "0.30000000000000004"},
      {0.001, "0.001"},
      {0.0001, "1e-04"},
      {100000, "1e+05"},
      {-0.0, "-0"},
  };
  for (const auto& row : kRows) EXPECT_EQ(vrx::io::ShortestText(row.value), row.text);
  EXPECT_EQ(vrx::io::FixedDecimals(0.125, 2), "0.12");
  EXPECT_EQ(vrx::io::FixedDecimals(2.675, 2), "2.67");
  EXPECT_EQ(vrx::io::FixedDecimals(1e22 + 2e6, 1), "10000000000000002097152.0");
}

}  // namespace
