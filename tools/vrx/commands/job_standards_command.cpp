// vrx job add-standard, standards, show, remove, rename.

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <vrxstore/records/stored_form.h>
#include <vrxstore/standard_names.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/job_commands.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/job/added_settings.h"
#include "tools/vrx/job/job_options.h"
#include "tools/vrx/judging/judging_options.h"
#include "tools/vrx/output/measurement_output.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/output/property_rows.h"

namespace vrx::tool {
namespace {

struct StandardOptions {
  JobOptions job;
  std::vector<std::string> files;
  std::string name, newName, missing;
  bool withTrials = false;
  CurveInputOptions input;
  JudgingOptions judging;
  Format format = Format::kTable;
};

// The standards of files by their names, in the order of the files.
class StandardsOfFiles {
 public:
  void Read(const std::string& file, const CurveInputOptions& input) {
    CurveReader curves = OpenCurves(file, input);
    CurveRow row;
    while (curves.Next(row)) Add(curves, row);
    WarnAboutInput(curves);
  }
  std::vector<store::Standard>& All() { return standards_; }

 private:
  void Add(const CurveReader& curves, const CurveRow& row) {
    const auto [place, isNew] = places_.try_emplace(std::string(row.id), standards_.size());
    if (isNew) standards_.emplace_back().name = row.id;
    store::Standard& standard = standards_[place->second];
    if (std::ranges::find(standard.curves, row.geometry, &store::MeasuredCurve::geometry) !=
        standard.curves.end()) {
      curves.Source().FailRow("standard \"" + standard.name + "\" appears twice" +
                              (curves.HasGeometries() ? " with this geometry" : "") +
                              "; vrx average makes one of several readings");
    }
    standard.curves.push_back(MeasuredCurveOf(curves, row));
  }

