// Small things about the texts of files.

#ifndef VRXIO_TEXT_TEXT_H_
#define VRXIO_TEXT_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vrx::io {

/// A text without the blanks and tabs about it.
std::string_view Trimmed(std::string_view text);

/// The text from `first` to before `last`.
inline std::string_view Between(const char* first, const char* last) {
  return {first, static_cast<std::size_t>(last - first)};
}

/// White space as XML and JSON have it.
constexpr bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// A letter as a small one, if it is of ASCII; any other byte as it is.
constexpr char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// A text in one spelling: small letters and digits only.
std::string PlainText(std::string_view text);

/// True for valid UTF-8.
bool IsUtf8(std::string_view text);

/// Why a text of a file cannot be taken: it is not UTF-8 (with a word about the option, where files in Latin-1 are read),
/// or it holds a zero byte, which no table has and which ends a text for many programs. Null when it can be taken.
const char* TextFault(std::string_view text, bool readsLatin1);

/// Appends a character, which is no surrogate, to a text.
void AppendUtf8(uint32_t character, std::string& text);

}  // namespace vrx::io

#endif  // VRXIO_TEXT_TEXT_H_
