// A test in two processes on Windows: the program starts itself once more, for the running test alone.

#ifndef TESTS_TESTING_SECOND_PROCESS_H_
#define TESTS_TESTING_SECOND_PROCESS_H_

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

#include <vrxmath/platform/win32/win32.h>

namespace vrx::test {

/// Made at the beginning of a test. The second process runs the same test, up to the same meetings; the first one waits
/// for its end and fails with it.
class SecondProcess {
 public:
  /// Whether this process is the second one. To be asked for in fixtures, too.
  static bool IsRunning() { return std::getenv(kVariable) != nullptr; }

  /// `text` of the first process is the Text() of both.
  explicit SecondProcess(const std::string& text = "") : text_(text), isFirst_(!IsRunning()) {
    std::string first = std::to_string(::GetCurrentProcessId());
    if (!isFirst_) {
      const std::string given = std::getenv(kVariable);
      first = given.substr(0, given.find(' '));
      text_ = given.substr(given.find(' ') + 1);
    }
    came_[0] = ::CreateSemaphoreA(nullptr, 0, kMeetings, ("VrxMathTest1-" + first).c_str());
    came_[1] = ::CreateSemaphoreA(nullptr, 0, kMeetings, ("VrxMathTest2-" + first).c_str());
    if (isFirst_) Start(first + ' ' + text);
  }
  SecondProcess(const SecondProcess&) = delete;
  SecondProcess& operator=(const SecondProcess&) = delete;
  ~SecondProcess() {
    if (isFirst_) {
      DWORD status = 1;
      ::WaitForSingleObject(process_, kPatience);
      ::GetExitCodeProcess(process_, &status);
      EXPECT_EQ(status, 0u) << "in the second process";
      ::CloseHandle(process_);
    }
    for (const HANDLE semaphore : came_) ::CloseHandle(semaphore);
  }

  bool IsFirst() const { return isFirst_; }
  const std::string& Text() const { return text_; }

  /// Returns when both processes have come here.
  void Meet() {
    ::ReleaseSemaphore(came_[isFirst_ ? 0 : 1], 1, nullptr);
    const HANDLE ends[] = {came_[isFirst_ ? 1 : 0], process_};
    EXPECT_EQ(::WaitForMultipleObjects(isFirst_ ? 2 : 1, ends, FALSE, kPatience), WAIT_OBJECT_0)
        << "the other process did not come";
  }

 private:
  static constexpr const char* kVariable = "VRX_SECOND_PROCESS";
  static constexpr LONG kMeetings = 1000;
  static constexpr DWORD kPatience = 60'000;

  void Start(const std::string& variable) {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    wchar_t program[1024] = L"";
    ::GetModuleFileNameW(nullptr, program, std::size(program));
    const std::string filter = std::string(" --gtest_filter=") + test.test_suite_name() + '.' + test.name();
    std::wstring line = L"test" + std::wstring(filter.begin(), filter.end());
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    PROCESS_INFORMATION started = {};
    ::SetEnvironmentVariableA(kVariable, variable.c_str());
    EXPECT_TRUE(::CreateProcessW(program, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                                 &started));
    ::SetEnvironmentVariableA(kVariable, nullptr);
    ::CloseHandle(started.hThread);
    process_ = started.hProcess;
  }

  std::string text_;
  bool isFirst_;
  HANDLE came_[2] = {};  // how often each process came to a meeting in which the other has yet to see it
  HANDLE process_ = nullptr;
};

}  // namespace vrx::test

#endif  // TESTS_TESTING_SECOND_PROCESS_H_
