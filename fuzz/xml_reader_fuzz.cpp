// Any bytes as a document: the reader must agree with the reference; moves must agree too, and after each
// change the records must be those of the changed text.
//
// Input: the document in bytes, up to the first zero byte; then steps of two bytes, a kind (odd: a change,
// even: a move) and a choice.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <vrxmath/support/xml_reader.h>

#include "tests/support/xml_checks.h"

namespace {

// The reference is recursive, and copies texts: longer inputs would only be slower.
constexpr std::size_t kMaxDocument = 2048;
constexpr std::size_t kMaxSteps = 64;

void Check(const std::string& difference, const vrx::CXmlReader& xml) {
  if (difference.empty()) return;
  std::fprintf(stderr, "%s\nin: %s\n", difference.c_str(), vrx::CString(xml.GetDoc()).ToUtf8().c_str());
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const uint8_t* const split = std::find(data, data + size, uint8_t{0});
  const std::size_t length = std::min(static_cast<std::size_t>(split - data), kMaxDocument);
  std::u16string doc;
  for (std::size_t i = 0; i < length; ++i) doc += static_cast<char16_t>(static_cast<int8_t>(data[i]));

  vrx::CXmlReader xml;
  xml.SetDocUtf8({reinterpret_cast<const char*>(data), length});
  vrx::XmlReference reference;
  const bool parsed = reference.SetDoc(doc);
  if (xml.SetDocBytes(data, static_cast<int32_t>(length)) != parsed) Check("result of SetDocBytes", xml);
  if (xml.GetDoc() != doc) Check("widened text", xml);
  Check(CompareElements(xml, reference), xml);

  const std::size_t steps = std::min(static_cast<std::size_t>(data + size - split) / 2, kMaxSteps);
  bool changed = false;
  for (std::size_t i = 0; i + 1 < steps; ++i) {
    const bool change = split[1 + 2 * i] % 2 == 1;
    const unsigned choice = split[2 + 2 * i];
    if (change) {
      Check(CheckChange(xml, choice), xml);
    } else if (changed) {
      vrx::Move(xml, choice);
    } else {
      Check(CompareMove(xml, reference, choice), xml);
    }
    changed = changed || change;
  }
  return 0;
}
