// The judgements of a run: the library's (vrxmath/batch/judge_batch.h), of samples as files hold them and with their names.

#ifndef TOOLS_VRX_JUDGING_JUDGE_H_
#define TOOLS_VRX_JUDGING_JUDGE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <vrxmath/batch/judge_batch.h>
#include <vrxmath/batch/sample_colors.h>
#include <vrxmath/foundation/angles.h>

#include <vrxio/csv/tolerance_table.h>
#include <vrxio/files/curve_reader.h>
#include <vrxio/measurement/measurement.h>

#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {

/// The settings that a run judges by.
struct JudgeSettings : JudgeConditions {
  int32_t interval = kWavelengthStep;  ///< at which curves were summed, in nm
  CBoxTolData box;                     ///< where no row of the table applies
  BoxTable boxes;
  bool buildEllipses = false;  ///< ellipsoids decide: those of the system, where no row of the table applies
  EllipseTable ellipses;       ///< ellipsoids decide, when there are any

  bool ByEllipse() const { return buildEllipses || !ellipses.IsEmpty(); }
};

/// The outcome of a trial: what is left of it when the next one is read.
struct TrialJudgement : Judgement {
  std::string standard, trial, name;  ///< ids, and the name that the trial has beside its id
  int32_t geometry = kNoGeometry;

  void SetTrial(const CurveRow& row) {
    trial = row.id;
    name = row.name;
    geometry = row.geometry;
  }
};

/// What a file says of all its samples: their specular component, or a geometry that leaves it out.
struct StatedGloss {
  io::Specular specular = io::Specular::kUnknown;
  int32_t geometry = kNoGeometry;

  StatedGloss() = default;
  explicit StatedGloss(const io::MeasuringConditions& conditions)
      : specular(conditions.specular), geometry(conditions.geometry) {}
};

/// A standard as it was measured: its name, the geometry of the measurement, and what was measured.
struct Standard {
  std::uint64_t stamp = 0;  ///< differs between standards of one run; 0 for none
  std::string id;
  int32_t geometry = kNoGeometry;
  Sample sample;
  std::string date;             ///< of the measurement
  std::optional<double> angle;  ///< aspecular, in degrees, where it is not that of the geometry
  StatedGloss gloss;            ///< beside the geometry
};

/// Samples of one kind, one behind the other, as the library takes them. A colour counts under every illuminant.
class SampleBuffer {
 public:
  void Clear() { numbers_.clear(); }
  void Add(const Sample& sample);
  /// They live until the buffer is changed.
  Samples View();

 private:
  std::vector<double> numbers_;
  Sample::Kind kind_ = Sample::kCurve;
  std::int32_t interval_ = kWavelengthStep;
  BatchView<const double, 3> colors_;
};

/// Judges trials and keeps what came out. One thread at a time.
class Judge {
 public:
  /// `settings` must outlive the judge.
  explicit Judge(const JudgeSettings& settings) : settings_(settings) {}

  /// How many standards there are before the first one that has no limits for what decides; all of them where each has.
  std::size_t CountLimited(std::span<const Standard> standards) const;
  /// Throws InputError, which names them, where standards have no limits for what decides.
  void RequireLimits(std::span<const Standard> standards) const;
  /// The limits of a standard under an illuminant, as the settings give them.
  JudgeLimits GivenLimits(const Standard& standard, vrxIlluminant illuminant) const;
  /// The aspecular angle at which its trials are judged, in degrees.
  double AngleOf(const Standard& standard) const;

  /// Judges trials under every illuminant of the settings, each against the standard at its index; without indices against
  /// the standard of its own place, or the only one.
  void Evaluate(std::span<const Standard> standards, std::span<const Sample* const> trials,
                std::span<const std::size_t> standardOf = {});
  void Evaluate(const Standard& standard, const Sample& trial);

  /// The outcome of a trial, but for the names.
  void Take(std::size_t trial, Judgement& judgement) const;
  Judgement Row(std::size_t trial = 0) const { return table_.Row(trial); }
  /// The colour of a standard under the illuminant at index `i`, and its limits.
  Color StandardColor(std::size_t standard, std::size_t i) const { return standards_->lab.At(i, standard); }
  JudgeLimits LimitsOf(std::size_t standard, std::size_t i) const {
    return standards_->LimitsOf(standard, i);
  }

 private:
  void SetStandards(std::span<const Standard> standards);
  std::vector<JudgeLimits> AllLimits(std::span<const Standard> standards) const;
  bool IsLimited(const Standard& standard, vrxIlluminant illuminant) const;
  bool MayLackLimits() const;

  const JudgeSettings& settings_;
  SampleBuffer samples_;
  std::optional<JudgeStandards> standards_;
  std::uint64_t stamp_ = 0;  // of the standard that is held, where it is one
  JudgementTable table_;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_JUDGE_H_
