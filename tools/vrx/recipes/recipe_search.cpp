#include "tools/vrx/recipes/recipe_search.h"

#include <cstdint>

#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/recipes/recipe_options.h"

namespace vrx::tool {
namespace {

constexpr double kParts = 1000.0;  // of a search, on the progress bar

std::string NameOf(const ColorSystem& system, uint32_t id) {
  const std::string number = std::to_string(id);
  const CComponent* component = ComponentNamed(system, number);
  return "component " + number +
         (component != nullptr ? " \"" + component->GetName().ToUtf8() + "\"" : std::string());
}

std::string BelowSurface(const std::string& curve) {
  return curve +
         " is darker than the surface alone; a curve without the specular component takes --specular "
         "excluded, an "
         "uncorrected one --specular none";
}

std::string FaultText(const RecipeOutcome& outcome, const ColorSystem& system,
                      const CRecipeSettings& settings, const SearchNames& names) {
  const std::string component = NameOf(system, outcome.component);
  const std::string limits = names.limits.empty() ? "--min-amount" : names.limits;
  switch (outcome.fault) {
    case RecipeFault::kNoMixingLaw:
      return names.system + ": \"model\": colours of this optical model cannot be matched";
    case RecipeFault::kNoSubstrate:
      return names.system +
             ": \"components\": there is no substrate, neither a calibration white nor a resin with levels";
    case RecipeFault::kTargetNotMeasured:
      return names.target + " is not measured throughout";
    case RecipeFault::kTargetBelowSurface:
      return BelowSurface(names.target);
    case RecipeFault::kNeedsCurve:
      return names.target + ": this --objective needs a curve, not L, a, b";
    case RecipeFault::kUnknownComponent:
      return names.system + ": " + component + " cannot be in a recipe: it has no levels";
    case RecipeFault::kContradiction:
      return "--require, --exclude: " + component + " is both required and excluded";
    case RecipeFault::kTooFewAllowed:
      return names.system +
             ": no subset is left: --exclude leaves fewer components with levels than --require asks for, or "
             "that is more "
             "than --max-colorants";
    case RecipeFault::kLimits:
      return limits + ": " + component + ": its least share is above its largest, --min-amount included";
    case RecipeFault::kLimitsTogether:
      return limits + ": no recipe makes up 100 percent between its least and largest shares";
    case RecipeFault::kEverythingForbidden:
      return names.system + ": \"rules\" forbid every subset";
    case RecipeFault::kTooManySubsets:
      return "--max-subsets: there are " + std::to_string(outcome.subsets) + " subsets, more than " +
             std::to_string(settings.mostSubsets) +
             ": exclude components, lower --max-colorants, or raise --max-subsets";
    case RecipeFault::kBatchFormula:
      return names.formula + ": the formula of the batch is empty or cannot be predicted";
    case RecipeFault::kBatchNotMeasured:
      return names.batch + " is not measured throughout";
    case RecipeFault::kBatchBelowSurface:
      return BelowSurface(names.batch);
    default:
      return "settings that cannot be used";
  }
}

}  // namespace

void RefuseFaults(const RecipeOutcome& outcome, const ColorSystem& system, const CRecipeSettings& settings,
                  const SearchNames& names) {
  if (outcome.fault != RecipeFault::kNone) throw InputError(FaultText(outcome, system, settings, names));
}

void CheckSearch(const ColorSystem& system, const CRecipeSettings& settings, const SearchNames& names,
                 const std::function<RecipeOutcome(const CRecipeSettings&)>& search) {
  // Where no subset may be solved, their number is the last thing that is found wrong.
  CRecipeSettings none = settings;
  none.mostSubsets = 0;
  const RecipeOutcome outcome = search(none);
  if (outcome.fault != RecipeFault::kTooManySubsets) RefuseFaults(outcome, system, settings, names);
}

SearchProgress::SearchProgress(std::size_t searches) : bar_(searches * static_cast<uint64_t>(kParts)) {}

std::function<bool(double)> SearchProgress::OfSearch(std::size_t number) {
  return [this, number](double part) {
    bar_.Update(static_cast<uint64_t>((static_cast<double>(number) + part) * kParts));
    interrupt_.Check();
    return true;
  };
}

}  // namespace vrx::tool
