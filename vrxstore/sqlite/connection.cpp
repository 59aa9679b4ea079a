#include <vrxstore/sqlite/connection.h>

#include <cstring>
#include <limits>
#include <utility>

#include <vrxio/text/decimal.h>
#include <vrxstore/records/records.h>

namespace vrx::store {

Statement::Statement(Connection& connection, const std::string& sql) : connection_(connection) {
  sqlite3_stmt* statement = nullptr;
  connection.Check(sqlite3_prepare_v3(connection.Handle(), sql.c_str(), static_cast<int>(sql.size()), 0,
                                      &statement, nullptr));
  statement_.reset(statement);
}

void Statement::Check(int code) const {
  connection_.Check(code);
}

Statement& Statement::Reset() {
  sqlite3_reset(statement_.get());
  return *this;
}

bool Statement::Step() {
  const int code = sqlite3_step(statement_.get());
  if (code == SQLITE_ROW) return true;
  Reset();
  if (code != SQLITE_DONE) connection_.Fail(code);
  return false;
}

std::string_view Statement::Text(int column) const {
  const int type = sqlite3_column_type(statement_.get(), column);
  if (type == SQLITE_NULL) return {};
  if (type != SQLITE_TEXT && type != SQLITE_BLOB) connection_.Fail(SQLITE_CORRUPT);
  const void* const bytes = sqlite3_column_blob(statement_.get(), column);
  const int count = sqlite3_column_bytes(statement_.get(), column);
  return {static_cast<const char*>(bytes), static_cast<std::size_t>(count)};
}

void Statement::BindOne(int place, std::int64_t value) {
  Check(sqlite3_bind_int64(statement_.get(), place, value));
}
void Statement::BindOne(int place, double value) {
  Check(sqlite3_bind_double(statement_.get(), place, value));
}
void Statement::BindOne(int place, std::string_view text) {
  if (text.find('\0') != std::string_view::npos)
    throw io::InputError(connection_.Path() +
                         ": a name or a text has a zero byte in it, which a job does not keep");
  if (text.data() == nullptr) text = "";
  Check(sqlite3_bind_text64(statement_.get(), place, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8));
}
void Statement::BindOne(int place, const Bytes& bytes) {
  const char* const data = bytes.view.data() != nullptr ? bytes.view.data() : "";
  Check(sqlite3_bind_blob64(statement_.get(), place, data, bytes.view.size(), SQLITE_STATIC));
}
void Statement::BindOne(int place, std::nullptr_t) {
  Check(sqlite3_bind_null(statement_.get(), place));
}

Connection::Connection(std::string path, bool creates, double wait) : path_(std::move(path)), wait_(wait) {
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
}

void Connection::Check(int code) const {
  if (code != SQLITE_OK) Fail(code);
}

std::string Connection::ReasonFor(int code) const {
  std::string own = sqlite3_errmsg(handle_.get());
  const int system = sqlite3_system_errno(handle_.get());
  const std::string cause = system != 0 ? std::string(": ") + std::strerror(system) : "";
  switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return "another process is writing into it, and did not end within " + io::ShortestText(wait_) +
             " s; nothing of this run was stored: run it again, or wait longer with --wait";
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

void Connection::Fail(int code) const {
  throw StoreError(path_ + ": " + ReasonFor(code));
}

void Connection::Execute(const char* sql) {
  Check(sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr));
}

std::int64_t Connection::Number(const std::string& sql) {
  Statement statement(*this, sql);
  return statement.Step() ? statement.Integer(0) : 0;
}

Transaction::Transaction(Connection& connection) : connection_(connection) {
  connection_.Execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  Rollback();
}

void Transaction::Commit() {
  connection_.Execute("COMMIT");
  isOpen_ = false;
}

// A failure may have ended the transaction already.
void Transaction::Rollback() {
  if (isOpen_ && sqlite3_get_autocommit(connection_.Handle()) == 0)
    sqlite3_exec(connection_.Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
  isOpen_ = false;
}

Snapshot::Snapshot(Connection& connection)
    : connection_(connection), isOwn_(sqlite3_get_autocommit(connection.Handle()) != 0) {
  if (isOwn_) connection_.Execute("BEGIN");
}

Snapshot::~Snapshot() {
  if (isOwn_) sqlite3_exec(connection_.Handle(), "COMMIT", nullptr, nullptr, nullptr);
}

}  // namespace vrx::store
