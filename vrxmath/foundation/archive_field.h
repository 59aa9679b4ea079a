// One value in the direction of an archive: what records are written and read by.

#ifndef VRXMATH_FOUNDATION_ARCHIVE_FIELD_H_
#define VRXMATH_FOUNDATION_ARCHIVE_FIELD_H_

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <vrxmath/platform/archive.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// True for types whose bytes in memory are their archive form: numbers, and enumerations with a fixed
/// underlying type. It must hold every bit pattern, since an archive may give any; so `bool` and other
/// enumerations are not among them. A record may be declared so when it has nothing but such fields and no
/// padding in any build.
template <class T>
inline constexpr bool kHasPlainArchiveForm = std::is_arithmetic_v<T> && !std::is_same_v<T, bool>;
template <class T>
requires std::is_enum_v<T>
inline constexpr bool kHasPlainArchiveForm<T> = requires {
  T{0};
};  // only if fixed

/// True for types that can be the elements of an archived list: those with a plain form, texts, and records that
/// name the fewest bytes of their form (`kMinArchiveBytes`). Arrays of such types are among them
/// (checked_array.h).
template <class T>
inline constexpr bool kHasArchiveForm = kHasPlainArchiveForm<T> || std::is_same_v<T, CString>;
template <class T>
requires requires {
  T::kMinArchiveBytes;
}
inline constexpr bool kHasArchiveForm<T> = true;

/// The fewest bytes that one `T` takes in an archive: the bound that a count is checked against.
template <class T>
constexpr std::size_t MinArchiveBytes() {
  if constexpr (kHasPlainArchiveForm<T>) {
    return sizeof(T);
  } else if constexpr (requires { T::kMinArchiveBytes; }) {
    return T::kMinArchiveBytes;
  } else {
    return sizeof(uint16_t);  // the count of an array or a text
  }
}

/// One field in the direction of the archive: a number by its bytes, a text by its units, a record or an
/// array by its own form. Throws as CArchive does; a field that cannot be read keeps its value.
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

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_ARCHIVE_FIELD_H_
