#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <vrxmath/foundation/ks_data.h>
#include <vrxmath/foundation/typed_arrays.h>

#include "tests/testing/archives.h"
#include "tests/testing/messages.h"
#include "tests/testing/rows.h"

namespace vrx {
namespace {

using test::IndexErrors;
using test::MakeBytes;
using test::MessageRecorder;

CDoubleArray1 Doubles(std::initializer_list<double> values) {
  CDoubleArray1 array;
  for (const double value : values) array.Add(value);
  return array;
}

// ---- Random operations against std::vector. Each element type is made of a number, and is told apart by it.

struct NumberElement {
  using Array = CDoubleArray1;
  static double Make(int n) { return n + 0.5; }
};
struct TextElement {
  using Array = CStringArray1;
  static const WideChar* Make(int n) {
    static CString text;  // longer texts for larger numbers, so that blocks of many sizes are owned
    text = CString(
        WideView(std::u16string(static_cast<std::size_t>(n % 50), static_cast<WideChar>(u'a' + n % 26))));
    return text.CStr();
  }
};
struct NestedElement {
  using Array = CDoubleArray2;
  static CDoubleArray1 Make(int n) {
    CDoubleArray1 inner;
    inner.InsertAt(0, n, n % 20 + 1);
    return inner;
  }
};

template <class Element>
class CheckedArrayModel : public testing::Test {};
using ModelledElements = testing::Types<NumberElement, TextElement, NestedElement>;
TYPED_TEST_SUITE(CheckedArrayModel, ModelledElements);

TYPED_TEST(CheckedArrayModel, BehavesLikeAVector) {
  using Array = typename TypeParam::Array;
  using Value = std::remove_cvref_t<decltype(*Array().begin())>;
  Array array;
  std::vector<Value> model;
  std::mt19937 random(20);
  const auto upTo = [&](std::size_t limit) { return static_cast<int>(random() % (limit + 1)); };
  for (int round = 0; round < 3000; ++round) {
    const int at = upTo(model.size());
    const int count = upTo(3) + 1;
    const Value value(TypeParam::Make(upTo(1000)));
    const auto place = model.begin() + at;
    const int beyond = round % 16 == 0 ? 2 : 0;
    switch (upTo(4)) {
      case 0:
        array.InsertAt(at + beyond, TypeParam::Make(7), count);  // beyond the end, defaults fill the gap
        model.resize(std::max(model.size(), static_cast<std::size_t>(at + beyond)));
        model.insert(model.begin() + at + beyond, static_cast<std::size_t>(count), Value(TypeParam::Make(7)));
        break;
      case 1: {
        const int removed = std::min(count, static_cast<int>(model.size()) - at);
        array.RemoveAt(at, removed);
        model.erase(place, place + removed);
        break;
      }
      case 2: {
        const int size = std::max(0, static_cast<int>(model.size()) + upTo(12) - 7);
        array.SetSize(size);
        model.resize(static_cast<std::size_t>(size));
        break;
      }
      case 3:
        if (!model.empty()) array[at % static_cast<int>(model.size())] = value;
        if (!model.empty()) model[static_cast<std::size_t>(at) % model.size()] = value;
        break;
      default: {
        const Array copy = array;
        ASSERT_TRUE(copy == array);
        array.RemoveAll();
        array = copy;
        array = *&array;
      }
    }
    ASSERT_TRUE(std::equal(array.begin(), array.end(), model.begin(), model.end())) << round;
  }
}

TEST(CheckedArray, InsertsItsOwnElements) {
  CDoubleArray2 array;
  array.Add(Doubles({1.0, 2.0}));
  array.InsertAt(0, array[0], 100);  // the buffer moves while the value is in use
  for (const CDoubleArray1& inner : array) EXPECT_TRUE(test::RowMatches("", inner, Doubles({1.0, 2.0}), 0.0));
  CStringArray1 texts;
  texts.Add(u"text");
  for (int i = 0; i < 100; ++i) texts.InsertAt(0, texts[texts.GetSize() - 1].CStr());
  texts.Fill(texts[0].CStr());
  for (const CString& text : texts) EXPECT_EQ(text, u"text");
}

// ---- Index errors.

// Every kind of index that is out of range for 3 elements in 8 slots. On a 32-bit build some do not exist.
std::vector<std::ptrdiff_t> BadIndices() {
  std::vector<std::ptrdiff_t> indices;
  for (const int64_t i :
       {int64_t{-1}, int64_t{3}, int64_t{7}, int64_t{8}, int64_t{0x7FFFFFFF}, int64_t{1} << 31,
        -(int64_t{1} << 31), int64_t{1} << 32, (int64_t{1} << 32) + 1, INT64_MAX, INT64_MIN}) {
    if (static_cast<std::ptrdiff_t>(i) == i) indices.push_back(static_cast<std::ptrdiff_t>(i));
  }
  return indices;
}

template <class ARRAY, class VALUE>
void ExpectHarmlessIndexErrors(const ARRAY& original, VALUE value, bool hasSlots) {
  using Element = std::remove_cvref_t<decltype(*original.begin())>;
  MessageRecorder messages;
  for (const std::ptrdiff_t i : BadIndices()) {
    const bool slot = hasSlots && i >= 3 && i < 8;
    ARRAY array;
    array.SetSize(3, 8);
    std::copy(original.begin(), original.end(), array.begin());
    const ARRAY& constant = array;
    const std::vector<std::function<void()>> accesses = {
        [&] { array.SetAt(i, value); },
        [&] { EXPECT_TRUE(constant.GetAt(i) == (slot ? Element(value) : Element())) << i; },
        [&] { EXPECT_TRUE(constant[i] == (slot ? Element(value) : Element())) << i; },
        [&] { array[i] = value; },
        [&] { array.ElementAt(i) = value; },
    };
    for (std::size_t k = 0; k < accesses.size(); ++k) {
      accesses[k]();
      EXPECT_EQ(messages.Take(), IndexErrors()) << "access " << k << " at " << i;
      EXPECT_TRUE(array == original) << "access " << k << " at " << i;
    }
    array.SetSize(8);  // what was written beyond the size is not an element
    EXPECT_TRUE(array[3] == Element() && array[7] == Element()) << i;
  }
}

TEST(IndexErrors, PlainElementsBeyondTheSizeAreTheirOwnSlots) {
  ExpectHarmlessIndexErrors(Doubles({1.0, 2.0, 3.0}), 9.0, true);
  CRectArray1 rectangles;
  rectangles.InsertAt(0, CRect{1, 2, 3, 4}, 3);
  ExpectHarmlessIndexErrors(rectangles, CRect{5, 6, 7, 8}, true);
}

TEST(IndexErrors, OwningElementsGetASpare) {
  CStringArray1 texts;
  texts.InsertAt(0, u"a longer text", 3);
  ExpectHarmlessIndexErrors(texts, u"another text", false);
  CDoubleArray2 nested;
  nested.InsertAt(0, Doubles({1.0, 2.0}), 3);
  ExpectHarmlessIndexErrors(nested, Doubles({4.0}), false);
}

TEST(IndexErrors, EmptyArraysAndNestedAccesses) {
  MessageRecorder messages;
  const CDoubleArray1 empty;
  EXPECT_EQ(empty[0], 0.0);
  EXPECT_EQ(messages.Take(), IndexErrors());
  CDoubleArray3 deep;
  deep[5][-1][7] = 1.0;
  EXPECT_EQ(messages.Take(), IndexErrors(3));
  EXPECT_EQ(deep[5][-1][7], 0.0);
  EXPECT_EQ(deep.GetSize(), 0);
  CKSDataArray curves;
  EXPECT_EQ(curves[0].GetSize(), kWavelengths);  // records stand in with their default
}

TEST(IndexErrors, AHandlerThatThrowsPreventsTheAccess) {
  CDoubleArray1 array = Doubles({1.0, 2.0, 3.0});
  array.SetSize(2);
  SetMessageBoxHandler([](WideView, MessageIcon, void*) { throw std::out_of_range("index"); });
  EXPECT_THROW(array.SetAt(2, 9.0), std::out_of_range);
  EXPECT_THROW(array.GetAt(-1), std::out_of_range);
  SetMessageBoxHandler(nullptr);
  const MessageRecorder messages;
  EXPECT_EQ(array.GetAt(2), 3.0);
  EXPECT_TRUE(test::RowMatches("", array, std::vector<double>{1.0, 2.0}, 0.0));
}

// ---- Equality and the conventions about numbers.

TEST(Equality, DoublesAreComparedByNearEquality) {
  constexpr double kEps = std::numeric_limits<double>::epsilon();
  constexpr double kInf = std::numeric_limits<double>::infinity();
  struct Row {
    double a, b;
    bool equal;
  };
  const Row rows[] = {
      {0.0, -0.0, true},
      {0.0, std::nextafter(kEps, 0.0), true},
      {0.0, kEps, false},  // strictly below
      {1.0, 1.0 - kEps / 2, true},
      {1.0, 1.0 + kEps, false},
      {2.5, std::nextafter(2.5, 3.0), false},  // above 2 the next double is further away
      {kInf, kInf, false},                     // their difference is no number
      {NAN, NAN, false},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(NearlyEqual(row.a, row.b), row.equal) << row.a << ' ' << row.b;
    EXPECT_EQ(NearlyEqual(row.b, row.a), row.equal) << row.b << ' ' << row.a;
    EXPECT_EQ(Doubles({5.0, row.a}) == Doubles({5.0, row.b}), row.equal) << row.a << ' ' << row.b;
    CDoubleArray2 a, b;
    a.Add(Doubles({row.a}));
    b.Add(Doubles({row.b}));
    EXPECT_EQ(a == b, row.equal) << row.a << ' ' << row.b;
  }
  EXPECT_FALSE(Doubles({1.0}) == Doubles({1.0, 1.0}));
  EXPECT_TRUE(CDoubleArray1() == CDoubleArray1());
}

TEST(Unset, IsAnOpenIntervalAroundTheUnsetValue) {
  for (const double value : {9.99e-6, 1.001e-5, 0.0, -1e-5, double{NAN}})
    EXPECT_FALSE(IsUnset(value)) << value;
  for (const double value : {kUnset, std::nextafter(9.99e-6, 1.0), std::nextafter(1.001e-5, 0.0)}) {
    EXPECT_TRUE(IsUnset(value)) << value;
  }
}

// ---- Archive forms.

TEST(ArrayArchive, LiteralBytes) {
  EXPECT_EQ(test::Stored(Doubles({1.0, -2.5})),
            MakeBytes({2, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F, 0, 0, 0, 0, 0, 0, 0x04, 0xC0}));
  CWordArray1 words;
  words.Add(0x0102);
  EXPECT_EQ(test::Stored(words), MakeBytes({1, 0, 2, 1}));
  CRectArray1 rectangles;
  rectangles.Add({1, -1, 0x01020304, 0});
  EXPECT_EQ(test::Stored(rectangles),
            MakeBytes({1, 0, 1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 4, 3, 2, 1, 0, 0, 0, 0}));
  EXPECT_EQ(test::Stored(CDoubleArray1()), MakeBytes({0, 0}));
}

TEST(ArrayArchive, RoundTripsAndTruncations) {
  test::ExpectRoundTripAndTruncations(Doubles({1.0, 1e-5, 3.0}), Doubles({7.0}));
  CRectArray1 rectangles;
  rectangles.InsertAt(0, CRect{1, 2, 3, 4}, 2);
  test::ExpectRoundTripAndTruncations(rectangles);
  test::ExpectHostileCountsRefused(Doubles({7.0}));
  CByteArray1 bytes;
  for (const int32_t size : {0xFFFE, 0xFFFF}) {
    bytes.SetSize(size);
    bytes[size - 1] = 7;
    const test::Bytes stored = test::Stored(bytes);
    EXPECT_EQ(stored.size(), static_cast<std::size_t>(size) + (size < 0xFFFF ? 2 : 6));
    CByteArray1 read;
    test::Load(read, stored);
    EXPECT_TRUE(read == bytes);
  }
}

TEST(ArrayArchive, ElementsWithFormsOfTheirOwn) {
  const auto nested = test::ListOf<CDoubleArray2>(Doubles({1.0}), CDoubleArray1());
  EXPECT_EQ(test::Stored(nested), MakeBytes({2, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F, 0, 0}));
  test::ExpectRoundTripAndTruncations(nested, test::ListOf<CDoubleArray2>(Doubles({7.0})));
  CStringArray1 texts;
  texts.Add(u"a");
  test::ExpectRoundTripAndTruncations(texts);
  struct Formless {};
  CArrayVarex<Formless> formless;
  EXPECT_THROW(test::Stored(formless), CInvalidArgException);
  EXPECT_THROW(test::Load(formless, MakeBytes({1, 0, 1, 2})), CInvalidArgException);
  enum Open { kOpen };
  enum Fixed : int16_t { kFixed };
  enum class Scoped { kOne };
  static_assert(kHasPlainArchiveForm<Fixed> && kHasPlainArchiveForm<Scoped> && kHasPlainArchiveForm<double>);
  static_assert(!kHasPlainArchiveForm<Open> && !kHasPlainArchiveForm<bool> && !kHasPlainArchiveForm<CString>);
}

}  // namespace
}  // namespace vrx
