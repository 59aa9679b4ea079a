#include <vrxmath/batch/judge_batch.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include <vrxmath/batch/appearance_batch.h>
#include <vrxmath/batch/batch_conditions.h>
#include <vrxmath/batch/color_blocks.h>
#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/difference_kernels.h>
#include <vrxmath/batch/judgement_kernels.h>
#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/difference_formulas.h>
#include <vrxmath/colorimetry/hue.h>
#include <vrxmath/judging/lch_box.h>
#include <vrxmath/tolerance/ellipse_formulas.h>

namespace vrx {
namespace {

// Rows that are judged together: their intermediate numbers stay in the second-level cache.
constexpr std::size_t kRowsTogether = 512;
constexpr std::size_t kJudgeBlockRows = 4 * kRowsTogether;
constexpr std::size_t kTotalElement = 6;

const DifferenceSystem& RequireSystem(const CDifferenceSettings& settings) {
  const DifferenceSystem* const system = FindDifferenceSystem(settings.system);
  if (system == nullptr) throw CInvalidArgException();
  return *system;
}

// Limits ---------------------------------------------------------------------------------------------------------

// Where a warning begins. An open side stays open, and the other one then has no centre to be scaled about.
Interval WarningInterval(Interval limits, double factor) {
  const bool isOpenBelow = std::isinf(limits.lower), isOpenAbove = std::isinf(limits.upper);
  if (!isOpenBelow && !isOpenAbove) return ScaledAboutCentre(limits, factor);
  return {isOpenBelow ? limits.lower : limits.lower * factor,
          isOpenAbove ? limits.upper : limits.upper * factor};
}

// A set of limits as the kernels take it.
struct PreparedLimits {
  bool isBox = true;
  BoxLimits box{};
  EllipseTerms ellipse{};
  double ellipseWarning = 1.0;
  double total = 0.0, warningFactor = 1.0;
};

PreparedLimits Prepare(const JudgeLimits& limits, double warningFactor) {
  PreparedLimits prepared;
  prepared.warningFactor = warningFactor;
  prepared.total = TotalLimitOf(limits);
  if (const auto* ellipse = std::get_if<CEllipseData>(&limits)) {
    prepared.isBox = false;
    prepared.ellipse = TermsOf(*ellipse);
    prepared.ellipseWarning = EllipseWarning(warningFactor);
    return prepared;
  }
  const auto& box = std::get<CBoxTolData>(limits);
  for (std::int32_t k = 0; k < CBoxTolData::kDimensions; ++k) {
    prepared.box.tolerance[k] = box.Limits(k);
    prepared.box.warning[k] = WarningInterval(box.Limits(k), warningFactor);
  }
  return prepared;
}

// A difference against one limit -----------------------------------------------------------------------------------

LchLimits LchOf(const Interval (&box)[3]) {
  return {box[0], box[1], box[2]};
}

LchPair LchPairOf(const double* difference, const Lab& standard, const Lab& trial) {
  return {difference[0], difference[4], standard.C, standard.h * kRadiansPerDegree,
          trial.h * kRadiansPerDegree};
}

Verdict GradeLch(const BoxLimits& box, const LchPair& pair) {
  if (!AcceptsLch(LchOf(box.tolerance), pair)) return kFail;
  return AcceptsLch(LchOf(box.warning), pair) ? kPass : kWarning;
}

Verdict GradeIn(const Interval& tolerance, const Interval& warning, double value) {
  return ToVerdict({tolerance.Contains(value), warning.Contains(value)});
}

Verdict GradeTotalOf(const PreparedLimits& limits, double total) {
  return total <= limits.total ? GradeTotal(total, limits.total, limits.warningFactor) : kFail;
}

// The reason of a verdict --------------------------------------------------------------------------------------------

// Looks for the limit of which a trial uses most, among those that give its verdict.
class Reason {
 public:
  explicit Reason(Verdict verdict) : verdict_(verdict) {}

  void Offer(BrokenLimit limit, Verdict verdict, double value, double bound, double use) {
    const bool isWorse = breach_.limit == BrokenLimit::kNone || use > use_ || std::isnan(use);
    if (verdict != verdict_ || !isWorse || std::isnan(use_)) return;
    breach_ = {limit, value, bound};
    use_ = use;
  }
  // An interval: how much of its half-width is used.
  void OfferIn(BrokenLimit limit, const Interval& tolerance, const Interval& warning, Verdict verdict,
               double value) {
    if (std::isinf(tolerance.lower) && std::isinf(tolerance.upper)) return;  // no limit, no reason
    const Interval& broken = verdict == kFail ? tolerance : warning;
    const double bound = value > broken.upper ? broken.upper : broken.lower;
    const bool isOpen = std::isinf(tolerance.upper) || std::isinf(tolerance.lower);
    const double centre = isOpen ? 0.0 : (tolerance.lower + tolerance.upper) / 2.0;
    const double room = isOpen ? std::fabs(bound) : (tolerance.upper - tolerance.lower) / 2.0;
    Offer(limit, verdict, value, bound, std::fabs(value - centre) / room);
  }
  const LimitBreach& Breach() const { return breach_; }

