// calibrate, match and correct as processes.

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/wait.h>
#include <vector>

#include "tests/testing/temporary_folder.h"

namespace vrx::tool {
namespace {

using nlohmann::json;

class MatchingCommands : public testing::Test {
 protected:
  // Runs `vrx ARGUMENTS` in the folder; standard output and error go to files of it.
  int Run(const std::string& arguments) {
    const std::string command =
        "cd " + (folder_ / "") + " && " VRX_TOOL " " + arguments + " >out 2>err </dev/null";
    const int ended = std::system(command.c_str());
    return WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
  }
  json RunJson(const std::string& arguments) {
    EXPECT_EQ(Run(arguments + " --format json"), 0) << folder_.Read("err");
    return json::parse(folder_.Read("out"));
  }
  // Each of `rows` (arguments, what the message has in it) is refused with status 2 and without results.
  struct Refusal {
    std::string arguments;
    const char* message;
  };
  void ExpectRefusals(const std::vector<Refusal>& rows) {
    for (const Refusal& row : rows) {
      EXPECT_EQ(Run(row.arguments), 2) << row.arguments;
      EXPECT_NE(folder_.Read("err").find(row.message), std::string::npos)
          << row.arguments << folder_.Read("err");
      EXPECT_EQ(folder_.Read("out"), "") << row.arguments;
    }
  }

  test::TemporaryFolder folder_;
};

std::string Header() {
  std::string row = "id";
  for (int nm = 360; nm <= 750; nm += 10) row.append(1, ',').append(std::to_string(nm));
  return row + "\n";
}

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
  ExpectRefusals({
      {"calibrate good.csv", "--white"},
      {"calibrate good.csv --white X", "share:X"},
      {"calibrate good.csv --white W --hold-out q", "\"q\""},
      {"calibrate good.csv --white W --hold-out w,l", "the white \"W\""},
      {"calibrate good.csv --white W --without Q", "share:Q"},
      {"calibrate good.csv --white W --k1 2", "0.999"},
      {"calibrate good.csv --white W --output /nowhere/s.json", "/nowhere/s.json"},
      {"calibrate one.csv --white W --output s.json", "\"B\" has one share only"},
      {"calibrate sum.csv --white W", "line 3"},
      {"calibrate hole.csv --white W", "line 3, column 6"},
      {"calibrate surface.csv --white W", "surface"},
      {"calibrate pair.csv --white W", "no row \"film over white\""},
      {"calibrate card.csv --white W", "no row \"black card\""},
      {"calibrate shares.csv --white W", "other shares"},
      {"calibrate twice.csv --white W", "already"},
      {"calibrate none.csv --white W", "share:NAME"},
  });
  EXPECT_EQ(Run("colorants s.json"), 2) << "nothing was written";
  EXPECT_EQ(Run("calibrate good.csv --white w --output s.json"), 0) << folder_.Read("err");
  EXPECT_EQ(Run("colorants s.json"), 0);
}

// The six formulas of the example, from the curves that they are predicted to give, and a masstone.
TEST_F(MatchingCommands, TheExampleFormulasComeBackFirst) {
  const std::string paints = VRX_SOURCE_DIR "/examples/acrylic_paints.json";
  folder_.Write("masstone.json", R"({"formulas":[{"name":"M","lines":[{"component":7,"amount":3}]}]})");
  const auto curves = [&](const std::string& formulas) {
    std::string rows = Header();
    for (const json& row : RunJson("predict " + paints + " " + formulas)) {
      rows += row["id"];
      for (int nm = 360; nm <= 750; nm += 10) rows += "," + row[std::to_string(nm)].dump();
      rows += "\n";
    }
    folder_.Write("curves.csv", rows);
  };
  curves(VRX_SOURCE_DIR "/examples/acrylic_formulas.json");
  ASSERT_EQ(Run("match " + paints + " curves.csv --sort color --top 2 --format csv --formulas found.json"), 0)
      << folder_.Read("err");
  EXPECT_TRUE(folder_.Read("out").starts_with(
      "target,rank,colorants,formula,dE_D65,dE_A,dE_CWF,metamerism,rms,cost,opacity,status\n"
      "Sky blue,1,3,1:94;7:1.5;16:4.5,"));
  const json found = json::parse(folder_.Read("found.json"))["formulas"];
  const json wanted =
      json::parse(std::ifstream(VRX_SOURCE_DIR "/examples/acrylic_formulas.json"))["formulas"];
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
  EXPECT_EQ(Run("predict " + paints + " found.json"), 0);
  curves("masstone.json");
  EXPECT_EQ(RunJson("match " + paints + " curves.csv")[0]["formula"], "7:100");
  EXPECT_EQ(RunJson("match " + paints + " curves.csv --batch-size 5000 --resolution 0.5")[0]["formula"],
            "7:5000");
}

// A batch with 5 parts of 100 of a colorant becomes one with 10 by adding (0.10 - 0.05) / (1 - 0.10) of its size; so does a
// leftover of it.
TEST_F(MatchingCommands, CorrectAddsWhatIsMissing) {
  const std::string paints = VRX_SOURCE_DIR "/examples/acrylic_paints.json";
  folder_.Write("all.json", R"({"formulas":[
      {"name":"batch","lines":[{"component":1,"amount":95},{"component":7,"amount":5}]},
      {"name":"target","lines":[{"component":1,"amount":90},{"component":7,"amount":10}]},
      {"name":"white","lines":[{"component":1,"amount":1}]}]})");
  for (const json& row : RunJson("predict " + paints + " all.json")) {
    std::string cells = "c", whiter = "c";
    for (int nm = 360; nm <= 750; nm += 10) {
      const double percent = row[std::to_string(nm)];
      cells += "," + row[std::to_string(nm)].dump();
      whiter += "," + std::to_string(percent + 3.0);
    }
    const std::string name = row["id"];
    folder_.Write(name + ".csv", Header() + cells + "\n");
    folder_.Write(name + "_lighter.csv", Header() + whiter + "\n");
    std::string stock = Header();
    stock.insert(2, ",formula,amount");
    folder_.Write(name + "_stock.csv",
                  stock + "c,1:95;Phthalo Blue (Green Shade):5,90" + cells.substr(1) + "\n");
    folder_.Write(name + "_bad.csv", stock + "c,1:95;7,90" + cells.substr(1) + "\n");
  }
  const std::string correct = "correct " + paints + " --formula all.json --name batch --max-colorants 1 ";
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
      "rank,additions,total,dE_before,dE_after_D65,dE_after_A,dE_after_CWF,cost,status\n1,7:"));
  const json tooLittle = RunJson(
      correct +
      "--batch batch.csv --target target.csv --batch-size 90 --max-addition 1% --tolerance 0.1 --top 1");
  EXPECT_EQ(tooLittle[0]["status"], "out of tolerance");
  EXPECT_NEAR(tooLittle[0]["total"].get<double>(), 0.9, 1e-6);
  const json none = RunJson("correct " + paints +
                            " --formula all.json --name white --batch white.csv"
                            " --target white_lighter.csv --batch-size 90 --tolerance 0.1 --max-colorants 1");
  ASSERT_EQ(none.size(), 1u);
  EXPECT_EQ(none[0]["status"], "no addition helps");
  EXPECT_EQ(none[0]["additions"], "");

  const json stock =
      RunJson("match " + paints + " target.csv --from-stock batch_stock.csv --max-colorants 1 --sort color");
  EXPECT_EQ(stock[0]["batch"], "c");
  EXPECT_EQ(stock[0]["additions"], "7:5");
  ExpectRefusals({
      {correct + "--batch batch.csv --target target.csv", "--batch-size"},
      {correct + "--batch batch.csv --target target.csv --batch-size 0", "--batch-size"},
      {correct + "--batch batch.csv --target target.csv --batch-size 9 --max-addition 0%", "--max-addition"},
      {"correct " + paints + " --formula all.json --batch batch.csv --target target.csv --batch-size 9",
       "--name"},
      {correct + "--batch batch.csv --target none.csv --batch-size 9", "none.csv"},
      {"match " + paints + " target.csv --max-addition 9%", "--from-stock"},
      {"match " + paints + " target.csv --from-stock batch.csv", "\"formula\""},
      {"match " + paints + " target.csv --from-stock batch_bad.csv", "line 2, column 2"},
  });
}

