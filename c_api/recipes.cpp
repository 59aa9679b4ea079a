// Recipes of colours, and additions to batches.

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxmath/matching/batch_correction.h>
#include <vrxmath/matching/recipe.h>
#include <vrxmath/matching/recipe_costs.h>
#include <vrxmath/matching/recipe_faults.h>

#include "c_api/handles.h"

namespace vrx::c_api {
namespace {

constexpr int32_t kMostColorants = 6, kMostResults = 10'000, kMostPreranked = 1'000'000;
constexpr double kLargestCost = 1e12;

vrx_recipe_settings UsualRecipeSettings() {
  using Usual = RecipeDefaults;
  vrx_recipe_settings settings{};
  settings.size = sizeof settings;
  settings.most_colorants = Usual::kMostColorants;
  settings.top = Usual::kTop;
  settings.tolerance = Usual::kTolerance;
  settings.batch_size = Usual::kBatchSize;
  settings.most_addition = Usual::kMostAddition;
  settings.most_subsets = static_cast<int64_t>(Usual::kMostSubsets);
  return settings;
}

void Check(const vrx_recipe_settings& s) {
  NeedRange(s.most_colorants, 1, kMostColorants, "most_colorants");
  NeedRange(s.top, 1, kMostResults, "top");
  NeedRange(s.objective, VRX_OBJECTIVE_TRISTIMULUS, VRX_OBJECTIVE_COMBINED, "objective");
  NeedRange(s.order, VRX_ORDER_FEWEST, VRX_ORDER_INCONSTANCY, "order");
  NeedRange(s.aim, VRX_AIM_SMALLEST, VRX_AIM_NEAREST, "aim");
  NeedRange(s.prerank, 0, kMostPreranked, "prerank");
  NeedWithin(s.least_amount, 0.0, 1.0, "least_amount");
  NeedWithin(s.tolerance, 0.0, kLargestReading, "tolerance");
  NeedWithin(s.batch_size, 1e-9, 1e9, "batch_size");
  NeedWithin(s.resolution, 0.0, s.batch_size, "resolution");
  NeedWithin(s.most_addition, 0.0, 1.0, "most_addition");
  if (s.most_subsets < 1) throw Refusal{VRX_OUT_OF_RANGE, "most_subsets is below 1"};
}

CRecipeSettings RecipeSettings(const vrx_recipe_settings& s) {
  constexpr RecipeObjective kObjectives[] = {RecipeObjective::kTristimulus, RecipeObjective::kSpectral,
                                             RecipeObjective::kCombined};
  constexpr RecipeOrder kOrders[] = {RecipeOrder::kFewest, RecipeOrder::kColor, RecipeOrder::kMetamerism,
                                     RecipeOrder::kCost, RecipeOrder::kInconstancy};
  CRecipeSettings settings;
  settings.mostColorants = s.most_colorants;
  settings.leastAmount = s.least_amount;
  settings.tolerance = s.tolerance;
  settings.objective = kObjectives[s.objective];
  settings.order = kOrders[s.order];
  settings.top = s.top;
  settings.batchSize = s.batch_size;
  settings.resolution = s.resolution;
  settings.prerank = s.prerank;
  settings.mostSubsets = static_cast<uint64_t>(s.most_subsets);
  return settings;
}

// What a setting of the library's sentences is called here.
std::string SettingName(std::string_view setting, std::string_view value) {
  if (value == "excluded") return "VRX_SURFACE_EXCLUDED";
  if (value == "none") return "VRX_SURFACE_NONE";
  constexpr std::pair<std::string_view, std::string_view> kNames[] = {{"require", "VRX_USE_REQUIRED"},
                                                                      {"exclude", "VRX_USE_EXCLUDED"},
                                                                      {"max-colorants", "most_colorants"},
                                                                      {"max-subsets", "most_subsets"},
                                                                      {"min-amount", "least_amount"}};
  const auto* const found =
      std::ranges::find(kNames, setting, &std::pair<std::string_view, std::string_view>::first);
  return std::string(found != std::end(kNames) ? found->second : setting);
}

// The sentences of the library's faults with the names that the interface has.
void RefuseFaults(const RecipeOutcome& outcome, const Search& search, const char* cheapest = "") {
  if (outcome.fault == RecipeFault::kNone) return;
  if (outcome.fault == RecipeFault::kStopped) throw Refusal{VRX_REFUSED, "the search was stopped"};
  const RecipeNames names{"the colour system",
                          "",
                          "target",
                          "measured",
                          "the formula",
                          SettingName,
                          cheapest,
                          "vrx_search_component",
                          "vrx_search_opacity",
                          search.system->specular.has_value()};
  throw Refusal{VRX_REFUSED, RecipeFaultText(outcome, search.system->data, search.settings, names)};
}

vrx_recipe_summary SummaryOf(const CDbFormula& formula) {
  vrx_recipe_summary summary{};
  summary.lines = formula.GetSize();
  summary.metamerism = summary.inconstancy = summary.rms = summary.opacity = kUnset;
  for (const CDbFormulaElement& line : formula) summary.total += line.amount;
  return summary;
}

FoundRecipe ResultOf(const CRecipe& recipe) {
  FoundRecipe found{recipe.formula, recipe.differences, recipe.curve, SummaryOf(recipe.formula)};
  found.summary.within_tolerance = recipe.isWithinTolerance ? 1 : 0;
  found.summary.alike = recipe.alike;
  found.summary.worst = recipe.worst;
  found.summary.metamerism = recipe.metamerism;
  found.summary.inconstancy = recipe.inconstancy;
  found.summary.rms = recipe.rms;
  found.summary.cost = recipe.cost;
  found.summary.opacity = recipe.opacity;
  return found;
}

FoundRecipe ResultOf(const CCorrection& correction) {
  FoundRecipe found{correction.additions, correction.differences, correction.curve,
                    SummaryOf(correction.additions)};
  found.summary.within_tolerance = correction.isWithinTolerance ? 1 : 0;
  found.summary.worst = correction.worst;
  found.summary.cost = correction.cost;
  return found;
}

template <class LIST>
std::vector<FoundRecipe> ResultsOf(const LIST& list) {
  std::vector<FoundRecipe> results;
  for (const auto& one : list) results.push_back(ResultOf(one));
  return results;
}

CRecipeSettings SettingsFor(const Search& search) {
  CRecipeSettings settings = search.settings;
  settings.threads = Run().threads;
  if (search.progress != nullptr) {
    settings.progress = [&search](double part) { return search.progress(part, search.context) != 0; };
  }
  return settings;
}

void MatchTarget(Search& search, const CRecipeTarget& target) {
  CRecipeArray recipes;
  RefuseFaults(CheckCosts(search.system->data, search.settings), search, "VRX_ORDER_COST");
  RefuseFaults(
      FormulateRecipes(search.system->data, search.system->rules, target, SettingsFor(search), recipes),
      search);
  search.results = ResultsOf(recipes);
  search.before.reset();
}

// A result by its index; -1 is the batch as it was, after a correction.
const FoundRecipe& ResultAt(const Search& search, int32_t index) {
  if (index == -1 && search.before) return *search.before;
  NeedRange(index, 0, static_cast<int32_t>(search.results.size()) - 1, "index");
  return search.results[static_cast<std::size_t>(index)];
}

bool HasComponent(const CColorantSystemData& system, uint32_t id) {
  const auto isIt = [id](const CComponent& component) { return component.GetId() == id; };
  return std::ranges::any_of(system.colorants, isIt) || std::ranges::any_of(system.resins, isIt);
}

CRecipeComponent& EntryOf(CRecipeComponentArray& components, uint32_t id) {
  for (CRecipeComponent& entry : components) {
    if (entry.componentId == id) return entry;
  }
  CRecipeComponent entry;
  entry.componentId = id;
  components.Add(entry);
  return components[components.GetSize() - 1];
}

}  // namespace
}  // namespace vrx::c_api

