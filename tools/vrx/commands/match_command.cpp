// vrx match: the recipes of colours.

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/former_recipes.h>
#include <vrxmath/matching/leftovers.h>
#include <vrxmath/matching/recipe.h>

#include <vrxio/text/decimal.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/job/job_options.h"
#include "tools/vrx/output/file_output.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/recipes/correction.h"
#include "tools/vrx/recipes/job_recipes.h"
#include "tools/vrx/recipes/recipe_options.h"
#include "tools/vrx/recipes/recipe_search.h"
#include "tools/vrx/report/recipe_pictures.h"
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
  std::string load;
  std::string library;
  double parts = 0.0;
  std::string formulas;
  std::string stock;
  std::string mostAddition = PercentText(RecipeDefaults::kStockAddition);
  ReportOptions report;
};

struct NamedTarget {
  std::string id;
  CRecipeTarget target;
  std::vector<int32_t> geometries;  ///< of its curves
};

// Takes a curve to the target of its id when that was measured at another geometry; false when there is none.
bool AddGeometry(const CurveRow& row, const SystemOptions& system, std::vector<NamedTarget>& targets) {
  const auto found = std::ranges::find_if(targets, [&](const NamedTarget& target) {
    return target.id == row.id && !target.geometries.empty() &&
           !std::ranges::count(target.geometries, row.geometry);
  });
  if (row.geometry == kNoGeometry || row.kind != Sample::kCurve || found == targets.end()) return false;
  found->target.others.Add(row.curve);
  found->target.angles.Add(system.AngleOf(row.geometry));
  found->geometries.push_back(row.geometry);
  return true;
}

// Curves, or colours as L*, a*, b*. Curves of one id at several geometries are one target.
std::vector<NamedTarget> ReadTargets(MatchOptions& options, ResultReport& report) {
  std::vector<NamedTarget> targets;
  // Batches of a stock and former recipes stand for the trials, their targets for the standards.
  const bool hasTrials = !options.stock.empty() || !options.library.empty();
  const CurveInputOptions& input = options.search.input;
  CurveReader samples =
      OpenCurves(options.targets, hasTrials ? input.OfStandards() : input, Content::kCurvesOrColors);
  options.search.criterion.viewing.Follow({&samples}, true);
  report.SetMeasured(samples);
  const SystemOptions& system = options.search.criterion.system;
  bool areAnglesKnown = true;
  CurveRow row;
  while (samples.Next(row)) {
    areAnglesKnown = areAnglesKnown && SystemOptions::HasAngle(row.geometry);
    if (AddGeometry(row, system, targets)) continue;
    NamedTarget named{std::string(row.id), TargetOf(samples, row, system), {}};
    if (row.geometry != kNoGeometry) named.geometries.push_back(row.geometry);
    targets.push_back(named);
  }
  WarnAboutInput(samples);
  report.AddInput(samples);
  system.WarnAboutAngle(areAnglesKnown);
  if (targets.empty()) throw InputError(options.targets + ": there is no row");
  return targets;
}

// The load of "3%", or of a range such as "1%:5%".
void ParseLoad(const std::string& text, CRecipeSettings& settings) {
  if (text.empty()) return;
  const auto parse = [](std::string_view part, double& share) {
    if (part.ends_with('%')) part.remove_suffix(1);
    const bool isNumber = ParseDecimal(part, ',', share);
    share /= 100.0;
    return isNumber && share >= 0.0 && share <= 1.0;
  };
  const std::string_view all = text;
  const std::size_t colon = std::min(all.find(':'), all.size());
  const bool isLoad = parse(all.substr(0, colon), settings.leastLoad) &&
                      parse(colon < all.size() ? all.substr(colon + 1) : all, settings.mostLoad) &&
                      settings.leastLoad <= settings.mostLoad && settings.mostLoad > 0.0;
  if (!isLoad) throw InputError("--load: must be a percentage of the recipe, or a range such as 1:5");
}

