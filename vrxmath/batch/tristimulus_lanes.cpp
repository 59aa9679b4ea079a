#include <vrxmath/batch/tristimulus_kernels.h>

#include <array>
#include <cstdint>
#include <utility>

// Rows are transposed by half packs at heart: with eight lanes the steps between the halves cost more than they save.
#if VRX_LANES < 4
#define VRX_PACK_LANES VRX_LANES
#else
#define VRX_PACK_LANES 4
#endif
#include <vrxmath/batch/lane_rows.h>

// Curves lie one after the other, while a pack wants the same wavelength of several curves. Two wavelengths at a time are
// transposed on their way into registers: neighbouring samples of every second curve are loaded into one pack, those of the
// curves between into another, and one exchange of neighbours gives both wavelengths. With several illuminants there are
// values enough of one curve to fill packs: these are summed side by side, and nothing needs transposing.
// Each sum runs from the shortest wavelength up, one product at a time, as in the calculation for one curve.

namespace vrx {
namespace {

constexpr int kWavelengths = 40;
constexpr int kSteps = kWavelengths / 2;
constexpr std::size_t kPacksInTile = kLaneCount == 1 ? 8 : 2;
constexpr std::size_t kTile = kPacksInTile * kLaneCount;  // curves that are worked on together
constexpr std::size_t kMostTargets = 32;
constexpr std::size_t kBytesToStream = std::size_t{1} << 20;  // what the second-level cache does not hold

// Copies the next tile into the first-level cache, a few lines at each step of the present one. The processor fetches ahead
// by itself as long as memory is read from front to back, which transposing alone would hide from it.
template <class SAMPLE>
class TileCopy {
 public:
  VRX_LANE_INLINE TileCopy(const SAMPLE* curves, std::ptrdiff_t stride, SAMPLE* to)
      : from_(curves), jump_(stride - kWavelengths), to_(to) {}

  // One of `kParts` equal parts.
  template <std::size_t kParts>
  VRX_LANE_INLINE void Part() {
    static_assert(kTile * kChunksInRow % kParts == 0);
#pragma GCC unroll 8
    for (std::size_t k = 0; k < kTile * kChunksInRow / kParts; ++k) {
      __builtin_memcpy(to_, from_, kChunk * sizeof(SAMPLE));
      to_ += kChunk, from_ += kChunk;
      if (++chunk_ == kChunksInRow) chunk_ = 0, from_ += jump_;
    }
  }

