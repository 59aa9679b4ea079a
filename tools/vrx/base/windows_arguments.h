// The arguments of a Windows command line. The shells there leave patterns of file names to the program.

#ifndef TOOLS_VRX_BASE_WINDOWS_ARGUMENTS_H_
#define TOOLS_VRX_BASE_WINDOWS_ARGUMENTS_H_

#include <string>
#include <string_view>
#include <vector>

namespace vrx::tool {

/// The arguments behind the program's name, as UTF-8, divided as the C library of Windows does it: by blanks outside of
/// quotation marks; backslashes in front of a mark count in pairs, and two marks within a quotation are one. An argument
/// with a "*" or "?" in its last part that is not in quotation marks, and which is no option, becomes the files that it
/// fits, in the order of their names; where it fits none it stays.
std::vector<std::string> WindowsArguments(std::u16string_view commandLine);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_BASE_WINDOWS_ARGUMENTS_H_
