// Files that the tool writes: whole, or not at all.

#ifndef TOOLS_VRX_OUTPUT_FILE_OUTPUT_H_
#define TOOLS_VRX_OUTPUT_FILE_OUTPUT_H_

#include <string>
#include <string_view>

#include <vrxmath/platform/files.h>

#include "tools/vrx/base/terminal.h"

namespace vrx::tool {

/// New content of a file, which takes the place of the old one at Commit. Until then it grows in a file beside it, which goes
/// when this one does: an interrupt or a request to end is noted meanwhile, and ends the work at the next call.
class OutputFile {
 public:
  /// Throws OutputError with the system's reason, as all of it.
  explicit OutputFile(std::string path);

  void Write(std::string_view text);
  void Commit();

 private:
  [[noreturn]] void Fail();

  InterruptWatch interrupt_;  // outlives the file
  std::string path_;
  FileReplacer file_;
};

/// Makes `text` the content of a file. Throws OutputError, with the system's reason and the old content kept, when
/// that fails.
void ReplaceFile(const std::string& path, std::string_view text);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_FILE_OUTPUT_H_
