// vrx correct: what to add to a batch that came out wrong.

#include <memory>
#include <string>
#include <vector>

#include <vrxmath/matching/batch_correction.h>

#include "tools/vrx/commands/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/correction.h"
#include "tools/vrx/curve_input.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/output/terminal.h"
#include "tools/vrx/recipe_options.h"

namespace vrx::tool {
namespace {

struct CorrectOptions {
  std::string system;
  std::string formula;
  std::string name;
  std::string batch;
  std::string target;
  double batchSize = 0.0;
  std::string mostAddition = "20%";
  ChoiceOptions choice;
  CriterionOptions criterion;
  CorrectionAim aim = CorrectionAim::kSmallest;
  int top = 10;
  double resolution = 0.0;
  int threads = 0;
  double maxSubsets = 1e8;
  CurveInputOptions input;
  Format format;
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
  throw InputError(options.formula + ": there is no formula \"" + options.name + "\"");
}

CCorrectionSettings SettingsOf(const CorrectOptions& options, const ColorSystem& system) {
  const auto expect = [](bool isGood, const char* what) {
    if (!isGood) throw InputError(what);
  };
  CCorrectionSettings settings;
  options.choice.Apply(system, settings.recipe);
  options.criterion.Apply(settings.recipe);
  expect(options.choice.maxColorants <= 5, "--max-colorants: a number from 1 to 5 is expected");
  expect(options.batchSize > 0.0 && options.batchSize <= 1e9, "--batch-size: a number above 0 is expected");
  expect(options.resolution >= 0.0 && options.resolution <= options.batchSize,
         "--resolution: a number from 0 to the batch size is expected");
  expect(options.top >= 1 && options.top <= 10'000, "--top: a number from 1 to 10000 is expected");
  expect(options.threads >= 0 && options.threads <= 1024, "--threads: a number from 0 to 1024 is expected");
  expect(options.maxSubsets >= 1.0 && options.maxSubsets <= 1e15,
         "--max-subsets: a number, 1 or more, is expected");
  settings.mostAddition = ParseMostAddition(options.mostAddition);
  settings.aim = options.aim;
  settings.recipe.top = options.top;
  settings.recipe.resolution = options.resolution;
  settings.recipe.threads = static_cast<uint32_t>(options.threads);
  settings.recipe.mostSubsets = static_cast<uint64_t>(options.maxSubsets);
  return settings;
}

void RunCorrect(const CorrectOptions& options) {
  const ColorSystem system = ReadColorSystem(options.system);
  NamedBatch named{
      "batch", {ReadFormula(options, system), ReadOneCurve(options.batch, options.input), options.batchSize}};
  CRecipeTarget target;
  target.curve = ReadOneCurve(options.target, options.input);
  CCorrectionSettings settings = SettingsOf(options, system);
  CCorrection before;
  CCorrectionArray corrections;
  {
    constexpr double kParts = 1000.0;
    ProgressBar progress(static_cast<uint64_t>(kParts));
    settings.recipe.progress = [&](double part) {
      progress.Update(static_cast<uint64_t>(part * kParts));
      return true;
    };
    const RecipeOutcome outcome =
        CorrectBatch(system.data, system.rules, named.batch, target, settings, before, corrections);
    if (outcome.fault != RecipeFault::kNone) {
      throw InputError(FaultText(outcome, system, settings.recipe, options.target, options.batch));
    }
  }
  std::vector<Column> columns{{"rank"}};
  AddCorrectionColumns(settings.recipe, columns);
  OutputStream output;
  const std::unique_ptr<RowWriter> rows = MakeRowWriter(options.format, output, columns);
  int rank = 0;
  for (const StockCorrection& correction : CorrectionsOf(named, before, corrections)) {
    rows->Integer(++rank);
    WriteCorrection(correction, system, options.format == Format::kTable, *rows);
  }
  rows->Finish();
  output.Finish();
}

}  // namespace

void AddCorrect(Command& tool) {
  const auto options = std::make_shared<CorrectOptions>();
  Command command = tool.AddCommand("correct", "What to add to a batch that came out wrong");
  command.AddOption("SYSTEM", options->system, "Colour system, a JSON file").Required();
  command.AddOption("--formula", options->formula, "What went into the batch, a JSON file of formulas")
      .Shows("FILE")
      .Required();
  command.AddOption("--name", options->name, "Which formula of the file it is, when there are several")
      .Shows("NAME");
  command.AddOption("--batch", options->batch, "The curve of the batch, as measured")
      .Shows("FILE")
      .Required();
  command.AddOption("--target", options->target, "The curve that it shall have").Shows("FILE").Required();
  command.AddOption("--batch-size", options->batchSize, "Amount of the batch, in the unit of the additions")
      .Shows("AMOUNT")
      .Required();
  command.AddOption("--max-addition", options->mostAddition, "Most that may be added, of the batch")
      .Shows("PERCENT [20%]");
  command.AddOption("--resolution", options->resolution, "Step of the dispenser, in the unit of the amounts")
      .Shows("AMOUNT [0]");
  command.AddChoice("--aim", options->aim, {"smallest", "cheapest", "nearest"},
                    "The least additions or cost that reach the tolerance, or the nearest colour");
  command.AddOption("--top", options->top, "Corrections to tell").Shows("N [10]");
  AddChoiceOptions(command, options->choice);
  AddCriterionOptions(command, options->criterion);
  command.AddOption("--threads", options->threads, "Threads that work; 0: as many as there are cores")
      .Shows("N [0]");
  command.AddOption("--max-subsets", options->maxSubsets, "Refuse searches of more subsets")
      .Shows("N [100000000]");
  AddCurveInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "Nothing is taken out of a batch. Colorants are those that are added, 1 to 5; of --limits only the "
      "costs\n"
      "count. A batch that nothing brings nearer gets the status \"no addition helps\".\n\n"
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
