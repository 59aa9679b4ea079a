#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include <vrxmath/batch/batch_conditions.h>
#include <vrxmath/batch/fine_tristimulus_kernels.h>
#include <vrxmath/batch/tristimulus_batch.h>
#include <vrxmath/colorimetry/fine_weights.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/platform/exceptions.h>

namespace vrx {
namespace {

constexpr std::size_t kFineBlockRows = 256;
constexpr std::size_t kComponentsOfColor = 3;

const double* RequireFineWeights(vrxIlluminant illuminant, std::int32_t observer, std::int32_t interval) {
  const double* const weights = FineWeightTable(illuminant, observer, interval);
  if (weights == nullptr) throw CInvalidArgException();
  return weights;
}

// The weights of all illuminants, as many together as the kernel sums side by side: sample by sample, zeros behind the last.
std::vector<double> WeightsSideBySide(std::span<const vrxIlluminant> illuminants, std::int32_t observer,
                                      std::int32_t interval) {
  const auto samples = static_cast<std::size_t>(FineSamples(interval));
  const std::size_t values = kComponentsOfColor * illuminants.size();
  std::vector<double> sorted((values + kFineSums - 1) / kFineSums * kFineSums * samples);
  for (std::size_t k = 0; k < values; ++k) {
    const double* const block = RequireFineWeights(illuminants[k / kComponentsOfColor], observer, interval) +
                                k % kComponentsOfColor * samples;
    double* const to = sorted.data() + k / kFineSums * kFineSums * samples + k % kFineSums;
    for (std::size_t i = 0; i < samples; ++i) to[i * kFineSums] = block[i];
  }
  return sorted;
}

double FinishedSum(double sum, double firstSample) {
  const double value = IsUnset(firstSample) ? kUnset : sum * 0.01;
  return std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
}

// The values of some curves, as many as the kernel sums at a time.
void FillRows(const double* curves, std::size_t samples, std::span<const double> weights,
              std::span<const BatchView<double, 3>> xyz, std::size_t from, std::size_t count) {
  std::array<double, kFineBlockRows * kFineSums> sums;
  const std::size_t values = kComponentsOfColor * xyz.size();
  for (std::size_t first = 0; first < values; first += kFineSums) {
    CurrentKernels<FineTristimulusKernels>().sum(curves, samples, count, weights.data() + first * samples,
                                                 sums.data());
    for (std::size_t k = first; k < std::min(values, first + kFineSums); ++k) {
      const BatchView<double, 3>& target = xyz[k / kComponentsOfColor];
      for (std::size_t i = 0; i < count; ++i) {
        target.at(from + i, k % kComponentsOfColor) =
            FinishedSum(sums[i * kFineSums + k - first], curves[i * samples]);
      }
    }
  }
}

}  // namespace

std::size_t CurveCount(const FineCurveBatch& curves) {
  if (!IsFineInterval(curves.interval)) throw CInvalidArgException();
  const auto samples = static_cast<std::size_t>(FineSamples(curves.interval));
  if (curves.samples.size() % samples != 0) throw CInvalidArgException();
  return curves.samples.size() / samples;
}

bool TristimulusBatch(std::span<const vrxIlluminant> illuminants, std::int32_t observer,
                      const FineCurveBatch& curves, std::span<const BatchView<double, 3>> xyz,
                      const BatchRun& run) {
  const std::size_t count = CurveCount(curves);
  RequireSameCount(illuminants.size(), xyz.size());
  for (const auto& view : xyz) RequireSameCount(view.size(), count);
  const std::vector<double> weights = WeightsSideBySide(illuminants, observer, curves.interval);
  const auto samples = static_cast<std::size_t>(FineSamples(curves.interval));
  return ForEachBlock(run, count, kFineBlockRows, [&](std::size_t from, std::size_t rows) {
    FillRows(curves.samples.data() + from * samples, samples, weights, xyz, from, rows);
  });
}

}  // namespace vrx
