// The spectra behind the illuminants: those that standards publish, and those of user illuminants.

#ifndef VRXMATH_COLORIMETRY_ILLUMINANT_SPECTRA_H_
#define VRXMATH_COLORIMETRY_ILLUMINANT_SPECTRA_H_

#include <string_view>

#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/export.h>

namespace vrx {

/// The name of the spectrum behind a built-in illuminant, such as "F11" for TL84 and "Planck 2300 K"; empty for any other number.
[[nodiscard]] VRX_API std::string_view SpectrumName(vrxIlluminant illuminant);

/// The spectrum of such a name at every nanometre: those of ISO/CIE 11664-2 and CIE 15 from their tables every 5 nm, D65 by straight
/// lines and the others by Lagrange's cubic, "A" and "Planck 2300 K" by Planck's formula. False for a name that there is not.
[[nodiscard]] VRX_API bool FindPublishedSpectrum(std::string_view name, SpectralPower& power);

/// The spectrum that the weights of an illuminant are made from, at every nanometre from 360 to 780 nm in units of its own: that of
/// a built-in one, or the one under which a user illuminant is registered. False, without a message, for any other number.
[[nodiscard]] VRX_API bool FindIlluminantSpectrum(vrxIlluminant illuminant, SpectralPower& power);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_ILLUMINANT_SPECTRA_H_
