// Illuminants and observers: the numbers by which a host names them and the texts under which a user sees
// them.

#ifndef VRXMATH_COLORIMETRY_ILLUMINANTS_H_
#define VRXMATH_COLORIMETRY_ILLUMINANTS_H_

#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/foundation/typed_arrays.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// An illuminant. The numbers are persistent: they name the weighting tables and stand in records of hosts.
/// 26 to 30 are reserved and have no table; user illuminants have numbers of their own (vrxUserIllum).
enum vrxIlluminant : int32_t {
  vrxIllumA = 0,    ///< tungsten
  vrxIllumC = 1,    ///< north sky daylight
  vrxIllumD65 = 2,  ///< daylight 6500 K
  vrxIllumCWF = 3,  ///< cool white fluorescent, F2
  vrxIllumT84 = 4,  ///< TL84, F11
  vrxIllumD50 = 5,
  vrxIllumD55 = 6,
  vrxIllumD75 = 7,
  vrxIllumU50 = 8,  ///< triphosphor 5000 K
  vrxIllumU30 = 9,  ///< triphosphor 3000 K, F12
  vrxIllumF6 = 10,
  vrxIllumF7 = 11,
  vrxIllumF8 = 12,
  vrxIllumF10 = 13,
  vrxIllumH23 = 14,  ///< horizon 2300 K
  vrxIllumHM = 15,   ///< horizon
  vrxIllumF4 = 16,
  vrxIllumLB1 = 17,  ///< LED-B1 to LED-B5
  vrxIllumLB2 = 18,
  vrxIllumLB3 = 19,
  vrxIllumLB4 = 20,
  vrxIllumLB5 = 21,
  vrxIllumLH = 22,   ///< LED-BH1
  vrxIllumL3 = 23,   ///< LED-RGB1
  vrxIllumLV1 = 24,  ///< LED-V1
  vrxIllumLV2 = 25,  ///< LED-V2
};

/// Illuminants with a built-in weighting table: 0 to 25.
inline constexpr int32_t kBuiltInIlluminants = 26;
/// Illuminant numbers with a description, the five reserved ones included.
inline constexpr int32_t kIlluminantNumbers = 31;

/// Observers: 0 is the CIE 1931 standard observer (2 degrees), 1 the CIE 1964 one (10 degrees).
inline constexpr int32_t kObserver2 = 0;
inline constexpr int32_t kObserver10 = 1;

/// A list of illuminants. A new one holds three entries.
class CIllumArray : public CArrayVarex<vrxIlluminant, vrxIlluminant> {
 public:
  CIllumArray() { SetSize(3); }
};

/// The code of an illuminant, such as "D65"; "None" for a reserved number, empty for one that nobody has.
[[nodiscard]] VRX_API CString IlluminantCode(vrxIlluminant illuminant);

/// How IlluminantName puts code, description and observer together.
enum IlluminantNameStyle : int32_t {
  kNameDashObserver = 0,          ///< "D65 - 10 degrees", with the degree sign
  kNameSlashObserver = 1,         ///< "D65/10 degrees"; so does every style not listed here
  kNamePrefixed = 2,              ///< "Illuminant D65"
  kNameCode = 4,                  ///< "D65"
  kNamePrefixedDashObserver = 5,  ///< "Illuminant D65 - 10 degrees"
  kNameObserver = 6,              ///< "10 degrees"
  kNameDescription = 7,           ///< the description alone
};

/// The display text of an illuminant and observer in one of the styles above. An observer other than 1
/// reads as 2 degrees. A reserved illuminant is "None" in every style but kNameObserver; a number that nobody
/// has is empty. User illuminants have the code and description under which they were registered.
[[nodiscard]] VRX_API CString IlluminantName(vrxIlluminant illuminant, int32_t observer, int32_t style);

/// The built-in illuminants in the order in which a user is offered them, which is not the numeric one.
[[nodiscard]] VRX_API CIllumArray IlluminantDisplayOrder();

/// The built-in or user illuminant of a code, compared without case ("d65"); false when there is none.
[[nodiscard]] VRX_API bool FindIlluminant(WideView code, vrxIlluminant& illuminant);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_ILLUMINANTS_H_
