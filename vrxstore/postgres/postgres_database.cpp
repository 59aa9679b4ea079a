#include <vrxstore/postgres/postgres_database.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <string_view>

#include <vrxstore/database/system_user.h>
#include <vrxstore/job_address.h>
#include <vrxstore/postgres/schema.h>
#include <vrxstore/postgres/statements.h>

namespace vrx::store {
namespace {

struct OptionsFreer {
  void operator()(PQconninfoOption* options) const { PQconninfoFree(options); }
};

void IgnoreNotice(void* /*state*/, const char* /*notice*/) {}

// A message of libpq in one line.
std::string InOneLine(const char* text) {
  std::string line = text != nullptr ? text : "";
  while (line.ends_with('\n')) line.pop_back();
  std::erase(line, '\t');
  std::ranges::replace(line, '\n', ' ');
  return line;
}

}  // namespace

void ServerValues::Clear() {
  types_.clear();
  values_.clear();
}

void ServerValues::AddNull(Oid type) {
  types_.push_back(type);
  values_.emplace_back(false, "");
}

void ServerValues::Add(Oid type, std::string bytes) {
  types_.push_back(type);
  values_.emplace_back(true, std::move(bytes));
}

ServerValues::Arrays ServerValues::ForLibrary() const {
  Arrays arrays;
  for (const auto& [isThere, bytes] : values_) {
    arrays.values.push_back(isThere ? bytes.data() : nullptr);
    arrays.lengths.push_back(static_cast<int>(bytes.size()));
    arrays.formats.push_back(1);
  }
  return arrays;
}

PostgresDatabase::PostgresDatabase(const std::string& url, double wait) : name_(ShownJob(url)), wait_(wait) {
  if (const std::string fault = FaultOfAddress(url); !fault.empty()) Fail(fault);
  char* error = nullptr;
  const std::unique_ptr<PQconninfoOption, OptionsFreer> options(PQconninfoParse(url.c_str(), &error));
  PQfreemem(error);  // it may quote a part of the password
  if (options == nullptr) Fail("this is no URL of a server: postgresql://user@host:port/database");
  for (const PQconninfoOption* option = options.get(); option->keyword != nullptr; ++option) {
    if (std::string_view(option->keyword) == "password" && option->val != nullptr) password_ = option->val;
  }
  Connect(url);
}

void PostgresDatabase::Connect(const std::string& url) {
  std::vector<const char*> keys, values;
  const auto add = [&](const char* key, const char* value) {
    keys.push_back(key);
    values.push_back(value);
  };
  // What stands before the URL holds where that does not say otherwise.
  if (std::getenv("PGCONNECT_TIMEOUT") == nullptr) add("connect_timeout", "10");
  add("dbname", url.c_str());
  add("fallback_application_name", "vrx");
  add("client_encoding", "UTF8");
  add(nullptr, nullptr);
  connection_.reset(PQconnectdbParams(keys.data(), values.data(), 1));
  if (connection_ == nullptr) Fail("not enough memory to open it");
  if (PQstatus(connection_.get()) != CONNECTION_OK)
    Fail("the server cannot be reached: " + WithoutPassword(InOneLine(PQerrorMessage(connection_.get()))));
  PQsetNoticeProcessor(connection_.get(), &IgnoreNotice, nullptr);
  constexpr int kOldest = 120000;
  if (PQserverVersion(connection_.get()) < kOldest) Fail("the server is older than PostgreSQL 12");
  // A station that lost its network must not keep others from writing for hours. Rows come as they are read, so the first ones
  // count; compiling a query takes seconds before them.
  Run("SELECT set_config('tcp_keepalives_idle', '30', false), set_config('tcp_keepalives_interval', '10', "
      "false), "
      "set_config('tcp_keepalives_count', '3', false), set_config('cursor_tuple_fraction', '0.001', false), "
      "set_config('jit', 'off', false)");
}

void PostgresDatabase::Fail(const std::string& reason) const {
  throw StoreError(name_ + ": " + reason);
}

std::string PostgresDatabase::WithoutPassword(std::string text) const {
  constexpr std::string_view kStars = "***";
  if (password_.empty()) return text;
  for (std::size_t at = text.find(password_); at != std::string::npos;
       at = text.find(password_, at + kStars.size()))
    text.replace(at, password_.size(), kStars);
  return text;
}

// Classes and codes of errors are those of the SQL standard and of PostgreSQL's appendix A.
std::string PostgresDatabase::ReasonFor(const PGresult* result) const {
  const char* const primary = PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY);
  const char* const state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
  const std::string code = state != nullptr ? state : "";
  std::string own =
      WithoutPassword(InOneLine(primary != nullptr ? primary : PQerrorMessage(connection_.get())));
  // What the server did not say itself has no code.
  if (code.empty() || code.starts_with("57P") || code.starts_with("08")) {
    return "the connection to the server was lost (" + own + "); " +
           (isCommitting_
                ? "whether this run was stored is not known: run it again, what is there is not stored twice"
                : "nothing of this run was stored: run it again");
  }
  if (code == "55P03") return BusyReason(wait_);
  if (code == "42501")
    return "the server does not let user " + std::string(PQuser(connection_.get())) + " do this: " + own;
  if (code == "25006") return "it can be read, but not written: " + own;
  if (code.starts_with("40"))
    return "others changed it at the same time (" + own + "); nothing of this run was stored: run it again";
  if (code == "53100") return "the disk of the server is full; nothing of this run was stored";
  return own;
}

