#include <vrxmath/foundation/list_box.h>

namespace vrx {

ListBox::~ListBox() = default;
MemoryListBox::~MemoryListBox() = default;

int32_t MemoryListBox::ResetContent() {
  entries_.RemoveAll();
  return 0;
}

int32_t MemoryListBox::AddString(WideView text) {
  if (entries_.GetSize() >= capacity_) return kErrorSpace;
  return entries_.Add({0, text});
}

int32_t MemoryListBox::SetItemData(int32_t index, uint32_t data) {
  if (index < 0 || index >= entries_.GetSize()) return kError;
  entries_[index].id = data;
  return 0;
}

}  // namespace vrx
