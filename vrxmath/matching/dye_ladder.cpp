#include <vrxmath/matching/dye_ladder.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <map>
#include <vector>

#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/curves.h>

namespace vrx {
namespace {

constexpr int32_t kBare = -1;
using Curve = std::array<double, kWavelengths>;

// A dyeing: which dye, how much of it for one part of the substrate, and its K/S.
struct Dyeing {
  int32_t dye = kBare;
  double concentration = 0.0;
  Curve ratio{};
};

// K/S of dyeings that are alike, added up.
struct Sum {
  Curve ratio{};
  double count = 0.0;

  void Add(const Curve& other) {
    for (std::size_t w = 0; w < other.size(); ++w) ratio[w] += other[w];
    count += 1.0;
  }
  Curve Mean() const {
    Curve mean = ratio;
    for (double& value : mean) value /= count;
    return mean;
  }
};

bool IsDyeing(const CDrawdown& drawdown, int32_t components, int32_t substrate, Dyeing& dyeing) {
  if (drawdown.isFilm || drawdown.shares.GetSize() != components) return false;
  const double unit = drawdown.shares[substrate];
  if (!(unit > 0.0) || std::isinf(unit)) return false;
  for (int32_t k = 0; k < components; ++k) {
    const double concentration = drawdown.shares[k] / unit;
    if (k == substrate || concentration == 0.0) continue;
    if (!(concentration > 0.0 && concentration <= 1.0) || dyeing.dye != kBare) return false;
    dyeing.dye = k;
    dyeing.concentration = concentration;
  }
  return true;
}

class Ladders {
 public:
  Ladders(const CStringArray1& names, const CDrawdownArray& dyeings, const CCalibrationSettings& settings)
      : names_(names),
        drawdowns_(dyeings),
        settings_(settings),
        dyes_(static_cast<std::size_t>(names.GetSize())) {}

  CalibrationOutcome Take(int32_t model) {
    CalibrationOutcome outcome;
    const bool isUsable = MixingLawOf(model) == MixingLaw::kOneConstant;
    if (!isUsable) outcome.fault = CalibrationFault::kShares;
    if (settings_.white < 0 || settings_.white >= names_.GetSize())
      outcome.fault = CalibrationFault::kNoWhite;
    for (int32_t i = 0; outcome.fault == CalibrationFault::kNone && i < drawdowns_.GetSize(); ++i) {
      outcome.fault = TakeDrawdown(drawdowns_[i]);
      if (outcome.fault != CalibrationFault::kNone) outcome.drawdown = i;
    }
    if (outcome.fault != CalibrationFault::kNone) return outcome;
    if (bare_.count == 0.0) outcome.fault = CalibrationFault::kNoWhite;
    for (int32_t k = 0; outcome.fault != CalibrationFault::kNoWhite && k < names_.GetSize(); ++k) {
      if (k == settings_.white || !dyes_[static_cast<std::size_t>(k)].empty()) continue;
      if (outcome.fault == CalibrationFault::kNone) outcome.component = k;
      outcome.fault = CalibrationFault::kNeverUsed;
      outcome.components.Add(k);
    }
    return outcome;
  }

  void Store(CColorantSystemData& system) const {
    system.k1 = settings_.k1;
    system.k2 = settings_.k2;
    system.colorants.RemoveAll();
    system.resins.RemoveAll();
    system.componentsA.RemoveAll();
    for (int32_t k = 0; k < names_.GetSize(); ++k) {
      CColorant colorant;
      colorant.SetId(static_cast<uint32_t>(k + 1));
      colorant.SetName(names_[k]);
      if (k == settings_.white) {
        colorant.SetKind(kKindCalibrationWhite);
        colorant.AppendLevel(LevelOf(1.0, bare_.Mean(), 1.0));
      } else {
        for (const auto& [concentration, sum] : dyes_[static_cast<std::size_t>(k)]) {
          colorant.AppendLevel(LevelOf(concentration, UnitOf(concentration, sum), 0.0));
        }
      }
      system.colorants.Add(colorant);
      system.componentsA.Add({colorant.GetId(), colorant.GetKind(), k, true});
    }
  }

  // The fits of the dyeings by `system`, and each by the system without its level.
  CDrawdownFitArray Fits(const CColorantSystemData& system) const {
    CDrawdownFitArray fits;
    for (int32_t i = 0; i < drawdowns_.GetSize(); ++i) {
      CDrawdownFit fit = FitDrawdown(system, drawdowns_[i], settings_);
      const Dyeing& dyeing = taken_[static_cast<std::size_t>(i)];
      if (IsBetweenLevels(dyeing)) fit.leaveOneOut = DifferenceWithout(dyeing, i, system);
      fits.Add(fit);
    }
    return fits;
  }

