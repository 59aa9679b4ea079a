// vrx correct: what to add to a batch that came out wrong.

#include <memory>
#include <string>
#include <vector>

#include <vrxmath/matching/batch_correction.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/recipes/correction.h"
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
  std::string mostAddition = MostAdditionText(RecipeDefaults::kMostAddition);
  CorrectionAim aim = CorrectionAim::kSmallest;
};

// The formula that is named, or the only one.
CDbFormula ReadFormula(const CorrectOptions& options, const ColorSystem& system) {
  const std::vector<NamedFormula> formulas = ReadFormulas(options.formula, system);
  if (options.name.empty() && formulas.size() != 1) {
    throw InputError(options.formula + ": there are " + std::to_string(formulas.size()) +
                     " formulas; --name says which one it is");
  }
  for (const NamedFormula& formula : formulas) {
    if (options.name.empty() || formula.name == options.name) return formula.formula;
  }
  throw InputError(options.formula + ": --name: there is no formula \"" + options.name + "\"");
}

void RunCorrect(const CorrectOptions& options) {
  const SearchOptions& search = options.search;
  const ColorSystem system = ReadColorSystem(search.system);
  const NamedBatch named{
      "batch", {ReadFormula(options, system), ReadOneCurve(options.batch, search.input), search.batchSize}};
  CRecipeTarget target;
  target.curve = ReadOneCurve(options.target, search.input);
  CCorrectionSettings settings;
  search.Apply(system, settings.recipe);
  CheckAdditions(search.choice);
  settings.mostAddition = ParseMostAddition(options.mostAddition);
  settings.aim = options.aim;
  RecipeNames names = NamesFor(search.system, search.choice.limits, options.target);
  names.batch = options.batch;
  names.formula = options.formula;
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
  AddCorrectionColumns(settings.recipe, columns);
  OutputStream output;
  const std::unique_ptr<RowWriter> rows = MakeRowWriter(search.format, output, columns);
  int rank = 0;
  for (const StockCorrection& correction : CorrectionsOf(named, before, corrections)) {
    rows->Integer(++rank);
    WriteCorrection(correction, system, *rows);
  }
  rows->Finish();
  output.Finish();
}

}  // namespace

void AddCorrect(Command& tool) {
  const auto options = std::make_shared<CorrectOptions>();
  Command command = tool.AddCommand("correct", "What to add to a batch that came out wrong");
  command.AddOption("SYSTEM", options->search.system, "Colour system, a JSON file").ReadsFile().Required();
  command.AddOption("--formula", options->formula, "What went into the batch, a JSON file of formulas")
      .ReadsFile()
      .Shows("FILE")
      .Required();
  command.AddOption("--name", options->name, "Which formula of the file it is, when there are several")
      .Shows("NAME");
  command.AddOption("--batch", options->batch, "The curve of the batch, as measured")
      .ReadsFile()
      .Shows("FILE")
      .Required();
  command.AddOption("--target", options->target, "The curve that it shall have")
      .ReadsFile()
      .Shows("FILE")
      .Required();
  command
      .AddOption("--batch-size", options->search.batchSize,
                 "Amount of the batch, in the unit of the additions")
      .Shows("AMOUNT")
      .Required();
  command.AddOption("--max-addition", options->mostAddition, "Most that may be added, of the batch")
      .Shows("PERCENT [" + options->mostAddition + "]");
  command.AddChoice("--aim", options->aim, {"smallest", "cheapest", "nearest"},
                    "The least additions or cost that reach the tolerance, or the nearest colour");
  AddSearchOptions(command, options->search, RecipePurpose::kAddition);
  command.SetNotes(
      "Nothing is taken out of a batch. One that nothing brings nearer gets the status \"no addition "
      "helps\".\n\n"
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
