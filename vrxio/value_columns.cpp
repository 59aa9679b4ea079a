#include <vrxio/value_columns.h>

#include <algorithm>

#include <vrxio/input_error.h>
#include <vrxio/names.h>

namespace vrx::io {

namespace {

constexpr std::ptrdiff_t kId = -1;

}  // namespace

bool HasColumns(const std::vector<std::string>& header, std::initializer_list<std::string_view> names) {
  return std::ranges::all_of(
      names, [&](std::string_view name) { return std::ranges::find(header, name) != header.end(); });
}

ValueRows::ValueRows(CsvReader& csv, std::vector<std::string_view> names, std::size_t required)
    : csv_(csv), values_(names.size(), 0.0) {
  const std::vector<std::string>& header = csv.Header();
  for (std::size_t i = 0; i < header.size(); ++i) {
    const auto name = std::ranges::find(names, header[i]);
    const std::ptrdiff_t value = name != names.end() ? name - names.begin() : kId;
    if (value == kId && !EqualsIgnoringCase(header[i], "id"))
      csv.FailAt(i, "the column is none of this file");
    if (std::ranges::find(columns_, value) != columns_.end()) csv.FailAt(i, "there are two such columns");
    columns_.push_back(value);
  }
  for (std::size_t i = 0; i < required; ++i) {
    if (std::ranges::find(header, names[i]) == header.end()) {
      csv.FailRow(std::string("there is no column ").append(names[i]));
    }
  }
}

bool ValueRows::Next() {
  if (!csv_.Next()) {
    if (rows_ == 0) throw InputError(csv_.Name() + ": there is no row");
    return false;
  }
  id_ = rowNumber_ = std::to_string(++rows_);
  for (const std::ptrdiff_t column : columns_) {
    if (column == kId) {
      id_ = csv_.Text();
      if (id_.empty()) csv_.Fail("the id is empty");
    } else {
      values_[static_cast<std::size_t>(column)] = csv_.Number();
    }
  }
  csv_.EndRecord();
  return true;
}

}  // namespace vrx::io
