#include <vrxmath/batch/color_value_kernels.h>

#include <vrxmath/batch/lane_rows.h>

namespace vrx {
namespace {

using Rows = const Column<const double>*;

void IndexOfRows(const IndexTerms& given, Rows xyz, const Column<double>& values, std::size_t count) {
  OverRows<Widths<3>, Widths<1>>(xyz, &values, count,
                                 [terms = given](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
                                   y[0] = IndexValue(terms, XyzOf<Lanes>{x[0], x[1], x[2]});
                                 });
}

VRX_LANE_INLINE Lanes Channel(Lanes linear, const DisplayCurve& curve) {
  return elementary::LaneTraits<Lanes>::ToDouble(DisplayCode(linear, curve));
}

// Widths<3>, or Widths<3, 1> with the flag.
template <class OUT>
void DisplayRows(const DisplayTerms& given, Rows xyz, const Column<std::uint8_t>* channels,
                 std::size_t count) {
  OverRows<Widths<3>, OUT>(xyz, channels, count, [terms = given](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
    const XyzOf<Lanes> color = {x[0], x[1], x[2]};
    const RgbOf<Lanes> linear = LinearChannels(color, terms.matrix);
    const auto unset = IsUnset(color);
    const Lanes grey = display_constants::kUnsetGrey;
    y[0] = Select(unset, grey, Channel(linear.red, *terms.curve));
    y[1] = Select(unset, grey, Channel(linear.green, *terms.curve));
    y[2] = Select(unset, grey, Channel(linear.blue, *terms.curve));
    if constexpr (OUT::kTotal == 4) y[3] = Select(unset | IsDisplayable(linear), Lanes(1.0), Lanes(0.0));
  });
}

}  // namespace

template <>
const ColorValueKernels& KernelsOf<ColorValueKernels, VRX_LANES>() {
  static constexpr ColorValueKernels kKernels = {&IndexOfRows, &DisplayRows<Widths<3>>,
                                                 &DisplayRows<Widths<3, 1>>};
  return kKernels;
}

}  // namespace vrx
