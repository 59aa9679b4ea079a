// Opening files of measurements: one way for every form, which is recognised by the content.

#ifndef VRXIO_FILES_MEASUREMENT_FILES_H_
#define VRXIO_FILES_MEASUREMENT_FILES_H_

#include <istream>
#include <memory>
#include <string>
#include <string_view>

#include <vrxio/measurement/measurement.h>
#include <vrxio/text/input_stream.h>

namespace vrx::io {

/// The form of a file by its first bytes: CxF3 for markup, JSON for an opening bracket or brace, CGATS where a line begins
/// with BEGIN_DATA_FORMAT, else CSV.
ReadOptions::Form FormOf(std::string_view beginning);

/// Opens a file of measurements, or standard input for "-", and reads up to its first sample. Throws InputError with the
/// file, the form that was tried, line and reason.
std::unique_ptr<MeasurementReader> OpenMeasurements(const std::string& path, const ReadOptions& options = {});

/// The same of an open file.
std::unique_ptr<MeasurementReader> OpenMeasurements(InputStream input, const ReadOptions& options = {});

}  // namespace vrx::io

#endif  // VRXIO_FILES_MEASUREMENT_FILES_H_
