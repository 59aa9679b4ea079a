#include "c_api/handles.h"

#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace vrx::c_api {
namespace {

// A handle is the place of its object, from 1 on, in the low half, and how often the place was used before in the high one.
constexpr uint32_t kPlaces = 0xFFFF;
constexpr uint32_t kUses = 0x7FFF;

struct Slot {
  std::optional<Object> object;
  uint32_t uses = 0;
};

std::mutex& Lock() {
  static std::mutex lock;
  return lock;
}

std::vector<Slot>& Slots() {
  static std::vector<Slot> slots;
  return slots;
}

Slot& SlotOf(vrx_handle handle) {
  const auto bits = static_cast<uint32_t>(handle);
  const uint32_t place = bits & kPlaces;
  std::vector<Slot>& slots = Slots();
  if (handle > 0 && place >= 1 && place <= slots.size()) {
    Slot& slot = slots[place - 1];
    if (slot.object && slot.uses == bits >> 16) return slot;
  }
  throw Refusal{VRX_BAD_HANDLE, std::to_string(handle) + " is no open handle"};
}

}  // namespace

vrx_handle OpenHandle(Object object) {
  const std::lock_guard guard(Lock());
  std::vector<Slot>& slots = Slots();
  std::size_t place = 0;
  while (place < slots.size() && slots[place].object) ++place;
  if (place == kPlaces) throw Refusal{VRX_REFUSED, "65535 handles are open"};
  if (place == slots.size()) slots.emplace_back();
  slots[place].object = std::move(object);
  return static_cast<vrx_handle>(slots[place].uses << 16 | static_cast<uint32_t>(place + 1));
}

void CloseHandle(vrx_handle handle) {
  std::optional<Object> closed;  // destroyed without the lock
  const std::lock_guard guard(Lock());
  Slot& slot = SlotOf(handle);
  closed = std::exchange(slot.object, std::nullopt);
  slot.uses = (slot.uses + 1) & kUses;
}

Object FindObject(vrx_handle handle) {
  const std::lock_guard guard(Lock());
  return *SlotOf(handle).object;
}

SaundersonMode SurfaceOf(const io::ColorSystem& system, std::optional<int32_t> surface) {
  std::optional<SaundersonMode> given;
  if (surface) given = ModeOf(*surface);
  std::string complaint;
  const SaundersonMode mode = io::SpecularOf(system, given, complaint);
  if (!complaint.empty()) throw Refusal{VRX_REFUSED, "surface: " + complaint};
  return mode;
}

}  // namespace vrx::c_api

vrx_status VRX_CALL vrx_close(vrx_handle handle) {
  return vrx::c_api::Call([&] { vrx::c_api::CloseHandle(handle); });
}
