#include <vrxmath/matching/former_recipes.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/curves.h>
#include <vrxmath/matching/match_target.h>
#include <vrxmath/matching/offer.h>
#include <vrxmath/matching/recipe.h>

namespace vrx {
namespace {

using Factors = std::array<double, kWavelengths>;

// A former recipe with what makes it useful for a target.
struct Former {
  int32_t place = 0;
  double before = 0.0;
  Factors factors{};
  std::vector<uint32_t> colorants;
};

// Whether a former recipe serves a search, or why not.
enum class Usable { kYes, kUnpredictable, kNotOffered, kTooMany };

class Adaptation {
 public:
  Adaptation(const CColorantSystemData& system, const CColorantRulesData& rules,
             const CFormerRecipeArray& formers, const CRecipeSettings& settings)
      : system_(system), rules_(rules), formers_(formers), settings_(settings) {}

  RecipeOutcome Run(const CRecipeTarget& target, CAdaptedRecipeArray& adapted) {
    RecipeOutcome outcome{CheckSettings(settings_)};
    if (outcome.fault == RecipeFault::kNone) outcome = offer_.Make(system_, settings_, true);
    if (outcome.fault == RecipeFault::kNone && IsUnset(target.curve))
      outcome.fault = RecipeFault::kNeedsCurve;
    if (outcome.fault != RecipeFault::kNone) return outcome;
    const MatchTarget judge(offer_, system_, target, settings_);
    if (judge.Fault() != RecipeFault::kNone) return {judge.Fault()};
    std::vector<CAdaptedRecipe> found;
    for (const Former& former : Nearest(judge)) {
      CAdaptedRecipe recipe;
      outcome = Adapt(former, target, judge, recipe);
      if (outcome.fault == RecipeFault::kStopped) return outcome;
      if (recipe.recipe.colorants > 0) found.push_back(recipe);
    }
    std::stable_sort(found.begin(), found.end(), IsBefore);
    CAdaptedRecipeArray sorted;
    for (const CAdaptedRecipe& recipe : found) sorted.Add(recipe);
    adapted = sorted;
    return {};
  }

  CPassedOver PassedOver() {
    CPassedOver passed;
    const bool isSearch = CheckSettings(settings_) == RecipeFault::kNone &&
                          offer_.Make(system_, settings_, true).fault == RecipeFault::kNone;
    for (int32_t i = 0; i < formers_.GetSize() && isSearch; ++i) {
      Former former;
      const Usable use = Take(formers_[i], former);
      passed.unpredictable += use == Usable::kUnpredictable ? 1 : 0;
      passed.notOffered += use == Usable::kNotOffered ? 1 : 0;
      passed.tooMany += use == Usable::kTooMany ? 1 : 0;
    }
    return passed;
  }

 private:
  static bool IsBefore(const CAdaptedRecipe& a, const CAdaptedRecipe& b) {
    if (a.recipe.isWithinTolerance != b.recipe.isWithinTolerance) return a.recipe.isWithinTolerance;
    if (a.newColorants != b.newColorants) return a.newColorants < b.newColorants;
    return a.recipe.worst < b.recipe.worst;
  }

  double Internal(double percent) const {
    const double internal = SaundersonToInternal(0.01 * percent, system_.k1, system_.k2, settings_.mode);
    return std::min(std::max(internal, kLeastInternal), 1.0);
  }

  // The former recipes that are nearest to a target as they were measured.
  std::vector<Former> Nearest(const MatchTarget& judge) const {
    std::vector<Former> all;
    for (int32_t i = 0; i < formers_.GetSize(); ++i) {
      Former former;
      former.place = i;
      if (Take(formers_[i], former) != Usable::kYes) continue;
      former.before = judge.WorstDifference(formers_[i].curve);
      if (former.before < 1e290) all.push_back(former);
    }
    std::stable_sort(all.begin(), all.end(),
                     [](const Former& a, const Former& b) { return a.before < b.before; });
    if (all.size() > static_cast<std::size_t>(settings_.top))
      all.resize(static_cast<std::size_t>(settings_.top));
    return all;
  }

  bool SetFactors(const CFormerRecipe& made, Former& former) const {
    const CReflData predicted = PredictReflectance(made.formula, system_, settings_.mode);
    if (made.formula.IsEmpty() || IsUnset(predicted)) return false;
    for (int32_t w = 0; w < kWavelengths; ++w) {
      constexpr double kLeast = 1e-6, kMost = 8.0;  // of K/S, and of its quotients
      const double before = std::max(KubelkaMunkKs(100.0 * Internal(predicted[w])), kLeast);
      const double after = std::max(KubelkaMunkKs(100.0 * Internal(made.curve[w])), kLeast);
      former.factors[static_cast<std::size_t>(w)] = std::min(std::max(after / before, 1.0 / kMost), kMost);
    }
    return true;
  }

  Usable Take(const CFormerRecipe& made, Former& former) const {
    const bool isPredicted = IsMeasured(made.curve) && SetFactors(made, former);
    return isPredicted ? SetColorants(made, former) : Usable::kUnpredictable;
  }

