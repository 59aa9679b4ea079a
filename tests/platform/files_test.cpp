#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/files.h>

#include "tests/platform/file_checks.h"

namespace vrx {
namespace {

namespace fs = std::filesystem;

using test::AsBytes;
using test::Files;
using test::Replace;

TEST_F(Files, ReaderReadsToTheEndAndKnowsWhatIsLeft) {
  FileReader file;
  ASSERT_TRUE(file.Open(folder_.Write("a", "12345")));
  std::byte bytes[4];
  EXPECT_EQ(file.Remaining(), 5u);
  EXPECT_EQ(file.Read(bytes), 4u);
  EXPECT_EQ(file.Remaining(), 1u);
  EXPECT_EQ(file.Read(bytes), 1u);
  EXPECT_EQ(file.Read(bytes), 0u);
  EXPECT_EQ(file.Remaining(), 0u);
  EXPECT_EQ(test::ArchiveFailure([&] { file.Write(bytes); }), CArchiveException::kReadOnly);
}

TEST_F(Files, ReaderSaysWhyItCannotOpen) {
  FileReader file;
  EXPECT_FALSE(file.Open(folder_ / "missing"));
  EXPECT_FALSE(file.GetError().empty());
  EXPECT_FALSE(file.Open(folder_ / "."));
  EXPECT_EQ(file.GetError(), "is a directory");
  std::byte bytes[1];
  EXPECT_EQ(file.Read(bytes), 0u);
  EXPECT_TRUE(file.Open(folder_.Write("a", "1")));
  EXPECT_TRUE(file.GetError().empty());
}

TEST_F(Files, ReplacerKeepsTheOldContentUntilCommit) {
  {
    FileReplacer file;
    ASSERT_TRUE(file.Open(path_));
    file.Write(AsBytes("new"));
    EXPECT_EQ(folder_.Read("a"), "old");
    EXPECT_EQ(test::ArchiveFailure([&] { static_cast<void>(file.Read({})); }), CArchiveException::kWriteOnly);
  }
  EXPECT_EQ(folder_.Read("a"), "old");
  EXPECT_EQ(folder_.CountEntries(), 1);
  FileReplacer file;
  EXPECT_FALSE(file.Commit());
  ASSERT_TRUE(file.Open(path_));
  file.Write(AsBytes("new"));
  EXPECT_TRUE(file.Commit());
  EXPECT_FALSE(file.Commit());  // it is closed
  EXPECT_EQ(test::ArchiveFailure([&] { file.Write(AsBytes("x")); }), CArchiveException::kIoError);
  EXPECT_EQ(folder_.Read("a"), "new");
  EXPECT_EQ(folder_.CountEntries(), 1);
}

TEST_F(Files, ReplacerRefusesWhatIsNoFile) {
  fs::create_directory(folder_ / "sub");
  EXPECT_EQ(Replace(folder_ / "sub", "new"), "is a directory");
  EXPECT_NE(Replace(folder_ / "missing/a", "new"), "");
  EXPECT_EQ(folder_.CountEntries(), 2);
}

}  // namespace
}  // namespace vrx
