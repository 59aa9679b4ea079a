// The choice among candidates: which become recipes, in which order, and which of them count as one.

#ifndef VRXMATH_MATCHING_RECIPE_CHOICE_H_
#define VRXMATH_MATCHING_RECIPE_CHOICE_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include <vrxmath/matching/match_target.h>
#include <vrxmath/matching/offer.h>
#include <vrxmath/matching/recipe_candidate.h>
#include <vrxmath/matching/recipe_maker.h>
#include <vrxmath/matching/recipe_types.h>
#include <vrxmath/matching/subset_refiner.h>

namespace vrx {

class RecipeChoice {
 public:
  /// Calls a work for every number below a count, on all threads; false when stopped.
  using Loop = std::function<bool(std::size_t count, const std::function<void(std::size_t)>& work)>;

  /// All must outlive it.
  RecipeChoice(const Offer& offer, const MatchTarget& target, const CRecipeSettings& settings,
               const RecipeMaker& maker, Loop forEach)
      : offer_(offer), target_(&target), settings_(settings), maker_(maker), forEach_(std::move(forEach)) {}

  /// Predicts the best candidates of each size and takes the best recipes of all; false when stopped.
  bool Choose(const std::vector<std::vector<Candidate>>& bySize, CRecipeArray& chosen) const;

 private:
  // A recipe and what tells it from those that are like it.
  struct Ranked {
    CRecipe recipe;
    uint64_t rank = 0;
    std::vector<uint32_t> main, traces;  // its colorants
  };

  // The largest differences of the recipes that count, of one group only the first that came.
  struct Reached {
    std::vector<std::vector<uint32_t>> groups;
    std::vector<double> worst;
  };

  double KeyOf(const CRecipe& recipe) const;
  bool IsBefore(const Ranked& a, const Ranked& b) const;
  bool Predict(const std::vector<Candidate>& candidates, std::vector<Ranked>& recipes) const;
  double Limit(const Reached& reached) const;
  bool IsEnough(const Reached& reached, const Candidate& candidate) const;
  Ranked RankedOf(const Candidate& candidate) const;
  double TraceLimit() const;
  void SetMain(const SubsetRefiner& refiner, const Candidate& candidate, Ranked& ranked) const;
  CRecipeArray Grouped(const std::vector<Ranked>& sorted, bool isWithinOnly) const;
  static void AddTraces(const std::vector<uint32_t>& traces, CRecipe& recipe);

  const Offer& offer_;
  const MatchTarget* target_;
  const CRecipeSettings& settings_;
  const RecipeMaker& maker_;
  Loop forEach_;
};

}  // namespace vrx

#endif  // VRXMATH_MATCHING_RECIPE_CHOICE_H_
