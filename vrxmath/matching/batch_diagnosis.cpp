#include <vrxmath/matching/batch_diagnosis.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/calibration_fit.h>
#include <vrxmath/matching/curves.h>
#include <vrxmath/matching/prediction_error.h>
#include <vrxmath/numeric/nonnegative_least_squares.h>

namespace vrx {
namespace {

constexpr std::size_t kBandSamples = kLastVisible - kFirstVisible + 1;
using Band = std::array<double, kBandSamples>;

// A component that may be in the batch: its unit curves, and how much of it was written down.
struct Ingredient {
  uint32_t id = 0;
  double written = 0.0;  // part of the written total, of one-constant models of the substrate
  Band K{}, S{};
};

// Which ingredients are not bound to what was written; kNobody for none.
struct Hypothesis {
  static constexpr std::size_t kNobody = static_cast<std::size_t>(-1);
  std::size_t own = kNobody, otherOwn = kNobody, foreign = kNobody;

  // What a suspicion costs in squares of standard deviations: a wrong amount of what belongs there is the commonest
  // mistake, a mix-up of two components the next.
  double Price() const {
    constexpr double kOwn = 10.0, kForeign = 14.0, kMixUp = 16.0;
    if (foreign != kNobody) return own != kNobody ? kMixUp : kForeign;
    return (own != kNobody ? kOwn : 0.0) + (otherOwn != kNobody ? kOwn + 2.0 : 0.0);
  }
};

struct Solution {
  Hypothesis hypothesis;
  std::vector<double> amounts;  // of the batch's own, and behind them of the foreign one
  double doubt = HUGE_VAL;
};

class Diagnosis {
 public:
  Diagnosis(const CColorantSystemData& system, const CBatch& batch, const CDiagnosisSettings& settings)
      : system_(system), batch_(batch), settings_(settings), surface_{system.k1, system.k2, settings.mode} {}

  bool Run(CBatchDiagnosis& diagnosis) {
    if (!Prepare()) return false;
    std::vector<Solution> solutions;
    for (const Hypothesis& hypothesis : Hypotheses()) solutions.push_back(Solve(hypothesis));
    const auto isLess = [](const Solution& a, const Solution& b) { return a.doubt < b.doubt; };
    std::stable_sort(solutions.begin(), solutions.end(), isLess);
    CBatchDiagnosis found;
    found.asWritten = DifferenceOf(batch_.formula);
    found.isClear = true;
    bool hasBest = false;
    for (const Solution& solution : solutions) {
      const CBatchExplanation each = ExplanationOf(solution);
      if (!IsSeen(each, found.asWritten) || (hasBest && IsSame(each, found.best))) continue;
      if (!hasBest) {
        found.best = each;
        hasBest = true;
        continue;
      }
      found.next = each;
      constexpr double kMuch = 9.0;  // twice the logarithm of 100
      found.isClear = each.doubt - found.best.doubt > kMuch;
      break;
    }
    if (!hasBest) return false;
    found.isExplained = IsExplained(found.best.difference);
    diagnosis = found;
    return true;
  }

  bool Contradicts(CBatchDiagnosis& diagnosis) {
    const double asWritten = DifferenceOf(batch_.formula);
    CBatchDiagnosis found;
    if (IsUnset(asWritten) || IsExplained(asWritten) || !Run(found)) return false;
    const CSuspectedAmountArray& suspected = found.best.suspected;
    if (found.isExplained && std::all_of(suspected.begin(), suspected.end(), IsStrength)) return false;
    diagnosis = found;
    return true;
  }

