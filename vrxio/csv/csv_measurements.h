// Measurements in files of comma-separated values, one a row or one a column.

#ifndef VRXIO_CSV_CSV_MEASUREMENTS_H_
#define VRXIO_CSV_CSV_MEASUREMENTS_H_

#include <memory>

#include <vrxio/csv/csv_layout.h>
#include <vrxio/csv/csv_reader.h>
#include <vrxio/measurement/measurement.h>

namespace vrx::io {

/// Reads a file whose header has been read and is that of the usual layout, a sample a row. Throws InputError when it
/// names neither curves nor colours.
std::unique_ptr<MeasurementReader> ReadCsvRows(CsvReader csv, const CsvLayout& layout,
                                               const ReadOptions& options);

/// Reads an open file in whatever layout its beginning tells.
std::unique_ptr<MeasurementReader> ReadCsv(InputStream input, std::string_view beginning,
                                           const ReadOptions& options);

}  // namespace vrx::io

#endif  // VRXIO_CSV_CSV_MEASUREMENTS_H_
