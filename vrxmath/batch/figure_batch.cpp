#include <vrxmath/batch/figure_batch.h>

#include <algorithm>
#include <array>

#include <vrxmath/batch/appearance_batch.h>
#include <vrxmath/batch/batch_conditions.h>
#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/figure_kernels.h>
#include <vrxmath/colorimetry/munsell.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/platform/exceptions.h>

namespace vrx {
namespace {

constexpr std::size_t kFigureBlockRows = 512;

BatchView<const double, 40> ViewOfCurves(const CurveBatch& curves) {
  return {curves.samples, curves.stride};
}

// The curves of a block under both illuminants, on their way to the difference of their corresponding colours.
class InconstancyBlock {
 public:
  InconstancyBlock(vrxIlluminant reference, vrxIlluminant test, std::int32_t observer,
                   const CDifferenceSettings& settings, AdaptationTransform transform)
      : illuminants_{reference, test}, observer_(observer), settings_(settings), transform_(transform) {
    for (std::size_t k = 0; k < illuminants_.size(); ++k) {
      const Viewing viewing = RequireViewing(illuminants_[k], observer);
      whites_[k] = viewing.white;
    }
  }

  void Run(const CurveBatch& curves, std::span<double> values) const {
    std::array<double, 3 * kFigureBlockRows> seen, corresponding;
    std::array<double, 5 * kFigureBlockRows> seenLab, correspondingLab;
    const std::size_t count = values.size();
    const std::array<BatchView<double, 3>, 2> xyz = {ViewOf<3>(seen, count), ViewOf<3>(corresponding, count)};
    TristimulusBatch(illuminants_, observer_, curves, xyz);
    AdaptBatch(transform_, whites_[1], whites_[0], 1.0, xyz[1], xyz[1]);
    const auto a = ViewOf<5>(seenLab, count), b = ViewOf<5>(correspondingLab, count);
    CoordinatesBatch(settings_.system, illuminants_[0], observer_, xyz[0], a);
    CoordinatesBatch(settings_.system, illuminants_[0], observer_, xyz[1], b);
    TotalDifferenceBatch(settings_, 0.0, {xyz[0], a}, {xyz[1], b}, values);
  }

 private:
  template <std::size_t kWidth, std::size_t kNumbers>
  static BatchView<double, kWidth> ViewOf(std::array<double, kNumbers>& numbers, std::size_t count) {
    return std::span(numbers).first(kWidth * count);
  }

  std::array<vrxIlluminant, 2> illuminants_;
  std::array<White, 2> whites_;
  std::int32_t observer_;
  CDifferenceSettings settings_;
  AdaptationTransform transform_;
};

}  // namespace

bool DensityBatch(DensityStatus status, const CurveBatch& curves, const BatchView<double, 4>& densities,
                  const BatchRun& run) {
  const BatchView<const double, 40> view = ViewOfCurves(curves);
  RequireSameCount(view.size(), densities.size());
  if (status < DensityStatus::kA || status > DensityStatus::kT) throw CInvalidArgException();
  const DensityWeights weights = colorimetry_internal::DensityWeightsOf(status);
  return ForEachBlock(run, view.size(), kFigureBlockRows, [&](std::size_t from, std::size_t count) {
    CurrentKernels<FigureKernels>().densities(weights, ColumnsOf(view, from, count).data(),
                                              ColumnsOf(densities, from, count).data(), count);
  });
}

bool MunsellBatch(const BatchView<const double, 3>& xyz, const BatchView<double, 4>& notations,
                  const BatchRun& run) {
  RequireSameCount(xyz.size(), notations.size());
  return ForEachBlock(run, xyz.size(), kFigureBlockRows, [&](std::size_t from, std::size_t count) {
    for (std::size_t i = from; i < from + count; ++i) {
      const MunsellColor found = MunsellFromXyz({xyz.at(i, 0), xyz.at(i, 1), xyz.at(i, 2)});
      notations.at(i, 0) = found.hue;
      notations.at(i, 1) = found.value;
      notations.at(i, 2) = found.chroma;
      notations.at(i, 3) = found.isExtrapolated ? 1.0 : 0.0;
    }
  });
}

bool InconstancyBatch(vrxIlluminant reference, vrxIlluminant test, std::int32_t observer,
                      const CurveBatch& curves, const CDifferenceSettings& settings, std::span<double> values,
                      AdaptationTransform transform, const BatchRun& run) {
  RequireSameCount(CurveCount(curves), values.size());
  if (FindDifferenceSystem(settings.system) == nullptr) throw CInvalidArgException();
  const InconstancyBlock block(reference, test, observer, settings, transform);
  return ForEachBlock(run, values.size(), kFigureBlockRows, [&](std::size_t from, std::size_t count) {
    const CurveBatch part = {curves.samples.subspan(from * curves.stride), curves.stride};
    block.Run({part.samples.first(std::min(part.samples.size(), count * curves.stride)), curves.stride},
              values.subspan(from, count));
  });
}

}  // namespace vrx
