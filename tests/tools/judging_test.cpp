// Judging, sorting and averaging of colours with known differences, as a user asks for them.

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/illuminants.h>

#include "tests/testing/tool_process.h"
#include "tools/vrx/judging/distribution.h"

namespace {

using vrx::test::Lines;
using vrx::tool::Distribution;

// The fields of wavelengths in a header, and of a curve of one value, each behind a comma.
std::string Wavelengths() {
  std::string header;
  for (int nm = 400; nm <= 700; nm += 10) header += "," + std::to_string(nm);
  return header;
}
std::string FlatCurve(int percent) {
  std::string fields;
  for (int nm = 400; nm <= 700; nm += 10) fields += "," + std::to_string(percent);
  return fields;
}

class Judging : public vrx::test::ToolProcess {
 protected:
  void SetUp() override {
    folder_.Write("red.csv", "id,L,a,b\nr,50,10,0\n"), folder_.Write("yellow.csv", "id,L,a,b\ny,50,0,10\n");
    folder_.Write("s.csv", "id,L,a,b\ns,50,0,0\nr,70,10,-5\n");
    // From s: dE*ab 0.5, 1.3 (a warning beyond 0.75 of 1.5), 2, 5. From r: 0.
    folder_.Write("t.csv", "id,L,a,b\nt1,50.5,0,0\nt2,50,1.2,0.5\nt3,50,0,-2\nt4,53,4,0\n");
    folder_.Write("named.csv", "standard,b,id,a,L\ns,0,t1,0,50.5\nr,-5,t2,10,70\ns,0,t3,4,53\n");
    folder_.Write("readings.csv", "id,X,Y,Z\nu,10,20,30\nv,1,2,3\nu,11,22,33\nu,9,18,27\nv,3,2,1\nv,2,2,2\n");
    folder_.Write("curve.csv", "id" + Wavelengths() + "\nc" + FlatCurve(40) + "\n");
    folder_.Write("near.csv", "id,L,a,b\nn,50.00001,0,0\n");
    folder_.Write("pair.csv", "L1,a1,b1,L2,a2,b2\n50,2.6772,-79.7751,50,0,-82.7485\n");
    folder_.Write("returns.csv", "L1,a1,b1,L2,a2,b2\r50,2.6772,-79.7751,50,0,-82.7485\r");
    folder_.Write("black.csv", "X1,Y1,Z1,X2,Y2,Z2\n1e-5,1e-5,1e-5,5,5,5\n0,0,0,0,0,0\n");
    folder_.Write("lamp.csv", "X1*(2/A),Y1*(2/A),Z1*(2/A),X2*(2/A),Y2*(2/A),Z2*(2/A)\n40,42,14,45,42,14\n");
    folder_.Write("lamps.csv", "X1(2/A),Y1(2/A),Z1(2/A),X2(2/D65),Y2(2/D65),Z2(2/D65)\n40,42,14,45,42,44\n");
    folder_.Write("lamps2.csv", "X(2/A),Y(2/A),Z(2/A),L(2/D65),a(2/D65),b(2/D65)\n40,42,14,45,2,4\n");
    folder_.Write("greys.csv", "id,L,a,b\ng1,50.8,0,0\ng2,51.7,0,0\ng3,52.5,0,0\n");
    folder_.Write("apart.csv", "id,L,a,b\nu,50,0,0\nu,50.1,0,0\nu,50,0.1,0\nu,52,0,0\nu,50,0,-0.1\n");
  }
};

TEST_F(Judging, KnownColours) {
  const std::string kLab = " --system lab --illuminants D65 --tolerance 1.5 --digits 2 --format csv";
  const std::string kHeader =
      "standard,trial,geometry,illuminant,observer,dL,da,db,dC,dH,dEab,word0,word1,word2,box,total,"
      "verdict,reason,excess\n";
  const std::string t1 = "s,t1,,D65,10,0.50,0.00,0.00,0.00,0.00,0.50,Lighter, , ,pass,pass,pass,,\n";
  const std::string t2 =
      "s,t2,,D65,10,0.00,1.20,0.50,1.30,0.00,1.30, ,Redder,Yellower,pass,warning,warning,dEab,0.18\n";
  const std::string t3 = "s,t3,,D65,10,0.00,0.00,-2.00,2.00,0.00,2.00, , ,Bluer,pass,fail,fail,dEab,0.50\n";
  const std::string t4 =
      "s,t4,,D65,10,3.00,4.00,0.00,4.00,0.00,5.00,Lighter,Redder, ,pass,fail,fail,dEab,3.50\n";
  const std::string kNamedT2 = "r,t2,,D65,10,0.00,0.00,0.00,0.00,0.00,0.00, , , ,pass,pass,pass,,\n";
  const struct {
    std::string arguments, out;
  } kRows[] = {
      {"judge s.csv t.csv" + kLab, kHeader + t1 + t2 + t3 + t4},
      {"judge s.csv t.csv --worst-first" + kLab, kHeader + t4 + t3 + t2 + t1},
      {"judge s.csv t.csv --only warning" + kLab, kHeader + t2},
      {"judge s.csv t.csv --only fail,warning" + kLab, kHeader + t2 + t3 + t4},
      {"judge s.csv named.csv" + kLab, kHeader + t1 + kNamedT2 + "s,t3" + t4.substr(4)},
      // What the verdict is, and why.
      {"judge s.csv t.csv --system lab --illuminants D65 --tolerance 9 --limits dL=1,db=-0.5:3 --format csv "
       "--digits 2 --verdict-numbers | cut -d , -f 2,15-",
       "trial,box,total,verdict,reason,excess\nt1,2,2,2,,\nt2,2,2,2,,\nt3,0,2,0,db,-1.50\nt4,0,2,0,dL,2."
       "00\n"},
      {"judge s.csv t.csv --system lab --illuminants D65 --tolerance 3 --limits dL=1 --verdict box --format "
       "csv "
       "--digits 2 | cut -d , -f 2,15-",
       "trial,box,total,verdict,reason,excess\nt1,pass,pass,pass,,\nt2,pass,pass,pass,,\nt3,pass,pass,pass,,"
       "\n"
       "t4,fail,fail,fail,dL,2.00\n"},
      {"judge s.csv t.csv --system lab --illuminants D65 --tolerance 9 --limits dL=1 --verdict total --only "
       "fail "
       "--format csv | wc -l",
       "1\n"},
      // Greys of the grey scale for change of colour.
      {"judge s.csv greys.csv --system lab --illuminants D65 --grade change --least-grade 4 --format csv "
       "--digits 2 | cut -d "
       ", -f 2,16-",
       "trial,total,verdict,reason,excess,grade,half_step\ng1,pass,pass,,,4.53,4.50\ng2,pass,pass,,,4.00,4."
       "00\n"
       "g3,pass,fail,grade,-0.50,3.53,3.50\n"},
      {"judge s.csv greys.csv --system lab --illuminants D65 --grade change --least-grade 3-4 --tolerance 1 "
       "--only fail --format "
       "csv --digits 2 | cut -d , -f 2,18-20",
       "trial,reason,excess,grade\ng2,dEab,0.70,4.00\ng3,dEab,1.50,3.53\n"},
      {"judge s.csv t.csv --summary" + kLab,
       "illuminant,samples,pass,warning,fail,mean,deviation,median,percentile95,largest,trial,mean_hue\n"
       "D65,4,1,1,2,2.20,1.96,1.65,4.55,5.00,t4,0.00\n"},
      {"judge red.csv yellow.csv --summary" + kLab + " | tail -1 | cut -d , -f 6,10,12",
       "14.14,14.14,14.14\n"},
      {"sort t.csv --standard s.csv --blocks 1,1,1 --digits 1 --format csv",
       "block,trial,dL,da,db\n553,t3,0.0,0.0,-2.0\n566,t2,0.0,1.2,0.5\n655,t1,0.5,0.0,0.0\n895,t4,3.0,4.0,0."
       "0\n"},
      // Pair 1 of Sharma, Wu and Dalal.
      {"delta pair.csv --system dE00 --tolerance 2.1 --digits 4 --format csv | cut -d , -f 11-",
       "dE00,word0,word1,word2,box,total,verdict,reason,excess\n"
       "2.0425, ,Less Red,Bluer,pass,warning,warning,dE00,0.4675\n"},
      {"delta lamp.csv --system lab --digits 3 --format csv | cut -d , -f 3,4 | tail -1", "A,2\n"},
      {"delta returns.csv --system dE00 --digits 4 --format csv | cut -d , -f 11-", "dE00\n2.0425\n"},
      // A difference is a number however small; what is unset are samples.
      {"judge s.csv near.csv --format csv --digits 9 --system lab --illuminants D65 | cut -d , -f 6,11",
       "dL,dEab\n0.000010000,0.000010000\n"},
      {"search s.csv near.csv --count 1 --format csv --digits 9 --system lab --illuminants D65 | head -2",
       "sample,rank,standard,difference\ns,1,n,0.000010000\n"},
      // Unset, and 0 / 0: what was not computed fails.
      {"delta black.csv --system luv --tolerance 9 --format csv | cut -d , -f 10,16,17",
       "dEuv,verdict,reason\n,fail,no difference\nnan,fail,dEuv\n"},
      {"color curve.csv --illuminants TL84,f2,F12,led-b3,d75,0 --digits 0 --format csv | cut -d , -f 1,2 | "
       "head -7",
       "id,illuminant\nc,TL84\nc,F2\nc,F12\nc,LED-B3\nc,D75\nc,A\n"},
      {"average readings.csv --format csv", "id,X,Y,Z\nu,10,20,30\nv,2,2,2\n"},
      {"average readings.csv --count 2 --format csv", "id,X,Y,Z\nu,5.5,11,16.5\nu,10,20,30\nv,2.5,2,1.5\n"},
      {"color readings.csv --average --digits 0 --illuminants C --format csv | cut -d , -f 1-6",
       "id,illuminant,observer,X,Y,Z\nu,C,10,10,20,30\nv,C,10,2,2,2\n"},
      // s = 0.887 of five readings: t = 2.776, 2.776 s / sqrt(5) and (2.776 s / 0.5)^2 = 24.2.
      {"average apart.csv --statistics --digits 2 --limit 1.5 --within 0.5 --format csv 2> /dev/null | cut "
       "-d , -f 1,11-",
       "id,largest_difference,outliers,uncertainty,needed,verdict,reason\nu,1.58,4,1.10,25,fail,largest "
       "\xCE\x94"
       "E*ab +0.080\n"},
      {"average apart.csv --statistics --digits 2 --format csv 2> /dev/null",
       "id,geometry,readings,sdL,sda,sdb,rangeL,rangea,rangeb,mean_difference,largest_difference,outliers\n"
       "u,,5,0.88,0.04,0.04,2.00,0.10,0.10,0.64,1.58,4\n"},
  };
  for (const auto& [arguments, out] : kRows) EXPECT_EQ(Run(arguments).out, out) << arguments;
  EXPECT_EQ(Run("judge s.csv t.csv --illuminants D65 --parameters 1.5:1").out,
            Run("judge s.csv t.csv --illuminants D65 --parameters 1.5,1").out);
  EXPECT_EQ(Run("average apart.csv --limit 1.5 --strict").status, 1);
  EXPECT_EQ(Run("average apart.csv --limit 1.6 --strict").status, 0);
  EXPECT_NE(Run("average s.csv --limit 1").err.find("of \"r\" fail the limit of scatter: one reading"),
            std::string::npos);
  EXPECT_NE(Run("average apart.csv").err.find("readings of \"u\" 4 is an outlier"), std::string::npos);
}

// What a file says of the light of its colours holds, in every command; another light is refused.
TEST_F(Judging, ColoursCountUnderTheirOwnLight) {
  folder_.Write(
      "d50.txt",
      "CGATS.17\nWEIGHTING_FUNCTION \"ILLUMINANT, D50\"\nWEIGHTING_FUNCTION \"OBSERVER, 2 degree\"\n"
      "BEGIN_DATA_FORMAT\nSAMPLE_ID XYZ_X XYZ_Y XYZ_Z\nEND_DATA_FORMAT\nBEGIN_DATA\ns 40 42 35\nt 41 43 35\n"
      "END_DATA\n");
  folder_.Write("heads.csv", "id,L*(10\xC2\xB0/D65),a*(10\xC2\xB0/D65),b*(10\xC2\xB0/D65)\ns,50,0,0\n");
  folder_.Write("column.csv", "id,illuminant,observer,L,a,b\ns,A,10,50,0,0\nt,D65,10,50,0,0\n");
  folder_.Write("other.txt",
                "CGATS.17\nILLUMINANT \"studio\"\nBEGIN_DATA_FORMAT\nSAMPLE_ID LAB_L LAB_A LAB_B\n"
                "END_DATA_FORMAT\nBEGIN_DATA\ns 50 0 0\nEND_DATA\n");
  const std::pair<std::string, std::string> kHold[] = {
      {"color d50.txt --format csv | cut -d , -f 1-3", "id,illuminant,observer\ns,D50,2\nt,D50,2\n"},
      {"color d50.txt --illuminants D50 --format csv | cut -d , -f 1-3 | head -2",
       "id,illuminant,observer\ns,D50,2\n"},
      {"judge d50.txt d50.txt --format csv | cut -d , -f 2,4,5",
       "trial,illuminant,observer\ns,D50,2\nt,D50,2\n"},
      {"index d50.txt --indices wi-cie --format csv | cut -d , -f 1-3 | sort -u",
       "id,illuminant,observer\ns,D50,2\nt,D50,2\n"},
      {"search d50.txt d50.txt --count 1 --format csv | cut -d , -f 1-4",
       "sample,rank,standard,difference\ns,1,s,0\nt,1,t,0\n"},
      {"sort d50.txt --format csv | cut -d , -f 2", "trial\nt\n"},
      {"color heads.csv --format csv | cut -d , -f 1-3", "id,illuminant,observer\ns,D65,10\n"},
  };
  for (const auto& [arguments, out] : kHold) EXPECT_EQ(Run(arguments).out, out) << arguments;
  const std::string seen = "the colours were seen under D50 at 2 degrees; under ";
  ExpectRefused({
      {"color d50.txt --illuminants D65", seen + "D65 at 2 degrees only curves"},
      {"judge d50.txt d50.txt --observer 10", seen + "D50 at 10 degrees only curves"},
      {"search d50.txt d50.txt --illuminants D50,A", "a colour belongs to one illuminant"},
      {"sort d50.txt --illuminants A", seen + "A at 2 degrees"},
      {"average d50.txt --illuminants A", seen + "A at 2 degrees"},
      {"index d50.txt --illuminants C", seen + "C at 2 degrees"},
      {"judge d50.txt heads.csv", "the colours were seen under D65 at 10 degrees; under D50 at 2 degrees"},
      {"judge d50.txt s.csv", "s.csv: a colour belongs to one illuminant"},
      {"color column.csv",
       "column.csv, line 3: the colours were seen under D65 at 10 degrees; under A at 10"},
      {"color other.txt", "seen under \"studio\", of which there is no table: name an illuminant"},
      {"color s.csv", "s.csv: a colour belongs to one illuminant"},
      {"delta pair.csv --illuminants D65,A", "a colour belongs to one illuminant"},
      {"delta lamp.csv --illuminants D65",
       "lamp.csv: the colours were seen under A at 2 degrees; under D65 at 2"},
      {"delta lamp.csv --observer 10", "lamp.csv: the colours were seen under A at 2 degrees; under A at 10"},
      {"delta lamps.csv",
       "lamps.csv, line 1, column 4 (X2(2/D65)): the columns name different lights, illuminant "},
      {"color lamps2.csv", "the columns of colours name different lights, illuminant A and D65"},
  });
  EXPECT_EQ(Run("color other.txt --illuminants D65").status, 0);
  EXPECT_EQ(Run("judge d50.txt s.csv --illuminants D50 --standard-id s").status, 0);
}

TEST_F(Judging, InconstancyHasALimitOfItsOwn) {
  // Two trials like their standards: a grey that stays as it is, and a red edge that moves from lamp to lamp.
  std::string header = "id", grey = "grey", red = "red";
  for (int nm = 400; nm <= 700; nm += 10) {
    header += "," + std::to_string(nm);
    grey += ",40";
    red += nm < 600 ? ",5" : ",60";
  }
  folder_.Write("both.csv", header + "\n" + grey + "\n" + red + "\n");
  const std::string judge = "judge both.csv both.csv --pairs --illuminants D65,A,CWF --system cie2000 ";
  const std::string figures =
      Run("index both.csv --indices inconstancy --illuminants D65,A,CWF --format csv").out;
  const nlohmann::json rows = RunJson(judge + "--most-inconstancy 2");
  ASSERT_EQ(rows.size(), 6U);
  for (const nlohmann::json& row : rows) {
    const bool isFirst = row["illuminant"] == "D65", isRed = row["trial"] == "red";
    EXPECT_EQ(row["inconstancy"].is_null(), isFirst);
    EXPECT_EQ(row["verdict"], isRed && !isFirst ? 0 : 2) << row;
    if (isFirst || !isRed) continue;
    EXPECT_EQ(row["reason"]["limit"], "inconstancy");
    EXPECT_NE(figures.find(row["inconstancy"].dump().substr(0, 12)), std::string::npos) << row << figures;
  }
  ExpectRefused(
      {{judge + "--most-inconstancy 0", "--most-inconstancy: must be one number above 0"},
       {"judge both.csv both.csv --pairs --illuminants A --most-inconstancy 1", "needs two illuminants"}});
}

// A parabola is summed alike at every interval: Lagrange's polynomials, by which weights are shared, go through it.
TEST_F(Judging, FineCurvesAreSummedAtTheirOwnInterval) {
  for (const int step : {1, 5, 10}) {
    std::string header = "id", standard = "s", trial = "t";
    for (int nm = 360; nm <= 780; nm += step) {
      const double parabola = 20.0 + (nm - 540) * (nm - 540) * 1e-3;
      header += "," + std::to_string(nm);
      standard += "," + std::to_string(parabola);
      trial += "," + std::to_string(parabola + (nm - 360) * 0.01);
    }
    folder_.Write("p" + std::to_string(step) + ".csv",
                  header + "\n" + standard + "\n" + trial + "\n" + trial + "\n");
  }
  const std::string lamps = " --illuminants D65,T84";
  const nlohmann::json once = RunJson("color p1.csv --interval 1" + lamps);
  for (const char* run : {"p1.csv --interval 5", "p5.csv --interval 5", "p5.csv --interval 5 --average"}) {
    const nlohmann::json fine = RunJson("color " + std::string(run) + lamps);
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_EQ(fine[i]["interval"], 5) << run;
      for (const char* name : {"X", "Y", "Z"})
        EXPECT_NEAR(fine[i][name].get<double>(), once[i][name].get<double>(), 1e-9) << run << name;
    }
  }
  const std::string judge = "judge p1.csv p1.csv --standard-id s --interval 1 --system lab" + lamps;
  const nlohmann::json judged = RunJson(judge + " --report page.html");
  for (std::size_t i = 2; i < 4; ++i) {
    EXPECT_EQ(judged[i]["interval"], 1);
    const double db = once[i]["b"].get<double>() - once[i - 2]["b"].get<double>();
    EXPECT_NEAR(judged[i]["elements"][2].get<double>(), db, 1e-9);
  }
  const std::string csv = Run(judge + " --format csv").out;
  EXPECT_TRUE(csv.starts_with("standard,trial,geometry,illuminant,observer,interval,dL")) << csv;
  EXPECT_NE(csv.find("\ns,t,,T84,10,1,"), std::string::npos) << csv;
  EXPECT_NE(folder_.Read("page.html").find("every 1 nm"), std::string::npos);
  EXPECT_EQ(Run("judge s.csv p5.csv --standard-id s --illuminants D65 --interval 5").status, 0);
  ExpectRefused({{"color p5.csv --interval 1", "360 to 780 nm at 5 nm: too coarse for sums at 1 nm"},
                 {"judge p5.csv p10.csv --standard-id s --interval 5",
                  "p10.csv, line 2: 360 to 780 nm at 10 nm: too coarse"},
                 {"color s.csv --interval 5", "the file has colours"},
                 {"color p5.csv --interval 5 --correction p5.csv", "a correction is made for 10 nm"},
                 {"judge --job j p5.csv --interval 5", "a job keeps curves at 10 nm"}});
}

