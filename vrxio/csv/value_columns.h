// Rows of colour values in CSV files: which columns a header must have, and their values row by row.

#ifndef VRXIO_CSV_VALUE_COLUMNS_H_
#define VRXIO_CSV_VALUE_COLUMNS_H_

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <vrxio/csv/csv_reader.h>
#include <vrxio/measurement/measurement.h>
#include <vrxio/measurement/value_scale.h>

namespace vrx::io {

/// True when a header has every one of the names: as they are spelled, or with stars, blanks, underscores and a remark in
/// brackets, and with D or the Greek letter for a difference, "L*1" for L1 and "DL* (D65)" for dL.
bool HasColumns(const std::vector<std::string>& header, std::initializer_list<std::string_view> names);

/// Reads the rows of a file whose columns are an optional id and numbers by name. Columns of device values and of other
/// differences, such as dE2000, are passed over.
class ValueRows {
 public:
  /// `names`: the columns of numbers, in the order in which Next gives them. The first `required` must exist;
  /// an optional one that does not exist gives 0. Throws InputError for a header with other columns, or with
  /// too few. `csv` must outlive the rows.
  /// `scale`: of the columns whose names begin with X, Y or Z, as of a file of measurements (ReadOptions): by the file they are
  /// percent if one of them comes to 2, and a ScaleError otherwise, here, of a pipe from Next behind the last row. Fractions above
  /// 2 are refused.
  ValueRows(CsvReader& csv, std::vector<std::string_view> names, std::size_t required,
            ReadOptions::Scale scale = ReadOptions::Scale::kPercent);

  /// The next row; false after the last one.
  bool Next();
  /// The row's id, else its number, from 1; valid until the next row.
  std::string_view Id() const { return id_; }
  const std::vector<double>& Values() const { return values_; }
  /// The light that the headings of the numbers name, "X1 (2/A)": of the colours, where they are some. Headings that name different ones
  /// are refused with the header.
  const MeasuringConditions& Light() const { return light_; }

 private:
  void StartColumns(const std::vector<std::string_view>& names);
  bool TakeRow();
  void TakeValue(std::size_t value);

  CsvReader& csv_;
  bool areFractions_;
  ScaleSearch scale_;
  MeasuringConditions light_;
  std::vector<bool> isTristimulus_;      // by value
  std::vector<std::ptrdiff_t> columns_;  // by column: which value it gives, or the id, or nothing
  std::vector<double> values_;
  std::string_view id_;
  std::string rowNumber_;
  int64_t rows_ = 0;
};

}  // namespace vrx::io

#endif  // VRXIO_CSV_VALUE_COLUMNS_H_
