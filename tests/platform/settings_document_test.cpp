#include <gtest/gtest.h>

#include <vrxmath/platform/case_folding.h>
#include <vrxmath/platform/settings_document.h>

namespace vrx {
namespace {

const SettingsPath kKey = {u"software", u"Key"};
constexpr const char* kHeader = "[software/Key]\n";

SettingsDocument Parsed(const std::string& entries) {
  return SettingsDocument::Parse(kHeader + entries);
}

// A value as a person would write it: 12 or "text".
std::string Shown(const SettingValue* value) {
  if (value == nullptr) return "none";
  if (const auto* number = std::get_if<int32_t>(value)) return std::to_string(*number);
  return '"' + std::get<CString>(*value).ToUtf8() + '"';
}

TEST(SettingsDocument, EntriesThatFollowTheFormat) {
  struct Row {
    const char* line;
    const WideChar* name;
    const char* value;
  };
  const Row rows[] = {
      {"a=12", u"A", "12"},
      {"  Color Sensor\t=  -1  ", u"color sensor", "-1"},
      {"A = 4294967295", u"A", "-1"},
      {"A = -2147483648\r", u"A", "-2147483648"},
      {"A = \"\"", u"A", "\"\""},
      {"A = \"C:\\\\log\\\\ \"  ", u"A", "\"C:\\log\\ \""},
      {"A = \"x\\\"\\n\\t\\u00e9\"", u"A", "\"x\"\n\t\u00E9\""},
      {"A = \"\xD0\xAF\"", u"A", "\"\xD0\xAF\""},
      {"\\ \\[a\\=b\\ = 1", u" [A=B ", "1"},
      {"= 3", u"", "3"},
      {"A = 1\nA = 2", u"A", "2"},
  };
  for (const Row& row : rows) {
    const SettingsDocument document = Parsed(row.line);
    EXPECT_EQ(Shown(document.Find(kKey, row.name)), row.value) << row.line;
    EXPECT_FALSE(document.IsDamaged()) << row.line;
  }
}

TEST(SettingsDocument, ADamagedLineCostsItselfOnly) {
  const std::string lines[] = {
      "A",
      "A =",
      "A = 1 2",
      "A = 0x1",
      "A = 4294967296",
      "A = -2147483649",
      "A = 1.5",
      "A = \"",
      "A = \"x",
      "A = \"x\\",
      "A = \"C:\\log\"",
      "A = \"\\u12\"",
      "A = \"\\u12x4\"",
      std::string("A = \"\0\"", 7),
      "A = \"\x01\"",
      "A = \"\xFF\"",
      "A\x7F = 1",
      std::string(kMaxValueName + 1, 'n') + " = 1",
      "[software//Key]\nA = 1",
      "[]\nA = 1",
      "[software/Key\nA = 1",
      "[" + std::string(kMaxKeyName + 1, 'k') + "]\nA = 1",
  };
  for (const std::string& line : lines) {
    const SettingsDocument document = Parsed("B = 1\n" + line + "\n" + kHeader + "C = 2");
    EXPECT_TRUE(document.IsDamaged()) << line;
    EXPECT_EQ(Shown(document.Find(kKey, u"A")), "none") << line;
    EXPECT_EQ(Shown(document.Find(kKey, u"B")), "1") << line;
    EXPECT_EQ(Shown(document.Find(kKey, u"C")), "2") << line;
    EXPECT_FALSE(SettingsDocument::Parse(document.Format()).IsDamaged()) << line;
  }
  EXPECT_TRUE(SettingsDocument::Parse("A = 1").IsDamaged());  // nobody's
}

TEST(SettingsDocument, HostileNamesAndTextsComeBack) {
  std::u16string all;
  for (WideChar c = 0; c < 0x180; ++c) all += c;
  const std::u16string texts[] = {all,      u"", u" ", u"  a  ", u"\xD800", u"a\xDC00z", u"\xDC00\xD800",
                                  u"\xFEFF"};
  const auto keyOf = [](WideView text) {
    return SettingsPath{u"software", text.empty() ? CString(u"-") : CString(text.substr(0, 255))};
  };
  SettingsDocument document;
  for (const std::u16string& text : texts) {
    document.Set(keyOf(text), text, CString(WideView(text)));
    document.Set(kKey, text, 7);
  }
  const SettingsDocument again = SettingsDocument::Parse(document.Format());
  EXPECT_FALSE(again.IsDamaged());
  EXPECT_EQ(again.Format(), document.Format());
  for (const std::u16string& text : texts) {
    const SettingValue* value = again.Find(keyOf(text), text);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(std::get<CString>(*value), WideView(text));
    EXPECT_EQ(Shown(again.Find(kKey, text)), "7");
  }
}

TEST(SettingsDocument, AChangeTouchesOneLine) {
  SettingsDocument document = SettingsDocument::Parse(
      "\xEF\xBB\xBF# mine\n[software/Key]\n# before\nName = 1\n\n; B = \"x\"\n[software/Other]\nName = 2\n");
  document.Set({u"SOFTWARE", u"key"}, u"NAME", 3);
  document.Set(kKey, u"New", CString(u"t"));
  document.Set({u"software", u"Other", u"Below"}, u"C", 4);
  EXPECT_EQ(
      document.Format(),
      "# mine\n[software/Key]\n# before\nName = 3\n\n; B = \"x\"\nNew = \"t\"\n[software/Other]\nName = 2\n"
      "\n[software/Other/Below]\nC = 4\n");
  document.Set(kKey, u"Name", CString(u"now a text"));
  EXPECT_EQ(Shown(document.Find(kKey, u"Name")), "\"now a text\"");
  EXPECT_EQ(document.List({u"software", u"Other"}).size(), 2u);
  EXPECT_EQ(document.List({u"software"}).size(), 5u);
  EXPECT_TRUE(document.HasKey({u"software"}));
  EXPECT_FALSE(document.HasKey({u"software", u"Oth"}));
}

TEST(SettingsDocument, NamesAreComparedWithoutCase) {
  struct Row {
    WideView a, b;
    bool same;
  };
  const Row rows[] = {{u"Color Sensor", u"COLOR sensor", true},
                      {u"\u00E4\u00FF\u0161\u0142", u"\u00C4\u0178\u0160\u0141", true},
                      {u"\u03B1\u03CC\u044F\u0451\u0491", u"\u0391\u038C\u042F\u0401\u0490", true},
                      {u"\u1EBF\uFF41", u"\u1EBE\uFF21", true},
                      {u"a", u"a ", false},
                      {u"{", u"[", false},
                      {u"\u00F7", u"\u00D7", false},
                      {u"\u0148", u"\u0149", false},
                      {u"i", u"\u0130", false}};
  for (const Row& row : rows) EXPECT_EQ(EqualWithoutCase(row.a, row.b), row.same) << CString(row.a).ToUtf8();
}

}  // namespace
}  // namespace vrx
