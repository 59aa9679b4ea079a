// Files of measurements in every form: what is read of them, and what is refused with which reason.

#include <vrxio/files/measurement_files.h>

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include <vrxio/files/curve_reader.h>
#include <vrxio/measurement/bandpass.h>
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
      {Cgats("SAMPLE_ID SPEC_400 SPEC_410 SPEC_420", "\"a\" 1 2.05 # two lines\n 3",
             "SPECTRAL_NORM \"10.0\"\n# comment\n"),
       a},
      {Cgats("SAMPLE_NAME\tR_400\tR_410\tR_420", "\"a b\"\t10\t20.5\t30\t"),
       std::string("a b|a b|-1|") + kCurve},
      {Cgats("SAMPLE_NAME\tR_400\tR_410\tR_420", "a b c\t10\t20.5\t30"),
       std::string("a b c|a b c|-1|") + kCurve},
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
       "f (CSV), line 2: the commas separate the columns and seem to be decimal signs"},
      {"nm,a\n400,1\n410,x\n", "f (CSV), line 1"},
      {Cgats("SAMPLE_ID nm400 nm410 nm420", "a 10 20\nb 1 2 3"), "f (CGATS), line 6: the row is short"},
      {Cgats("SAMPLE_ID nm400 nm410 nm420", "a 10 20 30 40"), "f (CGATS), line 6: the row is long"},
      {Cgats("SAMPLE_ID nm400 nm410 nm420", "a 10 20 x"),
       "f (CGATS), line 6: field 4: \"x\" is not a number"},
      {Cgats("SAMPLE_ID nm400 nm410 nm420", "a 10 20 30", "NUMBER_OF_SETS 10000000000\n"),
       "NUMBER_OF_SETS is 10000000000, but there are 1"},
      {Cgats("SAMPLE_ID nm400 nm410 nm420", "a 1 1.2 1.8"), "say which by --fraction or --percent"},
      {Cgats(kPairs, "a 400 10 410 20.5 420 30\nb 400 1 415 2 420 3"),
       "f (CGATS), line 7: field 4: the wavelength is 415, and 410 in the first row"},
      {Cgats(kPairs, "a 400 10 x 20.5 420 30"), "\"x\" is no wavelength"},
      {"Instrument: \xFF\nid,400,410,420\na,1,2,3\n", "f (CSV), line 1: the text is not UTF-8"},
      {Cgats("RGB_R", "1"), "there is no table of curves or colours"},
      {"CGATS.17\nBEGIN_DATA_FORMAT\nnm400 nm410 nm420\nEND_DATA_FORMAT\nBEGIN_DATA\n10 20 30\n",
       "END_DATA is missing"},
      {Cxf(kSpectrum, ""), "the wavelengths are not known"},
      {Cxf("<@ReflectanceSpectrum ColorSpecification=\"s\">0.1 3.5 0.1</@ReflectanceSpectrum>", kMeasuring),
       "f (CxF3), line 4: the reflectance 3.5 is no fraction between -0.1 and 3"},
      {Cxf(kSpectrum, kMeasuring).substr(0, 330), "the file ends within"},
      {kWhole.substr(0, kWhole.size() - 9), "the file ends within its root element"},
      {Cxf("<@ColorCIELab><@L>1</@L></@ColorCIELab>", kMeasuring), "ColorCIELab has no number A"},
      {Cxf("<@ReflectanceSpectrum ColorSpecification=\"s\"> </@ReflectanceSpectrum>", kMeasuring),
       "f (CxF3), line 4: ReflectanceSpectrum has no values"},
      {Cxf("", kMeasuring), "neither reflectances nor colours"},
      {"<!DOCTYPE a [<!ENTITY b \"bb\">]><a/>", "f (CxF3), line 1: a document type has no place"},
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
      {"[{\"L\":1", "the file ends within the object"},
      {"{}", "a list of objects is expected"},
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
                                   {"MEASUREMENT_SOURCE", "Illumination=M2 ObserverAngle=2 Filter=UVcut"},
                                   {"WEIGHTING_FUNCTION", "ILLUMINANT, D50"},
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

TEST(MeasurementFiles, WhatIsNotUsedIsSaid) {
  const std::pair<std::string, std::string> kNotes[] = {
      {Cxf("<@CustomSpectrum/>" + kSpectrum, kMeasuring),
       "CustomSpectrum is passed over: it is not a reflectance"},
      {Cxf("<@ColorSRGB/>" + kSpectrum, kMeasuring), "ColorSRGB is not used"},
      {Cxf(kSpectrum, kMeasuring +
                          "</@ColorSpecificationCollection><@CustomResources><x y='>'/></@CustomResources>"
                          "<@ColorSpecificationCollection>"),
       "CustomResources is passed over"},
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
