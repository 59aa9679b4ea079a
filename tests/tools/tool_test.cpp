// The tool as a user meets it: a process with arguments, files and pipes, an exit status and two streams.

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <pty.h>
#include <regex>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/weight_tables.h>

#include "tests/testing/rows.h"
#include "tests/testing/tool_process.h"
#include "tools/vrx/base/text.h"

namespace {

using nlohmann::json;
using vrx::test::Lines;
using vrx::test::RowMatches;

class Tool : public vrx::test::ToolProcess {
 protected:
  void Write(const std::string& name, const std::string& content) { folder_.Write(name, content); }
};

constexpr const char* kHeader = "id,400,500,600,700\n";  // refused: 100 nm apart

constexpr const char* kCharts =
    VRX_SOURCE_DIR "/examples/chart_ohta.csv " VRX_SOURCE_DIR "/examples/chart_average.csv";

TEST_F(Tool, RefusesWithStatusTwoAndAReason) {
  Write("good.csv", Header() + Flat("A", "50"));
  Write("late.csv", Header() + Flat("A", "50") + "B,1\n");
  Write("bad.csv", std::string(kHeader) + "A,1,2,3,4\n");
  Write("empty.csv", "");
  Write("header.csv", Header());
  Write("values.csv", "X,Y,Z\n");
  Write("unit.csv", "X1,Y1,Z1,X2,Y2,Z2\n.4,.42,.44,.45,.42,.44\n");
  Write("percent.csv", "X1,Y1,Z1,X2,Y2,Z2\n40,42,44,45,42,44\n");
  Write("lab.csv", "L,a,b\n50,1,nan\n");
  Write("twice.csv", Header("id,geometry") + Flat("A,SCI", "50") + Flat("A,12", "51"));
  Write("sheet.xlsx", std::string("PK\x03\x04\x14\0", 6));
  Write("wide.csv", std::string("L\0001\0,\0", 6));
  for (const char* name : {"link.html", "link.svg"}) {
    std::filesystem::create_symlink("good.csv", folder_ / name);
  }
  Write("limits.svg", "");
  Write("dark.csv", Header() + Flat("A", "0.5") + Flat("B", "1.03"));
  Write("twins.csv", Header() + Flat("A", "50") + Flat("A", "52"));
  Write("limits.csv",
        "standard,plus0,minus0,plus1,minus1,plus2,minus2,total\n,1,1,1,1,1,1,1\n,2,2,2,2,2,2,2\n");
  Write("crossed.csv", "plus0,minus0,plus1,minus1,plus2,minus2,total\n1,-2,1,1,1,1,1\n");
  ExpectRefused({
      {"", "subcommand is required"},
      {"nonsense", "\"nonsense\" is not known"},
      {"judge good.csv", "TRIALS is required"},
      {"judge none.csv good.csv", "none.csv: No such file"},
      {"judge . good.csv", ".: is a directory"},
      {"color sheet.xlsx", "sheet.xlsx: is not a text file; save the sheet of a workbook as CSV"},
      {"delta wide.csv", "wide.csv: is not a text file, or is UTF-16 without a byte-order mark"},
      {"judge good.csv link.html --report link.html", "link.html: this file is read as input"},
      {"swatch good.csv link.svg --output link.svg", "link.svg: this file is read as input"},
      {"plot plane link.svg good.csv --output link.svg", "link.svg: this file is read as input"},
      {"calibrate good.csv --white A --output good.csv", "good.csv: this file is read as input"},
      {"judge good.csv good.csv --report link.html --report-logo good.csv",
       "link.html: this file is read as input"},
      {"judge good.csv good.csv --report link.html --illuminant-file good.csv",
       "link.html: this file is read as input"},
      {"swatch late.csv --tolerances limits.svg --output ./limits.svg",
       "./limits.svg: this file is read as input"},
      {"plot plane late.csv late.csv --ellipses limits.svg --output limits.svg",
       "limits.svg: this file is read as input"},
      {"calibrate late.csv --white A --illuminant-file good.csv --output good.csv",
       "good.csv: this file is read as input"},
      {"match a b --formulas new.html --report ./new.html",
       "./new.html: two results cannot go into one file"},
      {"color dark.csv", "dark.csv: all values are below 2, the largest is 1.03"},
      {"judge dark.csv good.csv --format csv", "choose with --fraction or --percent"},
      {"delta unit.csv", "unit.csv: all of X, Y, Z are below 2, the largest is 0.45"},
      {"delta - < unit.csv", "choose with --fraction or --percent"},
      {"delta percent.csv --fraction", "percent.csv, line 2, column 1 (X1): the value is above 2"},
      {"color - < dark.csv", "standard input (CSV): all values are below 2"},
      {"color /proc/self/mem", "/proc/self/mem: cannot be read: Input/output error"},
      {"judge good.csv empty.csv", "empty.csv: the file is empty"},
      {"judge header.csv good.csv", "header.csv: there is no row"},
      {"judge good.csv header.csv --strict", "header.csv: there is no row"},
      {"color values.csv", "values.csv: there is no row"},
      {"judge good.csv bad.csv", "wavelengths 100 nm apart"},
      {"judge good.csv late.csv", "late.csv, line 3: the row is short: it has 2 of 32 columns"},
      {"judge good.csv late.csv --format json", "late.csv, line 3"},
      {"judge - - < good.csv", "cannot both"},
      {"judge good.csv good.csv --standard-id Q", "there is no standard \"Q\""},
      {"judge good.csv good.csv --standard-id ''", "--standard-id: the text is empty"},
      {"judge twice.csv good.csv", "twice.csv, line 3: standard \"A\" has a row of this geometry"},
      {"judge twins.csv good.csv --pairs", "twins.csv, line 3: standard \"A\" appears twice"},
      {"judge twins.csv good.csv --standard-id A", "twins.csv, line 3: standard \"A\" has a row already"},
      {"judge good.csv good.csv --pairs --standard-id A", "excludes"},
      {"judge good.csv good.csv --illuminants D65,D56", "unknown illuminant \"D56\"; did you mean D65?"},
      {"judge good.csv good.csv --illuminants D65,2", "D65 is named twice"},
      {"judge good.csv good.csv --illuminants " + std::to_string(vrx::kBuiltInIlluminants),
       "unknown illuminant"},
      {"judge good.csv good.csv --observer 1", "unknown observer"},
      {"judge good.csv good.csv --system " + std::to_string(vrx::kDifferenceSystems),
       "unknown difference system \"" + std::to_string(vrx::kDifferenceSystems) + "\"; see --help"},
      {"judge good.csv good.csv --system cie95", "did you mean cie94?"},
      {"judge good.csv good.csv --system fmc2", "--tolerance: the default of 1.5 is a dE, which fmc2 is not"},
      {"judge good.csv good.csv --system lab --parameters 1", "lab has 0 parameters"},
      {"judge good.csv good.csv --parameters 0,1", "above 0"},
      {"judge good.csv good.csv --parameters ''", "--parameters: the text is empty"},
      {"color good.csv --illuminant-file ''", "--illuminant-file: the text is empty"},
      {"judge good.csv good.csv --tolerance 1,2", "one number or the seven"},
      {"judge good.csv good.csv --tolerance nan", "not a number"},
      {"judge good.csv good.csv --tolerances limits.csv", "limits.csv, line 3: an earlier row"},
      {"judge good.csv good.csv --tolerances crossed.csv", "crossed.csv, line 2: the plus and minus limits"},
      {"judge good.csv good.csv --warning 1.1", "--warning"},
      {"judge good.csv good.csv --format xml", "\"xml\" is not one of table, csv and json"},
      {"settings set S N 2147483648", "--text"},
      {"color lab.csv", "lab.csv, line 2, column 3 (b): \"nan\""},
      {"color limits.csv", "neither wavelengths nor X,Y,Z nor L,a,b"},
      {"delta lab.csv", "column 1 (L)"},
      {"tables D65 5", "unknown observer"},
  });
}

TEST_F(Tool, JudgesTheExampleCharts) {
  const Result table = Run(std::string("judge ") + kCharts + " --pairs");
  EXPECT_EQ(table.status, 0);
  EXPECT_EQ(Lines(table.out).size(), 2u + 1 + 72 + 1 + 4) << table.out;
  EXPECT_EQ(Run(std::string("judge ") + kCharts + " --pairs --strict").status, 1);
  EXPECT_EQ(Run(std::string("judge ") + kCharts + " --pairs --strict --tolerance 30").status, 0);

  // csv and json say the same, and the rows agree with themselves.
  const json objects = RunJson(std::string("judge ") + kCharts + " --pairs");
  const auto rows = Lines(Run(std::string("judge ") + kCharts + " --pairs --format csv").out);
  ASSERT_EQ(rows.size(), 73u);
  EXPECT_EQ(rows[0],
            "standard,trial,geometry,illuminant,observer,dL,da,db,dLcmc,dCcmc,dHcmc,dEcmc,word0,word1,word2,"
            "box,total,"
            "verdict,reason,excess");
  for (std::size_t i = 0; i < 72; ++i) {
    const json& object = objects.at(i);
    std::istringstream row(rows[i + 1]);
    std::vector<std::string> fields;
    for (std::string field; std::getline(row, field, ',');) fields.push_back(field);
    ASSERT_EQ(fields.size(), object["reason"].is_null() ? 19u : 20u);  // no field behind the last comma
    EXPECT_EQ(fields[0], object["standard"]);
    EXPECT_EQ(fields[3], object["illuminant"]);
    for (std::size_t k = 0; k < 7; ++k) EXPECT_EQ(std::stod(fields[5 + k]), object["elements"][k]);
    for (std::size_t k = 0; k < 3; ++k) EXPECT_EQ(fields[12 + k], object["words"][k]);
    EXPECT_EQ(fields[17], object["verdict"] == 2 ? "pass" : object["verdict"] == 1 ? "warning" : "fail");
    EXPECT_EQ(object["reason"].is_null() ? "" : object["reason"]["limit"], fields[18]);
    EXPECT_EQ(object["verdict"], std::min(object["box"].get<int>(), object["total"].get<int>()));
    EXPECT_TRUE(object["geometry"].is_null());
  }
}

TEST_F(Tool, GreyStepsUnderEachVerdict) {
  // On the grey axis dE*ab is dL*, the same under every illuminant: L* = 116 cbrt(Y / Yn) - 16.
  Write("standard.csv", Header() + Flat("S", "20"));
  Write("trials.csv",
        Header() + Flat("same", "20") + Flat("near", "20.5") + Flat("between", "21") + Flat("far", "22"));
  const json objects =
      RunJson("judge standard.csv trials.csv --system lab --illuminants 'D65, A' --tolerance 1.2");
  const int kVerdicts[] = {2, 2, 1, 0};
  const double kReflectances[] = {20, 20.5, 21, 22};
  ASSERT_EQ(objects.size(), 8u);
  for (std::size_t i = 0; i < 8; ++i) {
    const double dL = 116 * (std::cbrt(kReflectances[i / 2] / 100) - std::cbrt(0.2));
    EXPECT_NEAR(objects[i]["elements"][6], dL, 0.002) << i;
    EXPECT_EQ(objects[i]["verdict"], kVerdicts[i / 2]) << i;
    EXPECT_EQ(objects[i]["words"][0], i / 2 == 0 ? " " : "Lighter");
  }
}

TEST_F(Tool, PairsFollowTheIdsWhateverTheOrder) {
  std::string standards = Header(), trials = Header(), reversed;
  for (int i = 0; i < 300; ++i) {
    const std::string id = std::string("P").append(std::to_string(i));
    standards += Flat(id, std::to_string(10 + i % 70));
    trials += Flat(id, std::to_string(10 + i % 70) + ".1");
    reversed = Flat(id, std::to_string(10 + i % 70) + ".1") + reversed;
  }
  Write("standards.csv", standards);
  Write("trials.csv", trials);
  Write("reversed.csv", Header() + reversed);
  auto inOrder = Lines(Run("judge standards.csv trials.csv --pairs --format csv").out);
  auto backwards = Lines(Run("judge standards.csv reversed.csv --pairs --format csv").out);
  ASSERT_EQ(inOrder.size(), 901u);
  std::ranges::sort(inOrder);
  std::ranges::sort(backwards);
  EXPECT_EQ(inOrder, backwards);

  Write("stranger.csv", Header() + Flat("P9", "19.1") + Flat("Q", "1"));
  EXPECT_NE(Run("judge standards.csv stranger.csv --pairs").err.find("there is no standard \"Q\""),
            std::string::npos);
  EXPECT_NE(Run("judge - reversed.csv --pairs < standards.csv").err.find("in a pipe"), std::string::npos);
  Write("twice.csv", standards + Flat("P9", "5"));
  EXPECT_NE(Run("judge twice.csv stranger.csv --pairs").err.find("standard \"P9\" appears twice"),
            std::string::npos);
}

TEST_F(Tool, GeometriesMeetTheirOwn) {
  Write("standard.csv",
        Header("id,geometry") + Flat("S,SCI", "20") + Flat("S,SCE", "16") + Flat("T,SCI", "90"));
  Write("trials.csv", Header("id,geometry") + Flat("S,13", "16") + Flat("S,SCI", "20"));
  for (const char* options : {"", " --pairs", " --standard-id S"}) {
    const json objects = RunJson(std::string("judge standard.csv trials.csv --illuminants D65") + options);
    ASSERT_EQ(objects.size(), 2u);
    EXPECT_EQ(objects[0]["geometry"], "SCE");
    EXPECT_EQ(objects[1]["geometry"], "SCI");
    for (const json& object : objects) EXPECT_EQ(object["elements"][6], 0.0) << options;
  }
  Write("other.csv", Header("id,geometry") + Flat("S,15deg", "16"));
  EXPECT_EQ(Run("judge standard.csv other.csv").status, 2);
}

TEST_F(Tool, TolerancesOfAFile) {
  Write("standard.csv", Header() + Flat("S", "20"));
  Write("trial.csv", Header("id,geometry") + Flat("a,SCI", "21") + Flat("b,SCE", "21"));  // dL* = 1.05
  // The standard goes before the geometry, the geometry before the illuminant.
  Write("limits.csv",
        "standard;geometry;illuminant;plus0;minus0;plus1;minus1;plus2;minus2;total\n"
        ";;;0,5;9;9;9;9;9;9\n;;A;9;9;9;9;9;9;9\nS;;D65;9;9;9;9;9;9;1\n;SCE;;0;9;9;9;9;9;9\n");
  const json objects =
      RunJson("judge standard.csv trial.csv --system lab --tolerances limits.csv --warning 1");
  const int kBoxes[] = {2, 2, 0, 2, 0, 0};  // a: D65, A, CWF; b
  const int kTotals[] = {0, 2, 2, 0, 2, 2};
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(objects[i]["box"], kBoxes[i]) << i;
    EXPECT_EQ(objects[i]["total"], kTotals[i]) << i;
  }
}

