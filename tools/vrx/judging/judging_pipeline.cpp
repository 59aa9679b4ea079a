#include "tools/vrx/judging/judging_pipeline.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace vrx::tool {

struct JudgingPipeline::Chunk {
  std::uint64_t number = 0;
  std::size_t trials = 0;  // in use
  std::vector<PipelineTrial> judged;
  std::size_t standards = 0;
  std::vector<Standard> standardCopies;
  std::vector<double> curves;                  // of trials that are judged at once
  std::size_t curvesBegin = 0, curvesEnd = 0;  // those of the trials at once
  std::unique_ptr<JudgeTexts> texts;           // of the trials; null where the output has none
  std::uint64_t position = 0;                  // in the file, behind the last trial
  std::exception_ptr failure;                  // what went wrong behind the last trial
};

namespace {

// The views of a row into texts of its own.
void KeepTexts(PipelineTrial& kept) {
  CurveRow& row = kept.trial;
  kept.judgement.SetTrial(row);
  kept.standardName = row.standard;
  row.id = kept.judgement.trial;
  row.name = kept.judgement.name;
  row.standard = kept.standardName;
}

}  // namespace

bool JudgingPipeline::Read(Chunk& chunk, std::size_t chunkTrials) {
  const std::lock_guard lock(reading_);
  if (atEnd_) return false;
  chunk.number = chunks_++;
  chunk.trials = chunk.standards = 0;
  chunk.failure = nullptr;
  chunk.judged.resize(chunkTrials);
  std::uint64_t stamp = 0;
  try {
    while (chunk.trials < chunkTrials) {
      PipelineTrial& next = chunk.judged[chunk.trials];
      if (!comparison_.NextTrial(next.trial)) {
        atEnd_ = true;
        break;
      }
      KeepTexts(next);
      const Standard& standard = comparison_.StandardOf(next.trial);
      if (chunk.standards == 0 || standard.stamp != stamp) {
        stamp = standard.stamp;
        if (chunk.standardCopies.size() == chunk.standards) chunk.standardCopies.emplace_back();
        chunk.standardCopies[chunk.standards++] = standard;
      }
      next.standard = chunk.standards - 1;
      ++chunk.trials;
    }
  } catch (...) {
    chunk.failure = std::current_exception();
    atEnd_ = true;
  }
  chunk.position = comparison_.Trials().Source().Position();
  return true;
}

// Judges the curves from `begin` on that have the standard of the first one, where there are enough of them to be worth it.
// Returns the end of those that it judged.
std::size_t JudgingPipeline::EvaluateCurves(Chunk& chunk, std::size_t begin, Judge& judge) {
  constexpr std::size_t kFewest = 8;
  std::size_t end = begin;
  for (; end < chunk.trials && chunk.judged[end].standard == chunk.judged[begin].standard; ++end) {
    if (chunk.judged[end].trial.kind != Sample::kCurve) break;
  }
  if (end - begin < kFewest) return begin;
  chunk.curves.clear();
  for (std::size_t i = begin; i < end; ++i) {
    const CReflData& curve = chunk.judged[i].trial.curve;
    chunk.curves.insert(chunk.curves.end(), curve.begin(), curve.end());
  }
  judge.EvaluateCurves(chunk.curves);
  return end;
}

void JudgingPipeline::JudgeTrial(Chunk& chunk, std::size_t i, Judge& judge) const {
  PipelineTrial& trial = chunk.judged[i];
  const Standard& standard = chunk.standardCopies[trial.standard];
  if (judge.StandardStamp() != standard.stamp) judge.SetStandard(standard);
  if (i >= chunk.curvesEnd) {
    chunk.curvesBegin = i;
    chunk.curvesEnd = EvaluateCurves(chunk, i, judge);
  }
  if (i < chunk.curvesEnd) {
    judge.TakeCurve(i - chunk.curvesBegin, trial.judgement);
  } else {
    judge.Evaluate(trial.trial);
    judge.Take(trial.judgement);
  }
  if (chunk.texts != nullptr) chunk.texts->Add(trial.judgement);
}

void JudgingPipeline::JudgeTrials(Chunk& chunk, Judge& judge) const {
  chunk.curvesEnd = 0;
  if (chunk.texts != nullptr) chunk.texts->Clear();
  std::size_t done = 0;
  try {
    for (; done < chunk.trials; ++done) JudgeTrial(chunk, done, judge);
  } catch (...) {
    chunk.failure = std::current_exception();
    chunk.trials = done;
  }
  if (chunk.texts == nullptr) return;
  chunk.texts->Finish();
  for (std::size_t i = 0; i < chunk.trials; ++i) chunk.judged[i].text = chunk.texts->Text(i);
}

bool JudgingPipeline::HandOn(Chunk& chunk, Judge& judge) {
  std::unique_lock lock(writing_);
  turned_.wait(lock, [&] { return turn_ == chunk.number || failure_ != nullptr; });
  if (failure_ != nullptr) return false;
  try {
    for (std::size_t i = 0; i < chunk.trials; ++i) sink_(chunk.judged[i], judge);
    comparison_.ShowProgress(chunk.position);
    if (chunk.failure != nullptr) std::rethrow_exception(chunk.failure);
  } catch (...) {
    failure_ = std::current_exception();
  }
  ++turn_;
  turned_.notify_all();
  return failure_ == nullptr;
}

void JudgingPipeline::Work(std::size_t chunkTrials) {
  Judge judge(settings_);
  Chunk chunk;
  if (output_ != nullptr) chunk.texts = output_->MakeTexts();
  while (Read(chunk, chunkTrials)) {
    JudgeTrials(chunk, judge);
    if (!HandOn(chunk, judge)) return;
  }
}

void JudgingPipeline::Run(unsigned threads, std::size_t chunkTrials) {
  std::vector<std::thread> helpers;
  const auto work = [this, chunkTrials] {
    try {
      Work(chunkTrials);
    } catch (...) {
      const std::lock_guard lock(writing_);
      if (failure_ == nullptr) failure_ = std::current_exception();
      turned_.notify_all();
    }
  };
  comparison_.BeginProgress();
  for (unsigned i = 1; i < threads; ++i) helpers.emplace_back(work);
  work();
  for (std::thread& helper : helpers) helper.join();
  comparison_.EndProgress();
  if (failure_ != nullptr) std::rethrow_exception(failure_);
}

}  // namespace vrx::tool