 private:
  Verdict verdict_;
  LimitBreach breach_;
  double use_ = 0.0;
};

constexpr BrokenLimit kComponents[] = {BrokenLimit::kFirst, BrokenLimit::kSecond, BrokenLimit::kThird};

void OfferLch(const BoxLimits& box, const LchPair& pair, Reason& reason) {
  const double values[] = {pair.dL, pair.dC, HueChord(pair)};
  for (std::size_t k = 0; k < 2; ++k) {
    reason.OfferIn(kComponents[k], box.tolerance[k], box.warning[k],
                   GradeIn(box.tolerance[k], box.warning[k], values[k]), values[k]);
  }
  // The hue alone: the other two are where they cannot break anything.
  LchLimits tolerance = LchOf(box.tolerance), warning = LchOf(box.warning);
  for (LchLimits* limits : {&tolerance, &warning})
    limits->dL = {pair.dL, pair.dL}, limits->dC = {pair.dC, pair.dC};
  const Verdict hue = ToVerdict({AcceptsLch(tolerance, pair), AcceptsLch(warning, pair)});
  reason.OfferIn(kComponents[2], box.tolerance[2], box.warning[2], hue, values[2]);
}

void OfferTotal(const PreparedLimits& limits, double total, Reason& reason) {
  const Verdict verdict = GradeTotalOf(limits, total);
  reason.Offer(BrokenLimit::kTotal, verdict, total,
               verdict == kFail ? limits.total : limits.total * limits.warningFactor, total / limits.total);
}

// The memory of a run of rows --------------------------------------------------------------------------------------

// Columns of numbers that are written before they are read.
template <class NUMBER, std::size_t kWidth>
class Table {
 public:
  Table() : numbers_(std::make_unique_for_overwrite<NUMBER[]>(kWidth * kRowsTogether)) {}
  BatchView<NUMBER, kWidth> View(std::size_t rows) const {
    typename BatchView<NUMBER, kWidth>::Columns columns;
    for (std::size_t k = 0; k < kWidth; ++k) columns[k] = {numbers_.get() + k * kRowsTogether, rows};
    return columns;
  }
  NUMBER& At(std::size_t row, std::size_t k = 0) const { return numbers_[k * kRowsTogether + row]; }
  template <std::size_t kCount>
  void Take(std::size_t row, double (&numbers)[kCount]) const {
    for (std::size_t k = 0; k < kCount; ++k) numbers[k] = At(row, k);
  }

 private:
  std::unique_ptr<NUMBER[]> numbers_;
};

struct Scratch {
  explicit Scratch(std::size_t illuminants) : xyz(illuminants) {}

  std::vector<Table<double, 3>> xyz;  // by illuminant
  Table<double, 5> lab, own;
  Table<double, 3> standardXyz;  // of each row, where they differ
  Table<double, 5> standardLab, standardOwn;
  Table<double, 7> difference, labDifference;
  Table<Verdict, 1> components, totals, verdicts;
  Table<std::int32_t, 3> words;
  Table<std::uint8_t, 1> available;
  Table<double, 1> grades;  // where the conditions have a grey scale
  Table<double, 1> inconstancies;
  Table<double, 3> corresponding;  // under the first illuminant
  Table<double, 5> firstOwn, correspondingOwn;
};

Color ColorAt(const Table<double, 3>& xyz, const Table<double, 5>& lab, std::size_t row) {
  return {{xyz.At(row, 0), xyz.At(row, 1), xyz.At(row, 2)},
          {lab.At(row, 0), lab.At(row, 1), lab.At(row, 2), lab.At(row, 3), lab.At(row, 4)}};
}

template <class TABLE>
void StoreDifference(const Difference& d, const TABLE& table, std::size_t row) {
  const double elements[] = {d.dL, d.da, d.db, d.weightedL, d.dC, d.dH, d.dE};
  for (std::size_t k = 0; k < 7; ++k) table.At(row, k) = elements[k];
}

// Writes what was asked for.
template <class NUMBER, class TABLE, std::size_t kWidth>
void Give(const TABLE& table, const BatchView<NUMBER, kWidth>& column, std::size_t from, std::size_t count) {
  if (column.empty()) return;
  for (std::size_t k = 0; k < kWidth; ++k) {
    const auto* source = &table.At(0, k);
    NUMBER* target = &column.at(from, k);
    const auto stride = column.stride();
    for (std::size_t i = 0; i < count; ++i)
      target[static_cast<std::ptrdiff_t>(i) * stride] = static_cast<NUMBER>(source[i]);
  }
}

// Judging ---------------------------------------------------------------------------------------------------------

class BatchJudge {
 public:
  BatchJudge(const JudgeConditions& conditions, const JudgeStandards& standards,
             std::span<const std::size_t> standardOf, const Samples& trials,
             std::span<const JudgeColumns> columns)
      : conditions_(conditions),
        system_(RequireSystem(conditions.difference)),
        standards_(standards),
        standardOf_(standardOf),
        trials_(trials),
        columns_(columns),
        count_(SampleCount(trials)) {
    Check();
    const bool hasCommonLimits = HasCommonLimits();
    for (std::size_t j = 0; j < conditions_.illuminants.size(); ++j) {
      terms_.push_back(RequireTerms(system_.space, conditions_.illuminants[j], conditions_.observer));
      if (hasCommonLimits) common_.push_back(Prepare(standards_.LimitsOf(0, j), conditions_.warningFactor));
      whites_.push_back(RequireViewing(conditions_.illuminants[j], conditions_.observer).white);
    }
  }

