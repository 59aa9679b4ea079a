#include <vrxmath/matching/calibration.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <vrxmath/colorant/film.h>
#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/calibration_fit.h>
#include <vrxmath/matching/curves.h>
#include <vrxmath/numeric/elementary.h>
#include <vrxmath/numeric/line_minimum.h>

namespace vrx {
namespace {

using Curve = std::array<double, kSamples>;

double ShareTotal(const CDrawdown& drawdown) {
  double total = 0.0;
  for (const double share : drawdown.shares) {
    if (!(share >= 0.0)) return kUnset;
    total += share;
  }
  return total > 0.0 && !std::isinf(total) ? total : kUnset;
}

bool IsMeasured(const CDrawdown& drawdown) {
  if (!drawdown.isFilm) return IsMeasured(drawdown.opaque);
  return IsMeasured(drawdown.overBlack) && IsMeasured(drawdown.overWhite) && IsMeasured(drawdown.black) &&
         IsMeasured(drawdown.white);
}

// Predicts drawdowns from K and S of their mixtures.
class Fitter {
 public:
  explicit Fitter(const CCalibrationSettings& settings) : settings_(settings) {}

  CDrawdownFit Fit(const CDrawdown& drawdown, const Curve& K, const Curve& S) const {
    return drawdown.isFilm ? FitFilm(drawdown, K, S) : FitOpaque(drawdown, K, S);
  }

 private:
  double ToInternal(double percent) const {
    return std::max(SaundersonToInternal(0.01 * percent, settings_.k1, settings_.k2, settings_.mode),
                    kLeastInternal);
  }
  double ToMeasured(double internal) const {
    return 100.0 * SaundersonToMeasured(internal, settings_.k1, settings_.k2, settings_.mode);
  }

  CReflData FilmOver(const CReflData& backing, const Curve& K, const Curve& S, double thickness) const {
    CReflData curve;
    for (int32_t w = 0; w < kWavelengths; ++w) {
      const auto i = static_cast<std::size_t>(w);
      curve[w] = ToMeasured(FilmReflectance(K[i] * thickness, S[i] * thickness, ToInternal(backing[w])));
    }
    return curve;
  }

  CTrisValues XyzOf(const CReflData& curve) const {
    CTrisValues xyz;
    curve.Tristimulus(settings_.illuminant, settings_.observer, xyz);
    return xyz;
  }

  double DifferenceOf(const CReflData& measured, const CReflData& predicted) const {
    return CurveDifference(measured, predicted, settings_.illuminant, settings_.observer);
  }

  CDrawdownFit FitOpaque(const CDrawdown& drawdown, const Curve& K, const Curve& S) const {
    CReflData predicted;
    for (std::size_t w = 0; w < kSamples; ++w) {
      predicted[static_cast<std::ptrdiff_t>(w)] = ToMeasured(KubelkaMunkReflectance(K[w] / S[w]));
    }
    CDrawdownFit fit;
    fit.deltaE = DifferenceOf(drawdown.opaque, predicted);
    return fit;
  }

  CDrawdownFit FitFilm(const CDrawdown& drawdown, const Curve& K, const Curve& S) const {
    CDrawdownFit fit;
    fit.thickness = ThicknessOf(drawdown, K, S);
    const CReflData overBlack = FilmOver(drawdown.black, K, S, fit.thickness);
    const CReflData overWhite = FilmOver(drawdown.white, K, S, fit.thickness);
    fit.deltaE =
        0.5 * (DifferenceOf(drawdown.overBlack, overBlack) + DifferenceOf(drawdown.overWhite, overWhite));
    fit.measuredContrast = ContrastRatio(XyzOf(drawdown.overBlack), XyzOf(drawdown.overWhite));
    fit.predictedContrast = ContrastRatio(XyzOf(overBlack), XyzOf(overWhite));
    return fit;
  }

