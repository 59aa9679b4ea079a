#include <vrxio/json/json_field.h>

#include <algorithm>
#include <bitset>
#include <cmath>
#include <nlohmann/json.hpp>
#include <unordered_map>
#include <utility>

#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/whole_file.h>

namespace vrx::io {

namespace {

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  quoted += text;
  quoted += '"';
  return quoted;
}

// Where a text ceases to be JSON, in words.
std::string WhereJsonEnds(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 in the first line
  return ", line " + std::to_string(1 + std::count(before.begin(), before.end(), '\n')) + ", column " +
         std::to_string(offset - lineStart + 1) +
         (offset == text.size() ? ": the file ends too early" : ": this is not JSON");
}

// At least as many as the text has values: each one but the root follows a bracket or a comma.
std::size_t MostValues(std::string_view text) {
  return 1 + static_cast<std::size_t>(
                 std::ranges::count_if(text, [](char c) { return c == ',' || c == '[' || c == '{'; }));
}

}  // namespace

// Takes the parser's events and lays the values down one behind the other.
class JsonBuilder {
 public:
  // The names are the parser's.
  using number_integer_t = nlohmann::json::number_integer_t;
  using number_unsigned_t = nlohmann::json::number_unsigned_t;
  using number_float_t = nlohmann::json::number_float_t;
  using string_t = nlohmann::json::string_t;
  using binary_t = nlohmann::json::binary_t;

  JsonBuilder(JsonDocument& document, std::string_view text) : document_(document), text_(text) {
    document_.nodes_.reserve(MostValues(text));
  }

  bool null() { return Add(Kind::kNull); }
  bool boolean(bool value) { return Add(value ? Kind::kTrue : Kind::kFalse); }
  bool number_integer(number_integer_t value) {
    return AddNumber(static_cast<double>(value), Kind::kWholeNumber);
  }
  bool number_unsigned(number_unsigned_t value) {
    return AddNumber(static_cast<double>(value), Kind::kWholeNumber);
  }
  bool number_float(number_float_t value, const string_t&) { return AddNumber(value, Kind::kNumber); }
  bool string(string_t& value) {
    Add(Kind::kText);
    document_.nodes_.back().text = {static_cast<uint32_t>(document_.texts_.size()),
                                    static_cast<uint32_t>(value.size())};
    document_.texts_ += value;
    return true;
  }
  bool binary(binary_t&) { return false; }  // no text of JSON has one

  bool start_object(std::size_t) { return Open(Kind::kObject); }
  bool start_array(std::size_t) { return Open(Kind::kArray); }
  bool end_object() { return Close(); }
  bool end_array() { return Close(); }

  bool key(string_t& value) {
    const auto [entry, isNew] = numbers_.try_emplace(value, static_cast<uint16_t>(document_.names_.size()));
    if (isNew) {
      if (document_.names_.size() == JsonDocument::kMostNames) Fail("more than 1000 names of members");
      document_.names_.push_back(value);
    }
    name_ = entry->second;
    if (open_.back().members.test(name_)) Fail("member " + Quoted(value) + " appears twice");
    open_.back().members.set(name_);
    return true;
  }

  bool parse_error(std::size_t position, const std::string&, const nlohmann::json::exception& error) {
    constexpr int kOutOfRange = 406;
    if (error.id == kOutOfRange)
      throw InputError(document_.name_ + ": a number is beyond the range of doubles");
    throw InputError(document_.name_ +
                     WhereJsonEnds(text_, std::min(std::max<std::size_t>(position, 1) - 1, text_.size())));
  }

 private:
  using Kind = JsonDocument::Kind;
  struct Container {
    uint32_t node;
    std::bitset<JsonDocument::kMostNames> members = {};
  };

  bool Add(Kind kind) {
    const auto place = static_cast<uint32_t>(document_.nodes_.size());
    if (!open_.empty()) ++document_.nodes_[open_.back().node].elements;
    JsonDocument::Node node{};
    node.end = place + 1;
    node.kind = kind;
    node.name = name_;
    document_.nodes_.push_back(node);
    return true;
  }
  bool AddNumber(double value, Kind kind) {
    Add(kind);
    document_.nodes_.back().number = value;
    return true;
  }
  bool Open(Kind kind) {
    if (open_.size() == JsonDocument::kDeepest) Fail("more than 64 objects and lists within each other");
    Add(kind);
    document_.nodes_.back().elements = 0;
    open_.push_back({static_cast<uint32_t>(document_.nodes_.size()) - 1});
    return true;
  }
  bool Close() {
    document_.nodes_[open_.back().node].end = static_cast<uint32_t>(document_.nodes_.size());
    open_.pop_back();
    return true;
  }
  [[noreturn]] void Fail(const std::string& reason) {
    const uint32_t place = open_.back().node;
    while (!open_.empty()) Close();
    const std::string path = document_.PathOf(place);
    throw InputError(document_.name_ + ": " + (path.empty() ? "" : path + ": ") + reason);
  }