 private:
  // The batch's own ingredients, the foreign ones, and the curve.
  bool Prepare() {
    const MixingLaw law = MixingLawOf(system_.opticalModel);
    CColorantValues sums;
    if (law == MixingLaw::kNone || IsUnset(batch_.curve) || batch_.formula.IsEmpty() ||
        !MixtureConstants(batch_.formula, system_, sums)) {
      return false;
    }
    isOneConstant_ = law == MixingLaw::kOneConstant;
    const double unit = UnitOf(), error = ErrorOfModel();
    for (const CColorant& colorant : system_.colorants) Take(colorant, unit);
    for (const CResin& resin : system_.resins) Take(resin, unit);
    if (isOneConstant_ && !hasSubstrate_ && !TakeDefaultSubstrate()) return false;
    for (std::size_t w = 0; w < kBandSamples; ++w) {
      const double percent = batch_.curve[static_cast<int32_t>(w) + kFirstVisible];
      if (!std::isfinite(percent)) return false;
      const double internal = SaundersonToInternal(0.01 * percent, system_.k1, system_.k2, settings_.mode);
      ratio_[w] = KubelkaMunkKs(100.0 * std::min(std::max(internal, kLeastInternal), 1.0));
      reflectance_[w] = surface_.Reflectance(ratio_[w]);
      constexpr double kFloor = 0.002, kPart = 0.02;  // of a unit of CIEDE2000, about
      weight_[w] = 1.0 / (error * (kFloor + kPart * reflectance_[w]));
    }
    return true;
  }

  // How far the model is off as a rule, CIEDE2000.
  double ErrorOfModel() const {
    constexpr double kUnknown = 1.0, kLeast = 0.3;
    const double half = PredictionError(batch_.formula, system_, settings_.calibrated).half;
    return IsUnset(half) ? kUnknown : std::max(kLeast, half);
  }

  // Batches are off their formulas by less, whatever their model.
  bool IsExplained(double difference) const {
    constexpr double kTimes = 3.0, kLeastError = 1.0;
    return difference <= kTimes * std::max(kLeastError, ErrorOfModel());
  }

  // What a lot of a colorant that is stronger or weaker looks like.
  static bool IsStrength(const CSuspectedAmount& amount) {
    constexpr double kMost = 1.5;
    return amount.found <= kMost * amount.written && amount.written <= kMost * amount.found;
  }

  // The amount that stands for 1.
  double UnitOf() const {
    double total = 0.0, substrate = 0.0;
    for (const CDbFormulaElement& line : batch_.formula) {
      total += line.amount;
      if (IsSubstrateId(static_cast<uint32_t>(line.componentId))) substrate += line.amount;
    }
    if (!isOneConstant_) return total;
    return substrate > 0.0 ? substrate : 1.0;
  }

  bool IsSubstrateId(uint32_t id) const {
    const auto isIt = [&](const CComponent& component) {
      return component.GetId() == id && IsSubstrate(component);
    };
    return std::any_of(system_.colorants.begin(), system_.colorants.end(), isIt) ||
           std::any_of(system_.resins.begin(), system_.resins.end(), isIt);
  }

  void Take(const CComponent& component, double unit) {
    Ingredient ingredient;
    ingredient.id = component.GetId();
    bool isWritten = false;
    for (const CDbFormulaElement& line : batch_.formula) {
      if (static_cast<uint32_t>(line.componentId) != ingredient.id) continue;
      ingredient.written += line.amount / unit;
      isWritten = true;
    }
    constexpr double kForeignShare = 0.02;
    CColorantValues curves;
    if (!ComponentConstants(component, isWritten ? ingredient.written : kForeignShare, curves)) return;
    for (std::size_t w = 0; w < kBandSamples; ++w) {
      ingredient.K[w] = curves.absorption[static_cast<int32_t>(w) + kFirstVisible];
      ingredient.S[w] = curves.scattering[static_cast<int32_t>(w) + kFirstVisible];
    }
    if (isOneConstant_ && IsSubstrate(component)) {
      if (isWritten) AddSubstrate(ingredient, ingredient.written);
      return;
    }
    if (isOneConstant_) ingredient.S.fill(0.0);
    (isWritten && ingredient.written > 0.0 ? own_ : foreign_).push_back(ingredient);
  }

