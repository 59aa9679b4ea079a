#include <vrxmath/matching/recipe_maker.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/prediction_error.h>

namespace vrx {

// The largest difference is made small where the colour is all that is asked for; weights ask for their own sum.
bool RecipeMaker::IsLeveled() const {
  return settings_.objective == RecipeObjective::kTristimulus && settings_.weights.IsEmpty() &&
         settings_.order != RecipeOrder::kMetamerism && settings_.order != RecipeOrder::kInconstancy;
}

// Each lamp has three rows.
double RecipeMaker::LampCount() const {
  const int32_t lamps = target_->Problem().rows / 3;
  return lamps;
}

std::array<double, kMostSubsetColorants> RecipeMaker::PricesOf(const Candidate& candidate) const {
  std::array<double, kMostSubsetColorants> prices{};
  for (std::size_t i = 0; i < static_cast<std::size_t>(candidate.size); ++i) {
    prices[i] = offer_.mostLoad * offer_.colorants[candidate.subset[i]].cost;
  }
  return prices;
}

// The loads at which the shares of a candidate lie within their limits; the first is above the second where none do.
std::pair<double, double> RecipeMaker::LoadRange(const Candidate& candidate) const {
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
double RecipeMaker::LoadOfRanges(const Candidate& candidate) const {
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
bool RecipeMaker::SetLoad(const Candidate& candidate, CRecipe& recipe) const {
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
double RecipeMaker::LeastOpaqueLoad(const Candidate& candidate, double least, double most) const {
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
std::array<double, kMostSubsetColorants + 1> RecipeMaker::AmountsOf(const Candidate& candidate,
                                                                    double load) const {
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
bool RecipeMaker::SetFormula(const Candidate& candidate, double load, CRecipe& recipe) const {
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

double RecipeMaker::OpacityOf(const CDbFormula& formula) const {
  if (IsUnset(settings_.black) || IsUnset(settings_.white)) return kUnset;
  CTrisValues overBlack, overWhite;
  PredictFilm(formula, own_, settings_.black, settings_.thickness, settings_.mode)
      .Tristimulus(settings_.illuminants[0], settings_.observer, overBlack);
  PredictFilm(formula, own_, settings_.white, settings_.thickness, settings_.mode)
      .Tristimulus(settings_.illuminants[0], settings_.observer, overWhite);
  return Opacity(overBlack, overWhite);
}

bool RecipeMaker::IsOpaqueEnough(const Candidate& candidate) const {
  CRecipe recipe;
  SetFormula(candidate, LoadRange(candidate).second, recipe);
  return OpacityOf(recipe.formula) >= settings_.leastOpacity;
}

// The recipe of a candidate as it is; without colorants when rounding leaves nothing of one, or no load fits its
// limits.
CRecipe RecipeMaker::RecipeOf(const Candidate& candidate) const {
  CRecipe recipe;
  if (!SetLoad(candidate, recipe) || !SetFormula(candidate, recipe.load, recipe)) return {};
  recipe.curve = PredictReflectance(recipe.formula, own_, settings_.mode);
  if (IsUnset(recipe.curve)) return {};
  target_->Judge(recipe);
  recipe.opacity = OpacityOf(recipe.formula);
  const CPredictionError error = PredictionError(recipe.formula, own_, settings_.calibrated);
  recipe.expected = error.nineOfTen;
  recipe.outside = error.outside;
  return recipe;
}

// The recipe of a candidate that the settings ask for, with its shares: of the least sum of squares, of the smallest
// largest difference, or the cheapest within the tolerance.
CRecipe RecipeMaker::Best(Candidate& candidate) const {
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
CRecipe RecipeMaker::Cheapest(const WorstRefiner& refiner, Candidate& candidate,
                              const CRecipe& recipe) const {
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

double RecipeMaker::ExpectedOf(const Candidate& candidate) const {
  CRecipe recipe;
  if (!SetLoad(candidate, recipe)) return kUnset;
  SetFormula(candidate, recipe.load, recipe);
  return PredictionError(recipe.formula, own_, settings_.calibrated).nineOfTen;
}

}  // namespace vrx
