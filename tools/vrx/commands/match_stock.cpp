// vrx match --from-stock: batches brought to targets by additions, or recipes made from parts of them.

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/leftovers.h>

#include "tools/vrx/commands/match_options.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/recipes/correction.h"
#include "tools/vrx/recipes/diagnosis.h"
#include "tools/vrx/recipes/recipe_options.h"
#include "tools/vrx/recipes/recipe_search.h"
#include "tools/vrx/report/recipe_pictures.h"

namespace vrx::tool {
namespace {

CCorrectionSettings CorrectionSettingsOf(const MatchOptions& options, const ColorSystem& system) {
  CCorrectionSettings settings;
  settings.recipe = SettingsOf(options, system);
  settings.mostAddition = ParseMostAddition(options.mostAddition);
  settings.margin = ParseMargin(options.margin);
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

// "A12 (Cobalt Blue: 0 % instead of 4.5 %)" of each leftover in a recipe that is not as written.
std::string SuspectedText(const CLeftoverRecipe& recipe, const std::vector<NamedBatch>& stock) {
  std::string text;
  for (std::size_t i = 0; i < stock.size(); ++i) {
    const NamedBatch& batch = stock[i];
    if (batch.suspected.empty() || !(recipe.used[static_cast<std::ptrdiff_t>(i)] > 0.0)) continue;
    text.append(text.empty() ? "" : "; ").append(batch.id).append(" (").append(batch.suspected).append(")");
  }
  return text;
}

// What is read for targets that a stock is to become.
class StockAndTargets {
 protected:
  explicit StockAndTargets(MatchOptions& options)
      : options_(options),
        report_(options.report, ReportText::kRecipes),
        system_(ReadColorSystem(options.search.system)),
        targets_(ReadTargets(options, system_, report_)),
        stock_(ReadStock(options.stock, system_, options.search.input, TakenOf(options, system_))) {
    WarnAboutScales(options, targets_, options.stock, stock_, report_);
  }

  RecipeNames NamesOf(const NamedTarget& target, const NamedBatch& batch) const {
    RecipeNames names = tool::NamesOf(options_, target);
    names.batch = names.formula = options_.stock + ": batch \"" + batch.id + "\"";
    return names;
  }

  // Takes the batches for what their curves say, unless their formulas are to be trusted.
  void TakeStock(const CRecipeSettings& settings) {
    if (!options_.trustFormula) {
      for (const std::string& told : TakeFound(system_, settings, options_.stock, stock_))
        report_.AddWarning({options_.stock, told});
    }
    for (const NamedBatch& batch : stock_) batches_.Add(batch.batch);
  }

  bool IsAnySuspected() const {
    return std::ranges::any_of(stock_, [](const NamedBatch& batch) { return !batch.suspected.empty(); });
  }

  const MatchOptions& options_;
  ResultReport report_;
  ColorSystem system_;
  std::vector<NamedTarget> targets_;
  std::vector<NamedBatch> stock_;
  CArrayVarex<CBatch> batches_;  // those of the stock
};

// Every batch of the stock brought to every target by additions.
class StockSearch : StockAndTargets {
 public:
  explicit StockSearch(MatchOptions& options)
      : StockAndTargets(options), settings_(CorrectionSettingsOf(options, system_)) {}

  void Check() const {
    for (const NamedTarget& target : targets_) {
      for (const NamedBatch& batch : stock_) {
        RefuseFaults(CheckCorrection(system_.data, system_.rules, batch.batch, target.target, settings_),
                     system_, settings_.recipe, NamesOf(target, batch));
      }
    }
  }

  void Run() {
    TakeStock(settings_.recipe);
    std::vector<CStockCorrectionArray> found;
    {
      SearchProgress progress(targets_.size());
      for (std::size_t i = 0; i < targets_.size(); ++i) found.push_back(CorrectAll(i, progress));
    }
    std::vector<Column> columns{{"target"}, {"rank"}, {"batch"}};
    AddCorrectionColumns(settings_.recipe, IsAnySuspected(), columns);
    OutputStream output;
    DescribeRun(options_, settings_.recipe, report_);
    report_.AddFile(ReportText::kStock, options_.stock);
    const std::unique_ptr<RowWriter> rows = report_.Rows(options_.search.format, output, columns);
    for (std::size_t i = 0; i < targets_.size(); ++i) {
      int rank = 0;
      for (const CStockCorrection& correction : found[i]) {
        rows->Text(targets_[i].id);
        rows->Integer(++rank);
        const NamedBatch& batch = stock_[static_cast<std::size_t>(correction.batch)];
        rows->Text(batch.id);
        WriteCorrection(correction, batch, system_, *rows);
        rows->EndRow();
      }
    }
    rows->Finish();
    AddPictures(found);
    report_.Save();
    output.Finish();
  }

 private:
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
    CStockCorrectionArray found;
    settings_.recipe.progress = progress.OfSearch(number);
    const RecipeOutcome outcome =
        CorrectStock(system_.data, system_.rules, batches_, targets_[number].target, settings_, found);
    RefuseFaults(outcome, system_, settings_.recipe, NamesOf(targets_[number], stock_.front()));
    return found;
  }

  CCorrectionSettings settings_;
};

// Recipes of parts of the stock and what is fresh.
class PartsSearch : StockAndTargets {
 public:
  explicit PartsSearch(MatchOptions& options)
      : StockAndTargets(options), settings_(SettingsOf(options, system_)) {
    settings_.batchSize = options.parts;
  }