  void AddSubstrate(const Ingredient& substrate, double amount) {
    hasSubstrate_ = true;
    for (std::size_t w = 0; w < kBandSamples; ++w) {
      baseK_[w] += amount * substrate.K[w];
      baseS_[w] += amount * substrate.S[w];
    }
  }

  // What a formula without a substrate line stands on.
  bool TakeDefaultSubstrate() {
    for (const CColorant& colorant : system_.colorants) {
      if (colorant.GetKind() != kKindCalibrationWhite) continue;
      CColorantValues curves;
      if (!ComponentConstants(colorant, 1.0, curves)) return false;
      Ingredient substrate;
      for (std::size_t w = 0; w < kBandSamples; ++w) {
        substrate.K[w] = curves.absorption[static_cast<int32_t>(w) + kFirstVisible];
        substrate.S[w] = curves.scattering[static_cast<int32_t>(w) + kFirstVisible];
      }
      AddSubstrate(substrate, 1.0);
      return true;
    }
    return false;
  }

  std::vector<Hypothesis> Hypotheses() const {
    std::vector<Hypothesis> hypotheses(1);
    for (std::size_t k = 0; k < own_.size(); ++k) {
      hypotheses.push_back({k, Hypothesis::kNobody, Hypothesis::kNobody});
      for (std::size_t l = k + 1; l < own_.size(); ++l) hypotheses.push_back({k, l, Hypothesis::kNobody});
    }
    for (std::size_t j = 0; j < foreign_.size(); ++j) {
      hypotheses.push_back({Hypothesis::kNobody, Hypothesis::kNobody, j});
      for (std::size_t k = 0; k < own_.size(); ++k) hypotheses.push_back({k, Hypothesis::kNobody, j});
    }
    return hypotheses;
  }

  std::size_t CountOf(const Hypothesis& hypothesis) const {
    return own_.size() + (hypothesis.foreign != Hypothesis::kNobody ? 1 : 0);
  }
  const Ingredient& IngredientOf(const Hypothesis& hypothesis, std::size_t i) const {
    return i < own_.size() ? own_[i] : foreign_[hypothesis.foreign];
  }
  // How far an amount is bound to what was written: 1 / standard deviation; 0 for one that is free.
  double BindingOf(const Hypothesis& hypothesis, std::size_t i) const {
    if (i == hypothesis.own || i == hypothesis.otherOwn || i >= own_.size()) return 0.0;
    return 1.0 / (settings_.weighing * own_[i].written);
  }

  // The total of an opaque film leaves no trace in its curve, but whoever made a batch saw about how much there was.
  double TotalBinding() const { return isOneConstant_ ? 0.0 : 1.0 / (kTotalSpread * Written()); }
  double Written() const {
    double written = 0.0;
    for (const Ingredient& ingredient : own_) written += ingredient.written;
    return written;
  }

  // K and S of the batch with these amounts.
  void Mix(const Hypothesis& hypothesis, const std::vector<double>& amounts, Band& K, Band& S) const {
    K = baseK_, S = baseS_;
    for (std::size_t i = 0; i < amounts.size(); ++i) {
      const Ingredient& ingredient = IngredientOf(hypothesis, i);
      for (std::size_t w = 0; w < kBandSamples; ++w) {
        K[w] += amounts[i] * ingredient.K[w];
        S[w] += amounts[i] * ingredient.S[w];
      }
    }
  }

  double DoubtOf(const Hypothesis& hypothesis, const std::vector<double>& amounts) const {
    Band K, S;
    Mix(hypothesis, amounts, K, S);
    double sum = hypothesis.Price();
    for (std::size_t w = 0; w < kBandSamples; ++w) {
      const double off = weight_[w] * (surface_.Reflectance(K[w] / S[w]) - reflectance_[w]);
      sum += off * off;
    }
    for (std::size_t i = 0; i < own_.size(); ++i) {
      const double off = BindingOf(hypothesis, i) * (amounts[i] - own_[i].written);
      sum += off * off;
    }
    double total = -Written();
    for (const double amount : amounts) total += amount;
    sum += TotalBinding() * total * TotalBinding() * total;
    return std::isfinite(sum) ? sum : HUGE_VAL;
  }

