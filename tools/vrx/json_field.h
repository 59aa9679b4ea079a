// A value of a JSON document that knows where it stands, so that whatever is wrong with it can be said by file
// and field: "acrylic.json: components[3].levels[0].K: 39 numbers instead of 40".

#ifndef TOOLS_VRX_JSON_FIELD_H_
#define TOOLS_VRX_JSON_FIELD_H_

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vrx::tool {

/// A JSON file, read whole. Throws InputError when it cannot be read, is larger than 256 MiB or is no JSON.
class JsonDocument {
 public:
  explicit JsonDocument(const std::string& path);

  const std::string& Name() const { return name_; }
  const nlohmann::json& Root() const { return root_; }

 private:
  std::string name_;
  nlohmann::json root_;
};

/// One value. Every member throws InputError, with file and field, for a value that is not what is asked for.
/// The document must outlive it.
class JsonField {
 public:
  explicit JsonField(const JsonDocument& document) : document_(&document), value_(&document.Root()) {}

  /// Makes sure that this is an object with no other members than these.
  void ExpectMembers(std::initializer_list<std::string_view> names) const;
  /// A member of an object; `Find` gives nothing when there is none.
  JsonField operator[](std::string_view name) const;
  std::optional<JsonField> Find(std::string_view name) const;

  /// The elements of an array.
  std::vector<JsonField> Elements() const;

  std::string Text() const;
  /// A number within the limits, both inclusive.
  double Number(double lowest, double highest) const;
  int64_t Integer(int64_t lowest, int64_t highest) const;
  /// The index in `names` of a text.
  std::size_t OneOf(std::span<const std::string_view> names) const;

  [[noreturn]] void Fail(const std::string& reason) const;

 private:
  JsonField(const JsonField& parent, const nlohmann::json& value, std::string path)
      : document_(parent.document_), value_(&value), path_(std::move(path)) {}
  std::string PathOf(std::string_view member) const;

  const JsonDocument* document_;
  const nlohmann::json* value_;
  std::string path_;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JSON_FIELD_H_
