#include "tools/vrx/commands/match_options.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/recipe.h>
#include <vrxmath/matching/recipe_costs.h>

#include <vrxio/text/decimal.h>

#include "tools/vrx/base/text.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/output/file_output.h"
#include "tools/vrx/recipes/diagnosis.h"
#include "tools/vrx/recipes/recipe_search.h"

namespace vrx::tool {
namespace {

// Takes a curve to the target of its id when that was measured at another geometry; null when there is none.
NamedTarget* AddGeometry(const CurveRow& row, const SystemOptions& system,
                         std::vector<NamedTarget>& targets) {
  const auto found = std::ranges::find_if(targets, [&](const NamedTarget& target) {
    return target.id == row.id && !target.geometries.empty() &&
           !std::ranges::count(target.geometries, row.geometry);
  });
  if (row.geometry == kNoGeometry || row.kind != Sample::kCurve || found == targets.end()) return nullptr;
  found->target.others.Add(row.curve);
  found->target.angles.Add(system.AngleOf(row.geometry));
  found->geometries.push_back(row.geometry);
  return &*found;
}

// The curves of targets of which their files say that they lie beside the gloss, which is taken for included. Beside a curve of the
// right kind such a one says how the target looks from there; alone it is a curve of the wrong kind.
class CurvesBesideGloss {
 public:
  // Takes up a row of a target; refuses one of which the file says SCI or SCE.
  void Add(const CurveReader& curves, const CurveRow& row, const TakenSpecular& taken, std::size_t target) {
    if (target >= targets_.size()) targets_.resize(target + 1);
    const std::string other = OtherSpecularText(curves.Conditions(), row.geometry, taken);
    if (other.empty()) {
      targets_[target].hasRight = true;
      return;
    }
    if (!io::IsBesideGloss(row.geometry)) curves.Source().FailRow(other);
    std::string& complaint = targets_[target].complaint;
    if (complaint.empty()) complaint = curves.Source().RowPlace().append(": ").append(other);
  }

  // Refuses the first target that has no other curve.
  void Check() const {
    for (const Target& target : targets_) {
      if (!target.hasRight && !target.complaint.empty()) throw InputError(target.complaint);
    }
  }

