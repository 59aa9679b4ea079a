// The elementary functions beside the C library's, over the arguments that colour work gives them. Before
// anything is timed the answers of every pair are compared, and a wrong one ends the program.
//
// Calls do not depend on each other, so they overlap as they do when a list of samples is converted.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include <vrxmath/numeric/elementary.h>

#include "bench/harness.h"

namespace vrx::bench {
namespace {

constexpr std::size_t kCount = 4096;

/// Arguments drawn evenly from the box [x0, x1] x [y0, y1].
struct Box {
  double x0, x1, y0 = 0, y1 = 0;
};

struct Arguments {
  std::vector<double> x, y;
};

Arguments Draw(const Box& box) {
  std::mt19937_64 generator(31);
  const auto draw = [&](double from, double to) {
    std::vector<double> values(kCount);
    for (double& value : values)
      value = from + (to - from) * static_cast<double>(generator() >> 11) * 0x1p-53;
    return values;
  };
  Arguments arguments;
  arguments.x = draw(box.x0, box.x1);
  arguments.y = draw(box.y0, box.y1);
  return arguments;
}

template <typename F>
Work Calls(F f, const Arguments& arguments, double& sum) {
  return [f, &arguments, &sum] {
    sum = 0.0;
    for (std::size_t i = 0; i < kCount; ++i) sum += f(arguments.x[i], arguments.y[i]);
    Keep(&sum);
  };
}

/// Measures a pair, or ends the program if they differ by more than 4 ULP, which some C libraries need for the cube root.
template <typename F, typename G>
void Compare(Table& table, const std::string& name, F ours, const std::string& other, G theirs,
             const Box& box) {
  const Arguments arguments = Draw(box);
  for (std::size_t i = 0; i < kCount; ++i) {
    const double x = arguments.x[i], y = arguments.y[i], got = ours(x, y), expected = theirs(x, y);
    if (std::fabs(got - expected) <= 0x1p-50 * std::fabs(expected)) continue;
    std::fprintf(stderr, "%s(%a, %a) = %a, but %s gives %a\n", name.c_str(), x, y, got, other.c_str(),
                 expected);
    std::exit(1);
  }
  double sum;
  table.Compare(name, other, Calls(ours, arguments, sum), Calls(theirs, arguments, sum), 1e9 / kCount);
}

void MeasureAll(Table& table) {
#define VRX_PAIR(name, standard, ...)                                                 \
  Compare(                                                                            \
      table, #name, [](double x, double) { return vrx::name(x); }, "std::" #standard, \
      [](double x, double) { return std::standard(x); }, Box{__VA_ARGS__})
#define VRX_PAIR2(name, standard, ...)                                                     \
  Compare(                                                                                 \
      table, #name, [](double x, double y) { return vrx::name(x, y); }, "std::" #standard, \
      [](double x, double y) { return std::standard(x, y); }, Box{__VA_ARGS__})
  VRX_PAIR(CubeRoot, cbrt, 0.008856, 1.2);  // XYZ / white to L*a*b*
  Compare(
      table, "CubeRoot", [](double x, double) { return vrx::CubeRoot(x); },  //
      "std::pow", [](double x, double) { return std::pow(x, 1.0 / 3); }, Box{0.008856, 1.2});
  VRX_PAIR2(Atan2, atan2, -100, 100, -100, 100);  // b*, a* to hue
  VRX_PAIR(Sin, sin, -6.3, 6.3);                  // hue angles
  VRX_PAIR(Cos, cos, -6.3, 6.3);
  VRX_PAIR(Exp, exp, -12, 3);  // transmittance, hue weightings
  VRX_PAIR(Log, log, 0.001, 4);
  VRX_PAIR(Log10, log10, 0.001, 4);         // optical density
  VRX_PAIR2(Power, pow, 0.001, 1, 0.3, 3);  // display gammas
  VRX_PAIR(Atan, atan, -5, 5);
  VRX_PAIR(Asin, asin, -1, 1);
  VRX_PAIR(Acos, acos, -1, 1);
#undef VRX_PAIR
#undef VRX_PAIR2
}

}  // namespace
}  // namespace vrx::bench

int main(int argc, char** argv) {
  vrx::bench::Table table(argc, argv);
  vrx::bench::MeasureAll(table);
  return 0;
}
