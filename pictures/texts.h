// The words of charts, from the table of texts that also has those of the controls.

#ifndef PICTURES_TEXTS_H_
#define PICTURES_TEXTS_H_

#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx::pictures {

[[nodiscard]] inline CString ChartText(ControlText number) {
  return CString::Load(kStringControl + static_cast<uint32_t>(number));
}

}  // namespace vrx::pictures

#endif  // PICTURES_TEXTS_H_
