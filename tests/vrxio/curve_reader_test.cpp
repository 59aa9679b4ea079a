// Files of curves: every form gives the same curve, and every fault its place and reason.

#include <vrxio/files/curve_reader.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <vrxio/files/measurement_files.h>
#include <vrxio/text/input_error.h>
#include "tests/testing/rows.h"

namespace {

using namespace std::string_literals;
using vrx::io::CsvReader;
using vrx::io::CurveReader;
using vrx::io::CurveRow;
using vrx::test::RowMatches;

struct Sample {
  std::string id, name;
  int32_t geometry;
  std::vector<double> curve;
};

std::vector<Sample> ReadAll(const std::string& content, bool fraction = false) {
  std::istringstream stream(content);
  CurveReader reader(CsvReader(stream, "f"), fraction);
  std::vector<Sample> samples;
  CurveRow row;
  while (reader.Next(row)) {
    samples.push_back(
        {std::string(row.id), std::string(row.name), row.geometry, {row.curve.begin(), row.curve.end()}});
  }
  return samples;
}

// A file with one row of the function `value` of the wavelength.
template <class VALUE>
std::string FileOf(int first, int last, int step, VALUE value) {
  std::string header, row;
  for (int nm = first; nm <= last; nm += step) {
    header += (header.empty() ? "" : ",") + std::to_string(nm);
    row += (row.empty() ? "" : ",") + std::to_string(value(nm));
  }
  return header + "\n" + row + "\n";
}

// The 40 samples of a function that goes on with its end values outside `first` to `last`.
template <class VALUE>
std::vector<double> GridOf(int first, int last, VALUE value) {
  std::vector<double> curve;
  for (int nm = 360; nm <= 750; nm += 10) curve.push_back(value(std::clamp(nm, first, last)));
  return curve;
}

TEST(CurveReader, BringsEveryRangeToTheGrid) {
  // A cubic is what Lagrange's cubic reproduces; the first and the last interval, where a quadratic serves,
  // are measured nodes or lie outside the grid.
  const auto cubic = [](int nm) {
    const double t = (nm - 550) / 100.0;
    return 50 + 10 * t - 5 * t * t + 3 * t * t * t;
  };
  const struct {
    int first, last, step;
  } kRanges[] = {{360, 750, 10}, {400, 700, 10}, {380, 730, 10}, {380, 780, 5},
                 {350, 800, 1},  {300, 820, 20}, {300, 830, 10}};
  for (const auto& [first, last, step] : kRanges) {
    const auto samples = ReadAll(FileOf(first, last, step, cubic));
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_TRUE(RowMatches(std::to_string(first) + "-" + std::to_string(last) + "/" + std::to_string(step),
                           samples[0].curve, GridOf(first, last, cubic), 2e-6));
  }
}

TEST(CurveReader, TwentyNanometresAtTheEndsAreQuadratic) {
  const auto square = [](int nm) { return (nm - 500) * (nm - 500) / 100.0; };
  const auto samples = ReadAll(FileOf(400, 700, 20, square));
  EXPECT_TRUE(RowMatches("quadratic", samples.at(0).curve, GridOf(400, 700, square), 1e-9));
}

TEST(CurveReader, ReadsEveryForm) {
  const struct {
    const char* content;
    bool fraction;
    const char* id;
    const char* name;
    int32_t geometry;
  } kForms[] = {
      {"400,410,420\n1.5,2,3\n", false, "1", "", -1},
      {"\xEF\xBB\xBFid,400,410,420\r\nA,1.5,2,3\r\n", false, "A", "", -1},
      {"400;410;420\n1,5;2;3", false, "1", "", -1},
      {"400;410;420\n1.5;2;3", false, "1", "", -1},
      {"ID\tgeometry\t400 nm\t410nm\t420.0\nA b\tsci\t+1,5\t2\t3e0\n", false, "A b", "", 12},
      {"name;400,0;410,0;420,0;geometry\n\"x;\"\"y\"\"\";1,5;2;3;15\xC2\xB0\n", false, "x;\"y\"", "x;\"y\"",
       4},
      {"geometry,400,410,420,name,id\n15deg,\"1.5\", 2 ,3,\"two\nlines\",i\n", false, "i", "two\nlines", 4},
      {"geometry,400,410,420\n-15 DEG,0.015,0.02,0.03\n", true, "1", "", 41},
      {"\n\ngeometry,400,410,420\n\n13,1.5,2,3\n\n \n", false, "1", "", 13},
  };
  std::vector<double> expected(40, 3.0);
  std::fill_n(expected.begin(), 5, 1.5);
  expected[5] = 2;
  for (const auto& form : kForms) {
    SCOPED_TRACE(form.content);
    const auto samples = ReadAll(form.content, form.fraction);
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_EQ(samples[0].id, form.id);
    EXPECT_EQ(samples[0].name, form.name);
    EXPECT_EQ(samples[0].geometry, form.geometry);
    EXPECT_TRUE(RowMatches("curve", samples[0].curve, expected, form.fraction ? 1e-15 : 0.0));
  }
}

// The curve is the reference instrument's; what was read, its geometry and what was never measured stay.
TEST(CurveReader, CorrectsReadingsAndSaysSo) {
  std::vector<vrx::InstrumentProfile::Factors> factors(40);
  for (auto& at : factors) at = {0.5, 0.01, 0.0, 0.0, 0.0};
  const vrx::InstrumentProfile profile = *vrx::InstrumentProfile::FromFactors(factors);
  std::istringstream stream(FileOf(360, 750, 10, [](int) { return 40.0; }));
  CurveReader reader(CsvReader(stream, "f"), false);
  reader.CorrectBy(profile, "shop.csv");
  CurveRow row;
  ASSERT_TRUE(reader.Next(row));
  for (const double sample : row.curve) EXPECT_NEAR(sample, 40.0 + 0.5 + 0.4, 1e-12);
  EXPECT_EQ(reader.MeasuredCurve()[0], 40.0);
  EXPECT_EQ(reader.Conditions().instrument, "corrected by shop.csv");
  EXPECT_EQ(reader.FirstConditions().instrument, "corrected by shop.csv");
  factors.pop_back();
  EXPECT_FALSE(vrx::InstrumentProfile::FromFactors(factors));
}

TEST(CurveReader, RefusesWithPlaceAndReason) {
  const std::string longText(CsvReader::kMaxRecordBytes + 2, 'x');
  const struct {
    std::string content;
    const char* message;
  } kFaults[] = {
      {"", "f: the file is empty"},
      {"\n \n", "f: the file is empty"},
      {std::string("\xFF\xFEi\0d\0", 6), "f: the file is UTF-16"},
      {"400,410,420\n\n", "f: there is no row"},
      {"a\rb,,400\n", "f, line 1, column 1 (a b): the column is not id"},
      {"400,\n", "f, line 1: fewer than 3 wavelengths"},
      {"id,gloss,400\n", "f, line 1, column 2 (gloss): the column is not id"},
      {"id,id,400,410,420\n", "f, line 1, column 2 (id): the column appears twice"},
      {"400,410,410\n", "f, line 1, column 3 (410): the wavelength appears twice"},
      {"400,440,410\n", "f, line 1, column 2 (440): the wavelengths have a gap"},
      {"id,400,410,430,440\n", "f, line 1, column 4 (430): the wavelengths have a gap from 410 nm to 430 nm"},
      {"400,420,430\n", "column 2 (420): the wavelengths have a gap"},
      {"400,410\n", "f, line 1: fewer than 3 wavelengths"},
      {"800,810,820\n", "f, line 1: fewer than 3 wavelengths"},
      {"400,450,500,550\n", "f, line 1: wavelengths 50 nm apart"},
      {"400,410,420\n1,2,3\n1,x,3\n", "f, line 3, column 2 (410): \"x\" is not a number"},
      {"400,410,420\n1,,3\n", "f, line 2, column 2 (410): the field is empty"},
      {"400,410,420\n1,nan,3\n", "\"nan\" is not a number"},
      {"400,410,420\n1,inf,3\n", "\"inf\" is not a number"},
      {"400,410,420\n1,1e999,3\n", "\"1e999\" is not a number"},
      {"400,410,420\n1,2,10001\n", "f, line 2, column 3 (420): a reflectance beyond"},
      {"400,410,420\n1,2\n", "f, line 2: the row is short: it has 2 of 3 columns"},
      {"400,410,420\n1,2,3,4\n", "f, line 2: the row is long"},
      {"400;410;420\n1.234,5;2;3\n", "\"1.234,5\" is not a number"},
      {"id,400,410,420\n\"a\nb\",1,2,3\nx,1,2,y\n", "f, line 4, column 4 (420)"},
      {"id,400,410,420\n,1,2,3\n", "f, line 2: the id is empty"},
      {"id,400,410,420\n\"a,1,2,3\n", "f, line 2: a quoted field is not closed"},
      {"id,400,410,420\n\"a\"b,1,2,3\n", "f, line 2, column 1 (id): text follows a quoted field"},
      {"id,400,410,420\na\"b\",1,2,3\n", "a quote stands inside a field without quotes"},
      {"id,400,410,420\n\xE4,1,2,3\n", "f, line 2, column 1 (id): a text is not UTF-8"},
      {"id,400,410,420\na\0,1,2,3\n"s, "f, line 2, column 1 (id): a text holds a zero byte"},
      {"geometry,400,410,420\n49,1,2,3\n", "f, line 2, column 1 (geometry): unknown geometry \"49\""},
      {"geometry,400,410,420\n45,1,2,3\n",
       "f, line 2, column 1 (geometry): geometry \"45\" may be in degrees or the code of M3; write 45deg or "
       "M3"},
      {"Measuring Geometry,400,410,420\nSCE,1,2,3\nover the moon,1,2,3\n",
       "f, line 3, column 1 (Measuring Geometry): unknown geometry \"over the moon\""},
      {"id,400,410,420\n" + longText + ",1,2,3\n", "f, line 2: the row is longer than 1 MiB"},
      {longText, "f, line 1: the row is longer than 1 MiB"},
      {std::string(CsvReader::kMaxColumns, ','), "f, line 1: more than 10000 columns"},
  };
  for (const auto& [content, message] : kFaults) {
    try {
      ReadAll(content);
      ADD_FAILURE() << "not refused: " << content.substr(0, 60);
    } catch (const vrx::io::InputError& error) {
      EXPECT_NE(std::string(error.what()).find(message), std::string::npos)
          << error.what() << "\nfor " << message;
    }
  }
}

TEST(CsvReaderOfNumbers, RowsOfManyShapes) {
  constexpr std::size_t kColumns = 150, kRows = 200;
  const char* const kTexts[] = {
      "12.34", "56.78", "9.87",  "1",      "-3.5", "100.0",    "0.000001",  ".5",
      "7.",    " 4.2 ", "\"8\"", "1.5e-3", "+1",   "12345678", "123456789", "0.1234567890123456"};
  std::string content = "c0";
  for (std::size_t i = 1; i < kColumns; ++i) content += ",c" + std::to_string(i);
  std::vector<std::size_t> chosen;
  std::size_t next = 0;
  for (std::size_t i = 0; i < kRows * kColumns; ++i) {
    if (i * i % 7 > 3)
      next = i * 31 % std::size(kTexts);  // some come twice, and two of one shape after another
    chosen.push_back(i % kColumns < 2 * i / kColumns ? i % 2 : next);
    content += (i % kColumns == 0 ? "\r\n" : ",") + std::string(kTexts[chosen.back()]);
  }
  std::istringstream stream(content);
  CsvReader reader(stream, "f");
  std::vector<double> numbers(kColumns);
  for (std::size_t row = 0; row < kRows; ++row) {
    ASSERT_TRUE(reader.Next());
    reader.Numbers(numbers);
    reader.EndRecord();
    for (std::size_t i = 0; i < kColumns; ++i) {
      const std::string text = kTexts[chosen[row * kColumns + i]];
      ASSERT_EQ(numbers[i], std::stod(text[0] == '"' ? text.substr(1) : text)) << row << ' ' << i << text;
    }
  }
  EXPECT_FALSE(reader.Next());
}

TEST(CurveReader, RowsAcrossTheBufferAndJumpsBack) {
  // 2 MB of rows of changing length: many records lie across two fills of the buffer.
  std::string content = "id,400,410,420\n";
  std::vector<std::size_t> offsets;
  for (int i = 0; content.size() < 2'000'000; ++i) {
    offsets.push_back(content.size());
    content += std::string(static_cast<std::size_t>(i % 97), 'i') + std::to_string(i) + "," +
               std::to_string(i % 100) + ",2,3\n";
  }
  std::istringstream stream(content);
  CurveReader reader(CsvReader(stream, "f"), false);
  CurveRow row;
  for (std::size_t i = 0; i < offsets.size(); ++i) {
    ASSERT_TRUE(reader.Next(row));
    ASSERT_EQ(reader.Source().Offset(), offsets[i]);
    ASSERT_EQ(row.curve[0], static_cast<double>(i % 100));
  }
  EXPECT_FALSE(reader.Next(row));
  for (const std::size_t i : {offsets.size() - 1, std::size_t{0}, offsets.size() / 2}) {
    reader.SeekTo(offsets[i]);
    ASSERT_TRUE(reader.Next(row));
    EXPECT_EQ(row.id, std::string(i % 97, 'i') + std::to_string(i));
  }
  reader.Rewind();
  ASSERT_TRUE(reader.Next(row));
  EXPECT_EQ(row.id, "0");
}

TEST(CurveReader, SaysWhatItDid) {
  const struct {
    const char* header;
    const char* description;
    bool narrow;
  } kRows[] = {
      {"400,410,420",
       "400 to 420 nm at 10 nm: completed down to 360 nm with the first value, completed up to 750 nm "
       "with the last value",
       true},
      {"360,380,400",
       "360 to 400 nm at 20 nm: brought to 10 nm by Lagrange interpolation, completed up to 750 nm "
       "with the last value",
       true},
  };
  for (const auto& [header, description, narrow] : kRows) {
    std::istringstream stream(header);
    const CurveReader reader(CsvReader(stream, "f"), false);
    EXPECT_EQ(reader.Grid().Description(), description);
    EXPECT_EQ(reader.Grid().IsNarrow(), narrow);
  }
  std::istringstream stream(FileOf(355, 755, 5, [](int) { return 1; }));
  const CurveReader reader(CsvReader(stream, "f"), false);
  EXPECT_EQ(
      reader.Grid().Description(),
      "355 to 755 nm at 5 nm: brought to 10 nm by taking the values measured there, cut to 360 to 750 nm");
  EXPECT_FALSE(reader.Grid().IsNarrow());
}

TEST(CurveReader, KeepsTheValuesOfFineSums) {
  std::istringstream stream(FileOf(400, 790, 1, [](int nm) { return nm; }));
  CurveReader reader(CsvReader(stream, "f"), false);
  reader.SumAt(5);
  EXPECT_EQ(
      reader.SummedGrid().Description(),
      "400 to 790 nm at 1 nm: brought to 5 nm by taking the values measured there, cut to 360 to 780 nm, "
      "completed down to 360 nm with the first value");
  CurveRow row;
  ASSERT_TRUE(reader.Next(row));
  ASSERT_EQ(row.fine.size(), 85u);
  EXPECT_EQ(row.Interval(), 5);
  EXPECT_EQ(row.fine[0], 400.0);
  EXPECT_EQ(row.fine[9], 405.0);
  EXPECT_EQ(row.fine[84], 780.0);
  EXPECT_EQ(row.curve[5], 410.0);
}

// Colours that were seen under another light than they are judged by give verdicts on colours that nobody saw. What a file does
// not say is no contradiction.
TEST(CurveReader, ColoursOfAnotherLightAreRefused) {
  using namespace vrx;
  const struct {
    const char* light;  // illuminant and observer, as columns
    vrxIlluminant illuminant;
    int32_t observer;
    std::string seen;  // empty where it does not contradict
  } kRows[] = {
      {"D50,2", vrxIllumD50, kObserver2, ""},
      {"D50,2", vrxIllumD65, kObserver2, "D50 at 2 degrees; under D65 at 2 degrees"},
      {"D50,2", vrxIllumD50, kObserver10, "D50 at 2 degrees; under D50 at 10 degrees"},
      {"A,10", vrxIllumD50, kObserver10, "A at 10 degrees; under D50 at 10 degrees"},  // A is number 0
      {"D50,10", vrxIllumA, kObserver10, "D50 at 10 degrees; under A at 10 degrees"},
      {"D50,", vrxIllumD50, kObserver10, ""},
      {"D50,", vrxIllumA, kObserver10, "D50; under A at 10 degrees"},
      {",2", vrxIllumA, kObserver2, ""},
      {",2", vrxIllumA, kObserver10, "2 degrees; under A at 10 degrees"},
      {",", vrxIllumA, kObserver10, ""},
  };
  const auto refusal = [](const std::string& content, const auto& row, bool isPipe) -> std::string {
    std::istringstream stream(content);
    io::InputStream input = io::WrapInput(stream, "f.csv");
    if (!isPipe) HoldInput(input);
    CurveReader reader(io::OpenMeasurements(std::move(input)), io::Content::kCurvesOrColors);
    CurveRow colour;
    try {
      reader.RequireLight(row.illuminant, row.observer);
      while (reader.Next(colour)) {
      }
    } catch (const io::InputError& error) {
      return error.what();
    }
    return "";
  };
  for (const auto& row : kRows) {
    const std::string header = "id,L,a,b,illuminant,observer\n", sample = "x,50,1,2,", light = row.light,
                      reason = "the colours were seen under " + row.seen + " only curves could tell them";
    const bool isFine = row.seen.empty();
    const std::string content = header + sample + light + '\n';
    EXPECT_EQ(refusal(content, row, false), isFine ? "" : "f.csv: " + reason) << light;
    // Of a pipe the columns are known with the first sample, and a later sample may be of another light.
    EXPECT_EQ(refusal(content, row, true), isFine ? "" : "f.csv, line 2: " + reason) << light;
    EXPECT_EQ(refusal(header + sample + ",\n" + sample + light + '\n', row, false),
              isFine ? "" : "f.csv, line 3: " + reason)
        << light;
    // Curves give the colour of every light.
    EXPECT_EQ(refusal("id,400,410,420,illuminant,observer\nx,10,20,30," + light + '\n', row, false), "");
  }
}

}  // namespace
