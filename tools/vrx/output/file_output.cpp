#include "tools/vrx/output/file_output.h"

#include <filesystem>
#include <span>

#include <vrxio/text/input_error.h>
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

void RefuseInputAsOutput(const std::string& output, std::initializer_list<std::string_view> inputs) {
  const auto pathOf = [](std::string_view text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
  };
  for (const std::string_view input : inputs) {
    std::error_code ignored;
    if (std::filesystem::equivalent(pathOf(output), pathOf(input), ignored)) {
      throw io::InputError(output + ": is one of the files that are read; write to another");
    }
  }
}

}  // namespace vrx::tool
