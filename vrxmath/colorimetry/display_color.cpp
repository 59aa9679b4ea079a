#include <vrxmath/colorimetry/display_color.h>

#include <algorithm>
#include <array>

#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/numeric/elementary.h>
#include <vrxmath/numeric/matrix.h>

namespace vrx {
namespace {

constexpr int32_t kUnsetGrey = 192;

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

// Counts the changes of the primaries, so that conversions made for earlier ones are known for old. 0 is no
// state of them.
uint64_t displayState = 1;

using Vector3 = std::array<double, 3>;

// XYZ on the scale Y = 1 to linear channels: one row each for red, green and blue.
struct Conversion {
  uint64_t displayState;
  Vector3 white;
  std::array<Vector3, 3> rows;
};

void SetEquation(CMatrix& system, uint32_t row, const Vector3& coefficients, double rightHandSide) {
  for (int32_t k = 0; k < 3; ++k) system[row][k] = coefficients[static_cast<std::size_t>(k)];
  system[row][3] = rightHandSide;
}

Vector3 Normalised(const Chromaticities& primary) {
  return {primary.x / primary.y, primary.y / primary.y, primary.z / primary.y};
}

// The row of a channel: 1 for the white, 0 for the two other primaries.
Vector3 SolveRow(const Vector3& white, const Chromaticities& other, const Chromaticities& another) {
  CMatrix system(3, 4);
  SetEquation(system, 0, white, 1.0);
  SetEquation(system, 1, Normalised(other), 0.0);
  SetEquation(system, 2, Normalised(another), 0.0);
  CDoubleArray1 row;
  row.SetSize(3);
  system.GaussSolve(row);  // without a solution the row stays 0
  return {row[0], row[1], row[2]};
}

Conversion MakeConversion(const Vector3& white) {
  const auto& [red, green, blue] = display.primaries;
  const Vector3 scaled{white[0] / 100.0, white[1] / 100.0, white[2] / 100.0};
  return {displayState,
          white,
          {SolveRow(scaled, green, blue), SolveRow(scaled, red, blue), SolveRow(scaled, red, green)}};
}

// The conversion of a pair. It is kept for the next colour of the pair, each thread for itself; the 52
// built-in pairs have a place of their own each.
const Conversion& ConversionFor(vrxIlluminant illuminant, int32_t observer, const double* table) {
  constexpr uint32_t kPlaces = 64;
  thread_local Conversion kept[kPlaces]{};
  const uint32_t pair = 2 * static_cast<uint32_t>(illuminant) + (observer == kObserver10 ? 1 : 0);
  Conversion& conversion = kept[pair % kPlaces];
  const Vector3 white{table[kTableWhite], table[kTableWhite + 1], table[kTableWhite + 2]};
  if (conversion.displayState != displayState || conversion.white != white) {
    conversion = MakeConversion(white);
  }
  return conversion;
}

// The encoding curve and its slopes at the two ends of the scale.
constexpr double kBreak = 0.00304;
constexpr double kLinearSlope = 12.92;
constexpr double kExponent = 0.4166666666666667;
constexpr double kSlopeAtWhite = 1.055 * kExponent;

double Encoded(double channel) {
  if (!(channel > 0.0)) return 0.0;  // NaN too
  if (channel >= 1.0) return 1.0;
  return channel > kBreak ? 1.055 * Power(channel, kExponent) - 0.055 : kLinearSlope * channel;
}

int32_t EightBits(double channel) {
  return static_cast<int32_t>(Encoded(channel) * 255.0);
}

bool IsDisplayable(double channel) {
  constexpr double kHalfStep = 0.5 / 255.0;
  return channel >= -kHalfStep / kLinearSlope && channel <= 1.0 + kHalfStep / kSlopeAtWhite;
}

}  // namespace

bool XyzToDisplayRgb(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz, int32_t& red,
                     int32_t& green, int32_t& blue) {
  red = green = blue = kUnsetGrey;
  if (IsUnset(xyz)) return true;
  const double* table = WeightTable(illuminant, observer);
  if (table == nullptr) return true;
  const double X = xyz[0] / 100.0, Y = xyz[1] / 100.0, Z = xyz[2] / 100.0;
  const auto channel = [&](const Vector3& row) { return 0.0 + row[0] * X + row[1] * Y + row[2] * Z; };
  const Conversion& conversion = ConversionFor(illuminant, observer, table);
  const Vector3 linear{channel(conversion.rows[0]), channel(conversion.rows[1]), channel(conversion.rows[2])};
  red = EightBits(linear[0]);
  green = EightBits(linear[1]);
  blue = EightBits(linear[2]);
  return std::all_of(linear.begin(), linear.end(), IsDisplayable);
}

void GetDisplayPrimaries(CDoubleArray1& settings) {
  settings.SetSize(kDisplaySettings);
  for (int32_t i = 0; i < 3; ++i) {
    const Chromaticities& primary = display.primaries[static_cast<std::size_t>(i)];
    settings[2 * i] = primary.x;
    settings[2 * i + 1] = primary.y;
  }
  settings[6] = display.gamma;
}

void SetDisplayPrimaries(const CDoubleArray1& settings) {
  if (settings.GetSize() < kDisplaySettings) return foundation_internal::ReportIndexError();
  for (int32_t i = 0; i < 3; ++i) {
    const double x = settings[2 * i], y = settings[2 * i + 1];
    display.primaries[static_cast<std::size_t>(i)] = {x, y, 1.0 - x - y};
  }
  display.gamma = settings[6];
  ++displayState;
}

void ResetDisplayPrimaries() {
  display = kDefaultPrimaries;
  ++displayState;
}

}  // namespace vrx
