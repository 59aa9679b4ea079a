#include <vrxio/text/shown_text.h>

#include <algorithm>
#include <array>

#include <vrxio/text/text.h>

namespace vrx::io {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// Printable ASCII, as almost every text is.
bool IsPlain(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= ' ' && c < '\x7F'; });
}

}  // namespace

bool IsHidden(char32_t character) {
  struct Range {
    char32_t first, last;
  };
  static constexpr std::array<Range, 8> kRanges{{{0x00, 0x1F},
                                                 {0x7F, 0x9F},
                                                 {0x061C, 0x061C},
                                                 {0x200E, 0x200F},
                                                 {0x2028, 0x202E},
                                                 {0x2066, 0x2069},
                                                 {0xFDD0, 0xFDEF},
                                                 {0xFFF9, 0xFFFB}}};
  if ((character & 0xFFFE) == 0xFFFE) return true;  // the last two of every plane are noncharacters
  return std::ranges::any_of(
      kRanges, [=](const Range& range) { return character >= range.first && character <= range.last; });
}

char32_t TakeCharacter(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t length = first < 0x80 ? 1 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  static constexpr std::array<char32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
  const bool isWhole =
      text.size() >= length && (length == 1 || (first >= 0xC2 && first < 0xF5)) &&
      std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(length), IsContinuation);
  char32_t character = length == 1 ? first : first & (0x7FU >> length);
  for (std::size_t i = 1; isWhole && i < length; ++i) {
    character = character << 6 | (static_cast<unsigned char>(text[i]) & 0x3F);
  }
  const bool isValid = isWhole && character >= kSmallest[length] && character <= 0x10FFFF &&
                       (character < 0xD800 || character > 0xDFFF);
  text.remove_prefix(isValid ? length : 1);
  return isValid ? character : kReplacement;
}

std::string ShownText(std::string_view text) {
  if (IsPlain(text)) return std::string(text);
  std::string shown;
  while (!text.empty()) {
    const char32_t character = TakeCharacter(text);
    AppendUtf8(IsHidden(character) ? U' ' : character, shown);
  }
  return shown;
}

std::string Shortened(std::string_view text, std::size_t length) {
  constexpr std::string_view kDots = "...";
  std::string shown;
  std::size_t count = 0;
  std::size_t cut = 0;  // where the dots would go
  while (!text.empty()) {
    if (count + kDots.size() <= length) cut = shown.size();
    if (count++ == length) return shown.substr(0, cut).append(kDots);
    const char32_t character = TakeCharacter(text);
    AppendUtf8(IsHidden(character) ? U' ' : character, shown);
  }
  return shown;
}

bool StartsFormula(std::string_view text) {
  return !text.empty() && std::string_view("=+-@\t\r").find(text.front()) != std::string_view::npos;
}

std::string Shown(std::string_view text) {
  return Shortened(text, 40);
}

std::size_t DisplayWidth(std::string_view text) {
  return text.size() - static_cast<std::size_t>(std::ranges::count_if(text, IsContinuation));
}

std::string MessageText(std::string_view text) {
  constexpr std::size_t kLongestQuote = 60;
  // Of a path at the beginning, of what is behind the last quote, and of all.
  constexpr std::size_t kLongest = 600;
  std::string message;
  while (!text.empty()) {
    const std::size_t open = text.find('"');
    message += Shortened(text.substr(0, open), kLongest);
    if (open == std::string_view::npos) break;
    text.remove_prefix(open + 1);
    const std::size_t close = text.find('"');
    message += '"' + Shortened(text.substr(0, close), kLongestQuote);
    if (close == std::string_view::npos) break;
    message += '"';
    text.remove_prefix(close + 1);
    if (message.size() > 2 * kLongest) return Shortened(message, kLongest);
  }
  return message;
}

}  // namespace vrx::io
