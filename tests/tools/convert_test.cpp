// vrx convert and vrx info: forms of file into each other and back, and what other programs make of them.

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

#include "tests/testing/tool_process.h"

namespace {

#if defined(VRX_TOOL_OF_WINDOWS)
constexpr bool kIsOfThisSystem = false;  // it runs under wine
#else
constexpr bool kIsOfThisSystem = true;
#endif

class Convert : public vrx::test::ToolProcess {
 protected:
  bool Has(const std::string& program) {
    return std::system(("command -v " + program + " > /dev/null 2>&1").c_str()) == 0;
  }
  static std::string Repeated(int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
  }
  // Whether a program of the shell, run in the folder, ends well; what it says goes into the failure.
  testing::AssertionResult Ends(const std::string& command) {
    const int ended = std::system(("cd " + (folder_ / "") + " && { " + command + " ; } > said 2>&1").c_str());
    if (ended == 0) return testing::AssertionSuccess();
    return testing::AssertionFailure() << command << ":\n" << folder_.Read("said");
  }
};

const std::string kChart = VRX_SOURCE_DIR "/examples/chart_average.csv";

// 17 digits, names that need escapes, conditions and a colour.
const char* const kOdd =
    "id,name,measuring geometry,M "
    "condition,filter,backing,instrument,aperture,illuminant,observer,L,a,b,380,390,400\n"
    "\"a,<&> b\",it's,45/0,M2,UVcut,black,X <1>,LAV,D50,2,50.1,-1e-05,0.30000000000000004,"
    "12.345678901234567,0.1,99.99999999999999\n"
    "c,c2,45/0,M2,UVcut,black,X <1>,LAV,D50,2,0,0,0,3.3333333333333335,100,0\n";

constexpr const char* kMoon =
    "CGATS.17\nMEASUREMENT_GEOMETRY \"over the moon\"\nBEGIN_DATA_FORMAT\nSAMPLE_ID nm400 nm410 nm420\n"
    "END_DATA_FORMAT\nBEGIN_DATA\nc 3 10 2\nEND_DATA\n";

TEST_F(Convert, ThereAndBackIsTheSame) {
  folder_.Write("odd.csv", kOdd);
  folder_.Write("angles.csv",
                "id,geometry,360,370,380\np,15\xC2\xB0,1,2,3\np,-15\xC2\xB0,4,5,6\np,110\xC2\xB0,7,8,9\n");
  ASSERT_EQ(Run("convert " + kChart + " chart.csv").status, 0);
  for (const char* const name : {"chart", "odd", "angles"}) {
    for (const char* const form : {"cxf", "json", "txt", "csv"}) {
      const std::string there = std::string(name) + ".csv new." + form;
      // CxF3 gives every object a date, of which other readers know no better.
      const bool isDated = std::string_view(form) == "cxf";
      EXPECT_EQ(Run("convert " + there).err, isDated ? "vrx: " + std::string(name) +
                                                           ".csv: warning: not kept: that samples have no "
                                                           "date (readers other than vrx find the moment of "
                                                           "writing)\n"
                                                     : "")
          << there;
      ASSERT_EQ(Run("convert new." + std::string(form) + " back.csv").err, "") << there;
      EXPECT_TRUE(Ends(std::string("cmp back.csv ") + name + ".csv")) << there;
    }
  }
  const std::string percent = Run("convert odd.csv - --to csv").out;
  ASSERT_EQ(Run("convert odd.csv fraction.csv --to-fraction").status, 0);
  EXPECT_NE(folder_.Read("fraction.csv").find(",0.12345678901234567,0.001,"), std::string::npos);
}

// A chart's target values, densities, remarks and dates, which nothing is made of, go along as far as the form holds them.
TEST_F(Convert, NothingIsLostInSilence) {
  folder_.Write(
      "chart.txt",
      "CGATS.17\nORIGINATOR \"X\"\nDESCRIPTOR \"Chart 3\"\nCREATED \"May 2024\"\nOPERATOR \"me\"\n"
      "BEGIN_DATA_FORMAT\nSAMPLE_ID RGB_R RGB_G RGB_B D_VIS NOTE LAB_L LAB_A LAB_B LAB_C "
      "nm400 nm410 nm420\nEND_DATA_FORMAT\nBEGIN_DATA\nA1 255 0 0.50 1.25 \"a b\" 50 1 2 2.236 10 20 30\n"
      "A2 0 0 0 0.1 \"\" 51 1 2 2.236 11 21 31\nEND_DATA\nBEGIN_DATA_FORMAT\nRGB_R\nEND_DATA_FORMAT\n"
      "BEGIN_DATA\n1\nEND_DATA\n");
  const auto result = Run("convert chart.txt new.csv");
  EXPECT_EQ(result.err,
            "vrx: chart.txt: warning: not kept: the table in line 16, ORIGINATOR, DESCRIPTOR, OPERATOR\n");
  EXPECT_EQ(folder_.Read("new.csv"),
            "id,date,RGB_R,RGB_G,RGB_B,D_VIS,NOTE,LAB_C,L,a,b,400,410,420\n"
            "A1,May 2024,255,0,0.50,1.25,a b,2.236,50,1,2,10,20,30\n"
            "A2,May 2024,0,0,0,0.1,,2.236,51,1,2,11,21,31\n");
  // There and back through every form.
  for (const char* const form : {"json", "txt", "cxf"}) {
    ASSERT_EQ(Run(std::string("convert new.csv there.") + form).err, "") << form;
    ASSERT_EQ(Run(std::string("convert there.") + form + " back.csv").err, "") << form;
    // Empty tags are not written; CxF has dates of its own kind, and this one in a tag.
    const bool isCxf = form == std::string("cxf");
    if (isCxf) {
      EXPECT_TRUE(Ends("grep -q ',May 2024,255,0,0.50,1.25,a b,2.236,' back.csv"));
    } else {
      EXPECT_EQ(folder_.Read("back.csv"), folder_.Read("new.csv")) << form;
    }
  }
  // A CGATS file keeps its words, and a CxF file the description.
  ASSERT_EQ(Run("convert chart.txt own.txt").err,
            "vrx: chart.txt: warning: not kept: the table in line 16\n");
  for (const char* const line :
       {"ORIGINATOR \"X\"", "DESCRIPTOR \"Chart 3\"", "CREATED \"May 2024\"", "OPERATOR \"me\""}) {
    EXPECT_NE(folder_.Read("own.txt").find(line), std::string::npos) << line;
  }
  EXPECT_EQ(Run("convert own.txt new.cxf").err, "vrx: own.txt: warning: not kept: ORIGINATOR, OPERATOR\n");
  EXPECT_NE(folder_.Read("new.cxf").find("<cc:Description>Chart 3<"), std::string::npos);
  // A file takes its own place only where nothing is lost, by another name too.
  ASSERT_TRUE(Ends("ln -s chart.txt link.txt"));
  const std::string before = folder_.Read("chart.txt");
  ExpectRefused({{"convert chart.txt chart.txt", "the file to be replaced would lose the table in line 16"},
                 {"convert chart.txt link.txt --to csv", "would lose the table in line 16, ORIGINATOR"}});
  EXPECT_EQ(folder_.Read("chart.txt"), before);
  EXPECT_EQ(Run("convert new.csv new.csv").status, 0);
}

TEST_F(Convert, ConditionsThatDifferAreFields) {
  folder_.Write("two.csv", "id,M condition,filter,L,a,b\na,M0,none,1,2,3\nb,M2,UVcut,4,5,6\n");
  ASSERT_EQ(Run("convert two.csv two.txt").err, "");
  ASSERT_EQ(Run("convert two.txt back.csv").err, "");
  EXPECT_EQ(folder_.Read("back.csv"), folder_.Read("two.csv"));
}

TEST_F(Convert, WritesForSpreadsheetsAndTerminals) {
  folder_.Write("a.csv", "id,name,400,410,420\n=1+1,a;b,0.011,20.5,30\n");
  EXPECT_EQ(Run("convert a.csv - --to csv --csv-safe --decimal-comma").out,
            "id;name;400;410;420\n\"'=1+1\";\"a;b\";0,011;20,5;30\n");
  std::string expected = Run("color a.csv --illuminants D65 --format csv --digits 1").out;
  for (char& c : expected) c = c == ',' ? ';' : c == '.' ? ',' : c;
  EXPECT_EQ(Run("color a.csv --illuminants D65 --format csv --decimal-comma --digits 1").out, expected);
  // Values below 2 percent throughout say their unit, so that they are not asked about.
  folder_.Write("dark.csv", "%R 400,%R 410,%R 420\n0.011,0.5,1.1\n");
  for (const char* const form : {"csv", "json"}) {
    ASSERT_EQ(Run(std::string("convert dark.csv there.") + form).err, "");
    EXPECT_EQ(Run(std::string("convert there.") + form + " - --to csv").out,
              "id,%R 400,%R 410,%R 420\n1,0.011,0.5,1.1\n");
  }
  folder_.Write("xyz.csv", "X [%],Y [%],Z [%]\n0.4,0.42,0.5\n");
  for (const char* const form : {"csv", "json", "cgats"}) {
    ASSERT_EQ(Run(std::string("convert xyz.csv there.txt --to ") + form).err, "");
    EXPECT_EQ(Run("convert there.txt - --to csv").out, "id,X [%],Y [%],Z [%]\n1,0.4,0.42,0.5\n");
  }
  folder_.Write("fraction.csv", "400,410,420\n0.011,0.5,0.12345\n");
  EXPECT_NE(Run("convert fraction.csv - --to cgats --fraction").out.find("\"1\" 1.1 50 12.345\n"),
            std::string::npos);
  EXPECT_EQ(Run("convert fraction.csv - --to csv").status, 2);
  // No escape reaches a terminal, no character that XML does not have a file.
  folder_.Write("hidden.csv", "id,400,410,420\na\x1B[31m\xEF\xBF\xBE,10,20,30\n");
  if (kIsOfThisSystem && Has("script")) {
    EXPECT_TRUE(Ends("script -qec '" VRX_TOOL " convert hidden.csv - --to csv' /dev/null > shown"));
    EXPECT_EQ(folder_.Read("shown").find('\x1B'), std::string::npos) << folder_.Read("shown");
  }
  EXPECT_TRUE(Run("convert hidden.csv hidden.cxf")
                  .err.starts_with(
                      "vrx: hidden.csv: warning: not kept: line ends in texts, that samples have no date"));
  if (Has("xmllint")) {
    EXPECT_TRUE(Ends("xmllint --noout hidden.cxf"));
  }
}

// The new file grows beside the old one, and goes with the run.
TEST_F(Convert, AnEndLeavesNothingBehind) {
  if (!kIsOfThisSystem) GTEST_SKIP() << "a program of Windows knows no signals, and no limit of a file";
  std::string rows = Header("id", 380, 730);
  for (int i = 0; i < 50'000; ++i) {
    rows += "a" + std::to_string(i) + Repeated(36, ",50.125") + '\n';
  }
  folder_.Write("many.csv", rows);
  folder_.Write("old.cxf", "as it was");
  // Files may grow to some 100 KiB, and what signals that is not ignored by who starts the tool.
  const Result result = Run("--version; ulimit -f 200; " VRX_TOOL " convert many.csv old.cxf");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "vrx: old.cxf: File too large\n");
  // A shell ignores interrupts for what it starts beside itself.
  folder_.Write("end.sh", "env --default-signal=INT " VRX_TOOL
                          " convert many.csv old.cxf & vrx=$!\n"
                          "until ls | grep -q '[.]tmp$' || ! kill -0 $vrx; do :; done\n"
                          "kill -$1 $vrx; wait $vrx; test $? -gt 128\n");
  for (const char* const signal : {"TERM", "INT"}) {
    EXPECT_TRUE(Ends(std::string("sh end.sh ") + signal + " && ! ls | grep '[.]tmp$'")) << signal;
  }
  EXPECT_TRUE(folder_.Read("old.cxf") == "as it was");
}

