// Writing measurements in the forms that OpenMeasurements reads.

#ifndef VRXIO_FILES_MEASUREMENT_WRITER_H_
#define VRXIO_FILES_MEASUREMENT_WRITER_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
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
  bool csvSafe =
      false;  ///< CSV: an apostrophe goes before texts that a spreadsheet would run (StartsFormula)
  bool decimalComma = false;  ///< CSV: numbers have a comma, semicolons separate
  /// Told, before anything is written, what the form does not hold or the reader passed over, by name; may throw.
  std::function<void(const std::vector<std::string>& losses)> onLosses;
  /// Told how many bytes were read, of twice as many as the file has.
  std::function<void(uint64_t done)> onProgress;
};

/// Conditions as words and texts, in the words that TakeCondition knows; empty texts for what is unknown.
std::vector<std::pair<std::string, std::string>> ConditionTexts(const MeasuringConditions& conditions);

/// Takes what is written, piece by piece.
using TextSink = std::function<void(std::string_view text)>;

/// Writes all samples of `source`, which must be able to seek, with all that it was told to keep of the file
/// (ReadOptions::keepsOthers) and the form can hold. Numbers have the fewest digits that read back to the same
/// double, so that what is written reads back to the same samples.
///
/// Throws InputError when the form cannot hold them: CSV, CGATS and JSON have one list of wavelengths, which a grid gives
/// to samples of several; CxF3 has wavelengths that begin from 360 to 400 nm in whole steps, and reflectances above -10 and
/// below 300 percent.
void WriteMeasurements(MeasurementReader& source, const WriteOptions& options, const TextSink& sink);

}  // namespace vrx::io

#endif  // VRXIO_FILES_MEASUREMENT_WRITER_H_
