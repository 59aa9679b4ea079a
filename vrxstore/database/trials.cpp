// Trials with their judgements: into a job, and out of it.

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <unordered_map>
#include <utility>

#include <vrxstore/database/parts.h>
#include <vrxstore/records/stored_form.h>
#include <vrxstore/records/trail.h>
#include <vrxmath/foundation/numbers.h>

namespace vrx::store {
namespace {

// The numbers of settings, each of which is stored once.
class SettingsTable {
 public:
  explicit SettingsTable(Database& database)
      : database_(database),
        find_(database, "SELECT id FROM settings WHERE conditions = ? AND limits = ?"),
        insert_(database, "INSERT INTO settings(id, conditions, limits) VALUES(?, ?, ?)") {}

  std::int64_t NumberOf(const JudgeConditions& conditions, std::span<const JudgeLimits> limits) {
    if (!conditions_ || *conditions_ != conditions) {
      conditions_ = conditions;
      text_ = ConditionsText(conditions);
      numbers_.clear();
    }
    std::string bytes = LimitsBytes(limits);
    const auto known = numbers_.find(bytes);
    if (known != numbers_.end()) return known->second;
    const std::int64_t number = FindOrInsert(bytes);
    constexpr std::size_t kMost = 10'000;
    if (numbers_.size() == kMost) numbers_.clear();
    numbers_.emplace(std::move(bytes), number);
    return number;
  }

 private:
  std::int64_t FindOrInsert(const std::string& bytes) {
    if (find_.Bind(text_, BlobOf(bytes)).Step()) {
      const std::int64_t number = find_.Integer(0);
      find_.Reset();
      return number;
    }
    const std::int64_t number = NextNumber(database_, "settings");
    insert_.Bind(number, text_, BlobOf(bytes)).Run();
    return number;
  }

  Database& database_;
  Statement find_, insert_;
  std::optional<JudgeConditions> conditions_;  // of what follows
  std::string text_;
  std::unordered_map<std::string, std::int64_t> numbers_;  // by limits
};

// The version and the curve of standards by their names and geometries.
class StandardTable {
 public:
  struct Place {
    std::int64_t standard, version, curve;
  };
  explicit StandardTable(Database& database)
      : database_(database),
        find_(
            database,
            "SELECT s.id, v.id, c.id FROM standard s JOIN standard_version v ON v.standard = s.id AND "
            "v.version = s.version JOIN curve c ON c.standard_version = v.id WHERE s.name = ?1 AND "
            "s.removed = 0 ORDER BY CASE WHEN c.\"Angle\" = ?2 THEN 0 WHEN c.\"Angle\" IS NULL THEN 1 ELSE 2 "
            "END, c.id LIMIT 1") {}

  Place Of(const NewTrial& trial) {
    std::string key(trial.standard);
    key += '\0';
    key += std::to_string(trial.standardGeometry);
    const auto known = places_.find(key);
    if (known != places_.end()) return known->second;
    if (!find_.Bind(trial.standard, GeometryToBind(trial.standardGeometry)).Step())
      throw io::InputError(database_.Name() + ": there is no standard \"" + std::string(trial.standard) +
                           "\"");
    const Place place{find_.Integer(0), find_.Integer(1), find_.Integer(2)};
    find_.Reset();
    constexpr std::size_t kMost = 100'000;
    if (places_.size() == kMost) places_.clear();
    places_.emplace(std::move(key), place);
    return place;
  }

 private:
  Database& database_;
  Statement find_;
  std::unordered_map<std::string, Place> places_;
};

class BatchOfTables final : public BatchWriter {
 public:
  BatchOfTables(Database& database, std::string source, Author author)
      : database_(database),
        transaction_(database),
        source_(std::move(source)),
        author_(std::move(author)),
        settings_(database),
        standards_(database),
        measuring_(database),
        trial_(database, "trial", "id, batch, name, title, \"Angle\", samples, measured, measuring"),
        reading_(database, "reading", "trial, place, samples"),
        judgement_(database, "judgement", "id, trial, standard_version, curve, settings, library, verdict"),
        outcome_(database, "outcome",
                 "judgement, place, illuminant, available, difference, numbers, word0, "
                 "word1, word2, box, total, verdict, broken"),
        taken_(NowText()),
        number_(NextNumber(database, "batch")),
        nextTrial_(NextNumber(database, "trial")),
        nextJudgement_(NextNumber(database, "judgement")) {}

