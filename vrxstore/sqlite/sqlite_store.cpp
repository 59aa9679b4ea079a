// A job in an SQLite file.

#include <filesystem>
#include <system_error>
#include <utility>

#include <vrxio/text/path.h>
#include <vrxstore/records/stored_form.h>
#include <vrxstore/records/trail.h>
#include <vrxstore/sqlite/parts.h>
#include <vrxstore/sqlite/schema.h>
#include <vrxstore/store.h>
#include <vrxmath/foundation/numbers.h>

namespace vrx::store {
namespace {

bool Exists(const std::string& path) {
  std::error_code code;
  return std::filesystem::exists(io::PathOf(path), code);
}

class SqliteCurves final : public CurveCursor {
 public:
  SqliteCurves(Connection& connection, std::string standard, std::int32_t geometry)
      : connection_(connection),
        standard_(std::move(standard)),
        rows_(connection, Query(!standard_.empty(), geometry)),
        standardOf_(
            connection,
            "SELECT v.standard FROM curve c JOIN standard_version v ON v.id = c.standard_version WHERE "
            "c.id = ?") {
    Seek(0);
  }

  bool Next(Row& row) override {
    if (!rows_.Step()) return false;
    row.place = rows_.Integer(0);
    row.standard = rows_.Text(1);
    row.curve.geometry = GeometryIn(rows_, 2);
    TakeCurve(connection_, rows_.Text(3), "curve", row.place, row.curve.samples);
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
  static std::string Query(bool isOne, std::int32_t geometry) {
    std::string sql =
        "SELECT c.id, s.name, c.Angle, c.samples, c.measured, m.content FROM standard s CROSS JOIN "
        "standard_version v ON v.standard = s.id AND v.version = s.version CROSS JOIN curve c ON "
        "c.standard_version = v.id CROSS JOIN measuring m ON m.id = c.measuring WHERE s.removed = 0 AND s.id "
        ">= ?1 AND (s.id > ?1 OR c.id >= ?2) AND ";
    sql += isOne ? "s.name = ?3" : "?3 IS NOT NULL";
    return sql + AngleCondition("c", geometry) + " ORDER BY s.id, c.id";
  }

  Connection& connection_;
  std::string standard_;
  Statement rows_, standardOf_;
};

// Copies a job, as it is at one moment, into a new file, which is there as a whole or not at all.
void CopyJob(const Connection& from, const std::string& path) {
  if (Exists(path)) throw StoreError(path + ": there is a file already; a backup goes into a new one");
  const std::string temporary = path + ".new";
  std::error_code code;
  std::filesystem::remove(io::PathOf(temporary), code);
  {
    Connection copy(temporary, true, from.Wait());
    sqlite3_backup* const backup = sqlite3_backup_init(copy.Handle(), "main", from.Handle(), "main");
    if (backup == nullptr) copy.Fail(sqlite3_errcode(copy.Handle()));
    int stepped = SQLITE_BUSY;
    constexpr int kPauseMs = 50;
    for (double waited = 0; waited <= from.Wait() * 1000; waited += kPauseMs) {
      stepped = sqlite3_backup_step(backup, -1);
      if ((stepped & 0xFF) != SQLITE_BUSY && (stepped & 0xFF) != SQLITE_LOCKED) break;
      sqlite3_sleep(kPauseMs);
    }
    sqlite3_backup_finish(backup);
    if (stepped != SQLITE_DONE) copy.Fail(stepped);
  }
  std::filesystem::rename(io::PathOf(temporary), io::PathOf(path), code);
  if (code) throw StoreError(path + ": " + code.message());
}

class SqliteStore final : public Store {
 public:
  SqliteStore(std::string path, bool creates, double wait) : connection_(std::move(path), creates, wait) {}

  void Create(const std::string& name, const Author& author);
  void Recognise();

  JobInfo Info() override;
  std::vector<StandardEntry> Standards() override;
  std::optional<Standard> FindStandard(const std::string& name, std::int32_t version) override;
  std::unique_ptr<CurveCursor> StandardCurves(const std::string& standard, std::int32_t geometry) override {
    return std::make_unique<SqliteCurves>(connection_, standard, geometry);
  }
  bool HaveGeometries() override {
    return connection_.Number("SELECT EXISTS(SELECT 1 FROM curve WHERE Angle IS NOT NULL)") != 0;
  }
  AddedStandards AddStandards(std::span<const Standard> standards, const Author& author) override;
  void RemoveStandard(const std::string& name, bool evenWithTrials, const Author& author) override;
  void RenameStandard(const std::string& from, const std::string& to, const Author& author) override;

