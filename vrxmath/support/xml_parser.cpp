#include <vrxmath/support/xml_parser.h>

#include <vrxmath/support/xml_scanner.h>

namespace vrx {
namespace {

// Reads tags one after the other. The chain of open elements is the chain of `parent` indices, so nesting
// costs no stack. While an element is open, its `contentEnd` is where its next child is looked for, and its
// `closeEnd`, not known yet, holds the index of its last child.
class Parser {
 public:
  Parser(WideView doc, std::vector<XmlElement>& elements, CString& error)
      : scanner_(doc), elements_(elements), error_(error) {}

  bool ParseRoot() {
    int32_t parent = 0;
    do {
      switch (ReadTag(parent)) {
        case Tag::kStart:
          parent = LastElement();
          break;
        case Tag::kEmpty:
          CloseChild(parent, LastElement());
          break;
        case Tag::kEnd:
          if (parent == 0 || !ReadEndTag(parent)) return false;
          CloseChild(elements_[Slot(parent)].parent, parent);
          parent = elements_[Slot(parent)].parent;
          break;
        case Tag::kNone:
          return false;
      }
    } while (parent != 0);
    elements_[0].closeEnd = 0;
    return true;
  }

 private:
  enum class Tag { kStart, kEmpty, kEnd, kNone };

  static std::size_t Slot(int32_t index) { return static_cast<std::size_t>(index); }
  int32_t LastElement() const { return static_cast<int32_t>(elements_.size()) - 1; }

  // Reads the next start tag among the children of `parent` into a new record, or finds the end tag of
  // `parent`, on whose "<" the parent's `contentEnd` then stands.
  Tag ReadTag(int32_t parent) {
    int32_t from = elements_[Slot(parent)].contentEnd;
    while (true) {
      const int32_t start = scanner_.Find(u'<', from);
      if (start == kXmlNotFound) return FailTag(u"Element tag not found");
      elements_[Slot(parent)].contentEnd = start;
      XmlToken token;
      if (!scanner_.ReadToken(start + 1, token)) return FailTag(u"Abrupt end within tag");
      if (token.quoted) return FailTag(u"Tag starts with quote");
      const WideChar first = scanner_[token.begin];
      if (first == u'/') return Tag::kEnd;
      if (first != u'?' && first != u'!') return ReadStartTag(parent, start, token.next);
      from = scanner_.SkipNode(start);
      if (from == kXmlNotFound) return FailTag(u"Invalid node");
    }
  }

  Tag ReadStartTag(int32_t parent, int32_t start, int32_t nameEnd) {
    XmlElement element;
    element.tagStart = start;
    element.parent = parent;
    element.tagEnd = scanner_.Find(u'>', nameEnd);
    if (element.tagEnd == kXmlNotFound) return FailTag(u"End of tag not found");
    const bool empty = scanner_[element.tagEnd - 1] == u'/';
    element.contentEnd = empty ? element.tagEnd - 1 : element.tagEnd + 1;
    element.closeEnd = empty ? element.tagEnd : 0;
    Append(element);
    return empty ? Tag::kEmpty : Tag::kStart;
  }

  // Adds the record and links it behind its parent's last child.
  void Append(const XmlElement& element) {
    if (elements_.size() == elements_.capacity()) {
      elements_.reserve(elements_.capacity() + elements_.capacity() / 2);
    }
    elements_.push_back(element);
    XmlElement& parent = elements_[Slot(element.parent)];
    const int32_t previous = parent.closeEnd;
    (previous == 0 ? parent.firstChild : elements_[Slot(previous)].nextSibling) = LastElement();
    parent.closeEnd = LastElement();
  }

  void CloseChild(int32_t parent, int32_t child) {
    if (parent != 0) elements_[Slot(parent)].contentEnd = elements_[Slot(child)].closeEnd + 1;
  }

  // Reads the end tag at the element's `contentEnd`: "</", the name, anything but an unquoted ">", ">".
  bool ReadEndTag(int32_t index) {
    XmlElement& element = elements_[Slot(index)];
    XmlToken token;
    scanner_.ReadToken(element.tagStart + 1, token);
    const WideView name = scanner_.TextOf(token);
    scanner_.ReadToken(element.contentEnd + 1, token);  // the "/" that told it from a start tag
    if (scanner_.ReadToken(token.next, token)) {
      if (!XmlNameMatches(name, scanner_.TextOf(token))) {
        return Fail(u"End tag does not correspond to %s", name);
      }
      while (scanner_.ReadToken(token.next, token)) {
        if (!scanner_.IsDelimiter(token, u'>')) continue;
        element.closeEnd = token.begin;
        return true;
      }
    }
    return Fail(u"End tag not completed for element %s", name);
  }

  bool Fail(WideView pattern, WideView name) {
    error_ = FillPattern(pattern, {name});
    return false;
  }
  Tag FailTag(WideView text) {
    error_ = text;
    return Tag::kNone;
  }

  const XmlScanner scanner_;
  std::vector<XmlElement>& elements_;
  CString& error_;
};

}  // namespace

bool ParseXmlElements(WideView doc, std::vector<XmlElement>& elements, CString& error) {
  constexpr std::size_t kUnitsPerElement = 64, kSpareElements = 8;
  elements.assign(1, XmlElement());
  if (doc.empty()) return false;
  elements.reserve(doc.size() / kUnitsPerElement + kSpareElements);
  bool parsed = false;
  try {
    parsed = Parser(doc, elements, error).ParseRoot();
  } catch (...) {
    elements.assign(1, XmlElement());
    throw;
  }
  if (!parsed) elements.assign(1, XmlElement());
  return parsed;
}

bool HasOnlyProlog(WideView doc) {
  const XmlScanner scanner(doc);
  int32_t at = doc.empty() ? kXmlNotFound : scanner.Find(u'<', 0);
  while (at != kXmlNotFound) {
    const int32_t end = scanner.SkipNode(at);
    if (end == kXmlNotFound) return false;
    at = scanner.Find(u'<', end);
  }
  return true;
}

}  // namespace vrx
