// correct as a process, and what match and correct refuse.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <tuple>
#include <vector>

#include "tests/tools/matching_commands.h"
#include "tools/vrx/recipes/diagnosis.h"

namespace vrx::tool {
namespace {

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

  // One scale is said for the batch and the target: fractions beside percent are told.
  folder_.Write("fractions.csv", Wide() + FlatRow("t", "0.4"));
  for (const std::string files :
       {"--batch batch.csv --target fractions.csv", "--batch fractions.csv --target target.csv"}) {
    Run(correct + files + " --batch-size 90 --trust-formula --percent");
    EXPECT_NE(folder_.Read("err").find("fractions.csv: warning: no value comes to 2 percent"),
              std::string::npos)
        << files << folder_.Read("err");
  }

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
  EXPECT_TRUE(
      folder_.Read("out").starts_with("target,rank,batch,additions,total,dE_before,dE_after_D65,dE_after_A,"
                                      "dE_after_CWF,cost,status,suspected\n"
                                      "c,1,near,14:0.9,"))
      << folder_.Read("out");
  EXPECT_NE(folder_.Read("stock.html").find("curves of the target and of 1 recipes"), std::string::npos);
}

// What hardly is there is no amount to four digits beside one that was weighed; among traces these digits are the amount.
TEST(Suspicion, ReadsAsAmountsAreWeighed) {
  const std::tuple<double, double, const char*> kRows[] = {
      {0.0, 0.045, "0 % instead of 4.5 %"},           {0.00001, 0.045, "0 % instead of 4.5 %"},
      {0.00006, 0.045, "0.01 % instead of 4.5 %"},    {0.00004, 0.00025, "0.004 % instead of 0.025 %"},
      {0.02504, 0.00004, "2.5 % instead of 0.004 %"},
  };
  for (const auto& [found, written, text] : kRows) EXPECT_EQ(vrx::tool::SuspectedText(found, written), text);
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

// A stock as its file states it: what was really in a batch may be something else.
class MisstatedStock : public MatchingCommands {
 protected:
  struct Batch {
    std::string id, written, real;
  };
  void WriteStock(const char* name, const std::vector<Batch>& batches) {
    std::string rows = Wide();
    rows.insert(2, ",formula,amount");
    for (const Batch& batch : batches)
      rows += batch.id + "," + batch.written + ",100" + CellsOf(batch.real) + "\n";
    folder_.Write(name, rows);
  }
  // What a formula is predicted to give, as the cells of a row.
  std::string CellsOf(const std::string& formula) {
    folder_.Write("one.json", json{{"formulas", {{{"name", "x"}, {"lines", LinesOf(formula)}}}}}.dump());
    const json row = RunJson("predict " + kPaints + " one.json")[0];
    std::string cells;
    for (int nm = 360; nm <= 750; nm += 10) cells += "," + row[std::to_string(nm)].dump();
    return cells;
  }
  json From(const std::string& stock, const std::string& options) {
    return RunJson("match " + kPaints + " target.csv --from-stock " + stock + " " + options);
  }
};

// A batch from which something was left out starts from what its curve shows, as in correct; one with the curve of another
// batch is left out; both are told.
TEST_F(MisstatedStock, IsTakenForWhatItsCurvesSay) {
  const std::string sky = "1:94;7:1.5;16:4.5", olive = "17:40;12:38;4:18;2:4", lilac = "1:96;14:1.2;5:2.8";
  folder_.Write("target.csv", Wide() + "t" + CellsOf("1:93;7:2;16:5") + "\n");
  WriteStock(
      "stock.csv",
      {{"less", sky, "1:94;7:1.5"}, {"olive", olive, lilac}, {"grey", "1:97.5;2:2.5", "1:97.5;2:2.5"}});
  const std::string none = "Cerulean Blue: 0 % instead of 4.5 %";
  const json found = From("stock.csv", "--max-colorants 2 --top 20");
  EXPECT_EQ(found[0]["batch"], "less");
  EXPECT_TRUE(found[0]["suspected"].get<std::string>().starts_with(none)) << found[0];
  for (const json& row : found) EXPECT_NE(row["batch"], "olive") << row;
  const std::string told = folder_.Read("err");
  for (const char* words : {"vrx: stock.csv: batch \"less\" does not seem to match its formula; suspected: "
                            "Cerulean Blue: 0",
                            "vrx: stock.csv: batch \"olive\" does not match its formula: its curve is 38.",
                            "vrx: stock.csv: of 3 batches 1 is taken for what the curve says and 1 is left "
                            "out; use --trust-formula"})
    EXPECT_NE(told.find(words), std::string::npos) << words << "\n" << told;
  EXPECT_EQ(told.find("\"grey\""), std::string::npos) << told;

  // The same additions as correct has for the batch alone, with the same reserve.
  folder_.Write("sky.json", json{{"formulas", {{{"name", "x"}, {"lines", LinesOf(sky)}}}}}.dump());
  folder_.Write("less.csv", Wide() + "b" + CellsOf("1:94;7:1.5") + "\n");
  WriteStock("less_only.csv", {{"less", sky, "1:94;7:1.5"}});
  for (const char* options : {"", " --margin 0%", " --trust-formula"}) {
    const std::string both = std::string(" --max-colorants 2 --top 3 --max-addition 50%") + options;
    const json alone = RunJson("correct " + kPaints +
                               " --formula sky.json --batch less.csv --target target.csv --allow-new"
                               " --batch-size 100" +
                               both);
    const json ofStock = From("less_only.csv", both);
    ASSERT_EQ(alone.size(), ofStock.size());
    for (std::size_t i = 0; i < alone.size(); ++i) {
      for (const char* column : {"additions", "dE_after_D65", "status", "suspected"})
        EXPECT_EQ(alone[i][column], ofStock[i][column]) << options << i << column;
    }
  }

  const json parts = From("stock.csv", "--parts 100 --max-colorants 2 --top 1");
  EXPECT_TRUE(parts[0]["leftovers"].get<std::string>().starts_with("less:")) << parts;
  EXPECT_TRUE(parts[0]["suspected"].get<std::string>().starts_with("less (" + none)) << parts;
  EXPECT_EQ(From("stock.csv", "--parts 100 --max-colorants 2 --top 1 --trust-formula")[0]["suspected"], "");

  ASSERT_EQ(
      Run("match " + kPaints + " target.csv --max-colorants 1 --from-stock stock.csv --report stock.html"),
      0);
  const std::string page = folder_.Read("stock.html");
  EXPECT_NE(page.find(">suspected</th>"), std::string::npos);
  EXPECT_NE(page.find("of one batch. It is left out"), std::string::npos) << "a report says what is missing";
  const json trusting = From("stock.csv", "--max-colorants 1 --top 20 --trust-formula");
  EXPECT_EQ(folder_.Read("err"), "");
  for (const json& row : trusting) EXPECT_EQ(row["suspected"], "");

  // Nothing but such batches is refused; a single one is corrected, but is never ok.
  WriteStock("other.csv", {{"olive", olive, lilac}});
  WriteStock("dark.csv", {{"sky", sky, sky}});
  json dyes = ReadJson(kPaints);
  dyes["model"] = "textiles";
  folder_.Write("dyes.json", dyes.dump());
  folder_.Write("dark.csv", folder_.Read("dark.csv") + FlatRow("night," + sky + ",100", "3"));
  const std::string from = "match " + kPaints + " target.csv --report new.html --from-stock ";
  ExpectRefusals({
      {from + "other.csv", "other.csv: of 1 batches 1 is left out; use --trust-formula"},
      {from + "other.csv --parts 9", "other.csv: of 1 batches 1 is left out; use --trust-formula"},
      {from + "dark.csv --parts 9", "dark.csv: batch \"night\" is darker than the surface alone"},
      {from + "stock.csv --parts 9 --margin 9%", "--margin excludes --parts"},
      {from + "stock.csv --margin 100%", "--margin"},
      {"match dyes.json target.csv --from-stock stock.csv --parts 9",
       "dyes.json: \"model\": --parts is for models of two constants"},
      {"match " + kPaints + " target.csv --trust-formula",
       "--trust-formula requires --from-stock or --library"},
  });
  folder_.Write("olive.json", json{{"formulas", {{{"name", "x"}, {"lines", LinesOf(olive)}}}}}.dump());
  folder_.Write("lilac.csv", Wide() + "b" + CellsOf(lilac) + "\n");
  const json alone = RunJson("correct " + kPaints +
                             " --formula olive.json --batch lilac.csv --target lilac.csv --batch-size 9");
  EXPECT_LT(alone[0]["dE_before"], 0.01);
  EXPECT_EQ(alone[0]["status"], "curve not explained");
}

// An earlier recipe that contradicts its own curve is not adapted; one with a paint that was two fifths stronger is.
TEST_F(MisstatedStock, IsNoEarlierRecipe) {
  const std::string sky = "1:94;7:1.5;16:4.5", grey = "1:96;2:4", lilac = "1:96;14:1.2;5:2.8";
  folder_.Write("target.csv", Wide() + "t" + CellsOf("1:93;7:2;16:5") + "\n");
  std::string library = Wide();
  library.insert(2, ",formula");
  const struct {
    const char* id;
    std::string formula, curve;
  } rows[] = {{"sky", sky, sky},
              {"strong", grey, "1:96;2:5.7"},
              {"doubled", grey, "1:96;2:8"},
              {"less", sky, "1:94;16:4.5"},
              {"swapped", sky, lilac},
              {"slip", sky, "1:94;7:15;16:4.5"}};
  for (const auto& row : rows)
    library.append(row.id).append(",").append(row.formula).append(CellsOf(row.curve)).append("\n");
  folder_.Write("library.csv", library);
  const auto adaptedFrom = [&](const std::string& options) {
    std::vector<std::string> ids;
    for (const json& row : RunJson("match " + kPaints +
                                   " target.csv --max-colorants 4 --top 6 --library library.csv" + options)) {
      if (row["from"] != "") ids.push_back(row["from"]);
    }
    std::ranges::sort(ids);
    return ids;
  };
  EXPECT_EQ(adaptedFrom(" --report library.html"), (std::vector<std::string>{"sky", "strong"}));
  for (const char* words :
       {"library.csv: recipe \"less\" does not seem to match its formula; suspected: Phthalo Blue (Green "
        "Shade): 0",
        "library.csv: recipe \"swapped\" does not", "library.csv: recipe \"slip\" does not",
        "library.csv: of 6 earlier recipes 4 are left out; use --trust-formula"})
    EXPECT_NE(folder_.Read("err").find(words), std::string::npos) << words << "\n" << folder_.Read("err");
  EXPECT_NE(folder_.Read("library.html").find("recipe &quot;less&quot;"), std::string::npos);
  EXPECT_EQ(adaptedFrom(" --trust-formula"),
            (std::vector<std::string>{"doubled", "less", "sky", "slip", "strong", "swapped"}));
}

TEST_F(LeftOut, IsFoundAndCorrected) {
  // One of each formula under sanitizers, where a search takes a second.
#ifdef VRX_SANITIZED
  constexpr std::size_t kStep = 4;
#else
  constexpr std::size_t kStep = 1;
#endif
  const json formulas = ReadJson(kFormulas)["formulas"];
  for (const json& written : formulas) {
    const std::size_t lines = written["lines"].size();
    for (std::size_t left = 0; lines > 2 && left < lines; left += kStep) Correct(written, left);
  }
  EXPECT_EQ(cases_, kStep == 1 ? 16 : 5);
  EXPECT_LE(misses_, 2) << missed_;
}

// Whatever is wrong is told with file and field, and nothing is written.
TEST_F(MatchingCommands, MatchAndCorrectRefuseWhatTheyCannotUse) {
  const std::string good = FlatRow("t", "40"), t = Wide() + good;
  folder_.Write("t.csv", t);
  folder_.Write("dark.csv", t + FlatRow("d", "3"));
  folder_.Write("d.csv", Wide() + FlatRow("d", "3"));
  folder_.Write("turned.csv", Wide() + FlatRow("black", "88") + FlatRow("white", "5"));
  folder_.Write("same.csv", Wide() + FlatRow("black", "88") + FlatRow("white", "88"));
  folder_.Write("hole.csv", Wide() + FlatRow("t", "40", true));
  folder_.Write("lab.csv", "id,L,a,b\nt,50,10,10\n");
  folder_.Write("bright.csv", "id,L,a,b\nt,150,10,10\n");
  folder_.Write("xyz.csv", "id,X,Y,Z\nt,50,10,10\n");
  folder_.Write("min.csv", "component,min,max\n3,60,50\n");
  folder_.Write("low.csv", "component,max\n3,1\n");
  folder_.Write("sum.csv", "component,min\n3,60\n4,60\n");
  folder_.Write("cost.csv", "component,cost\n3,-1\n");
  folder_.Write("cost_twice.csv", "component,cost\nCobalt Blue,1\n4,1\n3,2\n");
  folder_.Write("cost_of_3.csv", "component,cost\n3,1\n");
  folder_.Write("cost_by_name.csv", "component,cost\nCobalt Blue,1\n");
  json twins = ReadJson(kPaints);
  for (const std::size_t place : {8u, 11u}) twins["components"][place]["name"] = "COBALT blue";
  folder_.Write("twins.json", twins.dump());
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
  folder_.Write("same.json", R"({"formulas":[{"name":"x","lines":[{"component":1,"amount":3}]},
                                             {"name":"y","lines":[{"component":1,"amount":3}]},
                                             {"name":"x","lines":[{"component":7,"amount":3}]}]})");
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
  stock("stock_twin.csv", "s,1:95;Cobalt Blue:5,90", "40");
  folder_.Write("stock_same.csv", header + FlatRow("s,1:95;7:5,90", "40") + FlatRow("r,1:95;7:5,90", "40") +
                                      FlatRow("s,1:95;9:5,10", "50"));
  stock("stock_dark.csv", "s,1:95;7:5,90", "3");
  stock("stock_none.csv", "s,1:95;7:5,0", "40");

