// The search of shortest_decimal.cpp for several numbers at a time. Its products of 128 bits are put together from those of
// 32-bit halves, of which the instruction sets have one for all lanes.

#include "tools/vrx/output/decimal_kernels.h"

#include <array>
#include <cstddef>
#include <cstdint>

#if VRX_LANES > 2
#include <vrxmath/numeric/pack.h>
#endif
#include "tools/vrx/output/decimal_run.h"
#include "tools/vrx/output/shortest_decimal.h"

namespace vrx::tool {
namespace {

#if VRX_LANES > 2

struct Unit;
using Lanes = Pack<VRX_LANES, Unit>;
using Words = Lanes::Words;
using Truths = Lanes::MaskType::Vector;
typedef std::uint32_t Halves __attribute__((vector_size(sizeof(Words))));

constexpr int kMantissaBits = 52, kBias = 1023 + kMantissaBits;
constexpr int kMostDecimals = 19;
constexpr std::uint64_t kTenThousand = 10'000, kEight = 100'000'000;

// Powers of five, as bits of doubles, which is what lanes can be filled with from a table.
struct Power {
  double bits;
};
constexpr std::array<Power, kMostDecimals + 1> kPowersOfFive = [] {
  std::array<Power, kMostDecimals + 1> powers{};
  std::uint64_t power = 1;
  for (Power& entry : powers) {
    entry.bits = __builtin_bit_cast(double, power);
    power *= 5;
  }
  return powers;
}();

VRX_LANE_INLINE Words PowerOfFive(Words exponent) {
  return ToBits(elementary::LaneTraits<Lanes>::Entry(kPowersOfFive.data(), exponent).fields[0]);
}

// The product of the lower halves.
VRX_LANE_INLINE Words Product(Words a, Words b) {
#if VRX_LANES == 8
  return reinterpret_cast<Words>(
      _mm512_maskz_mul_epu32(0xff, reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
#else
  return reinterpret_cast<Words>(
      _mm256_mul_epu32(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
#endif
}
VRX_LANE_INLINE Words Product(Words a, std::uint64_t b) {
  return Product(a, Words{} + b);
}

// The product where it has 64 bits and `b` has 32.
VRX_LANE_INLINE Words Multiple(Words a, Words b) {
#if VRX_LANES == 8
  return a * b;  // one instruction
#else
  return Product(a, b) + (Product(a >> 32, b) << 32);
#endif
}

struct Wide {
  Words high, low;
};

VRX_LANE_INLINE Wide WideProduct(Words a, Words b) {
  const Words upperA = a >> 32, upperB = b >> 32;
  const Words low = Product(a, b);
  const Words crossed = Product(upperA, b) + (low >> 32);
  const Words middle = Product(a, upperB) + (crossed & 0xffffffff);
  return {Product(upperA, upperB) + (crossed >> 32) + (middle >> 32), (middle << 32) | (low & 0xffffffff)};
}

VRX_LANE_INLINE Words Choose(Truths truth, Words a, Words b) {
  return truth ? a : b;
}

// Compares numbers below 2^63.
VRX_LANE_INLINE Truths AtMost(Words a, Words b) {
  return reinterpret_cast<Truths>(a) <= reinterpret_cast<Truths>(b);
}

// The eight digits of a number, the first one in the lowest byte: thousands, hundreds and tens are split off in all parts of
// a word at once, by products with a reciprocal that is good for their size.
VRX_LANE_INLINE Words EightDigits(Words number) {
  const Words upper = Product(number, 3518437209) >> 45;
  const auto thousands = reinterpret_cast<Halves>(upper | (number - Product(upper, kTenThousand)) << 32);
  const Halves hundreds = thousands * 10486 >> 20;
  const Halves pairs = hundreds | (thousands - 100 * hundreds) << 16;
  const Halves tens = (pairs * 103 >> 10) & 0x000f'000f;
  return reinterpret_cast<Words>(tens | (pairs - 10 * tens) << 8);
}

// The shortest decimal of mantissa / 2^minus is digits / 10^places; `power` is five to the power of `places`.
VRX_LANE_INLINE Words ShortestOf(Words mantissa, Words minus, Words places, Words power) {
  const Words shift = 1 + minus - places;
  const Words reach = power - (mantissa & 1);
  const Wide scaled = WideProduct(2 * mantissa, power);
  const Words below = (scaled.high << (64 - shift)) | (scaled.low >> shift);
  const Words one = (Words{} + 1) << shift;
  const Words rest = scaled.low & (one - 1);
  const Words tens = 10 * (WideProduct(below, Words{} + 0xCCCC'CCCC'CCCC'CCCD).high >> 3);
  const Words overTen = ((below - tens) << shift) + rest;
  Words digits = below + Choose(AtMost(rest + (below & 1), one >> 1), Words{}, Words{} + 1);
  digits = Choose(AtMost(10 * one - overTen, reach), tens + 10, digits);
  return Choose(AtMost(overTen, reach), tens, digits);
}

VRX_LANE_INLINE void FindDigits(const double* numbers, std::uint64_t* starts, std::uint64_t* middles,
                                std::uint64_t* ends) {
  constexpr std::uint64_t kHidden = std::uint64_t{1} << kMantissaBits;
  const Lanes given = Abs(Load<Lanes>(numbers));
  const auto inReach = (given >= kSmallestFastDecimal) & (given < kLargestFastDecimal);
  const Words bits = ToBits(Select(inReach, given, Lanes(1.5)));
  const Words fraction = bits & (kHidden - 1), mantissa = fraction | kHidden;
  const Words minus = kBias - (bits >> kMantissaBits);
  const Words places = (minus * 315653 + 0xfffff) >> 20;  // by the logarithm of 2, rounded up
  const Words power = PowerOfFive(places);
  const Words digits = ShortestOf(mantissa, minus, places, power);
  const Words whole = mantissa >> minus;
  const Words missing = kMostDecimals - places;
  const Words decimals = Multiple(digits - Multiple(power << places, whole), PowerOfFive(missing) << missing);
  const Words upper = WideProduct(decimals, Words{} + 0xABCC'7711'8461'CEFD).high >> 26;
  const Words thousandths = Product(upper >> 8, 2882303762) >> 50;  // 10^8 = 2^8 5^8
  const Words start = EightDigits(Product(whole, 1000) + thousandths);
  const auto isFound = inReach.v & (fraction != 0);
  Store(Lanes::OfBits(Choose(isFound, start, Words{} + DecimalRun::kNone)),
        reinterpret_cast<double*>(starts));
  Store(Lanes::OfBits(EightDigits(upper - Product(thousandths, kEight))), reinterpret_cast<double*>(middles));
  Store(Lanes::OfBits(EightDigits(decimals - Multiple(upper, Words{} + kEight))),
        reinterpret_cast<double*>(ends));
}

void FindAll(const double* numbers, std::size_t count, std::uint64_t* starts, std::uint64_t* middles,
             std::uint64_t* ends) {
  for (std::size_t i = 0; i < count; i += VRX_LANES) {
    FindDigits(numbers + i, starts + i, middles + i, ends + i);
  }
}

#else

// Without products of halves and shifts of its own for each lane there is nothing to be gained.
void FindAll(const double*, std::size_t count, std::uint64_t* starts, std::uint64_t*, std::uint64_t*) {
  for (std::size_t i = 0; i < count; ++i) starts[i] = DecimalRun::kNone;
}

#endif

}  // namespace
}  // namespace vrx::tool

namespace vrx {
template <>
const tool::DecimalKernels& KernelsOf<tool::DecimalKernels, VRX_LANES>() {
  static const tool::DecimalKernels kernels = {&tool::FindAll};
  return kernels;
}
}  // namespace vrx
