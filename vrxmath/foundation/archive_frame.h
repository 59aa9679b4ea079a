// The frame around an archive form that a host keeps as a file: it says what the content is and which version
// of it, and a checksum tells a damaged file from a sound one before a single field is read.

#ifndef VRXMATH_FOUNDATION_ARCHIVE_FRAME_H_
#define VRXMATH_FOUNDATION_ARCHIVE_FRAME_H_

#include <cstdint>
#include <span>
#include <type_traits>
#include <utility>

#include <vrxmath/export.h>
#include <vrxmath/platform/archive.h>
#include <vrxmath/platform/exceptions.h>

namespace vrx {

/// The 32-bit cyclic redundancy check of ISO/IEC 8802-3 (Ethernet): it finds every burst of up to 32 wrong
/// bits.
[[nodiscard]] VRX_API uint32_t Crc32(std::span<const std::byte> bytes);

/// The kind of content that a frame holds.
struct ArchiveFormat {
  uint32_t tag;      ///< four ASCII letters, the first in the lowest byte
  uint16_t version;  ///< of the form that this library writes; it reads this and every older one
};

/// Writes a frame: tag, version, checksum of the content, count of its bytes, content. Throws as CArchive
/// does; content of 2^31 bytes or more, which no reader takes, raises CInvalidArgException before anything is
/// written.
VRX_API void StoreFrame(CArchive& archive, const ArchiveFormat& format, std::span<const std::byte> content);

/// Reads a frame's content into `content` and returns its version. Throws CArchiveException: kBadFormat for
/// another tag, a version 0 and a wrong checksum, kNewVersion for a version after that of `format`,
/// kEndOfFile for a frame cut short; CMemoryException. `content` is then unchanged.
VRX_API uint16_t LoadFrame(CArchive& archive, const ArchiveFormat& format, MemoryStore& content);

/// The framed form of a record, in the direction of the archive. `fields` (CArchive&, RECORD&) writes or
/// reads the content. When reading fails, `record` is unchanged; content beyond the fields is kBadFormat.
template <class RECORD, class FIELDS>
void SerializeFramed(CArchive& archive, const ArchiveFormat& format, RECORD& record, FIELDS fields) {
  MemoryStore content;
  if (archive.IsStoring()) {
    CArchive inner(content, CArchive::kStore);
    fields(inner, record);
    StoreFrame(archive, format, content.Bytes());
    return;
  }
  LoadFrame(archive, format, content);
  CArchive inner(content, CArchive::kLoad);
  RECORD loaded;
  fields(inner, loaded);
  if (content.Remaining() != 0) throw CArchiveException(CArchiveException::kBadFormat);
  static_assert(std::is_nothrow_move_assignable_v<RECORD>);
  record = std::move(loaded);
}

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_ARCHIVE_FRAME_H_