  // Refuses a leftover that no recipe could use, by its name.
  void Check() const {
    if (MixingLawOf(system_.data.opticalModel) != MixingLaw::kTwoConstant) {
      throw InputError(options_.search.system +
                       ": \"model\": --parts is for models of two constants; a leftover on a substrate is no "
                       "part of another recipe");
    }
    CCorrectionSettings settings;
    settings.recipe = settings_;
    settings.recipe.mostColorants = 1;
    for (const NamedBatch& batch : stock_) {
      const CRecipeTarget& target = targets_.front().target;
      const RecipeOutcome outcome =
          CheckCorrection(system_.data, system_.rules, batch.batch, target, settings);
      const bool isOfBatch = outcome.fault == RecipeFault::kBatchFormula ||
                             outcome.fault == RecipeFault::kBatchNotMeasured ||
                             outcome.fault == RecipeFault::kBatchBelowSurface;
      if (isOfBatch) RefuseFaults(outcome, system_, settings_, NamesOf(targets_.front(), batch));
    }
  }

  void Run() {
    TakeStock(settings_);
    const std::vector<CLeftoverRecipeArray> found = Search();
    OutputStream output;
    DescribeRun(options_, settings_, report_);
    report_.AddFile(ReportText::kStock, options_.stock);
    const std::unique_ptr<RowWriter> rows = report_.Rows(options_.search.format, output, Columns());
    for (std::size_t i = 0; i < targets_.size(); ++i) {
      int rank = 0;
      for (const CLeftoverRecipe& each : found[i]) AddRow(targets_[i].id, ++rank, each, *rows);
    }
    rows->Finish();
    AddPictures(found);
    report_.Save();
    output.Finish();
  }

 private:
  std::vector<CLeftoverRecipeArray> Search() {
    std::vector<CLeftoverRecipeArray> found(targets_.size());
    SearchProgress progress(targets_.size());
    for (std::size_t i = 0; i < targets_.size(); ++i) {
      settings_.progress = progress.OfSearch(i);
      RecipeNames names = tool::NamesOf(options_, targets_[i]);
      names.batch = names.formula = options_.stock;
      RefuseFaults(
          UseLeftovers(system_.data, system_.rules, batches_, targets_[i].target, settings_, found[i]),
          system_, settings_, names);
    }
    return found;
  }

  std::vector<Column> Columns() const {
    std::vector<Column> columns{{"target"}, {"rank"}, {"colorants"}, {"leftovers"}, {"used"}, {"formula"}};
    AddDifferenceColumns(settings_, columns);
    columns.push_back(CostColumn(settings_));
    columns.push_back({"status"});
    columns.push_back({.name = "suspected", .inReport = IsAnySuspected()});
    return columns;
  }

  void AddRow(const std::string& target, int rank, const CLeftoverRecipe& each, RowWriter& rows) const {
    const Tint tint = each.recipe.isWithinTolerance ? Tint::kGood : Tint::kBad;
    rows.Text(target);
    rows.Integer(rank);
    rows.Integer(each.recipe.colorants);
    rows.Text(PartsText(each, stock_, settings_.batchSize));
    rows.Number(each.total);
    rows.Words(FormulaText(each.recipe.formula, settings_.batchSize),
               NamedFormulaText(each.recipe.formula, system_, settings_.batchSize));
    for (const double difference : each.recipe.differences) rows.Number(difference, tint);
    rows.Number(each.recipe.cost);
    rows.Text(each.recipe.isWithinTolerance ? "ok" : "out of tolerance", tint);
    rows.Text(SuspectedText(each, stock_));
    rows.EndRow();
  }

  void AddPictures(const std::vector<CLeftoverRecipeArray>& found) {
    RecipePictures pictures(settings_, system_, report_);
    for (std::size_t i = 0; i < targets_.size() && pictures.IsWanted(); ++i) {
      std::vector<FoundRecipe> shown;
      for (const CLeftoverRecipe& each : found[i]) {
        if (shown.size() == RecipePictures::kMostFound) break;
        std::vector<std::pair<std::string, std::string>> amounts = PartsOf(each, stock_, settings_.batchSize);
        for (const auto& fresh : NamedAmounts(each.recipe.formula, system_, settings_.batchSize))
          amounts.push_back(fresh);
        shown.push_back({std::to_string(shown.size() + 1), amounts, each.recipe.curve});
      }
      pictures.Add(targets_[i].id, targets_[i].target, shown);
    }
    pictures.Finish(targets_.size());
  }

  CRecipeSettings settings_;
};

}  // namespace

void MatchFromStock(MatchOptions& options) {
  const auto run = [](auto&& search) {
    search.Check();
    search.Run();
  };
  options.parts > 0.0 ? run(PartsSearch(options)) : run(StockSearch(options));
}

}  // namespace vrx::tool
