#include "tools/vrx/judging/judging_pipeline.h"

#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <system_error>
#include <utility>

namespace vrx::tool {

// The trials that a thread has in hand, which it makes room for before it takes the first.
struct JudgingPipeline::Chunk {
  Chunk(std::size_t most, const JudgeOutput* output)
      : judged(most), texts(output != nullptr ? output->MakeTexts() : nullptr) {
    standardCopies.reserve(most);
    samples.reserve(most);
    standardOf.reserve(most);
  }

  std::uint64_t number = 0;
  std::size_t trials = 0;  // in use
  std::vector<PipelineTrial> judged;
  std::size_t standards = 0;
  std::vector<Standard> standardCopies;
  std::vector<const Sample*> samples;   // of the trials
  std::vector<std::size_t> standardOf;  // likewise
  std::unique_ptr<JudgeTexts> texts;    // likewise; null where the output has none
  std::uint64_t position = 0;           // in the file, behind the last trial
  std::exception_ptr failure;           // what went wrong behind the last trial
};

namespace {

// The views of a row into texts of its own.
void KeepTexts(PipelineTrial& kept) {
  CurveRow& row = kept.trial;
  kept.judgement.SetTrial(row);
  kept.standardName = row.standard;
  kept.date = row.date;
  row.id = kept.judgement.trial;
  row.name = kept.judgement.name;
  row.standard = kept.standardName;
  row.date = kept.date;
}

}  // namespace

bool JudgingPipeline::Read(Chunk& chunk) {
  const std::lock_guard lock(reading_);
  if (atEnd_) return false;
  chunk.number = chunks_++;
  chunk.trials = chunk.standards = 0;
  chunk.failure = nullptr;
  std::uint64_t stamp = 0;
  try {
    while (chunk.trials < chunk.judged.size()) {
      PipelineTrial& next = chunk.judged[chunk.trials];
      if (!comparison_.NextTrial(next.trial)) {
        atEnd_ = true;
        break;
      }
      next.readings = comparison_.LastReadings();
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

// Ends the chunk before the first trial whose standard has no limits.
void JudgingPipeline::DropTrialsWithoutLimits(Chunk& chunk, const Judge& judge) {
  const auto standards = std::span<const Standard>(chunk.standardCopies).first(chunk.standards);
  const std::size_t limited = judge.CountLimited(standards);
  if (limited == standards.size()) return;
  try {
    judge.RequireLimits(standards);
  } catch (...) {
    chunk.failure = std::current_exception();
  }
  while (chunk.trials > 0 && chunk.judged[chunk.trials - 1].standard >= limited) --chunk.trials;
  chunk.standards = limited;
}

void JudgingPipeline::JudgeTrials(Chunk& chunk, Judge& judge) {
  DropTrialsWithoutLimits(chunk, judge);
  chunk.samples.clear();
  chunk.standardOf.clear();
  for (std::size_t i = 0; i < chunk.trials; ++i) {
    chunk.samples.push_back(&chunk.judged[i].trial);
    chunk.standardOf.push_back(chunk.judged[i].standard);
  }
  judge.Evaluate(std::span(chunk.standardCopies).first(chunk.standards), chunk.samples, chunk.standardOf);
  for (std::size_t i = 0; i < chunk.trials; ++i) {
    TrialJudgement& judgement = chunk.judged[i].judgement;
    judge.Take(i, judgement);
    judgement.standard = chunk.standardCopies[chunk.judged[i].standard].id;
  }
}

void JudgingPipeline::MakeTexts(Chunk& chunk) {
  if (chunk.texts == nullptr) return;
  chunk.texts->Clear();
  for (std::size_t i = 0; i < chunk.trials; ++i) chunk.texts->Add(chunk.judged[i].judgement);
  chunk.texts->Finish();
  for (std::size_t i = 0; i < chunk.trials; ++i) chunk.judged[i].text = chunk.texts->Text(i);
}

bool JudgingPipeline::HandOn(Chunk& chunk, const Judge& judge) {
  std::unique_lock lock(writing_);
  turned_.wait(lock, [&] { return turn_ == chunk.number || failure_ != nullptr; });
  if (failure_ != nullptr) return false;
  try {
    for (std::size_t i = 0; i < chunk.trials; ++i) {
      sink_(chunk.judged[i], chunk.standardCopies[chunk.judged[i].standard], judge);
    }
    comparison_.ShowProgress(chunk.position);
    if (chunk.failure != nullptr) std::rethrow_exception(chunk.failure);
  } catch (...) {
    failure_ = std::current_exception();
  }
  ++turn_;
  turned_.notify_all();
  return failure_ == nullptr;
}

void JudgingPipeline::Work(Chunk& chunk) {
  try {
    Judge judge(settings_);
    while (Read(chunk)) {
      JudgeTrials(chunk, judge);
      MakeTexts(chunk);
      if (!HandOn(chunk, judge)) return;
    }
  } catch (...) {
    const std::lock_guard lock(writing_);
    if (failure_ == nullptr) failure_ = std::current_exception();
    turned_.notify_all();
  }
}

// Starts as many helpers as there is memory for, and lets none of them begin before the last one is there: what is kept
// free meanwhile, a piece for each, is what they work with.
std::vector<std::thread> JudgingPipeline::StartHelpers(unsigned count, std::size_t chunkTrials) {
  constexpr std::size_t kRoomOfThread = std::size_t{8} << 20;
  const auto room = [] { return std::make_unique_for_overwrite<std::byte[]>(kRoomOfThread); };
  std::vector<std::thread> helpers;
  const std::lock_guard lock(starting_);
  try {
    std::vector<std::unique_ptr<std::byte[]>> rooms;
    rooms.push_back(room());
    helpers.reserve(count);
    while (helpers.size() < count) {
      rooms.push_back(room());
      helpers.emplace_back([this, chunk = std::make_unique<Chunk>(chunkTrials, output_)] {
        { const std::lock_guard begun(starting_); }
        Work(*chunk);
      });
    }
  } catch (const std::system_error&) {  // those that run take the trials of those that do not
  } catch (const std::bad_alloc&) {
  }
  return helpers;
}

void JudgingPipeline::Run(unsigned threads, std::size_t chunkTrials) {
  Chunk own(chunkTrials, output_);
  comparison_.BeginProgress();
  std::vector<std::thread> helpers = StartHelpers(threads - 1, chunkTrials);
  Work(own);
  for (std::thread& helper : helpers) helper.join();
  comparison_.EndProgress();
  if (failure_ != nullptr) std::rethrow_exception(failure_);
}

}  // namespace vrx::tool
