#include <vrxmath/formula/prediction.h>

#include <array>
#include <cmath>
#include <cstdint>

#include <vrxmath/colorant/optical_transforms.h>

namespace vrx {
namespace {

// How the colorants of an optical model add up.
enum class Mixing { kTwoConstant, kOneConstant, kOther };

Mixing MixingOf(int32_t opticalModel) {
  constexpr Mixing kMixing[] = {
      Mixing::kTwoConstant, Mixing::kTwoConstant, Mixing::kOneConstant,  // coatings, plastics, transparents
      Mixing::kOneConstant, Mixing::kOther,       Mixing::kTwoConstant,  // textiles, filters, trade sales
      Mixing::kOther,       Mixing::kOther,       Mixing::kOneConstant,  // metallics, multi-flux, continuous
  };
  return opticalModel >= 0 && opticalModel < static_cast<int32_t>(std::size(kMixing)) ? kMixing[opticalModel]
                                                                                      : Mixing::kOther;
}

// What scatters under the one-constant models.
bool IsSubstrate(const CComponent& component) {
  const bool isBase = component.GetKind() == kKindResin || component.GetKind() == kKindCalibrationWhite;
  return isBase && !component.GetLevels().IsEmpty();
}

bool AmountsAreValid(const CDbFormula& formula) {
  for (const CDbFormulaElement& line : formula) {
    if (!(line.amount >= 0.0) || std::isinf(line.amount)) return false;
  }
  return true;
}

// Calls `use` (component, amount) for every component of `components` that has a line; returns the number of
// those lines.
template <class COMPONENTS, class USE>
int32_t ForEachUsedOf(const COMPONENTS& components, const CDbFormula& formula, USE use) {
  int32_t found = 0;
  for (const auto& component : components) {
    double amount = 0.0;
    int32_t lines = 0;
    for (const CDbFormulaElement& line : formula) {
      if (static_cast<uint32_t>(line.componentId) != component.GetId()) continue;
      amount += line.amount;
      ++lines;
    }
    if (lines > 0) use(static_cast<const CComponent&>(component), amount);
    found += lines;
  }
  return found;
}

template <class USE>
int32_t ForEachUsed(const CColorantSystemData& system, const CDbFormula& formula, USE use) {
  const int32_t found = ForEachUsedOf(system.colorants, formula, use);
  return found + ForEachUsedOf(system.resins, formula, use);
}

// The sums of a mixture, by wavelength.
class Mixture {
 public:
  explicit Mixture(Mixing mixing) : mixing_(mixing) {}

  // Adds `concentration` of a component, with its unit curves at that concentration.
  void Add(const CComponent& component, double concentration) {
    const CColorantLevelArray& levels = component.GetLevels();
    if (levels.IsEmpty()) return;
    const bool scatters = mixing_ == Mixing::kTwoConstant || IsSubstrate(component);
    const CColorantLevel* upper = levels.begin();
    while (upper != levels.end() && upper->concentration < concentration) ++upper;
    if (upper == levels.begin() || upper == levels.end()) {
      AddLevel(upper == levels.begin() ? *upper : *(upper - 1), concentration, scatters);
      return;
    }
    const CColorantLevel& lower = *(upper - 1);
    const double t = (concentration - lower.concentration) / (upper->concentration - lower.concentration);
    AddLevel(lower, concentration * (1.0 - t), scatters);
    AddLevel(*upper, concentration * t, scatters);
  }

  // The measured reflectance; unset when a sum has no ratio.
  CReflData Reflectance(double k1, double k2) const {
    CReflData curve;
    double* percent = curve.GetData();
    for (std::size_t i = 0; i < kSamples; ++i) {
      const double ks = K_[i] / S_[i];
      if (!(ks >= 0.0)) return {};
      percent[i] = 100.0 * SaundersonToMeasured(KubelkaMunkReflectance(ks), k1, k2);
    }
    return curve;
  }

 private:
  static constexpr std::size_t kSamples = kWavelengths;

  void AddLevel(const CColorantLevel& level, double weight, bool scatters) {
    if (level.values.IsEmpty()) return;
    const CColorantValues& curves = *level.values.GetData();
    AddCurve(K_, curves.absorption, weight);
    if (scatters) AddCurve(S_, curves.scattering, weight);
  }

  // A curve that a host has cut short adds nothing.
  static void AddCurve(std::array<double, kSamples>& sums, const CKSData& curve, double weight) {
    if (curve.GetSize() < kWavelengths) return;
    const double* samples = curve.GetData();
    for (std::size_t i = 0; i < kSamples; ++i) sums[i] += weight * samples[i];
  }

  Mixing mixing_;
  std::array<double, kSamples> K_{};
  std::array<double, kSamples> S_{};
};

const CColorant* CalibrationWhite(const CColorantSystemData& system) {
  for (const CColorant& colorant : system.colorants) {
    if (colorant.GetKind() == kKindCalibrationWhite) return &colorant;
  }
  return nullptr;
}

}  // namespace

CReflData PredictReflectance(const CDbFormula& formula, const CColorantSystemData& system) {
  const Mixing mixing = MixingOf(system.opticalModel);
  if (mixing == Mixing::kOther || !AmountsAreValid(formula)) return {};
  double reference = 0.0;  // the amount that stands for a concentration of 1
  const int32_t found = ForEachUsed(system, formula, [&](const CComponent& component, double amount) {
    if (mixing == Mixing::kTwoConstant || IsSubstrate(component)) reference += amount;
  });
  if (found != formula.GetSize()) return {};
  Mixture mixture(mixing);
  if (mixing == Mixing::kOneConstant && reference == 0.0) {
    const CColorant* white = CalibrationWhite(system);
    if (white == nullptr) return {};
    reference = 1.0;
    mixture.Add(*white, 1.0);
  }
  ForEachUsed(system, formula, [&](const CComponent& component, double amount) {
    mixture.Add(component, amount / reference);
  });
  return mixture.Reflectance(system.k1, system.k2);
}

}  // namespace vrx
