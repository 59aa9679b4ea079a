// Trials with their judgements: into a job, and out of it.

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

#include <vrxstore/records/stored_form.h>
#include <vrxstore/records/trail.h>
#include <vrxstore/sqlite/parts.h>
#include <vrxmath/foundation/numbers.h>

namespace vrx::store {
namespace {

// The numbers of settings, each of which is stored once.
class SettingsTable {
 public:
  explicit SettingsTable(Connection& connection)
      : connection_(connection),
        find_(connection, "SELECT id FROM settings WHERE conditions = ? AND limits = ?"),
        insert_(connection, "INSERT INTO settings(conditions, limits) VALUES(?, ?)") {}

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
    insert_.Bind(text_, BlobOf(bytes)).Run();
    return connection_.LastRow();
  }

  Connection& connection_;
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
  explicit StandardTable(Connection& connection)
      : connection_(connection),
        find_(connection,
              "SELECT s.id, v.id, c.id FROM standard s JOIN standard_version v ON v.standard = s.id AND "
              "v.version "
              "= s.version JOIN curve c ON c.standard_version = v.id WHERE s.name = ?1 AND s.removed = 0 "
              "ORDER BY c.Angle IS NOT ?2, c.Angle IS NOT NULL, c.id LIMIT 1") {}

  Place Of(const NewTrial& trial) {
    std::string key(trial.standard);
    key += '\0';
    key += std::to_string(trial.standardGeometry);
    const auto known = places_.find(key);
    if (known != places_.end()) return known->second;
    trial.standardGeometry == io::kNoGeometry ? find_.Bind(trial.standard, nullptr)
                                              : find_.Bind(trial.standard, trial.standardGeometry);
    if (!find_.Step())
      throw io::InputError(connection_.Path() + ": there is no standard \"" + std::string(trial.standard) +
                           "\"");
    const Place place{find_.Integer(0), find_.Integer(1), find_.Integer(2)};
    find_.Reset();
    constexpr std::size_t kMost = 100'000;
    if (places_.size() == kMost) places_.clear();
    places_.emplace(std::move(key), place);
    return place;
  }

 private:
  Connection& connection_;
  Statement find_;
  std::unordered_map<std::string, Place> places_;
};

class SqliteBatch final : public BatchWriter {
 public:
  SqliteBatch(Connection& connection, std::string source, Author author)
      : connection_(connection),
        transaction_(connection),
        source_(std::move(source)),
        author_(std::move(author)),
        settings_(connection),
        standards_(connection),
        measuring_(connection),
        trial_(connection,
               "INSERT INTO trial(batch, name, title, Angle, samples, measured, measuring) VALUES(?, ?, ?, "
               "?, ?, ?, ?)"),
        reading_(connection, "INSERT INTO reading VALUES(?, ?, ?)"),
        judgement_(connection,
                   "INSERT INTO judgement(trial, standard_version, curve, settings, library, verdict) "
                   "VALUES(?, ?, ?, ?, ?, ?)"),
        outcome_(connection, "INSERT INTO outcome VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)") {
    taken_ = NowText();
    Statement insert(connection, "INSERT INTO batch(taken, source, trials, digest) VALUES(?, ?, 0, ?)");
    insert.Bind(taken_, source_, BlobOf("")).Run();
    number_ = connection.LastRow();
  }

  void Add(const NewTrial& trial) override {
    const StandardTable::Place standard = standards_.Of(trial);
    const std::int64_t settings = settings_.NumberOf(*trial.conditions, trial.limits);
    const std::int64_t measuring = measuring_.NumberOf(trial.measuring);
    bytes_.clear();
    AppendDoubles(trial.samples, bytes_);
    const auto insert = [&](const auto& geometry) {
      trial_.Bind(number_, trial.name, trial.title, geometry, BlobOf(bytes_), trial.date, measuring).Run();
    };
    trial.geometry == io::kNoGeometry ? insert(nullptr) : insert(trial.geometry);
    const std::int64_t row = connection_.LastRow();
    for (std::size_t i = 0; i < trial.readings.size(); ++i) {
      bytes_.clear();
      AppendDoubles(trial.readings[i], bytes_);
      reading_.Bind(row, static_cast<std::int64_t>(i), BlobOf(bytes_)).Run();
    }
    judgement_.Bind(row, standard.version, standard.curve, settings, VRX_VERSION, trial.judgement->Worst())
        .Run();
    AddOutcomes(connection_.LastRow(), trial);
    AddTrial(digest_, trial, standard.standard);
    ++trials_;
  }

