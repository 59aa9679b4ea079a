// One standard, ready to judge trials: the library's evaluation context with the settings of a run.

#ifndef TOOLS_VRX_JUDGE_H_
#define TOOLS_VRX_JUDGE_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/judging/evaluation.h>

#include <vrxio/tolerance_table.h>
#include "tools/vrx/input.h"

namespace vrx::tool {

/// What a run judges by.
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

class Judge {
 public:
  /// `settings` must outlive the judge.
  explicit Judge(const JudgeSettings& settings);

  /// Takes a standard: its name, the geometry of the measurement and its curve.
  void SetStandard(std::string_view id, int32_t geometry, const CReflData& curve);

  /// Judges a trial against it, under every illuminant of the settings.
  void Evaluate(const CReflData& trial);

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
  /// The tristimulus values of the standard and of the last trial under it.
  const CTrisValues& StandardXyz(std::size_t i) const {
    return calc_.valuesB[0][static_cast<std::ptrdiff_t>(i)].tristimulus;
  }
  const CTrisValues& TrialXyz(std::size_t i) const {
    return calc_.valuesA[0][static_cast<std::ptrdiff_t>(i)].tristimulus;
  }

 private:
  void SetBoxes();
  void SetEllipses();
  void JudgeDin99();

  const JudgeSettings& settings_;
  CVarexCalc calc_;
  CReflDataArray curve_;  // one geometry at a time
  CReflData standard_;
  CEvaluationArray results_;
  std::string id_;
  int32_t geometry_ = -2;  // none that can be asked for
  bool hasBoxes_ = false;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGE_H_