void PostgresDatabase::Check(const ServerResult& result, ExecStatusType wanted) const {
  const ExecStatusType status = PQresultStatus(result.get());
  if (status == wanted || (wanted == PGRES_TUPLES_OK && status == PGRES_COMMAND_OK)) return;
  Fail(ReasonFor(result.get()));
}

ServerResult PostgresDatabase::RunPrepared(const std::string& sql, const ServerValues& values) {
  const auto [entry, isNew] = prepared_.try_emplace(sql, "vrx_" + std::to_string(prepared_.size()));
  if (isNew) {
    const ServerResult made(
        PQprepare(connection_.get(), entry->second.c_str(), sql.c_str(), values.Count(), values.Types()));
    if (PQresultStatus(made.get()) != PGRES_COMMAND_OK) {
      prepared_.erase(entry);
      Check(made, PGRES_COMMAND_OK);
    }
  }
  const ServerValues::Arrays arrays = values.ForLibrary();
  ServerResult result(PQexecPrepared(connection_.get(), entry->second.c_str(), values.Count(),
                                     arrays.values.data(), arrays.lengths.data(), arrays.formats.data(), 1));
  Check(result, PGRES_TUPLES_OK);
  return result;
}

ServerResult PostgresDatabase::Run(const std::string& sql, const ServerValues& values) {
  const ServerValues::Arrays arrays = values.ForLibrary();
  ServerResult result(PQexecParams(connection_.get(), sql.c_str(), values.Count(), values.Types(),
                                   arrays.values.data(), arrays.lengths.data(), arrays.formats.data(), 1));
  Check(result, PGRES_TUPLES_OK);
  return result;
}

void PostgresDatabase::Execute(const char* sql) {
  const ServerResult result(PQexec(connection_.get(), sql));
  Check(result, PGRES_TUPLES_OK);
}

void PostgresDatabase::Copy(const std::string& target, const std::string& rows) {
  using std::string_view_literals::operator""sv;
  Check(ServerResult(PQexec(connection_.get(), ("COPY " + target + " FROM STDIN (FORMAT BINARY)").c_str())),
        PGRES_COPY_IN);
  // Signature, flags, no extension; behind the rows a count of fields of -1.
  constexpr std::string_view kBegin = "PGCOPY\n\377\r\n\0\0\0\0\0\0\0\0\0"sv;
  constexpr std::string_view kEnd = "\377\377"sv;
  for (const std::string_view part : {kBegin, std::string_view(rows), kEnd}) {
    if (PQputCopyData(connection_.get(), part.data(), static_cast<int>(part.size())) != 1) break;
  }
  PQputCopyEnd(connection_.get(), nullptr);
  ServerResult result(PQgetResult(connection_.get()));
  while (const ServerResult more{PQgetResult(connection_.get())}) {
  }
  Check(result, PGRES_COMMAND_OK);
}

std::unique_ptr<PreparedStatement> PostgresDatabase::Prepare(const std::string& sql, RowCount count) {
  if (count == RowCount::kAny) return std::make_unique<ServerCursor>(*this, sql);
  return std::make_unique<ServerStatement>(*this, sql);
}

std::unique_ptr<BoundPlaces> PostgresDatabase::PrepareRows(const std::string& table,
                                                           const std::string& columns) {
  return std::make_unique<RowsToCopy>(*this, table, columns);
}

void PostgresDatabase::SendRows(std::size_t unless) {
  std::size_t size = 0;
  for (const RowsToCopy* rows : copies_) size += rows->Size();
  if (size < unless) return;
  for (RowsToCopy* const rows : copies_) rows->Send();
}

// Cursors end with their transaction.
void PostgresDatabase::EndMoment() {
  ++moment_;
  readings_ = 0;
  isInTransaction_ = isReadingAlone_ = false;
}

void PostgresDatabase::BeginWriting() {
  Rollback();  // what was only read
  Execute("BEGIN ISOLATION LEVEL READ COMMITTED READ WRITE");
  isInTransaction_ = true;
  try {
    LockOutWriters();
  } catch (...) {
    Rollback();
    throw;
  }
}

// The lock belongs to the job's tables, by their table of the job, or to the place of one that is not made yet.
void PostgresDatabase::LockOutWriters() {
  constexpr double kMilliseconds = 1000;
  const double most = std::numeric_limits<int>::max();
  const int wait = static_cast<int>(std::clamp(wait_ * kMilliseconds, 1.0, most));  // 0 would be for ever
  ServerStatement timeout(*this, "SELECT set_config('lock_timeout', ?, true)");
  timeout.BindText(std::to_string(wait));
  timeout.Step();
  ServerStatement lock(*this,
                       "SELECT pg_advisory_xact_lock((?1 << 32) + COALESCE(to_regclass('job')::oid, "
                       "current_schema()::regnamespace::oid, 0::oid)::bigint)");
  lock.BindInteger(kServerApplication);
  lock.Step();
}

