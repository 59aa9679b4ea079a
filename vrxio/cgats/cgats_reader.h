// Measurements in CGATS.17 (ISO 28178) text files and their kin: IT8.7, .ti3, .cie.
//
// A file has one or more tables: keywords with values, the names of the fields between BEGIN_DATA_FORMAT and
// END_DATA_FORMAT, rows between BEGIN_DATA and END_DATA. Fields are separated by blanks or tabs and may stand in double
// quotes; where a row does not have as many words as there are fields, tabs alone separate them, so that names may have
// blanks in them. A row may go over several lines if each row does. "#" begins a comment.

#ifndef VRXIO_CGATS_CGATS_READER_H_
#define VRXIO_CGATS_CGATS_READER_H_

#include <memory>
#include <string_view>

#include <vrxio/measurement/measurement.h>
#include <vrxio/text/input_stream.h>

namespace vrx::io {

/// True for the beginning of such a file.
bool IsCgats(std::string_view beginning);

/// Reads an open file up to its first row. Throws InputError when it has no table of curves or colours.
std::unique_ptr<MeasurementReader> ReadCgats(InputStream input, const ReadOptions& options);

}  // namespace vrx::io

#endif  // VRXIO_CGATS_CGATS_READER_H_