  std::size_t Count() const { return count_; }

  // Judges a block of rows.
  void Rows(std::size_t from, std::size_t count) const {
    Scratch s(conditions_.illuminants.size());
    for (std::size_t done = 0; done < count; done += kRowsTogether) {
      RowsTogether(from + done, std::min(kRowsTogether, count - done), s);
    }
  }

 private:
  void Check() const {
    const std::size_t illuminants = conditions_.illuminants.size();
    if (std::isnan(conditions_.warningFactor)) throw CInvalidArgException();
    if (conditions_.grade && !(conditions_.grade->least >= 0.0 && conditions_.grade->least <= 5.0))
      throw CInvalidArgException();
    if (conditions_.inconstancy && !(conditions_.inconstancy->most >= 0.0)) throw CInvalidArgException();
    RequireSameCount(columns_.size(), illuminants);
    RequireSameCount(standards_.lab.under.size(), illuminants);
    RequireColorsUnder(trials_, illuminants);
    if (standardOf_.empty() && standards_.size() != 1) RequireSameCount(standards_.size(), count_);
    if (!standardOf_.empty()) RequireSameCount(standardOf_.size(), count_);
    for (const std::size_t s : standardOf_) {
      if (s >= standards_.size()) throw CInvalidArgException();
    }
    for (const JudgeColumns& c : columns_) {
      const auto require = [this](const auto&... views) {
        for (const std::size_t rows : {views.size()...}) {
          if (rows != 0) RequireSameCount(rows, count_);
        }
      };
      require(c.available, c.xyz, c.lab, c.differences, c.labDifferences, c.components, c.totals, c.verdicts,
              c.words, c.ellipsoidValues, c.brokenLimits, c.breaches, c.grades, c.inconstancies);
    }
  }

  std::size_t StandardOf(std::size_t row) const {
    if (!standardOf_.empty()) return standardOf_[row];
    return standards_.size() == 1 ? 0 : row;
  }
  bool HasOneStandard() const { return standards_.size() == 1; }
  bool HasCommonLimits() const {
    const std::size_t illuminants = conditions_.illuminants.size();
    const bool isEach = standards_.limits.size() > 1 && standards_.limits.size() != illuminants;
    const bool isEllipsoid = std::ranges::any_of(standards_.limits, [](const JudgeLimits& limits) {
      return std::holds_alternative<SystemEllipsoid>(limits);
    });
    return HasOneStandard() || (!isEach && !isEllipsoid && standards_.size() > 0);
  }
  bool IsInLab() const { return system_.space == CoordinateSpace::kLab; }
  double AngleOf(std::size_t row) const {
    return std::fabs(standards_.angles.empty() ? conditions_.angle : standards_.angles[StandardOf(row)]);
  }
  Color StandardColor(std::size_t row, std::size_t j) const { return standards_.lab.At(j, StandardOf(row)); }

  void RowsTogether(std::size_t from, std::size_t count, Scratch& s) const {
    std::vector<BatchView<double, 3>> xyz;
    for (const auto& table : s.xyz) xyz.push_back(table.View(count));
    FillXyz(trials_, conditions_.illuminants, conditions_.observer, from, count, xyz);
    for (std::size_t j = 0; j < xyz.size(); ++j) {
      FillColors(j, from, count, s);
      FillDifferences(j, from, count, s);
      FillGrades(j, count, s);
      FillInconstancies(j, count, s);
      FillVerdicts(j, from, count, s);
      StoreRows(j, from, count, s);
    }
  }

  // Runs of rows for which `same(a, b)` holds of the first and any other.
  template <class SAME, class WORK>
  static void ForRuns(std::size_t count, const SAME& same, const WORK& work) {
    for (std::size_t begin = 0, end = 0; begin < count; begin = end) {
      for (end = begin + 1; end < count && same(begin, end); ++end) {
      }
      work(begin, end - begin);
    }
  }

