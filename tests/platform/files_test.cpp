#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/files.h>

#include "tests/testing/archives.h"
#include "tests/testing/temporary_folder.h"

namespace vrx {
namespace {

namespace fs = std::filesystem;

std::span<const std::byte> AsBytes(const std::string& text) {
  return std::as_bytes(std::span(text));
}

// Replaces the content of a file; the reason when that was refused, and empty when it was done.
std::string Replace(const std::string& path, const std::string& content) {
  FileReplacer file;
  if (!file.Open(path)) return file.GetError();
  file.Write(AsBytes(content));
  return file.Commit() ? "" : file.GetError();
}

mode_t ModeOf(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

class Files : public testing::Test {
 protected:
  const test::TemporaryFolder folder_;
  const std::string path_ = folder_.Write("a", "old");
};

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
    EXPECT_EQ(test::ArchiveFailure([&] { file.Read({}); }), CArchiveException::kWriteOnly);
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

TEST_F(Files, ReplacerKeepsTheModeAndGivesNewFilesTheUsualOne) {
  for (const mode_t mode : {0600u, 0666u, 0755u}) {  // 0666 is more than the usual mask allows
    ASSERT_EQ(::chmod(path_.c_str(), mode), 0);
    EXPECT_EQ(Replace(path_, "new"), "");
    EXPECT_EQ(ModeOf(path_), mode);
  }
  const mode_t mask = ::umask(027);
  EXPECT_EQ(Replace(folder_ / "b", "new"), "");
  ::umask(mask);
  EXPECT_EQ(ModeOf(folder_ / "b"), 0640u);
}

TEST_F(Files, ReplacerFollowsLinks) {
  fs::create_symlink(folder_.Write("target", "old"), folder_ / "link");
  EXPECT_EQ(Replace(folder_ / "link", "new"), "");
  EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
  EXPECT_EQ(folder_.Read("target"), "new");
}

TEST_F(Files, ReplacerRefusesWhatIsNoFile) {
  fs::create_directory(folder_ / "sub");
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(Replace(folder_ / "sub", "new"), "is a directory");
  EXPECT_EQ(Replace(folder_ / "pipe", "new"), "is not a regular file");
  EXPECT_NE(Replace(folder_ / "missing/a", "new"), "");
  EXPECT_EQ(folder_.CountEntries(), 3);
}

TEST_F(Files, ReplacerRefusesWriteProtectedFiles) {
  if (::geteuid() == 0) GTEST_SKIP() << "nothing is write-protected from root";
  ASSERT_EQ(::chmod(path_.c_str(), 0400), 0);
  EXPECT_NE(Replace(path_, "new"), "");
  EXPECT_EQ(folder_.Read("a"), "old");
}

TEST_F(Files, ReplacerKeepsTheOldContentWhenTheDeviceIsFull) {
  // A limit on the size of files stands in for the end of the device.
  rlimit limit = {};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
  const rlimit small = {4096, limit.rlim_max};
  const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  FileReplacer file;
  const bool opened = file.Open(path_);
  const int failure = test::ArchiveFailure([&] { file.Write(AsBytes(std::string(100000, 'x'))); });
  const bool committed = file.Commit();
  ::setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, oldHandler);
  EXPECT_TRUE(opened);
  EXPECT_EQ(failure, CArchiveException::kIoError);
  EXPECT_FALSE(committed);
  EXPECT_EQ(folder_.Read("a"), "old");
  EXPECT_EQ(folder_.CountEntries(), 1);
}

}  // namespace
}  // namespace vrx
