// calibrate as a process.

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/tools/matching_commands.h"

namespace vrx::tool {
namespace {

// Masstones, letdowns of about 10 % and greys give the constants; of the letdowns of about 50 % (one of 84 %), which take
// no part, the seven hide well enough (contrast ratio above 0.9) to be predicted. Figures of a study on the same data.
TEST_F(MatchingCommands, OilPaintsPredictWhatTookNoPart) {
  const std::string oils = VRX_SOURCE_DIR "/examples/oil_drawdowns.csv";
  const json rows = RunJson("calibrate " + oils +
                            " --white \"zinc white\" --output oils.json --no-leave-one-out --hold-out "
                            "01C,02C,03C,04C,04F,05C,06C,10C,13C,13F,13G,14C,15B"
                            " --without \"zinc white linseed,chrome yellow poppyseed\"");
  std::vector<double> differences;
  for (const json& row : rows) {
    const std::string id = row["drawdown"];
    if (row["part"] != "held out" || !(id.ends_with("C") || id == "15B") || row["contrast"] < 0.9) continue;
    differences.push_back(row["dE"]);
  }
  ASSERT_EQ(differences.size(), 7u);
  std::sort(differences.begin(), differences.end());
  EXPECT_LE(differences[3], 1.6);
  EXPECT_LE(differences[6], 5.5);
  ASSERT_EQ(Run("colorants oils.json"), 0);
  EXPECT_NE(folder_.Read("out").find("prussian blue"), std::string::npos);
}

TEST_F(MatchingCommands, CalibrateRefusesWhatItCannotUse) {
  const std::string header = "id,surface,share:W,share:B,540,560,580,600\n";
  const auto file = [&](const char* name, const std::string& rows) { folder_.Write(name, header + rows); };
  const std::string w = "w,opaque,100,,90,90,90,90\n", l = "l,opaque,90,10,50,40,50,50\n";
  file("good.csv", w + l + "m,opaque,,100,10,9,10,10\n");
  file("one.csv", w + l);
  file("sum.csv", w + "l,opaque,90,20,50,40,50,50\n");
  file("hole.csv", w + "l,opaque,90,10,50,,50,50\n");
  file("surface.csv", w + "l,gloss,90,10,50,40,50,50\n");
  file("pair.csv", w + "l,film over black,90,10,50,40,50,50\n");
  file("card.csv", w + "l,film over black,90,10,50,40,50,50\nl,film over white,90,10,60,50,60,60\n");
  file("shares.csv", w + "l,film over black,90,10,50,40,50,50\nl,film over white,80,20,60,50,60,60\n");
  file("twice.csv", w + w);
  folder_.Write("none.csv", "id,540,560,580,600\nw,90,90,90,90\n");
  file("dark.csv", w + l + "m,opaque,,100,10,3,10,10\n");
  const std::string cards = "card,black card,,,5,5,5,5\ncard,white card,,,85,85,85,85\n";
  file("swapped.csv",
       w + l + cards + "f,film over black,100,,80,80,80,80\nf,film over white,100,,60,60,60,60\n");
  file("cards.csv", w + l + "card,white card,,,5,5,5,5\ncard,black card,,,85,85,85,85\n" +
                        "f,film over black,100,,60,60,60,60\nf,film over white,100,,80,80,80,80\n");
  folder_.Write("single.csv",
                "id,share:W,share:B,share:C,540,560,580,600\nw,100,,,90,90,90,90\n"
                "b,90,10,,50,40,50,50\nc,90,,10,50,40,50,50\n");
  folder_.Write("both.csv", "id,surface,share:W,amount:B,540,560,580,600\n" + w);
  folder_.Write("who.csv", "component,of,amount\n1/10 B,B,0.1\n");
  folder_.Write("rest.csv", "component,of,amount\nB,carbon,0.1\n");
  folder_.Write("more.csv", "component,of,amount\nB,carbon,0.7\nB,W,0.7\n");
  folder_.Write("self.csv", "component,of,amount\nB,b,0.7\n");
  folder_.Write("part.csv", "component,of,amount\nB,W,1.7\n");
  folder_.Write("w.csv", "component,amount\nB,W\n");
  folder_.Write("other_component.csv", "id,share:Q,540,560,580,600\nw,100,90,90,90,90\n");
  folder_.Write("other_formula.csv", "id,formula,540,560,580,600\nw,Q:1,90,90,90,90\n");
  ExpectRefusals({
      {"calibrate good.csv", "--white"},
      {"calibrate good.csv --white X", "there is no component \"X\""},
      {"calibrate good.csv --white W --hold-out q", "\"q\""},
      {"calibrate good.csv --white W --hold-out w,l", "the white \"W\""},
      {"calibrate good.csv --white W --without Q", "there is no component \"Q\""},
      {"calibrate good.csv --white W --k1 2", "0.999"},
      {"calibrate good.csv --white W --output /nowhere/s.json", "/nowhere/s.json"},
      {"calibrate one.csv --white W --output new.json", "one.csv: \"B\" has the same share"},
      {"calibrate sum.csv --white W --output new.json",
       "sum.csv, line 3: the shares of \"l\" add up to neither"},
      {"calibrate hole.csv --white W --output new.json", "hole.csv, line 3, column 6 (560)"},
      {"calibrate surface.csv --white W --output new.json", "surface.csv, line 3, column 2 (surface)"},
      {"calibrate pair.csv --white W --output new.json",
       "pair.csv: the film \"l\" has no row \"film over white\""},
      {"calibrate card.csv --white W --output new.json",
       "card.csv: the film \"l\" has no row \"black card\""},
      {"calibrate shares.csv --white W --output new.json", "other shares"},
      {"calibrate twice.csv --white W --output new.json", "already"},
      {"calibrate none.csv --white W --output new.json", "share:NAME"},
      {"calibrate dark.csv --white W --output new.json",
       "dark.csv: drawdown \"m\": it is darker than the surface alone; use --specular excluded"},
      {"calibrate swapped.csv --white W --output new.json",
       "over black than over white: the rows are swapped"},
      {"calibrate cards.csv --white W --output new.json", "black card is not darker than the white one"},
      {"calibrate single.csv --white W --output new.json",
       "single.csv: \"B\" and \"C\" have the same share in all their drawdowns"},
      {"calibrate both.csv --white W --output new.json",
       "column 4 (amount:B): a file cannot have both shares and amounts"},
      {"calibrate good.csv --white W --output new.json --components who.csv",
       "who.csv: no drawdown has a component \"1/10 B\""},
      {"calibrate good.csv --white W --output new.json --components rest.csv", "there is no single base"},
      {"calibrate good.csv --white W --output new.json --components more.csv", "add up to more than one"},
      {"calibrate good.csv --white W --output new.json --components self.csv", "self.csv, line 2"},
      {"calibrate good.csv --white W --output new.json --components part.csv", "part.csv, line 2, column 3"},
      {"calibrate good.csv --white W --output new.json --components w.csv", "component, of and amount"},
      {"calibrate good.csv --white W --weight 2", "--add"},
      {"calibrate good.csv --white W --add good.csv --weight 0", "--weight"},
      {"calibrate good.csv --white W --add good.csv --no-leave-one-out", "--no-leave-one-out"},
      {"calibrate good.csv --white W --output new.json --add other_component.csv", "has no such component"},
      {"calibrate good.csv --white W --output new.json --add other_formula.csv",
       "the calibration has no component \"Q\""},
  });
  EXPECT_EQ(Run("calibrate good.csv --white w --output s.json"), 0) << folder_.Read("err");
  EXPECT_EQ(Run("colorants s.json"), 0);
  file("cards.csv", w + l + "m,opaque,,100,10,9,10,10\n" + cards);
  EXPECT_EQ(Run("calibrate cards.csv --white w"), 0);
  EXPECT_NE(folder_.Read("err").find("no film uses the row \"card\" black card"), std::string::npos);
}

// How the surface entered the curves stands in the system's file, and every command goes by it.
TEST_F(MatchingCommands, TheSurfaceOfACalibrationIsKept) {
  folder_.Write("samples.csv", Header("id,share:white,share:black", 360, 750) + FlatRow("w,100,0", "88") +
                                   FlatRow("g,90,10", "20") + FlatRow("b,0,100", "0.4"));
  ExpectRefusals({{"calibrate samples.csv --white white --output new.json", "--specular excluded"}});
  ASSERT_EQ(Run("calibrate samples.csv --white white --specular excluded --k1 0.05 --output s.json"), 0)
      << folder_.Read("err");
  const json system = json::parse(folder_.Read("s.json"));
  EXPECT_EQ(system["specular"], "excluded");
  EXPECT_EQ(system["k1"], 0.05);
  EXPECT_EQ(system["calibrated_on"], "samples.csv, 3 drawdowns");
  EXPECT_NEAR(system["components"][1]["calibrated"]["least"].get<double>(), 10.0, 1e-9);
  EXPECT_EQ(system["components"][1]["calibrated"]["most"], 100.0);
  EXPECT_EQ(system["components"][1]["calibrated"]["drawdowns"], 2);
  folder_.Write("f.json", R"({"formulas":[{"name":"g","lines":[
      {"component":1,"amount":90},{"component":2,"amount":10}]}]})");
  folder_.Write("t.csv", Wide() + FlatRow("t", "2"));
  EXPECT_NEAR(RunJson("predict s.json f.json")[0]["500"].get<double>(), 20.0, 0.01);
  EXPECT_EQ(RunJson("match s.json t.csv")[0]["status"], "ok") << "darker than a surface that is not in it";
  const std::string contradicts =
      "s.json: \"specular\": the system was calibrated on curves with the surface excluded, not ";
  ExpectRefusals({
      {"predict s.json f.json --specular included", contradicts},
      {"match s.json t.csv --specular none", contradicts},
      {"correct s.json --formula f.json --batch t.csv --target t.csv --batch-size 9 --specular included",
       contradicts},
  });
  EXPECT_EQ(Run("match s.json t.csv --specular excluded"), 0);

  // So does what a file says of itself, in every place where curves come from.
  const auto stated = [&](const char* name, const char* columns, const std::string& start,
                          const char* percent) {
    folder_.Write(name, Header(columns, 360, 750) + FlatRow(start, percent));
  };
  stated("sci.csv", "id,geometry", "t,SCI", "20");
  stated("sce.csv", "id,geometry", "t,SCE", "20");
  stated("stock_sci.csv", "id,geometry,formula,amount", "t,SCI,1:90;2:10,9", "20");
  stated("made_sci.csv", "id,geometry,formula", "t,SCI,1:90;2:10", "20");
  stated("cards_sci.csv", "id,geometry", "black,SCI", "5");
  folder_.Write("cards_sci.csv", folder_.Read("cards_sci.csv") + FlatRow("white,SCI", "88"));
  folder_.Write("lab_sci.csv", "id,geometry,L,a,b\nt,SCI,50,0,0\n");
  folder_.Write("samples_sce.csv", Header("id,geometry,share:white,share:black", 360, 750) +
                                       FlatRow("w,SCE,100,0", "88") + FlatRow("g,SCE,90,10", "20") +
                                       FlatRow("b,SCE,0,100", "5"));
  const std::string other =
      "sci.csv, line 2: the file says that the specular component is included, but the colour system is of "
      "curves with it excluded";
  const std::string correct = "correct s.json --formula f.json --batch-size 9 ";
  ExpectRefusals({
      {"match s.json sci.csv", other},
      {"match s.json lab_sci.csv", "lab_" + other},
      {"match s.json t.csv --from-stock stock_sci.csv", "stock_" + other},
      {"match s.json t.csv --library made_sci.csv", "made_" + other},
      {"match s.json t.csv --backings cards_sci.csv", "cards_" + other},
      {correct + "--batch sci.csv --target t.csv", other},
      {correct + "--batch t.csv --target sci.csv", other},
      {"match " + kPaints + " sce.csv", "but --specular is included; use --specular excluded"},
      {"calibrate samples_sce.csv --white white", "samples_sce.csv, line 2: the file says that the specular"},
      {"calibrate samples.csv --white white --specular excluded --add made_sci.csv",
       "but --specular is excluded; use --specular included"},
  });
