// Columns by the Arrow C data interface: what other programs hand over in every type of list and text, what contradicts itself, and how
// long memory lives.

#include <array>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxio/arrow/arrow_columns.h>
#include <vrxio/arrow/arrow_rows.h>
#include <vrxio/text/input_error.h>

namespace vrx::io {
namespace {

void ReleaseNothing(ArrowSchema* schema) {
  schema->release = nullptr;
}
void ReleaseNothing(ArrowArray* array) {
  array->release = nullptr;
}

// A column as another program may make it.
struct GivenColumn {
  std::string format;
  std::int64_t length = 0, offset = 0;
  std::vector<const void*> buffers = {};
  std::vector<GivenColumn*> children = {};
  std::string name = "c";
  ArrowSchema schema = {};
  ArrowArray array = {};
  std::vector<ArrowSchema*> schemas = {};
  std::vector<ArrowArray*> arrays = {};

  GivenColumn& Made() {
    for (GivenColumn* child : children) {
      child->Made();
      schemas.push_back(&child->schema);
      arrays.push_back(&child->array);
    }
    const auto count = static_cast<std::int64_t>(children.size());
    schema = {format.c_str(), name.c_str(),    nullptr, ARROW_FLAG_NULLABLE, count, schemas.data(),
              nullptr,        &ReleaseNothing, nullptr};
    array = {length,          -1,
             offset,          static_cast<std::int64_t>(buffers.size()),
             count,           buffers.data(),
             arrays.data(),   nullptr,
             &ReleaseNothing, nullptr};
    return *this;
  }
};

std::string RefusalOf(const GivenColumn& column) {
  try {
    (void)NumbersOf(column.schema, column.array);
  } catch (const InputError& error) {
    return error.what();
  }
  return "taken";
}

constexpr std::array<double, 12> kNumbers = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};

GivenColumn Numbers(std::int64_t length = 12, std::int64_t offset = 0) {
  return {"g", length, offset, {nullptr, kNumbers.data()}};
}

TEST(ArrowRowsTest, ListsAreReadWhereTheyLie) {
  const std::int32_t even[] = {1, 4, 7, 10}, apart[] = {0, 3, 3, 9, 12};
  const std::int64_t wide[] = {3, 6, 9};
  const std::uint8_t first[] = {0b1110}, second[] = {0b1101};
  struct Case {
    GivenColumn column;
    std::vector<double> rows;
    std::vector<std::uint8_t> missing;
    bool isInPlace;
  };
  GivenColumn plain = Numbers(), sliced = Numbers(11, 1), five = Numbers(9, 3);
  Case cases[] = {
      {{"+w:3", 2, 1, {nullptr}, {&plain}}, {3, 4, 5, 6, 7, 8}, {}, true},
      {{"+w:3", 2, 1, {nullptr}, {&sliced}}, {4, 5, 6, 7, 8, 9}, {}, true},
      {{"+w:3", 3, 0, {first}, {&plain}}, {0, 1, 2, 3, 4, 5, 6, 7, 8}, {1, 0, 0}, true},
      {{"+w:3", 3, 1, {second}, {&plain}}, {3, 4, 5, 6, 7, 8, 9, 10, 11}, {1, 0, 0}, true},
      {{"+l", 3, 0, {nullptr, even}, {&plain}}, {1, 2, 3, 4, 5, 6, 7, 8, 9}, {}, true},
      {{"+l", 2, 1, {nullptr, even}, {&plain}}, {4, 5, 6, 7, 8, 9}, {}, true},
      {{"+L", 2, 0, {nullptr, wide}, {&plain}}, {3, 4, 5, 6, 7, 8}, {}, true},
      // A list that is null takes no numbers, or others than the rest: rows are gathered about it.
      {{"+l", 2, 0, {second, apart}, {&plain}}, {0, 1, 2, 0, 0, 0}, {0, 1}, false},
      {{"g", 4, 2, {nullptr, kNumbers.data()}}, {2, 3, 4, 5}, {}, true},
  };
  for (Case& one : cases) {
    for (GivenColumn* child : one.column.children) child->Made();
    const GivenColumn& column = one.column.Made();
    const ArrowRows rows = NumbersOf(column.schema, column.array);
    ASSERT_EQ(rows.count * rows.width, one.rows.size()) << column.format;
    for (std::size_t i = 0; i < one.rows.size(); ++i)
      EXPECT_EQ(rows.doubles[i], one.rows[i]) << column.format << " " << i;
    EXPECT_EQ(rows.missing, one.missing) << column.format;
    EXPECT_EQ(rows.doubles >= kNumbers.data() && rows.doubles < kNumbers.data() + 12, one.isInPlace)
        << column.format;
  }
}

TEST(ArrowRowsTest, WhatContradictsItselfIsRefused) {
  const std::int32_t uneven[] = {0, 3, 5}, outside[] = {0, 3, 60}, backwards[] = {3, 0, 3};
  GivenColumn numbers = Numbers(), nothing = {"g", 12, 0, {nullptr, nullptr}},
              integers = {"l", 12, 0, {nullptr, kNumbers.data()}};
  const std::int64_t most = std::numeric_limits<std::int64_t>::max();
  const std::pair<GivenColumn, const char*> cases[] = {
      {{"+w:3", 5, 0, {nullptr}, {&numbers}}, "fewer numbers"},
      {{"+w:3", 4, 1, {nullptr}, {&numbers}}, "fewer numbers"},
      {{"+w:9000000000000000000", 2, 0, {nullptr}, {&numbers}}, "fewer numbers"},
      {{"+w:3", most, 0, {nullptr}, {&numbers}}, "contradicts itself"},
      {{"+w:3", -1, 0, {nullptr}, {&numbers}}, "contradicts itself"},
      {{"+w:3", 1, -1, {nullptr}, {&numbers}}, "contradicts itself"},
      {{"+w:0", 1, 0, {nullptr}, {&numbers}}, "is of the type \"+w:0\""},
      {{"+w:3x", 1, 0, {nullptr}, {&numbers}}, "is of the type"},
      {{"+w:3", 1, 0, {nullptr}, {&nothing}}, "no numbers"},
      {{"+w:3", 1, 0, {nullptr}, {&integers}}, "is of the type"},
      {{"+l", 2, 0, {nullptr}, {&numbers}}, "contradicts itself"},
      {{"+l", 2, 0, {nullptr, nullptr}, {&numbers}}, "no offsets"},
      {{"+l", 2, 0, {nullptr, uneven}, {&numbers}}, "lists of 3 and of 2"},
      {{"+l", 2, 0, {nullptr, outside}, {&numbers}}, "outside"},
      {{"+l", 2, 0, {nullptr, backwards}, {&numbers}}, "outside"},
  };
  for (auto [column, words] : cases)
    EXPECT_NE(RefusalOf(column.Made()).find(words), std::string::npos) << RefusalOf(column) << words;
}

TEST(ArrowRowsTest, TextsOfEveryType) {
  const char bytes[] = "oneLonger than twelve";
  const std::int32_t offsets[] = {0, 3, 3, 21}, backwards[] = {3, 0, 3, 3};
  const std::int64_t wide[] = {0, 3, 3, 21};
  struct View {
    std::int32_t length, prefix, buffer, from;
  };
  View views[3] = {{3, 0, 0, 0}, {0, 0, 0, 0}, {18, 0, 0, 3}};
  std::memcpy(&views[0].prefix, "one", 3);
  const View outside[3] = {{18, 0, 7, 3}, {0, 0, 0, 0}, {-4, 0, 0, 0}};
  const std::uint8_t there[] = {0b101};
  const std::int64_t sizes[] = {21};
  const std::vector<std::string> expected = {"one", "", "Longer than twelve"};
  for (GivenColumn column :
       {GivenColumn{"u", 3, 0, {there, offsets, bytes}}, GivenColumn{"U", 3, 0, {nullptr, wide, bytes}},
        GivenColumn{"vu", 3, 0, {nullptr, views, bytes, sizes}}}) {
    column.Made();
    EXPECT_TRUE(IsOfTexts(column.schema));
    EXPECT_EQ(TextsOf(column.schema, column.array), expected) << column.format;
  }
  for (GivenColumn column :
       {GivenColumn{"u", 3, 0, {nullptr, backwards, bytes}},
        GivenColumn{"u", 3, 0, {nullptr, nullptr, bytes}},
        GivenColumn{"vu", 3, 0, {nullptr, outside, bytes, sizes}}, GivenColumn{"g", 3, 0, {nullptr, wide}}}) {
    column.Made();
    EXPECT_THROW((void)TextsOf(column.schema, column.array), InputError) << column.format;
  }
}

TEST(ArrowColumnsTest, MemoryLivesUntilTheLastReceiverLetsGo) {
  auto numbers = std::make_shared<std::vector<double>>(std::vector<double>{1, 2, 3, 4});
  const std::weak_ptr<std::vector<double>> watched = numbers;
  const std::string_view texts[] = {"first", "second \xc3\xa9"};
  const std::uint8_t missing[] = {0, 1};
  ArrowSchema schema;
  ArrowArray array;
  {
    const std::span<const double> all(*numbers);
    ArrowColumns columns;
    columns.AddTexts("id", texts);
    columns.AddNumbers("pair", all, 2, std::exchange(numbers, nullptr), missing);
    columns.SetMetadata({{"wavelengths", "400,410"}, {"a", ""}});
    columns.Export(schema, array);
  }
  EXPECT_EQ(MetadataOf(schema, "wavelengths"), "400,410");
  EXPECT_EQ(MetadataOf(schema, "a") + MetadataOf(schema, "none") + MetadataOf(*schema.children[0], "a"), "");
  EXPECT_EQ(TextsOf(*schema.children[0], *array.children[0]),
            (std::vector<std::string>{"first", "second \xc3\xa9"}));
  const ArrowRows pairs = NumbersOf(*schema.children[1], *array.children[1]);
  EXPECT_EQ(pairs.missing, (std::vector<std::uint8_t>{0, 1}));
  EXPECT_EQ(pairs.doubles, watched.lock()->data());
  ArrowArray taken =
      std::exchange(*array.children[1], {});  // a receiver may keep one column and let the others go
  array.release(&array);
  schema.release(&schema);
  ASSERT_FALSE(watched.expired());
  taken.release(&taken);
  EXPECT_TRUE(watched.expired());
}

}  // namespace
}  // namespace vrx::io
