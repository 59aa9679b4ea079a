#include <vrxio/csv/csv_measurements.h>

#include <algorithm>
#include <charconv>
#include <utility>
#include <vector>

#include <vrxio/measurement/headings.h>
#include <vrxio/measurement/sample_columns.h>
#include <vrxio/text/input_error.h>

namespace vrx::io {
namespace {

using Scale = ReadOptions::Scale;

const Measurement kNothing;  // copied, which costs less than to be made

ValueScale ScaleOf(const ReadOptions& options) {
  const bool isFraction = options.scale == Scale::kFraction;
  return {isFraction ? 1.0 : 100.0, isFraction, options.force};
}

// The part that both layouts share: a file that is a table.
class CsvMeasurements : public MeasurementReader {
 public:
  CsvMeasurements(CsvReader csv, const CsvLayout& layout, const ReadOptions& options)
      : csv_(std::move(csv)),
        conditions_(layout.conditions),
        scale_(ScaleOf(options)),
        knowsScale_(options.scale != Scale::kByFile) {
    if (layout.hasUnits) csv_.SkipRecord();
    if (layout.unusedLines > 0) {
      Note(std::to_string(layout.unusedLines) + " lines before the header say nothing about the measurement");
    }
  }

  std::string_view FormName() const override { return "CSV"; }
  bool KnowsScale() const override { return knowsScale_; }
  const std::string& Name() const override { return csv_.Name(); }
  uint64_t Size() const override { return csv_.Size(); }
  uint64_t Position() const override { return csv_.Position(); }
  std::string RowPlace() const override { return csv_.Place(); }

 protected:
  CsvReader csv_;
  MeasuringConditions conditions_;
  ValueScale scale_;
  bool knowsScale_;
};

class CsvRows final : public CsvMeasurements {
 public:
  CsvRows(CsvReader csv, const CsvLayout& layout, const ReadOptions& options)
      : CsvMeasurements(std::move(csv), layout, options),
        columns_(csv_.Header(), options, false,
                 [this](std::size_t column, const std::string& reason) {
                   column == SampleColumns::kWholeRow ? csv_.FailRow(reason) : csv_.FailAt(column, reason);
                 }),
        layout_(columns_.Begin(conditions_, scale_)) {
    if (!columns_.Unused().empty()) Note("columns that are not used: " + columns_.Unused());
  }

  bool Next(Measurement& sample) override {
    if (!csv_.Next()) {
      if (rows_ == 0) throw InputError(csv_.Name() + ": there is no row");
      return false;
    }
    ++rows_;
    sample = kNothing;
    for (const SampleColumns::Run& run : columns_.Runs()) {
      if (run.meaning.role == ColumnRole::kDevice) {
        csv_.Text();
      } else if (SampleColumns::IsText(run)) {
        columns_.TakeText(run, csv_.Text(), sample);
      } else {
        csv_.Numbers(columns_.Values(run));
      }
    }
    csv_.EndRecord();
    columns_.Finish(rows_, sample);
    return true;
  }

  const MeasurementLayout& FirstLayout() const override { return layout_; }
  bool HasIds() const override { return columns_.Has(ColumnRole::kId); }
  bool HasNames() const override { return columns_.Has(ColumnRole::kName); }
  bool HasStandards() const override { return columns_.Has(ColumnRole::kStandard); }
  bool HasGeometries() const override { return columns_.Has(ColumnRole::kGeometry); }
  bool HasXyz() const override { return columns_.HasXyz(); }
  std::vector<std::string> ExtraHeadings() const override {
    std::vector<std::string> headings;
    for (const std::size_t column : columns_.Extras()) headings.push_back(csv_.Header()[column]);
    return headings;
  }
  std::string ExtraPlace(std::size_t extra) const override { return csv_.PlaceAt(columns_.Extras()[extra]); }
  uint64_t Offset() const override { return csv_.Offset(); }
  bool CanSeek() const override { return csv_.CanSeek(); }
  void SeekTo(uint64_t offset) override { csv_.SeekTo(offset); }
  void Rewind() override {
    csv_.Rewind();
    rows_ = 0;
  }

