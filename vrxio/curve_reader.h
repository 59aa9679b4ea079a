// Reflectance curves from CSV files.
//
// The header names the wavelengths in nm ("400", "400 nm"), ascending and evenly spaced, and optionally
// columns `id`, `name` and `geometry`, in any order. Each row is one sample, in percent or as a fraction of
// 1.

#ifndef VRXIO_CURVE_READER_H_
#define VRXIO_CURVE_READER_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/color_records.h>

#include <vrxio/csv_reader.h>
#include <vrxio/names.h>
#include <vrxio/wavelength_grid.h>

namespace vrx::io {

/// One sample of a file. The texts live until the next one is read.
struct CurveRow {
  std::string_view id;  ///< what names the sample: its id, else its name, else the number of its row, from 1
  std::string_view name;
  int32_t geometry = kNoGeometry;
  std::vector<std::string> extras;  ///< the texts of the columns that the reader was told to expect
  CReflData curve;                  ///< percent on the library's grid
};

/// True when a header has a column of a wavelength: when the file holds curves.
bool HasWavelengths(const std::vector<std::string>& header);

class CurveReader {
 public:
  /// Takes over a file whose header has been read. `fraction`: values are 0 to 1, not percent. Throws
  /// InputError when the header does not describe curves.
  CurveReader(CsvReader csv, bool fraction) : CurveReader(std::move(csv), fraction, nullptr) {}
  /// The same for a file that has further columns: those whose heading `isExtra` knows.
  CurveReader(CsvReader csv, bool fraction, bool (*isExtra)(std::string_view heading));

  /// Reads the next sample; false after the last one. Throws InputError for a row that is not one.
  bool Next(CurveRow& row);

  /// Goes to a row by what Offset of Csv() said of it, or back to the first one. Rows named by their number
  /// keep their names only from the first one on.
  void SeekTo(uint64_t offset) { csv_.SeekTo(offset); }
  void Rewind();

  const CsvReader& Csv() const { return csv_; }
  const WavelengthGrid& Grid() const { return grid_; }
  /// True when samples have an id or a name, not just a number.
  bool HasNames() const { return hasIds_ || hasNames_; }
  bool HasIdsAndNames() const { return hasIds_ && hasNames_; }
  bool HasGeometries() const { return hasGeometries_; }
  /// Where the further columns stand, from 0, in the order of a row's extras.
  const std::vector<std::size_t>& ExtraColumns() const { return extraColumns_; }
  /// True when rows were read and none has a value above 1: percent are fractions, perhaps.
  bool LooksLikeFractions() const { return rows_ > 0 && scale_ == 1.0 && !aboveOne_; }

 private:
  enum class Role { kId, kName, kGeometry, kExtra, kValues };
  // Neighbouring columns of one role; only values form runs of more than one.
  struct Run {
    Role role;
    std::size_t count;
  };

  void ReadHeader();
  void AddColumn(Role role, std::size_t column);
  void MakeGrid(const std::vector<double>& wavelengths);
  void ReadRuns(CurveRow& row);
  int32_t ReadGeometry();
  void CheckValues();

  CsvReader csv_;
  WavelengthGrid grid_;
  double scale_;
  bool aboveOne_ = false;
  bool hasIds_ = false;
  bool hasNames_ = false;
  bool hasGeometries_ = false;
  std::vector<Run> runs_;
  std::vector<std::size_t> valueColumns_;
  std::vector<std::size_t> extraColumns_;
  bool (*isExtra_)(std::string_view heading);
  std::vector<double> measured_;
  int64_t rows_ = 0;
  std::string rowNumber_;
  std::string lastGeometryText_;
  int32_t lastGeometry_ = kNoGeometry;
};

}  // namespace vrx::io

#endif  // VRXIO_CURVE_READER_H_
