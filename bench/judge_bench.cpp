// `vrx judge` end to end, as a user runs it: a process that reads 1,000,000 curves, judges them by CMC under three illuminants
// and writes csv, beside `wc -l` and a loop of from_chars over the same file. Wall time, since the tool works on all cores;
// a row is a curve. Before anything is timed the results are compared with those that the library gives for the same
// curves. What the tool needs of memory is told for 1,000 to 1,000,000 curves, and where it holds them to sort them, for a standard
// with a long id; and how the report of pairs grows with their count.

#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vrxmath/judging/evaluation.h>

#include <vrxio/files/curve_reader.h>

#include "bench/harness.h"

namespace {

constexpr int kRows = 1'000'000;

struct Files {
  std::filesystem::path folder = std::filesystem::temp_directory_path() / "vrx-judge-bench";
  std::string standard = (folder / "standard.csv").string();
  std::string trials = (folder / "trials.csv").string();
  std::string results = (folder / "results.csv").string();

  Files() {
    std::filesystem::create_directories(folder);
    WriteCurves(standard, 1);
    WriteCurves(trials, kRows);
  }
  ~Files() { std::filesystem::remove_all(folder); }

  // Curves of 40 samples with two decimals, every row another one.
  static void WriteCurves(const std::string& path, int rows, const std::string& id = "T") {
    std::ofstream file(path);
    file << "id";
    for (int nm = 360; nm <= 750; nm += 10) file << ',' << nm;
    file << '\n';
    for (int row = 0; row < rows; ++row) {
      file << id << row;
      for (int i = 0; i < 40; ++i) {
        const int hundredths = 2000 + i * i + (row * 7919 + i * 31) % 97;
        file << ',' << hundredths / 100 << '.' << hundredths / 10 % 10 << hundredths % 10;
      }
      file << '\n';
    }
  }

