#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <vrxmath/foundation/list_box.h>
#include <vrxmath/foundation/list_data.h>

#include "tests/testing/archives.h"

namespace vrx {
namespace {

CListDataArray MakeList(std::initializer_list<CListData> entries) {
  CListDataArray list;
  for (const CListData& entry : entries) list.Add(entry);
  return list;
}

// "1y 3z" for the entries (1, y) and (3, z).
std::string AsText(const CListDataArray& list) {
  std::string text;
  for (const CListData& entry : list) {
    if (!text.empty()) text += ' ';
    text += std::to_string(entry.id);
    text += entry.text.ToUtf8();
  }
  return text;
}

TEST(ListData, Sorts) {
  const CListDataArray mixed = MakeList({{3, u"y"}, {1, u"z"}, {3, u"x"}, {2, u"Z"}, {4, u"y"}});
  const CListDataArray reference = MakeList({{0, u"y"}, {0, u"Z"}, {0, u"x"}});
  struct Row {
    const char* label;
    void (*sort)(CListDataArray&, const CListDataArray&);
    const char* expected;
  };
  const Row rows[] = {
      {"by code unit, equals in old order", [](auto& l, auto&) { l.SortByText(false); }, "2Z 3x 3y 4y 1z"},
      {"descending, equals in old order", [](auto& l, auto&) { l.SortByText(true); }, "1z 3y 4y 3x 2Z"},
      {"by id, then text", [](auto& l, auto&) { l.SortById(false); }, "1z 2Z 3x 3y 4y"},
      {"both descending", [](auto& l, auto&) { l.SortById(true); }, "4y 3y 3x 2Z 1z"},
      {"as a reference, absent first", [](auto& l, auto& r) { l.SortLike(r); }, "1z 3y 4y 2Z 3x"},
  };
  for (const Row& row : rows) {
    CListDataArray list = mixed;
    row.sort(list, reference);
    EXPECT_EQ(AsText(list), row.expected) << row.label;
  }
}

TEST(ListData, LookupAndIdOrder) {
  const CListDataArray list = MakeList({{30, u"b"}, {10, u"B"}, {10, u"a"}});
  EXPECT_EQ(list.IndexOfText(u"B"), 1);
  EXPECT_EQ(list.IndexOfText(u"A"), -1);
  EXPECT_EQ(list.IndexOfId(10), 1);
  EXPECT_EQ(CListDataArray().IndexOfText(u""), -1);
  CDWordArray1 ids;
  for (const uint32_t id : {10u, 7u, 30u, 5u}) ids.Add(id);
  list.SortIds(ids);
  EXPECT_EQ((std::vector<uint32_t>{ids.begin(), ids.end()}), (std::vector<uint32_t>{7, 5, 30, 10}));
}

// A list that refuses one of its operations.
class RefusingListBox : public MemoryListBox {
 public:
  RefusingListBox(int32_t resetResult, int32_t dataResult) : reset_(resetResult), data_(dataResult) {}
  int32_t ResetContent() override { return reset_ < 0 ? reset_ : MemoryListBox::ResetContent(); }
  int32_t SetItemData(int32_t index, uint32_t data) override {
    return data_ < 0 ? data_ : MemoryListBox::SetItemData(index, data);
  }

 private:
  int32_t reset_, data_;
};

TEST(ListData, FillingStopsAtTheFirstRefusal) {
  const CListDataArray list = MakeList({{1, u"a"}, {2, u"b"}});
  struct Row {
    int32_t reset, data, result, entries;
  };
  const Row rows[] = {{0, 0, 0, 2}, {ListBox::kError, 0, ListBox::kError, 0}, {0, -7, -7, 1}};
  for (const Row& row : rows) {
    RefusingListBox box(row.reset, row.data);
    EXPECT_EQ(list.FillList(box), row.result);
    EXPECT_EQ(box.Entries().GetSize(), row.entries);
  }
  MemoryListBox sound;
  EXPECT_EQ(sound.SetItemData(0, 1), ListBox::kError);
}

TEST(ListData, ArchiveForm) {
  const CListDataArray list = MakeList({{1, u"a"}, {0xFFFFFFFF, u""}});
  EXPECT_EQ(test::Stored(list),
            test::MakeBytes({2, 0, 1, 0, 0, 0, 1, 0, 'a', 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0}));
  test::ExpectRoundTripAndTruncations(list, MakeList({{5, u"old"}}));
  test::ExpectRoundTripAndTruncations(CListData{7, u"x"});
}

}  // namespace
}  // namespace vrx
