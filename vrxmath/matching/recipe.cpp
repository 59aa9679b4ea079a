#include <vrxmath/matching/recipe.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/matching/match_target.h>
#include <vrxmath/matching/offer.h>
#include <vrxmath/matching/recipe_candidate.h>
#include <vrxmath/matching/recipe_choice.h>
#include <vrxmath/matching/recipe_maker.h>
#include <vrxmath/matching/subset_kernels.h>
#include <vrxmath/matching/subset_refiner.h>
#include <vrxmath/matching/worst_refiner.h>
#include <vrxmath/numeric/lane_kernels.h>

namespace vrx {

namespace {

class Search {
 public:
  Search(const CColorantSystemData& system, const CColorantRulesData& rules, const CRecipeSettings& settings)
      : system_(system), rules_(rules), settings_(settings) {}

  // Makes ready for a target; a fault when it, or the settings, cannot be used.
  RecipeOutcome Prepare(const CRecipeTarget& target) {
    RecipeOutcome outcome{CheckSettings(settings_)};
    if (outcome.fault == RecipeFault::kNone) outcome = offer_.Make(system_, settings_, true);
    if (outcome.fault != RecipeFault::kNone) return outcome;
    target_.emplace(offer_, system_, target, settings_);
    return target_->Fault() != RecipeFault::kNone ? RecipeOutcome{target_->Fault()} : CountSubsets();
  }

  RecipeOutcome Run(const CRecipeTarget& target, CRecipeArray& recipes) {
    const RecipeOutcome outcome = Prepare(target);
    if (outcome.fault != RecipeFault::kNone) return outcome;
    MakeOwnSystem();
    maker_.emplace(offer_, own_, *target_, settings_);
    std::vector<std::vector<Candidate>> bySize;
    for (const SubsetRange& range : ranges_) {
      if (!SolveSize(range, bySize.emplace_back())) return {RecipeFault::kStopped, 0, outcome.subsets};
    }
    CRecipeArray chosen;
    const auto forEach = [this](std::size_t count, const std::function<void(std::size_t)>& work) {
      return ForEach(count, 1, [&](std::size_t i, std::size_t) { work(i); });
    };
    if (!RecipeChoice(offer_, *target_, settings_, *maker_, forEach).Choose(bySize, chosen))
      return {RecipeFault::kStopped, 0, outcome.subsets};
    recipes = chosen;
    return outcome;
  }

 private:
  static constexpr std::size_t kBlock = 2048;

  // Subsets that are solved between two questions whether to go on: fewer where each takes longer than the kernels do.
  std::size_t BlockRows() const {
    const bool isSlow = settings_.order == RecipeOrder::kCost ||
                        settings_.order == RecipeOrder::kMetamerism ||
                        settings_.order == RecipeOrder::kInconstancy || settings_.leastOpacity > 0.0 ||
                        offer_.hasSeveralLevels;
    return isSlow ? kBlock / 16 : kBlock;
  }

  RecipeOutcome CountSubsets() {
    RecipeOutcome outcome;
    bool isAnyAllowed = false, isAnyWhole = false;
    for (int32_t size = 1; size <= settings_.mostColorants; ++size) {
      ranges_.emplace_back(offer_, rules_, size);
      const uint64_t sum = outcome.subsets + ranges_.back().Count();
      outcome.subsets = sum < outcome.subsets ? ~uint64_t{0} : sum;
      isAnyWhole = isAnyWhole || CanMakeWhole(size);
    }
    if (outcome.subsets == 0) outcome.fault = RecipeFault::kTooFewAllowed;
    if (outcome.fault == RecipeFault::kNone && !isAnyWhole) outcome.fault = RecipeFault::kLimitsTogether;
    if (outcome.fault == RecipeFault::kNone && outcome.subsets > settings_.mostSubsets) {
      outcome.fault = RecipeFault::kTooManySubsets;
    }
    if (outcome.fault != RecipeFault::kNone) return outcome;
    for (const SubsetRange& range : ranges_) isAnyAllowed = isAnyAllowed || range.IsAnyAllowed();
    if (!isAnyAllowed) outcome.fault = RecipeFault::kEverythingForbidden;
    return outcome;
  }

