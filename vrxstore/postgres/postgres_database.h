// A job's tables on a PostgreSQL server, by libpq. What goes wrong becomes a StoreError with the server's reason, and never with a
// password.

#ifndef VRXSTORE_POSTGRES_POSTGRES_DATABASE_H_
#define VRXSTORE_POSTGRES_POSTGRES_DATABASE_H_

#include <cstdint>
#include <functional>
#include <libpq-fe.h>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vrxstore/database/database.h>

namespace vrx::store {

struct ResultClearer {
  void operator()(PGresult* result) const { PQclear(result); }
};
using ServerResult = std::unique_ptr<PGresult, ResultClearer>;

/// The values of a statement in binary, with their types.
class ServerValues {
 public:
  void Clear();
  void AddNull(Oid type);
  void Add(Oid type, std::string bytes);

  int Count() const { return static_cast<int>(types_.size()); }
  const Oid* Types() const { return types_.data(); }
  /// Arrays as libpq takes them, which live until the next change.
  struct Arrays {
    std::vector<const char*> values;
    std::vector<int> lengths, formats;
  };
  Arrays ForLibrary() const;

 private:
  std::vector<Oid> types_;
  std::vector<std::pair<bool, std::string>> values_;  // whether there is one
};

class RowsToCopy;

class PostgresDatabase final : public Database {
 public:
  /// Connects to the database of a URL. `wait`: seconds for which other writers are waited for. Throws StoreError.
  PostgresDatabase(const std::string& url, double wait);

  const std::string& Name() const override { return name_; }

  std::unique_ptr<PreparedStatement> Prepare(const std::string& sql, RowCount count) override;
  std::unique_ptr<BoundPlaces> PrepareRows(const std::string& table, const std::string& columns) override;
  void Execute(const char* sql) override;
  /// The server looks tables up in the order that it finds best.
  const char* JoinInOrder() const override { return " JOIN "; }

  void BeginWriting() override;
  void Commit() override;
  void Rollback() noexcept override;
  void BeginReading() override;
  void EndReading() noexcept override;

  void RequireEmpty() override;
  std::int64_t SchemaVersion() override;
  void SetSchemaVersion(std::int32_t version) override;
  const char* TablesOf(std::int32_t version) const override;
  /// A server's database is copied by its own programs.
  std::string KeepCopy(std::int64_t /*version*/) override { return {}; }

  std::string User() const override;
  /// References of trials and what belongs to them; the server looks after its pages and all other references.
  std::vector<std::string> CheckPages() override;
  void Backup(const std::string& path) override;

  /// Runs a statement of a text that is the same each time; the server parses it once.
  ServerResult RunPrepared(const std::string& sql, const ServerValues& values);
  /// Runs a statement once, with results in binary.
  ServerResult Run(const std::string& sql, const ServerValues& values = {});
  /// Sends what COPY takes into a table: whole rows in its binary format.
  void Copy(const std::string& target, const std::string& rows);

  /// The number of the transaction that is under way: a cursor lives in its own only.
  std::int64_t Moment() const { return moment_; }
  std::string NextCursor() { return "vrx_rows_" + std::to_string(++cursors_); }

  /// What was bound for tables and did not reach them yet; sends it when there is much of it.
  void Register(RowsToCopy* rows) { copies_.push_back(rows); }
  void Unregister(RowsToCopy* rows) { std::erase(copies_, rows); }
  void SendRows(std::size_t unless);

  [[noreturn]] void Fail(const std::string& reason) const;

 private:
  void Connect(const std::string& url);
  void Check(const ServerResult& result, ExecStatusType wanted) const;
  std::string ReasonFor(const PGresult* result) const;
  std::string WithoutPassword(std::string text) const;
  void EndMoment();
  void LockOutWriters();
  std::string TextOf(const std::string& sql);

  struct Closer {
    void operator()(PGconn* connection) const { PQfinish(connection); }
  };
  std::string name_, password_;
  double wait_;
  std::unique_ptr<PGconn, Closer> connection_;
  std::map<std::string, std::string> prepared_;  // names by statements
  std::vector<RowsToCopy*> copies_;              // in the order in which their tables need them
  std::int64_t moment_ = 0, cursors_ = 0;
  int readings_ = 0;  // under way
  bool isInTransaction_ = false, isReadingAlone_ = false, isCommitting_ = false;
};

}  // namespace vrx::store

#endif  // VRXSTORE_POSTGRES_POSTGRES_DATABASE_H_
