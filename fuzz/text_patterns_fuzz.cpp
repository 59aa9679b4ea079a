// Any text as a date pattern, a number picture and a typed number: no input harms, a position of an error lies
// within the text, and a number that is read is written and read again.

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <vrxmath/platform/locale.h>
#include <vrxmath/support/condition_text.h>
#include <vrxmath/support/date_time.h>
#include <vrxmath/support/number_text.h>

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static const vrx::FixedLocale locale{vrx::LocaleConventions()};
  vrx::SetLocale(&locale);
  uint8_t head[16] = {};
  std::memcpy(head, data, size < sizeof head ? size : sizeof head);
  int64_t time = 0;
  double value = 0.0;
  std::memcpy(&time, head, sizeof time);
  std::memcpy(&value, head + 8, sizeof value);
  const vrx::CString text = vrx::CString::FromUtf8({reinterpret_cast<const char*>(data), size});

  vrx::CString out;
  vrx::FormatDateTime(out, text, static_cast<uint32_t>(time), time % 253402300800);
  static_cast<void>(vrx::PictureText(text, value));
  vrx::CString code = text;
  vrx::ConditionText(code);
  Require(code.GetLength() >= 3);

  const vrx::ParsedNumber parsed = vrx::ParseNumber(text);
  Require(parsed.position >= 0 && parsed.position <= text.GetLength());
  if (parsed.error == vrx::NumberError::kNone) {
    const vrx::ParsedNumber again = vrx::ParseNumber(vrx::NumberText(parsed.value));
    Require(again.error == vrx::NumberError::kNone && again.value == parsed.value);
  }
  return 0;
}
