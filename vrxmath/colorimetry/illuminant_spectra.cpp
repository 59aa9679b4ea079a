#include <vrxmath/colorimetry/illuminant_spectra.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <span>
#include <string>

#include <vrxmath/colorimetry/illuminant_registry.h>
#include <vrxmath/platform/resources.h>

namespace vrx {
namespace {

constexpr std::string_view kHorizon = "Planck 2300 K";

// Which spectrum stands behind each illuminant number. Two lamps of the trade are represented by the CIE
// illuminant of their kind: number 8 by F10, 9 by F12. Both horizon illuminants are a Planckian radiator at
// 2300 K, for want of a published spectrum of the lamp behind number 15.
constexpr std::string_view kSpectra[] = {
    "A",      "C",      "D65",    "F2",     "F11",     "D50",      "D55",    "D75",   "F10",
    "F12",    "F6",     "F7",     "F8",     "F10",     kHorizon,   kHorizon, "F4",    "LED-B1",
    "LED-B2", "LED-B3", "LED-B4", "LED-B5", "LED-BH1", "LED-RGB1", "LED-V1", "LED-V2"};
static_assert(std::size(kSpectra) == static_cast<std::size_t>(kBuiltInIlluminants));

// A tabulated spectrum: its first wavelength, the step, and the values.
std::span<const double> TableOf(std::string_view name) {
  std::string resource(name);
  std::ranges::replace(resource, '-', '_');
  const auto bytes = FindBinaryResource("SPD", resource);
  return {reinterpret_cast<const double*>(bytes.data()),
          bytes.size() / sizeof(double)};  // aligned to 8 bytes
}

}  // namespace

std::string_view SpectrumName(vrxIlluminant illuminant) {
  const bool isBuiltIn = illuminant >= 0 && illuminant < kBuiltInIlluminants;
  return isBuiltIn ? kSpectra[illuminant] : std::string_view();
}

bool FindPublishedSpectrum(std::string_view name, SpectralPower& power) {
  if (name == "A" || name == kHorizon) {
    power = name == "A" ? PlanckianSpectrum(2848.0, 1.435e7) : PlanckianSpectrum(2300.0, 1.4388e7);
    return true;
  }
  const std::span<const double> table = TableOf(name);
  if (table.empty()) return false;
  power = ResampleSpectrum(table.subspan(2), static_cast<int32_t>(table[0]), static_cast<int32_t>(table[1]),
                           name == "D65" ? SpectralInterpolation::kLinear : SpectralInterpolation::kLagrange);
  return true;
}

bool FindIlluminantSpectrum(vrxIlluminant illuminant, SpectralPower& power) {
  if (const SpectralPower* own = colorimetry_internal::UserSpectrum(illuminant); own != nullptr) {
    power = *own;
    return true;
  }
  return FindPublishedSpectrum(SpectrumName(illuminant), power);
}

}  // namespace vrx
