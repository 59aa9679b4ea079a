#include <vrxstore/sqlite/sqlite_database.h>

#include <cstring>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include <vrxio/text/path.h>
#include <vrxstore/database/system_user.h>
#include <vrxstore/records/stored_form.h>
#include <vrxstore/sqlite/schema.h>

namespace vrx::store {
namespace {

class SqliteStatement final : public PreparedStatement {
 public:
  SqliteStatement(const SqliteDatabase& database, const std::string& sql) : database_(database) {
    sqlite3_stmt* statement = nullptr;
    database.Check(sqlite3_prepare_v3(database.Handle(), sql.c_str(), static_cast<int>(sql.size()), 0,
                                      &statement, nullptr));
    statement_.reset(statement);
  }

  void BindInteger(std::optional<std::int64_t> value) override {
    database_.Check(value ? sqlite3_bind_int64(statement_.get(), ++place_, *value) : BindNull());
  }
  void BindNumber(std::optional<double> value) override {
    database_.Check(value ? sqlite3_bind_double(statement_.get(), ++place_, *value) : BindNull());
  }
  void BindText(std::optional<std::string_view> text) override {
    if (!text) return database_.Check(BindNull());
    if (text->find('\0') != std::string_view::npos)
      throw io::InputError(database_.Name() + ": " + kZeroByteReason);
    const char* const data = text->data() != nullptr ? text->data() : "";
    database_.Check(
        sqlite3_bind_text64(statement_.get(), ++place_, data, text->size(), SQLITE_STATIC, SQLITE_UTF8));
  }
  void BindBytes(std::string_view bytes) override { BindBlob(bytes, SQLITE_STATIC); }
  void BindDoubles(std::span<const double> numbers) override {
    std::string bytes;
    AppendDoubles(numbers, bytes);
    BindBlob(bytes, SQLITE_TRANSIENT);
  }

  void Reset() override {
    sqlite3_reset(statement_.get());
    place_ = 0;
  }
  bool Step() override {
    const int code = sqlite3_step(statement_.get());
    if (code == SQLITE_ROW) return true;
    Reset();
    if (code != SQLITE_DONE) database_.Fail(code);
    return false;
  }

  std::int64_t Integer(int column) const override { return sqlite3_column_int64(statement_.get(), column); }
  bool IsNull(int column) const override {
    return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
  }
  std::string_view Text(int column) const override {
    const int type = sqlite3_column_type(statement_.get(), column);
    if (type == SQLITE_NULL) return {};
    if (type != SQLITE_TEXT && type != SQLITE_BLOB) database_.Fail(SQLITE_CORRUPT);
    const void* const bytes = sqlite3_column_blob(statement_.get(), column);
    const int count = sqlite3_column_bytes(statement_.get(), column);
    return {static_cast<const char*>(bytes), static_cast<std::size_t>(count)};
  }
  void TakeDoubles(int column, std::span<double> numbers) const override {
    DoublesFrom(Text(column), numbers);
  }

