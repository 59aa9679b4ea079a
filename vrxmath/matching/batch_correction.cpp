#include <vrxmath/matching/batch_correction.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <mutex>
#include <optional>
#include <vector>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/curves.h>
#include <vrxmath/matching/match_target.h>
#include <vrxmath/matching/offer.h>
#include <vrxmath/matching/subset_kernels.h>
#include <vrxmath/matching/subset_refiner.h>
#include <vrxmath/numeric/lane_kernels.h>

namespace vrx {
namespace {

CColorantLevelArray LevelOf(const CColorantValues& constants) {
  CColorantLevel level(1);
  level.concentration = 1.0;
  level.values[0] = constants;
  CColorantLevelArray levels;
  levels.Add(level);
  return levels;
}

// A subset with its shares.
struct Subset {
  int32_t size = 0;
  std::array<uint16_t, kMostSubsetColorants> colorants{};
  SubsetSolution solution{};
};

// A difference without its rounding, which is below 1e-8.
double Countable(double difference) {
  return std::floor(1e8 * difference);
}

// A correction on its way into the list: what is within the tolerance first, by what the aim asks for.
struct Ranked {
  CCorrection correction;
  Subset subset;
  double key = 0.0;

  bool IsBefore(const Ranked& other) const {
    const bool isWithin = correction.isWithinTolerance;
    if (isWithin != other.correction.isWithinTolerance) return isWithin;
    const double a = isWithin ? key : Countable(correction.worst);
    const double b = isWithin ? other.key : Countable(other.correction.worst);
    if (a != b) return a < b;
    if (subset.size != other.subset.size) return subset.size < other.subset.size;
    return subset.colorants < other.subset.colorants;
  }
};

class Correction {
 public:
  Correction(const CColorantSystemData& system, const CColorantRulesData& rules, const CBatch& batch,
             const CCorrectionSettings& settings)
      : rules_(rules), batch_(batch), settings_(settings), own_(system) {}

  // Makes ready for a target; a fault when it, the batch or the settings cannot be used.
  RecipeOutcome Prepare(const CRecipeTarget& target) {
    const RecipeOutcome outcome = MakeOffer();
    if (outcome.fault != RecipeFault::kNone) return outcome;
    target_.emplace(offer_, own_, target, recipe_);
    return target_->Fault() != RecipeFault::kNone ? RecipeOutcome{target_->Fault()} : CountSubsets();
  }

  RecipeOutcome Run(const CRecipeTarget& target, CCorrection& before, CCorrectionArray& corrections) {
    RecipeOutcome outcome = Prepare(target);
    if (outcome.fault != RecipeFault::kNone) return outcome;
    CCorrection asItIs;
    Judge(asItIs);
    std::vector<Ranked> found;
    outcome = SolveAll(outcome, found);
    if (outcome.fault != RecipeFault::kNone) return outcome;
    CCorrectionArray chosen;
    if (!Choose(asItIs, found, chosen)) return {RecipeFault::kStopped, 0, outcome.subsets};
    before = asItIs;
    corrections = chosen;
    return outcome;
  }

