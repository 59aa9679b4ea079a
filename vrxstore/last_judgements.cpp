#include <vrxstore/last_judgements.h>

#include <vrxstore/records/trail.h>

namespace vrx::store {

std::string MeasurementKey(const StoredTrial& trial) {
  ContentDigest digest;
  AddTrial(digest, trial);
  return digest.Finish();
}

LastJudgements::LastJudgements(Store& job, const TrialFilter& filter) {
  const auto cursor = job.Trials(filter);
  for (StoredTrial trial; cursor->Next(trial);) {
    const auto [entry, isNew] = last_.try_emplace(MeasurementKey(trial));
    Last& last = entry->second;
    earlier_ += isNew ? 0 : 1;
    last.decidedBefore += last.isDecided ? 1 : 0;
    last.number = trial.number;
    last.isAccepted = trial.IsAccepted();
    last.isDecided = trial.decision.has_value();
  }
  for (const auto& [key, last] : last_) decided_ += last.isDecided ? 0 : last.decidedBefore;
}

std::int64_t LastJudgements::LastOf(const StoredTrial& trial) const {
  const auto found = last_.find(MeasurementKey(trial));
  return found == last_.end() || found->second.number < trial.number ? trial.number : found->second.number;
}

bool LastJudgements::IsAccepted(const StoredTrial& trial) const {
  const auto found = last_.find(MeasurementKey(trial));
  return found == last_.end() ? trial.IsAccepted() : found->second.isAccepted;
}

}  // namespace vrx::store
