// vrx match: the recipes of colours.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/matching/recipe.h>

#include "tools/vrx/commands/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/correction.h"
#include "tools/vrx/curve_input.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/output/terminal.h"
#include "tools/vrx/output/text.h"
#include "tools/vrx/recipe_options.h"

namespace vrx::tool {
namespace {

struct MatchOptions {
  std::string system;
  std::string targets;
  ChoiceOptions choice;
  CriterionOptions criterion;
  RecipeOrder order = RecipeOrder::kFewest;
  int top = 10;
  double batchSize = 100.0;
  double resolution = 0.0;
  std::string backings;
  double thickness = 1.0;
  double minOpacity = 0.0;
  int threads = 0;
  int prerank = 0;
  double maxSubsets = 1e8;
  std::string formulas;
  std::string stock;
  std::string mostAddition = "100%";
  CurveInputOptions input;
  Format format;
};

struct NamedTarget {
  std::string id;
  CRecipeTarget target;
};

// Curves, or colours as L*, a*, b*.
std::vector<NamedTarget> ReadTargets(const MatchOptions& options) {
  std::vector<NamedTarget> targets;
  CurveReader samples = OpenCurves(options.targets, options.input, Content::kCurvesOrColors);
  if (samples.Kind() == Sample::kXyz) {
    samples.Source().FailRow("targets are curves or L*, a*, b*, not tristimulus values");
  }
  CurveRow row;
  while (samples.Next(row)) {
    NamedTarget named{std::string(row.id), {}};
    if (row.kind == Sample::kCurve) {
      named.target.curve = row.curve;
    } else {
      named.target.lab = CLabValues(row.color[0], row.color[1], row.color[2]);
    }
    targets.push_back(named);
  }
  WarnAboutInput(samples);
  if (targets.empty()) throw InputError(options.targets + ": there is no row");
  return targets;
}

CRecipeSettings SettingsOf(const MatchOptions& options, const ColorSystem& system) {
  const auto expect = [](bool isGood, const char* what) {
    if (!isGood) throw InputError(what);
  };
  CRecipeSettings settings;
  options.choice.Apply(system, settings);
  options.criterion.Apply(settings);
  expect(options.top >= 1 && options.top <= 10'000, "--top: a number from 1 to 10000 is expected");
  expect(options.batchSize > 0.0 && options.batchSize <= 1e9, "--batch-size: a number above 0 is expected");
  expect(options.resolution >= 0.0 && options.resolution <= options.batchSize,
         "--resolution: a number from 0 to the batch size is expected");
  expect(options.thickness >= 0.0 && options.thickness <= 1e9,
         "--thickness: a number, 0 or more, is expected");
  expect(options.minOpacity >= 0.0 && options.minOpacity <= 100.0,
         "--min-opacity: percent, 0 to 100, are expected");
  expect(options.threads >= 0 && options.threads <= 1024, "--threads: a number from 0 to 1024 is expected");
  expect(options.prerank >= 0, "--prerank: a number, 0 or more, is expected");
  expect(options.maxSubsets >= 1.0 && options.maxSubsets <= 1e15,
         "--max-subsets: a number, 1 or more, is expected");
  settings.order = options.order;
  settings.top = options.top;
  settings.batchSize = options.batchSize;
  settings.resolution = options.resolution;
  settings.thickness = options.thickness;
  settings.leastOpacity = options.minOpacity;
  settings.threads = static_cast<uint32_t>(options.threads);
  settings.prerank = options.prerank;
  settings.mostSubsets = static_cast<uint64_t>(options.maxSubsets);
  if (!options.backings.empty()) ReadBackings(options.backings, settings.black, settings.white);
  return settings;
}

// Recipes, one row each.
class RecipeRows {
 public:
  RecipeRows(const MatchOptions& options, const ColorSystem& system, const CRecipeSettings& settings,
             OutputStream& output)
      : system_(system),
        isTable_(options.format == Format::kTable),
        rows_(MakeRowWriter(options.format, output, Columns(settings))) {}

  void Add(const std::string& target, int rank, const CRecipe& recipe) {
    rows_->Text(target);
    rows_->Integer(rank);
    rows_->Integer(recipe.colorants);
    rows_->Text(isTable_ ? NamedFormulaText(recipe.formula, system_) : FormulaText(recipe.formula));
    const Tint tint = recipe.isWithinTolerance ? Tint::kGood : Tint::kBad;
    for (const double difference : recipe.differences) rows_->Number(difference, tint);
    for (const double value : {recipe.metamerism, recipe.rms, recipe.cost, recipe.opacity})
      rows_->Number(value);
    rows_->Text(recipe.isWithinTolerance ? "ok" : "out of tolerance", tint);
    rows_->EndRow();
  }
  void Finish() { rows_->Finish(); }

 private:
  static std::vector<Column> Columns(const CRecipeSettings& settings) {
    std::vector<Column> columns{{"target"}, {"rank"}, {"colorants"}, {"formula"}};
    for (const vrxIlluminant illuminant : settings.illuminants) {
      columns.push_back({"dE_" + CodeOf(illuminant), "dE " + CodeOf(illuminant)});
    }
    for (const char* name : {"metamerism", "rms", "cost", "opacity", "status"}) columns.push_back({name});
    return columns;
  }

  const ColorSystem& system_;
  bool isTable_;
  std::unique_ptr<RowWriter> rows_;
};

// Every batch of the stock brought to every target by additions.
void RunFromStock(const MatchOptions& options) {
  const ColorSystem system = ReadColorSystem(options.system);
  const std::vector<NamedTarget> targets = ReadTargets(options);
  const std::vector<NamedBatch> stock = ReadStock(options.stock, system, options.input);
  CCorrectionSettings settings;
  settings.recipe = SettingsOf(options, system);
  settings.mostAddition = ParseMostAddition(options.mostAddition);
  if (options.choice.maxColorants > 5) {
    throw InputError("--max-colorants: with --from-stock a number from 1 to 5 is expected");
  }
  settings.aim = options.order == RecipeOrder::kCost    ? CorrectionAim::kCheapest
                 : options.order == RecipeOrder::kColor ? CorrectionAim::kNearest
                                                        : CorrectionAim::kSmallest;
  std::vector<Column> columns{{"target"}, {"rank"}, {"batch"}};
  AddCorrectionColumns(settings.recipe, columns);
  OutputStream output;
  const std::unique_ptr<RowWriter> rows = MakeRowWriter(options.format, output, columns);
  ProgressBar progress(targets.size() * stock.size());
  uint64_t done = 0;
  for (const NamedTarget& target : targets) {
    std::vector<StockCorrection> found;
    for (const NamedBatch& batch : stock) {
      CCorrection before;
      CCorrectionArray corrections;
      const RecipeOutcome outcome =
          CorrectBatch(system.data, system.rules, batch.batch, target.target, settings, before, corrections);
      if (outcome.fault != RecipeFault::kNone) {
        throw InputError(FaultText(outcome, system, settings.recipe,
                                   options.targets + ": target \"" + target.id + "\"",
                                   options.stock + ": batch \"" + batch.id + "\""));
      }
      for (const StockCorrection& each : CorrectionsOf(batch, before, corrections)) found.push_back(each);
      progress.Update(++done);
    }
    OrderCorrections(found, settings.aim, settings.recipe.top);
    int rank = 0;
    for (const StockCorrection& correction : found) {
      rows->Text(target.id);
      rows->Integer(++rank);
      rows->Text(correction.batch);
      WriteCorrection(correction, system, options.format == Format::kTable, *rows);
    }
  }
  rows->Finish();
  output.Finish();
}

void RunMatch(const MatchOptions& options) {
  const ColorSystem system = ReadColorSystem(options.system);
  const std::vector<NamedTarget> targets = ReadTargets(options);
  CRecipeSettings settings = SettingsOf(options, system);
  OutputStream output;
  RecipeRows rows(options, system, settings, output);
  std::vector<NamedFormula> formulas;
  {
    constexpr double kParts = 1000.0;
    ProgressBar progress(targets.size() * static_cast<uint64_t>(kParts));
    for (std::size_t i = 0; i < targets.size(); ++i) {
      settings.progress = [&](double part) {
        progress.Update(static_cast<uint64_t>((static_cast<double>(i) + part) * kParts));
        return true;
      };
      CRecipeArray recipes;
      const RecipeOutcome outcome =
          FormulateRecipes(system.data, system.rules, targets[i].target, settings, recipes);
      if (outcome.fault != RecipeFault::kNone) {
        throw InputError(options.targets + ": " +
                         FaultText(outcome, system, settings, "target \"" + targets[i].id + "\""));
      }
      for (int32_t rank = 1; rank <= recipes.GetSize(); ++rank) {
        rows.Add(targets[i].id, rank, recipes[rank - 1]);
        formulas.push_back({targets[i].id + " " + std::to_string(rank), recipes[rank - 1].formula});
      }
    }
  }
  if (!options.formulas.empty()) WriteFormulas(options.formulas, formulas);
  rows.Finish();
  output.Finish();
  if (options.prerank > 0)
    PrintMessage("--prerank: only a part of the subsets was solved; better recipes may exist");
}

void AddProductionOptions(Command& command, MatchOptions& options) {
  command.AddOption("--batch-size", options.batchSize, "Total of the amounts of a recipe")
      .Shows("AMOUNT [100]");
  command.AddOption("--resolution", options.resolution, "Step of the dispenser, in the unit of the amounts")
      .Shows("AMOUNT [0]");
  const Option backings = command
                              .AddOption("--backings", options.backings,
                                         "Two curves, a black backing and a white one, for the opacity")
                              .Shows("FILE")
                              .Check(RefuseEmpty);
  command
      .AddOption("--thickness", options.thickness,
                 "Of the film, in the unit of length of the colorants' K and S")
      .Shows("X [1]")
      .Needs(backings);
  command.AddOption("--min-opacity", options.minOpacity, "Least contrast ratio of a recipe, percent")
      .Shows("PERCENT [0]")
      .Needs(backings);
}

}  // namespace

void AddMatch(Command& tool) {
  const auto options = std::make_shared<MatchOptions>();
  Command command = tool.AddCommand("match", "Recipes of colours: every subset of the colorants is solved");
  command.AddOption("SYSTEM", options->system, "Colour system, a JSON file").Required();
  command.AddOption("TARGETS", options->targets, "Curves, or colours as columns L, a, b, a CSV file")
      .Required();
  AddChoiceOptions(command, options->choice);
  AddCriterionOptions(command, options->criterion);
  command.AddChoice("--sort", options->order, {"fewest", "color", "metamerism", "cost"},
                    "The order of recipes within the tolerance");
  command.AddOption("--top", options->top, "Recipes per target").Shows("N [10]");
  AddProductionOptions(command, *options);
  command.AddOption("--threads", options->threads, "Threads that work; 0: as many as there are cores")
      .Shows("N [0]");
  command
      .AddOption("--prerank", options->prerank,
                 "Lossy: of each size, solve only the N subsets that look best to first order; 0: all")
      .Shows("N [0]");
  command.AddOption("--max-subsets", options->maxSubsets, "Refuse searches of more subsets")
      .Shows("N [100000000]");
  const Option formulas =
      command.AddOption("--formulas", options->formulas, "Write the recipes to a JSON file for vrx predict")
          .Shows("FILE")
          .Check(RefuseEmpty);
  const Option stock = command
                           .AddOption("--from-stock", options->stock,
                                      "Use up known batches: their curves, with columns formula and amount")
                           .Shows("FILE")
                           .Check(RefuseEmpty)
                           .Excludes(formulas);
  command
      .AddOption("--max-addition", options->mostAddition, "With --from-stock: most that is added, of a batch")
      .Shows("PERCENT [100%]")
      .Needs(stock);
  AddCurveInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "Recipes within the tolerance come first, then by --sort, then by the largest difference over the\n"
      "illuminants; recipes that differ by traces (0.1 %) are told as one. With L, a, b only the first\n"
      "illuminant counts.\n\n"
      "Examples:\n"
      "  vrx match examples/acrylic_paints.json examples/chart_average.csv --specular excluded --top 3\n"
      "  vrx match system.json targets.csv --require 1 --max-colorants 3 --sort cost --limits shelf.csv\n"
      "  vrx match system.json targets.csv --batch-size 5000 --resolution 0.1 --formulas recipes.json\n"
      "  vrx match system.json targets.csv --from-stock leftovers.csv --max-colorants 2\n");
  command.SetAction([options] {
    options->stock.empty() ? RunMatch(*options) : RunFromStock(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
