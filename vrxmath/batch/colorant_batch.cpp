#include <vrxmath/batch/colorant_batch.h>

#include <vrxmath/batch/batch_view.h>
#include <vrxmath/batch/colorant_kernels.h>
#include <vrxmath/platform/exceptions.h>

namespace vrx {
namespace {

constexpr std::size_t kBlockValues = 16384;
constexpr std::size_t kBlockCurves = 512;

bool Transform(TransformKernel kernel, const StrengthSumSettings& settings, std::span<const double> from,
               std::span<double> to, const BatchRun& run) {
  RequireSameCount(from.size(), to.size());
  return ForEachBlock(run, from.size(), kBlockValues, [&](std::size_t first, std::size_t count) {
    const Column<const double> source{from.data() + first, 1};
    const Column<double> target{to.data() + first, 1};
    kernel(settings, &source, &target, count);
  });
}

StrengthSumSettings Surface(double k1, double k2, SaundersonMode mode) {
  StrengthSumSettings settings;
  settings.k1 = k1;
  settings.k2 = k2;
  settings.mode = mode;
  return settings;
}

const ColorantKernels& ColorantsInUse() {
  return CurrentKernels<ColorantKernels>();
}

}  // namespace

bool KubelkaMunkKsBatch(std::span<const double> reflectances, std::span<double> ks, const BatchRun& run) {
  return Transform(ColorantsInUse().ks, {}, reflectances, ks, run);
}
bool AbsorbanceBatch(std::span<const double> reflectances, std::span<double> densities, const BatchRun& run) {
  return Transform(ColorantsInUse().density, {}, reflectances, densities, run);
}
bool SaundersonToInternalBatch(std::span<const double> measured, double k1, double k2, SaundersonMode mode,
                               std::span<double> internal, const BatchRun& run) {
  return Transform(ColorantsInUse().toInternal, Surface(k1, k2, mode), measured, internal, run);
}
bool SaundersonToMeasuredBatch(std::span<const double> internal, double k1, double k2, SaundersonMode mode,
                               std::span<double> measured, const BatchRun& run) {
  return Transform(ColorantsInUse().toMeasured, Surface(k1, k2, mode), internal, measured, run);
}

bool StrengthSumBatch(const StrengthSumSettings& settings, const CurveBatch& curves, std::span<double> sums,
                      const BatchRun& run) {
  const BatchView<const double, 40> samples(curves.samples, curves.stride);
  RequireSameCount(samples.size(), sums.size());
  if (settings.first < 0 || settings.last >= 40) throw CInvalidArgException();
  return ForEachBlock(run, sums.size(), kBlockCurves, [&](std::size_t from, std::size_t count) {
    const Column<double> target{sums.data() + from, 1};
    ColorantsInUse().strengthSum(settings, ColumnsOf(samples, from, count).data(), &target, count);
  });
}

}  // namespace vrx
