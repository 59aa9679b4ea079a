#include "tools/vrx/output/file_output.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

#include <vrxmath/platform/exceptions.h>

#include "tools/vrx/base/output_error.h"

namespace vrx::tool {

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
  if (!file_.Open(path_)) Fail();
}

void OutputFile::Fail() {
  throw OutputError(path_ + ": " + file_.GetError());
}

void OutputFile::Write(std::string_view text) {
  constexpr std::size_t kAtOnce = std::size_t{1} << 20;
  while (!text.empty()) {
    interrupt_.Check();
    const std::string_view part = text.substr(0, kAtOnce);
    try {
      file_.Write(std::as_bytes(std::span(part)));
    } catch (const CArchiveException&) {
      Fail();
    }
    text.remove_prefix(part.size());
  }
}

void OutputFile::Commit() {
  interrupt_.Check();
  if (!file_.Commit()) Fail();
  interrupt_.Check();
}

void ReplaceFile(const std::string& path, std::string_view text) {
  OutputFile file(path);
  file.Write(text);
  file.Commit();
}

}  // namespace vrx::tool
