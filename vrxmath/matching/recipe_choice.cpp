#include <vrxmath/matching/recipe_choice.h>

#include <algorithm>
#include <cmath>

namespace vrx {

double RecipeChoice::KeyOf(const CRecipe& recipe) const {
  switch (settings_.order) {
    case RecipeOrder::kFewest:
      return recipe.colorants;
    case RecipeOrder::kMetamerism:
      return IsUnset(recipe.metamerism) ? 0.0 : recipe.metamerism;
    case RecipeOrder::kInconstancy:
      return IsUnset(recipe.inconstancy) ? 0.0 : recipe.inconstancy;
    case RecipeOrder::kCost:
      return recipe.cost;
    case RecipeOrder::kExpected:
      return IsUnset(recipe.expected) ? HUGE_VAL : recipe.expected;
    default:
      return 0.0;
  }
}

bool RecipeChoice::IsBefore(const Ranked& a, const Ranked& b) const {
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
bool RecipeChoice::Choose(const std::vector<std::vector<Candidate>>& bySize, CRecipeArray& chosen) const {
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

// Refines and predicts candidates until those that are left cannot be among the first: their keys, known to a few
// percent, exceed what as many recipes as are asked for have reached. Several threads look ahead, which changes
// nothing of what is taken. False when stopped.
bool RecipeChoice::Predict(const std::vector<Candidate>& candidates, std::vector<Ranked>& recipes) const {
  const auto top = static_cast<std::size_t>(settings_.top);
  const std::size_t ahead = settings_.threads == 1 ? 1 : 2 * top;
  Reached reached;
  for (std::size_t from = 0; from < candidates.size(); from += ahead) {
    std::vector<Ranked> next(std::min(ahead, candidates.size() - from));
    const double limit = Limit(reached);
    const bool isDone = forEach_(next.size(), [&](std::size_t i) {
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
double RecipeChoice::Limit(const Reached& reached) const {
  constexpr double kMargin = 1.25, kLeast = 0.02;
  const auto top = static_cast<std::size_t>(settings_.top);
  if (reached.worst.size() < 2 * top) return HUGE_VAL;
  std::vector<double> worst = reached.worst;
  std::nth_element(worst.begin(), worst.begin() + static_cast<std::ptrdiff_t>(top), worst.end());
  return kMargin * worst[top] + kLeast;
}

// True when a candidate, and those behind it, cannot be among the first of those that reached the differences.
bool RecipeChoice::IsEnough(const Reached& reached, const Candidate& candidate) const {
  if (reached.worst.size() >= 16 * static_cast<std::size_t>(settings_.top)) return true;
  const double lamps = maker_.LampCount();
  const double gain =
      maker_.IsLeveled() ? std::sqrt(lamps) : 1.0;  // most that leveling makes of a difference
  return candidate.worst > gain * Limit(reached);
}

// A candidate refined and predicted; without colorants when the smaller subset stands for it.
RecipeChoice::Ranked RecipeChoice::RankedOf(const Candidate& candidate) const {
  Candidate refined = candidate;
  const SubsetRefiner refiner(offer_, target_->Problem());
  refiner.Solve(refined.subset.data(), refined.size, refined.solution);
  if (refined.solution.end == SubsetEnd::kAtBound) return {};
  if (refined.solution.end == SubsetEnd::kUnsolved) refined = candidate;
  Ranked ranked{maker_.Best(refined), refined.rank, {}, {}};
  SetMain(refiner, refined, ranked);
  return ranked;
}

double RecipeChoice::TraceLimit() const {
  constexpr double kPart = 0.1;
  return settings_.trace.value_or(kPart * settings_.tolerance);
}

// Which colorants of a recipe are more than traces.
void RecipeChoice::SetMain(const SubsetRefiner& refiner, const Candidate& candidate, Ranked& ranked) const {
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
CRecipeArray RecipeChoice::Grouped(const std::vector<Ranked>& sorted, bool isWithinOnly) const {
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

void RecipeChoice::AddTraces(const std::vector<uint32_t>& traces, CRecipe& recipe) {
  for (const uint32_t id : traces) {
    if (std::find(recipe.traces.begin(), recipe.traces.end(), id) == recipe.traces.end())
      recipe.traces.Add(id);
  }
}

}  // namespace vrx