 private:
  int BindNull() { return sqlite3_bind_null(statement_.get(), ++place_); }
  void BindBlob(std::string_view bytes, sqlite3_destructor_type life) {
    const char* const data = bytes.data() != nullptr ? bytes.data() : "";
    database_.Check(sqlite3_bind_blob64(statement_.get(), ++place_, data, bytes.size(), life));
  }

  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  const SqliteDatabase& database_;
  std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
  int place_ = 0;  // that was bound last
};

bool Exists(const std::string& path) {
  std::error_code code;
  return std::filesystem::exists(io::PathOf(path), code);
}

// Copies a job, as it is at one moment, into a new file, which is there as a whole or not at all.
void CopyJob(const SqliteDatabase& from, double wait, const std::string& path) {
  if (Exists(path)) throw StoreError(path + ": there is a file already; a backup goes into a new one");
  const std::string temporary = path + ".new";
  std::error_code code;
  std::filesystem::remove(io::PathOf(temporary), code);
  {
    SqliteDatabase copy(temporary, true, wait);
    sqlite3_backup* const backup = sqlite3_backup_init(copy.Handle(), "main", from.Handle(), "main");
    if (backup == nullptr) copy.Fail(sqlite3_errcode(copy.Handle()));
    int stepped = SQLITE_BUSY;
    constexpr int kPauseMs = 50;
    for (double waited = 0; waited <= wait * 1000; waited += kPauseMs) {
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

}  // namespace

SqliteDatabase::SqliteDatabase(std::string path, bool creates, double wait)
    : path_(std::move(path)), wait_(wait) {
  sqlite3* handle = nullptr;
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_FULLMUTEX | SQLITE_OPEN_EXRESCODE |
                    (creates ? SQLITE_OPEN_CREATE : 0);
  // A name that begins with a dash or a colon is a file, too.
  const std::string file = path_.starts_with('/') ? path_ : "./" + path_;
  const int code = sqlite3_open_v2(file.c_str(), &handle, flags, nullptr);
  handle_.reset(handle);
  if (handle == nullptr) throw StoreError(path_ + ": not enough memory to open it");
  Check(code);
  constexpr double kMilliseconds = 1000;
  const double most = std::numeric_limits<int>::max();
  sqlite3_busy_timeout(handle, static_cast<int>(wait * kMilliseconds < most ? wait * kMilliseconds : most));
  sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
  Execute("PRAGMA cell_size_check = ON");
  if (creates) Execute("PRAGMA encoding = 'UTF-8'");
}

void SqliteDatabase::Check(int code) const {
  if (code != SQLITE_OK) Fail(code);
}

std::string SqliteDatabase::ReasonFor(int code) const {
  std::string own = sqlite3_errmsg(handle_.get());
  const int system = sqlite3_system_errno(handle_.get());
  const std::string cause = system != 0 ? std::string(": ") + std::strerror(system) : "";
  switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return BusyReason(wait_);
    case SQLITE_NOTADB:
      return "this is no job of vrx: its content is no database";
    case SQLITE_CORRUPT:
      return "the database is damaged (" + own + "); a backup has what was stored before";
    case SQLITE_FULL:
      return "the disk is full; nothing of this run was stored";
    case SQLITE_READONLY:
      return "it can be read, but not written" + cause;
    case SQLITE_CANTOPEN:
      return "it cannot be opened, or its folder takes no files" + cause;
    case SQLITE_IOERR:
      return "it cannot be read or written" + cause + " (" + own + ")";
    case SQLITE_NOMEM:
      return "not enough memory";
    case SQLITE_TOOBIG:
      return "a text is too long to be stored";
    default:
      return own;
  }
}

void SqliteDatabase::Fail(int code) const {
  throw StoreError(path_ + ": " + ReasonFor(code));
}

void SqliteDatabase::Execute(const char* sql) {
  Check(sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr));
}

std::unique_ptr<PreparedStatement> SqliteDatabase::Prepare(const std::string& sql, RowCount /*count*/) {
  return std::make_unique<SqliteStatement>(*this, sql);
}

std::unique_ptr<BoundPlaces> SqliteDatabase::PrepareRows(const std::string& table,
                                                         const std::string& columns) {
  std::string places = "?";
  for (const char character : columns) {
    if (character == ',') places += ", ?";
  }
  return Prepare("INSERT INTO " + table + "(" + columns + ") VALUES(" + places + ")", RowCount::kFew);
}

// A failure may have ended the transaction already.
void SqliteDatabase::Rollback() noexcept {
  if (sqlite3_get_autocommit(handle_.get()) == 0)
    sqlite3_exec(handle_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void SqliteDatabase::BeginReading() {
  if (readings_ == 0 && sqlite3_get_autocommit(handle_.get()) != 0) {
    Execute("BEGIN");
    isReadingAlone_ = true;
  }
  ++readings_;
}

void SqliteDatabase::EndReading() noexcept {
  if (--readings_ > 0 || !isReadingAlone_) return;
  sqlite3_exec(handle_.get(), "COMMIT", nullptr, nullptr, nullptr);
  isReadingAlone_ = false;
}

void SqliteDatabase::RequireEmpty() {
  if (IntegerOf(*this, "SELECT COUNT(*) FROM sqlite_schema") > 0)
    throw StoreError(path_ + ": there is a database already; a job is made in a new file");
  Execute(("PRAGMA application_id = " + std::to_string(kApplicationId)).c_str());
}

std::int64_t SqliteDatabase::SchemaVersion() {
  if (IntegerOf(*this, "PRAGMA application_id") != kApplicationId)
    throw StoreError(path_ + ": this is a database of another program and no job of vrx");
  // What was committed outlives a power cut right behind it.
  if (sqlite3_get_autocommit(handle_.get()) != 0) Execute("PRAGMA synchronous = EXTRA");
  return IntegerOf(*this, "PRAGMA user_version");
}

void SqliteDatabase::SetSchemaVersion(std::int32_t version) {
  Execute(("PRAGMA user_version = " + std::to_string(version)).c_str());
}

const char* SqliteDatabase::TablesOf(std::int32_t version) const {
  return version == 1 ? kFirstTables : kLaterTables[version - 2];
}

// A copy that is there comes from a run that was killed behind it: a copy is whole or not there.
std::string SqliteDatabase::KeepCopy(std::int64_t version) {
  const std::string copy = path_ + ".v" + std::to_string(version);
  // It is made by another connection: one that may write cannot be copied from.
  if (!Exists(copy)) CopyJob(SqliteDatabase(path_, false, wait_), wait_, copy);
  return copy + " is a copy of it as it was";
}

std::string SqliteDatabase::User() const {
  return SystemUser();
}

std::vector<std::string> SqliteDatabase::CheckPages() {
  std::vector<std::string> faults;
  Statement pages(*this, "PRAGMA integrity_check(20)");
  while (pages.Step()) {
    if (pages.Text(0) != "ok") faults.emplace_back(pages.Text(0));
  }
  Statement links(*this, "PRAGMA foreign_key_check");
  while (links.Step() && faults.size() < 40) {
    faults.push_back("table " + std::string(links.Text(0)) + ", row " + std::to_string(links.Integer(1)) +
                     ": what it refers to in " + std::string(links.Text(2)) + " is not there");
  }
  return faults;
}

void SqliteDatabase::Backup(const std::string& path) {
  CopyJob(*this, wait_, path);
}

std::unique_ptr<Database> CreateSqliteFile(const std::string& path, double wait) {
  std::error_code code;
  if (Exists(path) && std::filesystem::file_size(io::PathOf(path), code) > 0)
    throw StoreError(path + ": there is a file already; a job is made in a new one");
  return std::make_unique<SqliteDatabase>(path, true, wait);
}

std::unique_ptr<Database> OpenSqliteFile(const std::string& path, double wait) {
  if (!Exists(path)) throw StoreError(path + ": there is no such job; vrx job create makes one");
  return std::make_unique<SqliteDatabase>(path, false, wait);
}

}  // namespace vrx::store
