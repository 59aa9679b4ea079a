#include <vrxstore/verify.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include <vrxstore/records/stored_form.h>
#include <vrxstore/records/trail.h>
#include <vrxstore/rejudge.h>

namespace vrx::store {
namespace {

class Verifier {
 public:
  Verifier(Store& store, const std::function<void(std::int64_t)>& onJudgement)
      : store_(store), onJudgement_(onJudgement) {}

  Verification Run() {
    for (const std::string& fault : store_.CheckPages()) Add(fault);
    for (const BatchEntry& batch : store_.Batches()) batches_[batch.number] = batch;
    CheckTrials();
    CheckTrail();
    CheckRecipes();
    for (const auto& [number, batch] : batches_) {
      if (!batchesInTrail_.contains(batch.digest))
        Add("batch " + std::to_string(number) + ": the trail knows nothing of it");
    }
    result_.batches = static_cast<std::int64_t>(batches_.size());
    return std::move(result_);
  }

 private:
  void Add(std::string fault) {
    ++result_.faultCount;
    if (result_.faults.size() < Verification::kMostFaults) result_.faults.push_back(std::move(fault));
  }

  void CheckTrials() {
    constexpr std::size_t kTogether = 512;
    const auto cursor = store_.Trials({});
    std::vector<StoredTrial> trials;
    for (StoredTrial trial; cursor->Next(trial);) {
      if (batch_ != trial.batch) EndBatch();
      TakeIntoBatch(trial);
      trials.push_back(std::move(trial));
      trial = {};
      if (trials.size() == kTogether) Compare(trials);
    }
    Compare(trials);
    EndBatch();
  }

  void Compare(std::vector<StoredTrial>& trials) {
    const std::vector<Judgement> again = JudgeAgain(trials);
    for (std::size_t i = 0; i < trials.size(); ++i) {
      if (AreSame(trials[i].judgement, again[i])) continue;
      Add("trial " + std::to_string(trials[i].number) + " (" + trials[i].name +
          "): its judgement by version " + trials[i].library + " comes out differently");
    }
    result_.judgements += static_cast<std::int64_t>(trials.size());
    if (onJudgement_) onJudgement_(result_.judgements);
    trials.clear();
  }

  void TakeIntoBatch(const StoredTrial& trial) {
    if (batch_ != trial.batch) {
      batch_ = trial.batch;
      digest_.emplace();
      trials_ = 0;
    }
    AddTrial(*digest_, trial);
    ++trials_;
  }

  void EndBatch() {
    if (!digest_) return;
    const auto known = batches_.find(batch_);
    const bool isSame = known != batches_.end() && known->second.trials == trials_ &&
                        known->second.digest == digest_->Finish();
    if (!isSame) Add("batch " + std::to_string(batch_) + ": its trials are not those that were stored");
    digest_.reset();
    batch_ = 0;
  }

  void CheckRecipes() {
    for (const MadeRecipe& recipe : store_.Recipes()) {
      if (!recipesInTrail_.contains(DigestOf(recipe)))
        Add("recipe " + std::to_string(recipe.number) + " (" + recipe.name + ") is not one that was stored");
    }
  }

  void CheckTrail() {
    const auto cursor = store_.Trail();
    std::string previous(32, '\0');
    for (TrailRow row; cursor->Next(row);) {
      ++result_.trailRows;
      if (row.number != result_.trailRows || row.previous != previous || row.digest != DigestOf(row))
        Add("the trail is broken at row " + std::to_string(row.number));
      if (row.what == "store batch") batchesInTrail_[row.content] = row.number;
      if (row.what == "add recipe") recipesInTrail_.insert(row.content);
      result_.trailRows = row.number;
      previous = row.digest;
      result_.head = row;
    }
  }

  Store& store_;
  const std::function<void(std::int64_t)>& onJudgement_;
  Verification result_;
  std::map<std::int64_t, BatchEntry> batches_;
  std::map<std::string, std::int64_t> batchesInTrail_;  // by digest
  std::set<std::string> recipesInTrail_;                // by digest
  std::optional<ContentDigest> digest_;                 // of the batch that is read
  std::int64_t batch_ = 0, trials_ = 0;
};

}  // namespace

Verification VerifyStore(Store& store, const std::function<void(std::int64_t)>& onJudgement) {
  return Verifier(store, onJudgement).Run();
}

}  // namespace vrx::store
