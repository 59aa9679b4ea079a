#include <vrxmath/matching/error_bound.h>

#include <algorithm>
#include <vector>

#include <vrxmath/formula/prediction.h>
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

}  // namespace

double ErrorBound(const CDbFormula& formula, const CColorantSystemData& system,
                  const CComponentCalibrationArray& calibrated, CDWordArray1* outside) {
  const double whole = WholeOf(formula, system), usual = UsualError(calibrated);
  double expected = 0.0;
  bool isKnown = whole > 0.0;
  for (const CDbFormulaElement& line : formula) {
    if (!(line.amount > 0.0)) continue;
    const auto id = static_cast<uint32_t>(line.componentId);
    const auto* const own =
        std::find_if(calibrated.begin(), calibrated.end(),
                     [&](const CComponentCalibration& each) { return each.componentId == id; });
    if (own == calibrated.end() || IsUnset(own->mostShare)) {
      isKnown = isKnown && IsCarrier(id, system);
      continue;
    }
    const double doublings = DoublingsOutside(line.amount / whole, *own);
    if (doublings > 0.0 && outside != nullptr) outside->Add(id);
    isKnown = isKnown && !IsUnset(own->leaveOneOut90);
    constexpr double kPerDoubling = 0.5;
    constexpr int32_t kFew = 9;  // of which nothing can be said about nine of ten
    const double error = own->drawdowns > kFew ? own->leaveOneOut90 : std::max(own->leaveOneOut90, usual);
    expected = std::max(expected, error * (1.0 + kPerDoubling * doublings));
  }
  return isKnown ? expected : kUnset;
}

}  // namespace vrx
