// A whole file of measurements in memory, column by column: for bindings, whose callers want arrays.

#ifndef VRXIO_FILES_MEASUREMENT_TABLE_H_
#define VRXIO_FILES_MEASUREMENT_TABLE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <vrxio/files/curve_reader.h>
#include <vrxio/measurement/measurement.h>

namespace vrx::io {

/// The samples of a file in its order.
struct MeasurementTable {
  std::vector<std::string> ids;     ///< what names each sample, as CurveRow says
  std::vector<std::string> names;   ///< empty where the file has none
  std::vector<int32_t> geometries;  ///< kNoGeometry where the file says nothing
  std::vector<double> curves;       ///< 40 numbers each, percent on the library's grid
  std::vector<double> xyz;          ///< 3 each; like `lab` and `curves` empty unless all samples have them
  std::vector<double> lab;          ///< L*, a*, b*
  int32_t illuminant =
      -1;  ///< under which the colours were seen, as the first sample says; -1 when it does not
  int32_t observer = -1;           ///< likewise, 0 or 1
  std::string form;                ///< "CSV", "CGATS", "CxF3" or "JSON"
  std::vector<std::string> notes;  ///< what was skipped, and why
  std::vector<std::string>
      warnings;  ///< what may make the numbers other than they look: guessed ends, mixed conditions
};

/// Reads all samples of a file. Throws InputError as OpenMeasurements and CurveReader do.
MeasurementTable ReadMeasurementTable(const std::string& path, const ReadOptions& options = {});

/// The samples of a file some at a time, in memory for those alone.
class MeasurementBlocks {
 public:
  /// Throws InputError as OpenMeasurements and CurveReader do, here and in Next.
  explicit MeasurementBlocks(const std::string& path, const ReadOptions& options = {});

  /// The next samples, `most` of them (1 or more) or as many as are left; false behind the last one. Notes and warnings are of all
  /// that was read so far, and complete with the last block. What makes a file unusable may show at its very end: an error then is
  /// about the blocks before, too.
  bool Next(MeasurementTable& block, std::size_t most);

 private:
  CurveReader reader_;
  bool isAtEnd_ = false;
};

/// Measurements in memory as the readers of files give them: for whatever takes samples one by one. `name` stands for the file in
/// messages. Names, geometries and colours may be empty; a table has curves, or colours, or both, of all samples. Throws InputError
/// for columns of other lengths than that of the ids, and for a table without samples or without numbers.
std::unique_ptr<MeasurementReader> OpenMeasurementTable(MeasurementTable table, std::string name);

}  // namespace vrx::io

#endif  // VRXIO_FILES_MEASUREMENT_TABLE_H_
