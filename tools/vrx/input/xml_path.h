// Paths into an XML document, such as "standards/standard[2]/@name".
//
// A step is a tag name, or "*" for any, and may say which of those: [1] is the first. The last step may be an
// attribute, "@name". The first step names the root element.

#ifndef TOOLS_VRX_INPUT_XML_PATH_H_
#define TOOLS_VRX_INPUT_XML_PATH_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <vrxmath/support/xml_reader.h>

namespace vrx::tool {

struct XmlStep {
  std::string name;  ///< empty for any
  int32_t position = 1;
  bool isPlaced = false;  ///< the path says the position
};

struct XmlPath {
  std::vector<XmlStep> steps;
  std::string attribute;  ///< empty when the path ends with an element
};

/// Throws InputError for a text that is no path.
XmlPath ParseXmlPath(std::string_view text);

/// Makes the element of the path the current one. Throws InputError that says which step leads nowhere. Says on standard error where a
/// step without a position has several elements, of which the first is taken.
void GoTo(CXmlReader& xml, const XmlPath& path);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_INPUT_XML_PATH_H_
