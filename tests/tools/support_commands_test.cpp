// vrx settings, condition and log as a user runs them, one after the other on one settings file.

#include <cstdio>
#include <gtest/gtest.h>

#include "tests/support/test_environment.h"

namespace vrx {
namespace {

// The output of `vrx ARGUMENTS`, and its exit status.
std::string RunTool(const std::string& directory, const std::string& arguments) {
  const std::string command =
      "cd " + directory + " && XDG_CONFIG_HOME=" + directory + " " VRX_TOOL " " + arguments + " 2>&1";
  std::FILE* pipe = ::popen(command.c_str(), "r");
  std::string output;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) output += static_cast<char>(c);
  return output + "exit " + std::to_string(WEXITSTATUS(::pclose(pipe)));
}

TEST(SupportCommands, KeepAndShowWhatTheyAreGiven) {
  const test::TemporaryFolder directory;
  const std::string place = directory / "";
  const std::string file = place + "/ostrel/settings.conf";
  std::filesystem::create_directories(directory / "taken/VrxDebug.txt");
  const std::pair<const char*, std::string> rows[] = {
      {"settings get S Name", "vrx: section \"S\" has no setting \"Name\"\nexit 2"},
      {"settings set S Name 12", "exit 0"},
      {"settings set S Text -- -12x", "exit 0"},
      {"settings set 'S\\T' Name 12 --text", "exit 0"},
      {"settings get s NAME", "12\nexit 0"},
      {"settings list --format csv",
       "section,name,type,value\nS,Name,integer,12\nS,Text,text,-12x\nS\\T,Name,text,12\nexit 0"},
      {"settings list 'S\\T' --format csv", "section,name,type,value\nS\\T,Name,text,12\nexit 0"},
      {"condition Std C --format csv",
       "vrx: warning: the code \"C\" was understood as CRE: letters without a meaning at their place stand "
       "for the "
       "default, and those after the sixth for nothing\n"
       "code,description\nStd,No Standard Available\nCRE,\"C - Calibrated, R - Reflectance, E - SCE\"\nexit "
       "0"},
      {"condition nonsense --format csv",
       "vrx: warning: the code \"nonsense\" was understood as CREILL: letters without a meaning at their "
       "place "
       "stand for the default, and those after the sixth for nothing\n"
       "code,description\nCREILLse,\"C - Calibrated, R - Reflectance, E - SCE, I - 100% UV Energy, "
       "L - Large Lens, L - Large Mask\"\nexit 0"},
      {"log --format csv",
       "channel,mode,messages,file\nColor Sensor,0,off,.VrxDebug.txt\nGeneral,0,off,.VrxDebug.txt\nexit 0"},
      {"log --sensor file --general box --directory . --format csv",
       "channel,mode,messages,file\nColor Sensor,2,file," + place + "VrxDebug.txt\nGeneral,1,box," + place +
           "VrxDebug.txt\nexit 0"},
      {"log --directory missing", "vrx: missing is not a directory\nexit 2"},
      {"log --directory taken", "vrx: taken cannot hold the log VrxDebug.txt: is a directory\nexit 2"},
  };
  for (const auto& [arguments, output] : rows) EXPECT_EQ(RunTool(place, arguments), output) << arguments;
  const std::string deep = std::string(200, 'd') + '/' + std::string(100, 'd');
  std::filesystem::create_directories(directory / deep);
  EXPECT_EQ(RunTool(place, "log --directory " + deep),
            "vrx: " + deep + " is too long a path for the log\nexit 2");
  std::filesystem::remove_all(directory / "ostrel");
  directory.Write(directory / "ostrel", "");
  EXPECT_EQ(RunTool(place, "settings set S Name 1"),
            "vrx: the settings of section \"S\" cannot be read and written in " + file + "\nexit 2");
  EXPECT_EQ(RunTool(place, "log --general box"),
            "vrx: the settings of the log cannot be stored in " + file + "\nexit 2");
}

}  // namespace
}  // namespace vrx
