// Measurements on their way into a file or to standard output, in any of the forms that are written.

#ifndef TOOLS_VRX_OUTPUT_MEASUREMENT_OUTPUT_H_
#define TOOLS_VRX_OUTPUT_MEASUREMENT_OUTPUT_H_

#include <functional>
#include <string>
#include <vector>

#include <vrxio/files/measurement_writer.h>

#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {

/// The form of a new file by its name. Throws InputError for a name that tells none.
ReadOptions::Form FormOfName(const std::string& name);
/// Now, as files have their date of creation.
std::string CreationDate();

/// The form of a new file, as options give it.
struct WritingOptions {
  ReadOptions::Form form = ReadOptions::Form::kByContent;  ///< kByContent: by the name of the file
  bool fraction = false, csvSafe = false, decimalComma = false;
  std::string grid;  ///< "400-700/10"; empty for the measured wavelengths
};
/// The same for the file of that name. Throws InputError for options that its form does not have.
WriteOptions WritingOf(const WritingOptions& options, const std::string& file);

/// Names in a message; many are cut.
std::string Listed(const std::vector<std::string>& names);

/// What came of a conversion: the name of the old file, and what the new one does not keep, by name.
struct Converted {
  std::string source;
  std::vector<std::string> losses;
};
/// Writes measurements, by WriteMeasurements and to where they belong.
using MeasurementSink = std::function<void(MeasurementReader& source, const WriteOptions& writing)>;
/// Reads the file `in` for `write`, which writes the file `out` ("-" for the standard streams). A file takes its own place only if
/// nothing is lost: throws InputError otherwise, before anything is written.
Converted ConvertMeasurements(const std::string& in, const std::string& out, ReadOptions reading,
                              WriteOptions writing, const MeasurementSink& write);

/// Writes the samples of `source` into a file that appears as a whole.
void WriteMeasurementFile(MeasurementReader& source, const WriteOptions& writing, const std::string& path);
/// Writes them to standard output; what a terminal would obey is not shown on one.
void WriteMeasurementOutput(MeasurementReader& source, const WriteOptions& writing);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_MEASUREMENT_OUTPUT_H_
