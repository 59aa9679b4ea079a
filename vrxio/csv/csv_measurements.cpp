#include <vrxio/csv/csv_measurements.h>

#include <algorithm>
#include <utility>
#include <vector>

#include <vrxio/measurement/headings.h>
#include <vrxio/measurement/sample_columns.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/shown_text.h>
#include <vrxio/text/text.h>

namespace vrx::io {
namespace {

using Scale = ReadOptions::Scale;

const Measurement kNothing;  // copied, which costs less than to be made

ValueScale ScaleOf(const ReadOptions& options, bool sayPercent) {
  ValueScale scale;
  scale.isFraction = options.scale == Scale::kFraction;
  if (scale.isFraction) scale.norm = 1;
  scale.mayExceed = options.force;
  scale.isOpen = options.scale == Scale::kByFile && !sayPercent;
  return scale;
}

// The part that both layouts share: a file that is a table.
class CsvMeasurements : public MeasurementReader {
 public:
  CsvMeasurements(CsvReader csv, const CsvLayout& layout, const ReadOptions& options)
      : csv_(std::move(csv)), conditions_(layout.conditions), scale_(ScaleOf(options, layout.sayPercent)) {
    if (layout.hasUnits) csv_.SkipRecord();
    if (options.keepsOthers) {
      for (const std::string& line : layout.unusedLines) TakeRemark(line);
    } else if (!layout.unusedLines.empty()) {
      Note(std::to_string(layout.unusedLines.size()) +
           " lines before the header say nothing about the measurement");
    }
  }

  std::string_view FormName() const override { return "CSV"; }
  const std::string& Name() const override { return csv_.Name(); }
  uint64_t Size() const override { return csv_.Size(); }
  uint64_t Position() const override { return csv_.Position(); }
  std::string RowPlace() const override { return csv_.Place(); }

 protected:
  CsvReader csv_;
  MeasuringConditions conditions_;

  // "Operator: X", or words of no kind.
  void TakeRemark(std::string_view line) {
    while (line.starts_with('#') || line.starts_with(' ')) line.remove_prefix(1);
    const std::size_t end = std::min(line.find_first_of(":=;,\t"), line.size());
    const std::string_view text = Trimmed(line.substr(std::min(end + 1, line.size())));
    if (!line.empty())
      text.empty() ? AddRemark("REMARK", Trimmed(line)) : AddRemark(Trimmed(line.substr(0, end)), text);
  }
  // Looks for the value that tells the scale, which most often is in the first row. Of a pipe, whose rows come once, it is
  // asked for at the end.
  void FindScale() {
    Measurement sample;
    while (columns_.Scale().IsOpen() && Next(sample)) {
    }
    Rewind();
  }
  // The scale of the columns, whose headings may say it.
  const MeasurementLayout& BeginColumns() {
    scale_.isOpen = scale_.isOpen && !columns_.SayPercent();
    return columns_.Begin(conditions_, scale_);
  }
  bool TakesFractions() const { return scale_.norm == 1; }

  SampleColumns columns_;

 private:
  ValueScale scale_;
};

class CsvRows final : public CsvMeasurements {
 public:
  CsvRows(CsvReader csv, const CsvLayout& layout, const ReadOptions& options)
      : CsvMeasurements(std::move(csv), layout, options) {
    columns_ =
        SampleColumns(csv_.Header(), options, false, [this](std::size_t column, const std::string& reason) {
          column == SampleColumns::kWholeRow ? csv_.FailRow(reason) : csv_.FailAt(column, reason);
        });
    layout_ = &BeginColumns();
    if (options.lenient) FindValueColumns();
    if (!columns_.Choice().empty()) Note(columns_.Choice());
    if (!columns_.Unused().empty()) Note("columns that are not used: " + columns_.Unused());
    if (CanSeek() && columns_.Scale().IsOpen()) FindScale();
  }

  bool Next(Measurement& sample) override {
    if (!NextMeasured()) {
      if (rows_ == 0) throw InputError(csv_.Name() + ": there is no row");
      if (columns_.Scale().IsOpen()) columns_.Scale().Ask(Name());
      return false;
    }
    sample = kNothing;
    for (const SampleColumns::Run& run : columns_.Runs()) {
      if (SampleColumns::IsText(run)) {
        columns_.TakeText(run, csv_.Text(), sample);
      } else {
        csv_.Numbers(columns_.Values(run), columns_.AreFractions(run));
      }
    }
    csv_.EndRecord();
    columns_.Finish(rows_, sample);
    return true;
  }

  const MeasurementLayout& FirstLayout() const override { return *layout_; }
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
  int64_t CountUnmeasured() const override { return unmeasured_; }
  uint64_t Offset() const override { return csv_.Offset(); }
  bool CanSeek() const override { return csv_.CanSeek(); }
  void SeekTo(uint64_t offset) override { csv_.SeekTo(offset); }
  void Rewind() override {
    csv_.Rewind();
    rows_ = unmeasured_ = 0;
  }

 private:
  bool NextMeasured() {
    while (csv_.Next()) {
      ++rows_;
      if (valueColumns_.empty() || !csv_.AreEmpty(valueColumns_)) return true;
      ++unmeasured_;
    }
    return false;
  }

