// Which judgement of a measurement counts, where a job has it more than once.

#ifndef VRXSTORE_LAST_JUDGEMENTS_H_
#define VRXSTORE_LAST_JUDGEMENTS_H_

#include <cstdint>
#include <string>
#include <unordered_map>

#include <vrxstore/store.h>

namespace vrx::store {

/// What a trial is as a measurement for a standard, whatever its verdict: a digest of 32 bytes over its names, geometry, date and curve,
/// and its standard. Trials with the same one are one measurement that was stored again, as after limits changed or out of a file that grew.
std::string MeasurementKey(const StoredTrial& trial);

/// The last judgements of the measurements among the trials that a filter lets through.
class LastJudgements {
 public:
  /// Reads them all; keeps some 100 bytes for each.
  LastJudgements(Store& job, const TrialFilter& filter);

  /// The number of the trial with the last judgement of the same measurement: the trial's own where it counts, and where it was stored
  /// since.
  std::int64_t LastOf(const StoredTrial& trial) const;
  bool Counts(const StoredTrial& trial) const { return LastOf(trial) == trial.number; }
  /// Whether the measurement counts as accepted, by its last judgement.
  bool IsAccepted(const StoredTrial& trial) const;

  /// How many trials were judged again later, which therefore do not count.
  std::int64_t Earlier() const { return earlier_; }
  /// How many of those people decided on, where nobody did on the last one.
  std::int64_t Decided() const { return decided_; }

 private:
  struct Last {
    std::int64_t number = 0;
    bool isAccepted = false, isDecided = false;
    std::int64_t decidedBefore = 0;
  };
  std::unordered_map<std::string, Last> last_;  // by MeasurementKey
  std::int64_t earlier_ = 0, decided_ = 0;
};

}  // namespace vrx::store

#endif  // VRXSTORE_LAST_JUDGEMENTS_H_
