// A platform of the tests' own, in place of the system's for the length of a test.

#ifndef TESTS_SUPPORT_TEST_ENVIRONMENT_H_
#define TESTS_SUPPORT_TEST_ENVIRONMENT_H_

#include <cstdlib>
#include <functional>
#include <utility>
#include <vector>

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <vrxmath/platform/memory/fake_clock.h>
#include <vrxmath/platform/memory/memory_settings_store.h>
#include <vrxmath/platform/posix/locale_texts.h>
#include <vrxmath/support/diagnostic_log.h>

#include "tests/testing/messages.h"
#include "tests/testing/temporary_folder.h"

namespace vrx {

#if !defined(_WIN32)
/// Runs `body` in a process of its own; false when it ends other than by returning true.
inline bool RunInChild(const std::function<bool()>& body) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(body() ? 0 : 1);
  int status = 0;
  return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
#endif

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
  test::MessageRecorder messages;

 private:
  FixedLocale cLocale_{LocaleConventions()};
};

}  // namespace vrx

#endif  // TESTS_SUPPORT_TEST_ENVIRONMENT_H_
