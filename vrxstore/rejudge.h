// Judgements computed again from what is stored.

#ifndef VRXSTORE_REJUDGE_H_
#define VRXSTORE_REJUDGE_H_

#include <span>
#include <vector>

#include <vrxstore/records/records.h>

namespace vrx::store {

/// Computes judgements again from the curves, the conditions and the limits of trials; those that follow each other under the
/// same ones together.
std::vector<Judgement> JudgeAgain(std::span<const StoredTrial> trials);

/// The same under other limits, one for each illuminant of a trial's conditions, by another rule, and under another share of the limits
/// for a warning.
Judgement JudgeUnder(const StoredTrial& trial, std::span<const JudgeLimits> limits, VerdictRule rule,
                     double warningFactor);

}  // namespace vrx::store

#endif  // VRXSTORE_REJUDGE_H_
