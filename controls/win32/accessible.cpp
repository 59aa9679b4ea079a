#include "controls/win32/accessible.h"

#include <atomic>
#include <initguid.h>
#include <oleacc.h>
#include <utility>

#include <vrxmath/foundation/string_numbers.h>

namespace vrx::controls {
namespace {

#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // of interfaces, which delete themselves

// Answers for the control, and by the system's object for the window where it does not say: place, parent.
class Accessible final : public IAccessible {
 public:
  Accessible(HWND window, AccessibleLink link, IAccessible* standard)
      : window_(window), link_(std::move(link)), standard_(standard) {}
  virtual ~Accessible() { standard_->Release(); }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    if (object == nullptr) return E_POINTER;
    const bool isKnown =
        IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch) || IsEqualIID(id, IID_IAccessible);
    // The windows of a container are found through the system's object.
    if (IsEqualIID(id, IID_IEnumVARIANT) && IsContainer()) return standard_->QueryInterface(id, object);
    *object = isKnown ? this : nullptr;
    if (isKnown) AddRef();
    return isKnown ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++count_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --count_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    return standard_->GetTypeInfoCount(count);
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override {
    return standard_->GetTypeInfo(index, locale, info);
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID locale,
                                          DISPID* ids) override {
    return standard_->GetIDsOfNames(id, names, count, locale, ids);
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return DISP_E_MEMBERNOTFOUND;
  }

