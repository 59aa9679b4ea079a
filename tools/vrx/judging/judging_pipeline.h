// Judging on several threads: reading, computing and writing overlap, and everything comes out in the order of the file.
//
// Each thread takes turns at reading a chunk of trials, judges it with a judge of its own, and hands it on when all chunks
// before it have been handed on. Memory is a chunk a thread. What goes wrong, in whichever chunk, comes out after the rows
// before it, as if there were one thread.

#ifndef TOOLS_VRX_JUDGING_JUDGING_PIPELINE_H_
#define TOOLS_VRX_JUDGING_JUDGING_PIPELINE_H_

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tools/vrx/judging/comparison.h"
#include "tools/vrx/judging/judge.h"
#include "tools/vrx/judging/judge_output.h"

namespace vrx::tool {

/// A judged trial on its way to the output.
struct PipelineTrial {
  CurveRow trial;  ///< its id and name live in the judgement, its standard and date in the texts below
  TrialJudgement judgement;
  std::string standardName, date;
  const Readings* readings = nullptr;  ///< of which it is the mean, where it is one
  std::size_t standard = 0;            ///< index into the chunk's standards
  std::string_view text;               ///< as JudgeTexts made it; empty where the output has none
};

class JudgingPipeline {
 public:
  /// Receives each trial in turn, with its standard and the judge that holds it at the index `trial.standard`.
  using Sink = std::function<void(const PipelineTrial& trial, const Standard& standard, const Judge& judge)>;

  /// `output` may be null. All arguments must outlive the pipeline.
  JudgingPipeline(Comparison& comparison, const JudgeSettings& settings, const JudgeOutput* output, Sink sink)
      : comparison_(comparison), settings_(settings), output_(output), sink_(std::move(sink)) {}

  /// Runs on `threads` threads, the calling one included, with chunks of `chunkTrials`. Throws what reading, judging or the
  /// sink threw.
  void Run(unsigned threads, std::size_t chunkTrials);

 private:
  struct Chunk;

  std::vector<std::thread> StartHelpers(unsigned count, std::size_t chunkTrials);
  void Work(Chunk& chunk);
  bool Read(Chunk& chunk);
  static void DropTrialsWithoutLimits(Chunk& chunk, const Judge& judge);
  static void JudgeTrials(Chunk& chunk, Judge& judge);
  static void MakeTexts(Chunk& chunk);
  bool HandOn(Chunk& chunk, const Judge& judge);

  Comparison& comparison_;
  const JudgeSettings& settings_;
  const JudgeOutput* output_;
  Sink sink_;

  std::mutex starting_;  // held until all helpers are there

  std::mutex reading_;
  std::uint64_t chunks_ = 0;  // read so far
  bool atEnd_ = false;

  std::mutex writing_;
  std::condition_variable turned_;
  std::uint64_t turn_ = 0;  // the chunk that is handed on next
  std::exception_ptr failure_;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_JUDGING_PIPELINE_H_
