#include "tools/vrx/comparison.h"

#include <utility>

#include "tools/vrx/command.h"

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

Comparison::Comparison(const ComparisonOptions& options, const JudgeSettings& settings)
    : standards_(OpenStandards(options, settings)), trials_(OpenCurves(options.trials, options.input)) {}

void Comparison::WarnAboutInput() const {
  WarnAboutFractions(standards_->Reader());
  WarnAboutFractions(trials_);
}

}  // namespace vrx::tool
