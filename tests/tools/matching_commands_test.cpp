// calibrate, match and correct as processes.

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tests/testing/tool_process.h"

namespace vrx::tool {
namespace {

using nlohmann::json;

const std::string kPaints = VRX_SOURCE_DIR "/examples/acrylic_paints.json";
const std::string kFormulas = VRX_SOURCE_DIR "/examples/acrylic_formulas.json";

// A row of a curve that is the same at every wavelength, but for a hole at 500 nm if one is asked for.
std::string FlatRow(std::string row, const char* percent, bool hasHole = false) {
  for (int nm = 360; nm <= 750; nm += 10) row += nm == 500 && hasHole ? "," : std::string(",") + percent;
  return row + "\n";
}

class MatchingCommands : public test::ToolProcess {
 protected:
  static std::string Wide() { return Header("id", 360, 750); }
  // The exit status of `vrx ARGUMENTS`.
  int Run(const std::string& arguments) { return ToolProcess::Run(arguments + " </dev/null").status; }
  // Refuses `rows`, and nothing that begins with "new" was written.
  void ExpectRefusals(std::initializer_list<std::pair<std::string, std::string>> rows) {
    ExpectRefused(rows);
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "")) {
      EXPECT_FALSE(entry.path().filename().string().starts_with("new")) << entry.path();
    }
  }
  // Curves of formulas, as a file of the folder.
  void WriteCurves(const std::string& system, const std::string& formulas, const char* name,
                   double noise = 0.0) {
    std::string rows = Wide();
    uint32_t state = 1;
    for (const json& row : RunJson("predict " + system + " " + formulas)) {
      rows += row["id"];
      for (int nm = 360; nm <= 750; nm += 10) {
        state = 1664525u * state + 1013904223u;
        const double off = noise * (state / 2147483648.0 - 1.0);
        rows += "," + json(row[std::to_string(nm)].get<double>() + off).dump();
      }
      rows += "\n";
    }
    folder_.Write(name, rows);
  }
};

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

// A component is found by its name, also where that is a number.
TEST_F(MatchingCommands, NamesThatAreNumbers) {
  json system = json::parse(std::ifstream(kPaints));
  system["components"][2]["name"] = "77491";
  system["components"][3]["name"] = "7";
  folder_.Write("numbers.json", system.dump());
  folder_.Write("t.csv", Wide() + FlatRow("t", "40"));
  const std::string match = "match numbers.json t.csv --max-colorants 1 --top 1 --require ";
  EXPECT_TRUE(RunJson(match + "77491")[0]["formula"].get<std::string>().starts_with("3:"));
  EXPECT_TRUE(RunJson(match + "name:7")[0]["formula"].get<std::string>().starts_with("4:"));
  EXPECT_TRUE(RunJson(match + "id:7")[0]["formula"].get<std::string>().starts_with("7:"));
  ExpectRefusals(
      {{match + "7",
        "\"7\" is the number of the component \"Phthalo Blue (Green Shade)\" and the name of component 4"}});
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

// The six formulas of the example, from the curves that they are predicted to give, and a masstone.
TEST_F(MatchingCommands, TheExampleFormulasComeBackFirst) {
  folder_.Write("masstone.json", R"({"formulas":[{"name":"M","lines":[{"component":7,"amount":3}]}]})");
  WriteCurves(kPaints, kFormulas, "curves.csv");
  ASSERT_EQ(Run("match " + kPaints + " curves.csv --sort color --top 2 --format csv --formulas found.json"),
            0)
      << folder_.Read("err");
  EXPECT_TRUE(folder_.Read("out").starts_with(
      "target,rank,colorants,formula,dE_D65,dE_A,dE_CWF,metamerism,rms,cost,opacity,folded,traces,status\n"
      "Sky blue,1,3,1:94;7:1.5;16:4.5,"));
  const json found = json::parse(folder_.Read("found.json"))["formulas"];
  const json wanted = json::parse(std::ifstream(kFormulas))["formulas"];
  ASSERT_EQ(found.size(), 12u);
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const json& lines = found[2 * i]["lines"];
    ASSERT_EQ(lines.size(), wanted[i]["lines"].size()) << wanted[i]["name"];
    for (const json& line : wanted[i]["lines"]) {
      const auto same = std::find_if(lines.begin(), lines.end(), [&](const json& other) {
        return other["component"] == line["component"];
      });
      ASSERT_NE(same, lines.end());
      EXPECT_NEAR((*same)["amount"].get<double>(), line["amount"].get<double>(), 1e-4) << wanted[i]["name"];
    }
  }
  EXPECT_EQ(Run("predict " + kPaints + " found.json"), 0);
  WriteCurves(kPaints, "masstone.json", "curves.csv");
  EXPECT_EQ(RunJson("match " + kPaints + " curves.csv")[0]["formula"], "7:100");
  EXPECT_EQ(RunJson("match " + kPaints + " curves.csv --batch-size 5000 --resolution 0.5")[0]["formula"],
            "7:5000");
  EXPECT_EQ(RunJson("match " + kPaints + " curves.csv --batch-size 0.005")[0]["formula"], "7:0.005");
}