 private:
  struct Target {
    bool hasRight = false;
    std::string complaint;
  };
  std::vector<Target> targets_;
};

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

// True where a cost was given, so that costs say something.
bool HasCosts(const CRecipeSettings& settings) {
  return std::any_of(settings.components.begin(), settings.components.end(),
                     [](const CRecipeComponent& component) { return component.cost > 0.0; });
}

// Recipes from parts of a stock: those that use up most come first, and nothing bounds what is fresh.
void AddParts(Command& earlier, MatchOptions& options, const Option& stock,
              std::initializer_list<Option> excluded) {
  Option parts =
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
  for (const Option& option : excluded) parts.Excludes(option);
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

void AddMatchOptions(Command& command, MatchOptions& options) {
  command.AddOption("SYSTEM", options.search.system, "JSON file of a colour system").ReadsFile().Required();
  command.AddOption("TARGETS", options.targets, "File of curves, or of colours in columns L, a, b")
      .ReadsFile()
      .Required();
  const Option sort = command.AddChoice("--sort", options.order,
                                        {"fewest", "color", "metamerism", "cost", "expected", "inconstancy"},
                                        "Order of the recipes within the tolerance");
  AddSearchOptions(command, options.search, RecipePurpose::kRecipe);
  Command earlier = command.Group("Earlier recipes and leftovers");
  Option stock =
      earlier
          .AddOption("--from-stock", options.stock,
                     "Use up the batches in this file: their curves, with columns formula and amount")
          .ReadsFile()
          .Shows("FILE");
  const Option mostAddition = earlier
                                  .AddOption("--max-addition", options.mostAddition,
                                             "Largest total addition, in percent of the batch")
                                  .Shows("PERCENT [" + options.mostAddition + "]")
                                  .Needs(stock);
  const Option margin = AddMarginOption(earlier, options.margin).Needs(stock);
  AddTrustOption(earlier, options.trustFormula);
  AddParts(earlier, options, stock, {sort, mostAddition, margin});
  AddRecipeOptions(command, options, stock);
  AddReportOptions(command, options.report);
}

TakenSpecular TakenOf(const MatchOptions& options, const ColorSystem& system) {
  return TakenBy(options.search.criterion.specular, system, options.search.system);
}

std::vector<NamedTarget> ReadTargets(MatchOptions& options, const ColorSystem& colorSystem,
                                     ResultReport& report) {
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
  const TakenSpecular taken = TakenOf(options, colorSystem);
  CurvesBesideGloss beside;
  while (samples.Next(row)) {
    areAnglesKnown = areAnglesKnown && SystemOptions::HasAngle(row.geometry);
    const NamedTarget* target = AddGeometry(row, system, targets);
    if (target == nullptr) {
      NamedTarget named{std::string(row.id), TargetOf(samples, row, system), {}};
      if (row.geometry != kNoGeometry) named.geometries.push_back(row.geometry);
      target = &targets.emplace_back(std::move(named));
    }
    beside.Add(samples, row, taken, static_cast<std::size_t>(target - targets.data()));
  }
  beside.Check();
  WarnAboutInput(samples);
  report.AddInput(samples);
  system.WarnAboutAngle(areAnglesKnown);
  if (targets.empty()) throw InputError(options.targets + ": there is no row");
  return targets;
}

void WarnAboutScales(const MatchOptions& options, const std::vector<NamedTarget>& targets,
                     const std::string& file, const std::vector<NamedBatch>& batches, ResultReport& report) {
  FileValues values{options.targets};
  for (const NamedTarget& named : targets)
    values.largest = std::max(values.largest, LargestOf(named.target.curve));
  for (const InputWarning& warning : WarnAboutScales(values, file, batches, options.search.input))
    report.AddWarning(warning);
}

CRecipeSettings SettingsOf(const MatchOptions& options, const ColorSystem& system) {
  if (options.trustFormula && options.stock.empty() && options.library.empty())
    throw InputError("--trust-formula requires --from-stock or --library");
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
  if (!options.backings.empty()) {
    ReadBackings(options.backings, options.search.input, TakenOf(options, system), settings.black,
                 settings.white);
  }
  RefuseFaults(CheckCosts(system.data, settings), system, settings,
               NamesFor(options.search.system, options.search.choice.limits, options.targets));
  return settings;
}

RecipeNames NamesOf(const MatchOptions& options, const NamedTarget& target) {
  RecipeNames names = NamesFor(options.search.system, options.search.choice.limits,
                               options.targets + ": target \"" + target.id + "\"");
  names.backings = options.backings;
  return names;
}

void DescribeRun(const MatchOptions& options, const CRecipeSettings& settings, ResultReport& report) {
  report.AddFile(ReportText::kColorants, options.search.system);
  report.AddFile(ReportText::kTargets, options.targets);
  report.AddFact(ReportText::kSystem, TitleOf(settings.difference));
  report.AddFact(ReportText::kTolerance, FixedText(settings.tolerance));
  const auto& illuminants = settings.illuminants;
  report.AddViewing({illuminants.begin(), illuminants.end()}, settings.observer);
}

void AddDifferenceColumns(const CRecipeSettings& settings, std::vector<Column>& columns) {
  for (const vrxIlluminant illuminant : settings.illuminants) {
    columns.push_back({"dE_" + ShownIlluminant(illuminant), "dE " + ShownIlluminant(illuminant)});
  }
}

Column CostColumn(const CRecipeSettings& settings) {
  return {.name = "cost", .inReport = HasCosts(settings)};
}

}  // namespace vrx::tool
