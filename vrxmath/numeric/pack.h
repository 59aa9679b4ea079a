// Packs of lanes: several numbers on which one instruction works, with the vocabulary of lanes.h.
//
// A pack is one vector of the compiler's own vector extension (g++ and clang++), so the same source becomes SSE2,
// AVX2, AVX-512 or NEON by the flags it is compiled with. Every lane does what a plain double would do, operation by
// operation, and has the same bits; nothing mixes lanes, and there is no fused multiply-add.
//
// `Unit` is a type in the unnamed namespace of the source file that uses the packs. It gives everything made from
// them internal linkage: a function compiled for AVX-512 can never be taken by the linker for its SSE2 twin.
//
//   namespace { struct Unit; using Lanes = vrx::Pack<4, Unit>; }

#ifndef VRXMATH_NUMERIC_PACK_H_
#define VRXMATH_NUMERIC_PACK_H_

#include <cstddef>
#include <cstdint>
#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include <vrxmath/numeric/elementary_lanes.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// The compiler's vectors of 2, 4 and 8 lanes.
template <int kLaneCount>
struct VectorTypes;
template <>
struct VectorTypes<2> {
  typedef double Numbers __attribute__((vector_size(16)));
  typedef std::int64_t Truths __attribute__((vector_size(16)));
  typedef std::uint64_t Words __attribute__((vector_size(16)));
};
template <>
struct VectorTypes<4> {
  typedef double Numbers __attribute__((vector_size(32)));
  typedef std::int64_t Truths __attribute__((vector_size(32)));
  typedef std::uint64_t Words __attribute__((vector_size(32)));
};
template <>
struct VectorTypes<8> {
  typedef double Numbers __attribute__((vector_size(64)));
  typedef std::int64_t Truths __attribute__((vector_size(64)));
  typedef std::uint64_t Words __attribute__((vector_size(64)));
};

/// A true or false per lane: all bits of the lane, or none.
template <int kLaneCount, class Unit>
struct Mask {
  using Vector = typename VectorTypes<kLaneCount>::Truths;
  Vector v;

  friend VRX_LANE_INLINE Mask operator&(Mask a, Mask b) { return {a.v & b.v}; }
  friend VRX_LANE_INLINE Mask operator|(Mask a, Mask b) { return {a.v | b.v}; }
  friend VRX_LANE_INLINE Mask operator^(Mask a, Mask b) { return {a.v ^ b.v}; }
  friend VRX_LANE_INLINE Mask operator!(Mask a) { return {~a.v}; }

  /// One bit a lane, the first lane lowest.
  friend VRX_LANE_INLINE unsigned LaneBits(Mask m) {
#if defined(__AVX512DQ__)
    if constexpr (kLaneCount == 8) return _mm512_movepi64_mask(reinterpret_cast<__m512i>(m.v));
#endif
#if defined(__AVX__)
    if constexpr (kLaneCount == 4) {
      return static_cast<unsigned>(_mm256_movemask_pd(reinterpret_cast<__m256d>(m.v)));
    }
#endif
#if defined(__SSE2__)
    if constexpr (kLaneCount == 2) {
      return static_cast<unsigned>(_mm_movemask_pd(reinterpret_cast<__m128d>(m.v)));
    }
#endif
    unsigned bits = 0;
    for (int lane = 0; lane < kLaneCount; ++lane) bits |= (m.v[lane] != 0 ? 1u : 0u) << lane;
    return bits;
  }
  friend VRX_LANE_INLINE bool Any(Mask m) {
    return LaneBits(m) != 0;
  }
  friend VRX_LANE_INLINE bool All(Mask m) {
    return LaneBits(m) == (1u << kLaneCount) - 1;
  }
};

/// `kLaneCount` doubles.
template <int kLaneCount, class Unit>
struct Pack {
  using Vector = typename VectorTypes<kLaneCount>::Numbers;
  /// The bits of the lanes, as unsigned whole numbers.
  using Words = typename VectorTypes<kLaneCount>::Words;
  using MaskType = Mask<kLaneCount, Unit>;
  static constexpr int kLanes = kLaneCount;
  Vector v;

  Pack() = default;
  /// The same number in every lane.
  VRX_LANE_INLINE Pack(double x) : v(x - Vector{}) {}  // NOLINT: a number stands for a pack in formulas
  VRX_LANE_INLINE explicit Pack(Vector lanes) : v(lanes) {}