  StoredBatch Commit(bool again) override {
    StoredBatch stored{number_, trials_, false, taken_};
    if (trials_ == 0) {
      transaction_.Rollback();
      return {};
    }
    const std::string digest = digest_.Finish();
    Statement same(connection_, "SELECT id, taken FROM batch WHERE digest = ? ORDER BY id LIMIT 1");
    if (!again && same.Bind(BlobOf(digest)).Step()) {
      stored = {same.Integer(0), trials_, true, std::string(same.Text(1))};
      same.Reset();
      transaction_.Rollback();
      return stored;
    }
    same.Reset();
    Statement update(connection_, "UPDATE batch SET trials = ?, digest = ? WHERE id = ?");
    update.Bind(trials_, BlobOf(digest), number_).Run();
    AppendTrail(connection_, author_, "store batch",
                std::to_string(number_) + ": " + std::to_string(trials_) + " trials of " + source_, digest);
    transaction_.Commit();
    return stored;
  }

 private:
  void AddOutcomes(std::int64_t judgement, const NewTrial& trial) {
    for (std::size_t i = 0; i < trial.judgement->under.size(); ++i) {
      const JudgementUnder& under = trial.judgement->under[i];
      std::array<double, kOutcomeNumbers> numbers{};
      OutcomeNumbers(under, numbers);
      bytes_.clear();
      AppendDoubles(numbers, bytes_);
      outcome_
          .Bind(judgement, static_cast<std::int64_t>(i),
                static_cast<std::int32_t>(trial.conditions->illuminants[i]),
                static_cast<std::int32_t>(under.available), under.difference.back(), BlobOf(bytes_),
                static_cast<std::int32_t>(under.words[0]), static_cast<std::int32_t>(under.words[1]),
                static_cast<std::int32_t>(under.words[2]), under.components, under.total, under.verdict,
                static_cast<std::int32_t>(under.breach.limit))
          .Run();
    }
  }

  Connection& connection_;
  Transaction transaction_;
  std::string source_;
  Author author_;
  SettingsTable settings_;
  StandardTable standards_;
  MeasuringTable measuring_;
  Statement trial_, reading_, judgement_, outcome_;
  ContentDigest digest_;
  std::string taken_, bytes_;
  std::int64_t number_ = 0, trials_ = 0;
};

// Reads the rows of a filter, and the outcomes and the decision of each.
class SqliteTrials final : public TrialCursor {
 public:
  SqliteTrials(Connection& connection, const TrialFilter& filter)
      : connection_(connection),
        trials_(connection, TrialQuery(filter)),
        outcomes_(connection,
                  "SELECT available, numbers, word0, word1, word2, box, total, verdict, broken FROM outcome "
                  "WHERE judgement = ? ORDER BY place"),
        decision_(connection,
                  "SELECT d.accepted, r.at, r.by, r.user, r.why FROM decision d JOIN trail r ON r.id = "
                  "d.trail WHERE d.trial = ? ORDER BY d.id DESC LIMIT 1"),
        filter_(filter) {
    trials_.Bind(filter_.standard, filter_.name, filter_.number, filter_.batch, filter_.since, filter_.until);
  }

  bool Next(StoredTrial& trial) override {
    if (!trials_.Step()) return false;
    TakeRow(trial);
    try {
      TakeSettings(trial);
      TakeOutcomes(trial);
    } catch (const io::InputError& error) {
      const std::string text = error.what();
      if (text.starts_with(connection_.Path())) throw;
      throw StoreError(connection_.Path() + ": the judgement of trial " + std::to_string(trial.number) +
                       ": " + text);
    }
    TakeDecision(trial);
    return true;
  }

 private:
  void TakeRow(StoredTrial& trial) {
    trial.number = trials_.Integer(0);
    trial.batch = trials_.Integer(1);
    trial.name = trials_.Text(2);
    trial.title = trials_.Text(3);
    trial.taken = trials_.Text(4);
    trial.date = trials_.Text(5);
    trial.measuring = trials_.Text(6);
    trial.geometry = GeometryIn(trials_, 7);
    TakeCurve(connection_, trials_.Text(8), "trial", trial.number, trial.samples);
    trial.standard = trials_.Text(9);
    trial.standardVersion = static_cast<std::int32_t>(trials_.Integer(10));
    trial.standardGeometry = GeometryIn(trials_, 11);
    TakeCurve(connection_, trials_.Text(12), "curve", trials_.Integer(18), trial.standardSamples);
    trial.library = trials_.Text(14);
    trial.standardNumber = trials_.Integer(19);
  }

