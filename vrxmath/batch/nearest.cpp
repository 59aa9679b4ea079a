#include <vrxmath/batch/nearest.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/batch/difference_kernels.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/platform/exceptions.h>

namespace vrx {
namespace {

// Standards that are compared at a time. Few, since a block is done with as soon as one illuminant shows all of it to be
// farther away than what was found already.
constexpr std::size_t kBlock = 256;

bool IsNearer(const NearestMatch& a, const NearestMatch& b) {
  return a.difference < b.difference || (a.difference == b.difference && a.index < b.index);
}

// The nearest so far, as a heap with the farthest of them at the top.
class Nearest {
 public:
  explicit Nearest(std::span<NearestMatch> matches) : matches_(matches) {}

  /// True when a standard at this distance would be taken, whatever its index: indices come in rising order.
  bool Takes(double difference) const {
    return found_ < matches_.size() ? difference == difference : difference < Farthest();
  }

  void Take(std::size_t index, double difference) {
    const auto begin = matches_.begin();
    if (found_ == matches_.size()) {
      std::pop_heap(begin, matches_.end(), IsNearer);
      --found_;
    }
    matches_[found_++] = {index, difference};
    std::push_heap(begin, begin + static_cast<std::ptrdiff_t>(found_), IsNearer);
  }

  void Finish() {
    const auto end = matches_.begin() + static_cast<std::ptrdiff_t>(found_);
    std::sort_heap(matches_.begin(), end, IsNearer);
    std::fill(end, matches_.end(), NearestMatch());
  }

 private:
  double Farthest() const { return matches_[0].difference; }

  std::span<NearestMatch> matches_;
  std::size_t found_ = 0;
};

// The search for one trial.
class Search {
 public:
  Search(const DifferenceContext& context, DifferenceKernel kernel, std::span<const ColorBatch> trials,
         std::span<const ColorBatch> libraries, std::size_t standards)
      : context_(context), kernel_(kernel), trials_(trials), libraries_(libraries), standards_(standards) {}

  void Run(std::size_t trial, std::span<NearestMatch> matches) const {
    Nearest nearest(matches);
    double worst[kBlock];
    for (std::size_t from = 0; from < standards_; from += kBlock) {
      const std::size_t count = std::min(kBlock, standards_ - from);
      if (!FillWorst(trial, from, count, nearest, worst)) continue;
      for (std::size_t i = 0; i < count; ++i) {
        if (nearest.Takes(worst[i])) nearest.Take(from + i, worst[i]);
      }
    }
    nearest.Finish();
  }

 private:
  // The worst differences of a block of standards; NaN where one is unset or NaN. False when none would be taken.
  bool FillWorst(std::size_t trial, std::size_t from, std::size_t count, const Nearest& nearest,
                 double* worst) const {
    double totals[kBlock];
    for (std::size_t j = 0; j < libraries_.size(); ++j) {
      double* target = j == 0 ? worst : totals;
      const Column<double> out{target, 1};
      kernel_(context_, ColumnsOf(libraries_[j], from, count), ColumnsOf(trials_[j], trial, 1), &out, count);
      bool taken = false;
      for (std::size_t i = 0; i < count; ++i) {
        double total = target[i];
        if (total == kUnset) total = std::nan("");  // as kernels mark it: others next to it are numbers
        if (j > 0 && !(worst[i] <= total) && total == total) total = worst[i];  // NaN of either stays
        worst[i] = total;
        taken |= nearest.Takes(total);
      }
      if (!taken) return false;
    }
    return true;
  }

