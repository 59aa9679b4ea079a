// Names as people and instruments write them: of illuminants, systems, geometries, columns and wavelengths.

#include <vrxio/measurement/names.h>

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxio/measurement/headings.h>
#include <vrxio/measurement/measurement.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/text.h>
#include "tests/testing/rows.h"

namespace {

using namespace vrx::io;
using Texts = std::vector<std::string>;

template <class ACTION>
std::string RefusalOf(ACTION action) {
  try {
    action();
  } catch (const InputError& error) {
    return error.what();
  }
  return "not refused";
}

TEST(Names, NearestIsFoundWhereItIsNear) {
  const Texts kNames{"A", "D50", "D65", "cie2000", "tolerance", "delta"};
  const std::pair<const char*, const char*> kRows[] = {
      {"d65", "D65"},   // case does not count
      {"D56", "D50"},   // one letter is another; D65, two exchanged, is as near and stands behind
      {"D6", "D65"},    // a letter is missing
      {"D655", "D65"},  // a letter too many
      {"X65", "D65"},   // another letter
      {"X6X", ""},      // of three letters two are too many
      {"tolernace", "tolerance"},
      {"tolernaec", "tolerance"},
      {"otlernaec", ""},
      {"ciee200", "cie2000"},
      {"de", ""},
      {"B", ""},
      {"", ""},
      {"tolerancetolerancetolerancetolerancetoler", ""},
  };
  for (const auto& [text, nearest] : kRows) {
    EXPECT_EQ(NearestName(text, kNames), nearest) << text;
  }
  EXPECT_EQ(DidYouMean("dleta", kNames), "; did you mean delta?");
  EXPECT_EQ(DidYouMean("shadow", kNames), "");
}

TEST(Names, ListsAndNumbers) {
  const std::pair<const char*, Texts> kLists[] = {
      {"", {""}}, {" a , b", {"a", "b"}}, {"a,,b,", {"a", "", "b", ""}}, {"a b", {"a b"}}, {" ", {""}}};
  for (const auto& [text, parts] : kLists) EXPECT_EQ(SplitList(text, ','), parts) << text;
  EXPECT_EQ(ParseNumbers("2, -1,.5,+3e1", "--x"), (std::vector<double>{2, -1, 0.5, 30}));
  for (const char* text : {"", "1,", "1;2", "nan", "inf", "1e999", "--1", "+-1", "0x10", "1 2"}) {
    EXPECT_EQ(RefusalOf([&] { ParseNumbers(text, "--x"); }).substr(0, 6), "--x: \"") << text;
  }
}

TEST(Names, OfConditionsOfViewing) {
  using namespace vrx;
  // CIE 15:2018 numbers fluorescent lamps FL1 to FL12 and LED lamps LED-B1 to LED-V2.
  const std::pair<const char*, vrxIlluminant> kIlluminants[] = {
      {"d65", vrxIllumD65},     {"2", vrxIllumD65},      {"0", vrxIllumA},        {"25", vrxIllumLV2},
      {"F2", vrxIllumCWF},      {"f11", vrxIllumT84},    {"TL84", vrxIllumT84},   {"F12", vrxIllumU30},
      {"TL830", vrxIllumU30},   {"WWF", vrxIllumF4},     {"LED-B1", vrxIllumLB1}, {"LED-B2", vrxIllumLB2},
      {"LED-B3", vrxIllumLB3},  {"LED-B4", vrxIllumLB4}, {"led-b5", vrxIllumLB5}, {"LED-BH1", vrxIllumLH},
      {"LED-RGB1", vrxIllumL3}, {"LED-V1", vrxIllumLV1}, {"LED-V2", vrxIllumLV2}};
  for (const auto& [text, number] : kIlluminants) EXPECT_EQ(ParseIlluminant(text), number) << text;
  const std::pair<const char*, int32_t> kSystems[] = {
      {"0", vrxSystemLab},        {"12", vrxSystemDin6175},        {"CMC", vrxSystemCmc},
      {"cielab", vrxSystemLab},   {"de76", vrxSystemLab},          {"dE94", vrxSystemCie94},
      {"dE00", vrxSystemCie2000}, {"CIEDE2000", vrxSystemCie2000}, {"dE2000", vrxSystemCie2000}};
  for (const auto& [text, number] : kSystems) EXPECT_EQ(ParseSystem(text), number) << text;
  // Every name that is shown is one that is taken, and means the same.
  for (int32_t i = 0; i < kBuiltInIlluminants; ++i) {
    EXPECT_EQ(ParseIlluminant(CodeOf(static_cast<vrxIlluminant>(i))), i);
  }
  for (int32_t i = 0; i < kDifferenceSystems; ++i) EXPECT_EQ(ParseSystem(ShortNameOf(i)), i);
  for (const int32_t observer : {kObserver2, kObserver10}) {
    EXPECT_EQ(ParseObserver(std::to_string(DegreesOf(observer))), observer);
  }
  EXPECT_EQ(WavelengthAt(0), 360);
  EXPECT_EQ(WavelengthAt(39), 750);
  const std::pair<std::string, std::string> kRefused[] = {
      {RefusalOf([] { ParseIlluminant("TL85"); }),
       "unknown illuminant \"TL85\"; did you mean TL84?; see vrx tables"},
      {RefusalOf([] { ParseIlluminant("-1"); }), "unknown illuminant \"-1\""},
      {RefusalOf([] { ParseIlluminant(std::to_string(kBuiltInIlluminants)); }),
       "unknown illuminant \"" + std::to_string(kBuiltInIlluminants) +
           "\""},  // no user illuminant is registered
      {RefusalOf([] { ParseIlluminant("2x"); }), "unknown illuminant \"2x\""},
      {RefusalOf([] { ParseObserver("1"); }), "unknown observer \"1\"; it must be 2 or 10 (degrees)"},
      {RefusalOf([] { ParseSystem(std::to_string(kDifferenceSystems)); }),
       "unknown difference system \"" + std::to_string(kDifferenceSystems) + "\""},
      {RefusalOf([] { ParseSystem(""); }), "unknown difference system \"\"; see --help"}};
  for (const auto& [message, beginning] : kRefused) EXPECT_EQ(message.substr(0, beginning.size()), beginning);
}

TEST(Names, OfGeometries) {
  const std::pair<const char*, int32_t> kRows[] = {{"15\xC2\xB0", 4},
                                                   {"15 deg", 4},
                                                   {"22.5DEG", 6},
                                                   {"-15\xC2\xB0", 41},
                                                   {"sci / 100", 14},
                                                   {"m3", 45},
                                                   {"105deg", 40},
                                                   {"-45deg", 46},
                                                   {"48", 48},
                                                   {"80deg", 48},
                                                   {"12", 12},
                                                   {"", kNoGeometry},
                                                   {"49", kUnknownGeometry},
                                                   {"-1", kUnknownGeometry},
                                                   {"16deg", kUnknownGeometry},
                                                   {"15\xC2", kUnknownGeometry}};
  for (const auto& [text, code] : kRows) EXPECT_EQ(ParseGeometry(text), code) << text;
  for (int32_t code = 0; code < 49; ++code) {
    const std::string name = GeometryName(code);
    EXPECT_EQ(GeometryName(ParseGeometry(name)), name) << code;
    EXPECT_LE(ParseGeometry(name), code);
  }
  EXPECT_EQ(GeometryName(kNoGeometry), "");
}

// Instruments with several angles write 15, 25, 45, 75 and 110, of which the first three are codes of a sphere, of 0 degrees and of M3.
TEST(Names, OfGeometriesByABareNumber) {
  const std::pair<const char*, const char*> kRefused[] = {
      {"0", "geometry \"0\" may be in degrees or the code of d8; write 0deg or d8"},
      {"15", "geometry \"15\" may be in degrees or the code of SCE/100; write 15deg or SCE/100"},
      {"20", "geometry \"20\" may be in degrees or the code of Left; write 20deg or Left"},
      {"25", "geometry \"25\" may be in degrees or the code of 0\xC2\xB0; write 25deg or 0\xC2\xB0"},
      {"45", "geometry \"45\" may be in degrees or the code of M3; write 45deg or M3"},
      {"75", "unknown geometry \"75\"; degrees are written 75deg"},
      {"-15", "unknown geometry \"-15\"; degrees are written -15deg"},
      {"49", "unknown geometry \"49\""},
      {"moon", "unknown geometry \"moon\""}};
  for (const auto& [text, refusal] : kRefused) {
    EXPECT_EQ(ParseGeometry(text), kUnknownGeometry) << text;
    EXPECT_EQ(GeometryRefusal(text), refusal);
  }
}

TEST(Headings, Wavelengths) {
  const std::pair<const char*, double> kRows[] = {
      {"400", 400},
      {"400 nm", 400},
      {"nm400", 400},
      {"R400", 400},
      {"%R 400nm", 400},
      {"400 [nm]", 400},
      {"SPEC_400", 400},
      {"SPECTRAL_NM400", 400},
      {"lambda=555.5", 555.5},
      {"380,5", 380.5},
      {"100", 100},
      {"99.9", 0},
      {"10000", 10'000},
      {"10000.1", 0},
      {"-400", 0},
      {"+400", 0},
      {"400-410", 0},
      {"400/10", 0},
      {"4e2", 0},
      {"Rx400", 0},
      {"400 um", 0},
      {"400.5.5", 0},
      {"nm", 0},
      {"", 0},
      {"1.400", 0},
      {"400:", 0},
      {"                                     400", 400},
      {"                                      400", 0}};  // 41 letters
  for (const auto& [text, nm] : kRows) EXPECT_EQ(WavelengthOf(text), nm) << text;
}

TEST(Headings, RolesAndColours) {
  using enum ColumnRole;
  const struct {
    const char* heading;
    ColumnRole role;
    uint8_t color;
  } kRows[] = {{"X", kColor, kColumnX},
               {"x", kColor, kColumnSmallX},
               {"XYZ_Y", kColor, kColumnY},
               {"xyz z", kColor, kColumnZ},
               {"L*", kColor, kColumnL},
               {"LAB_A", kColor, kColumnA},
               {"lab b", kColor, kColumnB},
               {"LCH_C", kColor, kColumnC},
               {"LAB_H", kColor, kColumnH},
               {"b* (10/D65)", kColor, kColumnB},
               {"C*ab", kColor, kColumnC},
               {"hab [deg]", kColor, kColumnH},
               {"Sample ID", kId, 0},
               {"SAMPLE_NAME", kName, 0},
               {"Standard", kStandard, 0},
               {"geometry", kGeometry, 0},
               {"Date-Time", kDate, 0},
               {"filter", kCondition, 0},
               {"SPECTRAL_NM", kPairWavelength, 0},
               {"410 nm", kWavelength, 0},
               {"RGB_R", kDevice, 0},
               {"xyY_x", kColor, kColumnSmallX},
               {"LAB_DE", kDevice, 0},
               {"dE2000", kDevice, 0},
               {"DE CMC(2:1)", kDevice, 0},
               {"dL*", kDevice, 0},
               {"\xCE\x94"
                "H",
                kDevice, 0},
               {"dE_99", kDevice, 0},
               {"dEx", kUnknown, 0},
               {"dX", kUnknown, 0},
               {"d", kUnknown, 0},
               {"gloss", kUnknown, 0},
               {"", kUnknown, 0},
               {"(L)", kUnknown, 0}};
  for (const auto& row : kRows) {
    EXPECT_EQ(MeaningOf(row.heading).role, row.role) << row.heading;
    EXPECT_EQ(MeaningOf(row.heading).color, row.color) << row.heading;
  }
  EXPECT_EQ(MeaningOf("R_410").wavelength, 410);
  EXPECT_EQ(PlainText(" A-z_09\xC3\x84."), "az09");
}

TEST(Headings, RangesOfWavelengths) {
  const struct {
    const char* text;
    double first, second, last;
    std::size_t count;
  } kRanges[] = {{"400-700/10", 400, 410, 700, 31},       {"400-700", 400, 410, 700, 31},
                 {"380-730/5", 380, 385, 730, 71},        {"400-401/0.5", 400, 400.5, 401, 3},
                 {"100-10000/1", 100, 101, 10'000, 9901}, {"400.5-420.5/10", 400.5, 410.5, 420.5, 3}};
  for (const auto& row : kRanges) {
    const std::vector<double> got = ParseWavelengthRange(row.text, "--w");
    ASSERT_EQ(got.size(), row.count) << row.text;
    EXPECT_EQ(got[0], row.first);
    EXPECT_EQ(got[1], row.second);
    EXPECT_EQ(got.back(), row.last);
  }
  const std::string kNone = "is not a range of wavelengths", kUneven = "the step does not divide the range";
  const std::pair<const char*, std::string> kRefused[] = {{"", kNone},
                                                          {"400", kNone},
                                                          {"700-400/10", kNone},
                                                          {"400-410/10", kNone},
                                                          {"99-700/1", kNone},
                                                          {"400-10001/1", kNone},
                                                          {"400-700/0", kNone},
                                                          {"400-700/-10", kNone},
                                                          {"400/10-700", kNone},
                                                          {"400-700/", kNone},
                                                          {"400-x/10", kNone},
                                                          {"100-10000/0.1", kNone},
                                                          {"400-705/10", kUneven},
                                                          {"400-700/7", kUneven}};
  for (const auto& [text, reason] : kRefused) {
    const std::string message = RefusalOf([&, range = text] { ParseWavelengthRange(range, "--w"); });
    EXPECT_NE(message.find(reason), std::string::npos) << text << ": " << message;
    EXPECT_EQ(message.substr(0, 5), "--w: ");
  }
}

TEST(Conditions, UltravioletAndSpecular) {
  // Words of a file for a filter, a specular component and an M condition of ISO 13655, and the code that they make.
  const struct {
    std::vector<std::pair<const char*, const char*>> facts;
    const char* code;
  } kRows[] = {{{}, ""},
               {{{"specular", "SCI"}}, "CRI"},
               {{{"specular", "excluded"}}, "CRE"},
               {{{"mode", "SPEX"}, {"filter", "420 nm"}}, "CREF"},
               {{{"mode", "i"}, {"uv", "UV 400"}}, "CRIG"},
               {{{"mode", "yes"}, {"uv", "460"}}, "CRIJ"},
               {{{"mode", "no"}, {"uv", "partial"}}, "CREP"},
               {{{"mode", "SCI"}, {"uv", "UV-D65"}}, "CRIP"},
               {{{"mode", "SCI"}, {"uv", "UV excluded"}}, "CRIE"},
               {{{"mode", "SCI"}, {"uv", "none"}}, "CRII"},
               {{{"mode", "SCI"}, {"uv", "100 %"}, {"aperture", "SAV"}}, "CRIIS"},
               {{{"mode", "SCI"}, {"uv", "included"}, {"lens", "xlav"}}, "CRIIX"},
               {{{"mode", "SCI"}, {"uv", "included"}, {"lens", "8 mm"}}, "CRII"},
               {{{"mode", "SCI"}, {"uv", ""}, {"lens", "SAV"}}, "CRI"},
               {{{"geometry", "45/0"}}, "CRE"},
               {{{"geometry", "0:45"}, {"specular", "SCI"}}, "CRE"},
               {{{"geometry", "di:8"}}, "CRI"},
               {{{"condition", "M0"}}, "CRE"},
               {{{"condition", "M1"}}, "CREI"},
               {{{"condition", "(m2)"}}, "CREG"},
               {{{"condition", "M4"}}, ""},
               {{{"condition", "M12"}}, ""},
               {{{"condition", "AM1"}}, ""},
               {{{"polarization", "yes"}}, "CREG"},
               {{{"polarization", "no"}}, ""},
               {{{"filter", "M1"}, {"aperture", "USAV"}}, "CREIU"}};
  for (const auto& row : kRows) {
    MeasuringConditions conditions;
    std::string facts;
    for (const auto& [word, text] : row.facts) {
      EXPECT_TRUE(TakeCondition(word, text, conditions)) << word;
      facts += std::string(word) + '=' + text + ' ';
    }
    EXPECT_EQ(ConditionCode(conditions), row.code) << facts;
  }
  MeasuringConditions none;
  EXPECT_FALSE(TakeCondition("gloss", "1", none));
  EXPECT_EQ(none, MeasuringConditions());
}

TEST(Conditions, ContradictWhereBothKnow) {
  const struct {
    const char *word, *one, *other, *conflict;
  } kRows[] = {{"geometry", "SCI", "45/0", "geometry SCI and 45"},
               {"geometry", "M0", "M3", "M0 and M3"},
               {"uv", "400", "420", "filter 400 and 420"},
               {"backing", "white", "black", "backing white and black"},
               {"backing", "White", "white ", ""},
               {"illuminant", "D50", "D65", "illuminant D50 and D65"},
               {"illuminant", "D50", "ID99", ""},  // an illuminant without a table says nothing
               {"observer", "2", "CIE 1964", "observers of 2 and 10 degrees"},
               {"observer", "1931", "2 deg", ""},
               {"instrument", "one", "another", ""},
               {"date", "1 May", "2 May", ""}};
  for (const auto& row : kRows) {
    MeasuringConditions one, other;
    TakeCondition(row.word, row.one, one);
    TakeCondition(row.word, row.other, other);
    const std::string expected = row.conflict, got = ConditionConflict(one, other);
    EXPECT_EQ(got.substr(0, expected.size()), expected) << row.word;
    EXPECT_EQ(got.empty(), expected.empty()) << got;
    EXPECT_EQ(ConditionConflict(one, {}), "") << row.word;
    EXPECT_EQ(ConditionConflict({}, other), "") << row.word;
  }
  MeasuringConditions included, excluded;
  included.specular = Specular::kIncluded;
  excluded.specular = Specular::kExcluded;
  EXPECT_EQ(ConditionConflict(included, excluded), "specular included and excluded");
}

}  // namespace
