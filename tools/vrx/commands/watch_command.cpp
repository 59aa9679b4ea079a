// vrx watch: files that appear in a folder are judged into a job, each once.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <vrxio/text/decimal.h>
#include <vrxio/text/path.h>
#include <vrxio/text/text.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/output_error.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/job/job_run.h"
#include "tools/vrx/judging/comparison.h"
#include "tools/vrx/judging/judging_options.h"
#include "tools/vrx/judging/judging_pipeline.h"
#include "tools/vrx/output/file_output.h"

namespace vrx::tool {
namespace {

namespace fs = std::filesystem;

struct WatchOptions {
  std::string folder;
  ComparisonOptions comparison;
  JudgingOptions judging;
  JobRunOptions job;
  bool once = false;
  double every = 2, settle = 2;
};

[[noreturn]] void Fail(const fs::path& path, const std::error_code& code) {
  throw OutputError(io::Utf8Of(path) + ": " + code.message());
}

// The files of a folder, by name: those that wait, and those that somebody may still write to.
struct FolderFiles {
  std::vector<fs::path> waiting, unfinished;
};

// Whether a name is one that programs give to a file until it is complete.
bool IsNameOfUnfinished(const fs::path& file) {
  std::string name = io::Utf8Of(file.filename());
  std::ranges::transform(name, name.begin(), [](char c) { return io::LowerCase(c); });
  return std::ranges::any_of(std::array{".tmp", ".part", ".partial", ".filepart", ".crdownload", "~"},
                             [&](std::string_view end) { return name.ends_with(end); });
}

FolderFiles FilesIn(const fs::path& folder, double settle) {
  FolderFiles files;
  std::error_code code;
  const auto before =
      fs::file_time_type::clock::now() -
      std::chrono::duration_cast<fs::file_time_type::duration>(std::chrono::duration<double>(settle));
  fs::directory_iterator entries(folder, code);
  if (code) Fail(folder, code);
  for (const fs::directory_entry& entry : entries) {
    const bool isHidden = io::Utf8Of(entry.path().filename()).starts_with('.');
    if (isHidden || !entry.is_regular_file(code)) continue;
    const bool isUnfinished = entry.last_write_time(code) > before || IsNameOfUnfinished(entry.path());
    (isUnfinished ? files.unfinished : files.waiting).push_back(entry.path());
  }
  std::ranges::sort(files.waiting);
  std::ranges::sort(files.unfinished);
  return files;
}

// Moves a file into a folder beside it, under a name that nothing there has; gives the new path.
fs::path MoveInto(const char* folder, const fs::path& file) {
  const fs::path place = file.parent_path() / folder;
  std::error_code code;
  fs::create_directory(place, code);
  fs::path to = place / file.filename();
  for (int copy = 2; fs::exists(to, code); ++copy) {
    to = place / file.stem();
    to += "-" + std::to_string(copy);
    to += file.extension();
  }
  fs::rename(file, to, code);
  if (code) Fail(to, code);
  return to;
}

// By which a file is known to be as it was.
using FileState = std::pair<std::uintmax_t, fs::file_time_type>;

FileState StateOf(const fs::path& file) {
  std::error_code code;
  return {fs::file_size(file, code), fs::last_write_time(file, code)};
}

// Judges the trials of a file into the job: all of them in one transaction, or none. False for a file that was written to meanwhile, of
// which nothing is stored.
bool JudgeFile(const WatchOptions& options, const fs::path& file, const Command& command) {
  const FileState before = StateOf(file);
  ComparisonOptions comparison = options.comparison;
  comparison.trials = io::Utf8Of(file);
  JudgingOptions judging = options.judging;
  JobRun job(options.job, comparison, judging, command);
  Comparison trials(comparison, judging.viewing);
  JudgingPipeline pipeline(trials, job.Settings(), nullptr,
                           [&](const PipelineTrial& judged, const Standard& standard, const Judge& judge) {
                             job.Add(judged, standard, judge, trials.Trials());
                           });
  constexpr std::size_t kChunk = 128;
  pipeline.Run(1, kChunk);
  if (StateOf(file) != before) return false;
  job.Commit();
  trials.WarnAboutInput();
  WarnAboutLimits(judging, job.Settings(), job.File());
  return true;
}

// A fault of the job ends the watch, and the file stays where it is; one of the file goes with it.
void TakeFile(const WatchOptions& options, const fs::path& file, const Command& command) {
  std::string reason;
  try {
    if (!JudgeFile(options, file, command)) return;
  } catch (const store::StoreError&) {
    throw;
  } catch (const InputError& error) {
    reason = error.what();
  }
  if (reason.empty()) {
    MoveInto("done", file);
    return;
  }
  const fs::path refused = MoveInto("refused", file);
  ReplaceFile(io::Utf8Of(refused) + ".reason.txt", reason + "\n");
  PrintMessage(reason);
}

// A run that ends leaves no file without a word.
void TellOfUnfinished(const WatchOptions& options, const std::vector<fs::path>& files) {
  for (const fs::path& file : files) {
    PrintMessage(io::Utf8Of(file) + ": left where it is: " +
                 (IsNameOfUnfinished(file)
                      ? "its name is that of a file that is still being written"
                      : "it changed less than " + ShortestText(options.settle) + " s ago (--settle)"));
  }
}

void RunWatch(const WatchOptions& options, const Command& command) {
  // What is wrong with the job or the options is no fault of the files.
  SettingsOfJob(*OpenJob(options.job), options.job.Shown(), options.comparison.standardId, options.judging,
                command);
  const fs::path folder = io::PathOf(options.folder);
  const InterruptWatch interrupt;
  while (true) {
    const FolderFiles files = FilesIn(folder, options.settle);
    for (const fs::path& file : files.waiting) {
      interrupt.Check();
      TakeFile(options, file, command);
    }
    if (options.once) return TellOfUnfinished(options, files.unfinished);
    constexpr double kStep = 0.1;
    for (double waited = 0; waited < options.every; waited += kStep) {
      interrupt.Check();
      std::this_thread::sleep_for(std::chrono::duration<double>(kStep));
    }
  }
}

}  // namespace

void AddWatch(Command& tool) {
  const auto options = std::make_shared<WatchOptions>();
  Command command = tool.AddCommand("watch", "Judge files that appear in a folder into a job");
  command.AddOption("FOLDER", options->folder, "Folder to watch").Required();
  command.AddFlag("--once", options->once, "Take the files that are there, and end");
  command.AddOption("--every", options->every, "Look at the folder this often")
      .Shows("SECONDS [2]")
      .Check(RefuseNegative);
  command.AddOption("--settle", options->settle, "Leave a file alone until it has not changed for this long")
      .Shows("SECONDS [2]")
      .Check(RefuseNegative);
  AddStandardOptions(command, options->comparison);
  AddJudgingOptions(command, options->judging, UsualIlluminants());
  AddJobRunOptions(command, options->job);
  command.SetNotes(
      "A file whose trials were stored goes into the folder done beside it, any other into refused, with the "
      "reason\n"
      "in a text beside it. A file is stored as a whole or not at all. After a kill it is taken again, and "
      "recognised\n"
      "by its content if it was stored already. Names that end in .tmp, .part, .partial, .filepart, "
      ".crdownload "
      "or ~\n"
      "are those of files that are still being written, and stay.\n\n"
      "Example:\n"
      "  vrx watch incoming --job plant.vrxjob --standard-id P01 --once\n");
  command.SetAction([options, command] {
    RunWatch(*options, command);
    return kExitPass;
  });
}

}  // namespace vrx::tool
