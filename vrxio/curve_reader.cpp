#include <vrxio/curve_reader.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include <vrxmath/foundation/numbers.h>

#include <vrxio/decimal.h>
#include <vrxio/input_error.h>

namespace vrx::io {

namespace {

constexpr double kShortest = 100;     // nm; a header number outside is no wavelength
constexpr double kLongest = 10'000;   // nm
constexpr double kUnevenness = 0.02;  // nm by which the spacing may vary: wavelengths are rounded in headers
constexpr double kLargestPercent = 1e4;  // beyond the brightest fluorescent sample and any real noise

// The wavelength that a column name gives, such as "400", "400.0" or "400 nm"; 0 when it is none.
double WavelengthOf(std::string_view heading) {
  if (heading.ends_with("nm")) heading.remove_suffix(2);
  while (heading.ends_with(' ')) heading.remove_suffix(1);
  double value = 0;
  const bool isNumber = ParseDecimal(heading, ',', value);
  return isNumber && value >= kShortest && value <= kLongest ? value : 0;
}

std::string Nanometres(double value) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr) + " nm";
}

}  // namespace

bool HasWavelengths(const std::vector<std::string>& header) {
  return std::ranges::any_of(header, [](const std::string& name) { return WavelengthOf(name) > 0; });
}

CurveReader::CurveReader(CsvReader csv, bool fraction, Content content, bool (*isExtra)(std::string_view))
    : csv_(std::move(csv)), scale_(fraction ? 100.0 : 1.0), isExtra_(isExtra) {
  constexpr std::array<const char*, 3> kXyzNames{"X", "Y", "Z"}, kLabNames{"L", "a", "b"};
  const auto has = [&](const char* name) {
    return std::ranges::find(csv_.Header(), name) != csv_.Header().end();
  };
  if (content == Content::kCurvesOrColors && !HasWavelengths(csv_.Header())) {
    if (std::ranges::all_of(kXyzNames, has)) kind_ = Sample::kXyz;
    if (std::ranges::all_of(kLabNames, has)) kind_ = Sample::kLab;
    if (kind_ == Sample::kCurve) csv_.FailRow("the header names neither wavelengths nor X,Y,Z nor L,a,b");
  }
  kind_ == Sample::kCurve ? ReadCurveHeader()
                          : ReadColorHeader(kind_ == Sample::kXyz ? kXyzNames : kLabNames);
}

void CurveReader::AddColumn(Role role, std::size_t column) {
  if (role == Role::kValues) {
    valueColumns_.push_back(column);
    if (!runs_.empty() && runs_.back().role == role) {
      ++runs_.back().count;
      return;
    }
  }
  runs_.push_back({role, 1});
}

bool CurveReader::TakeTextColumn(std::size_t column) {
  struct TextColumn {
    std::string_view name;
    Role role;
    bool& present;
  };
  const TextColumn kTextColumns[] = {{"id", Role::kId, hasIds_},
                                     {"name", Role::kName, hasNames_},
                                     {"standard", Role::kStandard, hasStandards_},
                                     {"geometry", Role::kGeometry, hasGeometries_}};
  const std::string& heading = csv_.Header()[column];
  const auto text = std::ranges::find_if(
      kTextColumns, [&](const TextColumn& known) { return EqualsIgnoringCase(heading, known.name); });
  if (text == std::end(kTextColumns)) {
    if (isExtra_ == nullptr || !isExtra_(heading)) return false;
    extraColumns_.push_back(column);
    AddColumn(Role::kExtra, column);
    return true;
  }
  if (std::exchange(text->present, true)) csv_.FailAt(column, "there are two such columns");
  AddColumn(text->role, column);
  return true;
}

void CurveReader::ReadCurveHeader() {
  std::vector<double> wavelengths;
  for (std::size_t i = 0; i < csv_.Header().size(); ++i) {
    if (TakeTextColumn(i)) continue;
    const double wavelength = WavelengthOf(csv_.Header()[i]);
    if (wavelength == 0) {
      csv_.FailAt(i, "the column is neither id, name, standard, geometry nor a wavelength in nm");
    }
    if (!wavelengths.empty() && wavelength <= wavelengths.back()) {
      csv_.FailAt(i, wavelength == wavelengths.back() ? "the wavelength stands there twice"
                                                      : "the wavelengths do not ascend");
    }
    wavelengths.push_back(wavelength);
    AddColumn(Role::kValues, i);
  }
  MakeGrid(wavelengths);
}

