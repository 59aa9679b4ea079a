// Batches in stock, each brought to a target by additions.

#ifndef VRXMATH_MATCHING_STOCK_CORRECTION_H_
#define VRXMATH_MATCHING_STOCK_CORRECTION_H_

#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/foundation/typed_arrays.h>
#include <vrxmath/matching/batch_correction.h>

namespace vrx {

/// A batch of a stock and what would be added to it.
struct CStockCorrection {
  using MovesBitwise = CStockCorrection;

  int32_t batch = 0;       ///< its place in the stock
  double size = 0.0;       ///< of the batch
  double before = kUnset;  ///< its largest difference as it is
  CCorrection correction;
  bool helps =
      true;  ///< false: nothing that may be added brings it nearer, and `correction` has no additions
  double part = 0.0;   ///< additions per unit of the batch
  double price = 0.0;  ///< and their cost
};
using CStockCorrectionArray = CArrayVarex<CStockCorrection>;

/// What CorrectBatch answered for one batch, best first; where that is nothing, the batch as it is, marked so.
[[nodiscard]] VRX_API CStockCorrectionArray CorrectionsOf(int32_t batch, double size,
                                                          const CCorrection& before,
                                                          const CCorrectionArray& corrections);

/// Corrects every batch of a stock and puts the answers in order.
/// Out:    at most `top`: within the tolerance first, then by the aim, sums and costs for the size of their batch, so that
///         the largest batch does not come last. Batches that nothing helps are left out, unless none is helped: then the
///         nearest of them stands there. With a fault `corrections` is unchanged.
/// Errors: the first fault of CorrectBatch, in the order of the stock.
[[nodiscard]] VRX_API RecipeOutcome CorrectStock(
    const CColorantSystemData& system, const CColorantRulesData& rules, const CArrayVarex<CBatch>& stock,
    const CRecipeTarget& target, const CCorrectionSettings& settings, CStockCorrectionArray& corrections);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_STOCK_CORRECTION_H_
