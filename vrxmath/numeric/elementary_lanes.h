// The straight-line parts of the elementary functions, one source for a double and for a pack of lanes (pack.h).
// The cases beyond them (zeros, subnormals, infinities, NaN, results out of range, arguments that need a longer
// reduction) stand in elementary.cpp; the packs give such lanes to it.
//
// How the bounds in elementary.h come about. Every function ends in one addition hi + rest, where hi carries no
// error of its own and rest is smaller by a factor of 2^6 or more. So the final rounding costs 0.5 ULP, and
// the few roundings inside rest, together with the omitted tail of its series, at most some hundredths. Where
// a product must be exact, its factors are first cut to so few bits that 53 suffice. The series are Taylor
// series whose arguments a table keeps small; only the starting value of the cube root is a minimax
// polynomial, and only the arc tangent's is economised.

#ifndef VRXMATH_NUMERIC_ELEMENTARY_LANES_H_
#define VRXMATH_NUMERIC_ELEMENTARY_LANES_H_

#include <cstddef>
#include <cstdint>
#include <limits>

#include <vrxmath/numeric/elementary_tables.h>
#include <vrxmath/numeric/lanes.h>

#if defined(__FAST_MATH__)
#error "rearranged arithmetic would break the guarantee of equal bits: compile without -ffast-math"
#endif
#if defined(__clang__)
#pragma STDC FP_CONTRACT OFF
#endif

namespace vrx {

/// The bits of a number.
VRX_LANE_INLINE std::uint64_t ToBits(double x) {
  return __builtin_bit_cast(std::uint64_t, x);
}

namespace elementary {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::uint64_t kSignBit = 0x8000000000000000;
constexpr std::uint64_t kFraction = 0xfffffffffffff;
constexpr std::uint64_t kOneBits = 0x3ff0000000000000;
constexpr int kFractionBits = 52;
constexpr int kExponentBias = 1023;

/// An entry of a table for every lane, number by number.
template <class T, int kFields>
struct EntryOf {
  T fields[static_cast<std::size_t>(kFields)];
};

/// The operations that differ between a number and a pack: those on the bits as integers, and tables.
template <class T>
struct LaneTraits;

template <>
struct LaneTraits<double> {
  using Words = std::uint64_t;