TEST_F(Convert, OtherProgramsReadThem) {
  folder_.Write("odd.csv", kOdd);
  folder_.Write("angles.csv", "id,geometry,360,370,380\np,15\xC2\xB0,1,2,3\np,SCI,4,5,6\n");
  for (const std::string& name : {kChart, std::string("odd.csv"), std::string("angles.csv")}) {
    ASSERT_EQ(Run("convert " + name + " new.cxf").status, 0);
    ASSERT_EQ(Run("convert " + name + " new.txt").err, "");
    if (Has("xmllint")) {
      EXPECT_TRUE(
          Ends("xmllint --noout --schema " VRX_SOURCE_DIR "/tests/tools/cxf3_core_subset.xsd new.cxf"));
    }
  }
  ASSERT_EQ(Run("convert " + kChart + " new.cxf").status, 0);
  ASSERT_EQ(Run("convert " + kChart + " new.txt").err, "");
  if (Has("txt2ti3")) {
    folder_.Write("device.csv",
                  Header("id,RGB_R,RGB_G,RGB_B", 380, 730) + "a,100,50,0" + Repeated(36, ",12.5") + "\n");
    ASSERT_EQ(Run("convert device.csv device.txt").err, "");
    EXPECT_TRUE(Ends("txt2ti3 -i device.txt device && grep -q 'SPEC_400' device.ti3"));
    ASSERT_EQ(Run("convert device.ti3 back.csv").status, 0);
    EXPECT_NE(folder_.Read("back.csv").find(Repeated(36, ",12.5") + "\n"), std::string::npos)
        << folder_.Read("back.csv");
  }
  if (Has("cxf2ti3")) {
    EXPECT_TRUE(Ends("cxf2ti3 new.cxf argyll"));
    ASSERT_EQ(Run("convert argyll.cie back.csv").status, 0);
    ASSERT_EQ(Run("convert " + kChart + " chart.csv").err, "");
    EXPECT_TRUE(Ends("cut -d, -f4- back.csv > values && cut -d, -f3- chart.csv | cmp - values"));
    EXPECT_NE(Run("info argyll.cie").out.find("380 to 730 nm at 10 nm"), std::string::npos);
  }
}