namespace api = vrx::c_api;
using api::Arrays;
using api::Call;
using api::Find;
using api::NeedPlace;
using api::NeedRange;
using api::NeedWithin;
using api::Refusal;
using api::Search;

vrx_status VRX_CALL vrx_usual_recipe_settings(vrx_recipe_settings* settings) {
  return Call([&] {
    const vrx_recipe_settings usual = api::UsualRecipeSettings();
    api::GiveSized(&usual, sizeof usual, settings, "settings");
  });
}

vrx_status VRX_CALL vrx_search_open(vrx_handle colorants, const vrx_system* system,
                                    const int32_t* illuminants, int32_t count, int32_t observer,
                                    const vrx_recipe_settings* settings, vrx_handle* search) {
  return Call([&] {
    auto object = std::make_shared<Search>();
    object->system = Find<vrx::io::ColorSystem>(colorants);
    const vrx_recipe_settings given = api::Sized(settings, api::UsualRecipeSettings(), "settings");
    api::Check(given);
    object->settings = api::RecipeSettings(given);
    object->settings.mode =
        api::SurfaceOf(*object->system, settings == nullptr ? std::optional<int32_t>() : given.surface);
    object->mostAddition = given.most_addition;
    object->aim = given.aim;
    object->settings.difference = api::Settings(system);
    object->settings.illuminants = api::IlluminantList(illuminants, count, observer);
    object->settings.observer = observer;
    NeedPlace(search, "search");
    *search = api::OpenHandle(std::move(object));
  });
}