// Trials that each have the id of a standard of their own may belong to those.
TEST_F(Judging, ForgottenPairsAreAQuestion) {
  folder_.Write("std.csv", "id,L,a,b\np1,50,0,0\np2,70,0,0\np3,80,0,0\n");
  folder_.Write("lot.csv", "id,L,a,b\np3,80,0,0\np2,70,1,0\n");
  folder_.Write("first.csv", "id,L,a,b\np1,50,0.5,0\n");
  folder_.Write("mixed.csv", "id,L,a,b\np2,70,1,0\nq,50,0,0\n");
  const std::string judge = "judge std.csv ", light = " --illuminants D65 --format csv";
  const std::string question = "lot.csv: each trial has the id of a standard in std.csv: --pairs";
  ExpectRefused({{judge + "lot.csv" + light, question},
                 {"plot trend std.csv lot.csv --illuminants D65 --output p.svg", question},
                 {"sort lot.csv --standard std.csv", "in std.csv: --standard-id p1 compares"}});
  const Result piped = Run("judge std.csv - --illuminants D65 --format csv < lot.csv");
  EXPECT_EQ(piped.status, 2) << piped.err;
  for (const std::string arguments :
       {"lot.csv --pairs", "lot.csv --standard-id p1", "first.csv", "mixed.csv", "std.csv", "t.csv"}) {
    const Result answered = Run(judge + arguments + light);
    EXPECT_EQ(answered.status, 0) << arguments;
    // That the other standards are left out is said where nobody chose the first.
    const bool isChosen = arguments.find("--") != std::string::npos || arguments == "std.csv";
    EXPECT_EQ(answered.err.find("only its first standard, p1, is used") == std::string::npos, isChosen)
        << arguments;
  }
}

