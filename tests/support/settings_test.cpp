#include <atomic>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>

#include <vrxmath/platform/posix/file_settings_store.h>
#include <vrxmath/support/settings.h>

#include "tests/support/test_environment.h"

namespace vrx {
namespace {

using platform_internal::FileSettingsStore;

class Settings : public testing::Test {
 protected:
  Settings() { SetSettingsStore(&store_); }
  ~Settings() override { SetSettingsStore(nullptr); }

  test::TemporaryFolder directory_;
  std::string config_ = directory_ / "config";
  std::string file_ = directory_ / "config/ostrel/settings.conf";
  FileSettingsStore store_{[this] { return config_; }};
};

TEST_F(Settings, ValuesOfBothTypesComeBack) {
  EXPECT_EQ(GetSettingInt(u"S", u"A", 42), 42);
  EXPECT_EQ(GetSettingString(u"S", u"A", u"none"), u"none");
  for (const int32_t value : {0, -1, INT32_MIN, INT32_MAX}) {
    EXPECT_TRUE(SetSettingInt(u"S", u"A", value));
    EXPECT_EQ(GetSettingInt(u"s", u"a", 42), value);
    EXPECT_EQ(GetSettingString(u"S", u"A", u"none"), u"none");
  }
  for (const std::size_t length : {0u, 1u, 260u, 261u, 100000u}) {
    const std::u16string text(length, u'\u0416');
    EXPECT_TRUE(SetSettingString(u"S", u"A", text));
    EXPECT_EQ(GetSettingString(u"S", u"A", u"none"), length <= 260 ? WideView(text) : WideView(u"none"));
    EXPECT_EQ(GetSettingInt(u"S", u"A", 42), 42);
  }
}

TEST_F(Settings, OpeningMakesTheKeys) {
  EXPECT_EQ(OpenSettingsRoot()->Path(), (SettingsPath{u"software", u"Ostrel", u"Pemble"}));
  EXPECT_EQ(OpenSettingsSection(u"One\\Two")->Path(),
            (SettingsPath{u"software", u"Ostrel", u"Pemble", u"One", u"Two"}));
  EXPECT_EQ(OpenSettingsSection(u"")->Path(), OpenSettingsRoot()->Path());
  EXPECT_TRUE(store_.OpenKey({u"SOFTWARE", u"ostrel", u"Pemble", u"One"}, false));
  EXPECT_FALSE(store_.OpenKey({u"software", u"Other"}, false));
  for (const std::u16string& name :
       {std::u16string(u"a\\\\b"), std::u16string(u"\\a"), std::u16string(256, u'k')}) {
    EXPECT_FALSE(OpenSettingsSection(name));
    EXPECT_FALSE(SetSettingInt(name, u"A", 1));
  }
  EXPECT_FALSE(SetSettingInt(u"", std::u16string(kMaxValueName + 1, u'n'), 1));
  EXPECT_TRUE(SetSettingInt(u"One", u"Color Sensor", 2));
  EXPECT_EQ(directory_.Read(file_).substr(directory_.Read(file_).find('[')),
            "[software/Ostrel/Pemble/One/Two]\n"
            "\n[software/Ostrel/Pemble/One]\nColor Sensor = 2\n");
  struct stat status = {};
  ASSERT_EQ(::stat(file_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(Settings, ADamagedFileIsKeptAside) {
  ASSERT_TRUE(SetSettingInt(u"S", u"A", 1));
  std::string damaged = directory_.Read(file_) + "B = oops\nC = 3\n";
  for (const char* aside : {".damaged-1", ".damaged-2"}) {
    directory_.Write(file_, damaged);
    EXPECT_EQ(GetSettingInt(u"S", u"B", 42), 42);
    EXPECT_EQ(GetSettingInt(u"Missing", u"B", 42), 42);
    EXPECT_EQ(directory_.Read(file_), damaged) << "reading does not write";
    EXPECT_EQ(GetSettingInt(u"S", u"C", 42), 3);
    EXPECT_TRUE(SetSettingInt(u"S", u"A", 2));
    EXPECT_EQ(directory_.Read(file_ + aside), damaged);
    EXPECT_EQ(GetSettingInt(u"S", u"A", 42), 2);
    EXPECT_EQ(GetSettingInt(u"S", u"C", 42), 3);
    damaged += std::string("\0\xFF[", 3);
  }
  EXPECT_TRUE(SetSettingInt(u"S", u"A", 3));
  EXPECT_FALSE(std::filesystem::exists(file_ + ".damaged-3"));
}

TEST_F(Settings, ALinkedFileStaysLinkedAndKeepsItsMode) {
  std::filesystem::create_directories(directory_ / "config/ostrel");
  std::filesystem::create_directory(directory_ / "elsewhere");
  std::filesystem::create_symlink("../../elsewhere/file", file_);  // which is not there yet
  EXPECT_TRUE(SetSettingInt(u"S", u"A", 1));
  ASSERT_EQ(::chmod((directory_ / "elsewhere/file").c_str(), 0640), 0);
  EXPECT_TRUE(SetSettingInt(u"S", u"A", 2));
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
  EXPECT_NE(directory_.Read(directory_ / "elsewhere/file").find("A = 2"), std::string::npos);
  struct stat status = {};
  ASSERT_EQ(::stat(file_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
  EXPECT_TRUE(std::filesystem::exists(directory_ / "elsewhere/file.lock"));
}

TEST_F(Settings, APlaceThatCannotBeUsedGivesDefaults) {
  const auto isUnusable = [] {
    return !OpenSettingsRoot() && GetSettingInt(u"S", u"A", 42) == 42 && !SetSettingInt(u"S", u"A", 1) &&
           GetSettingString(u"S", u"T", u"d") == u"d" && !SetSettingString(u"S", u"T", u"x") &&
           CurrentSettingsStore().List({u"software"}).empty();
  };
  const std::string usable = config_;
  directory_.Write(directory_ / "plain", "");
  for (const std::string& place :
       {std::string(), directory_ / "missing/config", directory_ / "plain/config"}) {
    config_ = place;
    EXPECT_TRUE(isUnusable()) << place;
    EXPECT_FALSE(std::filesystem::exists(directory_ / "missing"));
  }
  config_ = usable;
  ASSERT_TRUE(SetSettingInt(u"S", u"A", 7));
  std::filesystem::permissions(directory_ / "", std::filesystem::perms(0755));
  std::filesystem::permissions(usable, std::filesystem::perms(0755));
  std::filesystem::permissions(directory_ / "config/ostrel", std::filesystem::perms(0555));
  EXPECT_TRUE(RunInChild([&] {  // root may write anywhere: be someone else
    if (::geteuid() == 0 && ::setuid(65534) != 0) return false;
    return isUnusable();
  }));
  std::filesystem::permissions(directory_ / "config/ostrel", std::filesystem::perms(0755));
  std::filesystem::remove(file_);
  for (const bool isPipe : {false, true}) {
    isPipe ? ::mkfifo(file_.c_str(), 0600) : ::mkdir(file_.c_str(), 0700);
    EXPECT_TRUE(isUnusable());
    std::filesystem::remove(file_);
  }
  std::ofstream(file_).close();
  std::filesystem::resize_file(file_, (uint64_t{16} << 20) + 1);
  EXPECT_TRUE(isUnusable());
}

TEST_F(Settings, TheUsersDirectory) {
  struct Row {
    const char* config;
    const char* home;
    const char* expected;
  };
  const Row rows[] = {{"/c", "/h", "/c"},
                      {"", "/h", "/h/.config"},
                      {"relative", "/h", "/h/.config"},
                      {"", "relative", ""},
                      {"", "", ""}};
  for (const Row& row : rows) {
    EXPECT_TRUE(RunInChild([&] {
      ::setenv("XDG_CONFIG_HOME", row.config, 1);
      ::setenv("HOME", row.home, 1);
      return platform_internal::UserConfigDirectory() == row.expected;
    })) << row.expected;
  }
}

TEST_F(Settings, TwoWritersLoseNothing) {
  constexpr int kValues = 26;
  const auto write = [&](const std::u16string& prefix) {
    for (int i = 0; i < kValues; ++i) {
      if (!SetSettingInt(u"S", prefix + static_cast<WideChar>(u'A' + i), i)) return false;
    }
    return true;
  };
  const pid_t other = ::fork();
  if (other == 0) ::_exit(write(u"other") ? 0 : 1);
  EXPECT_TRUE(write(u"mine"));
  int status = 1;
  ASSERT_EQ(::waitpid(other, &status, 0), other);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(store_.List({u"software"}).size(), 2u * kValues);
}

// Kills a writer at many moments. What it knew to be written is there, and the file is whole.
TEST_F(Settings, AKilledWriterLeavesAWholeFile) {
  ASSERT_TRUE(SetSettingString(u"S", u"Other", std::u16string(5000, u'x')));
  void* shared = ::mmap(nullptr, sizeof(std::atomic<int32_t>), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  auto* written = new (shared) std::atomic<int32_t>(0);
  for (int round = 0; round < 30; ++round) {
    const int32_t before = *written;
    const pid_t writer = ::fork();
    if (writer == 0) {
      for (int32_t i = *written + 1; SetSettingInt(u"S", u"Count", i); ++i) *written = i;
      ::_exit(1);
    }
    // Every other writer gets to its first value, however slow the machine is.
    for (int wait = 0; round % 2 == 1 && *written == before && wait < 10'000; ++wait) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::this_thread::sleep_for(std::chrono::microseconds(2000 + 731 * round));
    ::kill(writer, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(writer, &status, 0), writer);
    ASSERT_TRUE(WIFSIGNALED(status));
    const int32_t found = GetSettingInt(u"S", u"Count", 0);
    EXPECT_TRUE(found == *written || found == *written + 1) << found << " after " << *written;
    EXPECT_FALSE(SettingsDocument::Parse(directory_.Read(file_)).IsDamaged());
    *written = found;
  }
  EXPECT_GT(written->load(), 0);
  EXPECT_TRUE(SetSettingInt(u"S", u"Count", -1));
  const std::filesystem::directory_iterator files(directory_ / "config/ostrel");
  EXPECT_LE(std::distance(begin(files), end(files)), 2);  // the file and its lock: nothing piles up
  ::munmap(shared, sizeof(std::atomic<int32_t>));
}

}  // namespace
}  // namespace vrx
