// What a job holds: standards with their versions and limits, trials with their judgements, profiles, and the trail of all
// changes.

#ifndef VRXSTORE_RECORDS_RECORDS_H_
#define VRXSTORE_RECORDS_RECORDS_H_

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxmath/batch/judge_batch.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/foundation/angles.h>

#include <vrxio/measurement/measurement.h>
#include <vrxio/text/input_error.h>

namespace vrx::store {

/// A job cannot be used: the sentence names its file, the place in it and the reason. What is wrong with the samples that are to go
/// into it is an InputError.
class StoreError : public io::InputError {
 public:
  using io::InputError::InputError;
};

/// A curve in percent on the library's grid. It is stored as its doubles are.
using Curve = std::array<double, kWavelengths>;

/// Who makes a change, and why: both as a person gives them, both may be empty. The user of the system is found out by the
/// back end.
struct Author {
  std::string by = {}, why = {};
};

/// A curve as it was measured, under one geometry.
struct MeasuredCurve {
  std::int32_t geometry = io::kNoGeometry;
  Curve samples{};
  std::string date;       ///< as the file had it
  std::string measuring;  ///< how, as MeasuringText makes it
  bool operator==(const MeasuredCurve&) const = default;
};

/// Limits of a standard, for one geometry and illuminant or for all of them.
struct StandardLimits {
  static constexpr std::int32_t kAllIlluminants = -1;
  std::int32_t geometry = io::kNoGeometry;  ///< kNoGeometry: all
  std::int32_t illuminant = kAllIlluminants;
  JudgeLimits limits;
};

/// A version of a standard.
struct Standard {
  std::string name;
  std::int32_t version = 0;                   ///< from 1; 0 for one that is not stored yet
  std::vector<MeasuredCurve> curves;          ///< one a geometry
  std::optional<JudgeConditions> conditions;  ///< its own; none where those of the run hold
  std::vector<StandardLimits> limits;
  /// Of one on its way into a job that was made from what the job had: the version that must still be the current one, 0 for a standard
  /// that was not there. Unset where it stands for itself.
  std::optional<std::int32_t> follows = {};
};

/// A standard in a list.
struct StandardEntry {
  std::string name;
  std::int32_t version = 0;
  std::string added;                     ///< its version, in UTC
  std::vector<std::int32_t> geometries;  ///< of its curves
  std::optional<JudgeConditions> conditions;
  bool hasLimits = false;
  std::int64_t trials = 0;  ///< under all versions
};

/// What came of standards that were added.
struct AddedStandards {
  std::int64_t added = 0, changed = 0, unchanged = 0;
  std::vector<std::string> returned;  ///< names of those among the changed ones that were out of use
};

/// A trial with its judgement on its way into a job. Everything lives with the caller.
struct NewTrial {
  std::string_view name, title;  ///< the id, and the second name beside it
  std::string_view standard;     ///< the name of its standard
  /// The geometry of the standard's curve that it was judged against, or kNoGeometry.
  std::int32_t standardGeometry = io::kNoGeometry;
  std::int32_t geometry = io::kNoGeometry;
  std::string_view date, measuring;
  std::span<const double> samples;             ///< kWavelengths of them
  std::span<const Curve> readings;             ///< of which it is the mean, where it is one
  const JudgeConditions* conditions = nullptr; /**< with the angle at which this trial was judged */
  std::span<const JudgeLimits> limits;         ///< one an illuminant
  const Judgement* judgement = nullptr;
};

/// What came of a batch of trials.
struct StoredBatch {
  std::int64_t number = 0;  ///< of this batch, or of the same one that was stored before
  std::int64_t trials = 0;
  bool wasThere = false;  ///< the same trials were stored before, and nothing was now
  std::string taken;      ///< when it was stored, in UTC
};

/// A person's decision about a trial, whatever its verdict.
struct Decision {
  bool isAccepted = false;
  std::string at, by, why;
};

/// A trial of a job with its judgement.
struct StoredTrial {
  std::int64_t number = 0, batch = 0;
  std::string name, title, taken, date, measuring;
  std::int32_t geometry = io::kNoGeometry;
  Curve samples{};
  std::string standard;
  std::int64_t standardNumber = 0;  ///< which stays when it gets another name
  std::int32_t standardVersion = 0;
  std::int32_t standardGeometry = io::kNoGeometry;
  Curve standardSamples{};
  std::string library;  ///< the version of the library that judged it
  JudgeConditions conditions;
  std::vector<JudgeLimits> limits;  ///< one an illuminant
  Judgement judgement;              ///< X, Y, Z, chroma and hue of its colours are not stored
  std::optional<Decision> decision;

  /// Whether it counts as accepted: by a person's decision, else by its verdict.
  bool IsAccepted() const { return decision ? decision->isAccepted : judgement.Worst() != kFail; }
};

/// Which trials are asked for. Empty texts and zeros ask for nothing.
struct TrialFilter {
  std::string standard = {};
  std::string name = {};
  std::int64_t number = 0, batch = 0;
  /// Of the time of storing in UTC, as far as it is written out: "2026-11", "2026-11-05".
  std::string since = {}, until = {};
  /// Trials of this geometry, of those that may stand for it, and of none.
  std::int32_t geometry = io::kNoGeometry;
};

/// A batch of trials in a list.
struct BatchEntry {
  std::int64_t number = 0, trials = 0;
  std::string taken, source;
  std::string digest;  ///< SHA-256 of its content (BatchDigest), in 32 bytes
};

/// The options that belong together under a name: what a customer asks for.
struct Profile {
  std::string name;
  /// By option: "--system", "cmc". A flag has an empty text.
  std::vector<std::pair<std::string, std::string>> options;
};

/// A recipe that was made, and what came of it.
struct MadeRecipe {
  std::int64_t number = 0;  ///< 0 for one that is not stored yet
  std::string name;
  /// Components by name, as any colour system that has them knows them, with amounts in any one unit.
  std::vector<std::pair<std::string, double>> amounts;
  MeasuredCurve curve;
  std::string added;  ///< when it was stored, in UTC
};

/// What came of recipes that were added.
struct AddedRecipes {
  std::int64_t added = 0, unchanged = 0;
};

/// A row of the trail.
struct TrailRow {
  std::int64_t number = 0;  ///< from 1, without gaps
  std::string at;           ///< in UTC
  std::string user, by;     ///< of the system, and as a person gave it
  std::string what, subject, why;
  std::string content;   ///< SHA-256 of what was stored, in 32 bytes; empty where nothing was
  std::string previous;  ///< digest of the row before, in 32 bytes; 32 zeros for the first
  std::string digest;    ///< DigestOf the row
};

/// What a job is and how much it holds.
struct JobInfo {
  std::string name, created, library;  ///< the library that created it
  std::int32_t schema = 0;
  std::int64_t standards = 0, batches = 0, trials = 0, decisions = 0, profiles = 0, recipes = 0;
  TrailRow head;  ///< the last row of the trail
};

}  // namespace vrx::store

#endif  // VRXSTORE_RECORDS_RECORDS_H_
