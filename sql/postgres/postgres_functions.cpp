// The library as functions of PostgreSQL: curves are float8[] of 40 numbers, as jobs on a server keep them. An error of the server
// leaves a function by a jump that runs no destructors, and an exception must not reach the server. So each function takes its
// arguments apart first, computes between values without destructors, and makes its answer or its error last.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <exception>
#include <string>
#include <string_view>

#include <vrxio/measurement/names.h>
#include <vrxio/text/input_error.h>

#include "sql/color_functions.h"

extern "C" {
#include <postgres.h>
// behind it
#include <catalog/pg_type.h>
#include <fmgr.h>
#include <utils/array.h>
#include <utils/builtins.h>
#pragma GCC visibility push(default)
PG_MODULE_MAGIC;
#pragma GCC visibility pop
}

namespace vrx::sql {
namespace {

// The arguments of one call, which live as long as it does.
struct ServerArguments {
  struct Part {
    const char* data;
    std::size_t size;
  };
  static constexpr std::size_t kMost = 8;
  std::array<Part, kMost> parts;  // texts, and the numbers of curves
  std::array<double, kMost> numbers;
};

struct ServerAnswer {
  enum Kind { kNull, kError, kNumbers, kText } kind = kNull;
  std::size_t count = 0;
  Triple numbers{};
  std::array<char, 1024> text{};

  void SetText(Kind as, std::string_view words) noexcept {
    kind = as;
    const std::size_t length = std::min(words.size(), text.size() - 1);
    std::memcpy(text.data(), words.data(), length);
    text.at(length) = '\0';
  }
  void SetNumbers(const Triple& triple, std::size_t many) noexcept {
    kind = std::all_of(triple.begin(), triple.end(), [](double x) { return std::isfinite(x); }) ? kNumbers
                                                                                                : kNull;
    numbers = triple;
    count = many;
  }
};

// What an argument is: (c)urve, (t)ext, (n)umber, (i)nteger.
ServerArguments TakeArguments(FunctionCallInfo fcinfo, const char* kinds) {
  ServerArguments arguments{};
  for (int i = 0; kinds[i] != '\0'; ++i) {
    const auto place = static_cast<std::size_t>(i);
    if (kinds[i] == 'n') {
      arguments.numbers[place] = PG_GETARG_FLOAT8(i);
    } else if (kinds[i] == 'i') {
      arguments.numbers[place] = PG_GETARG_INT32(i);
    } else if (kinds[i] == 't') {
      text* const words = PG_GETARG_TEXT_PP(i);
      arguments.parts[place] = {VARDATA_ANY(words), VARSIZE_ANY_EXHDR(words)};
    } else {
      ArrayType* const curve = PG_GETARG_ARRAYTYPE_P(i);
      if (ARR_NDIM(curve) == 1 && !array_contains_nulls(curve) && ARR_ELEMTYPE(curve) == FLOAT8OID)
        arguments.parts[place] = {ARR_DATA_PTR(curve), static_cast<std::size_t>(ARR_DIMS(curve)[0])};
    }
  }
  return arguments;
}

std::string TextAt(const ServerArguments& arguments, std::size_t i) {
  return {arguments.parts.at(i).data, arguments.parts.at(i).size};
}

Curve CurveAt(const ServerArguments& arguments, std::size_t i) {
  Curve curve{};
  const ServerArguments::Part& part = arguments.parts.at(i);
  if (part.size != curve.size())
    throw io::InputError("a curve is an array of 40 numbers, from 360 to 750 nm");
  std::memcpy(curve.data(), part.data, sizeof curve);
  return curve;
}

std::int32_t ObserverAt(const ServerArguments& arguments, std::size_t i) {
  return io::ParseObserver(std::to_string(static_cast<int>(arguments.numbers.at(i))));
}

// Where words are asked for there is no angle, and its place is empty.
Comparison ComparisonAt(const ServerArguments& arguments, std::size_t next) {
  return {TextAt(arguments, 2), TextAt(arguments, next), ObserverAt(arguments, next + 1),
          TextAt(arguments, next + 2), TextAt(arguments, next + 3)};
}

template <std::optional<Triple> (*COLOR)(const Curve&, const std::string&, std::int32_t)>
void ColorTriple(const ServerArguments& arguments, ServerAnswer& answer) {
  const auto color = COLOR(CurveAt(arguments, 0), TextAt(arguments, 1), ObserverAt(arguments, 2));
  if (color) answer.SetNumbers(*color, color->size());
}

void Delta(const ServerArguments& arguments, ServerAnswer& answer) {
  const auto delta = DeltaOf(CurveAt(arguments, 0), CurveAt(arguments, 1), ComparisonAt(arguments, 3));
  if (delta) answer.SetNumbers({*delta}, 1);
}

void Words(const ServerArguments& arguments, ServerAnswer& answer) {
  const auto words = WordsOf(CurveAt(arguments, 0), CurveAt(arguments, 1), ComparisonAt(arguments, 3));
  if (words) answer.SetText(ServerAnswer::kText, *words);
}

void Judge(const ServerArguments& arguments, ServerAnswer& answer) {
  answer.SetText(ServerAnswer::kText, VerdictOf(CurveAt(arguments, 0), CurveAt(arguments, 1),
                                                arguments.numbers[3], ComparisonAt(arguments, 4)));
}

using ServerFunction = void (*)(const ServerArguments&, ServerAnswer&);
ServerAnswer Computed(ServerFunction function, const ServerArguments& arguments, const char* name) noexcept {
  ServerAnswer answer;
  try {
    function(arguments, answer);
  } catch (const std::exception& error) {
    std::array<char, 512> reason{};
    std::strncpy(reason.data(), error.what(), reason.size() - 1);
    answer.SetText(ServerAnswer::kError, name);
    std::strcat(answer.text.data(), ": ");
    std::strcat(answer.text.data(), reason.data());
  }
  return answer;
}

// The answer as the server takes it; the number itself where there is one.
Datum Given(FunctionCallInfo fcinfo, const ServerAnswer& answer) {
  if (answer.kind == ServerAnswer::kError)
    ereport(ERROR, (errcode(ERRCODE_INVALID_PARAMETER_VALUE), errmsg("%s", answer.text.data())));
  if (answer.kind == ServerAnswer::kNull) PG_RETURN_NULL();
  if (answer.kind == ServerAnswer::kText) PG_RETURN_TEXT_P(cstring_to_text(answer.text.data()));
  if (answer.count == 1) PG_RETURN_FLOAT8(answer.numbers[0]);
  std::array<Datum, 3> numbers{};
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = Float8GetDatum(answer.numbers[i]);
  PG_RETURN_ARRAYTYPE_P(construct_array(numbers.data(), static_cast<int>(numbers.size()), FLOAT8OID,
                                        sizeof(double), FLOAT8PASSBYVAL, TYPALIGN_DOUBLE));
}

}  // namespace
}  // namespace vrx::sql

