#include "c_api/checks.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>

#include <vrxio/text/decimal.h>
#include <vrxmath/colorimetry/user_illuminants.h>
#include <vrxmath/numeric/lanes.h>
#if defined(__GNUC__)
#include <vrxmath/numeric/pack.h>
#endif
#include <vrxmath/platform/exceptions.h>

namespace vrx::c_api {
namespace {

// The reason of each thread. It is plain memory: a thread that ends runs nothing of this library, which may be unloaded
// by then, and a host without the compiler's runtime for C++ has nobody who would.
constexpr std::size_t kLongestReason = 500;
struct ThreadReason {
  std::size_t length;
  char text[kLongestReason];
};
thread_local ThreadReason threadReason;
static_assert(std::is_trivially_destructible_v<ThreadReason>);

// Keeps a reason in UTF-8, cut between two characters.
void Keep(std::string_view reason) noexcept {
  std::size_t length = std::min(reason.size(), kLongestReason);
  const auto isInside = [&](std::size_t at) {
    return (static_cast<unsigned char>(reason[at]) & 0xC0) == 0x80;
  };
  if (length < reason.size())
    while (length > 0 && isInside(length)) --length;
  std::copy_n(reason.data(), length, threadReason.text);
  threadReason.length = length;
}

std::atomic<unsigned> threads{1};

constexpr int32_t kMostIlluminants = 64;
constexpr double kLargestAmount = 1e12;
constexpr double kLeastParameter = 0.001, kLargestParameter = 1000.0;
constexpr double kLeastAngle = -45.0, kLargestAngle = 110.0;  // of the geometries in foundation/angles.h

// A text of `length` units into a caller's buffer, with its terminator.
template <class UNIT>
void Copy(const UNIT* units, std::size_t length, UNIT* text, int32_t capacity, int32_t* written) {
  if (capacity < 0) throw Refusal{VRX_BAD_COUNT, "capacity is negative"};
  Arrays arrays;
  (void)arrays.Place(text, capacity, 1, "text");
  if (written != nullptr) arrays.Result(written, "length") = static_cast<int32_t>(length);
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
      Keep(refusal.reason);
      return refusal.status;
    } catch (const std::bad_alloc&) {
      Forget();
      return VRX_NO_MEMORY;
    } catch (const CMemoryException&) {
      Forget();
      return VRX_NO_MEMORY;
    } catch (const std::exception& error) {
      Keep(error.what());
      return VRX_INTERNAL;
    }
  } catch (...) {  // there is no memory for the reason
    return VRX_INTERNAL;
  }
}

void Forget() noexcept {
  threadReason.length = 0;
}

