#include <vrxmath/colorant/colorant_rules.h>

#include <algorithm>
#include <limits>
#include <utility>

#include <vrxmath/platform/exceptions.h>

namespace vrx {
namespace {

constexpr int32_t kLargestCount = 0xFFFF;

// -1 when there is none.
int32_t IndexOfId(const CDWordArray1& ids, uint32_t id) {
  const uint32_t* found = std::find(ids.begin(), ids.end(), id);
  return found == ids.end() ? -1 : static_cast<int32_t>(found - ids.begin());
}

bool ContainsAll(const CDWordArray1& candidates, const CDWordArray1& row) {
  return std::all_of(row.begin(), row.end(), [&](uint32_t id) { return IndexOfId(candidates, id) >= 0; });
}

void StoreRow(CArchive& archive, const CDWordArray1& row) {
  archive << static_cast<uint16_t>(row.GetSize());
  for (const uint32_t id : row) archive << static_cast<uint16_t>(id);
}

// Reads a 16-bit count whose elements take at least two bytes each.
int32_t LoadCount(CArchive& archive) {
  uint16_t count = 0;
  archive >> count;
  archive.RequireBytes(count * sizeof(uint16_t));
  return count;
}

void LoadRow(CArchive& archive, CDWordArray1& row) {
  row.SetSize(LoadCount(archive));
  for (uint32_t& id : row) {
    uint16_t low = 0;
    archive >> low;
    id = low;
  }
}

}  // namespace

VRX_IMPLEMENT_DYNAMIC(CColorantRulesData, CObject)

CColorantRulesData::~CColorantRulesData() = default;

int32_t CColorantRulesData::LongestRow() const {
  int32_t longest = 0;
  for (const CDWordArray1& row : rules_) longest = std::max(longest, row.GetSize());
  return longest;
}

int32_t CColorantRulesData::FindInRow(std::ptrdiff_t row, uint32_t componentId) const {
  return IndexOfId(rules_[row], componentId);
}

bool CColorantRulesData::IsAllowed(const CDWordArray1& candidates) const {
  if (candidates.GetSize() < 2) return true;
  return std::none_of(rules_.begin(), rules_.end(), [&](const CDWordArray1& row) {
    return !row.IsEmpty() && ContainsAll(candidates, row);
  });
}

CWordArray1 CColorantRulesData::MembersPresent(std::ptrdiff_t row, const CDWordArray1& candidates) const {
  CWordArray1 positions;
  for (const uint32_t id : rules_[row]) {
    const int32_t position = IndexOfId(candidates, id);
    if (position >= 0) positions.Add(static_cast<uint16_t>(position));
  }
  return positions;
}

void CColorantRulesData::SetRow(std::ptrdiff_t i, const CDWordArray1& row) {
  if (i < 0 || i >= std::numeric_limits<int32_t>::max()) throw CInvalidArgException();
  CDWordArray1 copy(row);  // `row` may be one of these rows
  if (i >= rules_.GetSize()) rules_.SetSize(static_cast<int32_t>(i) + 1);
  rules_[i] = std::move(copy);
}

int32_t CColorantRulesData::AppendRow(const CDWordArray1& row) {
  return rules_.Add(row);
}

void CColorantRulesData::AppendAll(const CColorantRulesData& other) {
  const CDWordArray2 rows = other.rules_;
  for (const CDWordArray1& row : rows) AppendRow(row);
}

void CColorantRulesData::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    if (rules_.GetSize() > kLargestCount || LongestRow() > kLargestCount) throw CInvalidArgException();
    archive << static_cast<uint16_t>(rules_.GetSize());
    for (const CDWordArray1& row : rules_) StoreRow(archive, row);
    return;
  }
  CDWordArray2 loaded;
  loaded.SetSize(LoadCount(archive));
  for (CDWordArray1& row : loaded) LoadRow(archive, row);
  rules_ = std::move(loaded);
}

}  // namespace vrx