// Standards without ids are called by their numbers, in whatever order trials name them.
TEST_F(Judging, StandardsByTheirNumber) {
  folder_.Write("std.csv", "L,a,b\n50,0,0\n70,0,0\n80,0,0\n");
  const std::string trials[] = {"p,1,50,0.25,0\n", "q,2,70,0.5,0\n", "r,3,80,1,0\n"};
  const std::string header = "id,standard,L,a,b\n";
  folder_.Write("forth.csv", header + trials[0] + trials[1] + trials[2]);
  folder_.Write("back.csv", header + trials[2] + trials[0] + trials[1] + trials[2]);
  folder_.Write("none.csv", header + trials[2] + "s,4,80,1,0\n");
  const std::string light = " --pairs --illuminants D65 --system cielab --format csv";
  const auto forth = Lines(Run("judge std.csv forth.csv" + light).out);
  const auto back = Lines(Run("judge std.csv back.csv" + light).out);
  ASSERT_EQ(forth.size(), 4u);
  EXPECT_EQ(back, (std::vector{forth[0], forth[3], forth[1], forth[2], forth[3]}));
  EXPECT_TRUE(forth[3].starts_with("3,r,")) << forth[3];
  // A row without values counts.
  folder_.Write("hole.csv", "L,a,b\n50,0,0\n,,\n80,0,0\n");
  folder_.Write("ends.csv", header + trials[2] + trials[0]);
  const auto ends = Lines(Run("judge hole.csv ends.csv --lenient" + light).out);
  EXPECT_EQ(ends, (std::vector{forth[0], forth[3], forth[1]}));
  ExpectRefused({{"judge std.csv none.csv" + light, "there is no standard \"4\""},
                 {"judge - back.csv" + light + " < std.csv", "in a pipe"}});
}

