#include "tools/vrx/input/readings.h"

#include <array>
#include <map>
#include <span>
#include <tuple>
#include <utility>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/foundation/numbers.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/input/sample_color.h"

namespace vrx::tool {
namespace {

using Lab = std::array<double, 3>;

Lab LabOf(const Sample& sample, vrxIlluminant illuminant, int32_t observer) {
  if (sample.kind == Sample::kLab) return sample.color;
  CTrisValues xyz;
  const Xyz values = XyzOf(sample, illuminant, observer);
  xyz[0] = values.X, xyz[1] = values.Y, xyz[2] = values.Z;
  CLabValues lab;
  XyzToLab(illuminant, observer, xyz, lab);
  return {lab[CLabValues::kL], lab[CLabValues::kA], lab[CLabValues::kB]};
}

}  // namespace

CurveRow Readings::Mean() const {
  CurveRow row;
  row.kind = samples.front().kind;
  row.id = id;
  row.name = name;
  row.standard = standard;
  row.geometry = geometry;
  const auto count = static_cast<double>(samples.size());
  if (row.kind != Sample::kCurve) {
    for (const Sample& sample : samples) {
      for (std::size_t k = 0; k < row.color.size(); ++k) row.color[k] += sample.color[k];
    }
    for (double& value : row.color) value /= count;
    return row;
  }
  row.curve.Fill(0.0);
  row.fine.assign(samples.front().fine.size(), 0.0);
  for (const Sample& sample : samples) {
    for (int32_t i = 0; i < kWavelengths; ++i) row.curve[i] += sample.curve[i];
    for (std::size_t i = 0; i < row.fine.size(); ++i) row.fine[i] += sample.fine[i];
  }
  for (double& value : row.curve) value /= count;
  for (double& value : row.fine) value /= count;
  return row;
}

std::vector<double> Readings::MeasuredMean() const {
  std::vector<double> mean = sums;
  for (double& value : mean) value /= static_cast<double>(samples.size());
  return mean;
}

namespace {

// Adds what was measured to the sums, or once the wavelengths are other ones keeps where all of them were measured.
void TakeMeasured(const CurveReader& reader, Readings& readings) {
  const Measurement& measured = reader.Measured();
  const std::span<const double> curve =
      reader.Kind() == Sample::kCurve ? reader.MeasuredCurve() : std::span<const double>();
  const std::vector<double>& wavelengths = measured.layout->wavelengths;
  if (readings.samples.size() == 1) {
    readings.layout = measured.layout;
    readings.wavelengths = wavelengths;
    readings.sums.assign(curve.begin(), curve.end());
    return;
  }
  if (readings.mixture.empty()) {
    readings.mixture = ConditionConflict(readings.layout->conditions, measured.layout->conditions);
  }
  if (wavelengths == readings.wavelengths && !readings.sums.empty()) {
    for (std::size_t i = 0; i < readings.sums.size(); ++i) readings.sums[i] += curve[i];
    return;
  }
  if (wavelengths.empty()) return;
  readings.sums.clear();
  std::erase_if(readings.wavelengths,
                [&](double nm) { return nm < wavelengths.front() || nm > wavelengths.back(); });
}

// The sums on the library's grid, for readings of different wavelengths.
void FinishMeasured(Readings& readings) {
  if (!readings.sums.empty() || readings.wavelengths.empty()) return;
  const double first = readings.wavelengths.front(), last = readings.wavelengths.back();
  readings.wavelengths.clear();
  for (int32_t i = 0; i < kWavelengths; ++i) {
    if (WavelengthAt(i) < first || WavelengthAt(i) > last) continue;
    readings.wavelengths.push_back(WavelengthAt(i));
    double& sum = readings.sums.emplace_back(0.0);
    for (const Sample& sample : readings.samples) sum += sample.curve[i];
  }
}

}  // namespace

std::vector<Readings> ReadReadings(CurveReader& reader, std::size_t count) {
  std::vector<Readings> all;
  // In `all`, by standard, id and geometry: trials of two standards may have the same numbers.
  std::map<std::tuple<std::string, std::string, int32_t>, std::size_t> places;
  CurveRow row;
  for (std::size_t read = 0; reader.Next(row); ++read) {
    if (read == kMostReadings) reader.Source().FailRow("more than 200000 readings");
    const std::tuple key(std::string(row.standard), std::string(row.id), row.geometry);
    const bool isNew = count > 0 ? read % count == 0 : places.try_emplace(key, all.size()).second;
    if (isNew) {
      Readings& first = all.emplace_back();
      first.id = row.id;
      first.name = row.name;
      first.standard = row.standard;
      first.geometry = row.geometry;
    }
    Readings& readings = count > 0 ? all.back() : all[places.at(key)];
    if (readings.standard != row.standard)
      reader.Source().FailRow("the reading has another standard than those that it is averaged with");
    if (readings.geometry != row.geometry)
      reader.Source().FailRow("the reading has another geometry than those that it is averaged with");
    readings.samples.push_back(row);
    TakeMeasured(reader, readings);
  }
  for (Readings& readings : all) FinishMeasured(readings);
  if (count > 0 && all.back().samples.size() != count) {
    throw InputError(reader.Source().Name() + ": " + std::to_string(all.back().samples.size()) +
                     " rows remain at the end, but --count is " + std::to_string(count));
  }
  return all;
}

ReadingStatistics StatisticsOf(const Readings& readings, vrxIlluminant illuminant, int32_t observer) {
  std::vector<Lab> colors;
  colors.reserve(readings.samples.size());
  for (const Sample& sample : readings.samples) colors.push_back(LabOf(sample, illuminant, observer));
  return StatisticsOfReadings(colors, LabOf(readings.Mean(), illuminant, observer));
}

}  // namespace vrx::tool
