// Display colours a second, beside the least that anybody could do: a fixed 3 x 3 matrix and the C library's
// power on plain doubles. Before anything is timed the codes of both are compared; they may differ by one
// where the four digits of the published matrix move a channel over a step.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include <vrxmath/colorimetry/display_color.h>

#include "bench/harness.h"

namespace {

using Rgb = std::array<std::int32_t, 3>;

std::vector<vrx::CTrisValues> DrawColours() {
  constexpr std::size_t kCount = 4096;
  std::mt19937_64 generator(31);
  const auto draw = [&] { return static_cast<double>(generator() >> 11) * 0x1p-53; };
  std::vector<vrx::CTrisValues> colours(kCount);
  for (vrx::CTrisValues& xyz : colours) {
    const double r = draw(), g = draw(), b = draw();
    xyz[0] = 41.24 * r + 35.76 * g + 18.05 * b;
    xyz[1] = 21.26 * r + 71.52 * g + 7.22 * b;
    xyz[2] = 1.93 * r + 11.92 * g + 95.05 * b;
  }
  return colours;
}

Rgb Ours(vrx::vrxIlluminant illuminant, const vrx::CTrisValues& xyz) {
  Rgb rgb;
  vrx::XyzToDisplayRgb(illuminant, vrx::kObserver2, xyz, rgb[0], rgb[1], rgb[2]);
  return rgb;
}

std::int32_t EightBits(double c) {
  const double e = c <= 0.0031308 ? 12.92 * std::max(c, 0.0) : 1.055 * std::pow(c, 1 / 2.4) - 0.055;
  return static_cast<std::int32_t>(std::min(e, 1.0) * 255.0);
}

Rgb Plain(const vrx::CTrisValues& xyz) {
  const double* v = xyz.GetData();
  const double X = v[0] / 100, Y = v[1] / 100, Z = v[2] / 100;
  return {EightBits(3.2406 * X - 1.5372 * Y - 0.4986 * Z), EightBits(-0.9689 * X + 1.8758 * Y + 0.0415 * Z),
          EightBits(0.0557 * X - 0.2040 * Y + 1.0570 * Z)};
}

template <class Convert>
vrx::bench::Work All(const std::vector<vrx::CTrisValues>& colours, Convert convert) {
  return [&colours, convert] {
    std::int64_t sum = 0;
    std::size_t i = 0;
    for (const vrx::CTrisValues& xyz : colours) {
      const Rgb rgb = convert(i++, xyz);
      sum += rgb[0] + rgb[1] + rgb[2];
    }
    vrx::bench::Keep(&sum);
  };
}

bool AnswersAgree() {
  for (const vrx::CTrisValues& xyz : DrawColours()) {
    const Rgb ours = Ours(vrx::vrxIllumD65, xyz), plain = Plain(xyz);
    for (std::size_t k = 0; k < 3; ++k) {
      if (std::abs(ours[k] - plain[k]) <= 1) continue;
      std::fprintf(stderr, "%g %g %g: channel %zu is %d, but %d by the published matrix\n", xyz[0], xyz[1],
                   xyz[2], k, ours[k], plain[k]);
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (!AnswersAgree()) return 1;
  vrx::bench::Table table(argc, argv);
  const auto colours = DrawColours();
  const double ns = 1e9 / static_cast<double>(colours.size());
  const auto plain = All(colours, [](std::size_t, const auto& xyz) { return Plain(xyz); });
  table.Compare("display colour", "plain doubles, std::pow",
                All(colours, [](std::size_t, const auto& xyz) { return Ours(vrx::vrxIllumD65, xyz); }), plain,
                ns);
  table.Compare("display colour, three illuminants in turn", "plain doubles, std::pow",
                All(colours,
                    [](std::size_t i, const auto& xyz) {
                      return Ours(std::array{vrx::vrxIllumD65, vrx::vrxIllumA, vrx::vrxIllumCWF}[i % 3], xyz);
                    }),
                plain, ns);
  return 0;
}