  // The amounts of the equations linearised about the K/S `at` and the scattering S of a mixture, where reflectance is
  // `off` the measured one.
  void SolveLinear(const Hypothesis& hypothesis, const Band& at, const Band& S, const Band& off,
                   std::vector<double>& amounts) const {
    const std::size_t count = amounts.size();
    std::vector<double> A, b;
    for (std::size_t w = 0; w < kBandSamples; ++w) {
      const double slope = weight_[w] * surface_.Slope(at[w]) / S[w];
      for (std::size_t i = 0; i < count; ++i) {
        const Ingredient& ingredient = IngredientOf(hypothesis, i);
        A.push_back(slope * (ingredient.K[w] - at[w] * ingredient.S[w]));
      }
      b.push_back(weight_[w] * off[w] - slope * (baseK_[w] - at[w] * baseS_[w]));
    }
    for (std::size_t k = 0; k < own_.size(); ++k) {
      const double binding = BindingOf(hypothesis, k);
      if (binding == 0.0) continue;
      for (std::size_t i = 0; i < count; ++i) A.push_back(i == k ? binding : 0.0);
      b.push_back(binding * own_[k].written);
    }
    if (TotalBinding() > 0.0) {
      A.insert(A.end(), count, TotalBinding());
      b.push_back(TotalBinding() * Written());
    }
    NonNegativeLeastSquares(A, b, amounts);
  }

  Solution Solve(const Hypothesis& hypothesis) const {
    Solution solution{hypothesis, std::vector<double>(CountOf(hypothesis), 0.0), HUGE_VAL};
    for (std::size_t k = 0; k < own_.size(); ++k) solution.amounts[k] = own_[k].written;
    std::vector<double> amounts = solution.amounts;
    solution.doubt = DoubtOf(hypothesis, amounts);
    Band K, S, off{};
    Mix(hypothesis, amounts, K, S);
    SolveLinear(hypothesis, ratio_, S, off, amounts);
    constexpr int kMostSteps = 12;
    for (int step = 0; step < kMostSteps; ++step) {
      const double doubt = DoubtOf(hypothesis, amounts);
      constexpr double kFlat = 1e-6;
      const bool isBetter = doubt < solution.doubt;
      const bool isDone = !isBetter || solution.doubt - doubt < kFlat;
      if (isBetter) solution.amounts = amounts, solution.doubt = doubt;
      if (isDone && step > 0) break;
      amounts = solution.amounts;
      Mix(hypothesis, amounts, K, S);
      Band at;
      for (std::size_t w = 0; w < kBandSamples; ++w) {
        at[w] = K[w] / S[w];
        off[w] = surface_.Reflectance(at[w]) - reflectance_[w];
      }
      SolveLinear(hypothesis, at, S, off, amounts);
    }
    return solution;
  }

  CBatchExplanation ExplanationOf(const Solution& solution) const {
    CBatchExplanation explanation;
    const double unit = UnitOf();
    for (const CDbFormulaElement& line : batch_.formula) {
      const auto id = static_cast<uint32_t>(line.componentId);
      const auto isIt = [id](const Ingredient& ingredient) { return ingredient.id == id; };
      if (std::none_of(own_.begin(), own_.end(), isIt)) explanation.formula.Add(line);
    }
    for (std::size_t i = 0; i < solution.amounts.size(); ++i) {
      AddLine(IngredientOf(solution.hypothesis, i).id, solution.amounts[i] * unit, explanation.formula);
    }
    for (std::size_t i = 0; i < solution.amounts.size(); ++i) {
      const Ingredient& ingredient = IngredientOf(solution.hypothesis, i);
      const double amount = solution.amounts[i];
      const bool isFree = BindingOf(solution.hypothesis, i) == 0.0;
      if (!isFree || !IsOff(ingredient, amount)) continue;
      CDbFormula withWritten = Without(ingredient.id, explanation.formula);
      AddLine(ingredient.id, ingredient.written * unit, withWritten);
      if (AreAlike(explanation.formula, withWritten)) {
        explanation.formula = withWritten;
      } else {
        explanation.suspected.Add({ingredient.id, ingredient.written, amount});
      }
    }
    explanation.difference = DifferenceOf(explanation.formula);
    explanation.doubt = solution.doubt;
    return explanation;
  }

