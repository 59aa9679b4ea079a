// The archive: a stream of little-endian values, over memory or over a file.
//
// Every number has a fixed width and is written byte by byte in little-endian order, so an archive is the
// same bytes whichever build wrote it. The layout of each record is in docs/archive_format.md.

#ifndef VRXMATH_PLATFORM_ARCHIVE_H_
#define VRXMATH_PLATFORM_ARCHIVE_H_

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include <vrxmath/export.h>
#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// Where an archive's bytes come from or go to.
class VRX_API ByteStore {
 public:
  virtual ~ByteStore();
  /// Fills as much of `out` as there are bytes left and returns how many that was.
  [[nodiscard]] virtual std::size_t Read(std::span<std::byte> out) = 0;
  /// Appends all of `bytes`. Throws CArchiveException (kIoError) or CMemoryException when it cannot.
  virtual void Write(std::span<const std::byte> bytes) = 0;
  /// Bytes that can still be read: what a count read from the archive is checked against before anything is
  /// allocated for it.
  [[nodiscard]] virtual uint64_t Remaining() const = 0;
};

/// A buffer in memory. Reading starts at its first byte; writing appends.
class VRX_API MemoryStore : public ByteStore {
 public:
  MemoryStore() = default;
  MemoryStore(const MemoryStore&) = default;
  MemoryStore(MemoryStore&&) noexcept = default;
  MemoryStore& operator=(const MemoryStore&) = default;
  MemoryStore& operator=(MemoryStore&&) noexcept = default;
  /// A copy of `content`. Throws CMemoryException.
  explicit MemoryStore(std::span<const std::byte> content) { MemoryStore::Write(content); }
  explicit MemoryStore(std::vector<std::byte>&& content) noexcept : bytes_(std::move(content)) {}
  ~MemoryStore() override;

  [[nodiscard]] std::size_t Read(std::span<std::byte> out) override;
  void Write(std::span<const std::byte> bytes) override;
  [[nodiscard]] uint64_t Remaining() const override { return bytes_.size() - position_; }

  [[nodiscard]] const std::vector<std::byte>& Bytes() const { return bytes_; }
  /// Starts reading again at the first byte.
  void Rewind() { position_ = 0; }

 private:
  std::vector<std::byte> bytes_;
  std::size_t position_ = 0;
};

/// A stream of values in one direction. The store must outlive the archive.
class VRX_API CArchive {
 public:
  enum Mode { kLoad, kStore };

  CArchive(ByteStore& store, Mode mode) : store_(store), mode_(mode) {}
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;

  [[nodiscard]] bool IsLoading() const { return mode_ == kLoad; }
  [[nodiscard]] bool IsStoring() const { return mode_ == kStore; }

  /// Raw bytes. Throw CArchiveException: kReadOnly when writing into a loading archive, kWriteOnly when
  /// reading from a storing one, kEndOfFile when fewer bytes are left than asked for.
  void Write(std::span<const std::byte> bytes);
  void Read(std::span<std::byte> bytes);

  /// A number of 1, 2, 4 or 8 bytes, integer or IEEE double, or a truth value in one byte, 0 or 1. Throws as
  /// the raw operations do; another byte for a truth value is kBadFormat.
  template <class T>
  requires std::is_arithmetic_v<T> CArchive& operator<<(T value) {
    const auto bytes = ToLittleEndian(value);
    Write(bytes);
    return *this;
  }
  template <class T>
  requires std::is_arithmetic_v<T> CArchive& operator>>(T& value) {
    std::array<std::byte, sizeof(T)> bytes;
    Read(bytes);
    if constexpr (std::is_same_v<T, bool>) {
      if (bytes[0] > std::byte{1}) throw CArchiveException(CArchiveException::kBadFormat);
    }
    value = FromLittleEndian<T>(bytes);
    return *this;
  }

  /// An element count: 16 bits when below 0xFFFF, otherwise 0xFFFF followed by 32 bits.
  void WriteCount(uint32_t count);
  [[nodiscard]] uint32_t ReadCount();

  /// Reads a count of elements that take at least `elementBytes` (1 or more) bytes each in the archive.
  /// Throws kEndOfFile when the archive is too short to hold them, and when the count exceeds an array's 31
  /// bits, so that a hostile count fails before anything is allocated.
  [[nodiscard]] int32_t ReadCheckedCount(std::size_t elementBytes);

  /// Throws CArchiveException (kEndOfFile) when fewer than `bytes` bytes are left to read: the check before
  /// anything is allocated for a size that stands in the archive.
  void RequireBytes(uint64_t bytes) const;

  /// A text: its length in units in the count encoding, then the units, 16 bits each. A text beyond 31 bits
  /// raises CInvalidArgException before anything is written.
  void WriteString(WideView text);
  [[nodiscard]] CString ReadString();

 private:
  template <class T>
  static std::array<std::byte, sizeof(T)> ToLittleEndian(T value) {
    auto bytes = std::bit_cast<std::array<std::byte, sizeof(T)>>(value);
    if constexpr (std::endian::native == std::endian::big) std::reverse(bytes.begin(), bytes.end());
    return bytes;
  }
  template <class T>
  static T FromLittleEndian(std::array<std::byte, sizeof(T)> bytes) {
    if constexpr (std::endian::native == std::endian::big) std::reverse(bytes.begin(), bytes.end());
    return std::bit_cast<T>(bytes);
  }

  ByteStore& store_;
  Mode mode_;
};

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_ARCHIVE_H_