  const std::string match = "match " + kPaints + " --formulas new.json --report new.html ";
  const std::string from = "match " + kPaints + " t.csv --report new.html --from-stock ";
  const std::string correct = "correct " + kPaints + " --batch-size 9 --formula ";
  ExpectRefusals({
      {"match " + kPaints + " bright.csv --formulas new.json",
       "bright.csv, line 2: L* is not within 0 to 110"},
      {match + "none.csv", "none.csv"},
      {match + "hole.csv", "hole.csv, line 2, column 16 (500)"},
      {match + "dark.csv",
       "dark.csv: target \"d\" is darker than the surface alone; use --specular excluded"},
      {match + "lab.csv --objective spectral", "lab.csv: target \"t\": this --objective needs a curve"},
      {match + "xyz.csv", "xyz.csv, line 2: targets are curves or L*, a*, b*"},
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
      {match + "t.csv --limits cost_twice.csv",
       "cost_twice.csv, line 4: component 3 appears twice, first in line 2"},
      {match + "t.csv --sort cost", "--sort cost: no component has a cost"},
      {match + "t.csv --sort cost --limits cost_of_3.csv --exclude 3",
       "--sort cost: no component has a cost"},
      {match + "t.csv --min-amount 101", "--min-amount"},
      {match + "t.csv --weights 1,2", "--weights"},
      {match + "t.csv --resolution 101", "--resolution"},
      {match + "t.csv --max-subsets 20852",
       "--max-subsets: there are 20853 subsets, more than 20852: exclude components"},
      {match + "t.csv --min-opacity 98", "--backings"},
      {match + "t.csv --backings t.csv", "t.csv: expected two curves"},
      {match + "t.csv --backings turned.csv",
       "turned.csv: the black backing is not darker than the white one"},
      {match + "t.csv --backings same.csv", "same.csv: the black backing is not darker than the white one"},
      {match + "t.csv --max-addition 9%", "--from-stock"},
      {"match " + kPaints + " t.csv --formulas /nowhere/f.json", "/nowhere/f.json"},
      {"match " + kPaints + " t.csv --formulas t.csv", "t.csv: this file is read as input"},
      {"match two.json t.csv --require 1,2", "two.json: \"rules\" forbid every subset"},
      {"match two.json t.csv --require c",
       "two.json: component 3 \"c\" cannot be in a recipe: it has no levels"},
      {"match twins.json t.csv --exclude \"Cobalt Blue\"",
       "--exclude: \"Cobalt Blue\" is the name of components 3, 9 and 12; write 3, 9 or 12"},
      {"match twins.json t.csv --limits cost_by_name.csv",
       "cost_by_name.csv, line 2, column 1 (component): \"Cobalt Blue\" is the name of components 3, 9"},
      {"match twins.json t.csv --from-stock stock_twin.csv",
       "stock_twin.csv, line 2, column 2 (formula): \"Cobalt Blue\" is the name of components 3, 9"},
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
      {from + "stock_same.csv",
       "stock_same.csv, line 4: batch \"s\" appears twice, first in stock_same.csv, line 2"},
      {from + "stock.csv --sort metamerism", "--sort"},
      {from + "stock.csv --sort cost", "--sort cost: no component has a cost"},
      {from + "stock.csv --parts 9 --sort fewest", "--sort excludes --parts"},
      {from + "stock.csv --parts 9 --max-addition 9%", "--max-addition excludes --parts"},
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
      {correct + "same.json --name x --batch t.csv --target t.csv",
       "same.json: --name: formulas[0] and formulas[2] are both called \"x\""},
      {correct + "f.json --batch t.csv --target t.csv --aim cheapest",
       "--aim cheapest: no component has a cost"},
      {correct + "f.json --batch hole.csv --target t.csv", "hole.csv, line 2, column 16 (500)"},
      {correct + "f.json --batch d.csv --target t.csv", "d.csv is darker than the surface alone"},
      {correct + "f.json --batch t.csv --target d.csv", "d.csv is darker than the surface alone"},
      {correct + "f.json --batch t.csv --target dark.csv", "dark.csv: expected exactly one curve"},
      {correct + "f.json --batch t.csv --target xyz.csv",
       "xyz.csv, line 2: targets are curves or L*, a*, b*"},
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
