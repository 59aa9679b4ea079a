#include "tools/vrx/output/json_output.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include <vrxmath/foundation/numbers.h>

#include "tools/vrx/base/text.h"

namespace vrx::tool {

using nlohmann::ordered_json;

namespace {

ordered_json NumberOrNull(double value, bool isKnown) {
  if ((!isKnown && IsUnset(value)) || !std::isfinite(value)) return nullptr;
  return value + 0.0;  // a negative zero becomes 0
}

}  // namespace

struct JsonObject::Members {
  ordered_json& operator[](std::string_view name) { return values[std::string(name)]; }

  ordered_json values = ordered_json::object();
};

JsonObject::JsonObject() : members_(std::make_unique<Members>()) {}
JsonObject::~JsonObject() = default;
JsonObject::JsonObject(JsonObject&&) noexcept = default;
JsonObject& JsonObject::operator=(JsonObject&&) noexcept = default;

void JsonObject::Text(std::string_view name, std::string_view value) {
  (*members_)[name] = value;
}

void JsonObject::Integer(std::string_view name, std::int64_t value) {
  (*members_)[name] = value;
}

void JsonObject::Number(std::string_view name, double value, bool isKnown) {
  (*members_)[name] = NumberOrNull(value, isKnown);
}

void JsonObject::Null(std::string_view name) {
  (*members_)[name] = nullptr;
}

void JsonObject::Object(std::string_view name, const JsonObject& value) {
  (*members_)[name] = value.members_->values;
}

void JsonObject::AppendText(std::string_view name, std::string_view value) {
  (*members_)[name].push_back(value);
}

void JsonObject::AppendNumber(std::string_view name, double value, bool isKnown) {
  (*members_)[name].push_back(NumberOrNull(value, isKnown));
}

void JsonArrayWriter::Add(const JsonObject& element) {
  output_.Append(std::exchange(empty_, false) ? "[\n" : ",\n");
  AppendEscaped(element.members_->values.dump(-1, ' ', false, ordered_json::error_handler_t::replace));
}

// Hidden characters beyond ASCII are in texts only, where an escape says the same and no terminal obeys it.
void JsonArrayWriter::AppendEscaped(std::string_view json) {
  if (std::ranges::all_of(json, [](char c) { return c >= 0 && c != '\x7F'; })) return output_.Append(json);
  while (!json.empty()) {
    const std::string_view before = json;
    const char32_t character = TakeCharacter(json);
    if (character < 0x7F || character > 0xFFFF || !IsHidden(character)) {
      output_.Append(before.substr(0, before.size() - json.size()));
      continue;
    }
    std::array<char, 8> escape{};
    std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(character));
    output_.Append(escape.data());
  }
}

void JsonArrayWriter::Finish() {
  output_.Append(empty_ ? "[]\n" : "\n]\n");
}

}  // namespace vrx::tool
