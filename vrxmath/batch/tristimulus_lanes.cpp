#include <vrxmath/batch/tristimulus_kernels.h>

#include <cstdint>
#include <utility>

// What turns rows over are half packs at heart: with eight lanes the steps between the halves cost more than they save.
#define VRX_PACK_LANES (VRX_LANES < 4 ? VRX_LANES : 4)
#include <vrxmath/batch/lane_rows.h>

// Curves lie one after the other, while a pack wants the same wavelength of several curves. Two wavelengths at a time are
// turned over on their way into registers: neighbouring samples of every second curve are loaded into one pack, those of the
// curves between into another, and one exchange of neighbours gives both wavelengths. Up to three illuminants take them from
// there at once; for more the turned samples of a tile stay in the first-level cache, and the illuminants read them there,
// three at a time. Each sum runs from the shortest wavelength up, one product at a time, as in the calculation for one curve.

namespace vrx {
namespace {

constexpr int kWavelengths = 40;
constexpr int kSteps = kWavelengths / 2;
constexpr std::size_t kPacksInTile = kLaneCount == 1 ? 8 : 2;
constexpr std::size_t kTile = kPacksInTile * kLaneCount;  // curves that are worked on together
constexpr std::size_t kTargetsTogether = 3;
constexpr std::size_t kTargetsInRow =
    32;  // illuminants whose values are put together before they are written

// Packs whose sums for some illuminants, three each, keep within the registers side by side.
constexpr std::size_t PacksTogether(std::size_t targets) {
#if defined(__AVX512VL__) || defined(__aarch64__)
  return targets < 4 ? kPacksInTile : 1;
#else
  return targets == 1 ? kPacksInTile : 1;
#endif
}
constexpr std::size_t kBytesToStream = std::size_t{1} << 20;  // what the second-level cache does not hold

using TurnedTile = double[kWavelengths][kTile];

// Copies the next tile into the first-level cache, a few lines at each step of the present one. The processor fetches ahead
// by itself as long as memory is read from front to back, which turning over alone would hide from it.
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

template <class MASK>
VRX_LANE_INLINE Lanes Finished(Lanes sum, MASK unset) {
  return CanonicalNaN(Select(unset, Lanes(kUnset), sum * 0.01));
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

// The sums of a few packs for a few illuminants.
template <std::size_t kTargets>
struct Sums {
  static constexpr std::size_t kPacks = PacksTogether(kTargets);
  Lanes of[3 * kTargets][kPacks];

  VRX_LANE_INLINE Sums() {
#pragma GCC unroll 16
    for (std::size_t k = 0; k < 3 * kTargets; ++k) {
#pragma GCC unroll 8
      for (std::size_t p = 0; p < kPacks; ++p) of[k][p] = 0.0;
    }
  }
  VRX_LANE_INLINE void Add(const TristimulusTarget* targets, int i, const Lanes (&samples)[kPacks]) {
#pragma GCC unroll 16
    for (std::size_t k = 0; k < 3 * kTargets; ++k) {
      const Lanes weight = targets[k / 3].weights[static_cast<int>(k % 3) * kWavelengths + i];
#pragma GCC unroll 8
      for (std::size_t p = 0; p < kPacks; ++p) of[k][p] += weight * samples[p];
    }
  }
  // `shortest` are the samples of the shortest wavelength, by which an unset curve is known.
  VRX_LANE_INLINE void Finish(const TristimulusTarget* targets, std::size_t row,
                              const Lanes (&shortest)[kPacks]) {
#pragma GCC unroll 8
    for (std::size_t p = 0; p < kPacks; ++p) {
      const auto unset = IsUnset(shortest[p]);
#pragma GCC unroll 4
      for (std::size_t k = 0; k < kTargets; ++k) {
        StoreValues(Finished(of[3 * k][p], unset), Finished(of[3 * k + 1][p], unset),
                    Finished(of[3 * k + 2][p], unset), targets[k], row + p * kLaneCount);
      }
    }
  }
};

// The values of a tile for a few illuminants, without a detour through memory.
template <std::size_t kTargets, class SAMPLE, class COPY>
VRX_LANE_INLINE void SumTile(const SAMPLE* curves, COPY copy, const TristimulusTarget* targets,
                             std::size_t row) {
  constexpr std::size_t kPacks = PacksTogether(kTargets);
  for (std::size_t pack = 0; pack < kPacksInTile; pack += kPacks) {
    const SAMPLE* from = curves + pack * kLaneCount * kWavelengths;
    Sums<kTargets> sums;
    Lanes first[kPacks], second[kPacks];
    for (int i = 0; i < kWavelengths; i += 2) {
      copy.template Part<kSteps * kPacksInTile / kPacks>();
#pragma GCC unroll 8
      for (std::size_t p = 0; p < kPacks; ++p) {
        LoadTurned(from + p * kLaneCount * kWavelengths + i, kWavelengths, first[p], second[p]);
      }
      sums.Add(targets, i, first);
      sums.Add(targets, i + 1, second);
    }
#pragma GCC unroll 8
    for (std::size_t p = 0; p < kPacks; ++p) {
      first[p] = LoadStrided<Lanes>(from + p * kLaneCount * kWavelengths, kWavelengths);
    }
    sums.Finish(targets, row + pack * kLaneCount, first);
  }
}

template <class SAMPLE>
VRX_LANE_INLINE void TurnOver(const SAMPLE* curves, TurnedTile& tile) {
  for (int i = 0; i < kWavelengths; i += 2) {
#pragma GCC unroll 8
    for (std::size_t p = 0; p < kPacksInTile; ++p) {
      Lanes first, second;
      LoadTurned(curves + p * kLaneCount * kWavelengths + i, kWavelengths, first, second);
      Store(first, &tile[i][p * kLaneCount]);
      Store(second, &tile[i + 1][p * kLaneCount]);
    }
  }
}

// The values of a tile that was turned over.
template <std::size_t kTargets, class COPY>
VRX_LANE_INLINE void SumTurned(const TurnedTile& tile, COPY copy, const TristimulusTarget* targets,
                               std::size_t row) {
  constexpr std::size_t kPacks = PacksTogether(kTargets);
  for (std::size_t pack = 0; pack < kPacksInTile; pack += kPacks) {
    const std::size_t at = pack * kLaneCount;
    Sums<kTargets> sums;
    Lanes samples[kPacks];
    for (int i = 0; i < kWavelengths; ++i) {
      copy.template Part<2 * kSteps * kPacksInTile / kPacks>();
#pragma GCC unroll 8
      for (std::size_t p = 0; p < kPacks; ++p) {
        samples[p] = Load<Lanes>(&tile[i][at + p * kLaneCount]);
#if VRX_PACK_LANES > 1
        KeepInRegister(samples[p]);
#endif
      }
      sums.Add(targets, i, samples);
    }
#pragma GCC unroll 8
    for (std::size_t p = 0; p < kPacks; ++p) samples[p] = Load<Lanes>(&tile[0][at + p * kLaneCount]);
    sums.Finish(targets, row + at, samples);
  }
}

// All illuminants, more than three, of a tile.
template <class SAMPLE, class COPY>
VRX_LANE_INLINE void SumMany(const SAMPLE* curves, COPY copy, const TristimulusTarget* targets,
                             std::size_t count, std::size_t row) {
  alignas(64) TurnedTile tile;
  TurnOver(curves, tile);
  SumTurned<kTargetsTogether>(tile, copy, targets, row);
  std::size_t k = kTargetsTogether;
  for (; k + kTargetsTogether <= count; k += kTargetsTogether) {
    SumTurned<kTargetsTogether>(tile, NoCopy{}, targets + k, row);
  }
  for (; k < count; ++k) SumTurned<1>(tile, NoCopy{}, targets + k, row);
}

// Calls f(tile of curves, copy of the next one, its first row) for every tile; `count` is a multiple of a tile.
template <class SAMPLE, class F>
VRX_LANE_INLINE void OverTiles(const SAMPLE* curves, std::ptrdiff_t stride, std::size_t count, const F& f) {
  if (count == 0) return;
  alignas(64) SAMPLE tiles[2][kTile * kWavelengths];
  TileCopy<SAMPLE> first(curves, stride, tiles[0]);
  for (int i = 0; i < kSteps; ++i) first.template Part<kSteps>();
  std::size_t row = 0, side = 0;
  for (; row + kTile < count; row += kTile, side ^= 1) {
    const SAMPLE* next = curves + static_cast<std::ptrdiff_t>(row + kTile) * stride;
    f(tiles[side], TileCopy<SAMPLE>(next, stride, tiles[side ^ 1]), row);
  }
  f(tiles[side], NoCopy{}, row);
}

template <std::size_t kTargets, class SAMPLE>
[[gnu::noinline]] void FewTargets(const SAMPLE* curves, std::ptrdiff_t stride, std::size_t count,
                                  const TristimulusTarget* targets) {
  OverTiles(curves, stride, count, [&](const SAMPLE* tile, auto copy, std::size_t row) VRX_LANE_LAMBDA {
    SumTile<kTargets>(tile, copy, targets, row);
  });
}

template <class SAMPLE>
[[gnu::noinline]] void ManyTargets(const SAMPLE* curves, std::ptrdiff_t stride, std::size_t count,
                                   const TristimulusTarget* targets, std::size_t targetCount) {
  OverTiles(curves, stride, count, [&](const SAMPLE* tile, auto copy, std::size_t row) VRX_LANE_LAMBDA {
    SumMany(tile, copy, targets, targetCount, row);
  });
}

// Numbers that nobody will find in the cache anyway go past it, which saves reading what they replace.
inline void StreamNumbers(const double* from, std::size_t count, double* to) {
#if defined(__SSE2__)
  if (reinterpret_cast<std::uintptr_t>(to) % 16 == 0) {
    for (std::size_t k = 0; k < count; k += 2) _mm_stream_pd(to + k, _mm_loadu_pd(from + k));
    _mm_sfence();  // another thread may read them next
    return;
  }
#endif
  __builtin_memcpy(to, from, count * sizeof(double));
}

// True when the values of all illuminants lie side by side at every curve.
bool AreSideBySide(const TristimulusTarget* targets, std::size_t count) {
  for (std::size_t k = 0; k < 3 * count; ++k) {
    const TristimulusTarget& target = targets[k / 3];
    if (target.first[k % 3] != targets[0].first[0] + k || target.stride != targets[0].stride) return false;
  }
  return count <= kTargetsInRow;
}

// For values side by side: they are put together before they are written, so that memory is written from front to back, too.
template <class SAMPLE>
[[gnu::noinline]] void SideBySide(const SAMPLE* curves, std::ptrdiff_t stride, std::size_t count,
                                  const TristimulusTarget* targets, std::size_t targetCount) {
  alignas(64) double values[kTile * 3 * kTargetsInRow];
  const std::size_t width = 3 * targetCount;
  const bool stream = count * width * sizeof(double) >= kBytesToStream;
  TristimulusTarget here[kTargetsInRow];
  for (std::size_t k = 0; k < targetCount; ++k) {
    double* const first = values + 3 * k;
    here[k] = {targets[k].weights, {first, first + 1, first + 2}, static_cast<std::ptrdiff_t>(width)};
  }
  OverTiles(curves, stride, count, [&](const SAMPLE* tile, auto copy, std::size_t row) VRX_LANE_LAMBDA {
    SumMany(tile, copy, here, targetCount, 0);
    double* const to = targets[0].first[0] + static_cast<std::ptrdiff_t>(row) * targets[0].stride;
    if (targets[0].stride == static_cast<std::ptrdiff_t>(width)) {
      if (stream) {
        StreamNumbers(values, kTile * width, to);
      } else {
        __builtin_memcpy(to, values, kTile * width * sizeof(double));
      }
    } else {
      for (std::size_t r = 0; r < kTile; ++r) {
        __builtin_memcpy(to + static_cast<std::ptrdiff_t>(r) * targets[0].stride, values + r * width,
                         width * sizeof(double));
      }
    }
  });
}

// The rest, fewer than a tile, among black curves. What is made of those is left out.
template <class SAMPLE>
[[gnu::noinline]] void Rest(const SAMPLE* curves, std::ptrdiff_t stride, std::size_t from, std::size_t count,
                            const TristimulusTarget* targets, std::size_t targetCount) {
  SAMPLE some[kTile * kWavelengths] = {};
  for (std::size_t row = from; row < count; ++row) {
    const SAMPLE* curve = curves + static_cast<std::ptrdiff_t>(row) * stride;
    for (std::size_t i = 0; i < kWavelengths; ++i) some[(row - from) * kWavelengths + i] = curve[i];
  }
  for (std::size_t k = 0; k < targetCount; ++k) {
    double xyz[3 * kTile];
    const TristimulusTarget here = {targets[k].weights, {xyz, xyz + 1, xyz + 2}, 3};
    SumTile<1>(some, NoCopy{}, &here, 0);
    for (std::size_t row = from; row < count; ++row) {
      for (std::size_t c = 0; c < 3; ++c) {
        targets[k].first[c][static_cast<std::ptrdiff_t>(row) * targets[k].stride] = xyz[3 * (row - from) + c];
      }
    }
  }
}

template <class SAMPLE>
void Tristimulus(const SAMPLE* curves, std::ptrdiff_t stride, std::size_t count,
                 const TristimulusTarget* targets, std::size_t targetCount) {
  const std::size_t inTiles = count / kTile * kTile;
  if (targetCount == 1) {
    FewTargets<1>(curves, stride, inTiles, targets);
  } else if (targetCount == 2) {
    FewTargets<2>(curves, stride, inTiles, targets);
  } else if (targetCount == 3) {
    FewTargets<3>(curves, stride, inTiles, targets);
  } else if (AreSideBySide(targets, targetCount)) {
    SideBySide(curves, stride, inTiles, targets, targetCount);
  } else {
    ManyTargets(curves, stride, inTiles, targets, targetCount);
  }
  if (inTiles < count) Rest(curves, stride, inTiles, count, targets, targetCount);
}

}  // namespace

template <>
const TristimulusKernels& KernelsOf<TristimulusKernels, VRX_LANES>() {
  static constexpr TristimulusKernels kKernels = {&Tristimulus<double>, &Tristimulus<float>};
  return kKernels;
}

}  // namespace vrx
