// The beginning and the end of every function of the C interface: checks of its arguments, and the way from an exception
// to a status.

#ifndef C_API_CHECKS_H_
#define C_API_CHECKS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/c_api.h>
#include <vrxmath/colorant/optical_transforms.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/formula/formula.h>
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
/// The reason of the last call that was refused on this thread, in UTF-8. It is cut where it would pass 500 bytes.
std::string_view LastReason() noexcept;

// Checks. `name` is the parameter's, for the reason. --------------------------------------------------------------

void NeedPlace(const void* place, const char* name);
/// A count from 0, whose arrays of `width` numbers a row could exist.
std::size_t NeedCount(int32_t count, std::size_t width, const char* name);
/// True for `value` within `low` to `high`, or the call ends.
void NeedRange(int32_t value, int32_t low, int32_t high, const char* name);
void NeedFinite(double value, const char* name);
/// A finite number within `low` to `high`.
void NeedWithin(double value, double low, double high, const char* name);

/// The largest number, of either sign, that a reading may be: far above every colour, and far below where its powers in
/// the formulas overflow.
inline constexpr double kLargestReading = 1e6;

/// Numbers to read: there, as many as `count` rows, all of them finite and none beyond `largest`.
std::span<const double> Numbers(const double* numbers, int32_t count, std::size_t width, const char* name,
                                double largest);
/// Rows of readings: reflectances, colours and differences.
std::span<const double> Numbers(const double* numbers, int32_t count, std::size_t width, const char* name);
/// A curve of 40 readings.
CReflData CurveOf(const double* samples, const char* name);
/// Rows to write.
template <class NUMBER>
std::span<NUMBER> Place(NUMBER* numbers, int32_t count, std::size_t width, const char* name) {
  const std::size_t total = NeedCount(count, width, "count");
  if (total > 0) NeedPlace(numbers, name);
  return {numbers, total};
}

/// The arrays of one call, which keep apart what the caller did not: numbers that are read row by row while results are
/// written are copied first where they share memory with a result, and results that share memory are refused. So every
/// result is what it would be in a place of its own, whatever the count of threads. First all places of results, then
/// the numbers.
class Arrays {
 public:
  /// Rows to write, as vrx::c_api::Place, apart from those before.
  template <class NUMBER>
  std::span<NUMBER> Place(NUMBER* numbers, int32_t count, std::size_t width, const char* name) {
    const std::span<NUMBER> rows = c_api::Place(numbers, count, width, name);
    AddPlace(std::as_bytes(rows), name);
    return rows;
  }
  /// The same, where null means that nobody wants them.
  template <class NUMBER>
  std::span<NUMBER> PlaceIfWanted(NUMBER* numbers, int32_t count, std::size_t width, const char* name) {
    return numbers == nullptr ? std::span<NUMBER>() : Place(numbers, count, width, name);
  }
  /// One result.
  template <class NUMBER>
  NUMBER& Result(NUMBER* number, const char* name) {
    return Place(number, 1, 1, name).front();
  }
  /// Rows of readings, as vrx::c_api::Numbers.
  std::span<const double> Numbers(const double* numbers, int32_t count, std::size_t width, const char* name,
                                  double largest = kLargestReading);

 private:
  static constexpr std::size_t kMostPlaces = 8;

  void AddPlace(std::span<const std::byte> place, const char* name);
  bool IsPlace(std::span<const std::byte> bytes) const;

  std::array<std::span<const std::byte>, kMostPlaces> places_;
  std::size_t placeCount_ = 0;
  bool hasNumbers_ = false;
  std::vector<std::vector<double>> copies_;
};

/// Runs the body of a function, with the arrays of the call where it takes them. Nothing that it throws gets out.
template <class Body>
vrx_status Call(const Body& body) noexcept {
  try {
    if constexpr (std::is_invocable_v<Body, Arrays&>) {
      Arrays arrays;
      body(arrays);
    } else {
      body();
    }
    Forget();
    return VRX_OK;
  } catch (...) {
    return Refused();
  }
}

// Structures that begin with their size, which may grow at their end.

/// Copies a caller's structure of `given` bytes into one of `own` bytes, which holds the values of what the caller does not
/// know. Refuses one that does not hold its size, and one whose further members ask for what this library does not know.
void CopySized(const void* from, void* to, std::size_t own, const char* name);
/// The caller's structure in the form of this library, `usual` for null.
template <class STRUCT>
STRUCT Sized(const STRUCT* given, const STRUCT& usual, const char* name) {
  STRUCT own = usual;
  if (given != nullptr) CopySized(given, &own, sizeof own, name);
  return own;
}
/// Fills as much of the caller's structure as its size says; the rest of a larger one with zeros.
void GiveSized(const void* from, std::size_t own, void* place, const char* name);

/// An illuminant and observer that have a weighting table.
struct Pair {
  vrxIlluminant illuminant;
  int32_t observer;
  Pair(int32_t illuminantNumber, int32_t observerNumber);
};

/// 1 to 64 illuminants, each with a weighting table for the observer.
CIllumArray IlluminantList(const int32_t* illuminants, int32_t count, int32_t observer);
/// A formula of `count` lines.
CDbFormula FormulaOf(const int32_t* ids, const double* amounts, int32_t count);
/// A constant of the surface, from 0 to below 1.
void NeedConstant(double k, const char* name);
/// What a reading holds of the surface, by its number.
SaundersonMode ModeOf(int32_t surface);

/// A system whose parameters are above 0, at an angle that a geometry can have.
CDifferenceSettings Settings(const vrx_system* system);

/// How functions with many rows are run (vrx_set_threads).
BatchRun Run();
void SetThreads(unsigned count);

// Texts -----------------------------------------------------------------------------------------------------------

CString Text(const char* utf8, const char* name);
CString Text(const vrx_char16* utf16, const char* name);

void Give(const CString& result, char* text, int32_t capacity, int32_t* length);
void Give(const CString& result, vrx_char16* text, int32_t capacity, int32_t* length);

}  // namespace vrx::c_api

#endif  // C_API_CHECKS_H_
