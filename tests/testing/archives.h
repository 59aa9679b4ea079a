// Archive forms in tests: bytes of a value, a value of bytes, and what every archive form must do when cut
// short.

#ifndef TESTS_TESTING_ARCHIVES_H_
#define TESTS_TESTING_ARCHIVES_H_

#include <cstddef>
#include <gtest/gtest.h>
#include <initializer_list>
#include <span>
#include <vector>

#include <vrxmath/platform/archive.h>
#include <vrxmath/platform/exceptions.h>

namespace vrx::test {

using Bytes = std::vector<std::byte>;

inline Bytes MakeBytes(std::initializer_list<int> values) {
  Bytes bytes;
  for (const int value : values) bytes.push_back(static_cast<std::byte>(value));
  return bytes;
}

/// The bytes that `write(archive)` stores.
template <class Write>
Bytes StoredBy(Write write) {
  MemoryStore store;
  CArchive archive(store, CArchive::kStore);
  write(archive);
  return store.Bytes();
}

/// The archive form of a record or container.
template <class T>
Bytes Stored(T value) {
  return StoredBy([&](CArchive& archive) { value.Serialize(archive); });
}

/// An array of elements.
template <class ARRAY, class... Element>
ARRAY ListOf(const Element&... elements) {
  ARRAY array;
  (array.Add(elements), ...);
  return array;
}

template <class T>
void Load(T& value, std::span<const std::byte> bytes) {
  MemoryStore store(bytes);
  CArchive archive(store, CArchive::kLoad);
  value.Serialize(archive);
}

/// The archive form of a record without a count, whose elements stand one after the other.
template <class T>
struct ValuesForm {
  T record;
  void Serialize(CArchive& archive) { record.SerializeValues(archive); }
  bool operator==(const ValuesForm&) const = default;
};

/// The cause of the archive exception that `action` raises; 0 when it raises none.
template <class Action>
int ArchiveFailure(Action action) {
  try {
    action();
  } catch (const CArchiveException& error) {
    return error.GetCause();
  }
  return 0;
}

/// Expects that the form of `value` reads back as an equal value, that every shorter prefix of it ends in
/// kEndOfFile, and that a failed load leaves the target as it was.
template <class T>
void ExpectRoundTripAndTruncations(const T& value, const T& target = T()) {
  const Bytes bytes = Stored(value);
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    T read = target;
    EXPECT_EQ(ArchiveFailure([&] { Load(read, std::span(bytes).first(length)); }),
              CArchiveException::kEndOfFile)
        << length << " of " << bytes.size() << " bytes";
    EXPECT_TRUE(read == target) << length << " of " << bytes.size() << " bytes";
  }
  T read = target;
  Load(read, bytes);
  EXPECT_TRUE(read == value);
  EXPECT_EQ(Stored(read), bytes);
}

/// Expects that counts up to 2^32 - 1 before a few bytes end in kEndOfFile, with `target` as it was.
template <class T>
void ExpectHostileCountsRefused(T target) {
  const T before = target;
  for (const int top : {0x00, 0x7F, 0x80, 0xFF}) {
    const Bytes bytes = MakeBytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, top, 1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(ArchiveFailure([&] { Load(target, bytes); }), CArchiveException::kEndOfFile) << top;
    EXPECT_TRUE(target == before) << top;
  }
}

}  // namespace vrx::test

#endif  // TESTS_TESTING_ARCHIVES_H_
