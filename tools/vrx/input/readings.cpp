#include "tools/vrx/input/readings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <span>
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

double Distance(const Lab& a, const Lab& b) {
  double sum = 0;
  for (std::size_t k = 0; k < a.size(); ++k) sum += (a[k] - b[k]) * (a[k] - b[k]);
  return std::sqrt(sum);
}

// Of an even count the lower of the two in the middle.
double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>((values.size() - 1) / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

std::vector<double> Coordinate(const std::vector<Lab>& colors, std::size_t k) {
  std::vector<double> values;
  values.reserve(colors.size());
  for (const Lab& color : colors) values.push_back(color[k]);
  return values;
}

constexpr double kApart = 3.0;
constexpr double kRepeatability = 0.1;

// The limit of three distances. With so few the spread is hardly known: the quotient of the gap and the range must come to
// Dixon's Q (Rorabacher 1991), so the farther distance to Q / (1 - Q) of the nearer one.
double LimitOfThree(const std::vector<double>& distances) {
  constexpr double kQ = 0.941;
  const double nearer = Median(distances);
  return nearer <= kRepeatability ? kApart * kRepeatability : kQ / (1 - kQ) * nearer;
}

std::vector<std::size_t> Outliers(const std::vector<Lab>& colors) {
  constexpr std::size_t kFewest = 3;
  if (colors.size() < kFewest) return {};
  const Lab centre{Median(Coordinate(colors, 0)), Median(Coordinate(colors, 1)),
                   Median(Coordinate(colors, 2))};
  std::vector<double> distances;
  distances.reserve(colors.size());
  for (const Lab& color : colors) distances.push_back(Distance(color, centre));
  const double limit = colors.size() == kFewest ? LimitOfThree(distances)
                                                : std::max(kRepeatability, kApart * Median(distances));
  std::vector<std::size_t> outliers;
  for (std::size_t i = 0; i < distances.size(); ++i) {
    if (distances[i] > limit) outliers.push_back(i);
  }
  return outliers;
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
  for (const Sample& sample : samples) {
    for (int32_t i = 0; i < kWavelengths; ++i) row.curve[i] += sample.curve[i];
  }
  for (double& value : row.curve) value /= count;
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
  std::map<std::pair<std::string, int32_t>, std::size_t> places;  // in `all`, by id and geometry
  CurveRow row;
  for (std::size_t read = 0; reader.Next(row); ++read) {
    if (read == kMostReadings) reader.Source().FailRow("more than 200000 readings");
    const bool isNew = count > 0 ? read % count == 0
                                 : places.try_emplace({std::string(row.id), row.geometry}, all.size()).second;
    if (isNew) {
      Readings& first = all.emplace_back();
      first.id = row.id;
      first.name = row.name;
      first.standard = row.standard;
      first.geometry = row.geometry;
    }
    Readings& readings = count > 0 ? all.back() : all[places.at({std::string(row.id), row.geometry})];
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
  ReadingStatistics statistics;
  std::vector<Lab> colors;
  colors.reserve(readings.samples.size());
  for (const Sample& sample : readings.samples) colors.push_back(LabOf(sample, illuminant, observer));
  const Lab mean = LabOf(readings.Mean(), illuminant, observer);
  const auto count = static_cast<double>(colors.size());
  for (std::size_t k = 0; k < mean.size(); ++k) {
    const std::vector<double> values = Coordinate(colors, k);
    const auto [lowest, highest] = std::ranges::minmax(values);
    double sum = 0, squares = 0;
    for (const double value : values) sum += value;
    for (const double value : values) squares += (value - sum / count) * (value - sum / count);
    statistics.stats.SetFirst(static_cast<int32_t>(k), count > 1 ? std::sqrt(squares / (count - 1)) : 0.0);
    statistics.stats.SetSecond(static_cast<int32_t>(k), highest - lowest);
  }
  for (const Lab& color : colors) {
    const double difference = Distance(color, mean);
    statistics.meanDifference += difference / count;
    statistics.largestDifference = std::max(statistics.largestDifference, difference);
  }
  statistics.stats.SetSetting(static_cast<int32_t>(colors.size()));
  statistics.outliers = Outliers(colors);
  return statistics;
}

}  // namespace vrx::tool
