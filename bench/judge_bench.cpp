// `vrx judge` end to end, as a user runs it: a process that reads a file of curves and writes results.
//
// The time is the processor time of the process, which other work on the machine does not lengthen, so the rate
// is rows per second on one core. Before anything is timed the results are compared with those that the library
// gives for the same curves.

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>

#include <vrxmath/judging/evaluation.h>

#include <vrxio/curve_reader.h>

namespace {

constexpr int kRows = 200'000;

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
  static void WriteCurves(const std::string& path, int rows) {
    std::ofstream file(path);
    file << "id";
    for (int nm = 360; nm <= 750; nm += 10) file << ',' << nm;
    file << '\n';
    for (int row = 0; row < rows; ++row) {
      file << 'T' << row;
      for (int i = 0; i < 40; ++i) {
        const int hundredths = 2000 + i * i + (row * 7919 + i * 31) % 97;
        file << ',' << hundredths / 100 << '.' << hundredths / 10 % 10 << hundredths % 10;
      }
      file << '\n';
    }
  }

  std::string Command(const std::string& format, const std::string& output) const {
    return VRX_TOOL " judge " + standard + " " + trials + " --format " + format + " > " + output;
  }
};

double ChildSeconds() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// True when the total differences in the tool's csv are the library's own for the first rows.
bool ResultsAreRight(const Files& files) {
  if (std::system(files.Command("csv", files.results).c_str()) != 0) return false;
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

void BM_Judge(benchmark::State& state, const std::string& format) {
  const Files files;
  if (!ResultsAreRight(files)) {
    state.SkipWithError("the tool's results are not the library's");
    return;
  }
  for (auto _ : state) {
    const double before = ChildSeconds();
    if (std::system(files.Command(format, "/dev/null").c_str()) != 0) state.SkipWithError("vrx judge failed");
    state.SetIterationTime(ChildSeconds() - before);
  }
  state.SetItemsProcessed(state.iterations() * kRows);
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  state.counters["resident_MiB"] = static_cast<double>(usage.ru_maxrss) / 1024;
}

BENCHMARK_CAPTURE(BM_Judge, csv, "csv")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Judge, table, "table")->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
