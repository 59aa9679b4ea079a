// Films of finite thickness: what a coating shows over a backing, and which coating two readings tell of.
//
// A film absorbs K X and scatters S X over its thickness X. Thick, it hides what is below and only the ratio K/S
// shows; thin, it shows the backing. Reflectances of this header are internal, without the film's surface, where
// they are fractions, and measured where they are curves in percent.

#ifndef VRXMATH_COLORANT_FILM_H_
#define VRXMATH_COLORANT_FILM_H_

#include <array>

#include <vrxmath/colorant/optical_transforms.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/ks_data.h>

namespace vrx {

/// Internal reflectance, as a fraction, of a film over a backing in optical contact.
/// In:      K X and S X of the film, not negative, and the internal reflectance of the backing, 0 to 1.
/// Out:     the backing for K X = S X = 0; the opaque film of K/S where nothing of the backing comes through.
/// Formula: hyperbolic solution (P. Kubelka, J. Opt. Soc. Am. 38, 1948, 448-457), written so that neither end
///          cancels: thin films by tanh(x)/x, thick ones by the share that comes through.
[[nodiscard]] VRX_API double FilmReflectance(double KX, double SX, double backing);

/// The constants of a film by wavelength, from two readings of it, over black and over white.
struct CFilmConstants {
  CKSData absorption;  ///< K X; unset where the film is opaque
  CKSData scattering;  ///< S X; unset where the film is opaque
  CKSData ratio;       ///< K/S, everywhere; at most 4999, that of the darkest internal reflectance
  std::array<bool, kWavelengths> isOpaque{};
};

/// K X and S X of a film from its readings over a black and a white backing and the readings of the bare backings,
/// all measured curves in percent.
/// Formula: the reflectance of a film is a linear fraction of its backing's; two readings give both coefficients,
///          and their inverse hyperbolic tangent the constants (after Kubelka 1948). In closed form.
/// Edges:   where the two readings differ by less than 1 % of the larger, or by less than any film of finite
///          thickness lets through, the film counts as opaque: its K/S is that of the mean reading. Noise that
///          gives a negative K or S counts as 0. Silent for backings that do not differ.
[[nodiscard]] VRX_API CFilmConstants FilmConstants(const CReflData& overBlack, const CReflData& overWhite,
                                                   const CReflData& black, const CReflData& white, double k1,
                                                   double k2,
                                                   SaundersonMode mode = SaundersonMode::kIncluded);

}  // namespace vrx

#endif  // VRXMATH_COLORANT_FILM_H_