  void FillColors(std::size_t j, std::size_t from, std::size_t count, Scratch& s) const {
    FillLab(trials_, j, terms_[j], from, s.xyz[j].View(count), s.lab.View(count));
    if (!IsInLab()) {
      CoordinatesKernel(system_.space)(
          terms_[j], ColumnsOf(BatchView<const double, 3>(s.xyz[j].View(count)), 0, count).data(),
          ColumnsOf(s.own.View(count), 0, count).data(), count);
    }
    if (!HasOneStandard()) GatherStandards(j, from, count, s);
    for (std::size_t i = 0; i < count; ++i) {
      const Xyz trial{s.xyz[j].At(i, 0), s.xyz[j].At(i, 1), s.xyz[j].At(i, 2)};
      s.available.At(i) = !IsUnset(trial) && !IsUnset(StandardColor(from + i, j).xyz) ? 1 : 0;
    }
  }

  void GatherStandards(std::size_t j, std::size_t from, std::size_t count, Scratch& s) const {
    const auto gather = [&](const std::vector<double>& rows, const auto& table, std::size_t width) {
      for (std::size_t i = 0; i < count; ++i) {
        const double* row = &rows[width * StandardOf(from + i)];
        for (std::size_t k = 0; k < width; ++k) table.At(i, k) = row[k];
      }
    };
    gather(standards_.lab.under[j].xyz, s.standardXyz, 3);
    gather(standards_.lab.under[j].lab, s.standardLab, 5);
    if (!IsInLab()) gather(standards_.own.under[j].lab, s.standardOwn, 5);
  }

  void FillDifferences(std::size_t j, std::size_t from, std::size_t count, Scratch& s) const {
    const bool onlyInLab = conditions_.difference.system == vrxSystemLab || IsLch();  // dE*ab itself
    const auto sameAngle = [&](std::size_t a, std::size_t b) {
      return !system_.readsAngle || standards_.angles.empty() || AngleOf(from + a) == AngleOf(from + b);
    };
    ForRuns(count, sameAngle, [&](std::size_t begin, std::size_t rows) {
      Compute(conditions_.difference, AngleOf(from + begin), IsInLab(), j, begin, rows, s, s.difference);
    });
    if (!onlyInLab) Compute({}, 0.0, true, j, 0, count, s, s.labDifference);
    for (std::size_t i = 0; i < count; ++i) CorrectUnset(j, from, i, onlyInLab, s);
    if (!onlyInLab) return;
    for (std::size_t k = 0; k < 7; ++k) std::copy_n(&s.difference.At(0, k), count, &s.labDifference.At(0, k));
  }

  // Differences of rows by a system, in L*a*b* or in the system's own space.
  void Compute(const CDifferenceSettings& settings, double angle, bool inLab, std::size_t j,
               std::size_t begin, std::size_t rows, const Scratch& s, const Table<double, 7>& to) const {
    const auto& system = CurrentKernels<DifferenceKernels>().Of(settings);
    const std::size_t all = begin + rows;
    const BatchView<const double, 3> xyz = s.xyz[j].View(all);
    const BatchView<const double, 5> lab = (inLab ? s.lab : s.own).View(all);
    const ColorColumns trials = ColumnsOf(ColorBatch{xyz.Rows(begin, rows), lab.Rows(begin, rows)}, 0, rows);
    ColorBatch standards;
    if (HasOneStandard()) {
      standards = {standards_.lab.under[j].xyz, (inLab ? standards_.lab : standards_.own).under[j].lab};
    } else {
      const BatchView<const double, 3> standardXyz = s.standardXyz.View(all);
      const BatchView<const double, 5> standardLab = (inLab ? s.standardLab : s.standardOwn).View(all);
      standards = {standardXyz.Rows(begin, rows), standardLab.Rows(begin, rows)};
    }
    (HasOneStandard() ? system.oneStandard : system.pairs)({settings.parameters, angle},
                                                           ColumnsOf(standards, 0, rows), trials,
                                                           ColumnsOf(to.View(all), begin, rows).data(), rows);
  }

  // The kernels take a row whose coordinates are all 0.00001 for an unset one; what is unset follows from the samples.
  void CorrectUnset(std::size_t j, std::size_t from, std::size_t i, bool onlyInLab, const Scratch& s) const {
    if (s.available.At(i) == 0) {
      StoreDifference(kUnsetDifference, s.difference, i);
      StoreDifference(kUnsetDifference, s.labDifference, i);
      return;
    }
    const std::size_t standard = StandardOf(from + i);
    if (IsUnset(s.difference.At(i, kTotalElement)) && IsUnset(s.difference.At(i, 0))) {
      const Color own = (IsInLab() ? standards_.lab : standards_.own).At(j, standard);
      StoreDifference(ComputeDifference(conditions_.difference, own,
                                        ColorAt(s.xyz[j], IsInLab() ? s.lab : s.own, i), AngleOf(from + i)),
                      s.difference, i);
    }
    if (!onlyInLab && IsUnset(s.labDifference.At(i, kTotalElement))) {
      StoreDifference(EabDifference(standards_.lab.At(j, standard).lab, ColorAt(s.xyz[j], s.lab, i).lab),
                      s.labDifference, i);
    }
  }

