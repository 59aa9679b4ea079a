
#include "tools/vrx/report/report_texts.h"

#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/resources.h>
#include <vrxmath/platform/wide_string.h>
#include <vrxmath/tolerance/verdict.h>

namespace vrx::tool {

std::string Text(ReportText text) {
  return CString(FindString(kStringReport + static_cast<uint32_t>(text))).ToUtf8();
}

std::string TextOf(ReportText text, std::initializer_list<std::string_view> values) {
  std::string filled = Text(text);
  std::size_t from = 0;
  for (const std::string_view value : values) {
    const std::size_t at = filled.find("%s", from);
    if (at == std::string::npos) break;
    filled.replace(at, 2, value);
    from = at + value.size();
  }
  return filled;
}

std::string CountsText(const std::array<std::size_t, 3>& counts) {
  return TextOf(ReportText::kCounts, {std::to_string(counts[kPass]), std::to_string(counts[kWarning]),
                                      std::to_string(counts[kFail])});
}

}  // namespace vrx::tool
