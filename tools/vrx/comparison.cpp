
#include "tools/vrx/comparison.h"

#include <utility>

#include "tools/vrx/commands/command.h"
#include "tools/vrx/tolerance_table.h"

namespace vrx::tool {
namespace {

std::unique_ptr<Standards> OpenStandards(const ComparisonOptions& options, const JudgeSettings& settings) {
  if (options.standard == "-" && options.trials == "-") {
    throw InputError("standard and trials cannot both come from standard input");
  }
  CurveReader reader = OpenCurves(options.standard, options.input);
  return options.pairs ? PairedStandards(std::move(reader), settings)
                       : OneStandard(std::move(reader), options.standardId, settings);
}

}  // namespace

void AddComparisonOptions(CLI::App& command, ComparisonOptions& options) {
  command
      .add_option("STANDARD", options.standard,
                  "Curves of the standard, or standards (- reads standard input)")
      ->required();
  command.add_option("TRIALS", options.trials, "Curves of the trials (- reads standard input)")->required();
  auto* id = command.add_option("--standard-id", options.standardId, "Which row is the standard");
  id->option_text("ID [the first row]")->check(RefuseEmpty);
  command.add_flag("--pairs", options.pairs, "Compare each trial with the standard of the same id")
      ->excludes(id);
  AddCurveInputOptions(command, options.input);
}

void AddJudgingOptions(CLI::App& command, JudgingOptions& options) {
  AddViewingOptions(command, options.viewing, "D65,A,CWF");
  AddSystemOptions(command, options.system, "cmc");
  command
      .add_option(
          "--tolerance", options.tolerance,
          "One limit for everything, or seven: plus and minus of the three components, then the total")
      ->option_text("LIMITS [1.5]");
  command.add_option("--warning", options.warning, "Fraction of a limit above which there is a warning")
      ->option_text("FACTOR [0.75]");
}

JudgeSettings SettingsOf(const JudgingOptions& options) {
  if (!(options.warning >= 0 && options.warning <= 1)) throw InputError("--warning: a factor from 0 to 1");
  JudgeSettings settings;
  settings.illuminants = options.viewing.Illuminants();
  settings.observer = options.viewing.Observer();
  settings.difference = options.system.Settings();
  settings.warningFactor = options.warning;
  settings.box = BoxFromNumbers(ParseNumbers(options.tolerance, "--tolerance"));
  return settings;
}

Comparison::Comparison(const ComparisonOptions& options, const JudgeSettings& settings)
    : standards_(OpenStandards(options, settings)), trials_(OpenCurves(options.trials, options.input)) {}

void Comparison::WarnAboutInput() const {
  WarnAboutFractions(standards_->Reader());
  WarnAboutFractions(trials_);
}

}  // namespace vrx::tool