#ifdef VRX_WITH_STORE
  json open = system;
  open.erase("specular");
  folder_.Write("open.json", open.dump());
  ASSERT_EQ(Run("job create made.vrxjob"), 0);
  ASSERT_EQ(Run("job add-recipes open.json made_sci.csv --job made.vrxjob"), 0) << folder_.Read("err");
  ExpectRefusals({
      {"match s.json t.csv --library made.vrxjob", "made.vrxjob: recipe \"t\": the file says that the"},
      {"job add-recipes s.json made_sci.csv --job made.vrxjob", "made_" + other},
  });
#endif
  EXPECT_EQ(Run("match s.json sce.csv"), 0) << folder_.Read("err");
  EXPECT_EQ(Run("match " + kPaints + " sce.csv --max-colorants 1 --specular excluded"), 0);
  EXPECT_EQ(Run("calibrate samples_sce.csv --white white --specular excluded"), 0) << folder_.Read("err");
}

// 45/0 and the aspecular angles lie beside the gloss: beside a system of curves with it they are asked about, and the file of a
// system says where its own were of that kind.
TEST_F(MatchingCommands, CurvesBesideTheGlossAreAskedAbout) {
  const auto samples = [&](const char* name, const std::string& white, const std::string& others) {
    folder_.Write(name, Header("id,geometry,share:white,share:black", 360, 750) +
                            FlatRow("w," + white + ",100,0", "88") + FlatRow("g," + others + ",90,10", "20") +
                            FlatRow("b," + others + ",0,100", "6"));
  };
  samples("plain.csv", "", "");
  samples("at_45.csv", "45/0", "45/0");
  samples("mixed.csv", "", "45/0");
  const std::string by = " --white white --output ", included = " --specular included";
  ASSERT_EQ(Run("calibrate plain.csv" + by + "s.json"), 0) << folder_.Read("err");
  ASSERT_EQ(Run("calibrate at_45.csv" + by + "of_45.json" + included), 0) << folder_.Read("err");
  ASSERT_EQ(Run("calibrate mixed.csv" + by + "mixed.json" + included), 0) << folder_.Read("err");
  ASSERT_EQ(Run("calibrate at_45.csv" + by + "without.json --specular excluded"), 0) << folder_.Read("err");
  EXPECT_FALSE(json::parse(folder_.Read("s.json")).contains("geometry"));
  EXPECT_FALSE(json::parse(folder_.Read("mixed.json")).contains("geometry"));
  EXPECT_EQ(json::parse(folder_.Read("of_45.json"))["geometry"], "45/0");

  const auto target = [&](const char* name, std::initializer_list<const char*> rows) {
    std::string text = Header("id,geometry", 360, 750);
    for (const char* row : rows) text += FlatRow(row, "20");
    folder_.Write(name, text);
  };
  target("45.csv", {"t,45/0"});
  target("15.csv", {"t,15deg"});
  target("sci.csv", {"t,SCI"});
  target("sce.csv", {"t,SCE/100"});
  target("d8.csv", {"t,d8"});
  target("both.csv", {"t,45/0", "t,SCI"});
  target("turned.csv", {"t,SCI", "t,45/0"});
  target("one_of_two.csv", {"t,SCI", "u,45/0", "t,45/0"});
  folder_.Write("lab.csv", "id,geometry,L,a,b\nt,45/0,50,0,0\n");
  folder_.Write("stock.csv",
                Header("id,geometry,formula,amount", 360, 750) + FlatRow("t,45/0,1:90;2:10,9", "20"));
  folder_.Write("made.csv", Header("id,geometry,formula", 360, 750) + FlatRow("t,45/0,1:90;2:10", "20"));
  folder_.Write("cards.csv",
                Header("id,geometry", 360, 750) + FlatRow("k,45/0", "5") + FlatRow("w,45/0", "88"));
  folder_.Write("f.json", R"({"formulas":[{"name":"g","lines":[
      {"component":1,"amount":90},{"component":2,"amount":10}]}]})");
  const std::string
      leaves = ": the file says 45/0, which leaves out the specular component, but ",
      system = "the colour system is of curves with it included; --specular included takes the curve",
      correct = "correct s.json --formula f.json --batch-size 9 ";
  ExpectRefusals({
      {"match s.json 45.csv", "45.csv, line 2" + leaves + system},
      {"match s.json lab.csv", "lab.csv, line 2" + leaves + system},
      {"match s.json 15.csv", "says 15\u00b0, which leaves out the specular component"},
      {"match s.json one_of_two.csv", "one_of_two.csv, line 3" + leaves},
      {"match s.json sci.csv --from-stock stock.csv", "stock.csv, line 2" + leaves},
      {"match s.json sci.csv --library made.csv", "made.csv, line 2" + leaves},
      {"match s.json sci.csv --backings cards.csv", "cards.csv, line 2" + leaves},
      {correct + "--batch 45.csv --target sci.csv", "45.csv, line 2" + leaves},
      {correct + "--batch sci.csv --target 45.csv", "45.csv, line 2" + leaves},
      {"match " + kPaints + " 45.csv",
       leaves + "--specular is included; use --specular excluded, or --specular included for a matt surface"},
      {"calibrate at_45.csv" + by + "new.json", "at_45.csv, line 2" + leaves + "--specular is included; use"},
      {"match s.json sce.csv" + included, "the colour system is of curves with it included\n"},
      {"match of_45.json sci.csv", "the colour system is of curves with it excluded, at 45/0\n"},
      {"match of_45.json both.csv",
       "both.csv, line 3: the file says that the specular component is included"},
      {"match without.json sci.csv", "the colour system is of curves with it excluded, at 45/0\n"},
  });
  for (const char* run : {"s.json 45.csv --specular included", "s.json both.csv", "s.json turned.csv",
                          "s.json d8.csv", "of_45.json 45.csv", "of_45.json 15.csv", "of_45.json sce.csv",
                          "without.json 45.csv", "s.json sci.csv --library made.csv --specular included"}) {
    EXPECT_EQ(Run(std::string("match ") + run + " --top 1"), 0) << run << folder_.Read("err");
  }
  EXPECT_EQ(Run(correct + "--batch 45.csv --target sci.csv" + included), 0) << folder_.Read("err");

  // What contradicts the system's file is no way out.
  folder_.Write("dark.csv", Wide() + FlatRow("d", "2"));
  ExpectRefusals(
      {{"match s.json dark.csv", "calibrate the system on curves without it"},
       {correct + "--batch dark.csv --target sci.csv", "calibrate the system on curves without it"}});
  EXPECT_EQ(folder_.Read("err").find("--specular excluded"), std::string::npos);
}

