// What the support tests put in the platform's place for the length of a test.

#ifndef TESTS_SUPPORT_LIB_TEST_ENVIRONMENT_H_
#define TESTS_SUPPORT_LIB_TEST_ENVIRONMENT_H_

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include <vrxmath/platform/memory/fake_clock.h>
#include <vrxmath/platform/memory/memory_settings_store.h>
#include <vrxmath/platform/message_box.h>
#include <vrxmath/platform/posix/locale_texts.h>
#include <vrxmath/support/diagnostic_log.h>

namespace vrx {

/// A directory that is removed with everything in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "vrx-test-XXXXXX").string();
    path_ = ::mkdtemp(name.data());
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() { std::filesystem::remove_all(path_); }
  std::string operator/(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

inline std::string ReadAll(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

inline void WriteAll(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

/// Runs `body` in a process of its own; false when it ends other than by returning true.
inline bool RunInChild(const std::function<bool()>& body) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(body() ? 0 : 1);
  int status = 0;
  return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// Collects the messages that the library shows.
class MessageRecorder {
 public:
  MessageRecorder() {
    SetMessageBoxHandler(
        [](WideView text, MessageIcon icon, void* recorder) {
          static_cast<MessageRecorder*>(recorder)->shown.push_back({CString(text).ToUtf8(), icon});
        },
        this);
  }
  MessageRecorder(const MessageRecorder&) = delete;
  MessageRecorder& operator=(const MessageRecorder&) = delete;
  ~MessageRecorder() { SetMessageBoxHandler(nullptr); }

  std::vector<std::pair<std::string, MessageIcon>> shown;
};

/// A fake clock, settings in memory and a locale, all in use while this lives.
struct FakePlatform {
  explicit FakePlatform(std::vector<ZoneChange> zone = {}) : clock(std::move(zone)) {
    SetClock(&clock);
    SetSettingsStore(&settings);
    SetLocale(&cLocale_);
    support_internal::ForgetDiagModes();
  }
  FakePlatform(const FakePlatform&) = delete;
  FakePlatform& operator=(const FakePlatform&) = delete;
  ~FakePlatform() {
    SetClock(nullptr);
    SetSettingsStore(nullptr);
    SetLocale(nullptr);
  }

  FakeClock clock;
  MemorySettingsStore settings;
  MessageRecorder messages;

 private:
  FixedLocale cLocale_{LocaleConventions()};
};

}  // namespace vrx

#endif  // TESTS_SUPPORT_LIB_TEST_ENVIRONMENT_H_