  static VRX_LANE_INLINE double FromBits(Words bits) { return __builtin_bit_cast(double, bits); }
  static VRX_LANE_INLINE double ToDouble(Words n) {
    return static_cast<double>(static_cast<std::int64_t>(n));
  }
  static VRX_LANE_INLINE Words ShiftRightSigned(Words bits, int count) {
    return static_cast<Words>(static_cast<std::int64_t>(bits) >> count);
  }
  static VRX_LANE_INLINE double MinusProduct(double a, double b, double c) { return a - b * c; }
  static constexpr bool kRoundsOnce = false;
  template <class Node>
  static VRX_LANE_INLINE auto Entry(const Node* table, Words index) {
    struct Place {
      const double* fields;
    };
    return Place{reinterpret_cast<const double*>(table + index)};
  }
};

template <class T>
using Words = typename LaneTraits<T>::Words;

/// An unevaluated sum, lo at most about half an ULP of hi.
template <class T>
struct Sum {
  T hi, lo;
};

constexpr double kRootOfTwo[3] = {1, 0x1.428a2f98d728bp+0, 0x1.965fea53d6e3dp+0};  // cube roots of 1, 2, 4
constexpr Sum<double> kPi = {0x1.921fb54442d18p+1, 0x1.1a62633145c07p-53};

template <class T>
VRX_LANE_INLINE T FromBits(Words<T> bits) {
  return LaneTraits<T>::FromBits(bits);
}

/// x without its last 27 bits, towards zero: 26 significant bits, and x minus it has 27.
template <class T>
VRX_LANE_INLINE T Head(T x) {
  return FromBits<T>(ToBits(x) & ~std::uint64_t{0x7ffffff});
}

/// a + b with its rounding error, for |a| >= |b| or a = 0.
template <class T>
VRX_LANE_INLINE Sum<T> AddOrdered(T a, T b) {
  const T s = a + b;
  return {s, (a - s) + b};
}

/// a b with its rounding error, provided that nothing overflows or underflows.
template <class T>
VRX_LANE_INLINE Sum<T> Multiply(T a, T b) {
  const T p = a * b;
  const T ah = Head(a), al = a - ah;
  const T bh = Head(b), bl = b - bh;
  return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
}

/// a - b c where the product is exact as a double: rounding it or not makes no difference.
template <class T>
VRX_LANE_INLINE T MinusExact(T a, T b, T c) {
  return LaneTraits<T>::MinusProduct(a, b, c);
}

/// a - b c, rounded once, for b of 26 significant bits and a so near to b c that a minus b times the head of c is exact.
template <class T>
VRX_LANE_INLINE T MinusNear(T a, T b, T c) {
  if constexpr (LaneTraits<T>::kRoundsOnce) {
    return LaneTraits<T>::MinusProduct(a, b, c);
  } else {
    const T head = Head(c);
    return (a - b * head) - b * (c - head);
  }
}

/// `x` with its sign turned where `sign` is kSignBit instead of 0.
template <class T>
VRX_LANE_INLINE T WithSign(T x, Words<T> sign) {
  return FromBits<T>(ToBits(x) ^ sign);
}

/// The integer n nearest to x as a double, and in the low 32 bits of `bits` as an integer for |x| < 2^31. The bits
/// above are a multiple of 2^50, so that whole numbers may be added and shifted out below as if `bits` were n.
template <class T>
struct Rounded {
  T value;
  Words<T> bits;
};
template <class T>
VRX_LANE_INLINE Rounded<T> RoundToInteger(T x) {
  constexpr double kShift = 0x1.8p52;  // leaves no bits for a fraction
  const T shifted = x + kShift;
  return {shifted - kShift, ToBits(shifted)};
}

// ----------------------------------------------------------------------------------------------------------
// Where a number looks up what a pack selects.

/// a > b for a, b >= 0. A hue is as often steep as flat and a branch would guess wrong half the time: conditions that
/// differ in form leave the compiler no reason to make one of them.
VRX_LANE_INLINE bool IsLarger(double a, double b) {
  return ToBits(a) > ToBits(b);
}

/// The part of an octant in the arc tangent: the offset, and the sign of the arc tangent itself.
template <class T>
struct Octant {
  T sign;
  Sum<T> offset;
};
template <class T, class MASK>
VRX_LANE_INLINE Octant<T> OctantOf(MASK steep, MASK x_negative) {
  const auto turned = steep ^ x_negative;
  return {Select(turned, T(-1.0), T(1.0)),
          {Select(steep, T(kPi.hi / 2), Select(x_negative, T(kPi.hi), T(0.0))),
           Select(steep, T(kPi.lo / 2), Select(x_negative, T(kPi.lo), T(0.0)))}};
}
template <>
VRX_LANE_INLINE Octant<double> OctantOf<double>(bool steep, bool x_negative) {
  static constexpr Octant<double> kOctants[4] = {{1, {0, 0}},                     // a <= b, x > 0
                                                 {-1, {kPi.hi / 2, kPi.lo / 2}},  // a > b, x > 0
                                                 {-1, kPi},                       // a <= b, x < 0
                                                 {1, {kPi.hi / 2, kPi.lo / 2}}};  // a > b, x < 0
  return kOctants[static_cast<int>(steep) + 2 * static_cast<int>(x_negative)];
}

/// The bits of the cube root of 2^(e - 1023), e the exponent field of a normal number: with e = 3 third + remainder
/// the root of 2^remainder times a power of two.
template <class T>
VRX_LANE_INLINE Words<T> RootOfPowerOfTwo(Words<T> exponent) {
  const T e = LaneTraits<T>::ToDouble(exponent);
  const auto [third, bits] = RoundToInteger<T>((e - 1.0) * (1.0 / 3));
  const T remainder = e - third * 3.0;
  const T root = Select(remainder == 0.0, T(kRootOfTwo[0]),
                        Select(remainder == 1.0, T(kRootOfTwo[1]), T(kRootOfTwo[2])));
  return ToBits(root) + ((bits - std::uint64_t{341}) << kFractionBits);
}
template <>
VRX_LANE_INLINE std::uint64_t RootOfPowerOfTwo<double>(std::uint64_t exponent) {
  const std::uint64_t third = (exponent + 3) / 3, remainder = exponent % 3;
  return ToBits(kRootOfTwo[remainder]) + ((third - 342) << kFractionBits);
}

// ----------------------------------------------------------------------------------------------------------
// Exponential

/// exp(hi + lo) as steps: with n = round(128 x / ln 2) it is 2^(n/128) (1 + (e^r - 1)), |r| <= ln 2 / 256, where six
/// terms of the series leave 2^-60. `power` + `rest` times 2^(n >> 7), n in the low bits of `bits`.
template <class T>
struct ExpSteps {
  T power, rest;
  Words<T> bits;
};
template <class T>
VRX_LANE_INLINE ExpSteps<T> ExpInSteps(T hi, T lo) {
  constexpr double kStepsPerUnit = 0x1.71547652b82fep+7;  // 128 / ln 2
  constexpr Sum<double> kStep = {0x1.62e42fefap-8,
                                 0x1.cf79abc9e3b3ap-47};  // ln 2 / 128, 36 bits and the rest
  const auto [steps, bits] = RoundToInteger<T>(hi * kStepsPerUnit);
  const T r = (MinusExact<T>(hi, steps, kStep.hi) - steps * kStep.lo) + lo;
  const T r2 = r * r;
  const T expm1 = r + r2 * ((1.0 / 2 + r * (1.0 / 6)) + r2 * (1.0 / 24 + r * (1.0 / 120)));
  const Words<T> index = bits & 127;
  const auto entry = LaneTraits<T>::Entry(kPowerOfTwo, index);
  const T power = entry.fields[0], lost = entry.fields[1];
  return {power, power * (lost + expm1), bits};
}

/// exp(hi + lo) for |lo| < 2^-40 or so and |hi| <= 707.
template <class T>
VRX_LANE_INLINE T ExpOfUsualSum(T hi, T lo) {
  const auto [power, rest, bits] = ExpInSteps<T>(hi, lo);
  return (power + rest) * FromBits<T>(((bits >> 7) + std::uint64_t{kExponentBias}) << kFractionBits);
}

// ----------------------------------------------------------------------------------------------------------
// Logarithm

constexpr Sum<double> kLogOf2 = {0x1.62e42fefa38p-1,
                                 0x1.ef35793c7673p-45};  // a multiple of 2^-42 and the rest

/// ln x - `exponent` ln 2 to about 2^-67 of itself, for x > 0, normal and finite. With x = 2^k m and a tabulated c
/// near 1/m: k ln 2 - ln c + ln(1 + r), r = c m - 1, |r| < 2^-7.7; around x = 1 only ln(1 + r) is left.
template <class T>
VRX_LANE_INLINE Sum<T> LogOfNormal(T x, std::uint64_t exponent) {
  constexpr std::uint64_t kFirst = 0x3fe6500000000000;  // 357/512, where the table's first interval begins
  const Words<T> offset = ToBits(x) - kFirst;
  const Words<T> power = LaneTraits<T>::ShiftRightSigned(offset, kFractionBits);
  const T m = FromBits<T>(ToBits(x) - (power << kFractionBits));
  const Words<T> index = (offset >> (kFractionBits - 7)) & 127;
  const auto entry = LaneTraits<T>::Entry(kReciprocal, index);
  const T c = entry.fields[0], minus_log_c_hi = entry.fields[1], minus_log_c_lo = entry.fields[2];

  // r = rh + rl exactly: m is rounded to so few bits that the square of rh is exact too.
  const T mh = FromBits<T>((ToBits(m) + 0x20000000) & ~std::uint64_t{0x3fffffff});
  const T rh = mh * c - 1.0, rl = (m - mh) * c;
  const T r = rh + rl, r_lost = (rh - r) + rl;
  const T half_square = 0.5 * rh * rh, half_square_lo = 0.5 * rl * (rh + r);
  const T r2 = r * r;
  const T series = (r * r2) * (((1.0 / 3 - r * (1.0 / 4)) + r2 * (1.0 / 5 - r * (1.0 / 6))) +
                               (r2 * r2) * (1.0 / 7 - r * (1.0 / 8)));

  const T k = LaneTraits<T>::ToDouble(power - exponent);
  const Sum<T> a = AddOrdered<T>(k * kLogOf2.hi + minus_log_c_hi, r);
  const Sum<T> b = AddOrdered<T>(a.hi, -half_square);
  const T lo = (k * kLogOf2.lo + minus_log_c_lo) + ((a.lo + b.lo) + ((r_lost - half_square_lo) + series));
  return AddOrdered<T>(b.hi, lo);
}

/// The decimal logarithm from the natural one.
template <class T>
VRX_LANE_INLINE T Log10Of(Sum<T> log) {
  constexpr Sum<double> kPerLog = {0x1.bcb7b1526e50ep-2, 0x1.95355baaafad3p-57};  // 1 / ln 10
  const Sum<T> product = Multiply<T>(log.hi, kPerLog.hi);
  return product.hi + (product.lo + (log.hi * kPerLog.lo + log.lo * kPerLog.hi));
}

// ----------------------------------------------------------------------------------------------------------
// Sine and cosine

constexpr std::uint32_t kQuarterTurn = 64;  // in steps of pi / 128

/// The nodes of a whole turn, from those of its first quarter: in every second quarter sin(pi/2 + a) = sin(pi/2 - a), and the
/// second half turn is the first one negated.
struct alignas(32) TurnNode {
  double sine, lost;     ///< the sine as a sum
  double one_minus_cos;  ///< of the angle to the horizontal axis, whose cosine is not negative
  double slope;          ///< 1, or -1 where the sine falls
};
constexpr std::uint32_t kWholeTurn = 4 * kQuarterTurn;
struct TurnTable {
  TurnNode nodes[kWholeTurn];
};
constexpr TurnTable kSineTurn = [] {
  TurnTable turn{};
  for (std::uint32_t steps = 0; steps < kWholeTurn; ++steps) {
    const std::uint32_t quarter = steps / kQuarterTurn, rest = steps % kQuarterTurn;
    const SineNode& node = kSineNode[quarter % 2 == 0 ? rest : kQuarterTurn - rest];
    const double sign = quarter < 2 ? 1.0 : -1.0;
    turn.nodes[steps] = {sign * node.hi, sign * node.lo, node.one_minus_cos, quarter % 2 == 0 ? sign : -sign};
  }
  return turn;
}();

/// An angle as steps of pi / 128, of which the last eight bits count, plus at most half a step in radians.
template <class T>
struct ReducedAngle {
  Words<T> steps;
  Sum<T> r;
};

/// sin(steps pi/128 + r) from sine S and cosine C of the steps: S cos r + C sin r =
/// S + r + (S (cos r - 1) + C (sin r - r) - (1 - C) r), |r| <= pi/256, where C >= 0 and r has the sign of the slope.
template <class T>
VRX_LANE_INLINE T SineAtNode(const ReducedAngle<T>& angle) {
  const auto entry = LaneTraits<T>::Entry(kSineTurn.nodes, angle.steps & (kWholeTurn - 1));
  const T S = entry.fields[0], S_lo = entry.fields[1], one_minus_cos = entry.fields[2],
          slope = entry.fields[3];
  const T C = 1.0 - one_minus_cos;
  const T r = angle.r.hi * slope, r_lo = angle.r.lo * slope;

  const T r2 = r * r;
  const T sin_minus_r = (r * r2) * (-1.0 / 6 + r2 * (1.0 / 120 - r2 * (1.0 / 5040)));
  const T cos_minus_1 = r2 * (-1.0 / 2 + r2 * (1.0 / 24 - r2 * (1.0 / 720)));
  const Sum<T> sum = AddOrdered<T>(S, r);
  const T small = (S_lo + r_lo * C) - r * one_minus_cos;
  return sum.hi + (sum.lo + (small + (C * sin_minus_r + S * cos_minus_1)));
}

/// An angle 0 <= x <= 10^5 reduced by subtracting the steps times pi / 128 in three parts (Cody and Waite), the
/// first two so short that their multiples are exact.
template <class T>
struct ModerateAngle {
  ReducedAngle<T> reduced;
  T steps;
  T left;  ///< what the first two parts leave, without its sign
};
template <class T>
VRX_LANE_INLINE ModerateAngle<T> ReduceModerate(T x) {
  constexpr double kStepsPerRadian = 0x1.45f306dc9c883p+5;  // 128 / pi
  constexpr double kStep1 = 0x1.921fb544p-6, kStep2 = 0x1.0b4611a4p-40, kStep3 = 0x1.13198a2e03707p-71;
  const auto [steps, bits] = RoundToInteger<T>(x * kStepsPerRadian);
  const T most = MinusExact<T>(x, steps, kStep1), s = MinusExact<T>(most, steps, kStep2);
  const Sum<T> rest = {s, MinusExact<T>(most - s, steps, kStep2)};
  return {{bits, AddOrdered<T>(rest.hi, rest.lo - steps * kStep3)}, steps, Abs(rest.hi)};
}
/// Below this the digits of the third part do not suffice for what is left of an angle of a step or more.
constexpr double kLeastLeft = 0x1p-36;

// ----------------------------------------------------------------------------------------------------------
// Arc tangent

/// The direction of (x, y) from the smaller and the larger of |x| and |y|, neither of them extreme, turned by the small angle
/// `turn`; `steep`: |y| is the larger. An octant's offset +- atan t, t = small / large, from the series at the multiple of 1/64
/// next to t.
template <class T, class MASK>
VRX_LANE_INLINE T AngleOfOctant(T small, T large, MASK steep, MASK x_negative, T turn) {
  const Octant<T> octant = OctantOf<T>(steep, x_negative);

  // t as the sum of a short head and the quotient of what is left.
  const T inverse = 1.0 / large;
  const T t = small * inverse;
  const T head = Head(t);
  const T tail = MinusNear(small, head, large) * inverse;

  const auto [k, bits] = RoundToInteger<T>(t * 64.0);
  const Words<T> index = bits & 127;
  const auto entry = LaneTraits<T>::Entry(kAtanNode, index);
  const T* node = entry.fields;
  const T centre = k * (1.0 / 64);
  const T d_head = head - centre, d = t - centre, d2 = d * d;
  const T curve =
      d2 * ((node[3] + d * node[4]) + d2 * ((node[5] + d * node[6]) + d2 * (node[7] + d * node[8])));
  const Sum<T> angle = AddOrdered<T>(node[0], d_head);
  const Sum<T> sum = AddOrdered<T>(octant.offset.hi, octant.sign * angle.hi);
  const T rest = (angle.lo + node[1]) + (curve + d_head * node[2]);
  const T rest_but_tail = sum.lo + ((octant.offset.lo + turn) + octant.sign * rest);
  return sum.hi + (rest_but_tail + tail * (octant.sign + octant.sign * node[2]));
}

/// The direction of (x, y) with x = +-b, b > 0, y = a >= 0. The comparisons of the form that IsLarger explains.
VRX_LANE_INLINE double AngleInUpperHalf(double a, double b, bool x_negative, double turn) {
  return AngleOfOctant(Select(b < a, b, a), Select(a < b, b, a), IsLarger(a, b), x_negative, turn);
}

// ----------------------------------------------------------------------------------------------------------
// Cube root

/// For normal x.
template <class T>
VRX_LANE_INLINE T CubeRootOfUsual(T x) {
  // A 17-bit start t: minimax polynomial of degree 5 for the cube root on [1, 2], relative error 2^-19.6,
  // times the cube root of the power of two, 2^(e-1023) = 8^(third-342) 2^remainder. Rounded to 17 bits, t^3
  // is exact and so is x - t^3.
  const Words<T> bits = ToBits(x);
  const T scale = FromBits<T>(RootOfPowerOfTwo<T>((bits >> kFractionBits) & 0x7ff) | (bits & kSignBit));
  const T m = FromBits<T>((bits & kFraction) | kOneBits);
  const T m2 = m * m;
  const T root = ((0x1.e4b0cb9bd13dep-2 + 0x1.ad2350d82a2b1p-1 * m) +
                  m2 * ((-0x1.e07d8120e972ep-2 + 0x1.9f49aeec4405ap-3 * m) +
                        m2 * (-0x1.9cc44081f3a68p-5 + 0x1.5e85c2a38f8dap-8 * m)));
  const T t =
      FromBits<T>((ToBits(root * scale) + (std::uint64_t{1} << 35)) & ~((std::uint64_t{1} << 36) - 1));

  // t (1 + w)^(1/3) with w = (x - t^3) / t^3 < 2^-15: the terms from w^4 on stay below 2^-65 of t.
  const T t2 = t * t;
  const T inverse_t2 = 1.0 / t2;
  const T tw = MinusExact(x, t2, t) * inverse_t2;
  const T w = tw * (t * inverse_t2);
  return t + tw * (1.0 / 3 - w * (1.0 / 9 - w * (5.0 / 81)));
}

}  // namespace elementary
}  // namespace vrx

#endif  // VRXMATH_NUMERIC_ELEMENTARY_LANES_H_
