// The common part of the commands that hold trials against standards: which files, which rows, one pass over them.

#ifndef TOOLS_VRX_JUDGING_COMPARISON_H_
#define TOOLS_VRX_JUDGING_COMPARISON_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vrxio/files/curve_reader.h>
#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/input/readings.h"
#include "tools/vrx/judging/judge.h"
#include "tools/vrx/judging/standards.h"

namespace vrx::tool {

class Command;

struct ComparisonOptions {
  std::string standard;
  std::string trials;
  std::string standardId;
  bool pairs = false;
  bool average = false;
  /// Where standards come from, when it is no file, and which of them is a trial's where neither the trials nor the options above
  /// say so.
  std::function<CurveReader()> openStandards = nullptr;
  /// Likewise of trials.
  std::function<CurveReader()> openTrials = nullptr;
  std::function<std::unique_ptr<Standards>(CurveReader standards)> chooseStandards = nullptr;
  /// Refuses trials, and readings of which one is the mean; null for none.
  std::function<void(const CurveReader& curves, const CurveRow& row)> checkTrial = nullptr;
  Content content = Content::kCurves;
  CurveInputOptions input;
};

/// Adds STANDARD, TRIALS, `--standard-id`, `--pairs`, `--average` and the options of curve files. `content`: what the
/// command can make use of; `areRequired`: the files are.
void AddComparisonOptions(Command& command, ComparisonOptions& options, Content content,
                          bool areRequired = true);

/// Adds the same without the files.
void AddStandardOptions(Command& owner, ComparisonOptions& options);

/// Trials and their standards, opened.
class Comparison {
 public:
  /// Opens both files, whose light `viewing` follows. Throws InputError when they cannot be used.
  Comparison(const ComparisonOptions& options, ViewingOptions& viewing);

  const CurveReader& Trials() const { return trials_; }
  const CurveReader& StandardRows() const { return standards_->Reader(); }

  /// The next trial, or the mean of the next readings with `--average`; false after the last one. One thread at a time.
  bool NextTrial(CurveRow& trial);
  /// The readings of which the trial that was read last is the mean; null where it is none.
  const Readings* LastReadings() const { return nextReadings_ > 0 ? &readings_[nextReadings_ - 1] : nullptr; }
  /// The standard of the trial that was read last.
  const Standard& StandardOf(const CurveRow& trial) { return standards_->Of(trial); }
  /// A progress bar over the file of the trials: begins, shows how far it was read, and ends.
  void BeginProgress() { progress_.emplace(average_ ? 0 : trials_.Source().Size()); }
  void ShowProgress(std::uint64_t position) { progress_->Update(position); }
  void EndProgress() { progress_.reset(); }

  /// Calls `visit(trial, standard)` for each trial in turn, or for the mean of its readings with `--average`, under a
  /// progress bar.
  template <class VISIT>
  void ForEachTrial(VISIT visit) {
    if (average_) {
      for (const Readings& readings : ReadReadings(trials_, 0)) {
        const CurveRow mean = readings.Mean();
        visit(mean, standards_->Of(mean));
      }
      return standards_->EndTrials();
    }
    ProgressBar progress(trials_.Source().Size());
    CurveRow trial;
    while (trials_.Next(trial)) {
      visit(trial, standards_->Of(trial));
      progress.Update(trials_.Source().Position());
    }
    standards_->EndTrials();
  }

  /// Remarks on what was read, once all of it was.
  void WarnAboutInput() const;

 private:
  bool average_;
  CurveReader trials_;
  std::unique_ptr<Standards> standards_;
  std::vector<Readings> readings_;  // of all trials, with `--average`
  std::size_t nextReadings_ = 0;
  std::optional<ProgressBar> progress_;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_COMPARISON_H_