  void TakeSettings(StoredTrial& trial) {
    if (const std::int64_t settings = trials_.Integer(15); settings != settingsNumber_) {
      conditions_ = ConditionsFrom(trials_.Text(16));
      limits_ = LimitsFrom(trials_.Text(17));
      settingsNumber_ = settings;
    }
    trial.conditions = conditions_;
    trial.limits = limits_;
  }

  void TakeOutcomes(StoredTrial& trial) {
    trial.judgement.under.clear();
    outcomes_.Bind(trials_.Integer(13));
    while (outcomes_.Step()) {
      JudgementUnder under;
      under.available = outcomes_.Integer(0) != 0;
      std::array<double, kOutcomeNumbers> numbers{};
      DoublesFrom(outcomes_.Text(1), numbers);
      TakeOutcomeNumbers(numbers, under);
      for (std::size_t k = 0; k < 3; ++k)
        under.words[k] = static_cast<ShadeWord>(outcomes_.Integer(2 + static_cast<int>(k)));
      under.components = static_cast<Verdict>(outcomes_.Integer(5));
      under.total = static_cast<Verdict>(outcomes_.Integer(6));
      under.verdict = static_cast<Verdict>(outcomes_.Integer(7));
      under.breach.limit = static_cast<BrokenLimit>(outcomes_.Integer(8));
      trial.judgement.under.push_back(under);
    }
    if (trial.judgement.under.size() != trial.conditions.illuminants.size() ||
        trial.limits.size() != trial.judgement.under.size()) {
      throw StoreError("it has not one outcome and one limit for each illuminant");
    }
  }

  void TakeDecision(StoredTrial& trial) {
    trial.decision.reset();
    if (!decision_.Bind(trial.number).Step()) return;
    const std::string_view by = decision_.Text(2);
    trial.decision = {decision_.Integer(0) != 0, std::string(decision_.Text(1)),
                      std::string(by.empty() ? decision_.Text(3) : by), std::string(decision_.Text(4))};
    decision_.Reset();
  }

  Connection& connection_;
  Statement trials_, outcomes_, decision_;
  TrialFilter filter_;
  std::int64_t settingsNumber_ = 0;
  JudgeConditions conditions_;
  std::vector<JudgeLimits> limits_;
};

}  // namespace

// The tables in the order in which the most selective part of the filter has them looked up.
std::string TrialQuery(const TrialFilter& filter) {
  std::string sql =
      "SELECT t.id, t.batch, t.name, t.title, b.taken, t.measured, m.content, t.Angle, t.samples, s.name, "
      "v.version, c.Angle, c.samples, j.id, j.library, j.settings, e.conditions, e.limits, c.id, s.id FROM ";
  if (!filter.standard.empty()) {
    sql +=
        "standard s CROSS JOIN standard_version v ON v.standard = s.id CROSS JOIN judgement j ON "
        "j.standard_version = v.id CROSS JOIN trial t ON t.id = j.trial";
  } else {
    sql +=
        "trial t CROSS JOIN judgement j ON j.trial = t.id CROSS JOIN standard_version v ON v.id = "
        "j.standard_version CROSS JOIN standard s ON s.id = v.standard";
  }
  sql +=
      " CROSS JOIN batch b ON b.id = t.batch CROSS JOIN curve c ON c.id = j.curve CROSS JOIN settings e ON "
      "e.id = j.settings CROSS JOIN measuring m ON m.id = t.measuring WHERE ";
  sql += filter.standard.empty() ? "?1 IS NOT NULL" : "s.name = ?1";
  sql += filter.name.empty() ? " AND ?2 IS NOT NULL" : " AND t.name = ?2";
  sql += filter.number == 0 ? " AND ?3 IS NOT NULL" : " AND t.id = ?3";
  sql += filter.batch == 0 ? " AND ?4 IS NOT NULL" : " AND t.batch = ?4";
  sql += filter.since.empty() ? " AND ?5 IS NOT NULL" : " AND b.taken >= ?5";
  sql += filter.until.empty() ? " AND ?6 IS NOT NULL" : " AND substr(b.taken, 1, length(?6)) <= ?6";
  return sql + AngleCondition("t", filter.geometry) + " ORDER BY t.id";
}

std::unique_ptr<BatchWriter> WriteBatch(Connection& connection, const std::string& source,
                                        const Author& author) {
  return std::make_unique<SqliteBatch>(connection, source, author);
}

std::unique_ptr<TrialCursor> ReadTrials(Connection& connection, const TrialFilter& filter) {
  return std::make_unique<SqliteTrials>(connection, filter);
}

}  // namespace vrx::store
