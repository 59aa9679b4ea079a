#include <vrxmath/batch/color_value_batch.h>

#include <algorithm>
#include <array>
#include <limits>

#include <vrxmath/batch/batch_conditions.h>
#include <vrxmath/batch/color_value_kernels.h>
#include <vrxmath/colorimetry/display_color.h>

namespace vrx {
namespace {

constexpr std::size_t kValueBlockRows = 4096;

// What finds the terms of an index of the list; null for a function that is not there.
IndexTermsFunction TermsFunctionOf(IndexFunction index) {
  for (const ColorIndex& row : ColorIndices()) {
    if (index == row.direct) return row.directTerms;
    if (index == row.recalculated) return row.recalculatedTerms;
  }
  return nullptr;
}

// An index of the caller's own, row by row.
void CallForRows(IndexFunction index, vrxIlluminant illuminant, std::int32_t observer,
                 const BatchView<const double, 3>& xyz, std::span<double> values) {
  CTrisValues row;
  for (std::size_t i = 0; i < values.size(); ++i) {
    row.SetValues({xyz.at(i, 0), xyz.at(i, 1), xyz.at(i, 2)});
    const double value = index(illuminant, observer, row);
    values[i] = value == value ? value : std::numeric_limits<double>::quiet_NaN();
  }
}

}  // namespace

bool IndexBatch(IndexFunction index, vrxIlluminant illuminant, std::int32_t observer,
                const BatchView<const double, 3>& xyz, std::span<double> values, const BatchRun& run) {
  if (index == nullptr) throw CInvalidArgException();
  RequireSameCount(xyz.size(), values.size());
  RequireWeightTable(illuminant, observer);
  const IndexTermsFunction findTerms = TermsFunctionOf(index);
  IndexTerms terms;
  const bool isDefined = findTerms == nullptr || findTerms(illuminant, observer, terms);
  return ForEachBlock(run, xyz.size(), kValueBlockRows, [&](std::size_t from, std::size_t count) {
    const std::span<double> block = values.subspan(from, count);
    if (!isDefined) return std::fill(block.begin(), block.end(), kUnset);
    if (findTerms == nullptr) return CallForRows(index, illuminant, observer, xyz.Rows(from, count), block);
    const auto& kernels = CurrentKernels<ColorValueKernels>();
    kernels.index(terms, ColumnsOf(xyz, from, count).data(), {block.data(), 1}, count);
  });
}

bool DisplayColorBatch(vrxIlluminant illuminant, std::int32_t observer, const BatchView<const double, 3>& xyz,
                       const BatchView<std::uint8_t, 3>& rgb, std::span<std::uint8_t> displayable,
                       const BatchRun& run) {
  RequireSameCount(xyz.size(), rgb.size());
  if (!displayable.empty()) RequireSameCount(xyz.size(), displayable.size());
  RequireWeightTable(illuminant, observer);
  DisplayTerms terms = {{}, &colorimetry_internal::GetDisplayCurve()};
  if (!FindDisplayMatrix(illuminant, observer, terms.matrix)) throw CInvalidArgException();
  return ForEachBlock(run, xyz.size(), kValueBlockRows, [&](std::size_t from, std::size_t count) {
    const auto& kernels = CurrentKernels<ColorValueKernels>();
    std::array<Column<std::uint8_t>, 4> channels{};
    std::ranges::copy(ColumnsOf(rgb, from, count), channels.begin());
    if (!displayable.empty()) channels[3] = {displayable.data() + from, 1};
    const auto kernel = displayable.empty() ? kernels.display : kernels.displayAndFlag;
    kernel(terms, ColumnsOf(xyz, from, count).data(), channels.data(), count);
  });
}

}  // namespace vrx