// Amounts of a text such as 1:94;7:6.
double TotalOf(const std::string& formula) {
  double total = 0.0;
  for (std::size_t at = 0; (at = formula.find(':', at)) != std::string::npos;) {
    total += std::strtod(formula.c_str() + ++at, nullptr);
  }
  return total;
}

TEST_F(MatchingCommands, MatchAnswersWhateverIsAsked) {
  json system = json::parse(std::ifstream(kPaints));
  system["rules"] = {{1, 7}};
  folder_.Write("rules.json", system.dump());
  WriteCurves(kPaints, kFormulas, "curves.csv");
  folder_.Write("backings.csv", Wide() + FlatRow("black", "5") + FlatRow("white", "88"));
  folder_.Write("far.csv", "id,L,a,b\nfar,50,120,-10\n");
  for (const json& row : RunJson("match rules.json curves.csv --max-colorants 3 --top 20")) {
    const std::string formula = ";" + row["formula"].get<std::string>();
    EXPECT_TRUE(formula.find(";1:") == std::string::npos || formula.find(";7:") == std::string::npos)
        << formula;
  }
  for (const json& row :
       RunJson("match " + kPaints + " curves.csv --max-colorants 3 --batch-size 500 --resolution 0.5")) {
    EXPECT_EQ(TotalOf(row["formula"]), 500.0) << row["formula"];
  }
  const json far = RunJson("match " + kPaints + " far.csv --top 2 --max-colorants 2 --report far.html");
  ASSERT_EQ(far.size(), 2u) << "beyond the gamut";
  EXPECT_EQ(far[0]["status"], "out of tolerance");
  EXPECT_LT(far[0]["dE_D65"], far[1]["dE_D65"]);
  EXPECT_TRUE(far[0]["dE_A"].is_null() && far[0]["metamerism"].is_null());
  const std::string page = folder_.Read("far.html");
  EXPECT_NE(page.find(">Target and first recipe<"), std::string::npos)
      << "swatches, but no curves of a colour";
  EXPECT_NE(page.find(" Quinacridone Magenta"), std::string::npos) << "by name, also beside csv and json";
  EXPECT_EQ(page.find("<svg"), std::string::npos);

  const std::string thin =
      "match " + kPaints + " curves.csv --max-colorants 1 --backings backings.csv --thickness ";
  for (const json& row : RunJson(thin + "1e-3 --min-opacity 99.9 --formulas new.json")) {
    EXPECT_EQ(row["rank"], 1);
    EXPECT_EQ(row["formula"], "");
    EXPECT_TRUE(row["dE_D65"].is_null() && row["opacity"].is_null());
    EXPECT_EQ(row["status"], "no recipe");
  }
  EXPECT_NE(folder_.Read("err").find("6 of 6 targets have no recipe"), std::string::npos);
  EXPECT_TRUE(json::parse(folder_.Read("new.json"))["formulas"].empty());
  EXPECT_GE(RunJson(thin + "1000 --min-opacity 99.9")[0]["opacity"], 99.9);
}

// The line that a terminal shows which obeys the carriage return and no escape.
std::string OnPlainTerminal(const std::string& written) {
  std::string line;
  std::size_t at = 0;
  for (const char c : written) {
    if (at == line.size()) line += ' ';
    if (c == '\r')
      at = 0;
    else
      line[at++] = c;
  }
  return line;
}