vrx_status VRX_CALL vrx_search_component(vrx_handle search, int32_t id, int32_t use, double least,
                                         double most, double cost) {
  return Call([&] {
    const auto object = Find<Search>(search);
    if (id < 0 || !api::HasComponent(object->system->data, static_cast<uint32_t>(id)))
      throw Refusal{VRX_OUT_OF_RANGE, "the colour system has no component " + std::to_string(id)};
    NeedRange(use, VRX_USE_OFFERED, VRX_USE_EXCLUDED, "use");
    NeedWithin(least, 0.0, 1.0, "least");
    NeedWithin(most, least, 1.0, "most");
    NeedWithin(cost, 0.0, api::kLargestCost, "cost");
    vrx::CRecipeComponent& entry = api::EntryOf(object->settings.components, static_cast<uint32_t>(id));
    entry.use = static_cast<vrx::CRecipeComponent::Use>(use);
    entry.least = least;
    entry.most = most;
    entry.cost = cost;
  });
}

vrx_status VRX_CALL vrx_search_opacity(vrx_handle search, const double black[40], const double white[40],
                                       double thickness, double least_opacity) {
  return Call([&] {
    const auto object = Find<Search>(search);
    const vrx::CReflData below = api::CurveOf(black, "black"), above = api::CurveOf(white, "white");
    NeedWithin(thickness, 0.0, 1e9, "thickness");
    NeedWithin(least_opacity, 0.0, 100.0, "least_opacity");
    object->settings.black = below;
    object->settings.white = above;
    object->settings.thickness = thickness;
    object->settings.leastOpacity = least_opacity;
  });
}

vrx_status VRX_CALL vrx_search_watch(vrx_handle search, vrx_progress progress, void* context) {
  return Call([&] {
    const auto object = Find<Search>(search);
    object->progress = progress;
    object->context = context;
  });
}

vrx_status VRX_CALL vrx_search_match(vrx_handle search, const double target[40], int32_t* found) {
  return Call([&] {
    const auto object = Find<Search>(search);
    NeedPlace(found, "found");
    vrx::CRecipeTarget wanted;
    wanted.curve = api::CurveOf(target, "target");
    api::MatchTarget(*object, wanted);
    *found = static_cast<int32_t>(object->results.size());
  });
}

