#include <vrxmath/matching/offer.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/subset_kernels.h>

namespace vrx {
namespace {

constexpr uint64_t kLargest = std::numeric_limits<uint64_t>::max();
constexpr std::size_t kMostOffered = 10'000;

bool IsSwitchedOff(const CColorantSystemData& system, uint32_t id) {
  return std::any_of(system.componentsA.begin(), system.componentsA.end(),
                     [&](const CColorantSystemComponent& c) { return c.componentId == id && !c.enabled; });
}

bool HasCurves(const CComponent& component) {
  return !component.GetLevels().IsEmpty() && !component.GetLevel(0).values.IsEmpty();
}

const CComponent* SubstrateOf(const CColorantSystemData& system) {
  for (const CColorant& colorant : system.colorants) {
    if (colorant.GetKind() == kKindCalibrationWhite && HasCurves(colorant)) return &colorant;
  }
  for (const CResin& resin : system.resins) {
    if (HasCurves(resin)) return &resin;
  }
  return nullptr;
}

// Collects all that the settings say of a component; false for a contradiction.
bool Describe(const CRecipeSettings& settings, uint32_t id, CRecipeComponent& description) {
  description.componentId = id;
  for (const CRecipeComponent& entry : settings.components) {
    if (entry.componentId != id) continue;
    const bool contradicts =
        (entry.use == CRecipeComponent::kRequired && description.use == CRecipeComponent::kExcluded) ||
        (entry.use == CRecipeComponent::kExcluded && description.use == CRecipeComponent::kRequired);
    if (contradicts) return false;
    if (entry.use != CRecipeComponent::kOffered) description.use = entry.use;
    description.least = std::max(description.least, entry.least);
    description.most = std::min(description.most, entry.most);
    if (entry.cost != 0.0) description.cost = entry.cost;
  }
  for (const CComponentCalibration& calibrated : settings.calibrated) {
    if (!settings.isWithinRange || calibrated.componentId != id || IsUnset(calibrated.mostShare)) continue;
    description.least = std::max(description.least, calibrated.leastShare);
    description.most = std::min(description.most, calibrated.mostShare);
  }
  return true;
}

// The component that makes up the rest of a recipe: a clear resin, the required one or the first by number.
const CComponent* ClearOf(const CColorantSystemData& system, const CRecipeSettings& settings) {
  const CComponent* clear = nullptr;
  bool isRequired = false;
  for (const CResin& resin : system.resins) {
    CRecipeComponent entry;
    if (!IsClear(resin) || !Describe(settings, resin.GetId(), entry)) continue;
    if (entry.use == CRecipeComponent::kExcluded) continue;
    const bool isWanted = entry.use == CRecipeComponent::kRequired;
    if (IsSwitchedOff(system, resin.GetId()) && !isWanted) continue;
    const bool isBefore = clear == nullptr || (isWanted && !isRequired) ||
                          (isWanted == isRequired && resin.GetId() < clear->GetId());
    if (isBefore) clear = &resin, isRequired = isWanted;
  }
  return clear;
}

// A required component is there with a share that counts, since no smaller subset stands for the one without it.
constexpr double kLeastRequired = 1e-5;

// By Y under D65 for 10 degrees, as the contrast ratio is. False for a curve that is not measured throughout.
bool IsDarker(const CReflData& black, const CReflData& white) {
  CTrisValues ofBlack, ofWhite;
  black.Tristimulus(vrxIllumD65, kObserver10, ofBlack);
  white.Tristimulus(vrxIllumD65, kObserver10, ofWhite);
  return ofBlack[1] < ofWhite[1];
}

}  // namespace

uint64_t Combinations(uint64_t n, uint64_t k) {
  if (k > n) return 0;
  k = std::min(k, n - k);
  uint64_t count = 1;
  for (uint64_t i = 1; i <= k; ++i) {
    const uint64_t factor = n - k + i;
    if (count > kLargest / factor) return kLargest;
    count = count * factor / i;
  }
  return count;
}

RecipeFault CheckSettings(const CRecipeSettings& settings) {
  const auto isWithin = [](double value, double least, double most) {
    return value >= least && value <= most;
  };
  constexpr int32_t kMostIlluminants = 32;
  constexpr int64_t kMostPreranked = 1'000'000;  // which are in memory together
  const bool areCounts = settings.mostColorants >= 1 && settings.mostColorants <= kMostSubsetColorants &&
                         settings.top >= 1 && settings.prerank >= 0 && settings.prerank <= kMostPreranked &&
                         settings.illuminants.GetSize() >= 1 &&
                         settings.illuminants.GetSize() <= kMostIlluminants;
  const bool areNumbers =
      isWithin(settings.leastAmount, 0.0, 1.0) && settings.tolerance >= 0.0 &&
      isWithin(settings.angle, -180.0, 180.0) && settings.trace.value_or(0.0) >= 0.0 &&
      isWithin(settings.batchSize, 1e-100, 1e100) && isWithin(settings.resolution, 0.0, 1e100) &&
      isWithin(settings.thickness, 0.0, 1e100) && isWithin(settings.leastOpacity, 0.0, 100.0);
  const bool areWeights =
      settings.weights.IsEmpty() || settings.weights.GetSize() == settings.illuminants.GetSize();
  double total = 0.0;
  for (const double weight : settings.weights) {
    if (!isWithin(weight, 0.0, 1e6)) return RecipeFault::kSettings;
    total += weight;
  }
  const bool isWeighed = settings.weights.IsEmpty() || total > 0.0;
  const bool isKnown = FindDifferenceSystem(settings.difference.system) != nullptr;
  const bool hasBackings = !IsUnset(settings.black) && !IsUnset(settings.white);
  const bool isOpacity = settings.leastOpacity == 0.0 || hasBackings;
  if (!(areCounts && areNumbers && areWeights && isWeighed && isKnown && isOpacity))
    return RecipeFault::kSettings;
  return hasBackings && !IsDarker(settings.black, settings.white) ? RecipeFault::kBackings
                                                                  : RecipeFault::kNone;
}

double NearestSteps(double amount, double step) {
  return std::floor(amount / step + 0.5);
}

double AmountOfSteps(double steps, double step) {
  const double inverse = 1.0 / step, whole = std::floor(inverse + 0.5);
  constexpr double kWhole = 1e-9;
  return whole >= 1.0 && std::fabs(inverse - whole) < kWhole * whole ? steps / whole : steps * step;
}

double RoundedToStep(double amount, double step, double add) {
  return step == 0.0 ? amount : AmountOfSteps(std::floor(amount / step + add), step);
}

// The load between the limits of the settings and those of the clear component itself.
RecipeOutcome Offer::SetClear(const CRecipeSettings& settings, const CComponent* resin) {
  const bool isLimited = settings.leastLoad > 0.0 || settings.mostLoad < 1.0;
  if (!(settings.leastLoad >= 0.0 && settings.leastLoad <= settings.mostLoad && settings.mostLoad <= 1.0))
    return {RecipeFault::kLoad};
  if (resin == nullptr) return {isLimited ? RecipeFault::kNoClear : RecipeFault::kNone};
  // Where curves depend on the share, only a load that is known makes shares of the colorants shares of the whole.
  if (hasSeveralLevels && settings.leastLoad != settings.mostLoad)
    return {isLimited ? RecipeFault::kLoad : RecipeFault::kNone};
  clear = resin;
  CRecipeComponent entry;
  Describe(settings, clear->GetId(), entry);
  clearCost = entry.cost;
  const double least =
      entry.use == CRecipeComponent::kRequired ? std::max(entry.least, kLeastRequired) : entry.least;
  leastLoad = std::max(settings.leastLoad, 1.0 - entry.most);
  mostLoad = std::min(settings.mostLoad, 1.0 - least);
  return {leastLoad <= mostLoad && mostLoad > 0.0 ? RecipeFault::kNone : RecipeFault::kLoad};
}

// Limits of the whole as limits of the colorants' total, as wide as any load that is allowed makes them.
void Offer::LimitColorants() {
  hasLimits = false;
  for (OfferedColorant& colorant : colorants) {
    colorant.leastOfWhole = colorant.least;
    colorant.mostOfWhole = colorant.most;
    const double required = colorant.isRequired ? kLeastRequired : 0.0;
    colorant.least = std::max(colorant.least / mostLoad, required);
    if (colorant.most >= leastLoad) {
      colorant.most = 1.0;
    } else {
      colorant.most /= leastLoad;
    }
    hasLimits = hasLimits || colorant.least > 0.0 || colorant.most < 1.0;
  }
}

RecipeOutcome Offer::Make(const CColorantSystemData& system, const CRecipeSettings& settings,
                          bool mayBeClear) {
  const MixingLaw law = MixingLawOf(system.opticalModel);
  if (law == MixingLaw::kNone) return {RecipeFault::kNoMixingLaw};
  substrate = law == MixingLaw::kOneConstant ? SubstrateOf(system) : nullptr;
  if (law == MixingLaw::kOneConstant && substrate == nullptr) return {RecipeFault::kNoSubstrate};
  if (substrate != nullptr) present.push_back(substrate->GetId());
  std::vector<uint32_t> known;
  double leastTogether = 0.0;
  RecipeOutcome outcome;
  const auto offer = [&](const CComponent& component) {
    const uint32_t id = component.GetId();
    CRecipeComponent entry;
    if (outcome.fault != RecipeFault::kNone) return;
    if (!Describe(settings, id, entry)) return void(outcome = {RecipeFault::kContradiction, id});
    if (&component == substrate) substrateCost = entry.cost;
    if (&component == substrate) known.push_back(id);
    if (!HasCurves(component) || (substrate != nullptr && IsSubstrate(component))) return;
    known.push_back(id);
    const bool isRequired = entry.use == CRecipeComponent::kRequired;
    const double least =
        std::max(std::max(entry.least, settings.leastAmount), isRequired ? kLeastRequired : 0.0);
    if (!(entry.least >= 0.0 && least <= entry.most && entry.most <= 1.0)) {
      return void(outcome = {RecipeFault::kLimits, id});
    }
    if (entry.use == CRecipeComponent::kExcluded || (!isRequired && IsSwitchedOff(system, id))) return;
    if (isRequired) leastTogether += least;
    hasLimits = hasLimits || least > 0.0 || entry.most < 1.0;
    hasSeveralLevels = hasSeveralLevels || component.GetLevels().GetSize() > 1;
    colorants.push_back({&component, least, entry.most, entry.cost, isRequired, least, entry.most});
  };
  for (const CColorant& colorant : system.colorants) offer(colorant);
  for (const CResin& resin : system.resins) offer(resin);
  if (outcome.fault != RecipeFault::kNone) return outcome;
  const CComponent* const resin =
      mayBeClear && law == MixingLaw::kTwoConstant ? ClearOf(system, settings) : nullptr;
  if (resin != nullptr) known.push_back(resin->GetId());
  if (mayBeClear) outcome = SetClear(settings, resin);
  if (outcome.fault != RecipeFault::kNone) return outcome;
  if (clear != nullptr) {
    const auto isNoColorant = [](const OfferedColorant& c) {
      return c.component->GetKind() == kKindResin && IsClear(*c.component);
    };
    colorants.erase(std::remove_if(colorants.begin(), colorants.end(), isNoColorant), colorants.end());
    present.push_back(clear->GetId());
    LimitColorants();
  }
  std::stable_sort(colorants.begin(), colorants.end(),
                   [](const OfferedColorant& a, const OfferedColorant& b) {
                     return a.component->GetId() < b.component->GetId();
                   });
  for (const CRecipeComponent& entry : settings.components) {
    if (std::find(known.begin(), known.end(), entry.componentId) == known.end()) {
      return {RecipeFault::kUnknownComponent, entry.componentId};
    }
  }
  const auto required = std::count_if(colorants.begin(), colorants.end(),
                                      [](const OfferedColorant& colorant) { return colorant.isRequired; });
  const bool isTooFew = colorants.empty() || required > settings.mostColorants;
  if (isTooFew || colorants.size() > kMostOffered) return {RecipeFault::kTooFewAllowed};
  if (clear == nullptr && leastTogether > 1.0) return {RecipeFault::kLimitsTogether};
  return {};
}

SubsetRange::SubsetRange(const Offer& offer, const CColorantRulesData& rules, int32_t size) : size_(size) {
  for (std::size_t i = 0; i < offer.colorants.size(); ++i) {
    (offer.colorants[i].isRequired ? required_ : optional_).push_back(static_cast<uint16_t>(i));
  }
  const auto free = static_cast<int64_t>(size) - static_cast<int64_t>(required_.size());
  count_ = free < 0 ? 0 : Combinations(optional_.size(), static_cast<uint64_t>(free));
  const auto isPresent = [&](uint32_t id) {
    return std::find(offer.present.begin(), offer.present.end(), id) != offer.present.end();
  };
  if (size < 2 && offer.present.empty()) return;  // a single colorant is always allowed
  for (const CDWordArray1& row : rules.GetRules()) {
    std::vector<uint16_t> members;
    bool isComplete = !row.IsEmpty();
    for (const uint32_t id : row) {
      if (isPresent(id)) continue;
      const auto found = std::find_if(offer.colorants.begin(), offer.colorants.end(),
                                      [&](const OfferedColorant& c) { return c.component->GetId() == id; });
      isComplete = isComplete && found != offer.colorants.end();
      if (isComplete) members.push_back(static_cast<uint16_t>(found - offer.colorants.begin()));
    }
    if (isComplete && !members.empty()) rules_.push_back(members);
  }
}

bool SubsetRange::IsAllowed(const uint16_t* subset) const {
  return std::none_of(rules_.begin(), rules_.end(), [&](const std::vector<uint16_t>& rule) {
    return std::all_of(rule.begin(), rule.end(), [&](uint16_t member) {
      return std::find(subset, subset + size_, member) != subset + size_;
    });
  });
}

std::vector<int32_t> SubsetRange::Unrank(uint64_t rank) const {
  const auto n = static_cast<int32_t>(optional_.size());
  auto left = size_ - static_cast<int32_t>(required_.size());
  std::vector<int32_t> choice;
  for (int32_t i = 0; left > 0; ++i) {
    const uint64_t withIt = Combinations(static_cast<uint64_t>(n - i - 1), static_cast<uint64_t>(left - 1));
    if (rank < withIt) {
      choice.push_back(i);
      --left;
    } else {
      rank -= withIt;
    }
  }
  return choice;
}

bool SubsetRange::Advance(std::vector<int32_t>& choice) const {
  const auto n = static_cast<int32_t>(optional_.size());
  const auto k = static_cast<int32_t>(choice.size());
  for (int32_t i = k - 1; i >= 0; --i) {
    if (choice[static_cast<std::size_t>(i)] == n - k + i) continue;
    int32_t next = ++choice[static_cast<std::size_t>(i)];
    for (int32_t j = i + 1; j < k; ++j) choice[static_cast<std::size_t>(j)] = ++next;
    return true;
  }
  return false;
}

void SubsetRange::Merge(const std::vector<int32_t>& choice, uint16_t* subset) const {
  std::copy(required_.begin(), required_.end(), subset);
  uint16_t* end = subset + required_.size();
  for (const int32_t i : choice) *end++ = optional_[static_cast<std::size_t>(i)];
  if (!required_.empty()) std::sort(subset, end);
}

void SubsetRange::Append(uint64_t from, uint64_t count, std::vector<uint16_t>& subsets) const {
  std::vector<int32_t> choice = Unrank(from);
  uint16_t subset[kMostSubsetColorants];
  for (uint64_t i = 0; i < count; ++i) {
    Merge(choice, subset);
    if (IsAllowed(subset)) subsets.insert(subsets.end(), subset, subset + size_);
    if (!Advance(choice)) return;
  }
}

bool SubsetRange::IsAnyAllowed() const {
  if (count_ == 0) return false;
  std::vector<int32_t> choice = Unrank(0);
  uint16_t subset[kMostSubsetColorants];
  do {
    Merge(choice, subset);
    if (IsAllowed(subset)) return true;
  } while (Advance(choice));
  return false;
}

uint32_t FreeComponentId(const CColorantSystemData& system) {
  auto id = static_cast<uint32_t>(std::numeric_limits<int32_t>::max());
  const auto isTaken = [&](const CComponent& component) { return component.GetId() == id; };
  while (std::any_of(system.colorants.begin(), system.colorants.end(), isTaken) ||
         std::any_of(system.resins.begin(), system.resins.end(), isTaken)) {
    --id;
  }
  return id;
}

}  // namespace vrx
