// The library as functions of SQLite: curves are BLOBs of 40 doubles, as jobs keep them, answers are numbers, words and JSON. All
// are deterministic, so that they may stand in an index, and none reads or writes anything but its arguments. A NULL argument, an
// unset curve and a colour that cannot be had give NULL; an argument that means nothing is an error of the statement.

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <sqlite3ext.h>

#include <vrxio/measurement/names.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxstore/records/stored_form.h>

#include "sql/color_functions.h"

SQLITE_EXTENSION_INIT1

namespace vrx::sql {
namespace {

// The arguments of one call and the place of its answer.
class Call {
 public:
  Call(sqlite3_context* context, int count, sqlite3_value** values)
      : context_(context), values_(values, static_cast<std::size_t>(count)) {}

  bool HasNull() const {
    return std::ranges::any_of(values_, [](auto* value) { return sqlite3_value_type(value) == SQLITE_NULL; });
  }
  bool Has(std::size_t i) const { return i < values_.size(); }

  std::string Text(std::size_t i) const {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_value_text(values_[i]));
    if (text == nullptr) throw std::bad_alloc();
    return {text, static_cast<std::size_t>(sqlite3_value_bytes(values_[i]))};
  }
  // Percent at the wavelengths of the library.
  Curve CurveAt(std::size_t i) const {
    Curve curve{};
    const std::string_view bytes = Bytes(values_[i]);
    if (sqlite3_value_type(values_[i]) != SQLITE_BLOB || bytes.size() != sizeof curve)
      throw io::InputError("a curve is a BLOB of 40 doubles; vrx_curve makes one of a list of numbers");
    store::DoublesFrom(bytes, curve);
    return curve;
  }
  // 2 or 10 degrees; 10 where it is left out.
  std::int32_t ObserverAt(std::size_t i) const { return Has(i) ? io::ParseObserver(Text(i)) : kObserver10; }

