#include <vrxmath/platform/archive.h>

#include <cstring>
#include <limits>
#include <new>

#include <vrxmath/platform/exceptions.h>

namespace vrx {
namespace {

constexpr uint16_t kLongCount = 0xFFFF;

}  // namespace

ByteStore::~ByteStore() = default;
MemoryStore::~MemoryStore() = default;

std::size_t MemoryStore::Read(std::span<std::byte> out) {
  const std::size_t count = std::min(out.size(), bytes_.size() - position_);
  if (count > 0) std::memcpy(out.data(), bytes_.data() + position_, count);
  position_ += count;
  return count;
}

void MemoryStore::Write(std::span<const std::byte> bytes) try {
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
} catch (const std::bad_alloc&) {
  throw CMemoryException();
}

void CArchive::Write(std::span<const std::byte> bytes) {
  if (IsLoading()) throw CArchiveException(CArchiveException::kReadOnly);
  store_.Write(bytes);
}

void CArchive::Read(std::span<std::byte> bytes) {
  if (IsStoring()) throw CArchiveException(CArchiveException::kWriteOnly);
  if (store_.Read(bytes) != bytes.size()) throw CArchiveException(CArchiveException::kEndOfFile);
}

void CArchive::WriteCount(uint32_t count) {
  if (count < kLongCount) {
    *this << static_cast<uint16_t>(count);
  } else {
    *this << kLongCount << count;
  }
}

uint32_t CArchive::ReadCount() {
  uint16_t shortCount = 0;
  *this >> shortCount;
  if (shortCount != kLongCount) return shortCount;
  uint32_t count = 0;
  *this >> count;
  return count;
}

int32_t CArchive::ReadCheckedCount(std::size_t elementBytes) {
  const uint64_t count = ReadCount();
  if (count > static_cast<uint64_t>(std::numeric_limits<int32_t>::max())) {
    throw CArchiveException(CArchiveException::kEndOfFile);
  }
  RequireBytes(count * elementBytes);
  return static_cast<int32_t>(count);
}

void CArchive::RequireBytes(uint64_t bytes) const {
  if (bytes > store_.Remaining()) throw CArchiveException(CArchiveException::kEndOfFile);
}

void CArchive::WriteString(WideView text) {
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int32_t>::max()))
    throw CInvalidArgException();
  WriteCount(static_cast<uint32_t>(text.size()));
  for (const WideChar unit : text) *this << static_cast<uint16_t>(unit);
}

CString CArchive::ReadString() {
  const int32_t length = ReadCheckedCount(sizeof(uint16_t));
  CString text;
  for (int32_t i = 0; i < length; ++i) {
    uint16_t unit = 0;
    *this >> unit;
    text += static_cast<WideChar>(unit);
  }
  return text;
}

}  // namespace vrx
