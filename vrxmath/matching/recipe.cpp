#include <vrxmath/matching/recipe.h>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/match_target.h>
#include <vrxmath/matching/offer.h>
#include <vrxmath/matching/subset_kernels.h>
#include <vrxmath/matching/subset_refiner.h>
#include <vrxmath/numeric/lane_kernels.h>

namespace vrx {

namespace {

// A solved subset that may become a recipe. Ranks make the order total: two candidates never compare equal.
struct Candidate {
  bool isBeyond = false;  // outside of what the order asks for first
  double key = 0.0;
  double worst = 0.0;  // to first order
  int32_t size = 0;
  uint64_t rank = 0;
  std::array<uint16_t, kMostSubsetColorants> subset{};
  SubsetSolution solution{};

  bool operator<(const Candidate& other) const {
    if (isBeyond != other.isBeyond) return other.isBeyond;
    if (key != other.key) return key < other.key;
    return rank < other.rank;
  }
};

// The best candidates of one size.
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
  // Best first.
  std::vector<Candidate> Sorted() const {
    std::vector<Candidate> sorted = candidates_;
    std::sort(sorted.begin(), sorted.end());
    return sorted;
  }

 private:
  std::size_t most_;
  std::vector<Candidate> candidates_;  // a heap, the worst in front
};

class Search {
 public:
  Search(const CColorantSystemData& system, const CColorantRulesData& rules, const CRecipeSettings& settings)
      : system_(system), rules_(rules), settings_(settings) {}

  // Makes ready for a target; a fault when it, or the settings, cannot be used.
  RecipeOutcome Prepare(const CRecipeTarget& target) {
    RecipeOutcome outcome{CheckSettings(settings_)};
    if (outcome.fault == RecipeFault::kNone) outcome = offer_.Make(system_, settings_);
    if (outcome.fault != RecipeFault::kNone) return outcome;
    target_.emplace(offer_, system_, target, settings_);
    return target_->Fault() != RecipeFault::kNone ? RecipeOutcome{target_->Fault()} : CountSubsets();
  }

  RecipeOutcome Run(const CRecipeTarget& target, CRecipeArray& recipes) {
    const RecipeOutcome outcome = Prepare(target);
    if (outcome.fault != RecipeFault::kNone) return outcome;
    MakeOwnSystem();
    std::vector<std::vector<Candidate>> bySize;
    for (const SubsetRange& range : ranges_) {
      if (!SolveSize(range, bySize.emplace_back())) return {RecipeFault::kStopped, 0, outcome.subsets};
    }
    CRecipeArray chosen;
    if (!Choose(bySize, chosen)) return {RecipeFault::kStopped, 0, outcome.subsets};
    recipes = chosen;
    return outcome;
  }

 private:
  static constexpr std::size_t kBlock = 2048;

  // Subsets that are solved between two questions whether to go on: fewer where each takes longer than the kernels do.
  std::size_t BlockRows() const {
    const bool isSlow = settings_.order == RecipeOrder::kCost ||
                        settings_.order == RecipeOrder::kMetamerism || settings_.leastOpacity > 0.0 ||
                        offer_.hasLimits || offer_.hasSeveralLevels;
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
    }
    if (candidate.solution.end == SubsetEnd::kAtBound || !(candidate.solution.worst < 1e290)) return false;
    if (candidate.solution.end == SubsetEnd::kUnsolved && NeedsRefiner(candidate)) return false;
    candidate.worst = std::sqrt(candidate.solution.worst);
    candidate.key = candidate.worst;
    constexpr double kNear = 1.25;  // to first order, differences are known to a few percent
    const bool hasOwnKey =
        settings_.order == RecipeOrder::kMetamerism || settings_.order == RecipeOrder::kCost;
    const bool isExact = hasOwnKey || settings_.leastOpacity > 0.0;
    if (!isExact) return true;
    if (candidate.worst > kNear * settings_.tolerance) {
      candidate.isBeyond = hasOwnKey;
      return settings_.leastOpacity == 0.0 || IsOpaqueEnough(candidate);
    }
    const CRecipe recipe = RecipeOf(candidate);
    if (recipe.opacity < settings_.leastOpacity) return false;
    candidate.isBeyond = hasOwnKey && !recipe.isWithinTolerance;
    if (hasOwnKey && recipe.isWithinTolerance) {
      candidate.key = settings_.order == RecipeOrder::kCost ? recipe.cost : recipe.metamerism;
      if (IsUnset(candidate.key)) candidate.key = candidate.worst;
    }
    return true;
  }

  bool IsOpaqueEnough(const Candidate& candidate) const {
    CRecipe recipe;
    SetFormula(candidate, recipe);
    return OpacityOf(recipe.formula) >= settings_.leastOpacity;
  }

