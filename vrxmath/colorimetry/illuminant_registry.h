// The user illuminants of the process as a list by number: what illuminants.h names and weight_tables.h weighs. Hosts register
// them through user_illuminants.h.

#ifndef VRXMATH_COLORIMETRY_ILLUMINANT_REGISTRY_H_
#define VRXMATH_COLORIMETRY_ILLUMINANT_REGISTRY_H_

#include <array>
#include <cstdint>

#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// The numbers of user illuminants: 1000 to 1255.
inline constexpr int32_t kFirstUserIlluminant = 1000;
inline constexpr int32_t kUserIlluminants = 256;

namespace colorimetry_internal {

/// Whether a number is one of a user illuminant, registered or not.
bool IsUserIlluminant(int32_t number);

/// Whether a user illuminant of that number is registered.
bool IsRegistered(int32_t number);

/// Puts a user illuminant on the list, or replaces it in place. `text`: "code|description"; `tables`: its weights by
/// observer. The number must be one of a user illuminant.
void StoreUserIlluminant(int32_t number, CString text, const std::array<WeightingTable, 2>& tables);

/// Takes a user illuminant off the list.
void DropUserIlluminant(int32_t number);

/// The weighting table of a registered user illuminant, null for any other number.
const double* UserWeightTable(int32_t illuminant, int32_t observer);

/// Its "code|description", empty for any other number.
WideView UserIlluminantText(int32_t illuminant);

}  // namespace colorimetry_internal
}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_ILLUMINANT_REGISTRY_H_
