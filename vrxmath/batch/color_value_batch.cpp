#include <vrxmath/batch/color_value_batch.h>

#include <limits>

#include <vrxmath/batch/batch_conditions.h>
#include <vrxmath/colorimetry/display_color.h>

namespace vrx {
namespace {

constexpr std::size_t kBlockRows = 4096;

void ReadRow(const BatchView<const double, 3>& xyz, std::size_t row, CTrisValues& values) {
  for (std::int32_t k = 0; k < 3; ++k) values[k] = xyz.at(row, static_cast<std::size_t>(k));
}

}  // namespace

bool IndexBatch(IndexFunction index, vrxIlluminant illuminant, std::int32_t observer,
                const BatchView<const double, 3>& xyz, std::span<double> values, const BatchRun& run) {
  if (index == nullptr) throw CInvalidArgException();
  RequireSameCount(xyz.size(), values.size());
  RequireWeightTable(illuminant, observer);
  return ForEachBlock(run, xyz.size(), kBlockRows, [&](std::size_t from, std::size_t count) {
    CTrisValues row;
    for (std::size_t i = from; i < from + count; ++i) {
      ReadRow(xyz, i, row);
      const double value = index(illuminant, observer, row);
      values[i] = value == value ? value : std::numeric_limits<double>::quiet_NaN();
    }
  });
}

bool DisplayColorBatch(vrxIlluminant illuminant, std::int32_t observer, const BatchView<const double, 3>& xyz,
                       const BatchView<std::uint8_t, 3>& rgb, std::span<std::uint8_t> displayable,
                       const BatchRun& run) {
  RequireSameCount(xyz.size(), rgb.size());
  if (!displayable.empty()) RequireSameCount(xyz.size(), displayable.size());
  RequireWeightTable(illuminant, observer);
  return ForEachBlock(run, xyz.size(), kBlockRows, [&](std::size_t from, std::size_t count) {
    CTrisValues row;
    for (std::size_t i = from; i < from + count; ++i) {
      std::int32_t channels[3];
      ReadRow(xyz, i, row);
      const bool shown = XyzToDisplayRgb(illuminant, observer, row, channels[0], channels[1], channels[2]);
      for (std::size_t k = 0; k < 3; ++k) rgb.at(i, k) = static_cast<std::uint8_t>(channels[k]);
      if (!displayable.empty()) displayable[i] = shown ? 1 : 0;
    }
  });
}

}  // namespace vrx
