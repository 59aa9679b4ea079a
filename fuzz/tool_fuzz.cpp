// Whole commands in this process: the first byte chooses a command line, the rest is its input file. A run ends with
// status 0, 1 or 2; an index message of the library and any exception that no command means to throw are findings. So is a
// command of the tool that no line drives.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <vrxmath/platform/message_box.h>

#include "tools/vrx/base/command_line.h"
#include "tools/vrx/commands/commands.h"

namespace {

// Of each command, of each kind of file that it reads and of each report. The first byte of a seed is the number of its line, so
// new lines go to the end. @ stands for the folder of the process: @IN is the input, @CURVES, @PAINTS and @FORMULAS are
// sound files.
constexpr std::array kCommandLines = {
    "judge @IN @IN --pairs --only fail,warning --worst-first",
    "judge @CURVES @IN --tolerance 1 --format csv --csv-safe",
    "judge @IN @CURVES --standard-id A --format json",
    "judge @IN @IN --illuminants D65 --average --summary --system lch",
    "judge @CURVES @CURVES --tolerances @IN --system cie2000",
    "judge @CURVES @CURVES --ellipses @IN",
    "judge @CURVES @CURVES --illuminant-file @IN --illuminants 1000",
    "color @IN --format csv --digits 3",
    "color @IN --average --observer 2",
    "color @CURVES --correction @IN --format csv",
    "index @CURVES --ganz-griesser @IN --illuminants D65 --format csv",
    "delta @IN --system din6175 --tolerance 2",
    "delta @IN --system 3 --format json",
    "average @IN --count 2 --statistics --format csv",
    "average @IN --format json",
    "sort @IN --blocks 0.5",
    "sort @IN --groups 2 --format csv",
    "fit-tolerance @IN --method surface",
    "munsell @IN --format csv",
    "instruments @IN @IN --terms zero --format csv",
    "instruments @IN --drift --format csv",
    "lamp @IN --format csv",
    "density @IN --status e --format csv",
    "fit-whiteness @IN --format json",
    "fit-tolerance --verdicts @IN --illuminants D65 --format csv",
    "fit-tolerance @IN --centre standard --format csv",
    "strength @IN @IN --pairs --wavelength 550",
    "strength @CURVES @IN --specular excluded --format json",
    "colorants @IN",
    "predict @IN @FORMULAS",
    "predict @PAINTS @IN --format csv",
    "calibrate @IN --white A",
    "index @IN --standard @IN",
    "index @IN --pairs --standard @IN --format csv",
    "swatch @IN --output @out.svg",
    "swatch @CURVES @IN --output @out.png",
    "plot plane @IN @CURVES --output @out.svg",
    "tables --illuminant-file @IN",
    "job info --job @IN",
    "job verify --job @IN",
    "watch @out --job @IN --once",
    "xml @IN",
    "xml @IN a/b[2]/@c --format csv",
    "condition C",
    "settings list",
    "log",
    "manual bash",
    "search @IN @CURVES --count 2",
    "search @CURVES @IN --within 5 --format csv",
    "match @IN @CURVES --max-colorants 1 --threads 1 --top 1",
    "match @PAINTS @IN --max-colorants 1 --threads 1 --report @out.html",
    "match @PAINTS @CURVES --max-colorants 1 --threads 1 --limits @IN",
    "match @PAINTS @CURVES --max-colorants 1 --threads 1 --from-stock @IN",
    "correct @PAINTS --formula @IN --batch @CURVES --target @CURVES --batch-size 100 --max-colorants 1",
    "correct @PAINTS --formula @FORMULAS --name Olive --batch @IN --target @IN --batch-size 100 "
    "--max-colorants 1",
    "info @IN",
    "info @IN --lenient --wavelengths-in rows",
    "convert @IN - --to cxf --lenient",
    "convert @IN - --to cgats --grid 400-700/10",
    "convert @IN - --to json --input-format csv",
    "judge @IN @IN --pairs --report @out.html --report-title t",
    "color @IN --report @out.html",
    "strength @IN @CURVES --report @out.html",
    "fit-tolerance @IN --report @out.html",
    "plot curves @CURVES @IN --output @out.svg",
    "plot trend @CURVES @IN --output @out.svg",
    "plot histogram @CURVES @IN --output @out.png",
    "plot illuminants @CURVES @IN --output @out.svg",
    "plot angles @IN @IN --output @out.svg",
    "convert @IN @out.csv --lenient",
    "convert @IN @out.txt --percent",
    "convert @IN @out.cxf --grid 380-730/10 --percent",
    "info @IN --percent",
    "color @IN --interval 5",
    "judge @IN @IN --pairs --interval 1 --illuminant-file @IN --format json",
};

void AbortUnlessDriven(std::string_view command) {
  const auto drives = [&](std::string_view line) { return line.substr(0, line.find(' ')) == command; };
  if (std::ranges::any_of(kCommandLines, drives)) return;
  std::fprintf(stderr, "no line of kCommandLines drives \"vrx %s\"\n", std::string(command).c_str());
  std::abort();
}

// A folder of the process in which every run finds the same files and leaves nothing that matters.
class Place {
 public:
  Place()
      : folder_(std::filesystem::temp_directory_path() /
                ("vrx-fuzz-" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directories(folder_);
    const std::filesystem::path examples = VRX_SOURCE_DIR "/examples";
    std::filesystem::copy_file(examples / "acrylic_paints.json", folder_ / "PAINTS");
    std::filesystem::copy_file(examples / "acrylic_formulas.json", folder_ / "FORMULAS");
    std::string curves = "id,geometry";
    for (int nm = 400; nm <= 700; nm += 20) curves += "," + std::to_string(nm);
    for (const char* row : {"\nA,SCI", "\nB,SCI", "\nA,SCE"}) {
      curves += row;
      for (int i = 0; i < 16; ++i) curves += "," + std::to_string(20 + i * static_cast<int>(row[1] % 5));
    }
    Write("CURVES", curves + "\n");
    setenv("XDG_CONFIG_HOME", folder_.c_str(), 1);
    for (const vrx::tool::CommandEntry& command : vrx::tool::AllCommands()) AbortUnlessDriven(command.name);
    // The tool's own streams lead nowhere; what a sanitizer says goes to the descriptor it was given.
    if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
    vrx::SetMessageBoxHandler([](vrx::WideView, vrx::MessageIcon, void*) { std::abort(); });
  }
  ~Place() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  void Write(const char* name, std::string_view content) const {
    std::ofstream(folder_ / name, std::ios::binary) << content;
  }
  // The words of a command line, by paths that hold wherever the fuzzer runs: it names its own folders from there.
  std::vector<std::string> WordsOf(std::string_view line) const {
    std::vector<std::string> words;
    while (!line.empty()) {
      const std::size_t end = std::min(line.find(' '), line.size());
      const std::string_view word = line.substr(0, end);
      words.push_back(word.starts_with('@') ? (folder_ / word.substr(1)).string() : std::string(word));
      line.remove_prefix(std::min(end + 1, line.size()));
    }
    return words;
  }

 private:
  std::filesystem::path folder_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static const Place place;
  if (size == 0) return 0;
  place.Write("IN", {reinterpret_cast<const char*>(data) + 1, size - 1});
  const int status = vrx::tool::RunTool(place.WordsOf(kCommandLines[data[0] % kCommandLines.size()]),
                                        vrx::tool::AllCommands(), "0");
  if (status < 0 || status > 2) std::abort();
  return 0;
}
