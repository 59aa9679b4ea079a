// What makes one instrument read otherwise than another, found from a set of tiles that both measured, and taken out of its
// readings.

#ifndef VRXMATH_COLORIMETRY_INSTRUMENT_PROFILE_H_
#define VRXMATH_COLORIMETRY_INSTRUMENT_PROFILE_H_

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/export.h>

namespace vrx {

/// The faults of an instrument that a correction may have a term for, as bits.
enum InstrumentTerm : std::uint32_t {
  kZeroTerm = 1U << 0U,        ///< a constant: stray light, a black trap
  kScaleTerm = 1U << 1U,       ///< R: the white standard
  kNonlinearTerm = 1U << 2U,   ///< R (1 - R)
  kWavelengthTerm = 1U << 3U,  ///< the slope of the curve: a shift of the wavelengths
  kBandwidthTerm = 1U << 4U,   ///< its curvature: a wider or narrower bandpass
};
inline constexpr std::size_t kInstrumentTerms = 5;

/// A tile whose reading looks like another tile's: two that were exchanged, or one that was read twice.
struct MisplacedTile {
  std::size_t tile = 0, looksLike = 0;  ///< places in the list
  double fromItself = 0.0;    ///< root mean square from its own reference, in percent of reflectance
  double fromTheOther = 0.0;  ///< the same from the reference of the tile that it looks like

  /// A sentence about it, with what the two tiles are called.
  [[nodiscard]] VRX_API static std::string Describe(const MisplacedTile& place, std::string_view tile,
                                                    std::string_view looksLike);
};

/// A correction: at each wavelength of the grid a factor for each term.
class InstrumentProfile {
 public:
  /// The factors at a wavelength, in the order of the terms: of percent for the zero, of fractions of 1 for scale and
  /// non-linearity, in nm for the wavelengths, in nm^2 for the bandwidth. 0 for a term that has none.
  using Factors = std::array<double, kInstrumentTerms>;

  /// Fits reference - other at each wavelength to the terms, by least squares over the tiles, in curves of percent. What the tiles do not tell
  /// apart, such as a shift of the wavelengths by greys alone, gets the factor 0. Formula: Berns and Petersen, Color Res. Appl. 13, 1988,
  /// 243-256, without its stepwise choice of terms.
  /// In:    `terms`: bits of InstrumentTerm, at least one; as many curves of one instrument as of the other.
  /// None for fewer tiles than terms and one more, for unset curves, and for counts or terms that do not fit.
  [[nodiscard]] VRX_API static std::optional<InstrumentProfile> Fit(std::span<const CReflData> reference,
                                                                    std::span<const CReflData> other,
                                                                    std::uint32_t terms);

  /// The fewest tiles for a correction that can be trusted: with one more than terms, leaving one out would leave nothing to see.
  static std::size_t FewestTiles(std::uint32_t terms) {
    return static_cast<std::size_t>(std::popcount(terms)) + 2;
  }

  /// The tiles whose readings look like other tiles: with what the tiles that stand right say about the instrument taken out, they are 0.5
  /// percent and more from their own reference, and nearer than a third of that to another. In the order of the list; up to 2000
  /// tiles are looked at, none of more, and none where Fit would give nothing.
  [[nodiscard]] VRX_API static std::vector<MisplacedTile> FindMisplaced(std::span<const CReflData> reference,
                                                                        std::span<const CReflData> other,
                                                                        std::uint32_t terms);

  /// The profile of factors that were kept, one for each wavelength of the grid, 360 to 750 nm. None for another number of
  /// them and for one that is not finite.
  [[nodiscard]] VRX_API static std::optional<InstrumentProfile> FromFactors(std::span<const Factors> factors);

  /// A reading of the other instrument as the reference would give it.
  [[nodiscard]] VRX_API CReflData Corrected(const CReflData& reading) const;

  std::uint32_t Terms() const { return terms_; }
  /// `wavelength`: of the grid, 0 to 39.
  const Factors& FactorsAt(std::size_t wavelength) const { return factors_[wavelength]; }

 private:
  std::uint32_t terms_ = 0;
  std::vector<Factors> factors_;
};

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_INSTRUMENT_PROFILE_H_
