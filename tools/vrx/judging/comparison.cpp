
#include "tools/vrx/judging/comparison.h"

#include <utility>

#include <vrxio/csv/tolerance_table.h>
#include "tools/vrx/base/command.h"

namespace vrx::tool {
namespace {

CurveReader OpenTrials(const ComparisonOptions& options) {
  if (!options.openTrials && options.standard == "-" && options.trials == "-") {
    throw InputError("the standard and the trials cannot both come from standard input: name a file");
  }
  CurveReader trials =
      options.openTrials ? options.openTrials() : OpenCurves(options.trials, options.input, options.content);
  trials.CheckBy(options.checkTrial);
  return trials;
}

std::unique_ptr<Standards> OpenStandards(const ComparisonOptions& options, ViewingOptions& viewing,
                                         CurveReader& trials) {
  CurveReader reader = options.openStandards
                           ? options.openStandards()
                           : OpenCurves(options.standard, options.input.OfStandards(), options.content);
  RequireCurvesToSum(options.input, {&trials, &reader});
  viewing.Follow({&reader, &trials});
  const bool areNamed = options.pairs || trials.HasStandards() || !options.standardId.empty();
  if (options.chooseStandards && !areNamed) return options.chooseStandards(std::move(reader));
  return StandardsForTrials(std::move(reader), options.standardId, options.pairs, trials);
}

}  // namespace

void AddComparisonOptions(Command& command, ComparisonOptions& options, Content content, bool areRequired) {
  options.content = content;
  const std::string what = content == Content::kCurves ? "Curves of the " : "Curves or colours of the ";
  Option standard =
      command.AddOption("STANDARD", options.standard, what + "standard or standards (- for standard input)");
  Option trials = command.AddOption("TRIALS", options.trials, what + "trials (- for standard input)");
  for (Option file : {standard, trials}) {
    file.ReadsFile();
    if (areRequired) file.Required();
  }
  AddStandardOptions(command, options);
}

void AddStandardOptions(Command& owner, ComparisonOptions& options) {
  Command command = owner.Group("Standard");
  Option id = command.AddOption("--standard-id", options.standardId, "Id of the row to use as the standard");
  id.Shows("ID [first row]");
  command.AddFlag("--pairs", options.pairs, "Compare each trial with the standard of the same id")
      .Excludes(id);
  command.AddFlag("--average", options.average, "Average the rows of each id into one trial");
  AddCurveInputOptions(command, options.input);
}

Comparison::Comparison(const ComparisonOptions& options, ViewingOptions& viewing)
    : average_(options.average),
      trials_(OpenTrials(options)),
      standards_(OpenStandards(options, viewing, trials_)) {}

bool Comparison::NextTrial(CurveRow& trial) {
  if (average_) {
    if (nextReadings_ == 0) readings_ = ReadReadings(trials_, 0);
    if (nextReadings_ < readings_.size()) {
      trial = readings_[nextReadings_++].Mean();
      return true;
    }
  } else if (trials_.Next(trial)) {
    return true;
  }
  standards_->EndTrials();
  return false;
}

void Comparison::WarnAboutInput() const {
  tool::WarnAboutInput(standards_->Reader(), trials_);
}

}  // namespace vrx::tool