 private:
  // The system with the batch in it, as a colorant or in the place of the substrate, and what may be added.
  RecipeOutcome MakeOffer() {
    constexpr double kMostAddition = 100.0;
    const bool isInRange = settings_.mostAddition > 0.0 && settings_.mostAddition <= kMostAddition &&
                           settings_.margin >= 0.0 && settings_.margin < 1.0 && batch_.size > 0.0 &&
                           std::isfinite(batch_.size) && settings_.recipe.top >= 1 &&
                           settings_.recipe.mostColorants >= 1 &&
                           settings_.recipe.mostColorants < kMostSubsetColorants;
    if (!isInRange) return {RecipeFault::kSettings};
    const MixingLaw law = MixingLawOf(own_.opticalModel);
    if (law == MixingLaw::kNone) return {RecipeFault::kNoMixingLaw};
    if (!IsMeasured(batch_.curve)) return {RecipeFault::kBatchNotMeasured};
    if (CountAtFloor(batch_.curve, kFirstVisible, kLastVisible, own_.k1, own_.k2, settings_.recipe.mode) >
        0) {
      return {RecipeFault::kBatchBelowSurface};
    }
    CColorantValues constants;
    if (!BatchConstants(own_, batch_, settings_.recipe.mode, constants)) return {RecipeFault::kBatchFormula};
    MakeSettings(law == MixingLaw::kTwoConstant);
    if (law == MixingLaw::kTwoConstant) {
      CComponent component;
      component.SetId(batchId_ = FreeComponentId(own_));
      component.SetLevels(LevelOf(constants));
      own_.colorants.Add(CColorant(component));
      recipe_.components.Add(
          {batchId_, CRecipeComponent::kRequired, 1.0 / (1.0 + settings_.mostAddition), 1.0, 0.0});
    }
    RecipeOutcome outcome{CheckSettings(recipe_)};
    if (outcome.fault == RecipeFault::kNone) outcome = offer_.Make(own_, recipe_);
    if (outcome.fault != RecipeFault::kNone) return outcome;
    if (offer_.substrate != nullptr) PutBatchUnder(constants);
    for (const CDbFormulaElement& line : batch_.formula) {
      offer_.present.push_back(static_cast<uint32_t>(line.componentId));
    }
    return outcome;
  }

  // The settings of the search: choice and criterion, without limits of shares.
  void MakeSettings(bool hasBatchColorant) {
    recipe_ = settings_.recipe;
    recipe_.mostColorants += hasBatchColorant ? 1 : 0;
    recipe_.leastAmount = 0.0;
    for (CRecipeComponent& component : recipe_.components) component.least = 0.0, component.most = 1.0;
  }

  // One-constant models: the batch takes the place of its substrate, to which additions are relative.
  void PutBatchUnder(const CColorantValues& constants) {
    batchId_ = offer_.substrate->GetId();
    double substrate = 0.0, total = 0.0;
    for (const CDbFormulaElement& line : batch_.formula) {
      total += line.amount;
      if (IsSubstrateId(static_cast<uint32_t>(line.componentId))) substrate += line.amount;
    }
    // A formula without a substrate line stands on one part of it.
    substrateAmount_ = batch_.size * (substrate > 0.0 ? substrate / total : 1.0 / (1.0 + total));
    const auto replace = [&](CComponent& component) {
      if (component.GetId() == batchId_) component.SetLevels(LevelOf(constants));
    };
    for (CColorant& colorant : own_.colorants) replace(colorant);
    for (CResin& resin : own_.resins) replace(resin);
  }

  bool IsSubstrateId(uint32_t id) const {
    const auto isIt = [&](const CComponent& component) {
      return component.GetId() == id && IsSubstrate(component);
    };
    return std::any_of(own_.colorants.begin(), own_.colorants.end(), isIt) ||
           std::any_of(own_.resins.begin(), own_.resins.end(), isIt);
  }

  bool HasSubstrate() const { return offer_.substrate != nullptr; }

  RecipeOutcome CountSubsets() {
    RecipeOutcome outcome;
    for (int32_t size = HasSubstrate() ? 1 : 2; size <= recipe_.mostColorants; ++size) {
      ranges_.emplace_back(offer_, rules_, size);
      const uint64_t sum = outcome.subsets + ranges_.back().Count();
      outcome.subsets = sum < outcome.subsets ? ~uint64_t{0} : sum;
    }
    if (outcome.subsets > recipe_.mostSubsets) outcome.fault = RecipeFault::kTooManySubsets;
    return outcome;
  }

  // Solves all subsets, keeping of each size those that look best.
  RecipeOutcome SolveAll(RecipeOutcome outcome, std::vector<Ranked>& found) const {
    double done = 0.0;
    for (const SubsetRange& range : ranges_) {
      bool isWanted = true;
      std::mutex mutex;
      std::vector<Ranked> ofSize;
      BatchRun run;
      run.threads = recipe_.threads;
      if (recipe_.progress) {
        run.progress = [&](std::size_t count) {
          isWanted =
              recipe_.progress((done + static_cast<double>(count)) / static_cast<double>(outcome.subsets));
          return isWanted;
        };
      }
      constexpr std::size_t kBlock = 256;
      const bool isDone = ForEachBlock(run, static_cast<std::size_t>(range.Count()), kBlock,
                                       [&](std::size_t from, std::size_t count) {
                                         std::vector<Ranked> block = SolveBlock(range, from, count);
                                         const std::lock_guard<std::mutex> lock(mutex);
                                         ofSize.insert(ofSize.end(), block.begin(), block.end());
                                         if (ofSize.size() > 4 * Kept()) KeepBest(ofSize);
                                       });
      if (!isDone || !isWanted) return {RecipeFault::kStopped, 0, outcome.subsets};
      KeepBest(ofSize);
      found.insert(found.end(), ofSize.begin(), ofSize.end());
      done += static_cast<double>(range.Count());
    }
    return outcome;
  }

