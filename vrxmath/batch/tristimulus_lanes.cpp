#include <vrxmath/batch/tristimulus_kernels.h>

#include <utility>

#include <vrxmath/batch/lane_rows.h>

// Curves lie one after the other, while a pack wants the same wavelength of several curves. A block of curves is turned
// over into the first-level cache, wavelength by wavelength, and every illuminant reads it there. Each sum runs from the
// shortest wavelength up, one product at a time, as in the calculation for one curve.

namespace vrx {
namespace {

constexpr int kWavelengths = 40;
constexpr std::size_t kBlock = 16;  // curves in a block: 5 KB, and as much for the next one
constexpr std::size_t kPacksTogether = kBlock / kLaneCount < 4 ? kBlock / kLaneCount : 4;

using Block = double[kWavelengths][kBlock];

// Asks for the next block while this one is worked on: without it every row of a long list would wait for the memory. The
// requests are spread over the sums, so that they do not queue up.
template <class SAMPLE>
struct Prefetch {
  const SAMPLE* next;
  std::ptrdiff_t stride;
  std::size_t rows;  // 0: there is no next block

  VRX_LANE_INLINE void Part(int wavelength) const {
#if defined(__GNUC__)
    constexpr int kSamplesInLine = static_cast<int>(64 / sizeof(SAMPLE));
    constexpr std::size_t kRowsInPart = kBlock / static_cast<std::size_t>(kSamplesInLine);
    if (wavelength >= kWavelengths / kSamplesInLine * kSamplesInLine) return;
    const int line = wavelength / kSamplesInLine;
    const auto from = static_cast<std::size_t>(wavelength % kSamplesInLine) * kRowsInPart;
    for (std::size_t row = from; row < from + kRowsInPart && row < rows; ++row) {
      __builtin_prefetch(next + static_cast<std::ptrdiff_t>(row) * stride + line * kSamplesInLine);
    }
#else
    (void)wavelength;
#endif
  }
};

#if VRX_LANES > 1

VRX_LANE_INLINE Lanes LoadSamples(const double* from) {
  return Load<Lanes>(from);
}
VRX_LANE_INLINE Lanes LoadSamples(const float* from) {
  typedef float Floats __attribute__((vector_size(4 * VRX_LANES)));
  Floats samples;
  __builtin_memcpy(&samples, from, sizeof samples);
  return Lanes(__builtin_convertvector(samples, Lanes::Vector));
}

// A whole block of curves, turned over.
template <class SAMPLE>
VRX_LANE_INLINE void TurnOver(const SAMPLE* curves, std::ptrdiff_t stride, Block& block) {
  for (std::size_t row = 0; row < kBlock; row += kLaneCount) {
    const SAMPLE* first = curves + static_cast<std::ptrdiff_t>(row) * stride;
    for (int i = 0; i < kWavelengths; i += VRX_LANES) {
      Lanes tile[kLaneCount];
#pragma GCC unroll 8
      for (int k = 0; k < VRX_LANES; ++k) tile[k] = LoadSamples(first + k * stride + i);
      Transpose(tile);
#pragma GCC unroll 8
      for (int k = 0; k < VRX_LANES; ++k) Store(tile[k], &block[i + k][row]);
    }
  }
}

#else

template <class SAMPLE>
void TurnOver(const SAMPLE* curves, std::ptrdiff_t stride, Block& block) {
  for (std::size_t row = 0; row < kBlock; ++row) {
    for (int i = 0; i < kWavelengths; ++i)
      block[i][row] = curves[static_cast<std::ptrdiff_t>(row) * stride + i];
  }
}

#endif

// The last curves, fewer than a block; what follows them counts as black.
template <class SAMPLE>
void TurnOverSome(const SAMPLE* curves, std::ptrdiff_t stride, std::size_t rows, Block& block) {
  for (int i = 0; i < kWavelengths; ++i) {
    for (std::size_t row = 0; row < kBlock; ++row) {
      block[i][row] =
          row < rows ? static_cast<double>(curves[static_cast<std::ptrdiff_t>(row) * stride + i]) : 0.0;
    }
  }
}

// The sums of a few packs of curves for one illuminant, side by side. Three at a time keep within the registers.
template <class PREFETCH>
VRX_LANE_INLINE void SumPacks(const Block& block, std::size_t row, const double* weights,
                              const PREFETCH& prefetch, double (&xyz)[3][kBlock]) {
  Lanes X[kPacksTogether], Y[kPacksTogether], Z[kPacksTogether];
  for (std::size_t p = 0; p < kPacksTogether; ++p) X[p] = Y[p] = Z[p] = 0.0;
  for (int i = 0; i < kWavelengths; ++i) {
    const Lanes wx = weights[i], wy = weights[kWavelengths + i], wz = weights[2 * kWavelengths + i];
    prefetch.Part(i);
#pragma GCC unroll 4
    for (std::size_t p = 0; p < kPacksTogether; ++p) {
      Lanes sample = Load<Lanes>(&block[i][row + p * kLaneCount]);
      KeepInRegister(sample);
      X[p] += wx * sample;
      Y[p] += wy * sample;
      Z[p] += wz * sample;
    }
  }
  for (std::size_t p = 0; p < kPacksTogether; ++p) {
    const std::size_t at = row + p * kLaneCount;
    const auto unset = IsUnset(Load<Lanes>(&block[0][at]));
    Store(CanonicalNaN(Select(unset, Lanes(kUnset), X[p] * 0.01)), &xyz[0][at]);
    Store(CanonicalNaN(Select(unset, Lanes(kUnset), Y[p] * 0.01)), &xyz[1][at]);
    Store(CanonicalNaN(Select(unset, Lanes(kUnset), Z[p] * 0.01)), &xyz[2][at]);
  }
}

struct NoPrefetch {
  VRX_LANE_INLINE void Part(int) const {}
};

template <class PREFETCH>
[[gnu::noinline]] void SumBlock(const Block& block, std::size_t from, std::size_t rows,
                                const TristimulusTarget& target, const PREFETCH& prefetch) {
  alignas(64) double xyz[3][kBlock];
  constexpr std::size_t kTogether = kPacksTogether * kLaneCount;
  SumPacks(block, 0, target.weights, prefetch, xyz);
  for (std::size_t row = kTogether; row < kBlock; row += kTogether) {
    SumPacks(block, row, target.weights, NoPrefetch{}, xyz);
  }
  for (int k = 0; k < 3; ++k) {
    double* to = target.first[k] + static_cast<std::ptrdiff_t>(from) * target.stride;
    for (std::size_t row = 0; row < rows; ++row)
      to[static_cast<std::ptrdiff_t>(row) * target.stride] = xyz[k][row];
  }
}

template <class SAMPLE>
void Tristimulus(const SAMPLE* curves, std::ptrdiff_t stride, std::size_t count,
                 const TristimulusTarget* targets, std::size_t targetCount) {
  alignas(64) Block block;
  for (std::size_t from = 0; from < count; from += kBlock) {
    const SAMPLE* first = curves + static_cast<std::ptrdiff_t>(from) * stride;
    const std::size_t left = count - from;
    const std::size_t rows = left < kBlock ? left : kBlock;
    if (rows == kBlock) {
      TurnOver(first, stride, block);
    } else {
      TurnOverSome(first, stride, rows, block);
    }
    const std::size_t next = left - rows < kBlock ? left - rows : kBlock;
    const Prefetch<SAMPLE> prefetch{next == 0 ? first : first + static_cast<std::ptrdiff_t>(kBlock) * stride,
                                    stride, next};
    for (std::size_t k = 0; k < targetCount; ++k) {
      if (k == 0) {
        SumBlock(block, from, rows, targets[k], prefetch);
      } else {
        SumBlock(block, from, rows, targets[k], NoPrefetch{});
      }
    }
  }
}

}  // namespace

template <>
const TristimulusKernels& KernelsOf<TristimulusKernels, VRX_LANES>() {
  static constexpr TristimulusKernels kKernels = {&Tristimulus<double>, &Tristimulus<float>};
  return kKernels;
}

}  // namespace vrx
