#include <vrxio/measurement/sample_columns.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numeric>
#include <utility>

#include <vrxio/measurement/column_meanings.h>
#include <vrxio/measurement/wavelength_grid.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx::io {
namespace {

constexpr double kWidest = 20;           // nm
constexpr double kNarrowest = 0.2;       // nm
constexpr double kFinest = 5;            // nm: no gap up to it is a hole
constexpr double kLargestPercent = 1e4;  // beyond the brightest fluorescent sample and any real noise
constexpr double kFirstUsed = 360, kLastUsed = 750;  // nm: the library's grid

constexpr std::string_view kNoContent = "the header names neither wavelengths nor X,Y,Z nor L,a,b";
// Of spectra of lamps and screens.
constexpr std::string_view kLightPower = "the values are the power of a light, not reflectances";

std::string Nanometres(double value) {
  return ShortestText(value) + " nm";
}

}  // namespace

WavelengthFault FaultOfWavelengths(std::span<const double> wavelengths) {
  const auto inside = std::ranges::count_if(wavelengths, [](double nm) { return nm >= 360 && nm <= 750; });
  if (inside < 3) return {0, "fewer than 3 wavelengths from 360 to 750 nm"};
  std::vector<double> steps(wavelengths.size() - 1);
  for (std::size_t i = 0; i < steps.size(); ++i) steps[i] = wavelengths[i + 1] - wavelengths[i];
  std::vector<double> sorted = steps;
  std::ranges::sort(sorted);
  const double usual = sorted[(sorted.size() - 1) / 2];
  if (usual > kWidest + kUnevenness || usual < kNarrowest - kUnevenness) {
    return {0, "wavelengths " + Nanometres(usual) + " apart; they may be 0.2 to 20 nm apart"};
  }
  for (std::size_t i = 0; i < steps.size(); ++i) {
    if (steps[i] > std::max(1.5 * usual, kFinest) + kUnevenness) {
      return {i + 1, "the wavelengths have a gap from " + Nanometres(wavelengths[i]) + " to " +
                         Nanometres(wavelengths[i + 1])};
    }
  }
  return {};
}

const MeasurementLayout* LayoutPool::Intern(const MeasurementLayout& layout) {
  const auto same = std::ranges::find_if(layouts_, [&](const MeasurementLayout& other) {
    return other.conditions == layout.conditions && other.wavelengths == layout.wavelengths;
  });
  if (same != layouts_.end()) return &*same;
  if (layouts_.size() == kMaxLayouts) return nullptr;
  layouts_.push_back(layout);
  return &layouts_.back();
}

// The header ----------------------------------------------------------------------------------------------

SampleColumns::SampleColumns(const std::vector<std::string>& headings, const ReadOptions& options,
                             bool passOver, Fail fail)
    : fail_(std::move(fail)), isLenient_(options.lenient), keepsOthers_(options.keepsOthers) {
  ColumnMeanings meanings;
  try {
    meanings = MeaningsOf(headings, options);
  } catch (const InputError& error) {
    Refuse(kWholeRow, error.what());
  }
  choice_ = meanings.note;
  CheckContent(headings, meanings.columns);
  for (std::size_t i = 0; i < headings.size(); ++i) {
    AddColumn(i, headings[i], meanings.columns[i], passOver || options.lenient);
  }
  hasIds_ = Has(ColumnRole::kId);
  SortWavelengths();
  FindColors(headings);
  if (!HasCurves() && !HasColors()) Refuse(kWholeRow, std::string(kNoContent));
  sorted_.resize(wavelengths_.size());
  FindUsed();
}

// Which colours the columns make. Columns that make none, such as C and h beside L, a, b, are passed over.
void SampleColumns::FindColors(const std::vector<std::string>& headings) {
  std::array<bool, kColorColumns> isUsed{};
  const auto take = [&](std::initializer_list<ColorColumn> columns) {
    if (!std::ranges::all_of(columns, [&](ColorColumn column) { return hasColor_[column]; })) return false;
    for (const ColorColumn column : columns) isUsed[column] = true;
    return true;
  };
  hasXyz_ = take({kColumnX, kColumnY, kColumnZ});
  hasXyy_ = !hasXyz_ && take({kColumnSmallX, kColumnSmallY, kColumnY});
  hasLab_ = take({kColumnL, kColumnA, kColumnB});
  hasLch_ = !hasLab_ && take({kColumnL, kColumnC, kColumnH});
  for (Run& run : runs_) {
    if (run.meaning.role != ColumnRole::kColor) continue;
    if (isUsed[run.meaning.color]) {
      const std::string conflict = TakeLightOfHeading(headings[run.column], light_);
      if (!conflict.empty())
        Refuse(run.column, "the columns of colours name different lights, " + conflict +
                               "; --ignore-columns leaves some out");
      continue;
    }
    run.meaning.role = ColumnRole::kDevice;
    run.place = AddOther(headings[run.column]);
  }
}

