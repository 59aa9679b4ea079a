// Laws that hold of any document: the reader and its indexes agree with the reference, and after changes the
// records are those of the changed text. Used by the tests and by the fuzz target.

#ifndef TESTS_SUPPORT_XML_CHECKS_H_
#define TESTS_SUPPORT_XML_CHECKS_H_

#include <map>
#include <string>

#include <vrxmath/support/xml_reader.h>
#include <vrxmath/support/xml_scanner.h>
#include <vrxmath/support/xml_search_index.h>

#include "tests/support/xml_reference.h"

namespace vrx {

inline const std::u16string kProbeNames[] = {u"a", u"b", u"a[b", u"=", u">", u"x y"};

/// Compares records, names, data and attributes, these also through the search indexes. Returns what differs
/// first; empty for nothing.
inline std::string CompareElements(CXmlReader& xml, const XmlReference& reference) {
  if (xml.GetError() != WideView(reference.error)) return "error text " + xml.GetError().ToUtf8();
  if (xml.GetElementCount() != static_cast<int32_t>(reference.records.size())) return "element count";
  const XmlScanner scanner(xml.GetDoc());
  const XmlAttributeIndex attributes(xml.GetDoc(), reference.records);
  const XmlNameIndex tags = MakeTagNameIndex(xml.GetDoc(), reference.records);
  xml.FindElem();
  for (int i = 0; i < xml.GetElementCount(); ++i) {
    const std::string where = " of element " + std::to_string(i);
    const XmlElement& element = xml.GetElement(i);
    if (element != reference.records[static_cast<std::size_t>(i)]) return "record" + where;
    if (xml.GetTagName(i) != WideView(reference.TagName(i))) return "tag name" + where;
    if (xml.GetData(i) != WideView(reference.Data(i))) return "data" + where;
    for (const std::u16string& name : kProbeNames) {
      XmlReference cursor = reference;
      cursor.parent = i;
      const int32_t child = cursor.FindElem(name) ? cursor.current : kXmlNotFound;
      if (tags.First(xml.GetDoc(), i, name, 0) != child) return "tag index" + where;
      if (i == 0) continue;
      if (xml.GetAttrib(i, name) != WideView(reference.Attrib(i, name))) return "attribute" + where;
      const XmlAttrib attrib = FindXmlAttrib(scanner, element.tagStart, name);
      const WideView value = attrib.hasValue ? scanner.TextOf(attrib.last) : WideView();
      if (attributes.Find(xml.GetDoc(), i, name) != value) return "attribute index" + where;
    }
  }
  xml.ResetPosition();
  return "";
}

/// Makes a move, chosen by `move`, with the cursor of a reader or of the reference.
template <class Reader>
bool Move(Reader& reader, unsigned move) {
  const std::u16string name = move & 128 ? kProbeNames[move / 4 % std::size(kProbeNames)] : u"";
  switch (move % 4) {
    case 0:
      return reader.FindElem(name);
    case 1:
      return reader.FindChildElem(name);
    case 2:
      return reader.IntoElem();
    default:
      return reader.OutOfElem();
  }
}

/// Makes the same move with both cursors and compares where they are.
inline std::string CompareMove(CXmlReader& xml, XmlReference& reference, unsigned move) {
  const bool ours = Move(xml, move), theirs = Move(reference, move);
  const bool same = ours == theirs && xml.GetParentIndex() == reference.parent &&
                    xml.GetCurrentIndex() == reference.current && xml.GetChildIndex() == reference.child &&
                    xml.IsPositionValid() == reference.flag;
  return same ? "" : "cursor after move " + std::to_string(move);
}

/// Compares the records with those of a reader that parses the text anew.
inline std::string CompareWithParse(const CXmlReader& xml) {
  CXmlReader parsed;
  if (!parsed.SetDoc(xml.GetDoc())) return "changed text does not parse: " + parsed.GetError().ToUtf8();
  std::map<int32_t, int32_t> order = {{0, 0}};  // ours to parsed, followed in document order
  int32_t ours = xml.GetElement(0).firstChild;
  for (int32_t i = 1; ours != 0; ++i) {
    order[ours] = i;
    int32_t next = xml.GetElement(ours).firstChild;
    while (next == 0 && ours != 0) {
      next = xml.GetElement(ours).nextSibling;
      ours = xml.GetElement(ours).parent;
    }
    ours = next;
  }
  if (static_cast<int32_t>(order.size()) != parsed.GetElementCount()) return "element count after a change";
  for (const auto& [mine, theirs] : order) {
    XmlElement element = xml.GetElement(mine);
    for (int32_t XmlElement::*const link :
         {&XmlElement::parent, &XmlElement::firstChild, &XmlElement::nextSibling}) {
      element.*link = order.at(element.*link);
    }
    if (element != parsed.GetElement(theirs)) return "record " + std::to_string(mine) + " after a change";
  }
  return "";
}

/// Makes one change at the cursor, chosen by `change`, and checks what it promises.
inline std::string CheckChange(CXmlReader& xml, unsigned change) {
  const WideView texts[] = {u"", u"<&>'\" text", u" <![CDATA[x]]>", u"y"};
  const WideView text = texts[change / 8 % 4], name = change & 64 ? u"b" : u"a";
  const int32_t at = xml.GetCurrentIndex();
  bool done = false;
  switch (change % 8) {
    case 0:
    case 1:
      done = xml.SetData(at, text);
      if (done && xml.GetData(at) != text) return "data set is not read back";
      break;
    case 2:
    case 3:
      done = xml.SetAttrib(at, name, text);
      if (done && xml.IsPositionValid() && xml.GetAttrib(at, name) != text)
        return "attribute is not read back";
      break;
    case 4:
      done = xml.AddElem(name, text);
      if (done && xml.GetData(xml.GetCurrentIndex()) != text) return "added element has other data";
      break;
    case 5:
    case 6:
      done = xml.AddChildElem(name, text);
      if (done && xml.GetData(xml.GetChildIndex()) != text) return "added child has other data";
      break;
    default:
      done = xml.RemoveElem();
  }
  return done ? CompareWithParse(xml) : xml.GetError().IsEmpty() ? "a change fails without a text" : "";
}

}  // namespace vrx

#endif  // TESTS_SUPPORT_XML_CHECKS_H_
