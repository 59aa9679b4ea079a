// Reading markup unit by unit: searches, tokens and the nodes that are not elements.

#ifndef VRXMATH_SUPPORT_XML_SCANNER_H_
#define VRXMATH_SUPPORT_XML_SCANNER_H_

#include <array>
#include <cstdint>
#include <cstring>

#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// The longest document: offsets, and offsets a little beyond the end, fit in 31 bits.
inline constexpr std::size_t kMaxXmlLength = 0x7FFFFF00;

/// The result of a search that found nothing.
inline constexpr int32_t kXmlNotFound = -1;

/// A word of markup: a quoted text without its quotes, one delimiter, or a run up to the next delimiter.
struct XmlToken {
  int32_t begin = 0;
  int32_t end = 0;
  int32_t next = 0;  ///< where the token after it is looked for
  bool quoted = false;
};

namespace support_internal {

enum UnitClass : uint8_t { kWord = 0, kBlank = 1, kDelimiter = 2, kQuote = 4 };

inline constexpr std::array<uint8_t, 128> kUnitClasses = [] {
  std::array<uint8_t, 128> classes{};
  for (const char c : {' ', '\t', '\n', '\r'}) classes[static_cast<unsigned char>(c)] = kBlank;
  for (const char c : {'<', '>', '=', '\\', '/', '?', '!'})
    classes[static_cast<unsigned char>(c)] = kDelimiter;
  for (const char c : {'"', '\''}) classes[static_cast<unsigned char>(c)] = kQuote;
  return classes;
}();

}  // namespace support_internal

/// Reads a text of at most kMaxXmlLength units, which must outlive it. Positions are offsets from its start,
/// 0 to its length.
class XmlScanner {
 public:
  explicit XmlScanner(WideView text) : text_(text.data()), length_(static_cast<int32_t>(text.size())) {}

  int32_t GetLength() const { return length_; }
  WideChar operator[](int32_t position) const { return text_[position]; }
  WideView Between(int32_t begin, int32_t end) const {
    return {text_ + begin, static_cast<std::size_t>(end - begin)};
  }
  WideView TextOf(const XmlToken& token) const { return Between(token.begin, token.end); }

  /// True when `text` stands at `position`.
  bool Has(int32_t position, WideView text) const {
    return static_cast<std::size_t>(length_ - position) >= text.size() &&
           Between(position, position + static_cast<int32_t>(text.size())) == text;
  }

  /// The first `unit` at or after `from`. Eight units are compared at a time: x ^ pattern has a zero 16-bit
  /// lane where they are equal, and (x - 1) & ~x has the top bit of some lane set just when one is zero.
  int32_t Find(WideChar unit, int32_t from) const {
    constexpr uint64_t kOnes = 0x0001000100010001;
    constexpr uint64_t kTops = 0x8000800080008000;
    const uint64_t pattern = unit * kOnes;
    const WideChar* at = text_ + from;
    const WideChar* const end = text_ + length_;
    for (; end - at >= 8; at += 8) {
      uint64_t lanes[2];
      std::memcpy(lanes, at, sizeof lanes);
      lanes[0] ^= pattern;
      lanes[1] ^= pattern;
      const uint64_t zeros = ((lanes[0] - kOnes) & ~lanes[0]) | ((lanes[1] - kOnes) & ~lanes[1]);
      if ((zeros & kTops) != 0) break;
    }
    for (; at < end; ++at) {
      if (*at == unit) return static_cast<int32_t>(at - text_);
    }
    return kXmlNotFound;
  }

  /// The first place at or after `from` where `text` begins. For texts of a few units.
  int32_t FindText(WideView text, int32_t from) const;

  int32_t SkipBlanks(int32_t from) const {
    while (from < length_ && IsClass(from, support_internal::kBlank)) ++from;
    return from;
  }

  /// Reads the token at or after `from`; false when only white space is left. A quoted text that is not
  /// closed runs to the end of the document. A quote inside a word is part of it.
  bool ReadToken(int32_t from, XmlToken& token) const {
    using namespace support_internal;
    token.begin = SkipBlanks(from);
    if (token.begin >= length_) return false;
    token.quoted = IsClass(token.begin, kQuote);
    if (token.quoted) {
      ReadQuoted(token);
    } else {
      token.end = token.begin + 1;
      if (!IsClass(token.begin, kDelimiter)) {
        while (token.end < length_ && !IsClass(token.end, kBlank | kDelimiter)) ++token.end;
      }
      token.next = token.end;
    }
    return true;
  }

  /// True for the token of one delimiter, unquoted.
  bool IsDelimiter(const XmlToken& token, WideChar delimiter) const {
    return !token.quoted && text_[token.begin] == delimiter;
  }
  /// True for the unquoted tokens that end a search for attributes: ">", "/" and "?".
  bool EndsTag(const XmlToken& token) const {
    const WideChar unit = text_[token.begin];
    return !token.quoted && (unit == u'>' || unit == u'/' || unit == u'?');
  }

  /// The position after the processing instruction, CDATA section, comment or document type that begins at
  /// the "<" at `start`; kXmlNotFound when it is not ended or is nothing of that kind.
  int32_t SkipNode(int32_t start) const;

 private:
  bool IsClass(int32_t position, int classes) const {
    const WideChar unit = text_[position];
    return unit < 128 && (support_internal::kUnitClasses[unit] & classes) != 0;
  }
  void ReadQuoted(XmlToken& token) const;
  int32_t SkipDocumentType(int32_t from) const;

  const WideChar* text_;
  int32_t length_;
};

/// True when `name` names the tag or attribute `token`: it equals the token up to its own end, or goes on
/// after it with one of " =/[".
bool XmlNameMatches(WideView name, WideView token);

/// True for the units that end a name within a longer text: " =/[".
inline bool EndsXmlName(WideChar unit) {
  return unit == u' ' || unit == u'=' || unit == u'/' || unit == u'[';
}

/// The findings of a search for an attribute.
struct XmlAttrib {
  XmlToken tagName;
  bool isNamed = false;   ///< there is an attribute of that name
  bool hasValue = false;  ///< and it has a quoted value, which is `last`
  XmlToken last;          ///< the last token read; without the name, the one that ends the tag, if any does
};

/// Looks for an attribute in the start tag at `tagStart`. The value is the quoted token two after the first
/// token that `name` matches: name, "=", value. An unquoted ">", "/" or "?" ends the search.
XmlAttrib FindXmlAttrib(const XmlScanner& scanner, int32_t tagStart, WideView name);

}  // namespace vrx

#endif  // VRXMATH_SUPPORT_XML_SCANNER_H_
