// The dynamic array below every container of the library.
//
// It owns its elements in one block and moves them bitwise when the block grows, so an element type must
// survive a bitwise move (kMovesBitwise): nested arrays and strings do, because each owns its memory through
// one plain pointer. The indexed accessors, with the index check, are those of `CArrayVarex`
// (foundation/checked_array.h).

#ifndef VRXMATH_PLATFORM_ARRAY_H_
#define VRXMATH_PLATFORM_ARRAY_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/object.h>

namespace vrx {

/// True for types whose values may be moved by copying their bytes and forgetting the old place: those that are
/// trivially copyable, and those that say so by a member type `MovesBitwise` naming themselves. They own
/// memory through plain pointers at most, and nothing points into them. A class derived from such a one is one
/// too unless it adds data; then it has to say so itself.
template <class T>
inline constexpr bool kMovesBitwise = std::is_trivially_copyable_v<T>;
template <class T>
requires requires {
  typename T::MovesBitwise;
}
inline constexpr bool kMovesBitwise<T> =
    std::is_base_of_v<typename T::MovesBitwise, T> && sizeof(T) == sizeof(typename T::MovesBitwise);

/// A growable array of `TYPE`; `ARG_TYPE` is how a value is handed in. Sizes are signed 32-bit counts.
/// One thread at a time.
template <class TYPE, class ARG_TYPE = const TYPE&>
class CArray : public CObject {
 public:
  using MovesBitwise = CArray;

  CArray() = default;
  CArray(const CArray&) = delete;
  CArray& operator=(const CArray&) = delete;
  ~CArray() override { FreeBuffer(); }

  [[nodiscard]] int32_t GetSize() const { return size_; }
  [[nodiscard]] int32_t GetCount() const { return size_; }
  [[nodiscard]] bool IsEmpty() const { return size_ == 0; }
  /// Slots that the buffer has room for.
  [[nodiscard]] int32_t GetCapacity() const { return capacity_; }

  /// The first element, for code that has checked the size; null when nothing is allocated.
  TYPE* GetData() { return data_; }
  const TYPE* GetData() const { return data_; }

  // Standard iteration; an iterator is a pointer and holds until the size changes.
  TYPE* begin() { return data_; }
  TYPE* end() { return data_ + size_; }
  const TYPE* begin() const { return data_; }
  const TYPE* end() const { return data_ + size_; }

  /// Makes the array `newSize` elements long. New elements are zeroed, then default-constructed; surplus ones
  /// are destroyed in index order. A `growBy` of 0 or more becomes the step by which the buffer grows (0: an
  /// eighth of the size, at least 4 and at most 1024 slots). A size of 0 frees the buffer. Throws
  /// CInvalidArgException for a negative size or a capacity beyond 31 bits, CMemoryException when memory runs
  /// out, and what an element's constructor throws; the elements are then unchanged.
  void SetSize(int32_t newSize, int32_t growBy = -1) {
    if (newSize < 0) throw CInvalidArgException();
    if (growBy >= 0) growBy_ = growBy;
    if (newSize == 0) return FreeBuffer();
    EnsureCapacity(newSize);
    if (newSize < size_) {
      DestroyFrom(newSize);
    } else {
      ConstructUpTo(newSize);
    }
  }

  /// Destroys all elements and frees the buffer.
  void RemoveAll() { SetSize(0); }

  /// Appends a copy of `value` and returns its index.
  int32_t Add(ARG_TYPE value) {
    InsertAt(size_, value);
    return size_ - 1;
  }

  /// Puts `count` copies of `value` before element `i`; beyond the end the array first grows to `i` elements.
  /// Throws CInvalidArgException when `i` is negative, `count` is not positive, or the new size exceeds 31
  /// bits, otherwise as SetSize does; the elements are then unchanged.
  void InsertAt(int32_t i, ARG_TYPE value, int32_t count = 1) {
    if (i < 0 || count <= 0 || count > std::numeric_limits<int32_t>::max() - std::max(i, size_)) {
      throw CInvalidArgException();
    }
    const TYPE copy(value);  // `value` may be an element of this array
    const int32_t oldSize = size_;
    const int32_t tail = std::max(oldSize - i, 0);
    EnsureCapacity(std::max(i, oldSize) + count);
    if (i > oldSize) ConstructUpTo(i);
    MoveBytes(data_ + i + count, data_ + i, tail);
    try {
      std::uninitialized_fill_n(data_ + i, count, copy);
    } catch (...) {
      MoveBytes(data_ + i, data_ + i + count, tail);
      DestroyFrom(oldSize);
      throw;
    }
    size_ += count;
  }