  std::unique_ptr<BatchWriter> BeginBatch(const std::string& source, const Author& author) override {
    return WriteBatch(connection_, source, author);
  }
  std::unique_ptr<TrialCursor> Trials(const TrialFilter& filter) override {
    return ReadTrials(connection_, filter);
  }
  std::vector<BatchEntry> Batches() override;
  std::vector<Curve> Readings(std::int64_t trial) override;
  void Decide(std::int64_t trial, bool isAccepted, const Author& author) override;

  std::vector<Profile> Profiles() override;
  void SetProfile(const Profile& profile, const Author& author) override;
  std::vector<MadeRecipe> Recipes() override { return ReadRecipes(connection_); }
  AddedRecipes AddRecipes(std::span<const MadeRecipe> recipes, const Author& author) override {
    return StoreRecipes(connection_, recipes, author);
  }
  void RemoveRecipe(std::int64_t number, const Author& author) override {
    DropRecipe(connection_, number, author);
  }
  std::unique_ptr<TrailCursor> Trail() override { return ReadTrail(connection_); }
  std::vector<std::string> CheckPages() override;
  void Backup(const std::string& path) override { CopyJob(connection_, path); }
  const std::string& Notice() const override { return notice_; }

 private:
  std::int64_t SchemaVersion() { return connection_.Number("PRAGMA user_version"); }
  void SetSchemaVersion();
  void Migrate();
  [[noreturn]] void Refuse(const std::string& reason) const {
    throw StoreError(connection_.Path() + ": " + reason);
  }
  [[noreturn]] void RefuseUnknown(const std::string& standard) const {
    Refuse("there is no standard \"" + standard + "\"");
  }
  std::optional<std::int64_t> NumberOfStandard(const std::string& name);
  void AddVersion(const Standard& standard, std::int64_t number, std::int32_t version,
                  const std::string& digest);
  void AddOne(const Standard& standard, const Author& author, AddedStandards& added);
  void TakeGeometries(std::int64_t version, StandardEntry& entry);
  void TakeVersion(std::int64_t number, Standard& standard);