  // True when some subset of this size, rules apart, can make up a whole: the least shares of the best choice do not exceed
  // 1 and the largest reach it.
  bool CanMakeWhole(int32_t size) const {
    if (offer_.substrate != nullptr) return true;
    std::vector<double> least, most;
    double leastTotal = 0.0, mostTotal = 0.0;
    int32_t free = size;
    for (const OfferedColorant& colorant : offer_.colorants) {
      if (colorant.isRequired) {
        leastTotal += colorant.least, mostTotal += colorant.most, --free;
      } else {
        least.push_back(colorant.least), most.push_back(colorant.most);
      }
    }
    if (free < 0 || static_cast<std::size_t>(free) > least.size()) return false;
    std::sort(least.begin(), least.end());
    std::sort(most.rbegin(), most.rend());
    for (int32_t i = 0; i < free; ++i) {
      leastTotal += least[static_cast<std::size_t>(i)];
      mostTotal += most[static_cast<std::size_t>(i)];
    }
    constexpr double kRounding = 1e-12;
    return leastTotal <= 1.0 + kRounding && mostTotal >= 1.0 - kRounding;
  }

  // The offer as a colour system in the order of the numbers, for predictions.
  void MakeOwnSystem() {
    own_.k1 = system_.k1;
    own_.k2 = system_.k2;
    own_.opticalModel = system_.opticalModel;
    const auto add = [&](const CComponent& component) {
      if (component.GetKind() == kKindResin) {
        own_.resins.Add(CResin(component));
      } else {
        own_.colorants.Add(CColorant(component));
      }
    };
    if (offer_.substrate != nullptr) add(*offer_.substrate);
    if (offer_.clear != nullptr) add(*offer_.clear);
    for (const OfferedColorant& colorant : offer_.colorants) add(*colorant.component);
  }

  // Subsets of one size, and how far each is solved.
  struct Block {
    std::vector<uint16_t> subsets;
    std::vector<SubsetSolution> solutions;
  };
  // One of them, in the order of the linearised objective; its colorants make the order total.
  struct Row {
    std::array<uint16_t, kMostSubsetColorants> subset{};
    SubsetSolution solution{};

    bool operator<(const Row& other) const {
      if (solution.objective != other.solution.objective)
        return solution.objective < other.solution.objective;
      return subset < other.subset;
    }
  };

  // Solves the subsets of a size, all or those that are ranked first; false when the search was stopped.
  bool SolveSize(const SubsetRange& range, std::vector<Candidate>& best) {
    CandidateList list = NoCandidates();
    std::mutex mutex;
    const bool isPreranked =
        settings_.prerank > 0 && range.Count() > static_cast<uint64_t>(settings_.prerank);
    std::vector<Row> chosen;
    const auto solve = [&](Block& block) {
      CandidateList found = NoCandidates();
      Solve(range.Size(), block, found);
      const std::lock_guard<std::mutex> lock(mutex);
      list.Add(found);
    };
    bool isDone = ForEach(static_cast<std::size_t>(range.Count()), BlockRows(),
                          [&](std::size_t from, std::size_t count) {
                            Block block = StartBlock(range, from, count);
                            if (!isPreranked) return solve(block);
                            const std::lock_guard<std::mutex> lock(mutex);
                            AddRows(range.Size(), block, chosen);
                            if (chosen.size() > 2 * static_cast<std::size_t>(settings_.prerank) + kBlock)
                              KeepFirst(chosen);
                          });
    done_ += static_cast<double>(range.Count());
    if (isDone && isPreranked) {
      KeepFirst(chosen);
      isDone = ForEach(chosen.size(), BlockRows(), [&](std::size_t from, std::size_t count) {
        Block block = BlockOf(range.Size(), &chosen[from], count);
        solve(block);
      });
    }
    best = list.Sorted();
    return isDone;
  }

  CandidateList NoCandidates() const {
    return CandidateList(std::max<std::size_t>(100, 10 * static_cast<std::size_t>(settings_.top)));
  }

  template <class WORK>
  bool ForEach(std::size_t count, std::size_t blockRows, const WORK& work) const {
    BatchRun run;
    run.threads = settings_.threads;
    double all = 0.0;
    for (const SubsetRange& each : ranges_) all += static_cast<double>(each.Count());
    bool isWanted = true;
    if (settings_.progress) {
      run.progress = [&, all](std::size_t done) {
        return isWanted = settings_.progress(std::min(1.0, (done_ + static_cast<double>(done)) / all));
      };
    }
    return ForEachBlock(run, count, blockRows, work) && isWanted;
  }