  void GiveNull() const { sqlite3_result_null(context_); }
  void GiveNumber(double value) const {
    std::isfinite(value) ? sqlite3_result_double(context_, value) : GiveNull();
  }
  void GiveText(std::string_view text) const {
    sqlite3_result_text64(context_, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  }
  void GiveBlob(std::string_view bytes) const {
    sqlite3_result_blob64(context_, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
  }
  // A list in JSON, in the fewest digits that read back to the same doubles; NULL where a number is none.
  void GiveList(std::span<const double> numbers) const {
    if (!std::ranges::all_of(numbers, [](double x) { return std::isfinite(x); })) return GiveNull();
    std::string text = "[";
    for (const double number : numbers) text += (text.size() > 1 ? "," : "") + io::ShortestText(number);
    GiveText(text + "]");
    sqlite3_result_subtype(context_, 'J');  // what functions of JSON know their own lists by
  }
  void GiveError(const std::string& reason) const {
    const std::string text =
        std::string(static_cast<const char*>(sqlite3_user_data(context_))) + ": " + reason;
    sqlite3_result_error(context_, text.c_str(), static_cast<int>(text.size()));
  }
  void GiveNoMemory() const { sqlite3_result_error_nomem(context_); }

 private:
  static std::string_view Bytes(sqlite3_value* value) {
    const void* const data = sqlite3_value_blob(value);
    if (data == nullptr) return {};
    return {static_cast<const char*>(data), static_cast<std::size_t>(sqlite3_value_bytes(value))};
  }

  sqlite3_context* context_;
  std::span<sqlite3_value*> values_;
};

template <void (*FUNCTION)(const Call&)>
void Guarded(sqlite3_context* context, int count, sqlite3_value** values) {
  const Call call(context, count, values);
  try {
    if (call.HasNull()) return sqlite3_result_null(context);
    FUNCTION(call);
  } catch (const std::bad_alloc&) {
    call.GiveNoMemory();
  } catch (const std::exception& error) {
    call.GiveError(error.what());
  }
}

// vrx_tristimulus(curve, illuminant [, observer]), vrx_lab: the colour as a list of three numbers.
template <std::optional<Triple> (*COLOR)(const Curve&, const std::string&, std::int32_t)>
void ColorList(const Call& call) {
  const std::optional<Triple> color = COLOR(call.CurveAt(0), call.Text(1), call.ObserverAt(2));
  color ? call.GiveList(*color) : call.GiveNull();
}

// (standard, trial, system, ...), where illuminants, observer, parameters and angle stand from `next` on.
Comparison ComparisonAt(const Call& call, std::size_t next) {
  return {call.Text(2), call.Text(next), call.ObserverAt(next + 1),
          call.Has(next + 2) ? call.Text(next + 2) : "", call.Has(next + 3) ? call.Text(next + 3) : ""};
}

// vrx_delta(standard, trial, system, illuminant [, observer [, parameters [, angle]]]): the total difference.
void Delta(const Call& call) {
  const std::optional<double> delta = DeltaOf(call.CurveAt(0), call.CurveAt(1), ComparisonAt(call, 3));
  delta ? call.GiveNumber(*delta) : call.GiveNull();
}

// vrx_words(standard, trial, system, illuminant [, observer [, parameters]]): "Darker, Less Yellow".
void Words(const Call& call) {
  const std::optional<std::string> words = WordsOf(call.CurveAt(0), call.CurveAt(1), ComparisonAt(call, 3));
  words ? call.GiveText(*words) : call.GiveNull();
}

// vrx_judge(standard, trial, system, tolerance, illuminants [, observer [, parameters [, angle]]]): the worst verdict of the total.
void Judge(const Call& call) {
  double tolerance = 0;
  if (!io::ParseDecimal(call.Text(3), '.', tolerance)) tolerance = 0;
  call.GiveText(VerdictOf(call.CurveAt(0), call.CurveAt(1), tolerance, ComparisonAt(call, 4)));
}

// vrx_curve('[5, 5.1, ...]'): the curve of 40 numbers in percent, from 360 to 750 nm.
void CurveFrom(const Call& call) {
  std::string text = call.Text(0);
  std::erase_if(text, [](char c) { return c == '[' || c == ']' || c == '\n' || c == '\r'; });
  const std::vector<double> numbers = io::ParseNumbers(text, "the curve");
  if (numbers.size() != kWavelengths) throw io::InputError("a curve has 40 numbers, from 360 to 750 nm");
  std::string bytes;
  store::AppendDoubles(numbers, bytes);
  call.GiveBlob(bytes);
}

// vrx_values(curve): its 40 numbers as a list.
void Values(const Call& call) {
  const Curve curve = call.CurveAt(0);
  IsUnset(curve[0]) ? call.GiveNull() : call.GiveList(curve);
}

void Version(const Call& call) {
  call.GiveText(VRX_VERSION);
}

struct Function {
  const char* name;
  int fewest, most;  // arguments
  void (*call)(sqlite3_context*, int, sqlite3_value**);
};
constexpr Function kFunctions[] = {
    {"vrx_curve", 1, 1, Guarded<CurveFrom>},
    {"vrx_values", 1, 1, Guarded<Values>},
    {"vrx_tristimulus", 2, 3, Guarded<ColorList<TristimulusOf>>},
    {"vrx_lab", 2, 3, Guarded<ColorList<LabOf>>},
    {"vrx_delta", 4, 7, Guarded<Delta>},
    {"vrx_words", 4, 6, Guarded<Words>},
    {"vrx_judge", 5, 8, Guarded<Judge>},
    {"vrx_version", 0, 0, Guarded<Version>},
};

int Register(sqlite3* database) {
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
  for (const Function& function : kFunctions) {
    for (int count = function.fewest; count <= function.most; ++count) {
      const int status =
          sqlite3_create_function_v2(database, function.name, count, kFlags, const_cast<char*>(function.name),
                                     function.call, nullptr, nullptr, nullptr);
      if (status != SQLITE_OK) return status;
    }
  }
  return SQLITE_OK;
}

}  // namespace
}  // namespace vrx::sql

// What SQLite calls when it loads the module.
extern "C" __attribute__((visibility("default"))) int sqlite3_vrxsqlite_init(
    sqlite3* database, char** /*error*/, const sqlite3_api_routines* routines) {
  SQLITE_EXTENSION_INIT2(routines)
  return vrx::sql::Register(database);
}
