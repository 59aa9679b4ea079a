// Files that the tool writes: whole, or not at all.

#ifndef TOOLS_VRX_OUTPUT_FILE_OUTPUT_H_
#define TOOLS_VRX_OUTPUT_FILE_OUTPUT_H_

#include <initializer_list>
#include <string>
#include <string_view>

namespace vrx::tool {

/// Makes `text` the content of a file. Throws OutputError, with the system's reason and the old content kept, when
/// that fails.
void ReplaceFile(const std::string& path, std::string_view text);

/// Throws InputError when a file that is to be written is one of those that are read.
void RefuseInputAsOutput(const std::string& output, std::initializer_list<std::string_view> inputs);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_FILE_OUTPUT_H_