  static void AddRows(int32_t size, const Block& block, std::vector<Row>& rows) {
    for (std::size_t i = 0; i < block.solutions.size(); ++i) {
      if (!(block.solutions[i].objective < HUGE_VAL)) continue;
      Row row;
      std::copy_n(&block.subsets[i * static_cast<std::size_t>(size)], size, row.subset.begin());
      row.solution = block.solutions[i];
      rows.push_back(row);
    }
  }

  // Leaves the first `prerank` rows by their order.
  void KeepFirst(std::vector<Row>& rows) const {
    const auto most = static_cast<std::size_t>(settings_.prerank);
    if (rows.size() <= most) return;
    std::nth_element(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(most), rows.end());
    rows.resize(most);
  }

  static Block BlockOf(int32_t size, const Row* rows, std::size_t count) {
    Block block;
    for (std::size_t i = 0; i < count; ++i) {
      block.subsets.insert(block.subsets.end(), rows[i].subset.begin(), rows[i].subset.begin() + size);
      block.solutions.push_back(rows[i].solution);
    }
    return block;
  }

  Block StartBlock(const SubsetRange& range, std::size_t from, std::size_t count) const {
    Block block;
    range.Append(from, count, block.subsets);
    block.solutions.resize(block.subsets.size() / static_cast<std::size_t>(range.Size()));
    CurrentKernels<SubsetKernels>().start(target_->Problem(), range.Size(), block.subsets.data(),
                                          block.solutions.size(), block.solutions.data());
    return block;
  }

  void Solve(int32_t size, Block& block, CandidateList& found) const {
    if (offer_.hasLimits) KeepFeasible(static_cast<std::size_t>(size), block);
    if (!offer_.hasSeveralLevels) {
      CurrentKernels<SubsetKernels>().solve(target_->Problem(), size, block.subsets.data(),
                                            block.solutions.size(), block.solutions.data());
    }
    for (std::size_t i = 0; i < block.solutions.size(); ++i) {
      Candidate candidate;
      candidate.size = size;
      std::copy_n(&block.subsets[i * static_cast<std::size_t>(size)], size, candidate.subset.begin());
      candidate.rank = RankOf(candidate);
      candidate.solution = block.solutions[i];
      if (Complete(candidate)) found.Add(candidate);
    }
  }

  // Moves the starts of a block within the limits and drops the subsets that no shares bring there.
  void KeepFeasible(std::size_t size, Block& block) const {
    const MatchProblem& problem = target_->Problem();
    std::size_t kept = 0;
    for (std::size_t i = 0; i < block.solutions.size(); ++i) {
      const uint16_t* const subset = &block.subsets[i * size];
      std::array<double, kMostSubsetColorants> least{}, most{};
      for (std::size_t k = 0; k < size; ++k) {
        least[k] = problem.least[subset[k]], most[k] = problem.most[subset[k]];
      }
      SubsetSolution& solution = block.solutions[i];
      if (!MoveWithinLimits(least.data(), most.data(), size, problem.baseK == nullptr, solution.shares)) {
        continue;
      }
      std::copy_n(subset, size, &block.subsets[kept * size]);
      block.solutions[kept++] = solution;
    }
    block.subsets.resize(kept * size);
    block.solutions.resize(kept);
  }

  // A number that orders subsets of one size: their colorants as digits.
  static uint64_t RankOf(const Candidate& candidate) {
    uint64_t rank = 0;
    for (int32_t i = 0; i < candidate.size; ++i) {
      rank = rank * 10'000 + candidate.subset[static_cast<std::size_t>(i)];
    }
    return rank;
  }

  // Brings limits and levels into a solution and sets its key; false for one that is no recipe.
  bool Complete(Candidate& candidate) const {
    if (NeedsRefiner(candidate)) {
      SubsetRefiner(offer_, target_->Problem())
          .Solve(candidate.subset.data(), candidate.size, candidate.solution);
      if (candidate.solution.end == SubsetEnd::kUnsolved) return false;
    }
    if (candidate.solution.end == SubsetEnd::kAtBound || !(candidate.solution.worst < 1e290)) return false;
    candidate.worst = std::sqrt(candidate.solution.worst);
    candidate.least = LeastWorst(candidate);
    candidate.key = candidate.worst;
    switch (settings_.order) {
      case RecipeOrder::kCost:
        SetPriceKey(candidate);
        break;
      case RecipeOrder::kMetamerism:
        SetPredictedKey(&CRecipe::metamerism, candidate);
        break;
      case RecipeOrder::kInconstancy:
        SetPredictedKey(&CRecipe::inconstancy, candidate);
        break;
      case RecipeOrder::kExpected:
        SetExpectedKey(candidate);
        break;
      default:
        break;
    }
    return settings_.leastOpacity == 0.0 || maker_->IsOpaqueEnough(candidate);
  }

