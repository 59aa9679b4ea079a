// K and S of the components of a calibration at one wavelength, from the K/S of mixtures of known shares.

#ifndef VRXMATH_MATCHING_CALIBRATION_FIT_H_
#define VRXMATH_MATCHING_CALIBRATION_FIT_H_

#include <cstddef>
#include <utility>
#include <vector>

#include <vrxmath/colorant/optical_transforms.h>

namespace vrx {

/// A mixture: its components with their shares, which add up to 1, and how much it counts.
struct CalibrationMixture {
  std::vector<std::pair<std::size_t, double>> shares;  ///< component and share, none 0
  double weight = 1.0;                                 ///< of the square of its residual
};

/// The surface between the film and the instrument.
struct CalibrationSurface {
  double k1 = 0.04;
  double k2 = 0.6;
  SaundersonMode mode = SaundersonMode::kIncluded;

  /// Measured reflectance, as a fraction, of an opaque film of K/S, and the size of its change with K/S. That has no bound
  /// at the perfect white, where K/S begins like a square root; there 0.999 stands for the reflectance.
  double Reflectance(double ratio) const;
  double Slope(double ratio) const;
};

/// The least squares of one wavelength. Nothing distinguishes one component: the constants come in the unit in which the
/// mixtures scatter 1 on average.
class CalibrationFit {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  static constexpr double kLeastScattering = 1e-5;  ///< of a component, where mixtures scatter 1 on average

  CalibrationFit(std::size_t components, const std::vector<CalibrationMixture>& mixtures,
                 const CalibrationSurface& surface);

  /// K of all components and then S of all, by the linear least squares of Walowit, McCarthy and Berns (1987): of the
  /// equations sum of c K = K/S x sum of c S, each weighted by the change of reflectance with K/S, K and S not negative.
  /// `ratios` are the K/S of the mixtures, of which `omitted` takes no part; `guess` saves time.
  std::vector<double> Linear(const std::vector<double>& ratios, std::size_t omitted,
                             const std::vector<double>& guess);

  /// The constants that make the squares of the differences of reflectance least, K and S not negative, under a weak pull
  /// towards `start`: what Linear gives. The steps begin at `guess` when it is not empty.
  std::vector<double> Refined(const std::vector<double>& ratios, std::size_t omitted,
                              const std::vector<double>& start, const std::vector<double>& guess);

 private:
  struct Readings;

  double SumOf(std::size_t mixture, const double* constants) const;
  double Cost(const Readings& readings, const std::vector<double>& x) const;
  void Clear();
  void AddRow(std::size_t mixture, double ofK, double ofS, double value);
  void AddPull(const std::vector<double>& towards, double factor);
  // Minimises x H x / 2 - g x over x >= least_, from x on.
  void Minimise(std::vector<double>& x);
  void SolveFree(const std::vector<char>& isFree, std::vector<double>& solution);
  std::size_t SteepestBound(const std::vector<char>& isFree, const std::vector<char>& isBarred,
                            const std::vector<double>& x) const;

  std::size_t components_;
  std::size_t unknowns_;
  const std::vector<CalibrationMixture>& mixtures_;
  CalibrationSurface surface_;
  std::vector<double> mean_;            // share of every component
  std::vector<std::size_t> order_;      // of elimination: what has few partners first
  std::vector<double> least_, scale_;   // bound and, for the pull, size of every unknown
  std::vector<double> H_, g_;           // normal equations
  std::vector<double> factor_, right_;  // of those that are free
  std::vector<std::size_t> free_, held_;
};

}  // namespace vrx

#endif  // VRXMATH_MATCHING_CALIBRATION_FIT_H_
