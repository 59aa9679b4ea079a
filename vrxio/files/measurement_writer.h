// Writing measurements in the forms that OpenMeasurements reads.

#ifndef VRXIO_FILES_MEASUREMENT_WRITER_H_
#define VRXIO_FILES_MEASUREMENT_WRITER_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <vrxio/measurement/measurement.h>

namespace vrx::io {

/// How measurements are written.
struct WriteOptions {
  ReadOptions::Form form = ReadOptions::Form::kCsv;  ///< any but kByContent
  /// Wavelengths in nm to which the curves are brought (SpectralResampler); empty for those that were measured.
  std::vector<double> grid;
  bool fraction = false;     ///< CSV and JSON: 0 to 1 instead of percent; CxF3 is always that
  std::string creationDate;  ///< CxF3: of objects without a date, "2024-05-01T12:00:00Z"
};

/// Takes what is written, piece by piece.
using TextSink = std::function<void(std::string_view text)>;

/// Writes all samples of `source`, which must be able to seek. Numbers have the fewest digits that read back to the same
/// double, so that what is written reads back to the same samples.
///
/// Throws InputError when the form cannot hold them: CSV, CGATS and JSON have one list of wavelengths, which a grid gives
/// to samples of several; CxF3 has wavelengths that begin from 360 to 400 nm in whole steps, and reflectances above -10 and
/// below 300 percent.
void WriteMeasurements(MeasurementReader& source, const WriteOptions& options, const TextSink& sink);

}  // namespace vrx::io

#endif  // VRXIO_FILES_MEASUREMENT_WRITER_H_