// Grams of fibre in a litre of a liquor of so many litres a kilogram: dyes are then in grams per litre.
double FibrePerLitre(const MatchOptions& options, const ColorSystem& system) {
  constexpr double kGrams = 1000.0, kMost = 1000.0;
  if (!(options.liquor > 0.0 && options.liquor <= kMost)) {
    throw InputError("--liquor: must be litres per kilogram of fibre, above 0 and up to 1000");
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
    throw InputError("--thickness: must be a number of 0 or more");
  }
  if (!(options.minOpacity >= 0.0 && options.minOpacity <= 100.0)) {
    throw InputError("--min-opacity: must be a percentage from 0 to 100");
  }
  if (options.prerank < 0 || options.prerank > 1'000'000) {
    throw InputError("--prerank: must be a number from 0 to 1000000");
  }
  if (options.liquor != 0.0) settings.batchSize = FibrePerLitre(options, system);
  settings.order = options.order;
  settings.thickness = options.thickness;
  settings.leastOpacity = options.minOpacity;
  settings.prerank = options.prerank;
  ParseLoad(options.load, settings);
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

// True where a cost was given, so that costs say something.
bool HasCosts(const CRecipeSettings& settings) {
  return std::any_of(settings.components.begin(), settings.components.end(),
                     [](const CRecipeComponent& component) { return component.cost > 0.0; });
}

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
    for (const vrxIlluminant illuminant : settings.illuminants) {
      columns.push_back({"dE_" + ShownIlluminant(illuminant), "dE " + ShownIlluminant(illuminant)});
    }
    columns.insert(columns.end(), {{"metamerism"}, {"inconstancy"}, {"rms"}});
    columns.push_back({.name = "cost", .inReport = HasCosts(settings)});
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
    case RecipeOrder::kExpected:
    case RecipeOrder::kInconstancy:
      throw InputError("--sort: with --from-stock it must be fewest (the smallest additions), color or cost");
    default:
      settings.aim = CorrectionAim::kSmallest;
  }
  return settings;
}

// The leftovers in a recipe, and how much of each.
std::vector<std::pair<std::string, std::string>> PartsOf(const CLeftoverRecipe& recipe,
                                                         const std::vector<NamedBatch>& stock,
                                                         double batchSize) {
  std::vector<std::pair<std::string, std::string>> parts;
  for (std::size_t i = 0; i < stock.size(); ++i) {
    const double amount = recipe.used[static_cast<std::ptrdiff_t>(i)];
    if (amount > 0.0) parts.emplace_back(stock[i].id, AmountText(amount, batchSize));
  }
  return parts;
}

// The same as "A12:350;B7:120.5".
std::string PartsText(const CLeftoverRecipe& recipe, const std::vector<NamedBatch>& stock, double batchSize) {
  std::string text;
  for (const auto& [batch, amount] : PartsOf(recipe, stock, batchSize))
    text.append(text.empty() ? "" : ";").append(batch).append(":").append(amount);
  return text;
}

// Every batch of the stock brought to every target by additions.
class StockSearch {
 public:
  explicit StockSearch(MatchOptions& options)
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
    std::vector<CStockCorrectionArray> found;
    {
      SearchProgress progress(targets_.size());
      for (std::size_t i = 0; i < targets_.size(); ++i) found.push_back(CorrectAll(i, progress));
    }
    std::vector<Column> columns{{"target"}, {"rank"}, {"batch"}};
    AddCorrectionColumns(settings_.recipe, columns);
    OutputStream output;
    DescribeRun(options_, settings_.recipe, report_);
    report_.AddFile(ReportText::kStock, options_.stock);
    const std::unique_ptr<RowWriter> rows = report_.Rows(options_.search.format, output, columns);
    for (std::size_t i = 0; i < targets_.size(); ++i) {
      int rank = 0;
      for (const CStockCorrection& correction : found[i]) {
        rows->Text(targets_[i].id);
        rows->Integer(++rank);
        rows->Text(stock_[static_cast<std::size_t>(correction.batch)].id);
        WriteCorrection(correction, system_, *rows);
        rows->EndRow();
      }
    }
    rows->Finish();
    AddPictures(found);
    report_.Save();
    output.Finish();
  }

 private:
  RecipeNames NamesOf(const NamedTarget& target, const NamedBatch& batch) const {
    RecipeNames names = tool::NamesOf(options_, target);
    names.batch = names.formula = options_.stock + ": batch \"" + batch.id + "\"";
    return names;
  }

  void AddPictures(const std::vector<CStockCorrectionArray>& found) {
    RecipePictures pictures(settings_.recipe, system_, report_);
    for (std::size_t i = 0; i < targets_.size() && pictures.IsWanted(); ++i) {
      std::vector<FoundRecipe> shown;
      for (const CStockCorrection& each : found[i]) {
        if (shown.size() == RecipePictures::kMostFound) break;
        shown.push_back({stock_[static_cast<std::size_t>(each.batch)].id,
                         NamedAmounts(each.correction.additions, system_, each.size), each.correction.curve});
      }
      pictures.Add(targets_[i].id, targets_[i].target, shown);
    }
    pictures.Finish(targets_.size());
  }

  // What the batches need to become a target, best first.
  CStockCorrectionArray CorrectAll(std::size_t number, SearchProgress& progress) {
    CArrayVarex<CBatch> batches;
    for (const NamedBatch& batch : stock_) batches.Add(batch.batch);
    CStockCorrectionArray found;
    settings_.recipe.progress = progress.OfSearch(number);
    const RecipeOutcome outcome =
        CorrectStock(system_.data, system_.rules, batches, targets_[number].target, settings_, found);
    RefuseFaults(outcome, system_, settings_.recipe, NamesOf(targets_[number], stock_.front()));
    return found;
  }

  const MatchOptions& options_;
  ResultReport report_;
  ColorSystem system_;
  std::vector<NamedTarget> targets_;
  std::vector<NamedBatch> stock_;
  CCorrectionSettings settings_;
};