// Ctrl-C on a terminal, once the progress bar says that the search is under way.
TEST_F(MatchingCommands, CtrlCLeavesNothingHalfDone) {
  std::string targets = Wide();
  for (int i = 0; i < 1000; ++i) targets += FlatRow("t" + std::to_string(i), "40");
  folder_.Write("many.csv", targets);
  const std::string command = "cd " + (folder_ / "") + " && exec " VRX_TOOL " match " + kPaints +
                              " many.csv --max-colorants 5 --formulas new.json >out";
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  ASSERT_GE(child, 0);
  if (child == 0) {
    execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    _exit(127);
  }
  std::string shown;
  const auto readUntil = [&](const char* text) {
    char part[256];
    while (text == nullptr || shown.find(text) == std::string::npos) {
      const ssize_t count = read(terminal, part, sizeof part);
      if (count <= 0) return;
      shown.append(part, static_cast<std::size_t>(count));
    }
  };
  readUntil("%");
  ASSERT_EQ(write(terminal, "\x03", 1), 1);
  readUntil(nullptr);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  close(terminal);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
  EXPECT_EQ(OnPlainTerminal(shown).find_first_not_of(' '), std::string::npos) << "the bar is gone: " << shown;
  EXPECT_EQ(folder_.Read("out"), "");
  EXPECT_FALSE(std::filesystem::exists(folder_ / "new.json"));
}

// A batch with 5 parts of 100 of a colorant becomes one with 10 by adding (0.10 - 0.05) / (1 - 0.10) of its size; so does a
// leftover of it.
TEST_F(MatchingCommands, CorrectAddsWhatIsMissing) {
  folder_.Write("all.json", R"({"formulas":[
      {"name":"batch","lines":[{"component":1,"amount":95},{"component":7,"amount":5}]},
      {"name":"target","lines":[{"component":1,"amount":90},{"component":7,"amount":10}]},
      {"name":"white","lines":[{"component":1,"amount":1}]}]})");
  for (const json& row : RunJson("predict " + kPaints + " all.json")) {
    std::string cells = "c", whiter = "c";
    for (int nm = 360; nm <= 750; nm += 10) {
      const double percent = row[std::to_string(nm)];
      cells += "," + row[std::to_string(nm)].dump();
      whiter += "," + std::to_string(percent + 3.0);
    }
    const std::string name = row["id"];
    folder_.Write(name + ".csv", Wide() + cells + "\n");
    folder_.Write(name + "_lighter.csv", Wide() + whiter + "\n");
  }
  const std::string correct = "correct " + kPaints + " --formula all.json --name batch --max-colorants 1 ";
  const json nearest =
      RunJson(correct + "--batch batch.csv --target target.csv --batch-size 90 --aim nearest --top 1");
  ASSERT_EQ(nearest.size(), 1u);
  EXPECT_EQ(nearest[0]["additions"], "7:5");
  EXPECT_NEAR(nearest[0]["total"].get<double>(), 90.0 * 0.05 / 0.9, 1e-6);
  EXPECT_EQ(nearest[0]["status"], "ok");
  ASSERT_EQ(
      Run(correct + "--batch batch.csv --target target.csv --batch-size 90 --resolution 0.5 --format csv"),
      0);
  EXPECT_TRUE(folder_.Read("out").starts_with(
      "rank,additions,total,dE_before,dE_after_D65,dE_after_A,dE_after_CWF,cost,status,suspected\n1,7:"));
  const json tooLittle = RunJson(
      correct +
      "--batch batch.csv --target target.csv --batch-size 90 --max-addition 1% --tolerance 0.1 --top 1");
  EXPECT_EQ(tooLittle[0]["status"], "out of tolerance");
  EXPECT_NEAR(tooLittle[0]["total"].get<double>(), 0.9, 1e-6);
  const json none = RunJson("correct " + kPaints +
                            " --formula all.json --name white --batch white.csv"
                            " --target white_lighter.csv --batch-size 90 --tolerance 0.1 --max-colorants 1");
  ASSERT_EQ(none.size(), 1u);
  EXPECT_EQ(none[0]["status"], "no addition helps");
  EXPECT_EQ(none[0]["additions"], "");

  // The messages of correct about prices and steps.
  folder_.Write("costs.csv", "component,cost\n7,2\n10,0.1\n");
  const std::string priced =
      correct + "--batch batch.csv --target target.csv --batch-size 90 --limits costs.csv --top 3 ";
  const json cheapest = RunJson(priced + "--aim cheapest --tolerance 3");
  for (const json& row : cheapest) {
    const std::string additions = row["additions"];
    const double price = additions.starts_with("7:") ? 2.0 : additions.starts_with("10:") ? 0.1 : 0.0;
    EXPECT_NEAR(row["cost"].get<double>(), price * TotalOf(additions), 1e-3) << additions;
    EXPECT_EQ(row["status"] == "ok", &row == &cheapest[0]) << "the cheap colorant alone does not reach it";
    EXPECT_NEAR(row["dE_before"].get<double>(), nearest[0]["dE_before"].get<double>(), 1e-12);
  }
  EXPECT_EQ(RunJson(priced + "--aim nearest --resolution 3")[0]["additions"], "7:6") << "of 5";
  EXPECT_EQ(RunJson(priced + "--exclude 7 --aim nearest --tolerance 0.1")[0]["status"], "out of tolerance");

  // The same from leftovers: of two, the one that needs less for its size, whatever its size.
  std::string stock = Wide();
  stock.insert(2, ",formula,amount");
  const auto cells = [&](const char* name) {
    const std::string file = folder_.Read(name);
    return file.substr(file.find('\n') + 2);
  };
  stock +=
      "far,1:100,9" + cells("white.csv") + "near,1:95;Phthalo Blue (Green Shade):5,900" + cells("batch.csv");
  folder_.Write("stock.csv", stock);
  const std::string leftovers = "match " + kPaints + " target.csv --from-stock stock.csv --max-colorants 1 ";
  const json best = RunJson(leftovers + "--sort color --top 2 --tolerance 0.1");
  ASSERT_EQ(best.size(), 2u);
  EXPECT_EQ(best[0]["batch"], "near");
  EXPECT_EQ(best[0]["additions"], "7:50");
  EXPECT_EQ(best[1]["batch"], "far");
  EXPECT_EQ(best[1]["additions"], "7:1") << "a tenth of what will be 10";
  ASSERT_EQ(Run(leftovers + "--report stock.html --max-addition 0.1% --top 1 --tolerance 0.1 --format csv"),
            0);
  EXPECT_TRUE(folder_.Read("out").starts_with(
      "target,rank,batch,additions,total,dE_before,dE_after_D65,dE_after_A,dE_after_CWF,cost,status\n"
      "c,1,near,14:0.9,"))
      << folder_.Read("out");
  EXPECT_NE(folder_.Read("stock.html").find("curves of the target and of 1 recipes"), std::string::npos);
}

