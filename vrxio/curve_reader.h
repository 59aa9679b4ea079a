// Reflectance curves, or colours, from CSV files.
//
// The header names the wavelengths in nm ("400", "400 nm"), ascending and evenly spaced, and optionally
// columns `id`, `name`, `standard` and `geometry`, in any order. Each row is one sample, in percent or as a fraction of
// 1. Where the caller can do with colours, columns `L`, `a`, `b` or `X`, `Y`, `Z` may stand in the place of wavelengths.

#ifndef VRXIO_CURVE_READER_H_
#define VRXIO_CURVE_READER_H_

#include <array>
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

/// What was measured of a sample: its curve, or a colour of it under one illuminant and observer.
struct Sample {
  enum Kind { kCurve, kXyz, kLab };
  Kind kind = kCurve;
  CReflData curve;                ///< percent on the library's grid; unset for a colour
  std::array<double, 3> color{};  ///< X, Y, Z or L*, a*, b*
};

/// One sample of a file. The texts live until the next one is read.
struct CurveRow : Sample {
  std::string_view id;  ///< what names the sample: its id, else its name, else the number of its row, from 1
  std::string_view name;
  std::string_view
      standard;  ///< the id of the standard that it belongs to, where the file has a column for it
  int32_t geometry = kNoGeometry;
  std::vector<std::string> extras;  ///< the texts of the columns that the reader was told to expect
};

/// What a command can make use of.
enum class Content { kCurves, kCurvesOrColors };

/// True when a header has a column of a wavelength: when the file holds curves.
bool HasWavelengths(const std::vector<std::string>& header);

class CurveReader {
 public:
  /// Takes over a file whose header has been read. `fraction`: reflectances are 0 to 1, not percent. `isExtra` knows
  /// the headings of further columns, whose texts are a row's extras. Throws InputError when the header does not
  /// describe curves or, where they will do, colours.
  CurveReader(CsvReader csv, bool fraction, Content content = Content::kCurves,
              bool (*isExtra)(std::string_view heading) = nullptr);

  /// Reads the next sample; false after the last one. Throws InputError for a row that is not one.
  bool Next(CurveRow& row);

  /// Goes to a row by what Offset of Csv() said of it, or back to the first one. Rows named by their number
  /// keep their names only from the first one on.
  void SeekTo(uint64_t offset) { csv_.SeekTo(offset); }
  void Rewind();

  const CsvReader& Csv() const { return csv_; }
  /// What the samples are.
  Sample::Kind Kind() const { return kind_; }
  /// Of curves.
  const WavelengthGrid& Grid() const { return grid_; }
  /// True when samples have an id or a name, not just a number.
  bool HasNames() const { return hasIds_ || hasNames_; }
  bool HasIdsAndNames() const { return hasIds_ && hasNames_; }
  bool HasStandards() const { return hasStandards_; }
  bool HasGeometries() const { return hasGeometries_; }
  /// Where the further columns stand, from 0, in the order of a row's extras.
  const std::vector<std::size_t>& ExtraColumns() const { return extraColumns_; }
  /// True when rows were read and none has a value above 1: percent are fractions, perhaps.
  bool LooksLikeFractions() const {
    return rows_ > 0 && kind_ == Sample::kCurve && scale_ == 1.0 && !aboveOne_;
  }

 private:
  enum class Role { kId, kName, kStandard, kGeometry, kExtra, kValues };
  // Neighbouring columns of one role; only values form runs of more than one.
  struct Run {
    Role role;
    std::size_t count;
  };

  void AddColumn(Role role, std::size_t column);
  bool TakeTextColumn(std::size_t column);
  void ReadCurveHeader();
  void ReadColorHeader(const std::array<const char*, 3>& names);
  void MakeGrid(const std::vector<double>& wavelengths);
  void ReadRuns(CurveRow& row);
  int32_t ReadGeometry();
  void CheckValues();

  CsvReader csv_;
  Sample::Kind kind_ = Sample::kCurve;
  WavelengthGrid grid_;
  std::array<std::size_t, 3> colorPlaces_{};  // of each of three colour values in the order of a record
  double scale_;
  bool aboveOne_ = false;
  bool hasIds_ = false;
  bool hasNames_ = false;
  bool hasStandards_ = false;
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
