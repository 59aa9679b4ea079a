#include "tools/vrx/commands/instrument_drift.h"

#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <vrxio/measurement/names.h>

#include "tools/vrx/input/readings.h"

namespace vrx::tool {
namespace {

using Day = std::chrono::sys_days;

struct TileSum {
  CReflData curve;
  std::size_t readings = 0;

  CReflData Mean() const {
    CReflData mean;
    for (int32_t i = 0; i < kWavelengths; ++i) mean[i] = curve[i] / static_cast<double>(readings);
    return mean;
  }
};
// By id and geometry: another angle of a tile is no other reading of it.
using TileKey = std::pair<std::string, int32_t>;
using TilesByName = std::map<TileKey, TileSum>;

std::string TileText(const TileKey& tile) {
  return tile.second == kNoGeometry ? tile.first : tile.first + " " + GeometryName(tile.second);
}

// The number that a text of digits is; false for anything else.
bool TakeDigits(std::string_view text, unsigned& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

// The day that a date such as 2026-11-05, or 2026-11-05T08:30, begins with.
Day DayOf(const CurveReader& series, std::string_view date) {
  unsigned year = 0, month = 0, day = 0;
  const bool isSplit = date.size() >= 10 && date[4] == '-' && date[7] == '-' &&
                       TakeDigits(date.substr(0, 4), year) && TakeDigits(date.substr(5, 2), month) &&
                       TakeDigits(date.substr(8, 2), day);
  const std::chrono::year_month_day read{std::chrono::year(static_cast<int>(year)), std::chrono::month(month),
                                         std::chrono::day(day)};
  if (!isSplit || !read.ok()) {
    series.Source().FailRow("a series needs the date of each reading, such as 2026-11-05" +
                            (date.empty() ? "" : ", and not \"" + std::string(date) + "\""));
  }
  return read;
}

std::map<Day, TilesByName> ReadSeries(CurveReader& series) {
  std::map<Day, TilesByName> days;
  CurveRow row;
  for (std::size_t count = 0; series.Next(row); ++count) {
    if (count == kMostReadings) series.Source().FailRow("more than 200000 readings");
    const std::string& ofSet = series.FirstConditions().date;
    const TileKey key(row.id, row.geometry);
    TileSum& tile = days[DayOf(series, row.date.empty() ? ofSet : row.date)][key];
    if (tile.readings++ == 0) tile.curve.Fill(0.0);
    for (int32_t i = 0; i < kWavelengths; ++i) tile.curve[i] += row.curve[i];
  }
  return days;
}

// A straight line through points, as its slope.
class Trend {
 public:
  void Add(double x, double y) { ++count_, x_ += x, y_ += y, xx_ += x * x, xy_ += x * y; }
  double Slope() const {
    constexpr double kFewest = 3;
    return count_ < kFewest ? kUnset : (xy_ - x_ * y_ / count_) / (xx_ - x_ * x_ / count_);
  }

 private:
  double count_ = 0, x_ = 0, y_ = 0, xx_ = 0, xy_ = 0;
};

struct DayDifferences {
  int64_t tiles = 0;
  double sum = 0, largest = -1;
  std::string worst;
};

DayDifferences DifferencesOn(const TilesByName& day, const TilesByName& first, Judge& judge) {
  DayDifferences found;
  for (const auto& [name, tile] : day) {
    const auto reference = first.find(name);
    if (reference == first.end()) continue;
    const double difference = DifferenceFrom(reference->second.Mean(), tile.Mean(), judge);
    ++found.tiles;
    found.sum += difference;
    if (difference > found.largest) found.largest = difference, found.worst = TileText(name);
  }
  return found;
}

std::string DateText(Day day) {
  const std::chrono::year_month_day date(day);
  const auto twoDigits = [](unsigned value) { return (value < 10 ? "-0" : "-") + std::to_string(value); };
  return std::to_string(static_cast<int>(date.year())) + twoDigits(static_cast<unsigned>(date.month())) +
         twoDigits(static_cast<unsigned>(date.day()));
}

}  // namespace

double DifferenceFrom(const CReflData& reference, const CReflData& reading, Judge& judge) {
  Standard standard;
  standard.sample.curve = reference;
  Sample sample;
  sample.curve = reading;
  judge.Evaluate(standard, sample);
  return judge.Row().under.front().difference.back();
}

void WriteDrift(CurveReader series, const JudgeSettings& settings, const Format& format,
                OutputStream& output) {
  const std::map<Day, TilesByName> days = ReadSeries(series);
  WarnAboutInput(series);
  const std::string& file = series.Source().Name();
  if (days.size() < 2) throw InputError(file + ": a drift needs readings of two dates or more");
  const auto rows = MakeRowWriter(format, output,
                                  {{"date"},
                                   {"days", "days", 0},
                                   {"tiles"},
                                   {"mean", "mean", 3},
                                   {"largest", "largest", 3},
                                   {"tile", "of tile"},
                                   {"per_year", "mean per year", 3}});
  const auto& [firstDay, reference] = *days.begin();
  Judge judge(settings);
  Trend trend;
  for (auto day = std::next(days.begin()); day != days.end(); ++day) {
    const DayDifferences found = DifferencesOn(day->second, reference, judge);
    if (found.tiles == 0)
      throw InputError(file + ": no tile of " + DateText(day->first) + " was read on the first date");
    const double mean = found.sum / static_cast<double>(found.tiles);
    const auto passed = static_cast<double>((day->first - firstDay).count());
    constexpr double kDaysOfYear = 365.25;
    trend.Add(passed / kDaysOfYear, mean);
    rows->Text(DateText(day->first));
    rows->Integer(static_cast<int64_t>(passed));
    rows->Integer(found.tiles);
    rows->Known(mean);
    rows->Known(found.largest);
    rows->Text(found.worst);
    rows->Number(trend.Slope());
    rows->EndRow();
  }
  rows->Finish();
}

}  // namespace vrx::tool