 private:
  SampleColumns columns_;
  const MeasurementLayout& layout_;
  int64_t rows_ = 0;
};

// The wavelengths stand in the first column: the whole table is held.
class CsvColumns final : public CsvMeasurements {
 public:
  static constexpr std::size_t kMaxValues = std::size_t{1} << 24;

  CsvColumns(CsvReader csv, const CsvLayout& layout, const ReadOptions& options)
      : CsvMeasurements(std::move(csv), layout, options) {
    ReadTable();
    std::vector<std::string> headings{"id"};
    for (const double nm : wavelengths_) {
      char text[32];
      headings.emplace_back(text, std::to_chars(text, text + sizeof text, nm).ptr);
    }
    columns_ =
        SampleColumns(headings, ReadOptions(), false,
                      [this](std::size_t column, const std::string& reason) { FailSample(column, reason); });
    layout_ = &columns_.Begin(conditions_, scale_);
  }

  bool Next(Measurement& sample) override {
    if (next_ == csv_.Header().size()) return false;
    sample = Measurement();
    id_ = csv_.Header()[next_];
    if (id_.empty()) id_ = std::to_string(next_);
    columns_.TakeText(columns_.Runs()[0], id_, sample);
    const std::span<double> values = columns_.Values(columns_.Runs()[1]);
    const std::size_t samples = csv_.Header().size() - 1;
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = table_[i * samples + next_ - 1];
    columns_.Finish(static_cast<int64_t>(next_), sample);
    ++next_;
    return true;
  }

  const MeasurementLayout& FirstLayout() const override { return *layout_; }
  bool HasIds() const override { return true; }
  bool HasNames() const override { return false; }
  bool HasXyz() const override { return false; }
  uint64_t Offset() const override { return next_ - 1; }
  bool CanSeek() const override { return true; }
  void SeekTo(uint64_t offset) override { next_ = static_cast<std::size_t>(offset); }
  void Rewind() override { next_ = 1; }

 private:
  void ReadTable() {
    if (csv_.Header().size() < 2) csv_.FailRow("there is no column of values beside the wavelengths");
    std::vector<double> values(csv_.Header().size() - 1);
    while (csv_.Next()) {
      wavelengths_.push_back(WavelengthOf(csv_.Text()));
      if (wavelengths_.back() == 0) csv_.Fail("a wavelength in nm is expected");
      if (table_.size() + values.size() > kMaxValues)
        csv_.FailRow("more than 16 million values by rows of wavelengths");
      csv_.Numbers(values);
      csv_.EndRecord();
      table_.insert(table_.end(), values.begin(), values.end());
    }
  }

  // Faults of a sample, whose values stand one below the other; of a wavelength before the first one was read.
  [[noreturn]] void FailSample(std::size_t column, const std::string& reason) const {
    const bool isValue = column != SampleColumns::kWholeRow && column > 0;
    const std::string at =
        isValue ? " at " + std::to_string(wavelengths_[column - 1]) + " nm" : std::string();
    throw InputError(csv_.Name() + ", column " + std::to_string(next_ + (layout_ != nullptr ? 1 : 0)) + at +
                     ": " + reason);
  }

  std::vector<double> wavelengths_;
  std::vector<double> table_;  // by wavelength, then by sample
  SampleColumns columns_;
  const MeasurementLayout* layout_ = nullptr;
  std::size_t next_ = 1;  // the column of the next sample
  std::string id_;
};

}  // namespace

std::unique_ptr<MeasurementReader> ReadCsvRows(CsvReader csv, const CsvLayout& layout,
                                               const ReadOptions& options) {
  return std::make_unique<CsvRows>(std::move(csv), layout, options);
}

std::unique_ptr<MeasurementReader> ReadCsv(InputStream input, std::string_view beginning,
                                           const ReadOptions& options) {
  const CsvLayout layout = FindCsvLayout(input.name, beginning, options);
  CsvReader csv(std::move(input), layout.dialect);
  if (layout.wavelengthsInRows) return std::make_unique<CsvColumns>(std::move(csv), layout, options);
  return ReadCsvRows(std::move(csv), layout, options);
}

}  // namespace vrx::io
