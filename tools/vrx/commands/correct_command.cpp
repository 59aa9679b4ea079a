// vrx correct: what to add to a batch that came out wrong.

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vrxmath/matching/batch_correction.h>
#include <vrxmath/matching/recipe_costs.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/recipes/correction.h"
#include "tools/vrx/recipes/diagnosis.h"
#include "tools/vrx/recipes/recipe_options.h"
#include "tools/vrx/recipes/recipe_search.h"

namespace vrx::tool {
namespace {

struct CorrectOptions {
  SearchOptions search;
  std::string formula;
  std::string name;
  std::string batch;
  std::string target;
  std::string mostAddition = PercentText(RecipeDefaults::kMostAddition);
  CorrectionAim aim = CorrectionAim::kSmallest;
  std::string margin = PercentText(RecipeDefaults::kMargin);
  bool trustFormula = false;
  bool allowNew = false;
};

// The formula that is named, or the only one.
CDbFormula ReadFormula(const CorrectOptions& options, const ColorSystem& system) {
  const std::vector<NamedFormula> formulas = ReadFormulas(options.formula, system);
  if (options.name.empty() && formulas.size() != 1) {
    throw InputError(options.formula + ": there are " + std::to_string(formulas.size()) +
                     " formulas; choose one with --name");
  }
  std::optional<std::size_t> found;
  for (std::size_t i = 0; i < formulas.size(); ++i) {
    if (!options.name.empty() && formulas[i].name != options.name) continue;
    if (found) {
      throw InputError(options.formula + ": --name: formulas[" + std::to_string(*found) + "] and formulas[" +
                       std::to_string(i) + "] are both called \"" + options.name +
                       "\"; rename one in the file");
    }
    found = i;
  }
  if (!found) throw InputError(options.formula + ": --name: there is no formula \"" + options.name + "\"");
  return formulas[*found].formula;
}

CCorrectionSettings SettingsOf(const CorrectOptions& options, const ColorSystem& system,
                               const CBatch& batch) {
  CCorrectionSettings settings;
  options.search.Apply(system, settings.recipe);
  CheckAdditions(options.search.choice);
  settings.mostAddition = ParseMostAddition(options.mostAddition);
  settings.margin = ParseMargin(options.margin);
  settings.aim = options.aim;
  settings.allowNew = options.allowNew;
  for (const CDbFormulaElement& line : batch.formula)
    settings.own.Add(static_cast<uint32_t>(line.componentId));
  return settings;
}

void RunCorrect(CorrectOptions& options) {
  const SearchOptions& search = options.search;
  const ColorSystem system = ReadColorSystem(search.system);
  const TakenSpecular taken = TakenBy(search.criterion.specular, system, search.system);
  NamedBatch named{
      "batch",
      {ReadFormula(options, system), ReadOneCurve(options.batch, search.input, taken), search.batchSize}};
  const CRecipeTarget target =
      ReadOneTarget(options.target, search.input.OfStandards(), search.criterion.system, taken,
                    options.search.criterion.viewing);
  WarnAboutScales({options.target, LargestOf(target.curve)}, options.batch, {&named, 1}, search.input);
  CCorrectionSettings settings = SettingsOf(options, system, named.batch);
  RecipeNames names = NamesFor(search.system, search.choice.limits, options.target);
  names.batch = options.batch;
  names.formula = options.formula;
  names.cheapest = "--aim cheapest";
  RefuseFaults(CheckCosts(system.data, settings), system, settings.recipe, names);
  RefuseFaults(CheckCorrection(system.data, system.rules, named.batch, target, settings), system,
               settings.recipe, names);
  if (!options.trustFormula) TakeFound(system, settings.recipe, named);
  CCorrection before;
  CCorrectionArray corrections;
  {
    SearchProgress progress(1);
    settings.recipe.progress = progress.OfSearch(0);
    const RecipeOutcome outcome =
        CorrectBatch(system.data, system.rules, named.batch, target, settings, before, corrections);
    RefuseFaults(outcome, system, settings.recipe, names);
  }
  std::vector<Column> columns{{"rank"}};
  AddCorrectionColumns(settings.recipe, true, columns);
  OutputStream output;
  const std::unique_ptr<RowWriter> rows = MakeRowWriter(search.format, output, columns);
  int rank = 0;
  for (const CStockCorrection& correction : CorrectionsOf(0, named.batch.size, before, corrections)) {
    rows->Integer(++rank);
    WriteCorrection(correction, named, system, *rows);
    rows->EndRow();
  }
  rows->Finish();
  output.Finish();
}

}  // namespace

void AddCorrect(Command& tool) {
  const auto options = std::make_shared<CorrectOptions>();
  Command command = tool.AddCommand("correct", "Find out what to add to a batch that came out wrong");
  command.AddOption("SYSTEM", options->search.system, "JSON file of a colour system").ReadsFile().Required();
  command.AddOption("--formula", options->formula, "JSON file of formulas that says what went into the batch")
      .ReadsFile()
      .Shows("FILE")
      .Required();
  command.AddOption("--name", options->name, "Name of the formula, if the file has several").Shows("NAME");
  command.AddOption("--batch", options->batch, "File with the measured curve of the batch")
      .ReadsFile()
      .Shows("FILE")
      .Required();
  command
      .AddOption("--target", options->target, "File with the curve, or L, a, b, that the batch should have")
      .ReadsFile()
      .Shows("FILE")
      .Required();
  command
      .AddOption("--batch-size", options->search.batchSize, "Size of the batch, in the unit of the additions")
      .Shows("AMOUNT")
      .Required();
  command
      .AddOption("--max-addition", options->mostAddition, "Largest total addition, in percent of the batch")
      .Shows("PERCENT [" + options->mostAddition + "]");
  command.AddChoice(
      "--aim", options->aim, {"smallest", "cheapest", "nearest"},
      "Aim for the smallest or cheapest additions within the tolerance, or for the nearest colour");
  AddMarginOption(command, options->margin);
  AddTrustOption(command, options->trustFormula);
  command.AddFlag("--allow-new", options->allowNew,
                  "Consider colorants that are not in the batch, even if its own are enough");
  AddSearchOptions(command, options->search, RecipePurpose::kAddition);
  command.SetNotes(
      "The curve of the batch first shows what is really in it: a component that was forgotten, weighed\n"
      "wrongly or mixed up with another is reported, with the evidence, and the correction starts from "
      "there.\n"
      "The batch's own colorants are tried first, and others only if those do not reach the tolerance. "
      "Nothing\n"
      "can be taken out of a batch; if nothing brings it nearer, its status is \"no addition helps\".\n\n"
      "Examples:\n"
      "  vrx correct system.json --formula recipe.json --batch trial.csv --target target.csv --batch-size 250"
      " --max-colorants 2\n"
      "  vrx correct system.json --formula recipe.json --batch trial.csv --target target.csv --batch-size 250"
      " --aim cheapest --limits costs.csv --max-addition 10%\n");
  command.SetAction([options] {
    RunCorrect(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
