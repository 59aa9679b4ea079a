// The tests of files that are the same on every platform.

#ifndef TESTS_PLATFORM_FILE_CHECKS_H_
#define TESTS_PLATFORM_FILE_CHECKS_H_

#include <gtest/gtest.h>
#include <span>
#include <string>

#include <vrxmath/platform/files.h>

#include "tests/testing/archives.h"
#include "tests/testing/temporary_folder.h"

namespace vrx::test {

inline std::span<const std::byte> AsBytes(const std::string& text) {
  return std::as_bytes(std::span(text));
}

// Replaces the content of a file; the reason when that was refused, and empty when it was done.
inline std::string Replace(const std::string& path, const std::string& content) {
  FileReplacer file;
  if (!file.Open(path)) return file.GetError();
  file.Write(AsBytes(content));
  return file.Commit() ? "" : file.GetError();
}

class Files : public testing::Test {
 protected:
  const test::TemporaryFolder folder_;
  const std::string path_ = folder_.Write("a", "old");
};

}  // namespace vrx::test

#endif  // TESTS_PLATFORM_FILE_CHECKS_H_
