// vrx job: the database of standards, trials and verdicts.

#include <memory>
#include <optional>
#include <string>

#include <vrxstore/digest/digest.h>
#include <vrxstore/job_address.h>
#include <vrxstore/verify.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/commands/job_commands.h"
#include "tools/vrx/job/job_filter.h"
#include "tools/vrx/job/job_options.h"
#include "tools/vrx/job/job_reader.h"
#include "tools/vrx/output/measurement_output.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/output/property_rows.h"

namespace vrx::tool {
namespace {

struct JobCommandOptions {
  JobOptions job;
  std::string file, name, trial;
  bool trials = false;
  ReadOptions::Form form = ReadOptions::Form::kByContent;
  Format format = Format::kTable;
};

void RunCreate(const JobCommandOptions& options) {
  const std::string file = options.file.empty() ? options.job.File() : options.file;
  if (file.empty()) throw InputError("FILE is required");
  const std::string shown = store::ShownJob(file);
  const std::size_t slash = shown.find_last_of("/\\");
  const std::string name = options.name.empty() ? shown.substr(slash + 1) : options.name;
  store::CreateStore(file, name, options.job.Author(), options.job.wait);
  PrintMessage(shown + ": made a job");
}

void RunInfo(const JobCommandOptions& options) {
  const store::JobInfo info = OpenJob(options.job)->Info();
  OutputStream output;
  PropertyRows rows(options.format, output);
  rows.Add("name", info.name);
  rows.Add("created", info.created);
  rows.Add("created by vrx", info.library);
  rows.Add("version of tables", info.schema);
  rows.Add("standards", info.standards);
  rows.Add("batches", info.batches);
  rows.Add("trials", info.trials);
  rows.Add("decisions", info.decisions);
  rows.Add("profiles", info.profiles);
  rows.Add("recipes", info.recipes);
  rows.Add("rows of the trail", info.head.number);
  rows.Add("head of the trail", store::HexText(info.head.digest));
  rows.Finish();
  output.Finish();
}

ExitStatus RunVerify(const JobCommandOptions& options) {
  const auto job = OpenJob(options.job);
  const store::JobInfo info = job->Info();
  store::Verification found;
  {
    ProgressBar progress(static_cast<uint64_t>(info.trials));
    found = store::VerifyStore(*job, [&](int64_t count) { progress.Update(static_cast<uint64_t>(count)); });
  }
  OutputStream output;
  PropertyRows rows(options.format, output);
  rows.Add("judgements computed again", found.judgements);
  rows.Add("batches", found.batches);
  rows.Add("rows of the trail", found.trailRows);
  rows.Add("head of the trail", store::HexText(found.head.digest));
  rows.Add("faults", found.faultCount);
  for (const std::string& fault : found.faults) rows.Add("fault", fault);
  rows.Finish();
  output.Finish();
  return found.faultCount == 0 ? kExitPass : kExitNotPassed;
}

void RunTrail(const JobCommandOptions& options) {
  const auto job = OpenJob(options.job);
  const auto cursor = job->Trail();
  OutputStream output;
  const auto rows = MakeRowWriter(options.format, output,
                                  {{"row"},
                                   {"at"},
                                   {"user"},
                                   {.name = "by", .room = Room::kSpare},
                                   {"what"},
                                   {"subject"},
                                   {.name = "why", .room = Room::kSpare},
                                   {.name = "digest", .room = Room::kSpare}});
  for (store::TrailRow row; cursor->Next(row);) {
    rows->Integer(row.number);
    for (const std::string& text :
         {row.at, row.user, row.by, row.what, row.subject, row.why, store::HexText(row.digest)})
      rows->Text(text);
    rows->EndRow();
  }
  rows->Finish();
  output.Finish();
}

// A job that is made of the file would judge by the usual limits.
void SayWhatStays(store::Store& job, const std::string& file) {
  int64_t count = 0;
  for (const store::StandardEntry& entry : job.Standards())
    count += entry.conditions || entry.hasLimits ? 1 : 0;
  if (count > 0) {
    PrintMessage(file + ": conditions and limits of " + std::to_string(count) +
                 (count == 1 ? " standard" : " standards") + " stay in the job; vrx job show prints them");
  }
}

void RunExport(const JobCommandOptions& options) {
  const auto job = OpenJob(options.job);
  const std::string file = options.job.Shown();
  std::optional<store::LastJudgements> last;
  if (options.trials) last.emplace(*job, store::TrialFilter());
  const auto source = last ? ReadTrials(*job, file, {}, *last) : ReadStandards(*job, file);
  WriteOptions writing;
  writing.form = options.form == ReadOptions::Form::kByContent ? FormOfName(options.file) : options.form;
  writing.creationDate = CreationDate();
  std::vector<std::string> losses;
  writing.onLosses = [&losses](const std::vector<std::string>& lost) { losses = lost; };
  options.file == "-" ? WriteMeasurementOutput(*source, writing)
                      : WriteMeasurementFile(*source, writing, options.file);
  std::string list;
  for (const std::string& loss : losses) list += (list.empty() ? "" : ", ") + loss;
  if (!list.empty()) PrintMessage(options.file + ": warning: not kept: " + list);
  last ? TellEarlier(file, *last) : SayWhatStays(*job, options.file);
}

// The number of the trial that a text names: "#12", or an id that only one trial has.
int64_t TrialOf(store::Store& job, const std::string& file, const std::string& text) {
  if (const std::optional<int64_t> number = NumberInJob(text)) return *number;
  const auto cursor = job.Trials({.name = text});
  std::string known;
  int64_t number = 0;
  int found = 0;
  for (store::StoredTrial trial; cursor->Next(trial); ++found) {
    number = trial.number;
    constexpr int kNamed = 5;
    if (found < kNamed) known += " #" + std::to_string(trial.number) + " (" + trial.taken + ")";
  }
  if (found == 1) return number;
  if (found == 0) throw InputError(file + ": there is no trial \"" + text + "\"");
  throw InputError(file + ": " + std::to_string(found) + " trials are called \"" + text +
                   "\"; name one by its number:" + known);
}

void RunDecide(const JobCommandOptions& options, bool isAccepted) {
  const auto job = OpenJob(options.job);
  const int64_t number = TrialOf(*job, options.job.Shown(), options.trial);
  job->Decide(number, isAccepted, options.job.Author());
  PrintMessage("trial #" + std::to_string(number) + (isAccepted ? " accepted" : " rejected"));
}

void AddCreate(Command& job) {
  const auto options = std::make_shared<JobCommandOptions>();
  Command command = job.AddCommand("create", "Make a new job");
  command.AddOption(
      "FILE", options->file,
      "File of the job, which must not be there yet, or URL of an empty database; otherwise that of "
      "--job");
  command.AddOption("--name", options->name, "Name of the job").Shows("TEXT [name of the file or database]");
  AddJobChangeOptions(command, options->job);
  SetAction(command, options, RunCreate);
  command.SetNotes("Example:\n  vrx job create new.vrxjob --name \"Line 2\"\n");
}

void AddShowing(Command& job) {
  const auto options = std::make_shared<JobCommandOptions>();
  Command info = job.AddCommand("info", "Show what a job holds");
  Command trail = job.AddCommand("trail", "List every change that was made, with its digest");
  Command verify = job.AddCommand(
      "verify",
      "Compute all judgements again, compare them to the bit, and walk the trail; status 1 for faults");
  for (Command command : {info, trail, verify}) {
    AddJobOptions(command, options->job);
    AddFormatOption(command, options->format);
  }
  SetAction(info, options, RunInfo);
  SetAction(trail, options, RunTrail);
  verify.SetAction([options] { return RunVerify(*options); });
  info.SetNotes("Example:\n  vrx job info --job plant.vrxjob\n");
  trail.SetNotes("Example:\n  vrx job trail --job plant.vrxjob --format csv\n");
  verify.SetNotes("Example:\n  vrx job verify --job plant.vrxjob\n");
}

void AddCopying(Command& job) {
  const auto options = std::make_shared<JobCommandOptions>();
  Command write = job.AddCommand("export", "Write the standards, or the trials, into a file of measurements");
  write
      .AddOption("OUT", options->file,
                 "File to write, named .csv, .txt (CGATS), .cxf or .json (- for standard output)")
      .WritesFile()
      .Required();
  write.AddChoice("--to", options->form, {"auto", "csv", "cgats", "cxf", "json"},
                  "Format of the file; auto: by its name");
  write.AddFlag("--trials", options->trials, "Write the trials, each with the name of its standard");
  AddJobOptions(write, options->job);
  SetAction(write, options, RunExport);
  write.SetNotes("Example:\n  vrx job export standards.cxf --job plant.vrxjob\n");

  Command backup = job.AddCommand("backup", "Copy a job, as it is at one moment, into a new file");
  backup.AddOption("OUT", options->file, "File to make").WritesFile().Required();
  AddJobOptions(backup, options->job);
  SetAction(backup, options, [](const JobCommandOptions& given) { OpenJob(given.job)->Backup(given.file); });
  backup.SetNotes("Example:\n  vrx job backup monday.vrxjob --job plant.vrxjob\n");
}

void AddDeciding(Command& job) {
  const auto options = std::make_shared<JobCommandOptions>();
  Command accept = job.AddCommand("accept", "Accept a trial, whatever its verdict");
  Command reject = job.AddCommand("reject", "Reject a trial, whatever its verdict");
  for (Command command : {accept, reject}) {
    command.AddOption("TRIAL", options->trial, "Id of the trial, or its number in the job, as in #12")
        .Required();
    AddJobChangeOptions(command, options->job);
  }
  SetAction(accept, options, [](const JobCommandOptions& given) { RunDecide(given, true); });
  SetAction(reject, options, [](const JobCommandOptions& given) { RunDecide(given, false); });
  accept.SetNotes(
      "Example:\n  vrx job accept \"#1\" --job plant.vrxjob --by \"J. Doe\" --why \"accepted although "
      "1.2\"\n");
  reject.SetNotes("Example:\n  vrx job reject \"#1\" --job plant.vrxjob --why \"wrong batch\"\n");
}

}  // namespace

void AddJob(Command& tool) {
  Command job = tool.AddCommand("job", "Keep standards, trials and verdicts in a database");
  AddCreate(job);
  AddShowing(job);
  AddJobStandards(job);
  AddDeciding(job);
  AddJobHistory(job);
  AddJobCharts(job);
  AddJobRejudge(job);
  AddJobProfiles(job);
  AddJobRecipes(job);
  AddJobPage(job);
  AddCopying(job);
  job.SetNotes(
      "A job is one file, or a database on a PostgreSQL server. Every change is a row of its trail: when, "
      "who, what and why, chained by "
      "SHA-256.\n\n"
      "Examples:\n"
      "  vrx job create works.vrxjob\n"
      "  vrx job add-standard master.csv --job works.vrxjob --system cmc --tolerance 1 --illuminants D65,A\n"
      "  vrx judge --job works.vrxjob batch.csv --standard-id P01\n"
      "  vrx job statistics --job works.vrxjob\n");
}

}  // namespace vrx::tool