TEST_F(Convert, RefusesWhatAFormCannotHold) {
  folder_.Write("odd.csv", kOdd);
  folder_.Write("short.csv", "410,420,430\n1,2,3\n");
  folder_.Write("old.cxf", "as it was");
  ExpectRefused({
      {"convert short.csv old.cxf", "CxF3 holds wavelengths that begin from 360 to 400 nm"},
      {"convert odd.csv new.unknown", "the name does not tell the format"},
      {"convert odd.csv new.csv --grid 400-700/7", "the step does not divide the range"},
      {"convert odd.csv new.txt --to-fraction", "CGATS is written in percent"},
      {"convert odd.csv /nowhere/new.csv", "/nowhere/new.csv: "},
  });
  EXPECT_EQ(folder_.Read("old.cxf"), "as it was");
}

// The words of a geometry that nothing is known of are kept, or named among what is lost.
TEST_F(Convert, KeepsTheWordsOfAnUnknownGeometry) {
  folder_.Write("moon.txt", kMoon);
  for (const char* form : {"cxf", "txt"}) {
    const std::string name = std::string("there.") + form;
    EXPECT_EQ(Run("convert moon.txt " + name).err.find("GEOMETRY"), std::string::npos) << form;
    ASSERT_EQ(Run("convert " + name + " back.txt").err, "") << form;
    EXPECT_NE(folder_.Read("back.txt").find("MEASUREMENT_GEOMETRY \"over the moon\"\n"), std::string::npos)
        << form;
    EXPECT_EQ(Run("convert " + name + " back.csv").err,
              "vrx: " + name + ": warning: not kept: MEASUREMENT_GEOMETRY\n");
  }
}