// Keeps or passes over a column that nothing is made of; returns the place of its texts.
std::size_t SampleColumns::AddOther(const std::string& heading) {
  if (!keepsOthers_) {
    AddUnused(heading);
    return 0;
  }
  otherHeadings_.push_back(heading);
  others_.emplace_back();
  return others_.size() - 1;
}

// The wavelengths that a curve on the library's grid rests on: those within it, and two beyond each of its ends. What an
// instrument adds farther out may be noise.
void SampleColumns::FindUsed() {
  constexpr std::ptrdiff_t kBeyond = 2;
  const auto begin = wavelengths_.begin(), end = wavelengths_.end();
  const auto first = std::lower_bound(begin, end, kFirstUsed), last = std::upper_bound(begin, end, kLastUsed);
  const auto from = std::max<std::ptrdiff_t>(first - begin - kBeyond, 0);
  const auto to = std::min<std::ptrdiff_t>(last - begin + kBeyond, end - begin);
  firstUsed_ = static_cast<std::size_t>(from);
  usedCount_ = static_cast<std::size_t>(to - from);
}

void SampleColumns::Refuse(std::size_t column, const std::string& reason) const {
  fail_(column, reason);
  throw InputError(reason);  // not reached
}

void SampleColumns::AddUnused(std::string_view heading) {
  constexpr std::size_t kEnough = 400;
  if (unused_.size() > kEnough) {
    if (!unused_.ends_with("...")) unused_ += ", ...";
    return;
  }
  if (!unused_.empty()) unused_ += ", ";
  unused_ += heading.substr(0, 40);
}

void SampleColumns::AddColumn(std::size_t column, const std::string& heading, Heading meaning,
                              bool passOver) {
  passOver = passOver || keepsOthers_;
  if (meaning.role == ColumnRole::kUnknown) {
    if (!passOver) {
      Refuse(column,
             "the column is not id, name, standard, geometry or a wavelength in nm; --lenient or "
             "--ignore-columns ignore it, --id-column makes it the id");
    }
    meaning.role = ColumnRole::kDevice;
  }
  if (meaning.role == ColumnRole::kColor && std::exchange(hasColor_[meaning.color], true)) {
    if (!passOver) Refuse(column, "the column appears twice");
    meaning.role = ColumnRole::kDevice;
  }
  const bool isSingle = meaning.role >= ColumnRole::kId && meaning.role <= ColumnRole::kDate;
  if (isSingle && Has(meaning.role)) {
    if (!passOver) Refuse(column, "the column appears twice");
    meaning.role = ColumnRole::kDevice;
  }
  std::size_t place = values_.size();
  if (meaning.role == ColumnRole::kDevice) place = AddOther(heading);
  if (meaning.role >= ColumnRole::kWavelength) {
    values_.push_back(0);
    valueColumns_.push_back(column);
  }
  if (meaning.role == ColumnRole::kWavelength) {
    sayPercent_ = sayPercent_ || heading.find('%') != std::string::npos;
    wavelengths_.push_back(meaning.wavelength);
    order_.push_back(place);
    if (!runs_.empty() && runs_.back().meaning.role == meaning.role) {
      ++runs_.back().count;
      return;
    }
  }
  if (meaning.role == ColumnRole::kColor) {
    colorPlaces_[meaning.color] = place;
    sayPercent_ = sayPercent_ || (meaning.color <= kColumnZ && heading.find('%') != std::string::npos);
  }
  if (meaning.role == ColumnRole::kExtra) {
    place = extraColumns_.size();
    extraColumns_.push_back(column);
    extras_.emplace_back();
  }
  if (meaning.role == ColumnRole::kCondition) {
    place = conditionHeadings_.size();
    conditionHeadings_.push_back(heading);
    conditionColumns_.push_back(column);
    conditionTexts_.emplace_back();
  }
  runs_.push_back({meaning, column, 1, place});
}

bool SampleColumns::Has(ColumnRole role) const {
  return std::ranges::any_of(runs_, [&](const Run& run) { return run.meaning.role == role; });
}

void SampleColumns::CheckContent(const std::vector<std::string>& headings,
                                 const std::vector<Heading>& meanings) const {
  if (std::ranges::any_of(headings, IsLightPower)) Refuse(kWholeRow, std::string(kLightPower));
  const bool hasValues = std::ranges::any_of(
      meanings, [](const Heading& meaning) { return meaning.role >= ColumnRole::kWavelength; });
  if (!hasValues) Refuse(kWholeRow, std::string(kNoContent));
}

