// Repeated readings of one sample: their mean, how far they scatter, and which lie apart from the others.

#ifndef TOOLS_VRX_INPUT_READINGS_H_
#define TOOLS_VRX_INPUT_READINGS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/tolerance/repeated_readings.h>

#include <vrxio/files/curve_reader.h>

#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {

/// The readings of one sample, in the order of the file.
struct Readings {
  std::string id, name, standard;  ///< of the first reading
  int32_t geometry = kNoGeometry;
  std::vector<Sample> samples;                ///< all of one kind
  const MeasurementLayout* layout = nullptr;  ///< of the first reading
  /// Of curves: the wavelengths that all readings have, and the sum of the reflectances there. Where readings have other
  /// wavelengths than each other, those of the library's grid that lie within what each of them measured.
  std::vector<double> wavelengths, sums;
  std::string
      mixture;  ///< conditions in which readings differ from the first one, such as "M0 and M2"; mostly empty

  /// A row of the mean, whose texts live in this record.
  CurveRow Mean() const;
  /// The mean reflectances at `wavelengths`.
  std::vector<double> MeasuredMean() const;
};

/// The most readings that a file may have.
inline constexpr std::size_t kMostReadings = 200'000;

/// Reads a file to its end. With `count` 0 the rows of one id and geometry are readings of one sample, wherever they
/// stand; otherwise each `count` rows in turn are. Samples come in the order of their first readings. Throws InputError
/// for more than kMostReadings and for rows left over.
std::vector<Readings> ReadReadings(CurveReader& reader, std::size_t count);

/// How they scatter under the illuminant and observer (StatisticsOfReadings); L*a*b* that was given stays as it is.
ReadingStatistics StatisticsOf(const Readings& readings, vrxIlluminant illuminant, int32_t observer);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_INPUT_READINGS_H_
