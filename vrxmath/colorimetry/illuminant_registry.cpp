#include <vrxmath/colorimetry/illuminant_registry.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

namespace vrx::colorimetry_internal {
namespace {

struct Entry {
  bool registered = false;
  CString text;
  UserLight light;
  FineTables fineTables;
};

// Entries stay where they are once they are made: colour functions hold addresses of tables.
std::unique_ptr<Entry> entries[kUserIlluminants];

std::unique_ptr<Entry>& EntryOf(int32_t number) {
  return entries[number - kFirstUserIlluminant];
}

// Any other number is the observer of 2 degrees.
std::size_t ObserverPlace(int32_t observer) {
  constexpr int32_t kAt10 = 1;
  return observer == kAt10 ? 1 : 0;
}

Entry* FindEntry(int32_t number) {
  Entry* entry = IsUserIlluminant(number) ? EntryOf(number).get() : nullptr;
  return entry != nullptr && entry->registered ? entry : nullptr;
}

}  // namespace

FineTables::~FineTables() {
  for (auto& ofObserver : made_) {
    for (auto& table : ofObserver) delete table.load();
  }
}

const double* FineTables::Find(int32_t observer, int32_t interval) const {
  const auto* table = made_[ObserverPlace(observer)][interval == 1 ? 1 : 0].load(std::memory_order_acquire);
  return table != nullptr ? table->data() : nullptr;
}

const double* FineTables::Make(const SpectralPower& power, int32_t observer, int32_t interval) {
  auto made = std::make_unique<std::vector<double>>(ComputeFineWeights(power, observer, interval));
  std::vector<double>* first = nullptr;
  auto& slot = made_[ObserverPlace(observer)][interval == 1 ? 1 : 0];
  if (slot.compare_exchange_strong(first, made.get(), std::memory_order_acq_rel)) first = made.release();
  return first->data();
}

void FineTables::Renew(const SpectralPower& power) {
  for (std::size_t observer = 0; observer < made_.size(); ++observer) {
    for (std::size_t k = 0; k < made_[observer].size(); ++k) {
      std::vector<double>* const table = made_[observer][k].load();
      if (table == nullptr) continue;
      const std::vector<double> fresh =
          ComputeFineWeights(power, static_cast<int32_t>(observer), k == 1 ? 1 : 5);
      std::copy(fresh.begin(), fresh.end(), table->begin());
    }
  }
}

bool IsUserIlluminant(int32_t number) {
  return number >= kFirstUserIlluminant && number - kFirstUserIlluminant < kUserIlluminants;
}

bool IsRegistered(int32_t number) {
  return FindEntry(number) != nullptr;
}

void StoreUserIlluminant(int32_t number, CString text, const UserLight& light) {
  std::unique_ptr<Entry>& entry = EntryOf(number);
  if (entry == nullptr) entry = std::make_unique<Entry>();
  entry->text = std::move(text);
  entry->light = light;
  entry->fineTables.Renew(light.power);
  entry->registered = true;
}

void DropUserIlluminant(int32_t number) {
  if (IsRegistered(number)) EntryOf(number)->registered = false;
}

const double* UserWeightTable(int32_t illuminant, int32_t observer) {
  const Entry* entry = FindEntry(illuminant);
  return entry != nullptr ? entry->light.tables[ObserverPlace(observer)].data() : nullptr;
}

const SpectralPower* UserSpectrum(int32_t illuminant) {
  const Entry* entry = FindEntry(illuminant);
  return entry != nullptr ? &entry->light.power : nullptr;
}

FineTables* UserFineTables(int32_t illuminant) {
  Entry* entry = FindEntry(illuminant);
  return entry != nullptr ? &entry->fineTables : nullptr;
}

WideView UserIlluminantText(int32_t illuminant) {
  const Entry* entry = FindEntry(illuminant);
  return entry != nullptr ? entry->text.View() : WideView();
}

}  // namespace vrx::colorimetry_internal
