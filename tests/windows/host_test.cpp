// A host without the library's headers: loads vrxmath.dll, calls it by the numbers of exports/vrxmath.txt, and looks at
// its resources from outside.
//
//     host_test vrxmath.dll SOURCE_DIR

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>
#include <windows.h>

namespace {

int failures = 0;

#define CHECK(condition)                                          \
  do {                                                            \
    if (!(condition)) {                                           \
      std::printf("%s:%d: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                 \
    }                                                             \
  } while (0)

using Text = std::u16string_view;
using MessageHandler = void (*)(Text, std::uint32_t, void*);

struct White {
  double X, Y, Z;
};
struct Curves {
  std::span<const double> samples;
  std::size_t stride;
};

constexpr int kD65 = 2, kNoIlluminant = 30;

std::map<std::string, unsigned> numbers;

void ReadNumbers(const std::string& path) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    const std::size_t tab = line.find('\t');
    if (tab == std::string::npos || line[0] == '#' || line.ends_with("\tretired")) continue;
    numbers[line.substr(tab + 1)] = static_cast<unsigned>(std::stoul(line));
  }
}

// The function of the first signature that begins so.
template <class FUNCTION>
FUNCTION* Import(HMODULE library, const std::string& beginning) {
  const auto found = numbers.lower_bound(beginning);
  if (found == numbers.end() || !found->first.starts_with(beginning)) {
    std::printf("no number for %s\n", beginning.c_str());
    std::exit(1);
  }
  const FARPROC function = ::GetProcAddress(library, MAKEINTRESOURCEA(found->second));
  CHECK(function != nullptr);
  return reinterpret_cast<FUNCTION*>(reinterpret_cast<void*>(function));
}

void CheckCalls(HMODULE library) {
  White white = {};
  CHECK(Import<bool(int, int, White&)>(library, "vrx::FindWhite(")(kD65, 0, white));
  CHECK(white.X == 95.047 && white.Y == 100.0 && white.Z == 108.883);
  CHECK(Import<Text(std::uint32_t)>(library, "vrx::FindString(")(256) ==
        u"Index out of bounds in CArrayVarex");
  CHECK(::GetProcAddress(library, "vrx_version") == nullptr);

  const Curves noCurves = {{}, 39};
  bool caught = false;
  try {
    Import<std::size_t(const Curves&)>(library,
                                       "vrx::CurveCount(vrx::CurveBatchOf<double> const&)")(noCurves);
  } catch (const std::exception& error) {
    caught = std::strlen(error.what()) > 0;
  }
  CHECK(caught);
}

// A setting written and read back in a registry of the test's own.
void CheckSettings(HMODULE library) {
  HKEY own = nullptr, software = nullptr;
  ::RegCreateKeyW(HKEY_CURRENT_USER, L"VrxMathHostTest", &own);
  ::RegCreateKeyW(own, L"software", &software);
  ::RegOverridePredefKey(HKEY_CURRENT_USER, own);
  CHECK(Import<bool(Text, Text, std::int32_t)>(library, "vrx::SetSettingInt(")(u"Host", u"Mode", -7));
  CHECK(Import<std::int32_t(Text, Text, std::int32_t)>(library, "vrx::GetSettingInt(")(u"Host", u"Mode", 0) ==
        -7);
  ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
  DWORD value = 0, bytes = sizeof value;
  CHECK(::RegGetValueW(own, L"software\\Ostrel\\Pemble\\Host", L"Mode", RRF_RT_REG_DWORD, nullptr, &value,
                       &bytes) == ERROR_SUCCESS);
  CHECK(static_cast<std::int32_t>(value) == -7);
  ::RegCloseKey(software);
  ::RegCloseKey(own);
  ::RegDeleteTreeW(HKEY_CURRENT_USER, L"VrxMathHostTest");
}

// A desktop of the test's own for the box: the usual one belongs to the program that was first on it, and may have lost its
// screen with that.
void UseOwnDesktop() {
  const HDESK desktop = ::CreateDesktopW(L"vrx_host", nullptr, nullptr, 0, GENERIC_ALL, nullptr);
  CHECK(desktop != nullptr && ::SetThreadDesktop(desktop));
}

std::wstring boxText;
HWND box = nullptr;

// Reads the box, whose loop runs this, and presses its button.
void CALLBACK AnswerBox(HWND, UINT, UINT_PTR timer, DWORD) {
  constexpr int kLabel = 0xFFFF;
  wchar_t text[100] = L"";
  ::GetDlgItemTextW(box, kLabel, text, std::size(text));
  boxText = text;
  ::KillTimer(nullptr, timer);
  ::PostMessageW(box, WM_COMMAND, IDOK, 0);
}

// Waits for a box to appear. Its texts need not be there yet.
LRESULT CALLBACK WatchForBox(int code, WPARAM window, LPARAM more) {
  if (code == HCBT_ACTIVATE && box == nullptr) {
    box = reinterpret_cast<HWND>(window);
    ::SetTimer(nullptr, 0, 50, AnswerBox);
  }
  return ::CallNextHookEx(nullptr, code, window, more);
}

void CountMessage(Text, std::uint32_t, void* count) {
  ++*static_cast<int*>(count);
}

void CheckMessages(HMODULE library) {
  const auto table = Import<const double*(int, int)>(library, "vrx::WeightTable(");
  const HHOOK hook = ::SetWindowsHookExW(WH_CBT, WatchForBox, nullptr, ::GetCurrentThreadId());
  CHECK(table(kNoIlluminant, 0) == nullptr);
  ::UnhookWindowsHookEx(hook);
  CHECK(boxText == L"Index out of bounds in CArrayVarex");

  int count = 0;
  const auto setHandler = Import<void(MessageHandler, void*)>(library, "vrx::SetMessageBoxHandler(");
  setHandler(CountMessage, &count);
  for (int i = 0; i < 1'000'000; ++i) table(kNoIlluminant + i % 5, 0);
  setHandler(nullptr, nullptr);
  CHECK(count == 1'000'000);
}

// The doubles of a weighting table's text: three columns behind the wavelength, then the white point.
std::vector<double> ReadTable(const std::filesystem::path& path) {
  std::vector<double> columns[3];
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    std::istringstream cells(line);
    std::string label;
    double x, y, z;
    if (line.starts_with("#") || !(cells >> label >> x >> y >> z)) continue;
    columns[0].push_back(x), columns[1].push_back(y), columns[2].push_back(z);
  }
  std::vector<double> table;
  for (const auto& column : columns) table.insert(table.end(), column.begin(), column.end() - 1);
  for (const auto& column : columns) table.push_back(column.back());
  return table;
}

BOOL CALLBACK CountResource(HMODULE, LPCWSTR, LPWSTR, LONG_PTR count) {
  ++*reinterpret_cast<int*>(count);
  return TRUE;
}

// The resources of the DLL are those of the source, and no others; of texts likewise.
void CheckTables(HMODULE library, const std::string& source) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(source + "/resources/weights")) {
    const HRSRC resource = ::FindResourceW(library, entry.path().stem().c_str(), L"PWD");
    const void* bytes = ::LockResource(::LoadResource(library, resource));
    const std::vector<double> expected = ReadTable(entry.path());
    CHECK(expected.size() == 123 && ::SizeofResource(library, resource) == 984);
    CHECK(reinterpret_cast<std::uintptr_t>(bytes) % 8 == 0);
    CHECK(std::memcmp(bytes, expected.data(), 984) == 0);
    ++count;
  }
  int found = 0;
  ::EnumResourceNamesW(library, L"PWD", CountResource, reinterpret_cast<LONG_PTR>(&found));
  CHECK(count > 0 && found == count);
}