// What a colour leaves open: the load of a clear resin, traces, ranges; and what was made before.
TEST_F(MatchingCommands, LoadTracesRangesAndFormerRecipes) {
  json system = json::parse(std::ifstream(kPaints));
  const json zeros = std::vector<double>(40, 0.0);
  system["components"].push_back({{"id", 90},
                                  {"name", "Clear"},
                                  {"kind", "resin"},
                                  {"levels", {{{"concentration", 1}, {"K", zeros}, {"S", zeros}}}}});
  for (json& component : system["components"]) {
    if (component["id"] != 90) {
      component["calibrated"] = {{"least", 0.5}, {"most", 4}, {"drawdowns", 3}, {"leave_one_out_90", 2}};
    }
  }
  folder_.Write("plastics.json", system.dump());
  WriteCurves(kPaints, kFormulas, "curves.csv");
  const std::string match = "match plastics.json curves.csv --max-colorants 3 --top 2 --sort color ";
  ASSERT_EQ(Run(match + "--load 3% --format csv"), 0) << folder_.Read("err");
  EXPECT_TRUE(
      folder_.Read("out").starts_with("target,rank,colorants,formula,dE_D65,dE_A,dE_CWF,metamerism,rms,cost,"
                                      "opacity,load,load_by,expected,outside,"
                                      "folded,traces,status\nSky blue,1,3,1:2.82;7:0.045;16:0.135;90:97,"))
      << folder_.Read("out");
  const struct {
    const char* label;
    const char* options;
    double load;
    const char* basis;
    const char* outside;
  } rows[] = {
      {"fixed", "--load 3%", 3.0, "given", "7;16"},
      {"bounded, below what was calibrated", "--load 1:2", 2.0, "calibrated range", "7;16"},
      {"by the range of the white", "", 4.0 / 0.94, "calibrated range", "7;16"},
  };
  for (const auto& row : rows) {
    const json first = RunJson(match + row.options)[0];
    EXPECT_NEAR(first["load"].get<double>(), row.load, 1e-6) << row.label;
    EXPECT_EQ(first["load_by"], row.basis) << row.label;
    EXPECT_EQ(first["outside"], row.outside) << row.label;
    EXPECT_GT(first["expected"], 2.0) << row.label;
  }
  const json alike = RunJson(match + "--load 3% --trace 1000");
  EXPECT_GT(alike[0]["folded"], 3);
  EXPECT_NE(alike[0]["traces"], "");
  for (const json& row : RunJson(match + "--load 3% --trace off")) EXPECT_EQ(row["folded"], 0);

  // The library knows that the batch comes out darker than predicted; its recipe, adapted, has no new colorant.
  std::string library = Wide(), two = Wide();
  library.insert(2, ",formula");
  two.insert(2, ",geometry");
  for (const json& row : RunJson("predict " + kPaints + " " + kFormulas)) {
    if (row["id"] != "Sky blue") continue;
    std::string darker, same, lighter, flop;
    for (int nm = 360; nm <= 750; nm += 10) {
      const double percent = row[std::to_string(nm)];
      darker += "," + std::to_string(0.98 * percent), same += "," + std::to_string(percent);
      lighter += "," + std::to_string(percent + 0.5), flop += "," + std::to_string(0.3 * percent);
    }
    library += "A7,1:94;7:1.5;16:4.5" + darker + "\n";
    two += "t,45/0" + same + "\nt,SCI" + lighter + "\n";
    folder_.Write("flop.csv", two + "t,SCE" + flop + "\n");
  }
  folder_.Write("library.csv", library);
  folder_.Write("two.csv", two);
  const json adapted =
      RunJson("match " + kPaints + " curves.csv --top 1 --max-colorants 3 --library library.csv");
  ASSERT_EQ(adapted.size(), 12u);
  EXPECT_EQ(adapted[0]["from"], "");
  EXPECT_EQ(adapted[1]["from"], "A7");
  EXPECT_EQ(adapted[1]["new"], 0);
  EXPECT_EQ(adapted[1]["status"], "ok");
  EXPECT_NE(adapted[1]["formula"], adapted[0]["formula"]);

  const json worst = RunJson("match " + kPaints + " two.csv --top 1 --max-colorants 3");
  ASSERT_EQ(worst.size(), 1u) << "one target of two geometries";
  EXPECT_GT(worst[0]["dE_D65"], 0.05);
  EXPECT_LT(worst[0]["dE_D65"], 0.3);

  std::string stock = Wide();
  stock.insert(2, ",formula,amount");
  for (const char* line : {"a,1:94;7:6,30", "b,1:92;16:8,500"}) {
    folder_.Write(
        "one.json",
        line[0] == 'a'
            ? R"({"formulas":[{"name":"x","lines":[{"component":1,"amount":94},{"component":7,"amount":6}]}]})"
            : R"({"formulas":[{"name":"x","lines":[{"component":1,"amount":92},{"component":16,"amount":8}]}]})");
    stock += line;
    for (const json& row : RunJson("predict " + kPaints + " one.json")) {
      for (int nm = 360; nm <= 750; nm += 10) stock += "," + row[std::to_string(nm)].dump();
    }
    stock += "\n";
  }
  folder_.Write("stock.csv", stock);
  folder_.Write("sky.csv", two.substr(0, two.find("\nt,SCI") + 1));
  const json parts = RunJson("match " + kPaints +
                             " sky.csv --from-stock stock.csv --parts 100 --top 1 --report new_parts.html");
  ASSERT_EQ(parts.size(), 1u);
  EXPECT_GT(parts[0]["used"], 70.0);
  EXPECT_TRUE(parts[0]["leftovers"].get<std::string>().starts_with("a:")) << parts[0]["leftovers"];
  EXPECT_EQ(parts[0]["status"], "ok");
  std::filesystem::remove(folder_ / "new_parts.html");
  ExpectRefusals({
      {"match " + kPaints + " curves.csv --load 3%", "--load: " + kPaints + " has no clear component"},
      {match + "--load 0", "--load"},
      {match + "--load 5:1", "--load"},
      {match + "--load x", "--load"},
      {match + "--load 101", "--load"},
      {match + "--trace -1", "--trace"},
      {match + "--trace x", "--trace"},
      {"match " + kPaints + " curves.csv --within-range", "--within-range"},
      {match + "--load 90% --within-range", "--within-range: no recipe makes up 100 percent"},
      {match + "--library none.csv", "none.csv"},
      {match + "--library curves.csv", "\"formula\""},
      {"match " + kPaints + " flop.csv", "flop.csv: target \"t\" changes with the geometry"},
      {match + "--parts 100", "--from-stock"},
      {match + "--from-stock stock.csv --parts 0", "--parts"},
      {match + "--from-stock stock.csv --load 3", "--load"},
      {match + "--from-stock stock.csv --library library.csv", "--library"},
      {"match " + kPaints + " curves.csv --from-stock stock.csv --sort expected", "--sort"},
  });
}

