// The difference systems: their numbers, properties, settings, names and column headings.

#ifndef VRXMATH_COLORIMETRY_DIFFERENCE_SYSTEMS_H_
#define VRXMATH_COLORIMETRY_DIFFERENCE_SYSTEMS_H_

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include <vrxmath/colorimetry/values.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/value_range.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// A colour-difference system. The numbers are persistent.
enum vrxDifferenceSystem : int32_t {
  vrxSystemLab = 0,
  vrxSystemCmc = 1,
  vrxSystemHunter = 2,
  vrxSystemFmc2 = 3,
  vrxSystemCie94 = 4,
  vrxSystemLch = 5,
  vrxSystemLuv = 6,
  vrxSystemXyz = 7,
  vrxSystemGePqs2 = 8,
  vrxSystemAudi = 9,
  vrxSystemDin99 = 10,
  vrxSystemCie2000 = 11,
  vrxSystemDin6175 = 12,
  vrxSystemDin99o = 13,
  vrxSystemDin99b = 14,
  vrxSystemDin99c = 15,
  vrxSystemDin99d = 16,
  vrxSystemCam02Ucs = 17,
  vrxSystemCam16Ucs = 18,
  vrxSystemOklab = 19,
  vrxSystemItp = 20,
  vrxSystemHyab = 21,
};
inline constexpr int32_t kDifferenceSystems = 22;

/// The four parameters of a system: l, c, cf for CMC; kL, kC, kH and a total difference for CIE94 and
/// CIE2000; kCH, kE for DIN99; gL, gC, gH for DIN6175. Unused ones are 1.
using DifferenceParameters = std::array<double, 4>;

/// A system with its parameters, as a judgement carries it.
struct CDifferenceSettings {
  int32_t system = vrxSystemLab;
  DifferenceParameters parameters = {1.0, 1.0, 1.0, 1.0};
  /// Whether DIN99 is computed by its own formula (DIN 6176). The dispatch by number otherwise keeps dE*ab under that
  /// name. It says nothing for the other systems.
  bool ownFormula = false;
  bool operator==(const CDifferenceSettings&) const = default;
};

/// Where the number under a coordinate heading stands.
enum class CoordinateSource { kTristimulus, kChromaticity, kCoordinates };

/// A coordinate heading: element `element` of the tristimulus record, of the pair x, y, or of the record of coordinates (for
/// DIN99 that of LabToDin99).
struct CoordinateColumn {
  CoordinateSource source;
  int32_t element;
  bool operator==(const CoordinateColumn&) const = default;
};

/// The properties of a difference system, beside its formula and its texts. The rows are in difference_table.h.
struct DifferenceSystem {
  int32_t number;              ///< a vrxDifferenceSystem
  std::string_view shortName;  ///< in ASCII, as a command line names it: "cmc"
  CoordinateSpace space;       ///< of the coordinates that it compares and shows
  int32_t parameterCount;      ///< how many of the four parameters its name shows
  DifferenceParameters defaults;
  int32_t
      ellipsoidFactor;  ///< the parameter that scales its ellipsoid; kNoEllipsoid for a system without one
  bool inDeltaE;        ///< components and total are of the size of a dE, in which 1.5 is a usual tolerance
  CValueRange componentRange;                      ///< the values that a limit of a component may take
  std::span<const CoordinateColumn> coordinates;   ///< what stands under its coordinate headings
  std::array<std::string_view, 4> parameterNames;  ///< in ASCII, those of the parameters that it has: "kL"
  bool readsXyz = false;                           ///< it compares tristimulus values, not coordinates alone
  bool readsAngle = false;                         ///< its weights depend on the aspecular measuring angle
};
inline constexpr int32_t kNoEllipsoid = -1;

/// All systems, by number.
[[nodiscard]] VRX_API std::span<const DifferenceSystem> DifferenceSystems();
/// The row of a system; null for a number that no system has.
VRX_API const DifferenceSystem* FindDifferenceSystem(int32_t system);

/// A system with the parameters under which it is usually quoted: 2:1 for CMC (acceptability), 1 everywhere
/// else. An unknown system shows the index message.
[[nodiscard]] VRX_API CDifferenceSettings DefaultSettings(int32_t system);

/// How many of the four parameters a system's name shows: 0 for one without parameters.
[[nodiscard]] VRX_API int32_t ParameterCount(int32_t system);

enum class NameLength { kLong, kShort };

/// The display name of a system. A parameterised one is filled with its parameters, two decimals each, with
/// the given decimal separator; without parameters (an empty span) it is cut before them: "CMC". Empty for
/// an unknown system.
[[nodiscard]] VRX_API CString DifferenceSystemName(int32_t system, NameLength length,
                                                   std::span<const double> parameters = {},
                                                   WideChar decimalSeparator = u'.');

/// A parameter as names show it: rounded to two decimals, half away from zero; a zero never has a sign.
[[nodiscard]] VRX_API CString ParameterText(double value, WideChar decimalSeparator = u'.');

/// The lists of columns in which a system is shown.
enum class ColumnList {
  kFull,         ///< coordinates, "||", differences
  kCoordinates,  ///< coordinates alone
  kDifferences,  ///< differences alone
  kComponents,   ///< the differences of the three coordinates and the total
  kTotal,        ///< the total alone
};

/// The headings of a list of columns, separated by "|"; empty for an unknown system.
[[nodiscard]] VRX_API CString ColumnHeadings(int32_t system, ColumnList list);
inline CString DifferenceColumns(int32_t system) {
  return ColumnHeadings(system, ColumnList::kDifferences);
}
inline CString CoordinateColumns(int32_t system) {
  return ColumnHeadings(system, ColumnList::kCoordinates);
}

/// Which elements of the difference record stand under the difference headings of a list, in their order.
[[nodiscard]] VRX_API std::span<const int32_t> DifferenceColumnElements(
    int32_t system, ColumnList list = ColumnList::kDifferences);

/// The elements that stand under the coordinate headings of a system, in their order; none for an unknown system.
[[nodiscard]] VRX_API std::span<const CoordinateColumn> CoordinateColumnElements(int32_t system);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_DIFFERENCE_SYSTEMS_H_