  std::size_t Kept() const { return std::max<std::size_t>(60, 4 * static_cast<std::size_t>(recipe_.top)); }

  void KeepBest(std::vector<Ranked>& list) const {
    std::sort(list.begin(), list.end(), [](const Ranked& a, const Ranked& b) { return a.IsBefore(b); });
    if (list.size() > Kept()) list.resize(Kept());
  }

  std::vector<Ranked> SolveBlock(const SubsetRange& range, std::size_t from, std::size_t count) const {
    std::vector<uint16_t> subsets;
    range.Append(from, count, subsets);
    const auto size = static_cast<std::size_t>(range.Size());
    std::vector<SubsetSolution> solutions(subsets.size() / size);
    CurrentKernels<SubsetKernels>().start(target_->Problem(), range.Size(), subsets.data(), solutions.size(),
                                          solutions.data());
    if (!offer_.hasSeveralLevels) SolveInLanes(size, subsets, solutions);
    std::vector<Ranked> found;
    for (std::size_t i = 0; i < solutions.size(); ++i) {
      if (!offer_.hasSeveralLevels && solutions[i].end == SubsetEnd::kAtBound) continue;
      Ranked ranked;
      ranked.subset.size = range.Size();
      std::copy_n(&subsets[i * size], size, ranked.subset.colorants.begin());
      ranked.subset.solution = solutions[i];
      Refine(ranked.subset, nullptr);
      if (ranked.subset.solution.end != SubsetEnd::kInside) continue;
      if (HasSubstrate()) HoldTotal(ranked.subset);
      ranked.correction = CorrectionOf(ranked.subset, 1.0);
      if (!(ranked.correction.worst < 1e290)) continue;
      if (ranked.correction.isWithinTolerance) ranked.key = KeyOf(ShrunkAlong(ranked.subset));
      found.push_back(ranked);
    }
    return found;
  }

  // Brings a block as far as the kernels do: most subsets are left there, as a share runs to 0.
  void SolveInLanes(std::size_t size, const std::vector<uint16_t>& subsets,
                    std::vector<SubsetSolution>& solutions) const {
    const MatchProblem& problem = target_->Problem();
    for (std::size_t i = 0; offer_.hasLimits && i < solutions.size(); ++i) {
      std::array<double, kMostSubsetColorants> least{}, most{};
      for (std::size_t k = 0; k < size; ++k) {
        least[k] = problem.least[subsets[i * size + k]], most[k] = problem.most[subsets[i * size + k]];
      }
      MoveWithinLimits(least.data(), most.data(), size, !HasSubstrate(), solutions[i].shares);
    }
    CurrentKernels<SubsetKernels>().solve(problem, static_cast<int32_t>(size), subsets.data(),
                                          solutions.size(), solutions.data());
  }

  void Refine(Subset& subset, const double* prices) const {
    SubsetRefiner(offer_, target_->Problem())
        .Solve(subset.colorants.data(), subset.size, subset.solution, prices);
  }

  // With a substrate shares are amounts without a bound on their total: a total beyond the largest is scaled to it.
  void HoldTotal(Subset& subset) const {
    double total = 0.0;
    for (int32_t i = 0; i < subset.size; ++i) total += subset.solution.shares[i] * substrateAmount_;
    const double most = settings_.mostAddition * batch_.size;
    for (int32_t i = 0; total > most && i < subset.size; ++i) subset.solution.shares[i] *= most / total;
  }