// Components and amounts of a text such as 1:94;7:6.
json LinesOf(const std::string& formula) {
  json lines = json::array();
  for (std::size_t at = 0; at < formula.size();) {
    const std::size_t end = std::min(formula.find(';', at), formula.size()), colon = formula.find(':', at);
    lines.push_back({{"component", std::stoi(formula.substr(at, colon - at))},
                     {"amount", std::stod(formula.substr(colon + 1, end - colon - 1))}});
    at = end + 1;
  }
  return lines;
}

// A batch of 100 of the formula `written` from which one line was left out by mistake; the curve has noise of 0.05 % that
// is the same everywhere. The differences of what the told correction really gives.
class LeftOut : public MatchingCommands {
 protected:
  void Correct(const json& written, std::size_t left) {
    const std::string name = written["name"];
    json real = written;
    real["lines"].erase(left);
    folder_.Write("target.json", json{{"formulas", {written}}}.dump());
    folder_.Write("real.json", json{{"formulas", {real}}}.dump());
    WriteCurves(kPaints, "target.json", "target.csv");
    WriteCurves(kPaints, "real.json", "batch.csv", 0.05);
    const json row = RunJson("correct " + kPaints +
                             " --formula target.json --batch batch.csv --target target.csv"
                             " --batch-size 100 --max-addition 9000% --top 1")[0];
    EXPECT_EQ(row["status"], "ok") << name << " " << left;
    EXPECT_NE(row["suspected"].get<std::string>().find(" % instead of "), std::string::npos)
        << name << " " << left << " " << row["suspected"];
    double total = 0.0;
    for (const json& line : real["lines"]) total += line["amount"].get<double>();
    for (json& line : real["lines"]) line["amount"] = 100.0 * line["amount"].get<double>() / total;
    for (const json& line : LinesOf(row["additions"])) real["lines"].push_back(line);
    folder_.Write("corrected.json", json{{"formulas", {real}}}.dump());
    WriteCurves(kPaints, "corrected.json", "corrected.csv");
    ++cases_;
    const json after = RunJson("correct " + kPaints +
                               " --formula corrected.json --batch corrected.csv --target"
                               " target.csv --batch-size 1 --trust-formula --tolerance 100")[0];
    if (after["dE_before"].get<double>() <= 1.0) return;
    missed_ += name + " " + std::to_string(left) + " ";
    ++misses_;
  }

