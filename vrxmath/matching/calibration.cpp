#include <vrxmath/matching/calibration.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <vrxmath/colorant/film.h>
#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/numeric/elementary.h>
#include <vrxmath/numeric/line_minimum.h>
#include <vrxmath/numeric/nonnegative_least_squares.h>

namespace vrx {
namespace {

constexpr std::size_t kSamples = kWavelengths;
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
  const auto isCurve = [](const CReflData& curve) {
    return std::none_of(curve.begin(), curve.end(), [](double percent) {
      return std::isnan(percent) || std::isinf(percent) || IsUnset(percent);
    });
  };
  if (!drawdown.isFilm) return isCurve(drawdown.opaque);
  return isCurve(drawdown.overBlack) && isCurve(drawdown.overWhite) && isCurve(drawdown.black) &&
         isCurve(drawdown.white);
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
    CLabValues standard, trial;
    XyzToLab(settings_.illuminant, settings_.observer, XyzOf(measured), standard);
    XyzToLab(settings_.illuminant, settings_.observer, XyzOf(predicted), trial);
    CDeltaValues delta;
    DeltaCie2000(standard, trial, 1.0, 1.0, 1.0, delta);
    return delta[CDeltaValues::kTotal];
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

// Finds the constants of all components, of all drawdowns or of all but one.
class Calibrator {
 public:
  Calibrator(const CDrawdownArray& drawdowns, std::size_t components, const CCalibrationSettings& settings)
      : drawdowns_(drawdowns),
        settings_(settings),
        components_(components),
        white_(static_cast<std::size_t>(settings.white)),
        K_(components),
        S_(components) {
    for (const CDrawdown& drawdown : drawdowns) Prepare(drawdown);
    shares_.assign(samples_.size(), std::vector<double>(components));
    for (std::size_t i = 0; i < samples_.size(); ++i) {
      const CDrawdown& drawdown = drawdowns_[static_cast<std::ptrdiff_t>(i)];
      const double total = ShareTotal(drawdown);
      for (std::size_t k = 0; k < components_; ++k) {
        shares_[i][k] = drawdown.shares[static_cast<std::ptrdiff_t>(k)] / total;
      }
    }
  }

  // Which component cannot be told from the drawdowns without `omitted`; a fault of kNone when all can.
  CalibrationOutcome Determined(std::size_t omitted) const {
    for (std::size_t k = 0; k < components_; ++k) {
      double least = 2.0, largest = 0.0;
      for (std::size_t i = 0; i < samples_.size(); ++i) {
        if (i == omitted || shares_[i][k] == 0.0) continue;
        least = std::min(least, shares_[i][k]);
        largest = std::max(largest, shares_[i][k]);
      }
      const auto component = static_cast<int32_t>(k);
      if (largest == 0.0) {
        return {k == white_ ? CalibrationFault::kNoWhite : CalibrationFault::kNeverUsed, -1, component};
      }
      constexpr double kSameShare = 1e-6;
      if (k != white_ && largest - least <= kSameShare)
        return {CalibrationFault::kOneShareOnly, -1, component};
    }
    return {};
  }

  // Solves at every wavelength; the sets in use of the last solution are the first guess of the next.
  void Solve(std::size_t omitted) {
    const std::size_t unknowns = 2 * components_ - 1;  // K of all, S of all but the white
    if (guess_.empty()) guess_.assign(kSamples, std::vector<double>(unknowns, 0.0));
    for (std::size_t w = 0; w < kSamples; ++w) {
      std::vector<double> A, b;
      for (std::size_t i = 0; i < samples_.size(); ++i) {
        if (i != omitted) AppendEquation(i, w, A, b);
      }
      std::vector<double> x = guess_[w];
      NonNegativeLeastSquares(A, b, x);
      if (omitted == kNone) guess_[w] = x;
      std::size_t next = components_;
      for (std::size_t k = 0; k < components_; ++k) {
        K_[k][w] = x[k];
        S_[k][w] = k == white_ ? 1.0 : x[next++];
      }
    }
  }

  // The fit of a drawdown by the constants of the last solution.
  CDrawdownFit Fit(std::size_t i) const {
    Curve K{}, S{};
    for (std::size_t k = 0; k < components_; ++k) {
      for (std::size_t w = 0; w < kSamples; ++w) {
        K[w] += shares_[i][k] * K_[k][w];
        S[w] += shares_[i][k] * S_[k][w];
      }
    }
    return Fitter(settings_).Fit(drawdowns_[static_cast<std::ptrdiff_t>(i)], K, S);
  }

  CColorantLevel LevelOf(std::size_t component) const {
    CColorantLevel level(1);
    level.concentration = 1.0;
    std::copy(K_[component].begin(), K_[component].end(), level.values[0].absorption.begin());
    std::copy(S_[component].begin(), S_[component].end(), level.values[0].scattering.begin());
    return level;
  }

  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

 private:
  struct Sample {
    Curve ratio;   // K/S
    Curve weight;  // dR/dQ
  };

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
    Sample sample{};
    for (std::size_t w = 0; w < kSamples; ++w) {
      sample.ratio[w] = ratio[static_cast<std::ptrdiff_t>(w)];
      sample.weight[w] = Weight(sample.ratio[w]);
    }
    samples_.push_back(sample);
  }

