// The tool's account of itself: help texts whose examples run as they stand, the manual page, completions, hints.

#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include "tests/testing/tool_process.h"

namespace {

class Help : public vrx::test::ToolProcess {
 protected:
  // The files that examples name, each fit for what it is named for.
  void WriteFiles() {
    const std::filesystem::path examples = VRX_SOURCE_DIR "/examples";
    std::filesystem::copy(examples, folder_ / "examples", std::filesystem::copy_options::recursive);
    const std::pair<const char*, std::vector<const char*>> kCopies[] = {
        {"chart_ohta.csv", {"standard.csv", "master.csv"}},
        {"chart_average.csv",
         {"batch.csv", "lot.csv", "lots.csv", "paper.csv", "readings.csv", "accepted.csv"}},
        {"acrylic_paints.json", {"system.json"}},
        {"acrylic_formulas.json", {"formulas.json"}},
    };
    for (const auto& [from, names] : kCopies) {
      for (const char* name : names) std::filesystem::copy_file(examples / from, folder_ / name);
    }
    // Trials of a standard have ids of their own.
    std::string batch = folder_.Read("batch.csv");
    for (std::size_t at = batch.find("\nP"); at != std::string::npos; at = batch.find("\nP", at))
      batch[at + 1] = 'B';
    folder_.Write("batch.csv", batch);
    folder_.Write("std.csv", Replaced(folder_.Read("standard.csv"), "\nP01,", "\nblue,"));
    folder_.Write("limits.csv", "plus0,minus0,plus1,minus1,plus2,minus2,total\n1,1,1,1,1,1,1.5\n");
    folder_.Write("decisions.csv", "id,L,a,b,verdict\nm,50,0,0,\np,51,0,0,accept\nq,53,0,0,reject\n");
    folder_.Write("whites.csv",
                  "id,X,Y,Z,whiteness,tint\na,84,88,92,60,-0.9\nb,84,87,96,90,-2.9\nc,83,86,101,130,-1.2\n");
    folder_.Write("pairs.csv", "L1,a1,b1,L2,a2,b2\n50,0,0,51,1,-1\n");
    const std::string chart = folder_.Read("lot.csv");
    folder_.Write("targets.csv", chart.substr(0, chart.find('\n', chart.find("\nP03,") + 1) + 1));
    const std::string three = folder_.Read("targets.csv");
    const std::size_t p02 = three.find("\nP02,"), p03 = three.find("\nP03,");
    const std::string header = three.substr(0, three.find('\n'));
    folder_.Write("target.csv", header + three.substr(p02, p03 - p02));
    folder_.Write("trial.csv", header + three.substr(p03));
    const std::string one = three.substr(p02 + 1, p03 - p02);
    folder_.Write("series.csv", "date," + header + "\n2026-01-05," + one + "2026-02-05," + one);
    std::string lamps = "nm,flat\n";
    for (int nm = 380; nm <= 780; nm += 10) lamps += std::to_string(nm) + ",1\n";
    folder_.Write("lamps.csv", lamps);
    folder_.Write("leftovers.csv", "formula,amount," + header + "\n1:90;7:10,20," + three.substr(p02 + 1));
    folder_.Write("leftovers.csv", Replaced(folder_.Read("leftovers.csv"), "\nP03,", "\n1:90;7:10,30,P03,"));
    folder_.Write("recipe.json", R"({"formulas":[{"name":"r","lines":[{"component":1,"amount":1}]}]})");
    folder_.Write("costs.csv", "component,cost\n1,2\n7,11\n");
    folder_.Write("shelf.csv", "component,min,max,cost\n1,0,100,2\n");
    folder_.Write("standards.xml", "<standards><standard name='a'/><standard name='b'/></standards>");
    // Three bands of a grey, each stronger and weaker, and all of them.
    std::string borderline = "id";
    for (int nm = 400; nm <= 700; nm += 10) borderline += "," + std::to_string(nm);
    for (int i = -1; i < 27; ++i) {
      const int steps[] = {i < 0 ? 0 : i % 3 - 1, i < 0 ? 0 : i / 3 % 3 - 1, i < 0 ? 0 : i / 9 - 1};
      const int size = std::abs(steps[0]) + std::abs(steps[1]) + std::abs(steps[2]);
      if (i >= 0 && size != 1 && size != 3) continue;
      borderline += "\nR" + std::to_string(i);
      for (int k = 0; k < 31; ++k) {
        borderline += "," + std::to_string(40.0 + 0.5 * steps[k / 11] / (size == 3 ? 1.7320508 : 1.0));
      }
    }
    folder_.Write("borderline.csv", borderline + "\n");
    const std::size_t trials = borderline.find('\n', borderline.find('\n') + 1);
    folder_.Write("middle.csv", borderline.substr(0, trials) + "\n");
    folder_.Write("around.csv",
                  borderline.substr(0, borderline.find('\n')) + borderline.substr(trials) + "\n");
    std::filesystem::create_directory(folder_ / "incoming");
    folder_.Write("incoming/batch.csv", folder_.Read("batch.csv"));
    hasJobs_ = Run("job create plant.vrxjob").status == 0;
#ifdef VRX_WITH_STORE
    EXPECT_TRUE(hasJobs_);
#endif
    if (!hasJobs_) return;
    for (const char* made : {"job add-standard master.csv --job plant.vrxjob --illuminants D65",
                             "judge --job plant.vrxjob batch.csv --standard-id P01",
                             "job add-recipes system.json leftovers.csv --job plant.vrxjob",
                             "job create history.vrxjob", "job add-standard middle.csv --job history.vrxjob",
                             "judge --job history.vrxjob around.csv --tolerance 9 --standard-id R-1"}) {
      EXPECT_EQ(Run(made).status, 0) << made;
    }
  }

