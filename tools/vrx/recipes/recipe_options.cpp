#include "tools/vrx/recipes/recipe_options.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

#include <vrxio/csv/csv_reader.h>
#include <vrxio/text/decimal.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/recipe_costs.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/command_line.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/input/curve_input.h"

namespace vrx::tool {
namespace {

constexpr double kPercent = 100.0;

// Decimals that tell shares of 1e-6 of a batch, and at least four.
int DecimalsFor(double batchSize) {
  constexpr int kLeast = 4, kMost = 15;
  int decimals = kLeast;
  for (double shown = 1e-4; shown > 1.001e-6 * batchSize && decimals < kMost; shown *= 0.1) ++decimals;
  return decimals;
}

// The columns of a file of limits: 0 for component, 1 for min, 2 for max, 3 for cost.
std::vector<std::size_t> LimitColumns(const CsvReader& csv) {
  const std::vector<std::string>& header = csv.Header();
  constexpr std::array<std::string_view, 4> kColumns = {"component", "min", "max", "cost"};
  std::vector<std::size_t> roles;
  for (std::size_t i = 0; i < header.size(); ++i) {
    const auto role = std::ranges::find_if(
        kColumns, [&](std::string_view column) { return EqualsIgnoringCase(header[i], column); });
    if (role == kColumns.end()) csv.FailAt(i, "unknown column; expected component, min, max or cost");
    roles.push_back(static_cast<std::size_t>(role - kColumns.begin()));
    if (std::ranges::count(roles, roles.back()) > 1) csv.FailAt(i, "the column appears twice");
  }
  if (!std::ranges::count(roles, std::size_t{0})) csv.FailRow("there is no column \"component\"");
  return roles;
}

// A row of such a file; true with a cost, which may be 0.
bool ReadLimit(CsvReader& csv, const std::vector<std::size_t>& roles, const ColorSystem& system,
               CRecipeComponent& entry) {
  bool hasCost = false;
  for (std::size_t i = 0; i < roles.size(); ++i) {
    const std::string text(csv.Text());
    if (roles[i] == 0) {
      std::string fault;
      const CComponent* const component = FindComponent(system, text, fault);
      if (component == nullptr) csv.FailAt(i, fault);
      entry.componentId = component->GetId();
      continue;
    }
    if (text.empty()) continue;
    double value = 0.0;
    const bool isNumber = ParseDecimal(text, ',', value) && value >= 0.0;
    if (!isNumber || (roles[i] < 3 && value > kPercent)) {
      csv.FailAt(
          i, roles[i] < 3 ? "expected a share in percent, from 0 to 100" : "expected a cost of 0 or more");
    }
    (roles[i] == 1   ? entry.least
     : roles[i] == 2 ? entry.most
                     : entry.cost) = roles[i] == 3 ? value : value / kPercent;
    hasCost = hasCost || roles[i] == 3;
  }
  csv.EndRecord();
  if (entry.least > entry.most) csv.FailRow("min is above max");
  return hasCost;
}

// Rows of a file of limits: component, and any of min, max (percent) and cost. The components with a cost.
std::vector<uint32_t> ReadLimits(const std::string& path, const ColorSystem& system,
                                 CRecipeSettings& settings) {
  CsvReader csv(path);
  const std::vector<std::size_t> roles = LimitColumns(csv);
  std::map<uint32_t, int64_t> lines;
  std::vector<uint32_t> priced;
  while (csv.Next()) {
    CRecipeComponent entry;
    if (ReadLimit(csv, roles, system, entry)) priced.push_back(entry.componentId);
    const auto [earlier, isNew] = lines.emplace(entry.componentId, csv.Line());
    if (!isNew) {
      csv.FailRow("component " + std::to_string(entry.componentId) + " appears twice, first in line " +
                  std::to_string(earlier->second));
    }
    settings.components.Add(entry);
  }
  return priced;
}

// Names what is free because nobody gave a cost of it.
void TellFree(const ColorSystem& system, const CRecipeSettings& settings,
              const std::vector<uint32_t>& priced) {
  std::string free;
  for (const uint32_t id : ComponentsWithoutCost(system.data, settings, priced))
    free.append(free.empty() ? "" : ", ").append(ComponentTitle(system, id));
  if (!free.empty()) PrintMessage("no cost is known of " + free + "; they count as free");
}

void AddUses(const std::vector<std::string>& lists, const std::string& option, CRecipeComponent::Use use,
             const ColorSystem& system, CRecipeSettings& settings) {
  for (const std::string& list : lists) {
    for (std::size_t at = 0; at <= list.size();) {
      const std::size_t end = std::min(list.find(',', at), list.size());
      const std::string_view name = std::string_view(list).substr(at, end - at);
      std::string fault;
      const CComponent* const component = FindComponent(system, name, fault);
      if (component == nullptr) throw InputError(std::string(option).append(": ").append(fault));
      CRecipeComponent entry;
      entry.componentId = component->GetId();
      entry.use = use;
      settings.components.Add(entry);
      at = end + 1;
    }
  }
}

// A difference, or "off" for none; nothing for the default.
std::optional<double> ParseTrace(const std::string& text) {
  if (text.empty()) return {};
  if (EqualsIgnoringCase(text, "off")) return 0.0;
  double trace = 0.0;
  if (!ParseDecimal(text, ',', trace) || !(trace >= 0.0 && trace <= 1e6))
    throw InputError("--trace: must be a difference of 0 or more, or off");
  return trace;
}

}  // namespace

void CriterionOptions::Apply(const ColorSystem& colorSystem, const std::string& path,
                             CRecipeSettings& settings) const {
  settings.illuminants.RemoveAll();
  for (const vrxIlluminant illuminant : viewing.Illuminants()) settings.illuminants.Add(illuminant);
  settings.observer = viewing.Observer();
  settings.difference = system.Settings();
  settings.angle = system.Angle();
  settings.objective = objective;
  settings.mode = SpecularOf(specular, colorSystem, path);
  if (!(tolerance >= 0.0)) throw InputError("--tolerance: must be a difference of 0 or more");
  settings.tolerance = tolerance;
  settings.trace = ParseTrace(trace);
  settings.weights.RemoveAll();
  if (weights.empty()) return;
  const std::vector<double> numbers = ParseNumbers(weights, "--weights");
  const auto isWeight = [](double weight) { return weight >= 0.0 && weight <= 1e6; };
  const bool areWeights = numbers.size() == static_cast<std::size_t>(settings.illuminants.GetSize()) &&
                          std::ranges::all_of(numbers, isWeight) &&
                          std::ranges::any_of(numbers, [](double weight) { return weight > 0.0; });
  if (!areWeights)
    throw InputError("--weights: must be a number from 0 to 1000000 for each illuminant, not all 0");
  for (const double weight : numbers) settings.weights.Add(weight);
}

void AddCriterionOptions(Command& owner, CriterionOptions& options) {
  owner.AddOption("--tolerance", options.tolerance, "Largest acceptable difference under any illuminant")
      .Shows("DE [" + TrimmedDecimals(RecipeDefaults::kTolerance, 2) + "]");
  AddViewingOptions(owner, options.viewing, UsualIlluminants());
  AddSystemOptions(owner, options.system, "cie2000");
  Command command = owner.Group("Search");
  command.AddOption("--weights", options.weights, "Weight of the squared difference under each illuminant")
      .Shows("W,...");
  command.AddChoice("--objective", options.objective, {"tristimulus", "spectral", "combined"},
                    "What to minimise: the colour differences, the difference of the curves, or both");
  AddSpecularOption(command, options.specular);
}

std::vector<uint32_t> ChoiceOptions::Apply(const ColorSystem& system, CRecipeSettings& settings) const {
  if (maxColorants < 1 || maxColorants > 6) throw InputError("--max-colorants: must be a number from 1 to 6");
  if (!(minAmount >= 0.0 && minAmount <= kPercent)) {
    throw InputError("--min-amount: must be a percentage from 0 to 100");
  }
  settings.mostColorants = maxColorants;
  settings.leastAmount = minAmount / kPercent;
  settings.isWithinRange = withinRange;
  if (withinRange && system.calibrated.IsEmpty())
    throw InputError("--within-range: the colour system has no calibrated ranges");
  settings.calibrated = system.calibrated;
  settings.components.RemoveAll();
  AddUses(require, "--require", CRecipeComponent::kRequired, system, settings);
  AddUses(exclude, "--exclude", CRecipeComponent::kExcluded, system, settings);
  return limits.empty() ? std::vector<uint32_t>() : ReadLimits(limits, system, settings);
}

void AddChoiceOptions(Command& owner, ChoiceOptions& options, RecipePurpose purpose) {
  Command command = owner.Group("Components");
  const bool isRecipe = purpose == RecipePurpose::kRecipe;
  command
      .AddOption("--max-colorants", options.maxColorants,
                 isRecipe ? "Largest number of colorants in a recipe, 1 to 6"
                          : "Largest number of colorants to add, 1 to 5")
      .Shows("N [" + std::to_string(RecipeDefaults::kMostColorants) + "]");
  command
      .AddOption("--require", options.require,
                 isRecipe ? "Components that every recipe must have, by id or name"
                          : "Components that every correction must add, by id or name")
      .Shows("COMPONENT,...");
  command
      .AddOption("--exclude", options.exclude,
                 isRecipe ? "Components that no recipe may have" : "Components that no correction may add")
      .Shows("COMPONENT,...");
  command
      .AddOption(
          "--limits", options.limits,
          isRecipe
              ? "CSV file with columns component and any of min, max (percent of a recipe that has it) and "
                "cost (of one unit)"
              : "CSV file with columns component and cost (of one unit); min and max apply to recipes only")
      .ReadsFile()
      .Shows("FILE");
}

void SearchOptions::Apply(const ColorSystem& colorSystem, CRecipeSettings& settings) const {
  const auto expect = [](bool isGood, const char* what) {
    if (!isGood) throw InputError(what);
  };
  const std::vector<uint32_t> priced = choice.Apply(colorSystem, settings);
  criterion.Apply(colorSystem, system, settings);
  expect(top >= 1 && top <= 10'000, "--top: must be a number from 1 to 10000");
  expect(batchSize > 0.0 && batchSize <= 1e9, "--batch-size: must be a number above 0");
  expect(resolution >= 0.0 && resolution <= batchSize,
         "--resolution: must be a number from 0 to the batch size");
  expect(threads >= 0 && threads <= 1024, "--threads: must be a number from 0 to 1024");
  expect(maxSubsets >= 1.0 && maxSubsets <= 1e15, "--max-subsets: must be a number of 1 or more");
  settings.top = top;
  settings.batchSize = batchSize;
  settings.resolution = resolution;
  settings.threads = static_cast<uint32_t>(threads);
  settings.mostSubsets = static_cast<uint64_t>(maxSubsets);
  TellFree(colorSystem, settings, priced);
}

void AddSearchOptions(Command& owner, SearchOptions& options, RecipePurpose purpose) {
  AddChoiceOptions(owner, options.choice, purpose);
  owner.AddOption("--top", options.top, "Number of answers per target")
      .Shows("N [" + std::to_string(RecipeDefaults::kTop) + "]");
  owner.Group("Amounts")
      .AddOption("--resolution", options.resolution,
                 "Smallest step of the dispenser, in the unit of the amounts")
      .Shows("AMOUNT [0]");
  AddCriterionOptions(owner, options.criterion);
  Command command = owner.Group("Search");
  command.AddOption("--threads", options.threads, "Number of threads; results are the same for any number")
      .Shows("0 to 1024 [0: all cores]");
  command.AddOption("--max-subsets", options.maxSubsets, "Refuse to search more subsets than this")
      .Shows("N [" + std::to_string(RecipeDefaults::kMostSubsets) + "]");
  AddCurveInputOptions(owner, options.input);
  AddFormatOption(owner, options.format);
}

std::string ComponentTitle(const ColorSystem& system, uint32_t id) {
  const CComponent* const component = ComponentOfId(system, id);
  if (component == nullptr) return std::to_string(id);
  const std::string name = component->GetName().ToUtf8(), telling = TellingName(system, *component);
  return telling == name ? name : name + " (" + telling + ")";
}

std::string AmountText(double amount, double batchSize) {
  return TrimmedDecimals(amount, DecimalsFor(batchSize));
}

std::string FormulaText(const CDbFormula& formula, double batchSize) {
  const int decimals = DecimalsFor(batchSize);
  std::string text;
  for (const CDbFormulaElement& line : formula) {
    if (!text.empty()) text += ';';
    text += std::to_string(line.componentId) + ":" + TrimmedDecimals(line.amount, decimals);
  }
  return text;
}

std::string ComponentsText(const CDWordArray1& ids) {
  std::string text;
  for (const uint32_t id : ids) text += (text.empty() ? "" : ";") + std::to_string(id);
  return text;
}

std::string NamedComponentsText(const CDWordArray1& ids, const ColorSystem& system) {
  std::string text;
  for (const uint32_t id : ids) text.append(text.empty() ? "" : ", ").append(ComponentTitle(system, id));
  return text;
}

std::string NamedFormulaText(const CDbFormula& formula, const ColorSystem& system, double batchSize) {
  const int decimals = DecimalsFor(batchSize);
  std::vector<const CDbFormulaElement*> lines;
  for (const CDbFormulaElement& line : formula) lines.push_back(&line);
  std::stable_sort(lines.begin(), lines.end(), [](const CDbFormulaElement* a, const CDbFormulaElement* b) {
    return a->amount > b->amount;
  });
  std::string text;
  for (const CDbFormulaElement* line : lines) {
    text.append(text.empty() ? "" : " + ").append(TrimmedDecimals(line->amount, decimals)).append(" ");
    text.append(ComponentTitle(system, static_cast<uint32_t>(line->componentId)));
  }
  return text;
}

void ReadBackings(const std::string& path, const CurveInputOptions& input, const TakenSpecular& taken,
                  CReflData& black, CReflData& white) {
  CurveReader curves = OpenCurves(path, input);
  CurveRow row;
  int32_t count = 0;
  for (; count < 3 && curves.Next(row); ++count) {
    RefuseOtherSpecular(curves, row, taken);
    (count == 0 ? black : white) = row.curve;
  }
  WarnAboutInput(curves);
  if (count != 2) throw InputError(path + ": expected two curves, the black backing and the white one");
}

}  // namespace vrx::tool
