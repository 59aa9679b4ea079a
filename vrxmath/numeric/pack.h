// Packs of lanes: several numbers on which one instruction works, with the vocabulary of lanes.h.
//
// A pack is one vector of the compiler's own vector extension (g++ and clang++), so the same source becomes SSE2,
// AVX2, AVX-512 or NEON by the flags it is compiled with. Every lane does what a plain double would do, operation by
// operation, and has the same bits; nothing mixes lanes, and a fused operation is used only where it cannot make a
// difference (MinusExact in elementary_lanes.h).
//
// `Unit` is a type in the unnamed namespace of the source file that uses the packs. It gives everything made from
// them internal linkage: a function compiled for AVX-512 can never be taken by the linker for its SSE2 twin.
//
//   namespace { struct Unit; using Lanes = vrx::Pack<4, Unit>; }

#ifndef VRXMATH_NUMERIC_PACK_H_
#define VRXMATH_NUMERIC_PACK_H_

#include <cstddef>
#include <cstdint>
#include <utility>
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
#if defined(__wasm_simd128__)
    if constexpr (kLaneCount == 2) return static_cast<unsigned>(__builtin_wasm_bitmask_i64x2(m.v));
#endif
    unsigned bits = 0;
    for (int lane = 0; lane < kLaneCount; ++lane) bits |= (m.v[lane] != 0 ? 1U : 0U) << lane;
    return bits;
  }
  friend VRX_LANE_INLINE bool Any(Mask m) {
    return LaneBits(m) != 0;
  }
  friend VRX_LANE_INLINE bool All(Mask m) {
    return LaneBits(m) == (1U << kLaneCount) - 1;
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
#if defined(__wasm_simd128__)
    if constexpr (kLaneCount == 2) return Pack(static_cast<Vector>(__builtin_wasm_sqrt_f64x2(x.v)));
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

namespace pack_internal {

template <int kDistance, class V, std::size_t... I>
VRX_LANE_INLINE V Lower(V a, V b, std::index_sequence<I...>) {
  return __builtin_shufflevector(a, b, ((I & kDistance) == 0 ? I : sizeof...(I) + I - kDistance)...);
}
template <int kDistance, class V, std::size_t... I>
VRX_LANE_INLINE V Upper(V a, V b, std::index_sequence<I...>) {
  return __builtin_shufflevector(a, b, ((I & kDistance) == 0 ? I + kDistance : sizeof...(I) + I)...);
}

// One step of a transposition: exchanges blocks of kDistance x kDistance within every square of kPacks x kPacks.
template <int kDistance, int kPacks, int kLaneCount, class Unit>
VRX_LANE_INLINE void ExchangeBlocks(Pack<kLaneCount, Unit>* packs) {
  constexpr auto kIndices = std::make_index_sequence<static_cast<std::size_t>(kLaneCount)>();
#pragma GCC unroll 8
  for (int i = 0; i < kPacks; ++i) {
    if ((i & kDistance) != 0) continue;
    const auto a = packs[i].v, b = packs[i + kDistance].v;
    packs[i].v = Lower<kDistance>(a, b, kIndices);
    packs[i + kDistance].v = Upper<kDistance>(a, b, kIndices);
  }
}

// Two vectors as one, and the lanes of one from kFirst on.
template <class V, std::size_t... I>
VRX_LANE_INLINE auto Joined(V a, V b, std::index_sequence<I...>) {
  return __builtin_shufflevector(a, b, I...);
}
template <int kFirst, class V, std::size_t... I>
VRX_LANE_INLINE auto Part(V v, std::index_sequence<I...>) {
  return __builtin_shufflevector(v, v, (kFirst + I)...);
}

// `kCount` numbers from every kCount-th of `kLaneCount` places, side by side; and back.
template <int kLaneCount, int kCount>
VRX_LANE_INLINE auto LoadBeside(const double* const* places, int field) {
  if constexpr (kLaneCount == kCount) {
    typename VectorTypes<kCount>::Numbers numbers;
    __builtin_memcpy(&numbers, *places + field, sizeof numbers);
    return numbers;
  } else if constexpr (kLaneCount == 2) {
    return typename VectorTypes<2>::Numbers{places[0][field], places[1][field]};
  } else {
    constexpr int kHalf = kLaneCount / 2;
    return Joined(LoadBeside<kHalf, kCount>(places, field), LoadBeside<kHalf, kCount>(places + kHalf, field),
                  std::make_index_sequence<static_cast<std::size_t>(kLaneCount)>());
  }
}
template <int kLaneCount, int kCount, class V>
VRX_LANE_INLINE void StoreBeside(V numbers, double* const* places, int field) {
  if constexpr (kLaneCount == kCount) {
    __builtin_memcpy(*places + field, &numbers, sizeof numbers);
  } else {
    constexpr int kHalf = kLaneCount / 2;
    constexpr auto kIndices = std::make_index_sequence<static_cast<std::size_t>(kHalf)>();
    StoreBeside<kHalf, kCount>(Part<0>(numbers, kIndices), places, field);
    StoreBeside<kHalf, kCount>(Part<kHalf>(numbers, kIndices), places + kHalf, field);
  }
}

// Squares of kCount x kCount numbers side by side in as many packs, transposed.
template <int kCount, int kLaneCount, class Unit>
VRX_LANE_INLINE void TurnSquares(Pack<kLaneCount, Unit>* packs) {
  if constexpr (kCount > 1) ExchangeBlocks<1, kCount>(packs);
  if constexpr (kCount > 2) ExchangeBlocks<2, kCount>(packs);
  if constexpr (kCount > 4) ExchangeBlocks<4, kCount>(packs);
}

// How many of `kLeft` fields are moved together: as many as fill whole vectors, since a vector of neighbours costs one
// load or store and few shuffles, and a number alone costs as much.
template <int kLeft, int kLaneCount>
inline constexpr int kTogether = kLeft >= 8 && kLaneCount >= 8   ? 8
                                 : kLeft >= 4 && kLaneCount >= 4 ? 4
                                 : kLeft >= 2                    ? 2
                                                                 : 1;

}  // namespace pack_internal

/// `kFields` neighbouring numbers at the place of every lane, one pack a field; and back.
template <int kFields, int kFrom = 0, int kLaneCount, class Unit>
VRX_LANE_INLINE void LoadFields(const double* const* places, Pack<kLaneCount, Unit>* fields) {
  using namespace pack_internal;
  constexpr int kCount = kTogether<kFields - kFrom, kLaneCount>;
  Pack<kLaneCount, Unit>* const rows = fields + kFrom;
#pragma GCC unroll 8
  for (int k = 0; k < kCount; ++k) rows[k].v = LoadBeside<kLaneCount, kCount>(places + k, kFrom);
  TurnSquares<kCount>(rows);
  if constexpr (kFields > kFrom + kCount) LoadFields<kFields, kFrom + kCount>(places, fields);
}
template <int kFields, int kFrom = 0, int kLaneCount, class Unit>
VRX_LANE_INLINE void StoreFields(const Pack<kLaneCount, Unit>* fields, double* const* places) {
  using namespace pack_internal;
  constexpr int kCount = kTogether<kFields - kFrom, kLaneCount>;
  if constexpr (kCount > 1) {
    Pack<kLaneCount, Unit> rows[static_cast<std::size_t>(kCount)];
#pragma GCC unroll 8
    for (int k = 0; k < kCount; ++k) rows[k] = fields[kFrom + k];
    TurnSquares<kCount>(rows);
#pragma GCC unroll 8
    for (int k = 0; k < kCount; ++k) StoreBeside<kLaneCount, kCount>(rows[k].v, places + k, kFrom);
  } else {
    for (int lane = 0; lane < kLaneCount; ++lane) places[lane][kFrom] = fields[kFrom].v[lane];
  }
  if constexpr (kFields > kFrom + kCount) StoreFields<kFields, kFrom + kCount>(fields, places);
}

/// Branch of lanes.h, for a mask that is false as a rule; where both sides are taken they are evaluated for all lanes.
template <int kLaneCount, class Unit, class A, class B>
VRX_LANE_INLINE Pack<kLaneCount, Unit> Branch(Mask<kLaneCount, Unit> mask, const A& a, const B& b) {
  Pack<kLaneCount, Unit> x = 0.0;
  if (!All(mask)) x = b();
  if (Any(mask)) x = Select(mask, a(), x);
  return x;
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

/// The same as whole numbers, rounded towards 0, which must be in the range of their type and of 32 bits.
template <class T, class WHOLE>
VRX_LANE_INLINE void Store(T x, WHOLE* to) {
  if constexpr (kLanesOf<T> == 1) {
    *to = static_cast<WHOLE>(static_cast<std::int32_t>(x));
  } else {
    for (int lane = 0; lane < T::kLanes; ++lane) {
      to[lane] = static_cast<WHOLE>(static_cast<std::int32_t>(x.v[lane]));
    }
  }
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

/// Loads a pack once for several uses, where the compiler would read memory again for each.
template <class T>
VRX_LANE_INLINE void KeepInRegister([[maybe_unused]] T& x) {
#if defined(__SSE2__)
  asm("" : "+v"(x.v));
#endif
}

/// The first `kCount` lanes to neighbouring numbers.
template <int kCount, class T>
VRX_LANE_INLINE void StoreSome(T x, double* to) {
  if constexpr (kCount >= T::kLanes) return Store(x, to);
#if defined(__AVX512F__)
  if constexpr (T::kLanes == 8) {
    _mm512_mask_storeu_pd(to, (1U << kCount) - 1, x.v);
    return;
  }
#endif
#if defined(__AVX__)
  if constexpr (T::kLanes == 4 && kCount == 3) {
    _mm_storeu_pd(to, _mm256_castpd256_pd128(x.v));
    _mm_store_sd(to + 2, _mm256_extractf128_pd(x.v, 1));
    return;
  }
#endif
  for (int lane = 0; lane < kCount; ++lane) to[lane] = x.v[lane];
}

namespace pack_internal {

// Of the numbers of three vectors, one after the other, lane I of the pack for place kPlace is number 3 I + kPlace; taken
// from the first two vectors, then from the third.
template <int kPlace, class V, std::size_t... I>
VRX_LANE_INLINE V EveryThird(V a, V b, V c, std::index_sequence<I...>) {
  constexpr std::size_t kLanes = sizeof...(I);
  const V ab = __builtin_shufflevector(a, b, (3 * I + kPlace < 2 * kLanes ? 3 * I + kPlace : 0)...);
  return __builtin_shufflevector(ab, c, (3 * I + kPlace < 2 * kLanes ? I : 3 * I + kPlace - kLanes)...);
}
// Back: vector kVector of the three, from the packs of the places.
template <int kVector, class V, std::size_t... I>
VRX_LANE_INLINE V Threaded(V x, V y, V z, std::index_sequence<I...>) {
  constexpr std::size_t kLanes = sizeof...(I), kFirst = kVector * kLanes;
  const V xy = __builtin_shufflevector(x, y,
                                       ((kFirst + I) % 3 == 0   ? (kFirst + I) / 3
                                        : (kFirst + I) % 3 == 1 ? kLanes + (kFirst + I) / 3
                                                                : 0)...);
  return __builtin_shufflevector(xy, z, ((kFirst + I) % 3 == 2 ? kLanes + (kFirst + I) / 3 : I)...);
}

}  // namespace pack_internal

/// Triples that lie one after the other, as many as a pack has lanes, as three packs; and back.
template <class T>
VRX_LANE_INLINE void LoadTriples(const double* from, T* x) {
  constexpr auto kIndices = std::make_index_sequence<static_cast<std::size_t>(T::kLanes)>();
  const auto a = Load<T>(from).v, b = Load<T>(from + T::kLanes).v, c = Load<T>(from + 2 * T::kLanes).v;
  x[0].v = pack_internal::EveryThird<0>(a, b, c, kIndices);
  x[1].v = pack_internal::EveryThird<1>(a, b, c, kIndices);
  x[2].v = pack_internal::EveryThird<2>(a, b, c, kIndices);
}
template <class T, class NUMBER>
VRX_LANE_INLINE void StoreTriples(const T* x, NUMBER* to) {
  constexpr auto kIndices = std::make_index_sequence<static_cast<std::size_t>(T::kLanes)>();
  Store(T(pack_internal::Threaded<0>(x[0].v, x[1].v, x[2].v, kIndices)), to);
  Store(T(pack_internal::Threaded<1>(x[0].v, x[1].v, x[2].v, kIndices)), to + T::kLanes);
  Store(T(pack_internal::Threaded<2>(x[0].v, x[1].v, x[2].v, kIndices)), to + 2 * T::kLanes);
}

// ----------------------------------------------------------------------------------------------------------
// The operations that elementary_lanes.h needs

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
  /// a - b c, rounded once where the processor has the operation.
  static VRX_LANE_INLINE T MinusProduct(T a, T b, T c) {
#if defined(__AVX512F__)
    if constexpr (kLaneCount == 8) return T(static_cast<typename T::Vector>(_mm512_fnmadd_pd(b.v, c.v, a.v)));
#endif
#if defined(__FMA__)
    if constexpr (kLaneCount == 4) return T(static_cast<typename T::Vector>(_mm256_fnmadd_pd(b.v, c.v, a.v)));
#endif
    return a - b * c;
  }
#if defined(__FMA__)
  static constexpr bool kRoundsOnce = kLaneCount >= 4;
#else
  static constexpr bool kRoundsOnce = false;
#endif

  /// The table's entry of every lane.
  template <class Node>
  static VRX_LANE_INLINE auto Entry(const Node* table, Words index) {
    constexpr int kFields = sizeof(Node) / sizeof(double);
    const double* places[static_cast<std::size_t>(kLaneCount)];
    const Words bytes = index * sizeof(Node);
#pragma GCC unroll 8
    for (int lane = 0; lane < kLaneCount; ++lane) {
      places[lane] = reinterpret_cast<const double*>(reinterpret_cast<const char*>(table) + bytes[lane]);
    }
    EntryOf<T, kFields> entry;
    LoadFields<kFields>(places, entry.fields);
    return entry;
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
// and whatever else the scalar form treats apart) lead to some number by entries that every table has, and are given to the
// scalar form after.

#define VRX_PACK_TEMPLATE template <int kLaneCount, class Unit>
#define VRX_PACK Pack<kLaneCount, Unit>

VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK CubeRoot(VRX_PACK x) {
  const auto usual = (Abs(x) >= 0x1p-1022) & (Abs(x) < elementary::kInfinity);
  const VRX_PACK r = elementary::CubeRootOfUsual(x);
  return All(usual) ? r : elementary::LaneByLane(LaneBits(!usual), &CubeRoot, x, r);
}

VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK CubeRootOfNormal(VRX_PACK x) {
  return elementary::CubeRootOfUsual(x);
}

VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Exp(VRX_PACK x) {
  const auto usual = Abs(x) <= 707.0;
  const VRX_PACK r = elementary::ExpOfUsualSum<VRX_PACK>(x, 0.0);
  return All(usual) ? r : elementary::LaneByLane(LaneBits(!usual), &Exp, x, r);
}

VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Log(VRX_PACK x) {
  const auto usual = (x >= 0x1p-1022) & (x < elementary::kInfinity);
  const VRX_PACK r = elementary::LogOfNormal(x, std::uint64_t{0}).hi;
  return All(usual) ? r : elementary::LaneByLane(LaneBits(!usual), &Log, x, r);
}

VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Log10(VRX_PACK x) {
  const auto usual = (x >= 0x1p-1022) & (x < elementary::kInfinity);
  const VRX_PACK r = elementary::Log10Of(elementary::LogOfNormal(x, std::uint64_t{0}));
  return All(usual) ? r : elementary::LaneByLane(LaneBits(!usual), &Log10, x, r);
}

VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Power(VRX_PACK x, VRX_PACK y) {
  const auto log = elementary::LogOfNormal(x, std::uint64_t{0});
  const auto product = elementary::Multiply(y, log.hi);
  const auto usual =
      (x >= 0x1p-1022) & (x < elementary::kInfinity) & (Abs(y) <= 0x1p70) & (Abs(product.hi) <= 707.0);
  const VRX_PACK r = elementary::ExpOfUsualSum(product.hi, product.lo + y * log.lo);
  return All(usual) ? r : elementary::LaneByLane(LaneBits(!usual), &Power, x, y, r);
}

/// Sine and cosine of angles up to 10^5 but those next to a multiple of pi / 128.
VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Sin(VRX_PACK x) {
  const auto angle = elementary::ReduceModerate(Abs(x));
  const auto usual = (Abs(x) >= 0x1p-26) & (Abs(x) <= 1e5) & (angle.left >= elementary::kLeastLeft);
  const VRX_PACK r =
      elementary::WithSign(elementary::SineAtNode(angle.reduced), ToBits(x) & elementary::kSignBit);
  return All(usual) ? r : elementary::LaneByLane(LaneBits(!usual), &Sin, x, r);
}
VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Cos(VRX_PACK x) {
  auto angle = elementary::ReduceModerate(Abs(x));
  const auto usual = (Abs(x) <= 1e5) & (angle.left >= elementary::kLeastLeft);
  angle.reduced.steps += elementary::kQuarterTurn;
  const VRX_PACK r = elementary::SineAtNode(angle.reduced);
  return All(usual) ? r : elementary::LaneByLane(LaneBits(!usual), &Cos, x, r);
}

/// Numbers from 2^-300 to 2^300 in size; a NaN is one of the two that are compared.
VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Atan2(VRX_PACK y, VRX_PACK x) {
  const VRX_PACK a = Abs(y), b = Abs(x);
  const auto steep = a > b;
  const VRX_PACK small = Select(steep, b, a), large = Select(steep, a, b);
  const auto usual = (small >= 0x1p-300) & (large < 0x1p300);
  const VRX_PACK size = elementary::AngleOfOctant<VRX_PACK>(small, large, steep, x < 0.0, 0.0);
  const VRX_PACK r = elementary::WithSign(size, ToBits(y) & elementary::kSignBit);
  return All(usual) ? r : elementary::LaneByLane(LaneBits(!usual), &Atan2, y, x, r);
}
VRX_PACK_TEMPLATE VRX_LANE_INLINE VRX_PACK Atan(VRX_PACK x) {
  return Atan2(x, VRX_PACK(1.0));
}

#undef VRX_PACK_TEMPLATE
#undef VRX_PACK

}  // namespace vrx

#endif  // VRXMATH_NUMERIC_PACK_H_
