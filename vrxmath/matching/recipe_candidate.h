// Candidates of a search: solved subsets that may become recipes, and lists of the best of them.

#ifndef VRXMATH_MATCHING_RECIPE_CANDIDATE_H_
#define VRXMATH_MATCHING_RECIPE_CANDIDATE_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <vrxmath/matching/subset_kernels.h>

namespace vrx {

/// A solved subset that may become a recipe. Ranks make the order total: two candidates never compare equal.
struct Candidate {
  bool isBeyond = false;  ///< outside of what the order asks for first
  double key = 0.0;
  double worst = 0.0;  ///< to first order
  double least = 0.0;  ///< below which no shares of the subset bring the largest difference, to first order
  int32_t size = 0;
  uint64_t rank = 0;
  std::array<uint16_t, kMostSubsetColorants> subset{};
  SubsetSolution solution{};

  bool operator<(const Candidate& other) const {
    if (isBeyond != other.isBeyond) return other.isBeyond;
    if (key != other.key) return key < other.key;
    if (size != other.size) return size < other.size;
    return rank < other.rank;
  }
};

/// The best candidates of one size.
class CandidateList {
 public:
  explicit CandidateList(std::size_t most) : most_(most) {}

  void Add(const Candidate& candidate) {
    if (candidates_.size() == most_) {
      if (!(candidate < candidates_.front())) return;
      std::pop_heap(candidates_.begin(), candidates_.end());
      candidates_.pop_back();
    }
    candidates_.push_back(candidate);
    std::push_heap(candidates_.begin(), candidates_.end());
  }
  void Add(const CandidateList& other) {
    for (const Candidate& candidate : other.candidates_) Add(candidate);
  }
  /// Best first.
  std::vector<Candidate> Sorted() const {
    std::vector<Candidate> sorted = candidates_;
    std::sort(sorted.begin(), sorted.end());
    return sorted;
  }

 private:
  std::size_t most_;
  std::vector<Candidate> candidates_;  // a heap, the worst in front
};

}  // namespace vrx

#endif  // VRXMATH_MATCHING_RECIPE_CANDIDATE_H_