TEST_F(Judging, LimitsThatServeNothingAreTold) {
  const std::string header = "standard,illuminant,plus0,minus0,plus1,minus1,plus2,minus2,total\n",
                    limits = ",1,1,1,1,1,1,0.1\n";
  folder_.Write("empty.csv", header);
  folder_.Write("case.csv", header + "S," + limits + "s,D65" + limits + "," + limits);
  folder_.Write("used.csv", header + "s,D65" + limits);
  const std::string judge = "judge s.csv t.csv --standard-id s --illuminants D65 --tolerances ";
  ExpectRefused({{judge + "empty.csv", "empty.csv: there is no row of limits"}});
  EXPECT_NE(
      Run(judge + "case.csv")
          .err.find(
              "case.csv: warning: 1 of 3 rows of limits served nothing that was judged: line 2 (standard S)"),
      std::string::npos);
  EXPECT_EQ(Run(judge + "used.csv").err, "");
}

// A component that nothing limits passes, so each standard needs limits of its own, or those of --limits.
TEST_F(Judging, AVerdictByComponentsNeedsThemForEachStandard) {
  const std::string header = "standard,illuminant,plus0,minus0,plus1,minus1,plus2,minus2,total\n";
  folder_.Write("both.csv", header + "s,,1,1,1,1,1,1,9\nr,D65,1,1,1,1,1,1,9\n");
  folder_.Write("one.csv", header + "s,,1,1,1,1,1,1,9\n");
  const std::string judge =
                        "judge s.csv named.csv --system lab --illuminants D65 --verdict box --tolerances ",
                    refusal = "--verdict box: no component has a limit for standard \"r\" under D65;";
  EXPECT_EQ(Run(judge + "both.csv --only fail --format csv").status, 0);
  EXPECT_EQ(Run(judge + "one.csv --limits dL=1").status, 0);
  ExpectRefused({{judge + "one.csv", refusal}});
  folder_.Write("curves.csv", "id" + Wavelengths() + "\ns" + FlatCurve(40) + "\nr" + FlatCurve(50) + "\n");
  ExpectRefused(
      {{"judge curves.csv curves.csv --pairs --illuminants D65,A --verdict box --tolerances both.csv",
        "for standard \"r\" under A;"},
       {"swatch s.csv t.csv --standard-id r --illuminants D65 --verdict box --tolerances one.csv "
        "--output s.png",
        refusal}});
}

