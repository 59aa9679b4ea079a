// The meaning of the headings of measurement files, in the spellings of the instruments that write them.

#ifndef VRXIO_MEASUREMENT_HEADINGS_H_
#define VRXIO_MEASUREMENT_HEADINGS_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace vrx::io {

struct MeasuringConditions;

/// The content of a column.
enum class ColumnRole : uint8_t {
  kUnknown,
  kPairWavelength,  ///< SPECTRAL_NM: the wavelength of the value in the next field
  kIgnored,         ///< what the caller does not want
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
enum ColorColumn : uint8_t {
  kColumnX,
  kColumnY,
  kColumnZ,
  kColumnL,
  kColumnA,
  kColumnB,
  kColumnC,
  kColumnH,
  kColumnSmallX,  ///< chromaticity
  kColumnSmallY
};
inline constexpr uint8_t kColorColumns = 10;

/// How surely a column of ids names the samples: the surest one of a table does, the others are passed over. Behind the last of
/// the sure ones stands a column of names.
enum IdRank : uint8_t { kIdByName, kIdOfMaker, kIdOfStandard, kIdOfReading, kIdWithoutName };

/// The meaning of one heading.
struct Heading {
  ColumnRole role = ColumnRole::kUnknown;
  double wavelength = 0;  ///< nm
  uint8_t color = 0;      ///< a ColorColumn
  uint8_t rank = 0;       ///< of an id: an IdRank
};

/// The wavelength in nm that a heading gives in any usual spelling, such as "400", "400 nm", "nm400", "R400", "%R 400nm",
/// "400 [nm]", "SPECTRAL_NM400", "SPEC_400", "4.0E+02"; 0 when it gives none. Range: 100 to 10000 nm.
double WavelengthOf(std::string_view heading);

/// The same where no more than the spelling counts: "R400" and "R5" are alike, "400" and "400 nm" are not.
std::string SpellingOf(std::string_view heading);

/// The remark in brackets at the end of a heading, "(10/D65)" of "L*(10/D65)"; empty without one.
std::string_view RemarkOf(std::string_view heading);

/// Takes up the light that the heading of a colour value names in its remark. Returns what this contradicts `conditions` in, such as
/// "illuminant A and D65"; empty for nothing.
std::string TakeLightOfHeading(std::string_view heading, MeasuringConditions& conditions);

/// True for the counts of a detector, "400 nm [counts]" or "Sample [counts]", from which an instrument makes its reflectances.
bool IsRawCount(std::string_view heading);

/// True for a text that speaks of the power of a light: "Irradiance", "W/m2/nm".
bool IsLightPower(std::string_view text);

/// The meaning of a heading. Colour values are known as "L", "L*", "LAB_L", "L*(10/D65)" and so on; "X" is not "x".
Heading MeaningOf(std::string_view heading);

}  // namespace vrx::io

#endif  // VRXIO_MEASUREMENT_HEADINGS_H_
