#include <vrxmath/tolerance/lone_difference.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <vector>

#include <vrxmath/foundation/decimal_text.h>

namespace vrx {
namespace {

using Axes = std::array<double, 3>;

Axes AxesOf(const LabDifference& d) {
  return {d.dL, d.da, d.db};
}

// The medians of the differences, and of how far they are from these, along each axis.
struct Middle {
  Axes at{}, spread{};
};

double MedianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

Middle MiddleOf(std::span<const LabDifference> differences) {
  Middle middle;
  for (std::size_t k = 0; k < 3; ++k) {
    std::vector<double> values;
    for (const LabDifference& d : differences) values.push_back(AxesOf(d)[k]);
    middle.at[k] = MedianOf(values);
    for (double& value : values) value = std::fabs(value - middle.at[k]);
    middle.spread[k] = std::max(MedianOf(values), 1e-6);
  }
  return middle;
}

// The differences that lie farthest out for how these scatter: only such a one can make an ellipsoid large alone.
std::vector<std::size_t> Farthest(std::span<const LabDifference> differences) {
  constexpr std::size_t kMost = 6;
  const Middle middle = MiddleOf(differences);
  std::vector<double> distances;
  for (const LabDifference& d : differences) {
    double sum = 0.0;
    for (std::size_t k = 0; k < 3; ++k) {
      const double scaled = (AxesOf(d)[k] - middle.at[k]) / middle.spread[k];
      sum += scaled * scaled;
    }
    distances.push_back(sum);
  }
  std::vector<std::size_t> order(differences.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return distances[a] > distances[b]; });
  order.resize(std::min(order.size(), kMost));
  return order;
}

// The product of the semi-axes; 0 where there is no ellipsoid.
double VolumeOf(std::span<const LabDifference> differences, EllipseCentre centre) {
  CEllipseData ellipse;
  if (FitSmallestEllipse(differences, centre, ellipse) == 0) return 0.0;
  return ellipse[CEllipseData::kLightnessAxis] * ellipse[CEllipseData::kMajorAxis] *
         ellipse[CEllipseData::kMinorAxis];
}

std::string NumberText(double value, int32_t decimals) {
  return DecimalText(value, decimals, u".").ToUtf8();
}

}  // namespace

std::string LoneDifference::Text() const {
  std::string text("one accepted difference (dL* ");
  text.append(NumberText(difference.dL, 2)).append(", da* ").append(NumberText(difference.da, 2));
  text.append(", db* ").append(NumberText(difference.db, 2)).append(") makes the ellipsoid ");
  text.append(NumberText(growth, 1));
  return text.append(" times as large as the others alone: was it meant to be accepted?");
}

std::optional<LoneDifference> FindLoneDifference(std::span<const LabDifference> accepted,
                                                 const ToleranceFitSettings& settings) {
  constexpr std::size_t kFewest = 12;
  constexpr double kGrowth = 4.0;
  if (settings.method != ToleranceFitSettings::kSmallest || accepted.size() < kFewest) return std::nullopt;
  const double all = VolumeOf(accepted, settings.centre);
  std::optional<LoneDifference> found;
  for (const std::size_t index : Farthest(accepted)) {
    std::vector<LabDifference> others(accepted.begin(), accepted.end());
    others.erase(others.begin() + static_cast<std::ptrdiff_t>(index));
    const double without = VolumeOf(others, settings.centre);
    if (!(without > 0.0) || !(all > kGrowth * without)) continue;
    if (!found || all / without > found->growth)
      found = LoneDifference{index, accepted[index], all / without};
  }
  return found;
}

}  // namespace vrx