  DifferenceContext context_;
  DifferenceKernel kernel_;
  std::span<const ColorBatch> trials_, libraries_;
  std::size_t standards_;
};

using System = DifferenceKernels::System;

// How many colours batches of all illuminants hold.
std::size_t CountOf(const System& system, std::span<const ColorBatch> batches) {
  const std::size_t count = system.readsXyz ? batches[0].xyz.size() : batches[0].lab.size();
  for (const ColorBatch& colors : batches) {
    if (system.readsXyz) RequireSameCount(colors.xyz.size(), count);
    if (system.readsLab) RequireSameCount(colors.lab.size(), count);
  }
  return count;
}

// The colours of some rows alone, in that order; without X, Y, Z where there are none.
ColorTable RowsOf(const ColorTable& colors, std::span<const std::size_t> rows) {
  const auto append = [&](const std::vector<double>& all, std::size_t width, std::vector<double>& some) {
    if (all.empty()) return;
    some.reserve(width * rows.size());
    for (const std::size_t row : rows) {
      const auto from = all.begin() + static_cast<std::ptrdiff_t>(width * row);
      some.insert(some.end(), from, from + static_cast<std::ptrdiff_t>(width));
    }
  };
  ColorTable some{std::vector<ColorTable::Under>(colors.under.size())};
  for (std::size_t j = 0; j < colors.under.size(); ++j) {
    append(colors.under[j].xyz, 3, some.under[j].xyz);
    append(colors.under[j].lab, 5, some.under[j].lab);
  }
  return some;
}

}  // namespace

bool FindNearestBatch(const CDifferenceSettings& settings, double angle, std::span<const ColorBatch> trials,
                      std::span<const ColorBatch> libraries, std::size_t count,
                      std::span<NearestMatch> matches, const BatchRun& run) {
  if (FindDifferenceSystem(settings.system) == nullptr || trials.empty() || count == 0)
    throw CInvalidArgException();
  RequireSameCount(trials.size(), libraries.size());
  const System& system = CurrentKernels<DifferenceKernels>().Of(settings);
  const std::size_t trialCount = CountOf(system, trials), standards = CountOf(system, libraries);
  if (matches.size() / count != trialCount || matches.size() % count != 0) throw CInvalidArgException();
  const Search search({settings.parameters, angle}, system.totalsOneSample, trials, libraries, standards);
  return ForEachBlock(run, trialCount, 1, [&](std::size_t trial, std::size_t) {
    search.Run(trial, matches.subspan(trial * count, count));
  });
}

StandardsByGeometry::StandardsByGeometry(const ColorTable& standards,
                                         const std::vector<std::int32_t>& geometries)
    : standards_(standards), geometries_(geometries) {}

const StandardsByGeometry::Group& StandardsByGeometry::GroupOf(std::int32_t geometry) {
  const auto [entry, isNew] = groups_.try_emplace(std::max(geometry, -1));
  Group& group = entry->second;
  if (!isNew) return group;
  const auto fits = [geometry](std::int32_t other) { return geometry < 0 || other < 0 || other == geometry; };
  if (std::ranges::all_of(geometries_, fits)) {
    group.batches = standards_.Batches();
    return group;
  }
  for (std::size_t i = 0; i < geometries_.size(); ++i) {
    if (fits(geometries_[i])) group.rows.push_back(i);
  }
  group.colors = RowsOf(standards_, group.rows);
  if (!group.rows.empty()) group.batches = group.colors.Batches();
  return group;
}

bool StandardsByGeometry::Find(const CDifferenceSettings& settings, double angle, const ColorTable& samples,
                               std::span<const std::int32_t> geometries, std::size_t count,
                               std::span<NearestMatch> matches, const BatchRun& run) {
  RequireSameCount(geometries_.size(), standards_.size());
  RequireSameCount(geometries.size(), samples.size());
  if (count == 0 || matches.size() != geometries.size() * count) throw CInvalidArgException();
  std::ranges::fill(matches, NearestMatch());
  std::map<std::int32_t, std::vector<std::size_t>> rowsOf;
  for (std::size_t i = 0; i < geometries.size(); ++i) rowsOf[geometries[i]].push_back(i);
  for (const auto& [geometry, rows] : rowsOf) {
    const Group& group = GroupOf(geometry);
    if (group.batches.empty()) continue;
    const ColorTable colors = RowsOf(samples, rows);
    std::vector<NearestMatch> found(rows.size() * count);
    if (!FindNearestBatch(settings, AspecularAngle(geometry, angle), colors.Batches(), group.batches, count,
                          found, run))
      return false;
    for (std::size_t k = 0; k < found.size(); ++k) {
      NearestMatch& match = matches[rows[k / count] * count + k % count] = found[k];
      if (match.index != NearestMatch::kNone && !group.rows.empty()) match.index = group.rows[match.index];
    }
  }
  return true;
}

}  // namespace vrx
