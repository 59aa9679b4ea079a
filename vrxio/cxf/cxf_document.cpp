#include <vrxio/cxf/cxf_document.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include <vrxio/text/input_error.h>
#include <vrxio/text/text.h>

namespace vrx::io {
namespace {

constexpr std::size_t kNotFound = std::string_view::npos;

// The character that a reference without its "&" and ";" stands for; 0 when it is none.
uint32_t CharacterOf(std::string_view reference) {
  constexpr std::pair<std::string_view, char> kNamed[] = {
      {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
  for (const auto& [name, character] : kNamed) {
    if (reference == name) return static_cast<uint32_t>(character);
  }
  if (!reference.starts_with('#')) return 0;
  reference.remove_prefix(1);
  const bool isHex = reference.starts_with('x');
  if (isHex) reference.remove_prefix(1);
  uint32_t character = 0;
  const char* const end = reference.data() + reference.size();
  const auto [stop, error] = std::from_chars(reference.data(), end, character, isHex ? 16 : 10);
  const bool isSurrogate = character >= 0xD800 && character < 0xE000;
  return error == std::errc() && stop == end && character <= 0x10FFFF && !isSurrogate ? character : 0;
}

std::string_view WithoutSpace(std::string_view text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace

// The window ----------------------------------------------------------------------------------------------

void MarkupWindow::Fail(int64_t line, const std::string& reason) const {
  throw InputError(PlaceOf(line) + ": " + reason);
}

bool MarkupWindow::Has(std::size_t count) {
  while (window_.Bytes().size() < count) {
    if (!window_.More()) return false;
  }
  return true;
}

std::size_t MarkupWindow::Find(std::string_view text, std::size_t from) {
  while (true) {
    const std::string_view bytes = window_.Bytes();
    const std::size_t found = bytes.find(text, from);
    if (found != kNotFound) return found;
    from = std::max(from, bytes.size() - std::min(bytes.size(), text.size() - 1));
    if (!window_.More()) return kNotFound;
  }
}

// The place behind the ">" of the tag whose "<" stands before `from`; a ">" between quotes does not count, and is noted.
std::size_t MarkupWindow::EndOfTag(std::size_t from) {
  char quote = 0;
  for (std::size_t at = from; Has(at + 1);) {
    const std::string_view bytes = window_.Bytes();
    for (; at < bytes.size(); ++at) {
      const char c = bytes[at];
      if (c > '>') continue;  // letters: most of a tag
      if (quote != 0) {
        if (c == quote) quote = 0;
        if (c == '>') quotedEnds_.push_back(static_cast<uint32_t>(at));
      } else if (c == '>') {
        return at + 1;
      } else if (c == '"' || c == '\'') {
        quote = c;
      } else if (c == '<') {
        Fail(window_.LineAhead(from), "a tag does not end");
      }
    }
  }
  Fail(window_.LineAhead(std::min(from, window_.Bytes().size())), "the file ends within a tag");
}

MarkupWindow::Tag MarkupWindow::NextTag(std::size_t from) {
  if (from == 0) quotedEnds_.clear();
  while (true) {
    const std::size_t begin = Find("<", from);
    if (begin == kNotFound) return {};
    if (!Has(begin + 4)) Fail(window_.LineAhead(begin), "the file ends within a tag");
    const std::string_view start = window_.Bytes().substr(begin, 4);
    if (start[1] != '?' && start[1] != '!') {
      const bool isEnd = start[1] == '/';  // the window moves on below
      const std::size_t end = EndOfTag(begin + 1);
      const bool isEmpty = window_.Bytes()[end - 2] == '/';
      return {isEnd ? Kind::kEnd : isEmpty ? Kind::kEmpty : Kind::kStart, begin, end};
    }
    std::string_view terminator = "?>";
    if (start == "<!--") {
      terminator = "-->";
    } else if (start.starts_with("<![")) {
      terminator = "]]>";
    } else if (start[1] == '!') {
      Fail(window_.LineAhead(begin), "CxF must not have a document type; entities are not read");
    }
    const std::size_t end = Find(terminator, begin + 2);
    if (end == kNotFound) Fail(window_.LineAhead(begin), "what begins here does not end");
    from = end + terminator.size();
  }
}

std::string_view MarkupWindow::NameOf(const Tag& tag) const {
  std::string_view text = window_.Bytes().substr(tag.begin + (tag.kind == Kind::kEnd ? 2 : 1));
  std::size_t end = 0;
  while (end < text.size() && !IsSpace(text[end]) && text[end] != '>' && text[end] != '/') ++end;
  return text.substr(0, end);
}

std::string_view MarkupWindow::TakeElement(const Tag& start) {
  window_.Skip(start.begin);
  for (uint32_t& at : quotedEnds_) at -= static_cast<uint32_t>(start.begin);
  std::size_t end = start.end - start.begin;
  for (int depth = start.kind == Kind::kStart ? 1 : 0; depth > 0;) {
    const Tag tag = NextTag(end);
    if (tag.kind == Kind::kNone) Fail(window_.Line(), "the file ends within the element that begins here");
    if (tag.kind == Kind::kStart && ++depth > kDeepest) {
      Fail(window_.LineAhead(tag.begin), "elements are nested more than 64 deep");
    }
    if (tag.kind == Kind::kEnd) --depth;
    end = tag.end;
  }
  return window_.Bytes().substr(0, end);
}

void MarkupWindow::SkipElement(const Tag& start) {
  window_.Skip(start.end);
  for (int64_t depth = start.kind == Kind::kStart ? 1 : 0; depth > 0;) {
    const Tag tag = NextTag(0);
    if (tag.kind == Kind::kNone) Fail(window_.Line(), "the file ends within an element");
    if (tag.kind == Kind::kStart) ++depth;
    if (tag.kind == Kind::kEnd) --depth;
    window_.Skip(tag.end);
  }
}

void MarkupWindow::RequireEnd() {
  while (true) {
    const std::string_view bytes = window_.Bytes();
    window_.Skip(static_cast<std::size_t>(std::ranges::find_if_not(bytes, IsSpace) - bytes.begin()));
    if (!Has(1)) return;
    if (IsSpace(window_.Bytes().front())) continue;
    const bool isComment = Has(4) && window_.Bytes().starts_with("<!--");
    if (!isComment && !window_.Bytes().starts_with("<?")) {
      Fail(window_.Line(), "there is more text after the end of the document");
    }
    const std::string_view terminator = isComment ? "-->" : "?>";
    const std::size_t end = Find(terminator, isComment ? 4 : 2);
    if (end == kNotFound) Fail(window_.Line(), "what begins here does not end");
    window_.Skip(end + terminator.size());
  }
}

bool TakeAttribute(std::string_view& attributes, MarkupAttribute& attribute) {
  std::size_t at = 0;
  while (at < attributes.size() && IsSpace(attributes[at])) ++at;
  std::size_t end = at;
  while (end < attributes.size() && !IsSpace(attributes[end]) && attributes[end] != '=') ++end;
  attribute.name = attributes.substr(at, end - at);
  while (end < attributes.size() && attributes[end] != '"' && attributes[end] != '\'') ++end;
  if (end >= attributes.size()) return false;
  const std::size_t close = attributes.find(attributes[end], end + 1);
  if (close == kNotFound) return false;
  attribute.value = attributes.substr(end + 1, close - end - 1);
  attributes.remove_prefix(close + 1);
  return true;
}

std::string_view AttributesOf(std::string_view tag) {
  return tag.substr(static_cast<std::size_t>(std::find_if(tag.begin(), tag.end(), IsSpace) - tag.begin()));
}

bool AttributeOf(std::string_view tag, std::string_view name, std::string& value) {
  MarkupAttribute attribute;
  for (std::string_view rest = AttributesOf(tag); TakeAttribute(rest, attribute);) {
    if (attribute.name != name) continue;
    value = DecodedMarkup(attribute.value);
    return true;
  }
  return false;
}

std::string DecodedMarkup(std::string_view text) {
  std::string decoded;
  while (!text.empty()) {
    const std::size_t next = std::min(text.find('&'), text.size());
    decoded += text.substr(0, next);
    text.remove_prefix(next);
    if (text.empty()) break;
    const std::size_t end = text.substr(0, 12).find(';');
    const uint32_t character = end == kNotFound ? 0 : CharacterOf(text.substr(1, end - 1));
    if (character != 0) {
      AppendUtf8(character, decoded);
      text.remove_prefix(end + 1);
    } else {
      decoded += '&';
      text.remove_prefix(1);
    }
  }
  return decoded;
}

// An element ----------------------------------------------------------------------------------------------

// Each byte becomes one unit, so that the offsets of the elements are those of the bytes. The reader of markup ends a tag at
// the first ">", so it is shown another character for those that end none.
bool MarkupElement::Parse(std::string_view bytes, std::span<const uint32_t> quotedEnds, int64_t line) {
  bytes_ = bytes;
  line_ = line;
  if (quotedEnds.empty()) return xml_.SetDocBytes(bytes.data(), static_cast<int32_t>(bytes.size()));
  std::string shown(bytes);
  for (const uint32_t at : quotedEnds) shown[at] = '.';
  return xml_.SetDocBytes(shown.data(), static_cast<int32_t>(shown.size()));
}

std::string_view MarkupElement::StartTag(int32_t element) const {
  const XmlElement& record = xml_.GetElement(element);
  const auto begin = static_cast<std::size_t>(record.tagStart);
  return bytes_.substr(begin, static_cast<std::size_t>(record.tagEnd) - begin);
}

std::string_view MarkupElement::Name(int32_t element) const {
  std::string_view name = StartTag(element).substr(1);
  if (!name.starts_with(prefix_)) return {};
  name.remove_prefix(prefix_.size());
  std::size_t end = 0;
  while (end < name.size() && !IsSpace(name[end]) && name[end] != '/') ++end;
  return name.substr(0, end);
}

int32_t MarkupElement::Child(int32_t element, std::string_view name) const {
  int32_t child = element > 0 ? FirstChild(element) : 0;
  while (child > 0 && Name(child) != name) child = NextSibling(child);
  return child;
}

bool MarkupElement::Attribute(int32_t element, std::string_view name, std::string& value) const {
  return AttributeOf(StartTag(element), name, value);
}

std::string_view MarkupElement::RawText(int32_t element) const {
  const XmlElement& record = xml_.GetElement(element);
  if (element <= 0 || record.IsEmptyTag()) return {};
  const auto begin = static_cast<std::size_t>(record.tagEnd) + 1;
  return bytes_.substr(begin, static_cast<std::size_t>(record.contentEnd) - begin);
}

std::string MarkupElement::Text(int32_t element) const {
  return DecodedMarkup(WithoutSpace(RawText(element)));
}

std::string MarkupElement::TextOf(int32_t element, std::string_view child) const {
  return Text(Child(element, child));
}

int64_t MarkupElement::Line(int32_t element) const {
  if (line_ <= 0) return 0;
  const auto start = bytes_.begin() + xml_.GetElement(element).tagStart;
  return line_ + std::count(bytes_.begin(), start, '\n');
}

}  // namespace vrx::io