void SampleColumns::SortWavelengths() {
  if (wavelengths_.empty()) return;
  std::vector<std::size_t> byWavelength(wavelengths_.size());
  std::iota(byWavelength.begin(), byWavelength.end(), std::size_t{0});
  std::ranges::stable_sort(byWavelength, {}, [&](std::size_t i) { return wavelengths_[i]; });
  std::vector<double> ascending;
  std::vector<std::size_t> places;
  for (const std::size_t i : byWavelength) {
    if (!ascending.empty() && ascending.back() == wavelengths_[i]) {
      Refuse(valueColumns_[order_[i]], "the wavelength appears twice");
    }
    ascending.push_back(wavelengths_[i]);
    places.push_back(order_[i]);
  }
  wavelengths_ = std::move(ascending);
  order_ = std::move(places);
  isAscending_ = true;
  for (std::size_t i = 0; i < order_.size(); ++i) isAscending_ &= order_[i] == order_.front() + i;
  const WavelengthFault fault = FaultOfWavelengths(wavelengths_);
  if (fault.reason.empty()) return;
  Refuse(fault.index > 0 ? valueColumns_[order_[fault.index]] : kWholeRow, fault.reason);
}

// A row ---------------------------------------------------------------------------------------------------

const MeasurementLayout& SampleColumns::Begin(const MeasuringConditions& conditions,
                                              const ValueScale& scale) {
  scale_ = scale;
  const auto values = HasCurves() ? ScaleSearch::Values::kReflectances : ScaleSearch::Values::kTristimulus;
  search_ = ScaleSearch(values, scale.isOpen && (HasCurves() || HasXyz()));
  common_ = {wavelengths_, conditions};
  if (light_.illuminant >= 0) common_.conditions.illuminant = light_.illuminant;
  if (light_.observer >= 0) common_.conditions.observer = light_.observer;
  layout_ = layouts_.Intern(common_);
  conditionsChanged_ = !conditionHeadings_.empty();
  return *layout_;
}

void SampleColumns::TakeText(const Run& run, std::string_view text, Measurement& sample) {
  switch (run.meaning.role) {
    case ColumnRole::kId:
      sample.id = text;
      if (text.empty() && !isLenient_) Refuse(kWholeRow, "the id is empty");
      break;
    case ColumnRole::kName:
      sample.name = text;
      break;
    case ColumnRole::kStandard:
      sample.standard = text;
      if (text.empty()) Refuse(kWholeRow, "the standard is empty");
      break;
    case ColumnRole::kDate:
      sample.date = text;
      break;
    case ColumnRole::kGeometry:
      if (text != lastGeometryText_) {
        lastGeometry_ = ParseMeasuringGeometry(text);
        lastGeometryText_ = text;
      }
      if (lastGeometry_ == kUnknownGeometry) Refuse(run.column, GeometryRefusal(text));
      sample.geometry = lastGeometry_;
      break;
    case ColumnRole::kExtra:
      extras_[run.place] = text;
      sample.extras = extras_;
      break;
    case ColumnRole::kDevice:
      if (!keepsOthers_) break;
      others_[run.place] = text;
      sample.others = others_;
      sample.otherHeadings = otherHeadings_;
      break;
    case ColumnRole::kCondition:
      if (text != conditionTexts_[run.place]) {
        conditionTexts_[run.place] = text;
        conditionsChanged_ = true;
      }
      break;
    default:
      break;
  }
}

void SampleColumns::Finish(int64_t row, Measurement& sample) {
  if (!hasIds_) sample.id = sample.name;
  if (sample.id.empty()) sample.id = rowNumber_ = std::to_string(row);
  if (std::exchange(conditionsChanged_, false)) {
    MeasurementLayout layout = common_;
    for (std::size_t i = 0; i < conditionHeadings_.size(); ++i) {
      if (!conditionTexts_[i].empty()) {
        TakeConditionOfColumn(i, layout.conditions);
      }
    }
    layout_ = layouts_.Intern(layout);
    if (layout_ == nullptr) Refuse(kWholeRow, "more than 10000 different conditions in one file");
  }
  sample.layout = layout_;
  FinishCurve(sample);
  FinishColor(sample);
}

// A geometry that is not understood is refused as in the column "geometry".
void SampleColumns::TakeConditionOfColumn(std::size_t place, MeasuringConditions& conditions) const {
  MeasuringConditions own;
  TakeCondition(conditionHeadings_[place], conditionTexts_[place], own);
  if (!own.otherGeometry.empty()) Refuse(conditionColumns_[place], GeometryRefusal(own.otherGeometry));
  TakeCondition(conditionHeadings_[place], conditionTexts_[place], conditions);
}