std::string_view LastReason() noexcept {
  return {threadReason.text, threadReason.length};
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

void NeedWithin(double value, double low, double high, const char* name) {
  NeedFinite(value, name);
  if (value < low || value > high)
    throw Refusal{VRX_OUT_OF_RANGE,
                  std::string(name) + " is not " + io::ShortestText(low) + " to " + io::ShortestText(high)};
}

namespace {

#if defined(__GNUC__)
struct Unit;
using Lanes = Pack<2, Unit>;
#endif

// In blocks with one branch, whose comparisons do not wait for each other: the pass is as fast as memory.
bool AreWithin(std::span<const double> numbers, double largest) {
  const double* at = numbers.data();
  std::size_t left = numbers.size();
#if defined(__GNUC__)
  constexpr std::size_t kLanes = 2, kBlock = 16 * kLanes;
  const auto isBeyond = [most = Lanes(largest)](const double* pack) {
    return !(Abs(Load<Lanes>(pack)) <= most);
  };
  for (; left >= kBlock; left -= kBlock, at += kBlock) {
    auto beyond = isBeyond(at);
    for (std::size_t i = kLanes; i < kBlock; i += kLanes) beyond = beyond | isBeyond(at + i);
    if (Any(beyond)) return false;
  }
#endif
  return std::all_of(at, at + left, [&](double number) { return std::abs(number) <= largest; });
}

}  // namespace

std::span<const double> Numbers(const double* numbers, int32_t count, std::size_t width, const char* name,
                                double largest) {
  const std::span<const double> all = Place(numbers, count, width, name);
  if (AreWithin(all, largest)) return all;
  const auto bad =
      std::find_if(all.begin(), all.end(), [&](double value) { return !(std::abs(value) <= largest); });
  const std::string number = "number " + std::to_string(bad - all.begin()) + " of " + name;
  if (!std::isfinite(*bad)) throw Refusal{VRX_NOT_FINITE, number + " is not finite"};
  throw Refusal{VRX_OUT_OF_RANGE, number + " is beyond " + io::ShortestText(largest)};
}

std::span<const double> Numbers(const double* numbers, int32_t count, std::size_t width, const char* name) {
  return Numbers(numbers, count, width, name, kLargestReading);
}

CReflData CurveOf(const double* samples, const char* name) {
  const auto numbers = Numbers(samples, 1, kWavelengths, name);
  CReflData curve;
  std::copy(numbers.begin(), numbers.end(), curve.begin());
  return curve;
}

void Arrays::AddPlace(std::span<const std::byte> place, const char* name) {
  if (place.empty()) return;
  if (IsPlace(place))
    throw Refusal{VRX_OVERLAP, std::string(name) + " shares memory with another place of results"};
  if (hasNumbers_) throw std::logic_error("a place of results after numbers");
  places_.at(placeCount_++) = place;
}

bool Arrays::IsPlace(std::span<const std::byte> bytes) const {
  const std::less<> before;  // of any two pointers
  return std::any_of(places_.begin(), places_.begin() + placeCount_, [&](std::span<const std::byte> place) {
    return before(bytes.data(), place.data() + place.size()) &&
           before(place.data(), bytes.data() + bytes.size());
  });
}

std::span<const double> Arrays::Numbers(const double* numbers, int32_t count, std::size_t width,
                                        const char* name, double largest) {
  hasNumbers_ = true;
  const std::span<const double> all = c_api::Numbers(numbers, count, width, name, largest);
  if (all.empty() || !IsPlace(std::as_bytes(all))) return all;
  return copies_.emplace_back(all.begin(), all.end());
}

namespace {

constexpr int32_t kLargestStructure = 4096;

// What a caller's structure says of its size.
std::size_t SizeOf(const void* structure, const char* name) {
  NeedPlace(structure, name);
  int32_t size = 0;
  std::memcpy(&size, structure, sizeof size);
  if (size >= static_cast<int32_t>(sizeof size) && size <= kLargestStructure)
    return static_cast<std::size_t>(size);
  throw Refusal{VRX_OUT_OF_RANGE, std::string("the size of ") + name + " is " + std::to_string(size)};
}

}  // namespace

void CopySized(const void* from, void* to, std::size_t own, const char* name) {
  const std::size_t size = SizeOf(from, name);
  const auto* const bytes = static_cast<const unsigned char*>(from);
  if (std::any_of(bytes + std::min(size, own), bytes + size, [](unsigned char byte) { return byte != 0; }))
    throw Refusal{VRX_OUT_OF_RANGE, std::string(name) + " has members that this release does not know"};
  std::memcpy(to, from, std::min(size, own));
}

void GiveSized(const void* from, std::size_t own, void* place, const char* name) {
  const std::size_t size = SizeOf(place, name);
  auto* const bytes = static_cast<unsigned char*>(place);
  const auto* const source = static_cast<const unsigned char*>(from);
  std::copy(source + sizeof(int32_t), source + std::min(size, own), bytes + sizeof(int32_t));
  if (size > own) std::fill(bytes + own, bytes + size, static_cast<unsigned char>(0));
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

CIllumArray IlluminantList(const int32_t* illuminants, int32_t count, int32_t observer) {
  NeedRange(count, 1, kMostIlluminants, "count");
  NeedPlace(illuminants, "illuminants");
  CIllumArray list;
  list.SetSize(count);
  for (int32_t i = 0; i < count; ++i) {
    if (std::find(illuminants, illuminants + i, illuminants[i]) != illuminants + i) {
      throw Refusal{VRX_OUT_OF_RANGE, "illuminants: " + std::to_string(illuminants[i]) + " is there twice"};
    }
    list[i] = Pair(illuminants[i], observer).illuminant;
  }
  return list;
}

void NeedConstant(double k, const char* name) {
  NeedFinite(k, name);
  if (k < 0.0 || k >= 1.0) throw Refusal{VRX_OUT_OF_RANGE, std::string(name) + " is not from 0 to below 1"};
}

SaundersonMode ModeOf(int32_t surface) {
  NeedRange(surface, VRX_SURFACE_INCLUDED, VRX_SURFACE_NONE, "surface");
  constexpr SaundersonMode kModes[] = {SaundersonMode::kIncluded, SaundersonMode::kExcluded,
                                       SaundersonMode::kNone};
  return kModes[surface];
}

CDbFormula FormulaOf(const int32_t* ids, const double* amounts, int32_t count) {
  NeedRange(count, 0, 0xFFFF, "count");
  if (count > 0) NeedPlace(ids, "ids");
  const auto values = Numbers(amounts, count, 1, "amounts", kLargestAmount);
  CDbFormula formula(count);
  for (int32_t i = 0; i < count; ++i) {
    formula[i].componentId = ids[i];
    formula[i].amount = values[static_cast<std::size_t>(i)];
  }
  return formula;
}

CDifferenceSettings Settings(const vrx_system* system) {
  NeedPlace(system, "system");
  NeedRange(system->number, 0, kDifferenceSystems - 1, "the number of the system");
  CDifferenceSettings settings;
  settings.system = system->number;
  NeedRange(system->own_formula, 0, 1, "own_formula");
  settings.ownFormula = system->own_formula != 0;
  std::copy_n(system->parameters, settings.parameters.size(), settings.parameters.begin());
  for (const double parameter : settings.parameters) NeedFinite(parameter, "a parameter of the system");
  const auto used =
      std::span(settings.parameters).first(static_cast<std::size_t>(ParameterCount(settings.system)));
  for (const double parameter : used) {
    if (parameter < kLeastParameter || parameter > kLargestParameter)
      throw Refusal{VRX_OUT_OF_RANGE, "a parameter of the system is not " +
                                          io::ShortestText(kLeastParameter) + " to " +
                                          io::ShortestText(kLargestParameter)};
  }
  NeedWithin(system->angle, kLeastAngle, kLargestAngle, "the angle of the system");
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
  return {std::u16string(utf16, end)};
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
