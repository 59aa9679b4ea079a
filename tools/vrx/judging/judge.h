// One standard, ready to judge trials: the library's evaluation context with the settings of a run.

#ifndef TOOLS_VRX_JUDGING_JUDGE_H_
#define TOOLS_VRX_JUDGING_JUDGE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vrxmath/batch/batch_view.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/judging/evaluation.h>

#include <vrxio/csv/tolerance_table.h>
#include <vrxio/files/curve_reader.h>

#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {

/// The settings that a run judges by.
struct JudgeSettings {
  std::vector<vrxIlluminant> illuminants;
  int32_t observer = kObserver10;
  CDifferenceSettings difference;
  double warningFactor = 0.75;
  CBoxTolData box;  ///< where no row of the table applies
  BoxTable boxes;
  bool buildEllipses = false;  ///< ellipsoids decide: those of the system, where no row of the table applies
  EllipseTable ellipses;       ///< ellipsoids decide, when there are any

  bool ByEllipse() const { return buildEllipses || !ellipses.IsEmpty(); }
};

/// The outcome of a trial under one illuminant.
struct IlluminantJudgement {
  bool available = false;  ///< false when a colour is unset: there is no difference, and everything fails
  std::array<double, 7> difference{};  ///< in the elements of the system; the last is the total
  std::array<ShadeWord, 3> words{};    ///< on lightness, red-green, yellow-blue
  Verdict components = kFail, total = kFail, overall = kFail;
  double ellipseValue = kUnset;
};

/// The answer of the library, without the value of the ellipsoid; the components are judged by it or by the box.
IlluminantJudgement JudgementOf(const CEvaluation& evaluation, const CDeltaValues& difference,
                                bool byEllipse);

/// The outcome of a trial: what is left of it when the next one is read.
struct Judgement {
  std::string standard, trial, name;  ///< ids, and the name that the trial has beside its id
  int32_t geometry = kNoGeometry;
  std::vector<IlluminantJudgement> under;  ///< by illuminant of the settings

  void SetTrial(const CurveRow& row) {
    trial = row.id;
    name = row.name;
    geometry = row.geometry;
  }
  /// The worst verdict under any illuminant.
  Verdict Overall() const;
};

/// A standard as it was measured: its name, the geometry of the measurement, and what was measured.
struct Standard {
  std::uint64_t stamp = 0;  ///< differs between standards of one run; 0 for none
  std::string id;
  int32_t geometry = kNoGeometry;
  Sample sample;
};

class Judge {
 public:
  /// `settings` must outlive the judge.
  explicit Judge(const JudgeSettings& settings);

  /// Takes a standard: its name, the geometry of the measurement and what was measured. A colour counts under every
  /// illuminant of the settings.
  void SetStandard(std::string_view id, int32_t geometry, const Sample& standard);
  void SetStandard(const Standard& standard) {
    SetStandard(standard.id, standard.geometry, standard.sample);
    stamp_ = standard.stamp;
  }
  /// The stamp of the standard that was taken last; 0 for none.
  std::uint64_t StandardStamp() const { return stamp_; }

  /// Judges a trial against it, under every illuminant of the settings.
  void Evaluate(const Sample& trial);
  /// The outcome of the last trial, in a record of its own but for the names of the trial.
  void Take(Judgement& judgement) const;

  /// Judges many trials at once: curves of 40 samples, in percent, one behind the other. The outcomes are those of
  /// Evaluate to the last bit, but Result and the colours and differences of the last trial are not there.
  void EvaluateCurves(std::span<const double> curves);
  /// The outcome of the trial at `row` of them, as by Take.
  void TakeCurve(std::size_t row, Judgement& judgement);

  const std::string& StandardId() const { return id_; }
  const CReflData& StandardCurve() const { return standard_; }
  /// The outcome of the last trial under the illuminant at index `i` of the settings.
  const CEvaluation& Result(std::size_t i) const { return results_[static_cast<std::ptrdiff_t>(i)]; }
  const CDeltaValues& Difference(std::size_t i) const {
    return calc_.differences[0][static_cast<std::ptrdiff_t>(i)];
  }
  const CDeltaValues& LabDifference(std::size_t i) const {
    return calc_.labDifferences[0][static_cast<std::ptrdiff_t>(i)];
  }
  /// The verdict on the components: the box's or the ellipsoid's.
  Verdict Components(std::size_t i) const { return calc_.judgeByEllipse ? Result(i).ellipse : Result(i).box; }
  /// The ellipsoid's value of the last difference, 1 on its surface; unset when there is no difference.
  double EllipseValue(std::size_t i) const;
  /// The limits under the illuminant at index `i`; those that do not decide are of no account.
  const CBoxTolData& Box(std::size_t i) const {
    return calc_.boxTolerances[0][0][static_cast<std::ptrdiff_t>(i)];
  }
  const CEllipseData& Ellipse(std::size_t i) const {
    return calc_.ellipseTolerances[0][0][static_cast<std::ptrdiff_t>(i)];
  }
  /// The colours of the standard and of the last trial under it: tristimulus values and L*a*b*.
  const CColorValues& StandardColor(std::size_t i) const {
    return calc_.valuesB[0][static_cast<std::ptrdiff_t>(i)];
  }
  const CColorValues& TrialColor(std::size_t i) const {
    return calc_.valuesA[0][static_cast<std::ptrdiff_t>(i)];
  }

 private:
  // What is known of many trials, a table for each illuminant: columns of as many rows.
  struct Batch {
    struct Table {
      BatchView<double, 5> lab;
      BatchView<double, 7> differences, labDifferences;
      std::span<Verdict> components, totals;
      BatchView<std::int32_t, 3> words;
    };
    std::vector<Table> tables;
    std::vector<double> xyz, lab, coordinates, differences, labDifferences;
    std::vector<Verdict> components, totals;
    std::vector<std::int32_t> words;
  };

  void TakeColors(const Sample& sample, CColorValuesIllDataArray& values) const;
  void TakeSettings(Judgement& judgement) const;
  void FillDifferences(std::size_t i, const BatchView<double, 3>& xyz);
  void FillVerdicts(std::size_t i);
  bool IsJudged(const Batch::Table& table, std::size_t row) const;
  void TakeRow(std::size_t i, std::size_t row, IlluminantJudgement& judgement);
  IlluminantJudgement JudgeOne(std::size_t i, std::size_t row);
  void SetBoxes();
  void SetEllipses();

  const JudgeSettings& settings_;
  CVarexCalc calc_;
  CReflDataArray curve_;  // one geometry at a time
  CReflData standard_;
  CEvaluationArray results_;
  Batch batch_;
  std::string id_;
  int32_t geometry_ = -2;  // none that can be asked for
  bool hasBoxes_ = false;
  std::uint64_t stamp_ = 0;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_JUDGE_H_
