#include <vrxio/wavelength_grid.h>

#include <charconv>
#include <cmath>

#include <vrxmath/foundation/numbers.h>

namespace vrx::io {

namespace {

constexpr double kFirstNode = kFirstWavelength;
constexpr double kLastNode = kFirstWavelength + kWavelengthStep * (kWavelengths - 1);
constexpr double kSamePlace = 1e-3;  // in steps: a node this near to a measured wavelength is that one

std::string Nanometres(double value) {
  char text[32];
  const double rounded = RoundToWhole(value * 100) / 100;
  return std::string(text, std::to_chars(text, text + sizeof text, rounded).ptr);
}

}  // namespace

WavelengthGrid::WavelengthGrid(double first, double step, std::size_t count)
    : first_(first), step_(step), count_(count) {
  for (int32_t i = 0; i < kWavelengths; ++i) {
    double t = (kFirstNode + kWavelengthStep * i - first) / step;
    if (std::fabs(t - RoundToWhole(t)) < kSamePlace) t = RoundToWhole(t);
    LagrangeStencil& stencil = stencils_[static_cast<std::size_t>(i)];
    stencil = StencilAt(t, static_cast<int32_t>(count));
    interpolated_ = interpolated_ || stencil.count > 1;
  }
}

void WavelengthGrid::Convert(std::span<const double> measured, double* curve) const {
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

std::string WavelengthGrid::Description() const {
  const double last = LastWavelength();
  std::string text = Nanometres(first_) + " to " + Nanometres(last) + " nm at " + Nanometres(step_) + " nm";
  std::string steps;
  const auto add = [&steps](const std::string& what) { steps += (steps.empty() ? "" : ", ") + what; };
  if (interpolated_) {
    add("brought to 10 nm by Lagrange interpolation");
  } else if (step_ < kWavelengthStep - kSamePlace) {
    add("brought to 10 nm by taking the values measured there");
  }
  if (first_ < kFirstNode || last > kLastNode) add("cut to 360 to 750 nm");
  if (first_ > kFirstNode) add("completed down to 360 nm with the first value");
  if (last < kLastNode) add("completed up to 750 nm with the last value");
  return text + ": " + (steps.empty() ? "used as they are" : steps);
}

bool WavelengthGrid::IsNarrow() const {
  return first_ > 400 || LastWavelength() < 700;
}

}  // namespace vrx::io
