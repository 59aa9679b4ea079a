// vrx fit-tolerance: the ellipsoid that belongs to the differences that people accepted.

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/foundation/numbers.h>
#include <vrxmath/tolerance/ellipse_fit.h>
#include <vrxmath/tolerance/lone_difference.h>

#include <vrxio/csv/tolerance_table.h>
#include <vrxio/csv/value_columns.h>
#include <vrxio/text/decimal.h>
#include <vrxstore/standard_names.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/job/job_filter.h"
#include "tools/vrx/job/job_options.h"
#include "tools/vrx/job/job_reader.h"
#include "tools/vrx/judging/judging_options.h"
#include "tools/vrx/judging/standards.h"
#include "tools/vrx/judging/verdict_fit.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/report/result_report.h"

namespace vrx::tool {
namespace {

struct FitOptions {
  std::string accepted;
  std::string verdicts;
  bool everySystem = true;  // nobody chose one
  std::string standard;
  std::string standardId;
  bool pairs = false;
  ToleranceFitSettings fit;
  ViewingOptions viewing;
  SystemOptions system;
  CurveInputOptions input;
  JobOptions jobOptions;
  std::shared_ptr<store::Store> job;  ///< that the trials come from; null for files
  std::string forCurves;              // an option that was given and has no meaning for plain differences
  Format format = Format::kTable;
  ReportOptions report;
};

// The accepted trials under one illuminant and geometry.
struct Cloud {
  std::vector<LabDifference> differences;
  double largestTotal = 0.0;

  /// `source` refuses the row.
  template <class SOURCE>
  void Add(const SOURCE& source, const LabDifference& difference, double total) {
    constexpr std::size_t kMost = 200'000;
    if (differences.size() == kMost) source.FailRow("more than 200000 differences to fit");
    differences.push_back(difference);
    largestTotal = std::max(largestTotal, total);
  }
};

// The clouds of a file, with what they have in common.
struct Accepted {
  std::string file;
  std::string standard;  // empty when there are several, or one without a name
  std::string_view system;
  int32_t observer;                      // 2 or 10 degrees; 0 for all
  std::vector<std::string> illuminants;  // one empty text for all
  std::string measured = {}, date = {};  // how and when curves were
  std::vector<InputWarning> warnings = {};
  std::map<std::pair<int32_t, std::size_t>, Cloud> clouds = {};  // by geometry and place of the illuminant