  friend VRX_LANE_INLINE Pack operator+(Pack a, Pack b) { return Pack(a.v + b.v); }
  friend VRX_LANE_INLINE Pack operator-(Pack a, Pack b) { return Pack(a.v - b.v); }
  friend VRX_LANE_INLINE Pack operator*(Pack a, Pack b) { return Pack(a.v * b.v); }
  friend VRX_LANE_INLINE Pack operator/(Pack a, Pack b) { return Pack(a.v / b.v); }
  friend VRX_LANE_INLINE Pack operator-(Pack a) { return Pack(-a.v); }
  VRX_LANE_INLINE Pack& operator+=(Pack b) { return *this = *this + b; }
  VRX_LANE_INLINE Pack& operator-=(Pack b) { return *this = *this - b; }
  VRX_LANE_INLINE Pack& operator*=(Pack b) { return *this = *this * b; }

  friend VRX_LANE_INLINE MaskType operator<(Pack a, Pack b) { return {a.v < b.v}; }
  friend VRX_LANE_INLINE MaskType operator<=(Pack a, Pack b) { return {a.v <= b.v}; }
  friend VRX_LANE_INLINE MaskType operator>(Pack a, Pack b) { return {a.v > b.v}; }
  friend VRX_LANE_INLINE MaskType operator>=(Pack a, Pack b) { return {a.v >= b.v}; }
  friend VRX_LANE_INLINE MaskType operator==(Pack a, Pack b) { return {a.v == b.v}; }
  friend VRX_LANE_INLINE MaskType operator!=(Pack a, Pack b) { return {a.v != b.v}; }

  friend VRX_LANE_INLINE Pack Select(MaskType mask, Pack a, Pack b) { return Pack(mask.v ? a.v : b.v); }

  friend VRX_LANE_INLINE Words ToBits(Pack x) { return reinterpret_cast<Words>(x.v); }
  static VRX_LANE_INLINE Pack OfBits(Words bits) { return Pack(reinterpret_cast<Vector>(bits)); }

  friend VRX_LANE_INLINE Pack Abs(Pack x) { return OfBits(ToBits(x) & 0x7fffffffffffffff); }
  friend VRX_LANE_INLINE Pack Sqrt(Pack x) {
#if defined(__AVX512F__)
    if constexpr (kLaneCount == 8) return Pack(static_cast<Vector>(_mm512_maskz_sqrt_pd(0xff, x.v)));
#endif
#if defined(__AVX__)
    if constexpr (kLaneCount == 4) return Pack(static_cast<Vector>(_mm256_sqrt_pd(x.v)));
#endif
#if defined(__SSE2__)
    if constexpr (kLaneCount == 2) return Pack(static_cast<Vector>(_mm_sqrt_pd(x.v)));
#endif
    for (int lane = 0; lane < kLaneCount; ++lane) x.v[lane] = Sqrt(static_cast<double>(x.v[lane]));
    return x;
  }

  friend VRX_LANE_INLINE MaskType IsUnset(Pack x) {
    return (x > 9.99e-6) & (x < 1.001e-5);
  }
  friend VRX_LANE_INLINE MaskType NearlyEqual(Pack a, Pack b, double tolerance = kDoubleEpsilon) {
    return Abs(b - a) < tolerance;
  }
};

/// Branch of lanes.h; where both sides are taken they are evaluated for all lanes.
template <int kLaneCount, class Unit, class A, class B>
VRX_LANE_INLINE Pack<kLaneCount, Unit> Branch(Mask<kLaneCount, Unit> mask, const A& a, const B& b) {
  Pack<kLaneCount, Unit> x = 0.0, y = 0.0;
  if (Any(mask)) x = a();
  if (!All(mask)) y = b();
  return Select(mask, x, y);
}

// ----------------------------------------------------------------------------------------------------------
// Lanes from and to memory. For T = double they read and write one number.

/// T::kLanes, or 1 for a double.
template <class T>
inline constexpr int kLanesOf = T::kLanes;
template <>
inline constexpr int kLanesOf<double> = 1;

/// kLanesOf<T> consecutive numbers.
template <class T>
VRX_LANE_INLINE T Load(const double* from) {
  T x;
  __builtin_memcpy(&x, from, sizeof x);
  return x;
}
template <class T>
VRX_LANE_INLINE void Store(T x, double* to) {
  __builtin_memcpy(to, &x, sizeof x);
}

