#include <vrxmath/foundation/list_data.h>

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

#include <vrxmath/foundation/list_box.h>
#include <vrxmath/foundation/record_archive.h>
#include <vrxmath/platform/with_memory.h>

namespace vrx {
namespace {

// Sorts by a key that is computed once per element.
template <class ELEMENT, class KEY_OF>
void StableSortByKey(ELEMENT* begin, ELEMENT* end, KEY_OF keyOf) {
  std::vector<std::pair<int32_t, ELEMENT>> keyed;
  platform_internal::WithMemory([&] { keyed.reserve(static_cast<std::size_t>(end - begin)); });
  for (const ELEMENT* element = begin; element != end; ++element) {
    keyed.emplace_back(keyOf(*element), *element);
  }
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (auto& [key, element] : keyed) *begin++ = std::move(element);
}

template <class LESS>
void StableSort(CListDataArray& list, bool descending, LESS less) {
  std::stable_sort(list.begin(), list.end(), [&](const CListData& a, const CListData& b) {
    return descending ? less(b, a) : less(a, b);
  });
}

template <class MATCHES>
int32_t IndexOfFirst(const CListDataArray& list, MATCHES matches) {
  const CListData* found = std::find_if(list.begin(), list.end(), matches);
  return found == list.end() ? -1 : static_cast<int32_t>(found - list.begin());
}

}  // namespace

void CListData::Serialize(CArchive& archive) {
  SerializeFields(archive, id, text);
}

int32_t CListDataArray::IndexOfText(WideView wanted) const {
  return IndexOfFirst(*this, [&](const CListData& entry) { return entry.text == wanted; });
}

int32_t CListDataArray::IndexOfId(uint32_t wanted) const {
  return IndexOfFirst(*this, [&](const CListData& entry) { return entry.id == wanted; });
}

void CListDataArray::SortByText(bool descending) {
  StableSort(*this, descending, [](const CListData& a, const CListData& b) { return a.text < b.text; });
}

void CListDataArray::SortById(bool descending) {
  StableSort(*this, descending, [](const CListData& a, const CListData& b) {
    return std::tie(a.id, a.text) < std::tie(b.id, b.text);
  });
}

void CListDataArray::SortLike(const CListDataArray& reference) {
  StableSortByKey(begin(), end(), [&](const CListData& entry) { return reference.IndexOfText(entry.text); });
}

void CListDataArray::SortIds(CDWordArray1& ids) const {
  StableSortByKey(ids.begin(), ids.end(), [&](uint32_t id) { return IndexOfId(id); });
}

int32_t CListDataArray::FillList(ListBox& list) const {
  return FillListBox(list, *this);
}

}  // namespace vrx
