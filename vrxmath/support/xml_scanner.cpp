#include <vrxmath/support/xml_scanner.h>

namespace vrx {

int32_t XmlScanner::FindText(WideView text, int32_t from) const {
  int32_t at = from < length_ ? Find(text.front(), from) : kXmlNotFound;
  while (at != kXmlNotFound && !Has(at, text)) at = Find(text.front(), at + 1);
  return at;
}

void XmlScanner::ReadQuoted(XmlToken& token) const {
  const WideChar quote = text_[token.begin++];
  const int32_t close = Find(quote, token.begin);
  token.end = close == kXmlNotFound ? length_ : close;
  token.next = close == kXmlNotFound ? length_ : close + 1;
}

int32_t XmlScanner::SkipNode(int32_t start) const {
  struct Kind {
    WideView begin, end;
  };
  static constexpr Kind kKinds[] = {{u"<?", u"?>"}, {u"<![", u"]]>"}, {u"<!-", u"-->"}};
  if (length_ - start < 3) return kXmlNotFound;
  for (const Kind& kind : kKinds) {
    if (!Has(start, kind.begin)) continue;
    const int32_t end = FindText(kind.end, start + static_cast<int32_t>(kind.begin.size()));
    return end == kXmlNotFound ? end : end + static_cast<int32_t>(kind.end.size());
  }
  return Has(start, u"<!") ? SkipDocumentType(start + 2) : kXmlNotFound;
}

// Ends at the first ">" outside quotes and outside the brackets of the internal subset.
int32_t XmlScanner::SkipDocumentType(int32_t from) const {
  int64_t depth = 0;
  XmlToken token;
  for (; ReadToken(from, token); from = token.next) {
    if (token.quoted) continue;
    if (depth == 0 && IsDelimiter(token, u'>')) return token.next;
    for (const WideChar unit : TextOf(token)) depth += (unit == u'[') - (unit == u']');
  }
  return kXmlNotFound;
}

bool XmlNameMatches(WideView name, WideView token) {
  return name.starts_with(token) && (name.size() == token.size() || EndsXmlName(name[token.size()]));
}

XmlAttrib FindXmlAttrib(const XmlScanner& scanner, int32_t tagStart, WideView name) {
  XmlAttrib attrib;
  XmlToken& token = attrib.last;
  scanner.ReadToken(tagStart + 1, token);
  attrib.tagName = token;
  for (int sinceName = 0; !scanner.EndsTag(token) && scanner.ReadToken(token.next, token);) {
    if (attrib.isNamed) {
      if (++sinceName < 2 || scanner.EndsTag(token)) continue;
      attrib.hasValue = token.quoted;
      break;
    }
    attrib.isNamed = !token.quoted && !scanner.EndsTag(token) && !scanner.IsDelimiter(token, u'=') &&
                     XmlNameMatches(name, scanner.TextOf(token));
  }
  return attrib;
}

}  // namespace vrx