 private:
  static constexpr std::size_t kChunk = kLaneCount;
  static constexpr std::size_t kChunksInRow = kWavelengths / kChunk;
  const SAMPLE* from_;
  std::ptrdiff_t jump_;
  SAMPLE* to_;
  std::size_t chunk_ = 0;
};
struct NoCopy {
  template <std::size_t>
  VRX_LANE_INLINE void Part() {}
};

#if VRX_PACK_LANES > 1

using Two = VectorTypes<2>::Numbers;

VRX_LANE_INLINE Two LoadTwo(const double* from) {
  Two samples;
  __builtin_memcpy(&samples, from, sizeof samples);
  return samples;
}
VRX_LANE_INLINE Two LoadTwo(const float* from) {
  typedef float Floats __attribute__((vector_size(8)));
  Floats samples;
  __builtin_memcpy(&samples, from, sizeof samples);
  return __builtin_convertvector(samples, Two);
}

// Two samples of each of kLaneCount / 2 curves that are two rows apart.
template <class SAMPLE>
VRX_LANE_INLINE Lanes LoadEverySecond(const SAMPLE* from, std::ptrdiff_t twoRows) {
  if constexpr (kLaneCount == 2) {
    return Lanes(LoadTwo(from));
  } else {
    const auto four = [&](std::ptrdiff_t pair) VRX_LANE_LAMBDA {
      return __builtin_shufflevector(LoadTwo(from + pair * twoRows), LoadTwo(from + (pair + 1) * twoRows), 0,
                                     1, 2, 3);
    };
    if constexpr (kLaneCount == 4) {
      return Lanes(four(0));
    } else {
      return Lanes(__builtin_shufflevector(four(0), four(2), 0, 1, 2, 3, 4, 5, 6, 7));
    }
  }
}

// Two neighbouring wavelengths of kLaneCount curves.
template <class SAMPLE>
VRX_LANE_INLINE void LoadTurned(const SAMPLE* from, std::ptrdiff_t stride, Lanes& first, Lanes& second) {
  constexpr auto kIndices = std::make_index_sequence<kLaneCount>();
  const Lanes even = LoadEverySecond(from, 2 * stride), odd = LoadEverySecond(from + stride, 2 * stride);
  first = Lanes(pack_internal::Lower<1>(even.v, odd.v, kIndices));
  second = Lanes(pack_internal::Upper<1>(even.v, odd.v, kIndices));
}

// Three numbers of kLaneCount rows, side by side.
VRX_LANE_INLINE void StoreTurned(Lanes x, Lanes y, Lanes z, double* to, std::ptrdiff_t stride) {
  constexpr auto kIndices = std::make_index_sequence<kLaneCount>();
  const auto even = pack_internal::Lower<1>(x.v, y.v, kIndices),
             odd = pack_internal::Upper<1>(x.v, y.v, kIndices);
#pragma GCC unroll 8
  for (int k = 0; k < VRX_PACK_LANES; k += 2) {
    const Two pairs[2] = {{even[k], even[k + 1]}, {odd[k], odd[k + 1]}};
    for (int side = 0; side < 2; ++side) {
      double* row = to + (k + side) * stride;
      __builtin_memcpy(row, &pairs[side], sizeof(Two));
      row[2] = z.v[k + side];
    }
  }
}

#else

inline void StoreTurned(double x, double y, double z, double* to, std::ptrdiff_t) {
  to[0] = x, to[1] = y, to[2] = z;
}
template <class SAMPLE>
void LoadTurned(const SAMPLE* from, std::ptrdiff_t, double& first, double& second) {
  first = static_cast<double>(from[0]), second = static_cast<double>(from[1]);
}

#endif

template <class T, class MASK>
VRX_LANE_INLINE T Finished(T sum, MASK unset) {
  const T value = Select(unset, T(kUnset), sum * 0.01);
  return Select(value == value, value, T(kQuietNaN));
}

VRX_LANE_INLINE void StoreValues(Lanes X, Lanes Y, Lanes Z, const TristimulusTarget& target,
                                 std::size_t row) {
  const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(row) * target.stride;
  double* const to[3] = {target.first[0] + at, target.first[1] + at, target.first[2] + at};
  if (to[1] == to[0] + 1 && to[2] == to[0] + 2) return StoreTurned(X, Y, Z, to[0], target.stride);
  StoreStrided(X, to[0], target.stride);
  StoreStrided(Y, to[1], target.stride);
  StoreStrided(Z, to[2], target.stride);
}

// Illuminants whose values are summed from registers while samples are transposed. Where a number in memory can be an
// operand, the values of two and three are better the lanes.
#if defined(__AVX512VL__)
constexpr std::size_t kMostTurned = 1;
#else
constexpr std::size_t kMostTurned = 3;
#endif
// Packs whose sums keep within the registers side by side.
constexpr std::size_t PacksTogether(std::size_t targets) {
#if defined(__aarch64__)
  return targets <= kMostTurned ? kPacksInTile : 1;
#else
  return targets == 1 ? kPacksInTile : 1;
#endif
}

// The values of a tile for a few illuminants, without a detour through memory.
template <std::size_t kTargets, class SAMPLE, class COPY>
VRX_LANE_INLINE void SumTile(const SAMPLE* curves, COPY copy, const TristimulusTarget* targets,
                             std::size_t row) {
  constexpr std::size_t kPacks = PacksTogether(kTargets);
  for (std::size_t pack = 0; pack < kPacksInTile; pack += kPacks) {
    const SAMPLE* const from = curves + pack * kLaneCount * kWavelengths;
    Lanes sums[3 * kTargets][kPacks], first[kPacks], second[kPacks];
#pragma GCC unroll 16
    for (std::size_t k = 0; k < 3 * kTargets; ++k) {
#pragma GCC unroll 8
      for (std::size_t p = 0; p < kPacks; ++p) sums[k][p] = 0.0;
    }
    const auto add = [&](int i, const Lanes(&samples)[kPacks]) VRX_LANE_LAMBDA {
#pragma GCC unroll 16
      for (std::size_t k = 0; k < 3 * kTargets; ++k) {
        const Lanes weight = targets[k / 3].weights[static_cast<int>(k % 3) * kWavelengths + i];
#pragma GCC unroll 8
        for (std::size_t p = 0; p < kPacks; ++p) sums[k][p] += weight * samples[p];
      }
    };
    for (int i = 0; i < kWavelengths; i += 2) {
      copy.template Part<kSteps * kPacksInTile / kPacks>();
#pragma GCC unroll 8
      for (std::size_t p = 0; p < kPacks; ++p) {
        LoadTurned(from + p * kLaneCount * kWavelengths + i, kWavelengths, first[p], second[p]);
      }
      add(i, first);
      add(i + 1, second);
    }
#pragma GCC unroll 8
    for (std::size_t p = 0; p < kPacks; ++p) {
      // An unset curve is known by its first sample.
      const auto unset = IsUnset(LoadStrided<Lanes>(from + p * kLaneCount * kWavelengths, kWavelengths));
#pragma GCC unroll 4
      for (std::size_t k = 0; k < kTargets; ++k) {
        StoreValues(Finished(sums[3 * k][p], unset), Finished(sums[3 * k + 1][p], unset),
                    Finished(sums[3 * k + 2][p], unset), targets[k], row + (pack + p) * kLaneCount);
      }
    }
  }
}

template <std::size_t kTargets, class SAMPLE>
[[gnu::noinline]] void TurnedTargets(const SAMPLE* curves, std::ptrdiff_t stride, std::size_t count,
                                     const TristimulusTarget* targets) {
  const std::size_t inTiles = count / kTile * kTile;
  if (inTiles != 0) {
    alignas(64) SAMPLE tiles[2][kTile * kWavelengths];
    TileCopy<SAMPLE> first(curves, stride, tiles[0]);
    for (int i = 0; i < kSteps; ++i) first.template Part<kSteps>();
    std::size_t row = 0, side = 0;
    for (; row + kTile < inTiles; row += kTile, side ^= 1) {
      const SAMPLE* next = curves + static_cast<std::ptrdiff_t>(row + kTile) * stride;
      SumTile<kTargets>(tiles[side], TileCopy<SAMPLE>(next, stride, tiles[side ^ 1]), targets, row);
    }
    SumTile<kTargets>(tiles[side], NoCopy{}, targets, row);
  }
  if (inTiles == count) return;
  // The rest, fewer than a tile, among black curves. What is made of those is left out.
  SAMPLE some[kTile * kWavelengths] = {};
  for (std::size_t row = inTiles; row < count; ++row) {
    const SAMPLE* curve = curves + static_cast<std::ptrdiff_t>(row) * stride;
    __builtin_memcpy(some + (row - inTiles) * kWavelengths, curve, kWavelengths * sizeof(SAMPLE));
  }
  double xyz[kTargets][3 * kTile];
  TristimulusTarget here[kTargets];
  for (std::size_t j = 0; j < kTargets; ++j)
    here[j] = {targets[j].weights, {xyz[j], xyz[j] + 1, xyz[j] + 2}, 3};
  SumTile<kTargets>(some, NoCopy{}, here, 0);
  for (std::size_t row = inTiles; row < count; ++row) {
    for (std::size_t k = 0; k < 3 * kTargets; ++k) {
      const TristimulusTarget& target = targets[k / 3];
      target.first[k % 3][static_cast<std::ptrdiff_t>(row) * target.stride] =
          xyz[k / 3][3 * (row - inTiles) + k % 3];
    }
  }
}

// ----------------------------------------------------------------------------------------------------------
// Several illuminants: the values of a curve are the lanes, and each sample of it is multiplied by a column of weights.

#if VRX_LANES > 1
using Wide = Pack<VRX_LANES, Unit>;
#else
using Wide = double;
#endif
#if VRX_LANES > 2
using Narrow = Pack<VRX_LANES / 2, Unit>;
#else
using Narrow = double;
#endif

// Values are counted in units of a narrow pack; two make a wide one.
constexpr std::size_t kUnit = kLanesOf<Narrow>;
constexpr std::size_t kUnitsInWide = kLanesOf<Wide> / kUnit;
constexpr std::size_t kMostUnits = 5 * kUnitsInWide;  // that are summed together
constexpr std::size_t kMostWidth = (3 * kMostTargets + kUnit - 1) / kUnit * kUnit;
constexpr std::size_t kRowsInTile = 20;

// Curves whose sums, so many units each, keep within the registers side by side.
constexpr std::size_t RowsTogether(std::size_t units) {
#if defined(__AVX512VL__) || defined(__aarch64__)
  return units < 5 ? 10 : 5;
#else
  return units < 7 ? 4 : 2;
#endif
}

// x times a number in memory. Written out, since a compiler that sees the number in several products loads it into a
// register first, which here takes the time of half a product; as an operand it costs nothing.
template <class T>
VRX_LANE_INLINE T Times(T x, const double& number) {
#if VRX_LANES == 8
  T product;
  if constexpr (kLanesOf<T> == 8) {
    asm("vmulpd %2%{1to8%}, %1, %0" : "=v"(product.v) : "v"(x.v), "m"(number));
  } else {
    asm("vmulpd %2%{1to4%}, %1, %0" : "=v"(product.v) : "v"(x.v), "m"(number));
  }
  return product;
#else
  return x * T(number);
#endif
}

// Weights of all values at one wavelength after the other.
class WeightColumns {
 public:
  WeightColumns(const TristimulusTarget* targets, std::size_t count)
      : values(3 * count), units((values + kUnit - 1) / kUnit) {
    for (std::size_t i = 0; i < kWavelengths; ++i) {
      double* const column = columns_ + i * units * kUnit;
      for (std::size_t k = 0; k < units * kUnit; ++k) {
        column[k] = k < values ? targets[k / 3].weights[k % 3 * kWavelengths + i] : 0.0;
      }
    }
  }
  const double* At(std::size_t i, std::size_t unit) const { return columns_ + (i * units + unit) * kUnit; }