  void FillGrades(std::size_t j, std::size_t count, const Scratch& s) const {
    if (!conditions_.grade) return;
    const BatchView<const double, 5> trials = s.lab.View(count), standards = s.standardLab.View(count);
    GradeBatch(conditions_.grade->scale,
               HasOneStandard() ? BatchView<const double, 5>(standards_.lab.under[j].lab) : standards, trials,
               {&s.grades.At(0), count});
    for (std::size_t i = 0; i < count; ++i) {
      if (s.available.At(i) == 0) s.grades.At(i) = kUnset;
    }
  }

  bool HasLeastGrade() const { return conditions_.grade && conditions_.grade->least > 0.0; }
  Verdict GradeVerdict(std::size_t i, const Scratch& s) const {
    return HalfStepGrade(s.grades.At(i)) >= conditions_.grade->least ? kPass : kFail;
  }

  // The figure of InconstancyIndex, from colours.
  void FillInconstancies(std::size_t j, std::size_t count, const Scratch& s) const {
    if (!conditions_.inconstancy) return;
    const auto values = std::span(&s.inconstancies.At(0), count);
    const vrxIlluminant first = conditions_.illuminants[0];
    const std::int32_t system = conditions_.difference.system, observer = conditions_.observer;
    const BatchView<const double, 3> seen = s.xyz[0].View(count), here = s.xyz[j].View(count),
                                     corresponding = s.corresponding.View(count);
    if (j == 0) {
      CoordinatesBatch(system, first, observer, seen, s.firstOwn.View(count));
      std::ranges::fill(values, kUnset);
      return;
    }
    AdaptBatch(conditions_.inconstancy->transform, whites_[j], whites_[0], 1.0, here,
               s.corresponding.View(count));
    CoordinatesBatch(system, first, observer, corresponding, s.correspondingOwn.View(count));
    TotalDifferenceBatch(conditions_.difference, 0.0, {seen, s.firstOwn.View(count)},
                         {corresponding, s.correspondingOwn.View(count)}, values);
    for (std::size_t i = 0; i < count; ++i) {
      if (s.available.At(i) == 0) values[i] = kUnset;
    }
  }

  bool HasMostInconstancy(std::size_t j) const {
    return j > 0 && conditions_.inconstancy && !std::isinf(conditions_.inconstancy->most);
  }
  Verdict InconstancyVerdict(std::size_t i, const Scratch& s) const {
    const double value = s.inconstancies.At(i), most = conditions_.inconstancy->most;
    return value <= most ? GradeTotal(value, most, conditions_.warningFactor) : kFail;
  }

  // Calls work(limits, begin, rows) for runs of rows with the same limits.
  template <class WORK>
  void ForLimits(std::size_t j, std::size_t from, std::size_t count, const WORK& work) const {
    if (!common_.empty()) return work(common_[j], 0, count);
    const auto same = [&](std::size_t a, std::size_t b) {
      return StandardOf(from + a) == StandardOf(from + b);
    };
    ForRuns(count, same, [&](std::size_t begin, std::size_t rows) {
      work(Prepare(standards_.LimitsOf(StandardOf(from + begin), j), conditions_.warningFactor), begin, rows);
    });
  }

  void FillVerdicts(std::size_t j, std::size_t from, std::size_t count, Scratch& s) const {
    ForLimits(j, from, count, [&](const PreparedLimits& limits, std::size_t begin, std::size_t rows) {
      Grade(limits, begin, rows, s);
      for (std::size_t i = begin; i < begin + rows; ++i) FinishRow(limits, j, from, i, s);
    });
    if (columns_[j].words.empty()) return;
    std::array<Column<const double>, 6> colors;
    const BatchView<const double, 5> lab = s.lab.View(count);
    const BatchView<const double, 7> difference = s.labDifference.View(count);
    std::ranges::copy(ColumnsOf(lab.Numbers<0, 3>(), 0, count), colors.begin());
    std::ranges::copy(ColumnsOf(difference.Numbers<0, 3>(), 0, count), colors.begin() + 3);
    CurrentKernels<JudgementKernels>().shade(colors.data(), ColumnsOf(s.words.View(count), 0, count).data(),
                                             count);
  }

