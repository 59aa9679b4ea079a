#include "tools/vrx/report/job_series.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <numeric>
#include <span>

#include <vrxio/measurement/names.h>
#include <vrxio/text/decimal.h>
#include <vrxstore/records/stored_form.h>
#include <vrxmath/colorimetry/difference_systems.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/report/report_texts.h"

namespace vrx::tool {
namespace {

// The angle counts for systems whose weights depend on it.
bool ReadsAngle(const CDifferenceSettings& difference) {
  const DifferenceSystem* system = FindDifferenceSystem(difference.system);
  return system != nullptr && system->readsAngle;
}

// What two outcomes must have in common, as bytes. The factor of an ellipsoid is a limit and changes no difference.
std::string KeyOf(const store::StoredTrial& trial, std::size_t outcome) {
  const JudgeConditions& conditions = trial.conditions;
  const CDifferenceSettings& difference = conditions.difference;
  std::string key;
  for (const std::int64_t number :
       {trial.standardNumber, std::int64_t{trial.standardGeometry}, std::int64_t{trial.geometry},
        std::int64_t{conditions.illuminants[outcome]}, std::int64_t{conditions.observer},
        std::int64_t{difference.system}, std::int64_t{difference.ownFormula ? 1 : 0}})
    key.append(std::to_string(number)).append(" ");
  DifferenceParameters parameters = difference.parameters;
  const DifferenceSystem* system = FindDifferenceSystem(difference.system);
  if (system != nullptr && system->ellipsoidFactor != kNoEllipsoid)
    parameters[static_cast<std::size_t>(system->ellipsoidFactor)] = 0;
  store::AppendDoubles(parameters, key);
  if (ReadsAngle(difference)) store::AppendDoubles({&conditions.angle, 1}, key);
  store::AppendDoubles(trial.standardSamples, key);
  return key;
}

// The title of the system, with the angle where no geometry says it.
std::string SystemText(const store::StoredTrial& trial) {
  std::string text = TitleOf(trial.conditions.difference);
  if (trial.geometry == kNoGeometry && ReadsAngle(trial.conditions.difference))
    text.append(", ").append(ShortestText(trial.conditions.angle)).append("\u00B0");
  return text;
}

SeriesFacts FactsOf(const store::StoredTrial& trial, std::size_t outcome) {
  const JudgeConditions& conditions = trial.conditions;
  SeriesFacts facts;
  facts.standard = trial.standard;
  facts.geometry = GeometryName(trial.geometry);
  facts.illuminant = CodeOf(conditions.illuminants[outcome]);
  facts.observer = DegreesOf(conditions.observer);
  facts.system = SystemText(trial);
  return facts;
}

}  // namespace

std::string SeriesFacts::VersionsText() const {
  std::string text;
  for (auto first = versions.begin(); first != versions.end();) {
    auto end = std::next(first);
    std::int32_t last = *first;
    for (; end != versions.end() && *end == last + 1; ++end) last = *end;
    text.append(text.empty() ? "" : " ").append(std::to_string(*first));
    if (last != *first) text.append("-").append(std::to_string(last));
    first = end;
  }
  return text;
}

std::size_t SeriesList::NumberOf(const store::StoredTrial& trial, std::size_t outcome) {
  const auto [entry, isNew] = numbers_.try_emplace(KeyOf(trial, outcome), all_.size());
  const CDifferenceSettings& difference = trial.conditions.difference;
  if (isNew) {
    all_.push_back(FactsOf(trial, outcome));
    last_.push_back(difference);
  }
  SeriesFacts& facts = all_[entry->second];
  if (last_[entry->second] != difference) {  // in the factor of the ellipsoid alone
    last_[entry->second] = difference;
    facts.system = SystemText(trial);
  }
  facts.versions.insert(trial.standardVersion);
  return entry->second;
}

std::vector<std::size_t> SeriesList::Order() const {
  std::vector<std::size_t> order(all_.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(
      order, {}, [this](std::size_t number) -> const std::string& { return all_[number].standard; });
  return order;
}

std::vector<std::string> SeriesList::Headings(const std::vector<std::string>& elements) const {
  std::vector<std::string> headings;
  std::map<std::string, int> counts;
  for (std::size_t i = 0; i < all_.size(); ++i) {
    std::string& heading = headings.emplace_back(all_[i].standard);
    const std::string viewing = all_[i].illuminant + "/" + std::to_string(all_[i].observer) + "\u00B0";
    for (const std::string& part : {all_[i].geometry, viewing, elements[i]})
      heading.append(part.empty() ? "" : ", ").append(part);
    ++counts[heading];
  }
  for (std::size_t i = 0; i < all_.size(); ++i) {
    if (counts[headings[i]] == 1) continue;
    headings[i].append(", ").append(all_[i].system).append(", ");
    headings[i].append(TextOf(ReportText::kVersion, {all_[i].VersionsText()}));
  }
  return headings;
}

}  // namespace vrx::tool