  void Add(const NewTrial& trial) override {
    const StandardTable::Place standard = standards_.Of(trial);
    const std::int64_t settings = settings_.NumberOf(*trial.conditions, trial.limits);
    const std::int64_t measuring = measuring_.NumberOf(trial.measuring);
    const std::int64_t row = nextTrial_++;
    const std::int64_t judgement = nextJudgement_++;
    trial_
        .Bind(row, number_, trial.name, trial.title, GeometryToBind(trial.geometry), CurveOf(trial.samples),
              trial.date, measuring)
        .Run();
    for (std::size_t i = 0; i < trial.readings.size(); ++i)
      reading_.Bind(row, static_cast<std::int64_t>(i), CurveOf(trial.readings[i])).Run();
    judgement_
        .Bind(judgement, row, standard.version, standard.curve, settings, VRX_VERSION,
              trial.judgement->Worst())
        .Run();
    AddOutcomes(judgement, trial);
    AddTrial(digest_, trial, standard.standard);
    ++trials_;
  }

  StoredBatch Commit(bool again) override {
    if (trials_ == 0) {
      transaction_.Rollback();
      return {};
    }
    const std::string digest = digest_.Finish();
    Statement same(database_, "SELECT id, taken FROM batch WHERE digest = ? ORDER BY id DESC LIMIT 1");
    if (!again && same.Bind(BlobOf(digest)).Step()) {
      StoredBatch stored{same.Integer(0), trials_, true, std::string(same.Text(1))};
      same.Reset();
      transaction_.Rollback();
      return stored;
    }
    same.Reset();
    Statement insert(database_, "INSERT INTO batch(id, taken, source, trials, digest) VALUES(?, ?, ?, ?, ?)");
    insert.Bind(number_, taken_, source_, trials_, BlobOf(digest)).Run();
    AppendTrail(database_, author_, "store batch",
                std::to_string(number_) + ": " + std::to_string(trials_) + " trials of " + source_, digest);
    transaction_.Commit();
    return {number_, trials_, false, taken_};
  }

 private:
  void AddOutcomes(std::int64_t judgement, const NewTrial& trial) {
    for (std::size_t i = 0; i < trial.judgement->under.size(); ++i) {
      const JudgementUnder& under = trial.judgement->under[i];
      std::array<double, kOutcomeNumbers> numbers{};
      OutcomeNumbers(under, numbers);
      bytes_.clear();
      AppendDoubles(numbers, bytes_);
      const double total = under.difference.back();
      const std::optional<double> difference = std::isnan(total) ? std::nullopt : std::optional(total);
      outcome_
          .Bind(judgement, static_cast<std::int64_t>(i),
                static_cast<std::int32_t>(trial.conditions->illuminants[i]),
                static_cast<std::int32_t>(under.available), difference, BlobOf(bytes_),
                static_cast<std::int32_t>(under.words[0]), static_cast<std::int32_t>(under.words[1]),
                static_cast<std::int32_t>(under.words[2]), under.components, under.total, under.verdict,
                static_cast<std::int32_t>(under.breach.limit))
          .Run();
    }
  }

  Database& database_;
  Transaction transaction_;
  std::string source_;
  Author author_;
  SettingsTable settings_;
  StandardTable standards_;
  MeasuringTable measuring_;
  RowInserter trial_, reading_, judgement_, outcome_;
  ContentDigest digest_;
  std::string taken_, bytes_;
  std::int64_t number_, nextTrial_, nextJudgement_, trials_ = 0;
};

// The trials of a query, which gives a row for each outcome.
class TrialsOfTables final : public TrialCursor {
 public:
  TrialsOfTables(Database& database, const TrialFilter& filter)
      : database_(database), filter_(filter), rows_(database, TrialQuery(database, filter), RowCount::kAny) {
    rows_.Bind(filter_.standard, filter_.name, filter_.number, filter_.batch, filter_.since, filter_.until);
    hasRow_ = rows_.Step();
  }

