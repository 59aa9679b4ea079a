#include <vrxmath/foundation/archive_frame.h>

#include <array>
#include <limits>
#include <utility>
#include <vector>

#include <vrxmath/platform/with_memory.h>

namespace vrx {
namespace {

// The remainders of all bytes under the reflected polynomial.
constexpr std::array<uint32_t, 256> MakeCrcTable() {
  constexpr uint32_t kPolynomial = 0xEDB88320;
  std::array<uint32_t, 256> table{};
  for (uint32_t byte = 0; byte < table.size(); ++byte) {
    uint32_t remainder = byte;
    for (int bit = 0; bit < 8; ++bit) {
      remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? kPolynomial : 0);
    }
    table[byte] = remainder;
  }
  return table;
}

}  // namespace

uint32_t Crc32(std::span<const std::byte> bytes) {
  static constexpr std::array<uint32_t, 256> kTable = MakeCrcTable();
  uint32_t crc = 0xFFFFFFFF;
  for (const std::byte byte : bytes) {
    crc = (crc >> 8) ^ kTable[(crc ^ std::to_integer<uint32_t>(byte)) & 0xFF];
  }
  return ~crc;
}

void StoreFrame(CArchive& archive, const ArchiveFormat& format, std::span<const std::byte> content) {
  if (content.size() > static_cast<std::size_t>(std::numeric_limits<int32_t>::max())) {
    throw CInvalidArgException();
  }
  archive << format.tag << format.version << Crc32(content);
  archive.WriteCount(static_cast<uint32_t>(content.size()));
  archive.Write(content);
}

uint16_t LoadFrame(CArchive& archive, const ArchiveFormat& format, MemoryStore& content) {
  uint32_t tag = 0;
  uint16_t version = 0;
  uint32_t checksum = 0;
  archive >> tag >> version;
  if (tag != format.tag || version == 0) throw CArchiveException(CArchiveException::kBadFormat);
  if (version > format.version) throw CArchiveException(CArchiveException::kNewVersion);
  archive >> checksum;
  const auto count = static_cast<std::size_t>(archive.ReadCheckedCount(1));
  auto bytes = platform_internal::WithMemory([=] { return std::vector<std::byte>(count); });
  archive.Read(bytes);
  if (Crc32(bytes) != checksum) throw CArchiveException(CArchiveException::kBadFormat);
  content = MemoryStore(std::move(bytes));
  return version;
}

}  // namespace vrx
