// A job in the tables of a database.

#include <vrxstore/database/database_store.h>

#include <map>
#include <utility>

#include <vrxstore/database/parts.h>
#include <vrxstore/records/stored_form.h>
#include <vrxstore/records/trail.h>
#include <vrxstore/standard_names.h>
#include <vrxmath/foundation/numbers.h>

namespace vrx::store {
namespace {

class CurvesOfTables final : public CurveCursor {
 public:
  CurvesOfTables(Database& database, std::string standard, std::int32_t geometry)
      : database_(database),
        standard_(std::move(standard)),
        rows_(database, Query(database, !standard_.empty(), geometry), RowCount::kAny),
        standardOf_(
            database,
            "SELECT v.standard FROM curve c JOIN standard_version v ON v.id = c.standard_version WHERE "
            "c.id = ?") {
    Seek(0);
  }

  bool Next(Row& row) override {
    if (!rows_.Step()) return false;
    row.place = rows_.Integer(0);
    row.standard = rows_.Text(1);
    row.curve.geometry = GeometryIn(rows_, 2);
    TakeCurve(database_, rows_, 3, "curve", row.place, row.curve.samples);
    row.curve.date = rows_.Text(4);
    row.curve.measuring = rows_.Text(5);
    return true;
  }

  void Seek(std::int64_t place) override {
    std::int64_t standard = 0;
    if (place != 0 && standardOf_.Bind(place).Step()) {
      standard = standardOf_.Integer(0);
      standardOf_.Reset();
    }
    rows_.Bind(standard, place, standard_);
  }

 private:
  static std::string Query(const Database& database, bool isOne, std::int32_t geometry) {
    const std::string join = database.JoinInOrder();
    std::string sql =
        "SELECT c.id, s.name, c.\"Angle\", c.samples, c.measured, m.content FROM standard s" + join +
        "standard_version v ON v.standard = s.id AND v.version = s.version" + join +
        "curve c ON c.standard_version = v.id" + join +
        "measuring m ON m.id = c.measuring WHERE s.removed = 0 AND s.id >= ?1 AND (s.id > ?1 OR c.id >= ?2) "
        "AND ";
    sql += isOne ? "s.name = ?3" : "?3 IS NOT NULL";
    return sql + AngleCondition("c", geometry) + " ORDER BY s.id, c.id";
  }

  Database& database_;
  std::string standard_;
  Statement rows_, standardOf_;
};

class DatabaseStore final : public Store {
 public:
  explicit DatabaseStore(std::unique_ptr<Database> database) : database_(std::move(database)) {}

  void Create(const std::string& name, const Author& author);
  void Recognise();

  JobInfo Info() override;
  std::vector<StandardEntry> Standards() override;
  std::optional<Standard> FindStandard(const std::string& name, std::int32_t version) override;
  std::unique_ptr<CurveCursor> StandardCurves(const std::string& standard, std::int32_t geometry) override {
    return std::make_unique<CurvesOfTables>(*database_, standard, geometry);
  }
  bool HaveGeometries() override {
    return IntegerOf(*database_, "SELECT EXISTS(SELECT 1 FROM curve WHERE \"Angle\" IS NOT NULL)") != 0;
  }
  AddedStandards AddStandards(std::span<const Standard> standards, const Author& author) override {
    return StoreStandards(*database_, standards, author);
  }
  void RemoveStandard(const std::string& name, bool evenWithTrials, const Author& author) override;
  void RenameStandard(const std::string& from, const std::string& to, const Author& author) override;

  std::unique_ptr<BatchWriter> BeginBatch(const std::string& source, const Author& author) override {
    return WriteBatch(*database_, source, author);
  }
  std::unique_ptr<TrialCursor> Trials(const TrialFilter& filter) override {
    return ReadTrials(*database_, filter);
  }
  std::vector<BatchEntry> Batches() override;
  std::vector<Curve> Readings(std::int64_t trial) override;
  void Decide(std::int64_t trial, bool isAccepted, const Author& author) override;

  std::vector<Profile> Profiles() override;
  void SetProfile(const Profile& profile, const Author& author) override;
  std::vector<MadeRecipe> Recipes() override { return ReadRecipes(*database_); }
  AddedRecipes AddRecipes(std::span<const MadeRecipe> recipes, const Author& author) override {
    return StoreRecipes(*database_, recipes, author);
  }
  void RemoveRecipe(std::int64_t number, const Author& author) override {
    DropRecipe(*database_, number, author);
  }
  std::unique_ptr<TrailCursor> Trail() override { return ReadTrail(*database_); }
  std::vector<std::string> CheckPages() override { return database_->CheckPages(); }
  void Backup(const std::string& path) override { database_->Backup(path); }
  const std::string& Notice() const override { return notice_; }

