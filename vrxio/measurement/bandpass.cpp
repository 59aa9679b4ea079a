#include <vrxio/measurement/bandpass.h>

#include <cstddef>

namespace vrx::io {

void CorrectBandpass(std::span<double> curve) {
  constexpr double a = 0.083;
  if (curve.size() < 2) return;
  double before = curve[0];
  curve[0] = (1 + a) * curve[0] - a * curve[1];
  for (std::size_t i = 1; i + 1 < curve.size(); ++i) {
    const double here = curve[i];
    curve[i] = (1 + 2 * a) * here - a * (before + curve[i + 1]);
    before = here;
  }
  curve.back() = (1 + a) * curve.back() - a * before;
}

}  // namespace vrx::io
