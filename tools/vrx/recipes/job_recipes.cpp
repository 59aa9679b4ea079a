#include "tools/vrx/recipes/job_recipes.h"

#include <algorithm>
#include <utility>

#include <vrxio/text/decimal.h>
#include <vrxstore/job_address.h>

#include "tools/vrx/base/text.h"
#include "tools/vrx/job/job_options.h"

namespace vrx::tool {
namespace {

// A job keeps components by their names alone, so that there is no number to choose one by.
std::string SeveralText(const std::string& name) {
  return "a job knows components by their names, and the colour system has several called \"" + name +
         "\"; rename them";
}

// Takes the amounts over; false with the name of the component that the system does not have.
bool TakeFormula(const std::string& file, const store::MadeRecipe& recipe, const ColorSystem& system,
                 CDbFormula& formula, std::string& missing) {
  for (const auto& [name, amount] : recipe.amounts) {
    const std::vector<const CComponent*> named = ComponentsOfName(system, name);
    if (named.size() > 1) throw InputError(file + ": recipe \"" + recipe.name + "\": " + SeveralText(name));
    if (named.empty()) {
      missing = name;
      return false;
    }
    CDbFormulaElement element;
    element.componentId = static_cast<int32_t>(named.front()->GetId());
    element.amount = amount;
    formula.Add(element);
  }
  return true;
}

// The name of a recipe, with its number where another one is called the same.
std::string ToldName(const store::MadeRecipe& recipe, const std::vector<store::MadeRecipe>& all) {
  const auto isSame = [&](const store::MadeRecipe& other) { return other.name == recipe.name; };
  if (std::ranges::count_if(all, isSame) == 1) return recipe.name;
  return recipe.name + " #" + std::to_string(recipe.number);
}

}  // namespace

std::vector<store::MadeRecipe> RecipesOfFile(const std::string& path, const ColorSystem& system,
                                             const CurveInputOptions& input) {
  std::vector<store::MadeRecipe> recipes;
  // Where the system does not say it either, what is stored is what the file says.
  const TakenSpecular taken{system.specular.value_or(SaundersonMode::kNone), true};
  ReadMadeRecipes(path, system, input, taken,
                  [&](const CurveReader& curves, const CurveRow& row, const NamedBatch& made) {
                    store::MadeRecipe& recipe = recipes.emplace_back();
                    recipe.name = made.id;
                    recipe.curve = MeasuredCurveOf(curves, row);
                    for (const CDbFormulaElement& element : made.batch.formula) {
                      const CComponent* const component =
                          ComponentOfId(system, static_cast<uint32_t>(element.componentId));
                      const std::string name = component->GetName().ToUtf8();
                      if (ComponentsOfName(system, name).size() > 1)
                        curves.Source().FailRow(SeveralText(name));
                      recipe.amounts.emplace_back(name, element.amount);
                    }
                  });
  return recipes;
}

std::vector<NamedBatch> RecipesOfJob(const std::string& job, const ColorSystem& system,
                                     const TakenSpecular& taken) {
  const std::string file = store::ShownJob(job);
  std::vector<NamedBatch> batches;
  std::string missing;
  std::size_t left = 0;
  const std::vector<store::MadeRecipe> recipes = OpenJobFile(job)->Recipes();
  for (const store::MadeRecipe& recipe : recipes) {
    NamedBatch named{ToldName(recipe, recipes), {}};
    if (!TakeFormula(file, recipe, system, named.batch.formula, missing)) {
      ++left;
      continue;
    }
    const std::string other = OtherSpecularText({}, recipe.curve.geometry, taken);
    if (!other.empty()) {
      std::string reason = file;
      throw InputError(reason.append(": recipe \"").append(recipe.name).append("\": ").append(other));
    }
    std::ranges::copy(recipe.curve.samples, named.batch.curve.begin());
    batches.push_back(std::move(named));
  }
  if (left == 0 && batches.empty())
    throw InputError(file + ": the job has no recipes; vrx job add-recipes stores them");
  const std::string told = std::to_string(left) + (left == 1 ? " recipe has" : " recipes have") +
                           " a component that the colour system does not have, such as \"" + missing + "\"";
  if (batches.empty()) throw InputError(file + ": " + told);
  if (left > 0) PrintMessage(file + ": warning: " + told + "; left out");
  return batches;
}

std::string AmountsOf(const store::MadeRecipe& recipe) {
  std::string text;
  for (const auto& [name, amount] : recipe.amounts)
    text += (text.empty() ? "" : " + ") + ShortestText(amount) + " " + name;
  return text;
}

}  // namespace vrx::tool