TEST_F(Tool, ColorsOfKnownColours) {
  // The perfect white has the sums of the weights; L*a*b* of the white point is 100, 0, 0.
  Write("white.csv", Header() + Flat("W", "100"));
  const double* const table = vrx::WeightTable(vrx::vrxIllumD65, vrx::kObserver2);
  double sums[3] = {};
  for (int k = 0; k < 120; ++k) sums[k / 40] += table[k];
  const json white = RunJson("color white.csv --illuminants D65 --observer 2")[0];
  EXPECT_TRUE(RowMatches("white", std::vector<double>{white["X"], white["Y"], white["Z"]}, sums, 1e-9));
  EXPECT_EQ(white["observer"], 2);

  Write("xyz.csv", "id,X,Y,Z\nn,95.047,100,108.883\n");
  const json point = RunJson("color xyz.csv --illuminants 2 --observer 2")[0];
  const double kPoint[] = {100, 0, 0, 0};
  EXPECT_TRUE(RowMatches("white point", std::vector<double>{point["L"], point["a"], point["b"], point["C"]},
                         kPoint, 1e-9));

  const auto header = Lines(Run("color xyz.csv --illuminants D65 --format csv").out).front();
  EXPECT_EQ(header, "id,illuminant,observer,X,Y,Z,x,y,L,a,b,C,h,Lu,u,v,Cuv,huv,LH,aH,bH");
  Write("lab.csv", "L;a;b\n50,5;20;-30,25\n");
  const json back = RunJson("color lab.csv --illuminants CWF")[0];
  const double kLab[] = {50.5, 20, -30.25};
  EXPECT_TRUE(RowMatches("L*a*b* as given", std::vector<double>{back["L"], back["a"], back["b"]}, kLab, 0.0));
  EXPECT_EQ(RunJson("color white.csv").size(), 3u);
}

