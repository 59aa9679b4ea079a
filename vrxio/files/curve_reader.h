// Reflectance curves on the library's grid, or colours, from files of any form that OpenMeasurements reads.

#ifndef VRXIO_FILES_CURVE_READER_H_
#define VRXIO_FILES_CURVE_READER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/instrument_profile.h>
#include <vrxmath/colorimetry/weighting.h>

#include <vrxio/csv/csv_reader.h>
#include <vrxio/measurement/measurement.h>
#include <vrxio/measurement/names.h>
#include <vrxio/measurement/wavelength_grid.h>

namespace vrx::io {

/// The measurement of a sample: its curve, or a colour of it under one illuminant and observer.
struct Sample {
  enum Kind { kCurve, kXyz, kLab };
  Kind kind = kCurve;
  CReflData curve;  ///< percent on the library's grid; unset for a colour
  std::vector<double>
      fine;  ///< of a curve that is summed at 5 or 1 nm: percent from 360 to 780 nm; else empty
  std::array<double, 3> color{};  ///< X, Y, Z or L*, a*, b*

  /// The interval in nm at which a curve is summed: 10, 5 or 1.
  int32_t Interval() const {
    return fine.empty() ? kWavelengthStep : (kPowerSamples - 1) / static_cast<int32_t>(fine.size() - 1);
  }
};

/// One sample of a file. The texts live until the next one is read.
struct CurveRow : Sample {
  std::string_view id;  ///< what names the sample: its id, else its name, else the number of its row, from 1
  std::string_view name;
  std::string_view standard;  ///< the id of the standard that it belongs to, where the file says so
  std::string_view date;      ///< of the measurement
  int32_t geometry = kNoGeometry;
  std::span<const std::string> extras;  ///< the texts of the columns that the reader was told to expect
};

/// The kinds of samples that a command can make use of.
enum class Content { kCurves, kCurvesOrColors };

/// Brings the samples of a file to the library's grid.
class CurveReader {
 public:
  /// Takes over an open file. Throws InputError when it does not hold curves or, where they will do, colours. With
  /// `correctsBandpass` the curves are corrected by CorrectBandpass, for which their wavelengths must be even.
  explicit CurveReader(std::unique_ptr<MeasurementReader> source, Content content = Content::kCurves,
                       bool correctsBandpass = false);
  /// The same of a CSV file whose header has been read: one sample a row. `fraction`: reflectances are 0 to 1, not percent.
  CurveReader(CsvReader csv, bool fraction, Content content = Content::kCurves);

  /// Curves come as the reference instrument of a correction would have them, from the next one on; Measured() and
  /// MeasuredCurve() stay what was read. The conditions name it: "corrected by `name`". Throws InputError for a file of colours.
  void CorrectBy(InstrumentProfile correction, const std::string& name);

  /// Curves come with their values at every `interval` nm, 5 or 1, beside those on the library's grid, from the next one on; 10
  /// and a file of colours change nothing. Throws InputError, here and in Next, for wavelengths that are coarser. Not together with
  /// CorrectBy, whose corrections are for the library's grid.
  void SumAt(int32_t interval);

  /// Calls `check` for each sample that is read from now on, which may refuse it (FailRow of Source()).
  void CheckBy(std::function<void(const CurveReader& curves, const CurveRow& row)> check) {
    check_ = std::move(check);
  }

  /// Reads the next sample; false after the last one. Throws InputError for one that is none. Samples without a curve in a
  /// file of curves are passed over and counted.
  bool Next(CurveRow& row);

  /// Goes to a sample by what Offset of Source() said of it, or back to the first one. Samples named by their number keep
  /// their names only from the first one on.
  void SeekTo(uint64_t offset) { source_->SeekTo(offset); }
  void Rewind();

