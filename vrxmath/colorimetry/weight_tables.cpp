#include <vrxmath/colorimetry/weight_tables.h>

#include <atomic>
#include <cstdio>

#include <vrxmath/colorimetry/user_illuminants.h>
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
  const auto bytes = FindResource("PWD", name);
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

void WhitePoint(vrxIlluminant illuminant, int32_t observer, CTrisValues& white) {
  const double* table = WeightTable(illuminant, observer);
  for (int32_t k = 0; k < 3; ++k) white[k] = table ? table[kTableWhite + k] : kUnset;
}

void CReflData::Tristimulus(vrxIlluminant illuminant, int32_t observer, CTrisValues& result) const {
  const double* table = IsUnset(*this) ? nullptr : WeightTable(illuminant, observer);
  if (table != nullptr && GetSize() < kWavelengths) {
    foundation_internal::ReportIndexError();
    table = nullptr;
  }
  if (table == nullptr) return result.Fill(kUnset);
  // Three sums side by side: each keeps its own order, from the shortest wavelength up.
  double X = 0.0, Y = 0.0, Z = 0.0;
  for (int32_t i = 0; i < kWavelengths; ++i) {
    X += table[i] * data_[i];
    Y += table[kWavelengths + i] * data_[i];
    Z += table[2 * kWavelengths + i] * data_[i];
  }
  result[0] = X * 0.01;
  result[1] = Y * 0.01;
  result[2] = Z * 0.01;
}

}  // namespace vrx
