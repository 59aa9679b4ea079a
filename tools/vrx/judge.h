// One standard, ready to judge trials: the library's evaluation context with the settings of a run.

#ifndef TOOLS_VRX_JUDGE_H_
#define TOOLS_VRX_JUDGE_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <vrxmath/colorant/evaluation.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>

#include "tools/vrx/tolerance_table.h"

namespace vrx::tool {

/// What a run judges by.
struct JudgeSettings {
  std::vector<vrxIlluminant> illuminants;
  int32_t observer = kObserver10;
  CDifferenceSettings difference;
  double warningFactor = 0.75;
  ToleranceTable tolerances;
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
  /// The tristimulus values of the standard and of the last trial under it.
  const CTrisValues& StandardXyz(std::size_t i) const {
    return calc_.valuesB[0][static_cast<std::ptrdiff_t>(i)].tristimulus;
  }
  const CTrisValues& TrialXyz(std::size_t i) const {
    return calc_.valuesA[0][static_cast<std::ptrdiff_t>(i)].tristimulus;
  }

 private:
  void JudgeDin99();

  const JudgeSettings& settings_;
  CVarexCalc calc_;
  CReflDataArray curve_;  // one geometry at a time
  CReflData standard_;
  CEvaluationArray results_;
  std::string id_;
  int32_t geometry_ = -2;  // none that can be asked for
  bool hasTolerances_ = false;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGE_H_
