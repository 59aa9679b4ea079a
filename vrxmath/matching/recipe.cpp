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
#include <vrxmath/matching/error_bound.h>
#include <vrxmath/matching/match_target.h>
#include <vrxmath/matching/offer.h>
#include <vrxmath/matching/subset_kernels.h>
#include <vrxmath/matching/subset_refiner.h>
#include <vrxmath/matching/worst_refiner.h>
#include <vrxmath/numeric/lane_kernels.h>

namespace vrx {

namespace {

// A solved subset that may become a recipe. Ranks make the order total: two candidates never compare equal.
struct Candidate {
  bool isBeyond = false;  // outside of what the order asks for first
  double key = 0.0;
  double worst = 0.0;  // to first order
  double least = 0.0;  // below which no shares of the subset bring the largest difference, to first order
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
    if (outcome.fault == RecipeFault::kNone) outcome = offer_.Make(system_, settings_, true);
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
        SetMetamerismKey(candidate);
        break;
      case RecipeOrder::kExpected:
        SetExpectedKey(candidate);
        break;
      default:
        break;
    }
    return settings_.leastOpacity == 0.0 || IsOpaqueEnough(candidate);
  }

  // The root of the mean of the squares, which the sum's minimum makes least, is below the largest of them everywhere.
  double LeastWorst(const Candidate& candidate) const {
    if (!IsLeveled()) return candidate.worst;
    const double objective = std::max(candidate.solution.objective, 0.0);  // which rounding may leave below 0
    return std::sqrt(objective / LampCount());
  }

  // The largest difference is made small where the colour is all that is asked for; weights ask for their own sum.
  bool IsLeveled() const {
    return settings_.objective == RecipeObjective::kTristimulus && settings_.weights.IsEmpty() &&
           settings_.order != RecipeOrder::kMetamerism;
  }

  static constexpr double kNear = 1.25;  // to first order, differences are known to a few percent

  void SetPriceKey(Candidate& candidate) const {
    const std::array<double, kMostSubsetColorants> prices = PricesOf(candidate);
    candidate.isBeyond = candidate.least > kNear * settings_.tolerance;
    if (candidate.isBeyond) return;
    const double price = WorstRefiner(offer_, *target_)
                             .LeastPrice(candidate.subset.data(), candidate.size, prices.data(),
                                         settings_.tolerance, candidate.solution);
    candidate.isBeyond = !(price < HUGE_VAL);
    if (!candidate.isBeyond) candidate.key = price;
  }

  // Each lamp has three rows.
  [[nodiscard]] double LampCount() const {
    const int32_t lamps = target_->Problem().rows / 3;
    return lamps;
  }

  void SetMetamerismKey(Candidate& candidate) const {
    const double lamps = LampCount();
    candidate.isBeyond = candidate.worst > kNear * std::sqrt(lamps) * settings_.tolerance;
    if (candidate.isBeyond) return;
    Candidate best = candidate;
    const CRecipe recipe = Best(best);
    candidate.isBeyond = !recipe.isWithinTolerance;
    if (recipe.isWithinTolerance && !IsUnset(recipe.metamerism)) candidate.key = recipe.metamerism;
  }

  void SetExpectedKey(Candidate& candidate) const {
    candidate.isBeyond = candidate.least > kNear * settings_.tolerance;
    CRecipe recipe;
    if (candidate.isBeyond || !SetLoad(candidate, recipe)) return;
    SetFormula(candidate, recipe.load, recipe);
    const double expected = ErrorBound(recipe.formula, own_, settings_.calibrated);
    candidate.key = IsUnset(expected) ? HUGE_VAL : expected;
  }

  std::array<double, kMostSubsetColorants> PricesOf(const Candidate& candidate) const {
    std::array<double, kMostSubsetColorants> prices{};
    for (std::size_t i = 0; i < static_cast<std::size_t>(candidate.size); ++i) {
      prices[i] = offer_.mostLoad * offer_.colorants[candidate.subset[i]].cost;
    }
    return prices;
  }

