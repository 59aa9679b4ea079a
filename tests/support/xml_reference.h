// A slow reader of the same markup, written straight after its rules: recursive, with copies of texts and
// searches that start again. What CXmlReader does is compared with it.

#ifndef TESTS_SUPPORT_XML_REFERENCE_H_
#define TESTS_SUPPORT_XML_REFERENCE_H_

#include <optional>
#include <string>
#include <vector>

#include <vrxmath/support/xml_reader.h>

namespace vrx {

class XmlReference {
 public:
  bool SetDoc(std::u16string text) {
    doc = std::move(text);
    error.clear();
    records.assign(1, XmlElement());
    parent = current = child = 0;
    flag = false;
    const int root = doc.empty() ? -1 : ParseElement(0);
    if (root <= 0) records.assign(1, XmlElement());
    if (root > 0) records[0].firstChild = root;
    return root > 0;
  }

  std::u16string TagName(int index) const { return index == 0 ? u"" : Scan(Tag(index))->text; }

  std::u16string Data(int index) const {
    const XmlElement& e = Rec(index);
    if (index == 0 || e.firstChild != 0 || e.tagEnd == e.contentEnd + 1) return u"";
    std::size_t at = Pos(e.tagEnd) + 1;
    while (at < doc.size() && IsOneOf(doc[at], u" \t\n\r")) ++at;
    if (doc.compare(at, 9, u"<![CDATA[") == 0 && at + 11 < Pos(e.contentEnd)) {
      const std::size_t end = doc.find(u"]]>", at + 9);
      if (end < Pos(e.contentEnd)) return doc.substr(at + 9, end - at - 9);
    }
    return Decode(doc.substr(Pos(e.tagEnd) + 1, Pos(e.contentEnd) - Pos(e.tagEnd) - 1));
  }

  std::u16string Attrib(int index, const std::u16string& name) const {
    int count = 0, candidate = -1;
    for (auto token = Scan(Tag(index)); token; token = Scan(token->next), ++count) {
      if (!token->quoted && IsOneOf(token->text[0], u">/?")) return u"";
      if (candidate >= 0 && count == candidate + 2 && token->quoted) return Decode(token->text);
      if (candidate < 0 && count > 0 && !token->quoted && token->text != u"=" && Matches(name, token->text)) {
        candidate = count;
      }
    }
    return u"";
  }

  bool FindElem(const std::u16string& name) {
    int i = current ? Rec(current).nextSibling : Rec(parent).firstChild;
    while (i && !name.empty() && !Matches(name, TagName(i))) i = Rec(i).nextSibling;
    if (i) current = i, child = 0, flag = true;
    return i != 0;
  }
  bool FindChildElem(const std::u16string& name) {
    if (!current) FindElem(u"");
    int i = child ? Rec(child).nextSibling : Rec(current).firstChild;
    while (i && !name.empty() && !Matches(name, TagName(i))) i = Rec(i).nextSibling;
    if (i) child = i, current = Rec(i).parent, parent = Rec(current).parent, flag = current != 0;
    return i != 0;
  }
  bool IntoElem() {
    if (!current || !flag) return false;
    parent = current, current = child, child = 0, flag = current != 0;
    return true;
  }
  bool OutOfElem() {
    if (!parent) return false;
    child = current, current = parent, parent = Rec(parent).parent, flag = true;
    return true;
  }

  std::u16string doc, error;
  std::vector<XmlElement> records;
  int parent = 0, current = 0, child = 0;
  bool flag = false;

 private:
  struct Token {
    std::u16string text;
    bool quoted;
    std::size_t begin, next;
  };

  static bool IsOneOf(char16_t c, const char16_t* set) {
    return std::u16string(set).find(c) != std::u16string::npos;
  }
  static std::size_t Pos(int32_t offset) { return static_cast<std::size_t>(offset); }
  const XmlElement& Rec(int index) const { return records[static_cast<std::size_t>(index)]; }
  XmlElement& Rec(int index) { return records[static_cast<std::size_t>(index)]; }
  std::size_t Tag(int index) const { return Pos(Rec(index).tagStart) + 1; }

  static bool Matches(const std::u16string& name, const std::u16string& token) {
    return name.substr(0, token.size()) == token &&
           (name.size() == token.size() || IsOneOf(name[token.size()], u" =/["));
  }

  static std::u16string Decode(const std::u16string& text) {
    const std::pair<std::u16string, char16_t> entities[] = {
        {u"&lt;", u'<'}, {u"&amp;", u'&'}, {u"&gt;", u'>'}, {u"&apos;", u'\''}, {u"&quot;", u'"'}};
    std::u16string out;
    for (std::size_t i = 0; i < text.size();) {
      char16_t unit = text[i];
      std::size_t length = 1;
      for (const auto& [entity, meaning] : entities) {
        if (text.compare(i, entity.size(), entity) == 0) unit = meaning, length = entity.size();
      }
      out += unit;
      i += length;
    }
    return out;
  }

