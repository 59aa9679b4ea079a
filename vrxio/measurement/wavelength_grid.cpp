#include <vrxio/measurement/wavelength_grid.h>

#include <algorithm>
#include <cmath>

#include <vrxio/text/decimal.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/foundation/numbers.h>

namespace vrx::io {

namespace {

constexpr double kFirstNode = kFirstWavelength;
constexpr double kSamePlace = 1e-3;  // in steps: a node this near to a measured wavelength is that one

// The last wavelength of the grid at an interval.
int32_t LastNode(int32_t interval) {
  const int32_t count = interval == kWavelengthStep ? kWavelengths : FineSamples(interval);
  return kFirstWavelength + interval * (count - 1);
}

std::string Number(double value) {
  return ShortestText(RoundToWhole(value * 100) / 100);
}

double StepOf(std::span<const double> wavelengths) {
  return (wavelengths.back() - wavelengths.front()) / static_cast<double>(wavelengths.size() - 1);
}

struct Steps {
  double least;
  double most;
};

Steps StepsOf(std::span<const double> wavelengths) {
  Steps steps{wavelengths[1] - wavelengths[0], wavelengths[1] - wavelengths[0]};
  for (std::size_t i = 1; i < wavelengths.size(); ++i) {
    steps.least = std::min(steps.least, wavelengths[i] - wavelengths[i - 1]);
    steps.most = std::max(steps.most, wavelengths[i] - wavelengths[i - 1]);
  }
  return steps;
}

bool AreEven(std::span<const double> wavelengths) {
  const Steps steps = StepsOf(wavelengths);
  return steps.most <= steps.least + kUnevenness;
}

// The polynomial through uneven nodes: the node alone, the two nearest on each side, or three at an end.
LagrangeStencil UnevenStencilAt(double nm, std::span<const double> nodes) {
  LagrangeStencil stencil;
  const auto above = static_cast<std::size_t>(std::ranges::lower_bound(nodes, nm) - nodes.begin());
  const std::size_t last = nodes.size() - 1;
  stencil.count = 1;
  stencil.coefficients[0] = 1;
  stencil.first = static_cast<int32_t>(std::min(above, last));
  if (above == 0 || above > last || nodes[above] == nm) return stencil;
  const std::size_t first = above > 1 ? std::min(above - 2, last - 2) : 0;
  const std::size_t count = above > 1 && above < last ? 4 : 3;
  stencil.first = static_cast<int32_t>(first);
  stencil.count = static_cast<int32_t>(count);
  for (std::size_t k = 0; k < count; ++k) {
    double product = 1;
    for (std::size_t j = 0; j < count; ++j) {
      if (j != k) product *= (nm - nodes[first + j]) / (nodes[first + k] - nodes[first + j]);
    }
    stencil.coefficients[k] = product;
  }
  return stencil;
}

}  // namespace

SpectralResampler::SpectralResampler(std::span<const double> from, std::span<const double> to)
    : isEven_(AreEven(from)) {
  const double step = StepOf(from);
  for (const double nm : to) {
    if (isEven_) {
      double t = (nm - from.front()) / step;
      if (std::fabs(t - RoundToWhole(t)) < kSamePlace) t = RoundToWhole(t);
      stencils_.push_back(StencilAt(t, static_cast<int32_t>(from.size())));
    } else {
      stencils_.push_back(UnevenStencilAt(nm, from));
    }
    interpolates_ = interpolates_ || stencils_.back().count > 1;
  }
  isPart_ = !interpolates_ && !stencils_.empty();
  for (std::size_t i = 0; i < stencils_.size(); ++i) {
    isPart_ = isPart_ && stencils_[i].first == stencils_.front().first + static_cast<int32_t>(i);
  }
}

void SpectralResampler::Convert(std::span<const double> measured, double* curve) const {
  if (isPart_) {
    std::copy_n(measured.data() + stencils_.front().first, stencils_.size(), curve);
    return;
  }
  for (const LagrangeStencil& stencil : stencils_) {
    const double* const y = measured.data() + stencil.first;
    double value = y[0];
    if (stencil.count > 1) {
      value = 0;
      for (int32_t k = 0; k < stencil.count; ++k)
        value += stencil.coefficients[static_cast<std::size_t>(k)] * y[k];
    }
    *curve++ = value;
  }
}

WavelengthGrid::WavelengthGrid(std::span<const double> wavelengths, int32_t interval)
    : interval_(interval),
      first_(wavelengths.front()),
      last_(wavelengths.back()),
      count_(wavelengths.size()),
      description_(DescribeWavelengths(wavelengths)),
      resampler_(wavelengths, GridWavelengths(interval)) {}

void WavelengthGrid::Convert(std::span<const double> measured, double* curve) const {
  resampler_.Convert(measured, curve);
  if (IsUnset(curve[0])) curve[0] = 0.0;
}

std::string WavelengthGrid::Warning() const {
  if (!IsNarrow()) return {};
  return "the wavelengths do not cover all of 400 to 700 nm; the rest is extrapolated";
}

std::string WavelengthGrid::Description() const {
  std::string steps;
  const auto add = [&steps](const std::string& what) { steps += (steps.empty() ? "" : ", ") + what; };
  const double step = (last_ - first_) / static_cast<double>(count_ - 1);
  const std::string to = "brought to " + std::to_string(interval_) + " nm by ";
  if (resampler_.Interpolates()) {
    add(to + "Lagrange interpolation");
  } else if (step < interval_ - kSamePlace) {
    add(to + "taking the values measured there");
  }
  const int32_t lastNode = LastNode(interval_);
  const std::string end = std::to_string(lastNode) + " nm";
  if (first_ < kFirstNode || last_ > lastNode) add("cut to 360 to " + end);
  if (first_ > kFirstNode) add("completed down to 360 nm with the first value");
  if (last_ < lastNode) add("completed up to " + end + " with the last value");
  return description_ + ": " + (steps.empty() ? "used as they are" : steps);
}

std::vector<double> LibraryWavelengths() {
  return GridWavelengths(kWavelengthStep);
}

std::vector<double> GridWavelengths(int32_t interval) {
  std::vector<double> wavelengths;
  for (int32_t nm = kFirstWavelength; nm <= LastNode(interval); nm += interval) wavelengths.push_back(nm);
  return wavelengths;
}

std::string FaultOfInterval(std::span<const double> wavelengths, int32_t interval) {
  if (StepsOf(wavelengths).most <= interval + kUnevenness) return {};
  return DescribeWavelengths(wavelengths) + ": too coarse for sums at " + std::to_string(interval) + " nm";
}

std::string DescribeWavelengths(std::span<const double> wavelengths) {
  std::string text = Number(wavelengths.front()) + " to " + Number(wavelengths.back()) + " nm";
  if (wavelengths.size() < 2) return text;
  if (AreEven(wavelengths)) return text + " at " + Number(StepOf(wavelengths)) + " nm";
  const Steps steps = StepsOf(wavelengths);
  return text + ", " + Number(steps.least) + " to " + Number(steps.most) + " nm apart";
}

}  // namespace vrx::io