  // For a lenient reader, which leaves rows out that have no value in them.
  void FindValueColumns() {
    for (const SampleColumns::Run& run : columns_.Runs()) {
      for (std::size_t i = 0; i < run.count && !SampleColumns::IsText(run); ++i) {
        valueColumns_.push_back(run.column + i);
      }
    }
  }

  const MeasurementLayout* layout_ = nullptr;
  std::vector<std::size_t> valueColumns_;
  int64_t unmeasured_ = 0;
  int64_t rows_ = 0;
};

// The wavelengths stand in the first column: the whole table is held.
class CsvColumns final : public CsvMeasurements {
 public:
  static constexpr std::size_t kMaxValues = std::size_t{1} << 24;

  CsvColumns(CsvReader csv, const CsvLayout& layout, const ReadOptions& options)
      : CsvMeasurements(std::move(csv), layout, options) {
    if (!options.idColumn.empty())
      csv_.FailRow("--id-column: the samples are columns, which are named by their headings");
    FindSamples(options);
    ReadTable();
    std::vector<std::string> headings{"id"};
    for (const double nm : wavelengths_) headings.push_back(ShortestText(nm));
    columns_ =
        SampleColumns(headings, ReadOptions(), false,
                      [this](std::size_t column, const std::string& reason) { FailSample(column, reason); });
    layout_ = &BeginColumns();
    if (columns_.Scale().IsOpen()) FindScale();
  }

  bool Next(Measurement& sample) override {
    if (next_ == samples_.size()) {
      if (columns_.Scale().IsOpen()) columns_.Scale().Ask(Name());
      return false;
    }
    sample = Measurement();
    id_ = csv_.Header()[samples_[next_]];
    if (id_.empty()) id_ = std::to_string(samples_[next_]);
    columns_.TakeText(columns_.Runs()[0], id_, sample);
    const std::span<double> values = columns_.Values(columns_.Runs()[1]);
    const std::size_t columns = csv_.Header().size() - 1;
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = table_[i * columns + samples_[next_] - 1];
    columns_.Finish(static_cast<int64_t>(++next_), sample);
    return true;
  }

  const MeasurementLayout& FirstLayout() const override { return *layout_; }
  bool HasIds() const override { return true; }
  bool HasNames() const override { return false; }
  bool HasXyz() const override { return false; }
  uint64_t Offset() const override { return next_ > 0 ? next_ - 1 : 0; }
  bool CanSeek() const override { return true; }
  void SeekTo(uint64_t offset) override { next_ = static_cast<std::size_t>(offset); }
  void Rewind() override { next_ = 0; }

 private:
  // The columns of samples: all but those of counts, of powers of light, and those that are to be passed over.
  void FindSamples(const ReadOptions& options) {
    std::string unused;
    bool hasLight = false;
    for (std::size_t i = 1; i < csv_.Header().size(); ++i) {
      const std::string& heading = csv_.Header()[i];
      const bool isLight = IsLightPower(heading);
      hasLight = hasLight || isLight;
      const bool isIgnored = std::ranges::any_of(
          options.ignoredColumns, [&](const std::string& name) { return EqualsIgnoringCase(name, heading); });
      if (!isIgnored && !isLight && !IsRawCount(heading)) {
        samples_.push_back(i);
      } else if (!isIgnored) {
        unused += (unused.empty() ? "" : ", ") + Shown(heading);
        PassOver(Shown(heading));
      }
    }
    if (samples_.empty()) {
      csv_.FailRow(hasLight ? "the values are the power of a light, not reflectances"
                            : "there is no column of reflectances beside the wavelengths");
    }
    if (!unused.empty()) Note("columns that are not used: " + unused);
  }

  void ReadTable() {
    std::vector<double> values(csv_.Header().size() - 1);
    while (csv_.Next()) {
      wavelengths_.push_back(WavelengthOf(csv_.Text()));
      if (wavelengths_.back() == 0) csv_.Fail("expected a wavelength in nm");
      if (table_.size() + values.size() > kMaxValues)
        csv_.FailRow("more than 16 million values by rows of wavelengths");
      csv_.Numbers(values, TakesFractions());
      csv_.EndRecord();
      table_.insert(table_.end(), values.begin(), values.end());
    }
  }

  // Faults of a sample, whose values stand one below the other; of a wavelength before the first one was read.
  [[noreturn]] void FailSample(std::size_t column, const std::string& reason) const {
    const bool isValue = column != SampleColumns::kWholeRow && column > 0;
    const std::string at =
        isValue ? " at " + std::to_string(wavelengths_[column - 1]) + " nm" : std::string();
    const std::size_t sample = layout_ != nullptr && next_ < samples_.size() ? samples_[next_] + 1 : 1;
    throw InputError(csv_.Name() + ", column " + std::to_string(sample) + at + ": " + reason);
  }

  std::vector<double> wavelengths_;
  std::vector<double> table_;  // by wavelength, then by sample
  const MeasurementLayout* layout_ = nullptr;
  std::vector<std::size_t> samples_;  // the columns of the samples
  std::size_t next_ = 0;              // of them
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