// Parts in columns of amounts, a base, and a dilution that is weighed in, say the same as shares.
TEST_F(MatchingCommands, AmountsAndDilutionsAreShares) {
  const std::string curves = ",30,35,40,45\n", white = ",80,80,80,80\n", dark = ",6,6,6,7\n";
  folder_.Write("parts.csv",
                "id,amount:tint,amount:carbon,amount:white,base:resin,540,560,580,600\n"
                "w,,,40,100" +
                    white + "v,,,20,100,75,75,75,75\nt,20,,38,82" + curves + "c,,3,,97" + dark);
  folder_.Write("components.csv", "component,of,amount\ntint,carbon,0.1\n");
  folder_.Write("shares.csv",
                "id,share:carbon,share:white,share:resin,540,560,580,600\n"
                "w,,28.571428571428573,71.428571428571431" +
                    white +
                    "v,,16.666666666666668,83.333333333333329,75,75,75,75\n"
                    "t,1.4285714285714286,27.142857142857142,71.428571428571431" +
                    curves + "c,3,,97" + dark);
  const json parts =
      RunJson("calibrate parts.csv --white white --components components.csv --output parts.json");
  const json shares = RunJson("calibrate shares.csv --white white --output shares.json");
  ASSERT_EQ(parts.size(), shares.size());
  for (std::size_t i = 0; i < parts.size(); ++i) {
    EXPECT_NEAR(parts[i]["dE"].get<double>(), shares[i]["dE"].get<double>(), 1e-6) << i;
  }
  EXPECT_EQ(json::parse(folder_.Read("parts.json"))["components"][2]["kind"], "resin");
}

