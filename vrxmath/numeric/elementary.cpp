#include <vrxmath/numeric/elementary.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>

#include <vrxmath/numeric/elementary_lanes.h>

#if defined(__clang__)
#pragma STDC FP_CONTRACT OFF
#endif

namespace vrx {
namespace {

static_assert(std::numeric_limits<double>::is_iec559 && FLT_EVAL_METHOD == 0,
              "needs plain IEEE 754 double arithmetic (on 32-bit x86: -msse2 -mfpmath=sse)");

using namespace elementary;  // NOLINT: one subject in two files

using DoubleSum = Sum<double>;
using Angle = ReducedAngle<double>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kLowest = std::numeric_limits<double>::min();  // the smallest normal number, 2^-1022

/// The exponent field, 0 for zero and subnormals, 2047 for infinity and NaN; the sign is ignored.
VRX_LANE_INLINE std::uint64_t ExponentField(double x) {
  return (ToBits(x) >> kFractionBits) & 0x7ff;
}

/// 2^n for -1022 <= n <= 1023.
VRX_LANE_INLINE double TwoToThe(int n) {
  return FromBits<double>(static_cast<std::uint64_t>(kExponentBias + n) << kFractionBits);
}

// ----------------------------------------------------------------------------------------------------------
// Cube root

/// Zero, subnormals, infinity and NaN.
[[gnu::noinline]] double CubeRootOfUnusual(double x) {
  if (std::isnan(x)) return kNaN;
  if (x == 0 || std::isinf(x)) return x;
  return CubeRoot(x * 0x1p54) * 0x1p-18;
}

// ----------------------------------------------------------------------------------------------------------
// Exponential

/// exp(x.hi + x.lo) where the result or the scale factor leaves the normal range.
[[gnu::noinline]] double ScaleAtTheLimits(double hi, double lo, int exponent) {
  if (exponent > 0) return (hi + lo) * 0x1p1023 * TwoToThe(exponent - 1023);
  // In units of the smallest normal number a subnormal result lies below 1 and has the last place of a sum
  // between 1 and 2, so adding 1 makes one rounding serve for both.
  const double scale = TwoToThe(exponent + 1022);
  hi *= scale;
  lo *= scale;
  if (hi + lo >= 1) return (hi + lo) * kLowest;
  const DoubleSum shifted = AddOrdered(1.0, hi);
  return ((shifted.hi + (shifted.lo + lo)) - 1) * kLowest;
}

/// exp(hi + lo) for |lo| < 2^-40 or so; hi not NaN.
VRX_LANE_INLINE double ExpOfSum(double hi, double lo) {
  if (hi > 710) return kInfinity;
  if (hi < -746) return 0;
  const auto [power, rest, bits] = ExpInSteps(hi, lo);
  const int exponent = static_cast<std::int32_t>(static_cast<std::uint32_t>(bits)) >> 7;
  if (exponent < -1021 || exponent > 1023) return ScaleAtTheLimits(power, rest, exponent);
  return (power + rest) * TwoToThe(exponent);
}

// ----------------------------------------------------------------------------------------------------------
// Logarithm

/// ln x to about 2^-67 of itself, for x > 0 and finite.
VRX_LANE_INLINE DoubleSum LogOfPositive(double x) {
  const bool subnormal = x < kLowest;
  return LogOfNormal(subnormal ? x * 0x1p54 : x, std::uint64_t{subnormal ? 54U : 0U});
}

/// Whether x has a finite logarithm; if not, `*limit` receives what takes its place.
VRX_LANE_INLINE bool HasFiniteLog(double x, double* limit) {
  if (x > 0 && x < kInfinity) return true;
  *limit = kNaN;
  if (x == 0) *limit = -kInfinity;
  if (x > 0) *limit = kInfinity;
  return false;
}

// ----------------------------------------------------------------------------------------------------------
// Power

enum class Parity { kFractional, kEven, kOdd };

Parity ParityOf(double y) {
  const double size = std::fabs(y);
  if (size >= 0x1p53) return Parity::kEven;
  const auto whole = static_cast<std::int64_t>(size);
  if (static_cast<double>(whole) != size) return Parity::kFractional;
  return whole % 2 == 0 ? Parity::kEven : Parity::kOdd;
}

/// x^y for x > 0, both finite.
double PowerOfPositive(double x, double y) {
  if (std::fabs(y) > 0x1p70) y = std::copysign(0x1p70, y);  // far beyond overflow for the x next to 1 already
  const DoubleSum log = LogOfPositive(x);
  const DoubleSum product = Multiply(y, log.hi);
  return ExpOfSum(product.hi, product.lo + y * log.lo);
}

/// x^y where x or y is 0, infinite or NaN, or x is negative.
[[gnu::noinline]] double PowerOfUnusual(double x, double y) {
  if (y == 0 || x == 1) return 1;
  if (std::isnan(x) || std::isnan(y)) return kNaN;
  const double size = std::fabs(x);
  if (std::isinf(y)) return size == 1 ? 1 : (size > 1) == (y > 0) ? kInfinity : 0;
  const Parity parity = ParityOf(y);
  const double sign = std::signbit(x) && parity == Parity::kOdd ? -1 : 1;
  if (size == 0 || std::isinf(x)) return sign * ((size == 0) == (y < 0) ? kInfinity : 0);
  if (parity == Parity::kFractional) return kNaN;
  return sign * PowerOfPositive(size, y);
}

// ----------------------------------------------------------------------------------------------------------
// Sine and cosine

/// The low 128 bits of a 64 by 64 bit product, added to the three-word number `sum` from word `at` (0 lowest)
/// on; carries beyond the third word are dropped.
void AddProduct(std::uint64_t a, std::uint64_t b, int at, std::uint64_t (&sum)[3]) {
  constexpr std::uint64_t kLow = 0xffffffff;
  const std::uint64_t a0 = a & kLow, a1 = a >> 32, b0 = b & kLow, b1 = b >> 32;
  const std::uint64_t low = a0 * b0;
  const std::uint64_t middle = a1 * b0 + (low >> 32);
  const std::uint64_t middle2 = a0 * b1 + (middle & kLow);
  const std::uint64_t words[2] = {(middle2 << 32) | (low & kLow), a1 * b1 + (middle >> 32) + (middle2 >> 32)};
  std::uint64_t carry = 0;
  for (int i = at; i < 3; ++i) {
    const std::uint64_t term = i - at < 2 ? words[i - at] : 0;
    const std::uint64_t partial = sum[i] + term;
    sum[i] = partial + carry;
    carry = static_cast<std::uint64_t>(partial < term) + static_cast<std::uint64_t>(sum[i] < carry);
  }
}

/// 64 digits of the table of 2/pi from bit `from` on.
std::uint64_t TwoOverPiDigits(unsigned from) {
  const unsigned word = from / 64, shift = from % 64;
  if (shift == 0) return kTwoOverPi[word];
  return (kTwoOverPi[word] << shift) | (kTwoOverPi[word + 1] >> (64 - shift));
}

/// Exact reduction of any finite x >= 2^-7 (Payne and Hanek): x = M 2^E, M an integer. Only 192 digits of
/// 2/pi can matter: those before them contribute whole turns, those after them less than 2^-130 steps, while
/// no such double lies closer than about 2^-62 to a multiple of pi/2.
[[gnu::noinline]] Angle ReduceExactly(double x) {
  const auto mantissa = (ToBits(x) & 0xfffffffffffff) | 0x10000000000000;
  const int exponent = static_cast<int>(ExponentField(x)) - kExponentBias - kFractionBits;
  // The fraction of a turn, 8 bits of steps and 184 below, begins at the digit worth 128 steps per unit of M.
  const auto first = static_cast<unsigned>(exponent - 2 + 64);
  std::uint64_t turn[3] = {};
  for (int i = 0; i < 3; ++i) {
    AddProduct(mantissa, TwoOverPiDigits(first + 64 * static_cast<unsigned>(2 - i)), i, turn);
  }

  // The 128 bits below the steps, as a signed number so that the step is the nearest one, then in radians.
  const auto steps =
      static_cast<std::uint32_t>(turn[2] >> 56) + static_cast<std::uint32_t>((turn[2] >> 55) & 1);
  const std::uint64_t top = (turn[2] << 8) | (turn[1] >> 56), middle = (turn[1] << 8) | (turn[0] >> 56);
  const auto unsigned_half = [](std::uint64_t half) { return static_cast<double>(half & 0xffffffff); };
  const double halves[4] = {static_cast<double>(static_cast<std::int32_t>(top >> 32)), unsigned_half(top),
                            unsigned_half(middle >> 32), unsigned_half(middle)};
  DoubleSum fraction = {0, 0};
  double weight = 0x1p-32;
  for (const double half : halves) {
    const DoubleSum next = AddOrdered(fraction.hi, half * weight);
    fraction = {next.hi, fraction.lo + next.lo};
    weight *= 0x1p-32;
  }
  constexpr DoubleSum kStep = {0x1.921fb54442d18p-6, 0x1.1a62633145c07p-60};  // pi / 128
  const DoubleSum r = Multiply(fraction.hi, kStep.hi);
  return {steps, AddOrdered(r.hi, r.lo + (fraction.hi * kStep.lo + fraction.lo * kStep.hi))};
}

/// sin(x + offset pi/128) for any finite x >= 0.
[[gnu::noinline]] double SineReducedExactly(double x, std::uint32_t offset) {
  Angle angle = ReduceExactly(x);
  angle.steps += offset;
  return SineAtNode(angle);
}

/// The same, faster. Larger x than 10^5, and those of which so little is left that the short reduction does not
/// suffice, are reduced exactly.
VRX_LANE_INLINE double ShiftedSine(double x, std::uint32_t offset) {
  if (x > 1e5) return SineReducedExactly(x, offset);
  ModerateAngle<double> angle = ReduceModerate(x);
  if (angle.left < kLeastLeft && angle.steps != 0) return SineReducedExactly(x, offset);
  angle.reduced.steps += offset;
  return SineAtNode(angle.reduced);
}

// ----------------------------------------------------------------------------------------------------------
// Arc tangent

/// Whether products and quotients of a few such numbers stay normal.
VRX_LANE_INLINE bool IsModerate(double x) {
  constexpr std::uint64_t kLimit = 300;
  return ExponentField(x) - (kExponentBias - kLimit) < 2 * kLimit;
}

/// Atan2 where an argument is 0, subnormal, huge, infinite or NaN.
[[gnu::noinline]] double Atan2OfUnusual(double y, double x) {
  if (std::isnan(x) || std::isnan(y)) return kNaN;
  const bool x_negative = std::signbit(x);
  double a = std::fabs(y), b = std::fabs(x);
  if (std::isinf(a) && std::isinf(b)) a = b = 1;
  if (a == 0 || std::isinf(b)) return std::copysign(x_negative ? kPi.hi : 0, y);
  if (b == 0 || std::isinf(a)) return std::copysign(kPi.hi / 2, y);
  if (b / a < 0x1p-60) return std::copysign(kPi.hi / 2, y);
  if (a / b < 0x1p-60) return std::copysign(x_negative ? kPi.hi : a / b, y);
  // Comparable: one power of two brings both to moderate size, losing nothing.
  const double up = std::fmax(a, b) < 1 ? 0x1p1000 : 1, down = std::fmin(a, b) > 1 ? 0x1p-1000 : 1;
  return std::copysign(AngleInUpperHalf(a * up * down, b * up * down, x_negative, 0.0), y);
}

/// The cosine of arcsin x, sqrt(1 - x^2), for |x| <= 1.
VRX_LANE_INLINE DoubleSum Cofactor(double x) {
  const DoubleSum square = Multiply(x, x);
  const DoubleSum d = AddOrdered(1.0, -square.hi);
  const DoubleSum difference = AddOrdered(d.hi, d.lo - square.lo);
  if (difference.hi == 0) return {0, 0};
  const double root = std::sqrt(difference.hi);
  const DoubleSum root_square = Multiply(root, root);
  return {root, ((difference.hi - root_square.hi) - root_square.lo + difference.lo) / (2 * root)};
}

}  // namespace

double CubeRoot(double x) noexcept {
  const std::uint64_t exponent = ExponentField(x);
  if (exponent - 1 >= 0x7fe) return CubeRootOfUnusual(x);

  return CubeRootOfUsual(x);
}

double Exp(double x) noexcept {
  return std::isnan(x) ? kNaN : ExpOfSum(x, 0);
}

double Log(double x) noexcept {
  double limit;
  if (!HasFiniteLog(x, &limit)) return limit;
  return LogOfPositive(x).hi;
}

double Log10(double x) noexcept {
  double limit;
  if (!HasFiniteLog(x, &limit)) return limit;
  return Log10Of(LogOfPositive(x));
}

double Power(double x, double y) noexcept {
  const bool usual = x > 0 && x < kInfinity && std::fabs(y) < kInfinity;
  return usual ? PowerOfPositive(x, y) : PowerOfUnusual(x, y);
}

double Sin(double x) noexcept {
  const double size = std::fabs(x);
  if (size < 0x1p-26) return x;
  if (!(size < kInfinity)) return kNaN;
  const bool negative = std::signbit(x);  // half a turn further every digit is the same
  return ShiftedSine(size, negative ? 2 * kQuarterTurn : 0);
}

double Cos(double x) noexcept {
  const double size = std::fabs(x);
  if (!(size < kInfinity)) return kNaN;
  return ShiftedSine(size, kQuarterTurn);
}

double Atan(double x) noexcept {
  return Atan2(x, 1);
}

double Atan2(double y, double x) noexcept {
  if (!IsModerate(x) || !IsModerate(y)) return Atan2OfUnusual(y, x);
  return std::copysign(AngleInUpperHalf(std::fabs(y), std::fabs(x), std::signbit(x), 0.0), y);
}

double Asin(double x) noexcept {
  const double size = std::fabs(x);
  if (!(size <= 1)) return kNaN;
  if (size < 0x1p-26) return x;
  const DoubleSum cosine = Cofactor(size);
  return std::copysign(AngleInUpperHalf(size, cosine.hi, false, -size * cosine.lo), x);
}

double Acos(double x) noexcept {
  const double size = std::fabs(x);
  if (!(size <= 1)) return kNaN;
  if (size < 0x1p-60) return kPi.hi / 2;
  const DoubleSum sine = Cofactor(size);
  return AngleInUpperHalf(sine.hi, size, std::signbit(x), x * sine.lo);
}

}  // namespace vrx
