// How a file of comma-separated values is laid out: instruments put lines before the header and units below it, and
// wavelengths into columns or into rows.

#ifndef VRXIO_CSV_CSV_LAYOUT_H_
#define VRXIO_CSV_CSV_LAYOUT_H_

#include <string>
#include <string_view>
#include <vector>

#include <vrxio/csv/csv_reader.h>
#include <vrxio/measurement/measurement.h>

namespace vrx::io {

/// The structure of a file, as its beginning tells it.
struct CsvLayout {
  CsvDialect dialect;
  bool wavelengthsInRows = false;
  bool hasUnits = false;                 ///< a record of units follows the header
  bool sayPercent = false;               ///< a unit says that values are percent
  MeasuringConditions conditions;        ///< what stands before the header
  std::vector<std::string> unusedLines;  ///< before the header, which say nothing about the measurement
};

/// Looks at the beginning of a file, as much of it as PeekInput gave. Throws InputError when there are two ways to read it
/// and no option chooses, and for numbers without a header when `options` have no wavelengths for them.
CsvLayout FindCsvLayout(const std::string& name, std::string_view beginning, const ReadOptions& options);

}  // namespace vrx::io

#endif  // VRXIO_CSV_CSV_LAYOUT_H_