// A text of the table's source, in which "\n" spells a line end.
std::wstring Wide(std::string utf8) {
  for (std::size_t at; (at = utf8.find("\\n")) != std::string::npos;) utf8.replace(at, 2, "\n");
  std::wstring wide(utf8.size(), L'\0');
  const int length = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()),
                                           wide.data(), static_cast<int>(wide.size()));
  return wide.substr(0, static_cast<std::size_t>(length));
}

void CheckTexts(HMODULE library, const std::string& source) {
  std::ifstream file(source + "/resources/strings.tsv");
  int count = 0;
  for (std::string line; std::getline(file, line);) {
    const std::size_t tab = line.find('\t');
    if (tab == std::string::npos || line[0] == '#') continue;
    wchar_t text[1000] = L"";
    ::LoadStringW(library, static_cast<UINT>(std::stoul(line)), text, std::size(text));
    CHECK(text == Wide(line.substr(tab + 1)));
    ++count;
  }
  int found = 0;
  for (UINT number = 0; number <= 0xFFFF; ++number) {
    wchar_t unit[2] = L"";
    found += ::LoadStringW(library, number, unit, std::size(unit)) > 0;
  }
  CHECK(count > 290 && found == count);
}

// Loads and unloads while a thread lives on that has called into the library; with it goes the DLL of the C interface.
// c_host_test does so without a runtime for C++ of its own.
void CheckUnloading(const char* path) {
  std::string cPath = path;
  cPath.insert(cPath.rfind(".dll"), "_c");
  for (int i = 0; i < 20; ++i) {
    const HMODULE library = ::LoadLibraryA(path);
    HANDLE called = ::CreateEventW(nullptr, TRUE, FALSE, nullptr),
           unloaded = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread thread([&] {
      White white = {};
      CHECK(Import<bool(int, int, White&)>(library, "vrx::FindWhite(")(kD65, 1, white));
      ::SetEvent(called);
      ::WaitForSingleObject(unloaded, INFINITE);
    });
    ::WaitForSingleObject(called, INFINITE);
    const HMODULE cLibrary = ::LoadLibraryA(cPath.c_str());
    CHECK(::GetProcAddress(cLibrary, "vrx_version") != nullptr);
    CHECK(::FreeLibrary(cLibrary) && ::FreeLibrary(library));
    ::SetEvent(unloaded);
    thread.join();
    ::CloseHandle(called);
    ::CloseHandle(unloaded);
  }
  CHECK(::GetModuleHandleW(L"vrxmath.dll") == nullptr && ::GetModuleHandleW(L"vrxmath_c.dll") == nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string source = argv[2];
  ReadNumbers(source + "/exports/vrxmath.txt");
  const HMODULE library = ::LoadLibraryA(argv[1]);
  CHECK(library != nullptr);
  if (library == nullptr) return 1;
  UseOwnDesktop();
  CheckCalls(library);
  CheckSettings(library);
  CheckTables(library, source);
  CheckTexts(library, source);
  CheckMessages(library);
  ::FreeLibrary(library);
  CheckUnloading(argv[1]);
  std::printf(failures == 0 ? "passed\n" : "failed\n");
  return failures != 0;
}