  const OfferedColorant& ColorantOf(const Subset& subset, int32_t i) const {
    return offer_.colorants[subset.colorants[static_cast<std::size_t>(i)]];
  }
  bool IsBatch(const Subset& subset, int32_t i) const {
    return !HasSubstrate() && ColorantOf(subset, i).component->GetId() == batchId_;
  }

  // The amounts of a subset's additions, as a part of them, in its order; 0 for the batch.
  std::array<double, kMostSubsetColorants> AmountsOf(const Subset& subset, double part) const {
    double unit = substrateAmount_;  // amount of a share of 1
    for (int32_t i = 0; i < subset.size; ++i) {
      if (IsBatch(subset, i)) unit = batch_.size / subset.solution.shares[i];
    }
    std::array<double, kMostSubsetColorants> amounts{};
    for (int32_t i = 0; i < subset.size; ++i) {
      if (IsBatch(subset, i)) continue;
      amounts[static_cast<std::size_t>(i)] = part * unit * subset.solution.shares[i];
    }
    return amounts;
  }

  CCorrection CorrectionOf(const Subset& subset, double part) const {
    return CorrectionOf(subset, AmountsOf(subset, part));
  }

  CCorrection CorrectionOf(const Subset& subset,
                           const std::array<double, kMostSubsetColorants>& amounts) const {
    CCorrection correction;
    for (int32_t i = 0; i < subset.size; ++i) {
      const double amount = amounts[static_cast<std::size_t>(i)];
      if (!(amount > 0.0)) continue;
      CDbFormulaElement line;
      line.componentId = static_cast<int32_t>(ColorantOf(subset, i).component->GetId());
      line.amount = amount;
      correction.additions.Add(line);
      correction.total += amount;
      correction.cost += amount * ColorantOf(subset, i).cost;
    }
    Judge(correction);
    return correction;
  }

  // Predicts the batch with its additions.
  void Judge(CCorrection& correction) const {
    CDbFormula formula = correction.additions;
    CDbFormulaElement line;
    line.componentId = static_cast<int32_t>(batchId_);
    line.amount = HasSubstrate() ? substrateAmount_ : batch_.size;
    formula.Add(line);
    CRecipe recipe;
    recipe.curve = PredictReflectance(formula, own_, recipe_.mode);
    if (IsUnset(recipe.curve)) return void(correction.worst = HUGE_VAL);
    target_->Judge(recipe);
    correction.differences = recipe.differences;
    correction.worst = recipe.worst;
    correction.isWithinTolerance = recipe.isWithinTolerance;
    correction.curve = recipe.curve;
  }

  double KeyOf(const CCorrection& correction) const {
    switch (settings_.aim) {
      case CorrectionAim::kSmallest:
        return correction.total;
      case CorrectionAim::kCheapest:
        return correction.cost;
      default:
        return Countable(correction.worst);
    }
  }

  // The difference down to which the additions of a subset may shrink, from that of its nearest colour.
  double AimFrom(double nearest) const {
    return std::max((1.0 - settings_.margin) * recipe_.tolerance, nearest);
  }

  // A correction within the tolerance with the least part of its additions that still is: a quick bound of what a
  // subset can do.
  CCorrection ShrunkAlong(const Subset& subset) const {
    double enough = 1.0, tooLittle = 0.0;
    CCorrection best = CorrectionOf(subset, 1.0);
    if (settings_.aim == CorrectionAim::kNearest) return best;
    const double aim = AimFrom(best.worst);
    for (int step = 0; step < 8; ++step) {
      const double part = 0.5 * (enough + tooLittle);
      CCorrection correction = CorrectionOf(subset, part);
      const bool isEnough = correction.worst <= aim;
      (isEnough ? enough : tooLittle) = part;
      if (isEnough) best = correction;
    }
    return best;
  }