TEST_F(Tool, DifferencesInEverySystem) {
  // Pair 1 of Sharma, Wu and Dalal: dE00 = 2.0425.
  Write("lab.csv", "id,L1,a1,b1,L2,a2,b2\np,50,2.6772,-79.7751,50,0,-82.7485\n");
  const json sharma = RunJson("delta lab.csv --system cie2000")[0];
  EXPECT_NEAR(sharma["elements"][6], 2.0425, 5e-5);
  EXPECT_EQ(sharma["columns"]["\xCE\x94"
                              "E00"],
            sharma["elements"][6]);
  EXPECT_EQ(sharma["system"], "cie2000");

  // DIN99 of two greys: dL99 = 105.51 ln((1 + 0.0158 L2) / (1 + 0.0158 L1)).
  Write("grey.csv", "L1,a1,b1,L2,a2,b2\n50,0,0,60,0,0\n");
  EXPECT_NEAR(RunJson("delta grey.csv --system din99")[0]["elements"][6], 105.51 * std::log(1.948 / 1.79),
              1e-9);

  // The same colours as tristimulus values give the same difference, in every system.
  Write("colors.csv", "L,a,b\n50,20,-30\n52,18,-33\n");
  Write("pair.csv", "L1,a1,b1,L2,a2,b2,angle\n50,20,-30,52,18,-33,25\n");
  const json colors = RunJson("color colors.csv --illuminants D65");
  std::string xyz = "X1,Y1,Z1,X2,Y2,Z2,angle\n";
  for (const json& color : colors) {
    for (const char* component : {"X", "Y", "Z"}) xyz += color[component].dump() + ",";
  }
  Write("xyz.csv", xyz + "25\n");
  for (int system = 0; system < vrx::kDifferenceSystems; ++system) {
    const std::string options = std::string(" --system ").append(std::to_string(system));
    const auto elements = [&](const std::string& file) {
      const json rows = RunJson("delta " + file + options);
      std::vector<double> values;
      for (const json& element : rows[0]["elements"]) {
        values.push_back(element.is_null() ? -1.0 : element.get<double>());
      }
      return values;
    };
    const std::vector<double> fromLab = elements("pair.csv"), fromXyz = elements("xyz.csv");
    EXPECT_TRUE(RowMatches(options, fromXyz, fromLab, 1e-9));
    EXPECT_GT(fromLab[6], 0.1) << system;
  }
}

