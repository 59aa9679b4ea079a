#include <vrxmath/judging/shade_groups.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

#include <vrxmath/colorimetry/color_differences.h>

namespace vrx {
namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// The distances of groups, each known by its first member, and for each the nearest one behind it.
class Linkage {
 public:
  Linkage(std::size_t count, const PairDistance& distance)
      : count_(count), distances_(count * (count - 1) / 2), groups_(count), nearest_(count, kNone) {
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t j = i + 1; j < count; ++j) {
        const double d = distance(i, j);
        At(i, j) = std::isnan(d) ? HUGE_VAL : d;
      }
    }
    std::iota(groups_.begin(), groups_.end(), std::size_t{0});
    for (std::size_t i = 0; i < count; ++i) FindNearest(i);
  }

  /// Makes the two nearest groups one; false when none are within the limit.
  bool Merge(double limit) {
    std::size_t best = kNone;
    for (std::size_t i = 0; i < count_; ++i) {
      if (nearest_[i] == kNone) continue;
      if (best == kNone || At(i, nearest_[i]) < At(best, nearest_[best])) best = i;
    }
    if (best == kNone || !(At(best, nearest_[best]) <= limit)) return false;
    Join(best, nearest_[best]);
    return true;
  }
  const std::vector<std::size_t>& Groups() const { return groups_; }

 private:
  double& At(std::size_t a, std::size_t b) {
    const std::size_t i = std::min(a, b), j = std::max(a, b);
    return distances_[i * (2 * count_ - i - 1) / 2 + (j - i - 1)];
  }
  bool IsGroup(std::size_t i) const { return groups_[i] == i; }

  void FindNearest(std::size_t i) {
    nearest_[i] = kNone;
    if (!IsGroup(i)) return;
    for (std::size_t j = i + 1; j < count_; ++j) {
      if (IsGroup(j) && (nearest_[i] == kNone || At(i, j) < At(i, nearest_[i]))) nearest_[i] = j;
    }
  }

  // `to` goes into `from`, which is the earlier one. The farthest member of either is that of both.
  void Join(std::size_t from, std::size_t to) {
    for (std::size_t& group : groups_) group = group == to ? from : group;
    for (std::size_t k = 0; k < count_; ++k) {
      if (IsGroup(k) && k != from) At(from, k) = std::max(At(from, k), At(to, k));
    }
    nearest_[to] = kNone;
    FindNearest(from);
    for (std::size_t k = 0; k < to; ++k) {
      if (nearest_[k] == from || nearest_[k] == to) FindNearest(k);
    }
  }

  std::size_t count_;
  std::vector<double> distances_;
  std::vector<std::size_t> groups_;   // the first member of each thing's group
  std::vector<std::size_t> nearest_;  // of the group that begins here, among those behind it
};

}  // namespace

std::vector<std::size_t> GroupsByCompleteLinkage(std::size_t count, double limit,
                                                 const PairDistance& distance) {
  if (count == 0) return {};
  Linkage linkage(count, distance);
  while (linkage.Merge(limit)) {
  }
  std::vector<std::size_t> numbers(count, kNone), groups;
  std::size_t next = 0;
  for (const std::size_t first : linkage.Groups()) {
    if (numbers[first] == kNone) numbers[first] = next++;
    groups.push_back(numbers[first]);
  }
  return groups;
}

std::vector<std::vector<std::size_t>> ShadeGroups(std::span<const std::size_t> order, double limit,
                                                  const PairDistance& distance) {
  const std::vector<std::size_t> numbers = GroupsByCompleteLinkage(
      order.size(), limit, [&](std::size_t a, std::size_t b) { return distance(order[a], order[b]); });
  std::vector<std::vector<std::size_t>> groups;
  for (std::size_t k = 0; k < order.size(); ++k) {
    if (numbers[k] >= groups.size()) groups.resize(numbers[k] + 1);
    groups[numbers[k]].push_back(order[k]);
  }
  std::ranges::stable_sort(groups, std::greater<>(), &std::vector<std::size_t>::size);
  return groups;
}

double DifferenceEitherWay(const CDifferenceSettings& settings, const Color& a, const Color& b,
                           double angle) {
  return std::max(ComputeDifference(settings, a, b, angle).dE, ComputeDifference(settings, b, a, angle).dE);
}

}  // namespace vrx
