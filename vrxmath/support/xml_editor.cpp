// The changes of CXmlReader. Each edits the text, moves the offsets behind the edit, and links or unlinks a
// record, so that the records are what parsing the new text would give (with other indices, where elements
// were added).

#include <vrxmath/support/xml_reader.h>

#include <initializer_list>
#include <utility>

#include <vrxmath/platform/with_memory.h>
#include <vrxmath/support/xml_parser.h>
#include <vrxmath/support/xml_scanner.h>

namespace vrx {
namespace {

using platform_internal::WithMemory;

bool IsNewName(WideView name) {
  return !name.empty() && name.find_first_of(u" \t\n\r<>=\\/?!\"'&[]") == WideView::npos;
}

std::u16string Join(std::initializer_list<WideView> parts) {
  std::u16string text;
  for (const WideView part : parts) text += part;
  return text;
}

int32_t Units(WideView text) {
  return static_cast<int32_t>(text.size());
}

// The longest markup around a name and a text that one change writes: " name=''", "<name></name>".
constexpr std::size_t kMarkupUnits = 16;

std::u16string ElementMarkup(WideView name, WideView data) {
  if (data.empty()) return Join({u"<", name, u"/>"});
  return Join({u"<", name, u">", CXmlReader::EncodeText(data, false), u"</", name, u">"});
}

// The record of the element that ElementMarkup made, standing at `start`.
XmlElement ElementAt(int32_t start, WideView name, WideView markup) {
  const bool empty = markup[1 + name.size()] == u'/';
  XmlElement element;
  element.tagStart = start;
  element.closeEnd = start + Units(markup) - 1;
  element.tagEnd = empty ? element.closeEnd : start + 1 + Units(name);
  element.contentEnd = element.closeEnd - (empty ? 1 : 2 + Units(name));
  return element;
}

}  // namespace

XmlElement& CXmlReader::Editable(int32_t index) {
  return const_cast<XmlElement&>(At(index));
}

bool CXmlReader::HasRoomFor(std::size_t units) {
  const std::size_t room = kMaxXmlLength - doc_.size();
  return (room >= kMarkupUnits && units <= room - kMarkupUnits) || Fail(u"Document too long");
}

// Puts `text` in place of the units from `from` to `to`. Offsets at or after `to` move; records with offsets
// in between are the caller's.
void CXmlReader::Replace(int32_t from, int32_t to, WideView text) {
  doc_.replace(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from), text);
  const int32_t shift = Units(text) - (to - from);
  for (XmlElement& element : elements_) {
    for (int32_t XmlElement::*const offset :
         {&XmlElement::tagStart, &XmlElement::tagEnd, &XmlElement::contentEnd, &XmlElement::closeEnd}) {
      if (element.*offset >= to) element.*offset += shift;
    }
  }
  ForgetIndexes();
}

// Makes <name/> into <name></name>. What stands before the ">" afterwards must not be another "/".
void CXmlReader::GiveEndTag(int32_t index) {
  XmlElement& element = Editable(index);
  const CString name = GetTagName(index);
  const int32_t slash = element.contentEnd;
  const bool slashBefore = doc_[static_cast<std::size_t>(slash - 1)] == u'/';
  Replace(slash, element.tagEnd + 1, Join({slashBefore ? u" " : u"", u"></", name, u">"}));
  element.tagEnd = slash + (slashBefore ? 1 : 0);
  element.contentEnd = element.tagEnd + 1;
  element.closeEnd = element.contentEnd + 2 + name.GetLength();
}

bool CXmlReader::SetData(int32_t index, XmlText text) {
  const XmlElement& element = At(index);
  if (element.tagEnd == 0) return Fail(u"Element not found");
  if (element.firstChild != 0) return Fail(u"Element has child elements");
  const CString data = EncodeText(text, false);
  if (!HasRoomFor(data.View().size() + GetTagName(index).View().size())) return false;
  error_.Empty();
  if (element.IsEmptyTag() && data.IsEmpty()) return true;
  return WithMemory([&] {
    if (element.IsEmptyTag()) GiveEndTag(index);
    Replace(element.tagEnd + 1, element.contentEnd, data);
    return true;
  });
}