  HRESULT STDMETHODCALLTYPE get_accParent(IDispatch** parent) override {
    return standard_->get_accParent(parent);
  }
  HRESULT STDMETHODCALLTYPE get_accChildCount(long* count) override {
    if (!IsAlive()) return CO_E_OBJNOTCONNECTED;
    if (IsContainer()) return standard_->get_accChildCount(count);
    *count = Source().PartCount();
    return S_OK;
  }
  // Parts have no objects of their own.
  HRESULT STDMETHODCALLTYPE get_accChild(VARIANT number, IDispatch** child) override {
    if (IsContainer()) return standard_->get_accChild(number, child);
    *child = nullptr;
    return S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE get_accName(VARIANT child, BSTR* name) override {
    int32_t part = 0;
    if (!Resolve(child, part)) return E_INVALIDARG;
    const CString own = part < 0 ? Source().AccessibleName() : Source().PartName(part);
    return part < 0 && own.IsEmpty() ? standard_->get_accName(child, name) : Give(own, name);
  }
  HRESULT STDMETHODCALLTYPE get_accValue(VARIANT child, BSTR* value) override {
    int32_t part = 0;
    if (!Resolve(child, part)) return E_INVALIDARG;
    return Give(part < 0 ? Source().AccessibleValue() : CString(), value);
  }
  HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT, BSTR* text) override { return Give(CString(), text); }
  HRESULT STDMETHODCALLTYPE get_accRole(VARIANT child, VARIANT* role) override {
    int32_t part = 0;
    if (!Resolve(child, part)) return E_INVALIDARG;
    return Give(part < 0 ? Source().AccessibleRole() : Source().PartRole(), role);
  }
  HRESULT STDMETHODCALLTYPE get_accState(VARIANT child, VARIANT* state) override {
    int32_t part = 0;
    if (!Resolve(child, part)) return E_INVALIDARG;
    if (part < 0) return standard_->get_accState(child, state);
    return Give(Source().PartState(part), state);
  }
  HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT, BSTR* text) override { return Give(CString(), text); }
  HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR* file, VARIANT, long*) override {
    return Give(CString(), file);
  }
  HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT child, BSTR* text) override {
    return standard_->get_accKeyboardShortcut(child, text);
  }
  HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT* child) override {
    if (!IsAlive()) return CO_E_OBJNOTCONNECTED;
    if (IsContainer()) return standard_->get_accFocus(child);
    if (::GetFocus() != window_) return Empty(child);
    return Give(Source().FocusedPart() + 1L, child);
  }
  HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT* child) override { return get_accFocus(child); }
  HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT child, BSTR* text) override {
    int32_t part = 0;
    if (!Resolve(child, part)) return E_INVALIDARG;
    return Give(part < 0 ? CString() : ControlString(static_cast<uint32_t>(ControlText::kSelect)), text);
  }
  HRESULT STDMETHODCALLTYPE accSelect(long, VARIANT child) override {
    int32_t part = 0;
    if (!Resolve(child, part)) return E_INVALIDARG;
    ::SetFocus(window_);
    if (part >= 0) Source().SelectPart(part);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE accLocation(long* left, long* top, long* width, long* height,
                                        VARIANT child) override {
    int32_t part = 0;
    if (!Resolve(child, part)) return E_INVALIDARG;
    if (part < 0) return standard_->accLocation(left, top, width, height, child);
    RECT box = Source().PartRect(part);
    ::MapWindowPoints(window_, nullptr, reinterpret_cast<POINT*>(&box), 2);
    *left = box.left, *top = box.top, *width = box.right - box.left, *height = box.bottom - box.top;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE accNavigate(long direction, VARIANT start, VARIANT* end) override {
    int32_t part = 0;
    if (IsContainer()) return standard_->accNavigate(direction, start, end);
    if (!Resolve(start, part)) return E_INVALIDARG;
    const int32_t last = Source().PartCount() - 1;
    switch (direction) {
      case NAVDIR_FIRSTCHILD:
        part = 0;
        break;
      case NAVDIR_LASTCHILD:
        part = last;
        break;
      case NAVDIR_NEXT:
      case NAVDIR_DOWN:
        if (part < 0) return standard_->accNavigate(direction, start, end);
        ++part;
        break;
      case NAVDIR_PREVIOUS:
      case NAVDIR_UP:
        if (part < 0) return standard_->accNavigate(direction, start, end);
        --part;
        break;
      default:
        return standard_->accNavigate(direction, start, end);
    }
    return part < 0 || part > last ? Empty(end) : Give(part + 1L, end);
  }
  HRESULT STDMETHODCALLTYPE accHitTest(long x, long y, VARIANT* child) override {
    if (!IsAlive()) return CO_E_OBJNOTCONNECTED;
    if (IsContainer()) return standard_->accHitTest(x, y, child);
    POINT point{x, y};
    ::MapWindowPoints(nullptr, window_, &point, 1);
    return Give(Source().PartAt(point) + 1L, child);
  }
  HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT child) override {
    int32_t part = 0;
    if (!Resolve(child, part)) return E_INVALIDARG;
    if (part < 0) return DISP_E_MEMBERNOTFOUND;
    ::SetFocus(window_);
    Source().SelectPart(part);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_accName(VARIANT, BSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_accValue(VARIANT child, BSTR value) override {
    return standard_->put_accValue(child, value);
  }

 private:
  [[nodiscard]] bool IsAlive() const { return *link_ != nullptr; }
  [[nodiscard]] bool IsContainer() const { return IsAlive() && Source().IsContainer(); }
  [[nodiscard]] AccessibleSource& Source() const { return **link_; }

  // The part that a child number means, -1 for the control itself. False for none.
  bool Resolve(const VARIANT& child, int32_t& part) const {
    if (!IsAlive() || child.vt != VT_I4) return false;
    part = static_cast<int32_t>(child.lVal) - 1;
    return part >= -1 && part < Source().PartCount();
  }
  static HRESULT Give(const CString& text, BSTR* result) {
    *result =
        text.IsEmpty() ? nullptr : ::SysAllocStringLen(SystemText(text), static_cast<UINT>(text.GetLength()));
    return text.IsEmpty() ? S_FALSE : S_OK;
  }
  static HRESULT Give(long number, VARIANT* result) {
    result->vt = VT_I4;
    result->lVal = number;
    return S_OK;
  }
  static HRESULT Empty(VARIANT* result) {
    result->vt = VT_EMPTY;
    return S_FALSE;
  }

  std::atomic<ULONG> count_{1};
  HWND window_;
  AccessibleLink link_;
  IAccessible* standard_;
};

}  // namespace

LRESULT AnswerGetObject(HWND window, const AccessibleLink& link, WPARAM wParam) {
  IAccessible* standard = nullptr;
  if (FAILED(::CreateStdAccessibleObject(window, OBJID_CLIENT, IID_IAccessible,
                                         reinterpret_cast<void**>(&standard))))
    return 0;
  auto* object = new Accessible(window, link, standard);
  const LRESULT result = ::LresultFromObject(IID_IAccessible, wParam, object);
  object->Release();
  return result;
}

}  // namespace vrx::controls
