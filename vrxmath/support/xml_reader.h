// CXmlReader: a small, non-validating reader and editor for XML-like markup held in memory.
//
// Parsing builds no tree of nodes. It fills a flat array of element records, offsets into the text, and a
// cursor of three element indices (parent, current, child) walks over them:
//
//   CXmlReader xml;
//   if (!xml.SetDoc(text)) return Report(xml.GetError());
//   xml.FindElem(u"standards");
//   while (xml.FindChildElem(u"standard")) {
//     xml.IntoElem();
//     const CString name = xml.GetAttrib(xml.GetCurrentIndex(), u"name");
//     const CString note = xml.GetData(xml.GetCurrentIndex());
//     xml.OutOfElem();
//   }
//
// Texts and attribute values are cut out of the document and decoded when they are asked for. Comments,
// processing instructions and document types are passed over; CDATA counts when an element's data is read.
//
// Any text is safe to parse, whatever its nesting, and every operation but a change takes time in proportion
// to what it looks at: a document of n units is parsed, walked and asked for all its attributes in time
// proportional to n (n log n where names have to be sorted, see GetAttrib).

#ifndef VRXMATH_SUPPORT_XML_READER_H_
#define VRXMATH_SUPPORT_XML_READER_H_

#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <vrxmath/export.h>
#include <vrxmath/platform/wide_string.h>
#include <vrxmath/support/xml_element.h>

namespace vrx {

/// A text argument that may be null, which counts as empty. It refers to the caller's text.
class XmlText {
 public:
  XmlText(const WideChar* text)  // NOLINT(google-explicit-constructor)
      : view_(text ? WideView(text) : WideView()) {}
  template <std::convertible_to<WideView> T>
  requires(!std::convertible_to<T, const WideChar*>) XmlText(const T& text)  // NOLINT
      : view_(text) {}

  WideView View() const { return view_; }

 private:
  WideView view_;
};

class XmlNameIndex;
class XmlAttributeIndex;

/// One document, its element records and a cursor. Copies are deep. Memory beside the text is 28 bytes for
/// each element, and never less than for one element in 64 units of text.
///
/// Element indices: 0 is the document itself, the root element is 1, and the others follow in the order of
/// their start tags; elements added later follow those. An index that no record has, negative ones included,
/// raises CInvalidArgException. When memory runs out CMemoryException is raised.
class VRX_API CXmlReader {
 public:
  CXmlReader();

  /// Takes a document (null is an empty one) and parses it. True when a root element was read; otherwise
  /// there are no elements and GetError says why. Text after the root element is not examined. Offsets have
  /// 31 bits: a longer document is refused and not kept.
  bool SetDoc(XmlText text);
  /// The same for 8-bit text. Each byte is widened with its sign: 0xE9 becomes the unit 0xFFE9. There is no
  /// conversion from a code page; ASCII passes, and a host that relies on the rest can undo it. A null buffer
  /// or a count below 1 is an empty document.
  bool SetDocBytes(const void* bytes, int32_t count);
  /// The same for UTF-8, converted as by CString::FromUtf8: what tools read files with.
  bool SetDocUtf8(std::string_view utf8);

  /// The document as it stands after all changes. Valid until the next change.
  [[nodiscard]] WideView GetDoc() const { return doc_; }
  /// The reason why the last SetDoc or change failed; empty when it did not, and for a document that is empty or begins
  /// with an end tag.
  [[nodiscard]] const CString& GetError() const { return error_; }

  /// Records in use, the document's own included: 1 when there are no elements. Removed elements keep theirs.
  [[nodiscard]] int32_t GetElementCount() const { return static_cast<int32_t>(elements_.size()); }
  /// The record of an element; all zero for one that was removed.
  [[nodiscard]] const XmlElement& GetElement(int32_t index) const;

  // The cursor. An index of 0 means none (for the parent: the document).
  [[nodiscard]] int32_t GetParentIndex() const { return parent_; }
  [[nodiscard]] int32_t GetCurrentIndex() const { return current_; }
  [[nodiscard]] int32_t GetChildIndex() const { return child_; }
  /// False when there is no current element, and after a removal until the next move.
  [[nodiscard]] bool IsPositionValid() const { return valid_; }
  /// Puts the cursor where SetDoc leaves it: before the root element.
  void ResetPosition();

