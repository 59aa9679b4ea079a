// A judgement as a value: conditions, standards with their limits and trials in; differences, words, verdicts and the limit
// that was broken out. It judges as the evaluation context (judging/evaluation.h) does, all illuminants in one pass over the
// curves.
//
//   JudgeConditions conditions;                                        // CMC (2:1) under D65, A and CWF
//   const JudgeStandards standards(conditions, CurveBatch{standard});  // a box of 1.5
//   JudgementTable table;
//   JudgeTrials(conditions, standards, {}, CurveBatch{trials}, table, {.threads = 0});
//   const Judgement third = table.Row(2);                              // third.under[0].verdict, third.Worst()
//
// What is unset follows from the samples alone: a difference of 0.00001 between two measured colours is a number. Unset
// samples and numbers that are none never pass.

#ifndef VRXMATH_BATCH_JUDGE_BATCH_H_
#define VRXMATH_BATCH_JUDGE_BATCH_H_

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <variant>
#include <vector>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/batch/batch_view.h>
#include <vrxmath/batch/sample_colors.h>
#include <vrxmath/colorimetry/adaptation_formulas.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/grade_formulas.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/judging/shade.h>
#include <vrxmath/tolerance/box_tolerance.h>
#include <vrxmath/tolerance/ellipse_tolerance.h>
#include <vrxmath/tolerance/verdict.h>

namespace vrx {

/// What holds in a judgement where nobody says otherwise.
struct JudgeDefaults {
  static constexpr std::int32_t kSystem = vrxSystemCmc;
  static constexpr std::array<vrxIlluminant, 3> kIlluminants = {vrxIllumD65, vrxIllumA, vrxIllumCWF};
  static constexpr std::int32_t kObserver = kObserver10;
  static constexpr double kAngle = 45.0;     ///< aspecular, in degrees
  static constexpr double kTolerance = 1.5;  ///< of a system whose unit is a dE
  static constexpr double kWarningFactor = 0.75;
  static constexpr unsigned kThreads = 0;  ///< all cores
};

/// How the verdicts on the components and on the total become one.
enum class VerdictRule : std::int32_t {
  kWorse = 0,       ///< the worse of the two
  kTotal = 1,       ///< that on the total
  kComponents = 2,  ///< that on the components
};

/// Grading by a grey scale (GreyScaleGrade). The half step that is reported (HalfStepGrade) is held against the least grade,
/// so that a limit of 4 takes 3.75; there is no warning.
struct GradeCondition {
  GreyScale scale = GreyScale::kChange;
  double least = 0.0;  ///< the lowest half step that passes, 1 to 5; 0 where the grade decides nothing
  bool operator==(const GradeCondition&) const = default;
};

/// True for what a grade may be held against: one of the nine half steps from 1 to 5.
[[nodiscard]] inline bool IsHalfStep(double grade) {
  return grade >= 1.0 && grade <= 5.0 && 2.0 * grade == std::floor(2.0 * grade);
}

/// Judging what a trial's own colour does from lamp to lamp, whatever the standard does (InconstancyIndex, with the system and the
/// observer of the conditions): under each illuminant but the first its distance from its colour under the first one.
struct InconstancyCondition {
  double most = std::numeric_limits<
      double>::infinity();  ///< the largest that passes, 0 or more; warnings begin as they do for the total
  AdaptationTransform transform = AdaptationTransform::kCat16;
  bool operator==(const InconstancyCondition&) const = default;
};

/// The conditions of a judgement.
struct JudgeConditions {
  CDifferenceSettings difference = DefaultSettings(JudgeDefaults::kSystem);
  std::vector<vrxIlluminant> illuminants{JudgeDefaults::kIlluminants.begin(),
                                         JudgeDefaults::kIlluminants.end()};
  std::int32_t observer = JudgeDefaults::kObserver;
  /// The aspecular measuring angle in degrees, of which its magnitude counts; for the systems that read one.
  double angle = JudgeDefaults::kAngle;
  VerdictRule rule = VerdictRule::kWorse;
  double warningFactor = JudgeDefaults::kWarningFactor;
  std::optional<GradeCondition> grade = {};  ///< the verdict is the worse of this one and that of the rule
  std::optional<InconstancyCondition> inconstancy = {};  ///< likewise
  bool operator==(const JudgeConditions&) const = default;
};

/// The ellipsoid of the difference system about the standard (EllipseForStandard), for CMC, CIE94 and CIE2000.
struct SystemEllipsoid {};

/// By what the components are judged, with the limit of the total: a box of the system's components (of dL*, dC* and dH*
/// for L*C*h), or an ellipsoid of dL*, da*, db*. An infinite limit of a box limits nothing; of an interval with one such
/// side the warning begins at the other limit times the factor.
using JudgeLimits = std::variant<CBoxTolData, CEllipseData, SystemEllipsoid>;

/// The limit of the total difference; infinite where nothing limits it, and for the system's ellipsoid, which has one only as it
/// is about a standard.
[[nodiscard]] inline double TotalLimitOf(const JudgeLimits& limits) {
  if (const auto* box = std::get_if<CBoxTolData>(&limits)) return (*box)[CBoxTolData::kTotal];
  if (const auto* ellipse = std::get_if<CEllipseData>(&limits)) return (*ellipse)[CEllipseData::kTotalLimit];
  return std::numeric_limits<double>::infinity();
}

/// False for a box that limits no component: a verdict by its components would pass everything.
[[nodiscard]] inline bool LimitsComponents(const JudgeLimits& limits) {
  const auto* box = std::get_if<CBoxTolData>(&limits);
  return box == nullptr || std::any_of(box->begin(), box->begin() + CBoxTolData::kTotal,
                                       [](double limit) { return std::isfinite(limit); });
}

/// A box that limits the total alone.
[[nodiscard]] inline CBoxTolData TotalLimit(double limit) {
  CBoxTolData box;
  box.Fill(std::numeric_limits<double>::infinity());
  box[CBoxTolData::kTotal] = limit;
  return box;
}

/// Standards with their colours and limits, ready to judge many trials.
struct JudgeStandards {
  /// The colours of `samples` under the illuminants of the conditions.
  /// In:      `limitsOf`: one for everything (a box of 1.5 on all sides where none is given), one an illuminant, or standard after
  ///          standard one an illuminant; `anglesOf`: one a standard, or none where that of the conditions holds.
  /// Errors:  CInvalidArgException for an unknown system, an illuminant and observer without a weighting table, counts that
  ///          do not fit, and a system without ellipsoids where its ellipsoid is to judge.
  VRX_API JudgeStandards(const JudgeConditions& conditions, const Samples& samples,
                         std::vector<JudgeLimits> limitsOf = {CBoxTolData()},
                         std::vector<double> anglesOf = {}, const BatchRun& run = {});