  // The least additions of a subset that stay within the tolerance: a price on the additions, as high as it may be.
  CCorrection Shrunk(const Subset& nearest) const {
    CCorrection best = ShrunkAlong(nearest);
    if (settings_.aim == CorrectionAim::kNearest) return best;
    const double aim = AimFrom(CorrectionOf(nearest, 1.0).worst);
    std::array<double, kMostSubsetColorants> price{};
    double total = 0.0;
    for (int32_t i = 0; i < nearest.size; ++i) {
      if (IsBatch(nearest, i)) continue;
      constexpr double kLeastCost = 1e-9;  // an addition that costs nothing still costs a little
      price[static_cast<std::size_t>(i)] =
          settings_.aim == CorrectionAim::kSmallest ? 1.0 : std::max(ColorantOf(nearest, i).cost, kLeastCost);
      total += price[static_cast<std::size_t>(i)] * nearest.solution.shares[i];
    }
    if (!(total > 0.0)) return best;
    // Powers of two of the price at which all additions cost as much as a difference of 1/100.
    constexpr double kSmall = 1e-4;
    constexpr int kSteps = 24;
    double low = 0.0, high = 30.0;
    for (int step = 0; step < kSteps; ++step) {
      const double middle = 0.5 * (low + high);
      double factor = kSmall / total * (1.0 + (middle - std::floor(middle)));
      for (int doubled = 0; doubled < static_cast<int>(middle); ++doubled) factor *= 2.0;
      std::array<double, kMostSubsetColorants> prices{};
      for (std::size_t i = 0; i < prices.size(); ++i) prices[i] = factor * price[i];
      Subset priced = nearest;
      Refine(priced, prices.data());
      const bool isSolved = priced.solution.end != SubsetEnd::kUnsolved;
      if (isSolved && HasSubstrate()) HoldTotal(priced);
      const CCorrection correction = isSolved ? CorrectionOf(priced, 1.0) : CCorrection();
      const bool isGood = isSolved && correction.worst <= aim;
      (isGood ? low : high) = middle;
      if (isGood && KeyOf(correction) < KeyOf(best)) best = correction;
    }
    return best;
  }

  // Amounts in whole steps of the dispenser: to the nearest one, or up where that leaves the tolerance.
  CCorrection Rounded(const CCorrection& correction) const {
    if (recipe_.resolution == 0.0) return correction;
    const auto rounded = [&](double add) {
      CCorrection result;
      for (CDbFormulaElement line : correction.additions) {
        line.amount = RoundedToStep(line.amount, recipe_.resolution, add);
        if (!(line.amount > 0.0)) continue;
        result.additions.Add(line);
        result.total += line.amount;
        result.cost += line.amount * CostOf(static_cast<uint32_t>(line.componentId));
      }
      Judge(result);
      return result;
    };
    constexpr double kNearest = 0.5, kUp = 1.0 - 1e-9;
    CCorrection nearest = rounded(kNearest);
    if (nearest.isWithinTolerance || !correction.isWithinTolerance) return nearest;
    const CCorrection up = rounded(kUp);
    return up.isWithinTolerance ? up : nearest;
  }

  double CostOf(uint32_t id) const {
    for (const OfferedColorant& colorant : offer_.colorants) {
      if (colorant.component->GetId() == id) return colorant.cost;
    }
    return 0.0;
  }

  // The components that are more than traces of the additions.
  std::vector<int32_t> MainLines(const CCorrection& correction) const {
    std::vector<int32_t> lines;
    for (const CDbFormulaElement& line : correction.additions) {
      constexpr double kTrace = 1e-3;  // of the additions
      if (line.amount >= kTrace * correction.total) lines.push_back(line.componentId);
    }
    return lines;
  }

  // The best corrections of those that look best; false when stopped.
  bool Choose(const CCorrection& before, std::vector<Ranked>& found, CCorrectionArray& corrections) const {
    if (before.isWithinTolerance && settings_.aim != CorrectionAim::kNearest) {
      corrections.Add(before);
      return true;
    }
    for (Ranked& ranked : found) {
      if (recipe_.progress && !recipe_.progress(1.0)) return false;
      if (ranked.correction.isWithinTolerance) ranked.correction = Shrunk(ranked.subset);
      ranked.correction = Rounded(ranked.correction);
      ranked.key = KeyOf(ranked.correction);
    }
    std::sort(found.begin(), found.end(), [](const Ranked& a, const Ranked& b) { return a.IsBefore(b); });
    constexpr double kHelps = 0.999;
    for (const Ranked& ranked : found) {
      const CCorrection& correction = ranked.correction;
      const bool helps = correction.worst < kHelps * before.worst && !correction.additions.IsEmpty();
      const bool isNew = std::none_of(corrections.begin(), corrections.end(), [&](const CCorrection& other) {
        return MainLines(other) == MainLines(correction);
      });
      if (helps && isNew && corrections.GetSize() < recipe_.top) corrections.Add(correction);
    }
    return true;
  }