  JsonDocument& document_;
  std::string_view text_;
  std::vector<Container> open_;
  std::unordered_map<std::string, uint16_t> numbers_;  // of names
  uint16_t name_ = 0;
};

JsonDocument::JsonDocument(const std::string& path) : name_(path) {
  const std::string text = ReadWholeFile(path, kLargestFile);
  JsonBuilder builder(*this, text);
  nlohmann::json::sax_parse(text, &builder);
}

// Walks from the root to the value, past those before it.
std::string JsonDocument::PathOf(uint32_t node) const {
  std::string path;
  for (uint32_t at = 0; at != node;) {
    const bool isList = nodes_[at].kind == Kind::kArray;
    std::size_t index = 0;
    for (++at; nodes_[at].end <= node; at = nodes_[at].end) ++index;
    if (isList) {
      path.append("[").append(std::to_string(index)).append("]");
    } else {
      path.append(path.empty() ? "" : ".").append(names_[nodes_[at].name]);
    }
  }
  return path;
}

void JsonField::Expect(JsonDocument::Kind kind, const char* objection) const {
  if (GetNode().kind != kind) Fail(objection);
}

void JsonField::ExpectMembers(std::initializer_list<std::string_view> names) const {
  Expect(JsonDocument::Kind::kObject, "expected an object");
  for (const JsonField member : List(document_, node_)) {
    const std::string& name = document_->names_[member.GetNode().name];
    if (std::ranges::find(names, name) == names.end()) Fail("unknown member " + Quoted(name));
  }
}

JsonField JsonField::operator[](std::string_view name) const {
  const std::optional<JsonField> member = Find(name);
  if (!member) Fail("member " + Quoted(name) + " is missing");
  return *member;
}

std::optional<JsonField> JsonField::Find(std::string_view name) const {
  Expect(JsonDocument::Kind::kObject, "expected an object");
  for (const JsonField member : List(document_, node_)) {
    if (document_->names_[member.GetNode().name] == name) return member;
  }
  return std::nullopt;
}

JsonField::List JsonField::Elements() const {
  Expect(JsonDocument::Kind::kArray, "expected a list");
  return List(document_, node_);
}

std::string JsonField::Text() const {
  Expect(JsonDocument::Kind::kText, "expected a text");
  return document_->texts_.substr(GetNode().text.offset, GetNode().text.length);
}

double JsonField::Number(double lowest, double highest) const {
  const bool isWhole = GetNode().kind == JsonDocument::Kind::kWholeNumber;
  if (!isWhole) Expect(JsonDocument::Kind::kNumber, "expected a number");
  const double number = GetNode().number;
  if (number >= lowest && number <= highest) return number;
  Fail(ShortestText(number) + " is not within " + ShortestText(lowest) + " to " + ShortestText(highest));
}

int64_t JsonField::Integer(int64_t lowest, int64_t highest) const {
  Expect(JsonDocument::Kind::kWholeNumber, "expected a whole number");
  const double number = GetNode().number;
  if (number >= static_cast<double>(lowest) && number <= static_cast<double>(highest)) {
    return static_cast<int64_t>(number);
  }
  Fail("not within " + std::to_string(lowest) + " to " + std::to_string(highest));
}

std::size_t JsonField::OneOf(std::span<const std::string_view> names) const {
  const std::string text = Text();
  const auto found = std::find(names.begin(), names.end(), text);
  if (found != names.end()) return static_cast<std::size_t>(found - names.begin());
  std::string known;
  for (const std::string_view name : names) known += (known.empty() ? "" : ", ") + Quoted(name);
  Fail(Quoted(text) + " is not one of " + known);
}

void JsonField::Fail(const std::string& reason) const {
  const std::string path = document_->PathOf(node_);
  throw InputError(document_->Name() + ": " + (path.empty() ? reason : path + ": " + reason));
}

std::string JsonString(std::string_view text) {
  return nlohmann::json(text).dump();
}

}  // namespace vrx::io