  // The verdicts on components and totals, but for the rows that FinishRow knows better.
  void Grade(const PreparedLimits& limits, std::size_t begin, std::size_t rows, const Scratch& s) const {
    const auto& kernels = CurrentKernels<JudgementKernels>();
    const std::size_t all = begin + rows;
    const BatchView<const double, 7> difference = s.difference.View(all), inLab = s.labDifference.View(all);
    const Column<Verdict> components{&s.components.At(begin), 1}, totals{&s.totals.At(begin), 1};
    if (!limits.isBox) {
      kernels.ellipse(limits.ellipse, limits.ellipseWarning,
                      ColumnsOf(inLab.Numbers<0, 3>(), begin, rows).data(), components, rows);
    } else if (!IsLch()) {
      kernels.box(limits.box, ColumnsOf(difference.Numbers<0, 3>(), begin, rows).data(), components, rows);
    }
    kernels.total(limits.total, limits.warningFactor, {&s.difference.At(begin, kTotalElement), 1}, totals,
                  rows);
  }

  bool IsLch() const { return conditions_.difference.system == vrxSystemLch; }

  void FinishRow(const PreparedLimits& limits, std::size_t j, std::size_t from, std::size_t i,
                 const Scratch& s) const {
    Verdict &components = s.components.At(i), &total = s.totals.At(i);
    const double dE = s.difference.At(i, kTotalElement);
    if (s.available.At(i) == 0) {
      components = total = kFail;
    } else {
      const bool isLch = limits.isBox && IsLch();
      const auto& judged = limits.isBox ? s.difference : s.labDifference;
      if (isLch || IsUnset(judged.At(i, 0))) components = GradeComponents(limits, j, from, i, s);
      if (IsUnset(dE) || !(dE <= limits.total)) total = GradeTotalOf(limits, dE);
    }
    s.verdicts.At(i) = conditions_.rule == VerdictRule::kTotal        ? total
                       : conditions_.rule == VerdictRule::kComponents ? components
                                                                      : std::min(components, total);
    if (HasLeastGrade()) s.verdicts.At(i) = std::min(s.verdicts.At(i), GradeVerdict(i, s));
    if (HasMostInconstancy(j)) s.verdicts.At(i) = std::min(s.verdicts.At(i), InconstancyVerdict(i, s));
  }

  LchPair PairAt(std::size_t j, std::size_t from, std::size_t i, const Scratch& s) const {
    double difference[7];
    s.difference.Take(i, difference);
    return LchPairOf(difference, StandardColor(from + i, j).lab, ColorAt(s.xyz[j], s.lab, i).lab);
  }

  double EllipsoidValue(const PreparedLimits& limits, std::size_t i, const Scratch& s) const {
    return EllipseValue(limits.ellipse, s.labDifference.At(i, 0), s.labDifference.At(i, 1),
                        s.labDifference.At(i, 2));
  }

  Verdict GradeComponents(const PreparedLimits& limits, std::size_t j, std::size_t from, std::size_t i,
                          const Scratch& s) const {
    if (!limits.isBox) return ToVerdict(EllipseGrade(EllipsoidValue(limits, i, s), limits.ellipseWarning));
    if (IsLch()) return GradeLch(limits.box, PairAt(j, from, i, s));
    Verdict worst = kPass;
    for (std::size_t k = 0; k < 3; ++k) {
      worst = std::min(worst, GradeIn(limits.box.tolerance[k], limits.box.warning[k], s.difference.At(i, k)));
    }
    return worst;
  }

  LimitBreach BreachAt(const PreparedLimits& limits, std::size_t j, std::size_t from, std::size_t i,
                       const Scratch& s) const {
    const Verdict verdict = s.verdicts.At(i);
    if (verdict == kPass) return {};
    if (s.available.At(i) == 0) return {BrokenLimit::kNoDifference, kUnset, kUnset};
    Reason reason(verdict);
    if (conditions_.rule != VerdictRule::kTotal) OfferComponents(limits, j, from, i, s, reason);
    if (conditions_.rule != VerdictRule::kComponents)
      OfferTotal(limits, s.difference.At(i, kTotalElement), reason);
    if (HasLeastGrade()) OfferGrade(i, s, reason);
    if (HasMostInconstancy(j)) OfferInconstancy(i, s, reason);
    return reason.Breach();
  }

  // The way from the best grade to the one that was reached, as a part of the way to the least.
  void OfferGrade(std::size_t i, const Scratch& s, Reason& reason) const {
    constexpr double kBest = 5.0;
    const double grade = HalfStepGrade(s.grades.At(i)), least = conditions_.grade->least;
    reason.Offer(BrokenLimit::kGrade, GradeVerdict(i, s), grade, least, (kBest - grade) / (kBest - least));
  }

