// The common part of the commands that bring batches right: the stock of a file, settings and how a correction is written.

#ifndef TOOLS_VRX_RECIPES_CORRECTION_H_
#define TOOLS_VRX_RECIPES_CORRECTION_H_

#include <functional>
#include <span>
#include <string>
#include <vector>

#include <vrxmath/matching/stock_correction.h>

#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/input/surface_options.h"
#include "tools/vrx/output/color_system_file.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/recipes/recipe_options.h"

namespace vrx::tool {

class Command;
class Option;

/// A batch, what it is called, and what its curve says of it (TakeFound).
struct NamedBatch {
  std::string id;
  CBatch batch;
  std::string suspected = {};  ///< such as "Cobalt Blue: 0 % instead of 4.5 %"; empty of a batch as written
  bool isExplained = true;     ///< false where no single mistake explains its curve
};

/// The batches of a file of curves with the columns `formula` ("1:94;7:1.5", components by id or name) and `amount`.
/// Throws InputError for a row that is not one. What is read here is held against what is `taken`, as RefuseOtherSpecular does.
std::vector<NamedBatch> ReadStock(const std::string& path, const ColorSystem& system,
                                  const CurveInputOptions& input, const TakenSpecular& taken);

/// The recipes of such a file that were made once: their amounts do not matter. `onRow` is given every row behind its recipe;
/// then several may have one id, which is refused otherwise.
std::vector<NamedBatch> ReadMadeRecipes(
    const std::string& path, const ColorSystem& system, const CurveInputOptions& input,
    const TakenSpecular& taken,
    const std::function<void(const CurveReader&, const CurveRow&, const NamedBatch&)>& onRow = {});

/// The only curve of a file. Throws InputError when there is none or more than one.
CReflData ReadOneCurve(const std::string& path, const CurveInputOptions& input, const TakenSpecular& taken);

/// The target of a row, a curve or L*, a*, b*, with the angle at which it was measured. Throws InputError for tristimulus
/// values and for a colour that no surface has.
CRecipeTarget TargetOf(const CurveReader& curves, const CurveRow& row, const SystemOptions& system);

/// The only target of a file, as TargetOf takes it; `viewing` follows the light of its colours. Throws InputError when there is
/// none or more than one.
CRecipeTarget ReadOneTarget(const std::string& path, const CurveInputOptions& input,
                            const SystemOptions& system, const TakenSpecular& taken, ViewingOptions& viewing);

/// The largest value of a curve in percent; 0 of a colour alone.
double LargestOf(const CReflData& curve);
/// Warnings where the curves of batches seem to have another scale than their target's, `--percent` having been said of both.
std::vector<InputWarning> WarnAboutScales(const FileValues& targets, const std::string& file,
                                          std::span<const NamedBatch> batches,
                                          const CurveInputOptions& input);

/// Throws InputError for a choice of more colorants than can be added to a batch.
void CheckAdditions(const ChoiceOptions& choice);

/// A part as `--max-addition` and `--margin` take it, such as "20%".
std::string PercentText(double part);

/// A share of the batch from "20%" or "20". Throws InputError for anything but 0 (excluded) to 10000 percent.
double ParseMostAddition(const std::string& text);

/// Adds `--margin`, whose default is what `margin` has.
Option AddMarginOption(Command& owner, std::string& margin);

/// A part of the tolerance from "25%" or "25". Throws InputError for anything but 0 to 100 (excluded).
double ParseMargin(const std::string& text);

/// `additions,total,dE_before,dE_after_D65 ...,cost,status,suspected`; the last one in a report only with `isSuspected`.
void AddCorrectionColumns(const CRecipeSettings& settings, bool isSuspected, std::vector<Column>& columns);
/// The cells below them of a correction of `batch`, without the end of the row.
void WriteCorrection(const CStockCorrection& correction, const NamedBatch& batch, const ColorSystem& system,
                     RowWriter& rows);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_RECIPES_CORRECTION_H_