// Recipes of parts of the stock and what is fresh.
void RunFromParts(MatchOptions& options) {
  ResultReport report(options.report, ReportText::kRecipes);
  const ColorSystem system = ReadColorSystem(options.search.system);
  const std::vector<NamedTarget> targets = ReadTargets(options, report);
  const std::vector<NamedBatch> stock = ReadStock(options.stock, system, options.search.input);
  CRecipeSettings settings = SettingsOf(options, system);
  settings.batchSize = options.parts;
  CArrayVarex<CBatch> leftovers;
  for (const NamedBatch& batch : stock) leftovers.Add(batch.batch);
  std::vector<CLeftoverRecipeArray> found(targets.size());
  {
    SearchProgress progress(targets.size());
    for (std::size_t i = 0; i < targets.size(); ++i) {
      settings.progress = progress.OfSearch(i);
      RecipeNames names = NamesOf(options, targets[i]);
      names.batch = names.formula = options.stock;
      RefuseFaults(UseLeftovers(system.data, system.rules, leftovers, targets[i].target, settings, found[i]),
                   system, settings, names);
    }
  }
  std::vector<Column> columns{{"target"}, {"rank"}, {"colorants"}, {"leftovers"}, {"used"}, {"formula"}};
  for (const vrxIlluminant illuminant : settings.illuminants) {
    columns.push_back({"dE_" + ShownIlluminant(illuminant), "dE " + ShownIlluminant(illuminant)});
  }
  columns.push_back({.name = "cost", .inReport = HasCosts(settings)});
  columns.push_back({"status"});
  OutputStream output;
  DescribeRun(options, settings, report);
  report.AddFile(ReportText::kStock, options.stock);
  const std::unique_ptr<RowWriter> rows = report.Rows(options.search.format, output, columns);
  for (std::size_t i = 0; i < targets.size(); ++i) {
    int rank = 0;
    for (const CLeftoverRecipe& each : found[i]) {
      const Tint tint = each.recipe.isWithinTolerance ? Tint::kGood : Tint::kBad;
      rows->Text(targets[i].id);
      rows->Integer(++rank);
      rows->Integer(each.recipe.colorants);
      rows->Text(PartsText(each, stock, settings.batchSize));
      rows->Number(each.total);
      rows->Words(FormulaText(each.recipe.formula, settings.batchSize),
                  NamedFormulaText(each.recipe.formula, system, settings.batchSize));
      for (const double difference : each.recipe.differences) rows->Number(difference, tint);
      rows->Number(each.recipe.cost);
      rows->Text(each.recipe.isWithinTolerance ? "ok" : "out of tolerance", tint);
      rows->EndRow();
    }
  }
  rows->Finish();
  RecipePictures pictures(settings, system, report);
  for (std::size_t i = 0; i < targets.size() && pictures.IsWanted(); ++i) {
    std::vector<FoundRecipe> shown;
    for (const CLeftoverRecipe& each : found[i]) {
      if (shown.size() == RecipePictures::kMostFound) break;
      std::vector<std::pair<std::string, std::string>> amounts = PartsOf(each, stock, settings.batchSize);
      for (const auto& fresh : NamedAmounts(each.recipe.formula, system, settings.batchSize))
        amounts.push_back(fresh);
      shown.push_back({std::to_string(shown.size() + 1), amounts, each.recipe.curve});
    }
    pictures.Add(targets[i].id, targets[i].target, shown);
  }
  pictures.Finish(targets.size());
  report.Save();
  output.Finish();
}

