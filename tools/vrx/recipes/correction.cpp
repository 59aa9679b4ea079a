#include "tools/vrx/recipes/correction.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include <vrxio/text/decimal.h>
#include <vrxmath/foundation/numbers.h>

#include "tools/vrx/base/command_line.h"
#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/input/conditions.h"

namespace vrx::tool {
namespace {

constexpr std::string_view kFormula = "formula", kAmount = "amount";

bool IsStockColumn(std::string_view heading) {
  return EqualsIgnoringCase(heading, kFormula) || EqualsIgnoringCase(heading, kAmount);
}

std::size_t ColumnOf(const CurveReader& curves, std::string_view name, const std::string& path) {
  const std::vector<std::string> headings = curves.Source().ExtraHeadings();
  std::optional<std::size_t> found;
  for (std::size_t i = 0; i < headings.size(); ++i) {
    if (!EqualsIgnoringCase(headings[i], name)) continue;
    if (found) curves.Source().FailExtra(i, "the column appears twice");
    found = i;
  }
  if (!found) throw InputError(path + ": there is no column \"" + std::string(name) + "\"");
  return *found;
}

// "1:94;7:1.5": components, by id or name, and amounts. What is wrong with the text, or nothing.
std::string ParseFormula(std::string_view text, const ColorSystem& system, CDbFormula& formula) {
  constexpr const char* kExpected = "expected a formula such as 1:94;7:1.5";
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(';'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    const std::size_t colon = line.rfind(':');
    CDbFormulaElement element;
    const bool isLine = colon != std::string_view::npos &&
                        ParseDecimal(line.substr(colon + 1), '.', element.amount) && element.amount > 0.0;
    if (!isLine) return kExpected;
    std::string fault;
    const CComponent* const component = FindComponent(system, line.substr(0, colon), fault);
    if (component == nullptr) return fault;
    element.componentId = static_cast<int32_t>(component->GetId());
    formula.Add(element);
  }
  return formula.IsEmpty() ? kExpected : "";
}

// A part of 1 from "20%" or "20".
bool ParsePercent(std::string_view number, double& part) {
  constexpr double kPercent = 100.0;
  if (number.ends_with('%')) number.remove_suffix(1);
  const bool isNumber = ParseDecimal(number, ',', part);
  part /= kPercent;
  return isNumber;
}

// What is told is the id of a batch or of an earlier recipe, which has to say which one is meant.
void RefuseTwice(const CurveReader& curves, std::string_view called, const std::string& id,
                 std::map<std::string, std::string>& places) {
  const auto [earlier, isNew] = places.emplace(id, curves.Source().RowPlace());
  if (isNew) return;
  std::string reason(called);
  curves.Source().FailRow(
      reason.append(" \"").append(id).append("\" appears twice, first in ").append(earlier->second));
}

using RowHandler = std::function<void(const CurveReader&, const CurveRow&, const NamedBatch&)>;

// `called`: what messages call a row whose id another one has; empty where that may be.
std::vector<NamedBatch> ReadBatches(const std::string& path, const ColorSystem& system,
                                    const CurveInputOptions& input, const TakenSpecular& taken,
                                    bool needsAmount, std::string_view called, const RowHandler& onRow) {
  CurveReader curves = OpenCurves(path, input, Content::kCurves, IsStockColumn);
  const std::size_t formula = ColumnOf(curves, kFormula, path);
  const std::size_t amount = needsAmount ? ColumnOf(curves, kAmount, path) : 0;
  std::vector<NamedBatch> stock;
  std::map<std::string, std::string> places;  // of the rows, by id
  CurveRow row;
  while (curves.Next(row)) {
    NamedBatch named{std::string(row.id), {}};
    RefuseOtherSpecular(curves, row, taken);
    if (!called.empty()) RefuseTwice(curves, called, named.id, places);
    named.batch.curve = row.curve;
    if (needsAmount &&
        (!ParseDecimal(row.extras[amount], ',', named.batch.size) || !(named.batch.size > 0.0))) {
      curves.Source().FailExtra(amount, "expected an amount above 0");
    }
    const std::string fault = ParseFormula(row.extras[formula], system, named.batch.formula);
    if (!fault.empty()) curves.Source().FailExtra(formula, fault);
    if (onRow) onRow(curves, row, named);
    stock.push_back(std::move(named));
  }
  WarnAboutInput(curves);
  if (stock.empty()) throw InputError(path + ": there is no row");
  return stock;
}

}  // namespace

std::vector<NamedBatch> ReadStock(const std::string& path, const ColorSystem& system,
                                  const CurveInputOptions& input, const TakenSpecular& taken) {
  return ReadBatches(path, system, input, taken, true, "batch", {});
}

std::vector<NamedBatch> ReadMadeRecipes(const std::string& path, const ColorSystem& system,
                                        const CurveInputOptions& input, const TakenSpecular& taken,
                                        const RowHandler& onRow) {
  return ReadBatches(path, system, input, taken, false, onRow ? "" : "recipe", onRow);
}

CReflData ReadOneCurve(const std::string& path, const CurveInputOptions& input, const TakenSpecular& taken) {
  CurveReader curves = OpenCurves(path, input);
  CurveRow row;
  CReflData curve;
  int count = 0;
  for (; count < 2 && curves.Next(row); ++count) {
    RefuseOtherSpecular(curves, row, taken);
    curve = row.curve;
  }
  WarnAboutInput(curves);
  if (count != 1) throw InputError(path + ": expected exactly one curve");
  return curve;
}

CRecipeTarget TargetOf(const CurveReader& curves, const CurveRow& row, const SystemOptions& system) {
  constexpr double kLargestLightness = 110.0;  // whites that fluoresce lie a little above 100
  CRecipeTarget target;
  target.angles.Add(system.AngleOf(row.geometry));
  if (row.kind == Sample::kCurve) {
    target.curve = row.curve;
    return target;
  }
  if (row.kind != Sample::kLab) curves.Source().FailRow("targets are curves or L*, a*, b*");
  if (!(row.color[0] >= 0.0 && row.color[0] <= kLargestLightness)) {
    curves.Source().FailRow("L* is not within 0 to 110");
  }
  std::copy(row.color.begin(), row.color.end(), target.lab.begin());
  return target;
}

CRecipeTarget ReadOneTarget(const std::string& path, const CurveInputOptions& input,
                            const SystemOptions& system, const TakenSpecular& taken,
                            ViewingOptions& viewing) {
  CurveReader curves = OpenCurves(path, input, Content::kCurvesOrColors);
  viewing.Follow({&curves}, true);
  CurveRow row;
  CRecipeTarget target;
  int count = 0;
  bool isAngleKnown = false;
  for (; count < 2 && curves.Next(row); ++count) {
    RefuseOtherSpecular(curves, row, taken);
    target = TargetOf(curves, row, system);
    isAngleKnown = SystemOptions::HasAngle(row.geometry);
  }
  WarnAboutInput(curves);
  if (count != 1) throw InputError(path + ": expected exactly one curve");
  system.WarnAboutAngle(isAngleKnown);
  return target;
}

double LargestOf(const CReflData& curve) {
  return IsUnset(curve[0]) ? 0 : *std::ranges::max_element(curve);
}

std::vector<InputWarning> WarnAboutScales(const FileValues& targets, const std::string& file,
                                          std::span<const NamedBatch> batches,
                                          const CurveInputOptions& input) {
  if (!input.percent) return {};
  FileValues values{file};
  for (const NamedBatch& named : batches)
    values.largest = std::max(values.largest, LargestOf(named.batch.curve));
  std::vector<InputWarning> warnings = ScaleWarnings(targets, values);
  for (const InputWarning& warning : warnings) PrintMessage(warning.file + ": warning: " + warning.text);
  return warnings;
}

void CheckAdditions(const ChoiceOptions& choice) {
  constexpr int kMost = 5;  // and the batch itself
  if (choice.maxColorants > kMost)
    throw InputError("--max-colorants: for additions it must be a number from 1 to 5");
}

std::string PercentText(double part) {
  return std::to_string(std::lround(100.0 * part)) + "%";
}

double ParseMostAddition(const std::string& text) {
  double part = 0.0;
  if (!ParsePercent(text, part) || !(part > 0.0 && part <= 100.0)) {
    throw InputError("--max-addition: must be a percentage of the batch, above 0 and up to 10000");
  }
  return part;
}

Option AddMarginOption(Command& owner, std::string& margin) {
  return owner.AddOption("--margin", margin, "Share of the tolerance to keep in reserve")
      .Shows("PERCENT [" + margin + "]");
}

double ParseMargin(const std::string& text) {
  double part = 0.0;
  if (!ParsePercent(text, part) || !(part >= 0.0 && part < 1.0)) {
    throw InputError("--margin: must be a percentage of the tolerance, from 0 to below 100");
  }
  return part;
}

void AddCorrectionColumns(const CRecipeSettings& settings, bool isSuspected, std::vector<Column>& columns) {
  columns.insert(columns.end(), {{"additions"}, {"total"}, {"dE_before", "dE before"}});
  for (const vrxIlluminant illuminant : settings.illuminants) {
    columns.push_back({"dE_after_" + ShownIlluminant(illuminant), "dE after " + ShownIlluminant(illuminant)});
  }
  const bool hasCosts = std::any_of(settings.components.begin(), settings.components.end(),
                                    [](const CRecipeComponent& component) { return component.cost > 0.0; });
  columns.push_back({.name = "cost", .inReport = hasCosts});
  columns.push_back({"status"});
  columns.push_back({.name = "suspected", .inReport = isSuspected});
}

void WriteCorrection(const CStockCorrection& correction, const NamedBatch& batch, const ColorSystem& system,
                     RowWriter& rows) {
  const CCorrection& what = correction.correction;
  const Tint tint = !what.isWithinTolerance ? Tint::kBad : batch.isExplained ? Tint::kGood : Tint::kWarning;
  rows.Words(FormulaText(what.additions, correction.size),
             NamedFormulaText(what.additions, system, correction.size));
  rows.Number(what.total);
  rows.Number(correction.before);
  for (const double difference : what.differences) rows.Number(difference, tint);
  rows.Number(what.cost);
  const char* const status = !correction.helps         ? "no addition helps"
                             : !what.isWithinTolerance ? "out of tolerance"
                             : batch.isExplained       ? "ok"
                                                       : "curve not explained";
  rows.Text(status, tint);
  rows.Text(batch.suspected);
}

}  // namespace vrx::tool
