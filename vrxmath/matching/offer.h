// The offer of a search: the colorants that may be used, what limits them, and which subsets the rules allow.

#ifndef VRXMATH_MATCHING_OFFER_H_
#define VRXMATH_MATCHING_OFFER_H_

#include <cstdint>
#include <vector>

#include <vrxmath/colorant/colorant_rules.h>
#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/matching/recipe_types.h>

namespace vrx {

/// A colorant of the search.
struct OfferedColorant {
  const CComponent* component = nullptr;
  double least = 0.0;  ///< of the whole, or with a clear component of the colorants
  double most = 1.0;
  double cost = 0.0;
  bool isRequired = false;
  double leastOfWhole = 0.0;
  double mostOfWhole = 1.0;
};

/// The colorants of a search, in the order of their numbers: the order of the system has no influence on the bits of a
/// result.
struct Offer {
  std::vector<OfferedColorant> colorants;
  const CComponent* substrate = nullptr;  ///< of a one-constant model
  double substrateCost = 0.0;
  /// Of a two-constant model: what makes up the rest and gives no colour. Shares of colorants are parts of their own
  /// total then, which is the load.
  const CComponent* clear = nullptr;
  double clearCost = 0.0;
  double leastLoad = 1.0;
  double mostLoad = 1.0;
  bool hasSeveralLevels = false;  ///< some colorant's curves depend on its share
  bool hasLimits = false;         ///< some limit is other than 0 or 1
  std::vector<uint32_t>
      present;  ///< component ids that are in every recipe: what rules count beside the subset

  /// Makes the offer of a system under settings. `mayBeClear`: of a recipe, which a clear component may make up.
  RecipeOutcome Make(const CColorantSystemData& system, const CRecipeSettings& settings,
                     bool mayBeClear = false);

 private:
  RecipeOutcome SetClear(const CRecipeSettings& settings, const CComponent* resin);
  void LimitColorants();
};

/// A component id that the system does not use, for a batch that takes part in a search as a colorant.
uint32_t FreeComponentId(const CColorantSystemData& system);

/// The subsets of one size that contain all required colorants, by rank, in lexicographic order of the optional ones.
class SubsetRange {
 public:
  SubsetRange(const Offer& offer, const CColorantRulesData& rules, int32_t size);

  /// How many there are, rules not counted; the largest uint64_t stands for itself and more.
  uint64_t Count() const { return count_; }
  int32_t Size() const { return size_; }

  /// Appends those of rank `from` to `from + count - 1` that the rules allow, each with ascending colorants.
  void Append(uint64_t from, uint64_t count, std::vector<uint16_t>& subsets) const;
  /// True when the rules allow any of them.
  bool IsAnyAllowed() const;

 private:
  bool IsAllowed(const uint16_t* subset) const;
  std::vector<int32_t> Unrank(uint64_t rank) const;
  bool Advance(std::vector<int32_t>& choice) const;
  void Merge(const std::vector<int32_t>& choice, uint16_t* subset) const;

  int32_t size_;
  uint64_t count_ = 0;
  std::vector<uint16_t> required_, optional_;
  std::vector<std::vector<uint16_t>> rules_;  // of colorants on offer, each of at least one
};

/// kSettings for settings of a search that are out of their range, kBackings for backings that are exchanged.
RecipeFault CheckSettings(const CRecipeSettings& settings);

/// Whole steps of a dispenser nearest to an amount; `step` is above 0.
double NearestSteps(double amount, double step);

/// The amount of so many steps. Steps such as 0.1 are counted by their inverse, which is a whole number, so that 3 of
/// them are 0.3.
double AmountOfSteps(double steps, double step);

/// An amount in whole steps of a dispenser, rounded down after `add` of a step; as it is for a step of 0.
double RoundedToStep(double amount, double step, double add = 0.5);

/// Number of ways to choose `k` of `n`; the largest uint64_t for that and more.
uint64_t Combinations(uint64_t n, uint64_t k);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_OFFER_H_
