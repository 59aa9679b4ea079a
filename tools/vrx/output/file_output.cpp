#include "tools/vrx/output/file_output.h"

#include <span>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/files.h>

#include "tools/vrx/output/output.h"

namespace vrx::tool {

void ReplaceFile(const std::string& path, std::string_view text) {
  FileReplacer file;
  bool done = file.Open(path);
  if (done) {
    try {
      file.Write(std::as_bytes(std::span(text)));
      done = file.Commit();
    } catch (const CArchiveException&) {
      done = false;
    }
  }
  if (!done) throw OutputError(path + ": " + file.GetError());
}

}  // namespace vrx::tool
