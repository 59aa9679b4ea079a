#include "tools/vrx/job/added_settings.h"

#include <algorithm>
#include <iterator>
#include <span>

#include <vrxio/csv/tolerance_table.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/job/job_run.h"
#include "tools/vrx/output/measurement_output.h"

namespace vrx::tool {
namespace {

constexpr const char* kConditionOptions[] = {
    "--system",  "--parameters", "--angle", "--illuminants", "--observer",
    "--warning", "--verdict",    "--grade", "--least-grade", "--most-inconstancy"};
// Those that limit every standard, and files, which may limit some.
constexpr const char* kLimitsOfAll[] = {"--tolerance", "--limits", "--ellipse"};
constexpr const char* kLimitFiles[] = {"--tolerances", "--ellipses"};

bool IsAnyGiven(const Command& command, std::span<const char* const> names) {
  return std::ranges::any_of(names, [&](const char* name) { return command.IsGiven(name); });
}

template <class LIMITS>
void AddRows(const LimitTable<LIMITS>& table, const std::string& name, store::Standard& standard) {
  for (const auto& row : table.RowsOf(name))
    standard.limits.push_back({row.geometry, row.illuminant, row.limits});
}

// Rows for all standards first: the most specific row counts, wherever it stands.
void AddLimitsOf(const JudgeSettings& settings, store::Standard& standard) {
  for (const std::string& name : {std::string(), standard.name}) {
    AddRows(settings.boxes, name, standard);
    AddRows(settings.ellipses, name, standard);
  }
  const bool hasGeneral = std::ranges::any_of(standard.limits, [](const store::StandardLimits& row) {
    return row.geometry == kNoGeometry && row.illuminant == store::StandardLimits::kAllIlluminants;
  });
  if (hasGeneral || !settings.ellipses.IsEmpty()) return;
  if (settings.rule == VerdictRule::kComponents && !settings.ByEllipse() && !LimitsComponents(settings.box)) {
    throw InputError("--tolerances: there is no row for what of standard \"" + standard.name +
                     "\" has no row of its own, and nothing limits that; give --limits, too");
  }
  const JudgeLimits general =
      settings.buildEllipses ? JudgeLimits(SystemEllipsoid()) : JudgeLimits(settings.box);
  standard.limits.insert(standard.limits.begin(),
                         {kNoGeometry, store::StandardLimits::kAllIlluminants, general});
}

}  // namespace

AddedSettings::AddedSettings(store::Store& job, std::string shown, const JudgingOptions& options,
                             const std::string& missing, const Command& command)
    : job_(job),
      shown_(std::move(shown)),
      options_(options),
      missing_(missing),
      command_(command),
      givesConditions_(IsAnyGiven(command, kConditionOptions)),
      givesLimits_(IsAnyGiven(command, kLimitsOfAll) || IsAnyGiven(command, kLimitFiles)),
      limitsAll_(IsAnyGiven(command, kLimitsOfAll)) {
  if (!missing.empty() && missing != "keep" && missing != "drop")
    throw InputError("--missing-geometries: must be keep or drop");
  for (const store::StandardEntry& entry : job.Standards()) existing_.insert(entry.name);
}

const AddedSettings::Made& AddedSettings::SettingsOver(const std::optional<JudgeConditions>& own,
                                                       bool keepsLimits) {
  if (made_ && made_->own == own && made_->keepsLimits == keepsLimits) return *made_;
  made_ = {own, keepsLimits, tool::SettingsOver(own, options_, command_, keepsLimits)};
  if (!own) return *made_;
  made_->keepsConditions = true;
  if (!command_.IsGiven("--system")) return *made_;
  // The options alone may say all: nothing is kept then that would not hold without the version before.
  const JudgeConditions usual{.difference = own->difference};
  const JudgeConditions alone = tool::SettingsOver(usual, options_, command_, keepsLimits);
  made_->keepsConditions = alone != made_->settings;
  return *made_;
}

// A file of limits may have no row for a standard, which then keeps what it has.
bool AddedSettings::GivesLimitsTo(const JudgeSettings& settings, const std::string& name) const {
  const auto hasRows = [&](const auto& table) {
    return !table.RowsOf("").empty() || !table.RowsOf(name).empty();
  };
  return limitsAll_ || (givesLimits_ && (hasRows(settings.boxes) || hasRows(settings.ellipses)));
}

// A file that was measured under some of the geometries alone would take the others from the trials, and one that is put together
// from two measurements may be of two panels: which of them is meant, only the user knows. The order of the version before stays, so
// that the same rows in another order are no new version.
void AddedSettings::GiveCurves(const store::Standard& before, store::Standard& standard) {
  std::vector<store::MeasuredCurve> curves;
  std::vector<std::string> names;
  const bool hasOne = before.curves.size() == 1;
  for (const store::MeasuredCurve& old : before.curves) {
    const auto given = std::ranges::find(standard.curves, old.geometry, &store::MeasuredCurve::geometry);
    if (given != standard.curves.end()) {
      curves.push_back(std::move(*given));
      standard.curves.erase(given);
    } else if (!(hasOne && old.geometry == kNoGeometry)) {  // which is named now
      if (missing_ == "keep") curves.push_back(old);
      names.push_back(old.geometry == kNoGeometry ? "no geometry" : GeometryName(old.geometry));
    }
  }
  const std::string version = "version " + std::to_string(before.version);
  if (!names.empty() && missing_.empty()) {
    throw InputError(shown_ + ": standard \"" + standard.name + "\" has curves of " + Listed(names) + " in " +
                     version +
                     ", which the new one does not have: --missing-geometries keep takes them from " +
                     version + ", --missing-geometries drop leaves them out");
  }
  if (!names.empty() && missing_ == "keep")
    kept_["curves of " + Listed(names) + " of " + version].push_back(standard.name);
  std::ranges::move(standard.curves, std::back_inserter(curves));
  standard.curves = std::move(curves);
}

void AddedSettings::KeepLimits(const store::Standard& before, store::Standard& standard) const {
  if (before.conditions && standard.conditions)
    RequireSystemOfLimits(before.name, before.conditions->difference, standard.conditions->difference);
  if (standard.conditions) RequireLimitsOfRule(before, options_.verdict, standard.conditions->rule);
  standard.limits = before.limits;
}

void AddedSettings::Give(store::Standard& standard) {
  std::optional<store::Standard> before;
  if (existing_.contains(standard.name)) before = job_.FindStandard(standard.name);
  standard.follows = before ? before->version : 0;
  if (before) GiveCurves(*before, standard);
  const std::optional<JudgeConditions> own = before ? before->conditions : std::nullopt;
  const bool hasLimits = before && !before->limits.empty();
  if (!givesConditions_ && !givesLimits_) {
    standard.conditions = own;
    if (hasLimits) KeepLimits(*before, standard);
    if (before) NoteKept(*before, own.has_value(), hasLimits);
    return;
  }
  const Made& made = SettingsOver(own, hasLimits && !givesLimits_);
  standard.conditions = made.settings;
  const bool keepsLimits = hasLimits && !GivesLimitsTo(made.settings, standard.name);
  if (keepsLimits)
    KeepLimits(*before, standard);
  else if (givesLimits_)
    AddLimitsOf(made.settings, standard);
  if (before) NoteKept(*before, made.keepsConditions, keepsLimits);
}

void AddedSettings::NoteKept(const store::Standard& before, bool conditions, bool limits) {
  if (!conditions && !limits) return;
  std::string what = limits ? "limits" : "";
  if (conditions)
    what += std::string(limits ? " and " : "") + (givesConditions_ ? "other conditions" : "conditions");
  kept_[what + " of version " + std::to_string(before.version)].push_back(before.name);
}

void AddedSettings::SayWhatWasKept() const {
  for (const auto& [what, names] : kept_)
    PrintMessage(shown_ + ": " + Listed(names) + ": " + what + " are kept");
}

}  // namespace vrx::tool
