#include <vrxmath/matching/prediction_error.h>

#include <algorithm>
#include <vector>

#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/calibration_fit.h>
#include <vrxmath/matching/curves.h>
#include <vrxmath/matching/offer.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

// How many times a share would have to be doubled or halved to come into a range.
double DoublingsOutside(double share, const CComponentCalibration& calibrated) {
  constexpr double kLn2 = 0.69314718055994531;
  constexpr double kRounding = 1e-6;  // of shares in files
  if (share > calibrated.mostShare * (1.0 + kRounding)) return Log(share / calibrated.mostShare) / kLn2;
  if (share < calibrated.leastShare * (1.0 - kRounding)) return Log(calibrated.leastShare / share) / kLn2;
  return 0.0;
}

const CComponent* ComponentOf(uint32_t id, const CColorantSystemData& system) {
  for (const CColorant& colorant : system.colorants) {
    if (colorant.GetId() == id) return &colorant;
  }
  for (const CResin& resin : system.resins) {
    if (resin.GetId() == id) return &resin;
  }
  return nullptr;
}

// True for a clear resin or a substrate, whose share is what the others leave.
bool IsCarrier(uint32_t id, const CColorantSystemData& system) {
  const CComponent* const component = ComponentOf(id, system);
  if (component == nullptr) return false;
  const bool isClear = component->GetKind() == kKindResin && IsClear(*component);
  return isClear || (MixingLawOf(system.opticalModel) == MixingLaw::kOneConstant && IsSubstrate(*component));
}

// The error of the component in the middle, of all that have one; 0 when none has.
double UsualError(const CComponentCalibrationArray& calibrated) {
  std::vector<double> errors;
  for (const CComponentCalibration& each : calibrated) {
    if (!IsUnset(each.leaveOneOut90)) errors.push_back(each.leaveOneOut90);
  }
  if (errors.empty()) return 0.0;
  const auto middle = errors.begin() + static_cast<std::ptrdiff_t>(errors.size() / 2);
  std::nth_element(errors.begin(), middle, errors.end());
  return *middle;
}

// The amount of which shares are parts: the total, or that of the substrate.
double WholeOf(const CDbFormula& formula, const CColorantSystemData& system) {
  const bool isRelative = MixingLawOf(system.opticalModel) == MixingLaw::kOneConstant;
  double total = 0.0, substrate = 0.0;
  for (const CDbFormulaElement& line : formula) {
    total += line.amount;
    if (isRelative && IsCarrier(static_cast<uint32_t>(line.componentId), system)) substrate += line.amount;
  }
  return isRelative ? (substrate > 0.0 ? substrate : 1.0) : total;
}

// The formula with one line for each component that it has something of.
CDbFormula Summed(const CDbFormula& formula) {
  CDbFormula sums;
  for (const CDbFormulaElement& line : formula) {
    if (!(line.amount > 0.0)) continue;
    const auto isSame = [&](const CDbFormulaElement& sum) { return sum.componentId == line.componentId; };
    auto* const same = std::find_if(sums.begin(), sums.end(), isSame);
    if (same == sums.end()) {
      sums.Add(line);
    } else {
      same->amount += line.amount;
    }
  }
  return sums;
}

}  // namespace

CPredictionError PredictionError(const CDbFormula& formula, const CColorantSystemData& system,
                                 const CComponentCalibrationArray& calibrated) {
  const double whole = WholeOf(formula, system), usual = UsualError(calibrated);
  CPredictionError error;
  double half = 0.0, nineOfTen = 0.0;
  bool isKnown = whole > 0.0;
  for (const CDbFormulaElement& line : Summed(formula)) {
    const auto id = static_cast<uint32_t>(line.componentId);
    const auto* const own =
        std::find_if(calibrated.begin(), calibrated.end(),
                     [&](const CComponentCalibration& each) { return each.componentId == id; });
    if (own == calibrated.end() || IsUnset(own->mostShare)) {
      isKnown = isKnown && IsCarrier(id, system);
      continue;
    }
    const double doublings = DoublingsOutside(line.amount / whole, *own);
    if (doublings > 0.0) error.outside.Add(id);
    if (IsUnset(own->leaveOneOut90)) {
      isKnown = false;
      continue;
    }
    constexpr double kPerDoubling = 0.5;
    constexpr int32_t kFew = 9;  // of which nothing can be said about nine of ten
    const double growth = 1.0 + kPerDoubling * doublings;
    const double own90 = own->drawdowns > kFew ? own->leaveOneOut90 : std::max(own->leaveOneOut90, usual);
    half = std::max(half, growth * own->leaveOneOut);
    nineOfTen = std::max(nineOfTen, growth * own90);
    error.half = half;
  }
  if (isKnown) error.nineOfTen = nineOfTen;
  return error;
}

CExpectedBand ExpectedBand(const CReflData& predicted, double error, const CColorantSystemData& system,
                           SaundersonMode mode, vrxIlluminant illuminant, int32_t observer) {
  CExpectedBand band;
  if (IsUnset(predicted) || IsUnset(error)) return band;
  const CalibrationSurface surface{system.k1, system.k2, mode};
  const auto withRatios = [&](double factor) {
    CReflData curve;
    for (int32_t w = 0; w < kWavelengths; ++w) {
      const double internal = SaundersonToInternal(0.01 * predicted[w], system.k1, system.k2, mode);
      const double R = std::min(std::max(internal, kLeastInternal), 1.0);
      curve[w] = 100.0 * surface.Reflectance(factor * KubelkaMunkKs(100.0 * R));
    }
    return curve;
  };
  // The part of K/S, or of 1 in it, is halved in the interval that holds the one that makes the difference.
  const auto farthest = [&](bool isLower) {
    constexpr double kLeastPart = 1.0 / 64.0;
    constexpr int kSteps = 30;
    double within = 1.0, beyond = kLeastPart;
    const auto curveOf = [&](double part) { return withRatios(isLower ? 1.0 / part : part); };
    if (CurveDifference(predicted, curveOf(beyond), illuminant, observer) <= error) return curveOf(beyond);
    for (int step = 0; step < kSteps; ++step) {
      const double part = 0.5 * (within + beyond);
      const bool isWithin = CurveDifference(predicted, curveOf(part), illuminant, observer) <= error;
      (isWithin ? within : beyond) = part;
    }
    return curveOf(within);
  };
  band.lower = farthest(true);
  band.upper = farthest(false);
  return band;
}

}  // namespace vrx