  // True where the kernels have not found the last word: a share beyond its limits, or a bound that need not be one
  // where limits push.
  bool NeedsRefiner(const Candidate& candidate) const {
    if (offer_.hasSeveralLevels) return true;
    if (!offer_.hasLimits) return false;
    bool isBeyond = false, isPushed = false;
    for (int32_t i = 0; i < candidate.size; ++i) {
      const OfferedColorant& colorant = offer_.colorants[candidate.subset[static_cast<std::size_t>(i)]];
      const double share = candidate.solution.shares[i];
      isBeyond = isBeyond || !(share >= colorant.least && share <= colorant.most);
      isPushed = isPushed || colorant.most < 1.0 || (colorant.isRequired && colorant.least > 0.0);
    }
    return candidate.solution.end == SubsetEnd::kInside ? isBeyond : isPushed;
  }

  // The amounts of a candidate's colorants in steps of the dispenser: each the nearest one, but for the largest, which
  // takes what is then missing from the batch or too much. With a substrate amounts have no total to keep.
  std::array<double, kMostSubsetColorants> AmountsOf(const Candidate& candidate) const {
    std::array<double, kMostSubsetColorants> amounts{};
    const double step = settings_.resolution;
    double others = 0.0;  // in steps
    std::size_t largest = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(candidate.size); ++i) {
      const double amount = candidate.solution.shares[i] * settings_.batchSize;
      amounts[i] = step == 0.0 ? amount : NearestSteps(amount, step);
      others += amounts[i];
      if (candidate.solution.shares[i] > candidate.solution.shares[largest]) largest = i;
    }
    if (step == 0.0) return amounts;
    if (offer_.substrate == nullptr) {
      others -= amounts[largest];
      amounts[largest] = NearestSteps(settings_.batchSize, step) - others;
    }
    for (double& amount : amounts) amount = AmountOfSteps(amount, step);
    return amounts;
  }

  // Formula, cost and count of a candidate; false when rounding leaves nothing of a colorant.
  bool SetFormula(const Candidate& candidate, CRecipe& recipe) const {
    const std::array<double, kMostSubsetColorants> amounts = AmountsOf(candidate);
    double cost = 0.0, total = 0.0;
    const auto add = [&](const CComponent& component, double amount, double price) {
      CDbFormulaElement line;
      line.componentId = static_cast<int32_t>(component.GetId());
      line.amount = amount;
      recipe.formula.Add(line);
      cost += line.amount * price;
      total += line.amount;
      return line.amount > 0.0;
    };
    recipe.colorants = candidate.size;
    if (offer_.substrate != nullptr) {
      add(*offer_.substrate, RoundedToStep(settings_.batchSize, settings_.resolution), offer_.substrateCost);
    }
    bool isWhole = true;
    for (std::size_t i = 0; i < static_cast<std::size_t>(candidate.size); ++i) {
      const OfferedColorant& colorant = offer_.colorants[candidate.subset[i]];
      isWhole = add(*colorant.component, amounts[i], colorant.cost) && isWhole;
    }
    recipe.cost = cost;
    return isWhole && total > 0.0;
  }

  double OpacityOf(const CDbFormula& formula) const {
    if (IsUnset(settings_.black) || IsUnset(settings_.white)) return kUnset;
    CTrisValues overBlack, overWhite;
    PredictFilm(formula, own_, settings_.black, settings_.thickness, settings_.mode)
        .Tristimulus(settings_.illuminants[0], settings_.observer, overBlack);
    PredictFilm(formula, own_, settings_.white, settings_.thickness, settings_.mode)
        .Tristimulus(settings_.illuminants[0], settings_.observer, overWhite);
    return Opacity(overBlack, overWhite);
  }

  // The recipe of a candidate as it is; without colorants when rounding leaves nothing of one.
  CRecipe RecipeOf(const Candidate& candidate) const {
    CRecipe recipe;
    if (!SetFormula(candidate, recipe)) return {};
    recipe.curve = PredictReflectance(recipe.formula, own_, settings_.mode);
    if (IsUnset(recipe.curve)) return {};
    target_->Judge(recipe);
    recipe.opacity = OpacityOf(recipe.formula);
    return recipe;
  }

  // A recipe and what tells it from those that are like it.
  struct Ranked {
    CRecipe recipe;
    uint64_t rank = 0;
  };

  double KeyOf(const CRecipe& recipe) const {
    switch (settings_.order) {
      case RecipeOrder::kFewest:
        return recipe.colorants;
      case RecipeOrder::kMetamerism:
        return IsUnset(recipe.metamerism) ? 0.0 : recipe.metamerism;
      case RecipeOrder::kCost:
        return recipe.cost;
      default:
        return 0.0;
    }
  }

  bool IsBefore(const Ranked& a, const Ranked& b) const {
    const CRecipe &x = a.recipe, &y = b.recipe;
    if (x.isWithinTolerance != y.isWithinTolerance) return x.isWithinTolerance;
    if (x.isWithinTolerance && KeyOf(x) != KeyOf(y)) return KeyOf(x) < KeyOf(y);
    // Below 1e-8 a difference is rounding.
    const double xWorst = std::floor(1e8 * x.worst), yWorst = std::floor(1e8 * y.worst);
    if (xWorst != yWorst) return xWorst < yWorst;
    return x.colorants != y.colorants ? x.colorants < y.colorants : a.rank < b.rank;
  }

  // Predicts the best candidates of every size and takes the best recipes of all; false when stopped.
  bool Choose(const std::vector<std::vector<Candidate>>& bySize, CRecipeArray& chosen) const {
    std::vector<Ranked> recipes;
    for (const std::vector<Candidate>& candidates : bySize) {
      if (!Predict(candidates, recipes)) return false;
      std::sort(recipes.begin(), recipes.end(),
                [&](const Ranked& a, const Ranked& b) { return IsBefore(a, b); });
      if (settings_.order == RecipeOrder::kFewest && Grouped(recipes, true).GetSize() >= settings_.top) break;
    }
    chosen = Grouped(recipes, false);
    return true;
  }

  // Refines and predicts the candidates of one size until those that are left cannot be among the first: their keys,
  // known to a few percent, exceed what as many recipes as are asked for have reached. Several threads look ahead, which
  // changes nothing of what is taken. False when stopped.
  bool Predict(const std::vector<Candidate>& candidates, std::vector<Ranked>& recipes) const {
    const auto top = static_cast<std::size_t>(settings_.top);
    const std::size_t ahead = settings_.threads == 1 ? 1 : 2 * top;
    std::vector<double> reached;
    for (std::size_t from = 0; from < candidates.size(); from += ahead) {
      std::vector<Ranked> next(std::min(ahead, candidates.size() - from));
      const bool isDone = ForEach(
          next.size(), 1, [&](std::size_t i, std::size_t) { next[i] = RankedOf(candidates[from + i]); });
      if (!isDone) return false;
      for (std::size_t i = 0; i < next.size(); ++i) {
        if (IsEnough(reached, candidates[from + i])) return true;
        const CRecipe& recipe = next[i].recipe;
        if (recipe.colorants == 0 || !(recipe.worst < 1e290)) continue;
        if (settings_.leastOpacity > 0.0 && !(recipe.opacity >= settings_.leastOpacity)) continue;
        reached.push_back(recipe.worst);
        recipes.push_back(next[i]);
      }
    }
    return true;
  }

  // True when a candidate, and those behind it, cannot be among the first of those that reached the differences.
  bool IsEnough(std::vector<double>& reached, const Candidate& candidate) const {
    constexpr double kMargin = 1.25, kLeast = 0.02;
    const auto top = static_cast<std::size_t>(settings_.top);
    if (reached.size() < 2 * top) return false;
    std::nth_element(reached.begin(), reached.begin() + static_cast<std::ptrdiff_t>(top), reached.end());
    return candidate.worst > kMargin * reached[top] + kLeast || reached.size() >= 8 * top;
  }

  // A candidate refined and predicted; without colorants when the smaller subset stands for it.
  Ranked RankedOf(const Candidate& candidate) const {
    Candidate refined = candidate;
    SubsetRefiner(offer_, target_->Problem()).Solve(refined.subset.data(), refined.size, refined.solution);
    if (refined.solution.end == SubsetEnd::kAtBound) return {};
    if (refined.solution.end == SubsetEnd::kUnsolved) refined = candidate;
    return {RecipeOf(refined), refined.rank};
  }

  // The lines of a recipe that are more than traces, as numbers.
  std::vector<int32_t> MainLines(const CRecipe& recipe) const {
    std::vector<int32_t> lines;
    double total = 0.0;
    for (const CDbFormulaElement& line : recipe.formula) total += line.amount;
    for (const CDbFormulaElement& line : recipe.formula) {
      if (line.amount >= settings_.trace * total) lines.push_back(line.componentId);
    }
    return lines;
  }

  // The first recipes of a sorted list, of each group that differs by traces only the first.
  CRecipeArray Grouped(const std::vector<Ranked>& sorted, bool isWithinOnly) const {
    CRecipeArray recipes;
    std::vector<std::vector<int32_t>> groups;
    for (const Ranked& ranked : sorted) {
      if (isWithinOnly && !ranked.recipe.isWithinTolerance) break;
      const std::vector<int32_t> main = MainLines(ranked.recipe);
      const auto group = std::find(groups.begin(), groups.end(), main);
      if (group != groups.end()) {
        ++recipes[group - groups.begin()].alike;
      } else if (recipes.GetSize() < settings_.top) {
        groups.push_back(main);
        recipes.Add(ranked.recipe);
      }
    }
    return recipes;
  }

  const CColorantSystemData& system_;
  const CColorantRulesData& rules_;
  const CRecipeSettings& settings_;
  Offer offer_;
  CColorantSystemData own_;
  std::optional<MatchTarget> target_;
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
