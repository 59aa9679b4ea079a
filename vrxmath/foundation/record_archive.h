// The archive form of records, field by field. One list of fields serves both directions, so that what is
// written is what is read; and a record is read as a whole or not at all.

#ifndef VRXMATH_FOUNDATION_RECORD_ARCHIVE_H_
#define VRXMATH_FOUNDATION_RECORD_ARCHIVE_H_

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <utility>

#include <vrxmath/foundation/archive_field.h>
#include <vrxmath/foundation/checked_array.h>
#include <vrxmath/foundation/typed_arrays.h>

namespace vrx {

/// Fields one after the other. Throws as CArchive does. When reading fails, all fields are unchanged: they are
/// read into values of their own, which take the fields' places when the last one is there.
template <class... T>
void SerializeFields(CArchive& archive, T&... fields) {
  static_assert((std::is_nothrow_move_assignable_v<T> && ...));
  if (archive.IsStoring()) return (SerializeField(archive, fields), ...);
  std::tuple<T...> loaded;
  std::apply(
      [&](T&... values) {
        (SerializeField(archive, values), ...);
        ((fields = std::move(values)), ...);
      },
      loaded);
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
  records = std::move(loaded);
}

/// A record of `count` doubles, without a count in the archive. Throws as CArchive does; when reading fails,
/// the record is unchanged.
inline void SerializeDoubles(CArchive& archive, CDoubleArray1& record, int32_t count) {
  if (archive.IsStoring()) {
    for (int32_t i = 0; i < count; ++i) SerializeField(archive, record[i]);
    return;
  }
  archive.RequireBytes(sizeof(double) * static_cast<uint64_t>(count));
  CDoubleArray1 loaded;
  loaded.SetSize(count);
  for (double& value : loaded) SerializeField(archive, value);
  record = std::move(loaded);
}

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_RECORD_ARCHIVE_H_
