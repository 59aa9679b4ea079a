#include <vrxio/csv/tolerance_table.h>

#include <algorithm>
#include <array>

#include <vrxio/measurement/names.h>
#include <vrxio/text/input_error.h>

namespace vrx::io {

namespace {

constexpr int32_t kAll = -1;
static_assert(kAll == kNoGeometry, "an empty geometry means all of them");

constexpr std::array<std::string_view, 7> kBoxColumns{"plus0", "minus0", "plus1", "minus1",
                                                      "plus2", "minus2", "total"};
constexpr std::array<std::string_view, CEllipseData::kValues> kEllipseColumns{
    "centreL", "centreA", "centreB", "lightness", "major", "minor", "angle", "total", "factor"};

std::span<const std::string_view> ColumnsOf(const CBoxTolData&) {
  return kBoxColumns;
}
std::span<const std::string_view> ColumnsOf(const CEllipseData&) {
  return kEllipseColumns;
}

// Why limits are of no use; empty for good ones.
std::string_view Objection(const CBoxTolData& box) {
  for (int32_t d = 0; d < 3; ++d) {
    const Interval limits = box.Limits(d);
    if (!(limits.lower <= limits.upper)) return "the plus and minus limits of a component cross";
  }
  return box[CBoxTolData::kTotal] >= 0 ? "" : "the limit of the total difference is negative";
}
std::string_view Objection(const CEllipseData& ellipse) {
  for (int32_t k = CEllipseData::kLightnessAxis; k <= CEllipseData::kMinorAxis; ++k) {
    if (!(ellipse[k] > 0)) return "a semi-axis is not above 0";
  }
  return ellipse[CEllipseData::kTotalLimit] >= 0 ? "" : "the limit of the total difference is negative";
}

// The columns that say what a row holds for.
enum Key : std::size_t { kStandard, kGeometry, kIlluminant, kSystem, kObserver, kKeys };
constexpr std::array<std::string_view, kKeys> kKeyColumns{"standard", "geometry", "illuminant", "system",
                                                          "observer"};

// Where in the header each of the keys and limits stands.
struct Layout {
  std::vector<std::size_t> fields;  // by column: a key, or kKeys and the index of a limit

