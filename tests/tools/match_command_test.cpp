// match as a process.

#include <algorithm>
#include <csignal>
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

#include "tests/tools/matching_commands.h"

namespace vrx::tool {
namespace {

// A component is found by its name, also where that is a number.
TEST_F(MatchingCommands, NamesThatAreNumbers) {
  json system = ReadJson(kPaints);
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

// Who weighs two components of one name has to see which is which, in the table and in the report.
TEST_F(MatchingCommands, ComponentsOfOneNameAreToldApart) {
  json system = ReadJson(kPaints);
  const std::string name = system["components"][2]["name"];
  system["components"][8]["name"] = name;
  folder_.Write("twins.json", system.dump());
  folder_.Write("two.json", R"({"formulas":[{"name":"T","lines":[{"component":3,"amount":30},
                                {"component":9,"amount":70}]}]})");
  WriteCurves("twins.json", "two.json", "two.csv");
  ASSERT_EQ(Run("match twins.json two.csv --require 3,9 --max-colorants 2 --top 1 --report r.html"), 0)
      << folder_.Read("err");
  for (const std::string& text : {folder_.Read("out"), folder_.Read("r.html")}) {
    EXPECT_NE(text.find(name + " (id:3)"), std::string::npos) << text;
    EXPECT_NE(text.find(name + " (id:9)"), std::string::npos);
  }
}

