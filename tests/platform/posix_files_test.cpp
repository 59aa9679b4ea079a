// Replacing a file under the access modes, links, pipes and limits of POSIX.

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/files.h>

#include "tests/platform/file_checks.h"

namespace vrx {
namespace {

namespace fs = std::filesystem;

mode_t ModeOf(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

using test::AsBytes;
using test::Replace;
using PosixFiles = test::Files;

TEST_F(PosixFiles, ReplacerKeepsTheModeAndGivesNewFilesTheUsualOne) {
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

TEST_F(PosixFiles, ReplacerFollowsLinks) {
  fs::create_symlink("target", folder_ / "link");
  for (const char* content : {"first", "second"}) {  // at first the link leads nowhere
    EXPECT_EQ(Replace(folder_ / "link", content), "");
    EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
    EXPECT_EQ(folder_.Read("target"), content);
  }
  fs::create_symlink("circle", folder_ / "circle");
  EXPECT_NE(Replace(folder_ / "circle", "new"), "");
}

TEST_F(PosixFiles, ReplacerRefusesPipes) {
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(Replace(folder_ / "pipe", "new"), "is not a regular file");
  EXPECT_EQ(folder_.CountEntries(), 2);
}

TEST_F(PosixFiles, ReplacerRefusesWriteProtectedFiles) {
  if (::geteuid() == 0) GTEST_SKIP() << "nothing is write-protected from root";
  ASSERT_EQ(::chmod(path_.c_str(), 0400), 0);
  EXPECT_NE(Replace(path_, "new"), "");
  EXPECT_EQ(folder_.Read("a"), "old");
}

TEST_F(PosixFiles, ReplacerKeepsTheOldContentWhenTheDeviceIsFull) {
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
