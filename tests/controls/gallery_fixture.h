// A gallery for each test, which starts from the same state.

#ifndef TESTS_CONTROLS_GALLERY_FIXTURE_H_
#define TESTS_CONTROLS_GALLERY_FIXTURE_H_

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "screen.h"

namespace vrx::controls {

using gallery::Gallery;
using namespace vrx::test;

inline Gallery OpenGallery(int dpi = 96, DWORD exStyle = 0) {
  const std::wstring folder(VRX_SOURCE_DIR L"/examples");
  Gallery shown = gallery::Open(folder.c_str(), dpi, exStyle);
  ::SetForegroundWindow(shown.window);
  gallery::HandleMessages();
  return shown;
}

class Controls : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(g.window, nullptr);
    proc_ = reinterpret_cast<WNDPROC>(
        ::SetWindowLongPtrW(g.window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Watch)));
    commands.clear();
    points.clear();
    asked = 0;
  }
  void TearDown() override {
    ::DestroyWindow(g.window);
    gallery::HandleMessages();
  }

  // Notes the messages of the controls to their parent.
  static LRESULT CALLBACK Watch(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND && HIWORD(wParam) != EN_UPDATE) commands.push_back(HIWORD(wParam));
    const auto* header = reinterpret_cast<const NMHDR*>(lParam);
    if (message == WM_NOTIFY && header->code == VRXN_POINT) {
      points.push_back(reinterpret_cast<const VRX_POINT_NOTIFY*>(lParam)->index);
    }
    if (message == WM_NOTIFY && header->code == VRXN_GETROW) {
      auto* row = reinterpret_cast<VRX_GETROW*>(lParam);
      ++asked;
      ::wsprintfW(row->text, L"row %d", row->row);
    }
    return ::CallWindowProcW(proc_, window, message, wParam, lParam);
  }
  static bool WasTold(UINT code) { return std::ranges::find(commands, code) != commands.end(); }

  // The middle of a list's row, `x` from its left edge.
  static POINT RowPoint(const ListControl& list, int row, LONG x = 60) {
    RECT box{};
    list.Send(LB_GETITEMRECT, static_cast<WPARAM>(row), &box);
    return {x, (box.top + box.bottom) / 2};
  }

  // The middle of a tab.
  [[nodiscard]] POINT TabPoint(int tab) const {
    RECT box{};
    g.tabs.Send(TCM_GETITEMRECT, static_cast<WPARAM>(tab), &box);
    return {(box.left + box.right) / 2, (box.top + box.bottom) / 2};
  }
  // The children of the gallery.
  [[nodiscard]] std::vector<HWND> Windows() const {
    std::vector<HWND> windows;
    for (HWND child = ::GetWindow(g.window, GW_CHILD); child != nullptr;
         child = ::GetWindow(child, GW_HWNDNEXT))
      windows.push_back(child);
    return windows;
  }

  Gallery g = OpenGallery();
  static inline std::vector<UINT> commands;
  static inline std::vector<int> points;
  static inline int asked;

 private:
  static inline WNDPROC proc_;
};

}  // namespace vrx::controls

#endif  // TESTS_CONTROLS_GALLERY_FIXTURE_H_