  std::string Place(int32_t geometry, std::size_t illuminant) const {
    std::string place = file;
    for (const std::string& name : {GeometryName(geometry), illuminants[illuminant]}) {
      if (!name.empty()) place += ", " + name;
    }
    return place;
  }
};

std::unique_ptr<Standards> OpenStandards(const FitOptions& options, CurveReader& trials,
                                         Content content = Content::kCurves) {
  if (options.job != nullptr) {
    return OneStandard(CurveReader(ReadStandards(*options.job, options.accepted, options.standardId)),
                       options.standardId, &trials);
  }
  const bool oneFile = options.standard.empty();
  if (oneFile && options.pairs) throw InputError("--pairs needs --standard FILE");
  const std::string& file = options.verdicts.empty() ? options.accepted : options.verdicts;
  const std::string& standardFile = oneFile ? file : options.standard;
  if (file == "-" && standardFile == "-") {
    throw InputError("the standard and the trials cannot both come from standard input: name a file");
  }
  CurveReader reader = OpenCurves(standardFile, oneFile ? options.input : options.input.OfStandards(),
                                  content, options.verdicts.empty() ? nullptr : &IsVerdictHeading);
  return StandardsForTrials(std::move(reader), options.standardId, options.pairs, trials);
}

// The differences of accepted curves from their standard. In a file that holds the standard too, every other
// row is a trial.
Accepted ReadCurves(CurveReader trials, const FitOptions& options) {
  const JudgeSettings settings = SettingsUnder(options.viewing, options.system);
  const auto standards = OpenStandards(options, trials);
  Accepted accepted{
      options.accepted, "", ShortNameOf(settings.difference.system), DegreesOf(settings.observer), {}};
  for (const vrxIlluminant illuminant : settings.illuminants)
    accepted.illuminants.push_back(ShownIlluminant(illuminant));
  const bool isOne = options.job != nullptr || !(options.pairs || trials.HasStandards());
  ProgressBar progress(trials.Source().Size());
  Judge judge(settings);
  CurveRow trial;
  while (trials.Next(trial)) {
    const Standard& standard = standards->Of(trial);
    if (isOne && standards->Reader().HasNames()) accepted.standard = standard.id;
    if (options.standard.empty() && standard.id == trial.id) continue;
    judge.Evaluate(standard, trial);
    const Judgement judgement = judge.Row();
    for (std::size_t i = 0; i < settings.illuminants.size(); ++i) {
      const auto& d = judgement.under[i].labDifference;
      accepted.clouds[{trial.geometry, i}].Add(trials.Source(), {d[0], d[1], d[2]},
                                               judgement.under[i].difference.back());
    }
    progress.Update(trials.Source().Position());
  }
  standards->EndTrials();
  WarnAboutInput(trials);
  accepted.measured = MeasuringText(trials);
  accepted.date = trials.FirstConditions().date;
  accepted.warnings = WarningsOf(trials);
  return accepted;
}

// True for a file whose first line has the columns of differences.
bool HoldsDifferences(InputStream& input) {
  const std::string beginning = PeekInput(input, std::size_t{64} << 10);
  return beginning.substr(0, beginning.find('\n')).find("dL") != std::string::npos;
}

// Differences as they stand in the file. Whatever illuminant and observer they came from, their total is
// dE*ab.
Accepted ReadDifferences(CsvReader csv, const FitOptions& options) {
  constexpr double kLargest = 1000;  // several times that of black and white
  if (!HasColumns(csv.Header(), {"dL", "da", "db"})) {
    csv.FailRow("the header names neither wavelengths nor dL,da,db");
  }
  if (!options.forCurves.empty()) {
    csv.FailRow(options.forCurves + " needs curves, which have wavelengths in their header");
  }
  Accepted accepted{csv.Name(), "", ShortNameOf(vrxSystemLab), 0, {""}};
  ValueRows rows(csv, {"dL", "da", "db"}, 3);
  while (rows.Next()) {
    const LabDifference d{rows.Values()[0], rows.Values()[1], rows.Values()[2]};
    const bool sound = std::ranges::all_of(rows.Values(), [](double v) { return std::fabs(v) <= kLargest; });
    if (!sound) csv.FailRow("a difference beyond 1000");
    accepted.clouds[{kNoGeometry, 0}].Add(csv, d, std::sqrt(d.dL * d.dL + d.da * d.da + d.db * d.db));
  }
  return accepted;
}

CEllipseData Fit(const Cloud& cloud, const ToleranceFitSettings& settings, const std::string& place) {
  CEllipseData ellipse;
  switch (FitTolerance(cloud.differences, cloud.largestTotal, settings, ellipse)) {
    case ToleranceFitError::kTooFew:
      throw InputError(place + ": " + std::to_string(cloud.differences.size()) +
                       " accepted differences are not enough; the fit needs " +
                       std::to_string(settings.NeededDifferences()));
    case ToleranceFitError::kFlat:
      throw InputError(
          place +
          ": the accepted differences are flat: they have the same lightness, or lie on one line in "
          "the a*-b* plane");
    case ToleranceFitError::kNoSurface:
      throw InputError(place + ": no ellipsoid has its surface near the differences; use --method smallest");
    case ToleranceFitError::kNone:
      break;
  }
  if (const auto lone = FindLoneDifference(cloud.differences, settings))
    PrintMessage(place + ": warning: " + lone->Text());
  return ellipse;
}

// The accepted differences and the ellipsoid about them.
PlaneChart PlaneOf(const std::string& title, const Cloud& cloud, const CEllipseData& ellipse) {
  PlaneChart chart;
  chart.title = title;
  chart.plane.xHeading = u"\u0394a*";
  chart.plane.yHeading = u"\u0394b*";
  chart.lightness.heading = u"\u0394L*";
  chart.plane.limit = pictures::EllipseOutline(ellipse, 1);
  chart.lightness.limit = pictures::EllipseLightness(ellipse, 1);
  chart.plane.areJudged = chart.lightness.areJudged = false;
  for (const LabDifference& d : cloud.differences)
    chart.plane.trials.push_back({d.da, d.db, d.dL, kPass, {}});
  chart.lightness.trials = chart.plane.trials;
  return chart;
}

void WriteFits(const Accepted& accepted, const FitOptions& options) {
  std::vector<Column> columns{{"standard"},
                              {.name = "geometry", .room = Room::kSpare},
                              {"system"},
                              {"illuminant"},
                              {.name = "observer", .room = Room::kSpare}};
  for (const std::string_view name : EllipseColumns()) {
    const bool isAxis = name == "lightness" || name == "major" || name == "minor" || name == "angle";
    columns.push_back(
        {.name = std::string(name), .decimals = 4, .room = isAxis ? Room::kNeeded : Room::kSpare});
  }
  OutputStream output;
  ResultReport report(options.report, ReportText::kEllipsoids);
  report.AddFile(ReportText::kAccepted, options.accepted);
  report.AddFile(ReportText::kStandardsFile, options.standard);
  report.AddInput(accepted.measured, accepted.date, accepted.warnings);
  report.AddFact(ReportText::kMethod,
                 options.fit.method == ToleranceFitSettings::kSmallest ? "smallest" : "surface");
  report.AddFact(ReportText::kMargin, FixedText(options.fit.margin));
  const auto rows = report.Rows(options.format, output, std::move(columns));
  for (const auto& [key, cloud] : accepted.clouds) {
    const auto& [geometry, i] = key;
    const CEllipseData ellipse = Fit(cloud, options.fit, accepted.Place(geometry, i));
    rows->Text(accepted.standard);
    rows->Text(GeometryName(geometry));
    rows->Text(accepted.system);
    rows->Text(accepted.illuminants[i]);
    if (accepted.observer != 0) {
      rows->Integer(accepted.observer);
    } else {
      rows->Number(kUnset);
    }
    for (const double number : ellipse) rows->Number(number);
    rows->EndRow();
    if (report.IsWanted()) report.AddPlane(PlaneOf(accepted.Place(geometry, i), cloud, ellipse));
  }
  rows->Finish();
  report.Save();
  output.Finish();
}

// A system with its parameters, as --parameters takes them.
std::string ParametersText(const CDifferenceSettings& settings) {
  std::string text;
  for (int32_t k = 0; k < ParameterCount(settings.system); ++k) {
    text += (k > 0 ? ":" : "") + ShortestText(settings.parameters[static_cast<std::size_t>(k)]);
  }
  return text;
}

void WriteVerdictFits(const VerdictFits& result, const JudgeSettings& conditions, RowWriter& rows) {
  const double all = static_cast<double>(result.accepted + result.rejected);
  for (const SystemLimitFit& one : result.fits) {
    rows.Text(ShortNameOf(one.difference.system));
    rows.Text(ParametersText(one.difference));
    rows.Text(ShownIlluminant(conditions.illuminants[one.illuminant]));
    rows.Number(one.fit.limit);
    if (IsUnset(one.fit.limit)) {
      for (int32_t k = 0; k < 5; ++k) rows.Number(kUnset);
    } else {
      for (const std::size_t count : {one.fit.Wrong(), one.fit.wronglyAccepted, one.fit.wronglyRejected})
        rows.Integer(static_cast<int64_t>(count));
      rows.Known(100.0 * (1.0 - static_cast<double>(one.fit.Wrong()) / all));
      rows.Known(one.stress);
    }
    rows.EndRow();
  }
}

// The limit of every system that agrees best with what people decided.
void RunVerdicts(const FitOptions& given) {
  FitOptions options = given;
  CurveReader trials =
      OpenCurves(options.verdicts, options.input, Content::kCurvesOrColors, &IsVerdictHeading);
  const auto standards = OpenStandards(options, trials, Content::kCurvesOrColors);
  options.viewing.Follow({&trials});
  JudgeSettings conditions;
  conditions.illuminants = options.viewing.Illuminants();
  conditions.observer = options.viewing.Observer();
  conditions.angle = options.system.Angle();
  const VerdictFits result = FitVerdicts(
      trials, *standards, conditions,
      options.everySystem ? UsualLimitChoices() : std::vector<CDifferenceSettings>{options.system.Settings()},
      options.standard.empty());
  OutputStream output;
  ResultReport report(options.report, ReportText::kAccepted);
  report.AddFile(ReportText::kAccepted, options.verdicts);
  report.AddFile(ReportText::kStandardsFile, options.standard);
  report.AddViewing(conditions.illuminants, conditions.observer);
  report.AddInput(trials);
  const auto rows = report.Rows(options.format, output,
                                {{"system"},
                                 {"parameters"},
                                 {"illuminant"},
                                 {"limit", "limit", 3},
                                 {"wrong"},
                                 {"wrongly_accepted", "accepted, people rejected"},
                                 {"wrongly_rejected", "rejected, people accepted"},
                                 {"right_percent", "right, %", 1},
                                 {"stress", "STRESS", 1}});
  WriteVerdictFits(result, conditions, *rows);
  rows->Finish();
  report.Save();
  output.Finish();
  WarnAboutInput(trials);
}

Accepted ReadAccepted(const FitOptions& options) {
  if (options.job != nullptr) {
    const store::TrialFilter filter{.standard = options.standardId};
    const store::LastJudgements last(*options.job, filter);
    return ReadCurves(CurveReader(ReadTrials(*options.job, options.accepted, filter, last, true)), options);
  }
  InputStream input = OpenText(options.accepted);
  return HoldsDifferences(input) ? ReadDifferences(CsvReader(std::move(input), CsvDialect()), options)
                                 : ReadCurves(OpenCurves(std::move(input), options.input), options);
}

// Says how many accepted trials there are that were accepted as they lay about another curve of the standard: about the present one they
// may lie elsewhere. Throws InputError where none was accepted.
void LookAtAccepted(store::Store& job, const std::string& shown, const std::string& name) {
  const std::vector<store::MeasuredCurve> curves = job.FindStandard(name).value().curves;
  const store::LastJudgements last(job, {.standard = name});
  const auto cursor = job.Trials({.standard = name});
  int64_t all = 0, accepted = 0, earlier = 0;
  for (store::StoredTrial trial; cursor->Next(trial);) {
    if (!last.Counts(trial)) continue;
    ++all;
    if (!trial.IsAccepted()) continue;
    ++accepted;
    earlier +=
        std::ranges::find(curves, trial.standardSamples, &store::MeasuredCurve::samples) == curves.end();
  }
  if (all > 0 && accepted == 0) {
    throw InputError(shown + ": of the " + std::to_string(all) + " trials of standard \"" + name +
                     "\" none is accepted");
  }
  TellEarlier(shown, last);
  if (earlier == 0) return;
  PrintMessage(shown + ": warning: " + std::to_string(earlier) + " of " + std::to_string(accepted) +
               " accepted trials were held against an earlier curve of standard \"" + name +
               "\"; the limits are fitted about the present one");
}

// Turns a run without a file into one over the accepted trials of a standard of the job, under its conditions where the options name
// none.
void OpenJobOf(FitOptions& options, const Command& command) {
  if (!options.accepted.empty() && !options.jobOptions.file.empty())
    throw InputError("--job: the accepted trials come from the job; name no file");
  if (!options.accepted.empty()) return;
  if (options.jobOptions.File().empty())
    throw InputError("ACCEPTED: name a file of accepted trials, or one of verdicts by --verdicts");
  options.job = OpenJob(options.jobOptions);
  options.accepted = options.standard = options.jobOptions.Shown();
  if (options.pairs) throw InputError("--pairs is for files");
  const std::vector<store::StandardEntry> entries = options.job->Standards();
  if (options.standardId.empty() && entries.size() == 1) options.standardId = entries.front().name;
  if (options.standardId.empty())
    throw InputError("--standard-id: name the standard of the job to fit limits for");
  const auto entry = std::ranges::find(entries, options.standardId, &store::StandardEntry::name);
  if (entry == entries.end())
    throw InputError(options.accepted + ": " + store::UnknownStandardText(*options.job, options.standardId));
  LookAtAccepted(*options.job, options.accepted, options.standardId);
  if (!entry->conditions) return;
  const JudgeConditions& own = *entry->conditions;
  if (options.viewing.illuminants.empty()) options.viewing.illuminants = CodesOf(own.illuminants);
  if (options.viewing.observer.empty()) options.viewing.observer = std::to_string(DegreesOf(own.observer));
  if (command.IsGiven("--system") || command.IsGiven("--parameters")) return;
  options.system.system = ShortNameOf(own.difference.system);
  for (int32_t k = 0; k < ParameterCount(own.difference.system); ++k)
    options.system.parameters +=
        (k == 0 ? "" : ",") + ShortestText(own.difference.parameters[static_cast<std::size_t>(k)]);
}

void RunFit(FitOptions& options, const Command& command) {
  if (!options.verdicts.empty()) return RunVerdicts(options);
  OpenJobOf(options, command);
  if (!(options.fit.margin > 0 && options.fit.margin <= 100)) {
    throw InputError("--margin: must be a factor above 0 and up to 100");
  }
  const Accepted accepted = ReadAccepted(options);
  if (accepted.clouds.empty()) throw InputError(accepted.file + ": there are no accepted trials");
  WriteFits(accepted, options);
}

void AddOptions(Command& command, FitOptions& options) {
  command
      .AddOption("ACCEPTED", options.accepted,
                 "Curves of the accepted trials, or columns dL,da,db (- for standard input)")
      .ReadsFile();
  command
      .AddOption("--verdicts", options.verdicts,
                 "Curves or colours with a column verdict (accept or reject): find the limit with the fewest "
                 "wrong decisions in "
                 "every difference system, or in that of --system")
      .ReadsFile()
      .Shows("FILE");
  command.AddOption("--standard", options.standard, "Curves of the standard or standards")
      .ReadsFile()
      .Shows("FILE [ACCEPTED]");
  Option id = command.AddOption("--standard-id", options.standardId, "Id of the row to use as the standard");
  id.Shows("ID [first row]");
  command.AddFlag("--pairs", options.pairs, "Compare each trial with the standard of the same id")
      .Excludes(id);
  command.AddChoice("--method", options.fit.method, {"smallest", "surface"},
                    "smallest: the smallest ellipsoid that contains every accepted trial; surface: the one "
                    "whose surface is nearest to trials at the limit of acceptance");
  command.AddChoice("--centre", options.fit.centre, {"free", "standard"},
                    "Centre of the ellipsoid: wherever it fits best, or at the standard");
  command
      .AddOption("--margin", options.fit.margin, "Multiply the semi-axes and the limit of the total by this")
      .Shows("FACTOR [1]");
  AddViewingOptions(command, options.viewing, UsualIlluminants());
  AddSystemOptions(command, options.system, "cmc");
  AddCurveInputOptions(command, options.input);
  AddJobOptions(command, options.jobOptions);
  AddFormatOption(command, options.format);
  AddReportOptions(command, options.report);
}

// The first option that was given of those that only curves have a use for.
std::string OptionForCurves(const Command& command) {
  for (const char* name : {"--standard", "--standard-id", "--pairs", "--illuminants", "--observer",
                           "--system", "--parameters", "--fraction"}) {
    if (command.IsGiven(name)) return name;
  }
  return "";
}

}  // namespace

void AddFitTolerance(Command& tool) {
  const auto options = std::make_shared<FitOptions>();
  Command command =
      tool.AddCommand("fit-tolerance", "Fit a tolerance ellipsoid to what has been accepted so far");
  AddOptions(command, *options);
  command.SetNotes(
      "vrx judge --ellipses reads the csv output. The limit of the total difference is the largest total "
      "that\n"
      "was accepted, in the system given by --system; for plain differences it is dE*ab (lab).\n\n"
      "Examples:\n"
      "  vrx fit-tolerance accepted.csv                        # the first row is the standard\n"
      "  vrx fit-tolerance lots.csv --standard master.csv --pairs --margin 1.05 --format csv > limits.csv\n"
      "  vrx judge master.csv batch.csv --ellipses limits.csv\n"
      "  vrx fit-tolerance --verdicts decisions.csv --illuminants D65   # the first row is the standard\n"
      "  vrx fit-tolerance --job history.vrxjob            # the trials of a job that were accepted\n"
      "  vrx fit-tolerance borderline.csv --method surface --centre standard --illuminants D65\n");
  command.SetAction([options, command] {
    options->everySystem = !command.IsGiven("--system") && !command.IsGiven("--parameters");
    if (!options->verdicts.empty()) {
      for (const char* name : {"ACCEPTED", "--method", "--centre", "--margin"}) {
        if (command.IsGiven(name)) throw InputError(std::string(name) + ": not with --verdicts");
      }
    }
    options->forCurves = OptionForCurves(command);
    RunFit(*options, command);
    return kExitPass;
  });
}

}  // namespace vrx::tool
