// vrx match: the recipes of colours.

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/recipe.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/output/file_output.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/recipes/correction.h"
#include "tools/vrx/recipes/recipe_options.h"
#include "tools/vrx/recipes/recipe_search.h"
#include "tools/vrx/report/result_report.h"

namespace vrx::tool {
namespace {

struct MatchOptions {
  SearchOptions search;
  std::string targets;
  RecipeOrder order = RecipeOrder::kFewest;
  std::string backings;
  double thickness = RecipeDefaults::kThickness;
  double minOpacity = 0.0;
  double liquor = 0.0;  // litres per kilogram of the substrate; 0: not given
  int prerank = 0;
  std::string formulas;
  std::string stock;
  std::string mostAddition = PercentText(RecipeDefaults::kStockAddition);
  ReportOptions report;
};

struct NamedTarget {
  std::string id;
  CRecipeTarget target;
};

// Curves, or colours as L*, a*, b*.
std::vector<NamedTarget> ReadTargets(const MatchOptions& options, ResultReport& report) {
  std::vector<NamedTarget> targets;
  CurveReader samples = OpenCurves(options.targets, options.search.input, Content::kCurvesOrColors);
  if (samples.Kind() == Sample::kXyz) {
    samples.Source().FailRow("targets are curves or L*, a*, b*, not tristimulus values");
  }
  report.SetMeasured(samples);
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

// Grams of fibre in a litre of a liquor of so many litres a kilogram: dyes are then in grams per litre.
double FibrePerLitre(const MatchOptions& options, const ColorSystem& system) {
  constexpr double kGrams = 1000.0, kMost = 1000.0;
  if (!(options.liquor > 0.0 && options.liquor <= kMost)) {
    throw InputError("--liquor: litres per kilogram of fibre are expected, above 0 and up to 1000");
  }
  if (MixingLawOf(system.data.opticalModel) != MixingLaw::kOneConstant) {
    throw InputError(options.search.system + ": \"model\": --liquor is for dyes on a substrate");
  }
  return kGrams / options.liquor;
}

CRecipeSettings SettingsOf(const MatchOptions& options, const ColorSystem& system) {
  CRecipeSettings settings;
  options.search.Apply(system, settings);
  if (!(options.thickness >= 0.0 && options.thickness <= 1e9)) {
    throw InputError("--thickness: a number, 0 or more, is expected");
  }
  if (!(options.minOpacity >= 0.0 && options.minOpacity <= 100.0)) {
    throw InputError("--min-opacity: percent, 0 to 100, are expected");
  }
  if (options.prerank < 0 || options.prerank > 1'000'000) {
    throw InputError("--prerank: a number from 0 to 1000000 is expected");
  }
  if (options.liquor != 0.0) settings.batchSize = FibrePerLitre(options, system);
  settings.order = options.order;
  settings.thickness = options.thickness;
  settings.leastOpacity = options.minOpacity;
  settings.prerank = options.prerank;
  if (!options.backings.empty()) ReadBackings(options.backings, settings.black, settings.white);
  return settings;
}

RecipeNames NamesOf(const MatchOptions& options, const NamedTarget& target) {
  return NamesFor(options.search.system, options.search.choice.limits,
                  options.targets + ": target \"" + target.id + "\"");
}

// Tells the report the inputs and the conditions.
void DescribeRun(const MatchOptions& options, const CRecipeSettings& settings, ResultReport& report) {
  report.AddFile(ReportText::kColorants, options.search.system);
  report.AddFile(ReportText::kTargets, options.targets);
  report.AddFact(ReportText::kSystem, TitleOf(settings.difference));
  report.AddFact(ReportText::kTolerance, FixedText(settings.tolerance));
  const auto& illuminants = settings.illuminants;
  report.AddViewing({illuminants.begin(), illuminants.end()}, settings.observer);
}

// The pictures of the first targets: each beside the first of what was found for it, and the curves of the first ones.
void AddPictures(const CRecipeSettings& settings, const std::vector<NamedTarget>& targets,
                 const std::function<std::vector<CReflData>(std::size_t)>& curvesOf, ResultReport& report) {
  constexpr std::size_t kMostTargets = 100;
  if (!report.IsWanted()) return;
  const vrxIlluminant illuminant = settings.illuminants[0];
  const auto shown = [&](const CTrisValues& xyz) { return Shown(illuminant, settings.observer, xyz); };
  const auto colourOf = [&](const CReflData& curve) {
    CTrisValues xyz;
    curve.Tristimulus(illuminant, settings.observer, xyz);
    return shown(xyz);
  };
  for (std::size_t i = 0; i < std::min(targets.size(), kMostTargets); ++i) {
    const CRecipeTarget& target = targets[i].target;
    std::vector<CReflData> curves = curvesOf(i);
    if (curves.empty()) continue;
    const ShownColour nearest = colourOf(curves.front());
    if (!IsUnset(target.curve)) {
      curves.insert(curves.begin(), target.curve);
      report.AddTarget(targets[i].id, colourOf(target.curve), nearest, curves);
      continue;
    }
    CTrisValues xyz;
    LabToXyz(illuminant, settings.observer, target.lab, xyz);
    report.AddTarget(targets[i].id, shown(xyz), nearest, {});
  }
  if (targets.size() <= kMostTargets) return;
  report.SetNote(
      TextOf(ReportText::kTargetsLeftOut, {std::to_string(kMostTargets), std::to_string(targets.size())}));
}

// The curves of the first recipes or corrections.
template <class FOUND, class CURVE>
std::vector<CReflData> FirstCurves(const FOUND& found, CURVE curve) {
  constexpr std::size_t kMost = 10;
  std::vector<CReflData> curves;
  for (const auto& each : found) {
    if (curves.size() < kMost) curves.push_back(curve(each));
  }
  return curves;
}

// Recipes, one row each.
class RecipeRows {
 public:
  RecipeRows(const MatchOptions& options, const ColorSystem& system, const CRecipeSettings& settings,
             OutputStream& output, ResultReport& report)
      : system_(system),
        illuminants_(settings.illuminants.GetSize()),
        batchSize_(settings.batchSize),
        rows_(report.Rows(options.search.format, output, Columns(settings))) {}

  // The recipes of a target; without any, a row that says so.
  void Add(const std::string& target, const CRecipeArray& recipes) {
    for (int32_t i = 0; i < recipes.GetSize(); ++i) {
      const CRecipe& recipe = recipes[i];
      AddRow(target, i + 1, recipe, recipe.isWithinTolerance ? "ok" : "out of tolerance");
    }
    if (!recipes.IsEmpty()) return;
    CRecipe none;
    none.differences.SetSize(illuminants_);
    std::fill(none.differences.begin(), none.differences.end(), kUnset);
    none.cost = kUnset;
    AddRow(target, 1, none, "no recipe");
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

  void AddRow(const std::string& target, int rank, const CRecipe& recipe, const char* status) {
    rows_->Text(target);
    rows_->Integer(rank);
    rows_->Integer(recipe.colorants);
    rows_->Words(FormulaText(recipe.formula, batchSize_),
                 NamedFormulaText(recipe.formula, system_, batchSize_));
    const Tint tint = recipe.isWithinTolerance ? Tint::kGood : Tint::kBad;
    for (const double difference : recipe.differences) rows_->Number(difference, tint);
    for (const double value : {recipe.metamerism, recipe.rms, recipe.cost, recipe.opacity})
      rows_->Number(value);
    rows_->Text(status, tint);
    rows_->EndRow();
  }

  const ColorSystem& system_;
  int32_t illuminants_;
  double batchSize_;
  std::unique_ptr<RowWriter> rows_;
};

CCorrectionSettings CorrectionSettingsOf(const MatchOptions& options, const ColorSystem& system) {
  CCorrectionSettings settings;
  settings.recipe = SettingsOf(options, system);
  settings.mostAddition = ParseMostAddition(options.mostAddition);
  CheckAdditions(options.search.choice);
  switch (options.order) {
    case RecipeOrder::kCost:
      settings.aim = CorrectionAim::kCheapest;
      break;
    case RecipeOrder::kColor:
      settings.aim = CorrectionAim::kNearest;
      break;
    case RecipeOrder::kMetamerism:
      throw InputError("--sort: with --from-stock it is fewest (the least additions), color or cost");
    default:
      settings.aim = CorrectionAim::kSmallest;
  }
  return settings;
}

// Every batch of the stock brought to every target by additions.
class StockSearch {
 public:
  explicit StockSearch(const MatchOptions& options)
      : options_(options),
        report_(options.report, ReportText::kRecipes),
        system_(ReadColorSystem(options.search.system)),
        targets_(ReadTargets(options, report_)),
        stock_(ReadStock(options.stock, system_, options.search.input)),
        settings_(CorrectionSettingsOf(options, system_)) {}

  void Check() const {
    for (const NamedTarget& target : targets_) {
      for (const NamedBatch& batch : stock_) {
        RefuseFaults(CheckCorrection(system_.data, system_.rules, batch.batch, target.target, settings_),
                     system_, settings_.recipe, NamesOf(target, batch));
      }
    }
  }

  void Run() {
    std::vector<std::vector<StockCorrection>> found;
    {
      SearchProgress progress(targets_.size() * stock_.size());
      for (const NamedTarget& target : targets_) found.push_back(CorrectAll(target, progress));
    }
    std::vector<Column> columns{{"target"}, {"rank"}, {"batch"}};
    AddCorrectionColumns(settings_.recipe, columns);
    OutputStream output;
    DescribeRun(options_, settings_.recipe, report_);
    report_.AddFile(ReportText::kStock, options_.stock);
    const std::unique_ptr<RowWriter> rows = report_.Rows(options_.search.format, output, columns);
    for (std::size_t i = 0; i < targets_.size(); ++i) {
      int rank = 0;
      for (const StockCorrection& correction : found[i]) {
        rows->Text(targets_[i].id);
        rows->Integer(++rank);
        rows->Text(correction.batch);
        WriteCorrection(correction, system_, *rows);
        rows->EndRow();
      }
    }
    rows->Finish();
    const auto curveOf = [](const StockCorrection& each) { return each.correction.curve; };
    AddPictures(
        settings_.recipe, targets_, [&](std::size_t i) { return FirstCurves(found[i], curveOf); }, report_);
    report_.Save();
    output.Finish();
  }

 private:
  RecipeNames NamesOf(const NamedTarget& target, const NamedBatch& batch) const {
    RecipeNames names = tool::NamesOf(options_, target);
    names.batch = names.formula = options_.stock + ": batch \"" + batch.id + "\"";
    return names;
  }

  // The additions that each batch needs to become a target, best first.
  std::vector<StockCorrection> CorrectAll(const NamedTarget& target, SearchProgress& progress) {
    std::vector<StockCorrection> found;
    for (const NamedBatch& batch : stock_) {
      CCorrection before;
      CCorrectionArray corrections;
      settings_.recipe.progress = progress.OfSearch(done_++);
      const RecipeOutcome outcome = CorrectBatch(system_.data, system_.rules, batch.batch, target.target,
                                                 settings_, before, corrections);
      RefuseFaults(outcome, system_, settings_.recipe, NamesOf(target, batch));
      for (const StockCorrection& each : CorrectionsOf(batch, before, corrections)) found.push_back(each);
    }
    OrderCorrections(found, settings_.aim, settings_.recipe.top);
    return found;
  }

  const MatchOptions& options_;
  ResultReport report_;
  ColorSystem system_;
  std::vector<NamedTarget> targets_;
  std::vector<NamedBatch> stock_;
  CCorrectionSettings settings_;
  std::size_t done_ = 0;
};

void RunFromStock(const MatchOptions& options) {
  StockSearch search(options);
  search.Check();
  search.Run();
}

void RunMatch(const MatchOptions& options) {
  const ColorSystem system = ReadColorSystem(options.search.system);
  ResultReport report(options.report, ReportText::kRecipes);
  const std::vector<NamedTarget> targets = ReadTargets(options, report);
  CRecipeSettings settings = SettingsOf(options, system);
  for (const NamedTarget& target : targets) {
    RefuseFaults(CheckRecipe(system.data, system.rules, target.target, settings), system, settings,
                 NamesOf(options, target));
  }
  std::vector<CRecipeArray> found(targets.size());
  {
    SearchProgress progress(targets.size());
    for (std::size_t i = 0; i < targets.size(); ++i) {
      settings.progress = progress.OfSearch(i);
      const RecipeOutcome outcome =
          FormulateRecipes(system.data, system.rules, targets[i].target, settings, found[i]);
      RefuseFaults(outcome, system, settings, NamesOf(options, targets[i]));
    }
  }
  OutputStream output;
  DescribeRun(options, settings, report);
  RecipeRows rows(options, system, settings, output, report);
  std::vector<NamedFormula> formulas;
  const auto without = std::ranges::count_if(found, [](const CRecipeArray& each) { return each.IsEmpty(); });
  for (std::size_t i = 0; i < targets.size(); ++i) {
    rows.Add(targets[i].id, found[i]);
    for (int32_t rank = 1; rank <= found[i].GetSize(); ++rank) {
      formulas.push_back({targets[i].id + " " + std::to_string(rank), found[i][rank - 1].formula});
    }
  }
  rows.Finish();
  const auto curveOf = [](const CRecipe& recipe) { return recipe.curve; };
  AddPictures(
      settings, targets, [&](std::size_t i) { return FirstCurves(found[i], curveOf); }, report);
  report.Save();
  if (!options.formulas.empty()) WriteFormulas(options.formulas, formulas);
  output.Finish();
  if (without > 0) {
    PrintMessage(
        std::to_string(without) + " of " + std::to_string(targets.size()) +
        " targets have no recipe: --min-opacity or --limits leave none, or --resolution is too coarse");
  }
  if (options.prerank > 0)
    PrintMessage("--prerank: only a part of the subsets was solved; better recipes may exist");
}

// The options that corrections of a stock have no use for; `stock` refuses them.
void AddRecipeOptions(Command& command, MatchOptions& options, Option& stock) {
  const Option backings = command
                              .AddOption("--backings", options.backings,
                                         "Two curves, a black backing and a white one, for the opacity")
                              .ReadsFile()
                              .Shows("FILE");
  command
      .AddOption("--thickness", options.thickness,
                 "Of the film, in the unit of length of the colorants' K and S")
      .Shows("X [1]")
      .Needs(backings);
  command.AddOption("--min-opacity", options.minOpacity, "Least contrast ratio of a recipe, percent")
      .Shows("PERCENT [0]")
      .Needs(backings);
  Option size =
      command.AddOption("--batch-size", options.search.batchSize, "Total of the amounts of a recipe")
          .Shows("AMOUNT [100]");
  const Option liquor =
      command
          .AddOption("--liquor", options.liquor,
                     "Litres of liquor per kilogram of the substrate: amounts are grams per litre")
          .Shows("LITRES");
  size.Excludes(liquor);
  const Option least = command
                           .AddOption("--min-amount", options.search.choice.minAmount,
                                      "Least share of every colorant, percent")
                           .Shows("PERCENT [0]");
  const Option prerank =
      command
          .AddOption("--prerank", options.prerank,
                     "Lossy: of each size, solve only the N subsets that look best to first order; 0: all")
          .Shows("N [0]");
  const Option formulas =
      command.AddOption("--formulas", options.formulas, "Write the recipes to a JSON file for vrx predict")
          .WritesFile()
          .Shows("FILE");
  for (const Option& option : {backings, size, liquor, least, prerank, formulas}) stock.Excludes(option);
}

}  // namespace

void AddMatch(Command& tool) {
  const auto options = std::make_shared<MatchOptions>();
  Command command = tool.AddCommand("match", "Recipes of colours: every subset of the colorants is solved");
  command.AddOption("SYSTEM", options->search.system, "Colour system, a JSON file").ReadsFile().Required();
  command.AddOption("TARGETS", options->targets, "Curves, or colours as columns L, a, b, a CSV file")
      .ReadsFile()
      .Required();
  command.AddChoice("--sort", options->order, {"fewest", "color", "metamerism", "cost"},
                    "The order of recipes within the tolerance");
  AddSearchOptions(command, options->search, RecipePurpose::kRecipe);
  Option stock = command
                     .AddOption("--from-stock", options->stock,
                                "Use up known batches: their curves, with columns formula and amount")
                     .ReadsFile()
                     .Shows("FILE");
  command
      .AddOption("--max-addition", options->mostAddition, "With --from-stock: most that is added, of a batch")
      .Shows("PERCENT [" + options->mostAddition + "]")
      .Needs(stock);
  AddRecipeOptions(command, *options, stock);
  AddReportOptions(command, options->report);
  command.SetNotes(
      "Recipes within the tolerance come first, then by --sort, then by the largest difference over the\n"
      "illuminants; recipes that differ by traces (0.1 %) are told as one. With L, a, b only the first\n"
      "illuminant counts. A target without any has a row with the status \"no recipe\".\n\n"
      "Examples:\n"
      "  vrx match examples/acrylic_paints.json examples/chart_average.csv --specular excluded --top 3\n"
      "  vrx match system.json targets.csv --require 1 --max-colorants 3 --sort cost --limits shelf.csv\n"
      "  vrx match system.json targets.csv --batch-size 5000 --resolution 0.1 --formulas recipes.json\n"
      "  vrx match system.json targets.csv --max-colorants 3 --report recipes.html\n"
      "  vrx match system.json targets.csv --from-stock leftovers.csv --max-colorants 2\n");
  command.SetAction([options] {
    options->stock.empty() ? RunMatch(*options) : RunFromStock(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
