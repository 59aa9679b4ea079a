// calibrate, match and correct as processes.

#include <algorithm>
#include <cstdlib>
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

}  // namespace
}  // namespace vrx::tool
