
#include "tools/vrx/json_field.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/files.h>

#include "tools/vrx/commands/command.h"

namespace vrx::tool {
namespace {

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  quoted += text;
  quoted += '"';
  return quoted;
}

std::string TextOf(double number) {
  char text[32];
  const auto end = std::to_chars(std::begin(text), std::end(text), number);
  return {text, end.ptr};
}

std::string ReadWhole(const std::string& path) {
  constexpr std::size_t kLargestFile = std::size_t{1} << 28;
  constexpr std::size_t kChunk = std::size_t{1} << 20;
  FileReader reader;
  if (!reader.Open(path)) throw InputError(path + ": " + reader.GetError());
  std::string text;
  std::size_t got = kChunk;
  while (got == kChunk) {
    const std::size_t used = text.size();
    if (used > kLargestFile) throw InputError(path + ": larger than 256 MiB");
    text.resize(used + kChunk);
    got = reader.Read(std::as_writable_bytes(std::span(text).subspan(used)));
    text.resize(used + got);
  }
  return text;
}

// Where a text ceases to be JSON, in words.
std::string WhereJsonEnds(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 in the first line
  return ", line " + std::to_string(1 + std::count(before.begin(), before.end(), '\n')) + ", column " +
         std::to_string(offset - lineStart + 1) +
         (offset == text.size() ? ": the file ends too early" : ": this is not JSON");
}

}  // namespace

JsonDocument::JsonDocument(const std::string& path) : name_(path) {
  const std::string text = ReadWhole(path);
  try {
    root_ = nlohmann::json::parse(text);
  } catch (const nlohmann::json::parse_error& error) {
    const std::size_t offset = std::min(std::max<std::size_t>(error.byte, 1) - 1, text.size());
    throw InputError(path + WhereJsonEnds(text, offset));
  } catch (const nlohmann::json::out_of_range&) {
    throw InputError(path + ": a number is beyond the range of doubles");
  }
}

std::string JsonField::PathOf(std::string_view member) const {
  std::string path = path_;
  if (!path.empty()) path += '.';
  path += member;
  return path;
}

void JsonField::ExpectMembers(std::initializer_list<std::string_view> names) const {
  if (!value_->is_object()) Fail("an object is expected");
  for (const auto& [name, value] : value_->items()) {
    if (std::find(names.begin(), names.end(), name) == names.end()) Fail("unknown member " + Quoted(name));
  }
}

JsonField JsonField::operator[](std::string_view name) const {
  const std::optional<JsonField> member = Find(name);
  if (!member) Fail("member " + Quoted(name) + " is missing");
  return *member;
}

std::optional<JsonField> JsonField::Find(std::string_view name) const {
  if (!value_->is_object()) Fail("an object is expected");
  const auto found = value_->find(std::string(name));
  if (found == value_->end()) return std::nullopt;
  return JsonField(*this, *found, PathOf(name));
}

std::vector<JsonField> JsonField::Elements() const {
  if (!value_->is_array()) Fail("a list is expected");
  std::vector<JsonField> elements;
  for (const nlohmann::json& element : *value_) {
    std::string path = path_;
    path += '[';
    path += std::to_string(elements.size());
    path += ']';
    elements.push_back(JsonField(*this, element, std::move(path)));
  }
  return elements;
}

std::string JsonField::Text() const {
  if (!value_->is_string()) Fail("a text is expected");
  return value_->get<std::string>();
}

double JsonField::Number(double lowest, double highest) const {
  if (!value_->is_number()) Fail("a number is expected");
  const double number = value_->get<double>();
  if (number >= lowest && number <= highest) return number;
  Fail(TextOf(number) + " is not within " + TextOf(lowest) + " to " + TextOf(highest));
}

int64_t JsonField::Integer(int64_t lowest, int64_t highest) const {
  if (!value_->is_number_integer()) Fail("a whole number is expected");
  const bool beyond = value_->is_number_unsigned() && value_->get<uint64_t>() > INT64_MAX;
  const int64_t number = beyond ? INT64_MAX : value_->get<int64_t>();
  if (number >= lowest && number <= highest) return number;
  Fail("not within " + std::to_string(lowest) + " to " + std::to_string(highest));
}

std::size_t JsonField::OneOf(std::span<const std::string_view> names) const {
  const std::string text = Text();
  const auto found = std::find(names.begin(), names.end(), text);
  if (found != names.end()) return static_cast<std::size_t>(found - names.begin());
  std::string known;
  for (const std::string_view name : names) known += (known.empty() ? "" : ", ") + Quoted(name);
  Fail(Quoted(text) + " is none of " + known);
}

void JsonField::Fail(const std::string& reason) const {
  throw InputError(document_->Name() + ": " + (path_.empty() ? reason : path_ + ": " + reason));
}

}  // namespace vrx::tool
