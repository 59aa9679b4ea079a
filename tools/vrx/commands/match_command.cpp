// vrx match: the recipes of colours.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vrxstore/job_address.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/former_recipes.h>
#include <vrxmath/matching/recipe.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/commands/match_options.h"
#include "tools/vrx/job/job_options.h"
#include "tools/vrx/output/file_output.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/recipes/diagnosis.h"
#include "tools/vrx/recipes/job_recipes.h"
#include "tools/vrx/recipes/recipe_options.h"
#include "tools/vrx/recipes/recipe_search.h"
#include "tools/vrx/report/recipe_pictures.h"
#include "tools/vrx/report/result_report.h"

namespace vrx::tool {
namespace {

// True when a recipe may have something clear in it, so that its load is a question.
bool HasClear(const ColorSystem& system) {
  const bool isMixed = MixingLawOf(system.data.opticalModel) == MixingLaw::kTwoConstant;
  return isMixed &&
         std::ranges::any_of(system.data.resins, [](const CResin& resin) { return IsClear(resin); });
}

// Recipes, one row each.
class RecipeRows {
 public:
  RecipeRows(const MatchOptions& options, const ColorSystem& system, const CRecipeSettings& settings,
             OutputStream& output, ResultReport& report)
      : system_(system),
        hasLoad_(HasClear(system)),
        hasErrors_(!system.calibrated.IsEmpty()),
        hasLibrary_(!options.library.empty()),
        illuminants_(settings.illuminants.GetSize()),
        batchSize_(settings.batchSize),
        rows_(report.Rows(options.search.format, output, Columns(settings))) {}

  // The recipes of a target; without any, a row that says so.
  void Add(const std::string& target, const CRecipeArray& recipes) {
    for (int32_t i = 0; i < recipes.GetSize(); ++i) {
      const CRecipe& recipe = recipes[i];
      AddRow(target, i + 1, recipe, recipe.isWithinTolerance ? "ok" : "out of tolerance");
    }
    if (recipes.IsEmpty()) AddNone(target);
  }
  // Former recipes of a target, adapted to it.
  void Add(const std::string& target, const CAdaptedRecipeArray& adapted,
           const std::vector<NamedBatch>& formers) {
    for (int32_t i = 0; i < adapted.GetSize(); ++i) {
      const CAdaptedRecipe& each = adapted[i];
      from_ = formers[static_cast<std::size_t>(each.former)].id;
      new_ = each.newColorants;
      AddRow(target, i + 1, each.recipe, each.recipe.isWithinTolerance ? "ok" : "out of tolerance");
    }
    from_.clear();
    new_.reset();
  }
  void Finish() { rows_->Finish(); }

 private:
  void AddNone(const std::string& target) {
    CRecipe none;
    none.differences.SetSize(illuminants_);
    std::fill(none.differences.begin(), none.differences.end(), kUnset);
    none.cost = kUnset;
    AddRow(target, 1, none, "no recipe");
  }

  // What depends on the system alone has its columns for all targets or for none.
  std::vector<Column> Columns(const CRecipeSettings& settings) const {
    std::vector<Column> columns{{"target"}, {"rank"}, {"colorants"}, {"formula"}};
    AddDifferenceColumns(settings, columns);
    columns.insert(columns.end(), {{"metamerism"}, {"inconstancy"}, {"rms"}});
    columns.push_back(CostColumn(settings));
    columns.push_back({.name = "opacity", .inReport = !IsUnset(settings.black)});
    if (hasLoad_) columns.insert(columns.end(), {{"load"}, {"load_by", "load by"}});
    if (hasErrors_) columns.insert(columns.end(), {{"expected"}, {"outside"}});
    if (hasLibrary_) columns.insert(columns.end(), {{"from"}, {"new"}});
    columns.insert(columns.end(), {{"folded"}, {"traces"}, {"status"}});
    return columns;
  }