TEST_F(Convert, InfoSaysWhatThereIsAndWhatIsNotUsed) {
  folder_.Write("moon.txt", kMoon);
  folder_.Write("a.csv", kOdd);
  folder_.Write("b.txt",
                "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID RGB_R LAB_L LAB_A "
                "LAB_B\nEND_DATA_FORMAT\nBEGIN_DATA\n1 2 3 4 5\nEND_DATA\n");
  const std::pair<const char*, const char*> kRows[] = {
      {"info a.csv --format csv", "geometry,45/0\n"},
      {"info a.csv --format csv", "M condition,M2\n"},
      {"info a.csv --format csv", "wavelengths,380 to 400 nm at 10 nm\n"},
      {"info a.csv --format csv",
       "condition code,\"CREEL: C - Calibrated, R - Reflectance, E - SCE, E - No UV Energy, L - Large "
       "Lens\"\n"},
      {"info moon.txt --format csv", "warning,\"unknown geometry \"\"over the moon\"\""},
      {"info b.txt --format csv", "note,fields that are not used: RGB_R\n"},
  };
  for (const auto& [arguments, line] : kRows) {
    EXPECT_NE(Run(arguments).out.find(line), std::string::npos) << Run(arguments).out;
  }
  folder_.Write(
      "m0.txt",
      "CGATS.17\nFILTER M0\nBEGIN_DATA_FORMAT\nSAMPLE_ID nm400 nm410 nm420\nEND_DATA_FORMAT\nBEGIN_DATA\n"
      "c 3 10 2\nEND_DATA\n");
  EXPECT_NE(Run("judge a.csv m0.txt --standard-id c").err.find("other conditions than a.csv: M2 and M0"),
            std::string::npos);
}

}  // namespace