/// Every `stride`-th number.
template <class T, class Number>
VRX_LANE_INLINE T LoadStrided(const Number* from, std::ptrdiff_t stride) {
  if constexpr (kLanesOf<T> == 1) {
    return static_cast<double>(*from);
  } else {
    T x;
    for (int lane = 0; lane < T::kLanes; ++lane) x.v[lane] = static_cast<double>(from[lane * stride]);
    return x;
  }
}
template <class T>
VRX_LANE_INLINE void StoreStrided(T x, double* to, std::ptrdiff_t stride) {
  if constexpr (kLanesOf<T> == 1) {
    *to = x;
  } else {
    for (int lane = 0; lane < T::kLanes; ++lane) to[lane * stride] = x.v[lane];
  }
}

// ----------------------------------------------------------------------------------------------------------
// What elementary_lanes.h needs

namespace elementary {

template <int kLaneCount, class Unit>
struct LaneTraits<Pack<kLaneCount, Unit>> {
  using T = Pack<kLaneCount, Unit>;
  using Words = typename T::Words;

  static VRX_LANE_INLINE T FromBits(Words bits) { return T::OfBits(bits); }
  /// A whole number below 2^51 in size, in two's complement, as a double.
  static VRX_LANE_INLINE T ToDouble(Words n) {
    constexpr std::uint64_t kShiftBits = 0x4338000000000000;  // 1.5 x 2^52
    return FromBits(n + kShiftBits) - 0x1.8p52;
  }
  /// The bits shifted right, the sign coming in from the left.
  static VRX_LANE_INLINE Words ShiftRightSigned(Words bits, int count) {
    const std::uint64_t sign = std::uint64_t{1} << (63 - count);
    return ((bits >> count) ^ sign) - sign;
  }
  template <class Node>
  static VRX_LANE_INLINE T Gather(const Node* table, Words index, int field) {
    constexpr int kFields = sizeof(Node) / sizeof(double);
    const double* base = reinterpret_cast<const double*>(table) + field;
    const Words at = index * kFields;
#if defined(__AVX512F__)
    if constexpr (kLaneCount == 8) {
      const __m512i lanes = reinterpret_cast<__m512i>(at);
      return T(static_cast<typename T::Vector>(
          _mm512_mask_i64gather_pd(_mm512_setzero_pd(), 0xff, lanes, base, 8)));
    }
#endif
#if defined(__AVX2__)
    if constexpr (kLaneCount == 4) {
      return T(static_cast<typename T::Vector>(_mm256_i64gather_pd(base, reinterpret_cast<__m256i>(at), 8)));
    }
#endif
    T x;
    for (int lane = 0; lane < kLaneCount; ++lane) x.v[lane] = base[at[lane]];
    return x;
  }
};

/// The scalar function for the lanes of the mask, `r` for the others.
template <int kLaneCount, class Unit>
[[gnu::noinline, gnu::cold]] Pack<kLaneCount, Unit> LaneByLane(unsigned lanes, double (*f)(double),
                                                               Pack<kLaneCount, Unit> x,
                                                               Pack<kLaneCount, Unit> r) {
  for (int lane = 0; lane < kLaneCount; ++lane) {
    if ((lanes >> lane & 1) != 0) r.v[lane] = f(x.v[lane]);
  }
  return r;
}
template <int kLaneCount, class Unit>
[[gnu::noinline, gnu::cold]] Pack<kLaneCount, Unit> LaneByLane(unsigned lanes, double (*f)(double, double),
                                                               Pack<kLaneCount, Unit> x,
                                                               Pack<kLaneCount, Unit> y,
                                                               Pack<kLaneCount, Unit> r) {
  for (int lane = 0; lane < kLaneCount; ++lane) {
    if ((lanes >> lane & 1) != 0) r.v[lane] = f(x.v[lane], y.v[lane]);
  }
  return r;
}

}  // namespace elementary

// ----------------------------------------------------------------------------------------------------------
// The elementary functions. Arguments that the straight-line form does not cover (zeros, subnormals, infinities, NaN
// and whatever else the scalar form treats apart) are replaced by a harmless one and given to the scalar form after.

#define VRX_PACK_TEMPLATE template <int kLaneCount, class Unit>
#define VRX_PACK Pack<kLaneCount, Unit>

VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK CubeRoot(VRX_PACK x) {
  const auto usual = (Abs(x) >= 0x1p-1022) & (Abs(x) < elementary::kInfinity);
  const VRX_PACK r = elementary::CubeRootOfUsual(Select(usual, x, 1.0));
  const unsigned unusual = LaneBits(!usual);
  return unusual == 0 ? r : elementary::LaneByLane(unusual, &CubeRoot, x, r);
}

VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Exp(VRX_PACK x) {
  const auto usual = Abs(x) <= 707.0;
  const VRX_PACK r = elementary::ExpOfUsualSum<VRX_PACK>(Select(usual, x, 0.0), 0.0);
  const unsigned unusual = LaneBits(!usual);
  return unusual == 0 ? r : elementary::LaneByLane(unusual, &Exp, x, r);
}

VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Log(VRX_PACK x) {
  const auto usual = (x >= 0x1p-1022) & (x < elementary::kInfinity);
  const VRX_PACK r = elementary::LogOfNormal(Select(usual, x, 1.0), std::uint64_t{0}).hi;
  const unsigned unusual = LaneBits(!usual);
  return unusual == 0 ? r : elementary::LaneByLane(unusual, &Log, x, r);
}

VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Log10(VRX_PACK x) {
  const auto usual = (x >= 0x1p-1022) & (x < elementary::kInfinity);
  const VRX_PACK r = elementary::Log10Of(elementary::LogOfNormal(Select(usual, x, 1.0), std::uint64_t{0}));
  const unsigned unusual = LaneBits(!usual);
  return unusual == 0 ? r : elementary::LaneByLane(unusual, &Log10, x, r);
}

VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Power(VRX_PACK x, VRX_PACK y) {
  const auto finite = (x >= 0x1p-1022) & (x < elementary::kInfinity) & (Abs(y) <= 0x1p70);
  const auto log = elementary::LogOfNormal(Select(finite, x, 1.0), std::uint64_t{0});
  const auto product = elementary::Multiply(Select(finite, y, 0.0), log.hi);
  const auto usual = finite & (Abs(product.hi) <= 707.0);
  const VRX_PACK r =
      elementary::ExpOfUsualSum(Select(usual, product.hi, 0.0), Select(usual, product.lo + y * log.lo, 0.0));
  const unsigned unusual = LaneBits(!usual);
  return unusual == 0 ? r : elementary::LaneByLane(unusual, &Power, x, y, r);
}

/// Sine and cosine for 2^-26 <= |x| <= 10^5 but those next to a multiple of pi / 128.
VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Sin(VRX_PACK x) {
  const auto moderate = (Abs(x) >= 0x1p-26) & (Abs(x) <= 1e5);
  const auto angle = elementary::ReduceModerate(Select(moderate, Abs(x), 1.0));
  const VRX_PACK r = elementary::SineAtNode(angle.reduced, ToBits(x) & elementary::kSignBit);
  const unsigned unusual = LaneBits((!moderate) | angle.inexact);
  return unusual == 0 ? r : elementary::LaneByLane(unusual, &Sin, x, r);
}
VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Cos(VRX_PACK x) {
  const auto moderate = Abs(x) <= 1e5;
  auto angle = elementary::ReduceModerate(Select(moderate, Abs(x), 1.0));
  angle.reduced.steps += elementary::kQuarterTurn;
  const VRX_PACK r = elementary::SineAtNode(angle.reduced, ToBits(x) & 0);
  const unsigned unusual = LaneBits((!moderate) | angle.inexact);
  return unusual == 0 ? r : elementary::LaneByLane(unusual, &Cos, x, r);
}

VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Atan2(VRX_PACK y, VRX_PACK x) {
  const VRX_PACK a = Abs(y), b = Abs(x);
  const auto usual = (a >= 0x1p-300) & (a < 0x1p300) & (b >= 0x1p-300) & (b < 0x1p300);
  const VRX_PACK size =
      elementary::AngleInUpperHalf<VRX_PACK>(Select(usual, a, 1.0), Select(usual, b, 1.0), x < 0.0, 0.0);
  const VRX_PACK r = VRX_PACK::OfBits(ToBits(size) | (ToBits(y) & elementary::kSignBit));
  const unsigned unusual = LaneBits(!usual);
  return unusual == 0 ? r : elementary::LaneByLane(unusual, &Atan2, y, x, r);
}
VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Atan(VRX_PACK x) {
  return Atan2(x, VRX_PACK(1.0));
}

#undef VRX_PACK_TEMPLATE
#undef VRX_PACK

}  // namespace vrx

#endif  // VRXMATH_NUMERIC_PACK_H_