  void AddRow(const std::string& target, int rank, const CRecipe& recipe, const char* status) {
    rows_->Text(target);
    rows_->Integer(rank);
    rows_->Integer(recipe.colorants);
    rows_->Words(FormulaText(recipe.formula, batchSize_),
                 NamedFormulaText(recipe.formula, system_, batchSize_));
    const Tint tint = recipe.isWithinTolerance ? Tint::kGood : Tint::kBad;
    for (const double difference : recipe.differences) rows_->Number(difference, tint);
    for (const double value :
         {recipe.metamerism, recipe.inconstancy, recipe.rms, recipe.cost, recipe.opacity})
      rows_->Number(value);
    if (hasLoad_) {
      rows_->Number(recipe.colorants > 0 ? 100.0 * recipe.load : kUnset);
      rows_->Text(recipe.colorants > 0 ? LoadBasisText(recipe.loadBasis) : "");
    }
    if (hasErrors_) {
      rows_->Number(recipe.expected);
      rows_->Words(ComponentsText(recipe.outside), NamedComponentsText(recipe.outside, system_));
    }
    if (hasLibrary_) {
      rows_->Text(from_);
      rows_->Number(new_ ? static_cast<double>(*new_) : kUnset);
    }
    rows_->Integer(recipe.alike);
    rows_->Words(ComponentsText(recipe.traces), NamedComponentsText(recipe.traces, system_));
    rows_->Text(status, tint);
    rows_->EndRow();
  }

