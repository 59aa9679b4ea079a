#include "sql/color_functions.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string_view>
#include <vector>

#include <vrxio/measurement/names.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>

namespace vrx::sql {
namespace {

std::optional<Color> ColorOf(const Curve& curve, const std::string& code, std::int32_t observer) {
  const vrxIlluminant illuminant = io::ParseIlluminant(code);
  if (IsUnset(curve[0])) return std::nullopt;
  return ColorsOf(CurveBatch{curve}, vrxSystemLab, {&illuminant, 1}, observer).At(0, 0);
}

void TakeParameters(std::string text, CDifferenceSettings& settings) {
  std::ranges::replace(text, ':', ',');
  const std::vector<double> numbers = io::ParseNumbers(text, "the parameters");
  if (numbers.size() > static_cast<std::size_t>(ParameterCount(settings.system)))
    throw io::InputError("the system has " + std::to_string(ParameterCount(settings.system)) + " parameters");
  std::ranges::copy(numbers, settings.parameters.begin());
}

Judgement JudgementOf(const Curve& standard, const Curve& trial, double tolerance,
                      const Comparison& comparison) {
  JudgeConditions conditions;
  conditions.difference = DefaultSettings(io::ParseSystem(comparison.system));
  conditions.difference.ownFormula = true;
  if (!comparison.parameters.empty()) TakeParameters(comparison.parameters, conditions.difference);
  conditions.illuminants.clear();
  for (const std::string& code : io::SplitList(comparison.illuminants, ','))
    conditions.illuminants.push_back(io::ParseIlluminant(code));
  conditions.observer = comparison.observer;
  const JudgeStandards standards(conditions, CurveBatch{standard}, {TotalLimit(tolerance)});
  JudgementTable table;
  JudgeTrials(conditions, standards, {}, CurveBatch{trial}, table);
  return table.Row(0);
}

JudgementUnder JudgementUnderOne(const Curve& standard, const Curve& trial, const Comparison& comparison) {
  const Judgement judgement =
      JudgementOf(standard, trial, std::numeric_limits<double>::infinity(), comparison);
  if (judgement.under.size() != 1) throw io::InputError("one illuminant is expected");
  return judgement.under.front();
}

}  // namespace

std::optional<Triple> TristimulusOf(const Curve& curve, const std::string& illuminant,
                                    std::int32_t observer) {
  const std::optional<Color> color = ColorOf(curve, illuminant, observer);
  if (!color) return std::nullopt;
  return Triple{color->xyz.X, color->xyz.Y, color->xyz.Z};
}

std::optional<Triple> LabOf(const Curve& curve, const std::string& illuminant, std::int32_t observer) {
  const std::optional<Color> color = ColorOf(curve, illuminant, observer);
  if (!color) return std::nullopt;
  return Triple{color->lab.L, color->lab.a, color->lab.b};
}

std::optional<double> DeltaOf(const Curve& standard, const Curve& trial, const Comparison& comparison) {
  const JudgementUnder judgement = JudgementUnderOne(standard, trial, comparison);
  if (!judgement.available) return std::nullopt;
  return judgement.difference.back();
}

std::optional<std::string> WordsOf(const Curve& standard, const Curve& trial, const Comparison& comparison) {
  const JudgementUnder judgement = JudgementUnderOne(standard, trial, comparison);
  if (!judgement.available) return std::nullopt;
  return io::JoinedWords(judgement.words);
}

std::string VerdictOf(const Curve& standard, const Curve& trial, double tolerance,
                      const Comparison& comparison) {
  constexpr std::array<const char*, 3> kNames = {"fail", "warning", "pass"};
  if (!(tolerance > 0.0)) throw io::InputError("the tolerance must be a number above 0");
  return kNames.at(static_cast<std::size_t>(JudgementOf(standard, trial, tolerance, comparison).Worst()));
}

}  // namespace vrx::sql
