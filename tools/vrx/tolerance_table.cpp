#include "tools/vrx/tolerance_table.h"

#include <algorithm>
#include <array>

#include "tools/vrx/command.h"
#include "tools/vrx/conditions.h"

namespace vrx::tool {

namespace {

constexpr int32_t kAll = -1;
static_assert(kAll == kNoGeometry, "an empty geometry means all of them");

constexpr std::array<std::string_view, 3> kKeyColumns{"standard", "geometry", "illuminant"};
constexpr std::array<std::string_view, 7> kLimitColumns{"plus0", "minus0", "plus1", "minus1",
                                                        "plus2", "minus2", "total"};

// Why a box is of no use; empty for a good one.
std::string_view Objection(const CBoxTolData& box) {
  for (int32_t d = 0; d < 3; ++d) {
    const Interval limits = box.Limits(d);
    if (!(limits.lower <= limits.upper)) return "the plus and minus limits of a component cross";
  }
  return box[6] >= 0 ? "" : "the limit of the total difference is negative";
}

// Where in the header each of the three keys and seven limits stands.
struct Layout {
  std::vector<std::size_t> keyOf, limitOf;  // by column: index of the key or limit that it holds

  explicit Layout(const CsvReader& csv) {
    std::array<bool, kKeyColumns.size() + kLimitColumns.size()> seen{};
    for (std::size_t i = 0; i < csv.Header().size(); ++i) {
      const std::string& name = csv.Header()[i];
      const auto matches = [&](std::string_view known) { return EqualsIgnoringCase(name, known); };
      const auto key =
          static_cast<std::size_t>(std::ranges::find_if(kKeyColumns, matches) - kKeyColumns.begin());
      const auto limit =
          static_cast<std::size_t>(std::ranges::find_if(kLimitColumns, matches) - kLimitColumns.begin());
      if (key == kKeyColumns.size() && limit == kLimitColumns.size()) {
        csv.FailAt(i, "the column is none of a tolerance file");
      }
      bool& known = seen[key < kKeyColumns.size() ? key : kKeyColumns.size() + limit];
      if (std::exchange(known, true)) csv.FailAt(i, "there are two such columns");
      keyOf.push_back(key);
      limitOf.push_back(limit);
    }
    for (std::size_t i = 0; i < kLimitColumns.size(); ++i) {
      if (!seen[kKeyColumns.size() + i])
        csv.FailRow(std::string("there is no column ").append(kLimitColumns[i]));
    }
  }
};

struct Row {
  std::string standard;
  int32_t geometry = kAll;
  int32_t illuminant = kAll;
  CBoxTolData box;
};

int32_t ReadIlluminant(CsvReader& csv) {
  const std::string_view text = csv.Text();
  if (text.empty()) return kAll;
  try {
    return ParseIlluminant(text);
  } catch (const InputError& error) {
    csv.Fail(error.what());
  }
}

int32_t ReadGeometry(CsvReader& csv) {
  const int32_t geometry = ParseGeometry(csv.Text());
  if (geometry == kUnknownGeometry) csv.Fail("unknown geometry");
  return geometry;
}

Row ReadRow(CsvReader& csv, const Layout& layout) {
  Row row;
  for (std::size_t i = 0; i < layout.keyOf.size(); ++i) {
    if (layout.limitOf[i] < kLimitColumns.size()) {
      row.box[static_cast<std::ptrdiff_t>(layout.limitOf[i])] = csv.Number();
    } else if (layout.keyOf[i] == 0) {
      row.standard = std::string(csv.Text());
    } else if (layout.keyOf[i] == 1) {
      row.geometry = ReadGeometry(csv);
    } else {
      row.illuminant = ReadIlluminant(csv);
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
    throw InputError("--tolerance: one number or the seven of a box are expected");
  }
  const std::string_view objection = Objection(box);
  if (!objection.empty()) throw InputError(std::string("--tolerance: ").append(objection));
  return box;
}

void ToleranceTable::Load(CsvReader& csv) {
  const Layout layout(csv);
  for (std::size_t count = 0; csv.Next(); ++count) {
    if (count == kMaxRows) csv.FailRow("a tolerance file may have 200000 rows");
    const Row row = ReadRow(csv, layout);
    if (const auto objection = Objection(row.box); !objection.empty()) csv.FailRow(std::string(objection));
    if (!rows_[row.standard].emplace(std::pair(row.geometry, row.illuminant), row.box).second) {
      csv.FailRow("an earlier row speaks of the same standard, geometry and illuminant");
    }
  }
}

const CBoxTolData* ToleranceTable::FindIn(const Boxes& boxes, int32_t geometry, int32_t illuminant) {
  const std::pair<int32_t, int32_t> keys[] = {
      {geometry, illuminant}, {geometry, kAll}, {kAll, illuminant}, {kAll, kAll}};
  for (const auto& key : keys) {
    if (const auto found = boxes.find(key); found != boxes.end()) return &found->second;
  }
  return nullptr;
}

const CBoxTolData& ToleranceTable::Find(std::string_view standard, int32_t geometry,
                                        vrxIlluminant illuminant) const {
  for (const std::string_view key : {standard, std::string_view()}) {
    const auto boxes = rows_.find(key);
    if (boxes == rows_.end()) continue;
    if (const CBoxTolData* box = FindIn(boxes->second, geometry, illuminant)) return *box;
  }
  return default_;
}

}  // namespace vrx::tool