  // The thickness whose two curves come nearest to the readings: a walk over powers of 10^(1/8), then Brent's method
  // about the best.
  double ThicknessOf(const CDrawdown& drawdown, const Curve& K, const Curve& S) const {
    const auto misfit = [&](double logThickness) {
      const double thickness = Exp(logThickness);
      const CReflData overBlack = FilmOver(drawdown.black, K, S, thickness);
      const CReflData overWhite = FilmOver(drawdown.white, K, S, thickness);
      double sum = 0.0;
      for (int32_t w = 0; w < kWavelengths; ++w) {
        const double b = overBlack[w] - drawdown.overBlack[w], v = overWhite[w] - drawdown.overWhite[w];
        sum += b * b + v * v;
      }
      return sum;
    };
    constexpr double kStep = 0.28782313662425574;  // ln(10) / 8
    constexpr int32_t kSteps = 24;                 // from 1/1000 to 1000
    Bracket bracket;
    bracket.fb = HUGE_VAL;
    for (int32_t step = -kSteps; step <= kSteps; ++step) {
      const double value = misfit(kStep * step);
      if (value < bracket.fb) bracket.b = kStep * step, bracket.fb = value;
    }
    bracket.a = bracket.b - kStep, bracket.c = bracket.b + kStep;
    bracket.fa = misfit(bracket.a), bracket.fc = misfit(bracket.c);
    bracket.found = bracket.fb <= bracket.fa && bracket.fb <= bracket.fc;
    const LineMinimum minimum = BrentMinimum(misfit, bracket);
    return Exp(minimum.converged ? minimum.x : bracket.b);
  }

  const CCalibrationSettings& settings_;
};

// K and S of all components, by component.
struct Constants {
  explicit Constants(std::size_t components) : K(components), S(components) {}
  std::vector<Curve> K, S;
};

// The first fault stands, with all components that have it.
void AddFault(CalibrationFault fault, int32_t component, CalibrationOutcome& outcome) {
  if (fault == CalibrationFault::kNone) return;
  if (outcome.fault == CalibrationFault::kNone) outcome.fault = fault, outcome.component = component;
  if (outcome.fault == fault) outcome.components.Add(component);
}

// Finds the constants of all components, of all drawdowns or of all but one.
class Calibrator {
 public:
  static constexpr std::size_t kNone = CalibrationFit::kNone;

  Calibrator(const CDrawdownArray& drawdowns, std::size_t components, const CCalibrationSettings& settings)
      : drawdowns_(drawdowns),
        settings_(settings),
        components_(components),
        white_(static_cast<std::size_t>(settings.white)),
        ratios_(kSamples),
        linear_(components),
        refined_(components),
        linearAll_(kSamples),
        refinedAll_(kSamples) {
    for (const CDrawdown& drawdown : drawdowns) Prepare(drawdown);
  }

  // What cannot be told from the drawdowns without `omitted`; a fault of kNone when everything can.
  CalibrationOutcome Determined(std::size_t omitted) const {
    CalibrationOutcome outcome;
    for (std::size_t k = 0; k < components_; ++k) {
      double least = 2.0, largest = 0.0;
      for (std::size_t i = 0; i < mixtures_.size(); ++i) {
        for (const auto& [component, share] : mixtures_[i].shares) {
          if (i == omitted || component != k) continue;
          least = std::min(least, share);
          largest = std::max(largest, share);
        }
      }
      constexpr double kSameShare = 1e-6;
      CalibrationFault fault = CalibrationFault::kNone;
      if (largest == 0.0) {
        fault = k == white_ ? CalibrationFault::kNoWhite : CalibrationFault::kNeverUsed;
      } else if (k != white_ && largest - least <= kSameShare) {
        fault = CalibrationFault::kOneShareOnly;
      }
      AddFault(fault, static_cast<int32_t>(k), outcome);
    }
    return outcome;
  }

  // Solves at every wavelength. Without a drawdown the steps begin where they ended with all, towards the linear solution
  // without it.
  void Solve(std::size_t omitted) {
    CalibrationFit fit(components_, mixtures_, surface_);
    for (std::size_t w = 0; w < kSamples; ++w) {
      const std::vector<double> linear = fit.Linear(ratios_[w], omitted, linearAll_[w]);
      const std::vector<double> refined = fit.Refined(ratios_[w], omitted, linear, refinedAll_[w]);
      Store(linear, w, linear_);
      Store(refined, w, refined_);
      if (omitted == kNone) linearAll_[w] = linear, refinedAll_[w] = refined;
    }
  }

  // The constants of the last solution: refined, and the linear ones that these begin with.
  const Constants& Refined() const { return refined_; }
  const Constants& Linear() const { return linear_; }

  // The fit of a drawdown by constants.
  CDrawdownFit Fit(std::size_t i, const Constants& constants) const {
    return Fit(i, constants, drawdowns_[static_cast<std::ptrdiff_t>(i)]);
  }

