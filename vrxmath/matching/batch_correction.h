// Correction: what to add to a batch that came out wrong.
//
// Nothing can be taken out of a batch, so a correction is additions only. The batch enters as it was measured, not as its
// formula says: it keeps the scattering that the formula predicts, and its absorption is what its curve then shows.

#ifndef VRXMATH_MATCHING_BATCH_CORRECTION_H_
#define VRXMATH_MATCHING_BATCH_CORRECTION_H_

#include <vrxmath/colorant/colorant_rules.h>
#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/export.h>
#include <vrxmath/matching/recipe_types.h>

namespace vrx {

/// A batch: what went into it, how it came out, and how much of it there is.
struct CBatch {
  CDbFormula formula;   ///< amounts in any one unit; only their proportions count
  CReflData curve;      ///< as measured, percent
  double size = 100.0;  ///< in the unit in which additions are told
};

/// K and S of a batch: S as its formula predicts it, K = K/S of its measured curve times S; both as predicted when the
/// curve is unset. Shares of two-constant models are of the whole batch, of one-constant models of its substrate.
/// False, with `constants` unchanged, when the formula cannot be predicted or gives no scattering.
[[nodiscard]] VRX_API bool BatchConstants(const CColorantSystemData& system, const CBatch& batch,
                                          SaundersonMode mode, CColorantValues& constants);

/// The aim of a correction.
enum class CorrectionAim {
  kSmallest,  ///< the least total of additions that brings the batch into the tolerance
  kCheapest,  ///< the least cost that does
  kNearest,   ///< the nearest colour
};

/// The components that may be added to a batch, how much of them, and to what end.
struct CCorrectionSettings {
  /// Choice, costs and criterion as for recipes; mostColorants counts the additions, 1 to 5. Limits of shares are not used,
  /// nor are the settings of order, batch size and opacity.
  CRecipeSettings recipe;
  double mostAddition =
      RecipeDefaults::kMostAddition;  ///< largest total of additions, as a part of the batch
  CorrectionAim aim = CorrectionAim::kSmallest;
  /// Part of the tolerance that corrections keep in hand where they can, 0 to below 1: a batch that is predicted to lie just
  /// within it fails every other time.
  double margin = 0.0;
  /// Whether components are added that the batch does not have, even where its own reach the tolerance; those that are
  /// required always are.
  bool allowNew = true;
  /// Further components that count as the batch's own, such as one that was forgotten.
  CDWordArray1 own;
};

/// One correction.
struct CCorrection {
  using MovesBitwise = CCorrection;

  CDbFormula additions;       ///< empty: the batch as it is
  double total = 0.0;         ///< of the additions
  CDoubleArray1 differences;  ///< under each illuminant, after the additions
  double worst = kUnset;
  double cost = 0.0;
  bool isWithinTolerance = false;
  CReflData curve;  ///< what the corrected batch is predicted to give, percent
};
using CCorrectionArray = CArrayVarex<CCorrection>;

/// Why CorrectBatch would refuse a batch, its target or the settings, found without solving a subset.
[[nodiscard]] VRX_API RecipeOutcome CheckCorrection(const CColorantSystemData& system,
                                                    const CColorantRulesData& rules, const CBatch& batch,
                                                    const CRecipeTarget& target,
                                                    const CCorrectionSettings& settings);

/// The best corrections of a batch, best first.
/// Out:    at most `top` corrections. A batch within the tolerance needs none: the first one is empty then, unless the
///         nearest colour is asked for. When additions cannot reach the tolerance the nearest ones stand there, so
///         marked; none at all when no addition brings the batch nearer by a thousandth of its difference. Of those
///         that differ by traces only the first stands there. `before`: the batch as it is, with its differences. With
///         a fault both are unchanged.
/// Method: every subset of the colorants that may be added is solved, as for recipes, with the batch as a colorant of
///         which at least 1 / (1 + mostAddition) remains. From the nearest colour of a subset the additions shrink while
///         the differences stay within the tolerance less its margin (a price on the additions, by bisection). Without
///         allowNew the batch's own components are tried first, and the others only when these do not reach the tolerance.
///         The rules count what is in the batch as present.
/// Errors: as FormulateRecipes.
[[nodiscard]] VRX_API RecipeOutcome CorrectBatch(const CColorantSystemData& system,
                                                 const CColorantRulesData& rules, const CBatch& batch,
                                                 const CRecipeTarget& target,
                                                 const CCorrectionSettings& settings, CCorrection& before,
                                                 CCorrectionArray& corrections);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_BATCH_CORRECTION_H_
