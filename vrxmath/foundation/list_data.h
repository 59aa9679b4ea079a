// Pick-list data: numbers with display texts, looked up both ways and sorted in place.

#ifndef VRXMATH_FOUNDATION_LIST_DATA_H_
#define VRXMATH_FOUNDATION_LIST_DATA_H_

#include <cstddef>
#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/foundation/typed_arrays.h>
#include <vrxmath/platform/archive.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

class ListBox;

/// One entry of a pick list.
struct VRX_API CListData {
  using MovesBitwise = CListData;

  uint32_t id = 0;
  CString text;

  bool operator==(const CListData&) const = default;

  /// Archive form: the id (32 bits), then the text. Throws as CArchive does; the entry is then unchanged.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 6;
};

/// A pick list. Texts are compared exactly, unit by unit and case-sensitively. The sorts are stable: entries
/// with equal keys keep their order.
class VRX_API CListDataArray : public CArrayVarex<CListData> {
 public:
  /// Index of the first entry with that text or id; -1 when there is none.
  [[nodiscard]] int32_t IndexOfText(WideView wanted) const;
  [[nodiscard]] int32_t IndexOfId(uint32_t wanted) const;

  void SortByText(bool descending);
  /// By id; equal ids by text in the same direction.
  void SortById(bool descending);
  /// Into the order that the texts have in `reference`; entries that it lacks come first.
  void SortLike(const CListDataArray& reference);
  /// Sorts `ids` into the order that they have in this list; those that it lacks come first.
  void SortIds(CDWordArray1& ids) const;

  /// Fills `list` with the texts, ids as item data; see FillListBox.
  int32_t FillList(ListBox& list) const;

  static constexpr std::size_t kMinArchiveBytes = 2;
};

using CListDataArray2 = CArrayVarex<CListDataArray>;

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_LIST_DATA_H_
