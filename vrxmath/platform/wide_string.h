// The wide string: text in 16-bit units on every platform.
//
// A `CString` is a single owning pointer (null when empty), so that an array may move it bitwise. Texts cross
// the library's border as UTF-8 (`FromUtf8`, `ToUtf8`) or as 16-bit units (`std::u16string_view`).

#ifndef VRXMATH_PLATFORM_WIDE_STRING_H_
#define VRXMATH_PLATFORM_WIDE_STRING_H_

#include <compare>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include <vrxmath/export.h>

namespace vrx {

/// One unit of text: 16 bits everywhere, whatever the platform calls a wide character.
using WideChar = char16_t;
using WideView = std::u16string_view;

/// An owned text of 16-bit units. Comparisons are exact: unit by unit, case-sensitive.
class VRX_API CString {
 public:
  using MovesBitwise = CString;

  CString() = default;
  CString(const WideChar* text);  // NOLINT(google-explicit-constructor): null is the empty text
  CString(WideView text);         // NOLINT(google-explicit-constructor)
  CString(const CString& other);
  CString(CString&& other) noexcept : block_(other.block_) { other.block_ = nullptr; }
  ~CString();
  CString& operator=(const CString& other);
  CString& operator=(CString&& other) noexcept;

  /// The text in units, without its terminator. Valid until the string changes.
  WideView View() const { return block_ ? WideView(block_->Text(), block_->length) : WideView(); }
  operator WideView() const { return View(); }  // NOLINT(google-explicit-constructor)

  /// The text with a terminating zero; never null.
  [[nodiscard]] const WideChar* CStr() const { return block_ ? block_->Text() : u""; }

  [[nodiscard]] int32_t GetLength() const { return block_ ? static_cast<int32_t>(block_->length) : 0; }
  [[nodiscard]] bool IsEmpty() const { return block_ == nullptr; }
  /// Unit `i`; 0 outside the text.
  WideChar GetAt(std::ptrdiff_t i) const;
  /// Replaces unit `i`; nothing happens outside the text.
  void SetAt(std::ptrdiff_t i, WideChar unit);
  void Empty();

  CString& operator+=(WideView text);
  CString& operator+=(WideChar unit) { return *this += WideView(&unit, 1); }

  /// Makes a text of UTF-8. Each byte that is not part of valid UTF-8 becomes U+FFFD. Throws CMemoryException, as
  /// everything here that makes or lengthens a text.
  [[nodiscard]] static CString FromUtf8(std::string_view utf8);
  /// The text as UTF-8. A lone surrogate becomes U+FFFD.
  [[nodiscard]] std::string ToUtf8() const;

  /// String `number` of the library's string table; empty when there is none.
  [[nodiscard]] static CString Load(uint32_t number);

  friend bool operator==(const CString& a, const CString& b) { return a.View() == b.View(); }
  friend bool operator==(const CString& a, WideView b) { return a.View() == b; }
  friend bool operator==(const CString& a, const WideChar* b) {
    return a.View() == (b ? WideView(b) : WideView());
  }
  friend auto operator<=>(const CString& a, const CString& b) { return a.View() <=> b.View(); }

 private:
  // Header of the heap block; the units and a terminating zero follow it.
  struct Block {
    uint32_t length;
    uint32_t capacity;
    WideChar* Text() { return reinterpret_cast<WideChar*>(this + 1); }
    const WideChar* Text() const { return reinterpret_cast<const WideChar*>(this + 1); }
  };
  [[nodiscard]] static Block* Allocate(std::size_t capacity);
  void Assign(WideView text);

  Block* block_ = nullptr;
};

/// Fills the "%s" fields of `pattern` with `texts`, in order. "%%" gives "%"; a field without a text stays
/// empty.
[[nodiscard]] VRX_API CString FillPattern(WideView pattern, std::initializer_list<WideView> texts);

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_WIDE_STRING_H_
