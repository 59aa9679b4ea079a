// Files that the tool writes: whole, or not at all.

#ifndef TOOLS_VRX_OUTPUT_FILE_OUTPUT_H_
#define TOOLS_VRX_OUTPUT_FILE_OUTPUT_H_

#include <string>
#include <string_view>

namespace vrx::tool {

/// Makes `text` the content of a file. Throws OutputError, with the system's reason and the old content kept, when
/// that fails.
void ReplaceFile(const std::string& path, std::string_view text);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_FILE_OUTPUT_H_