  std::vector<store::Standard> standards_;
  std::unordered_map<std::string, std::size_t> places_;
};

// Conditions that were not said are kept with a standard, and judge by it from then on.
bool TakesUsualAngle(const store::Standard& standard) {
  return standard.conditions && standard.conditions->angle == JudgeDefaults::kAngle &&
         !std::ranges::all_of(standard.curves, SystemOptions::HasAngle, &store::MeasuredCurve::geometry);
}

void RunAdd(const StandardOptions& options, const Command& command) {
  StandardsOfFiles files;
  for (const std::string& file : options.files) files.Read(file, options.input);
  const auto job = OpenJob(options.job);
  AddedSettings settings(*job, options.job.Shown(), options.judging, options.missing, command);
  for (store::Standard& standard : files.All()) settings.Give(standard);
  const store::AddedStandards added = job->AddStandards(files.All(), options.job.Author());
  settings.SayWhatWasKept();
  options.judging.system.WarnAboutAngle(std::ranges::none_of(files.All(), TakesUsualAngle));
  if (!added.returned.empty()) {
    PrintMessage(options.job.Shown() + ": " + Listed(added.returned) +
                 ": in use again; conditions and limits of before are not kept");
  }
  PrintMessage(options.job.Shown() + ": " + "standards: " + std::to_string(added.added) + " added, " +
               std::to_string(added.changed) + " changed, " + std::to_string(added.unchanged) + " unchanged");
}

std::string GeometriesText(const std::vector<int32_t>& geometries) {
  std::string text;
  for (const int32_t geometry : geometries) {
    if (geometry != kNoGeometry) text += (text.empty() ? "" : ",") + GeometryName(geometry);
  }
  return text;
}

void RunList(const StandardOptions& options) {
  const auto job = OpenJob(options.job);
  OutputStream output;
  const auto rows = MakeRowWriter(options.format, output,
                                  {{"standard"},
                                   {"version"},
                                   {.name = "added", .room = Room::kSpare},
                                   {.name = "geometries", .room = Room::kSpare},
                                   {"system"},
                                   {"illuminants"},
                                   {"limits"},
                                   {"trials"}});
  for (const store::StandardEntry& entry : job->Standards()) {
    rows->Text(entry.name);
    rows->Integer(entry.version);
    rows->Text(entry.added);
    rows->Text(GeometriesText(entry.geometries));
    rows->Text(entry.conditions ? ShortNameOf(entry.conditions->difference.system) : "");
    rows->Text(entry.conditions ? CodesOf(entry.conditions->illuminants) : "");
    rows->Text(entry.hasLimits ? "own" : "");
    rows->Integer(entry.trials);
    rows->EndRow();
  }
  rows->Finish();
  output.Finish();
}

// Limits in the words of the options that give them.
std::string LimitsText(const JudgeLimits& limits) {
  std::string text;
  const auto add = [&text](double number) { text += (text.empty() ? "" : ",") + ShortestText(number); };
  if (const auto* box = std::get_if<CBoxTolData>(&limits)) {
    const bool isTotal = std::all_of(box->begin(), box->begin() + CBoxTolData::kTotal,
                                     [](double limit) { return std::isinf(limit); });
    if (isTotal) return "total " + ShortestText((*box)[CBoxTolData::kTotal]);
    for (const double number : *box) add(number);
    return "box " + text;
  }
  if (const auto* ellipse = std::get_if<CEllipseData>(&limits)) {
    for (const double number : *ellipse) add(number);
    return "ellipsoid " + text;
  }
  return "the system's ellipsoid";
}

void RunShow(const StandardOptions& options) {
  const auto job = OpenJob(options.job);
  const std::optional<store::Standard> standard = job->FindStandard(options.name);
  if (!standard)
    throw InputError(options.job.Shown() + ": " + store::UnknownStandardText(*job, options.name));
  OutputStream output;
  PropertyRows rows(options.format, output);
  rows.Add("standard", standard->name);
  rows.Add("version", std::to_string(standard->version));
  if (standard->conditions) rows.Add("conditions", store::ConditionsText(*standard->conditions));
  for (const store::StandardLimits& row : standard->limits) {
    std::string where = GeometryName(row.geometry);
    if (row.illuminant >= 0)
      where += (where.empty() ? "" : " ") + CodeOf(static_cast<vrxIlluminant>(row.illuminant));
    rows.Add(where.empty() ? "limits" : "limits, " + where, LimitsText(row.limits));
  }
  for (const store::MeasuredCurve& curve : standard->curves) {
    std::string numbers;
    for (const double sample : curve.samples) numbers += (numbers.empty() ? "" : " ") + ShortestText(sample);
    const std::string geometry = GeometryName(curve.geometry);
    rows.Add(geometry.empty() ? "curve" : "curve, " + geometry, numbers);
    if (!curve.date.empty()) rows.Add("measured", curve.date);
    for (const std::string& line : SplitList(curve.measuring, '\n')) {
      const std::size_t tab = line.find('\t');
      if (tab != std::string::npos) rows.Add(line.substr(0, tab), line.substr(tab + 1));
    }
  }
  rows.Finish();
  output.Finish();
}

void AddAdding(Command& job) {
  const auto options = std::make_shared<StandardOptions>();
  Command command = job.AddCommand("add-standard", "Add standards from files, or give them new versions");
  command.AddOption("FILES", options->files, "Curves of the standards; each id becomes one")
      .ReadsFile()
      .Required();
  command
      .AddOption("--missing-geometries", options->missing,
                 "What becomes of curves that a standard has already and the files do not, those of other "
                 "geometries: kept in its new version, or dropped from it")
      .Shows("keep|drop");
  AddJudgingOptions(command, options->judging, UsualIlluminants());
  AddCurveInputOptions(command, options->input);
  AddJobChangeOptions(command, options->job);
  command.SetAction([options, command] {
    RunAdd(*options, command);
    return kExitPass;
  });
  command.SetNotes(
      "Conditions and limits that are given are kept with the standards, and vrx judge --job judges by "
      "them.\n"
      "A standard that is there already and has changed gets a new version, which keeps the conditions and\n"
      "limits that are not given; earlier verdicts keep theirs. One that comes with fewer geometries is a\n"
      "question.\n\n"
      "Example:\n"
      "  vrx job add-standard master.csv --job plant.vrxjob --system cie2000 --tolerance 0.8 --illuminants "
      "D65,T84\n");
}

}  // namespace

void AddJobStandards(Command& job) {
  AddAdding(job);
  const auto options = std::make_shared<StandardOptions>();
  Command list = job.AddCommand("standards", "List the standards of a job");
  Command show = job.AddCommand("show", "Show a standard, with its conditions, limits and curves");
  for (Command command : {list, show}) {
    AddJobOptions(command, options->job);
    AddFormatOption(command, options->format);
  }
  Command remove = job.AddCommand("remove", "Take a standard out of use; its trials stay");
  Command rename = job.AddCommand("rename", "Give a standard another name");
  for (Command command : {remove, rename}) AddJobChangeOptions(command, options->job);
  for (Command command : {show, remove, rename})
    command.AddOption("STANDARD", options->name, "Id of the standard").Required();
  rename.AddOption("NAME", options->newName, "Its new id").Required();
  remove.AddFlag("--with-trials", options->withTrials, "Remove it even if it has trials");
  SetAction(list, options, RunList);
  SetAction(show, options, RunShow);
  SetAction(remove, options, [](const StandardOptions& given) {
    OpenJob(given.job)->RemoveStandard(given.name, given.withTrials, given.job.Author());
  });
  SetAction(rename, options, [](const StandardOptions& given) {
    OpenJob(given.job)->RenameStandard(given.name, given.newName, given.job.Author());
  });
  list.SetNotes("Example:\n  vrx job standards --job plant.vrxjob\n");
  show.SetNotes("Example:\n  vrx job show P01 --job plant.vrxjob\n");
  remove.SetNotes("Example:\n  vrx job remove P02 --job plant.vrxjob --why \"no longer made\"\n");
  rename.SetNotes("Example:\n  vrx job rename P03 \"Signal red\" --job plant.vrxjob\n");
}

}  // namespace vrx::tool