// Without early ends, so that the compiler can take several values at a time.
void SampleColumns::FinishCurve(Measurement& sample) {
  const std::size_t count = wavelengths_.size();
  if (isAscending_) {
    std::copy_n(values_.begin() + static_cast<std::ptrdiff_t>(order_.front()), count, sorted_.begin());
  } else {
    for (std::size_t i = 0; i < count; ++i) sorted_[i] = values_[order_[i]];
  }
  if (scale_.norm != 1 && scale_.norm != 100) {
    for (double& value : sorted_) value = value / scale_.norm * 100;
  }
  const std::span<const double> used = std::span(sorted_).subspan(firstUsed_, usedCount_);
  const double limit = scale_.isFraction && !scale_.mayExceed ? 100 * kSurelyPercent : kLargestPercent;
  const auto isSound = [limit](double value) { return value <= limit && value >= -kLargestPercent; };
  bool sound = true;
  for (const double value : used) sound &= isSound(value);
  sample.reflectance = sorted_;
  if (!sound) RefuseValue(static_cast<std::size_t>(std::ranges::find_if_not(used, isSound) - used.begin()));
  search_.Take(used);
}

// Refuses a value, from 0 among the used ones, that is too large or too small.
void SampleColumns::RefuseValue(std::size_t used) const {
  const std::size_t column = valueColumns_[order_[firstUsed_ + used]];
  if (std::fabs(sorted_[firstUsed_ + used]) > kLargestPercent)
    Refuse(column, "a reflectance beyond 10000 percent");
  Refuse(column,
         scale_.isGuess
             ? "the value is above 2, but the first ones were read as fractions of 1; choose with --fraction "
               "or --percent"
             : AboveFractions());
}

bool SampleColumns::IsTristimulus(const Run& run) const {
  return run.meaning.role == ColumnRole::kColor && run.meaning.color <= kColumnZ;
}

bool SampleColumns::AreFractions(const Run& run) const {
  if (scale_.norm != 1) return false;
  return run.meaning.role == ColumnRole::kWavelength || (IsTristimulus(run) && !HasCurves());
}

// About Y of the curve that was finished last, by a triangle in place of the luminous efficiency; 0 where the curve says nothing.
double SampleColumns::RoughY() const {
  constexpr double kMiddle = 560, kHalfWidth = 100;  // nm
  double sum = 0, weights = 0;
  for (std::size_t i = 0; i < wavelengths_.size(); ++i) {
    const double weight = std::max(1 - std::fabs(wavelengths_[i] - kMiddle) / kHalfWidth, 0.0);
    sum += weight * sorted_[i];
    weights += weight;
  }
  return weights > 0 ? sum / weights : 0;
}

// Brings X, Y, Z to the scale of 100. Beside a curve they have a scale of their own, which the curve tells: Y is a mean of it
// (CIE 15), and the two scales are a hundred times apart.
void SampleColumns::FinishXyz(std::array<double, 3>& xyz) {
  const bool isDark = std::ranges::all_of(xyz, [](double value) { return value < kSurelyPercent; });
  if (!HasCurves()) {
    search_.Take(xyz);
    const bool isSound = std::ranges::all_of(xyz, [](double value) { return value <= 100 * kSurelyPercent; });
    if (scale_.isFraction && !scale_.mayExceed && !isSound)
      Refuse(valueColumns_[colorPlaces_[kColumnY]], AboveFractions());
  } else if (isDark && 10 * xyz[1] < RoughY()) {
    for (double& value : xyz) value *= 100;
  }
}

// X, Y, Z of x, y, Y (CIE 15). Black has none of its own and is given any.
std::array<double, 3> SampleColumns::XyzOfChromaticity() const {
  const double x = values_[colorPlaces_[kColumnSmallX]], y = values_[colorPlaces_[kColumnSmallY]];
  const double luminance = values_[colorPlaces_[kColumnY]];
  if (luminance == 0) return {};
  if (!(y > 0)) Refuse(valueColumns_[colorPlaces_[kColumnSmallY]], "a chromaticity y must be above 0");
  return {x * luminance / y, luminance, (1 - x - y) * luminance / y};
}

void SampleColumns::FinishColor(Measurement& sample) {
  const auto color = [&](ColorColumn column) { return values_[colorPlaces_[column]]; };
  sample.hasXyz = HasXyz();
  sample.hasLab = hasLab_ || hasLch_;
  if (hasXyz_) sample.xyz = {color(kColumnX), color(kColumnY), color(kColumnZ)};
  if (hasXyy_) sample.xyz = XyzOfChromaticity();
  if (HasXyz()) FinishXyz(sample.xyz);
  if (hasLab_) {
    sample.lab = {color(kColumnL), color(kColumnA), color(kColumnB)};
  } else if (hasLch_) {
    constexpr double kRadians = 0.017453292519944444;
    const double hue = color(kColumnH) * kRadians;
    sample.lab = {color(kColumnL), color(kColumnC) * Cos(hue), color(kColumnC) * Sin(hue)};
  }
}

}  // namespace vrx::io
