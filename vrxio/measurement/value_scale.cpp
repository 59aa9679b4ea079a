#include <vrxio/measurement/value_scale.h>

#include <vrxio/text/text.h>

namespace vrx::io {

bool IsPercentUnit(std::string_view text) {
  const std::string plain = PlainText(text);
  if (plain == "percent") return true;
  return text.find('%') != std::string_view::npos &&
         (plain.empty() || plain == "r" || plain == "reflectance");
}

}  // namespace vrx::io