  const ColorSystem& system_;
  bool hasLoad_, hasErrors_, hasLibrary_;
  std::string from_;            // of a former recipe
  std::optional<int32_t> new_;  // colorants that it did not have
  int32_t illuminants_;
  double batchSize_;
  std::unique_ptr<RowWriter> rows_;
};

// The earlier recipes of a library, without those that contradict themselves.
std::vector<NamedBatch> FormersOf(const MatchOptions& options, const ColorSystem& system,
                                  const CRecipeSettings& settings, ResultReport& report) {
  if (options.library.empty()) return {};
  const TakenSpecular taken = TakenOf(options, system);
  const bool isJob = IsJobFile(options.library);
  const std::string shown = isJob ? store::ShownJob(options.library) : options.library;
  std::vector<NamedBatch> made = isJob
                                     ? RecipesOfJob(options.library, system, taken)
                                     : ReadMadeRecipes(options.library, system, options.search.input, taken);
  if (options.trustFormula) return made;
  for (const std::string& told : LeaveOutContradictions(system, settings, shown, made))
    report.AddWarning({shown, told});
  return made;
}

CFormerRecipeArray FormersFrom(const std::vector<NamedBatch>& made) {
  CFormerRecipeArray formers;
  for (const NamedBatch& each : made) {
    CFormerRecipe former;
    former.id = CString::FromUtf8(each.id);
    former.formula = each.batch.formula;
    former.curve = each.batch.curve;
    formers.Add(former);
  }
  return formers;
}

// Says how many former recipes have no row, and why.
void TellPassedOver(const CFormerRecipeArray& formers, const CPassedOver& passed, int32_t top,
                    const std::vector<CAdaptedRecipeArray>& adapted) {
  std::string reasons;
  const auto add = [&](int32_t count, const char* what) {
    if (count > 0) reasons += (reasons.empty() ? "" : ", ") + std::to_string(count) + what;
  };
  add(passed.notOffered, " with a colorant that is excluded");
  add(passed.tooMany, " with more colorants than --max-colorants");
  add(passed.unpredictable, " without a colorant or a prediction");
  if (!reasons.empty()) {
    PrintMessage("--library: " + std::to_string(passed.Total()) + " of " + std::to_string(formers.GetSize()) +
                 " earlier recipes are passed over: " + reasons);
  }
  const int32_t wanted = std::min(top, formers.GetSize() - passed.Total());
  const auto isShort = [&](const CAdaptedRecipeArray& each) { return each.GetSize() < wanted; };
  if (const auto targets = std::ranges::count_if(adapted, isShort); targets > 0) {
    PrintMessage("--library: for " + std::to_string(targets) + " of " + std::to_string(adapted.size()) +
                 " targets an earlier recipe could not be adapted: the system's rules, --require, --limits, "
                 "--min-amount or --min-opacity leave no recipe of its colorants");
  }
}

// The former recipes of a library, adapted to each target; nothing without a library.
std::vector<CAdaptedRecipeArray> AdaptAll(const MatchOptions& options, const ColorSystem& system,
                                          const std::vector<NamedTarget>& targets,
                                          const std::vector<NamedBatch>& made, CRecipeSettings settings) {
  if (made.empty()) return {};
  const CFormerRecipeArray formers = FormersFrom(made);
  std::vector<CAdaptedRecipeArray> adapted(targets.size());
  settings.progress = {};
  for (std::size_t i = 0; i < targets.size(); ++i) {
    const RecipeOutcome outcome =
        AdaptFormerRecipes(system.data, system.rules, formers, targets[i].target, settings, adapted[i]);
    if (outcome.fault == RecipeFault::kNeedsCurve) {
      throw InputError(options.targets + ": target \"" + targets[i].id +
                       "\": --library needs a curve, not L, a, b");
    }
    RefuseFaults(outcome, system, settings, NamesOf(options, targets[i]));
  }
  TellPassedOver(formers, CountPassedOver(system.data, formers, settings), settings.top, adapted);
  return adapted;
}

// The recipes of each target, after all targets were checked.
std::vector<CRecipeArray> FindAll(const MatchOptions& options, const ColorSystem& system,
                                  const std::vector<NamedTarget>& targets, CRecipeSettings settings) {
  for (const NamedTarget& target : targets) {
    RefuseFaults(CheckRecipe(system.data, system.rules, target.target, settings), system, settings,
                 NamesOf(options, target));
  }
  std::vector<CRecipeArray> found(targets.size());
  SearchProgress progress(targets.size());
  for (std::size_t i = 0; i < targets.size(); ++i) {
    settings.progress = progress.OfSearch(i);
    const RecipeOutcome outcome =
        FormulateRecipes(system.data, system.rules, targets[i].target, settings, found[i]);
    RefuseFaults(outcome, system, settings, NamesOf(options, targets[i]));
  }
  return found;
}

// What was found for one target: recipes, and earlier ones that were adapted to it.
struct TargetRecipes {
  const NamedTarget& target;
  const CRecipeArray& found;
  const CAdaptedRecipeArray* adapted;  // null without a library
};

void AddRecipePictures(const std::vector<TargetRecipes>& recipes, const std::vector<NamedBatch>& made,
                       const ColorSystem& system, const CRecipeSettings& settings, ResultReport& report) {
  RecipePictures pictures(settings, system, report);
  for (const TargetRecipes& each : recipes) {
    if (!pictures.IsWanted()) break;
    std::vector<FoundRecipe> shown;
    const auto show = [&](const std::string& heading, const CRecipe& recipe) {
      if (shown.size() == RecipePictures::kMostFound) return;
      shown.push_back(
          {heading, NamedAmounts(recipe.formula, system, settings.batchSize), recipe.curve, recipe.expected});
    };
    for (const CRecipe& recipe : each.found) show(std::to_string(shown.size() + 1), recipe);
    if (each.adapted != nullptr) {
      for (const CAdaptedRecipe& former : *each.adapted)
        show(made[static_cast<std::size_t>(former.former)].id, former.recipe);
    }
    pictures.Add(each.target.id, each.target.target, shown);
  }
  pictures.Finish(recipes.size());
}

std::vector<NamedFormula> FormulasOf(const std::vector<TargetRecipes>& recipes) {
  std::vector<NamedFormula> formulas;
  for (const TargetRecipes& each : recipes) {
    for (int32_t rank = 1; rank <= each.found.GetSize(); ++rank)
      formulas.push_back({each.target.id + " " + std::to_string(rank), each.found[rank - 1].formula});
  }
  return formulas;
}

// What the search may have missed.
void TellLimits(const std::vector<CRecipeArray>& found, const MatchOptions& options) {
  const auto without = std::ranges::count_if(found, [](const CRecipeArray& each) { return each.IsEmpty(); });
  if (without > 0) {
    PrintMessage(
        std::to_string(without) + " of " + std::to_string(found.size()) +
        " targets have no recipe: --min-opacity or --limits leave none, or --resolution is too coarse");
  }
  if (options.prerank > 0)
    PrintMessage("--prerank: only some of the subsets were solved; better recipes may exist");
}

void RunMatch(MatchOptions& options) {
  const ColorSystem system = ReadColorSystem(options.search.system);
  ResultReport report(options.report, ReportText::kRecipes);
  const std::vector<NamedTarget> targets = ReadTargets(options, system, report);
  const CRecipeSettings settings = SettingsOf(options, system);
  const std::vector<CRecipeArray> found = FindAll(options, system, targets, settings);
  const std::vector<NamedBatch> made = FormersOf(options, system, settings, report);
  if (!IsJobFile(options.library)) WarnAboutScales(options, targets, options.library, made, report);
  const std::vector<CAdaptedRecipeArray> adapted = AdaptAll(options, system, targets, made, settings);
  std::vector<TargetRecipes> recipes;
  recipes.reserve(targets.size());
  for (std::size_t i = 0; i < targets.size(); ++i)
    recipes.push_back({targets[i], found[i], adapted.empty() ? nullptr : &adapted[i]});
  OutputStream output;
  DescribeRun(options, settings, report);
  RecipeRows rows(options, system, settings, output, report);
  for (const TargetRecipes& each : recipes) {
    rows.Add(each.target.id, each.found);
    if (each.adapted != nullptr) rows.Add(each.target.id, *each.adapted, made);
  }
  rows.Finish();
  AddRecipePictures(recipes, made, system, settings, report);
  report.Save();
  if (!options.formulas.empty()) WriteFormulas(options.formulas, FormulasOf(recipes));
  output.Finish();
  TellLimits(found, options);
}

}  // namespace

void AddMatch(Command& tool) {
  const auto options = std::make_shared<MatchOptions>();
  Command command = tool.AddCommand("match", "Find recipes for target colours");
  AddMatchOptions(command, *options);
  command.SetNotes(
      "Every subset of the colorants is solved. Recipes within the tolerance come first, in the order of "
      "--sort\n"
      "and then of their largest difference under any illuminant. Recipes that differ only by traces "
      "(--trace)\n"
      "are listed as one, with the number of others (folded) and the components that are traces. For targets "
      "in\n"
      "L, a, b only the first illuminant counts. A target without recipes gets a row with the status \"no "
      "recipe\".\n\n"
      "If the colour system has a clear resin, the colour does not depend on how much of it there is. "
      "--load\n"
      "sets the share of colorants, --min-opacity finds the smallest one that hides, and load_by says where "
      "the\n"
      "share comes from. If the system knows how it was calibrated, expected is the error that nine out of "
      "ten\n"
      "predictions do not exceed.\n\n"
      "Examples:\n"
      "  vrx match examples/acrylic_paints.json examples/chart_average.csv --specular excluded --top 3\n"
      "  vrx match system.json targets.csv --require 1 --max-colorants 3 --sort cost --limits shelf.csv\n"
      "  vrx match system.json targets.csv --batch-size 5000 --resolution 0.1 --formulas recipes.json\n"
      "  vrx match system.json targets.csv --max-colorants 3 --report recipes.html\n"
      "  vrx match system.json targets.csv --from-stock leftovers.csv --max-colorants 2\n");
  command.SetAction([options] {
    options->stock.empty() ? RunMatch(*options) : MatchFromStock(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