  Layout(const CsvReader& csv, std::span<const std::string_view> limitColumns) {
    std::vector<std::string_view> names(kKeyColumns.begin(), kKeyColumns.end());
    names.insert(names.end(), limitColumns.begin(), limitColumns.end());
    for (std::size_t i = 0; i < csv.Header().size(); ++i) {
      const std::string& heading = csv.Header()[i];
      const auto name = std::ranges::find_if(
          names, [&](std::string_view known) { return EqualsIgnoringCase(heading, known); });
      if (name == names.end()) csv.FailAt(i, "unknown column in a tolerance file");
      const auto field = static_cast<std::size_t>(name - names.begin());
      if (std::ranges::find(fields, field) != fields.end()) csv.FailAt(i, "the column appears twice");
      fields.push_back(field);
    }
    for (std::size_t field = kKeys; field < names.size(); ++field) {
      if (std::ranges::find(fields, field) == fields.end()) {
        csv.FailRow(std::string("there is no column ").append(names[field]));
      }
    }
  }
};

template <class LIMITS>
struct TableRow {
  std::string standard;
  int32_t geometry = kAll;
  int32_t illuminant = kAll;
  LIMITS limits;
};

// The value of the next field by a parser; `ifEmpty` for an empty one.
template <class PARSER>
int32_t ReadName(CsvReader& csv, PARSER parse, int32_t ifEmpty) {
  const std::string_view text = csv.Text();
  if (text.empty()) return ifEmpty;
  try {
    return parse(text);
  } catch (const InputError& error) {
    csv.Fail(error.what());
  }
}

int32_t ReadGeometry(CsvReader& csv) {
  const std::string_view text = csv.Text();
  const int32_t geometry = ParseGeometry(text);
  if (geometry == kUnknownGeometry) csv.Fail(GeometryRefusal(text));
  return geometry;
}

void CheckScope(CsvReader& csv, std::size_t key, const LimitScope& scope) {
  if (key == kSystem && ReadName(csv, ParseSystem, scope.system) != scope.system) {
    csv.Fail("the limits are for another system than --system " + std::string(ShortNameOf(scope.system)));
  }
  if (key == kObserver && ReadName(csv, ParseObserver, scope.observer) != scope.observer) {
    csv.Fail("the limits are for another observer than --observer " +
             std::to_string(DegreesOf(scope.observer)));
  }
}

template <class LIMITS>
TableRow<LIMITS> ReadRow(CsvReader& csv, const Layout& layout, const LimitScope& scope) {
  TableRow<LIMITS> row;
  for (const std::size_t field : layout.fields) {
    if (field >= kKeys) {
      row.limits[static_cast<int32_t>(field - kKeys)] = csv.Number();
    } else if (field == kStandard) {
      row.standard = std::string(csv.Text());
    } else if (field == kGeometry) {
      row.geometry = ReadGeometry(csv);
    } else if (field == kIlluminant) {
      row.illuminant = ReadName(csv, ParseIlluminant, kAll);
    } else {
      CheckScope(csv, field, scope);
    }
  }
  csv.EndRecord();
  return row;
}

}  // namespace

CBoxTolData BoxFromNumbers(const std::vector<double>& numbers) {
  CBoxTolData box;
  if (numbers.size() == 1) {
    box.Fill(numbers.front());
  } else if (numbers.size() == 7) {
    std::ranges::copy(numbers, box.begin());
  } else {
    throw InputError("--tolerance: must be one number or the seven of a box");
  }
  const std::string_view objection = Objection(box);
  if (!objection.empty()) throw InputError(std::string("--tolerance: ").append(objection));
  return box;
}

std::span<const std::string_view> EllipseColumns() {
  return kEllipseColumns;
}

template <class LIMITS>
void LimitTable<LIMITS>::Load(CsvReader& csv, const LimitScope& scope) {
  const Layout layout(csv, ColumnsOf(LIMITS()));
  for (std::size_t count = 0; csv.Next(); ++count) {
    if (count == kMaxRows) csv.FailRow("a tolerance file may have 200000 rows");
    const TableRow<LIMITS> row = ReadRow<LIMITS>(csv, layout, scope);
    if (const auto objection = Objection(row.limits); !objection.empty()) csv.FailRow(std::string(objection));
    const Entry entry{row.limits, csv.Line(), {}};
    if (!rows_[row.standard].try_emplace(std::pair(row.geometry, row.illuminant), entry).second) {
      csv.FailRow("an earlier row is for the same standard, geometry and illuminant");
    }
  }
  if (rows_.empty()) throw InputError(csv.Name() + ": there is no row of limits");
}

template <class LIMITS>
void LimitTable<LIMITS>::Add(const std::string& standard, const Row& row) {
  rows_[standard].insert_or_assign(std::pair(row.geometry, row.illuminant), Entry{row.limits, 0, {}});
}

template <class LIMITS>
auto LimitTable<LIMITS>::RowsOf(const std::string& standard) const -> std::vector<Row> {
  std::vector<Row> rows;
  const auto entries = rows_.find(standard);
  if (entries == rows_.end()) return rows;
  for (const auto& [key, entry] : entries->second) rows.push_back({key.first, key.second, entry.limits});
  return rows;
}

template <class LIMITS>
auto LimitTable<LIMITS>::FindIn(const Entries& entries, int32_t geometry, int32_t illuminant)
    -> const Entry* {
  const std::pair<int32_t, int32_t> keys[] = {
      {geometry, illuminant}, {geometry, kAll}, {kAll, illuminant}, {kAll, kAll}};
  for (const auto& key : keys) {
    if (const auto found = entries.find(key); found != entries.end()) return &found->second;
  }
  return nullptr;
}

template <class LIMITS>
const LIMITS* LimitTable<LIMITS>::Find(std::string_view standard, int32_t geometry,
                                       vrxIlluminant illuminant) const {
  for (const std::string_view key : {standard, std::string_view()}) {
    const auto entries = rows_.find(key);
    if (entries == rows_.end()) continue;
    if (const Entry* entry = FindIn(entries->second, geometry, illuminant)) {
      entry->mark.Use();
      return &entry->limits;
    }
  }
  return nullptr;
}

template <class LIMITS>
std::size_t LimitTable<LIMITS>::Size() const {
  std::size_t size = 0;
  for (const auto& [standard, entries] : rows_) size += entries.size();
  return size;
}

// "standard p02, SCI, D65": what a row is for; empty for the row for all.
template <class LIMITS>
std::string LimitTable<LIMITS>::ScopeText(const std::string& standard, const Key& key) {
  std::string what = standard.empty() ? "" : "standard " + standard;
  const auto add = [&what](const std::string& word) { what.append(what.empty() ? "" : ", ").append(word); };
  if (key.first != kAll) add(GeometryName(key.first));
  if (key.second != kAll) add(CodeOf(static_cast<vrxIlluminant>(key.second)));
  return what;
}

template <class LIMITS>
std::vector<std::string> LimitTable<LIMITS>::UnusedRows() const {
  std::multimap<int64_t, std::string> unused;  // by line, 0 for what stands in none
  for (const auto& [standard, entries] : rows_) {
    for (const auto& [key, entry] : entries) {
      const std::string what = ScopeText(standard, key);
      if (entry.mark.IsUsed() || what.empty()) continue;
      unused.emplace(entry.line,
                     entry.line == 0 ? what : "line " + std::to_string(entry.line) + " (" + what + ")");
    }
  }
  std::vector<std::string> rows;
  rows.reserve(unused.size());
  for (auto& [line, text] : unused) rows.push_back(std::move(text));
  return rows;
}

template <class LIMITS>
std::vector<std::string> LimitTable<LIMITS>::UnusedRowsOfUsed() const {
  std::vector<std::string> rows;
  for (const auto& [standard, entries] : rows_) {
    if (standard.empty() ||
        std::ranges::none_of(entries, [](const auto& row) { return row.second.mark.IsUsed(); }))
      continue;
    for (const auto& [key, entry] : entries) {
      if (!entry.mark.IsUsed() && key != Key(kAll, kAll)) rows.push_back(ScopeText(standard, key));
    }
  }
  return rows;
}

template class LimitTable<CBoxTolData>;
template class LimitTable<CEllipseData>;

}  // namespace vrx::io
