// CArrayVarex: the index-checked array that every collection and most records of the library are made of.
//
// An index error is a warning to the user, not an abort: the message box says "Index out of bounds in
// CArrayVarex" and the access carries on. It touches the array's own memory or a spare slot, never anything
// else:
//
//   size <= index < capacity   plain elements: the slot is there and is read or written
//   everywhere else            a spare slot with the element's default value stands in; what is written to
//                              it is lost
//
// A slot beyond the size holds no living object, so element types with members of their own always use the
// spare. A host that prefers an exception throws it from its message box handler.

#ifndef VRXMATH_FOUNDATION_CHECKED_ARRAY_H_
#define VRXMATH_FOUNDATION_CHECKED_ARRAY_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <type_traits>

#include <vrxmath/export.h>
#include <vrxmath/foundation/archive_field.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/platform/archive.h>
#include <vrxmath/platform/array.h>

namespace vrx {

template <class TYPE, class ARG_TYPE>
class CArrayVarex;
template <class TYPE, class ARG_TYPE>
inline constexpr bool kHasArchiveForm<CArrayVarex<TYPE, ARG_TYPE>> = kHasArchiveForm<TYPE>;

namespace foundation_internal {

/// Shows the index error. Kept out of line so that the accessors stay small.
VRX_API void ReportIndexError();

/// The calling thread's spare slot, with the default value. It is plain memory to the thread, which destroys nothing when it
/// ends: a host may have unloaded the library by then. What an element of an array's own holds is left behind, once for each
/// thread that had an index error.
template <class TYPE>
TYPE& SpareElement() {
  struct Slot {
    bool isMade;
    alignas(TYPE) std::byte memory[sizeof(TYPE)];
  };
  thread_local Slot slot;
  static_assert(std::is_trivially_destructible_v<Slot>);
  if (!slot.isMade) new (slot.memory) TYPE();
  TYPE& spare = *std::launder(reinterpret_cast<TYPE*>(slot.memory));
  if (slot.isMade) spare = TYPE();
  slot.isMade = true;
  return spare;
}

inline bool ElementsEqual(double a, double b) {
  return NearlyEqual(a, b);
}
template <class T>
bool ElementsEqual(const T& a, const T& b) {
  return a == b;
}

}  // namespace foundation_internal

/// A growable array with index-checked access. Copies are deep; equality compares sizes and then elements,
/// doubles by near-equality. See CArray for growth.
template <class TYPE, class ARG_TYPE = const TYPE&>
class CArrayVarex : public CArray<TYPE, ARG_TYPE> {
  using Base = CArray<TYPE, ARG_TYPE>;

 public:
  CArrayVarex() = default;
  CArrayVarex(const CArrayVarex& other) : Base() { this->AssignCopies(other); }
  CArrayVarex(CArrayVarex&& other) noexcept : Base() { this->SwapElements(other); }
  /// Copies the elements; the step of growth stays. Throws CMemoryException and what copying an element throws;
  /// the array is then unchanged.
  CArrayVarex& operator=(const CArrayVarex& other) {
    if (this != &other) this->AssignCopies(other);
    return *this;
  }
  /// Exchanges the elements.
  CArrayVarex& operator=(CArrayVarex&& other) noexcept {
    this->SwapElements(other);
    return *this;
  }
  ~CArrayVarex() override = default;

  /// True when there is an element `i`. One unsigned comparison: a negative index is out of bounds too.
  [[nodiscard]] bool HasIndex(std::ptrdiff_t i) const {
    return static_cast<std::size_t>(i) < static_cast<std::size_t>(this->size_);
  }

  /// Element `i`. Any index is safe: see the top of this file for what stands in beyond the size.
  const TYPE& GetAt(std::ptrdiff_t i) const { return HasIndex(i) ? this->data_[i] : BeyondBounds(i); }
  TYPE& ElementAt(std::ptrdiff_t i) { return HasIndex(i) ? this->data_[i] : BeyondBounds(i); }
  const TYPE& operator[](std::ptrdiff_t i) const { return GetAt(i); }
  TYPE& operator[](std::ptrdiff_t i) { return ElementAt(i); }
  void SetAt(std::ptrdiff_t i, ARG_TYPE value) { ElementAt(i) = value; }

  /// Assigns `value` to every element, in index order.
  void Fill(ARG_TYPE value) {
    const TYPE copy(value);  // `value` may be an element of this array
    for (TYPE& element : *this) element = copy;
  }

  bool operator==(const CArrayVarex& other) const {
    return this->size_ == other.size_ &&
           std::equal(this->begin(), this->end(), other.begin(),
                      [](const TYPE& a, const TYPE& b) { return foundation_internal::ElementsEqual(a, b); });
  }

  /// Archive form: the element count in the count encoding, then the elements: those with a plain archive form
  /// (kHasPlainArchiveForm) as their bytes in one block, texts, records and nested arrays one by one in forms of
  /// their own. Elements without one (kHasArchiveForm) raise CInvalidArgException: their bytes in memory are
  /// pointers, which mean nothing in an archive. Throws as CArchive does; when reading fails, the array is
  /// unchanged.
  void Serialize(CArchive& archive) override {
    if constexpr (kHasArchiveForm<TYPE>) {
      if (archive.IsStoring()) {
        archive.WriteCount(static_cast<uint32_t>(this->size_));
        SerializeElements(archive);
      } else {
        CArrayVarex loaded;
        loaded.SetSize(archive.ReadCheckedCount(MinArchiveBytes<TYPE>()));
        loaded.SerializeElements(archive);
        this->SwapElements(loaded);
      }
    } else {
      throw CInvalidArgException();
    }
  }

 private:
  void SerializeElements(CArchive& archive) {
    if constexpr (kHasPlainArchiveForm<TYPE>) {
      const std::span<TYPE> elements(this->data_, static_cast<std::size_t>(this->size_));
      archive.IsStoring() ? archive.Write(std::as_bytes(elements))
                          : archive.Read(std::as_writable_bytes(elements));
    } else {
      for (TYPE& element : *this) SerializeField(archive, element);
    }
  }

#if defined(__GNUC__)
  __attribute__((noinline, cold))
#endif
  TYPE&
  BeyondBounds(std::ptrdiff_t i) const {
    foundation_internal::ReportIndexError();
    if constexpr (std::is_trivially_copyable_v<TYPE>) {
      if (i >= 0 && i < this->capacity_) return this->data_[i];
    }
    return foundation_internal::SpareElement<TYPE>();
  }
};

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_CHECKED_ARRAY_H_