void CurveReader::ReadColorHeader(const std::array<const char*, 3>& names) {
  for (std::size_t i = 0; i < csv_.Header().size(); ++i) {
    if (TakeTextColumn(i)) continue;
    const auto name = std::ranges::find(names, csv_.Header()[i]);
    if (name == names.end()) csv_.FailAt(i, "the column is none of a file of colours");
    if (std::ranges::count(csv_.Header(), csv_.Header()[i]) > 1) csv_.FailAt(i, "there are two such columns");
    colorPlaces_[static_cast<std::size_t>(name - names.begin())] = measured_.size();
    measured_.push_back(0.0);
    AddColumn(Role::kValues, i);
  }
}

void CurveReader::MakeGrid(const std::vector<double>& wavelengths) {
  const auto inside = std::ranges::count_if(wavelengths, [](double nm) { return nm >= 360 && nm <= 750; });
  if (inside < 3) csv_.FailRow("fewer than 3 wavelengths from 360 to 750 nm");
  double smallest = wavelengths[1] - wavelengths[0];
  for (std::size_t i = 1; i < wavelengths.size(); ++i) {
    smallest = std::min(smallest, wavelengths[i] - wavelengths[i - 1]);
  }
  for (std::size_t i = 1; i < wavelengths.size(); ++i) {
    if (wavelengths[i] - wavelengths[i - 1] > smallest + kUnevenness) {
      csv_.FailAt(valueColumns_[i], "the wavelengths have a hole from " + Nanometres(wavelengths[i - 1]) +
                                        " to " + Nanometres(wavelengths[i]));
    }
  }
  const double step =
      (wavelengths.back() - wavelengths.front()) / static_cast<double>(wavelengths.size() - 1);
  if (step > kWidestStep + kUnevenness || step < kNarrowestStep - kUnevenness) {
    csv_.FailRow("wavelengths " + Nanometres(step) + " apart; they may be 0.5 to 20 nm apart");
  }
  grid_ = WavelengthGrid(wavelengths.front(), step, wavelengths.size());
  measured_.resize(wavelengths.size());
}

bool CurveReader::Next(CurveRow& row) {
  if (!csv_.Next()) {
    if (rows_ == 0) throw InputError(csv_.Name() + ": there is no row");
    return false;
  }
  ++rows_;
  row.kind = kind_;
  row.id = row.name = row.standard = {};
  row.geometry = kNoGeometry;
  row.extras.clear();
  ReadRuns(row);
  if (hasIds_ && row.id.empty()) csv_.FailRow("the id is empty");
  if (!hasIds_) row.id = row.name;
  if (row.id.empty()) row.id = rowNumber_ = std::to_string(rows_);
  if (hasStandards_ && row.standard.empty()) csv_.FailRow("the standard is empty");
  if (kind_ != Sample::kCurve) {
    for (std::size_t i = 0; i < row.color.size(); ++i) row.color[i] = measured_[colorPlaces_[i]];
    return true;
  }
  CheckValues();
  double* const curve = row.curve.GetData();
  grid_.Convert(measured_, curve);
  // A first sample that is by chance the unset value would make the curve count as not measured.
  if (IsUnset(curve[0])) curve[0] = 0.0;
  return true;
}

void CurveReader::ReadRuns(CurveRow& row) {
  std::size_t read = 0;
  for (const Run& run : runs_) {
    switch (run.role) {
      case Role::kId:
        row.id = csv_.Text();
        break;
      case Role::kName:
        row.name = csv_.Text();
        break;
      case Role::kStandard:
        row.standard = csv_.Text();
        break;
      case Role::kGeometry:
        row.geometry = ReadGeometry();
        break;
      case Role::kExtra:
        row.extras.emplace_back(csv_.Text());
        break;
      case Role::kValues:
        csv_.Numbers(std::span(measured_).subspan(read, run.count));
        read += run.count;
    }
  }
  csv_.EndRecord();
}

int32_t CurveReader::ReadGeometry() {
  const std::string_view text = csv_.Text();
  if (text != lastGeometryText_) {
    lastGeometry_ = ParseGeometry(text);
    lastGeometryText_ = text;
  }
  if (lastGeometry_ == kUnknownGeometry) csv_.Fail("unknown geometry");
  return lastGeometry_;
}

void CurveReader::Rewind() {
  csv_.Rewind();
  rows_ = 0;
}

// Without early ends, so that the compiler can take several values at a time.
void CurveReader::CheckValues() {
  bool sound = true;
  for (double& value : measured_) {
    value *= scale_;
    sound &= std::fabs(value) <= kLargestPercent;
    aboveOne_ |= value > 1.0;
  }
  if (sound) return;
  const auto bad =
      std::ranges::find_if(measured_, [](double v) { return !(std::fabs(v) <= kLargestPercent); });
  csv_.FailAt(valueColumns_[static_cast<std::size_t>(bad - measured_.begin())],
              "a reflectance beyond 10000 percent");
}

}  // namespace vrx::io
