// Mixture records: the optical data of a colorant at one or more levels of concentration, and the elements of
// a mixture made of it.

#ifndef VRXMATH_FOUNDATION_MIXTURE_H_
#define VRXMATH_FOUNDATION_MIXTURE_H_

#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/foundation/checked_array.h>
#include <vrxmath/foundation/ks_data.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/platform/archive.h>

namespace vrx {

/// The optical data of a colorant under one measuring geometry: its absorption and scattering, each per unit
/// of concentration. Every sample is 1e-5 when new.
struct VRX_API CColorantValues {
  using MovesBitwise = CColorantValues;

  CKSData absorption;  ///< K
  CKSData scattering;  ///< S

  CColorantValues();

  bool operator==(const CColorantValues&) const = default;

  /// Archive form: 40 values of K, then 40 of S (64 bits each). Throws as CArchive does; the curves are then
  /// unchanged.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 2 * sizeof(double) * kWavelengths;
};

using CColorantValuesArray = CArrayVarex<CColorantValues>;

/// The base of two-constant theory when curves are relative to it: no absorption and the unit of
/// scattering, K = 0 and S = 1 at every wavelength.
[[nodiscard]] VRX_API CColorantValues UnitBase();

/// One calibration step of a colorant: a concentration, 0 to 1, and the curves found there, one entry per
/// measuring geometry.
struct VRX_API CColorantLevel {
  using MovesBitwise = CColorantLevel;

  double concentration = 0.0;
  CColorantValuesArray values;

  CColorantLevel() = default;
  explicit CColorantLevel(int32_t entries) { values.SetSize(entries); }

  bool operator==(const CColorantLevel& other) const {
    return NearlyEqual(concentration, other.concentration) && values == other.values;
  }

  /// Follows a change of the level's concentration from c to c' by rescaling the unit curves of every
  /// geometry with `ratio` = c / c': K' = K c/c', S' = S c/c'. The mixture of two-constant Kubelka-Munk
  /// theory, K = sum of c K and S = sum of c S, then gets the same c K and c S from this colorant as before.
  void RescaleUnitCurves(double ratio);

  /// The same when the colorant takes the place of a base, so that its share of the base shrinks as c grows:
  /// the mixture is (1 - c) K_b + c K = K_b + c (K - K_b), and what the colorant adds over the base,
  /// c (K - K_b) and c (S - S_b), stays as it is when K' = K_b + (K - K_b) c/c' and S' = S_b + (S - S_b)
  /// c/c'.
  void KeepContributionOverBase(double ratio, const CColorantValues& base);

  /// Archive form: concentration (64 bits), count of entries, entries. Throws as CArchive does; the level is
  /// then unchanged.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 10;
};

using CColorantLevelArray = CArrayVarex<CColorantLevel>;

/// One element of a mixture.
struct VRX_API CMixtureElement {
  using MovesBitwise = CMixtureElement;

  /// Four one-bit flags (bits 0 to 3) and a 12-bit remainder; what they mean is the host's.
  uint16_t flags = 0;
  double amount = 0.0;
  CColorantValuesArray values;

  CMixtureElement() = default;
  explicit CMixtureElement(int32_t entries) { values.SetSize(entries); }

  /// Compares the four one-bit flags, the amount and the curves; the remainder of the flag word takes no
  /// part.
  bool operator==(const CMixtureElement& other) const {
    constexpr uint16_t kOneBitFlags = 0xF;
    return ((flags ^ other.flags) & kOneBitFlags) == 0 && NearlyEqual(amount, other.amount) &&
           values == other.values;
  }

  /// Archive form: flag word (16 bits), amount (64 bits), count of entries, entries. Throws as CArchive does;
  /// the element is then unchanged.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 12;
};

/// A colour mixture: its elements in order.
class CMixture : public CArrayVarex<CMixtureElement> {};

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_MIXTURE_H_
