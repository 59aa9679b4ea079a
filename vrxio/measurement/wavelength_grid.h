// How measured wavelengths become the library's grid of 360, 370 ... 750 nm, or any other.

#ifndef VRXIO_MEASUREMENT_WAVELENGTH_GRID_H_
#define VRXIO_MEASUREMENT_WAVELENGTH_GRID_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <vrxmath/foundation/ks_data.h>
#include <vrxmath/numeric/lagrange.h>

namespace vrx::io {

/// nm by which an even spacing may vary: wavelengths are rounded in headers.
inline constexpr double kUnevenness = 0.02;

/// Brings curves from one list of wavelengths to another. A wavelength that was measured is taken as it is, at whatever
/// spacing; between measured ones the curve is interpolated by Lagrange's cubic through the two nearest on each side, or
/// the quadratic through the three at an end (StencilAt, ASTM E2022); beyond the ends it goes on with the last measured
/// value, as CIE 15 and CIE 167 recommend. The same cubic over uneven nodes serves uneven wavelengths.
class SpectralResampler {
 public:
  SpectralResampler() = default;
  /// Both ascend, in nm; `from` has at least 3. Those that are even to within 0.02 nm count as even.
  SpectralResampler(std::span<const double> from, std::span<const double> to);

  /// Writes a value for each wavelength of `to`. `measured` has a value for each of `from`.
  void Convert(std::span<const double> measured, double* curve) const;

  bool Interpolates() const { return interpolates_; }
  bool IsEven() const { return isEven_; }

 private:
  std::vector<LagrangeStencil> stencils_;
  bool interpolates_ = false;
  bool isPart_ = false;  // all wavelengths were measured, one after the other
  bool isEven_ = true;
};

/// The conversion of curves with one set of wavelengths to the library's grid, or to the grid of sums at an interval of 5 or 1 nm.
class WavelengthGrid {
 public:
  WavelengthGrid() = default;
  /// Measured wavelengths, ascending, in nm, at least 3; `interval`: of the grid, in nm (GridWavelengths).
  explicit WavelengthGrid(std::span<const double> wavelengths, int32_t interval = kWavelengthStep);

  /// Writes the samples of the grid, 40, 85 or 421. `measured` has a value for each wavelength. A first sample that is by chance the
  /// unset value, which would make the curve count as not measured, becomes 0.
  void Convert(std::span<const double> measured, double* curve) const;

  /// The steps of Convert, for a user: "used as they are" or a list of steps.
  std::string Description() const;
  /// True when a part of 400 to 700 nm was not measured.
  bool IsNarrow() const { return first_ > 400 || last_ < 700; }
  /// What a user is to know before the curves are used: empty, or that a part of them is guessed.
  std::string Warning() const;

  bool IsEven() const { return resampler_.IsEven(); }

  /// The ends of what was measured, in nm.
  double FirstWavelength() const { return first_; }
  double LastWavelength() const { return last_; }

 private:
  int32_t interval_ = kWavelengthStep;
  double first_ = 0;
  double last_ = 0;
  std::size_t count_ = 0;
  std::string description_;
  SpectralResampler resampler_;
};

/// The wavelengths of the library's grid, in nm.
std::vector<double> LibraryWavelengths();
/// Those of curves at `interval` nm: 360 to 750 nm for 10, 360 to 780 nm for 5 and 1 (vrxmath/colorimetry/fine_weights.h).
std::vector<double> GridWavelengths(int32_t interval);

/// Why ascending wavelengths are too coarse for sums at `interval` nm, as a sentence for the user; empty where they are not.
std::string FaultOfInterval(std::span<const double> wavelengths, int32_t interval);

/// Wavelengths for a person: "400 to 700 nm at 10 nm", "380.2 to 779.9 nm, 0.3 to 0.5 nm apart".
std::string DescribeWavelengths(std::span<const double> wavelengths);

}  // namespace vrx::io

#endif  // VRXIO_MEASUREMENT_WAVELENGTH_GRID_H_