  void OfferInconstancy(std::size_t i, const Scratch& s, Reason& reason) const {
    const double value = s.inconstancies.At(i), most = conditions_.inconstancy->most;
    const Verdict verdict = InconstancyVerdict(i, s);
    reason.Offer(BrokenLimit::kInconstancy, verdict, value,
                 verdict == kFail ? most : most * conditions_.warningFactor, value / most);
  }

  void OfferComponents(const PreparedLimits& limits, std::size_t j, std::size_t from, std::size_t i,
                       const Scratch& s, Reason& reason) const {
    if (!limits.isBox) {
      const double value = EllipsoidValue(limits, i, s);
      const Verdict verdict = s.components.At(i);
      reason.Offer(BrokenLimit::kEllipsoid, verdict, value, verdict == kFail ? 1.0 : limits.ellipseWarning,
                   value);
      return;
    }
    if (IsLch()) return OfferLch(limits.box, PairAt(j, from, i, s), reason);
    for (std::size_t k = 0; k < 3; ++k) {
      const double value = s.difference.At(i, k);
      const Interval &tolerance = limits.box.tolerance[k], &warning = limits.box.warning[k];
      reason.OfferIn(kComponents[k], tolerance, warning, GradeIn(tolerance, warning, value), value);
    }
  }

  void StoreRows(std::size_t j, std::size_t from, std::size_t count, const Scratch& s) const {
    const JudgeColumns& c = columns_[j];
    Give(s.available, c.available, from, count);
    Give(s.xyz[j], c.xyz, from, count);
    Give(s.lab, c.lab, from, count);
    Give(s.difference, c.differences, from, count);
    Give(s.labDifference, c.labDifferences, from, count);
    Give(s.components, c.components, from, count);
    Give(s.totals, c.totals, from, count);
    Give(s.verdicts, c.verdicts, from, count);
    Give(s.words, c.words, from, count);
    if (conditions_.grade) Give(s.grades, c.grades, from, count);
    for (std::size_t i = 0; !conditions_.grade && !c.grades.empty() && i < count; ++i)
      c.grades.at(from + i, 0) = kUnset;
    if (conditions_.inconstancy) Give(s.inconstancies, c.inconstancies, from, count);
    for (std::size_t i = 0; !conditions_.inconstancy && !c.inconstancies.empty() && i < count; ++i)
      c.inconstancies.at(from + i, 0) = kUnset;
    if (c.ellipsoidValues.empty() && c.brokenLimits.empty() && c.breaches.empty()) return;
    ForLimits(j, from, count, [&](const PreparedLimits& limits, std::size_t begin, std::size_t rows) {
      for (std::size_t i = begin; i < begin + rows; ++i) StoreReasons(limits, j, from, i, s);
    });
  }

  void StoreReasons(const PreparedLimits& limits, std::size_t j, std::size_t from, std::size_t i,
                    const Scratch& s) const {
    const JudgeColumns& c = columns_[j];
    const bool hasValue = !limits.isBox && s.available.At(i) != 0;
    if (!c.ellipsoidValues.empty())
      c.ellipsoidValues.at(from + i, 0) = hasValue ? EllipsoidValue(limits, i, s) : kUnset;
    const LimitBreach breach = BreachAt(limits, j, from, i, s);
    if (!c.brokenLimits.empty()) c.brokenLimits.at(from + i, 0) = static_cast<std::int32_t>(breach.limit);
    if (c.breaches.empty()) return;
    c.breaches.at(from + i, 0) = breach.value;
    c.breaches.at(from + i, 1) = breach.bound;
  }