#if defined(__linux__) && !defined(VRX_SANITIZED)
// Threads for which there is no memory are done without.
TEST_F(Judging, ThreadsUnderALimitOfMemory) {
  std::string trials = "id,L,a,b\n";
  for (int i = 0; i < 20'000; ++i) trials += "t" + std::to_string(i) + ",50." + std::to_string(i) + ",0,0\n";
  folder_.Write("many.csv", trials);
  const std::string command = "judge s.csv many.csv --illuminants D65 --format csv --threads ";
  const Result limited = Run("--version; ulimit -v 200000; " VRX_TOOL " " + command + "64");
  EXPECT_EQ(limited.status, 0) << limited.err;
  EXPECT_TRUE(limited.out.ends_with(Run(command + "1").out));
}
#endif

// Enough rows for several chunks; a bad one ends the output behind the rows before it, on any count of threads.
TEST_F(Judging, OnManyThreadsAsOnOne) {
  std::string trials = "id,standard,L,a,b\n";
  for (int i = 0; i < 1000; ++i) {
    const std::string number = std::to_string(i);
    trials +=
        "t" + number + (i % 3 == 0 ? ",r," : ",s,") + std::to_string(50 + i % 7) + ",0." + number + ",0\n";
  }
  folder_.Write("many.csv", trials);
  folder_.Write("bad.csv", trials + "t1000,nobody,1,2,3\n");
  for (const std::string file : {"many.csv", "bad.csv"}) {
    for (const std::string format : {"csv", "json", "table"}) {
      const std::string command =
          "judge s.csv " + file + " --illuminants D65 --format " + format + " --threads ";
      const Result one = Run(command + "1");
      EXPECT_EQ(one.status, file == "bad.csv" ? 2 : 0);
      for (const std::string threads : {"2", "5"}) {
        const Result many = Run(command + threads);
        EXPECT_EQ(many.status, one.status);
        EXPECT_TRUE(many.out == one.out && many.err == one.err) << command << threads;
      }
    }
  }
}

// Rows of csv that are written many at a time, of more illuminants than fit at once, are those of trials that come singly.
TEST_F(Judging, RowsTogetherAsOneByOne) {
  std::string curves = "id";
  for (int nm = 400; nm <= 700; nm += 10) curves += "," + std::to_string(nm);
  for (int i = 0; i < 50; ++i) {
    curves += "\n\"no. " + std::to_string(i) + ", \"\"x\"\"\"";
    for (int k = 0; k <= 30; ++k) curves += "," + std::to_string(40 + i * k % 11);
  }
  folder_.Write("curves.csv", curves);
  std::string command = "judge curves.csv curves.csv --format csv --illuminants 0";
  for (int i = 1; i < vrx::kBuiltInIlluminants; ++i) command += "," + std::to_string(i);
  for (const std::string options : {"", " --ellipse --tolerance 0.8", " --digits 3"}) {
    const std::string rows = Run(command + options + " | sort").out;
    EXPECT_EQ(std::ranges::count(rows, '\n'), 50 * vrx::kBuiltInIlluminants + 1) << options;
    EXPECT_EQ(rows, Run(command + options + " --worst-first | sort").out) << options;
  }
}

// A row without a geometry serves only where none has the trial's own, wherever the rows stand.
TEST_F(Judging, TheStandardDoesNotDependOnTheOrderOfRows) {
  const std::string curve40 = FlatCurve(40), curve80 = FlatCurve(80),
                    header = "id,geometry" + Wavelengths() + "\n";
  folder_.Write("t15.csv", header + "p,15deg" + curve80 + "\nq,15deg" + curve40 + "\n");
  folder_.Write("plain.csv", "id" + Wavelengths() + "\np" + curve40 + "\n");
  const std::string p15 = "p,15deg" + curve40 + "\n", p = "p," + curve80 + "\n", q = "q," + curve40 + "\n",
                    p45 = "p,45deg" + curve80 + "\n";
  for (const std::string& rows : {p + p15 + q, p15 + p + q, q + p15 + p, q + p + p15, p + q + p45 + p15}) {
    folder_.Write("s15.csv", header + rows);
    const Result result = Run("judge s15.csv t15.csv --pairs --illuminants D65 --strict --format csv");
    EXPECT_EQ(result.status, 1) << rows;
    EXPECT_EQ(std::ranges::count(result.out, '\n'), 3) << rows;
  }
  // A trial whose file says nothing takes an only row; with --pairs as without.
  for (const std::string& rows : {p15, p15 + p45}) {
    folder_.Write("s15.csv", header + rows);
    for (const std::string pairs : {"", " --pairs"}) {
      EXPECT_EQ(Run("judge s15.csv plain.csv --illuminants D65" + pairs).status, rows == p15 ? 0 : 2) << rows;
    }
  }
}

TEST_F(Judging, SearchesTheNearestStandards) {
  const std::string kHeader = "sample,rank,standard,difference\n";
  const std::string kLab = " --system lab --illuminants D65 --format csv";
  folder_.Write("library.csv", "id,L,a,b\nfar,90,0,0\none,51,0,0\ntwin,51,0,0\nnear,50,0.5,0\n");
  EXPECT_EQ(Run("search s.csv library.csv --count 3" + kLab + " | head -4").out,
            kHeader + "s,1,near,0.5\ns,2,one,1\ns,3,twin,1\n");
  EXPECT_EQ(Run("search s.csv library.csv --within 0.7" + kLab).out, kHeader + "s,1,near,0.5\n");
  // A sample without a row is named.
  EXPECT_EQ(Run("search s.csv library.csv --within 0.7" + kLab).err,
            "vrx: s.csv: warning: 1 sample has no standard within 0.7: r\n");
  folder_.Write("angle.csv", "id,geometry,L,a,b\nx,45/0,51,0,0\n");
  folder_.Write("gloss.csv", "id,geometry,L,a,b\nx,45/0,51,0,0\ny,SCI,51,0,0\nz,SCI,51,0,0\n");
  const Result other = Run("search gloss.csv angle.csv" + kLab);
  EXPECT_EQ(other.out, "sample,rank,standard,geometry,difference\nx,1,x,45/0,0\n");
  EXPECT_NE(
      other.err.find("2 samples have no standard that could be near, of their geometry or without one: y, z"),
      std::string::npos)
      << other.err;
  const Result status = Run("search s.csv library.csv --illuminants D65,A");
  EXPECT_EQ(status.status, 2);
  EXPECT_NE(status.err.find("a colour belongs to one illuminant"), std::string::npos);
}

// The reason stands in every format, as judge gives it.
TEST_F(Judging, PairsHaveTheReasonsOfJudge) {
  folder_.Write("pairs.csv", "L1,a1,b1,L2,a2,b2\n50,0,0,50,0,-2\n50,0,0,50,0,0\n");
  const auto rows = RunJson("delta pairs.csv --system lab --tolerance 1.5");
  const auto judged = RunJson("judge s.csv t.csv --system lab --illuminants D65 --tolerance 1.5");
  EXPECT_EQ(rows[0]["reason"], judged[2]["reason"]);
  EXPECT_EQ(rows[0]["reason"]["limit"], "dEab");
  EXPECT_TRUE(rows[1]["reason"].is_null());
}

// The light of an instrument and its gloss trap count beside the geometry that pairs samples: M0 against M1 decides over
// whitened paper, SCI against SCE over every glossy panel.
TEST_F(Judging, ConditionsBesideTheGeometryAreCompared) {
  const struct {
    const char *standard, *trials, *warning;
  } rows[] = {
      {"geometry,filter\ns,45/0,M0", "geometry,filter\nt,45/0,M1", "other conditions than a.csv: M0 and M1"},
      {"geometry,filter\ns,45/0,M0", "geometry,filter\nt,45/0,M0\nu,45/0,M1", "are mixed: M0 and M1"},
      {"specular\ns,SCI", "geometry\nt,SCE", "specular included and excluded"},
      {"geometry\ns,SCI", "specular\nt,SCE", "specular included and excluded"},
      {"geometry,filter\ns,45/0,M1", "geometry,filter\nt,45/0,M1", ""},
      {"geometry\ns,SCI\ns,SCE", "geometry\nt,SCE\nt,SCI", ""},
      {"geometry\ns,M0\ns,M1", "geometry\nt,M1\nt,M0", ""},
  };
  const auto withColors = [](const std::string& table) {
    std::string text = "L,a,b,id,";
    for (const char c : table) text += c == '\n' ? std::string("\n50,1,1,") : std::string(1, c);
    return text + "\n";
  };
  for (const auto& row : rows) {
    folder_.Write("a.csv", withColors(row.standard));
    folder_.Write("b.csv", withColors(row.trials));
    for (const std::string command :
         {"judge a.csv b.csv", "search b.csv a.csv", "sort b.csv --standard a.csv"}) {
      const Result result = Run(command + " --illuminants D65");
      const bool isExpected =
          *row.warning == '\0' ? result.err.empty() : result.err.find(row.warning) < result.err.size();
      EXPECT_TRUE(isExpected) << command << ": " << row.standard << " | " << row.trials << "\n" << result.err;
    }
  }
}

// One option speaks for both files: the answer that was offered, --percent, made near black of the fractions, which failed, and
// passed where the limits were wide.
TEST_F(Judging, FilesOfTwoScalesAreTold) {
  const auto write = [&](const std::string& name, double value) {
    std::string header = "id", row = "s";
    for (int nm = 400; nm <= 700; nm += 10) {
      header += "," + std::to_string(nm);
      row += "," + std::to_string(value);
    }
    folder_.Write(name, header + "\n" + row + "\n");
  };
  write("percent.csv", 45);
  write("fractions.csv", 0.45);
  const std::string command = "vrx convert FRACTIONS.csv PERCENT.csv --fraction";
  for (const std::string files : {"percent.csv fractions.csv", "fractions.csv percent.csv"}) {
    for (const std::string& run :
         {"judge " + files, "search " + files,
          "index " + std::string(files).replace(files.find(' '), 1, " --standard "), "strength " + files,
          "swatch " + files + " --output s.svg", "plot plane " + files + " --output p.svg"}) {
      const std::string asked = Run(run).err;
      EXPECT_NE(asked.find("fractions.csv: all values are below 2"), std::string::npos) << run << asked;
      EXPECT_NE(asked.find("for all files of a command"), std::string::npos) << run << asked;
      EXPECT_NE(asked.find(command), std::string::npos) << run << asked;
      const std::string refused = Run(run + " --fraction").err;
      EXPECT_NE(refused.find("percent.csv, line 2"), std::string::npos) << run << refused;
      EXPECT_NE(refused.find("the files seem to have different scales"), std::string::npos) << run << refused;
      EXPECT_NE(refused.find(command), std::string::npos) << run << refused;
      const std::string warned = Run(run + " --percent").err;
      EXPECT_NE(
          warned.find(
              "fractions.csv: warning: no value comes to 2 percent, and those of percent.csv come to 45: "
              "the files seem to have different scales"),
          std::string::npos)
          << run << warned;
      EXPECT_NE(warned.find(command), std::string::npos) << run << warned;
    }
  }
  ASSERT_EQ(Run("convert fractions.csv converted.csv --fraction").status, 0);
  EXPECT_EQ(Run("judge percent.csv converted.csv --strict").status, 0);
  // Near blacks are no fractions, and a file that says its unit is believed.
  write("black.csv", 1.1);
  write("blacker.csv", 0.9);
  write("dark.csv", 2.1);
  for (const char* run : {"judge black.csv blacker.csv --percent", "judge dark.csv black.csv --percent"})
    EXPECT_EQ(Run(run).err, "") << run;
}

// The same number under two standards is two trials, and a standard that is measured again is one.
TEST_F(Judging, EveryReadingCounts) {
  folder_.Write("two.csv", "id,L,a,b\nA,50,0,0\nB,55,0,0\n");
  for (const char* rows : {"1,A,50,0,0\n1,B,46,0,0\n", "1,B,46,0,0\n1,A,50,0,0\n"}) {
    folder_.Write("lots.csv", std::string("id,standard,L,a,b\n") + rows);
    const Result result = Run("judge two.csv lots.csv --average --strict --illuminants D65 --format csv");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(std::ranges::count(result.out, '\n'), 3) << result.out;
  }
  folder_.Write("again.csv", "id,L,a,b\nS,50,10,10\nt,50,10,10\nS,59,10,10\n");
  EXPECT_EQ(Run("sort again.csv --system lab --illuminants D65 --format csv").out,
            "block,trial,dL,da,db\n555,t,0,0,0\nA55,S,9,0,0\n");
}

// What csv calls dX is ten times that, as its table says: a limit of 0.5 would be one of 0.05.
TEST_F(Judging, ScaledDifferencesAreNamedWithTheirScale) {
  folder_.Write("y.csv", "id,X,Y,Z\ns,40,42,45\nt,40.1,42,45\n");
  const std::string judge =
      "judge y.csv y.csv --standard-id s --illuminants D65 --system xyz --tolerance 9 --format csv ";
  const std::vector<std::string> rows = Lines(Run(judge).out);
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_TRUE(
      rows[0].starts_with("standard,trial,geometry,illuminant,observer,10dX,10dY,10dZ,10000dx,10000dy,dEab,"))
      << rows[0];
  EXPECT_NEAR(std::stod(rows[2].substr(std::string("s,t,,D65,10,").size())), 1.0, 1e-9);
  const std::string other =
      Run("judge y.csv y.csv --standard-id s --illuminants D65 --system gepqs2 --tolerance 9 --format csv")
          .out;
  EXPECT_TRUE(
      other.starts_with("standard,trial,geometry,illuminant,observer,100dY/Y,10000dx,10000dy,dCgepqs,"))
      << other;
  const auto failures = [&](const std::string& limits) {
    return Run(judge + limits + " --only fail").out.find(",fail,");
  };
  EXPECT_EQ(failures("--limits 10dX=1.1"), std::string::npos);
  EXPECT_NE(failures("--limits 10dX=0.9"), std::string::npos);
  ExpectRefused({{judge + "--limits dX=0.5", "dX=0.5 is not one of 10dX, 10dY, 10dZ"}});
}

// A geometry without an aspecular angle says no more than none. Whoever saw no word took the weights for those of his angle.
TEST_F(Judging, TheUsualAngleIsTold) {
  folder_.Write("sci.csv", "id,geometry,L,a,b\nx,SCI,50,0,0\n");
  folder_.Write("at15.csv", "id,geometry,L,a,b\nx,15deg,50,0,0\n");
  for (const std::string command : {"judge %", "plot plane % --output p.svg", "swatch % --output s.png"}) {
    for (const auto& [files, isTold] : {std::pair("sci.csv sci.csv", true), {"at15.csv at15.csv", false}}) {
      std::string run = command + " --illuminants D65 --system din6175";
      run.replace(run.find('%'), 1, files);
      EXPECT_EQ(Run(run).err.find("45 degrees are assumed") != std::string::npos, isTold) << run;
      EXPECT_EQ(Run(run + " --angle 15").err.find("assumed"), std::string::npos) << run;
    }
  }
}

TEST_F(Judging, Refusals) {
  folder_.Write("twice.csv", "id,L,a,b\ns,50,10,10\ns,53,10,10\n");
  folder_.Write("pairs.csv", "id,L1,a1,b1,L2,a2,b2\np,50,0,0,80,30,0\n");
  folder_.Write("lots.csv", "id,standard,L,a,b\n1,A,54,0,0\n1,B,46,0,0\n");
  folder_.Write("angles.csv", "id,geometry,L,a,b\n1,15deg,90,0,0\n1,110deg,30,0,0\n");
  ExpectRefused({
      {"judge s.csv t.csv --illuminants D65 --ellipse --limits dL=1",
       "ellipsoids decide in place of the components"},
      {"judge s.csv t.csv --illuminants D65 --limits dL=1,dL=2", "--limits: dL is there twice"},
      {"judge twice.csv t.csv --illuminants D65", "twice.csv, line 3: standard \"s\" has a row already"},
      {"delta pairs.csv --tolerance 1 --verdict box", "no component has a limit; use --limits"},
      {"delta pairs.csv --warning 0.5", "give the limits, by --tolerance or --limits"},
      {"sort near.csv --illuminants D65", "near.csv: there are no trials beside the standard"},
      {"average lots.csv --count 2", "another standard than those that it is averaged with"},
      {"average angles.csv --count 2", "another geometry than those that it is averaged with"},
      {"judge s.csv t.csv", "s.csv: a colour belongs to one illuminant"},
      {"judge s.csv named.csv --illuminants D65 --standard-id s", "the trials already name their standards"},
      {"judge s.csv t.csv --illuminants D65 --verdict box", "no component has a limit; use --limits"},
      {"judge s.csv t.csv --illuminants D65 --verdict any", "total, box, both or worse"},
      {"judge s.csv t.csv --illuminants D65 --limits dX=1", "dX=1 is not one of dL, da, db"},
      {"judge s.csv t.csv --illuminants D65 --limits dL=-1",
       "must be one limit of 0 or more, or the lower and the upper"},
      {"judge s.csv t.csv --illuminants D65 --limits dL=1 --tolerance 1,1,1,1,1,1,1",
       "has limits of components"},
      {"judge s.csv t.csv --illuminants D65 --only pass", "--only: must be fail, warning"},
      {"strength s.csv t.csv", "the file has colours but no curves"},
      {"judge greys.csv t.csv --illuminants D65 --standard-id G2", "no standard \"G2\"; did you mean g2?"},
      {"average readings.csv --within 0", "--within: must be a difference above 0"},
      {"average readings.csv --limit 0", "--limit: must be a difference above 0"},
      {"average readings.csv --count 0", "--count: must be a whole number"},
      {"average readings.csv --count 4", "2 rows remain at the end"},
      {"sort t.csv --blocks 0", "--blocks: sizes must be above 0"},
      {"sort named.csv --standard s.csv", "name their standards in a column; --standard-id sorts"},
  });
}

TEST(DistributionOfNumbers, ExactForFewAndCloseForMany) {
  Distribution few, many;
  for (int i = 10; i > 0; --i) few.Add(i);
  EXPECT_EQ(few.Mean(), 5.5);
  EXPECT_NEAR(few.StandardDeviation(), 3.02765035409749, 1e-14);  // sqrt(55 / 6)
  EXPECT_EQ(few.Percentile(50), 5.5);
  EXPECT_NEAR(few.Percentile(95), 9.55, 1e-14);
  EXPECT_EQ(few.Largest(), 10);
  for (int i = 0; i < 300'000; ++i) many.Add(i % 3000 / 1000.0);
  EXPECT_NEAR(many.Percentile(50), 1.5, 0.0015);
  EXPECT_NEAR(many.Percentile(95), 2.85, 0.00285);
}

// In a group any two differ by no more than the limit; two groups that could be one are one, whatever the order of rows.
TEST_F(Judging, GroupsByCompleteLinkage) {
  folder_.Write("g.csv", "id,L,a,b\na,50,0,0\nd,60,0,0\nc,51,0,0\nb,50.5,0,0\ne,60.9,0,0\n");
  const std::string kSort = "sort g.csv --system lab --format csv --digits 1 --groups ";
  const std::pair<std::string, std::string> kRows[] = {
      {"1", "1,a,1.0\n1,b,0.5\n1,c,1.0\n2,d,0.9\n2,e,0.9\n"},
      {"0.8", "1,a,0.5\n1,b,0.5\n2,c,0.0\n3,d,0.0\n4,e,0.0\n"},
      {"20", "1,a,10.9\n1,b,10.4\n1,c,9.9\n1,d,10.0\n1,e,10.9\n"},
  };
  for (const auto& [limit, rows] : kRows) EXPECT_EQ(Run(kSort + limit).out, "group,trial,farthest\n" + rows);
  EXPECT_NE(Run(kSort + "1")
                .err.find("2 groups of 5 trials; the worst pair within one is a and c, which differ by 1.00"),
            std::string::npos);
  ExpectRefused({{kSort + "0", "above 0"}, {kSort + "1 --blocks 1", "--blocks"}});
}

}  // namespace
