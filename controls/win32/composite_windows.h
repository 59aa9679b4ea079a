// Controls that are made of others: exchange list, list editor, combo with columns.

#ifndef CONTROLS_WIN32_COMPOSITE_WINDOWS_H_
#define CONTROLS_WIN32_COMPOSITE_WINDOWS_H_

#include <array>
#include <vector>

#include "controls/layout/list_model.h"
#include "controls/win32/accessible.h"

namespace vrx::controls {

/// A window whose children fill it. Fonts, resolution, enabling, focus and name go on to them.
class CompositeWindow : public AccessibleWindow {
 protected:
  [[nodiscard]] bool IsContainer() const override { return true; }
  [[nodiscard]] long AccessibleRole() const override;
  /// The child that is read aloud by the control's name; null: each has its own.
  [[nodiscard]] virtual HWND NamedChild() const { return nullptr; }
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  /// Makes the children; they are laid out afterwards.
  virtual bool MakeChildren() = 0;
  virtual void LayOut(int width, int height) = 0;
  virtual LRESULT Command(int /*child*/, UINT /*code*/) { return 0; }
  HWND MakeChild(const wchar_t* name, DWORD style, int number, const wchar_t* text = L"");
  [[nodiscard]] int Scaled(int pixels) const { return ::MulDiv(pixels, Dpi(), 96); }

 private:
  bool Begin();
  void LayOutAll();
  void PassFont();
  void PassName();
  void Erase(HDC device) const;
};

class ExchangeWindow final : public CompositeWindow {
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  bool MakeChildren() override;
  void LayOut(int width, int height) override;
  LRESULT Command(int child, UINT code) override;
  CString AccessibleValue() override;
  LRESULT HandleEntries(UINT message, WPARAM wParam, LPARAM lParam, bool& isKnown);
  void Fill();
  void FillList(HWND list, const std::vector<int32_t>& entries);
  [[nodiscard]] static std::vector<int32_t> SelectedRows(HWND list);
  void AcceptDrag();
  void Step(int32_t step);

  struct Entry {
    CString text;
    LPARAM data = 0;
  };
  std::vector<Entry> entries_;
  ExchangeState state_;
  HWND available_ = nullptr, chosen_ = nullptr;
  std::array<HWND, 4> buttons_{};
};

class ListEditorWindow final : public CompositeWindow {
 public:
  /// The keys of the field on the entry that is edited.
  LRESULT FieldMessage(UINT message, WPARAM wParam, LPARAM lParam);

 private:
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  bool MakeChildren() override;
  void LayOut(int width, int height) override;
  LRESULT Command(int child, UINT code) override;
  CString AccessibleValue() override;
  HWND NamedChild() const override { return list_; }
  bool PressKey(WORD key);
  HWND BeginEdit(int32_t row);
  bool EndEdit(bool isTaken);
  void SetText(int32_t row, const wchar_t* text);
  void Press(int button);

  HWND list_ = nullptr, field_ = nullptr;
  int32_t edited_ = -1;
  bool isNew_ = false;  // the entry goes again when its first text is dropped
  std::array<HWND, 4> buttons_{};
};

class ComboWindow final : public CompositeWindow {
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  bool MakeChildren() override;
  void LayOut(int width, int height) override;
  LRESULT Command(int child, UINT code) override;
  CString AccessibleValue() override;
  HWND NamedChild() const override { return label_; }
  void DrawItem(const DRAWITEMSTRUCT& item);
  HWND label_ = nullptr;  // of no size: the system names a combo box after the text before it
  HWND combo_ = nullptr;
  int dropHeight_ = 200;
  std::vector<int> columns_;
};

}  // namespace vrx::controls

#endif  // CONTROLS_WIN32_COMPOSITE_WINDOWS_H_