  const MeasurementReader& Source() const { return *source_; }
  /// The kind of the samples.
  Sample::Kind Kind() const { return kind_; }
  /// Of curves.
  const WavelengthGrid& Grid() const { return grid_; }
  /// The grid at whose interval curves are summed.
  const WavelengthGrid& SummedGrid() const { return fineGrid_ ? *fineGrid_ : grid_; }
  /// True when samples have an id or a name, not just a number.
  bool HasNames() const { return source_->HasIds() || source_->HasNames(); }
  bool HasIdsAndNames() const { return source_->HasIds() && source_->HasNames(); }
  bool HasStandards() const { return source_->HasStandards(); }
  bool HasGeometries() const { return source_->HasGeometries(); }
  /// The conditions in which the samples read so far differ, such as "M0 and M2"; empty when they are of the same.
  const std::string& Mixture() const { return mixture_; }
  /// How the first sample was measured, once it was read; of colours from the start on, of a pipe as far as its header says.
  const MeasuringConditions& FirstConditions() const { return first_; }
  /// The geometry that the first sample has of its own, once it was read; kNoGeometry without one.
  int32_t FirstGeometry() const { return firstGeometry_; }
  /// How the last sample was measured, as its file says it and CorrectBy. Valid until the next one.
  const MeasuringConditions& Conditions() const { return conditions_; }
  /// Colours count under this light. Throws InputError, here and in Next, where the file says that they were seen under another
  /// one: what they would be under this one only curves tell.
  void RequireLight(vrxIlluminant illuminant, int32_t observer);
  /// What a user is to know of the file before its curves are used: empty, or that a part of them is guessed.
  std::string GridWarning() const;
  /// What a user is to know of the samples read so far: those without a curve, and mixed conditions.
  std::vector<std::string> SampleWarnings() const;
  /// A person said, in place of the file, that its values are percent: the largest one counts from there on; and whether one did.
  void SayScale() { scaleIsSaid_ = true; }
  bool ScaleIsSaid() const { return scaleIsSaid_; }
  /// The largest value read since SayScale, in percent: a reflectance, or of X, Y, Z; 0 without any.
  double Largest() const { return largest_; }
  /// Samples that were skipped.
  int64_t CountWithoutCurve() const { return withoutCurve_; }
  /// Samples whose values are all 0, as programs write those that were not measured.
  int64_t CountZeros() const { return zeros_; }

  /// The sample of the last row as it was measured: its colours beside its curve, its date, its conditions. It lives until the
  /// next one is read.
  const Measurement& Measured() const { return measured_; }
  /// Its reflectances, corrected for the bandpass where that was asked for.
  std::span<const double> MeasuredCurve() const {
    return correctsBandpass_ ? std::span<const double>(corrected_) : measured_.reflectance;
  }

 private:
  void Start(Content content);
  void UseLayout(const MeasurementLayout& layout);
  void MakeFineGrid();
  void ReadFirstConditions();
  MeasuringConditions WithCorrection(MeasuringConditions conditions) const;
  void TakeCurve(const Measurement& measured, CurveRow& row);

  std::unique_ptr<MeasurementReader> source_;
  std::function<void(const CurveReader& curves, const CurveRow& row)> check_;
  Sample::Kind kind_ = Sample::kCurve;
  WavelengthGrid grid_;
  int32_t interval_ = kWavelengthStep;
  std::optional<WavelengthGrid> fineGrid_;
  const MeasurementLayout* layout_ = nullptr;  // that grid_ is for
  bool correctsBandpass_ = false;
  std::optional<InstrumentProfile> correction_;
  std::string correctionName_;
  int64_t rows_ = 0;
  int64_t withoutCurve_ = 0;
  int64_t zeros_ = 0;
  double largest_ = 0;
  bool scaleIsSaid_ = false;
  MeasuringConditions first_;
  std::string unknownGeometry_;  // a warning of one that is stated and not understood
  int32_t firstGeometry_ = kNoGeometry;
  MeasuringConditions conditions_;  // of the last sample
  MeasuringConditions light_;       // that colours have to be of
  std::string mixture_;
  std::vector<double> corrected_;
  Measurement measured_;
};

}  // namespace vrx::io

#endif  // VRXIO_FILES_CURVE_READER_H_
