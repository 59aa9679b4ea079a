#include "tools/vrx/report/recipe_pictures.h"

#include <algorithm>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/matching/prediction_error.h>

#include "tools/vrx/recipes/recipe_options.h"

namespace vrx::tool {
namespace {

// A row for each component that any of the answers has, in the order in which they first come.
std::vector<ReportTarget::AmountRow> AmountRows(const std::vector<FoundRecipe>& found) {
  std::vector<ReportTarget::AmountRow> rows;
  for (std::size_t i = 0; i < found.size(); ++i) {
    for (const auto& [component, amount] : found[i].amounts) {
      auto row = std::ranges::find(rows, component, &ReportTarget::AmountRow::component);
      if (row == rows.end())
        row = rows.insert(rows.end(), {component, std::vector<std::string>(found.size())});
      row->amounts[i] = amount;
    }
  }
  return rows;
}

}  // namespace

std::vector<std::pair<std::string, std::string>> NamedAmounts(const CDbFormula& formula,
                                                              const ColorSystem& system, double batchSize) {
  std::vector<std::pair<std::string, std::string>> amounts;
  for (const CDbFormulaElement& line : formula) {
    amounts.emplace_back(ComponentTitle(system, static_cast<uint32_t>(line.componentId)),
                         AmountText(line.amount, batchSize));
  }
  return amounts;
}

ShownColour RecipePictures::ColourOf(const CReflData& curve) const {
  CTrisValues xyz;
  curve.Tristimulus(settings_.illuminants[0], settings_.observer, xyz);
  return Shown(settings_.illuminants[0], settings_.observer, xyz);
}

void RecipePictures::Add(const std::string& id, const CRecipeTarget& target,
                         const std::vector<FoundRecipe>& found) {
  if (!IsWanted()) return;
  ++count_;
  if (found.empty()) return;
  ReportTarget shown;
  shown.id = id;
  shown.nearest = ColourOf(found.front().curve);
  for (const FoundRecipe& each : found) shown.headings.push_back(each.heading);
  shown.amounts = AmountRows(found);
  if (IsUnset(target.curve)) {
    CTrisValues xyz;
    LabToXyz(settings_.illuminants[0], settings_.observer, target.lab, xyz);
    shown.target = Shown(settings_.illuminants[0], settings_.observer, xyz);
    return report_.AddTarget(shown);
  }
  shown.target = ColourOf(target.curve);
  shown.curves.push_back(target.curve);
  for (const FoundRecipe& each : found) shown.curves.push_back(each.curve);
  shown.error = found.front().expected;
  const CExpectedBand band = ExpectedBand(found.front().curve, shown.error, system_.data, settings_.mode,
                                          settings_.illuminants[0], settings_.observer);
  shown.lower = band.lower, shown.upper = band.upper;
  report_.AddTarget(shown);
}

void RecipePictures::Finish(std::size_t targets) {
  if (!report_.IsWanted() || targets <= kMostTargets) return;
  report_.SetNote(
      TextOf(ReportText::kTargetsLeftOut, {std::to_string(kMostTargets), std::to_string(targets)}));
}

}  // namespace vrx::tool
