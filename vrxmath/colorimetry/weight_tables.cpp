#include <vrxmath/colorimetry/weight_tables.h>

#include <atomic>
#include <cstdio>

#include <vrxmath/colorimetry/illuminant_registry.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/platform/resources.h>

namespace vrx {
namespace {

// Filled on first use. Two threads may both look a table up; they find the same address.
std::atomic<const double*> loadedTables[kBuiltInIlluminants][2];

const double* LoadTable(int32_t illuminant, int32_t observer) {
  char name[16];
  std::snprintf(name, sizeof name, "ILL%02d_%02d", static_cast<int>(illuminant),
                observer == kObserver10 ? 10 : 2);
  const auto bytes = FindBinaryResource("PWD", name);
  if (bytes.size() != kTableDoubles * sizeof(double)) return nullptr;
  return reinterpret_cast<const double*>(bytes.data());  // resources are aligned to 8 bytes
}

}  // namespace

const double* WeightTable(vrxIlluminant illuminant, int32_t observer) {
  if (illuminant < 0 || illuminant >= kBuiltInIlluminants) {
    const double* table = colorimetry_internal::UserWeightTable(illuminant, observer);
    if (table == nullptr) foundation_internal::ReportIndexError();
    return table;
  }
  auto& slot = loadedTables[illuminant][observer == kObserver10 ? 1 : 0];
  const double* table = slot.load(std::memory_order_acquire);
  if (table == nullptr) {
    table = LoadTable(illuminant, observer);
    slot.store(table, std::memory_order_release);
  }
  return table;
}

bool FindWhite(vrxIlluminant illuminant, int32_t observer, White& white) {
  const double* table = WeightTable(illuminant, observer);
  if (table == nullptr) return false;
  const double* whitePoint = table + kTableWhite;
  white = {whitePoint[0], whitePoint[1], whitePoint[2]};
  return true;
}

bool FindViewing(vrxIlluminant illuminant, int32_t observer, Viewing& viewing) {
  viewing.classicHunter = illuminant == vrxIllumC && observer == kObserver2;
  return FindWhite(illuminant, observer, viewing.white);
}

void WhitePoint(vrxIlluminant illuminant, int32_t observer, CTrisValues& white) {
  White n{kUnset, kUnset, kUnset};
  if (!FindWhite(illuminant, observer, n)) return white.SetValues({kUnset, kUnset, kUnset});
  white.SetValues({n.X, n.Y, n.Z});
}

}  // namespace vrx
