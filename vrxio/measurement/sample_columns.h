// From the columns of a table of measurements, whatever its form, to samples.

#ifndef VRXIO_MEASUREMENT_SAMPLE_COLUMNS_H_
#define VRXIO_MEASUREMENT_SAMPLE_COLUMNS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vrxio/measurement/headings.h>
#include <vrxio/measurement/measurement.h>
#include <vrxio/measurement/value_scale.h>

namespace vrx::io {

/// Why wavelengths are of no use, and the index of the one that it shows at; an empty reason for good ones.
struct WavelengthFault {
  std::size_t index = 0;
  std::string reason;
};

/// Looks at ascending wavelengths in nm. They may be uneven; what is missing between two of them may not be wider than
/// one and a half of the usual step and 5 nm, and the usual step is 0.2 to 20 nm.
WavelengthFault FaultOfWavelengths(std::span<const double> wavelengths);

/// Layouts that are told apart by their address.
class LayoutPool {
 public:
  static constexpr std::size_t kMaxLayouts = 10'000;

  /// The address of an equal layout, which stays; null when there are too many.
  const MeasurementLayout* Intern(const MeasurementLayout& layout);

 private:
  std::deque<MeasurementLayout> layouts_;
};

/// The columns of one table: their meaning, and the sample that a row of them makes.
class SampleColumns {
 public:
  /// Refuses a column, from 0, or with kWholeRow the header or row as a whole; must throw.
  using Fail = std::function<void(std::size_t column, const std::string& reason)>;
  static constexpr std::size_t kWholeRow = static_cast<std::size_t>(-1);

  /// Neighbouring columns of one meaning; only those of wavelengths form runs of more than one.
  struct Run {
    Heading meaning;
    std::size_t column;
    std::size_t count;
    std::size_t place;  ///< of values: where they go
  };

  SampleColumns() = default;
  /// Finds out what the headings mean (MeaningsOf). Unknown ones are refused unless `passOver`, and listed in Unused; where
  /// `options` keep others, they are Others instead.
  SampleColumns(const std::vector<std::string>& headings, const ReadOptions& options, bool passOver,
                Fail fail);

  const std::vector<Run>& Runs() const { return runs_; }
  bool Has(ColumnRole role) const;
  bool HasCurves() const { return !wavelengths_.empty(); }
  bool HasColors() const { return HasXyz() || hasLab_ || hasLch_; }
  const std::vector<double>& Wavelengths() const { return wavelengths_; }
  /// The headings that nothing is made of, with commas; empty when there are none.
  const std::string& Unused() const { return unused_; }
  bool HasXyz() const { return hasXyz_ || hasXyy_; }
  /// What was chosen among the columns, for a note; empty mostly.
  const std::string& Choice() const { return choice_; }
  /// The headings of the columns whose texts are Measurement::others.
  const std::vector<std::string>& Others() const { return otherHeadings_; }
  /// True when a heading has the unit of its values, "%R 400nm": they are percent.
  bool SayPercent() const { return sayPercent_; }
  /// The columns of the caller's own, from 0, in their order.
  const std::vector<std::size_t>& Extras() const { return extraColumns_; }

  /// Begins with the conditions that every row has, before columns of its own; the layout of a first row.
  const MeasurementLayout& Begin(const MeasuringConditions& conditions, const ValueScale& scale);

  /// What is known of a scale that is open: of reflectances, and where there are none of X, Y, Z.
  const ScaleSearch& Scale() const { return search_; }
  /// True for a run whose values are to be read as fractions of 1: reflectances, and X, Y, Z where there are none.
  bool AreFractions(const Run& run) const;

  // A row: the values of its runs, then Finish. Values of fractions, ValueScale::norm 1, are given times a hundred, rounded once.

  /// Where the values of a run go.
  std::span<double> Values(const Run& run) { return std::span(values_).subspan(run.place, run.count); }
  static bool IsText(const Run& run) { return run.meaning.role < ColumnRole::kWavelength; }
  void TakeText(const Run& run, std::string_view text, Measurement& sample);
  /// Makes the sample of the values; `row` counts the rows, from 1.
  void Finish(int64_t row, Measurement& sample);

 private:
  void AddColumn(std::size_t column, const std::string& heading, Heading meaning, bool passOver);
  void AddUnused(std::string_view heading);
  void CheckContent(const std::vector<std::string>& headings, const std::vector<Heading>& meanings) const;
  void FindColors(const std::vector<std::string>& headings);
  std::size_t AddOther(const std::string& heading);
  std::array<double, 3> XyzOfChromaticity() const;
  void SortWavelengths();
  void FindUsed();
  void TakeConditionOfColumn(std::size_t place, MeasuringConditions& conditions) const;
  void FinishCurve(Measurement& sample);
  [[noreturn]] void RefuseValue(std::size_t used) const;
  void FinishColor(Measurement& sample);
  bool IsTristimulus(const Run& run) const;
  void FinishXyz(std::array<double, 3>& xyz);
  double RoughY() const;
  [[noreturn]] void Refuse(std::size_t column, const std::string& reason) const;

  Fail fail_;
  std::vector<Run> runs_;
  std::vector<std::size_t> valueColumns_;  // of each value its column
  std::vector<double> wavelengths_;        // in the order of the columns; ascending after SortWavelengths
  std::vector<std::size_t> order_;         // of the values, when the columns do not ascend
  bool isAscending_ = false;               // the values of all wavelengths lie one after the other
  std::vector<double> values_, sorted_;
  std::size_t firstUsed_ = 0, usedCount_ = 0;  // of the ascending wavelengths
  std::array<std::size_t, kColorColumns> colorPlaces_{};
  std::array<bool, kColorColumns> hasColor_{};
  bool hasIds_ = false;
  bool hasXyz_ = false, hasXyy_ = false, hasLab_ = false, hasLch_ = false;
  bool isLenient_ = false, keepsOthers_ = false;
  std::string unused_, choice_;
  std::vector<std::string> otherHeadings_, others_;
  ValueScale scale_;
  bool sayPercent_ = false;
  ScaleSearch search_;

  LayoutPool layouts_;
  MeasuringConditions light_;  // that headings of colours name
  MeasurementLayout common_;
  std::vector<std::size_t> extraColumns_;
  std::vector<std::string> extras_;
  std::vector<std::string> conditionHeadings_, conditionTexts_;
  std::vector<std::size_t> conditionColumns_;
  bool conditionsChanged_ = true;
  const MeasurementLayout* layout_ = nullptr;
  std::string lastGeometryText_;
  int32_t lastGeometry_ = kNoGeometry;
  std::string rowNumber_;
};

}  // namespace vrx::io

#endif  // VRXIO_MEASUREMENT_SAMPLE_COLUMNS_H_
