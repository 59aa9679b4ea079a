#include <vrxmath/batch/fine_tristimulus_kernels.h>
#include <vrxmath/batch/lane_rows.h>

// The values of one curve under several illuminants fill packs, and one sample is multiplied by all of their weights: nothing has
// to be turned. Curves are taken together so that the sums of one are added while those of another are on their way.

namespace vrx {
namespace {

constexpr std::size_t kFinePacks = kFineSums / kLaneCount;
constexpr std::size_t kRowsTogether = kLaneCount == 2 ? 2 : 4;

template <std::size_t kRows>
VRX_LANE_INLINE void SumRows(const double* curves, std::size_t samples, const double* weights, double* to) {
  Lanes sums[kRows][kFinePacks];
#pragma GCC unroll 8
  for (std::size_t r = 0; r < kRows; ++r) {
#pragma GCC unroll 8
    for (std::size_t p = 0; p < kFinePacks; ++p) sums[r][p] = 0.0;
  }
  for (std::size_t i = 0; i < samples; ++i) {
    const double* const row = weights + i * kFineSums;
#pragma GCC unroll 8
    for (std::size_t p = 0; p < kFinePacks; ++p) {
      const Lanes weight = Load<Lanes>(row + p * kLaneCount);
#pragma GCC unroll 8
      for (std::size_t r = 0; r < kRows; ++r) sums[r][p] += weight * Lanes(curves[r * samples + i]);
    }
  }
#pragma GCC unroll 8
  for (std::size_t r = 0; r < kRows; ++r) {
#pragma GCC unroll 8
    for (std::size_t p = 0; p < kFinePacks; ++p) Store(sums[r][p], to + r * kFineSums + p * kLaneCount);
  }
}

void Sum(const double* curves, std::size_t samples, std::size_t count, const double* weights, double* sums) {
  std::size_t row = 0;
  for (; row + kRowsTogether <= count; row += kRowsTogether)
    SumRows<kRowsTogether>(curves + row * samples, samples, weights, sums + row * kFineSums);
  for (; row < count; ++row) SumRows<1>(curves + row * samples, samples, weights, sums + row * kFineSums);
}

}  // namespace

template <>
const FineTristimulusKernels& KernelsOf<FineTristimulusKernels, VRX_LANES>() {
  static constexpr FineTristimulusKernels kKernels = {&Sum};
  return kKernels;
}

}  // namespace vrx