  bool Next(StoredTrial& trial) override {
    if (!hasRow_) return false;
    TakeRow(trial);
    TakeDecision(trial);
    try {
      TakeSettings(trial);
      TakeOutcomes(trial);
    } catch (const io::InputError& error) {
      const std::string text = error.what();
      if (text.starts_with(database_.Name())) throw;
      throw StoreError(database_.Name() + ": the judgement of trial " + std::to_string(trial.number) + ": " +
                       text);
    }
    return true;
  }

 private:
  enum Column : int {
    kTrial,
    kBatch,
    kName,
    kTitle,
    kTaken,
    kMeasured,
    kMeasuring,
    kAngle,
    kSamples,
    kStandard,
    kVersion,
    kStandardAngle,
    kStandardSamples,
    kJudgement,
    kLibrary,
    kSettings,
    kConditions,
    kLimits,
    kCurve,
    kStandardNumber,
    kPlace,
    kAvailable,
    kNumbers,
    kWord0,
    kWord1,
    kWord2,
    kBoxVerdict,
    kTotalVerdict,
    kWorstVerdict,
    kBroken,
    kAccepted,
    kAt,
    kBy,
    kUser,
    kWhy
  };

  void TakeRow(StoredTrial& trial) const {
    trial.number = rows_.Integer(kTrial);
    trial.batch = rows_.Integer(kBatch);
    trial.name = rows_.Text(kName);
    trial.title = rows_.Text(kTitle);
    trial.taken = rows_.Text(kTaken);
    trial.date = rows_.Text(kMeasured);
    trial.measuring = rows_.Text(kMeasuring);
    trial.geometry = GeometryIn(rows_, kAngle);
    trial.standard = rows_.Text(kStandard);
    trial.standardVersion = rows_.Small(kVersion);
    trial.standardGeometry = GeometryIn(rows_, kStandardAngle);
    trial.library = rows_.Text(kLibrary);
    trial.standardNumber = rows_.Integer(kStandardNumber);
  }

  void TakeSettings(StoredTrial& trial) {
    if (const std::int64_t settings = rows_.Integer(kSettings); settings != settingsNumber_) {
      conditions_ = ConditionsFrom(rows_.Text(kConditions));
      limits_ = LimitsFrom(rows_.Text(kLimits));
      settingsNumber_ = settings;
    }
    trial.conditions = conditions_;
    trial.limits = limits_;
  }

  // The outcomes in the rows of this judgement, which stand together, by their places. The first one has the curves.
  void TakeOutcomes(StoredTrial& trial) {
    std::vector<std::pair<std::int64_t, JudgementUnder>> outcomes;
    const std::int64_t judgement = rows_.Integer(kJudgement);
    for (; hasRow_ && rows_.Integer(kJudgement) == judgement; hasRow_ = rows_.Step()) {
      if (!rows_.IsNull(kSamples)) TakeCurves(trial);
      if (!rows_.IsNull(kPlace)) outcomes.emplace_back(rows_.Integer(kPlace), TakeOutcome());
    }
    std::ranges::sort(outcomes, {}, [](const auto& outcome) { return outcome.first; });
    trial.judgement.under.clear();
    for (const auto& outcome : outcomes) trial.judgement.under.push_back(outcome.second);
    if (trial.judgement.under.size() != trial.conditions.illuminants.size() ||
        trial.limits.size() != trial.judgement.under.size()) {
      throw StoreError("it has not one outcome and one limit for each illuminant");
    }
  }

  void TakeCurves(StoredTrial& trial) const {
    TakeCurve(database_, rows_, kSamples, "trial", trial.number, trial.samples);
    TakeCurve(database_, rows_, kStandardSamples, "curve", rows_.Integer(kCurve), trial.standardSamples);
  }

