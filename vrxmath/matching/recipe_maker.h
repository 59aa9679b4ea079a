// Makes recipes of candidates: load, amounts in steps of the dispenser, opacity, and what is predicted.

#ifndef VRXMATH_MATCHING_RECIPE_MAKER_H_
#define VRXMATH_MATCHING_RECIPE_MAKER_H_

#include <array>
#include <utility>

#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/matching/match_target.h>
#include <vrxmath/matching/offer.h>
#include <vrxmath/matching/recipe_candidate.h>
#include <vrxmath/matching/recipe_types.h>
#include <vrxmath/matching/worst_refiner.h>

namespace vrx {

class RecipeMaker {
 public:
  /// `own`: the offer as a colour system, for predictions. All must outlive it.
  RecipeMaker(const Offer& offer, const CColorantSystemData& own, const MatchTarget& target,
              const CRecipeSettings& settings)
      : offer_(offer), own_(own), target_(&target), settings_(settings) {}

  /// True where the largest difference is made small.
  bool IsLeveled() const;
  /// How many illuminants count, those of each geometry.
  double LampCount() const;
  /// The prices of a candidate's shares.
  std::array<double, kMostSubsetColorants> PricesOf(const Candidate& candidate) const;
  /// True where a film of the most that is allowed of a candidate hides enough.
  bool IsOpaqueEnough(const Candidate& candidate) const;
  /// What nine of ten predictions of a candidate are off at most; unset where it is unknown, or no load fits.
  double ExpectedOf(const Candidate& candidate) const;
  /// The recipe of a candidate that the settings ask for; moves its shares there. Without colorants when rounding leaves nothing
  /// of one, or no load fits its limits.
  CRecipe Best(Candidate& candidate) const;

 private:
  std::pair<double, double> LoadRange(const Candidate& candidate) const;
  double LoadOfRanges(const Candidate& candidate) const;
  bool SetLoad(const Candidate& candidate, CRecipe& recipe) const;
  double LeastOpaqueLoad(const Candidate& candidate, double least, double most) const;
  std::array<double, kMostSubsetColorants + 1> AmountsOf(const Candidate& candidate, double load) const;
  bool SetFormula(const Candidate& candidate, double load, CRecipe& recipe) const;
  double OpacityOf(const CDbFormula& formula) const;
  CRecipe RecipeOf(const Candidate& candidate) const;
  CRecipe Cheapest(const WorstRefiner& refiner, Candidate& candidate, const CRecipe& recipe) const;

  const Offer& offer_;
  const CColorantSystemData& own_;
  const MatchTarget* target_;
  const CRecipeSettings& settings_;
};

}  // namespace vrx

#endif  // VRXMATH_MATCHING_RECIPE_MAKER_H_
