// The data of an illuminant and observer for the batch functions, or an exception before anything is written.

#ifndef VRXMATH_BATCH_BATCH_CONDITIONS_H_
#define VRXMATH_BATCH_BATCH_CONDITIONS_H_

#include <cstdint>

#include <vrxmath/colorimetry/illuminant_registry.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/platform/exceptions.h>

namespace vrx {

/// The weighting table of a pair. Throws CInvalidArgException, without an index message, when it has none.
inline const double* RequireWeightTable(vrxIlluminant illuminant, std::int32_t observer) {
  const bool builtIn = illuminant >= 0 && illuminant < kBuiltInIlluminants;
  const double* table = builtIn ? WeightTable(illuminant, observer)
                                : colorimetry_internal::UserWeightTable(illuminant, observer);
  if (table == nullptr) throw CInvalidArgException();
  return table;
}

/// The white point of a pair and what else it contributes to a formula; throws as RequireWeightTable.
inline Viewing RequireViewing(vrxIlluminant illuminant, std::int32_t observer) {
  RequireWeightTable(illuminant, observer);
  Viewing viewing;
  if (!FindViewing(illuminant, observer, viewing)) throw CInvalidArgException();
  return viewing;
}

}  // namespace vrx

#endif  // VRXMATH_BATCH_BATCH_CONDITIONS_H_
