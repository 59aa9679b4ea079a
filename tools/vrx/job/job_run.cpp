#include "tools/vrx/job/job_run.h"

#include <algorithm>
#include <map>
#include <span>
#include <utility>

#include <vrxstore/records/stored_form.h>
#include <vrxstore/standard_names.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/job/job_reader.h"
#include "tools/vrx/judging/standard_library.h"

namespace vrx::tool {
namespace {

bool GivesLimits(const JudgingOptions& options) {
  return !options.tolerance.empty() || !options.limits.empty() || !options.tolerances.empty() ||
         options.ellipse || !options.ellipses.empty();
}

// The standards that take part in a run.
std::vector<store::StandardEntry> EntriesOf(store::Store& store, const std::string& file,
                                            const std::string& standard) {
  std::vector<store::StandardEntry> entries = store.Standards();
  if (!standard.empty()) std::erase_if(entries, [&](const auto& entry) { return entry.name != standard; });
  if (!entries.empty()) return entries;
  throw InputError(file + (standard.empty() ? ": the job has no standards"
                                            : ": " + store::UnknownStandardText(store, standard)));
}

// The conditions that all standards share; those of no options where they have none.
std::optional<JudgeConditions> SharedConditions(const std::vector<store::StandardEntry>& entries,
                                                const std::string& file, bool areGiven) {
  const std::optional<JudgeConditions>& first = entries.front().conditions;
  const auto other = std::ranges::find_if(
      entries, [&](const store::StandardEntry& entry) { return entry.conditions != first; });
  if (other == entries.end()) return first;
  if (areGiven) return std::nullopt;
  throw InputError(
      file + ": standards \"" + entries.front().name + "\" and \"" + other->name +
      "\" are judged under different conditions: --standard-id judges by one of them, --system and "
      "--illuminants under others");
}

// The conditions of the standards, and over them what the options say.
void SetConditions(const std::optional<JudgeConditions>& own, const JudgingOptions& options,
                   const Command& command, JudgeSettings& settings) {
  if (own) static_cast<JudgeConditions&>(settings) = *own;
  SystemOptions system = options.system;
  if (own && !command.IsGiven("--system")) system.system = ShortNameOf(own->difference.system);
  if (!own || command.IsGiven("--system") || command.IsGiven("--parameters"))
    settings.difference = system.Settings();
  if (!own || !options.viewing.illuminants.empty()) settings.illuminants = options.viewing.Illuminants();
  if (!own || !options.viewing.observer.empty()) settings.observer = options.viewing.Observer();
  if (!own || !options.system.angle.empty()) settings.angle = options.system.Angle();
}

// The limits that the job has for the standards.
void TakeLimits(store::Store& store, const std::vector<store::StandardEntry>& entries,
                const std::string& file, const std::string& verdict, JudgeSettings& settings) {
  std::string boxed, rounded;
  for (const store::StandardEntry& entry : entries) {
    if (!entry.hasLimits) {
      boxed = entry.name;  // by the usual box
      continue;
    }
    if (entry.conditions)
      RequireSystemOfLimits(entry.name, entry.conditions->difference, settings.difference);
    const store::Standard standard = store.FindStandard(entry.name).value();
    RequireLimitsOfRule(standard, verdict, settings.rule);
    for (const store::StandardLimits& row : standard.limits) {
      if (const auto* box = std::get_if<CBoxTolData>(&row.limits)) {
        settings.boxes.Add(entry.name, {row.geometry, row.illuminant, *box});
        boxed = entry.name;
        continue;
      }
      rounded = entry.name;
      if (const auto* ellipse = std::get_if<CEllipseData>(&row.limits))
        settings.ellipses.Add(entry.name, {row.geometry, row.illuminant, *ellipse});
      else
        settings.buildEllipses = true;
    }
  }
  if (!boxed.empty() && !rounded.empty()) {
    throw InputError(file + ": standard \"" + boxed + "\" is judged by a box and standard \"" + rounded +
                     "\" by an ellipsoid: --standard-id judges by one of them, --tolerance all by one limit");
  }
}

std::unique_ptr<Standards> ChooseOnly(CurveReader standards, const std::string& file,
                                      const std::vector<store::StandardEntry>& entries) {
  if (entries.size() == 1) return OneStandard(std::move(standards), entries.front().name);
  throw InputError(
      file + ": the job has " + std::to_string(entries.size()) +
      " standards, and the trials do not name theirs: --standard-id names one for all, --pairs takes "
      "the one of the same id, --nearest the nearest");
}

// The rule as --verdict names it.
std::string WordOf(VerdictRule rule) {
  return rule == VerdictRule::kTotal ? "total" : rule == VerdictRule::kComponents ? "box" : "worse";
}

}  // namespace

void RequireSystemOfLimits(const std::string& standard, const CDifferenceSettings& own,
                           const CDifferenceSettings& asked) {
  if (own == asked) return;
  const bool isOther = own.system != asked.system;
  throw InputError(
      (isOther ? "--system: the limits of standard \"" : "--parameters: the limits of standard \"") +
      standard + "\" are for " + (isOther ? std::string(ShortNameOf(own.system)) : TitleOf(own)) +
      "; give limits, too, as with --tolerance");
}

void RequireLimitsOfRule(const store::Standard& standard, const std::string& verdict, VerdictRule rule) {
  if (verdict.empty()) return;
  const bool isHeld = std::ranges::none_of(
      standard.limits, [rule](const store::StandardLimits& row) { return LimitsNothing(row.limits, rule); });
  if (isHeld) return;
  const bool isBox = rule == VerdictRule::kComponents;
  throw InputError("--verdict " + WordOf(rule) + ": the limits of standard \"" + standard.name +
                   "\" limit no " + (isBox ? "component" : "total") + "; give limits, too, as with " +
                   (isBox ? "--limits" : "--tolerance"));
}

JudgeSettings SettingsOver(const std::optional<JudgeConditions>& own, const JudgingOptions& options,
                           const Command& command, bool keepsLimits) {
  JudgeSettings settings;
  SetConditions(own, options, command, settings);
  JudgingOptions given = options;
  // The usual tolerance is no question where every standard has limits of its own.
  if (keepsLimits)
    given.tolerance = kUsualTolerance;
  else if (own && options.verdict.empty())
    given.verdict = WordOf(own->rule);
  AddLimits(given, settings);
  if (!keepsLimits) RequireLimitsOfComponents(settings);
  if (settings.inconstancy && settings.illuminants.size() < 2)
    throw InputError("--illuminants: the standard limits colour inconstancy, which needs two or more");
  if (own && options.verdict.empty()) settings.rule = own->rule;
  if (own && !command.IsGiven("--warning")) settings.warningFactor = own->warningFactor;
  return settings;
}

void AddJobRunOptions(Command& owner, JobRunOptions& options) {
  AddJobChangeOptions(owner, options);
  Command command = owner.Group("Job");
  command.AddFlag("--nearest", options.nearest, "Judge each trial against the nearest standard of the job");
  command.AddFlag("--again", options.again, "Store the trials even if the job has the same ones already");
}

JudgeSettings SettingsOfJob(store::Store& store, const std::string& file, const std::string& standard,
                            const JudgingOptions& options, const Command& command) {
  const std::vector<store::StandardEntry> entries = EntriesOf(store, file, standard);
  const bool areGiven = command.IsGiven("--system") && !options.viewing.illuminants.empty();
  const std::optional<JudgeConditions> own = SharedConditions(entries, file, areGiven);
  const bool takesLimits = !GivesLimits(options);
  const bool allHaveLimits = std::ranges::all_of(entries, &store::StandardEntry::hasLimits);
  JudgeSettings settings = SettingsOver(own, options, command, takesLimits && allHaveLimits);
  if (takesLimits) TakeLimits(store, entries, file, options.verdict, settings);
  return settings;
}

JobRun::JobRun(const JobRunOptions& options, ComparisonOptions& comparison, const JudgingOptions& judging,
               const Command& command)
    : options_(options), file_(options.Shown()), store_(OpenJob(options)) {
  comparison.content = Content::kCurves;
  batch_ = store_->BeginBatch(comparison.trials, options.Author());
  settings_ = SettingsOfJob(*store_, file_, comparison.standardId, judging, command);
  comparison.openStandards = [this, &comparison] {
    return CurveReader(ReadStandards(*store_, file_, comparison.standardId));
  };
  comparison.chooseStandards = [this](CurveReader standards) {
    return options_.nearest ? NearestStandards(std::move(standards), settings_)
                            : ChooseOnly(std::move(standards), file_, store_->Standards());
  };
}

void JobRun::Add(const PipelineTrial& judged, const Standard& standard, const Judge& judge,
                 const CurveReader& trials) {
  trials_ = &trials;
  conditions_ = settings_;
  conditions_.angle = judge.AngleOf(standard);
  limits_.clear();
  for (const vrxIlluminant illuminant : settings_.illuminants)
    limits_.push_back(judge.GivenLimits(standard, illuminant));
  readings_.clear();
  for (std::size_t i = 0; judged.readings != nullptr && i < judged.readings->samples.size(); ++i)
    std::ranges::copy(judged.readings->samples[i].curve, readings_.emplace_back().begin());
  if (!measuring_) measuring_ = store::MeasuringText(trials.FirstConditions());
  store::NewTrial trial;
  trial.name = judged.judgement.trial;
  trial.title = judged.judgement.name;
  trial.standard = standard.id;
  trial.standardGeometry = standard.geometry;
  trial.geometry = judged.judgement.geometry;
  trial.date = judged.date;
  trial.measuring = *measuring_;
  trial.samples = {judged.trial.curve.begin(), store::Curve().size()};
  trial.readings = readings_;
  trial.conditions = &conditions_;
  trial.limits = limits_;
  trial.judgement = &judged.judgement;
  batch_->Add(trial);
  for (const JudgementUnder& under : judged.judgement.under) verdicts_.push_back(under.verdict);
}

// Under other illuminants only the worst verdicts can be compared.
std::int64_t JobRun::CountOtherVerdicts(std::int64_t batch) {
  std::span<const Verdict> left = verdicts_;
  std::int64_t others = 0;
  const auto cursor = store_->Trials({.batch = batch});
  for (store::StoredTrial trial; cursor->Next(trial) && !left.empty();) {
    const auto now = left.first(settings_.illuminants.size());
    left = left.subspan(now.size());
    const bool isSame = trial.conditions.illuminants == settings_.illuminants
                            ? std::ranges::equal(now, trial.judgement.under, {}, {}, &JudgementUnder::verdict)
                            : std::ranges::min(now) == trial.judgement.Worst();
    others += isSame ? 0 : 1;
  }
  return others;
}

void JobRun::Commit() {
  if (trials_ != nullptr && !trials_->Mixture().empty()) {
    throw InputError(
        trials_->Source().Name() + ": measurements of different conditions are mixed (" + trials_->Mixture() +
        "), and a batch of a job has one description of them; store them from files of their own");
  }
  const store::StoredBatch stored = batch_->Commit(options_.again);
  if (stored.number == 0) return;
  const std::string number = std::to_string(stored.number);
  if (!stored.wasThere) {
    PrintMessage(file_ + ": stored " + std::to_string(stored.trials) + " trials as batch " + number);
    return;
  }
  const std::int64_t others = CountOtherVerdicts(stored.number);
  PrintMessage(file_ + ": the job has these trials already, as batch " + number + " of " + stored.taken +
               "; nothing was stored" +
               (others == 0 ? " (--again stores them once more)"
                            : ", and " + std::to_string(others) + " of " + std::to_string(stored.trials) +
                                  " trials have other verdicts than in the job; --again stores these"));
}

}  // namespace vrx::tool