  static void AddLine(uint32_t id, double amount, CDbFormula& formula) {
    if (!(amount > 0.0)) return;
    CDbFormulaElement line;
    line.componentId = static_cast<int32_t>(id);
    line.amount = amount;
    formula.Add(line);
  }

  static CDbFormula Without(uint32_t id, const CDbFormula& formula) {
    CDbFormula others;
    for (const CDbFormulaElement& line : formula) {
      if (static_cast<uint32_t>(line.componentId) != id) others.Add(line);
    }
    return others;
  }

  // Whether nobody sees which of two formulas it is: a trace is no suspicion.
  bool AreAlike(const CDbFormula& a, const CDbFormula& b) const {
    constexpr double kUnseen = 0.05;
    const CReflData curveOfA = PredictReflectance(a, system_, settings_.mode);
    const CReflData curveOfB = PredictReflectance(b, system_, settings_.mode);
    return !IsUnset(curveOfA) && !IsUnset(curveOfB) &&
           CurveDifference(curveOfA, curveOfB, settings_.illuminant, settings_.observer) < kUnseen;
  }

  // A suspicion that explains the curve where nobody sees it, and brings the colour no nearer, is none.
  static bool IsSeen(const CBatchExplanation& explanation, double asWritten) {
    constexpr double kNearer = 0.7;
    return explanation.suspected.IsEmpty() || explanation.difference < kNearer * asWritten;
  }

  // Whether a free amount differs from the written one by more than what weighing explains.
  bool IsOff(const Ingredient& ingredient, double amount) const {
    constexpr double kStandardDeviations = 3.0, kTrace = 1e-6;
    return std::fabs(amount - ingredient.written) >
           std::max(kStandardDeviations * settings_.weighing * ingredient.written, kTrace);
  }

  static bool IsSame(const CBatchExplanation& a, const CBatchExplanation& b) {
    return std::equal(
        a.suspected.begin(), a.suspected.end(), b.suspected.begin(), b.suspected.end(),
        [](const CSuspectedAmount& x, const CSuspectedAmount& y) { return x.componentId == y.componentId; });
  }

  double DifferenceOf(const CDbFormula& formula) const {
    const CReflData predicted = PredictReflectance(formula, system_, settings_.mode);
    if (IsUnset(predicted)) return kUnset;
    return CurveDifference(batch_.curve, predicted, settings_.illuminant, settings_.observer);
  }

  static constexpr double kTotalSpread = 0.5;

  const CColorantSystemData& system_;
  const CBatch& batch_;
  const CDiagnosisSettings& settings_;
  CalibrationSurface surface_;
  bool isOneConstant_ = false, hasSubstrate_ = false;
  std::vector<Ingredient> own_, foreign_;
  Band baseK_{}, baseS_{};  // of the substrate of one-constant models
  Band ratio_{}, reflectance_{}, weight_{};
};

}  // namespace

bool DiagnoseBatch(const CColorantSystemData& system, const CBatch& batch, const CDiagnosisSettings& settings,
                   CBatchDiagnosis& diagnosis) {
  return settings.weighing > 0.0 && Diagnosis(system, batch, settings).Run(diagnosis);
}

bool ContradictsFormula(const CColorantSystemData& system, const CBatch& batch,
                        const CDiagnosisSettings& settings, CBatchDiagnosis& diagnosis) {
  return settings.weighing > 0.0 && Diagnosis(system, batch, settings).Contradicts(diagnosis);
}

}  // namespace vrx
