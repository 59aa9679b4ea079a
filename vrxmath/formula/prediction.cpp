#include <vrxmath/formula/prediction.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <optional>

#include <vrxmath/colorant/film.h>

namespace vrx {
namespace {

bool AmountsAreValid(const CDbFormula& formula) {
  return std::ranges::all_of(
      formula, [](const CDbFormulaElement& line) { return line.amount >= 0.0 && !std::isinf(line.amount); });
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
  explicit Mixture(MixingLaw mixing) : mixing_(mixing) {}

  // Adds `concentration` of a component, with its unit curves at that concentration.
  void Add(const CComponent& component, double concentration) {
    const CColorantLevelArray& levels = component.GetLevels();
    if (levels.IsEmpty()) return;
    const bool scatters = mixing_ == MixingLaw::kTwoConstant || IsSubstrate(component);
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

  std::array<double, kWavelengths> K{};
  std::array<double, kWavelengths> S{};

 private:
  void AddLevel(const CColorantLevel& level, double weight, bool scatters) {
    if (level.values.IsEmpty()) return;
    const CColorantValues& curves = *level.values.GetData();
    AddCurve(K, curves.absorption, weight);
    if (scatters) AddCurve(S, curves.scattering, weight);
  }

  // A curve that a host has cut short adds nothing.
  static void AddCurve(std::array<double, kWavelengths>& sums, const CKSData& curve, double weight) {
    if (curve.GetSize() < kWavelengths) return;
    const double* samples = curve.GetData();
    for (std::size_t i = 0; i < kWavelengths; ++i) sums[i] += weight * samples[i];
  }

  MixingLaw mixing_;
};

const CColorant* CalibrationWhite(const CColorantSystemData& system) {
  for (const CColorant& colorant : system.colorants) {
    if (colorant.GetKind() == kKindCalibrationWhite) return &colorant;
  }
  return nullptr;
}

// The sums of a formula; none when it cannot be predicted.
std::optional<Mixture> Mix(const CDbFormula& formula, const CColorantSystemData& system) {
  const MixingLaw mixing = MixingLawOf(system.opticalModel);
  if (mixing == MixingLaw::kNone || !AmountsAreValid(formula)) return {};
  double reference = 0.0;  // the amount that stands for a concentration of 1
  const int32_t found = ForEachUsed(system, formula, [&](const CComponent& component, double amount) {
    if (mixing == MixingLaw::kTwoConstant || IsSubstrate(component)) reference += amount;
  });
  if (found != formula.GetSize()) return {};
  Mixture mixture(mixing);
  if (mixing == MixingLaw::kOneConstant && reference == 0.0) {
    const CColorant* white = CalibrationWhite(system);
    if (white == nullptr) return {};
    reference = 1.0;
    mixture.Add(*white, 1.0);
  }
  ForEachUsed(system, formula, [&](const CComponent& component, double amount) {
    mixture.Add(component, amount / reference);
  });
  return mixture;
}

}  // namespace

MixingLaw MixingLawOf(int32_t opticalModel) {
  using enum MixingLaw;
  constexpr MixingLaw kMixing[] = {
      kTwoConstant, kTwoConstant, kOneConstant,  // coatings, plastics, transparents
      kOneConstant, kNone,        kTwoConstant,  // textiles, filters, trade sales
      kNone,        kNone,        kOneConstant,  // metallics, multi-flux, continuous
  };
  const bool isKnown = opticalModel >= 0 && opticalModel < static_cast<int32_t>(std::size(kMixing));
  return isKnown ? kMixing[opticalModel] : kNone;
}

bool IsSubstrate(const CComponent& component) {
  const bool isBase = component.GetKind() == kKindResin || component.GetKind() == kKindCalibrationWhite;
  return isBase && !component.GetLevels().IsEmpty();
}

bool IsClear(const CComponent& component) {
  for (const CColorantLevel& level : component.GetLevels()) {
    for (const CColorantValues& values : level.values) {
      const auto isZero = [](double value) { return value == 0.0; };
      const bool isNothing = std::all_of(values.absorption.begin(), values.absorption.end(), isZero) &&
                             std::all_of(values.scattering.begin(), values.scattering.end(), isZero);
      if (!isNothing) return false;
    }
  }
  return true;
}

bool ComponentConstants(const CComponent& component, double concentration, CColorantValues& curves) {
  if (component.GetLevels().IsEmpty() || !(concentration > 0.0)) return false;
  Mixture mixture(MixingLaw::kTwoConstant);
  mixture.Add(component, concentration);
  for (std::size_t i = 0; i < kWavelengths; ++i) {
    curves.absorption[static_cast<int32_t>(i)] = mixture.K[i] / concentration;
    curves.scattering[static_cast<int32_t>(i)] = mixture.S[i] / concentration;
  }
  return true;
}

bool MixtureConstants(const CDbFormula& formula, const CColorantSystemData& system, CColorantValues& sums) {
  const std::optional<Mixture> mixture = Mix(formula, system);
  if (!mixture) return false;
  std::copy(mixture->K.begin(), mixture->K.end(), sums.absorption.begin());
  std::copy(mixture->S.begin(), mixture->S.end(), sums.scattering.begin());
  return true;
}

CReflData PredictReflectance(const CDbFormula& formula, const CColorantSystemData& system,
                             SaundersonMode mode) {
  const std::optional<Mixture> mixture = Mix(formula, system);
  if (!mixture) return {};
  CReflData curve;
  double* percent = curve.GetData();
  for (std::size_t i = 0; i < kWavelengths; ++i) {
    const double ks = mixture->K[i] / mixture->S[i];
    if (!(ks >= 0.0)) return {};
    percent[i] = 100.0 * SaundersonToMeasured(KubelkaMunkReflectance(ks), system.k1, system.k2, mode);
  }
  return curve;
}

CReflData PredictFilm(const CDbFormula& formula, const CColorantSystemData& system, const CReflData& backing,
                      double thickness, SaundersonMode mode) {
  const std::optional<Mixture> mixture = Mix(formula, system);
  if (!mixture || !(thickness >= 0.0) || std::isinf(thickness)) return {};
  CReflData curve;
  double* percent = curve.GetData();
  for (std::size_t i = 0; i < kWavelengths; ++i) {
    const double measured = 0.01 * backing[static_cast<std::ptrdiff_t>(i)];
    const double below = SaundersonToInternal(measured, system.k1, system.k2, mode);
    const double film = FilmReflectance(mixture->K[i] * thickness, mixture->S[i] * thickness, below);
    if (std::isnan(film)) return {};
    percent[i] = 100.0 * SaundersonToMeasured(film, system.k1, system.k2, mode);
  }
  return curve;
}

}  // namespace vrx