  /// Removes `count` elements from `i` on. Throws CInvalidArgException when they do not all exist.
  void RemoveAt(int32_t i, int32_t count = 1) {
    if (i < 0 || count < 0 || i > size_ || count > size_ - i) throw CInvalidArgException();
    std::destroy_n(data_ + i, count);
    MoveBytes(data_ + i, data_ + i + count, size_ - i - count);
    size_ -= count;
  }

 protected:
  /// Makes the elements copies of those of `other`, another array; the step of growth stays. When memory runs
  /// out or an element cannot be copied, nothing changes: elements whose copy may fail are copied into a buffer
  /// of their own first.
  void AssignCopies(const CArray& other) {
    if constexpr (std::is_trivially_copyable_v<TYPE>) {
      SetSize(other.size_);
      std::copy(other.begin(), other.end(), begin());
    } else {
      CArray copies;
      if (other.size_ > 0) {
        copies.Reallocate(CapacityFor(other.size_));
        std::uninitialized_copy(other.begin(), other.end(), copies.data_);
        copies.size_ = other.size_;
      }
      SwapElements(copies);
    }
  }

  /// Exchanges elements and buffers; each array keeps its step of growth.
  void SwapElements(CArray& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

  TYPE* data_ = nullptr;
  int32_t size_ = 0;
  int32_t capacity_ = 0;
  int32_t growBy_ = 0;

 private:
  static constexpr int32_t kMinStep = 4;
  static constexpr int32_t kMaxStep = 1024;

  static void MoveBytes(TYPE* to, const TYPE* from, int32_t count) {
    if (count > 0) {
      std::memmove(static_cast<void*>(to), static_cast<const void*>(from),
                   static_cast<std::size_t>(count) * sizeof(TYPE));
    }
  }

  void EnsureCapacity(int32_t newSize) {
    if (newSize > capacity_) Reallocate(CapacityFor(newSize));
  }

  // The capacity of the buffer after growing to `newSize`.
  int32_t CapacityFor(int32_t newSize) const {
    if (newSize <= capacity_) return capacity_;
    return data_ == nullptr ? std::max(newSize, growBy_) : GrownCapacity(newSize);
  }

  int32_t GrownCapacity(int32_t newSize) const {
    const int32_t step = growBy_ != 0 ? growBy_ : std::clamp(size_ / 8, kMinStep, kMaxStep);
    if (capacity_ > std::numeric_limits<int32_t>::max() - step) throw CInvalidArgException();
    return std::max(capacity_ + step, newSize);
  }

  // Gives the array a zeroed buffer of `capacity` slots with the present elements moved into it.
  void Reallocate(int32_t capacity) {
    if (static_cast<std::size_t>(capacity) > std::numeric_limits<std::size_t>::max() / 2 / sizeof(TYPE)) {
      throw CMemoryException();
    }
    const std::size_t bytes = static_cast<std::size_t>(capacity) * sizeof(TYPE);
    void* memory = ::operator new(bytes, std::nothrow);
    if (memory == nullptr) throw CMemoryException();
    std::memset(memory, 0, bytes);
    TYPE* buffer = static_cast<TYPE*>(memory);
    MoveBytes(buffer, data_, size_);
    ::operator delete(static_cast<void*>(data_));
    data_ = buffer;
    capacity_ = capacity;
  }

  // Makes elements up to `newSize`; a constructor that throws takes those made before it along.
  void ConstructUpTo(int32_t newSize) {
    if (newSize <= size_) return;
    std::memset(static_cast<void*>(data_ + size_), 0,
                static_cast<std::size_t>(newSize - size_) * sizeof(TYPE));
    std::uninitialized_value_construct(data_ + size_, data_ + newSize);
    size_ = newSize;
  }

  void DestroyFrom(int32_t newSize) {
    std::destroy(data_ + newSize, data_ + size_);
    size_ = newSize;
  }

  void FreeBuffer() {
    static_assert(kMovesBitwise<TYPE>, "an array moves its elements bitwise: see kMovesBitwise");
    DestroyFrom(0);
    ::operator delete(static_cast<void*>(data_));
    data_ = nullptr;
    capacity_ = 0;
  }
};

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_ARRAY_H_
