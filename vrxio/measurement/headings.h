// The meaning of the headings of measurement files, in the spellings of the instruments that write them.

#ifndef VRXIO_MEASUREMENT_HEADINGS_H_
#define VRXIO_MEASUREMENT_HEADINGS_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace vrx::io {

/// The content of a column.
enum class ColumnRole : uint8_t {
  kUnknown,
  kPairWavelength,  ///< SPECTRAL_NM: the wavelength of the value in the next field
  kDevice,          ///< device values, densities, differences: known, and of no use here
  kId,
  kName,
  kStandard,
  kGeometry,
  kDate,
  kExtra,       ///< a column of the caller's own
  kCondition,   ///< a fact of the measurement, for TakeCondition
  kWavelength,  ///< the reflectance at a wavelength
  kColor        ///< a colour value
};

/// Colour values that columns may hold.
enum ColorColumn : uint8_t { kColumnX, kColumnY, kColumnZ, kColumnL, kColumnA, kColumnB, kColumnC, kColumnH };
inline constexpr uint8_t kColorColumns = 8;

/// The meaning of one heading.
struct Heading {
  ColumnRole role = ColumnRole::kUnknown;
  double wavelength = 0;  ///< nm
  uint8_t color = 0;      ///< a ColorColumn
};

/// The wavelength in nm that a heading gives in any usual spelling, such as "400", "400 nm", "nm400", "R400", "%R 400nm",
/// "400 [nm]", "SPECTRAL_NM400", "SPEC_400"; 0 when it gives none. Range: 100 to 10000 nm.
double WavelengthOf(std::string_view heading);

/// The meaning of a heading. Colour values are known as "L", "L*", "LAB_L", "L*(10/D65)" and so on; "X" is not "x".
Heading MeaningOf(std::string_view heading);

/// A text in one spelling: small letters and digits only.
std::string PlainText(std::string_view text);

}  // namespace vrx::io

#endif  // VRXIO_MEASUREMENT_HEADINGS_H_