  // The difference of a drawdown as if it hid: that of a film depends on the unit of scattering, which is the white's.
  double OpaqueError(std::size_t i, const Constants& constants) const {
    CDrawdown opaque;
    for (std::size_t w = 0; w < kSamples; ++w) {
      opaque.opaque[static_cast<std::ptrdiff_t>(w)] = 100.0 * surface_.Reflectance(ratios_[w][i]);
    }
    return Fit(i, constants, opaque).deltaE;
  }

 private:
  CDrawdownFit Fit(std::size_t i, const Constants& constants, const CDrawdown& drawdown) const {
    Curve K{}, S{};
    for (const auto& [component, share] : mixtures_[i].shares) {
      for (std::size_t w = 0; w < kSamples; ++w) {
        K[w] += share * constants.K[component][w];
        S[w] += share * constants.S[component][w];
      }
    }
    return Fitter(settings_).Fit(drawdown, K, S);
  }

  void Prepare(const CDrawdown& drawdown) {
    CKSData ratio;
    if (drawdown.isFilm) {
      ratio = FilmConstants(drawdown.overBlack, drawdown.overWhite, drawdown.black, drawdown.white,
                            settings_.k1, settings_.k2, settings_.mode)
                  .ratio;
    } else {
      CReflData internal;
      CorrectCurve(drawdown.opaque, internal, settings_.k1, settings_.k2, settings_.mode);
      for (int32_t w = 0; w < kWavelengths; ++w) ratio[w] = KubelkaMunkKs(100.0 * std::min(internal[w], 1.0));
    }
    for (std::size_t w = 0; w < kSamples; ++w) ratios_[w].push_back(ratio[static_cast<std::ptrdiff_t>(w)]);
    CalibrationMixture mixture;
    mixture.weight = drawdown.weight;
    const double total = ShareTotal(drawdown);
    for (std::size_t k = 0; k < components_; ++k) {
      const double share = drawdown.shares[static_cast<std::ptrdiff_t>(k)] / total;
      if (share > 0.0) mixture.shares.emplace_back(k, share);
    }
    mixtures_.push_back(mixture);
  }

  // In the unit of the white.
  void Store(const std::vector<double>& x, std::size_t w, Constants& constants) const {
    const double unit = std::max(x[components_ + white_], CalibrationFit::kLeastScattering);
    for (std::size_t k = 0; k < components_; ++k) {
      constants.K[k][w] = x[k] / unit;
      constants.S[k][w] = k == white_ ? 1.0 : x[components_ + k] / unit;
    }
  }

