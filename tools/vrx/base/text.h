// Text for a person: what vrxio makes fit to be shown, under the names of the tool, and messages.

#ifndef TOOLS_VRX_BASE_TEXT_H_
#define TOOLS_VRX_BASE_TEXT_H_

#include <string>
#include <string_view>
#include <vector>

#include <vrxio/text/shown_text.h>

namespace vrx::tool {

using io::DisplayWidth;
using io::IsHidden;
using io::MessageText;
using io::Shortened;
using io::ShownText;
using io::TakeCharacter;

/// The first three rows of a list, and " ..." where there are more.
std::string FirstOf(const std::vector<std::string>& rows, const char* separator);

/// Prints "vrx: " and the message to standard error.
void PrintMessage(std::string_view text);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_BASE_TEXT_H_
