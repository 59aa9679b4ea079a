// strength, colorants and predict as processes.

#include <algorithm>
#include <charconv>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>

#include <vrxmath/colorant/optical_transforms.h>

#include "tests/testing/tool_process.h"

namespace vrx::tool {
namespace {

using nlohmann::json;

class ColorantCommands : public test::ToolProcess {};

// The measured curve of an opaque film whose K/S is `amount` times a band of absorption about 500 nm.
std::string Dyed(const std::string& id, double amount) {
  std::string row = id;
  for (int32_t i = 0; i < kWavelengths; ++i) {
    const double distance = (i - 14) / 6.0;
    const double ks = amount * (0.05 + 2.0 / (1.0 + distance * distance));
    const double percent = 100.0 * SaundersonToMeasured(KubelkaMunkReflectance(ks), 0.04, 0.6);
    char text[32];
    row.append(1, ',').append(text, std::to_chars(std::begin(text), std::end(text), percent).ptr);
  }
  return row + "\n";
}

TEST_F(ColorantCommands, StrengthOfADilutionSeries) {
  folder_.Write("std.csv", Header("id", 360, 750) + Dyed("S", 1.0) + Dyed("half", 0.5));
  folder_.Write("lots.csv", Header("id", 360, 750) + Dyed("S", 1.0) + Dyed("half", 0.5) + Dyed("more", 1.2));
  const json rows = RunJson("strength std.csv lots.csv --wavelength 620 --illuminants D65,A");
  const double expected[] = {100.0, 50.0, 120.0};
  ASSERT_EQ(rows.size(), 3u);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (const char* form : {"ks", "chromatic", "chromatic_620"}) {
      EXPECT_NEAR(rows[i][form].get<double>(), expected[i], 1e-9) << form << " " << i;
    }
    EXPECT_EQ(rows[i]["chromatic_nm"], 500);
    for (const char* form : {"absorbance", "tristimulus", "pseudo_tristimulus", "luminous", "Y_A"}) {
      const double percent = rows[i][form].get<double>();
      EXPECT_EQ(percent > 100.0, expected[i] > 100.0) << form << " " << i;
    }
  }
  for (const json& row : RunJson("strength std.csv std.csv --pairs")) EXPECT_EQ(row["ks"], 100.0);
  EXPECT_NEAR(RunJson("strength std.csv lots.csv --standard-id half")[0]["ks"].get<double>(), 200.0, 1e-9);
  // A strength at the end of the range is told for what it is.
  folder_.Write("weak.csv", Header("id", 360, 750) + Dyed("w", 0.01));
  EXPECT_NE(Run("strength weak.csv std.csv --standard-id w")
                .err.find("or 999.99, where they end: the true ones are"),
            std::string::npos);
  ASSERT_EQ(Run("strength std.csv lots.csv --format csv").status, 0);
  EXPECT_TRUE(folder_.Read("out").starts_with("standard,trial,ks,absorbance,tristimulus,"));
}

TEST_F(ColorantCommands, StrengthLeavesOutWhatLiesBelowTheSurface) {
  // Below 1 %: the standard reflects 0.9, the trial 0.8 at every wavelength but 650 nm, where both reflect 30.
  std::string rows[] = {"std", "lot"};
  for (int nm = 360; nm <= 750; nm += 10) {
    rows[0].append(nm == 650 ? ",30" : ",0.9");
    rows[1].append(nm == 650 ? ",30" : ",0.8");
  }
  folder_.Write("std.csv", Header("id", 360, 750) + rows[0] + "\n");
  folder_.Write("lot.csv", Header("id", 360, 750) + rows[1] + "\n");
  const json dark = RunJson("strength std.csv lot.csv --wavelength 650")[0];
  for (const char* form : {"ks", "absorbance", "chromatic", "luminous", "tristimulus"}) {
    EXPECT_TRUE(dark[form].is_null()) << form;
  }
  EXPECT_EQ(dark["chromatic_650"], 100.0);
  EXPECT_NE(folder_.Read("err").find("1 of 1 trials are darker than the surface alone"), std::string::npos);
  EXPECT_NE(folder_.Read("err").find("at 400-640, 660-700 nm"), std::string::npos);
  // K/S of 0.9 % and of 0.8 % by hand, uncorrected and through the inverse R / (0.384 + 0.6 R).
  const auto ks = [](double r) { return (1.0 - r) * (1.0 - r) / (2.0 * r); };
  const auto internal = [](double r) { return r / (0.384 + 0.6 * r); };
  EXPECT_NEAR(RunJson("strength std.csv lot.csv --specular none")[0]["chromatic"].get<double>(),
              100.0 * ks(0.008) / ks(0.009), 1e-9);
  EXPECT_EQ(folder_.Read("err"), "");
  EXPECT_NEAR(RunJson("strength std.csv lot.csv --specular excluded")[0]["chromatic"].get<double>(),
              100.0 * ks(internal(0.008)) / ks(internal(0.009)), 1e-9);
}

TEST_F(ColorantCommands, StrengthRefusesBadOptions) {
  folder_.Write("s.csv", Header("id", 360, 750) + Dyed("S", 1.0));
  const char* const bad[] = {
      "--band 700-400",           "--band 400",   "--band 405-700",
      "--band 350-700",           "--k1 1.5",     "--wavelength x",
      "--wavelength -2147483648", "--k2 nan",     "--band 400-760",
      "--standard-id T",          "--specular x",
  };
  for (const char* options : bad) {
    EXPECT_EQ(Run(std::string("strength s.csv s.csv ") + options).status, 2) << options;
    EXPECT_TRUE(folder_.Read("err").starts_with("vrx: ")) << options;
    EXPECT_EQ(folder_.Read("out"), "") << options;
  }
}

// A surface that is not in the curve, and values that nobody measured, make another strength.
TEST_F(ColorantCommands, StrengthHoldsTheFilesAgainstItsOptions) {
  const std::string header = Header("id,geometry", 360, 750);
  folder_.Write("sce.csv", header + Dyed("S,SCE", 1.0));
  folder_.Write("plain.csv", header + Dyed("S,", 1.0));
  folder_.Write("specular.csv", Header("id,specular", 360, 750) + Dyed("S,SCE", 1.0));
  folder_.Write("mixed.csv", header + Dyed("S,SCI", 1.0) + Dyed("S,SCE", 0.9));
  folder_.Write("both.csv", header + Dyed("S,SCE", 1.0) + Dyed("S,SCI", 1.0));
  folder_.Write("sci.csv", header + Dyed("T,SCI", 1.0));
  folder_.Write("at_45.csv", header + Dyed("S,45/0", 1.0));
  std::string heads, dyed = Dyed("S", 1.0);
  for (int nm = 360; nm <= 750; nm += 10) heads.append(" NM").append(std::to_string(nm));
  std::ranges::replace(dyed, ',', ' ');
  folder_.Write("at_45.txt", "CGATS.17\nMEASUREMENT_GEOMETRY \"45/0\"\nBEGIN_DATA_FORMAT\nSAMPLE_ID" + heads +
                                 "\nEND_DATA_FORMAT\nBEGIN_DATA\n" + dyed + "END_DATA\n");
  folder_.Write(
      "short.csv", Header("id", 420, 680) + "S" + [] {
        std::string values;
        for (int nm = 420; nm <= 680; nm += 10) values += ",20";
        return values + "\n";
      }());
  const std::string excluded = "the specular component is excluded, but --specular is included",
                    beside =
                        "the file says 45/0, which leaves out the specular component, but --specular is "
                        "included; use --specular excluded, or --specular included for a matt surface",
                    beyond = " names wavelengths that were not measured: the curves go from 420 to 680 nm";
  const std::pair<std::string, std::string> kRuns[] = {
      {"plain.csv sce.csv", "sce.csv, line 2: the file says that " + excluded},
      {"plain.csv specular.csv", "specular.csv, line 2: the file says that " + excluded},
      {"plain.csv mixed.csv --average", "mixed.csv, line 3: the file says that " + excluded},
      {"specular.csv plain.csv", "specular.csv: standard \"S\": the file says that " + excluded},
      {"specular.csv plain.csv --pairs", "specular.csv: standard \"S\": the file says that " + excluded},
      {"plain.csv sce.csv --specular excluded", ""},
      {"sce.csv sce.csv --specular none", ""},
      {"plain.csv at_45.csv", "at_45.csv, line 2: " + beside},
      {"at_45.txt plain.csv", "at_45.txt: standard \"S\": " + beside},
      {"at_45.csv at_45.txt --specular excluded", ""},
      {"at_45.txt at_45.csv --specular included", ""},
      {"both.csv sci.csv", ""},
      {"short.csv short.csv --band 420-690", "short.csv: --band" + beyond},
      {"short.csv short.csv --band 400-680", "short.csv: --band" + beyond},
      {"short.csv short.csv --wavelength 400", "short.csv: --wavelength" + beyond},
      {"plain.csv short.csv --band 400-700", "short.csv: --band" + beyond},
      {"short.csv short.csv --band 420-680 --wavelength 680", ""},
      {"short.csv short.csv", ""}};
  for (const auto& [arguments, message] : kRuns) {
    EXPECT_EQ(Run("strength " + arguments).status, message.empty() ? 0 : 2)
        << arguments << folder_.Read("err");
    EXPECT_NE(folder_.Read("err").find(message), std::string::npos) << arguments << folder_.Read("err");
  }
}

TEST_F(ColorantCommands, TheExampleIsListedAndPredicted) {
  const std::string paints = VRX_SOURCE_DIR "/examples/acrylic_paints.json";
  const json components = RunJson("colorants " + paints);
  ASSERT_EQ(components.size(), 27u);
  EXPECT_EQ(components[0]["kind"], "Cal White");
  EXPECT_EQ(components[16]["white"], "yes");

  folder_.Write("f.json", R"({"formulas":[{"name":"W","lines":[{"component":1,"amount":3}]}]})");
  const json predicted = RunJson("predict " + paints + " f.json --illuminants D65 --observer 10");
  const double internal = KubelkaMunkReflectance(0.000524);  // K of titanium white at 560 nm
  EXPECT_NEAR(predicted[0]["560"].get<double>(), 100.0 * SaundersonToMeasured(internal, 0.04, 0.6), 1e-9);
  EXPECT_GT(predicted[0]["D65/10 L"].get<double>(), 97.0);

  folder_.Write("bad.json", R"({"formulas":[{"name":"W","lines":[{"component":1,"amount":-3}]}]})");
  EXPECT_EQ(Run("predict " + paints + " bad.json").status, 2);
  EXPECT_EQ(folder_.Read("err"),
            "vrx: bad.json: formulas[0].lines[0].amount: -3 is not within 0 to 1e+100\n");
}

// What match says of the trust in a recipe, predict says of the same formula.
TEST_F(ColorantCommands, PredictTellsItsErrorAsMatchDoes) {
  json system = test::ReadJson(VRX_SOURCE_DIR "/examples/acrylic_paints.json");
  const std::string plain = system.dump();
  for (json& component : system["components"]) {
    const double error = component["id"] == 7 ? 3.0 : 1.0;
    component["calibrated"] = {{"least", 5},
                               {"most", 100},
                               {"drawdowns", 12},
                               {"leave_one_out", error},
                               {"leave_one_out_90", 2 * error}};
  }
  folder_.Write("paints.json", system.dump());
  folder_.Write("f.json", R"({"formulas":[
      {"name":"blue","lines":[{"component":1,"amount":94},{"component":7,"amount":1.5},{"component":16,"amount":4.5}]},
      {"name":"light","lines":[{"component":1,"amount":90},{"component":3,"amount":10}]}]})");
  const json predicted = RunJson("predict paints.json f.json");
  std::string curve = Header("id", 360, 750) + "blue";
  for (int nm = 360; nm <= 750; nm += 10) curve += "," + predicted[0][std::to_string(nm)].dump();
  folder_.Write("t.csv", curve + "\n");
  const json recipe = RunJson("match paints.json t.csv --max-colorants 3 --top 1 --require 1,7,16")[0];
  EXPECT_EQ(predicted[0]["outside"], "7;16");
  EXPECT_EQ(predicted[0]["outside"], recipe["outside"]);
  EXPECT_NEAR(predicted[0]["expected"].get<double>(), recipe["expected"].get<double>(), 1e-6);
  EXPECT_GT(predicted[0]["expected"], 6.0) << "farther outside of its range";
  EXPECT_EQ(predicted[1]["expected"], 2.0);
  EXPECT_EQ(predicted[1]["outside"], "");
  ASSERT_EQ(Run("predict paints.json f.json").status, 0);
  const std::string shown = folder_.Read("out");
  EXPECT_NE(
      shown.find("\n  expected error: nine of ten such predictions are at most 2.00 off (CIEDE2000)\n\n"),
      std::string::npos)
      << shown;
  EXPECT_NE(shown.find("\n  outside of the calibrated range: Phthalo Blue (Green Shade), "),
            std::string::npos)
      << shown;

  system["components"][2]["calibrated"].erase("leave_one_out_90");
  folder_.Write("partly.json", system.dump());
  EXPECT_TRUE(RunJson("predict partly.json f.json")[1]["expected"].is_null());
  ASSERT_EQ(Run("predict partly.json f.json").status, 0);
  EXPECT_NE(folder_.Read("out").find("\n  expected error: not known\n"), std::string::npos)
      << folder_.Read("out");
  folder_.Write("plain.json", plain);
  EXPECT_FALSE(RunJson("predict plain.json f.json")[0].contains("expected")) << "nothing is known of any";
}

