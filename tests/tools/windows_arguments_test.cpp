// Command lines of Windows: how they are divided, and which patterns become files.

#include "tools/vrx/base/windows_arguments.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <vrxmath/platform/wide_string.h>

#include "tests/testing/temporary_folder.h"

namespace vrx::tool {
namespace {

std::vector<std::string> ArgumentsOf(const std::string& line) {
  return WindowsArguments(CString::FromUtf8(line).View());
}

// The rows for quotation marks are those of the C library's documentation.
TEST(WindowsArguments, AreDividedAsTheCLibraryDoes) {
  const struct {
    std::string line;
    std::vector<std::string> arguments;
  } rows[] = {
      {"", {}},
      {"vrx", {}},
      {"\"C:\\Program Files\\vrx.exe\" color  a.csv\t--help ", {"color", "a.csv", "--help"}},
      {"C:\\bin\\vrx.exe color", {"color"}},
      {R"(x "a b c" d e)", {"a b c", "d", "e"}},
      {R"(x "ab\"c" "\\" d)", {R"(ab"c)", R"(\)", "d"}},
      {R"(x a\\\b d"e f"g h)", {R"(a\\\b)", "de fg", "h"}},
      {R"(x a\\\"b c d)", {R"(a\"b)", "c", "d"}},
      {R"(x a\\\\"b c" d e)", {R"(a\\b c)", "d", "e"}},
      {R"(x a"b"" c d)", {R"(ab" c d)"}},
      {R"(x "" a)", {"", "a"}},
      {R"(x C:\data\ "C:\my data\\")", {R"(C:\data\)", R"(C:\my data\)"}},
      {"x \xC3\x9F\xD0\x96.csv", {"\xC3\x9F\xD0\x96.csv"}},
      {"x \"open", {"open"}},
  };
  for (const auto& row : rows) EXPECT_EQ(ArgumentsOf(row.line), row.arguments) << row.line;
}

TEST(WindowsArguments, PatternsBecomeTheFilesThatTheyFit) {
  const test::TemporaryFolder folder;
  for (const char* name : {"b.csv", "A1.CSV", "a22.csv", "a.txt", "\xC3\x9F.csv"}) folder.Write(name, "");
  std::filesystem::create_directory(test::Utf8Path(folder / "folder.csv"));
  const std::string in = folder / "";
  const auto files = [&](std::vector<std::string> names) {
    for (std::string& name : names) name.insert(0, in);
    return names;
  };
  const struct {
    std::string pattern;
    std::vector<std::string> arguments;
  } rows[] = {
      {in + "*.csv", files({"A1.CSV", "a22.csv", "b.csv", "\xC3\x9F.csv"})},
      {in + "?.csv", files({"b.csv", "\xC3\x9F.csv"})},
      {in + "a*2*", files({"a22.csv"})},
      {in + "a*.*", files({"A1.CSV", "a.txt", "a22.csv"})},
      {in + "*.cxf", {in + "*.cxf"}},
      {in + "a??.csv", files({"a22.csv"})},
      {"\"" + in + "*.csv\"", {in + "*.csv"}},
      {"--name=" + in + "*.csv", {"--name=" + in + "*.csv"}},
      {in + "none/*.csv", {in + "none/*.csv"}},
  };
  for (const auto& row : rows) EXPECT_EQ(ArgumentsOf("vrx " + row.pattern), row.arguments) << row.pattern;
}

}  // namespace
}  // namespace vrx::tool