  const JudgeConditions& conditions_;
  const DifferenceSystem& system_;
  const JudgeStandards& standards_;
  std::span<const std::size_t> standardOf_;
  const Samples& trials_;
  std::span<const JudgeColumns> columns_;
  std::size_t count_;
  std::vector<SpaceTerms> terms_;       // by illuminant
  std::vector<White> whites_;           // likewise
  std::vector<PreparedLimits> common_;  // by illuminant, where all standards have the same
};

}  // namespace

JudgeStandards::JudgeStandards(const JudgeConditions& conditions, const Samples& samples,
                               std::vector<JudgeLimits> limitsOf, std::vector<double> anglesOf,
                               const BatchRun& run)
    : difference(conditions.difference), limits(std::move(limitsOf)), angles(std::move(anglesOf)) {
  const DifferenceSystem& system = RequireSystem(conditions.difference);
  const std::size_t illuminants = conditions.illuminants.size();
  lab = ColorsOf(samples, vrxSystemLab, conditions.illuminants, conditions.observer, run);
  if (system.space != CoordinateSpace::kLab) {
    own = ColorsOf(samples, system.number, conditions.illuminants, conditions.observer, run);
  }
  if (limits.size() != 1 && limits.size() != illuminants)
    RequireSameCount(limits.size(), illuminants * size());
  if (!angles.empty()) RequireSameCount(angles.size(), size());
  for (const JudgeLimits& one : limits) {
    const bool isEllipsoid = std::holds_alternative<SystemEllipsoid>(one);
    if (isEllipsoid && system.ellipsoidFactor == kNoEllipsoid) throw CInvalidArgException();
  }
}

JudgeLimits JudgeStandards::LimitsOf(std::size_t standard, std::size_t j) const {
  const std::size_t illuminants = lab.under.size();
  const std::size_t place = limits.size() == 1             ? 0
                            : limits.size() == illuminants ? j
                                                           : standard * illuminants + j;
  if (!std::holds_alternative<SystemEllipsoid>(limits[place])) return limits[place];
  CLabValues color;
  color.SetValues(lab.At(j, standard).lab);
  return EllipseForStandard(color, {difference.system, difference.parameters});
}

bool JudgeBatch(const JudgeConditions& conditions, const JudgeStandards& standards,
                std::span<const std::size_t> standardOf, const Samples& trials,
                std::span<const JudgeColumns> columns, const BatchRun& run) {
  const BatchJudge judge(conditions, standards, standardOf, trials, columns);
  return ForEachBlock(run, judge.Count(), kJudgeBlockRows,
                      [&](std::size_t from, std::size_t count) { judge.Rows(from, count); });
}

void JudgementTable::Resize(std::size_t trials, std::size_t illuminants) {
  trials_ = trials;
  under_.resize(illuminants);
  for (Under& under : under_) {
    under.available.resize(trials);
    for (auto* one : {&under.components, &under.totals, &under.verdicts, &under.brokenLimits})
      one->resize(trials);
    under.xyz.resize(3 * trials);
    under.words.resize(3 * trials);
    under.lab.resize(5 * trials);
    under.differences.resize(7 * trials);
    under.labDifferences.resize(7 * trials);
    under.ellipsoidValues.resize(trials);
    under.breaches.resize(2 * trials);
    under.grades.resize(trials);
    under.inconstancies.resize(trials);
  }
}

std::vector<JudgeColumns> JudgementTable::Columns() {
  std::vector<JudgeColumns> columns;
  for (Under& under : under_) {
    columns.push_back({under.available, under.xyz, under.lab, under.differences, under.labDifferences,
                       under.components, under.totals, under.verdicts, under.words, under.ellipsoidValues,
                       under.brokenLimits, under.breaches, under.grades, under.inconstancies});
  }
  return columns;
}

JudgementUnder JudgementTable::At(std::size_t trial, std::size_t j) const {
  const Under& u = under_[j];
  JudgementUnder row;
  row.available = u.available[trial] != 0;
  const double *x = &u.xyz[3 * trial], *l = &u.lab[5 * trial];
  row.trial = {{x[0], x[1], x[2]}, {l[0], l[1], l[2], l[3], l[4]}};
  std::copy_n(&u.differences[7 * trial], 7, row.difference.begin());
  std::copy_n(&u.labDifferences[7 * trial], 7, row.labDifference.begin());
  for (std::size_t k = 0; k < 3; ++k) row.words[k] = static_cast<ShadeWord>(u.words[3 * trial + k]);
  row.components = static_cast<Verdict>(u.components[trial]);
  row.total = static_cast<Verdict>(u.totals[trial]);
  row.verdict = static_cast<Verdict>(u.verdicts[trial]);
  row.ellipsoidValue = u.ellipsoidValues[trial];
  row.grade = u.grades[trial];
  row.inconstancy = u.inconstancies[trial];
  row.breach = {static_cast<BrokenLimit>(u.brokenLimits[trial]), u.breaches[2 * trial],
                u.breaches[2 * trial + 1]};
  return row;
}

Judgement JudgementTable::Row(std::size_t trial) const {
  Judgement judgement;
  for (std::size_t j = 0; j < under_.size(); ++j) judgement.under.push_back(At(trial, j));
  return judgement;
}

bool JudgeTrials(const JudgeConditions& conditions, const JudgeStandards& standards,
                 std::span<const std::size_t> standardOf, const Samples& trials, JudgementTable& table,
                 const BatchRun& run) {
  table.Resize(SampleCount(trials), conditions.illuminants.size());
  return JudgeBatch(conditions, standards, standardOf, trials, table.Columns(), run);
}

std::int32_t ElementOf(BrokenLimit limit, std::int32_t system) {
  constexpr std::int32_t kLchElements[] = {CDeltaValues::kL, CDeltaValues::kChroma, CDeltaValues::kHue};
  if (limit == BrokenLimit::kTotal) return CDeltaValues::kTotal;
  const std::int32_t k = static_cast<std::int32_t>(limit) - static_cast<std::int32_t>(BrokenLimit::kFirst);
  if (k < 0 || k >= 3) return -1;
  return system == vrxSystemLch ? kLchElements[k] : k;
}

}  // namespace vrx
