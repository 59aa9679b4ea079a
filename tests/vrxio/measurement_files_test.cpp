// Files of measurements in every form: what is read of them, and what is refused with which reason.

#include <vrxio/files/measurement_files.h>

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include <vrxio/files/curve_reader.h>
#include <vrxio/measurement/bandpass.h>
#include <vrxio/measurement/value_scale.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/shown_text.h>
#include "tests/testing/rows.h"

namespace {

using namespace vrx::io;
using vrx::test::RowMatches;

// A sample as text, "id|name|geometry|values|lab".
std::string Described(const Measurement& sample) {
  std::ostringstream text;
  text << sample.id << '|' << sample.name << '|' << sample.geometry << '|';
  for (std::size_t i = 0; i < sample.reflectance.size(); ++i) {
    text << (i > 0 ? " " : "") << sample.layout->wavelengths[i] << ':' << sample.reflectance[i];
  }
  const auto rounded = [](double value) { return std::round(value * 1e9) / 1e9 + 0.0; };
  if (sample.hasXyz) text << "|xyz";
  for (const double value : sample.xyz) sample.hasXyz ? text << ' ' << rounded(value) : text;
  if (sample.hasLab) text << "|lab";
  for (const double value : sample.lab) sample.hasLab ? text << ' ' << rounded(value) : text;
  return text.str() + '\n';
}

std::string ReadAll(const std::string& content, const ReadOptions& options = {}) {
  std::istringstream stream(content);
  const auto reader = OpenMeasurements(WrapInput(stream, "f"), options);
  std::string all;
  Measurement sample;
  while (reader->Next(sample)) all += Described(sample);
  return all;
}

constexpr const char* kCurve = "400:10 410:20.5 420:30\n";

std::string Cgats(const std::string& fields, const std::string& rows, const std::string& keywords = "") {
  return "CGATS.17\n" + keywords + "BEGIN_DATA_FORMAT\n" + fields + "\nEND_DATA_FORMAT\nBEGIN_DATA\n" + rows +
         "\nEND_DATA\n";
}

constexpr const char* kPairs =
    "SAMPLE_ID SPECTRAL_NM SPECTRAL_PCT SPECTRAL_NM SPECTRAL_PCT SPECTRAL_NM SPECTRAL_PCT";

std::string Cxf(const std::string& values, const std::string& measuring, const std::string& prefix = "cc:") {
  const std::string declaration = prefix.empty() ? "xmlns" : "xmlns:" + prefix.substr(0, prefix.size() - 1);
  std::string text =
      "<?xml version=\"1.0\"?>\n<@CxF " + declaration +
      "=\"http://colorexchangeformat.com/CxF3-core\">\n<@Resources><@ObjectCollection>\n"
      "<@Object ObjectType=\"Target\" Name=\"a &amp; &#xE9;\" Id=\"o1\"><@CreationDate>2024-05-01T00:00:00Z"
      "</@CreationDate><@ColorValues>" +
      values + "</@ColorValues></@Object></@ObjectCollection><@ColorSpecificationCollection>" + measuring +
      "</@ColorSpecificationCollection></@Resources></@CxF>";
  std::string out;
  for (const char c : text) c == '@' ? out += prefix : out += c;
  return out;
}

const std::string kMeasuring =
    "<@ColorSpecification "
    "Id=\"s\"><@MeasurementSpec><@MeasurementType>Spectrum_Reflectance</@MeasurementType>"
    "<@GeometryChoice><@SingleAngle><@SingleAngleConfiguration>Annular</@SingleAngleConfiguration>"
    "<@IlluminationAngle>45.0</@IlluminationAngle><@MeasurementAngle>0</@MeasurementAngle></@SingleAngle>"
    "</@GeometryChoice><@WavelengthRange StartWL=\"400\" "
    "Increment=\"10\"/><@Backing>white</@Backing><@Device>"
    "<@Model>M</@Model><@DeviceIllumination>M1_Daylight</@DeviceIllumination></@Device></@MeasurementSpec>"
    "</@ColorSpecification>";
const std::string kSpectrum =
    "<@ReflectanceSpectrum ColorSpecification=\"s\">0.1 0.205\n3.0e-1</@ReflectanceSpectrum>";

TEST(MeasurementFiles, EveryFormGivesTheSameSample) {
  const std::string a = std::string("a||-1|") + kCurve;
  const std::pair<std::string, std::string> kForms[] = {
      // CSV: spellings of wavelengths and ids, their order, preambles, units, comments, trailing separators.
      {"Sample,400nm,nm410,R420\na,10,20.5,30\n", a},
      {"SAMPLE_ID\t400 [nm]\t%R 410nm\tSPECTRAL_NM420\t\na\t10\t20,5\t30\t\n", a},
      {"id;420;410;400\na;30;20,5;10\n", a},
      {"Instrument: X\n\n# remark\nid,400,410,420\n,%,%,%\n# more\na,10,20.5,30\n", a},
      {"Export of today\nid,400,410,420\nnm,%,%,%\na,10,20.5,30\n", a},
      {"id,400,410,420\ra,10,20.5,30\r", a},
      {std::string("\xFF\xFEi\0d\0,\0004\0000\0000\0,\0004\0001\0000\0,\0004\0002\0000\0\n\0a\0,\0001\0000\0,"
                   "\0002\0000\0.\0005\0,"
                   "\0003\0000\0\n\0",
                   58),
       a},
      {"id,400,dE2000,410,420,dL*,\xCE\x94"
       "E CMC(2:1)\na,10,1,20.5,30,2,3\n",
       a},
      // Wavelengths in rows, with and without names.
      {"Wavelength (nm),a\n400,10\n410,20.5\n420,30\n", a},
      {"nm;a\nnm;%\n420;30\n410;20,5\n400;10\n", a},
      {"400\t10\n410\t20.5\n420\t30\n", std::string("1||-1|") + kCurve},
      // CGATS.
      {Cgats("SAMPLE_ID SPECTRAL_NM400 SPECTRAL_NM410 SPECTRAL_NM420", "a 10 20.5 30"), a},
      {Cgats("nm420 nm410 SAMPLE_ID\nRGB_R nm400", "0.3 0.205 a 255 0.1  "), a},
      {Cgats("SAMPLE_ID SPEC_400 SPEC_410 SPEC_420", "\"a\" 1 2.05 # two lines\n# between\n\n 3",
             "SPECTRAL_NORM \"10.0\"\n# comment\n"),
       a},
      {Cgats("SAMPLE_NAME\tR_400\tR_410\tR_420", "\"a b\"\t10\t20.5\t30\t"),
       std::string("a b|a b|-1|") + kCurve},
      {Cgats("SAMPLE_NAME\tR_400\tR_410\tR_420", "a b c\t10\t20.5\t30"),
       std::string("a b c|a b c|-1|") + kCurve},
      {Cgats("SAMPLE_ID SAMPLE_LOC R_400 R_410 R_420", "a \"\"\"1\"\"\" 10 20.5 30"), a},
      {Cgats("SAMPLE_ID SAMPLE_LOC R_400 R_410 R_420", "a \"\" 10 20.5 30"), a},
      {Cgats(kPairs, "a 400 10 410.0 20.5 420 30\nb 400.0 1 410 2 420 3"), a + "b||-1|400:1 410:2 420:3\n"},
      {Cgats(kPairs, "b\t400\t1\t410\t2\t420\t3", "SPECTRAL_NORM 1\n"), "b||-1|400:100 410:200 420:300\n"},
      {Cgats("RGB_R RGB_G", "1 2") + Cgats("SAMPLE_ID LAB_L LAB_A LAB_B", "x 50 1 -2", "CREATED \"today\"\n"),
       "x||-1||lab 50 1 -2\n"},
      // CxF3, with any prefix.
      {Cxf(kSpectrum, kMeasuring), std::string("a & \xC3\xA9||-1|") + kCurve},
      {Cxf(kSpectrum, kMeasuring, ""), std::string("a & \xC3\xA9||-1|") + kCurve},
      {Cxf("<@ReflectanceSpectrum Name='a > b' ColorSpecification=\"s\">\n0.1 +.205\t3.0e-1 "
           "</@ReflectanceSpectrum>"
           "<@ColorSRGB Name='->'/>",
           kMeasuring),
       std::string("a & \xC3\xA9||-1|") + kCurve},
      {Cxf("<@ColorCIEXYZ ColorSpecification=\"s\"><@X>1</@X><@Y>2</@Y><@Z>3</@Z></@ColorCIEXYZ>"
           "<@ColorCIELCh ColorSpecification=\"s\"><@L>50</@L><@C>10</@C><@H>180</@H></@ColorCIELCh>",
           kMeasuring, "q:"),
       "a & \xC3\xA9||-1||xyz 1 2 3|lab 50 -10 0\n"},
      // JSON.
      {"[{\"id\":\"a\",\"400\":10,\"410\":2.05e1,\"420\":30}]", a},
      {" [ {\"420\":30,\"x\":[1,{}],\"410\":20.5,\"400\":10,\"id\":\"\\u0061\"}\n]", a},
      // Colours.
      {"id,L*,a*,b*(10/D65)\na,50,1,-2\n", "a||-1||lab 50 1 -2\n"},
      {"id,L,C,h\na,50,2,90\n", "a||-1||lab 50 0 2\n"},
  };
  for (const auto& [content, expected] : kForms) EXPECT_EQ(ReadAll(content), expected) << content;

  ReadOptions options;
  options.wavelengths = "400-420/10";
  EXPECT_EQ(ReadAll("a,10,20.5,30\n", options), a);
  options = {};
  options.latin1 = true;
  EXPECT_EQ(ReadAll("id,400,410,420\n\xE9,10,20.5,30\n", options), std::string("\xC3\xA9||-1|") + kCurve);
  options = {};
  options.lenient = true;
  EXPECT_EQ(ReadAll("id,gloss,400,410,420\na,x,10,20.5,30\n", options), a);
  EXPECT_EQ(ReadAll(Cgats("SAMPLE_ID nm400 nm410 nm420", "a 10 20.5 30", "NUMBER_OF_SETS 2\n"), options), a);
  options = {};
  options.ignoredColumns = {"gloss"};
  EXPECT_EQ(ReadAll("id,Gloss,400,410,420\na,x,10,20.5,30\n", options), a);
  options = {};
  options.orientation = ReadOptions::Wavelengths::kInRows;
  EXPECT_EQ(ReadAll("nm,400,410\n400,10,1\n410,20.5,2\n420,30,3\n", options),
            std::string("400||-1|") + kCurve + "410||-1|400:1 410:2 420:3\n");
}

TEST(MeasurementFiles, RefusesWithFormLineAndReason) {
  const std::string deep(70, '['), kWhole = Cxf(kSpectrum, kMeasuring);
  const std::string kHostile = "\x1B]0;owned" + std::string(20'000, 'x');  // would set a terminal's title
  const std::pair<std::string, std::string> kFaults[] = {
      {"nm,400,410,420\n400,10,1,2\n410,2,2,2\n420,30,3,3\n",
       "--wavelengths-in columns or --wavelengths-in rows"},
      {"1,2,3,4\n1,2,3,4\n", "f (CSV), line 1: 4 columns without a header; name their wavelengths"},
      {"id,400,410,420\na,1,5,2,5,3,5\n",
       "f (CSV), line 2: commas separate the columns and seem to be decimal signs"},
      {"nm,a\n400,1\n410,x\n", "f (CSV), line 1"},
      {Cgats("SAMPLE_ID nm400 nm410 nm420", "a 10 20\nb 1 2 3"), "f (CGATS), line 6: the row is short"},
      {Cgats("SAMPLE_ID nm400 nm410 nm420", "a 10 20 30 40"), "f (CGATS), line 6: the row is long"},
      {Cgats("SAMPLE_ID nm400 nm410 nm420", "a 10 20 x"),
       "f (CGATS), line 6: field 4: \"x\" is not a number"},
      {Cgats("SAMPLE_ID nm400 nm410 nm420", "a 10 20 30", "NUMBER_OF_SETS 10000000000\n"),
       "NUMBER_OF_SETS is 10000000000, but there are 1"},
      {Cgats("SAMPLE_ID nm400 nm410 nm420", "a 1 1.2 1.8"), "choose with --fraction or --percent"},
      {Cgats(kPairs, "a 400 10 410 20.5 420 30\nb 400 1 415 2 420 3"),
       "f (CGATS), line 7: field 4: the wavelength is 415, and 410 in the first row"},
      {Cgats(kPairs, "a 400 10 x 20.5 420 30"), "\"x\" is not a wavelength"},
      {"Instrument: \xFF\nid,400,410,420\na,1,2,3\n", "f (CSV), line 1: a text is not UTF-8"},
      {"400,410,420,caf\xE9\na,1,2,3,x\n", "f (CSV), line 1: a text is not UTF-8"},
      {Cgats("RGB_R", "1"), "there is no table of curves or colours"},
      {"CGATS.17\nBEGIN_DATA_FORMAT\nnm400 nm410 nm420\nEND_DATA_FORMAT\nBEGIN_DATA\n10 20 30\n",
       "END_DATA is missing"},
      {Cxf(kSpectrum, ""), "the wavelengths are not known"},
      {Cxf("<@ReflectanceSpectrum ColorSpecification=\"s\">0.1 3.5 0.1</@ReflectanceSpectrum>", kMeasuring),
       "f (CxF3), line 4: the reflectance 3.5 is not between -0.1 and 3"},
      {Cxf(kSpectrum, kMeasuring).substr(0, 330), "the file ends within"},
      {kWhole.substr(0, kWhole.size() - 9), "the file ends within its root element"},
      {Cxf("<@ColorCIELab><@L>1</@L></@ColorCIELab>", kMeasuring), "ColorCIELab has no number A"},
      {Cxf("<@ReflectanceSpectrum ColorSpecification=\"s\"> </@ReflectanceSpectrum>", kMeasuring),
       "f (CxF3), line 4: ReflectanceSpectrum has no values"},
      {Cxf("", kMeasuring), "neither reflectances nor colours"},
      {"<!DOCTYPE a [<!ENTITY b \"bb\">]><a/>", "f (CxF3), line 1: CxF must not have a document type"},
      {"<html/>", "the root element is html, not CxF"},
      {"<?xml version='1.0' encoding='KOI8-R'?><CxF/>", "the encoding KOI8-R is not read"},
      {"<CxF xmlns='http://www.example.com'/>", "not that of CxF3"},
      {Cxf(
           [] {
             std::string nested;
             for (int i = 0; i < 70; ++i) nested += "<a>";
             return nested;
           }(),
           ""),
       "nested more than 64 deep"},
      {"[{\"400\":1,\"410\":2}]", "f (JSON), line 1: fewer than 3 wavelengths"},
      {"[{\"L\":1,\"a\":2,\"b\":null}]", "neither wavelengths nor X,Y,Z nor L,a,b"},
      {"[{\"L\":1,\"a\":2,\"b\":3},\n{\"L\":1,\"L\":2}]", "f (JSON), line 2: the object has two members L"},
      {"[{\"a\":" + deep + "}]", "nested more than 64 deep"},
      {"[{\"id\":\"\\u0000\",\"L\":1,\"a\":2,\"b\":3}]", "f (JSON), line 1: a text holds a zero byte"},
      {"[{\"L\":1", "the file ends within the object"},
      {"{}", "expected a list of objects"},
      // Text that is hostile to whoever reads the message.
      {kHostile + ",400,410,420\n", "f (CSV), line 1"},
      {"400,410,420\n1,2," + kHostile + "\n", "f (CSV), line 2, column 3 (420): \" ]0;owned"},
      {Cgats("SAMPLE_ID nm400 nm410 nm420", kHostile + " 10 20 x"), "f (CGATS), line 6: field 4"},
      {Cgats("SAMPLE_ID nm400 nm410 nm420", "a 1 2 3", "SPECTRAL_NORM " + kHostile + "\n"),
       "f (CGATS), line 2"},
      {"<" + kHostile + "/>", "f (CxF3), line 1"},
      {"<CxF xmlns='" + kHostile + "'/>", "not that of CxF3"},
      {"<?xml version='1.0' encoding='" + kHostile + "'?><CxF/>", "f (CxF3), line 1"},
      {"[{\"\\u001b" + kHostile.substr(1) + "\":1,\"\\u001b" + kHostile.substr(1) + "\":2}]",
       "f (JSON), line 1: the object has two members"},
      {"[{\"L\":1,\"a\":2,\"" + kHostile + "\":3}]", "f (JSON), line 1"},
  };
  for (const auto& [content, message] : kFaults) {
    try {
      ReadAll(content);
      ADD_FAILURE() << "not refused: " << content.substr(0, 60);
    } catch (const InputError& error) {
      const std::string text = error.what();
      EXPECT_NE(text.find(message), std::string::npos) << text.substr(0, 900) << "\nfor " << message;
      EXPECT_EQ(text, ShownText(text)) << "nothing that a terminal would obey";
      EXPECT_LE(text.size(), 700u) << message;
    }
  }
  ReadOptions fraction;
  fraction.scale = ReadOptions::Scale::kFraction;
  EXPECT_THROW(ReadAll("400,410,420\n10,20,30\n", fraction), InputError);
  fraction.force = true;
  EXPECT_EQ(ReadAll("400,410,420\n10,20,30\n", fraction), "1||-1|400:1000 410:2000 420:3000\n");
}

// The reason why a text is refused; empty when it is not.
std::string Refusal(const std::string& content, const ReadOptions& options = {}) {
  try {
    ReadAll(content, options);
  } catch (const InputError& error) {
    return error.what();
  }
  return {};
}

TEST(MeasurementFiles, FractionsAreNotTakenForPercent) {
  ReadOptions percent, fraction;
  percent.scale = ReadOptions::Scale::kPercent;
  fraction.scale = ReadOptions::Scale::kFraction;
  const std::string kAsk = "they may be fractions of 1 or percent; choose with --fraction or --percent";
  const struct {
    std::string content;
    double largest;  // as percent; 0 when the file has to be asked about
  } kFiles[] = {
      // A fluorescent paper, a public file with 1.44; 2 is no fraction.
      {"400,410,420\n0.1,1.03,0.2\n", 0},
      {"400,410,420\n0.1,1.44,0.2\n0.1,1.99,0\n", 0},
      {"400,410,420\n0.1,1.44,0.2\n0.1,2,0\n", 2},
      {"nm,a,b\n400,1,0.1\n410,0.5,0.3\n420,0.3,1.03\n", 0},
      {"[{\"400\":0.1,\"410\":1.03,\"420\":0.2}]", 0},
      {Cgats("SAMPLE_ID nm400 nm410 nm420", "a 0.5 1.6 1.2"), 0},
      // A unit says percent: of a heading, below the header, of a column of wavelengths by rows.
      {"%R 400,%R 410,%R 420\n0.1,1.03,0.2\n", 1.03},
      {"400 [%],410 [%],420 [%]\n0.1,1.03,0.2\n", 1.03},
      {"id,400,410,420\n,%,%,%\na,0.1,1.03,0.2\n", 1.03},
      {"nm,%R\n400,1.03\n410,0.5\n420,0.3\n", 1.03},
      {"[{\"%R400\":0.1,\"%R410\":1.03,\"%R420\":0.2}]", 1.03},
      // Noise at wavelengths that no curve on the grid rests on decides nothing, nor is it refused.
      {"300,310,320,330,340,350,360,370,380\n-1e30,99,50,3,0.3,0.4,0.5,0.6,0.7\n", 0},
      // A CGATS file of fractions with a value too large for one behind the first rows.
      {Cgats("SAMPLE_ID nm400 nm410 nm420", "a 0.5 0.6 0.7\n" + std::string(70'000, '#') + "\nb 0.1 2.1 0.1"),
       0},
      // Colours are no reflectances.
      {"L,a,b\n1,0,0\n", 0.5},
  };
  for (const auto& [content, largest] : kFiles) {
    SCOPED_TRACE(content.substr(0, 60));
    const std::string reason = Refusal(content);
    EXPECT_EQ(reason.empty(), largest > 0) << reason;
    EXPECT_EQ(reason.find("--fraction") != std::string::npos, largest == 0) << reason;
    EXPECT_EQ(Refusal(content, percent), "");
    // A file that can be read twice is asked about before its first sample.
    if (largest > 0 || content.size() > 1000) continue;
    std::istringstream stream(content);
    InputStream held = WrapInput(stream, "f");
    HoldInput(held);
    EXPECT_THROW(OpenMeasurements(std::move(held)), ScaleError);
  }
  EXPECT_NE(Refusal(kFiles[0].content).find("f (CSV): all values are below 2, the largest is 1.03: " + kAsk),
            std::string::npos);
  // Fractions become the percent of their digits, rounded once.
  for (const std::string& content :
       {std::string("id,400,410,420\na,0.011,1.03,0.12345678901234567\n"),
        std::string("nm;a\n400;0,011\n410;1,03\n420;0,12345678901234567\n"),
        std::string("[{\"id\":\"a\",\"400\":0.011,\"410\":1.03,\"420\":0.12345678901234567}]"),
        Cgats("SAMPLE_ID nm400 nm410 nm420", "a 0.011 1.03 0.12345678901234567")}) {
    std::istringstream stream(content);
    const auto reader = OpenMeasurements(WrapInput(stream, "f"), fraction);
    Measurement sample;
    ASSERT_TRUE(reader->Next(sample)) << content;
    EXPECT_EQ(std::vector<double>(sample.reflectance.begin(), sample.reflectance.end()),
              (std::vector<double>{1.1, 103, 12.345678901234567}))
        << content;
  }
}

// No part of a file is dropped because it stands where none is expected.
TEST(MeasurementFiles, WhatFollowsTheEndIsRefused) {
  const std::string json = R"([{"L":1,"a":2,"b":3}])", cxf = Cxf(kSpectrum, kMeasuring);
  const std::pair<std::string, std::string> kFiles[] = {
      {json + " \n", ""},
      {json + json, "line 1: there is more text after the end of the list"},
      {json + "garbage", "there is more text after the end of the list"},
      {cxf + "\n<!-- a > b --><?end?>\n", ""},
      {cxf + cxf, "line 6: there is more text after the end of the document"},
      {cxf + "garbage", "there is more text after the end of the document"},
      {Cxf(kSpectrum +
               "</@ColorValues></@Object></@ObjectCollection><@ObjectCollection><@Object><@ColorValues>",
           kMeasuring),
       "line 5: there is a second ObjectCollection"},
      {R"([{"L":1,"a":2,"b":3,"id":"\ud83d\ude00"}])", ""},
      {R"([{"L":1,"a":2,"b":3,"id":"\ud83d"}])", "half a character"},
      {R"([{"L":1,"a":2,"b":3,"id":"\ud83d\u0041"}])", "half a character"},
      {R"([{"L":1,"a":2,"b":3,"id":"\ude00"}])", "half a character"},
  };
  for (const auto& [content, reason] : kFiles) {
    EXPECT_NE(Refusal(content).find(reason), std::string::npos) << content << '\n' << Refusal(content);
    EXPECT_EQ(Refusal(content).empty(), reason.empty()) << content << '\n' << Refusal(content);
  }
}

// What instruments and programs write beside what the forms lay down.
TEST(MeasurementFiles, OdditiesOfMakers) {
  const std::string a = std::string("a||-1|") + kCurve, one = std::string("1||-1|") + kCurve;
  const std::string xyz = "a||-1||xyz 20 25 30\n";
  ReadOptions lenient, byColumn, named, colors;
  lenient.lenient = true;
  byColumn.idColumn = "LOT";
  named.columns = {"id", "L", "a", "b"};
  colors.columns = {"X", "Y", "Z"};
  const struct {
    std::string content, expected;
    ReadOptions options = {};
  } kFiles[] = {
      // Ids: of the maker, of the standard where nothing else names the sample, of the reading, without a heading.
      {"Data Name,400,410,420\na,10,20.5,30\n", a},
      {"Std. Name,Data Name,400,410,420\nb,a,10,20.5,30\n", a},
      {"Std. Name,400,410,420\na,10,20.5,30\n", a},
      {"Name of affiliated standard sample,Sample,400,410,420\n,a,10,20.5,30\n", a},
      {"Reading,400,410,420\na,10,20.5,30\n", a},
      {"Reading,Name,400,410,420\n7,a,10,20.5,30\n", std::string("a|a|-1|") + kCurve},
      {",400,410,420\na,10,20.5,30\n", a},
      {",id,400,410,420\n0,a,10,20.5,30\n", a},
      {"400,410,420\na,10,20.5,30\n", a},  // a heading fewer than columns
      {"Lot,id,400,410,420\na,7,10,20.5,30\n", a, byColumn},
      {"id,Lot,400,410,420\n7,a,10,20.5,30\n", a, byColumn},
      {"Lot,gloss,400,410,420\na,x,10,20.5,30\n", a, lenient},
      // Components among wavelengths that they do not fit, and counts beside reflectances.
      {"id,R350,5551,400,410,420\na,1,2,10,20.5,30\n", a, lenient},
      {"id,400 nm [counts],400 [%],410 nm [counts],410 [%],420 nm [counts],420 "
       "[%]\na,5000,10,6000,20.5,7000,30\n",
       a},
      {"Wavelength [nm],Dark [counts],a,Sample [counts]\n400,1,10,99\n410,2,20.5,98\n420,3,30,97\n", a},
      {"Wavelength(nm)\tRadiance(W/sr/m2/nm)\ta\n400\t1.2\t10\n410\t1.3\t20.5\n420\t1.2\t30\n", a},
      // Blanks that separate, wavelengths with exponents, marks behind the data.
      {"id    400  410 420\na 10   20.5 30\n", a},
      {"id 400 410 420\n\"a\"  10,0 20,5 30\n", a},
      {"400 10\n410   20.5\n 420 30\n", one},
      {"Operator: LOW M2\nnm,Yellow W M2 (SRW)\n400,10\n410,20.5\n420,30\n",
       std::string("Yellow W M2 (SRW)||-1|") + kCurve},
      {">>>>>Begin Spectral Data<<<<<\n4.000E+02\t1.0E+01\n4.100E+02\t2.05E+01\n4.200E+02\t3.0E+01\n"
       ">>>>>End Spectral Data<<<<<\n",
       one},
      {"id,400,410,420\na,10,20.5,30\n[EndOfFile]\n", a},
      // Tables of colours without a header, and xyY.
      {"a,50,1,-2\n", "a||-1||lab 50 1 -2\n", named},
      {"20 25 30\n", "1||-1||xyz 20 25 30\n", colors},
      {"id,x,y,Y\na,0.26666666666666666,0.3333333333333333,25\n", xyz},
      {Cgats("SAMPLE_ID XYY_X XYY_Y XYY_CAPY", "a 0.26666666666666666 0.3333333333333333 25"), xyz},
      {"id,X,Y,Z,x,y\na,20,25,30,,\n", xyz},
      {"id,L,a,b,C,h\na,50,1,-2,,\n", "a||-1||lab 50 1 -2\n"},
      // Rows that were not measured.
      {Cgats("SAMPLE_ID NM400 NM410 NM420", "x - - -\na 10 20.5 30\ny - - \"\"", "NUMBER_OF_SETS 3\n"), a,
       lenient},
      {Cgats("SAMPLE_ID\tNM400\tNM410\tNM420", "x\t-\t\t-\na\t10\t20.5\t30"), a, lenient},
      {"id,400,410,420,date\nx,,,,today\na,10,20.5,30,today\ny,-,-,-,today\n", a, lenient},
      {R"([{"id":"x","400":null,"410":null,"420":null},{"id":"a","400":10,"410":20.5,"420":30}])", a,
       lenient},
      {R"([{"id":"a","400":"10","410":" 20.5","420":"3e1"}])", a},
  };
  for (const auto& file : kFiles)
    EXPECT_EQ(ReadAll(file.content, file.options), file.expected) << file.content;

  ReadOptions absent;
  absent.idColumn = "batch";
  const struct {
    std::string content, reason;
    ReadOptions options = {};
  } kFaults[] = {
      {"id,R350,400,410,420\na,1,10,20.5,30\n", "column 2 (R350): the column is not id"},
      {"id,350,400,410,420\na,1,10,20.5,30\n", "the wavelengths have a gap"},
      {"id,400,410,420\na,1,2,3\n", "there is no column \"batch\"", absent},
      {"1,2,3\n", "or the columns, such as --columns L,a,b"},
      {"1,2\n", "--columns names 4", named},
      {"id,L,a,b\na,1,2,3\n", "the file has a header of its own", named},
      {"id,x,y,Y\na,0.3,0,25\n", "a chromaticity y must be above 0"},
      {"id,400,410,420\na,10,,30\n", "the field is empty", lenient},
      // Lamps.
      {Cgats("SAMPLE_ID SPEC_400 SPEC_410 SPEC_420", "a 10 20 30", "MEAS_TYPE \"EMISSION\"\n"),
       "power of a light"},
      {"Wavelength (nm),Irradiance\n400,10\n410,20\n420,30\n", "power of a light"},
      {"Unit: W/m^2/nm\nnm,a\n400,10\n410,20\n420,30\n", "power of a light"},
      {"id,400 nm,410 nm,420 nm\n,W/m2/nm,W/m2/nm,W/m2/nm\na,1,2,3\n", "power of a light"},
      {Cxf("<@EmissiveSpectrum ColorSpecification=\"s\">0.1 0.2 0.3</@EmissiveSpectrum>", kMeasuring),
       "spectra of lights"},
  };
  for (const auto& fault : kFaults) {
    EXPECT_NE(Refusal(fault.content, fault.options).find(fault.reason), std::string::npos)
        << fault.content << '\n'
        << Refusal(fault.content, fault.options);
  }
  // Rows of zeros are told.
  std::istringstream stream("id,400,410,420\na,0,0,0\nb,0,0,5\n");
  CurveReader curves(OpenMeasurements(WrapInput(stream, "f")));
  CurveRow row;
  while (curves.Next(row)) {
  }
  EXPECT_EQ(curves.CountZeros(), 1);
}

TEST(MeasurementFiles, TablesWithoutFieldsOfTheirOwnAreReadAgain) {
  // The third table goes on with the fields of the second, the first has others.
  const std::string content = Cgats("SAMPLE_ID LAB_L LAB_A LAB_B", "a 1 2 3\nb 4 5 6") +
                              Cgats("LAB_B LAB_A LAB_L SAMPLE_ID RGB_R", "9 8 7 c 0") +
                              "BEGIN_DATA\n12 11 10 d 0\nEND_DATA\n";
  std::istringstream stream(content);
  InputStream input = WrapInput(stream, "f");
  HoldInput(input);
  const auto reader = OpenMeasurements(std::move(input));
  const auto all = [&reader] {
    std::string text;
    Measurement sample;
    while (reader->Next(sample)) text += Described(sample);
    return text;
  };
  const std::string expected = "a||-1||lab 1 2 3\nb||-1||lab 4 5 6\nc||-1||lab 7 8 9\nd||-1||lab 10 11 12\n";
  Measurement sample;
  ASSERT_TRUE(reader->Next(sample));
  reader->Rewind();  // before the other tables are known
  EXPECT_EQ(all(), expected);
  reader->Rewind();
  EXPECT_EQ(all(), expected);
}

TEST(MeasurementFiles, ConditionsInTheWordsOfTheMakers) {
  const std::pair<const char*, int32_t> kGeometries[] = {{"45/0", 1},
                                                         {"45\xC2\xB0:0\xC2\xB0", 1},
                                                         {"45/0:c", 1},
                                                         {"0_45", 3},
                                                         {"d/8", 0},
                                                         {"di:8", 12},
                                                         {"de:8", 13},
                                                         {"SPIN", 12},
                                                         {"SCE", 13},
                                                         {"d/0", 2},
                                                         {"M1", 43},
                                                         {"M2_UVExcluded", 44},
                                                         {"15as", 4},
                                                         {"45as-15", 41},
                                                         {"as110", 11},
                                                         {"sphere", 0},
                                                         {"over the moon", kUnknownGeometry},
                                                         {"", kNoGeometry}};
  for (const auto& [text, code] : kGeometries) EXPECT_EQ(ParseMeasuringGeometry(text), code) << text;

  MeasuringConditions conditions;
  for (const auto& [word, text] : {std::pair("MEASUREMENT_GEOMETRY", "45/0"),
                                   {"SAMPLE_BACKING", "black"},
                                   {"MEASUREMENT_SOURCE", "Illumination=M2 Filter=UVcut"},
                                   {"WEIGHTING_FUNCTION", "ILLUMINANT, D50"},
                                   {"WEIGHTING_FUNCTION", "OBSERVER, 2 degree"},
                                   {"Instrument", "X"},
                                   {"Aperture", "LAV"}}) {
    EXPECT_TRUE(TakeCondition(word, text, conditions)) << word;
  }
  EXPECT_EQ(conditions.geometry, 1);
  EXPECT_EQ(conditions.mCondition, 2);
  EXPECT_EQ(conditions.illuminant, vrx::vrxIllumD50);
  EXPECT_EQ(conditions.observer, vrx::kObserver2);
  EXPECT_EQ(ConditionCode(conditions), "CREEL");
  MeasuringConditions other = conditions;
  EXPECT_EQ(ConditionConflict(conditions, other), "");
  other.mCondition = 0;
  EXPECT_EQ(ConditionConflict(conditions, other), "M2 and M0");

  // CxF: the measuring's.
  std::istringstream stream(Cxf(kSpectrum, kMeasuring));
  const auto cxf = OpenMeasurements(WrapInput(stream, "f"));
  EXPECT_EQ(cxf->FirstLayout().conditions.geometry, 1);
  EXPECT_EQ(cxf->FirstLayout().conditions.mCondition, 1);
  EXPECT_EQ(cxf->FirstLayout().conditions.backing, "white");

  // Two ways of measuring: samples have geometries, and a mixture of others is told.
  std::istringstream mixed(Cgats("SAMPLE_ID nm400 nm410 nm420", "a 10 20 30", "FILTER M0\n") +
                           Cgats("SAMPLE_ID nm400 nm410 nm420", "a 10 20 30", "FILTER M2\n"));
  CurveReader reader(OpenMeasurements(WrapInput(mixed, "f")));
  CurveRow row;
  while (reader.Next(row)) {
  }
  EXPECT_EQ(reader.Mixture(), "M0 and M2");
}

// SCI could be held against SCE in silence where a geometry is stated that nothing is known of.
TEST(MeasurementFiles, GeometriesThatAreNotUnderstoodAreTold) {
  const auto cgats = [](const std::string& keywords) {
    return Cgats("SAMPLE_ID nm400 nm410 nm420", "a 10 20 30", keywords);
  };
  const auto cxf = [](const std::string& measured) {
    std::string measuring = kMeasuring;
    const std::size_t begin = measuring.find("<@SingleAngle>"), end = measuring.find("</@GeometryChoice>");
    return Cxf(kSpectrum, measuring.replace(begin, end - begin, measured));
  };
  const struct {
    std::string content, text;
  } kFiles[] = {
      {cgats("MEASUREMENT_GEOMETRY \"over the moon\"\n"), "over the moon"},
      {cgats("GEOMETRY \"45\"\n"), "45"},
      {"Measuring geometry: over the moon\nid,400,410,420\na,10,20,30\n", "over the moon"},
      {cxf("<@UnknownGeometry>over the moon</@UnknownGeometry>"), "over the moon"},
      {cxf("<@MultiAngle><@BRDFAngle><@Aspecular>33</@Aspecular></@BRDFAngle></@MultiAngle>"), "33"},
      {cxf("<@UnknownGeometry>unknown</@UnknownGeometry>"), ""},
      {cgats("MEASUREMENT_GEOMETRY \"unknown\"\n"), ""},
      {cgats("MEASUREMENT_GEOMETRY \"\"\n"), ""},
      {cgats("MEASUREMENT_GEOMETRY \"over the moon\"\nSPECULAR \"SCE\"\n"), ""},
      {cgats("MEASUREMENT_GEOMETRY \"d:8\"\n"), ""},
      {"id,400,410,420\na,10,20,30\n", ""}};
  for (const auto& [content, text] : kFiles) {
    std::istringstream stream(content);
    CurveReader reader(OpenMeasurements(WrapInput(stream, "f")));
    const std::vector<std::string> warnings = reader.SampleWarnings();
    ASSERT_EQ(warnings.size(), text.empty() ? 0U : 1U) << content;
    if (text.empty()) continue;
    EXPECT_NE(warnings[0].find("geometry \"" + text + "\""), std::string::npos) << warnings[0];
    EXPECT_NE(warnings[0].find("SCI, SCE"), std::string::npos) << warnings[0];
  }
}

// What differs between the measurings of a CxF file: the geometry, or the M condition where that is all.
TEST(MeasurementFiles, MeasuringsTellSamplesApart) {
  const auto replaced = [](std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
  };
  const std::string second = replaced(kSpectrum, "\"s\"", "\"t\""),
                    same = replaced(kMeasuring, "\"s\"", "\"t\""),
                    withoutUv = replaced(same, "M1_Daylight", "M2_UVExcluded"),
                    turned = replaced(replaced(withoutUv, "Angle>45.0", "Angle>0"), "MeasurementAngle>0",
                                      "MeasurementAngle>45");
  const std::tuple<std::string, const char*, const char*> kRows[] = {
      {same, "|-1|", "|-1|"}, {withoutUv, "|43|", "|44|"}, {turned, "|1|", "|3|"}};
  for (const auto& [measuring, first, other] : kRows) {
    std::istringstream lines(ReadAll(Cxf(kSpectrum + second, kMeasuring + measuring)));
    for (const std::string code : {first, other}) {
      std::string line;
      ASSERT_TRUE(std::getline(lines, line)) << code;
      EXPECT_NE(line.find(code), std::string::npos) << line << " for " << code;
    }
  }
}

TEST(MeasurementFiles, WhatIsNotUsedIsSaid) {
  const std::pair<std::string, std::string> kNotes[] = {
      {Cxf("<@CustomSpectrum/>" + kSpectrum, kMeasuring),
       "CustomSpectrum is ignored: it is not a reflectance"},
      {Cxf("<@ColorSRGB/>" + kSpectrum, kMeasuring), "ColorSRGB is not used"},
      {Cxf(kSpectrum, kMeasuring +
                          "</@ColorSpecificationCollection><@CustomResources><x y='>'/></@CustomResources>"
                          "<@ColorSpecificationCollection>"),
       "CustomResources is ignored"},
      {Cgats("SAMPLE_ID RGB_R nm400 nm410 nm420", "a 1 10 20 30"), "fields that are not used: RGB_R"},
  };
  for (const auto& [content, note] : kNotes) {
    std::istringstream stream(content);
    const auto reader = OpenMeasurements(WrapInput(stream, "f"));
    EXPECT_NE(std::ranges::find(reader->Notes(), note), reader->Notes().end()) << note;
  }
  // An object of JSON does not take its conditions from the one before.
  std::istringstream stream(R"([{"L":1,"a":2,"b":3,"filter":"M1","geometry":"15as"},{"L":1,"a":2,"b":3}])");
  const auto reader = OpenMeasurements(WrapInput(stream, "f"));
  Measurement sample;
  ASSERT_TRUE(reader->Next(sample) && sample.layout->conditions.mCondition == 1 && reader->Next(sample));
  EXPECT_EQ(sample.layout->conditions.mCondition, -1);
  EXPECT_EQ(sample.geometry, kNoGeometry);
}

TEST(MeasurementFiles, UnevenWavelengthsGiveTheCubic) {
  // A cubic is what the interpolation reproduces, away from the ends.
  const auto cubic = [](double nm) { return 50 + 10 * (nm - 550) / 100 - 5 * std::pow((nm - 550) / 100, 3); };
  std::ostringstream header, values;
  header.precision(10);
  values.precision(17);
  for (double nm = 340; nm <= 780; nm += nm < 500 ? 0.37 : 1.9) {
    header << (nm > 340 ? "," : "") << nm;
    values << (nm > 340 ? "," : "") << cubic(nm);
  }
  std::istringstream stream(header.str() + "\n" + values.str() + "\n");
  CurveReader reader(OpenMeasurements(WrapInput(stream, "f")));
  CurveRow row;
  ASSERT_TRUE(reader.Next(row));
  std::vector<double> expected;
  for (int nm = 360; nm <= 750; nm += 10) expected.push_back(cubic(nm));
  EXPECT_TRUE(RowMatches("cubic", row.curve, expected, 1e-8));
}

TEST(MeasurementFiles, FilesLongerThanTheWindow) {
  // Samples of changing length, 2 MB of them in each form: their parts lie across every edge of the window.
  constexpr int kSamples = 12'000;
  std::string rows, objects, members;
  for (int i = 0; i < kSamples; ++i) {
    const std::string id = std::string(static_cast<std::size_t>(i % 89), 'i') + std::to_string(i);
    const std::string value = std::to_string(i % 100);
    rows += id + " " + value + " 20.5 30\n";
    objects += "<@Object ObjectType=\"T\" Name=\"" + id + "\" Id=\"o" + std::to_string(i) +
               "\"><@CreationDate>2024-05-01T00:00:00Z</@CreationDate><@ColorValues><@ReflectanceSpectrum "
               "ColorSpecification=\"s\">" +
               FractionText(i % 100) + " 0.205 0.3</@ReflectanceSpectrum></@ColorValues></@Object>";
    members +=
        (i > 0 ? ",{\"id\":\"" : "{\"id\":\"") + id + "\",\"400\":" + value + ",\"410\":20.5,\"420\":30}";
  }
  const std::string whole =
      Cxf("</@ColorValues></@Object>" + objects + "<@Object><@ColorValues>", kMeasuring);
  std::string cxf;
  for (const char c : whole) c == '@' ? cxf += "cc:" : cxf += c;
  for (const std::string& content : {Cgats("SAMPLE_ID nm400 nm410 nm420", rows), cxf, "[" + members + "]"}) {
    std::istringstream stream(content);
    InputStream input = WrapInput(stream, "f");
    HoldInput(input);
    const auto reader = OpenMeasurements(std::move(input));
    Measurement sample;
    uint64_t bookmark = 0;
    for (int i = 0; i < kSamples; ++i) {
      ASSERT_TRUE(reader->Next(sample));
      if (i == 7777) bookmark = reader->Offset();
      ASSERT_EQ(sample.id, std::string(static_cast<std::size_t>(i % 89), 'i') + std::to_string(i));
      ASSERT_EQ(sample.reflectance[0], i % 100);
    }
    EXPECT_FALSE(reader->Next(sample));
    reader->SeekTo(bookmark);
    ASSERT_TRUE(reader->Next(sample));
    EXPECT_EQ(sample.id, std::string(7777 % 89, 'i') + "7777");
    reader->Rewind();
    ASSERT_TRUE(reader->Next(sample));
    EXPECT_EQ(sample.id, "0");
  }
}

TEST(MeasurementFiles, FractionsAndPercentAreTheSameDigits) {
  for (const double percent :
       {12.345, 0.1, 100.0, 1e-9, 3.3333333333333335, 0.0, 99.999999999999986, 1e4, -0.25}) {
    double back = -1;
    EXPECT_TRUE(ParseFractionAsPercent(FractionText(percent), back)) << FractionText(percent);
    EXPECT_EQ(back, percent) << FractionText(percent);
  }
  EXPECT_EQ(FractionText(12.345), "0.12345");
  EXPECT_EQ(FractionText(250), "2.5");
}

TEST(MeasurementFiles, BandpassIsTakenOut) {
  // Stearns and Stearns: a straight line stays as it is; a peak of 1 becomes 1 + 2a beside -a.
  std::vector<double> line{1, 2, 3, 4}, peak{0, 0, 1, 0, 0};
  CorrectBandpass(line);
  EXPECT_TRUE(RowMatches("line", line, std::vector<double>{1 - 0.083, 2, 3, 4 + 0.083}, 1e-15));
  CorrectBandpass(peak);
  EXPECT_TRUE(RowMatches("peak", peak, std::vector<double>{0, -0.083, 1.166, -0.083, 0}, 1e-15));
}

}  // namespace