bool CXmlReader::SetAttrib(int32_t index, XmlText name, XmlText value) {
  const XmlElement& element = At(index);
  if (element.tagEnd == 0) return Fail(u"Element not found");
  if (!IsNewName(name.View())) return Fail(u"Invalid name");
  const XmlScanner scanner(doc_);
  const XmlAttrib old = FindXmlAttrib(scanner, element.tagStart, name.View());
  if (scanner.EndsTag(old.tagName)) return Fail(u"Element takes no attributes");
  const CString encoded = EncodeText(value, true);
  if (!HasRoomFor(encoded.View().size() + name.View().size())) return false;
  error_.Empty();
  return WithMemory([&] {
    if (old.hasValue && old.last.end < element.tagEnd) {
      Replace(old.last.begin, old.last.end, encoded);
      return true;
    }
    const int32_t tagClose = element.IsEmptyTag() ? element.contentEnd : element.tagEnd;
    const bool isPlainTag = !old.isNamed && old.last.begin == tagClose;
    const int32_t at = isPlainTag ? tagClose : old.tagName.end;
    Replace(at, at, Join({u" ", name.View(), u"=\"", encoded, u"\""}));
    return true;
  });
}

bool CXmlReader::AddElem(XmlText name, XmlText data) {
  if (!IsNewName(name.View())) return Fail(u"Invalid name");
  const std::u16string markup = WithMemory([&] { return ElementMarkup(name.View(), data.View()); });
  if (!HasRoomFor(markup.size())) return false;
  error_.Empty();
  if (parent_ == 0) return AddRoot(markup) && FindElem();
  current_ = AddAfter(parent_, current_, name.View(), markup);
  child_ = 0;
  valid_ = true;
  return true;
}

bool CXmlReader::AddChildElem(XmlText name, XmlText data) {
  if (current_ == 0 || !valid_) return Fail(u"No current element");
  if (!IsNewName(name.View())) return Fail(u"Invalid name");
  const std::u16string markup = WithMemory([&] { return ElementMarkup(name.View(), data.View()); });
  if (!HasRoomFor(markup.size() + GetTagName(current_).View().size())) return false;
  error_.Empty();
  child_ = AddAfter(current_, child_, name.View(), markup);
  return true;
}

bool CXmlReader::AddRoot(const std::u16string& markup) {
  if (At(0).firstChild != 0) return Fail(u"Document has a root element");
  if (!HasOnlyProlog(doc_)) return Fail(u"Document is not well formed");
  return WithMemory([&] {
    doc_ += markup;
    return Parse();
  });
}

// Adds the element `markup` under `parent`, behind the child `previous` or, when that is 0, behind the last.
int32_t CXmlReader::AddAfter(int32_t parent, int32_t previous, WideView name, WideView markup) {
  return WithMemory([&] {
    if (elements_.size() == elements_.capacity()) elements_.reserve(2 * elements_.size());
    if (At(parent).IsEmptyTag()) GiveEndTag(parent);
    if (previous == 0) previous = ChildBefore(parent, 0);
    const int32_t start = previous != 0 ? At(previous).closeEnd + 1 : At(parent).contentEnd;
    Replace(start, start, markup);
    XmlElement added = ElementAt(start, name, markup);
    added.parent = parent;
    int32_t& link = previous != 0 ? Editable(previous).nextSibling : Editable(parent).firstChild;
    added.nextSibling = link;
    link = GetElementCount();
    elements_.push_back(added);
    return GetElementCount() - 1;
  });
}

// The child of `parent` whose next sibling is `next` (0: the last child); 0 for none.
int32_t CXmlReader::ChildBefore(int32_t parent, int32_t next) const {
  int32_t before = 0;
  for (int32_t i = At(parent).firstChild; i != next; i = At(i).nextSibling) before = i;
  return before;
}

bool CXmlReader::RemoveElem() {
  if (current_ == 0 || !valid_) return Fail(u"No current element");
  if (parent_ == 0) return Fail(u"Root element cannot be removed");
  error_.Empty();
  const XmlElement removed = At(current_);
  const int32_t before = ChildBefore(parent_, current_);
  (before != 0 ? Editable(before).nextSibling : Editable(parent_).firstChild) = removed.nextSibling;
  Forget(current_);
  Replace(removed.tagStart, removed.closeEnd + 1, WideView());
  current_ = before;
  child_ = 0;
  valid_ = false;
  return true;
}

// Clears the record of an element that is no longer linked, and all records below it: children first, each
// taken off its parent's chain.
void CXmlReader::Forget(int32_t index) {
  for (int32_t at = index;;) {
    XmlElement& element = Editable(at);
    if (element.firstChild != 0) {
      at = element.firstChild;
      continue;
    }
    const XmlElement cleared = std::exchange(element, XmlElement());
    if (at == index) return;
    at = cleared.parent;
    Editable(at).firstChild = cleared.nextSibling;
  }
}

}  // namespace vrx
