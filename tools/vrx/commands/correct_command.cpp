// vrx correct: what to add to a batch that came out wrong.

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <string>
#include <vector>

#include <vrxmath/matching/batch_correction.h>
#include <vrxmath/matching/batch_diagnosis.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
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
                     " formulas; --name says which one it is");
  }
  for (const NamedFormula& formula : formulas) {
    if (options.name.empty() || formula.name == options.name) return formula.formula;
  }
  throw InputError(options.formula + ": --name: there is no formula \"" + options.name + "\"");
}

// A part of 1 in percent, with two decimals at most.
std::string Percent(double part) {
  std::array<char, 400> text;
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), 100.0 * part, std::chars_format::fixed, 2);
  std::string digits(text.data(), end.ptr);
  digits.erase(digits.find_last_not_of('0') + 1);
  if (digits.ends_with('.')) digits.pop_back();
  return digits + " %";
}

// "Iron Oxide Yellow: 0 % instead of 4.5 %"
std::string SuspicionsText(const CSuspectedAmountArray& suspected, const ColorSystem& system) {
  std::string text;
  for (const CSuspectedAmount& amount : suspected) {
    const CComponent* const component = ComponentOfId(system, amount.componentId);
    text += (text.empty() ? "" : "; ") + (component ? component->GetName().ToUtf8() : std::string()) + ": " +
            Percent(amount.found) + " instead of " + Percent(amount.written);
  }
  return text;
}

// Finds out what is in the batch, says what it suspects and on what evidence, and puts it in the place of what was written.
std::string Diagnose(const ColorSystem& system, const CRecipeSettings& recipe, CBatch& batch) {
  CDiagnosisSettings settings;
  settings.mode = recipe.mode;
  settings.illuminant = recipe.illuminants[0];
  settings.observer = recipe.observer;
  settings.expectedError = ExpectedError(system.calibrated, batch.formula);
  CBatchDiagnosis diagnosis;
  if (!DiagnoseBatch(system.data, batch, settings, diagnosis)) return "";  // the correction says why
  batch.formula = diagnosis.best.formula;
  std::string suspected = SuspicionsText(diagnosis.best.suspected, system);
  if (suspected.empty()) return suspected;
  const auto off = [](double difference) {
    std::array<char, 32> text;
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), difference, std::chars_format::fixed, 2);
    return std::string(text.data(), end.ptr);
  };
  const std::string other = SuspicionsText(diagnosis.next.suspected, system);
  PrintMessage("the batch is not what its formula says; suspected is " + suspected +
               ". As written its curve would be " + off(diagnosis.asWritten) + " off (CIEDE2000), so " +
               off(diagnosis.best.difference) + "; " +
               (diagnosis.isClear ? "the next best" : "not much less likely") + " is " +
               (other.empty() ? "the formula as written" : other) + " (" + off(diagnosis.next.difference) +
               "). --trust-formula corrects what was written down");
  return suspected;
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

void RunCorrect(const CorrectOptions& options) {
  const SearchOptions& search = options.search;
  const ColorSystem system = ReadColorSystem(search.system);
  NamedBatch named{
      "batch", {ReadFormula(options, system), ReadOneCurve(options.batch, search.input), search.batchSize}};
  const CRecipeTarget target = ReadOneTarget(options.target, search.input);
  CCorrectionSettings settings = SettingsOf(options, system, named.batch);
  RecipeNames names = NamesFor(search.system, search.choice.limits, options.target);
  names.batch = options.batch;
  names.formula = options.formula;
  RefuseFaults(CheckCorrection(system.data, system.rules, named.batch, target, settings), system,
               settings.recipe, names);
  const std::string suspected =
      options.trustFormula ? std::string() : Diagnose(system, settings.recipe, named.batch);
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
  columns.push_back({"suspected"});
  OutputStream output;
  const std::unique_ptr<RowWriter> rows = MakeRowWriter(search.format, output, columns);
  int rank = 0;
  for (const StockCorrection& correction : CorrectionsOf(named, before, corrections)) {
    rows->Integer(++rank);
    WriteCorrection(correction, system, *rows);
    rows->Text(suspected);
    rows->EndRow();
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
  command.AddOption("--target", options->target, "The curve that it shall have, or its L, a, b")
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
  command.AddOption("--margin", options->margin, "Part of the tolerance that a correction keeps in hand")
      .Shows("PERCENT [" + options->margin + "]");
  command.AddFlag("--trust-formula", options->trustFormula,
                  "Take the formula as written, whatever the curve of the batch says");
  command.AddFlag("--allow-new", options->allowNew,
                  "Add colorants that the batch does not have, even where its own are enough");
  AddSearchOptions(command, options->search, RecipePurpose::kAddition);
  command.SetNotes(
      "First the curve of the batch says what is in it: a component that was forgotten, weighed wrong\n"
      "or mixed up with another one is told, with the evidence, and the correction begins there. The\n"
      "batch's own colorants are tried first, new ones where these do not reach the tolerance. Nothing\n"
      "is taken out of a batch; one that nothing brings nearer gets the status \"no addition helps\".\n\n"
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