TEST_F(Tool, TablesAndVersion) {
  const Result version = RunByShell("VRX_INSTRUCTION_SET=sse2 " VRX_TOOL " --version");
  EXPECT_TRUE(std::regex_search(
      version.out,
      std::regex(
          "^vrx [0-9.]+\ncompiled by \\S+ [0-9.]+ for \\S+, C\\+\\+ library \\S+ [0-9.]+\n"
          "instruction sets: (sse2|base)( \\(plain numbers\\))?( avx2)?( avx512)?; in use: (sse2|base)\n$")))
      << version.out;
  const json list = RunJson("tables");
  ASSERT_EQ(list.size(), static_cast<std::size_t>(vrx::kBuiltInIlluminants));
  EXPECT_EQ(list[0]["code"], "A");
  EXPECT_EQ(list.back()["code"], "U50");
  const json table = RunJson("tables d65 2");
  EXPECT_EQ(table.size(), 41u);
  EXPECT_EQ(table[19]["Y"], 9.752);
  EXPECT_EQ(table[40]["X"], 95.047);
}

TEST_F(Tool, ResultsThatCannotBeWrittenAreAnError) {
  Write("good.csv", Header() + Flat("A", "50"));
  for (const char* command : {"tables", "judge good.csv good.csv", "--help"}) {
    EXPECT_EQ(Run(std::string(command) + " > /dev/full").status, 2) << command;
  }
  std::string many = Header();
  for (int i = 0; i < 10'000; ++i) many += Flat("T", "50");
  Write("many.csv", many);
  EXPECT_EQ(Run("judge good.csv many.csv | head -1").err, "") << "nobody is left to complain to";
  // Output that had left before the fault is marked, in whatever format.
  Write("broken.csv", many + "T,1\n");
  for (const char* format : {"table", "csv", "json"}) {
    const Result result = Run(std::string("judge good.csv broken.csv --format ") + format);
    EXPECT_EQ(result.status, 2);
    EXPECT_FALSE(result.out.empty());
    EXPECT_TRUE(result.out.ends_with("\n# incomplete: the reason is on standard error\n")) << format;
  }
}

// The output of a command on a terminal of so many columns.
std::string ShownOnTerminal(const std::string& command, uint16_t columns) {
  const winsize size{24, columns, 0, 0};
  int terminal = -1;
  if (forkpty(&terminal, nullptr, nullptr, &size) == 0) {
    execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    _exit(127);
  }
  std::string shown;
  char part[4096];
  for (ssize_t count; (count = read(terminal, part, sizeof part)) > 0;) {
    shown.append(part, static_cast<std::size_t>(count));
  }
  close(terminal);
  wait(nullptr);
  std::erase(shown, '\r');
  return shown;
}

// Names give way to the terminal's width, and columns that can be spared; the reason of a verdict stays whole.
TEST_F(Tool, TablesFitTheTerminal) {
  const std::string id(100, 'x');
  Write("long.csv", Header() + Flat(id, "50"));
  const std::string kSpared =
      "\xCE\x94L*, \xCE\x94"
      "a*, \xCE\x94"
      "b*, \xCE\x94H*cmc, words, box, total";
  const struct {
    std::string arguments;
    uint16_t columns;
    std::size_t longest;
    std::string leftOut;
  } kRows[] = {
      {"color long.csv", 400, 245, ""},
      {"color long.csv", 200, 200, ""},
      {"color long.csv", 80, 80, "observer, C, h, Lu, u, v, Cuv, huv, LH, aH, bH"},
      {"judge " + std::string(kCharts) + " --pairs", 120, 117, "words, box, total"},
      {"judge " + std::string(kCharts) + " --pairs", 80, 80, kSpared},
  };
  for (const auto& row : kRows) {
    const std::string shown = ShownOnTerminal(
        "cd " + (folder_ / "") + " && NO_COLOR=1 " VRX_TOOL " " + row.arguments + " 2>/dev/null",
        row.columns);
    std::size_t longest = 0;
    for (const std::string& line : Lines(shown)) longest = std::max(longest, vrx::tool::DisplayWidth(line));
    EXPECT_EQ(longest, row.longest) << shown;
    const std::size_t note = shown.find("(no room for: ");
    EXPECT_EQ(note == std::string::npos ? "" : shown.substr(note + 14, shown.find(')', note) - note - 14),
              row.leftOut);
  }
}

TEST_F(Tool, RemarksGoToStandardError) {
  Write("good.csv", Header() + Flat("A", "50"));
  Write("fractions.csv", Header() + Flat("A", "0.5"));
  EXPECT_EQ(Run("judge good.csv good.csv").err, "");
  EXPECT_NE(Run("judge good.csv good.csv --verbose").err.find("400 to 700 nm at 10 nm: completed"),
            std::string::npos);
  EXPECT_NE(Run("color fractions.csv").err.find("--fraction"), std::string::npos);
  EXPECT_EQ(Run("color fractions.csv --fraction --format csv").out,
            Run("color - --format csv < good.csv").out);
  EXPECT_EQ(Run("judge good.csv good.csv").out.find('\x1b'), std::string::npos)
      << "colour only on a terminal";
}

}  // namespace
