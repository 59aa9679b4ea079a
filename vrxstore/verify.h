// Whether a job is what it was: judgements computed again from what is stored, digests of batches, the chain of the trail.

#ifndef VRXSTORE_VERIFY_H_
#define VRXSTORE_VERIFY_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <vrxstore/store.h>

namespace vrx::store {

struct Verification {
  std::int64_t judgements = 0, batches = 0, trailRows = 0;
  /// A sentence for each fault, at most kMostFaults of them; the number of all.
  std::vector<std::string> faults;
  std::int64_t faultCount = 0;
  TrailRow head;

  static constexpr std::size_t kMostFaults = 100;
};

/// Walks the whole job: its pages, the judgements, whose numbers must come out the same to the bit, the batches, whose content
/// must have the digest that the trail knows, and the trail. `onJudgement` is told how many judgements were compared so far.
Verification VerifyStore(Store& store, const std::function<void(std::int64_t)>& onJudgement = {});

}  // namespace vrx::store

#endif  // VRXSTORE_VERIFY_H_
