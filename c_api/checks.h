// The beginning and the end of every function of the C interface: checks of its arguments, and the way from an exception
// to a status.

#ifndef C_API_CHECKS_H_
#define C_API_CHECKS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/c_api.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx::c_api {

/// Ends a call with a status and a sentence about it.
struct Refusal {
  vrx_status status;
  std::string reason;
};

/// The status of a call whose body ended with an exception, which is the current one; keeps the reason for
/// vrx_last_error.
vrx_status Refused() noexcept;
/// Forgets the reason of the call before.
void Forget() noexcept;
/// The reason of the last call that was refused on this thread.
const std::string& LastReason() noexcept;

/// Runs the body of a function. Nothing that it throws gets out.
template <class Body>
vrx_status Call(const Body& body) noexcept {
  try {
    body();
    Forget();
    return VRX_OK;
  } catch (...) {
    return Refused();
  }
}

// Checks. `name` is the parameter's, for the reason. --------------------------------------------------------------

void NeedPlace(const void* place, const char* name);
/// A count from 0, whose arrays of `width` numbers a row could exist.
std::size_t NeedCount(int32_t count, std::size_t width, const char* name);
/// True for `value` within `low` to `high`, or the call ends.
void NeedRange(int32_t value, int32_t low, int32_t high, const char* name);
void NeedFinite(double value, const char* name);

/// Rows of numbers to read: there, as many as `count`, all of them finite.
std::span<const double> Numbers(const double* numbers, int32_t count, std::size_t width, const char* name);
/// A curve of 40 numbers.
CReflData CurveOf(const double* samples, const char* name);
/// Rows to write.
template <class NUMBER>
std::span<NUMBER> Place(NUMBER* numbers, int32_t count, std::size_t width, const char* name) {
  const std::size_t total = NeedCount(count, width, "count");
  if (total > 0) NeedPlace(numbers, name);
  return {numbers, total};
}

/// An illuminant and observer that have a weighting table.
struct Pair {
  vrxIlluminant illuminant;
  int32_t observer;
  Pair(int32_t illuminantNumber, int32_t observerNumber);
};

CDifferenceSettings Settings(const vrx_system* system);

/// How functions with many rows are run (vrx_set_threads).
BatchRun Run();
void SetThreads(unsigned threads);

// Texts -----------------------------------------------------------------------------------------------------------

CString Text(const char* utf8, const char* name);
CString Text(const vrx_char16* utf16, const char* name);

void Give(const CString& result, char* text, int32_t capacity, int32_t* length);
void Give(const CString& result, vrx_char16* text, int32_t capacity, int32_t* length);

}  // namespace vrx::c_api

#endif  // C_API_CHECKS_H_
