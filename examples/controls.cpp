// The gallery: every control with real data.
//
//   controls.exe FOLDER [DPI [FILE.bmp]]   FOLDER holds chart_ohta.csv and chart_average.csv; with a file, a picture of the
//                                          window is written and the program ends

#include "controls_gallery.h"

#include <cstdlib>
#include <shellapi.h>

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int) {
  int count = 0;
  wchar_t** arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  const wchar_t* folder = count > 1 ? arguments[1] : L"examples";
  const int dpi = count > 2 ? static_cast<int>(std::wcstol(arguments[2], nullptr, 10)) : 96;
  const gallery::Gallery shown = gallery::Open(folder, dpi >= 96 && dpi <= 480 ? dpi : 96, 0);
  if (shown.window == nullptr) {
    ::MessageBoxW(nullptr, L"There are no charts in the folder.", L"Controls", MB_ICONEXCLAMATION);
    return 1;
  }
  if (count > 3) {
    gallery::HandleMessages();
    return gallery::SaveScreenshot(shown.window, arguments[3]) ? 0 : 1;
  }
  MSG message{};
  while (::GetMessageW(&message, nullptr, 0, 0) > 0) gallery::Dispatch(message);
  ::LocalFree(arguments);
  return 0;
}