vrx_status VRX_CALL vrx_search_match_lab(vrx_handle search, const double lab[3], int32_t* found) {
  return Call([&] {
    const auto object = Find<Search>(search);
    const auto numbers = api::Numbers(lab, 1, 3, "lab");
    NeedPlace(found, "found");
    vrx::CRecipeTarget wanted;
    wanted.lab = vrx::CLabValues(numbers[0], numbers[1], numbers[2]);
    api::MatchTarget(*object, wanted);
    *found = static_cast<int32_t>(object->results.size());
  });
}

vrx_status VRX_CALL vrx_search_correct(vrx_handle search, const int32_t* ids, const double* amounts,
                                       int32_t count, const double measured[40], const double target[40],
                                       int32_t* found) {
  return Call([&] {
    const auto object = Find<Search>(search);
    vrx::CBatch batch;
    batch.formula = api::FormulaOf(ids, amounts, count);
    batch.curve = api::CurveOf(measured, "measured");
    batch.size = object->settings.batchSize;
    vrx::CRecipeTarget wanted;
    wanted.curve = api::CurveOf(target, "target");
    NeedPlace(found, "found");
    constexpr vrx::CorrectionAim kAims[] = {vrx::CorrectionAim::kSmallest, vrx::CorrectionAim::kCheapest,
                                            vrx::CorrectionAim::kNearest};
    vrx::CCorrectionSettings settings;
    settings.recipe = api::SettingsFor(*object);
    settings.mostAddition = object->mostAddition;
    settings.aim = kAims[object->aim];
    api::RefuseFaults(vrx::CheckCosts(object->system->data, settings), *object, "VRX_AIM_CHEAPEST");
    vrx::CCorrection before;
    vrx::CCorrectionArray corrections;
    api::RefuseFaults(vrx::CorrectBatch(object->system->data, object->system->rules, batch, wanted, settings,
                                        before, corrections),
                      *object);
    object->results = api::ResultsOf(corrections);
    object->before = api::ResultOf(before);
    *found = static_cast<int32_t>(object->results.size());
  });
}

vrx_status VRX_CALL vrx_search_summarize(vrx_handle search, int32_t index, vrx_recipe_summary* summary) {
  return Call([&] {
    const auto object = Find<Search>(search);
    const vrx_recipe_summary& own = api::ResultAt(*object, index).summary;
    api::GiveSized(&own, sizeof own, summary, "summary");
  });
}

vrx_status VRX_CALL vrx_search_amounts(vrx_handle search, int32_t index, int32_t count, int32_t* ids,
                                       double* amounts) {
  return Call([&](Arrays& arrays) {
    const auto object = Find<Search>(search);
    const vrx::CDbFormula& formula = api::ResultAt(*object, index).formula;
    NeedRange(count, formula.GetSize(), std::numeric_limits<int32_t>::max(), "count");
    const auto numbers = arrays.Place(ids, formula.GetSize(), 1, "ids");
    const auto parts = arrays.Place(amounts, formula.GetSize(), 1, "amounts");
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      numbers[i] = formula[static_cast<int32_t>(i)].componentId;
      parts[i] = formula[static_cast<int32_t>(i)].amount;
    }
  });
}

vrx_status VRX_CALL vrx_search_result(vrx_handle search, int32_t index, double* differences,
                                      double curve[40]) {
  return Call([&](Arrays& arrays) {
    const auto object = Find<Search>(search);
    const api::FoundRecipe& result = api::ResultAt(*object, index);
    const auto totals =
        arrays.PlaceIfWanted(differences, object->settings.illuminants.GetSize(), 1, "differences");
    const auto samples = arrays.Place(curve, 1, vrx::kWavelengths, "curve");
    std::fill(totals.begin(), totals.end(), vrx::kUnset);
    std::copy_n(result.differences.begin(),
                std::min(totals.size(), static_cast<std::size_t>(result.differences.GetSize())),
                totals.begin());
    std::copy(result.curve.begin(), result.curve.end(), samples.begin());
  });
}