  // The root of the mean of the squares, which the sum's minimum makes least, is below the largest of them everywhere.
  double LeastWorst(const Candidate& candidate) const {
    if (!maker_->IsLeveled()) return candidate.worst;
    const double objective = std::max(candidate.solution.objective, 0.0);  // which rounding may leave below 0
    return std::sqrt(objective / maker_->LampCount());
  }

  static constexpr double kNear = 1.25;  // to first order, differences are known to a few percent

  void SetPriceKey(Candidate& candidate) const {
    const std::array<double, kMostSubsetColorants> prices = maker_->PricesOf(candidate);
    candidate.isBeyond = candidate.least > kNear * settings_.tolerance;
    if (candidate.isBeyond) return;
    const double price = WorstRefiner(offer_, *target_)
                             .LeastPrice(candidate.subset.data(), candidate.size, prices.data(),
                                         settings_.tolerance, candidate.solution);
    candidate.isBeyond = !(price < HUGE_VAL);
    if (!candidate.isBeyond) candidate.key = price;
  }

  // By a figure that only the predicted recipe has.
  void SetPredictedKey(double CRecipe::*figure, Candidate& candidate) const {
    const double lamps = maker_->LampCount();
    candidate.isBeyond = candidate.worst > kNear * std::sqrt(lamps) * settings_.tolerance;
    if (candidate.isBeyond) return;
    Candidate best = candidate;
    const CRecipe recipe = maker_->Best(best);
    candidate.isBeyond = !recipe.isWithinTolerance;
    if (recipe.isWithinTolerance && !IsUnset(recipe.*figure)) candidate.key = recipe.*figure;
  }

  void SetExpectedKey(Candidate& candidate) const {
    candidate.isBeyond = candidate.least > kNear * settings_.tolerance;
    if (candidate.isBeyond) return;
    const double expected = maker_->ExpectedOf(candidate);
    candidate.key = IsUnset(expected) ? HUGE_VAL : expected;
  }

  // True where the kernels have not found the last word: curves depend on the shares, or the colorant that takes what the
  // others leave came near a limit without being held there. Steps that did not end leave shares that are good enough to be
  // ordered by.
  bool NeedsRefiner(const Candidate& candidate) const {
    if (offer_.hasSeveralLevels) return true;
    if (!offer_.hasLimits || candidate.solution.end != SubsetEnd::kUnsolved) return false;
    const MatchProblem& problem = target_->Problem();
    for (std::size_t i = 0; i < static_cast<std::size_t>(candidate.size); ++i) {
      const uint16_t colorant = candidate.subset[i];
      const double least = problem.least[colorant], most = problem.most[colorant];
      const double share = candidate.solution.shares[i];
      constexpr double kNearLimit = 1e-3;
      const bool isNearLeast = least > 0.0 && share != least && share < least + kNearLimit;
      const bool isNearMost = most < 1.0 && share != most && share > most - kNearLimit;
      if (isNearLeast || isNearMost) return true;
    }
    return false;
  }

  const CColorantSystemData& system_;
  const CColorantRulesData& rules_;
  const CRecipeSettings& settings_;
  Offer offer_;
  CColorantSystemData own_;
  std::optional<MatchTarget> target_;
  std::optional<RecipeMaker> maker_;
  std::vector<SubsetRange> ranges_;
  double done_ = 0.0;
};

}  // namespace

RecipeOutcome CheckRecipe(const CColorantSystemData& system, const CColorantRulesData& rules,
                          const CRecipeTarget& target, const CRecipeSettings& settings) {
  return Search(system, rules, settings).Prepare(target);
}

RecipeOutcome FormulateRecipes(const CColorantSystemData& system, const CColorantRulesData& rules,
                               const CRecipeTarget& target, const CRecipeSettings& settings,
                               CRecipeArray& recipes) {
  return Search(system, rules, settings).Run(target, recipes);
}

}  // namespace vrx