void RunFromStock(MatchOptions& options) {
  if (options.parts > 0.0) return RunFromParts(options);
  StockSearch search(options);
  search.Check();
  search.Run();
}

std::vector<NamedBatch> FormersOf(const MatchOptions& options, const ColorSystem& system) {
  if (options.library.empty()) return {};
  if (IsJobFile(options.library)) return RecipesOfJob(options.library, system);
  return ReadMadeRecipes(options.library, system, options.search.input);
}

// The former recipes of a library, adapted to each target; nothing without a library.
std::vector<CAdaptedRecipeArray> AdaptAll(const MatchOptions& options, const ColorSystem& system,
                                          const std::vector<NamedTarget>& targets,
                                          const std::vector<NamedBatch>& made, CRecipeSettings settings) {
  if (made.empty()) return {};
  CFormerRecipeArray formers;
  for (const NamedBatch& each : made) {
    CFormerRecipe former;
    former.id = CString::FromUtf8(each.id);
    former.formula = each.batch.formula;
    former.curve = each.batch.curve;
    formers.Add(former);
  }
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
  return adapted;
}

void RunMatch(MatchOptions& options) {
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
  const std::vector<NamedBatch> made = FormersOf(options, system);
  const std::vector<CAdaptedRecipeArray> adapted = AdaptAll(options, system, targets, made, settings);
  OutputStream output;
  DescribeRun(options, settings, report);
  RecipeRows rows(options, system, settings, output, report);
  std::vector<NamedFormula> formulas;
  const auto without = std::ranges::count_if(found, [](const CRecipeArray& each) { return each.IsEmpty(); });
  for (std::size_t i = 0; i < targets.size(); ++i) {
    rows.Add(targets[i].id, found[i]);
    if (!adapted.empty()) rows.Add(targets[i].id, adapted[i], made);
    for (int32_t rank = 1; rank <= found[i].GetSize(); ++rank) {
      formulas.push_back({targets[i].id + " " + std::to_string(rank), found[i][rank - 1].formula});
    }
  }
  rows.Finish();
  RecipePictures pictures(settings, system, report);
  for (std::size_t i = 0; i < targets.size() && pictures.IsWanted(); ++i) {
    std::vector<FoundRecipe> shown;
    const auto show = [&](const std::string& heading, const CRecipe& recipe) {
      if (shown.size() == RecipePictures::kMostFound) return;
      shown.push_back(
          {heading, NamedAmounts(recipe.formula, system, settings.batchSize), recipe.curve, recipe.expected});
    };
    for (const CRecipe& recipe : found[i]) show(std::to_string(shown.size() + 1), recipe);
    if (!adapted.empty()) {
      for (const CAdaptedRecipe& each : adapted[i])
        show(made[static_cast<std::size_t>(each.former)].id, each.recipe);
    }
    pictures.Add(targets[i].id, targets[i].target, shown);
  }
  pictures.Finish(targets.size());
  report.Save();
  if (!options.formulas.empty()) WriteFormulas(options.formulas, formulas);
  output.Finish();
  if (without > 0) {
    PrintMessage(
        std::to_string(without) + " of " + std::to_string(targets.size()) +
        " targets have no recipe: --min-opacity or --limits leave none, or --resolution is too coarse");
  }
  if (options.prerank > 0)
    PrintMessage("--prerank: only some of the subsets were solved; better recipes may exist");
}

