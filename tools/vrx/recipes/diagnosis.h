// What the curves of batches say is in them, where that is not what their formulas say.

#ifndef TOOLS_VRX_RECIPES_DIAGNOSIS_H_
#define TOOLS_VRX_RECIPES_DIAGNOSIS_H_

#include <string>
#include <vector>

#include <vrxmath/matching/batch_correction.h>

#include "tools/vrx/output/color_system_file.h"
#include "tools/vrx/recipes/correction.h"

namespace vrx::tool {

class Command;
class Option;

/// What a curve says of a component, and what was written, as parts of 1: "4.5 % instead of 0.02 %". Traces have
/// four decimals, but what was hardly found beside more than a trace has two: "0 % instead of 4.5 %".
std::string SuspectedText(double found, double written);

/// Adds `--trust-formula`.
Option AddTrustOption(Command& owner, bool& trustFormula);

/// Finds out what is in a batch and puts it in the place of what was written, with what is suspected. A message tells the
/// evidence. A batch that cannot be predicted is left as it is.
void TakeFound(const ColorSystem& system, const CRecipeSettings& recipe, NamedBatch& named);

/// The same of every batch of the stock of a file. Those that nothing explains are left out, and a last message counts.
/// Returns what was told of single batches. Throws InputError when none is left.
std::vector<std::string> TakeFound(const ColorSystem& system, const CRecipeSettings& recipe,
                                   const std::string& path, std::vector<NamedBatch>& stock);

/// Leaves out the earlier recipes of a library whose curves contradict their formulas: what such a one says of the strength of its
/// colorants is not true. Messages tell them and, last, count them. Returns what was told of single ones. `path`: where they stand, for
/// messages.
std::vector<std::string> LeaveOutContradictions(const ColorSystem& system, const CRecipeSettings& recipe,
                                                const std::string& path, std::vector<NamedBatch>& made);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_RECIPES_DIAGNOSIS_H_
