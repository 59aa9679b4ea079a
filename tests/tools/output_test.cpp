// The three formats: numbers that read back, rounding, quoting, and results that end early.

#include "tools/vrx/output/output.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vrxmath/numeric/instruction_set.h>

#include <vrxio/text/input_error.h>

#include "tests/testing/temporary_folder.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/output/decimal_run.h"
#include "tools/vrx/output/shortest_decimal.h"

namespace {

using vrx::tool::Format;
using vrx::tool::MakeRowWriter;
using vrx::tool::OutputError;
using vrx::tool::OutputStream;

// The content of a file after `write`.
template <class WRITE>
std::string Written(WRITE write) {
  const vrx::test::TemporaryFolder folder;
  std::FILE* const file = std::fopen((folder / "out").c_str(), "wb");
  {
    OutputStream output(file);
    write(output);
  }
  std::fclose(file);
  return folder.Read("out");
}

TEST(Output, FixedNumbersRoundAsPrintfDoes) {
  std::mt19937_64 random(4);
  std::uniform_real_distribution<double> exponent(-8, 12);
  std::string expected;
  const std::string got = Written([&](OutputStream& output) {
    for (int i = 0; i < 20'000; ++i) {
      double value = std::pow(10, exponent(random)) * (random() % 2 == 0 ? 1 : -1);
      if (i % 4 == 0) value = std::round(value * 200) / 200;  // many lie half-way between two hundredths
      if (i % 50 == 0) value = i % 100 == 0 ? 0.0 : 0.125;
      const int decimals = i % 6;
      char text[64];
      std::snprintf(text, sizeof text, "%.*f\n", decimals, value);
      const bool negativeZero =
          *text == '-' && std::string(text).find_first_of("123456789") == std::string::npos;
      expected += negativeZero ? text + 1 : text;
      output.AppendFixed(value, decimals);
      output.Append('\n');
    }
    output.Finish();
  });
  EXPECT_EQ(got, expected);
}

// Of every size, with few decimals and many, and the doubles beside them.
std::vector<double> NumbersToWrite() {
  std::mt19937_64 random(5);
  std::vector<double> numbers{0.0, -0.0, 1e-5, std::numeric_limits<double>::infinity(), 5e-324};
  for (int i = 0; i < 100'000; ++i) {
    const double wide = std::ldexp(1.0 + static_cast<double>(random() >> 12) * 0x1p-52, i % 34 - 13);
    const double few = static_cast<double>(random() % 100'000'000) / std::pow(10, i % 12);
    numbers.insert(numbers.end(), {i % 2 == 0 ? wide : -wide, few, std::nextafter(few, 1e9)});
    numbers.push_back(std::nextafter(few, 0.0));
    numbers.push_back(static_cast<double>(random() % (1U << 29)) * 0x1p-12);  // texts as far on either side
    numbers.push_back(std::bit_cast<double>(random() % 0x7ff0'0000'0000'0000));
  }
  for (double power = 0x1p-12; power < 1e6; power *= 2) {
    numbers.insert(numbers.end(), {power, std::nextafter(power, 1e9), -std::nextafter(power, 0.0)});
  }
  for (double power = 1e-5; power < 1e7; power *= 10) {
    numbers.insert(numbers.end(), {power, std::nextafter(power, 1e9), -std::nextafter(power, 0.0)});
  }
  return numbers;
}

TEST(Output, ShortestNumbersAreThoseOfTheStandardLibrary) {
  const std::vector<double> numbers = NumbersToWrite();
  char got[32], expected[32];
  const auto isExpected = [&](double number, const char* end) {
    return std::string_view(got, end) ==
           std::string_view(expected, std::to_chars(expected, expected + 32, number).ptr);
  };
  for (const double number : numbers) {
    ASSERT_TRUE(isExpected(number, vrx::tool::WriteShortest(number, got))) << number;
  }
  const vrx::InstructionSet before = vrx::CurrentInstructionSet();
  for (const vrx::InstructionSet set : vrx::kInstructionSets) {
    if (!vrx::UseInstructionSet(set)) continue;
    vrx::tool::DecimalRun run;
    std::size_t found = 0;
    for (std::size_t from = 0, count = 0; from < numbers.size(); from += count) {
      count = std::min(from % vrx::tool::DecimalRun::kMost + 1, numbers.size() - from);
      run.Find(std::span(numbers).subspan(from, count));
      for (std::size_t i = 0; i < count; ++i) {
        if (!run.Has(i)) continue;
        ++found;
        ASSERT_TRUE(isExpected(numbers[from + i], run.Write(i, got))) << numbers[from + i];
      }
    }
    EXPECT_TRUE(found > numbers.size() / 2 || set == vrx::InstructionSet::kBase);
  }
  vrx::UseInstructionSet(before);
}

TEST(Output, OneRowInEachFormat) {
  const double inf = std::numeric_limits<double>::infinity();
  const auto rows = [&](Format format) {
    return Written([&](OutputStream& output) {
      const auto writer =
          MakeRowWriter(format, output, {{"id"}, {"x", "x wide", 2}, {"n"}, {"u"}, {"i"}, {"q"}});
      writer->Text("a,\"b\"\n\xC3\xA4\xC2\x9B");
      writer->Number(0.1 + 0.2);
      writer->Number(-0.0);
      writer->Number(1e-5);
      writer->Number(inf);
      writer->Number(-std::numeric_limits<double>::quiet_NaN());
      writer->EndRow();
      writer->Finish();
      output.Finish();
    });
  };
  EXPECT_EQ(rows(Format::kCsv),
            "id,x,n,u,i,q\n\"a,\"\"b\"\"\n\xC3\xA4\xC2\x9B\",0.30000000000000004,0,,inf,nan\n");
  EXPECT_EQ(rows(Format::kJson),
            "[\n{\"id\":\"a,\\\"b\\\"\\n\xC3\xA4\\u009b\",\"x\":0.30000000000000004,\"n\":0.0,\"u\":null,"
            "\"i\":null,"
            "\"q\":null}\n]\n");
  EXPECT_EQ(rows(Format::kTable),
            "id        x wide     n  u    i    q\n"
            "a,\"b\" \xC3\xA4     0.30  0.00  -  inf  nan\n");
}

TEST(Output, CsvForASpreadsheet) {
  Format format = Format::kCsv;
  format.digits = 2;
  format.csvSafe = true;
  const std::string text = Written([&](OutputStream& output) {
    const auto writer = MakeRowWriter(format, output, {{"id"}, {"x"}, {"y"}});
    for (const char* id : {"=1+1", "+1", "-1", "@A1", "A=1"}) {
      writer->Text(id);
      writer->Number(-1.005);
      writer->Number(1e-5);
      writer->EndRow();
    }
    output.Finish();
  });
  EXPECT_EQ(text, "id,x,y\n'=1+1,-1.00,\n'+1,-1.00,\n'-1,-1.00,\n'@A1,-1.00,\nA=1,-1.00,\n");
}

TEST(Text, WhatATerminalWouldObeyIsNotShown) {
  const struct {
    std::string text;
    std::size_t length;
    const char* shown;
  } kRows[] = {
      {"plain", 5, "plain"},
      {"abcdefgh", 7, "abcd..."},
      {"\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F", 4, "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F"},
      {"\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F", 3, "..."},
      {"a\x1B[31mb\x7F", 20, "a [31mb "},
      {"\xC2\x9B\xC2\xA0\xE2\x80\xAE\xE2\x81\xA9\xE2\x80\xA8", 20, " \xC2\xA0   "},  // C1, bidi, line end
      {"\xEF\xB7\x90\xEF\xBF\xBF\xF0\x9F\xBF\xBE\xF0\x9F\x8E\xA8", 9,
       "   \xF0\x9F\x8E\xA8"},  // noncharacters
      {"\xC0\xAF\xED\xA0\x80\xE2\x82", 9,
       "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},  // not UTF-8
  };
  for (const auto& row : kRows) EXPECT_EQ(vrx::tool::Shortened(row.text, row.length), row.shown);
  const std::string id(900'000, 'x');
  EXPECT_EQ(vrx::tool::MessageText("f.csv: standard \"" + id + "\" is\nno\x1B").size(), 16 + 62 + 7u);
  EXPECT_LT(vrx::tool::MessageText(id + "\"" + id).size(), 700u);
  const vrx::io::InputError error("f.csv: \"\x1B" + id + "\" is no standard");
  EXPECT_EQ(error.what(), "f.csv: \" " + id.substr(0, 56) + "...\" is no standard") << "readers, too";
}

TEST(Output, WithoutRows) {
  const auto empty = [](Format format) {
    return Written([&](OutputStream& output) {
      MakeRowWriter(format, output, {{"id"}, {"x"}})->Finish();
      output.Finish();
    });
  };
  EXPECT_EQ(empty(Format::kJson), "[]\n");
  EXPECT_EQ(empty(Format::kCsv), "id,x\n");
  EXPECT_EQ(empty(Format::kTable), "id  x\n");
}

TEST(Output, AnEarlyEndIsSeen) {
  EXPECT_EQ(Written([](OutputStream& output) { output.Append("id\n1\n"); }), "")
      << "nothing has left the buffer";
  const std::string large(3'000'000, 'x');
  const std::string text = Written([&](OutputStream& output) { output.Append(large); });
  EXPECT_LT(text.size(), large.size());
  EXPECT_TRUE(text.ends_with("\n# incomplete: the reason is on standard error\n"));
}

TEST(Output, AFullDeviceIsAnError) {
  std::FILE* const full = std::fopen("/dev/full", "wb");
  if (full == nullptr) GTEST_SKIP() << "there is no such device here";
  {
    OutputStream output(full);
    output.Append("text");
    EXPECT_THROW(output.Finish(), OutputError);
  }
  std::fclose(full);
}

}  // namespace
