// Magnitudes from 0.001 to 100,000, as colours and their differences have, are written in whole-number arithmetic without
// rounding: a value is m 2^e, and with ten to the power p that brings its last place near 1 the product m 5^p fits in 128 bits.
// All that reads back to the value lies within half a last place of it, so the shortest text is a multiple of ten there if
// there is one, else the nearest whole number (the search of R. Giulietti, "The Schubfach way to render doubles", 2021,
// whose rounded powers of ten are exact here). Everything else is left to the standard library.

#include "tools/vrx/output/shortest_decimal.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace vrx::tool {
namespace {

constexpr std::size_t kRoom = 32;

char* WriteByLibrary(double value, char* out) {
  return std::to_chars(out, out + kRoom, value).ptr;
}

// The fast way needs products of 128 bits and the first digit in the lowest byte.
#if defined(__SIZEOF_INT128__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
#define VRX_WRITES_FAST

__extension__ using Wide = unsigned __int128;

constexpr int kMantissaBits = 52;
constexpr int kMostDecimals = 19;

// A value as digits / 10^decimals.
struct Decimal {
  uint64_t digits;
  int decimals;
};

template <uint64_t kBase>
constexpr std::array<uint64_t, kMostDecimals + 1> PowersOf() {
  std::array<uint64_t, kMostDecimals + 1> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = kBase * powers[i - 1];
  return powers;
}
constexpr std::array<uint64_t, kMostDecimals + 1> kPowersOfFive = PowersOf<5>();
constexpr std::array<uint64_t, kMostDecimals + 1> kPowersOfTen = PowersOf<10>();

// The largest p for which 2^exponent times 10^p is below 10.
int PlacesOf(int exponent) {
  constexpr int64_t kLog10Of2 = 315653;  // times 2^20, good for all exponents of doubles
  return -static_cast<int>((exponent * kLog10Of2) >> 20);
}

// The shortest decimal of mantissa * 2^exponent, with its trailing zeros. `mantissa` is not a power of two, below which
// places are half as wide.
Decimal ShortestOf(uint64_t mantissa, int exponent) {
  const int places = PlacesOf(exponent);
  // In units of 2^-shift of the last decimal: the value, and how far from it may lie what reads back to it. The bounds
  // themselves read back to an even mantissa.
  const int shift = 1 - exponent - places;
  const uint64_t half = kPowersOfFive[static_cast<std::size_t>(places)];
  const uint64_t reach = half - mantissa % 2;
  const Wide scaled = static_cast<Wide>(2 * mantissa) * half;
  const uint64_t one = uint64_t{1} << shift;
  const auto below = static_cast<uint64_t>(scaled >> shift);
  const uint64_t rest = static_cast<uint64_t>(scaled) & (one - 1);
  const uint64_t unit = below % 10;
  const uint64_t overTen = unit * one + rest;
  const bool up = rest > one / 2 || (rest == one / 2 && below % 2 != 0);
  uint64_t digits = below + (up ? 1 : 0);
  digits = 10 * one - overTen <= reach ? below - unit + 10 : digits;
  digits = overTen <= reach ? below - unit : digits;
  return {digits, places};
}

// The eight digits of a number, the first one in the lowest byte: thousands, hundreds and tens are split off in all parts of
// the word at once, by products with a reciprocal that is good for their size.
uint64_t EightDigits(uint64_t number) {
  const uint64_t thousands = number / 10'000 | (number % 10'000) << 32;
  const uint64_t hundreds = (thousands * 10486 >> 20) & 0x0000007F'0000007F;
  const uint64_t pairs = hundreds | (thousands - 100 * hundreds) << 16;
  const uint64_t tens = (pairs * 103 >> 10) & 0x000F'000F'000F'000F;
  return tens | (pairs - 10 * tens) << 8;
}

void WriteEight(uint64_t digits, char* out) {
  digits |= 0x3030'3030'3030'3030;
  std::memcpy(out, &digits, sizeof digits);
}

// How many of eight digits are zeros at their end.
int ZerosAtEnd(uint64_t digits) {
  return std::countl_zero(digits) / 8;
}

// A whole number below kLargestFastDecimal.
char* WriteWhole(uint32_t number, char* out) {
  if (number < 10) {
    *out = static_cast<char>('0' + number);
    return out + 1;
  }
  return std::to_chars(out, out + kRoom, number).ptr;
}

// `whole` is the whole part of the value, and of the decimal: no decimal beyond a whole number reads back to one below it.
// Writes all kMostDecimals decimals, whatever their count, and goes back over the zeros: few numbers have the same count,
// and a branch that a processor cannot foresee costs more than digits.
char* WriteDecimal(const Decimal& number, uint32_t whole, char* out) {
  constexpr uint64_t kEight = 100'000'000;
  const uint64_t scale = kPowersOfTen[static_cast<std::size_t>(number.decimals)];
  const uint64_t decimals = (number.digits - whole * scale) *
                            kPowersOfTen[static_cast<std::size_t>(kMostDecimals - number.decimals)];
  char* const point = WriteWhole(whole, out);
  if (decimals == 0) return point;
  *point = '.';
  const uint64_t upper = decimals / kEight;
  const auto first = static_cast<uint32_t>(upper / kEight);
  const uint64_t middle = EightDigits(upper % kEight), last = EightDigits(decimals % kEight);
  point[1] = static_cast<char>('0' + first / 100);
  point[2] = static_cast<char>('0' + first / 10 % 10);
  point[3] = static_cast<char>('0' + first % 10);
  WriteEight(middle, point + 4);
  WriteEight(last, point + 12);
  if (last != 0) return point + 20 - ZerosAtEnd(last);
  if (middle != 0) return point + 12 - ZerosAtEnd(middle);
  return point + (first % 10 != 0 ? 4 : first % 100 != 0 ? 3 : 2);
}

#endif

}  // namespace

char* WriteShortest(double value, char* out) {
#ifdef VRX_WRITES_FAST
  const double magnitude = std::fabs(value);
  const auto bits = std::bit_cast<uint64_t>(magnitude);
  const uint64_t hidden = uint64_t{1} << kMantissaBits;
  const uint64_t fraction = bits & (hidden - 1);
  if (!(magnitude >= kSmallestFastDecimal && magnitude < kLargestFastDecimal) || fraction == 0) {
    return WriteByLibrary(value, out);
  }
  constexpr int kBias = 1023 + kMantissaBits;
  const Decimal number = ShortestOf(fraction | hidden, static_cast<int>(bits >> kMantissaBits) - kBias);
  *out = '-';
  return WriteDecimal(number, static_cast<uint32_t>(magnitude), out + (std::signbit(value) ? 1 : 0));
#else
  return WriteByLibrary(value, out);
#endif
}

}  // namespace vrx::tool
