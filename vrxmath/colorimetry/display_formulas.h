// Display colour as formulas over values: linear channels of the display, and its encoding curve. What an illuminant and
// observer contribute is found once (FindDisplayMatrix in display_color.h).

#ifndef VRXMATH_COLORIMETRY_DISPLAY_FORMULAS_H_
#define VRXMATH_COLORIMETRY_DISPLAY_FORMULAS_H_

#include <cstddef>
#include <cstdint>

#include <vrxmath/colorimetry/values.h>
#include <vrxmath/numeric/elementary_lanes.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// Channels of a display colour.
template <class T>
struct RgbOf {
  T red, green, blue;
};

/// XYZ on the scale Y = 1 to linear channels: one row each for red, green and blue.
struct DisplayMatrix {
  /// The factors of X, Y and Z.
  struct Row {
    double X, Y, Z;
  };
  Row red, green, blue;
};

namespace display_constants {

// The encoding curve and its slopes at the two ends of the scale.
inline constexpr double kBreak = 0.00304;
inline constexpr double kSlope = 12.92;
inline constexpr double kExponent = 0.4166666666666667;
inline constexpr double kSlopeAtWhite = 1.055 * kExponent;

// All channels of a colour that was not measured.
inline constexpr double kUnsetGrey = 192.0;

}  // namespace display_constants

/// Linear channels, 1 for the white, of tristimulus values on the scale Y = 100.
template <class T>
VRX_LANE_INLINE RgbOf<T> LinearChannels(const XyzOf<T>& xyz, const DisplayMatrix& matrix) {
  const T X = xyz.X / 100.0, Y = xyz.Y / 100.0, Z = xyz.Z / 100.0;
  const auto channel = [&](const DisplayMatrix::Row& row)
                           VRX_LANE_LAMBDA { return 0.0 + row.X * X + row.Y * Y + row.Z * Z; };
  return {channel(matrix.red), channel(matrix.green), channel(matrix.blue)};
}

/// A linear channel as its 8-bit value before it is rounded down: 0 to 255. NaN counts as 0.
/// Formula: the curve of IEC 61966-2-1 with its break at 0.00304 instead of 0.0031308.
template <class T>
VRX_LANE_INLINE T DisplayLevel(T channel) {
  using namespace display_constants;
  const auto curved = (channel > kBreak) & (channel < 1.0);
  const T encoded = Branch(
      curved, [&] { return 1.055 * Power(channel, T(kExponent)) - 0.055; },
      [&] { return Select(channel >= 1.0, T(1.0), Select(channel > 0.0, kSlope * channel, T(0.0))); });
  return encoded * 255.0;
}

inline constexpr int kDisplayRestBits = 45;
inline constexpr double kDisplayFirst = 0x1p-12;  // below it all channels are 0
inline constexpr std::uint64_t kDisplayFirstSegment = std::uint64_t{1023 - 12} << 7;
inline constexpr std::size_t kDisplaySegments = (std::size_t{12} << 7) + 1;  // the last one is for 1 alone
/// The channels from 2^-12 to 1 that share their exponent and the first seven bits of their fraction; no more than one step of
/// the encoding curve lies in them. The entry, read as a whole number, plus the rest of the channel's bits has the 8-bit value
/// above these kDisplayRestBits bits: where the step is passed, the sum carries.
struct DisplaySegment {
  double entry;
};
/// The encoding curve as a table of its steps.
struct DisplayCurve {
  DisplaySegment segments[kDisplaySegments];
};

/// DisplayLevel rounded down, without a power; as a whole number, or one in each lane.
template <class T>
VRX_LANE_INLINE auto DisplayCode(T channel, const DisplayCurve& curve) {
  const T low = Select(channel > kDisplayFirst, channel, T(kDisplayFirst));
  const auto bits = ToBits(Select(low < 1.0, low, T(1.0)));
  const auto segment = (bits >> kDisplayRestBits) - kDisplayFirstSegment;
  const auto entry = ToBits(elementary::LaneTraits<T>::Entry(curve.segments, segment).fields[0]);
  return (entry + (bits & ((std::uint64_t{1} << kDisplayRestBits) - 1))) >> kDisplayRestBits;
}

namespace colorimetry_internal {

/// The curve, made at the first call.
const DisplayCurve& GetDisplayCurve();

}  // namespace colorimetry_internal

/// True where clipping moves no channel by more than half a step of the 8 bits.
template <class T>
VRX_LANE_INLINE auto IsDisplayable(const RgbOf<T>& linear) {
  using namespace display_constants;
  constexpr double kHalfStep = 0.5 / 255.0;
  const auto within = [](T channel) {
    return (channel >= -kHalfStep / kSlope) & (channel <= 1.0 + kHalfStep / kSlopeAtWhite);
  };
  const auto red = within(linear.red), green = within(linear.green), blue = within(linear.blue);
  return red & green & blue;
}

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_DISPLAY_FORMULAS_H_