  std::string Command(const std::string& curves, const std::string& output) const {
    return VRX_TOOL " judge " + standard + " " + curves + " --system cmc --format csv > " + output;
  }
};

void Run(const std::string& command) {
  vrx::bench::Require(std::system(command.c_str()) == 0, command);
}

// The largest memory of a run, in MiB.
double MemoryOf(const std::string& command) {
  const pid_t child = fork();
  if (child == 0) {
    execl("/bin/sh", "sh", "-c", ("exec " + command).c_str(), nullptr);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  vrx::bench::Require(wait4(child, &status, 0, &usage) == child && status == 0, command);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

// All numbers of a file, by from_chars.
double SumOfNumbers(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string line;
  double sum = 0.0, number = 0.0;
  while (std::getline(file, line)) {
    for (std::size_t at = line.find(','); at != std::string::npos; at = line.find(',', at + 1)) {
      if (std::from_chars(line.data() + at + 1, line.data() + line.size(), number).ec == std::errc())
        sum += number;
    }
  }
  return sum;
}

// True when the total differences in the tool's csv are the library's own for the first rows.
bool ResultsAreRight(const Files& files) {
  if (std::system(files.Command(files.trials, files.results).c_str()) != 0) return false;
  vrx::CVarexCalc calc;
  calc.Normalize();
  calc.method = vrx::vrxSystemCmc;
  calc.methodSettings = vrx::DefaultSettings(vrx::vrxSystemCmc);
  vrx::CReflDataArray curve;
  vrx::io::CurveRow row;
  curve.SetSize(1);
  vrx::io::CurveReader standard(vrx::io::CsvReader(files.standard), false);
  standard.Next(row);
  curve[0] = row.curve;
  calc.SetStandard(curve);
  vrx::io::CurveReader trials(vrx::io::CsvReader(files.trials), false);
  vrx::io::CsvReader results(files.results);
  vrx::CEvaluationArray evaluations;
  for (int i = 0; i < 1000 && trials.Next(row); ++i) {
    curve[0] = row.curve;
    calc.Evaluate(curve, evaluations);
    for (int32_t illuminant = 0; illuminant < 3; ++illuminant) {
      if (!results.Next()) return false;
      for (int text = 0; text < 5; ++text) results.Text();
      for (const double expected : calc.differences[0][illuminant]) {
        if (results.Number() != expected) return false;
      }
    }
  }
  return true;
}

// The time of a trial in a report of pairs among `many` beside that among a quarter of them: what grows with the square
// of the count comes to four. Each has a standard of its own, whose name the page shows.
void ReportGrowth(const Files& files, vrx::bench::Table& table, int many) {
  std::vector<vrx::bench::Work> works;
  for (const int rows : {many / 4, many}) {
    const std::string lot = (files.folder / ("lot" + std::to_string(rows) + ".csv")).string();
    const std::string page = lot + ".html";
    Files::WriteCurves(lot, rows);
    const std::string copy = lot + ".copy.csv";  // of one file with itself nobody asks about pairs
    std::filesystem::copy_file(lot, copy, std::filesystem::copy_options::overwrite_existing);
    works.emplace_back([=] {
      Run(VRX_TOOL " judge " + lot + " " + copy + " --pairs --format csv --report " + page + " > /dev/null");
    });
    works.back()();
    vrx::bench::Require(std::filesystem::file_size(page) > static_cast<std::uintmax_t>(rows),
                        "the report of --pairs");
  }
  const auto seconds = vrx::bench::SecondsOf(works, 3, vrx::bench::Clock::kWall);
  table.Report({"a trial in a report of " + std::to_string(many) + " pairs", "one of a quarter of them",
                seconds[1] / many * 1e9, seconds[0] / (many / 4) * 1e9, "<= 1.2", true});
}

}  // namespace

int main(int argc, char** argv) {
  using namespace vrx::bench;
  const Files files;
  Require(ResultsAreRight(files), "vrx judge");
  Table table(argc, argv, "ns");
  const auto seconds = SecondsOf({[&] { Run(files.Command(files.trials, "/dev/null")); },
                                  [&] { Run("wc -l " + files.trials + " > /dev/null"); },
                                  [&] {
                                    const double sum = SumOfNumbers(files.trials);
                                    Keep(&sum);
                                  }},
                                 5, Clock::kWall);
  constexpr double kNanoseconds = 1e9 / kRows;
  const std::string work = "vrx judge, CMC, 3 illuminants, all cores";
  table.Report({work, "1,500,000 rows a second", seconds[0] * kNanoseconds, 1e9 / 1.5e6, "<= 1", true});
  table.Report({work, "wc -l", seconds[0] * kNanoseconds, seconds[1] * kNanoseconds, "", true});
  table.Report(
      {work, "a loop of from_chars", seconds[0] * kNanoseconds, seconds[2] * kNanoseconds, "", true});
  const std::string some = (files.folder / "some.csv").string();
  Files::WriteCurves(some, 1'000);
  const double least = MemoryOf(files.Command(some, "/dev/null"));
  for (const int rows : {10'000, 100'000, kRows}) {
    if (rows < kRows) Files::WriteCurves(some, rows);
    const double most = MemoryOf(files.Command(rows < kRows ? some : files.trials, "/dev/null"));
    table.Report(
        {"memory in MiB, " + std::to_string(rows) + " curves", "1000 curves", most, least, "flat", true});
  }
  // Sorted trials share their standard's name: its length is no matter.
  const std::string longName = (files.folder / "long.csv").string();
  Files::WriteCurves(some, 20'000);
  Files::WriteCurves(longName, 1, std::string(20'000, 'N'));
  const auto sorted = [&](const std::string& standard) {
    return MemoryOf(VRX_TOOL " judge " + standard + " " + some + " --worst-first > /dev/null");
  };
  table.Report({"memory in MiB, 20000 curves --worst-first, an id of 20000 bytes", "an id of 2 bytes",
                sorted(longName), sorted(files.standard), "flat", true});
  ReportGrowth(files, table, 32'000);
  return 0;
}
