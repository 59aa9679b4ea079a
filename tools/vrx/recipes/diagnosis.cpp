#include "tools/vrx/recipes/diagnosis.h"

#include <algorithm>
#include <cstddef>

#include <vrxio/text/decimal.h>
#include <vrxmath/matching/batch_diagnosis.h>

#include "tools/vrx/base/command_line.h"
#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/recipes/recipe_options.h"

namespace vrx::tool {
namespace {

// A part of 1 in percent, with two decimals at most, or four of a trace.
std::string Percent(double part, bool isTrace) {
  return TrimmedDecimals(100.0 * part, isTrace ? 4 : 2) + " %";
}

std::string SuspicionsText(const CSuspectedAmountArray& suspected, const ColorSystem& system) {
  std::string text;
  for (const CSuspectedAmount& amount : suspected) {
    text.append(text.empty() ? "" : "; ").append(ComponentTitle(system, amount.componentId)).append(": ");
    text.append(SuspectedText(amount.found, amount.written));
  }
  return text;
}

// What is suspected, and on what evidence.
std::string SuspicionMessage(const CBatchDiagnosis& diagnosis, const std::string& suspected,
                             const ColorSystem& system) {
  const std::string other = SuspicionsText(diagnosis.next.suspected, system);
  return " does not seem to match its formula; suspected: " + suspected + ". As written its curve would be " +
         FixedDecimals(diagnosis.asWritten, 2) + " off (CIEDE2000), with the suspicion " +
         FixedDecimals(diagnosis.best.difference, 2) + "; " +
         (diagnosis.isClear ? "the next best" : "not much less likely") + " is " +
         (other.empty() ? "the formula as written" : other) + " (" +
         FixedDecimals(diagnosis.next.difference, 2) + ")";
}

// That nothing explains a curve, as where two rows of a file were exchanged.
std::string ContradictionMessage(const CBatchDiagnosis& diagnosis, const std::string& suspected) {
  return " does not match its formula: its curve is " + FixedDecimals(diagnosis.asWritten, 2) +
         " off (CIEDE2000), and no single mistake explains that; the likeliest (" +
         (suspected.empty() ? "amounts within what weighing leaves open" : suspected) + ") leaves " +
         FixedDecimals(diagnosis.best.difference, 2) +
         ". Make sure that the curve and the formula are those of one batch";
}

// Puts what was found in the place of the formula. What is to be told of the batch; empty of one as written.
std::string Take(const ColorSystem& system, const CRecipeSettings& recipe, NamedBatch& named) {
  const CDiagnosisSettings settings = DiagnosisBefore(recipe, system.calibrated);
  CBatchDiagnosis diagnosis;
  if (!DiagnoseBatch(system.data, named.batch, settings, diagnosis)) return "";  // the search says why
  named.batch.formula = diagnosis.best.formula;
  named.suspected = SuspicionsText(diagnosis.best.suspected, system);
  named.isExplained = diagnosis.isExplained;
  if (!named.isExplained) return ContradictionMessage(diagnosis, named.suspected);
  return named.suspected.empty() ? "" : SuspicionMessage(diagnosis, named.suspected, system);
}

// How many batches of a stock were not taken as written, and what was made of them.
void TellCounts(const std::string& path, std::size_t batches, std::size_t suspected, std::size_t left) {
  if (suspected + left == 0) return;
  const auto are = [](std::size_t count, const char* what) {
    return std::to_string(count) + (count == 1 ? " is " : " are ") + what;
  };
  std::string text = path;
  text.append(": of ").append(std::to_string(batches)).append(" batches ");
  if (suspected > 0) text.append(are(suspected, "taken for what the curve says"));
  if (left > 0) text.append(suspected > 0 ? " and " : "").append(are(left, "left out"));
  text.append("; use --trust-formula to take all by their formulas as written");
  if (left == batches) throw InputError(text);
  PrintMessage(text);
}

}  // namespace

std::string SuspectedText(double found, double written) {
  constexpr double kTrace = 1e-3;  // below it two decimals of a percent leave little of an amount
  return Percent(found, std::max(found, written) < kTrace) + " instead of " +
         Percent(written, written < kTrace);
}

Option AddTrustOption(Command& owner, bool& trustFormula) {
  return owner.AddFlag("--trust-formula", trustFormula,
                       "Believe the formula of a batch, whatever its curve says");
}

void TakeFound(const ColorSystem& system, const CRecipeSettings& recipe, NamedBatch& named) {
  const std::string message = Take(system, recipe, named);
  if (message.empty()) return;
  PrintMessage("the batch" + message + ". Use --trust-formula to correct it by the formula as written");
}

std::vector<std::string> TakeFound(const ColorSystem& system, const CRecipeSettings& recipe,
                                   const std::string& path, std::vector<NamedBatch>& stock) {
  const std::size_t batches = stock.size();
  std::vector<std::string> told;
  std::size_t suspected = 0;
  for (NamedBatch& named : stock) {
    const std::string found = Take(system, recipe, named);
    if (found.empty()) continue;
    if (named.isExplained) ++suspected;
    std::string& text = told.emplace_back("batch \"");
    text.append(named.id).append("\"").append(found).append(named.isExplained ? "" : ". It is left out");
    std::string message = path;
    PrintMessage(message.append(": ").append(text));
  }
  std::erase_if(stock, [](const NamedBatch& named) { return !named.isExplained; });
  TellCounts(path, batches, suspected, batches - stock.size());
  return told;
}

std::vector<std::string> LeaveOutContradictions(const ColorSystem& system, const CRecipeSettings& recipe,
                                                const std::string& path, std::vector<NamedBatch>& made) {
  constexpr std::size_t kMostTold = 12;
  const CDiagnosisSettings settings = DiagnosisBefore(recipe, system.calibrated);
  std::vector<std::string> told;
  const std::size_t left = std::erase_if(made, [&](const NamedBatch& named) {
    CBatchDiagnosis diagnosis;
    if (!ContradictsFormula(system.data, named.batch, settings, diagnosis)) return false;
    if (told.size() == kMostTold) return true;
    const std::string suspected = SuspicionsText(diagnosis.best.suspected, system);
    std::string& text = told.emplace_back("recipe \"");
    text.append(named.id).append("\"");
    text.append(diagnosis.isExplained ? SuspicionMessage(diagnosis, suspected, system)
                                      : ContradictionMessage(diagnosis, suspected));
    text.append(". It is left out");
    std::string message = path;
    PrintMessage(message.append(": ").append(text));
    return true;
  });
  if (left == 0) return told;
  std::string text = path;
  text.append(": of ").append(std::to_string(left + made.size())).append(" earlier recipes ");
  text.append(std::to_string(left)).append(left == 1 ? " is left out" : " are left out");
  PrintMessage(text.append("; use --trust-formula to take all by their formulas as written"));
  return told;
}

}  // namespace vrx::tool
