#include <vrxmath/colorimetry/user_illuminants.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include <vrxmath/foundation/string_numbers.h>

namespace vrx {
namespace {

// The range that a spectrum has to cover, and where it has to have power, in nm.
constexpr int32_t kVisibleFirst = 400;
constexpr int32_t kVisibleLast = 700;
constexpr int64_t kLongestWavelength = 10000;

// A code by which the illuminant can be asked for: not a number, and nobody else's.
bool IsUsableCode(WideView code, vrxUserIllum number) {
  const auto isDigit = [](WideChar c) { return c >= u'0' && c <= u'9'; };
  if (std::all_of(code.begin(), code.end(), isDigit)) return false;  // the empty code too
  vrxIlluminant owner;
  return !FindIlluminant(code, owner) || owner == IlluminantOf(number);
}

IlluminantError CheckGrid(std::size_t count, int32_t first, int32_t step) {
  if (step != 1 && step != 5 && step != 10) return IlluminantError::kStep;
  const int32_t fewest = (kVisibleLast - kVisibleFirst) / step + 1;
  if (count < static_cast<std::size_t>(fewest)) return IlluminantError::kTooShort;
  if (first < 1 || first > kVisibleFirst || count > static_cast<std::size_t>(kLongestWavelength)) {
    return IlluminantError::kRange;
  }
  const int64_t last = first + step * (static_cast<int64_t>(count) - 1);
  return last < kVisibleLast || last > kLongestWavelength ? IlluminantError::kRange : IlluminantError::kNone;
}

IlluminantError CheckPower(std::span<const double> power, int32_t first, int32_t step) {
  double visible = 0.0;
  int32_t wavelength = first;
  for (const double value : power) {
    if (!std::isfinite(value)) return IlluminantError::kNumeric;
    if (value < 0.0) return IlluminantError::kNegative;
    if (wavelength >= kVisibleFirst && wavelength <= kVisibleLast) visible += value;
    wavelength += step;
  }
  return visible > 0.0 ? IlluminantError::kNone : IlluminantError::kNoPower;
}

bool IsFinite(const WeightingTable& table) {
  return std::all_of(table.begin(), table.end(), [](double value) { return std::isfinite(value); });
}

IlluminantError Check(vrxUserIllum number, WideView name, std::span<const double> power, int32_t first,
                      int32_t step) {
  if (!colorimetry_internal::IsUserIlluminant(number)) return IlluminantError::kNumber;
  if (!IsUsableCode(name.substr(0, name.find(u'|')), number)) return IlluminantError::kName;
  return CheckSpectrum(power, first, step);
}

}  // namespace

IlluminantError CheckSpectrum(std::span<const double> power, int32_t firstWavelength, int32_t step) {
  const IlluminantError error = CheckGrid(power.size(), firstWavelength, step);
  return error == IlluminantError::kNone ? CheckPower(power, firstWavelength, step) : error;
}

CString IlluminantErrorText(IlluminantError error) {
  if (error == IlluminantError::kNone) return {};
  return CString::Load(kStringIlluminantError + static_cast<uint32_t>(error) - 1);
}

IlluminantError RegisterUserIlluminant(vrxUserIllum number, WideView name, std::span<const double> power,
                                       int32_t firstWavelength, int32_t step,
                                       SpectralInterpolation interpolation) {
  const IlluminantError error = Check(number, name, power, firstWavelength, step);
  if (error != IlluminantError::kNone) return error;
  colorimetry_internal::UserLight light{ResampleSpectrum(power, firstWavelength, step, interpolation), {}};
  light.tables = {ComputeWeightingTable(light.power, kObserver2),
                  ComputeWeightingTable(light.power, kObserver10)};
  if (!std::all_of(light.tables.begin(), light.tables.end(), IsFinite)) return IlluminantError::kNumeric;
  CString text(name);
  if (name.find(u'|') == WideView::npos) (text += u'|') += name;
  colorimetry_internal::StoreUserIlluminant(number, std::move(text), light);
  return IlluminantError::kNone;
}

void RemoveUserIlluminant(vrxUserIllum number) {
  colorimetry_internal::DropUserIlluminant(number);
}

CUserIllumArray RegisteredUserIlluminants() {
  CUserIllumArray numbers;
  for (int32_t i = 0; i < kUserIlluminants; ++i) {
    const int32_t number = kFirstUserIlluminant + i;
    if (colorimetry_internal::IsRegistered(number)) numbers.Add(static_cast<vrxUserIllum>(number));
  }
  return numbers;
}

}  // namespace vrx
