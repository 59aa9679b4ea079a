#include <gtest/gtest.h>
#include <string>
#include <utility>

#include <vrxmath/platform/archive.h>
#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {
namespace {

struct Utf8Row {
  std::string utf8;
  std::u16string units;
};

TEST(WideString, ValidUtf8GoesBothWays) {
  // The first and the last code point of every encoded length, and around the surrogates.
  const Utf8Row rows[] = {
      {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
      {"\x7F", u"\x7F"},
      {"\xC2\x80\xDF\xBF", u"\u0080\u07FF"},
      {"\xE0\xA0\x80\xEF\xBF\xBF", u"\u0800\uFFFF"},
      {"\xED\x9F\xBF\xEE\x80\x80", u"\uD7FF\uE000"},
      {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
      {"\xCE\x94"
       "E 45\xC2\xB0",
       u"\u0394E 45\u00B0"},
  };
  for (const Utf8Row& row : rows) {
    EXPECT_EQ(CString::FromUtf8(row.utf8), row.units) << row.utf8;
    EXPECT_EQ(CString(row.units).ToUtf8(), row.utf8);
  }
}

TEST(WideString, EveryInvalidByteIsReplacedAlone) {
  const Utf8Row rows[] = {
      {"a\x80z", u"a\uFFFDz"},                  // a continuation without a lead
      {"\xC0\x80", u"\uFFFD\uFFFD"},            // overlong, two bytes
      {"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD"},  // overlong, three bytes
      {"\xF0\x8F\xBF\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},            // surrogates
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond U+10FFFF
      {"\xF5\xFF", u"\uFFFD\uFFFD"},
      {"\xE2\x82", u"\uFFFD\uFFFD"},    // cut short by the end
      {"\xE2\x82z", u"\uFFFD\uFFFDz"},  // and by another character
      {"\xF0\x9F\x98\xC2\xB0", u"\uFFFD\uFFFD\uFFFD\u00B0"},
  };
  for (const Utf8Row& row : rows) EXPECT_EQ(CString::FromUtf8(row.utf8), row.units) << row.utf8;
}

TEST(WideString, LoneSurrogatesBecomeTheReplacementCharacter) {
  const WideChar high = 0xD83D, low = 0xDE00;
  const std::pair<std::u16string, std::string> rows[] = {
      {{high, low}, "\xF0\x9F\x98\x80"},
      {{high}, "\xEF\xBF\xBD"},
      {{low, high}, "\xEF\xBF\xBD\xEF\xBF\xBD"},
      {{high, high, low}, "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
      {{high, u'a'},
       "\xEF\xBF\xBD"
       "a"},
  };
  for (const auto& [units, utf8] : rows) EXPECT_EQ(CString(units).ToUtf8(), utf8);
}

TEST(WideString, AppendsPartsOfItself) {
  std::u16string model = u"abc";
  CString text(model);
  for (int i = 0; i < 12; ++i) {  // with and without room left in the block
    text += text.View().substr(text.View().size() / 2);
    model += model.substr(model.size() / 2);
    text += u'x';
    model += u'x';
    ASSERT_EQ(text, model);
    ASSERT_EQ(text.CStr()[text.GetLength()], 0);
  }
  text = text.View().substr(1, 2);
  EXPECT_EQ(text, u"bc");
}

TEST(WideString, CopiesAreDeepAndMovesLeaveSoundTexts) {
  CString original = u"text";
  CString copy = original;
  copy.SetAt(0, u'n');
  EXPECT_EQ(original, u"text");
  CString moved = std::move(copy);
  EXPECT_EQ(moved, u"next");
  moved = *&moved;
  EXPECT_EQ(moved, u"next");
  moved.Empty();
  EXPECT_TRUE(moved.IsEmpty());
  EXPECT_EQ(moved.CStr()[0], 0);
}

TEST(WideString, IndicesOutsideAreHarmless) {
  CString text = u"ab";
  for (const std::ptrdiff_t i : {PTRDIFF_MIN, std::ptrdiff_t{-1}, std::ptrdiff_t{2}, PTRDIFF_MAX}) {
    text.SetAt(i, u'x');
    EXPECT_EQ(text.GetAt(i), 0) << i;
  }
  EXPECT_EQ(text, u"ab");
  EXPECT_EQ(CString().GetAt(0), 0);
  EXPECT_TRUE(CString(static_cast<const WideChar*>(nullptr)).IsEmpty());
  EXPECT_LT(CString(), CString(WideView(u"\0", 1)));
}

TEST(FillPattern, FillsFieldsInOrder) {
  struct Row {
    const WideChar* pattern;
    std::initializer_list<WideView> texts;
    const WideChar* expected;
  };
  const Row rows[] = {
      {u"%s deleted", {u"a.txt"}, u"a.txt deleted"},
      {u"%s%s", {u"1", u"2", u"3"}, u"12"},  // one text too many
      {u"(%s, %s)", {u"1"}, u"(1, )"},       // one too few
      {u"%s", {u"%s"}, u"%s"},               // a text is not a pattern
      {u"100 %% %s", {u"x"}, u"100 % x"},
      {u"%%s", {u"x"}, u"%s"},
      {u"%d %", {u"x"}, u"%d %"},  // no field at all
  };
  for (const Row& row : rows) {
    EXPECT_EQ(FillPattern(row.pattern, row.texts), row.expected) << CString(row.pattern).ToUtf8();
  }
}

}  // namespace
}  // namespace vrx
