// How measured wavelengths become the library's grid of 360, 370 ... 750 nm.

#ifndef VRXIO_WAVELENGTH_GRID_H_
#define VRXIO_WAVELENGTH_GRID_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include <vrxmath/foundation/ks_data.h>
#include <vrxmath/numeric/lagrange.h>

namespace vrx::io {

/// Widest and narrowest spacing of measured wavelengths, in nm.
inline constexpr double kWidestStep = 20;
inline constexpr double kNarrowestStep = 0.5;

/// The conversion of curves with one set of evenly spaced wavelengths. A grid wavelength that was measured is
/// taken as it is, at whatever spacing; between measured ones the curve is interpolated by Lagrange's cubic
/// (StencilAt); beyond the ends it goes on with the last measured value, as CIE 15 and CIE 167 recommend.
class WavelengthGrid {
 public:
  WavelengthGrid() = default;
  /// Measured wavelengths: `first`, `first` + `step` ... in nm, `count` of them, at least 3.
  WavelengthGrid(double first, double step, std::size_t count);

  /// Writes the 40 samples of the grid. `measured` has `count` values.
  void Convert(std::span<const double> measured, double* curve) const;

  /// What Convert does, for a user: "used as they are" or a list of steps.
  std::string Description() const;
  /// True when a part of 400 to 700 nm was not measured.
  bool IsNarrow() const;

  /// The ends of what was measured, in nm.
  double FirstWavelength() const { return first_; }
  double LastWavelength() const { return first_ + step_ * static_cast<double>(count_ - 1); }

 private:
  double first_ = 0;
  double step_ = 0;
  std::size_t count_ = 0;
  bool interpolated_ = false;
  std::array<LagrangeStencil, kWavelengths> stencils_{};
};

}  // namespace vrx::io

#endif  // VRXIO_WAVELENGTH_GRID_H_
