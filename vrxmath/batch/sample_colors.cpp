#include <vrxmath/batch/sample_colors.h>

#include <algorithm>

#include <vrxmath/batch/batch_conditions.h>
#include <vrxmath/batch/color_blocks.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/foundation/ks_data.h>

namespace vrx {
namespace {

constexpr std::size_t kColorBlockRows = 2048;

template <class COLORS>
const BatchView<const double, 3>& ViewUnder(const COLORS& colors, std::size_t j) {
  return colors.under[colors.under.size() == 1 ? 0 : j];
}

template <class SAMPLE>
CurveBatchOf<SAMPLE> Part(const CurveBatchOf<SAMPLE>& curves, std::size_t from, std::size_t count) {
  return {curves.samples.subspan(from * curves.stride, (count - 1) * curves.stride + kWavelengths),
          curves.stride};
}

FineCurveBatch Part(const FineCurveBatch& curves, std::size_t from, std::size_t count) {
  const auto samples = static_cast<std::size_t>(FineSamples(curves.interval));
  return {curves.samples.subspan(from * samples, count * samples), curves.interval};
}

// Calls the visitor that knows the kind of the samples.
template <class... F>
struct Overloaded : F... {
  using F::operator()...;
};
template <class... F>
Overloaded(F...) -> Overloaded<F...>;

std::size_t CountOf(std::span<const BatchView<const double, 3>> under) {
  for (const auto& view : under) RequireSameCount(view.size(), under[0].size());
  return under.empty() ? 0 : under[0].size();
}

void Copy(const BatchView<const double, 3>& from, const BatchView<double, 3>& to) {
  for (std::size_t i = 0; i < to.size(); ++i) {
    for (std::size_t k = 0; k < 3; ++k) to.at(i, k) = from.at(i, k);
  }
}

}  // namespace

std::size_t SampleCount(const Samples& samples) {
  return std::visit(Overloaded{[](const CurveBatch& curves) { return CurveCount(curves); },
                               [](const CurveBatch32& curves) { return CurveCount(curves); },
                               [](const FineCurveBatch& curves) { return CurveCount(curves); },
                               [](const auto& colors) { return CountOf(colors.under); }},
                    samples);
}

void RequireColorsUnder(const Samples& samples, std::size_t illuminants) {
  const auto require = [illuminants](const auto& colors) {
    if (colors.under.size() != 1 && colors.under.size() != illuminants) throw CInvalidArgException();
  };
  std::visit(
      Overloaded{[](const CurveBatch&) {}, [](const CurveBatch32&) {}, [](const FineCurveBatch&) {}, require},
      samples);
}

void FillXyz(const Samples& samples, std::span<const vrxIlluminant> illuminants, std::int32_t observer,
             std::size_t from, std::size_t count, std::span<const BatchView<double, 3>> xyz) {
  const auto fromCurves = [&](const auto& curves) {
    TristimulusBatch(illuminants, observer, Part(curves, from, count), xyz);
  };
  const auto fromXyz = [&](const XyzSamples& colors) {
    for (std::size_t j = 0; j < xyz.size(); ++j) Copy(ViewUnder(colors, j).Rows(from, count), xyz[j]);
  };
  const auto fromLab = [&](const LabSamples& colors) {
    const SpaceKernel kernel = CurrentKernels<ColorSpaceKernels>().labToXyz;
    for (std::size_t j = 0; j < xyz.size(); ++j) {
      kernel(RequireTerms(CoordinateSpace::kLab, illuminants[j], observer),
             ColumnsOf(ViewUnder(colors, j), from, count).data(), ColumnsOf(xyz[j], 0, count).data(), count);
    }
  };
  std::visit(Overloaded{[&](const CurveBatch& curves) { fromCurves(curves); },
                        [&](const CurveBatch32& curves) { fromCurves(curves); },
                        [&](const FineCurveBatch& curves) { fromCurves(curves); }, fromXyz, fromLab},
             samples);
}

void FillLab(const Samples& samples, std::size_t j, const SpaceTerms& terms, std::size_t from,
             const BatchView<const double, 3>& xyz, const BatchView<double, 5>& lab) {
  const auto& kernels = CurrentKernels<ColorSpaceKernels>();
  const std::size_t count = lab.size();
  const auto to = ColumnsOf(lab, 0, count);
  if (const auto* given = std::get_if<LabSamples>(&samples)) {
    kernels.chromaHue(terms, ColumnsOf(ViewUnder(*given, j), from, count).data(), to.data(), count);
  } else {
    kernels.xyzToLab(terms, ColumnsOf(xyz, 0, count).data(), to.data(), count);
  }
}

ColorTable ColorsOf(const Samples& samples, std::int32_t system, std::span<const vrxIlluminant> illuminants,
                    std::int32_t observer, const BatchRun& run) {
  const DifferenceSystem* const row = FindDifferenceSystem(system);
  if (row == nullptr) throw CInvalidArgException();
  const std::size_t count = SampleCount(samples);
  RequireColorsUnder(samples, illuminants.size());
  ColorTable table;
  std::vector<SpaceTerms> terms;
  for (const vrxIlluminant illuminant : illuminants) {
    terms.push_back(RequireTerms(row->space, illuminant, observer));
    table.under.push_back({std::vector<double>(3 * count), std::vector<double>(5 * count)});
  }
  const auto fill = [&](std::size_t from, std::size_t rows) {
    std::vector<BatchView<double, 3>> xyz;
    for (ColorTable::Under& under : table.under)
      xyz.emplace_back(std::span(under.xyz).subspan(3 * from, 3 * rows));
    FillXyz(samples, illuminants, observer, from, rows, xyz);
    for (std::size_t j = 0; j < illuminants.size(); ++j) {
      const BatchView<double, 5> lab(std::span(table.under[j].lab).subspan(5 * from, 5 * rows));
      if (row->space == CoordinateSpace::kLab) {
        FillLab(samples, j, terms[j], from, xyz[j], lab);
      } else {
        CoordinatesKernel(row->space)(terms[j], ColumnsOf(BatchView<const double, 3>(xyz[j]), 0, rows).data(),
                                      ColumnsOf(lab, 0, rows).data(), rows);
      }
    }
  };
  if (!ForEachBlock(run, count, kColorBlockRows, fill)) return {};
  return table;
}

}  // namespace vrx
