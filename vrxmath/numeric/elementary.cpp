#include <vrxmath/numeric/elementary.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>

#include <vrxmath/numeric/elementary_tables.h>

// How the bounds in the header come about. Every function ends in one addition hi + rest, where hi carries no
// error of its own and rest is smaller by a factor of 2^6 or more. So the final rounding costs 0.5 ULP, and
// the few roundings inside rest, together with the omitted tail of its series, at most some hundredths. Where
// a product must be exact, its factors are first cut to so few bits that 53 suffice. The series are Taylor
// series whose arguments a table keeps small; only the starting value of the cube root is a minimax
// polynomial, and only the arc tangent's is economised.

#if defined(__FAST_MATH__)
#error "rearranged arithmetic would break the guarantee of equal bits: compile without -ffast-math"
#endif
#if defined(__clang__)
#pragma STDC FP_CONTRACT OFF
#endif

// The straight-line parts belong in their callers: a call would cost as much as the arithmetic.
#define VRX_INLINE [[gnu::always_inline]] inline

namespace vrx {
namespace {

static_assert(std::numeric_limits<double>::is_iec559 && FLT_EVAL_METHOD == 0,
              "needs plain IEEE 754 double arithmetic (on 32-bit x86: -msse2 -mfpmath=sse)");

using elementary::kAtanNode;
using elementary::kPowerOfTwo;
using elementary::kReciprocal;
using elementary::kSineNode;
using elementary::kTwoOverPi;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLowest = std::numeric_limits<double>::min();  // the smallest normal number, 2^-1022

constexpr std::uint64_t kSignBit = 0x8000000000000000;
constexpr int kFractionBits = 52;
constexpr int kExponentBias = 1023;

/// An unevaluated sum, lo at most about half an ULP of hi.
struct Sum {
  double hi, lo;
};

constexpr Sum kPi = {0x1.921fb54442d18p+1, 0x1.1a62633145c07p-53};

VRX_INLINE std::uint64_t Bits(double x) {
  return std::bit_cast<std::uint64_t>(x);
}

VRX_INLINE double FromBits(std::uint64_t bits) {
  return std::bit_cast<double>(bits);
}

/// The exponent field, 0 for zero and subnormals, 2047 for infinity and NaN; the sign is ignored.
VRX_INLINE std::uint64_t ExponentField(double x) {
  return (Bits(x) >> kFractionBits) & 0x7ff;
}

/// 2^n for -1022 <= n <= 1023.
VRX_INLINE double TwoToThe(int n) {
  return FromBits(static_cast<std::uint64_t>(kExponentBias + n) << kFractionBits);
}

/// x without its last 27 bits, towards zero: 26 significant bits, and x minus it has 27.
VRX_INLINE double Head(double x) {
  return FromBits(Bits(x) & ~std::uint64_t{0x7ffffff});
}

/// a + b with its rounding error, for |a| >= |b| or a = 0.
VRX_INLINE Sum AddOrdered(double a, double b) {
  const double s = a + b;
  return {s, (a - s) + b};
}

/// a b with its rounding error, provided that nothing overflows or underflows.
VRX_INLINE Sum Multiply(double a, double b) {
  const double p = a * b;
  const double ah = Head(a), al = a - ah;
  const double bh = Head(b), bl = b - bh;
  return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
}

/// The integer nearest to x as a double and, modulo 2^32, as an integer. |x| < 2^31 for the latter.
struct Rounded {
  double value;
  std::int32_t integer;
};
VRX_INLINE Rounded RoundToInteger(double x) {
  constexpr double kShift = 0x1.8p52;  // leaves no bits for a fraction
  const double shifted = x + kShift;
  return {shifted - kShift, static_cast<std::int32_t>(static_cast<std::uint32_t>(Bits(shifted)))};
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
  const Sum shifted = AddOrdered(1, hi);
  return ((shifted.hi + (shifted.lo + lo)) - 1) * kLowest;
}

/// exp(hi + lo) for |lo| < 2^-40 or so; hi not NaN. With n = round(128 x / ln 2): 2^(n/128) (1 + (e^r - 1)),
/// |r| <= ln 2 / 256, where six terms of the series leave 2^-60.
VRX_INLINE double ExpOfSum(double hi, double lo) {
  if (hi > 710) return kInfinity;
  if (hi < -746) return 0;
  constexpr double kStepsPerUnit = 0x1.71547652b82fep+7;            // 128 / ln 2
  constexpr Sum kStep = {0x1.62e42fefap-8, 0x1.cf79abc9e3b3ap-47};  // ln 2 / 128, 36 bits and the rest
  const auto [steps, n] = RoundToInteger(hi * kStepsPerUnit);
  const double r = ((hi - steps * kStep.hi) - steps * kStep.lo) + lo;
  const double r2 = r * r;
  const double expm1 = r + r2 * ((1.0 / 2 + r * (1.0 / 6)) + r2 * (1.0 / 24 + r * (1.0 / 120)));
  const auto& [power, lost] = kPowerOfTwo[n & 127];
  const int exponent = n >> 7;
  const double rest = power * (lost + expm1);
  if (exponent < -1021 || exponent > 1023) return ScaleAtTheLimits(power, rest, exponent);
  return (power + rest) * TwoToThe(exponent);
}

// ----------------------------------------------------------------------------------------------------------
// Logarithm

constexpr Sum kLogOf2 = {0x1.62e42fefa38p-1, 0x1.ef35793c7673p-45};  // a multiple of 2^-42 and the rest

/// ln x to about 2^-67 of itself, for x > 0 and finite. With x = 2^k m and a tabulated c near 1/m:
/// k ln 2 - ln c + ln(1 + r), r = c m - 1, |r| < 2^-7.7; around x = 1 only ln(1 + r) is left.
VRX_INLINE Sum LogOfPositive(double x) {
  constexpr std::uint64_t kFirst = 0x3fe6500000000000;  // 357/512, where the table's first interval begins
  std::int64_t subnormal_shift = 0;
  if (x < kLowest) {
    x *= 0x1p54;
    subnormal_shift = 54;
  }
  const std::uint64_t offset = Bits(x) - kFirst;
  const std::int64_t exponent = static_cast<std::int64_t>(offset) >> kFractionBits;
  const double m = FromBits(Bits(x) - (static_cast<std::uint64_t>(exponent) << kFractionBits));
  const auto& [c, minus_log_c_hi, minus_log_c_lo] = kReciprocal[(offset >> (kFractionBits - 7)) & 127];

  // r = rh + rl exactly: m is rounded to so few bits that the square of rh is exact too.
  const double mh = FromBits((Bits(m) + 0x20000000) & ~std::uint64_t{0x3fffffff});
  const double rh = mh * c - 1, rl = (m - mh) * c;
  const double r = rh + rl, r_lost = (rh - r) + rl;
  const double half_square = 0.5 * rh * rh, half_square_lo = 0.5 * rl * (rh + r);
  const double r2 = r * r;
  const double series = (r * r2) * (((1.0 / 3 - r * (1.0 / 4)) + r2 * (1.0 / 5 - r * (1.0 / 6))) +
                                    (r2 * r2) * (1.0 / 7 - r * (1.0 / 8)));

  const double k = static_cast<double>(exponent - subnormal_shift);
  const Sum a = AddOrdered(k * kLogOf2.hi + minus_log_c_hi, r);
  const Sum b = AddOrdered(a.hi, -half_square);
  const double lo =
      (k * kLogOf2.lo + minus_log_c_lo) + ((a.lo + b.lo) + ((r_lost - half_square_lo) + series));
  return AddOrdered(b.hi, lo);
}

/// Whether x has a finite logarithm; if not, `*limit` receives what takes its place.
VRX_INLINE bool HasFiniteLog(double x, double* limit) {
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
  const Sum log = LogOfPositive(x);
  const Sum product = Multiply(y, log.hi);
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

constexpr std::uint32_t kQuarterTurn = 64;  // in steps of pi / 128

/// An angle as steps of pi / 128, of which the last eight bits count, plus at most half a step in radians.
struct ReducedAngle {
  std::uint32_t steps;
  Sum r;
};

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
[[gnu::noinline]] ReducedAngle ReduceExactly(double x) {
  const auto mantissa = (Bits(x) & 0xfffffffffffff) | 0x10000000000000;
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
  Sum fraction = {0, 0};
  double weight = 0x1p-32;
  for (const double half : halves) {
    const Sum next = AddOrdered(fraction.hi, half * weight);
    fraction = {next.hi, fraction.lo + next.lo};
    weight *= 0x1p-32;
  }
  constexpr Sum kStep = {0x1.921fb54442d18p-6, 0x1.1a62633145c07p-60};  // pi / 128
  const Sum r = Multiply(fraction.hi, kStep.hi);
  return {steps, AddOrdered(r.hi, r.lo + (fraction.hi * kStep.lo + fraction.lo * kStep.hi))};
}

/// sin(steps pi/128 + r), negated if `sign` is kSignBit and not 0, from sine S and cosine C of the steps:
/// S cos r + C sin r = S + r + (S (cos r - 1) + C (sin r - r) - (1 - C) r), |r| <= pi/256.
VRX_INLINE double SineAtNode(const ReducedAngle& angle, std::uint64_t sign) {
  // In every second quarter sin(pi/2 + a) = sin(pi/2 - a), and the second half turn is the first one negated.
  const std::uint32_t quarter = angle.steps / kQuarterTurn;
  const std::uint32_t second_quarter = quarter & 1, second_half = quarter & 2;
  const std::uint32_t in_quarter = angle.steps & (kQuarterTurn - 1);
  const auto& node = kSineNode[(in_quarter ^ (second_quarter * (kQuarterTurn - 1))) + second_quarter];
  const double node_sign = FromBits(Bits(1) ^ sign ^ (std::uint64_t{second_half} << 62));
  const double r_sign = FromBits(Bits(node_sign) ^ (std::uint64_t{second_quarter} << 63));
  const double S = node.hi * node_sign, S_lo = node.lo * node_sign, C = 1 - node.one_minus_cos;
  const double r = angle.r.hi * r_sign, r_lo = angle.r.lo * r_sign;

  const double r2 = r * r;
  const double sin_minus_r = (r * r2) * (-1.0 / 6 + r2 * (1.0 / 120 - r2 * (1.0 / 5040)));
  const double cos_minus_1 = r2 * (-1.0 / 2 + r2 * (1.0 / 24 - r2 * (1.0 / 720)));
  const Sum sum = AddOrdered(S, r);
  const double small = (S_lo + r_lo * C) - r * node.one_minus_cos;
  return sum.hi + (sum.lo + (small + (C * sin_minus_r + S * cos_minus_1)));
}

/// sin(x + offset pi/128), negated if `sign` is kSignBit, for any finite x >= 0.
[[gnu::noinline]] double SineReducedExactly(double x, std::uint32_t offset, std::uint64_t sign) {
  ReducedAngle angle = ReduceExactly(x);
  angle.steps += offset;
  return SineAtNode(angle, sign);
}

/// The same, faster. Up to 10^5 the steps times pi / 128 are subtracted in three parts (Cody and Waite), the
/// first two so short that their multiples are exact. Larger x, and those of which so little is left that the
/// digits of the third part do not suffice, are reduced exactly.
VRX_INLINE double ShiftedSine(double x, std::uint32_t offset, std::uint64_t sign) {
  constexpr double kStepsPerRadian = 0x1.45f306dc9c883p+5;  // 128 / pi
  constexpr double kStep1 = 0x1.921fb544p-6, kStep2 = 0x1.0b4611a4p-40, kStep3 = 0x1.13198a2e03707p-71;
  if (x > 1e5) return SineReducedExactly(x, offset, sign);
  const auto [steps, n] = RoundToInteger(x * kStepsPerRadian);
  const Sum near = AddOrdered(x - steps * kStep1, -(steps * kStep2));
  if (std::fabs(near.hi) < 0x1p-36 && n != 0) return SineReducedExactly(x, offset, sign);
  return SineAtNode({static_cast<std::uint32_t>(n) + offset, AddOrdered(near.hi, near.lo - steps * kStep3)},
                    sign);
}

// ----------------------------------------------------------------------------------------------------------
// Arc tangent

/// The direction of (x, y) with x = +-b, b > 0, y = a >= 0, turned by the small angle `turn`; a and b not
/// extreme. An octant's offset +- atan t, t = min/max, from the series at the multiple of 1/64 next to t.
VRX_INLINE double AngleInUpperHalf(double a, double b, bool x_negative, double turn) {
  struct Octant {
    double sign;
    Sum offset;
  };
  static constexpr Octant kOctants[4] = {{1, {0, 0}},                     // a <= b, x > 0
                                         {-1, {kPi.hi / 2, kPi.lo / 2}},  // a > b, x > 0
                                         {-1, kPi},                       // a <= b, x < 0
                                         {1, {kPi.hi / 2, kPi.lo / 2}}};  // a > b, x < 0
  // A hue is as often steep as flat and a branch would guess wrong half the time: three conditions that
  // differ in form leave the compiler no reason to make one of them.
  const bool steep = Bits(a) > Bits(b);
  const double small = b < a ? b : a, large = a < b ? b : a;
  const auto& [sign, offset] = kOctants[static_cast<int>(steep) + 2 * static_cast<int>(x_negative)];

  // t as the sum of a short head and the quotient of what is left.
  const double inverse = 1 / large;
  const double t = small * inverse;
  const double head = Head(t), large_head = Head(large);
  const double tail = ((small - head * large_head) - head * (large - large_head)) * inverse;

  const auto [k, index] = RoundToInteger(t * 64);
  const auto& node = kAtanNode[index];
  const double centre = k * (1.0 / 64);
  const double d_head = head - centre, d = t - centre, d2 = d * d;
  const double curve = d2 * ((node.c[0] + d * node.c[1]) +
                             d2 * ((node.c[2] + d * node.c[3]) + d2 * (node.c[4] + d * node.c[5])));
  const Sum angle = AddOrdered(node.hi, d_head);
  const Sum sum = AddOrdered(offset.hi, sign * angle.hi);
  const double rest = (angle.lo + node.lo) + (curve + d_head * node.slope_minus_1);
  const double rest_but_tail = sum.lo + ((offset.lo + turn) + sign * rest);
  return sum.hi + (rest_but_tail + tail * (sign + sign * node.slope_minus_1));
}

/// Whether products and quotients of a few such numbers stay normal.
VRX_INLINE bool IsModerate(double x) {
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
  return std::copysign(AngleInUpperHalf(a * up * down, b * up * down, x_negative, 0), y);
}

/// The cosine of arcsin x, sqrt(1 - x^2), for |x| <= 1.
VRX_INLINE Sum Cofactor(double x) {
  const Sum square = Multiply(x, x);
  const Sum d = AddOrdered(1, -square.hi);
  const Sum difference = AddOrdered(d.hi, d.lo - square.lo);
  if (difference.hi == 0) return {0, 0};
  const double root = std::sqrt(difference.hi);
  const Sum root_square = Multiply(root, root);
  return {root, ((difference.hi - root_square.hi) - root_square.lo + difference.lo) / (2 * root)};
}

}  // namespace

double CubeRoot(double x) noexcept {
  const std::uint64_t exponent = ExponentField(x);
  if (exponent - 1 >= 0x7fe) return CubeRootOfUnusual(x);

  // A 17-bit start t: minimax polynomial of degree 5 for the cube root on [1, 2], relative error 2^-19.6,
  // times the cube root of the power of two, 2^(e-1023) = 8^(third-342) 2^remainder. Rounded to 17 bits, t^3
  // is exact and so is x - t^3.
  static constexpr double kRootOfTwo[3] = {1, 0x1.428a2f98d728bp+0, 0x1.965fea53d6e3dp+0};
  const std::uint64_t third = (exponent + 3) / 3, remainder = exponent % 3;
  const double scale =
      FromBits((Bits(kRootOfTwo[remainder]) + ((third - 342) << kFractionBits)) | (Bits(x) & kSignBit));
  const double m = FromBits((Bits(x) & 0xfffffffffffff) | Bits(1.0));
  const double m2 = m * m;
  const double root = ((0x1.e4b0cb9bd13dep-2 + 0x1.ad2350d82a2b1p-1 * m) +
                       m2 * ((-0x1.e07d8120e972ep-2 + 0x1.9f49aeec4405ap-3 * m) +
                             m2 * (-0x1.9cc44081f3a68p-5 + 0x1.5e85c2a38f8dap-8 * m)));
  const double t =
      FromBits((Bits(root * scale) + (std::uint64_t{1} << 35)) & ~((std::uint64_t{1} << 36) - 1));

  // t (1 + w)^(1/3) with w = (x - t^3) / t^3 < 2^-15: the terms from w^4 on stay below 2^-65 of t.
  const double t2 = t * t;
  const double inverse_t2 = 1 / t2;
  const double tw = (x - t2 * t) * inverse_t2;
  const double w = tw * (t * inverse_t2);
  return t + tw * (1.0 / 3 - w * (1.0 / 9 - w * (5.0 / 81)));
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
  constexpr Sum kPerLog = {0x1.bcb7b1526e50ep-2, 0x1.95355baaafad3p-57};  // 1 / ln 10
  double limit;
  if (!HasFiniteLog(x, &limit)) return limit;
  const Sum log = LogOfPositive(x);
  const Sum product = Multiply(log.hi, kPerLog.hi);
  return product.hi + (product.lo + (log.hi * kPerLog.lo + log.lo * kPerLog.hi));
}

double Power(double x, double y) noexcept {
  const bool usual = x > 0 && x < kInfinity && std::fabs(y) < kInfinity;
  return usual ? PowerOfPositive(x, y) : PowerOfUnusual(x, y);
}

double Sin(double x) noexcept {
  const double size = std::fabs(x);
  if (size < 0x1p-26) return x;
  if (!(size < kInfinity)) return kNaN;
  return ShiftedSine(size, 0, Bits(x) & kSignBit);
}

double Cos(double x) noexcept {
  const double size = std::fabs(x);
  if (!(size < kInfinity)) return kNaN;
  return ShiftedSine(size, kQuarterTurn, 0);
}

double Atan(double x) noexcept {
  return Atan2(x, 1);
}

double Atan2(double y, double x) noexcept {
  if (!IsModerate(x) || !IsModerate(y)) return Atan2OfUnusual(y, x);
  return std::copysign(AngleInUpperHalf(std::fabs(y), std::fabs(x), std::signbit(x), 0), y);
}

double Asin(double x) noexcept {
  const double size = std::fabs(x);
  if (!(size <= 1)) return kNaN;
  if (size < 0x1p-26) return x;
  const Sum cosine = Cofactor(size);
  return std::copysign(AngleInUpperHalf(size, cosine.hi, false, -size * cosine.lo), x);
}

double Acos(double x) noexcept {
  const double size = std::fabs(x);
  if (!(size <= 1)) return kNaN;
  if (size < 0x1p-60) return kPi.hi / 2;
  const Sum sine = Cofactor(size);
  return AngleInUpperHalf(sine.hi, size, std::signbit(x), x * sine.lo);
}

}  // namespace vrx