// The options that corrections of a stock have no use for; `stock` refuses them.
void AddRecipeOptions(Command& command, MatchOptions& options, Option& stock) {
  Command components = command.Group("Components"), amounts = command.Group("Amounts"),
          film = command.Group("Film"), earlier = command.Group("Earlier recipes and leftovers");
  const Option backings =
      film.AddOption("--backings", options.backings,
                     "File with two curves, of a black and of a white backing, for the opacity")
          .ReadsFile()
          .Shows("FILE");
  film.AddOption("--thickness", options.thickness,
                 "Thickness of the film, in the unit of length of the colorants' K and S")
      .Shows("X [1]")
      .Needs(backings);
  film.AddOption("--min-opacity", options.minOpacity, "Smallest contrast ratio of a recipe")
      .Shows("PERCENT [0]")
      .Needs(backings);
  Option size =
      amounts.AddOption("--batch-size", options.search.batchSize, "Total of the amounts in a recipe")
          .Shows("AMOUNT [100]");
  const Option liquor =
      amounts
          .AddOption("--liquor", options.liquor,
                     "Litres of liquor per kilogram of substrate; amounts are then in grams per litre")
          .Shows("LITRES");
  size.Excludes(liquor);
  const Option least = components
                           .AddOption("--min-amount", options.search.choice.minAmount,
                                      "Smallest share of any colorant in a recipe")
                           .Shows("PERCENT [0]");
  const Option load = components
                          .AddOption("--load", options.load,
                                     "Share of the colorants beside a clear resin, or a range of shares")
                          .Shows("PERCENT|LEAST:MOST");
  const Option range =
      components.AddFlag("--within-range", options.search.choice.withinRange,
                         "Keep each share within the range in which its component was calibrated");
  const Option trace = command
                           .AddOption("--trace", options.search.criterion.trace,
                                      "Treat a colorant as a trace if leaving it out changes the colour by "
                                      "less than this; off: never")
                           .Shows("DE [a tenth of --tolerance]");
  const Option library =
      earlier
          .AddOption("--library", options.library,
                     "Adapt earlier recipes from this file: a job, or measured curves with a column formula")
          .ReadsFile()
          .Shows("FILE");
  earlier
      .AddOption(
          "--parts", options.parts,
          "Make recipes of this amount from parts of several batches; those that use up most come first")
      .Shows("AMOUNT")
      .Check([](const std::string& text) {
        double amount = 0.0;
        const bool isAmount = ParseDecimal(text, ',', amount) && amount > 0.0 && amount <= 1e9;
        return isAmount ? "" : "expected an amount above 0";
      })
      .Needs(stock);
  const Option prerank = command.Group("Search")
                             .AddOption("--prerank", options.prerank,
                                        "Of each size, solve only the N subsets that look best to first "
                                        "order (may miss recipes); 0: all")
                             .Shows("N [0]");
  const Option formulas = command
                              .AddOption("--formulas", options.formulas,
                                         "Write the recipes to a JSON file that vrx predict reads")
                              .WritesFile()
                              .Shows("FILE");
  for (const Option& option :
       {backings, size, liquor, least, load, range, trace, library, prerank, formulas}) {
    stock.Excludes(option);
  }
}

}  // namespace

void AddMatch(Command& tool) {
  const auto options = std::make_shared<MatchOptions>();
  Command command = tool.AddCommand("match", "Find recipes for target colours");
  command.AddOption("SYSTEM", options->search.system, "JSON file of a colour system").ReadsFile().Required();
  command.AddOption("TARGETS", options->targets, "File of curves, or of colours in columns L, a, b")
      .ReadsFile()
      .Required();
  command.AddChoice("--sort", options->order,
                    {"fewest", "color", "metamerism", "cost", "expected", "inconstancy"},
                    "Order of the recipes within the tolerance");
  AddSearchOptions(command, options->search, RecipePurpose::kRecipe);
  Command earlier = command.Group("Earlier recipes and leftovers");
  Option stock =
      earlier
          .AddOption("--from-stock", options->stock,
                     "Use up the batches in this file: their curves, with columns formula and amount")
          .ReadsFile()
          .Shows("FILE");
  earlier
      .AddOption("--max-addition", options->mostAddition, "Largest total addition, in percent of the batch")
      .Shows("PERCENT [" + options->mostAddition + "]")
      .Needs(stock);
  AddRecipeOptions(command, *options, stock);
  AddReportOptions(command, options->report);
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
    options->stock.empty() ? RunMatch(*options) : RunFromStock(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
