// Values of JSON files that know where they stand: what is found, and what is said of those that are not as they should be.

#include <vrxio/json/json_field.h>

#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <vrxio/text/input_error.h>
#include "tests/testing/temporary_folder.h"

namespace {

using vrx::io::InputError;
using vrx::io::JsonDocument;
using vrx::io::JsonField;

constexpr std::array<std::string_view, 3> kKinds{"paint", "ink", "dye"};

// What is said of the file "f" without its folder; empty where nothing is wrong.
std::string Objection(const std::string& content, const std::function<void(const JsonField&)>& use) {
  const vrx::test::TemporaryFolder folder;
  const std::string path = folder.Write("f", content);
  try {
    const JsonDocument document(path);
    use(JsonField(document));
  } catch (const InputError& error) {
    return std::string(error.what()).substr(path.size() - 1);
  }
  return {};
}

TEST(JsonField, ValuesAreFoundByNameAndPlace) {
  const char* const content =
      R"({"before": [{"x": 1}, [2, [3]], "x"], "a": {"x": "\u00e9", "list": [10, -2.5, 1e3, "ink", []]}, "after": null})";
  EXPECT_EQ(Objection(content,
                      [](const JsonField& root) {
                        root.ExpectMembers({"after", "a", "before"});
                        EXPECT_EQ(root["a"]["x"].Text(), "\xC3\xA9");
                        EXPECT_FALSE(root.Find("x"));  // of an object within
                        EXPECT_TRUE(root["a"].Find("list"));
                        const JsonField::List list = root["a"]["list"].Elements();
                        ASSERT_EQ(list.size(), 5u);
                        std::vector<JsonField> items;
                        for (const JsonField item : list) items.push_back(item);
                        ASSERT_EQ(items.size(), 5u);
                        EXPECT_EQ(items[0].Integer(10, 10), 10);
                        EXPECT_EQ(items[1].Number(-2.5, -2.5), -2.5);
                        EXPECT_EQ(items[2].Number(0, 1e4), 1000);
                        EXPECT_EQ(items[3].OneOf(kKinds), 1u);
                        EXPECT_EQ(items[4].Elements().size(), 0u);
                        EXPECT_EQ(root["before"].Elements().size(), 3u);
                      }),
            "");
}

TEST(JsonField, WhatIsWrongIsSaidByItsPlace) {
  const char* const content = R"({"a": [{"k": [1, 2.5]}, {"k": [3, "dye"], "m": "clay"}], "n": 7})";
  const auto second = [](const JsonField& root) {
    JsonField last = root;
    for (const JsonField item : root["a"].Elements()) last = item;
    return last;
  };
  const struct {
    std::function<void(const JsonField&)> use;
    const char* objection;
  } kRows[] = {
      {[](const JsonField& root) { root["b"]; }, "f: member \"b\" is missing"},
      {[](const JsonField& root) { root.ExpectMembers({"a"}); }, "f: unknown member \"n\""},
      {[](const JsonField& root) { root["n"]["k"]; }, "f: n: expected an object"},
      {[](const JsonField& root) { root["n"].Elements(); }, "f: n: expected a list"},
      {[](const JsonField& root) { root["n"].Text(); }, "f: n: expected a text"},
      {[](const JsonField& root) { root["n"].Number(0, 6.5); }, "f: n: 7 is not within 0 to 6.5"},
      {[](const JsonField& root) { root["n"].Number(7.5, 8); }, "f: n: 7 is not within 7.5 to 8"},
      {[](const JsonField& root) { root["n"].Integer(8, 9); }, "f: n: not within 8 to 9"},
      {[](const JsonField& root) { root["n"].Integer(1, 6); }, "f: n: not within 1 to 6"},
      {[&](const JsonField& root) { second(root)["j"]; }, "f: a[1]: member \"j\" is missing"},
      {[&](const JsonField& root) { second(root)["m"].OneOf(kKinds); },
       "f: a[1].m: \"clay\" is not one of \"paint\", \"ink\", \"dye\""},
      {[](const JsonField& root) {
         for (const JsonField item : root["a"].Elements())
           for (const JsonField number : item["k"].Elements()) number.Integer(0, 9);
       },
       "f: a[0].k[1]: expected a whole number"},
      {[&](const JsonField& root) {
         for (const JsonField number : second(root)["k"].Elements()) number.Number(0, 9);
       },
       "f: a[1].k[1]: expected a number"},
  };
  for (const auto& row : kRows) EXPECT_EQ(Objection(content, row.use), row.objection);
}

TEST(JsonField, WhatIsNoDocument) {
  std::string names = "{";
  for (int i = 0; i <= 1000; ++i) names += (i > 0 ? ",\"n" : "\"n") + std::to_string(i) + "\":0";
  const std::pair<std::string, const char*> kRows[] = {
      {"", "f, line 1, column 1: the file ends too early"},
      {"{\"a\": 1", "f, line 1, column 8: the file ends too early"},
      {"{\"a\": 1,\n \"b\": x}", "f, line 2, column 7: this is not JSON"},
      {"[1]\n]", "f, line 2, column 1: this is not JSON"},
      {"[1e999]", "f: a number is beyond the range of doubles"},
      {"[{\"b\": [{\"a\": 1, \"c\": {}, \"a\": 2}]}]", "f: [0].b[0]: member \"a\" appears twice"},
      {names + "}", "f: more than 1000 names of members"},
      {std::string(65, '[') + std::string(65, ']'), "more than 64 objects and lists within each other"},
  };
  for (const auto& [content, objection] : kRows) {
    const std::string said = Objection(content, [](const JsonField&) {});
    EXPECT_NE(said.find(objection), std::string::npos) << said << " for " << content.substr(0, 40);
  }
  EXPECT_EQ(Objection(std::string(64, '[') + std::string(64, ']'), [](const JsonField&) {}), "");
}

}  // namespace
