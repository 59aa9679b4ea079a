#include "tools/vrx/input/xml_path.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>

#include <vrxmath/support/xml_reader.h>

#include "tools/vrx/base/command.h"

namespace vrx::tool {
namespace {

TEST(XmlPath, LeadsToElementsAndAttributes) {
  CXmlReader xml;
  ASSERT_TRUE(xml.SetDoc(u"<r><a n='1'/><b n='2'/><a n='3'><b n='4'/></a></r>"));
  struct Row {
    const char* path;
    const char* value;  // the attribute's, or the tag name and the element's index
  };
  const Row rows[] = {
      {"r", "r 1"},    {"/r/a", "a 2"}, {"r/a[2]", "a 4"},      {"r/*[2]", "b 3"},    {"r/a[2]/b/@n", "4"},
      {"r/*/@n", "1"}, {"*/b", "b 3"},  {"r/a[2]/*[1]", "b 5"}, {"r/b[1]/@none", ""},
  };
  for (const Row& row : rows) {
    const XmlPath path = ParseXmlPath(row.path);
    GoTo(xml, path);
    const int32_t index = xml.GetCurrentIndex();
    const std::string value = path.attribute.empty()
                                  ? xml.GetTagName(index).ToUtf8() + " " + std::to_string(index)
                                  : xml.GetAttrib(index, CString::FromUtf8(path.attribute)).ToUtf8();
    EXPECT_EQ(value, row.value) << row.path;
  }
}

// A path that means several elements gets the first, and a word about the others.
TEST(XmlPath, SaysThatThereAreOthers) {
  CXmlReader xml;
  ASSERT_TRUE(xml.SetDoc(u"<r><a n='1'/><b n='2'/><a n='3'/></r>"));
  for (const auto& [path, told] : {std::pair{"r/a/@n", "there are 2 elements r/a; the first is taken"},
                                   {"r/*", "there are 3 elements r/*;"},
                                   {"r/a[1]", ""},
                                   {"r/a[2]", ""},
                                   {"r/b", ""}}) {
    testing::internal::CaptureStderr();
    GoTo(xml, ParseXmlPath(path));
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(*told == '\0' ? text.empty() : text.find(told) != std::string::npos) << path << ": " << text;
  }
}

TEST(XmlPath, SaysWhereItLeadsNowhere) {
  CXmlReader xml;
  ASSERT_TRUE(xml.SetDoc(u"<r><a><b/></a></r>"));
  const char* const paths[][2] = {
      {"a", "there is no element a"},
      {"r[2]", "there is no element r[2]"},
      {"r/a[2]/b", "there is no element r/a[2]"},
      {"r/*/b/c", "there is no element r/*/b/c"},
      {"", "each step of a path needs a name, as in root/child[2]/@attribute"},
      {"r//b", "each step of a path needs a name, as in root/child[2]/@attribute"},
      {"r/[1]", "each step of a path needs a name, as in root/child[2]/@attribute"},
      {"r/a[0]", "a step may end in a position such as [2], not in \"[0]\""},
      {"r/a[1", "a step may end in a position such as [2], not in \"[1\""},
      {"r/a[]", "a step may end in a position such as [2], not in \"[]\""},
      {"r/a[1]b", "a step may end in a position such as [2], not in \"[1]b\""},
      {"r/a[99999999999]", "a step may end in a position such as [2], not in \"[99999999999]\""},
  };
  for (const auto& [path, reason] : paths) {
    try {
      GoTo(xml, ParseXmlPath(path));
      ADD_FAILURE() << path;
    } catch (const InputError& error) {
      EXPECT_STREQ(error.what(), reason) << path;
    }
  }
}

}  // namespace
}  // namespace vrx::tool
