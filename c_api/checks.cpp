#include "c_api/checks.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

#include <vrxmath/colorimetry/user_illuminants.h>
#include <vrxmath/platform/exceptions.h>

namespace vrx::c_api {
namespace {

std::string& Reason() {
  thread_local std::string reason;
  return reason;
}

std::atomic<unsigned> threads{1};

// A text of `length` units into a caller's buffer, with its terminator.
template <class UNIT>
void Copy(const UNIT* units, std::size_t length, UNIT* text, int32_t capacity, int32_t* written) {
  if (capacity < 0) throw Refusal{VRX_BAD_COUNT, "capacity is negative"};
  if (capacity > 0) NeedPlace(text, "text");
  if (written != nullptr) *written = static_cast<int32_t>(length);
  if (length >= static_cast<std::size_t>(capacity))
    throw Refusal{VRX_TOO_SMALL, "the text takes " + std::to_string(length + 1) + " units"};
  std::copy_n(units, length, text);
  text[length] = 0;
}

}  // namespace

vrx_status Refused() noexcept {
  try {
    try {
      throw;
    } catch (const Refusal& refusal) {
      Reason() = refusal.reason;
      return refusal.status;
    } catch (const std::bad_alloc&) {
      Forget();
      return VRX_NO_MEMORY;
    } catch (const CMemoryException&) {
      Forget();
      return VRX_NO_MEMORY;
    } catch (const std::exception& error) {
      Reason() = error.what();
      return VRX_INTERNAL;
    }
  } catch (...) {  // there is no memory for the reason
    return VRX_INTERNAL;
  }
}

void Forget() noexcept {
  Reason().clear();
}

const std::string& LastReason() noexcept {
  return Reason();
}

void NeedPlace(const void* place, const char* name) {
  if (place == nullptr) throw Refusal{VRX_NULL, std::string(name) + " is null"};
}

std::size_t NeedCount(int32_t count, std::size_t width, const char* name) {
  if (count < 0) throw Refusal{VRX_BAD_COUNT, std::string(name) + " is negative"};
  const std::size_t largest = std::numeric_limits<std::size_t>::max() / 2 / sizeof(double);
  if (width > 0 && static_cast<std::size_t>(count) > largest / width)
    throw Refusal{VRX_BAD_COUNT, std::string(name) + " is larger than memory"};
  return static_cast<std::size_t>(count) * width;
}

void NeedRange(int32_t value, int32_t low, int32_t high, const char* name) {
  if (value >= low && value <= high) return;
  throw Refusal{VRX_OUT_OF_RANGE, std::string(name) + " is " + std::to_string(value) + ", not " +
                                      std::to_string(low) + " to " + std::to_string(high)};
}

void NeedFinite(double value, const char* name) {
  if (!std::isfinite(value)) throw Refusal{VRX_NOT_FINITE, std::string(name) + " is not finite"};
}

std::span<const double> Numbers(const double* numbers, int32_t count, std::size_t width, const char* name) {
  const std::span<const double> all = Place(numbers, count, width, name);
  const auto bad = std::find_if(all.begin(), all.end(), [](double value) { return !std::isfinite(value); });
  if (bad == all.end()) return all;
  throw Refusal{VRX_NOT_FINITE,
                "number " + std::to_string(bad - all.begin()) + " of " + name + " is not finite"};
}

CReflData CurveOf(const double* samples, const char* name) {
  const auto numbers = Numbers(samples, 1, kWavelengths, name);
  CReflData curve;
  std::copy(numbers.begin(), numbers.end(), curve.begin());
  return curve;
}

Pair::Pair(int32_t illuminantNumber, int32_t observerNumber)
    : illuminant(static_cast<vrxIlluminant>(illuminantNumber)), observer(observerNumber) {
  NeedRange(observer, kObserver2, kObserver10, "observer");
  if (illuminantNumber >= 0 && illuminantNumber < kBuiltInIlluminants) return;
  const CUserIllumArray registered = RegisteredUserIlluminants();
  if (std::none_of(registered.begin(), registered.end(),
                   [&](vrxUserIllum user) { return IlluminantOf(user) == illuminant; }))
    throw Refusal{VRX_OUT_OF_RANGE, "there is no illuminant " + std::to_string(illuminantNumber)};
}

CDifferenceSettings Settings(const vrx_system* system) {
  NeedPlace(system, "system");
  NeedRange(system->number, 0, kDifferenceSystems - 1, "the number of the system");
  CDifferenceSettings settings;
  settings.system = system->number;
  settings.ownFormula = system->own_formula != 0;
  for (const double parameter : system->parameters) NeedFinite(parameter, "a parameter of the system");
  std::copy_n(system->parameters, settings.parameters.size(), settings.parameters.begin());
  NeedFinite(system->angle, "the angle of the system");
  return settings;
}

BatchRun Run() {
  BatchRun run;
  run.threads = threads.load(std::memory_order_relaxed);
  return run;
}

void SetThreads(unsigned count) {
  threads.store(count, std::memory_order_relaxed);
}

CString Text(const char* utf8, const char* name) {
  NeedPlace(utf8, name);
  return CString::FromUtf8(utf8);
}

CString Text(const vrx_char16* utf16, const char* name) {
  NeedPlace(utf16, name);
  const vrx_char16* end = utf16;
  while (*end != 0) ++end;
  return CString(std::u16string(utf16, end));
}

void Give(const CString& result, char* text, int32_t capacity, int32_t* length) {
  const std::string utf8 = result.ToUtf8();
  Copy(utf8.data(), utf8.size(), text, capacity, length);
}

void Give(const CString& result, vrx_char16* text, int32_t capacity, int32_t* length) {
  const std::u16string_view view = result.View();
  const std::basic_string<vrx_char16> units(view.begin(), view.end());
  Copy(units.data(), units.size(), text, capacity, length);
}

}  // namespace vrx::c_api
