// Results as a JSON array that is written while it grows. Apart from output.h because few sources need the JSON
// library's header.

#ifndef TOOLS_VRX_OUTPUT_JSON_OUTPUT_H_
#define TOOLS_VRX_OUTPUT_JSON_OUTPUT_H_

#include <nlohmann/json.hpp>
#include <string_view>

#include "tools/vrx/output/output.h"

namespace vrx::tool {

/// `value` for a JSON document: null when it is unset or not finite. One that `isKnown` is a number as small as it may be.
nlohmann::ordered_json JsonNumber(double value, bool isKnown = false);

/// A JSON array of objects that is written while it grows.
class JsonArrayWriter {
 public:
  explicit JsonArrayWriter(OutputStream& output) : output_(output) {}
  void Add(const nlohmann::ordered_json& element);
  /// Closes the array; call once, at the end.
  void Finish();

 private:
  void AppendEscaped(std::string_view json);

  OutputStream& output_;
  bool empty_ = true;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_JSON_OUTPUT_H_
