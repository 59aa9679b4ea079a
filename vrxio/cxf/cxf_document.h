// A CxF3 file element by element: the stream is cut into elements that fit in memory, and each is parsed by itself, so
// that a file of any length is read in constant memory.

#ifndef VRXIO_CXF_CXF_DOCUMENT_H_
#define VRXIO_CXF_CXF_DOCUMENT_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxio/text/byte_window.h>
#include <vrxmath/support/xml_reader.h>

namespace vrx::io {

/// Markup in a window that moves on. Comments, processing instructions and CDATA sections are passed over; a document type
/// is refused, and so entities of a file's own never come into being.
class MarkupWindow {
 public:
  static constexpr int kDeepest = 64;  ///< elements within each other

  explicit MarkupWindow(InputStream input) : window_(std::move(input), "CxF3") {}

  enum class Kind { kStart, kEnd, kEmpty, kNone };
  struct Tag {
    Kind kind = Kind::kNone;
    std::size_t begin = 0;  ///< the "<", and what follows the ">", in bytes from the position
    std::size_t end = 0;
  };

  /// The next tag at or after `from`; kNone when the file has none.
  Tag NextTag(std::size_t from);
  /// The name of a tag, with its prefix.
  std::string_view NameOf(const Tag& tag) const;
  /// The bytes of the element that begins with `start`, which the position then stands behind. Valid until the next call.
  std::string_view TakeElement(const Tag& start);
  /// In those bytes, the places of the ">" that stand in attribute values and end no tag.
  std::span<const uint32_t> QuotedEnds() const { return quotedEnds_; }
  /// Passes over such an element, however long it is.
  void SkipElement(const Tag& start);
  /// Makes sure that nothing but comments and processing instructions follows the position.
  void RequireEnd();
  void Skip(std::size_t count) { window_.Skip(count); }

  std::string_view Bytes() const { return window_.Bytes(); }
  ByteWindow& Window() { return window_; }
  const ByteWindow& Window() const { return window_; }
  std::string PlaceOf(int64_t line) const { return window_.PlaceOf(line); }
  [[noreturn]] void Fail(int64_t line, const std::string& reason) const;

 private:
  bool Has(std::size_t count);
  std::size_t Find(std::string_view text, std::size_t from);
  std::size_t EndOfTag(std::size_t from);

  ByteWindow window_;
  std::vector<uint32_t> quotedEnds_;  // since a search from the position
};

/// An attribute of a start tag, its value as it stands.
struct MarkupAttribute {
  std::string_view name, value;
};

/// The attributes of the start tag `tag`: what follows its name.
std::string_view AttributesOf(std::string_view tag);
/// Takes the next one off them; false when there is none that is complete.
bool TakeAttribute(std::string_view& attributes, MarkupAttribute& attribute);
/// An attribute of the start tag `tag`, decoded; false when there is none.
bool AttributeOf(std::string_view tag, std::string_view name, std::string& value);
/// A text with the predefined entities and the numeric references resolved; others stay.
std::string DecodedMarkup(std::string_view text);

/// One element, parsed.
class MarkupElement {
 public:
  /// `prefix` is that of the elements that count, with its colon.
  void SetPrefix(std::string prefix) { prefix_ = std::move(prefix); }
  /// Parses `bytes`, which begin in `line` and must outlive the element; `quotedEnds` is what MarkupWindow found there. False
  /// when they are not well formed; Error says why.
  bool Parse(std::string_view bytes, std::span<const uint32_t> quotedEnds, int64_t line);
  std::string Error() const { return xml_.GetError().ToUtf8(); }
  std::size_t Size() const { return bytes_.size(); }

  // Elements by their index; the outermost is 1, and 0 means none.

  int32_t FirstChild(int32_t element) const { return xml_.GetElement(element).firstChild; }
  int32_t NextSibling(int32_t element) const { return xml_.GetElement(element).nextSibling; }
  /// The first child of that name; 0 when there is none.
  int32_t Child(int32_t element, std::string_view name) const;
  /// The name without the prefix; empty for an element of another one.
  std::string_view Name(int32_t element) const;
  /// All attributes, for TakeAttribute.
  std::string_view Attributes(int32_t element) const { return AttributesOf(StartTag(element)); }
  /// An attribute's value, decoded; false when there is none.
  bool Attribute(int32_t element, std::string_view name, std::string& value) const;
  /// The text, decoded and without the blanks about it.
  std::string Text(int32_t element) const;
  /// The text of the first child of that name; empty when there is none.
  std::string TextOf(int32_t element, std::string_view child) const;
  /// The text as it stands, empty for an element that is none. It lives as long as the bytes.
  std::string_view RawText(int32_t element) const;
  /// The line where it begins.
  int64_t Line(int32_t element) const;

 private:
  std::string_view StartTag(int32_t element) const;

  CXmlReader xml_;
  std::string prefix_;
  std::string_view bytes_;
  int64_t line_ = 0;
};

}  // namespace vrx::io

#endif  // VRXIO_CXF_CXF_DOCUMENT_H_
