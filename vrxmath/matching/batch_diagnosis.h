// Diagnosis: what is in a batch whose curve is not the one that its formula gives.

#ifndef VRXMATH_MATCHING_BATCH_DIAGNOSIS_H_
#define VRXMATH_MATCHING_BATCH_DIAGNOSIS_H_

#include <cstdint>

#include <vrxmath/colorant/component_calibration.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/matching/batch_correction.h>

namespace vrx {

/// How a diagnosis is made.
struct CDiagnosisSettings {
  SaundersonMode mode = SaundersonMode::kIncluded;  ///< of the batch's curve
  /// What is known of the system's components, so that an error of the model is not made one of the batch. Half of the
  /// predictions of such a formula are off by PredictionError, at least 0.3, and 1 where nothing is known: what is less
  /// says nothing.
  CComponentCalibrationArray calibrated;
  /// How exactly amounts are weighed, as a part of them.
  double weighing = 0.03;
  /// Under which differences are stated.
  vrxIlluminant illuminant = vrxIllumD65;
  int32_t observer = kObserver10;
};

/// The settings of a diagnosis that goes before a correction: its surface mode, its first illuminant, which must exist, and its
/// observer. `calibrated` says what is known of the system's components, and may be empty.
inline CDiagnosisSettings DiagnosisBefore(const CRecipeSettings& recipe,
                                          const CComponentCalibrationArray& calibrated) {
  CDiagnosisSettings settings;
  settings.mode = recipe.mode;
  settings.illuminant = recipe.illuminants[0];
  settings.observer = recipe.observer;
  settings.calibrated = calibrated;
  return settings;
}

/// A component of which something else seems to be in the batch than was written down. Amounts are parts of the written
/// total, that of an unknown component 0.
struct CSuspectedAmount {
  uint32_t componentId = kNewComponentId;
  double written = 0.0;
  double found = 0.0;
};
using CSuspectedAmountArray = CArrayVarex<CSuspectedAmount>;

/// One way to explain a curve.
struct CBatchExplanation {
  using MovesBitwise = CBatchExplanation;

  CSuspectedAmountArray suspected;  ///< empty: the formula as written, within what weighing leaves open
  CDbFormula formula;               ///< what is in the batch then, in the unit of the written formula
  double difference = kUnset;       ///< CIEDE2000 between the curve and what this formula gives
  double doubt = 0.0;  ///< squares of what remains, in units of what is expected, and a price per suspicion
};

/// What a curve says of a batch.
struct CBatchDiagnosis {
  CBatchExplanation best;
  CBatchExplanation next;     ///< the second best, with other components
  double asWritten = kUnset;  ///< CIEDE2000 between the curve and what the formula as written gives
  bool isClear = false;  ///< true when the second best is much less likely, by a likelihood ratio of some 100
  /// False where even the best leaves more than three times what half of the predictions are off by, at least 3: no single
  /// mistake explains such a curve, and it may be that of another batch.
  bool isExplained = false;
};

/// Explains the curve of a batch by its formula: amounts are free around those that were written down, one or two of the
/// batch's own components may have any amount, also none, and any one other component of the system may have been put in,
/// beside them or in the place of one. Of all these the explanation is taken that leaves the least, at a price for each
/// component that is suspected, so that an error of the model or of the instrument is not made one of the batch; one that
/// does not bring the colour nearer by three tenths of the difference is not taken, and an amount that changes it by less than
/// 0.05 CIEDE2000 is no suspicion. Of a two-constant batch the total is bound to half of what was written, since its curve says
/// nothing of it.
/// Method: for each combination least squares of reflectance from 400 to 700 nm by Gauss-Newton steps, from the linear
///         solution at the K/S of the curve on, amounts not negative. In each the curves of a component are those at its
///         written share.
/// False, with `diagnosis` unchanged, when the curve is unset, the formula cannot be predicted or weighing is not above 0.
[[nodiscard]] VRX_API bool DiagnoseBatch(const CColorantSystemData& system, const CBatch& batch,
                                         const CDiagnosisSettings& settings, CBatchDiagnosis& diagnosis);

/// Whether the curve of a batch contradicts its formula, so that nothing can be learned of other batches from the two: it is off by
/// more than isExplained allows, and not because colorants of the formula are stronger or weaker than calibrated, as lots
/// are, by half more or a third less at most. `diagnosis` says then what is there instead, and is unchanged otherwise. A batch that
/// cannot be diagnosed contradicts nothing.
[[nodiscard]] VRX_API bool ContradictsFormula(const CColorantSystemData& system, const CBatch& batch,
                                              const CDiagnosisSettings& settings, CBatchDiagnosis& diagnosis);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_BATCH_DIAGNOSIS_H_