  const CColorantRulesData& rules_;
  const CBatch& batch_;
  const CCorrectionSettings& settings_;
  CRecipeSettings recipe_;
  CColorantSystemData own_;
  Offer offer_;
  std::optional<MatchTarget> target_;
  std::vector<SubsetRange> ranges_;
  uint32_t batchId_ = 0;
  double substrateAmount_ = 0.0;
};

// The settings with all components excluded that neither the batch has nor the settings require.
CCorrectionSettings WithOwnOnly(const CColorantSystemData& system, const CBatch& batch,
                                const CCorrectionSettings& settings) {
  CCorrectionSettings own = settings;
  const auto exclude = [&](const CComponent& component) {
    const uint32_t id = component.GetId();
    const auto isLine = [id](const CDbFormulaElement& line) {
      return static_cast<uint32_t>(line.componentId) == id;
    };
    const auto isRequired = [id](const CRecipeComponent& entry) {
      return entry.componentId == id && entry.use == CRecipeComponent::kRequired;
    };
    const bool stays =
        std::any_of(batch.formula.begin(), batch.formula.end(), isLine) ||
        std::find(settings.own.begin(), settings.own.end(), id) != settings.own.end() ||
        std::any_of(settings.recipe.components.begin(), settings.recipe.components.end(), isRequired);
    const bool isOffered = !component.GetLevels().IsEmpty();
    if (!stays && isOffered) own.recipe.components.Add({id, CRecipeComponent::kExcluded, 0.0, 1.0, 0.0});
  };
  for (const CColorant& colorant : system.colorants) exclude(colorant);
  for (const CResin& resin : system.resins) exclude(resin);
  return own;
}

}  // namespace

bool BatchConstants(const CColorantSystemData& system, const CBatch& batch, SaundersonMode mode,
                    CColorantValues& constants) {
  CColorantValues sums;
  if (batch.formula.IsEmpty() || !MixtureConstants(batch.formula, system, sums)) return false;
  for (int32_t w = 0; w < kWavelengths; ++w) {
    if (!(sums.scattering[w] > 0.0) || !std::isfinite(sums.absorption[w])) return false;
    if (IsUnset(batch.curve)) continue;
    const double internal = SaundersonToInternal(0.01 * batch.curve[w], system.k1, system.k2, mode);
    const double R = std::min(std::max(internal, kLeastInternal), 1.0);
    sums.absorption[w] = KubelkaMunkKs(100.0 * R) * sums.scattering[w];
  }
  constants = sums;
  return true;
}

RecipeOutcome CheckCorrection(const CColorantSystemData& system, const CColorantRulesData& rules,
                              const CBatch& batch, const CRecipeTarget& target,
                              const CCorrectionSettings& settings) {
  return Correction(system, rules, batch, settings).Prepare(target);
}

RecipeOutcome CorrectBatch(const CColorantSystemData& system, const CColorantRulesData& rules,
                           const CBatch& batch, const CRecipeTarget& target,
                           const CCorrectionSettings& settings, CCorrection& before,
                           CCorrectionArray& corrections) {
  if (!settings.allowNew) {
    const CCorrectionSettings own = WithOwnOnly(system, batch, settings);
    CCorrection asItIs;
    CCorrectionArray found;
    const RecipeOutcome outcome = Correction(system, rules, batch, own).Run(target, asItIs, found);
    const bool isReached = !found.IsEmpty() && found[0].isWithinTolerance;
    const bool isUsable =
        outcome.fault != RecipeFault::kNone ? outcome.fault == RecipeFault::kStopped : isReached;
    if (isUsable) {
      before = asItIs;
      corrections = found;
      return outcome;
    }
  }
  return Correction(system, rules, batch, settings).Run(target, before, corrections);
}

}  // namespace vrx