  Connection connection_;
  std::string notice_;
};

void SqliteStore::SetSchemaVersion() {
  connection_.Execute(("PRAGMA user_version = " + std::to_string(kSchemaVersion)).c_str());
}

void SqliteStore::Create(const std::string& name, const Author& author) {
  connection_.Execute("PRAGMA encoding = 'UTF-8'");
  Transaction transaction(connection_);
  if (connection_.Number("SELECT COUNT(*) FROM sqlite_schema") > 0)
    Refuse("there is a database already; a job is made in a new file");
  connection_.Execute(kFirstTables);
  for (const char* const tables : kLaterTables) connection_.Execute(tables);
  connection_.Execute(("PRAGMA application_id = " + std::to_string(kApplicationId)).c_str());
  SetSchemaVersion();
  Statement insert(connection_, "INSERT INTO job VALUES(1, ?, ?, ?)");
  insert.Bind(name, NowText(), VRX_VERSION).Run();
  AppendTrail(connection_, author, "create job", name);
  transaction.Commit();
}

void SqliteStore::Recognise() {
  const std::int64_t application = connection_.Number("PRAGMA application_id");
  if (application != kApplicationId) Refuse("this is a database of another program and no job of vrx");
  const std::int64_t version = SchemaVersion();
  if (version > kSchemaVersion) {
    Refuse("its tables are of version " + std::to_string(version) + ", and this vrx knows version " +
           std::to_string(kSchemaVersion) + ": it was made by a newer one, which must be used");
  }
  if (version < 1) Refuse("the version of its tables is " + std::to_string(version));
  // What was committed outlives a power cut right behind it.
  connection_.Execute("PRAGMA synchronous = EXTRA");
  if (version == kSchemaVersion) return;
  try {
    Migrate();
  } catch (const StoreError& error) {
    Refuse("its tables are of version " + std::to_string(version) + " and could not be brought to version " +
           std::to_string(kSchemaVersion) +
           ", which changes the file and makes a copy beside it: " + error.what());
  }
}

void SqliteStore::Migrate() {
  Transaction transaction(connection_);
  const std::int64_t version = SchemaVersion();
  if (version == kSchemaVersion) return;  // another process was first
  // A copy that is there comes from a run that was killed behind it: a copy is whole or not there.
  const std::string copy = connection_.Path() + ".v" + std::to_string(version);
  // It is made by another connection: one that may write cannot be copied from.
  if (!Exists(copy)) CopyJob(Connection(connection_.Path(), false, connection_.Wait()), copy);
  for (std::int64_t from = version; from < kSchemaVersion; ++from)
    connection_.Execute(kLaterTables[from - 1]);
  SetSchemaVersion();
  const std::string change = std::to_string(version) + " to " + std::to_string(kSchemaVersion);
  AppendTrail(connection_, {}, "migrate tables", change);
  transaction.Commit();
  notice_ = connection_.Path() + ": its tables went from version " + change + "; " + copy +
            " is a copy of it as it was";
}

JobInfo SqliteStore::Info() {
  const Snapshot snapshot(connection_);
  JobInfo info;
  Statement job(connection_, "SELECT name, created, library FROM job");
  if (!job.Step()) Refuse("the table job has no row");
  info.name = job.Text(0);
  info.created = job.Text(1);
  info.library = job.Text(2);
  job.Reset();
  info.schema = kSchemaVersion;
  info.standards = connection_.Number("SELECT COUNT(*) FROM standard WHERE removed = 0");
  info.batches = connection_.Number("SELECT COUNT(*) FROM batch");
  info.trials = connection_.Number("SELECT COALESCE(SUM(trials), 0) FROM batch");
  info.decisions = connection_.Number("SELECT COUNT(*) FROM decision");
  info.profiles = connection_.Number("SELECT COUNT(*) FROM profile");
  info.recipes = connection_.Number("SELECT COUNT(*) FROM recipe WHERE removed = 0");
  info.head = TrailHead(connection_);
  return info;
}

void SqliteStore::TakeGeometries(std::int64_t version, StandardEntry& entry) {
  Statement curves(connection_, "SELECT Angle FROM curve WHERE standard_version = ? ORDER BY id");
  curves.Bind(version);
  while (curves.Step()) entry.geometries.push_back(GeometryIn(curves, 0));
}

std::vector<StandardEntry> SqliteStore::Standards() {
  const Snapshot snapshot(connection_);
  std::vector<StandardEntry> entries;
  Statement rows(
      connection_,
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
    TakeGeometries(rows.Integer(0), entry);
    entries.push_back(std::move(entry));
  }
  return entries;
}

void SqliteStore::TakeVersion(std::int64_t number, Standard& standard) {
  Statement curves(connection_,
                   "SELECT c.Angle, c.samples, c.measured, m.content, c.id FROM curve c JOIN measuring m ON "
                   "m.id = c.measuring WHERE c.standard_version = ? ORDER BY c.id");
  curves.Bind(number);
  while (curves.Step()) {
    MeasuredCurve curve;
    curve.geometry = GeometryIn(curves, 0);
    TakeCurve(connection_, curves.Text(1), "curve", curves.Integer(4), curve.samples);
    curve.date = curves.Text(2);
    curve.measuring = curves.Text(3);
    standard.curves.push_back(std::move(curve));
  }
  Statement limits(connection_,
                   "SELECT Angle, illuminant, limits FROM tolerance WHERE standard_version = ? ORDER BY id");
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

std::optional<Standard> SqliteStore::FindStandard(const std::string& name, std::int32_t version) {
  const Snapshot snapshot(connection_);
  Statement find(connection_,
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

void SqliteStore::AddVersion(const Standard& standard, std::int64_t number, std::int32_t version,
                             const std::string& digest) {
  Statement insert(connection_,
                   "INSERT INTO standard_version(standard, version, added, conditions, digest) VALUES(?, ?, "
                   "?, ?, ?)");
  if (standard.conditions) {
    insert.Bind(number, version, NowText(), ConditionsText(*standard.conditions), BlobOf(digest)).Run();
  } else {
    insert.Bind(number, version, NowText(), nullptr, BlobOf(digest)).Run();
  }
  const std::int64_t row = connection_.LastRow();
  MeasuringTable measuring(connection_);
  Statement curves(connection_,
                   "INSERT INTO curve(standard_version, Angle, samples, measured, measuring) VALUES(?, "
                   "CAST(NULLIF(?, '') AS INTEGER), ?, ?, ?)");
  for (const MeasuredCurve& curve : standard.curves) {
    std::string bytes;
    AppendDoubles(curve.samples, bytes);
    const std::int64_t how = measuring.NumberOf(curve.measuring);
    curves.Bind(row, GeometryText(curve.geometry), BlobOf(bytes), curve.date, how).Run();
  }
  Statement limits(connection_,
                   "INSERT INTO tolerance(standard_version, Angle, illuminant, limits) VALUES(?, "
                   "CAST(NULLIF(?, '') AS INTEGER), NULLIF(?, -1), ?)");
  for (const StandardLimits& one : standard.limits)
    limits.Bind(row, GeometryText(one.geometry), one.illuminant, BlobOf(LimitsBytes({&one.limits, 1}))).Run();
}

void SqliteStore::AddOne(const Standard& standard, const Author& author, AddedStandards& added) {
  if (standard.name.empty()) Refuse("a standard needs a name");
  if (standard.curves.empty()) Refuse("standard \"" + standard.name + "\" has no curve");
  const std::string digest = DigestOf(standard);
  Statement find(connection_,
                 "SELECT s.id, s.version, s.removed, v.digest FROM standard s JOIN standard_version v ON "
                 "v.standard = s.id AND v.version = s.version WHERE s.name = ?");
  if (!find.Bind(standard.name).Step()) {
    Statement insert(connection_, "INSERT INTO standard(name, version) VALUES(?, 1)");
    insert.Bind(standard.name).Run();
    AddVersion(standard, connection_.LastRow(), 1, digest);
    AppendTrail(connection_, author, "add standard", standard.name, digest);
    ++added.added;
    return;
  }
  const bool wasRemoved = find.Integer(2) != 0;
  const std::int64_t number = find.Integer(0);
  const auto version = static_cast<std::int32_t>(find.Integer(1)) + 1;
  const bool isSame = !wasRemoved && find.Text(3) == digest;
  find.Reset();
  if (isSame) {
    ++added.unchanged;
    return;
  }
  AddVersion(standard, number, version, digest);
  Statement update(connection_, "UPDATE standard SET version = ?, removed = 0 WHERE id = ?");
  update.Bind(version, number).Run();
  AppendTrail(connection_, author, "change standard",
              standard.name + " to version " + std::to_string(version), digest);
  ++added.changed;
}

AddedStandards SqliteStore::AddStandards(std::span<const Standard> standards, const Author& author) {
  AddedStandards added;
  Transaction transaction(connection_);
  for (const Standard& standard : standards) AddOne(standard, author, added);
  transaction.Commit();
  return added;
}

std::optional<std::int64_t> SqliteStore::NumberOfStandard(const std::string& name) {
  Statement find(connection_, "SELECT id FROM standard WHERE name = ? AND removed = 0");
  if (!find.Bind(name).Step()) return std::nullopt;
  return find.Integer(0);
}

void SqliteStore::RemoveStandard(const std::string& name, bool evenWithTrials, const Author& author) {
  Transaction transaction(connection_);
  const std::optional<std::int64_t> number = NumberOfStandard(name);
  if (!number) RefuseUnknown(name);
  Statement count(
      connection_,
      "SELECT COUNT(*) FROM standard_version v JOIN judgement j ON j.standard_version = v.id WHERE "
      "v.standard = ?");
  count.Bind(*number).Step();
  const std::int64_t trials = count.Integer(0);
  count.Reset();
  if (trials > 0 && !evenWithTrials) {
    Refuse("standard \"" + name + "\" has " + std::to_string(trials) + (trials == 1 ? " trial" : " trials") +
           "; --with-trials removes it all the same, and keeps them");
  }
  Statement update(connection_, "UPDATE standard SET removed = 1 WHERE id = ?");
  update.Bind(*number).Run();
  AppendTrail(connection_, author, "remove standard", name);
  transaction.Commit();
}

void SqliteStore::RenameStandard(const std::string& from, const std::string& to, const Author& author) {
  Transaction transaction(connection_);
  const std::optional<std::int64_t> number = NumberOfStandard(from);
  if (!number) RefuseUnknown(from);
  Statement taken(connection_, "SELECT 1 FROM standard WHERE name = ?");
  if (to.empty()) Refuse("a standard needs a name");
  if (taken.Bind(to).Step()) Refuse("there is, or was, a standard \"" + to + "\" already");
  Statement update(connection_, "UPDATE standard SET name = ? WHERE id = ?");
  update.Bind(to, *number).Run();
  AppendTrail(connection_, author, "rename standard", from + " to " + to);
  transaction.Commit();
}

std::vector<BatchEntry> SqliteStore::Batches() {
  std::vector<BatchEntry> entries;
  Statement rows(connection_, "SELECT id, trials, taken, source, digest FROM batch ORDER BY id");
  while (rows.Step()) {
    entries.push_back({rows.Integer(0), rows.Integer(1), std::string(rows.Text(2)), std::string(rows.Text(3)),
                       std::string(rows.Text(4))});
  }
  return entries;
}

std::vector<Curve> SqliteStore::Readings(std::int64_t trial) {
  std::vector<Curve> readings;
  Statement rows(connection_, "SELECT samples FROM reading WHERE trial = ? ORDER BY place");
  rows.Bind(trial);
  while (rows.Step()) TakeCurve(connection_, rows.Text(0), "reading", trial, readings.emplace_back());
  return readings;
}

void SqliteStore::Decide(std::int64_t trial, bool isAccepted, const Author& author) {
  Transaction transaction(connection_);
  Statement find(connection_, "SELECT name FROM trial WHERE id = ?");
  if (!find.Bind(trial).Step()) Refuse("there is no trial " + std::to_string(trial));
  const std::string subject = std::to_string(trial) + ": " + std::string(find.Text(0));
  find.Reset();
  const std::int64_t row =
      AppendTrail(connection_, author, isAccepted ? "accept trial" : "reject trial", subject);
  Statement insert(connection_, "INSERT INTO decision(trial, accepted, trail) VALUES(?, ?, ?)");
  insert.Bind(trial, static_cast<std::int32_t>(isAccepted), row).Run();
  transaction.Commit();
}

std::vector<Profile> SqliteStore::Profiles() {
  std::vector<Profile> profiles;
  Statement rows(connection_, "SELECT name, options FROM profile ORDER BY name");
  while (rows.Step()) {
    Profile& profile = profiles.emplace_back();
    profile.name = rows.Text(0);
    TakeOptions(rows.Text(1), profile);
  }
  return profiles;
}

void SqliteStore::SetProfile(const Profile& profile, const Author& author) {
  if (profile.name.empty()) Refuse("a profile needs a name");
  Transaction transaction(connection_);
  const std::string options = OptionsText(profile);
  Statement insert(connection_,
                   "INSERT INTO profile VALUES(?1, ?2) ON CONFLICT(name) DO UPDATE SET options = ?2");
  insert.Bind(profile.name, options).Run();
  ContentDigest digest;
  digest.Add(options);
  AppendTrail(connection_, author, "set profile", profile.name, digest.Finish());
  transaction.Commit();
}

std::vector<std::string> SqliteStore::CheckPages() {
  std::vector<std::string> faults;
  Statement pages(connection_, "PRAGMA integrity_check(20)");
  while (pages.Step()) {
    if (pages.Text(0) != "ok") faults.emplace_back(pages.Text(0));
  }
  Statement links(connection_, "PRAGMA foreign_key_check");
  while (links.Step() && faults.size() < 40) {
    faults.push_back("table " + std::string(links.Text(0)) + ", row " + std::to_string(links.Integer(1)) +
                     ": what it refers to in " + std::string(links.Text(2)) + " is not there");
  }
  return faults;
}

}  // namespace

std::unique_ptr<Store> CreateStore(const std::string& path, const std::string& name, const Author& author,
                                   double wait) {
  std::error_code code;
  if (Exists(path) && std::filesystem::file_size(io::PathOf(path), code) > 0)
    throw StoreError(path + ": there is a file already; a job is made in a new one");
  auto store = std::make_unique<SqliteStore>(path, true, wait);
  store->Create(name, author);
  store->Recognise();
  return store;
}

std::unique_ptr<Store> OpenStore(const std::string& path, double wait) {
  if (!Exists(path)) throw StoreError(path + ": there is no such job; vrx job create makes one");
  auto store = std::make_unique<SqliteStore>(path, false, wait);
  store->Recognise();
  return store;
}

}  // namespace vrx::store