  std::size_t size() const { return lab.size(); }
  /// The limits of a standard under the illuminant at index `j`; the system's ellipsoid as it is about the standard.
  [[nodiscard]] VRX_API JudgeLimits LimitsOf(std::size_t standard, std::size_t j) const;

  CDifferenceSettings difference;   ///< of the conditions that they were made for
  ColorTable lab;                   ///< in L*a*b*
  ColorTable own;                   ///< in the space of the system; empty where that is L*a*b*
  std::vector<JudgeLimits> limits;  ///< as given; may be changed
  std::vector<double> angles;       ///< as given
};

/// The limit that made a verdict.
enum class BrokenLimit : std::int32_t {
  kNone = 0,  ///< a pass
  kFirst = 1,
  kSecond = 2,
  kThird = 3,  ///< of the three components of the box
  kTotal = 4,
  kEllipsoid = 5,
  kNoDifference = 6,  ///< a sample is unset
  kGrade = 7,         ///< below the least grade
  kInconstancy = 8,   ///< the trial's own colour changes too much from the first illuminant
};

/// Which limit a trial broke, or for a warning in whose band it lies; of several the one that it uses most of.
struct LimitBreach {
  BrokenLimit limit = BrokenLimit::kNone;
  double value =
      kUnset;  ///< what was held against it: an element of the difference, the chord of the hue (dH* of L*C*h),
               ///< the ellipsoid's value, the grade in half steps, or the inconstancy
  double bound = kUnset;  ///< the limit that the value is beyond, or the edge of the band
  /// True where a value was held against a bound: there is a reason, and it is not that a sample is unset.
  bool HasExcess() const { return limit != BrokenLimit::kNone && limit != BrokenLimit::kNoDifference; }
  /// By how much the value lies beyond the bound: below 0 beyond a minus limit; NaN for a value that is none. Unset without one.
  double Excess() const { return HasExcess() ? value - bound : kUnset; }
};

/// A trial under one illuminant.
struct JudgementUnder {
  bool available = false;  ///< false where a sample is unset: there is no difference, and everything fails
  Color trial{};           ///< X, Y, Z and L*a*b*
  std::array<double, 7> difference{},
      labDifference{};  ///< in the system, and in L*a*b*; unset where not available
  std::array<ShadeWord, 3> words{};
  Verdict components = kFail, total = kFail, verdict = kFail;
  double ellipsoidValue = kUnset;  ///< of the ellipsoid that judges
  double grade = kUnset;           ///< by the grey scale of the conditions, not rounded; unset without one
  double inconstancy =
      kUnset;  ///< unset under the first illuminant and where the conditions do not ask for it
  LimitBreach breach;
};

/// A trial under all illuminants.
struct Judgement {
  std::vector<JudgementUnder> under;
  /// The worst verdict.
  Verdict Worst() const {
    Verdict worst = kPass;
    for (const JudgementUnder& one : under) worst = one.verdict < worst ? one.verdict : worst;
    return worst;
  }
};

/// Where the outcomes under one illuminant go, each a view of a row a trial; an empty view for what is not asked for.
struct JudgeColumns {
  BatchView<std::uint8_t, 1> available;
  BatchView<double, 3> xyz;  ///< of the trials
  BatchView<double, 5> lab;
  BatchView<double, 7> differences, labDifferences;
  BatchView<std::int32_t, 1> components, totals, verdicts;  ///< numbers of Verdict
  BatchView<std::int32_t, 3> words;                         ///< numbers of ShadeWord
  BatchView<double, 1> ellipsoidValues;
  BatchView<std::int32_t, 1> brokenLimits;  ///< numbers of BrokenLimit
  BatchView<double, 2> breaches;            ///< value and bound of LimitBreach
  BatchView<double, 1> grades;              ///< not rounded; unset where the conditions have no grey scale
  BatchView<double, 1> inconstancies;       ///< as in JudgementUnder
};

/// Judges trials against their standards.
/// In:      `standards`: made for the same conditions. `standardOf`: the standard of each trial by its index; empty for one
///          standard, and for as many as there are trials, which are pairs then.
/// Out:     `columns`: one an illuminant, in their order.
/// Errors:  CInvalidArgException, before anything is written, for an index that no standard has, a warning factor that is
///          no number, counts that do not fit, and as JudgeStandards.
/// False when the progress callback stopped it.
VRX_API bool JudgeBatch(const JudgeConditions& conditions, const JudgeStandards& standards,
                        std::span<const std::size_t> standardOf, const Samples& trials,
                        std::span<const JudgeColumns> columns, const BatchRun& run = {});

/// The outcomes of a judgement in memory of their own.
class JudgementTable {
 public:
  /// Room for trials under illuminants; memory is kept for later.
  VRX_API void Resize(std::size_t trials, std::size_t illuminants);
  /// Views of everything, one an illuminant.
  [[nodiscard]] VRX_API std::vector<JudgeColumns> Columns();