  // Those of its components that may be used.
  Usable SetColorants(const CFormerRecipe& made, Former& former) const {
    for (const CDbFormulaElement& line : made.formula) {
      const auto id = static_cast<uint32_t>(line.componentId);
      if (!(line.amount > 0.0) || IsCarrier(id)) continue;
      const bool isOffered =
          std::any_of(offer_.colorants.begin(), offer_.colorants.end(),
                      [&](const OfferedColorant& colorant) { return colorant.component->GetId() == id; });
      if (!isOffered) return Usable::kNotOffered;
      former.colorants.push_back(id);
    }
    if (former.colorants.empty()) return Usable::kUnpredictable;
    const auto most = static_cast<std::size_t>(settings_.mostColorants);
    return former.colorants.size() <= most ? Usable::kYes : Usable::kTooMany;
  }

  bool IsCarrier(uint32_t id) const {
    const auto isIt = [&](const CComponent& component) {
      return component.GetId() == id && (&component == offer_.clear || IsClear(component) ||
                                         (offer_.substrate != nullptr && IsSubstrate(component)));
    };
    return std::any_of(system_.colorants.begin(), system_.colorants.end(), isIt) ||
           std::any_of(system_.resins.begin(), system_.resins.end(), isIt);
  }

  // A curve whose K/S is that of another, changed by the factors or by their inverse.
  CReflData Changed(const CReflData& curve, const Factors& factors, bool isInverse) const {
    CReflData changed;
    for (int32_t w = 0; w < kWavelengths; ++w) {
      const double factor = factors[static_cast<std::size_t>(w)];
      const double ratio = KubelkaMunkKs(100.0 * Internal(curve[w]));
      const double internal = KubelkaMunkReflectance(isInverse ? ratio / factor : ratio * factor);
      changed[w] = 100.0 * SaundersonToMeasured(internal, system_.k1, system_.k2, settings_.mode);
    }
    return changed;
  }

  RecipeOutcome Adapt(const Former& former, const CRecipeTarget& target, const MatchTarget& judge,
                      CAdaptedRecipe& adapted) const {
    CRecipeTarget wanted = target;
    wanted.curve = Changed(target.curve, former.factors, true);
    for (CReflData& other : wanted.others) other = Changed(other, former.factors, true);
    const auto size = static_cast<int32_t>(former.colorants.size());
    RecipeOutcome outcome = Search(former, wanted, judge, size, adapted);
    if (outcome.fault == RecipeFault::kStopped) return outcome;
    const bool isReached = adapted.recipe.colorants > 0 && adapted.recipe.isWithinTolerance;
    if (isReached || size >= settings_.mostColorants) return outcome;
    CAdaptedRecipe more;
    outcome = Search(former, wanted, judge, size + 1, more);
    const bool isBetter = more.recipe.colorants > 0 &&
                          (adapted.recipe.colorants == 0 || more.recipe.worst < adapted.recipe.worst);
    if (isBetter) adapted = more;
    return outcome;
  }

  // The best recipe of the former one's colorants, and of any other where there may be one more.
  RecipeOutcome Search(const Former& former, const CRecipeTarget& wanted, const MatchTarget& judge,
                       int32_t size, CAdaptedRecipe& adapted) const {
    const bool isMore = size > static_cast<int32_t>(former.colorants.size());
    CRecipeSettings settings = settings_;
    settings.order = RecipeOrder::kColor;
    settings.top = 1;
    settings.mostColorants = size;
    for (const OfferedColorant& colorant : offer_.colorants) {
      const uint32_t id = colorant.component->GetId();
      const bool isOwn = Has(former, id);
      if (!isOwn && isMore) continue;
      if (!isOwn && colorant.isRequired) continue;
      if (isOwn && !isMore) continue;
      CRecipeComponent entry;
      entry.componentId = id;
      entry.use = isOwn ? CRecipeComponent::kRequired : CRecipeComponent::kExcluded;
      settings.components.Add(entry);
    }
    CRecipeArray recipes;
    const RecipeOutcome outcome = FormulateRecipes(system_, rules_, wanted, settings, recipes);
    if (outcome.fault != RecipeFault::kNone || recipes.IsEmpty()) return outcome;
    adapted.former = former.place;
    adapted.before = former.before;
    adapted.recipe = recipes[0];
    adapted.recipe.curve = Changed(recipes[0].curve, former.factors, false);
    judge.Judge(adapted.recipe);
    for (const CDbFormulaElement& line : adapted.recipe.formula) {
      const auto id = static_cast<uint32_t>(line.componentId);
      if (!IsCarrier(id) && !Has(former, id)) ++adapted.newColorants;
    }
    return outcome;
  }

  static bool Has(const Former& former, uint32_t id) {
    return std::find(former.colorants.begin(), former.colorants.end(), id) != former.colorants.end();
  }

  const CColorantSystemData& system_;
  const CColorantRulesData& rules_;
  const CFormerRecipeArray& formers_;
  const CRecipeSettings& settings_;
  Offer offer_;
};

}  // namespace

RecipeOutcome AdaptFormerRecipes(const CColorantSystemData& system, const CColorantRulesData& rules,
                                 const CFormerRecipeArray& formers, const CRecipeTarget& target,
                                 const CRecipeSettings& settings, CAdaptedRecipeArray& adapted) {
  return Adaptation(system, rules, formers, settings).Run(target, adapted);
}

CPassedOver CountPassedOver(const CColorantSystemData& system, const CFormerRecipeArray& formers,
                            const CRecipeSettings& settings) {
  return Adaptation(system, CColorantRulesData(), formers, settings).PassedOver();
}

}  // namespace vrx