  const std::size_t values, units;

 private:
  alignas(64) double columns_[kWavelengths * kMostWidth];
};

// kRows curves as a kernel of sums reads them.
struct CurveRows {
  const double* first;
  std::ptrdiff_t stride;
};

// The work on the side while curves are summed, a step at each wavelength, so that the next curves are in the
// first-level cache in time. With few values to sum they are copied there, since only reading from front to back keeps
// up with memory; with many it is enough to fetch them.
class Fetch {
 public:
  VRX_LANE_INLINE Fetch(const void* next, std::ptrdiff_t bytesInStep)
      : next_(static_cast<const char*>(next)), step_(bytesInStep) {}
  VRX_LANE_INLINE void Step() {
    __builtin_prefetch(next_);
    next_ += step_;
  }

 private:
  const char* next_;
  std::ptrdiff_t step_;
};
template <class SAMPLE, std::size_t kRows>
class RowCopy {
 public:
  VRX_LANE_INLINE RowCopy(const SAMPLE* from, std::ptrdiff_t stride, double* to)
      : from_(from), jump_(stride - kWavelengths), to_(to) {}
  VRX_LANE_INLINE void Step() {
    static_assert(kWavelengths % kRows == 0);
    double samples[kRows];
    for (std::size_t k = 0; k < kRows; ++k) samples[k] = static_cast<double>(from_[k]);
    __builtin_memcpy(to_, samples, sizeof samples);
    from_ += kRows, to_ += kRows;
    if (++chunk_ == kWavelengths / kRows) from_ += jump_, chunk_ = 0;
  }