 private:
  void MakeTables(std::int64_t from);
  void Migrate();
  [[noreturn]] void Refuse(const std::string& reason) const {
    throw StoreError(database_->Name() + ": " + reason);
  }
  [[noreturn]] void RefuseUnknown(const std::string& standard) {
    Refuse(UnknownStandardText(*this, standard));
  }
  std::optional<std::int64_t> NumberOfStandard(const std::string& name);
  std::map<std::int64_t, std::vector<std::int32_t>> GeometriesOfVersions();
  void TakeVersion(std::int64_t number, Standard& standard);

  std::unique_ptr<Database> database_;
  std::string notice_;
};

// Brings tables of a version, 0 for none, to those of today.
void DatabaseStore::MakeTables(std::int64_t from) {
  for (auto version = static_cast<std::int32_t>(from) + 1; version <= kSchemaVersion; ++version)
    database_->Execute(database_->TablesOf(version));
  database_->SetSchemaVersion(kSchemaVersion);
}

void DatabaseStore::Create(const std::string& name, const Author& author) {
  Transaction transaction(*database_);
  database_->RequireEmpty();
  MakeTables(0);
  Statement insert(*database_, "INSERT INTO job VALUES(1, ?, ?, ?)");
  insert.Bind(name, NowText(), VRX_VERSION).Run();
  AppendTrail(*database_, author, "create job", name);
  transaction.Commit();
}

void DatabaseStore::Recognise() {
  const std::int64_t version = database_->SchemaVersion();
  if (version > kSchemaVersion) {
    Refuse("its tables are of version " + std::to_string(version) + ", and this vrx knows version " +
           std::to_string(kSchemaVersion) + ": it was made by a newer one, which must be used");
  }
  if (version < 1) Refuse("the version of its tables is " + std::to_string(version));
  if (version == kSchemaVersion) return;
  try {
    Migrate();
  } catch (const StoreError& error) {
    Refuse("its tables are of version " + std::to_string(version) + " and could not be brought to version " +
           std::to_string(kSchemaVersion) + ": " + error.what());
  }
}

void DatabaseStore::Migrate() {
  Transaction transaction(*database_);
  const std::int64_t version = database_->SchemaVersion();
  if (version == kSchemaVersion) return;  // another process was first
  const std::string copy = database_->KeepCopy(version);
  MakeTables(version);
  const std::string change = std::to_string(version) + " to " + std::to_string(kSchemaVersion);
  AppendTrail(*database_, {}, "migrate tables", change);
  transaction.Commit();
  notice_ = database_->Name() + ": its tables went from version " + change;
  if (!copy.empty()) notice_ += "; " + copy;
}

JobInfo DatabaseStore::Info() {
  const Snapshot snapshot(*database_);
  JobInfo info;
  Statement job(*database_, "SELECT name, created, library FROM job");
  if (!job.Step()) Refuse("the table job has no row");
  info.name = job.Text(0);
  info.created = job.Text(1);
  info.library = job.Text(2);
  job.Reset();
  info.schema = kSchemaVersion;
  info.standards = IntegerOf(*database_, "SELECT COUNT(*) FROM standard WHERE removed = 0");
  info.batches = IntegerOf(*database_, "SELECT COUNT(*) FROM batch");
  info.trials = IntegerOf(*database_, "SELECT CAST(COALESCE(SUM(trials), 0) AS BIGINT) FROM batch");
  info.decisions = IntegerOf(*database_, "SELECT COUNT(*) FROM decision");
  info.profiles = IntegerOf(*database_, "SELECT COUNT(*) FROM profile");
  info.recipes = IntegerOf(*database_, "SELECT COUNT(*) FROM recipe WHERE removed = 0");
  info.head = TrailHead(*database_);
  return info;
}

std::map<std::int64_t, std::vector<std::int32_t>> DatabaseStore::GeometriesOfVersions() {
  std::map<std::int64_t, std::vector<std::int32_t>> geometries;
  Statement curves(
      *database_,
      "SELECT v.id, c.\"Angle\" FROM standard s JOIN standard_version v ON v.standard = s.id AND "
      "v.version = s.version JOIN curve c ON c.standard_version = v.id WHERE s.removed = 0 ORDER "
      "BY c.id");
  while (curves.Step()) geometries[curves.Integer(0)].push_back(GeometryIn(curves, 1));
  return geometries;
}

std::vector<StandardEntry> DatabaseStore::Standards() {
  const Snapshot snapshot(*database_);
  std::map<std::int64_t, std::vector<std::int32_t>> geometries = GeometriesOfVersions();
  std::vector<StandardEntry> entries;
  Statement rows(
      *database_,
      "SELECT v.id, s.name, v.version, v.added, v.conditions, EXISTS(SELECT 1 FROM tolerance t "
      "WHERE t.standard_version = v.id), (SELECT COUNT(*) FROM standard_version w JOIN judgement j "
      "ON j.standard_version = w.id WHERE w.standard = s.id) FROM standard s JOIN standard_version "
      "v ON v.standard = s.id AND v.version = s.version WHERE s.removed = 0 ORDER BY s.id");
  while (rows.Step()) {
    StandardEntry entry;
    entry.name = rows.Text(1);
    entry.version = static_cast<std::int32_t>(rows.Integer(2));
    entry.added = rows.Text(3);
    if (!rows.IsNull(4)) entry.conditions = ConditionsFrom(rows.Text(4));
    entry.hasLimits = rows.Integer(5) != 0;
    entry.trials = rows.Integer(6);
    entry.geometries = std::move(geometries[rows.Integer(0)]);
    entries.push_back(std::move(entry));
  }
  return entries;
}

void DatabaseStore::TakeVersion(std::int64_t number, Standard& standard) {
  Statement curves(
      *database_,
      "SELECT c.\"Angle\", c.samples, c.measured, m.content, c.id FROM curve c JOIN measuring m ON "
      "m.id = c.measuring WHERE c.standard_version = ? ORDER BY c.id");
  curves.Bind(number);
  while (curves.Step()) {
    MeasuredCurve curve;
    curve.geometry = GeometryIn(curves, 0);
    TakeCurve(*database_, curves, 1, "curve", curves.Integer(4), curve.samples);
    curve.date = curves.Text(2);
    curve.measuring = curves.Text(3);
    standard.curves.push_back(std::move(curve));
  }
  Statement limits(
      *database_,
      "SELECT \"Angle\", illuminant, limits FROM tolerance WHERE standard_version = ? ORDER BY id");
  limits.Bind(number);
  while (limits.Step()) {
    StandardLimits row;
    row.geometry = GeometryIn(limits, 0);
    if (!limits.IsNull(1)) row.illuminant = static_cast<std::int32_t>(limits.Integer(1));
    const std::vector<JudgeLimits> one = LimitsFrom(limits.Text(2));
    if (one.size() != 1) Refuse("a row of the table tolerance has not one limit");
    row.limits = one.front();
    standard.limits.push_back(std::move(row));
  }
}

std::optional<Standard> DatabaseStore::FindStandard(const std::string& name, std::int32_t version) {
  const Snapshot snapshot(*database_);
  Statement find(*database_,
                 "SELECT v.id, v.version, v.conditions FROM standard s JOIN standard_version v ON v.standard "
                 "= s.id WHERE s.name = ?1 AND CASE ?2 WHEN 0 THEN v.version = s.version AND s.removed = 0 "
                 "ELSE v.version = ?2 END");
  if (!find.Bind(name, version).Step()) return std::nullopt;
  Standard standard;
  standard.name = name;
  standard.version = static_cast<std::int32_t>(find.Integer(1));
  if (!find.IsNull(2)) standard.conditions = ConditionsFrom(find.Text(2));
  TakeVersion(find.Integer(0), standard);
  return standard;
}

std::optional<std::int64_t> DatabaseStore::NumberOfStandard(const std::string& name) {
  Statement find(*database_, "SELECT id FROM standard WHERE name = ? AND removed = 0");
  if (!find.Bind(name).Step()) return std::nullopt;
  return find.Integer(0);
}

void DatabaseStore::RemoveStandard(const std::string& name, bool evenWithTrials, const Author& author) {
  Transaction transaction(*database_);
  const std::optional<std::int64_t> number = NumberOfStandard(name);
  if (!number) RefuseUnknown(name);
  Statement count(
      *database_,
      "SELECT COUNT(*) FROM standard_version v JOIN judgement j ON j.standard_version = v.id WHERE "
      "v.standard = ?");
  count.Bind(*number).Step();
  const std::int64_t trials = count.Integer(0);
  count.Reset();
  if (trials > 0 && !evenWithTrials) {
    Refuse("standard \"" + name + "\" has " + std::to_string(trials) + (trials == 1 ? " trial" : " trials") +
           "; --with-trials removes it all the same, and keeps them");
  }
  Statement update(*database_, "UPDATE standard SET removed = 1 WHERE id = ?");
  update.Bind(*number).Run();
  AppendTrail(*database_, author, "remove standard", name);
  transaction.Commit();
}

void DatabaseStore::RenameStandard(const std::string& from, const std::string& to, const Author& author) {
  Transaction transaction(*database_);
  const std::optional<std::int64_t> number = NumberOfStandard(from);
  if (!number) RefuseUnknown(from);
  Statement taken(*database_, "SELECT 1 FROM standard WHERE name = ?");
  if (to.empty()) Refuse("a standard needs a name");
  if (taken.Bind(to).Step()) Refuse("there is, or was, a standard \"" + to + "\" already");
  Statement update(*database_, "UPDATE standard SET name = ? WHERE id = ?");
  update.Bind(to, *number).Run();
  AppendTrail(*database_, author, "rename standard", from + " to " + to);
  transaction.Commit();
}

std::vector<BatchEntry> DatabaseStore::Batches() {
  std::vector<BatchEntry> entries;
  Statement rows(*database_, "SELECT id, trials, taken, source, digest FROM batch ORDER BY id");
  while (rows.Step()) {
    entries.push_back({rows.Integer(0), rows.Integer(1), std::string(rows.Text(2)), std::string(rows.Text(3)),
                       std::string(rows.Text(4))});
  }
  return entries;
}

std::vector<Curve> DatabaseStore::Readings(std::int64_t trial) {
  std::vector<Curve> readings;
  Statement rows(*database_, "SELECT samples FROM reading WHERE trial = ? ORDER BY place");
  rows.Bind(trial);
  while (rows.Step()) TakeCurve(*database_, rows, 0, "reading", trial, readings.emplace_back());
  return readings;
}

void DatabaseStore::Decide(std::int64_t trial, bool isAccepted, const Author& author) {
  Transaction transaction(*database_);
  Statement find(*database_, "SELECT name FROM trial WHERE id = ?");
  if (!find.Bind(trial).Step()) Refuse("there is no trial " + std::to_string(trial));
  const std::string subject = std::to_string(trial) + ": " + std::string(find.Text(0));
  find.Reset();
  const std::int64_t row =
      AppendTrail(*database_, author, isAccepted ? "accept trial" : "reject trial", subject);
  Statement insert(*database_, "INSERT INTO decision(id, trial, accepted, trail) VALUES(?, ?, ?, ?)");
  insert.Bind(NextNumber(*database_, "decision"), trial, static_cast<std::int32_t>(isAccepted), row).Run();
  transaction.Commit();
}

std::vector<Profile> DatabaseStore::Profiles() {
  std::vector<Profile> profiles;
  Statement rows(*database_, "SELECT name, options FROM profile ORDER BY name");
  while (rows.Step()) {
    Profile& profile = profiles.emplace_back();
    profile.name = rows.Text(0);
    TakeOptions(rows.Text(1), profile);
  }
  return profiles;
}

void DatabaseStore::SetProfile(const Profile& profile, const Author& author) {
  if (profile.name.empty()) Refuse("a profile needs a name");
  Transaction transaction(*database_);
  const std::string options = OptionsText(profile);
  Statement insert(*database_,
                   "INSERT INTO profile VALUES(?1, ?2) ON CONFLICT(name) DO UPDATE SET options = ?2");
  insert.Bind(profile.name, options).Run();
  ContentDigest digest;
  digest.Add(options);
  AppendTrail(*database_, author, "set profile", profile.name, digest.Finish());
  transaction.Commit();
}

}  // namespace

std::unique_ptr<Store> CreateStoreIn(std::unique_ptr<Database> database, const std::string& name,
                                     const Author& author) {
  auto store = std::make_unique<DatabaseStore>(std::move(database));
  store->Create(name, author);
  return store;
}

std::unique_ptr<Store> OpenStoreIn(std::unique_ptr<Database> database) {
  auto store = std::make_unique<DatabaseStore>(std::move(database));
  store->Recognise();
  return store;
}

}  // namespace vrx::store
