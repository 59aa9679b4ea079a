// The list box: what the library needs of a window's list or drop-down list to fill it with names.
//
// A window control implements the interface; MemoryListBox serves hosts without windows, and tests.

#ifndef VRXMATH_FOUNDATION_LIST_BOX_H_
#define VRXMATH_FOUNDATION_LIST_BOX_H_

#include <cstdint>
#include <limits>

#include <vrxmath/export.h>
#include <vrxmath/foundation/list_data.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// A list of texts with a number behind each. Every operation may refuse: it then returns a negative result,
/// kError or kErrorSpace, and changes nothing.
class VRX_API ListBox {
 public:
  static constexpr int32_t kError = -1;       ///< the list cannot do it
  static constexpr int32_t kErrorSpace = -2;  ///< the list has no room for it

  virtual ~ListBox();
  /// Removes all entries.
  virtual int32_t ResetContent() = 0;
  /// Adds one entry and returns its index, which need not be the last one: a list may sort its entries.
  virtual int32_t AddString(WideView text) = 0;
  /// Puts `data` behind entry `index`.
  virtual int32_t SetItemData(int32_t index, uint32_t data) = 0;
};

/// A list box in memory, in the order of addition.
class VRX_API MemoryListBox : public ListBox {
 public:
  /// A list with room for `capacity` entries; AddString answers kErrorSpace beyond it.
  explicit MemoryListBox(int32_t capacity = std::numeric_limits<int32_t>::max()) : capacity_(capacity) {}
  ~MemoryListBox() override;

  int32_t ResetContent() override;
  int32_t AddString(WideView text) override;
  int32_t SetItemData(int32_t index, uint32_t data) override;

  /// The entries: each one's text, and its item data as the id.
  [[nodiscard]] const CListDataArray& Entries() const { return entries_; }

 private:
  int32_t capacity_;
  CListDataArray entries_;
};

/// Empties `list`, then adds the `text` of each of `entries` in order with its `id` as item data. Stops where
/// the list refuses and returns the list's last result.
template <class ENTRIES>
int32_t FillListBox(ListBox& list, const ENTRIES& entries) {
  int32_t result = list.ResetContent();
  for (const auto& entry : entries) {
    if (result < 0) break;
    result = list.AddString(entry.text);
    if (result >= 0) result = list.SetItemData(result, static_cast<uint32_t>(entry.id));
  }
  return result;
}

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_LIST_BOX_H_
