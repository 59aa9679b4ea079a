// How judgements are written: a row of a table or of csv, or a JSON object, per trial and illuminant, and a
// summary per illuminant at the end of a table.

#ifndef TOOLS_VRX_JUDGING_JUDGE_OUTPUT_H_
#define TOOLS_VRX_JUDGING_JUDGE_OUTPUT_H_

#include <cstddef>
#include <memory>
#include <string_view>

#include "tools/vrx/judging/judge.h"
#include "tools/vrx/judging/judge_summary.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {

/// The columns of a table in front of the differences.
struct JudgeColumns {
  enum Standards {
    kOne,     ///< one standard for all: it stands in the title
    kSameId,  ///< trial and standard have one id, which stands there once
    kNamed,   ///< each trial names its standard
  };
  Standards standards = kOne;
  bool name = false;
  bool geometry = false;
  bool verdictNumbers = false;  ///< csv has 0, 1 and 2 in place of fail, warning and pass
};

/// Texts of trials, made on any thread for an output that appends them in their turn.
class JudgeTexts {
 public:
  virtual ~JudgeTexts() = default;
  /// Begins a run of trials.
  virtual void Clear() = 0;
  /// Takes the next trial, which must live until Finish.
  virtual void Add(const TrialJudgement& judgement) = 0;
  /// Makes the texts of all trials that were taken.
  virtual void Finish() = 0;
  /// The text of a trial of the run, until more are taken.
  virtual std::string_view Text(std::size_t trial) const = 0;
};

class JudgeOutput {
 public:
  virtual ~JudgeOutput() = default;
  /// Writes the outcome of a trial under every illuminant.
  virtual void Add(const TrialJudgement& judgement) = 0;
  /// A maker of the same texts, for one thread; null where they depend on what was written before.
  virtual std::unique_ptr<JudgeTexts> MakeTexts() const { return nullptr; }
  /// Appends such a text.
  virtual void AddText(std::string_view text) { static_cast<void>(text); }
  /// Ends the results; a table ends with the summaries.
  virtual void Finish(const JudgeSummaries& summaries) = 0;
};

/// `output` and `settings` must outlive the writer.
std::unique_ptr<JudgeOutput> MakeJudgeOutput(const Format& format, OutputStream& output,
                                             const JudgeSettings& settings, const JudgeColumns& columns);

/// The summaries alone, a row per illuminant.
void WriteSummaries(const Format& format, OutputStream& output, const JudgeSettings& settings,
                    const JudgeSummaries& summaries);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_JUDGE_OUTPUT_H_