TEST_F(ColorantCommands, PredictSpeaksOfRulesAndOfWhatItCannotDo) {
  std::string curve = "[1";
  for (int i = 1; i < 40; ++i) curve += ",1";
  curve += "]";
  const auto component = [&](const std::string& id) {
    return R"({"id":)" + id + R"(,"name":"c","levels":[{"concentration":1,"K":)" + curve + R"(,"S":)" +
           curve + "}]}";
  };
  const std::string members =
      R"("components":[)" + component("1") + "," + component("2") + R"(],"rules":[[1,2]]})";
  folder_.Write(
      "f.json",
      R"({"formulas":[{"name":"F","lines":[{"component":1,"amount":3},{"component":2,"amount":1}]}]})");
  folder_.Write("s.json", R"({"name":"s",)" + members);
  EXPECT_EQ(Run("predict s.json f.json").status, 0);
  EXPECT_EQ(folder_.Read("err"), "vrx: formula \"F\" has colorants that must not be used together\n");
  folder_.Write("s.json", R"({"name":"s","model":"filter",)" + members);
  EXPECT_EQ(Run("predict s.json f.json").status, 2);
  EXPECT_NE(folder_.Read("err").find("Beer's Law"), std::string::npos);
}

}  // namespace
}  // namespace vrx::tool
