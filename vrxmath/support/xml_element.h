// The record of one element of a parsed document.

#ifndef VRXMATH_SUPPORT_XML_ELEMENT_H_
#define VRXMATH_SUPPORT_XML_ELEMENT_H_

#include <cstdint>

namespace vrx {

/// Where one element stands: offsets in units from the start of the document, and indices of other records.
struct XmlElement {
  int32_t tagStart = 0;     ///< the "<" of the start tag
  int32_t tagEnd = 0;       ///< the first ">" after the tag name
  int32_t contentEnd = 0;   ///< the "<" of the end tag; of an empty element ("/>") the "/", tagEnd - 1
  int32_t closeEnd = 0;     ///< the ">" of the end tag; of an empty element tagEnd
  int32_t parent = 0;       ///< 0 for the root element
  int32_t firstChild = 0;   ///< 0 for none
  int32_t nextSibling = 0;  ///< 0 for none

  [[nodiscard]] bool IsEmptyTag() const { return tagEnd == contentEnd + 1; }
  bool operator==(const XmlElement&) const = default;
};

}  // namespace vrx

#endif  // VRXMATH_SUPPORT_XML_ELEMENT_H_