  int cases_ = 0, misses_ = 0;
  std::string missed_;
};

TEST_F(LeftOut, IsFoundAndCorrected) {
  const json formulas = json::parse(std::ifstream(kFormulas))["formulas"];
  for (const json& written : formulas) {
    const std::size_t lines = written["lines"].size();
    for (std::size_t left = 0; lines > 2 && left < lines; ++left) Correct(written, left);
  }
  EXPECT_EQ(cases_, 16);
  EXPECT_LE(misses_, 2) << missed_;
}

// Whatever is wrong is told with file and field, and nothing is written.
TEST_F(MatchingCommands, MatchAndCorrectRefuseWhatTheyCannotUse) {
  const std::string good = FlatRow("t", "40"), t = Wide() + good;
  folder_.Write("t.csv", t);
  folder_.Write("dark.csv", t + FlatRow("d", "3"));
  folder_.Write("d.csv", Wide() + FlatRow("d", "3"));
  folder_.Write("hole.csv", Wide() + FlatRow("t", "40", true));
  folder_.Write("lab.csv", "id,L,a,b\nt,50,10,10\n");
  folder_.Write("bright.csv", "id,L,a,b\nt,150,10,10\n");
  folder_.Write("xyz.csv", "id,X,Y,Z\nt,50,10,10\n");
  folder_.Write("min.csv", "component,min,max\n3,60,50\n");
  folder_.Write("low.csv", "component,max\n3,1\n");
  folder_.Write("sum.csv", "component,min\n3,60\n4,60\n");
  folder_.Write("cost.csv", "component,cost\n3,-1\n");
  folder_.Write("who.csv", "component,cost\nNobody,1\n");
  const json level = {{{"concentration", 1}, {"K", json::array()}, {"S", json::array()}}};
  json two = {{"name", "r"},
              {"components",
               {{{"id", 1}, {"name", "a"}, {"levels", level}},
                {{"id", 2}, {"name", "b"}, {"levels", level}},
                {{"id", 3}, {"name", "c"}}}}};
  for (const std::size_t component : {0u, 1u}) {
    for (const char* curve : {"K", "S"})
      two["components"][component]["levels"][0][curve] = std::vector<double>(40, 1);
  }
  two["rules"] = {{1, 2}};
  folder_.Write("two.json", two.dump());
  two["model"] = "textiles";
  folder_.Write("dyes.json", two.dump());
  folder_.Write("bare.json", R"({"name":"r","components":[{"id":1,"name":"a"},{"id":2,"name":"b"}]})");
  folder_.Write("metal.json", R"({"name":"m","model":"metallics","components":[]})");
  folder_.Write("f.json", R"({"formulas":[{"name":"x","lines":[{"component":1,"amount":3}]}]})");
  folder_.Write("twice.json", R"({"formulas":[{"name":"x","lines":[{"component":1,"amount":3}]},
                                              {"name":"y","lines":[{"component":1,"amount":3}]}]})");
  folder_.Write("empty.json", R"({"formulas":[{"name":"x","lines":[{"component":1,"amount":0}]}]})");
  folder_.Write("unknown.json", R"({"formulas":[{"name":"x","lines":[{"component":99,"amount":1}]}]})");
  std::string header = Wide();
  header.insert(2, ",formula,amount");
  const auto stock = [&](const char* name, const std::string& start, const char* percent) {
    folder_.Write(name, header + FlatRow(start, percent));
  };
  stock("stock.csv", "s,1:95;7:5,90", "40");
  stock("stock_empty.csv", "s,,90", "40");
  stock("stock_text.csv", "s,1:95;7,90", "40");
  stock("stock_who.csv", "s,1:95;99:5,90", "40");
  stock("stock_dark.csv", "s,1:95;7:5,90", "3");
  stock("stock_none.csv", "s,1:95;7:5,0", "40");

  const std::string match = "match " + kPaints + " --formulas new.json --report new.html ";
  const std::string from = "match " + kPaints + " t.csv --report new.html --from-stock ";
  const std::string correct = "correct " + kPaints + " --batch-size 9 --formula ";
  ExpectRefusals({
      {match + "none.csv", "none.csv"},
      {match + "hole.csv", "hole.csv, line 2, column 16 (500)"},
      {match + "dark.csv",
       "dark.csv: target \"d\" is darker than the surface alone; use --specular excluded"},
      {match + "lab.csv --objective spectral", "lab.csv: target \"t\": this --objective needs a curve"},
      {match + "xyz.csv", "xyz.csv, line 1: targets are curves or L*, a*, b*"},
      {match + "t.csv --require 99", "--require: the colour system has no component \"99\""},
      {match + "t.csv --exclude Nobody", "--exclude: the colour system has no component \"Nobody\""},
      {match + "t.csv --limits who.csv",
       "who.csv, line 2, column 1 (component): the colour system has no component"},
      {match + "t.csv --require 3 --exclude \"Cobalt Blue\"",
       "--require, --exclude: component 3 \"Cobalt Blue\""},
      {match + "t.csv --require 1,2,3,4,5", "acrylic_paints.json: no subset is left"},
      {match + "t.csv --max-colorants 7", "--max-colorants"},
      {match + "t.csv --limits min.csv", "min.csv, line 2: min is above max"},
      {match + "t.csv --limits low.csv --min-amount 2",
       "low.csv: component 3 \"Cobalt Blue\": its least share"},
      {match + "t.csv --limits sum.csv --require 3,4", "sum.csv: no recipe makes up 100 percent"},
      {match + "t.csv --min-amount 60 --require 3,4", "--min-amount: no recipe makes up 100 percent"},
      {match + "t.csv --limits cost.csv", "cost.csv, line 2, column 2 (cost)"},
      {match + "t.csv --min-amount 101", "--min-amount"},
      {match + "t.csv --weights 1,2", "--weights"},
      {match + "t.csv --resolution 101", "--resolution"},
      {match + "t.csv --max-subsets 20852",
       "--max-subsets: there are 20853 subsets, more than 20852: exclude components"},
      {match + "t.csv --min-opacity 98", "--backings"},
      {match + "t.csv --backings t.csv", "t.csv: expected two curves"},
      {match + "t.csv --max-addition 9%", "--from-stock"},
      {"match " + kPaints + " t.csv --formulas /nowhere/f.json", "/nowhere/f.json"},
      {"match " + kPaints + " t.csv --formulas t.csv", "t.csv: this file is read as input"},
      {"match two.json t.csv --require 1,2", "two.json: \"rules\" forbid every subset"},
      {"match two.json t.csv --require c",
       "two.json: component 3 \"c\" cannot be in a recipe: it has no levels"},
      {"match dyes.json t.csv", "dyes.json: \"components\": there is no substrate"},
      {"match bare.json t.csv", "bare.json: no subset is left"},
      {"match metal.json t.csv", "metal.json: \"model\""},
      {from + "t.csv", "\"formula\""},
      {from + "stock_empty.csv", "stock_empty.csv, line 2, column 2 (formula): expected a formula such as"},
      {from + "stock_text.csv", "stock_text.csv, line 2, column 2 (formula): expected a formula such as"},
      {from + "stock_who.csv",
       "stock_who.csv, line 2, column 2 (formula): the colour system has no component \"99\""},
      {from + "stock_dark.csv", "stock_dark.csv: batch \"s\" is darker than the surface alone"},
      {from + "stock_none.csv", "stock_none.csv, line 2, column 3 (amount)"},
      {from + "stock.csv --sort metamerism", "--sort"},
      {from + "stock.csv --max-colorants 6", "--max-colorants"},
      {from + "stock.csv --batch-size 9", "--batch-size"},
      {from + "stock.csv --min-amount 9", "--min-amount"},
      {correct + "f.json --batch t.csv", "--target"},
      {correct + "none.json --batch t.csv --target t.csv", "none.json"},
      {correct + "empty.json --batch t.csv --target t.csv",
       "empty.json: formulas[0].lines: there is nothing in it"},
      {correct + "unknown.json --batch t.csv --target t.csv", "unknown.json: formulas[0].lines[0].component"},
      {correct + "twice.json --batch t.csv --target t.csv", "--name"},
      {correct + "f.json --name y --batch t.csv --target t.csv", "f.json: --name"},
      {correct + "f.json --batch hole.csv --target t.csv", "hole.csv, line 2, column 16 (500)"},
      {correct + "f.json --batch d.csv --target t.csv", "d.csv is darker than the surface alone"},
      {correct + "f.json --batch t.csv --target d.csv", "d.csv is darker than the surface alone"},
      {correct + "f.json --batch t.csv --target dark.csv", "dark.csv: expected exactly one curve"},
      {correct + "f.json --batch t.csv --target xyz.csv",
       "xyz.csv, line 1: a target is a curve or L*, a*, b*"},
      {correct + "f.json --batch t.csv --target bright.csv", "bright.csv, line 2: L* is not within 0 to 110"},
      {correct + "f.json --batch t.csv --target lab.csv --objective spectral", "lab.csv: this --objective"},
      {correct + "f.json --batch t.csv --target t.csv --margin 100%", "--margin"},
      {correct + "f.json --batch t.csv --target t.csv --max-addition 0%", "--max-addition"},
      {correct + "f.json --batch t.csv --target t.csv --min-amount 3", "--min-amount"},
      {correct + "f.json --batch t.csv --target t.csv --max-colorants 6", "--max-colorants"},
      {correct + "f.json --batch t.csv --target t.csv --allow-new --max-subsets 5",
       "20853 subsets, more than 5"},
      {"correct " + kPaints + " --formula f.json --batch t.csv --target t.csv --batch-size 0",
       "--batch-size"},
  });
}

}  // namespace
}  // namespace vrx::tool
