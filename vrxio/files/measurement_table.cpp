#include <vrxio/files/measurement_table.h>

#include <span>

#include <vrxio/files/curve_reader.h>
#include <vrxio/files/measurement_files.h>

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

}  // namespace

MeasurementTable ReadMeasurementTable(const std::string& path, const ReadOptions& options) {
  CurveReader reader(OpenMeasurements(path, options), Content::kCurvesOrColors);
  MeasurementTable table;
  CurveRow row;
  while (reader.Next(row)) AddRow(table, reader, row);
  DropPartial(table.curves, table.ids.size(), kWavelengths);
  DropPartial(table.xyz, table.ids.size(), 3);
  DropPartial(table.lab, table.ids.size(), 3);
  table.illuminant = reader.FirstConditions().illuminant;
  table.observer = reader.FirstConditions().observer;
  table.form = reader.Source().FormName();
  table.notes = reader.Source().Notes();
  table.warnings = reader.SampleWarnings();
  const std::string guessed = reader.GridWarning();
  if (!guessed.empty()) table.warnings.insert(table.warnings.begin(), guessed);
  return table;
}

}  // namespace vrx::io
