// Small things about the texts of files.

#ifndef VRXIO_TEXT_TEXT_H_
#define VRXIO_TEXT_TEXT_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace vrx::io {

/// A text without the blanks and tabs about it.
std::string_view Trimmed(std::string_view text);

/// A text for a message: not too long, and without characters that a terminal obeys.
std::string Shown(std::string_view text);

/// True for valid UTF-8.
bool IsUtf8(std::string_view text);

/// Appends a character, which is no surrogate, to a text.
void AppendUtf8(uint32_t character, std::string& text);

}  // namespace vrx::io

#endif  // VRXIO_TEXT_TEXT_H_
