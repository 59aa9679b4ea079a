// The user illuminants of the process as a list by number: what illuminants.h names and weight_tables.h weighs. Hosts register
// them through user_illuminants.h.

#ifndef VRXMATH_COLORIMETRY_ILLUMINANT_REGISTRY_H_
#define VRXMATH_COLORIMETRY_ILLUMINANT_REGISTRY_H_

#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

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

/// The weights of one illuminant for curves at 5 and 1 nm, by observer, each made when it is first asked for. Safe on any number of
/// threads but for Renew.
class FineTables {
 public:
  FineTables() = default;
  FineTables(const FineTables&) = delete;
  FineTables& operator=(const FineTables&) = delete;
  ~FineTables();

  /// The weights at an interval of 5 or 1 nm; null where they were not asked for before.
  const double* Find(int32_t observer, int32_t interval) const;
  /// Makes them of the illuminant's spectrum; of two threads that do, the first one's stay.
  const double* Make(const SpectralPower& power, int32_t observer, int32_t interval);
  /// Puts the weights of another spectrum in the place of those that were made.
  void Renew(const SpectralPower& power);

 private:
  std::array<std::array<std::atomic<std::vector<double>*>, 2>, 2> made_{};  // by observer, 5 and 1 nm
};

/// What a user illuminant is made of: its spectrum, and its weights at 10 nm by observer.
struct UserLight {
  SpectralPower power;
  std::array<WeightingTable, 2> tables;
};

/// Puts a user illuminant on the list, or replaces it in place. `text`: "code|description". The number must be one of a user
/// illuminant.
void StoreUserIlluminant(int32_t number, CString text, const UserLight& light);

/// Takes a user illuminant off the list.
void DropUserIlluminant(int32_t number);

/// The weighting table of a registered user illuminant, null for any other number.
const double* UserWeightTable(int32_t illuminant, int32_t observer);

/// The spectrum of a registered user illuminant and its weights for finer curves, null for any other number.
const SpectralPower* UserSpectrum(int32_t illuminant);
FineTables* UserFineTables(int32_t illuminant);

/// Its "code|description", empty for any other number.
WideView UserIlluminantText(int32_t illuminant);

}  // namespace colorimetry_internal
}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_ILLUMINANT_REGISTRY_H_