void PostgresDatabase::Commit() {
  SendRows(0);
  isCommitting_ = true;
  const ServerResult result(PQexec(connection_.get(), "COMMIT"));
  Check(result, PGRES_COMMAND_OK);
  isCommitting_ = false;
  EndMoment();
  // One that failed before answers COMMIT with success and goes back.
  if (std::string_view(PQcmdStatus(result.get())) != "COMMIT") Fail("nothing of this run was stored");
}

void PostgresDatabase::Rollback() noexcept {
  for (RowsToCopy* const rows : copies_) rows->Drop();
  if (isInTransaction_) PQclear(PQexec(connection_.get(), "ROLLBACK"));
  isCommitting_ = false;
  EndMoment();
}

void PostgresDatabase::BeginReading() {
  if (!isInTransaction_) {
    Execute("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY");
    isInTransaction_ = isReadingAlone_ = true;
  }
  ++readings_;
}

void PostgresDatabase::EndReading() noexcept {
  if (readings_ == 0 || --readings_ > 0 || !isReadingAlone_) return;
  PQclear(PQexec(connection_.get(), "COMMIT"));
  EndMoment();
}

std::string PostgresDatabase::TextOf(const std::string& sql) {
  ServerStatement statement(*this, sql);
  return statement.Step() ? std::string(statement.Text(0)) : std::string();
}

void PostgresDatabase::RequireEmpty() {
  if (IntegerOf(*this, "SELECT to_regclass('vrx_tables') IS NOT NULL") != 0)
    Fail("there is a job already; a job is made in a database that is empty");
  if (IntegerOf(*this, "SELECT current_schema() IS NULL") != 0)
    Fail("the database has no schema to make tables in");
  if (IntegerOf(*this,
                "SELECT COUNT(*) FROM pg_class WHERE relkind IN ('r', 'p') AND relnamespace = "
                "current_schema()::regnamespace") != 0)
    Fail("there are tables of another program; a job is made in a database that is empty");
  if (TextOf("SELECT current_setting('server_encoding')") != "UTF8")
    Fail("the encoding of the database is not UTF8: createdb -E UTF8 makes one for a job");
}

std::int64_t PostgresDatabase::SchemaVersion() {
  const std::string schema =
      TextOf("SELECT relnamespace::regnamespace::text FROM pg_class WHERE oid = to_regclass('vrx_tables')");
  if (schema.empty()) {
    if (IntegerOf(*this,
                  "SELECT COUNT(*) FROM pg_class WHERE relkind IN ('r', 'p') AND relnamespace = "
                  "current_schema()::regnamespace") != 0)
      Fail("this is a database of another program and no job of vrx");
    Fail("there is no job in this database; vrx job create makes one");
  }
  // All tables are those beside this one, whatever else is on the path.
  ServerStatement path(*this, "SELECT set_config('search_path', ?, false)");
  path.BindText(schema);
  path.Step();
  if (IntegerOf(*this, "SELECT application FROM vrx_tables") != kServerApplication)
    Fail("this is a database of another program and no job of vrx");
  return IntegerOf(*this, "SELECT version FROM vrx_tables");
}

void PostgresDatabase::SetSchemaVersion(std::int32_t version) {
  Statement update(*this, "UPDATE vrx_tables SET version = ?");
  update.Bind(version).Run();
}

const char* PostgresDatabase::TablesOf(std::int32_t version) const {
  return version == 1 ? kFirstServerTables : kLaterServerTables[version - 2];
}

// Stations may share a role; who sits at one is known to its own system.
std::string PostgresDatabase::User() const {
  const std::string user = SystemUser(), role = PQuser(connection_.get());
  return user == role ? user : user + " as " + role;
}

std::vector<std::string> PostgresDatabase::CheckPages() {
  constexpr std::array<std::array<const char*, 3>, 8> kReferences = {
      {{"trial", "batch", "batch"},
       {"trial", "measuring", "measuring"},
       {"reading", "trial", "trial"},
       {"judgement", "trial", "trial"},
       {"judgement", "standard_version", "standard_version"},
       {"judgement", "curve", "curve"},
       {"judgement", "settings", "settings"},
       {"outcome", "judgement", "judgement"}}};
  std::vector<std::string> faults;
  for (const auto& [table, column, target] : kReferences) {
    const std::int64_t missing =
        IntegerOf(*this, std::string("SELECT COUNT(*) FROM ") + table + " f LEFT JOIN " + target +
                             " o ON o.id = f." + column + " WHERE o.id IS NULL");
    if (missing > 0)
      faults.push_back("table " + std::string(table) + ", " + std::to_string(missing) +
                       (missing == 1 ? " row" : " rows") + ": what it refers to in " + target +
                       " is not there");
  }
  return faults;
}

void PostgresDatabase::Backup(const std::string& path) {
  Fail("a job on a server is copied by the server's own program: pg_dump --file=\"" + path + "\" \"" + name_ +
       "\"");
}

}  // namespace vrx::store
