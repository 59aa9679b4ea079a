#include <vrxstore/records/trail.h>

#include <array>

#include <vrxstore/records/stored_form.h>

namespace vrx::store {

void ContentDigest::Add(std::string_view text) {
  Add(static_cast<std::int64_t>(text.size()));
  digest_.Add(text);
}

void ContentDigest::Add(std::int64_t number) {
  std::array<char, 8> bytes{};
  for (std::size_t k = 0; k < bytes.size(); ++k)
    bytes[k] = static_cast<char>(static_cast<std::uint64_t>(number) >> (8 * k) & 0xFF);
  digest_.Add({bytes.data(), bytes.size()});
}

std::string DigestOf(const TrailRow& row) {
  ContentDigest digest;
  digest.Add(row.previous);
  digest.Add(row.number);
  for (const std::string& text : {row.at, row.user, row.by, row.what, row.subject, row.why, row.content})
    digest.Add(text);
  return digest.Finish();
}

void AddTrial(ContentDigest& digest, const NewTrial& trial, std::int64_t standard) {
  digest.Add(trial.name);
  digest.Add(trial.title);
  digest.Add(standard);
  digest.Add(trial.geometry);
  digest.Add(trial.date);
  std::string bytes;
  AppendDoubles(trial.samples, bytes);
  digest.Add(bytes);
}

void AddTrial(ContentDigest& digest, const StoredTrial& trial) {
  NewTrial content;
  content.name = trial.name;
  content.title = trial.title;
  content.geometry = trial.geometry;
  content.date = trial.date;
  content.samples = trial.samples;
  AddTrial(digest, content, trial.standardNumber);
}

static void AddCurve(ContentDigest& digest, const MeasuredCurve& curve) {
  digest.Add(curve.geometry);
  digest.Add(curve.date);
  digest.Add(curve.measuring);
  std::string bytes;
  AppendDoubles(curve.samples, bytes);
  digest.Add(bytes);
}

std::string DigestOf(const Standard& standard) {
  ContentDigest digest;
  for (const MeasuredCurve& curve : standard.curves) AddCurve(digest, curve);
  digest.Add(standard.conditions ? ConditionsText(*standard.conditions) : "");
  for (const StandardLimits& row : standard.limits) {
    digest.Add(row.geometry);
    digest.Add(row.illuminant);
    digest.Add(LimitsBytes({&row.limits, 1}));
  }
  return digest.Finish();
}

std::string DigestOf(const MadeRecipe& recipe) {
  ContentDigest digest;
  digest.Add(recipe.name);
  digest.Add(AmountsText(recipe));
  AddCurve(digest, recipe.curve);
  return digest.Finish();
}

}  // namespace vrx::store
