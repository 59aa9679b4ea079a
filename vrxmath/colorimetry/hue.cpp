#include <vrxmath/colorimetry/hue.h>

#include <atomic>

namespace vrx {
namespace {

std::atomic<bool> hueInDegrees{true};

}  // namespace

bool HueInDegrees() {
  return hueInDegrees.load(std::memory_order_relaxed);
}
void SetHueInDegrees(bool degrees) {
  hueInDegrees.store(degrees, std::memory_order_relaxed);
}

}  // namespace vrx
