// Viewing conditions, geometries and difference systems as people name them on a command line and in files. The parsers
// throw InputError for a name that they do not know.

#ifndef VRXIO_MEASUREMENT_NAMES_H_
#define VRXIO_MEASUREMENT_NAMES_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/judging/shade.h>
#include <vrxmath/tolerance/verdict.h>

namespace vrx::io {

/// An illuminant by its code, such as "D65" in any case, by its number: 0 to 25, or that of a registered user
/// illuminant; or by another name that it goes by, such as "TL84", "F11" or "LED-B1".
vrxIlluminant ParseIlluminant(std::string_view text);
/// Observer 0 for "2" (CIE 1931), 1 for "10" (CIE 1964).
int32_t ParseObserver(std::string_view text);
/// A difference system by its number, 0 to 12, or its short name, such as "cie2000"; or by another name that it goes
/// by, such as "dE2000".
int32_t ParseSystem(std::string_view text);

/// The name by which a text that ParseIlluminant takes calls an illuminant, as it is usually spelt: "TL84" for "tl84", "D65" for
/// "d65" and for its number.
std::string NameOfIlluminant(std::string_view text);
/// The code of an illuminant, such as "D65".
std::string CodeOf(vrxIlluminant illuminant);
/// The codes of illuminants as lists have them, "D65,A".
std::string CodesOf(std::span<const vrxIlluminant> illuminants);
/// Degrees of an observer, 2 or 10.
inline int32_t DegreesOf(int32_t observer) {
  return observer == kObserver10 ? 10 : 2;
}
/// The wavelength in nm of a sample of the library's grid.
inline int32_t WavelengthAt(int32_t i) {
  return kFirstWavelength + kWavelengthStep * i;
}
/// The short name by which --system knows a system.
std::string_view ShortNameOf(int32_t system);
/// A system's name with its parameters, as a heading shows it.
std::string TitleOf(const CDifferenceSettings& settings);
/// A shade word as UTF-8; a blank for none.
const std::string& TextOf(ShadeWord word);
/// Shade words as a person says them, "Darker, Less Yellow"; empty where all are none.
std::string JoinedWords(std::span<const ShadeWord> words);
/// A verdict as files and columns have it: "fail", "warning" or "pass".
const char* TextOf(Verdict verdict);
/// A system's difference columns and, for each, the element of the difference record that stands under it.
struct DifferenceColumn {
  std::string heading;
  int32_t element;
};
std::vector<DifferenceColumn> DifferenceColumnsOf(int32_t system);

/// Where a file says nothing about the geometry of a measurement.
inline constexpr int32_t kNoGeometry = -1;
inline constexpr int32_t kUnknownGeometry = -2;
/// The geometry code of a text: a code number, or a name in any case, with "deg" or a degree sign after an
/// angle; kNoGeometry for an empty text and kUnknownGeometry for any other. Such is a number that is the code of one geometry and the
/// degrees of another: instruments with several angles write "15", "25" and "45".
int32_t ParseGeometry(std::string_view text);
/// Why a text that ParseGeometry does not know is none, with what to write: "geometry "15" may be in degrees or the code of SCE/100; write
/// 15deg or SCE/100".
std::string GeometryRefusal(std::string_view text);
/// The name of a geometry; empty for kNoGeometry.
std::string GeometryName(int32_t geometry);
/// The code of the geometry M0, the first of the measurement conditions M0 to M3 (ISO 13655); they follow each other.
inline constexpr int32_t kGeometryM0 = 42;
/// Whether a geometry is one of the measurement conditions M0 to M3, which name a light and leave the angles open.
inline bool IsMeasurementCondition(int32_t geometry) {
  return geometry >= kGeometryM0 && geometry <= kGeometryM0 + 3;
}

/// The finite numbers of a list such as "2,1". Throws InputError, in which `option` says where it stood.
std::vector<double> ParseNumbers(std::string_view text, std::string_view option);

/// The one of `names` that `text` was probably meant for: the nearest in letters changed, added, left out or exchanged,
/// whatever their case, when that is near enough; an empty text when none is.
std::string NearestName(std::string_view text, std::span<const std::string> names);
/// "; did you mean X?" for the nearest name, or an empty text.
std::string DidYouMean(std::string_view text, std::span<const std::string> names);

/// True when two texts are the same apart from the case of ASCII letters.
bool EqualsIgnoringCase(std::string_view a, std::string_view b);

/// The parts of a list, without the blanks about them; one empty part for an empty text.
std::vector<std::string> SplitList(std::string_view text, char separator);

}  // namespace vrx::io

#endif  // VRXIO_MEASUREMENT_NAMES_H_
