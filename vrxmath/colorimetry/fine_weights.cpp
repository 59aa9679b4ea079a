#include <vrxmath/colorimetry/fine_weights.h>

#include <cstddef>

#include <vrxmath/colorimetry/illuminant_registry.h>
#include <vrxmath/colorimetry/illuminant_spectra.h>
#include <vrxmath/foundation/numbers.h>

namespace vrx {
namespace {

colorimetry_internal::FineTables builtInTables[kBuiltInIlluminants];

}  // namespace

const double* FineWeightTable(vrxIlluminant illuminant, int32_t observer, int32_t interval) {
  if (!IsFineInterval(interval)) return nullptr;
  const bool isBuiltIn = illuminant >= 0 && illuminant < kBuiltInIlluminants;
  auto* const tables =
      isBuiltIn ? &builtInTables[illuminant] : colorimetry_internal::UserFineTables(illuminant);
  if (tables == nullptr) return nullptr;
  if (const double* made = tables->Find(observer, interval); made != nullptr) return made;
  SpectralPower power;
  return FindIlluminantSpectrum(illuminant, power) ? tables->Make(power, observer, interval) : nullptr;
}

bool FineTristimulus(std::span<const double> curve, int32_t interval, vrxIlluminant illuminant,
                     int32_t observer, Xyz& result) {
  const double* const weights = FineWeightTable(illuminant, observer, interval);
  if (weights == nullptr) return false;
  const auto n = static_cast<std::size_t>(FineSamples(interval));
  if (curve.size() != n || IsUnset(curve[0])) return false;
  double X = 0.0, Y = 0.0, Z = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    X += weights[i] * curve[i];
    Y += weights[n + i] * curve[i];
    Z += weights[2 * n + i] * curve[i];
  }
  result = {X * 0.01, Y * 0.01, Z * 0.01};
  return true;
}

}  // namespace vrx
