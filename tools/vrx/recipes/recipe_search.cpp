#include "tools/vrx/recipes/recipe_search.h"

#include <cstdint>

#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {
namespace {

constexpr double kParts = 1000.0;  // of a search, on the progress bar

}  // namespace

RecipeNames NamesFor(const std::string& system, const std::string& limits, const std::string& target) {
  const auto setting = [](std::string_view name, std::string_view value) {
    return "--" + std::string(name) + (value.empty() ? "" : " " + std::string(value));
  };
  return {system, limits, target, "", "", setting, "--sort cost", "a column cost of --limits"};
}

void RefuseFaults(const RecipeOutcome& outcome, const ColorSystem& system, const CRecipeSettings& settings,
                  const RecipeNames& names) {
  if (outcome.fault == RecipeFault::kNone) return;
  RecipeNames told = names;
  told.isSurfaceOfSystem = system.specular.has_value();
  throw InputError(RecipeFaultText(outcome, system.data, settings, told));
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