// The functions by the names that the server looks up.
#define VRX_SQL_FUNCTION(name, kinds, function)                                                   \
  extern "C" __attribute__((visibility("default"))) const Pg_finfo_record* pg_finfo_##name(void); \
  extern "C" __attribute__((visibility("default"))) Datum name(FunctionCallInfo fcinfo);          \
  extern "C" const Pg_finfo_record* pg_finfo_##name(void) {                                       \
    static const Pg_finfo_record kRecord = {1};                                                   \
    return &kRecord;                                                                              \
  }                                                                                               \
  extern "C" Datum name(FunctionCallInfo fcinfo) {                                                \
    const auto arguments = vrx::sql::TakeArguments(fcinfo, kinds);                                \
    return vrx::sql::Given(fcinfo, vrx::sql::Computed(&vrx::sql::function, arguments, #name));    \
  }

VRX_SQL_FUNCTION(vrx_tristimulus, "cti", ColorTriple<vrx::sql::TristimulusOf>)
VRX_SQL_FUNCTION(vrx_lab, "cti", ColorTriple<vrx::sql::LabOf>)
VRX_SQL_FUNCTION(vrx_delta, "ccttitt", Delta)
VRX_SQL_FUNCTION(vrx_words, "ccttit", Words)
VRX_SQL_FUNCTION(vrx_judge, "cctntitt", Judge)

extern "C" __attribute__((visibility("default"))) const Pg_finfo_record* pg_finfo_vrx_version(void);
extern "C" __attribute__((visibility("default"))) Datum vrx_version(FunctionCallInfo fcinfo);
extern "C" const Pg_finfo_record* pg_finfo_vrx_version(void) {
  static const Pg_finfo_record kRecord = {1};
  return &kRecord;
}
extern "C" Datum vrx_version(FunctionCallInfo /*fcinfo*/) {
  PG_RETURN_TEXT_P(cstring_to_text(VRX_VERSION));
}
