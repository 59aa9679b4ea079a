#include <gtest/gtest.h>
#include <limits>
#include <string>

#include <vrxmath/platform/archive.h>

#include "tests/testing/archives.h"

namespace vrx {
namespace {

using test::ArchiveFailure;
using test::Bytes;
using test::MakeBytes;
using test::StoredBy;

template <class Action>
int LoadFailure(const Bytes& bytes, Action action) {
  MemoryStore store(bytes);
  CArchive archive(store, CArchive::kLoad);
  return ArchiveFailure([&] { action(archive); });
}

TEST(Archive, NumbersAreLittleEndianOfTheirOwnWidth) {
  EXPECT_EQ(StoredBy([](CArchive& archive) {
              archive << uint8_t{0xAB} << int16_t{-2} << uint32_t{0x01020304} << int64_t{-1} << -2.5;
            }),
            MakeBytes({0xAB, 0xFE, 0xFF, 4, 3, 2, 1,    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,  //
                       0,    0,    0,    0, 0, 0, 0x04, 0xC0}));
}

TEST(Archive, CountEncoding) {
  struct Row {
    uint32_t count;
    Bytes bytes;
  };
  const Row rows[] = {
      {0, MakeBytes({0, 0})},
      {3, MakeBytes({3, 0})},
      {0xFFFE, MakeBytes({0xFE, 0xFF})},
      {0xFFFF, MakeBytes({0xFF, 0xFF, 0xFF, 0xFF, 0, 0})},
      {0x10000, MakeBytes({0xFF, 0xFF, 0, 0, 1, 0})},
      {0xFFFFFFFF, MakeBytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF})},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(StoredBy([&](CArchive& archive) { archive.WriteCount(row.count); }), row.bytes) << row.count;
    MemoryStore store(row.bytes);
    EXPECT_EQ(CArchive(store, CArchive::kLoad).ReadCount(), row.count);
    EXPECT_EQ(store.Remaining(), 0u);
  }
}

TEST(Archive, CountsAreCheckedAgainstWhatIsLeft) {
  struct Row {
    const char* label;
    Bytes bytes;
    std::size_t elementBytes;
    int32_t count;  // -1: refused
  };
  const Row rows[] = {
      {"exactly enough", MakeBytes({2, 0, 1, 2, 3, 4}), 2, 2},
      {"one byte short", MakeBytes({2, 0, 1, 2, 3}), 2, -1},
      {"none", MakeBytes({0, 0}), 8, 0},
      {"31 bits full", MakeBytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 1}), 1, -1},
      {"negative", MakeBytes({0xFF, 0xFF, 0, 0, 0, 0x80, 1}), 1, -1},
      {"product beyond 32 bits", MakeBytes({0xFF, 0xFF, 0, 0, 0, 0x40, 1, 2, 3, 4}), 4, -1},
      {"cut short", MakeBytes({0xFF, 0xFF, 1}), 1, -1},
  };
  for (const Row& row : rows) {
    int32_t count = -1;
    const int failure = LoadFailure(
        row.bytes, [&](CArchive& archive) { count = archive.ReadCheckedCount(row.elementBytes); });
    EXPECT_EQ(count, row.count) << row.label;
    EXPECT_EQ(failure, row.count < 0 ? CArchiveException::kEndOfFile : 0) << row.label;
  }
}

TEST(Archive, TextsAreUnitsAfterTheirCount) {
  const Bytes bytes = MakeBytes({2, 0, 0xB0, 0, 0x94, 3});
  EXPECT_EQ(StoredBy([](CArchive& archive) { archive.WriteString(u"\u00B0\u0394"); }), bytes);
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    CString text = u"old";
    const int failure = LoadFailure(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)),
                                    [&](CArchive& archive) { text = archive.ReadString(); });
    EXPECT_EQ(failure, length < bytes.size() ? CArchiveException::kEndOfFile : 0) << length;
    EXPECT_EQ(text, length < bytes.size() ? u"old" : u"\u00B0\u0394") << length;
  }
}

TEST(Archive, LongTextsUseTheLongCount) {
  for (const std::size_t length : {0xFFFEu, 0xFFFFu}) {
    const CString text = WideView(std::u16string(length, u'x'));
    const Bytes bytes = StoredBy([&](CArchive& archive) { archive.WriteString(text); });
    EXPECT_EQ(bytes.size(), (length < 0xFFFF ? 2 : 6) + 2 * length);
    MemoryStore store(bytes);
    EXPECT_EQ(CArchive(store, CArchive::kLoad).ReadString(), text);
  }
  const WideView endless(u"", std::size_t{1} << 31);
  EXPECT_THROW(StoredBy([&](CArchive& archive) { archive.WriteString(endless); }), CInvalidArgException);
}

TEST(Archive, TheWrongDirectionIsAnError) {
  MemoryStore store(MakeBytes({1, 2}));
  CArchive in(store, CArchive::kLoad);
  CArchive out(store, CArchive::kStore);
  uint8_t byte = 0;
  EXPECT_EQ(ArchiveFailure([&] { in << byte; }), CArchiveException::kReadOnly);
  EXPECT_EQ(ArchiveFailure([&] { in.WriteString(u"a"); }), CArchiveException::kReadOnly);
  EXPECT_EQ(ArchiveFailure([&] { out >> byte; }), CArchiveException::kWriteOnly);
  EXPECT_EQ(ArchiveFailure([&] { static_cast<void>(out.ReadString()); }), CArchiveException::kWriteOnly);
  bool truth = false;
  in >> truth;
  EXPECT_TRUE(truth);
  EXPECT_EQ(ArchiveFailure([&] { in >> truth; }), CArchiveException::kBadFormat);  // 2
  store.Rewind();
  EXPECT_EQ(store.Remaining(), 2u);
}

}  // namespace
}  // namespace vrx