  bool IsOpaqueEnough(const Candidate& candidate) const {
    CRecipe recipe;
    SetFormula(candidate, LoadRange(candidate).second, recipe);
    return OpacityOf(recipe.formula) >= settings_.leastOpacity;
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

  // The loads at which the shares of a candidate lie within their limits; the first is above the second where none do.
  std::pair<double, double> LoadRange(const Candidate& candidate) const {
    double least = offer_.leastLoad, most = offer_.mostLoad;
    for (std::size_t i = 0; offer_.clear != nullptr && i < static_cast<std::size_t>(candidate.size); ++i) {
      const OfferedColorant& colorant = offer_.colorants[candidate.subset[i]];
      constexpr double kRounding = 1e-12;
      const double share = candidate.solution.shares[i];
      least = std::max(least, colorant.leastOfWhole / share * (1.0 - kRounding));
      most = std::min(most, colorant.mostOfWhole / share * (1.0 + kRounding));
    }
    return {least, most};
  }

  // The largest load at which no colorant exceeds its calibrated range; HUGE_VAL where no range is known.
  double LoadOfRanges(const Candidate& candidate) const {
    double load = HUGE_VAL;
    for (std::size_t i = 0; i < static_cast<std::size_t>(candidate.size); ++i) {
      const uint32_t id = offer_.colorants[candidate.subset[i]].component->GetId();
      for (const CComponentCalibration& calibrated : settings_.calibrated) {
        const bool isIt = calibrated.componentId == id && !IsUnset(calibrated.mostShare);
        if (isIt) load = std::min(load, calibrated.mostShare / candidate.solution.shares[i]);
      }
    }
    return load;
  }

  // The load of a candidate, and what it rests on; false when no load fits its limits.
  bool SetLoad(const Candidate& candidate, CRecipe& recipe) const {
    if (offer_.clear == nullptr) return true;
    const auto [least, most] = LoadRange(candidate);
    if (!(least <= most)) return false;
    recipe.load = most;
    recipe.loadBasis = LoadBasis::kUndetermined;
    constexpr double kSame = 1e-9;
    if (most - least <= kSame) {
      recipe.loadBasis = LoadBasis::kGiven;
    } else if (settings_.leastOpacity > 0.0) {
      recipe.load = LeastOpaqueLoad(candidate, least, most);
      recipe.loadBasis = LoadBasis::kOpacity;
    } else if (const double ofRanges = LoadOfRanges(candidate); ofRanges < HUGE_VAL) {
      recipe.load = std::min(std::max(ofRanges, least), most);
      recipe.loadBasis = LoadBasis::kRange;
    }
    return true;
  }

  // The least load whose film is opaque enough, by bisection: more of the same mixture hides more.
  double LeastOpaqueLoad(const Candidate& candidate, double least, double most) const {
    const auto isEnough = [&](double load) {
      CRecipe recipe;
      SetFormula(candidate, load, recipe);
      return OpacityOf(recipe.formula) >= settings_.leastOpacity;
    };
    if (isEnough(least)) return least;
    for (int step = 0; step < 24; ++step) {
      const double middle = 0.5 * (least + most);
      (isEnough(middle) ? most : least) = middle;
    }
    return most;
  }

  // The amounts of a candidate's colorants, and behind them that of the clear component, in steps of the dispenser:
  // each the nearest one, but for the largest, which takes what is then missing from the batch or too much. With a
  // substrate amounts have no total to keep.
  std::array<double, kMostSubsetColorants + 1> AmountsOf(const Candidate& candidate, double load) const {
    std::array<double, kMostSubsetColorants + 1> amounts{};
    const double step = settings_.resolution;
    const auto size = static_cast<std::size_t>(candidate.size);
    const std::size_t count = size + (offer_.clear != nullptr ? 1 : 0);
    for (std::size_t i = 0; i < count; ++i) {
      const double share = i < size ? load * candidate.solution.shares[i] : 1.0 - load;
      amounts[i] = share * settings_.batchSize;
    }
    if (step == 0.0) return amounts;
    const auto largest = static_cast<std::size_t>(
        std::max_element(amounts.begin(), amounts.begin() + static_cast<std::ptrdiff_t>(count)) -
        amounts.begin());
    double others = 0.0;  // in steps
    for (double& amount : amounts) others += amount = NearestSteps(amount, step);
    if (offer_.substrate == nullptr) {
      others -= amounts[largest];
      amounts[largest] = NearestSteps(settings_.batchSize, step) - others;
    }
    for (double& amount : amounts) amount = AmountOfSteps(amount, step);
    return amounts;
  }

  // Formula, cost and count of a candidate; false when rounding leaves nothing of a colorant.
  bool SetFormula(const Candidate& candidate, double load, CRecipe& recipe) const {
    const auto amounts = AmountsOf(candidate, load);
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
    const auto size = static_cast<std::size_t>(candidate.size);
    bool isWhole = true;
    for (std::size_t i = 0; i < size; ++i) {
      const OfferedColorant& colorant = offer_.colorants[candidate.subset[i]];
      isWhole = add(*colorant.component, amounts[i], colorant.cost) && isWhole;
    }
    if (amounts[size] > 0.0) add(*offer_.clear, amounts[size], offer_.clearCost);
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

  // The recipe of a candidate as it is; without colorants when rounding leaves nothing of one, or no load fits its
  // limits.
  CRecipe RecipeOf(const Candidate& candidate) const {
    CRecipe recipe;
    if (!SetLoad(candidate, recipe) || !SetFormula(candidate, recipe.load, recipe)) return {};
    recipe.curve = PredictReflectance(recipe.formula, own_, settings_.mode);
    if (IsUnset(recipe.curve)) return {};
    target_->Judge(recipe);
    recipe.opacity = OpacityOf(recipe.formula);
    recipe.expected = ErrorBound(recipe.formula, own_, settings_.calibrated, &recipe.outside);
    return recipe;
  }

  // A recipe and what tells it from those that are like it.
  struct Ranked {
    CRecipe recipe;
    uint64_t rank = 0;
    std::vector<uint32_t> main, traces;  // its colorants
  };

  double KeyOf(const CRecipe& recipe) const {
    switch (settings_.order) {
      case RecipeOrder::kFewest:
        return recipe.colorants;
      case RecipeOrder::kMetamerism:
        return IsUnset(recipe.metamerism) ? 0.0 : recipe.metamerism;
      case RecipeOrder::kCost:
        return recipe.cost;
      case RecipeOrder::kExpected:
        return IsUnset(recipe.expected) ? HUGE_VAL : recipe.expected;
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

  // Predicts the best candidates and takes the best recipes of all; false when stopped. Fewer colorants first means one
  // size after the other, as long as recipes within the tolerance are missing.
  bool Choose(const std::vector<std::vector<Candidate>>& bySize, CRecipeArray& chosen) const {
    std::vector<Ranked> recipes;
    const auto sort = [&] {
      std::sort(recipes.begin(), recipes.end(),
                [&](const Ranked& a, const Ranked& b) { return IsBefore(a, b); });
    };
    if (settings_.order == RecipeOrder::kFewest) {
      for (const std::vector<Candidate>& candidates : bySize) {
        if (!Predict(candidates, recipes)) return false;
        sort();
        if (Grouped(recipes, true).GetSize() >= settings_.top) break;
      }
    } else {
      std::vector<Candidate> all;
      for (const std::vector<Candidate>& candidates : bySize) {
        all.insert(all.end(), candidates.begin(), candidates.end());
      }
      std::sort(all.begin(), all.end());
      if (!Predict(all, recipes)) return false;
      sort();
    }
    chosen = Grouped(recipes, false);
    return true;
  }

  // The largest differences of the recipes that count, of one group only the first that came.
  struct Reached {
    std::vector<std::vector<uint32_t>> groups;
    std::vector<double> worst;
  };

  // Refines and predicts candidates until those that are left cannot be among the first: their keys, known to a few
  // percent, exceed what as many recipes as are asked for have reached. Several threads look ahead, which changes
  // nothing of what is taken. False when stopped.
  bool Predict(const std::vector<Candidate>& candidates, std::vector<Ranked>& recipes) const {
    const auto top = static_cast<std::size_t>(settings_.top);
    const std::size_t ahead = settings_.threads == 1 ? 1 : 2 * top;
    Reached reached;
    for (std::size_t from = 0; from < candidates.size(); from += ahead) {
      std::vector<Ranked> next(std::min(ahead, candidates.size() - from));
      const double limit = Limit(reached);
      const bool isDone = ForEach(next.size(), 1, [&](std::size_t i, std::size_t) {
        if (candidates[from + i].least <= limit) next[i] = RankedOf(candidates[from + i]);
      });
      if (!isDone) return false;
      for (std::size_t i = 0; i < next.size(); ++i) {
        if (IsEnough(reached, candidates[from + i])) return true;
        const CRecipe& recipe = next[i].recipe;
        if (candidates[from + i].least > Limit(reached)) continue;
        if (recipe.colorants == 0 || !(recipe.worst < 1e290)) continue;
        if (settings_.leastOpacity > 0.0 && !(recipe.opacity >= settings_.leastOpacity)) continue;
        if (std::find(reached.groups.begin(), reached.groups.end(), next[i].main) == reached.groups.end()) {
          reached.groups.push_back(next[i].main);
          reached.worst.push_back(recipe.worst);
        }
        recipes.push_back(next[i]);
      }
    }
    return true;
  }

  // The difference beyond which a recipe is not among the first of those reached so far, with a margin for what is
  // known to first order only.
  double Limit(const Reached& reached) const {
    constexpr double kMargin = 1.25, kLeast = 0.02;
    const auto top = static_cast<std::size_t>(settings_.top);
    if (reached.worst.size() < 2 * top) return HUGE_VAL;
    std::vector<double> worst = reached.worst;
    std::nth_element(worst.begin(), worst.begin() + static_cast<std::ptrdiff_t>(top), worst.end());
    return kMargin * worst[top] + kLeast;
  }

  // True when a candidate, and those behind it, cannot be among the first of those that reached the differences.
  bool IsEnough(const Reached& reached, const Candidate& candidate) const {
    if (reached.worst.size() >= 16 * static_cast<std::size_t>(settings_.top)) return true;
    const double lamps = LampCount();
    const double gain = IsLeveled() ? std::sqrt(lamps) : 1.0;  // most that leveling makes of a difference
    return candidate.worst > gain * Limit(reached);
  }

  // A candidate refined and predicted; without colorants when the smaller subset stands for it.
  Ranked RankedOf(const Candidate& candidate) const {
    Candidate refined = candidate;
    const SubsetRefiner refiner(offer_, target_->Problem());
    refiner.Solve(refined.subset.data(), refined.size, refined.solution);
    if (refined.solution.end == SubsetEnd::kAtBound) return {};
    if (refined.solution.end == SubsetEnd::kUnsolved) refined = candidate;
    Ranked ranked{Best(refined), refined.rank, {}, {}};
    SetMain(refiner, refined, ranked);
    return ranked;
  }

  // The recipe of a candidate that the settings ask for, with its shares: of the least sum of squares, of the smallest
  // largest difference, or the cheapest within the tolerance.
  CRecipe Best(Candidate& candidate) const {
    CRecipe recipe = RecipeOf(candidate);
    if (recipe.colorants == 0) return recipe;
    const WorstRefiner refiner(offer_, *target_);
    const bool isMissed = !recipe.isWithinTolerance;
    if (IsLeveled() || isMissed) {
      Candidate leveled = candidate;
      refiner.Level(leveled.subset.data(), leveled.size, leveled.solution);
      const CRecipe level = leveled.solution.end == SubsetEnd::kInside ? RecipeOf(leveled) : CRecipe();
      const bool isWanted = IsLeveled() ? level.worst < recipe.worst : level.isWithinTolerance;
      if (level.colorants > 0 && isWanted) recipe = level, candidate = leveled;
    }
    const bool hasPrices = settings_.order == RecipeOrder::kCost && recipe.isWithinTolerance;
    return hasPrices ? Cheapest(refiner, candidate, recipe) : recipe;
  }

  // The cheapest recipe of a candidate that is within the tolerance, rounding included: where rounding leaves it, less
  // of the tolerance is used up.
  CRecipe Cheapest(const WorstRefiner& refiner, Candidate& candidate, const CRecipe& recipe) const {
    const std::array<double, kMostSubsetColorants> prices = PricesOf(candidate);
    for (const double part : {1.0, 0.98, 0.95, 0.9, 0.8, 0.6}) {
      Candidate cheaper = candidate;
      refiner.Cheapen(cheaper.subset.data(), cheaper.size, prices.data(), part * settings_.tolerance,
                      cheaper.solution);
      if (cheaper.solution.end != SubsetEnd::kInside) continue;
      CRecipe cheap = RecipeOf(cheaper);
      if (cheap.colorants == 0 || !cheap.isWithinTolerance || !(cheap.cost < recipe.cost)) continue;
      candidate = cheaper;
      return cheap;
    }
    return recipe;
  }

  double TraceLimit() const {
    constexpr double kPart = 0.1;
    return settings_.trace.value_or(kPart * settings_.tolerance);
  }

  // Which colorants of a recipe are more than traces.
  void SetMain(const SubsetRefiner& refiner, const Candidate& candidate, Ranked& ranked) const {
    const auto size = static_cast<std::size_t>(candidate.size);
    SubsetRefiner::Vector shares{};
    std::copy_n(candidate.solution.shares, size, shares.begin());
    SpectralCurve whole, without;
    const double limit = TraceLimit();
    const bool mayBeTrace = limit > 0.0 && (size > 1 || offer_.substrate != nullptr);
    if (mayBeTrace) refiner.CurveAt(candidate.subset.data(), size, shares, whole);
    for (std::size_t i = 0; i < size; ++i) {
      const uint32_t id = offer_.colorants[candidate.subset[i]].component->GetId();
      SubsetRefiner::Vector others = shares;
      others[i] = 0.0;
      if (mayBeTrace) refiner.CurveAt(candidate.subset.data(), size, others, without);
      const bool isTrace = mayBeTrace && target_->IsNear(whole, without, limit);
      (isTrace ? ranked.traces : ranked.main).push_back(id);
    }
  }

  // The first recipes of a sorted list, of each group that differs by traces only the first.
  CRecipeArray Grouped(const std::vector<Ranked>& sorted, bool isWithinOnly) const {
    CRecipeArray recipes;
    std::vector<std::vector<uint32_t>> groups;
    for (const Ranked& ranked : sorted) {
      if (isWithinOnly && !ranked.recipe.isWithinTolerance) break;
      const auto group = std::find(groups.begin(), groups.end(), ranked.main);
      if (group == groups.end()) {
        if (recipes.GetSize() >= settings_.top) continue;
        groups.push_back(ranked.main);
        recipes.Add(ranked.recipe);
        AddTraces(ranked.traces, recipes[recipes.GetSize() - 1]);
        continue;
      }
      CRecipe& first = recipes[group - groups.begin()];
      ++first.alike;
      AddTraces(ranked.traces, first);
    }
    return recipes;
  }

  static void AddTraces(const std::vector<uint32_t>& traces, CRecipe& recipe) {
    for (const uint32_t id : traces) {
      if (std::find(recipe.traces.begin(), recipe.traces.end(), id) == recipe.traces.end())
        recipe.traces.Add(id);
    }
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
