// How files are laid out: what separates their fields, which way their tables lie, and where they end.

#include <vrxio/files/measurement_files.h>

#include <cstdint>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>

#include <vrxio/text/input_error.h>

namespace {

using namespace vrx::io;
using Form = ReadOptions::Form;
using Orientation = ReadOptions::Wavelengths;

// The samples as "id=v v v;", or the reason why there are none.
std::string ReadAll(const std::string& content, const ReadOptions& options = {}) {
  std::ostringstream all;
  try {
    std::istringstream stream(content);
    const auto reader = OpenMeasurements(WrapInput(stream, "f"), options);
    Measurement sample;
    while (reader->Next(sample)) {
      all << sample.id << (sample.name.empty() ? "" : "/") << sample.name << '=';
      for (const double value : sample.reflectance) all << value << ' ';
      all.seekp(-1, std::ios::end) << ';';
    }
  } catch (const InputError& error) {
    return error.what();
  }
  return all.str();
}

constexpr const char* kOne = "a=10 20.5 30;";

// Blanks separate the columns of many exports, and stand beside the commas and within the texts of others.
TEST(CsvLayout, BlanksSeparateOnlyWhereNothingElseDoes) {
  const std::pair<const char*, const char*> kFiles[] = {
      {"id 400 410 420\na 10 20.5 30\n", kOne},
      {"400nm 410nm 420nm\na 10 20.5 30\n", kOne},  // no heading over the ids
      {"400 410 420\n10 20,5 30\n10 20 30\n", "1=10 20.5 30;2=10 20 30;"},
      {"id 400 410 420\nnm % % %\na 10 20.5 30\n", kOne},
      {"id name 400 410 420\na b 10 20.5 30\n", "a/b=10 20.5 30;"},
      {"Operator: N N\nExport of today\nid 400 410 420\na 10 20.5 30\n", kOne},
      {"nm a\n400 10\n410 20.5\n420 30\n", kOne},
      // A blank behind each comma, blanks in ids, in headings, and in numbers of no other separator.
      {"400, 410, 420\n10, 20.5, 30\n", "1=10 20.5 30;"},
      {"id, 400, 410, 420\na, 10, 20.5, 30\n", kOne},
      {"nm, a\n400, 10\n410, 20.5\n420, 30\n", kOne},
      {"id,400 nm,410 nm,420 nm\na 1,10,20.5,30\n", "a 1=10 20.5 30;"},
      {"id;400;410;420\na 1;10;20,5;30\n", "a 1=10 20.5 30;"},
      {"id\t400 nm\t410 nm\t420 nm\na 1 2\t10\t20.5\t30\n", "a 1 2=10 20.5 30;"},
  };
  for (const auto& [content, samples] : kFiles) EXPECT_EQ(ReadAll(content), samples) << content;
}

// Numbers of samples may look like wavelengths: a table that is read the wrong way gives curves all the same, of nothing.
TEST(CsvLayout, WavelengthsInColumnsOrRows) {
  const std::string ask =
      "f (CSV), line 1: the wavelengths may be in the columns or in the rows; choose with --wavelengths-in "
      "columns or --wavelengths-in rows";
  const std::string rows = "400,10,1,5\n410,20.5,2,6\n420,30,3,7\n",
                    columns = "400=10 1 5;410=20.5 2 6;420=30 3 7;",
                    turned = "400=10 20.5 30;410=1 2 3;420=5 6 7;";
  const struct {
    std::string content;
    Orientation orientation;
    std::string samples;
  } kFiles[] = {
      {",400,410,420\n" + rows, Orientation::kByContent, ask},
      {"wl,400,410,420\n" + rows, Orientation::kByContent, ask},
      {"Wavelength (nm),400,410,420\n" + rows, Orientation::kByContent, ask},
      {",400,410,420\n" + rows, Orientation::kInColumns, columns},
      {"nm,400,410,420\n" + rows, Orientation::kInRows, turned},
      // The heading says that the numbers are ids, or there are too few of them, or they are no wavelengths.
      {"id,400,410,420\n" + rows, Orientation::kByContent, columns},
      {",400,410,420\n400,10,1,5\n410,20.5,2,6\n", Orientation::kByContent, "400=10 1 5;410=20.5 2 6;"},
      {",400,410,420\n1,10,1,5\n2,20.5,2,6\n3,30,3,7\n", Orientation::kByContent,
       "1=10 1 5;2=20.5 2 6;3=30 3 7;"},
      // Numbers before the header could be wavelengths, too, but for their order or their size; those with a word are.
      {"Serials,1201,1105,1300\nid,400,410,420\na,10,20.5,30\n", Orientation::kByContent, kOne},
      {"Sizes,110,120,130\nid,400,410,420\na,10,20.5,30\n", Orientation::kByContent, kOne},
      {"Shop 3\nid,R410,R400,R420\na,20.5,10,30\n", Orientation::kByContent, kOne},
      // Units below the header, and below that of wavelengths in rows.
      {"id,400,410,420\n,percent,percent,percent\na,10,20.5,30\n", Orientation::kByContent, kOne},
      {"nm,a\nnm,%\n400,10\n410,20.5\n420,30\n", Orientation::kByContent, kOne},
      {"nm,a\n[nm],[%]\n400,10\n410,20.5\n420,30\n", Orientation::kInRows, kOne},
      {"# of,today\n400,10\n410,20.5\n420,30\n", Orientation::kByContent, "1=10 20.5 30;"},
      {"400,410,420\n-,-,%\n10,20.5,30\n", Orientation::kByContent, "1=10 20.5 30;"},
      // A black trap may reflect less than nothing.
      {"400,410,420\n-.1,-.1,-.2\n10,20.5,30\n", Orientation::kByContent, "1=-0.1 -0.1 -0.2;2=10 20.5 30;"},
      {"id,400,410,420\na,10,20.5,30\n", Orientation::kInRows,
       "f (CSV), line 1: the wavelengths are in the columns, not in the rows as --wavelengths-in says"},
      {"nm,a\n400,10\n410,20.5\n420,30\n", Orientation::kInColumns,
       "f (CSV), line 2: the wavelengths are in the rows, not in the columns as --wavelengths-in says"},
  };
  for (const auto& file : kFiles) {
    ReadOptions options;
    options.orientation = file.orientation;
    EXPECT_EQ(ReadAll(file.content, options), file.samples) << file.content;
  }
  ReadOptions byColumn;
  byColumn.idColumn = "a";
  EXPECT_EQ(ReadAll("nm,a\n400,10\n410,20.5\n420,30\n", byColumn),
            "f (CSV), line 1: --id-column: the samples are columns, which are named by their headings");
}

// A sign of comment within a text is part of it: patches are named "#1" by their makers.
TEST(CgatsWords, QuotesCommentsAndTabs) {
  const auto cgats = [](const std::string& fields, const std::string& rows) {
    return "CGATS.17\nBEGIN_DATA_FORMAT\n" + fields + " nm400 nm410 nm420\nEND_DATA_FORMAT\nBEGIN_DATA\n" +
           rows + "\nEND_DATA\n";
  };
  const std::pair<std::string, const char*> kFiles[] = {
      {cgats("SAMPLE_ID", "\"# 1\" 10 20.5 30"), "# 1=10 20.5 30;"},
      {cgats("SAMPLE_ID", "a#1 10 20.5 30 # \"x\" 40"), "a#1=10 20.5 30;"},
      {cgats("SAMPLE_ID", "# a 1 2 3\na 10 20.5 30\n  # b 1 2 3"), kOne},
      {cgats("SAMPLE_ID", "\"a \"\"#\"\" 1\" 10 20.5 30"), "a \"\"#\"\" 1=10 20.5 30;"},
      // Rows of two lines.
      {cgats("SAMPLE_ID", "\"a # 1\" 10 # first\n20.5 30\nb#2 1 # \"\n2 3"), "a # 1=10 20.5 30;b#2=1 2 3;"},
      // Tabs that separate, with blanks in texts and about them, with quotes and with nothing behind.
      {cgats("SAMPLE_ID SAMPLE_NAME", "a 1\t b c \t10\t20.5\t30"), "a 1/b c=10 20.5 30;"},
      {cgats("SAMPLE_ID SAMPLE_NAME", "a 1\t \"b  # c\" \t10\t20.5\t30\t \t\r"), "a 1/b  # c=10 20.5 30;"},
      {cgats("SAMPLE_ID SAMPLE_NAME", "a 1\t\"\t10\t20.5\t30"), "a 1/\"=10 20.5 30;"},
      {cgats("SAMPLE_ID SAMPLE_NAME", "a 1\t\"\"\t10\t20.5\t30\nb\t\t1\t2\t3"), "a 1=10 20.5 30;b=1 2 3;"},
      {cgats("SAMPLE_ID SAMPLE_NAME", "a 1\tb\t10\t20.5\t30\nb 1\tc\t1\t2"),
       "f (CGATS), line 7: the row is short: it has 4 of 5 fields"},
      {cgats("SAMPLE_ID SAMPLE_NAME", "a 1\tb\t10\t20.5\t30\nb 1\tc\t1\t2\t3\t4"),
       "f (CGATS), line 7: the row is long"},
  };
  for (const auto& [content, samples] : kFiles) EXPECT_EQ(ReadAll(content), samples) << content;
}

// A list that was cut off, or put together by hand, is not taken for a whole one.
TEST(JsonLists, CommasAndEnds) {
  const std::string a = R"({"id":"a","400":10,"410":20.5,"420":30})",
                    b = R"({"id":"b","400":1,"410":2,"420":3})", two = "a=10 20.5 30;b=1 2 3;";
  const std::pair<std::string, std::string> kFiles[] = {
      {"[" + a + "," + b + "]", two},
      {"[\n" + a + "\n,\n" + b + " \n] \n", two},
      {"[" + a + "\n" + b + "]", "f (JSON), line 2: expected a comma between objects"},
      {"[" + a + ",\n," + b + "]", "f (JSON), line 2: expected an object"},
      {"[" + a + ",\n5]", "f (JSON), line 2: expected an object"},
      {"[" + a, "f (JSON), line 1: the file ends within the list"},
      {"[" + a + ",\n", "f (JSON), line 2: the file ends within the list"},
      {"[" + a + "}", "f (JSON), line 1: expected an object"},
      {"[" + a + "]\n\n]", "f (JSON), line 3: there is more text after the end of the list"},
      {"[" + a + "],", "f (JSON), line 1: there is more text after the end of the list"},
      {"[]", "f (JSON), line 1: the list is empty"},
  };
  for (const auto& [content, samples] : kFiles) EXPECT_EQ(ReadAll(content), samples) << content;
  // The commas are there when the list is read again, from its beginning or from a sample on.
  std::istringstream stream("[" + a + "," + b + "]");
  InputStream input = WrapInput(stream, "f");
  HoldInput(input);
  const auto reader = OpenMeasurements(std::move(input));
  Measurement sample;
  ASSERT_TRUE(reader->Next(sample) && reader->Next(sample));
  const uint64_t second = reader->Offset();
  EXPECT_FALSE(reader->Next(sample) || reader->Next(sample));  // the end stays the end
  reader->SeekTo(second);
  ASSERT_TRUE(reader->Next(sample));
  EXPECT_EQ(sample.id, "b");
  reader->Rewind();
  ASSERT_TRUE(reader->Next(sample));
  EXPECT_EQ(sample.id, "a");
}

}  // namespace
