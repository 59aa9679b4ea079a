// The exported functions.

#include "controls/win32/composite_windows.h"
#include "controls/win32/list_window.h"
#include "controls/win32/painter.h"
#include "controls/win32/point_windows.h"
#include "controls/win32/still_windows.h"
#include "controls/win32/system_windows.h"
#include "controls/win32/tree_window.h"

using namespace vrx::controls;

namespace {

// A window may outlive the last handle that the host has of the library: the library stays.
HINSTANCE PinnedModule() {
  HMODULE module = nullptr;
  ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&PinnedModule), &module);
  return module;
}

}  // namespace

extern "C" BOOL __stdcall VrxRegisterControls(HINSTANCE instance) {
  const HINSTANCE module = PinnedModule();
  const HINSTANCE owner = instance != nullptr ? instance : module;
  const INITCOMMONCONTROLSEX common{sizeof common, ICC_TAB_CLASSES | ICC_STANDARD_CLASSES};
  ::InitCommonControlsEx(&common);
  const bool areThere = RegisterWindowClass<CheckListWindow>(owner, VRX_CHECK_LIST) &&
                        RegisterWindowClass<DragListWindow>(owner, VRX_DRAG_LIST) &&
                        RegisterWindowClass<ColorListWindow>(owner, VRX_COLOR_LIST) &&
                        RegisterWindowClass<PictureWindow>(owner, VRX_PICTURE) &&
                        RegisterWindowClass<ProgressWindow>(owner, VRX_PROGRESS) &&
                        RegisterWindowClass<SwatchWindow>(owner, VRX_SWATCH) &&
                        RegisterWindowClass<PlotWindow>(owner, VRX_PLOT) &&
                        RegisterWindowClass<PlaneWindow>(owner, VRX_PLANE) &&
                        RegisterWindowClass<LightnessWindow>(owner, VRX_LIGHTNESS) &&
                        RegisterWindowClass<CurvesWindow>(owner, VRX_CURVES) &&
                        RegisterWindowClass<AnglesWindow>(owner, VRX_ANGLES) &&
                        RegisterWindowClass<TrendWindow>(owner, VRX_TREND) &&
                        RegisterWindowClass<TreeWindow>(owner, VRX_TREE) &&
                        RegisterWindowClass<ExchangeWindow>(owner, VRX_EXCHANGE_LIST) &&
                        RegisterWindowClass<ListEditorWindow>(owner, VRX_LIST_EDITOR) &&
                        RegisterWindowClass<ComboWindow>(owner, VRX_COMBO) &&
                        RegisterWindowClass<NumericEditWindow>(owner, VRX_NUMERIC_EDIT, WC_EDITW) &&
                        RegisterWindowClass<ScrollEditWindow>(owner, VRX_SCROLL_EDIT, WC_EDITW) &&
                        RegisterWindowClass<TabWindow>(owner, VRX_TAB, WC_TABCONTROLW);
  return areThere ? TRUE : FALSE;
}

// The background and the margin are those of the control.
extern "C" BOOL __stdcall VrxDrawPlot(HDC device, const RECT* box, int dpi, const VRX_PLOT_DATA* data) {
  try {
    const auto lines = CopyPolylines(data);
    if (!lines || device == nullptr || box == nullptr || dpi < 0 || dpi > VRX_MOST_DPI) return FALSE;
    const int resolution = dpi > 0 ? dpi : ::GetDeviceCaps(device, LOGPIXELSX);
    Font font;
    font.MakeMessageFont(resolution);
    const Look look = LookOf(device, font.Get(), resolution);
    const Rect whole{0, 0, static_cast<double>(box->right - box->left),
                     static_cast<double>(box->bottom - box->top)};
    Picture picture;
    picture.Rectangle(whole, Role::kPaper);
    DrawPolylines(picture, whole.Inset(4 * look.scale), *lines, look);
    PaintPicture(device, picture, PaletteFor(device), font.Get(), {box->left, box->top}, false);
    return TRUE;
  } catch (const std::exception&) {
    return FALSE;
  }
}