  JudgementUnder TakeOutcome() const {
    JudgementUnder under;
    under.available = rows_.Integer(kAvailable) != 0;
    std::array<double, kOutcomeNumbers> numbers{};
    DoublesFrom(rows_.Text(kNumbers), numbers);
    TakeOutcomeNumbers(numbers, under);
    for (int k = 0; k < 3; ++k)
      under.words.at(static_cast<std::size_t>(k)) = static_cast<ShadeWord>(rows_.Integer(kWord0 + k));
    under.components = static_cast<Verdict>(rows_.Integer(kBoxVerdict));
    under.total = static_cast<Verdict>(rows_.Integer(kTotalVerdict));
    under.verdict = static_cast<Verdict>(rows_.Integer(kWorstVerdict));
    under.breach.limit = static_cast<BrokenLimit>(rows_.Integer(kBroken));
    return under;
  }

  void TakeDecision(StoredTrial& trial) const {
    trial.decision.reset();
    if (rows_.IsNull(kAccepted)) return;
    const std::string_view by = rows_.Text(kBy);
    trial.decision = {rows_.Integer(kAccepted) != 0, std::string(rows_.Text(kAt)),
                      std::string(by.empty() ? rows_.Text(kUser) : by), std::string(rows_.Text(kWhy))};
  }

  Database& database_;
  TrialFilter filter_;
  Statement rows_;
  bool hasRow_ = false;
  std::int64_t settingsNumber_ = 0;
  JudgeConditions conditions_;
  std::vector<JudgeLimits> limits_;
};

}  // namespace

// The tables in the order in which the most selective part of the filter has them looked up.
std::string TrialQuery(const Database& database, const TrialFilter& filter) {
  const std::string join = database.JoinInOrder();
  std::string sql =
      "SELECT t.id, t.batch, t.name, t.title, b.taken, t.measured, m.content, t.\"Angle\", "
      "CASE WHEN COALESCE(o.place, 0) = 0 THEN t.samples END, s.name, v.version, c.\"Angle\", "
      "CASE WHEN COALESCE(o.place, 0) = 0 THEN c.samples END, j.id, j.library, j.settings, e.conditions, "
      "e.limits, c.id, s.id, "
      "o.place, o.available, o.numbers, o.word0, o.word1, o.word2, o.box, o.total, o.verdict, o.broken, "
      "d.accepted, r.at, r.by, r.\"user\", r.why FROM ";
  if (!filter.standard.empty()) {
    sql += "standard s" + join + "standard_version v ON v.standard = s.id" + join +
           "judgement j ON j.standard_version = v.id" + join + "trial t ON t.id = j.trial";
  } else {
    sql += "trial t" + join + "judgement j ON j.trial = t.id" + join +
           "standard_version v ON v.id = j.standard_version" + join + "standard s ON s.id = v.standard";
  }
  sql +=
      join + "batch b ON b.id = t.batch" + join + "curve c ON c.id = j.curve" + join +
      "settings e ON e.id = j.settings" + join +
      "measuring m ON m.id = t.measuring LEFT JOIN outcome o ON o.judgement = j.id LEFT JOIN decision d ON "
      "d.id = (SELECT MAX(l.id) FROM decision l WHERE l.trial = t.id) LEFT JOIN trail r ON r.id = d.trail "
      "WHERE ";
  sql += filter.standard.empty() ? "?1 IS NOT NULL" : "s.name = ?1";
  sql += filter.name.empty() ? " AND ?2 IS NOT NULL" : " AND t.name = ?2";
  sql += filter.number == 0 ? " AND ?3 IS NOT NULL" : " AND t.id = ?3";
  sql += filter.batch == 0 ? " AND ?4 IS NOT NULL" : " AND t.batch = ?4";
  sql += filter.since.empty() ? " AND ?5 IS NOT NULL" : " AND b.taken >= ?5";
  sql += filter.until.empty() ? " AND ?6 IS NOT NULL" : " AND substr(b.taken, 1, length(?6)) <= ?6";
  return sql + AngleCondition("t", filter.geometry) + " ORDER BY t.id";
}

std::unique_ptr<BatchWriter> WriteBatch(Database& database, const std::string& source, const Author& author) {
  return std::make_unique<BatchOfTables>(database, source, author);
}

std::unique_ptr<TrialCursor> ReadTrials(Database& database, const TrialFilter& filter) {
  return std::make_unique<TrialsOfTables>(database, filter);
}

}  // namespace vrx::store
