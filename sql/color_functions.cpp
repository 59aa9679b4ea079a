#include "sql/color_functions.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <map>
#include <string_view>
#include <vector>

#include <vrxio/measurement/names.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/batch/difference_batch.h>

namespace vrx::sql {
namespace {

// A query names the same few illuminants for each of its rows, and looking a name up takes as long as a colour.
vrxIlluminant IlluminantNamed(const std::string& code) {
  constexpr std::size_t kMost = 64;
  thread_local std::map<std::string, vrxIlluminant, std::less<>> known;
  if (const auto found = known.find(code); found != known.end()) return found->second;
  const vrxIlluminant illuminant = io::ParseIlluminant(code);
  if (known.size() < kMost) known.emplace(code, illuminant);
  return illuminant;
}

std::optional<Color> ColorOf(const Curve& curve, const std::string& code, std::int32_t observer) {
  const vrxIlluminant illuminant = IlluminantNamed(code);
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

CDifferenceSettings SettingsOf(const Comparison& comparison) {
  CDifferenceSettings settings = DefaultSettings(io::ParseSystem(comparison.system));
  settings.ownFormula = true;
  if (!comparison.parameters.empty()) TakeParameters(comparison.parameters, settings);
  return settings;
}

// Curves do not say at which angle they were measured, and weights at another one make another verdict.
double AngleOf(const Comparison& comparison) {
  constexpr double kLeast = -45.0, kLargest = 110.0;
  if (comparison.angle.empty()) {
    const DifferenceSystem& system = *FindDifferenceSystem(io::ParseSystem(comparison.system));
    if (system.readsAngle)
      throw io::InputError(std::string(system.shortName) +
                           " depends on the measuring angle: name it behind the parameters, which may be ''");
    return JudgeDefaults::kAngle;
  }
  double angle = 0;
  if (!io::ParseDecimal(comparison.angle, '.', angle) || angle < kLeast || angle > kLargest)
    throw io::InputError("the angle must be from -45 to 110 degrees");
  return angle;
}

Judgement JudgementOf(const Curve& standard, const Curve& trial, double tolerance, double angle,
                      const Comparison& comparison) {
  JudgeConditions conditions;
  conditions.angle = angle;
  conditions.difference = SettingsOf(comparison);
  conditions.illuminants.clear();
  for (const std::string& code : io::SplitList(comparison.illuminants, ','))
    conditions.illuminants.push_back(IlluminantNamed(code));
  conditions.observer = comparison.observer;
  const JudgeStandards standards(conditions, CurveBatch{standard}, {TotalLimit(tolerance)});
  JudgementTable table;
  JudgeTrials(conditions, standards, {}, CurveBatch{trial}, table);
  return table.Row(0);
}

JudgementUnder JudgementUnderOne(const Curve& standard, const Curve& trial, const Comparison& comparison) {
  const Judgement judgement = JudgementOf(standard, trial, std::numeric_limits<double>::infinity(),
                                          JudgeDefaults::kAngle, comparison);
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
  const CDifferenceSettings settings = SettingsOf(comparison);
  const double angle = AngleOf(comparison);
  const std::vector<std::string> codes = io::SplitList(comparison.illuminants, ',');
  if (codes.size() != 1) throw io::InputError("one illuminant is expected");
  const vrxIlluminant illuminant = IlluminantNamed(codes.front());
  if (IsUnset(standard[0]) || IsUnset(trial[0])) return std::nullopt;
  const auto colorsOf = [&](const Curve& curve) {
    return ColorsOf(CurveBatch{curve}, settings.system, {&illuminant, 1}, comparison.observer);
  };
  const ColorTable a = colorsOf(standard), b = colorsOf(trial);
  double total = kUnset;
  TotalDifferenceBatch(settings, angle, a.Batches().front(), b.Batches().front(), {&total, 1});
  return total;
}

std::optional<std::string> WordsOf(const Curve& standard, const Curve& trial, const Comparison& comparison) {
  const JudgementUnder judgement = JudgementUnderOne(standard, trial, comparison);
  if (!judgement.available) return std::nullopt;
  return io::JoinedWords(judgement.words);
}

std::string VerdictOf(const Curve& standard, const Curve& trial, double tolerance,
                      const Comparison& comparison) {
  if (!(tolerance > 0.0)) throw io::InputError("the tolerance must be a number above 0");
  return io::TextOf(JudgementOf(standard, trial, tolerance, AngleOf(comparison), comparison).Worst());
}

}  // namespace vrx::sql
