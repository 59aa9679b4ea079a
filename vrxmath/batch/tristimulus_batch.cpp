#include <vrxmath/batch/tristimulus_batch.h>

#include <algorithm>
#include <array>

#include <vrxmath/batch/batch_conditions.h>
#include <vrxmath/batch/tristimulus_kernels.h>
#include <vrxmath/foundation/ks_data.h>
#include <vrxmath/platform/exceptions.h>

namespace vrx {
namespace {

constexpr std::size_t kSamples = static_cast<std::size_t>(kWavelengths);
constexpr std::size_t kTristimulusBlockRows =
    2048;  // handed to a thread at a time; a multiple of the kernels' blocks
constexpr std::size_t kTargetsTogether = 32;

template <class SAMPLE>
std::size_t Count(const CurveBatchOf<SAMPLE>& curves) {
  return BatchView<const SAMPLE, kSamples>(curves.samples, curves.stride).size();
}

void Run(const double* curves, std::ptrdiff_t stride, std::size_t count,
         std::span<const TristimulusTarget> targets) {
  CurrentKernels<TristimulusKernels>().fromDouble(curves, stride, count, targets.data(), targets.size());
}
void Run(const float* curves, std::ptrdiff_t stride, std::size_t count,
         std::span<const TristimulusTarget> targets) {
  CurrentKernels<TristimulusKernels>().fromFloat(curves, stride, count, targets.data(), targets.size());
}

// Up to kTargetsTogether illuminants for the rows from `from` on.
template <class SAMPLE>
void RunRows(const CurveBatchOf<SAMPLE>& curves, std::span<const double* const> weights,
             std::span<const BatchView<double, 3>> xyz, std::size_t from, std::size_t count) {
  std::array<TristimulusTarget, kTargetsTogether> targets;
  for (std::size_t j = 0; j < xyz.size(); ++j) {
    const BatchView<double, 3> part = xyz[j].Rows(from, count);
    targets[j] = {weights[j], {part.first(0), part.first(1), part.first(2)}, part.stride()};
  }
  Run(curves.samples.data() + from * curves.stride, static_cast<std::ptrdiff_t>(curves.stride), count,
      {targets.data(), xyz.size()});
}

template <class SAMPLE>
bool RunAll(std::span<const vrxIlluminant> illuminants, std::int32_t observer,
            const CurveBatchOf<SAMPLE>& curves, std::span<const BatchView<double, 3>> xyz,
            const BatchRun& run) {
  const std::size_t count = Count(curves);
  RequireSameCount(illuminants.size(), xyz.size());
  for (const auto& view : xyz) RequireSameCount(view.size(), count);
  for (const vrxIlluminant illuminant : illuminants) {
    RequireWeightTable(illuminant, observer);
  }
  // More illuminants than there are built in are taken in several passes.
  for (std::size_t j = 0; j < illuminants.size(); j += kTargetsTogether) {
    const std::size_t together = std::min(kTargetsTogether, illuminants.size() - j);
    std::array<const double*, kTargetsTogether> weights{};
    for (std::size_t k = 0; k < together; ++k) weights[k] = RequireWeightTable(illuminants[j + k], observer);
    const bool finished =
        ForEachBlock(run, count, kTristimulusBlockRows, [&](std::size_t from, std::size_t rows) {
          RunRows<SAMPLE>(curves, {weights.data(), together}, xyz.subspan(j, together), from, rows);
        });
    if (!finished) return false;
  }
  return true;
}

}  // namespace

std::size_t CurveCount(const CurveBatch& curves) {
  return Count(curves);
}
std::size_t CurveCount(const CurveBatch32& curves) {
  return Count(curves);
}

bool TristimulusBatch(std::span<const vrxIlluminant> illuminants, std::int32_t observer,
                      const CurveBatch& curves, std::span<const BatchView<double, 3>> xyz,
                      const BatchRun& run) {
  return RunAll(illuminants, observer, curves, xyz, run);
}
bool TristimulusBatch(std::span<const vrxIlluminant> illuminants, std::int32_t observer,
                      const CurveBatch32& curves, std::span<const BatchView<double, 3>> xyz,
                      const BatchRun& run) {
  return RunAll(illuminants, observer, curves, xyz, run);
}
bool TristimulusBatch(vrxIlluminant illuminant, std::int32_t observer, const CurveBatch& curves,
                      const BatchView<double, 3>& xyz, const BatchRun& run) {
  return RunAll({&illuminant, 1}, observer, curves, {&xyz, 1}, run);
}
bool TristimulusBatch(vrxIlluminant illuminant, std::int32_t observer, const CurveBatch32& curves,
                      const BatchView<double, 3>& xyz, const BatchRun& run) {
  return RunAll({&illuminant, 1}, observer, curves, {&xyz, 1}, run);
}

}  // namespace vrx