  // Size of the change of measured reflectance with K/S. It has no bound at the perfect white, where K/S begins like
  // a square root; there 0.999 stands for the reflectance.
  double Weight(double ratio) const {
    constexpr double kLargest = 0.999;
    const double R = std::min(KubelkaMunkReflectance(ratio), kLargest);
    const double surface = settings_.mode == SaundersonMode::kNone
                               ? 1.0
                               : (1.0 - settings_.k1) * (1.0 - settings_.k2) /
                                     ((1.0 - settings_.k2 * R) * (1.0 - settings_.k2 * R));
    return surface * 2.0 * R * R / (1.0 - R * R);
  }

  void AppendEquation(std::size_t i, std::size_t w, std::vector<double>& A, std::vector<double>& b) const {
    const double ratio = samples_[i].ratio[w], weight = samples_[i].weight[w];
    for (const double share : shares_[i]) A.push_back(weight * share);
    for (std::size_t k = 0; k < components_; ++k) {
      if (k != white_) A.push_back(-weight * ratio * shares_[i][k]);
    }
    b.push_back(weight * ratio * shares_[i][white_]);
  }

  const CDrawdownArray& drawdowns_;
  const CCalibrationSettings& settings_;
  std::size_t components_;
  std::size_t white_;
  std::vector<Sample> samples_;
  std::vector<std::vector<double>> shares_;  // of every drawdown, with a total of 1
  std::vector<std::vector<double>> guess_;   // by wavelength
  std::vector<Curve> K_, S_;                 // by component
};

CalibrationOutcome Check(const CStringArray1& names, const CDrawdownArray& drawdowns,
                         const CCalibrationSettings& settings) {
  if (settings.white < 0 || settings.white >= names.GetSize()) return {CalibrationFault::kNoWhite};
  for (int32_t i = 0; i < drawdowns.GetSize(); ++i) {
    const CDrawdown& drawdown = drawdowns[i];
    const bool hasShares = drawdown.shares.GetSize() == names.GetSize() && !IsUnset(ShareTotal(drawdown));
    if (!hasShares) return {CalibrationFault::kShares, i};
    if (!IsMeasured(drawdown)) return {CalibrationFault::kNotMeasured, i};
  }
  return {};
}

void StoreColorants(const Calibrator& calibrator, const CStringArray1& names,
                    const CCalibrationSettings& settings, CColorantSystemData& system) {
  system.k1 = settings.k1;
  system.k2 = settings.k2;
  system.colorants.RemoveAll();
  system.componentsA.RemoveAll();
  for (int32_t k = 0; k < names.GetSize(); ++k) {
    CColorant colorant;
    colorant.SetId(static_cast<uint32_t>(k + 1));
    colorant.SetName(names[k]);
    if (k == settings.white) colorant.SetKind(kKindCalibrationWhite);
    colorant.AppendLevel(calibrator.LevelOf(static_cast<std::size_t>(k)));
    system.colorants.Add(colorant);
    system.componentsA.Add({colorant.GetId(), colorant.GetKind(), k, true});
  }
}

}  // namespace

CalibrationOutcome CalibrateColorants(const CStringArray1& names, const CDrawdownArray& drawdowns,
                                      const CCalibrationSettings& settings, CColorantSystemData& system,
                                      CDrawdownFitArray& fits) {
  const CalibrationOutcome checked = Check(names, drawdowns, settings);
  if (checked.fault != CalibrationFault::kNone) return checked;
  Calibrator calibrator(drawdowns, static_cast<std::size_t>(names.GetSize()), settings);
  const CalibrationOutcome determined = calibrator.Determined(Calibrator::kNone);
  if (determined.fault != CalibrationFault::kNone) return determined;
  calibrator.Solve(Calibrator::kNone);
  StoreColorants(calibrator, names, settings, system);
  CDrawdownFitArray found;
  for (int32_t i = 0; i < drawdowns.GetSize(); ++i) found.Add(calibrator.Fit(static_cast<std::size_t>(i)));
  for (int32_t i = 0; settings.leaveOneOut && i < drawdowns.GetSize(); ++i) {
    const auto omitted = static_cast<std::size_t>(i);
    if (calibrator.Determined(omitted).fault != CalibrationFault::kNone) continue;
    calibrator.Solve(omitted);
    found[i].leaveOneOut = calibrator.Fit(omitted).deltaE;
  }
  fits = found;
  return {};
}

CDrawdownFit FitDrawdown(const CColorantSystemData& system, const CDrawdown& drawdown,
                         const CCalibrationSettings& settings) {
  if (drawdown.shares.GetSize() != system.colorants.GetSize() || !IsMeasured(drawdown)) return {};
  CDbFormula formula;
  for (int32_t i = 0; i < drawdown.shares.GetSize(); ++i) {
    CDbFormulaElement line;
    line.componentId = static_cast<int32_t>(system.colorants[i].GetId());
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
