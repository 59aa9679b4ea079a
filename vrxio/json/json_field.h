// A value of a JSON document that knows where it stands, so that whatever is wrong with it can be said by file
// and field: "acrylic.json: components[3].levels[0].K: 39 numbers instead of 40".

#ifndef VRXIO_JSON_JSON_FIELD_H_
#define VRXIO_JSON_JSON_FIELD_H_

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vrx::io {

/// A JSON file, read whole into one flat list of values, 16 bytes each, in the order of the file. Time and memory grow
/// with the size of the file, whatever is in it.
class JsonDocument {
 public:
  static constexpr std::size_t kLargestFile = std::size_t{1} << 26;  ///< bytes
  static constexpr std::size_t kDeepest = 64;                        ///< objects and lists within each other
  static constexpr std::size_t kMostNames = 1000;                    ///< different names of members

  /// Throws InputError when the file cannot be read, is no JSON, is beyond the limits, or has an object with two
  /// members of one name.
  explicit JsonDocument(const std::string& path);

  const std::string& Name() const { return name_; }

 private:
  friend class JsonField;
  friend class JsonBuilder;

  enum class Kind : uint8_t { kNull, kFalse, kTrue, kNumber, kWholeNumber, kText, kArray, kObject };
  struct Text {
    uint32_t offset, length;  // in texts_
  };
  struct Node {
    union {
      double number;
      Text text;
      uint32_t elements;  // of a list or an object
    };
    uint32_t end;  // the node behind this one and all within it
    Kind kind;
    uint16_t name;  // of a member, an index in names_
  };
  static_assert(sizeof(Node) == 16);

  bool IsContainer(uint32_t node) const { return nodes_[node].kind >= Kind::kArray; }
  std::string PathOf(uint32_t node) const;

  std::string name_;
  std::vector<Node> nodes_;  // the root first, what is in a container behind it
  std::vector<std::string> names_;
  std::string texts_;
};

/// One value. Every member throws InputError, with file and field, for a value that is not what is asked for.
/// The document must outlive it.
class JsonField {
 public:
  explicit JsonField(const JsonDocument& document) : JsonField(&document, 0) {}

  /// The elements of a list, to go through.
  class List {
   public:
    class Iterator {
     public:
      using iterator_category = std::input_iterator_tag;
      using value_type = JsonField;
      using difference_type = std::ptrdiff_t;
      using pointer = const JsonField*;
      using reference = JsonField;

      Iterator(const JsonDocument* document, uint32_t node) : document_(document), node_(node) {}
      JsonField operator*() const { return {document_, node_}; }
      Iterator& operator++() {
        node_ = document_->nodes_[node_].end;
        return *this;
      }
      bool operator==(const Iterator& other) const { return node_ == other.node_; }

     private:
      const JsonDocument* document_;
      uint32_t node_;
    };

    List(const JsonDocument* document, uint32_t node) : document_(document), node_(node) {}
    std::size_t size() const { return document_->nodes_[node_].elements; }
    Iterator begin() const { return {document_, node_ + 1}; }
    Iterator end() const { return {document_, document_->nodes_[node_].end}; }

   private:
    const JsonDocument* document_;
    uint32_t node_;
  };

  /// Makes sure that this is an object with no other members than these.
  void ExpectMembers(std::initializer_list<std::string_view> names) const;
  /// A member of an object; `Find` gives nothing when there is none.
  JsonField operator[](std::string_view name) const;
  std::optional<JsonField> Find(std::string_view name) const;

  /// The elements of a list.
  List Elements() const;

  std::string Text() const;
  /// A number within the limits, both inclusive.
  double Number(double lowest, double highest) const;
  int64_t Integer(int64_t lowest, int64_t highest) const;
  /// The index in `names` of a text.
  std::size_t OneOf(std::span<const std::string_view> names) const;

  [[noreturn]] void Fail(const std::string& reason) const;

 private:
  JsonField(const JsonDocument* document, uint32_t node) : document_(document), node_(node) {}
  const JsonDocument::Node& GetNode() const { return document_->nodes_[node_]; }
  void Expect(JsonDocument::Kind kind, const char* objection) const;

  const JsonDocument* document_;
  uint32_t node_;
};

/// `text` as a string of JSON with its quotes. Throws nlohmann::json::type_error (a std::exception) for one that is not UTF-8.
std::string JsonString(std::string_view text);

}  // namespace vrx::io

#endif  // VRXIO_JSON_JSON_FIELD_H_