TEST_F(MatchingCommands, MatchRefusesWhatItCannotUse) {
  const std::string match = "match " VRX_SOURCE_DIR "/examples/acrylic_paints.json ";
  std::string mid = Header() + "t", dark = Header() + "t", hole = Header() + "t";
  for (int nm = 360; nm <= 750; nm += 10) {
    mid += ",40";
    dark += ",3";
    hole += nm == 500 ? "," : ",40";
  }
  folder_.Write("t.csv", mid + "\n");
  folder_.Write("dark.csv", dark + "\n");
  folder_.Write("hole.csv", hole + "\n");
  folder_.Write("lab.csv", "id,L,a,b\nt,50,10,10\n");
  folder_.Write("min.csv", "component,min,max\n3,60,50\n");
  folder_.Write("sum.csv", "component,min\n3,60\n4,60\n");
  folder_.Write("cost.csv", "component,cost\n3,-1\n");
  folder_.Write("who.csv", "component,cost\nNobody,1\n");
  folder_.Write("rules.json", R"({"name":"r","components":[{"id":1,"name":"a"},{"id":2,"name":"b"}]})");
  folder_.Write("metal.json", R"({"name":"m","model":"metallics","components":[]})");
  ExpectRefusals({
      {match + "none.csv", "none.csv"},
      {match + "hole.csv", "line 2"},
      {match + "dark.csv", "--specular excluded"},
      {match + "lab.csv --objective spectral", "\"t\": this --objective needs a curve"},
      {match + "t.csv --require 99", "--require: the colour system has no component \"99\""},
      {match + "t.csv --exclude Nobody", "\"Nobody\""},
      {match + "t.csv --require 3 --exclude \"Cobalt Blue\"", "3 \"Cobalt Blue\" is both"},
      {match + "t.csv --require 1,2,3,4,5", "--max-colorants"},
      {match + "t.csv --max-colorants 7", "--max-colorants"},
      {match + "t.csv --limits min.csv", "min.csv, line 2: min is above max"},
      {match + "t.csv --limits sum.csv --require 3,4", "100 percent"},
      {match + "t.csv --limits cost.csv", "line 2, column 2"},
      {match + "t.csv --limits who.csv", "\"Nobody\""},
      {match + "t.csv --min-amount 101", "--min-amount"},
      {match + "t.csv --weights 1,2", "--weights"},
      {match + "t.csv --max-subsets 20852", "20853 subsets are more than --max-subsets 20852"},
      {match + "t.csv --min-opacity 98", "--backings"},
      {match + "t.csv --backings t.csv", "two curves"},
      {match + "t.csv --formulas /nowhere/f.json", "/nowhere/f.json"},
      {"match rules.json t.csv", "no subset is left"},
      {"match metal.json t.csv", "model"},
  });
  EXPECT_EQ(RunJson(match + "lab.csv --top 1")[0]["status"], "ok");
}

}  // namespace
}  // namespace vrx::tool
