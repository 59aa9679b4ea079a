// The shortest decimals of many numbers, whose digits are found several at a time.

#ifndef TOOLS_VRX_OUTPUT_DECIMAL_RUN_H_
#define TOOLS_VRX_OUTPUT_DECIMAL_RUN_H_

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace vrx::tool {

/// Up to kMost numbers, of which each is written when its turn comes.
class DecimalRun {
 public:
  static constexpr std::size_t kMost = 168;  // of eight rows of three illuminants

  /// Finds the digits of the numbers, kMost at most. Those out of the reach of lanes are left out: zeros, powers of two, what
  /// is below 0.001 or from 100,000 up, and all of them where the instruction set has no lanes for them.
  void Find(std::span<const double> numbers);
  /// True when the digits of the number at `i` were found.
  bool Has(std::size_t i) const { return starts_[i] != kNone; }
  /// Writes that number as WriteShortest (shortest_decimal.h) does. Returns its end; `out` has room for 32 characters.
  char* Write(std::size_t i, char* out) const;

  /// Stands in the place of the first digits of numbers that are left out.
  static constexpr std::uint64_t kNone = ~std::uint64_t{0};

 private:
  static constexpr std::uint64_t kZeros = 0x3030'3030'3030'3030;  // as text

  template <class Word>
  static void Put(Word word, char* out) {
    std::memcpy(out, &word, sizeof word);
  }

  std::array<double, kMost> numbers_;
  // Digits, the first one in the lowest byte: five of the whole part and three decimals, then eight decimals twice.
  std::array<std::uint64_t, kMost> starts_, middles_, ends_;
};

// All decimals are written, whatever their count, and the zeros at their end left behind: few numbers have the same count,
// and a branch that a processor cannot foresee costs more than digits. So do zeros before the whole part.
inline char* DecimalRun::Write(std::size_t i, char* out) const {
  constexpr std::uint64_t kLastWholeDigit = std::uint64_t{1} << 32;  // stays, even a zero
  constexpr int kWholeDigits = 5;
  const std::uint64_t start = starts_[i], middle = middles_[i], end = ends_[i];
  *out = '-';
  out += std::signbit(numbers_[i]) ? 1 : 0;
  const int unused = std::countr_zero(start | kLastWholeDigit) / 8;
  Put((start | kZeros) >> (8 * unused), out);
  char* const point = out + (kWholeDigits - unused);
  const auto thousandths = static_cast<std::uint32_t>(start >> (8 * kWholeDigits));
  Put(static_cast<std::uint32_t>('.' | (thousandths | kZeros) << 8), point);
  Put(middle | kZeros, point + 4);
  Put(end | kZeros, point + 12);
  if (end != 0) return point + 20 - std::countl_zero(end) / 8;
  if (middle != 0) return point + 12 - std::countl_zero(middle) / 8;
  return thousandths != 0 ? point + 4 - std::countl_zero(thousandths << 8) / 8 : point;
}

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_DECIMAL_RUN_H_
