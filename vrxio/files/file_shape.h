// What a writer has to know of a file before it writes the first sample.

#ifndef VRXIO_FILES_FILE_SHAPE_H_
#define VRXIO_FILES_FILE_SHAPE_H_

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <vrxio/measurement/measurement.h>
#include <vrxio/measurement/value_scale.h>

namespace vrx::io {

/// What a file is like as a whole: what any of its samples has, and what differs among them.
struct FileShape {
  bool hasNames = false, hasStandards = false, hasGeometries = false, hasSampleDates = false;
  bool hasFileDates = false, fileDatesDiffer = false;
  bool lacksDates = false;  ///< of some sample neither it nor its file has one
  bool hasXyz = false, hasLab = false, hasCurves = false;
  std::vector<double> wavelengths;  ///< in nm, that the first curve has
  bool wavelengthsDiffer = false;
  double largest = 0;     ///< reflectance in percent
  double largestXyz = 0;  ///< of X, Y, Z on the scale Y = 100
  int64_t samples = 0;
  /// Whether X, Y, Z could be taken for fractions of 1, so that the file has to say that they are not.
  bool SaysScaleOfXyz() const { return hasXyz && !hasCurves && largestXyz < kSurelyPercent; }
  MeasuringConditions conditions;   ///< of the first sample
  std::vector<bool> hasConditions;  ///< by place in ConditionTexts: some sample's is known
  std::vector<bool> conditionsDiffer;
  std::vector<std::string> others;              ///< headings of the columns that nothing is made of
  bool hasQuotes = false, hasControls = false;  ///< double quotes and line ends in some text

  bool HasDates() const { return hasSampleDates || hasFileDates; }
};

/// The shape of a file, by one pass over its samples; `source`, which must be able to seek, stands at its beginning again.
/// `onProgress`, which may be empty, is told the bytes that were read. Throws InputError as the reader does.
FileShape ShapeOf(MeasurementReader& source, const std::function<void(uint64_t)>& onProgress);

/// The date of a sample, or that of its file; empty when neither is known.
std::string_view DateOf(const Measurement& sample);

}  // namespace vrx::io

#endif  // VRXIO_FILES_FILE_SHAPE_H_
