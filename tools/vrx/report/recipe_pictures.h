// The part of a report that shows what was found for targets: swatches, amounts as a table, and curves.

#ifndef TOOLS_VRX_REPORT_RECIPE_PICTURES_H_
#define TOOLS_VRX_REPORT_RECIPE_PICTURES_H_

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/matching/recipe_types.h>

#include "tools/vrx/output/color_system_file.h"
#include "tools/vrx/report/result_report.h"

namespace vrx::tool {

/// One of the answers to a target.
struct FoundRecipe {
  std::string heading;                                         ///< of its column of amounts
  std::vector<std::pair<std::string, std::string>> amounts{};  ///< component and amount
  CReflData curve{};
  double expected = kUnset;  ///< CIEDE2000 by which it may be off
};

/// The lines of a formula by name, amounts as in FormulaText.
std::vector<std::pair<std::string, std::string>> NamedAmounts(const CDbFormula& formula,
                                                              const ColorSystem& system, double batchSize);

/// Shows targets in a report, up to 100 of them and ten answers each.
class RecipePictures {
 public:
  static constexpr std::size_t kMostFound = 10;

  RecipePictures(const CRecipeSettings& settings, const ColorSystem& system, ResultReport& report)
      : settings_(settings), system_(system), report_(report) {}

  /// True where a further target is shown.
  bool IsWanted() const { return report_.IsWanted() && count_ < kMostTargets; }
  /// A target beside the first of what was found for it; without any it is left out.
  void Add(const std::string& id, const CRecipeTarget& target, const std::vector<FoundRecipe>& found);
  /// Says how many targets were left out.
  void Finish(std::size_t targets);

 private:
  static constexpr std::size_t kMostTargets = 100;

  ShownColour ColourOf(const CReflData& curve) const;

  const CRecipeSettings& settings_;
  const ColorSystem& system_;
  ResultReport& report_;
  std::size_t count_ = 0;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_RECIPE_PICTURES_H_
