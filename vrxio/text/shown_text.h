// Text that comes from outside, made fit for a terminal, a table or a message. Whatever is shown to a person goes
// through here, the messages of the readers with it: names in files may hold what a terminal obeys instead of showing it.

#ifndef VRXIO_TEXT_SHOWN_TEXT_H_
#define VRXIO_TEXT_SHOWN_TEXT_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace vrx::io {

/// True for a character that does not show itself but does something to what is shown: control characters (U+0000 to
/// U+001F, U+007F to U+009F), line and paragraph separators, marks that turn the direction of writing, and
/// noncharacters, which some renderers refuse.
bool IsHidden(char32_t character);

/// Takes the first character off a UTF-8 text that is not empty; a byte that belongs to none is U+FFFD.
char32_t TakeCharacter(std::string_view& text);

/// `text` as valid UTF-8 with a blank for every hidden character.
std::string ShownText(std::string_view text);

/// ShownText cut to `length` characters, the last three of a longer text being dots.
std::string Shortened(std::string_view text, std::size_t length);

/// True for a text that a spreadsheet takes for a formula and runs.
bool StartsFormula(std::string_view text);

/// A text of a file for a message: not too long, and without characters that a terminal obeys.
std::string Shown(std::string_view text);

/// The number of characters, each taken for one place of a line.
std::size_t DisplayWidth(std::string_view text);

/// A message in one line: ShownText with each quoted text and the whole cut to a length that can be read.
std::string MessageText(std::string_view text);

}  // namespace vrx::io

#endif  // VRXIO_TEXT_SHOWN_TEXT_H_
