// vrx judge: trials against standards, as differences, words and verdicts.

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tools/vrx/command.h"
#include "tools/vrx/commands.h"
#include "tools/vrx/conditions.h"
#include "tools/vrx/curve_input.h"
#include "tools/vrx/judge_output.h"
#include "tools/vrx/output.h"
#include "tools/vrx/standards.h"
#include "tools/vrx/terminal.h"

namespace vrx::tool {
namespace {

struct JudgeOptions {
  std::string standard;
  std::string trials;
  std::string standardId;
  bool pairs = false;
  ViewingOptions viewing;
  SystemOptions system;
  std::string tolerance = "1.5";
  std::string tolerances;
  double warning = 0.75;
  bool strict = false;
  CurveInputOptions input;
  Format format = Format::kTable;
};

JudgeSettings SettingsOf(const JudgeOptions& options) {
  if (!(options.warning >= 0 && options.warning <= 1)) throw InputError("--warning: a factor from 0 to 1");
  JudgeSettings settings;
  settings.illuminants = options.viewing.Illuminants();
  settings.observer = options.viewing.Observer();
  settings.difference = options.system.Settings();
  settings.warningFactor = options.warning;
  settings.tolerances.SetDefault(BoxFromNumbers(ParseNumbers(options.tolerance, "--tolerance")));
  if (!options.tolerances.empty()) {
    CsvReader csv(options.tolerances);
    settings.tolerances.Load(csv);
  }
  return settings;
}

// Judges every trial; true when all of them pass.
bool JudgeAll(CurveReader& trials, Standards& standards, JudgeOutput& results, std::size_t illuminants) {
  bool allPass = true;
  ProgressBar progress(trials.Csv().Size());
  CurveRow trial;
  while (trials.Next(trial)) {
    Judge& judge = standards.For(trial);
    judge.Evaluate(trial.curve);
    results.Add(trial, judge);
    for (std::size_t i = 0; i < illuminants; ++i) allPass = allPass && judge.Result(i).overall == kPass;
    progress.Update(trials.Csv().Position());
  }
  return allPass;
}

ExitStatus RunJudge(const JudgeOptions& options) {
  if (options.standard == "-" && options.trials == "-") {
    throw InputError("standard and trials cannot both come from standard input");
  }
  const JudgeSettings settings = SettingsOf(options);
  CurveReader standardReader = OpenCurves(options.standard, options.input);
  CurveReader trials = OpenCurves(options.trials, options.input);
  const std::unique_ptr<Standards> standards =
      options.pairs ? PairedStandards(std::move(standardReader), settings)
                    : OneStandard(std::move(standardReader), options.standardId, settings);
  OutputStream output;
  const auto results = MakeJudgeOutput(options.format, output, settings, trials);
  const bool allPass = JudgeAll(trials, *standards, *results, settings.illuminants.size());
  results->Finish();
  output.Finish();
  WarnAboutFractions(standards->Reader());
  WarnAboutFractions(trials);
  return options.strict && !allPass ? kExitNotPassed : kExitPass;
}

void AddOptions(CLI::App& command, JudgeOptions& options) {
  command
      .add_option("STANDARD", options.standard,
                  "Curves of the standard, or standards (- reads standard input)")
      ->required();
  command.add_option("TRIALS", options.trials, "Curves of the trials (- reads standard input)")->required();
  auto* id = command.add_option("--standard-id", options.standardId, "Which row is the standard");
  id->option_text("ID [the first row]")->check(RefuseEmpty);
  command.add_flag("--pairs", options.pairs, "Judge each trial against the standard of the same id")
      ->excludes(id);
  AddViewingOptions(command, options.viewing, "D65,A,CWF");
  AddSystemOptions(command, options.system, "cmc");
  command
      .add_option(
          "--tolerance", options.tolerance,
          "One limit for everything, or seven: plus and minus of the three components, then the total")
      ->option_text("LIMITS [1.5]");
  command
      .add_option("--tolerances", options.tolerances,
                  "Limits per standard, geometry and illuminant, from a CSV file")
      ->option_text("FILE");
  command.add_option("--warning", options.warning, "Fraction of a limit above which there is a warning")
      ->option_text("FACTOR [0.75]");
  command.add_flag("--strict", options.strict, "Exit status 1 when a trial does not pass");
  AddCurveInputOptions(command, options.input);
  AddFormatOption(command, options.format);
}

}  // namespace

void AddJudge(CLI::App& app, int& status) {
  const auto options = std::make_shared<JudgeOptions>();
  CLI::App* command = app.add_subcommand("judge", "Judge trials against a standard");
  AddOptions(*command, *options);
  command->footer(
      "Each trial gets, under each illuminant, its difference from the standard, three words for the shade,\n"
      "and the verdict of the box, of the total difference, and of both: 0 fail, 1 warning, 2 pass.\n\n"
      "Examples:\n"
      "  vrx judge standard.csv batch.csv                      the first row of standard.csv, CMC (2:1)\n"
      "  vrx judge master.csv lot.csv --pairs --strict         row against row of the same id\n"
      "  vrx judge std.csv batch.csv --system cie2000 --tolerance 0.8 --illuminants D65,T84\n"
      "  vrx judge std.csv batch.csv --tolerance 1,1,0.6,0.6,0.6,0.6,1.2 --format json\n"
      "  export.sh | vrx judge std.csv - --tolerances limits.csv --format csv\n");
  command->callback([options, &status] { status = RunJudge(*options); });
}

}  // namespace vrx::tool