// Ladders of single dyes become levels, and recipes on them are told in grams per litre.
TEST_F(MatchingCommands, DyesBuildUpOnASubstrate) {
  const std::string header = "id,share:blue,share:red,540,560,580,600\n", bare = "c,,,80,80,80,80\n";
  const std::string ladder = bare + "b1,0.5,,60,50,40,50\nb2,1,,50,40,30,40\nb3,2,,49,39,29,39\n" +
                             "r1,,1,40,50,60,70\nr2,,2,30,40,50,60\n";
  folder_.Write("ladder.csv", header + ladder);
  folder_.Write("two.csv", header + bare + "x,1,1,60,50,40,50\n");
  folder_.Write("naked.csv", header + "b1,0.5,,60,50,40,50\nr1,,1,40,50,60,70\n");
  folder_.Write("parts.csv", "id,amount:blue,540,560,580,600\nb1,0.5,60,50,40,50\n");
  const std::string calibrate = " --model textiles --specular none --white cotton ";
  const json rows = RunJson("calibrate ladder.csv" + calibrate + "--output dyes.json");
  EXPECT_NEAR(rows[1]["dE"].get<double>(), 0.0, 1e-6);
  EXPECT_NE(folder_.Read("err").find("\"blue\" saturates: from 1.00 % on"), std::string::npos)
      << folder_.Read("err");
  const json system = json::parse(folder_.Read("dyes.json"));
  EXPECT_EQ(system["model"], "textiles");
  EXPECT_EQ(system["specular"], "none");
  EXPECT_EQ(system["components"][0]["levels"].size(), 3u);
  EXPECT_EQ(system["components"][2]["name"], "cotton");
  EXPECT_NEAR(system["components"][0]["calibrated"]["least"].get<double>(), 0.5, 1e-9);
  folder_.Write("targets.csv", "id,540,560,580,600\nt,40,50,60,70\n");
  const auto redOf = [&](const std::string& options) {
    const std::string formula =
        RunJson("match dyes.json targets.csv --require red --exclude blue " + options)[0]["formula"];
    return std::stod(formula.substr(formula.find("2:") + 2));
  };
  EXPECT_NEAR(redOf(""), 1.0, 0.01) << "percent of the fibre";
  EXPECT_NEAR(redOf("--liquor 20"), 0.5, 0.005) << "1 % is 10 g of a kilogram in 20 l";
  const std::string again = calibrate + "--output new.json";
  ExpectRefusals({
      {"calibrate two.csv" + again, "two.csv: drawdown \"x\": expected at most one dye"},
      {"calibrate naked.csv" + again, "naked.csv: no row is the bare substrate \"cotton\""},
      {"calibrate parts.csv" + again, "parts.csv: there is no column \"base:cotton\""},
      {"calibrate ladder.csv" + again + " --add ladder.csv", "--add"},
      {"calibrate ladder.csv --model metallics --white c", "--model"},
      {"match dyes.json targets.csv --liquor 0.0001 --batch-size 3", "--liquor"},
      {"match dyes.json targets.csv --liquor -1", "--liquor: must be litres per kilogram"},
      {"match " + kPaints + " targets.csv --specular none --liquor 10", "\"model\": --liquor is for dyes"},
  });
}

// Further samples count by their weight, and their effect on what they do not hold is told.
TEST_F(MatchingCommands, CalibrateLearns) {
  const std::string oils = "calibrate " VRX_SOURCE_DIR
                           "/examples/oil_drawdowns.csv --white \"zinc white\""
                           " --without \"zinc white linseed,chrome yellow poppyseed\" ";
  folder_.Write("batches.csv", "id,formula,540,560,580,600\nb,zinc white:99;prussian blue:1,90,90,90,90\n");
  const json rows = RunJson(oils + "--add batches.csv --weight 20");
  EXPECT_EQ(rows[rows.size() - 1]["part"], "added");
  const std::string told = folder_.Read("err");
  EXPECT_NE(told.find("the held-out error of the drawdowns did not fall: "), std::string::npos) << told;
  EXPECT_NE(told.find("what was added had been predicted with an error of "), std::string::npos) << told;
}

}  // namespace
}  // namespace vrx::tool