  std::size_t size() const { return trials_; }
  std::size_t IlluminantCount() const { return under_.size(); }
  [[nodiscard]] VRX_API JudgementUnder At(std::size_t trial, std::size_t j) const;
  [[nodiscard]] VRX_API Judgement Row(std::size_t trial) const;

 private:
  struct Under {
    std::vector<std::uint8_t> available;
    std::vector<double> xyz, lab, differences, labDifferences, ellipsoidValues, breaches, grades,
        inconstancies;
    std::vector<std::int32_t> components, totals, verdicts, words, brokenLimits;
  };
  std::size_t trials_ = 0;
  std::vector<Under> under_;
};

/// JudgeBatch with everything into a table, which is resized.
VRX_API bool JudgeTrials(const JudgeConditions& conditions, const JudgeStandards& standards,
                         std::span<const std::size_t> standardOf, const Samples& trials,
                         JudgementTable& table, const BatchRun& run = {});

/// The element of a difference that a broken limit speaks of: 0 to 2, or dC* and dH* for L*C*h, or the total's; -1 for the
/// ellipsoid and where there is none.
[[nodiscard]] VRX_API std::int32_t ElementOf(BrokenLimit limit, std::int32_t system);

}  // namespace vrx

#endif  // VRXMATH_BATCH_JUDGE_BATCH_H_
