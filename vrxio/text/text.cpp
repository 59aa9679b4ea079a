#include <vrxio/text/text.h>

#include <cstdint>
#include <cstring>

namespace vrx::io {
namespace {

// Length of the UTF-8 sequence at the start of `text`; 0 when it is not valid.
std::size_t SequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const std::size_t length = byte(0) < 0x80   ? 1
                             : byte(0) < 0xC2 ? 0
                             : byte(0) < 0xE0 ? 2
                             : byte(0) < 0xF0 ? 3
                             : byte(0) < 0xF5 ? 4
                                              : 0;
  if (length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  const bool overlongOrSurrogate = (byte(0) == 0xE0 && byte(1) < 0xA0) || (byte(0) == 0xED && byte(1) > 0x9F);
  const bool outside = (byte(0) == 0xF0 && byte(1) < 0x90) || (byte(0) == 0xF4 && byte(1) > 0x8F);
  return overlongOrSurrogate || outside ? 0 : length;
}

}  // namespace

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

std::string PlainText(std::string_view text) {
  std::string plain;
  for (const char c : text) {
    const char lower = LowerCase(c);
    if ((c >= '0' && c <= '9') || (lower >= 'a' && lower <= 'z')) plain += lower;
  }
  return plain;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    // Most text is ASCII: eight bytes at a time.
    for (uint64_t eight; text.size() >= sizeof eight; text.remove_prefix(sizeof eight)) {
      std::memcpy(&eight, text.data(), sizeof eight);
      if ((eight & 0x8080808080808080) != 0) break;
    }
    if (text.empty()) break;
    const std::size_t length = SequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

const char* TextFault(std::string_view text, bool readsLatin1) {
  if (text.find('\0') != std::string_view::npos) return "a text holds a zero byte";
  if (IsUtf8(text)) return nullptr;
  return readsLatin1 ? "a text is not UTF-8; --latin1 reads files in Latin-1" : "a text is not UTF-8";
}

void AppendUtf8(uint32_t character, std::string& text) {
  const auto add = [&](uint32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) return add(character);
  if (character < 0x800) {
    add(0xC0 | character >> 6);
  } else {
    if (character < 0x10000) {
      add(0xE0 | character >> 12);
    } else {
      add(0xF0 | character >> 18);
      add(0x80 | (character >> 12 & 0x3F));
    }
    add(0x80 | (character >> 6 & 0x3F));
  }
  add(0x80 | (character & 0x3F));
}

}  // namespace vrx::io
