#include <vrxio/files/measurement_table.h>

#include <algorithm>
#include <limits>
#include <span>
#include <utility>

#include <vrxio/files/measurement_files.h>
#include <vrxio/measurement/wavelength_grid.h>
#include <vrxio/text/input_error.h>

namespace vrx::io {
namespace {

// Keeps a column that all samples have; one that a sample lacks is none.
void Keep(std::vector<double>& column, std::size_t rowsBefore, std::span<const double> values) {
  if (column.size() == rowsBefore * values.size()) column.insert(column.end(), values.begin(), values.end());
}

// A column that ended before the last sample goes.
void DropPartial(std::vector<double>& column, std::size_t rows, std::size_t width) {
  if (column.size() != rows * width) column = {};
}

void AddRow(MeasurementTable& table, const CurveReader& reader, const CurveRow& row) {
  const Measurement& measured = reader.Measured();
  const std::size_t before = table.ids.size();
  table.ids.emplace_back(row.id);
  table.names.emplace_back(row.name);
  const int32_t common = measured.layout->conditions.geometry;
  table.geometries.push_back(row.geometry != kNoGeometry ? row.geometry : common);
  if (row.kind == Sample::kCurve) Keep(table.curves, before, {row.curve.GetData(), kWavelengths});
  if (measured.hasXyz) Keep(table.xyz, before, measured.xyz);
  if (measured.hasLab) Keep(table.lab, before, measured.lab);
}

// The samples of a table, one after the other.
class TableReader final : public MeasurementReader {
 public:
  TableReader(MeasurementTable table, std::string name) : table_(std::move(table)), name_(std::move(name)) {
    const std::size_t rows = table_.ids.size();
    const auto fits = [rows](const auto& column, std::size_t width) {
      return column.empty() || column.size() == rows * width;
    };
    const bool fit = fits(table_.names, 1) && fits(table_.geometries, 1) && fits(table_.xyz, 3) &&
                     fits(table_.lab, 3) && fits(table_.curves, kWavelengths);
    if (rows == 0 || !fit || (table_.curves.empty() && table_.xyz.empty() && table_.lab.empty()))
      throw InputError(name_ + ": curves or colours of all samples are expected");
    if (!table_.curves.empty()) layout_.wavelengths = LibraryWavelengths();
    layout_.conditions.illuminant = table_.illuminant;
    layout_.conditions.observer = table_.observer;
  }

  bool Next(Measurement& sample) override {
    if (next_ == table_.ids.size()) return false;
    const std::size_t i = next_++;
    sample = {};
    sample.id = table_.ids[i];
    if (!table_.names.empty()) sample.name = table_.names[i];
    if (!table_.geometries.empty()) sample.geometry = table_.geometries[i];
    if (!table_.curves.empty())
      sample.reflectance = std::span(table_.curves).subspan(i * kWavelengths, kWavelengths);
    sample.hasXyz = HasXyz();
    sample.hasLab = !table_.lab.empty();
    if (sample.hasXyz) std::copy_n(&table_.xyz[3 * i], 3, sample.xyz.begin());
    if (sample.hasLab) std::copy_n(&table_.lab[3 * i], 3, sample.lab.begin());
    sample.layout = &layout_;
    return true;
  }
  const MeasurementLayout& FirstLayout() const override { return layout_; }
  std::string_view FormName() const override { return table_.form; }
  bool HasIds() const override { return true; }
  bool HasNames() const override {
    return std::ranges::any_of(table_.names, [](const std::string& name) { return !name.empty(); });
  }
  bool HasGeometries() const override {
    return std::ranges::any_of(table_.geometries, [](int32_t geometry) { return geometry != kNoGeometry; });
  }
  bool HasXyz() const override { return !table_.xyz.empty(); }
  const std::string& Name() const override { return name_; }
  uint64_t Size() const override { return table_.ids.size(); }
  uint64_t Position() const override { return next_; }
  uint64_t Offset() const override { return next_ - 1; }
  void SeekTo(uint64_t offset) override { next_ = static_cast<std::size_t>(offset); }
  bool CanSeek() const override { return true; }
  void Rewind() override { next_ = 0; }
  std::string RowPlace() const override { return name_ + ", row " + std::to_string(next_); }

 private:
  MeasurementTable table_;
  std::string name_;
  MeasurementLayout layout_;
  std::size_t next_ = 0;
};

}  // namespace

std::unique_ptr<MeasurementReader> OpenMeasurementTable(MeasurementTable table, std::string name) {
  return std::make_unique<TableReader>(std::move(table), std::move(name));
}

MeasurementBlocks::MeasurementBlocks(const std::string& path, const ReadOptions& options)
    : reader_(OpenMeasurements(path, options), Content::kCurvesOrColors) {}

bool MeasurementBlocks::Next(MeasurementTable& block, std::size_t most) {
  block = {};
  CurveRow row;
  while (!isAtEnd_ && block.ids.size() < most) {
    isAtEnd_ = !reader_.Next(row);
    if (!isAtEnd_) AddRow(block, reader_, row);
  }
  DropPartial(block.curves, block.ids.size(), kWavelengths);
  DropPartial(block.xyz, block.ids.size(), 3);
  DropPartial(block.lab, block.ids.size(), 3);
  block.illuminant = reader_.FirstConditions().illuminant;
  block.observer = reader_.FirstConditions().observer;
  block.form = reader_.Source().FormName();
  block.notes = reader_.Source().Notes();
  block.warnings = reader_.SampleWarnings();
  const std::string guessed = reader_.GridWarning();
  if (!guessed.empty()) block.warnings.insert(block.warnings.begin(), guessed);
  return !block.ids.empty();
}

MeasurementTable ReadMeasurementTable(const std::string& path, const ReadOptions& options) {
  MeasurementTable table;
  MeasurementBlocks(path, options).Next(table, std::numeric_limits<std::size_t>::max());
  return table;
}

}  // namespace vrx::io
