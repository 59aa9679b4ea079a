// Measurements in JSON: a list of objects, one a sample, as the tool writes them. The members of an object are named as the
// columns of a CSV file are.

#ifndef VRXIO_JSON_JSON_MEASUREMENTS_H_
#define VRXIO_JSON_JSON_MEASUREMENTS_H_

#include <memory>
#include <string_view>

#include <vrxio/measurement/measurement.h>
#include <vrxio/text/input_stream.h>

namespace vrx::io {

/// True for the beginning of a list or an object.
bool IsJson(std::string_view beginning);

/// Reads an open file up to its first sample. Throws InputError when it is no list of objects or they hold neither curves
/// nor colours.
std::unique_ptr<MeasurementReader> ReadJson(InputStream input, const ReadOptions& options);

}  // namespace vrx::io

#endif  // VRXIO_JSON_JSON_MEASUREMENTS_H_
