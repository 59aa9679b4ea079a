#include <vrxio/csv/value_columns.h>

#include <algorithm>

#include <vrxio/measurement/headings.h>
#include <vrxio/text/input_error.h>

namespace vrx::io {

namespace {

constexpr std::ptrdiff_t kId = -1, kUnused = -2;

// A heading in the spelling of the names: without a remark, stars, blanks and underscores, and with d for a difference:
// "\xCE\x94L*" and "DL" are dL, "L*1" and "L_1" are L1.
std::string Spelled(std::string_view heading) {
  constexpr std::string_view kDelta = "\xCE\x94", kParts = "LabCHh";
  heading = heading.substr(0, heading.find_first_of("(["));
  std::string name;
  if (heading.starts_with(kDelta)) {
    name = "d";
    heading.remove_prefix(kDelta.size());
  } else if (heading.size() > 1 && heading[0] == 'D' && kParts.find(heading[1]) != std::string_view::npos) {
    name = "d";
    heading.remove_prefix(1);
  }
  for (const char c : heading) {
    if (c != '*' && c != ' ' && c != '_') name += c;
  }
  return name;
}

bool IsNamed(const std::string& heading, std::string_view name) {
  return heading == name || Spelled(heading) == name;
}

}  // namespace

bool HasColumns(const std::vector<std::string>& header, std::initializer_list<std::string_view> names) {
  return std::ranges::all_of(names, [&](std::string_view name) {
    return std::ranges::any_of(header, [&](const std::string& heading) { return IsNamed(heading, name); });
  });
}

ValueRows::ValueRows(CsvReader& csv, std::vector<std::string_view> names, std::size_t required,
                     ReadOptions::Scale scale)
    : csv_(csv), areFractions_(scale == ReadOptions::Scale::kFraction), values_(names.size(), 0.0) {
  StartColumns(names);
  for (std::size_t i = 0; i < required; ++i) {
    if (!HasColumns(csv.Header(), {names[i]}))
      csv.FailRow(std::string("there is no column ").append(names[i]));
  }
  const bool isAsked =
      scale == ReadOptions::Scale::kByFile && std::ranges::find(isTristimulus_, true) != isTristimulus_.end();
  scale_ = ScaleSearch(ScaleSearch::Values::kTristimulus, isAsked);
  if (!isAsked || !csv_.CanSeek()) return;
  while (scale_.IsOpen() && Next()) {
  }
  csv_.Rewind();
  rows_ = 0;
}

void ValueRows::StartColumns(const std::vector<std::string_view>& names) {
  for (const std::string_view name : names)
    isTristimulus_.push_back(std::string_view("XYZ").find(name.front()) != std::string_view::npos);
  const std::vector<std::string>& header = csv_.Header();
  for (std::size_t i = 0; i < header.size(); ++i) {
    const auto name =
        std::ranges::find_if(names, [&](std::string_view wanted) { return IsNamed(header[i], wanted); });
    std::ptrdiff_t value = kId;
    if (name != names.end()) {
      value = name - names.begin();
      const std::string conflict = TakeLightOfHeading(header[i], light_);
      if (!conflict.empty()) csv_.FailAt(i, "the columns name different lights, " + conflict);
    } else if (MeaningOf(header[i]).role == ColumnRole::kDevice) {
      value = kUnused;
    } else if (MeaningOf(header[i]).role != ColumnRole::kId) {
      csv_.FailAt(i, "unknown column in this file");
    }
    const bool isTwice = value != kUnused && std::ranges::find(columns_, value) != columns_.end();
    if (isTwice) csv_.FailAt(i, "the column appears twice");
    columns_.push_back(value);
  }
}

bool ValueRows::Next() {
  if (csv_.Next()) return TakeRow();
  if (rows_ == 0) throw InputError(csv_.Name() + ": there is no row");
  if (scale_.IsOpen()) scale_.Ask(csv_.Name());
  return false;
}

bool ValueRows::TakeRow() {
  id_ = rowNumber_ = std::to_string(++rows_);
  for (const std::ptrdiff_t column : columns_) {
    if (column == kUnused) {
      csv_.Text();
    } else if (column == kId) {
      id_ = csv_.Text();
      if (id_.empty()) csv_.Fail("the id is empty");
    } else {
      TakeValue(static_cast<std::size_t>(column));
    }
  }
  csv_.EndRecord();
  return true;
}

void ValueRows::TakeValue(std::size_t value) {
  double& number = values_[value];
  if (!isTristimulus_[value]) {
    number = csv_.Number();
    return;
  }
  csv_.Numbers({&number, 1}, areFractions_);
  if (areFractions_ && number > 100 * kSurelyPercent)
    csv_.Fail("the value is above 2, too much for a fraction of 1; use --percent");
  scale_.Take({&number, 1});
}

}  // namespace vrx::io
