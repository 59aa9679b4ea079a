// vrx convert and vrx info: forms of file into each other and back, and what other programs make of them.

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

#include "tests/testing/tool_process.h"

namespace {

class Convert : public vrx::test::ToolProcess {
 protected:
  bool Has(const std::string& program) {
    return std::system(("command -v " + program + " > /dev/null 2>&1").c_str()) == 0;
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

TEST_F(Convert, ThereAndBackIsTheSame) {
  folder_.Write("odd.csv", kOdd);
  folder_.Write("angles.csv",
                "id,geometry,360,370,380\np,15\xC2\xB0,1,2,3\np,-15\xC2\xB0,4,5,6\np,110\xC2\xB0,7,8,9\n");
  ASSERT_EQ(Run("convert " + kChart + " chart.csv").status, 0);
  for (const char* const name : {"chart", "odd", "angles"}) {
    for (const char* const form : {"cxf", "json", "txt", "csv"}) {
      const std::string there = std::string(name) + ".csv new." + form;
      ASSERT_EQ(Run("convert " + there).err, "") << there;
      ASSERT_EQ(Run("convert new." + std::string(form) + " back.csv").err, "") << there;
      // CxF3 gives every object a date.
      EXPECT_TRUE(Ends(std::string("sed 's/,[0-9-]*T[0-9:]*Z//; "
                                   "s/^id,\\(name,\\|geometry,\\|\\)date,/id,\\1/' back.csv | cmp - ") +
                       name + ".csv"))
          << there;
    }
  }
  const std::string percent = Run("convert odd.csv - --to csv").out;
  ASSERT_EQ(Run("convert odd.csv fraction.csv --to-fraction").status, 0);
  EXPECT_NE(folder_.Read("fraction.csv").find(",0.12345678901234567,0.001,"), std::string::npos);
}

TEST_F(Convert, OtherProgramsReadThem) {
  folder_.Write("odd.csv", kOdd);
  folder_.Write("angles.csv", "id,geometry,360,370,380\np,15\xC2\xB0,1,2,3\np,SCI,4,5,6\n");
  for (const std::string& name : {kChart, std::string("odd.csv"), std::string("angles.csv")}) {
    ASSERT_EQ(Run("convert " + name + " new.cxf").err, "");
    ASSERT_EQ(Run("convert " + name + " new.txt").err, "");
    if (Has("xmllint")) {
      EXPECT_TRUE(
          Ends("xmllint --noout --schema " VRX_SOURCE_DIR "/tests/tools/cxf3_core_subset.xsd new.cxf"));
    }
  }
  ASSERT_EQ(Run("convert " + kChart + " new.cxf").err, "");
  ASSERT_EQ(Run("convert " + kChart + " new.txt").err, "");
  if (Has("cxf2ti3") && Has("colverify")) {
    EXPECT_TRUE(Ends("colverify new.txt new.txt | grep -q 'peak = 0.000000'"));
    EXPECT_TRUE(Ends("cxf2ti3 new.cxf argyll"));
    ASSERT_EQ(Run("convert argyll.cie back.csv").err, "");
    ASSERT_EQ(Run("convert " + kChart + " chart.csv").err, "");
    EXPECT_TRUE(Ends("cut -d, -f2- back.csv > values && cut -d, -f3- chart.csv | cmp - values"));
    EXPECT_NE(Run("info argyll.cie").out.find("380 to 730 nm at 10 nm"), std::string::npos);
  }
}

TEST_F(Convert, RefusesWhatAFormCannotHold) {
  folder_.Write("odd.csv", kOdd);
  folder_.Write("short.csv", "410,420,430\n1,2,3\n");
  folder_.Write("old.cxf", "as it was");
  ExpectRefused({
      {"convert short.csv old.cxf", "CxF3 holds wavelengths that begin from 360 to 400 nm"},
      {"convert odd.csv new.unknown", "the name tells no form of file"},
      {"convert odd.csv new.csv --grid 400-700/7", "the step does not divide the range"},
      {"convert odd.csv new.txt --to-fraction", "CGATS is written in percent"},
      {"convert odd.csv /nowhere/new.csv", "/nowhere/new.csv: "},
  });
  EXPECT_EQ(folder_.Read("old.cxf"), "as it was");
}

TEST_F(Convert, InfoSaysWhatThereIsAndWhatIsNotUsed) {
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