  static std::string Replaced(const std::string& text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.substr(0, at) + to + text.substr(at + from.size());
  }

  // The words of `vrx --help` that name commands, with those within one.
  std::vector<std::string> Commands(const std::string& path = "") {
    const std::string help = Run(path + " --help").out;
    const std::size_t list = help.find(path.empty() ? "\nJudging:\n" : "\nSubcommands:\n");
    std::vector<std::string> commands;
    if (list == std::string::npos) return commands;
    std::istringstream lines(help.substr(help.find('\n', list + 1) + 1));
    for (std::string line; std::getline(lines, line);) {
      if (!line.starts_with("  ") && !path.empty()) break;
      if (!line.starts_with("  ") || line[2] == ' ')
        continue;  // the heading of a group; a description goes on
      commands.push_back(path + (path.empty() ? "" : " ") + line.substr(2, line.find(' ', 2) - 2));
      for (const std::string& nested : Commands(commands.back())) commands.push_back(nested);
    }
    return commands;
  }

  // Runs a line of a shell in which `vrx` is the tool.
  Result RunLine(const std::string& line) {
    folder_.Write("line.sh",
                  "PATH=$(dirname " VRX_TOOL "):$PATH\nexport XDG_CONFIG_HOME=$PWD\n" + line + "\n");
    return RunByShell("bash line.sh");
  }

  bool hasJobs_ = false;  // the tool was built with a database
};

TEST_F(Help, ExamplesRunAsTheyStand) {
  WriteFiles();
  const std::vector<std::string> commands = Commands();
  EXPECT_GT(commands.size(), 17u);
  EXPECT_EQ(RunLine("vrx settings set Diagnostics 'Color Sensor' 0").status, 0);
  int examples = 0;
  for (const std::string& command : commands) {
    const Result told = Run(command + " --help");
    const std::string& help = told.out;
    const std::size_t list = help.find("\nExample");
    ASSERT_NE(list, std::string::npos) << command << " ends with " << told.status << ": " << help << told.err;
    std::istringstream lines(help.substr(help.find('\n', list + 1) + 1));
    std::string example;
    for (std::string line; std::getline(lines, line);) {
      example += line + "\n";
      if (line.ends_with('\\')) continue;
      const Result result = RunLine(example);
#ifdef VRX_WITHOUT_PNG
      if (example.find(".png") != std::string::npos) {
        EXPECT_NE(result.err.find("ends in .svg"), std::string::npos) << example << result.err;
        example.clear();
        continue;
      }
#endif
      if (!hasJobs_ && example.find("vrxjob") != std::string::npos) {
        EXPECT_NE(result.err.find("built without SQLite"), std::string::npos) << example << result.err;
        example.clear();
        continue;
      }
      EXPECT_TRUE(result.status == 0 || (result.status == 1 && example.find("--strict") != std::string::npos))
          << example << result.err;
      examples += line.empty() ? 0 : 1;
      example.clear();
    }
  }
  EXPECT_GT(examples, 40);
}

TEST_F(Help, ManualCompletionsAndHints) {
  const std::string manual = Run("manual").out;
  for (const char* part :
       {".SS vrx settings list\n", "\n.BR \"\\-\\-worst\\-first\"\n", "\n.SH EXIT STATUS\n"}) {
    EXPECT_NE(manual.find(part), std::string::npos) << part;
  }
  const std::pair<const char*, const char*> kCompletions[] = {
      {"'ju'", "judge"},
      {"settings 'g'", "get"},
      {"judge '--wor'", "--worst-first"},
      {"judge a.csv --format 'c'", "csv"},
      {"color --illuminants 'T'", "T84"},
      {"judge ''", ""},
      {"color --illuminant 'T'", "T84"},  // an option's other name
      {"plot 'h'", "histogram"},          // the words of a first argument
  };
  for (const auto& [words, completion] : kCompletions) {
    const Result result = RunLine("source <(vrx manual bash); COMP_WORDS=(vrx " + std::string(words) +
                                  "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _vrx; echo \"${COMPREPLY[*]}\"");
    EXPECT_EQ(result.out, std::string(completion) + "\n") << words << result.err;
  }
  const std::pair<const char*, const char*> kHints[] = {
      {"jugde", "\"jugde\" is not known; did you mean judge?"},
      {"settings gte", "did you mean get?"},
      {"tables --formt csv", "did you mean --format?"},
      {"tables --formt=csv", "did you mean --format?"},
      {"tables --quite-another-thing", "not expected: --quite-another-thing\n"},
  };
  for (const auto& [arguments, hint] : kHints) {
    EXPECT_NE(Run(arguments).err.find(hint), std::string::npos) << Run(arguments).err;
  }
}

}  // namespace