// The six formulas of the example, from the curves that they are predicted to give, and a masstone.
TEST_F(MatchingCommands, TheExampleFormulasComeBackFirst) {
  folder_.Write("masstone.json", R"({"formulas":[{"name":"M","lines":[{"component":7,"amount":3}]}]})");
  WriteCurves(kPaints, kFormulas, "curves.csv");
  ASSERT_EQ(Run("match " + kPaints + " curves.csv --sort color --top 2 --format csv --formulas found.json"),
            0)
      << folder_.Read("err");
  EXPECT_TRUE(
      folder_.Read("out").starts_with("target,rank,colorants,formula,dE_D65,dE_A,dE_CWF,metamerism,"
                                      "inconstancy,rms,cost,opacity,folded,traces,status\n"
                                      "Sky blue,1,3,1:94;7:1.5;16:4.5,"));
  const json found = json::parse(folder_.Read("found.json"))["formulas"];
  const json wanted = ReadJson(kFormulas)["formulas"];
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

TEST_F(MatchingCommands, MatchAnswersWhateverIsAsked) {
  json system = ReadJson(kPaints);
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
  const std::string amounts = "<th scope=\"row\"><bdi>Quinacridone Magenta</bdi></th><td class=\"number\">";
  EXPECT_NE(page.find(amounts), std::string::npos);
  EXPECT_EQ(page.find(">cost</th>"), std::string::npos) << "nothing has a price";
  folder_.Write("prices.csv", "component,cost\n1,2\n3,0\n7,\n");
  ASSERT_EQ(Run("match " + kPaints + " far.csv --max-colorants 1 --limits prices.csv --report priced.html"),
            0);
  EXPECT_NE(folder_.Read("priced.html").find(">cost</th>"), std::string::npos);
  const std::string told = folder_.Read("err");
  EXPECT_NE(told.find("no cost is known of "), std::string::npos) << told;
  EXPECT_NE(told.find("Phthalo Blue (Green Shade)"), std::string::npos) << "an empty cell is no cost";
  EXPECT_EQ(told.find("Titanium White"), std::string::npos) << told;
  EXPECT_EQ(told.find("Cobalt Blue"), std::string::npos) << "0 is a cost: " << told;

  // Cards are read as the other curves are.
  folder_.Write("parts.csv", Wide() + FlatRow("black", "0.05") + FlatRow("white", "0.88"));
  folder_.Write("target.csv", Wide() + FlatRow("t", "0.4"));
  folder_.Write("percent.csv", Wide() + FlatRow("t", "40"));
  const std::string cards = " --max-colorants 1 --top 1 --backings ";
  EXPECT_EQ(RunJson("match " + kPaints + " target.csv --fraction" + cards + "parts.csv"),
            RunJson("match " + kPaints + " percent.csv" + cards + "backings.csv"));

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

// What a colour leaves open: the load of a clear resin, traces, ranges; and what was made before.
TEST_F(MatchingCommands, LoadTracesRangesAndFormerRecipes) {
  json system = ReadJson(kPaints);
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
  const json formulas = ReadJson(kFormulas)["formulas"];
  folder_.Write("sky_and_lemon.json", json{{"formulas", {formulas[0], formulas[4]}}}.dump());
  WriteCurves(kPaints, "sky_and_lemon.json", "curves.csv");
  const std::string match = "match plastics.json curves.csv --max-colorants 3 --top 2 --sort color ";
  ASSERT_EQ(Run(match + "--load 3% --format csv"), 0) << folder_.Read("err");
  EXPECT_TRUE(folder_.Read("out").starts_with(
      "target,rank,colorants,formula,dE_D65,dE_A,dE_CWF,metamerism,inconstancy,rms,cost,"
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
  ASSERT_EQ(Run(match + "--load 3% --report trusted.html"), 0);
  EXPECT_NE(folder_.Read("trusted.html").find("as nine of ten predictions are at most "), std::string::npos);
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
    folder_.Write("flop.csv", two + "t,15deg" + flop + "\n");
  }
  folder_.Write("library.csv", library);
  folder_.Write("library_twice.csv", library + library.substr(library.find('\n') + 1));
  folder_.Write("two.csv", two);
  folder_.Write("sky_only.csv", two.substr(0, two.find("\nt,SCI") + 1));
  const json adapted =
      RunJson("match " + kPaints + " curves.csv --top 1 --max-colorants 3 --library library.csv");
  ASSERT_EQ(adapted.size(), 4u);
  EXPECT_EQ(adapted[0]["from"], "");
  EXPECT_EQ(adapted[1]["from"], "A7");
  EXPECT_EQ(adapted[1]["new"], 0);
  EXPECT_EQ(adapted[1]["status"], "ok");
  EXPECT_NE(adapted[1]["formula"], adapted[0]["formula"]);
  EXPECT_EQ(folder_.Read("err").find("--library"), std::string::npos) << "its recipe was of use";

  // An earlier recipe without a row is told, with the reason.
  folder_.Write("little.csv", "component,max\n1,10\n7,10\n16,10\n");
  const std::string ofLibrary = " curves.csv --top 1 --library library.csv --max-colorants ";
  const struct {
    std::string arguments;
    const char* told;
  } passed[] = {
      {kPaints + ofLibrary + "3 --exclude 16",
       "1 of 1 earlier recipes are passed over: 1 with a colorant that is excluded"},
      {kPaints + ofLibrary + "2",
       "1 of 1 earlier recipes are passed over: 1 with more colorants than --max-colorants"},
      {kPaints + ofLibrary + "3 --limits little.csv",
       "for 2 of 2 targets an earlier recipe could not be adapted"},
  };
  for (const auto& row : passed) {
    EXPECT_EQ(RunJson("match " + row.arguments).size(), 2u) << row.told;
    EXPECT_NE(folder_.Read("err").find(row.told), std::string::npos) << row.told << folder_.Read("err");
  }

#ifdef VRX_WITH_STORE
  // A job keeps the recipe by the names of its components, and adapts it as the file does.
  ASSERT_EQ(Run("job create made.vrxjob"), 0);
  ASSERT_EQ(Run("job add-recipes " + kPaints + " library.csv --job made.vrxjob"), 0);
  const std::string fromJob = " curves.csv --top 1 --max-colorants 3 --library made.vrxjob";
  EXPECT_EQ(RunJson("match " + kPaints + fromJob), adapted);
  // Another one of that name is told by its number; a file has none to tell rows of one id by.
  std::string lightest = library;
  lightest.replace(lightest.find("1:94"), 4, "1:95");
  folder_.Write("again.csv", lightest);
  ASSERT_EQ(Run("job create both.vrxjob"), 0);
  ASSERT_EQ(Run("job add-recipes " + kPaints + " library.csv again.csv --job both.vrxjob"), 0);
  std::vector<std::string> from;
  for (const json& row :
       RunJson("match " + kPaints +
               " sky_only.csv --specular included --top 2 --max-colorants 3 --library both.vrxjob"))
    if (row["from"] != "") from.push_back(row["from"]);
  std::ranges::sort(from);
  EXPECT_EQ(from, (std::vector<std::string>{"A7 #1", "A7 #2"}));
  json twins = ReadJson(kPaints);
  twins["components"][2]["name"] = "Cerulean Blue";
  folder_.Write("twins.json", twins.dump());
  ExpectRefusals({
      {"match twins.json" + fromJob, "made.vrxjob: recipe \"A7\": a job knows components by their names"},
      {"job add-recipes twins.json library.csv --job made.vrxjob",
       "library.csv, line 2: a job knows components by their names"},
  });
  json renamed = ReadJson(kPaints);
  for (json& component : renamed["components"]) {
    if (component["name"] == "Cerulean Blue") component["name"] = "Sea Blue";
  }
  folder_.Write("renamed.json", renamed.dump());
  EXPECT_EQ(Run("match renamed.json" + fromJob), 2);
  EXPECT_NE(folder_.Read("err").find("\"Cerulean Blue\""), std::string::npos);
  ASSERT_EQ(Run("job remove-recipe '#1' --job made.vrxjob"), 0);
  EXPECT_EQ(Run("match " + kPaints + fromJob), 2);
  EXPECT_NE(folder_.Read("err").find("has no recipes"), std::string::npos);
#endif

  const json worst = RunJson("match " + kPaints + " two.csv --top 1 --max-colorants 3");
  ASSERT_EQ(worst.size(), 1u) << "one target of two geometries";
  EXPECT_GT(worst[0]["dE_D65"], 0.05);
  EXPECT_LT(worst[0]["dE_D65"], 0.3);

  // The angle of a system that depends on it is the geometry's, and --angle where there is none.
  const std::string sphere = two.substr(0, two.find("\nt,SCI") + 1);
  folder_.Write("flat.csv", std::string(sphere).replace(sphere.find("t,45/0"), 6, "t,15deg"));
  folder_.Write("none.csv", std::string(sphere).replace(sphere.find("t,45/0"), 6, "t,"));
  const std::string by = " --system audi --specular included --max-colorants 1 --top 1";
  const json of15 = RunJson("match " + kPaints + " flat.csv" + by);
  EXPECT_EQ(folder_.Read("err").find("measuring angle"), std::string::npos);
  const json told15 = RunJson("match " + kPaints + " none.csv --angle 15" + by);
  const json usual = RunJson("match " + kPaints + " none.csv" + by);
  EXPECT_NE(folder_.Read("err").find("45 degrees are assumed"), std::string::npos);
  EXPECT_EQ(of15[0]["dE_D65"], told15[0]["dE_D65"]);
  EXPECT_NE(of15[0]["dE_D65"], usual[0]["dE_D65"]);

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
  const json parts = RunJson("match " + kPaints +
                             " none.csv --from-stock stock.csv --parts 100 --top 1 --report new_parts.html");
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
      {match + "--library library_twice.csv",
       "library_twice.csv, line 3: recipe \"A7\" appears twice, first in library_twice.csv, line 2"},
      {match + "--library curves.csv", "\"formula\""},
      {"match " + kPaints + " flop.csv", "flop.csv: target \"t\" changes with the geometry"},
      {"match " + kPaints + " curves.csv --parts 100", "--from-stock"},
      {"match " + kPaints + " curves.csv --from-stock stock.csv --parts 0", "--parts"},
      {match + "--from-stock stock.csv --load 3", "--load"},
      {match + "--from-stock stock.csv --library library.csv", "--library"},
      {"match " + kPaints + " curves.csv --from-stock stock.csv --sort expected", "--sort"},
  });
}

}  // namespace
}  // namespace vrx::tool