  const CDrawdownArray& drawdowns_;
  const CCalibrationSettings& settings_;
  const CalibrationSurface surface_{settings_.k1, settings_.k2, settings_.mode};
  std::size_t components_;
  std::size_t white_;
  std::vector<std::vector<double>> ratios_;  // K/S by wavelength and drawdown
  std::vector<CalibrationMixture> mixtures_;
  Constants linear_, refined_;
  std::vector<std::vector<double>> linearAll_, refinedAll_;  // of all drawdowns, by wavelength
};

CColorantLevel LevelOf(const Constants& constants, std::size_t component) {
  CColorantLevel level(1);
  level.concentration = 1.0;
  std::copy(constants.K[component].begin(), constants.K[component].end(), level.values[0].absorption.begin());
  std::copy(constants.S[component].begin(), constants.S[component].end(), level.values[0].scattering.begin());
  return level;
}

double LuminanceOf(const CReflData& curve) {
  CTrisValues xyz;
  curve.Tristimulus(vrxIllumD65, kObserver10, xyz);
  return xyz[1];
}

// Instruments and surfaces differ a little; readings without the surface go down to nearly 0.
bool IsBelowSurface(const CReflData& curve, const CCalibrationSettings& settings) {
  constexpr double kPart = 0.9;
  if (settings.mode != SaundersonMode::kIncluded) return false;
  return std::any_of(curve.begin() + kFirstVisible, curve.begin() + kLastVisible + 1,
                     [&](double percent) { return percent < 100.0 * kPart * settings.k1; });
}

// A film that hides may be a little lighter over black, by what its two halves differ.
CalibrationFault FaultOfFilm(const CDrawdown& drawdown) {
  constexpr double kPart = 0.1;
  const double cards = LuminanceOf(drawdown.white) - LuminanceOf(drawdown.black);
  if (!(cards > 0.0)) return CalibrationFault::kCardsSwapped;
  // Two readings of a film that hides differ in their last digits; without any difference one was stored twice.
  if (std::equal(drawdown.overBlack.begin(), drawdown.overBlack.end(), drawdown.overWhite.begin()))
    return CalibrationFault::kSameReadings;
  const double film = LuminanceOf(drawdown.overWhite) - LuminanceOf(drawdown.overBlack);
  return film < -kPart * cards ? CalibrationFault::kFilmSwapped : CalibrationFault::kNone;
}

CalibrationFault FaultOf(const CDrawdown& drawdown, int32_t components,
                         const CCalibrationSettings& settings) {
  if (drawdown.shares.GetSize() != components || IsUnset(ShareTotal(drawdown))) {
    return CalibrationFault::kShares;
  }
  if (!(drawdown.weight > 0.0) || std::isinf(drawdown.weight)) return CalibrationFault::kWeight;
  if (!IsMeasured(drawdown)) return CalibrationFault::kNotMeasured;
  const bool isBelow = drawdown.isFilm ? IsBelowSurface(drawdown.overBlack, settings) ||
                                             IsBelowSurface(drawdown.overWhite, settings)
                                       : IsBelowSurface(drawdown.opaque, settings);
  if (isBelow) return CalibrationFault::kBelowSurface;
  return drawdown.isFilm ? FaultOfFilm(drawdown) : CalibrationFault::kNone;
}

CalibrationOutcome Check(const CStringArray1& names, const CDrawdownArray& drawdowns,
                         const CCalibrationSettings& settings) {
  CalibrationOutcome outcome;
  if (settings.white < 0 || settings.white >= names.GetSize()) outcome.fault = CalibrationFault::kNoWhite;
  for (int32_t i = 0; outcome.fault == CalibrationFault::kNone && i < drawdowns.GetSize(); ++i) {
    outcome.fault = FaultOf(drawdowns[i], names.GetSize(), settings);
    if (outcome.fault != CalibrationFault::kNone) outcome.drawdown = i;
  }
  return outcome;
}

// The fits of all drawdowns by one solution.
CDrawdownFitArray FitsBy(const Calibrator& calibrator, const Constants& constants, int32_t drawdowns) {
  CDrawdownFitArray fits;
  for (int32_t i = 0; i < drawdowns; ++i) fits.Add(calibrator.Fit(static_cast<std::size_t>(i), constants));
  return fits;
}

// Predicts every drawdown that the others determine by the refined solution of these, and by the linear one; true when
// the refined ones foresee them better, on the whole.
bool LeaveOneOut(Calibrator& calibrator, CDrawdownFitArray& refined, CDrawdownFitArray& linear) {
  double gain = 0.0, count = 0.0;
  for (int32_t i = 0; i < refined.GetSize(); ++i) {
    const auto omitted = static_cast<std::size_t>(i);
    if (calibrator.Determined(omitted).fault != CalibrationFault::kNone) continue;
    calibrator.Solve(omitted);
    refined[i].leaveOneOut = calibrator.Fit(omitted, calibrator.Refined()).deltaE;
    linear[i].leaveOneOut = calibrator.Fit(omitted, calibrator.Linear()).deltaE;
    refined[i].leaveOneOutLinear = linear[i].leaveOneOutLinear = linear[i].leaveOneOut;
    gain += calibrator.OpaqueError(omitted, calibrator.Linear()) -
            calibrator.OpaqueError(omitted, calibrator.Refined());
    count += 1.0;
  }
  constexpr double kEven = 1e-3;
  return gain >= -kEven * count;
}

void StoreComponents(const Constants& constants, const CStringArray1& names,
                     const CCalibrationSettings& settings, CColorantSystemData& system) {
  system.k1 = settings.k1;
  system.k2 = settings.k2;
  system.colorants.RemoveAll();
  system.resins.RemoveAll();
  system.componentsA.RemoveAll();
  for (int32_t k = 0; k < names.GetSize(); ++k) {
    const auto isK = [k](int32_t resin) { return resin == k; };
    const bool isResin = std::any_of(settings.resins.begin(), settings.resins.end(), isK);
    CComponent component;
    component.SetId(static_cast<uint32_t>(k + 1));
    component.SetName(names[k]);
    component.AppendLevel(LevelOf(constants, static_cast<std::size_t>(k)));
    component.SetKind(k == settings.white ? kKindCalibrationWhite : isResin ? kKindResin : kKindColorant);
    if (component.GetKind() == kKindResin) {
      system.resins.Add(CResin(component));
    } else {
      system.colorants.Add(CColorant(component));
    }
    system.componentsA.Add({component.GetId(), component.GetKind(), k, true});
  }
}

// The amount to which shares of a drawdown are relative: that of the substrate under one-constant models, else all.
double UnitOf(const CColorantSystemData& system, const CDrawdown& drawdown) {
  double unit = 0.0;
  for (int32_t k = 0; k < drawdown.shares.GetSize(); ++k) {
    const bool isSubstrate = system.componentsA[k].kind == kKindCalibrationWhite;
    if (MixingLawOf(system.opticalModel) != MixingLaw::kOneConstant || isSubstrate)
      unit += drawdown.shares[k];
  }
  return unit;
}

// The least of some values that so large a part of them does not exceed; unset for none.
double NotExceededBy(double part, std::vector<double> values) {
  if (values.empty()) return kUnset;
  std::sort(values.begin(), values.end());
  const auto count = static_cast<double>(values.size());
  return values[static_cast<std::size_t>(std::ceil(part * count)) - 1];
}

}  // namespace

CalibrationOutcome CalibrateColorants(const CStringArray1& names, const CDrawdownArray& drawdowns,
                                      const CCalibrationSettings& settings, CColorantSystemData& system,
                                      CDrawdownFitArray& fits) {
  CalibrationOutcome outcome = Check(names, drawdowns, settings);
  if (outcome.fault != CalibrationFault::kNone) return outcome;
  Calibrator calibrator(drawdowns, static_cast<std::size_t>(names.GetSize()), settings);
  outcome = calibrator.Determined(Calibrator::kNone);
  if (outcome.fault != CalibrationFault::kNone) return outcome;
  calibrator.Solve(Calibrator::kNone);
  const Constants refined = calibrator.Refined(), linear = calibrator.Linear();
  CDrawdownFitArray ofRefined = FitsBy(calibrator, refined, drawdowns.GetSize());
  CDrawdownFitArray ofLinear = FitsBy(calibrator, linear, drawdowns.GetSize());
  outcome.isRefined = !settings.leaveOneOut || LeaveOneOut(calibrator, ofRefined, ofLinear);
  StoreComponents(outcome.isRefined ? refined : linear, names, settings, system);
  fits = outcome.isRefined ? ofRefined : ofLinear;
  return outcome;
}

CComponentCalibrationArray CalibratedComponents(const CColorantSystemData& system,
                                                const CDrawdownArray& drawdowns,
                                                const CDrawdownFitArray& fits) {
  CComponentCalibrationArray components;
  for (int32_t k = 0; k < system.componentsA.GetSize(); ++k) {
    CComponentCalibration component;
    component.componentId = system.componentsA[k].componentId;
    std::vector<double> errors;
    for (int32_t i = 0; i < drawdowns.GetSize(); ++i) {
      const double share = drawdowns[i].shares[k] / UnitOf(system, drawdowns[i]);
      if (!(share > 0.0)) continue;
      const bool isFirst = component.drawdowns++ == 0;
      component.leastShare = isFirst ? share : std::min(component.leastShare, share);
      component.mostShare = isFirst ? share : std::max(component.mostShare, share);
      if (!IsUnset(fits[i].leaveOneOut)) errors.push_back(fits[i].leaveOneOut);
    }
    component.leaveOneOut = NotExceededBy(0.5, errors);
    component.leaveOneOut90 = NotExceededBy(0.9, errors);
    components.Add(component);
  }
  return components;
}

CDrawdownFit FitDrawdown(const CColorantSystemData& system, const CDrawdown& drawdown,
                         const CCalibrationSettings& settings) {
  if (drawdown.shares.GetSize() != system.componentsA.GetSize() || !IsMeasured(drawdown)) return {};
  CDbFormula formula;
  for (int32_t i = 0; i < drawdown.shares.GetSize(); ++i) {
    CDbFormulaElement line;
    line.componentId = static_cast<int32_t>(system.componentsA[i].componentId);
    line.amount = drawdown.shares[i];
    if (line.amount != 0.0) formula.Add(line);
  }
  CColorantValues sums;
  if (formula.IsEmpty() || !MixtureConstants(formula, system, sums)) return {};
  Curve K, S;
  std::copy(sums.absorption.begin(), sums.absorption.end(), K.begin());
  std::copy(sums.scattering.begin(), sums.scattering.end(), S.begin());
  return Fitter(settings).Fit(drawdown, K, S);
}

}  // namespace vrx
