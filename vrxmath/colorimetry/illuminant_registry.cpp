#include <vrxmath/colorimetry/illuminant_registry.h>

#include <memory>
#include <utility>

namespace vrx::colorimetry_internal {
namespace {

struct Entry {
  bool registered = false;
  CString text;
  std::array<WeightingTable, 2> tables;  // by observer
};

// Entries stay where they are once they are made: colour functions hold addresses of tables.
std::unique_ptr<Entry> entries[kUserIlluminants];

std::unique_ptr<Entry>& EntryOf(int32_t number) {
  return entries[number - kFirstUserIlluminant];
}

const Entry* FindEntry(int32_t number) {
  const Entry* entry = IsUserIlluminant(number) ? EntryOf(number).get() : nullptr;
  return entry != nullptr && entry->registered ? entry : nullptr;
}

}  // namespace

bool IsUserIlluminant(int32_t number) {
  return number >= kFirstUserIlluminant && number - kFirstUserIlluminant < kUserIlluminants;
}

bool IsRegistered(int32_t number) {
  return FindEntry(number) != nullptr;
}

void StoreUserIlluminant(int32_t number, CString text, const std::array<WeightingTable, 2>& tables) {
  std::unique_ptr<Entry>& entry = EntryOf(number);
  if (entry == nullptr) entry = std::make_unique<Entry>();
  entry->text = std::move(text);
  entry->tables = tables;
  entry->registered = true;
}

void DropUserIlluminant(int32_t number) {
  if (IsRegistered(number)) EntryOf(number)->registered = false;
}

const double* UserWeightTable(int32_t illuminant, int32_t observer) {
  constexpr int32_t kAt10 = 1;  // any other number is the observer of 2 degrees
  const Entry* entry = FindEntry(illuminant);
  return entry != nullptr ? entry->tables[observer == kAt10 ? 1 : 0].data() : nullptr;
}

WideView UserIlluminantText(int32_t illuminant) {
  const Entry* entry = FindEntry(illuminant);
  return entry != nullptr ? entry->text.View() : WideView();
}

}  // namespace vrx::colorimetry_internal
