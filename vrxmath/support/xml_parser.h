// The parser: from the text of a document to its element records.

#ifndef VRXMATH_SUPPORT_XML_PARSER_H_
#define VRXMATH_SUPPORT_XML_PARSER_H_

#include <vector>

#include <vrxmath/platform/wide_string.h>
#include <vrxmath/support/xml_element.h>

namespace vrx {

/// Parses the first element of `doc`, which becomes record 1, with all that it holds. Record 0 is the
/// document: its `firstChild` is the root. On failure returns false, says why in `error` and leaves record 0
/// alone in `elements`, all zero, also when memory runs out. (A document that begins with an end tag fails without
/// a text.)
bool ParseXmlElements(WideView doc, std::vector<XmlElement>& elements, CString& error);

/// True when `doc` holds nothing but comments, processing instructions, document types, CDATA sections and
/// text, all of them ended: a root element can be added.
bool HasOnlyProlog(WideView doc);

}  // namespace vrx

#endif  // VRXMATH_SUPPORT_XML_PARSER_H_
