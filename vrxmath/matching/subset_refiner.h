// The solver for one subset with everything in place that the kernels leave out: limits of the shares, and curves that
// depend on the concentration. It also carries the kernels' solutions to the last digits.

#ifndef VRXMATH_MATCHING_SUBSET_REFINER_H_
#define VRXMATH_MATCHING_SUBSET_REFINER_H_

#include <array>
#include <cstdint>

#include <vrxmath/matching/match_target.h>
#include <vrxmath/matching/offer.h>
#include <vrxmath/matching/subset_kernels.h>

namespace vrx {

class SubsetRefiner {
 public:
  SubsetRefiner(const Offer& offer, const MatchProblem& problem) : offer_(offer), problem_(problem) {}

  /// Gauss-Newton steps under the limits from the shares of `solution` on, which are moved within the limits first.
  /// Ends kInside also on a limit other than 0; kAtBound when a share is 0, kUnsolved when no shares obey the limits.
  /// `prices`, when given, add each share's price times the share to the objective.
  void Solve(const uint16_t* subset, int32_t size, SubsetSolution& solution,
             const double* prices = nullptr) const;

 private:
  static constexpr std::size_t kMost = kMostSubsetColorants;
  using Vector = std::array<double, kMost>;
  using Square = std::array<Vector, kMost>;
  struct Limits {
    Vector least, most;
  };
  struct Point {
    Vector gradient;
    Square form;  // half the second derivative of the objective, to Gauss and Newton
    double objective;
    double worst;
  };

  bool MoveWithin(const Limits& limits, std::size_t size, Vector& shares) const;
  void Evaluate(const uint16_t* subset, std::size_t size, const Vector& shares, const double* prices,
                Point& point) const;
  void AddCurves(uint16_t colorant, double share, SpectralCurve& K, SpectralCurve& S, SpectralCurve& dK,
                 SpectralCurve& dS) const;
  bool Minimise(const Point& point, const Limits& limits, std::size_t size, const Vector& shares,
                Vector& step) const;
  bool SolveFree(const Point& point, const std::array<bool, kMost>& isFixed, std::size_t size,
                 const Vector& fixed, Vector& step, double& multiplier) const;

  const Offer& offer_;
  const MatchProblem& problem_;
};

}  // namespace vrx

#endif  // VRXMATH_MATCHING_SUBSET_REFINER_H_
