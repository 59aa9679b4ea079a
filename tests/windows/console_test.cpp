// The tool on a console: what a user reads there, in any language, and the console as it was before.

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <windows.h>

#include "tests/testing/temporary_folder.h"

namespace {

/// A console of the test's own, which is read as a user reads it.
class Console : public testing::Test {
 protected:
  Console() {
    ::FreeConsole();
    ::AllocConsole();
    in_ = Open(L"CONIN$"), out_ = Open(L"CONOUT$");
  }
  ~Console() override {
    for (const HANDLE handle : {in_, out_}) ::CloseHandle(handle);
  }

  // Runs vrx with the console as all its streams, and waits for its end.
  void Run(const std::wstring& arguments) {
    STARTUPINFOW start = {};
    start.cb = sizeof start, start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = in_, start.hStdOutput = start.hStdError = out_;
    std::wstring line = L"\"" VRX_TOOL L"\" " + arguments;
    PROCESS_INFORMATION process = {};
    ASSERT_TRUE(::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                                 &process));
    EXPECT_EQ(::WaitForSingleObject(process.hProcess, 60'000), WAIT_OBJECT_0);
    ::CloseHandle(process.hProcess), ::CloseHandle(process.hThread);
  }

  // The first 40 lines, without the spaces behind them.
  std::wstring Shown() const {
    std::wstring text;
    for (SHORT y = 0; y < 40; ++y) {
      wchar_t line[80];
      DWORD count = 0;
      ::ReadConsoleOutputCharacterW(out_, line, 80, {0, y}, &count);
      while (count > 0 && line[count - 1] == L' ') --count;
      text.append(line, count).append(1, L'\n');
    }
    return text;
  }

 private:
  static HANDLE Open(const wchar_t* name) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    return ::CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                         OPEN_EXISTING, 0, nullptr);
  }

  HANDLE in_, out_;
};

TEST_F(Console, ShowsEveryLanguageAndIsLeftAsItWas) {
  ::SetEnvironmentVariableW(L"NO_COLOR", L"1");
  ::SetConsoleOutputCP(437);
  const vrx::test::TemporaryFolder folder;
  const std::string file = folder.Write("in.csv", "id,L,a,b\n\xC3\x9F\xC3\xA4\xD0\x96,50,1,2\n");
  Run(L"color \"" + vrx::test::Utf8Path(file).wstring() + L"\" --illuminants D65");
  Run(L"color \"\u00DF\u0416.csv\"");
  Run(L"swatch --help");
  const std::wstring shown = Shown();
  EXPECT_NE(shown.find(L"\n\u00DF\u00E4\u0416 "), std::wstring::npos) << "results";
  EXPECT_NE(shown.find(L"vrx: \u00DF\u0416.csv: "), std::wstring::npos) << "messages";
  EXPECT_EQ(std::ranges::count(shown, L'\uFFFD'), 0);
  EXPECT_EQ(::GetConsoleOutputCP(), 437u);
}

}  // namespace
