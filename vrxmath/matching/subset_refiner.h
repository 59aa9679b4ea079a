// The solver for one subset with everything in place that the kernels leave out: limits of the shares, and curves that
// depend on the concentration. It also carries the kernels' solutions to the last digits.

#ifndef VRXMATH_MATCHING_SUBSET_REFINER_H_
#define VRXMATH_MATCHING_SUBSET_REFINER_H_

#include <array>
#include <cstdint>
#include <vector>

#include <vrxmath/matching/match_target.h>
#include <vrxmath/matching/offer.h>
#include <vrxmath/matching/subset_kernels.h>

namespace vrx {

/// The square of a colour difference as a quadratic form of small steps of the shares: square + 2 gradient s + s form
/// s.
struct LampForm {
  static constexpr std::size_t kMost = kMostSubsetColorants;
  using Vector = std::array<double, kMost>;
  Vector gradient{};
  std::array<Vector, kMost> form{};
  double square = 0.0;
};

/// Moves shares within their limits and, where they make up a whole, to a total of 1: what is missing is spread over
/// the room that is left, and likewise what is too much. False when no shares obey the limits.
bool MoveWithinLimits(const double* least, const double* most, std::size_t size, bool isWhole,
                      double* shares);

class SubsetRefiner {
 public:
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

  SubsetRefiner(const Offer& offer, const MatchProblem& problem) : offer_(offer), problem_(problem) {}

  /// Gauss-Newton steps under the limits from the shares of `solution` on, which are moved within the limits first.
  /// Ends kInside also on a limit other than 0; kAtBound when a share is 0, kUnsolved when no shares obey the limits.
  /// `prices`, when given, add each share's price times the share to the objective.
  void Solve(const uint16_t* subset, int32_t count, SubsetSolution& solution,
             const double* prices = nullptr) const;

  Limits LimitsOf(const uint16_t* subset, std::size_t size) const;

  /// The forms of the differences under each illuminant at some shares, and the reflectance there less the target's.
  void LampsAt(const uint16_t* subset, std::size_t size, const Vector& shares, std::vector<LampForm>& lamps,
               SpectralCurve& R) const;

  /// The reflectance at some shares less the target's.
  void CurveAt(const uint16_t* subset, std::size_t size, const Vector& shares, SpectralCurve& R) const;

  /// The step to the minimum of a quadratic model under the limits (primal active sets); false when it has none.
  bool Minimise(const Point& point, const Limits& limits, std::size_t size, const Vector& shares,
                Vector& step) const;

 private:
  // The rows of colour differences at some shares, their derivatives, and the reflectance less the target's with its
  // own.
  struct Rows {
    std::array<double, std::size_t{3} * 32> y;
    std::array<Vector, std::size_t{3} * 32> dy;
    SpectralCurve R;
    std::array<SpectralCurve, kMost> dR;
  };

  void Mix(const uint16_t* subset, std::size_t size, const Vector& shares, SpectralCurve& K, SpectralCurve& S,
           std::array<SpectralCurve, kMost>& dK, std::array<SpectralCurve, kMost>& dS) const;
  void SetRows(const uint16_t* subset, std::size_t size, const Vector& shares, Rows& rows) const;
  void Evaluate(const uint16_t* subset, std::size_t size, const Vector& shares, const double* prices,
                Point& point) const;
  void AddCurves(uint16_t colorant, double share, SpectralCurve& K, SpectralCurve& S, SpectralCurve& dK,
                 SpectralCurve& dS) const;
  bool SolveFree(const Point& point, const std::array<bool, kMost>& isFixed, std::size_t size,
                 const Vector& fixed, Vector& step, double& multiplier) const;

  const Offer& offer_;
  const MatchProblem& problem_;
};

}  // namespace vrx

#endif  // VRXMATH_MATCHING_SUBSET_REFINER_H_
