// Results as a JSON array that is written while it grows. The JSON library is only in the source beside this header: what it
// costs the compiler, it costs once.

#ifndef TOOLS_VRX_OUTPUT_JSON_OUTPUT_H_
#define TOOLS_VRX_OUTPUT_JSON_OUTPUT_H_

#include <cstdint>
#include <memory>
#include <string_view>

#include "tools/vrx/output/output.h"

namespace vrx::tool {

/// An object with its members in the order in which they came. A number is null when it is unset or not finite; one that
/// `isKnown` is a number as small as it may be.
class JsonObject {
 public:
  JsonObject();
  ~JsonObject();
  JsonObject(JsonObject&&) noexcept;
  JsonObject& operator=(JsonObject&&) noexcept;
  JsonObject(const JsonObject&) = delete;
  JsonObject& operator=(const JsonObject&) = delete;

  void Text(std::string_view name, std::string_view value);
  void Integer(std::string_view name, std::int64_t value);
  void Number(std::string_view name, double value, bool isKnown = false);
  void Null(std::string_view name);
  void Object(std::string_view name, const JsonObject& value);

  /// One more element for the list called `name`, which the first one begins.
  void AppendText(std::string_view name, std::string_view value);
  void AppendNumber(std::string_view name, double value, bool isKnown = false);

 private:
  friend class JsonArrayWriter;
  struct Members;

  std::unique_ptr<Members> members_;
};

/// A JSON array of objects that is written while it grows.
class JsonArrayWriter {
 public:
  explicit JsonArrayWriter(OutputStream& output) : output_(output) {}
  void Add(const JsonObject& element);
  /// Closes the array; call once, at the end.
  void Finish();

 private:
  void AppendEscaped(std::string_view json);

  OutputStream& output_;
  bool empty_ = true;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_JSON_OUTPUT_H_
