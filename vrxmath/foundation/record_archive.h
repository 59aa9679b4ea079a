// The archive form of records, field by field. One list of fields serves both directions, so that what is
// written is what is read.

#ifndef VRXMATH_FOUNDATION_RECORD_ARCHIVE_H_
#define VRXMATH_FOUNDATION_RECORD_ARCHIVE_H_

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <vrxmath/foundation/checked_array.h>
#include <vrxmath/foundation/typed_arrays.h>
#include <vrxmath/platform/archive.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// One field in the direction of the archive: a number by its bytes, a text by its units, a record or an
/// array by its own form.
template <class T>
void SerializeField(CArchive& archive, T& field) {
  if constexpr (std::is_same_v<T, CString>) {
    if (archive.IsStoring()) {
      archive.WriteString(field);
    } else {
      field = archive.ReadString();
    }
  } else if constexpr (std::is_arithmetic_v<T>) {
    if (archive.IsStoring()) {
      archive << field;
    } else {
      archive >> field;
    }
  } else {
    field.Serialize(archive);
  }
}

/// Fields one after the other.
template <class... T>
void SerializeFields(CArchive& archive, T&... fields) {
  (SerializeField(archive, fields), ...);
}

/// The fewest bytes that one `T` takes in an archive: the bound that a count is checked against.
template <class T>
constexpr std::size_t MinArchiveBytes() {
  if constexpr (std::is_arithmetic_v<T>) {
    return sizeof(T);
  } else if constexpr (std::is_same_v<T, CString>) {
    return sizeof(uint16_t);
  } else {
    return T::kMinArchiveBytes;
  }
}

/// A list: the count, then each element as `serializeOne` (CArchive&, RECORD&) writes or reads it, in
/// `minBytes` bytes or more. A hostile count fails before anything is allocated for it. Throws as CArchive
/// does; when reading fails, `records` is unchanged.
template <class RECORD, class ARG, class SERIALIZE_ONE>
void SerializeList(CArchive& archive, CArrayVarex<RECORD, ARG>& records, std::size_t minBytes,
                   SERIALIZE_ONE serializeOne) {
  if (archive.IsStoring()) {
    archive.WriteCount(static_cast<uint32_t>(records.GetSize()));
    for (RECORD& record : records) serializeOne(archive, record);
    return;
  }
  CArrayVarex<RECORD, ARG> loaded;
  loaded.SetSize(archive.ReadCheckedCount(minBytes));
  for (RECORD& record : loaded) serializeOne(archive, record);
  records = loaded;
}

/// A list of records with archive forms of their own, or of texts.
template <class RECORD, class ARG>
void SerializeRecords(CArchive& archive, CArrayVarex<RECORD, ARG>& records) {
  SerializeList(archive, records, MinArchiveBytes<RECORD>(),
                [](CArchive& one, RECORD& record) { SerializeField(one, record); });
}

/// A record of `count` doubles, without a count in the archive. Throws as CArchive does; an archive that is too
/// short leaves the record as it was.
inline void SerializeDoubles(CArchive& archive, CDoubleArray1& record, int32_t count) {
  if (archive.IsLoading()) archive.RequireBytes(sizeof(double) * static_cast<uint64_t>(count));
  for (int32_t i = 0; i < count; ++i) SerializeField(archive, record[i]);
}

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_RECORD_ARCHIVE_H_
