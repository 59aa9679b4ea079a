// What the sum of squares leaves open: the recipe of a subset whose largest difference is the smallest, and the
// cheapest one within the tolerance.

#ifndef VRXMATH_MATCHING_WORST_REFINER_H_
#define VRXMATH_MATCHING_WORST_REFINER_H_

#include <cstdint>
#include <vector>

#include <vrxmath/matching/match_target.h>
#include <vrxmath/matching/offer.h>
#include <vrxmath/matching/subset_refiner.h>

namespace vrx {

/// Both problems are solved by their duals: weights of the illuminants, under which the quadratic model has its
/// minimum, grow where the difference is larger than it should be (C. L. Lawson's method of weights, thesis, Univ. of
/// California, Los Angeles, 1961). The model is that at the present shares, scaled to the differences that the system
/// of the settings gives there, and made anew until nothing is gained.
class WorstRefiner {
 public:
  WorstRefiner(const Offer& offer, const MatchTarget& target)
      : target_(target), refiner_(offer, target.Problem()) {}

  /// Moves shares, which obey the limits, to the smallest largest difference. Returns it.
  double Level(const uint16_t* subset, int32_t count, SubsetSolution& solution) const;

  /// Moves shares to the least total of price times share whose largest difference is at most `tolerance`. Returns the
  /// largest difference; shares beyond the tolerance stay where they are.
  double Cheapen(const uint16_t* subset, int32_t count, const double* prices, double tolerance,
                 SubsetSolution& solution) const;

  /// That total in the model at the shares of `solution`: near it what Cheapen reaches, at the cost of one evaluation.
  /// HUGE_VAL where the model does not come within the tolerance.
  double LeastPrice(const uint16_t* subset, int32_t count, const double* prices, double tolerance,
                    const SubsetSolution& solution) const;

 private:
  using Vector = SubsetRefiner::Vector;
  using Limits = SubsetRefiner::Limits;

  // The shares of a subset with all that is known there.
  struct State {
    Vector shares{};
    std::vector<LampForm> lamps;  // scaled to the differences of the system
    double worst = 0.0;
  };

  State StateAt(const uint16_t* subset, std::size_t size, const Vector& shares) const;
  bool LevelStep(const State& state, const Limits& limits, std::size_t size, std::vector<double>& weights,
                 Vector& step) const;
  bool CheapStep(const State& state, const Limits& limits, std::size_t size, const double* prices,
                 double tolerance, Vector& step) const;

  const MatchTarget& target_;
  SubsetRefiner refiner_;
};

}  // namespace vrx

#endif  // VRXMATH_MATCHING_WORST_REFINER_H_