 private:
  const SAMPLE* from_;
  std::ptrdiff_t jump_;
  double* to_;
  std::size_t chunk_ = 0;
};

// The first kCount lanes, or all, when that is 0.
template <std::size_t kCount, class T>
VRX_LANE_INLINE void StoreLanes(T x, double* to) {
  if constexpr (kLanesOf<T> == 1 || kCount == 0) {
    Store(x, to);
  } else if constexpr (kLanesOf<T> == 8 &&
                       kCount > 4) {  // in memory, a store under a mask takes as long as several
    Store(Narrow(__builtin_shufflevector(x.v, x.v, 0, 1, 2, 3)), to);
    StoreLanes<kCount - 4>(Narrow(__builtin_shufflevector(x.v, x.v, 4, 5, 6, 7)), to + 4);
  } else {
    StoreSome<static_cast<int>(kCount)>(x, to);
  }
}

// kUnits units of values of kRows curves, from `unit` on, into rows of `to`. Of the last pack `kLast` lanes are written, or
// all, when that is 0.
template <std::size_t kUnits, std::size_t kRows, std::size_t kLast, class NEXT>
VRX_LANE_INLINE void SumValues(const CurveRows& curves, NEXT next, const WeightColumns& weights,
                               std::size_t unit, double* to, std::ptrdiff_t toStride) {
  constexpr std::size_t kWides = kUnits / kUnitsInWide, kNarrows = kUnits % kUnitsInWide;
  Wide wide[kRows][kWides + 1];  // one more than are used, since there is no array of none
  Narrow narrow[kRows];
#pragma GCC unroll 16
  for (std::size_t r = 0; r < kRows; ++r) {
#pragma GCC unroll 16
    for (std::size_t p = 0; p < kWides; ++p) wide[r][p] = 0.0;
    narrow[r] = 0.0;
  }
#pragma GCC unroll 1
  for (std::size_t i = 0; i < kWavelengths; ++i) {
    next.Step();
    Wide wideWeights[kWides + 1];
    Narrow narrowWeights = 0.0;
#pragma GCC unroll 16
    for (std::size_t p = 0; p < kWides; ++p) {
      wideWeights[p] = Load<Wide>(weights.At(i, unit + p * kUnitsInWide));
    }
    if constexpr (kNarrows != 0) narrowWeights = Load<Narrow>(weights.At(i, unit + kWides * kUnitsInWide));
#pragma GCC unroll 16
    for (std::size_t r = 0; r < kRows; ++r) {
      const double& sample =
          curves.first[static_cast<std::ptrdiff_t>(r) * curves.stride + static_cast<int>(i)];
#pragma GCC unroll 16
      for (std::size_t p = 0; p < kWides; ++p) wide[r][p] += Times(wideWeights[p], sample);
      if constexpr (kNarrows != 0) narrow[r] += Times(narrowWeights, sample);
    }
  }
#pragma GCC unroll 16
  for (std::size_t r = 0; r < kRows; ++r) {
    const double shortest = curves.first[static_cast<std::ptrdiff_t>(r) * curves.stride];
    double* const row = to + static_cast<std::ptrdiff_t>(r) * toStride + unit * kUnit;
#pragma GCC unroll 16
    for (std::size_t p = 0; p < kWides; ++p) {
      const Wide values = Finished(wide[r][p], IsUnset(Wide(shortest)));
      if constexpr (kNarrows == 0 && kLast != 0) {
        if (p + 1 == kWides) {
          StoreLanes<kLast>(values, row + p * kLanesOf<Wide>);
          continue;
        }
      }
      Store(values, row + p * kLanesOf<Wide>);
    }
    if constexpr (kNarrows != 0) {
      const Narrow values = Finished(narrow[r], IsUnset(Narrow(shortest)));
      StoreLanes<kLast>(values, row + kWides * kLanesOf<Wide>);
    }
  }
}

// The same for a tile.
template <std::size_t kUnits>
[[gnu::noinline]] void SumTileValues(CurveRows curves, const char* next, std::ptrdiff_t nextBytes,
                                     const WeightColumns& weights, std::size_t unit, double* to) {
  constexpr std::size_t kRows = RowsTogether(kUnits);
  static_assert(kRowsInTile % kRows == 0);
  constexpr auto kStep = static_cast<std::ptrdiff_t>(kRows);
  for (std::size_t row = 0; row < kRowsInTile; row += kRows) {
    SumValues<kUnits, kRows, 0>(curves, Fetch(next, kStep * nextBytes / kWavelengths), weights, unit,
                                to + row * weights.values, static_cast<std::ptrdiff_t>(weights.values));
    curves.first += kStep * curves.stride;
    next += kStep * nextBytes;
  }
}

using SumFunction = void (*)(CurveRows, const char*, std::ptrdiff_t, const WeightColumns&, std::size_t,
                             double*);
template <std::size_t... I>
constexpr std::array<SumFunction, sizeof...(I)> SumFunctions(std::index_sequence<I...>) {
  return {&SumTileValues<I + 1>...};
}

// All values of a tile, row after row. From the last ones to the first, so that what runs over the end of a row is
// written again.
void SumAllValues(const CurveRows& curves, const char* next, std::ptrdiff_t nextBytes,
                  const WeightColumns& weights, double* to) {
  static constexpr auto kSums = SumFunctions(std::make_index_sequence<kMostUnits>());
  const std::size_t wides = (weights.units + kUnitsInWide - 1) / kUnitsInWide;
  std::size_t groups = (weights.units + kMostUnits - 1) / kMostUnits;
  const std::size_t most = (wides + groups - 1) / groups * kUnitsInWide;
  for (; groups > 0; --groups) {
    const std::size_t unit = (groups - 1) * most;
    if (unit >= weights.units) continue;
    const std::size_t rest = weights.units - unit;
    kSums[(rest < most ? rest : most) - 1](curves, next, nextBytes, weights, unit, to);
  }
}

// Numbers that nobody will find in the cache anyway go past it, which saves reading what they replace.
VRX_LANE_INLINE void StreamNumbers(const double* from, std::size_t count, double* to) {
  std::size_t k = 0;
#if defined(__SSE2__)
  for (; k < count && reinterpret_cast<std::uintptr_t>(to + k) % 64 != 0; ++k) to[k] = from[k];
#if defined(__AVX512F__)
  for (; k + 8 <= count; k += 8) _mm512_stream_pd(to + k, _mm512_loadu_pd(from + k));
#else
  for (; k + 2 <= count; k += 2) _mm_stream_pd(to + k, _mm_loadu_pd(from + k));
#endif
#endif
  for (; k < count; ++k) to[k] = from[k];
}

// Where the values of several illuminants go.
class ValueWriter {
 public:
  ValueWriter(const TristimulusTarget* targets, std::size_t count, std::size_t rows)
      : targets_(targets), values_(3 * count) {
    for (std::size_t k = 0; k < values_; ++k) {
      const TristimulusTarget& target = targets[k / 3];
      sideBySide_ &= target.first[k % 3] == targets[0].first[0] + k && target.stride == targets[0].stride;
    }
    contiguous_ = sideBySide_ && targets[0].stride == static_cast<std::ptrdiff_t>(values_);
    stream_ = contiguous_ && rows * values_ * sizeof(double) >= kBytesToStream;
  }
  // Where the values of a row go as they are, or null.
  double* Row(std::size_t row) const {
    return sideBySide_ ? targets_[0].first[0] + static_cast<std::ptrdiff_t>(row) * targets_[0].stride
                       : nullptr;
  }