  // Moving. In all searches a name (null or empty: any) matches a tag name that equals it up to its end or up
  // to one of " =/[", so "item[2]" finds "item". A move that returns false leaves the cursor where it is.

  /// Moves to the next matching element after the current one, among the children of the parent.
  bool FindElem(XmlText name = nullptr);
  /// Moves the child position to the next matching child of the current element. Without a current element,
  /// FindElem() comes first, and stays done when there is no such child.
  bool FindChildElem(XmlText name = nullptr);
  /// The current element becomes the parent, and the child, if any, the current element.
  bool IntoElem();
  /// The parent becomes the current element, and the current element the child. False at the top.
  bool OutOfElem();

  /// The tag name; empty for index 0.
  [[nodiscard]] CString GetTagName(int32_t index) const;
  /// The text of an element without children: the content of a CDATA section as it stands, where the element
  /// holds one after optional white space; anything else with the five predefined entities decoded. Numeric
  /// references and unknown entities stay. Empty for elements with children and for empty ones.
  CString GetData(int32_t index) const;
  /// The decoded value of an attribute; empty when there is none, for index 0, and while the position is not
  /// valid. Only quoted values count, and only at the first attribute of that name. A document that is asked
  /// for more than it is long, some times over, gets its attributes sorted once; a question then takes
  /// logarithmic time. (FindElem does the same with tag names.)
  [[nodiscard]] CString GetAttrib(int32_t index, XmlText name) const;

  /// Replaces "<", "&" and ">" by their entities, and for an attribute value both quotes as well.
  [[nodiscard]] static CString EncodeText(XmlText text, bool forAttribute);

  // Changing. Texts are given as they are meant and encoded on the way. Each change takes time in proportion
  // to the document, because all that follows moves; indices stay what they are. A change that cannot be made
  // returns false, says why in GetError and changes nothing. New names may not be empty nor hold white space,
  // quotes or any of "<>=\/?!&[]".

  /// Makes `text` the content of an element without children. An empty element ("/>") gets an end tag unless
  /// the text is empty.
  bool SetData(int32_t index, XmlText text);
  /// Gives an attribute a value, or adds it: at the end of the start tag, or straight after the tag name when
  /// what follows there would keep it from being found (an unquoted value of that name, a stray quote).
  bool SetAttrib(int32_t index, XmlText name, XmlText value);
  /// Adds an element with optional content after the current one, or as the last child of the parent when
  /// there is no current one, and makes it current. At the top it becomes the root of a document that has
  /// none and consists of comments and the like; there is no second root.
  bool AddElem(XmlText name, XmlText data = nullptr);
  /// Adds an element under the current one, after the child or, when there is none, as the last child, and
  /// makes it the child. Needs a valid position.
  bool AddChildElem(XmlText name, XmlText data = nullptr);
  /// Removes the current element with all that it holds. The cursor then stands behind the element before it,
  /// with no valid position, so that FindElem goes on with the element after it. Needs a valid position.
  bool RemoveElem();

 private:
  void Clear();
  bool Parse();
  bool Fail(WideView text);

  [[nodiscard]] const XmlElement& At(int32_t index) const;
  [[nodiscard]] bool IsSearchedOften() const;
  [[nodiscard]] int32_t NextMatching(int32_t parent, int32_t after, WideView name) const;
  [[nodiscard]] WideView FindAttrib(int32_t index, WideView name) const;

  XmlElement& Editable(int32_t index);
  bool HasRoomFor(std::size_t units);
  void Replace(int32_t from, int32_t to, WideView text);
  void GiveEndTag(int32_t index);
  bool AddRoot(const std::u16string& markup);
  int32_t AddAfter(int32_t parent, int32_t previous, WideView name, WideView markup);
  [[nodiscard]] int32_t ChildBefore(int32_t parent, int32_t next) const;
  void Forget(int32_t index);
  void ForgetIndexes();

  std::u16string doc_;
  CString error_;
  std::vector<XmlElement> elements_;  // elements_[0] is the document
  int32_t parent_ = 0;
  int32_t current_ = 0;
  int32_t child_ = 0;
  bool valid_ = false;

  // Units looked at by searches since the last parse or change, and what is built once they are too many.
  mutable int64_t searched_ = 0;
  mutable std::shared_ptr<const XmlNameIndex> names_;
  mutable std::shared_ptr<const XmlAttributeIndex> attributes_;
};

}  // namespace vrx

#endif  // VRXMATH_SUPPORT_XML_READER_H_