  CDyeBuildUpArray BuildUps() const {
    CDyeBuildUpArray buildUps;
    for (int32_t k = 0; k < names_.GetSize(); ++k) {
      if (k == settings_.white) continue;
      const auto& levels = dyes_[static_cast<std::size_t>(k)];
      buildUps.Add({static_cast<uint32_t>(k + 1), static_cast<int32_t>(levels.size()), SaturationOf(levels)});
    }
    return buildUps;
  }

 private:
  using Levels = std::map<double, Sum>;  // by concentration

  CalibrationFault TakeDrawdown(const CDrawdown& drawdown) {
    Dyeing dyeing;
    if (!IsDyeing(drawdown, names_.GetSize(), settings_.white, dyeing)) return CalibrationFault::kShares;
    if (!IsMeasured(drawdown.opaque)) return CalibrationFault::kNotMeasured;
    if (CountAtFloor(drawdown.opaque, kFirstVisible, kLastVisible, settings_.k1, settings_.k2,
                     settings_.mode) > 0) {
      return CalibrationFault::kBelowSurface;
    }
    CReflData internal;
    CorrectCurve(drawdown.opaque, internal, settings_.k1, settings_.k2, settings_.mode);
    for (int32_t w = 0; w < kWavelengths; ++w) {
      dyeing.ratio[static_cast<std::size_t>(w)] = KubelkaMunkKs(100.0 * std::min(internal[w], 1.0));
    }
    if (dyeing.dye == kBare) {
      bare_.Add(dyeing.ratio);
    } else {
      dyes_[static_cast<std::size_t>(dyeing.dye)][dyeing.concentration].Add(dyeing.ratio);
    }
    taken_.push_back(dyeing);
    return CalibrationFault::kNone;
  }

  // K of a unit of a dye.
  Curve UnitOf(double concentration, const Sum& sum) const {
    const Curve bare = bare_.Mean();
    Curve unit = sum.Mean();
    for (std::size_t w = 0; w < unit.size(); ++w) unit[w] = std::max(unit[w] - bare[w], 0.0) / concentration;
    return unit;
  }

  static CColorantLevel LevelOf(double concentration, const Curve& K, double S) {
    CColorantLevel level(1);
    level.concentration = concentration;
    std::copy(K.begin(), K.end(), level.values[0].absorption.begin());
    level.values[0].scattering.Fill(S);
    return level;
  }

  // True for the only dyeing of a level that has levels on both sides.
  bool IsBetweenLevels(const Dyeing& dyeing) const {
    if (dyeing.dye == kBare) return false;
    const Levels& levels = dyes_[static_cast<std::size_t>(dyeing.dye)];
    const auto found = levels.find(dyeing.concentration);
    return found != levels.begin() && std::next(found) != levels.end() && found->second.count == 1.0;
  }

  double DifferenceWithout(const Dyeing& dyeing, int32_t i, const CColorantSystemData& system) const {
    CColorantSystemData without = system;
    CColorant& colorant = without.colorants[dyeing.dye];
    for (int32_t level = 0; level < colorant.GetLevels().GetSize(); ++level) {
      if (colorant.GetLevel(level).concentration != dyeing.concentration) continue;
      colorant.RemoveLevel(level);
      break;
    }
    return FitDrawdown(without, drawdowns_[i], settings_).deltaE;
  }

  double SaturationOf(const Levels& levels) const {
    const Curve bare = bare_.Mean(), top = levels.rbegin()->second.Mean();
    std::size_t peak = kFirstVisible;
    for (std::size_t w = kFirstVisible; w <= kLastVisible; ++w) {
      if (top[w] - bare[w] > top[peak] - bare[peak]) peak = w;
    }
    constexpr double kPart = 0.25;
    double last = 0.0, lastBuilt = 0.0, first = 0.0;
    for (const auto& [concentration, sum] : levels) {
      const double built = sum.Mean()[peak] - bare[peak];
      const double slope = (built - lastBuilt) / (concentration - last);
      if (last == 0.0) first = slope;
      if (last > 0.0 && !(slope >= kPart * first)) return last;
      last = concentration;
      lastBuilt = built;
    }
    return kUnset;
  }

  const CStringArray1& names_;
  const CDrawdownArray& drawdowns_;
  const CCalibrationSettings& settings_;
  Sum bare_;
  std::vector<Levels> dyes_;  // by component
  std::vector<Dyeing> taken_;
};

}  // namespace

CalibrationOutcome CalibrateDyes(const CStringArray1& names, const CDrawdownArray& dyeings,
                                 const CCalibrationSettings& settings, CColorantSystemData& system,
                                 CDrawdownFitArray& fits, CDyeBuildUpArray& buildUps) {
  Ladders ladders(names, dyeings, settings);
  CalibrationOutcome outcome = ladders.Take(system.opticalModel);
  if (outcome.fault != CalibrationFault::kNone) return outcome;
  ladders.Store(system);
  fits = ladders.Fits(system);
  buildUps = ladders.BuildUps();
  return outcome;
}

}  // namespace vrx