  void Write(const double* values, std::size_t row, std::size_t rows) const {
    double* const to = Row(row);
    if (stream_) return StreamNumbers(values, rows * values_, to);
    if (contiguous_) {
      __builtin_memcpy(to, values, rows * values_ * sizeof(double));
    } else {
      for (std::size_t r = 0; r < rows; ++r) WriteRow(values + r * values_, row + r);
    }
  }

  // After the last rows.
  void Finish() const {
#if defined(__SSE2__)
    if (stream_) _mm_sfence();  // another thread may read them next
#endif
  }

 private:
  void WriteRow(const double* values, std::size_t row) const {
    for (std::size_t k = 0; k < values_; ++k) {
      const TristimulusTarget& target = targets_[k / 3];
      target.first[k % 3][static_cast<std::ptrdiff_t>(row) * target.stride] = values[k];
    }
  }

  const TristimulusTarget* targets_;
  std::size_t values_;
  bool sideBySide_ = true, contiguous_, stream_;
};

// All values of some curves are summed at once, and how many they are is known to the compiler.
constexpr std::size_t kFewRows = VRX_LANES == 8 ? 8 : VRX_LANES == 4 ? 4 : 2;

template <std::size_t kTargets, class SAMPLE>
[[gnu::noinline]] void FewTargets(const SAMPLE* curves, std::ptrdiff_t stride, std::size_t count,
                                  const TristimulusTarget* targets) {
  constexpr std::size_t kValues = 3 * kTargets, kUnits = (kValues + kUnit - 1) / kUnit;
  constexpr std::size_t kLastPack = kUnits % kUnitsInWide == 0 ? kLanesOf<Wide> : kUnit;
  using Copy = RowCopy<SAMPLE, kFewRows>;
  alignas(64) double copies[2][kFewRows * kWavelengths] = {}, values[kFewRows * kValues];
  const WeightColumns weights(targets, kTargets);
  const ValueWriter writer(targets, kTargets, 0);
  const auto sum = [&](const double* copy, auto next, double* to, std::ptrdiff_t toStride) VRX_LANE_LAMBDA {
    SumValues<kUnits, kFewRows, kValues % kLastPack>({copy, kWavelengths}, next, weights, 0, to, toStride);
  };
  Copy first(curves, stride, copies[0]);
  for (int i = 0; i < kWavelengths && count >= kFewRows; ++i) first.Step();
  std::size_t row = 0, side = 0;
  for (; row + kFewRows <= count; row += kFewRows, side ^= 1) {
    // Behind the last whole tile it is copied once more.
    const std::size_t next = row + 2 * kFewRows <= count ? row + kFewRows : row;
    const Copy copy(curves + static_cast<std::ptrdiff_t>(next) * stride, stride, copies[side ^ 1]);
    if (double* const to = writer.Row(row); to != nullptr) {
      sum(copies[side], copy, to, targets[0].stride);
    } else {
      sum(copies[side], copy, values, kValues);
      writer.Write(values, row, kFewRows);
    }
  }
  // The rest, among whatever curves are there. What is made of those is left out.
  for (std::size_t r = 0; r < count - row; ++r) {
    const SAMPLE* const curve = curves + static_cast<std::ptrdiff_t>(row + r) * stride;
    for (std::size_t i = 0; i < kWavelengths; ++i)
      copies[0][r * kWavelengths + i] = static_cast<double>(curve[i]);
  }
  if (row == count) return;
  sum(copies[0], Fetch(copies[0], 0), values, kValues);
  writer.Write(values, row, count - row);
}

template <class SAMPLE>
[[gnu::noinline]] void ManyTargets(const SAMPLE* curves, std::ptrdiff_t stride, std::size_t count,
                                   const TristimulusTarget* targets, std::size_t targetCount) {
  alignas(64) double values[kRowsInTile * 3 * kMostTargets + kLanesOf<Wide>];
  alignas(64) double copy[kRowsInTile * kWavelengths] = {};
  const WeightColumns weights(targets, targetCount);
  const ValueWriter writer(targets, targetCount, count);
  for (std::size_t row = 0; row < count; row += kRowsInTile) {
    const SAMPLE* const tile = curves + static_cast<std::ptrdiff_t>(row) * stride;
    const std::size_t rows = count - row < kRowsInTile ? count - row : kRowsInTile;
    const SAMPLE* const next =
        row + 2 * kRowsInTile <= count ? tile + static_cast<std::ptrdiff_t>(kRowsInTile) * stride : tile;
    CurveRows here{copy, kWavelengths};
    if constexpr (sizeof(SAMPLE) == sizeof(double)) {
      if (rows == kRowsInTile) here = {tile, stride};
    }
    if (here.first ==
        copy) {  // single precision, or fewer than a tile: what is made of the others is left out
      for (std::size_t r = 0; r < rows; ++r) {
        const SAMPLE* const curve = tile + static_cast<std::ptrdiff_t>(r) * stride;
        for (std::size_t i = 0; i < kWavelengths; ++i)
          copy[r * kWavelengths + i] = static_cast<double>(curve[i]);
      }
    }
    SumAllValues(here, reinterpret_cast<const char*>(next),
                 stride * static_cast<std::ptrdiff_t>(sizeof(SAMPLE)), weights, values);
    writer.Write(values, row, rows);
  }
  writer.Finish();
}

template <std::size_t kTargets, class SAMPLE>
void Some(const SAMPLE* curves, std::ptrdiff_t stride, std::size_t count, const TristimulusTarget* targets) {
  if constexpr (kTargets <= kMostTurned) {
    TurnedTargets<kTargets>(curves, stride, count, targets);
  } else {
    FewTargets<kTargets>(curves, stride, count, targets);
  }
}

template <class SAMPLE>
void Tristimulus(const SAMPLE* curves, std::ptrdiff_t stride, std::size_t count,
                 const TristimulusTarget* targets, std::size_t targetCount) {
  switch (targetCount) {
    case 1:
      return Some<1>(curves, stride, count, targets);
    case 2:
      return Some<2>(curves, stride, count, targets);
    case 3:
      return Some<3>(curves, stride, count, targets);
    case 4:
      return Some<4>(curves, stride, count, targets);
    default:
      return ManyTargets(curves, stride, count, targets, targetCount);
  }
}

}  // namespace

template <>
const TristimulusKernels& KernelsOf<TristimulusKernels, VRX_LANES>() {
  static constexpr TristimulusKernels kKernels = {&Tristimulus<double>, &Tristimulus<float>};
  return kKernels;
}

}  // namespace vrx
