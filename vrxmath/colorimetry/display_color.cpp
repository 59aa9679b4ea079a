#include <vrxmath/colorimetry/display_color.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <utility>

#include <vrxmath/colorimetry/weight_tables.h>

namespace vrx {
namespace {

struct Chromaticities {
  double x, y, z;
};

struct DisplayPrimaries {
  std::array<Chromaticities, 3> primaries;  // red, green, blue
  double gamma;
};

constexpr DisplayPrimaries kDefaultPrimaries{{{{0.64, 0.33, 0.03}, {0.30, 0.60, 0.10}, {0.15, 0.06, 0.79}}},
                                             2.2};
DisplayPrimaries display = kDefaultPrimaries;

using Vector3 = std::array<double, 3>;
using Equations = std::array<std::array<double, 4>, 3>;  // three coefficients and the right-hand side each

Vector3 Normalised(const Chromaticities& primary) {
  return {primary.x / primary.y, primary.y / primary.y, primary.z / primary.y};
}

// Gaussian elimination with the pivots, the order of operations and so the bits of CMatrix::GaussSolve, without its
// memory. The solution is 0 where there is none.
Vector3 Solve(Equations a) {
  constexpr double kSingularPivot = 1e-17;
  for (std::size_t i = 0; i < 3; ++i) {
    const auto larger = [i](const auto& p, const auto& q) { return std::fabs(p[i]) < std::fabs(q[i]); };
    std::swap(a[i], *std::max_element(a.begin() + static_cast<std::ptrdiff_t>(i), a.end(), larger));
    if (std::fabs(a[i][i]) < kSingularPivot) return {};
    for (std::size_t j = i + 1; j < 3; ++j) {
      const double factor = a[j][i];
      for (std::size_t k = i; k < 4; ++k) a[j][k] -= a[i][k] * factor / a[i][i];
    }
  }
  Vector3 x{};
  for (std::size_t i = 3; i-- > 0;) {
    double sum = 0.0;
    for (std::size_t j = i + 1; j < 3; ++j) sum += a[i][j] * x[j];
    x[i] = (a[i][3] - sum) / a[i][i];
  }
  return x;
}

// The row of a channel: 1 for the white, 0 for the two other primaries.
DisplayMatrix::Row SolveRow(const Vector3& white, const Chromaticities& other,
                            const Chromaticities& another) {
  const Vector3 p = Normalised(other), q = Normalised(another);
  const Vector3 row =
      Solve({{{white[0], white[1], white[2], 1.0}, {p[0], p[1], p[2], 0.0}, {q[0], q[1], q[2], 0.0}}});
  return {row[0], row[1], row[2]};
}

DisplayMatrix MakeMatrix(const White& white) {
  const auto& [red, green, blue] = display.primaries;
  const Vector3 scaled{white.X / 100.0, white.Y / 100.0, white.Z / 100.0};
  return {SolveRow(scaled, green, blue), SolveRow(scaled, red, blue), SolveRow(scaled, red, green)};
}

// The matrices of the built-in pairs are made once and kept until the primaries change. A thread that finds one being
// made by another makes its own and does not wait.
enum MatrixState : int32_t { kNotMade, kBeingMade, kMade };
struct KeptMatrix {
  std::atomic<int32_t> state{kNotMade};
  DisplayMatrix matrix{};
};
KeptMatrix keptMatrices[kBuiltInIlluminants][2];

void ForgetMatrices() {
  for (auto& pairs : keptMatrices) {
    for (KeptMatrix& kept : pairs) kept.state.store(kNotMade, std::memory_order_release);
  }
}

// The bits of the smallest channel with an 8-bit value from 1 to 255.
std::uint64_t FirstBitsOf(std::uint64_t code) {
  using namespace display_constants;
  const double encoded = static_cast<double>(code) / 255.0;
  const double inverse =
      encoded <= kSlope * kBreak ? encoded / kSlope : Power((encoded + 0.055) / 1.055, 1.0 / kExponent);
  const auto reaches = [code](std::uint64_t bits) {
    return DisplayLevel(std::bit_cast<double>(bits)) >= static_cast<double>(code);
  };
  auto bits = std::bit_cast<std::uint64_t>(inverse);
  while (reaches(bits)) --bits;
  while (!reaches(bits)) ++bits;
  return bits;
}

DisplayCurve MakeDisplayCurve() {
  DisplayCurve curve;
  std::uint64_t code = 0, step = FirstBitsOf(1), segment = kDisplayFirstSegment;
  for (auto& [entry] : curve.segments) {
    const std::uint64_t end = ++segment << kDisplayRestBits;
    std::uint64_t bits = code << kDisplayRestBits;
    if (code < 255 && step < end) {
      bits += end - step;
      if (++code < 255) step = FirstBitsOf(code + 1);
    }
    entry = std::bit_cast<double>(bits);
  }
  return curve;
}

}  // namespace

const DisplayCurve& colorimetry_internal::GetDisplayCurve() {
  static const DisplayCurve curve = MakeDisplayCurve();
  return curve;
}

bool FindDisplayMatrix(vrxIlluminant illuminant, int32_t observer, DisplayMatrix& matrix) {
  const bool builtIn = illuminant >= 0 && illuminant < kBuiltInIlluminants;
  KeptMatrix* kept = builtIn ? &keptMatrices[illuminant][observer == kObserver10 ? 1 : 0] : nullptr;
  if (kept != nullptr && kept->state.load(std::memory_order_acquire) == kMade) {
    matrix = kept->matrix;
    return true;
  }
  White white;
  if (!FindWhite(illuminant, observer, white)) return false;
  matrix = MakeMatrix(white);
  int32_t expected = kNotMade;
  if (kept != nullptr && kept->state.compare_exchange_strong(expected, kBeingMade)) {
    kept->matrix = matrix;
    kept->state.store(kMade, std::memory_order_release);
  }
  return true;
}

bool XyzToDisplayRgb(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz, int32_t& red,
                     int32_t& green, int32_t& blue) {
  red = green = blue = static_cast<int32_t>(display_constants::kUnsetGrey);
  DisplayMatrix matrix;
  if (IsUnset(xyz) || !FindDisplayMatrix(illuminant, observer, matrix)) return true;
  const RgbOf<double> linear = LinearChannels(xyz.Values(), matrix);
  const DisplayCurve& curve = colorimetry_internal::GetDisplayCurve();
  red = static_cast<int32_t>(DisplayCode(linear.red, curve));
  green = static_cast<int32_t>(DisplayCode(linear.green, curve));
  blue = static_cast<int32_t>(DisplayCode(linear.blue, curve));
  return IsDisplayable(linear);
}

void GetDisplayPrimaries(CDoubleArray1& settings) {
  settings.SetSize(kDisplaySettings);
  std::ptrdiff_t i = 0;
  for (const Chromaticities& primary : display.primaries) {
    settings[i++] = primary.x;
    settings[i++] = primary.y;
  }
  settings[i] = display.gamma;
}

void SetDisplayPrimaries(const CDoubleArray1& settings) {
  if (settings.GetSize() < kDisplaySettings) return foundation_internal::ReportIndexError();
  std::ptrdiff_t i = 0;
  for (Chromaticities& primary : display.primaries) {
    const double x = settings[i++], y = settings[i++];
    primary = {x, y, 1.0 - x - y};
  }
  display.gamma = settings[i];
  ForgetMatrices();
}

void ResetDisplayPrimaries() {
  display = kDefaultPrimaries;
  ForgetMatrices();
}

}  // namespace vrx
