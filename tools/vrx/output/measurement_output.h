// Measurements on their way into a file or to standard output, in any of the forms that are written.

#ifndef TOOLS_VRX_OUTPUT_MEASUREMENT_OUTPUT_H_
#define TOOLS_VRX_OUTPUT_MEASUREMENT_OUTPUT_H_

#include <string>

#include <vrxio/files/measurement_writer.h>

#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {

/// The form of a new file by its name. Throws InputError for a name that tells none.
ReadOptions::Form FormOfName(const std::string& name);
/// Now, as files have their date of creation.
std::string CreationDate();

/// Writes the samples of `source` into a file that appears as a whole.
void WriteMeasurementFile(MeasurementReader& source, const WriteOptions& writing, const std::string& path);
/// Writes them to standard output; what a terminal would obey is not shown on one.
void WriteMeasurementOutput(MeasurementReader& source, const WriteOptions& writing);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_MEASUREMENT_OUTPUT_H_
