#include <vrxmath/matching/stock_correction.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace vrx {
namespace {

// Puts what the batches need in order and leaves what is asked for.
CStockCorrectionArray Ordered(std::vector<CStockCorrection> all, const CCorrectionSettings& settings) {
  const auto keyOf = [&](const CStockCorrection& each) {
    const bool isByColor = !each.correction.isWithinTolerance || settings.aim == CorrectionAim::kNearest;
    if (isByColor) return std::floor(1e8 * each.correction.worst);  // below 1e-8 a difference is rounding
    return settings.aim == CorrectionAim::kCheapest ? each.price : each.part;
  };
  const auto isNoHelp = [](const CStockCorrection& each) { return !each.helps; };
  const bool isAnyHelp = !std::all_of(all.begin(), all.end(), isNoHelp);
  if (isAnyHelp) all.erase(std::remove_if(all.begin(), all.end(), isNoHelp), all.end());
  std::stable_sort(all.begin(), all.end(), [&](const CStockCorrection& a, const CStockCorrection& b) {
    if (a.correction.isWithinTolerance != b.correction.isWithinTolerance) {
      return a.correction.isWithinTolerance;
    }
    return keyOf(a) != keyOf(b) ? keyOf(a) < keyOf(b) : a.part < b.part;
  });
  const int32_t most = isAnyHelp ? settings.recipe.top : 1;
  CStockCorrectionArray first;
  for (const CStockCorrection& each : all) {
    if (first.GetSize() < most) first.Add(each);
  }
  return first;
}

}  // namespace

CStockCorrectionArray CorrectionsOf(int32_t batch, double size, const CCorrection& before,
                                    const CCorrectionArray& corrections) {
  CStockCorrectionArray found;
  for (const CCorrection& correction : corrections) {
    found.Add({batch, size, before.worst, correction, true, correction.total / size, correction.cost / size});
  }
  // An array of one without additions is a batch that needs none; an empty one is a batch that none helps.
  if (found.IsEmpty()) {
    found.Add({batch, size, before.worst, before, before.isWithinTolerance, 0.0, 0.0});
  }
  return found;
}

RecipeOutcome CorrectStock(const CColorantSystemData& system, const CColorantRulesData& rules,
                           const CArrayVarex<CBatch>& stock, const CRecipeTarget& target,
                           const CCorrectionSettings& settings, CStockCorrectionArray& corrections) {
  std::vector<CStockCorrection> all;
  RecipeOutcome outcome;
  CCorrectionSettings own = settings;
  const double count = stock.GetSize();
  for (int32_t i = 0; i < stock.GetSize(); ++i) {
    if (settings.recipe.progress) {
      own.recipe.progress = [&, i](double part) { return settings.recipe.progress((i + part) / count); };
    }
    CCorrection before;
    CCorrectionArray found;
    const RecipeOutcome each = CorrectBatch(system, rules, stock[i], target, own, before, found);
    if (each.fault != RecipeFault::kNone) return each;
    outcome.subsets += each.subsets;
    for (const CStockCorrection& correction : CorrectionsOf(i, stock[i].size, before, found))
      all.push_back(correction);
  }
  corrections = Ordered(all, settings);
  return outcome;
}

}  // namespace vrx