  std::optional<Token> Scan(std::size_t at) const {
    while (at < doc.size() && IsOneOf(doc[at], u" \t\n\r")) ++at;
    if (at >= doc.size()) return std::nullopt;
    if (IsOneOf(doc[at], u"\"'")) {
      const std::size_t end = std::min(doc.find(doc[at], at + 1), doc.size());
      return Token{doc.substr(at + 1, end - at - 1), true, at + 1, std::min(end + 1, doc.size())};
    }
    std::size_t end = at + 1;
    if (!IsOneOf(doc[at], u"<>=\\/?!")) {
      while (end < doc.size() && !IsOneOf(doc[end], u" \t\n\r<>=\\/?!")) ++end;
    }
    return Token{doc.substr(at, end - at), false, at, end};
  }

  // The end of a node that is no element; npos when it has none.
  std::size_t NodeEnd(std::size_t at) const {
    constexpr std::size_t npos = std::u16string::npos;
    const auto after = [&](const char16_t* text, std::size_t from) {
      const std::size_t end = doc.find(text, from);
      return end == npos ? npos : end + std::u16string(text).size();
    };
    if (at + 2 >= doc.size()) return npos;
    if (doc.compare(at, 2, u"<?") == 0) return after(u"?>", at + 2);
    if (doc.compare(at, 3, u"<![") == 0) return after(u"]]>", at + 3);
    if (doc.compare(at, 3, u"<!-") == 0) return after(u"-->", at + 3);
    if (doc.compare(at, 2, u"<!") != 0) return npos;
    int depth = 0;
    for (auto token = Scan(at + 2); token; token = Scan(token->next)) {
      if (token->quoted) continue;
      if (token->text == u">" && depth == 0) return token->next;
      for (const char16_t c : token->text) depth += c == u'[' ? 1 : c == u']' ? -1 : 0;
    }
    return npos;
  }

  int Fail(const std::u16string& text) {
    error = text;
    records.pop_back();
    return -1;
  }

  int ParseElement(int above) {
    const int self = static_cast<int>(records.size());
    records.push_back(XmlElement());
    Rec(self).parent = above;
    std::size_t from = Pos(Rec(above).contentEnd);
    std::optional<Token> name;
    while (true) {
      const std::size_t start = doc.find(u'<', from);
      if (start == std::u16string::npos) return Fail(u"Element tag not found");
      Rec(self).tagStart = Rec(above).contentEnd = static_cast<int32_t>(start);
      name = Scan(start + 1);
      if (!name) return Fail(u"Abrupt end within tag");
      if (name->quoted) return Fail(u"Tag starts with quote");
      if (name->text != u"?" && name->text != u"!") break;
      from = NodeEnd(start);
      if (from == std::u16string::npos) return Fail(u"Invalid node");
    }
    if (name->text == u"/") {
      records.pop_back();
      return 0;
    }
    const std::size_t tagEnd = doc.find(u'>', name->next);
    if (tagEnd == std::u16string::npos) return Fail(u"End of tag not found");
    Rec(self).tagEnd = static_cast<int32_t>(tagEnd);
    if (doc[tagEnd - 1] == u'/') {
      Rec(self).contentEnd = Rec(self).tagEnd - 1;
      Rec(self).closeEnd = Rec(self).tagEnd;
      return self;
    }
    Rec(self).contentEnd = Rec(self).tagEnd + 1;
    for (int last = 0, next; (next = ParseElement(self)) != 0; last = next) {
      if (next < 0) return -1;
      (last ? Rec(last).nextSibling : Rec(self).firstChild) = next;
      Rec(self).contentEnd = Rec(next).closeEnd + 1;
    }
    return ParseEndTag(self, name->text);
  }

  int ParseEndTag(int self, const std::u16string& name) {
    const std::size_t at = doc.find(u'<', Pos(Rec(self).contentEnd));
    if (at == std::u16string::npos)
      return Fail(std::u16string(u"End tag of ").append(name).append(u" element not found"));
    int count = 0;
    for (auto token = Scan(at + 1); token; token = Scan(token->next), ++count) {
      if (count == 0 && token->text != u"/")
        return Fail(std::u16string(u"Expecting end tag of element ").append(name));
      if (count == 1 && !Matches(name, token->text))
        return Fail(std::u16string(u"End tag does not correspond to ").append(name));
      if (count >= 2 && !token->quoted && token->text == u">") {
        Rec(self).closeEnd = static_cast<int32_t>(token->begin);
        return self;
      }
    }
    return Fail(std::u16string(u"End tag not completed for element ").append(name));
  }
};

}  // namespace vrx

#endif  // TESTS_SUPPORT_XML_REFERENCE_H_
