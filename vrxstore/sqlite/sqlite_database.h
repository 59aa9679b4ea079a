// A job's tables in an SQLite file. What goes wrong becomes a StoreError that says in a sentence what a person can do about it.

#ifndef VRXSTORE_SQLITE_SQLITE_DATABASE_H_
#define VRXSTORE_SQLITE_SQLITE_DATABASE_H_

#include <cstdint>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <vector>

#include <vrxstore/database/database.h>

namespace vrx::store {

class SqliteDatabase final : public Database {
 public:
  /// Opens a file that is there, or makes one. `wait`: seconds for which a locked file is waited for.
  SqliteDatabase(std::string path, bool creates, double wait);

  const std::string& Name() const override { return path_; }
  sqlite3* Handle() const { return handle_.get(); }

  std::unique_ptr<PreparedStatement> Prepare(const std::string& sql, RowCount count) override;
  std::unique_ptr<BoundPlaces> PrepareRows(const std::string& table, const std::string& columns) override;
  void Execute(const char* sql) override;
  /// SQLite looks tables of a CROSS JOIN up in the order in which they are named.
  const char* JoinInOrder() const override { return " CROSS JOIN "; }

  void BeginWriting() override { Execute("BEGIN IMMEDIATE"); }
  void Commit() override { Execute("COMMIT"); }
  void Rollback() noexcept override;
  void BeginReading() override;
  void EndReading() noexcept override;

  void RequireEmpty() override;
  std::int64_t SchemaVersion() override;
  void SetSchemaVersion(std::int32_t version) override;
  const char* TablesOf(std::int32_t version) const override;
  std::string KeepCopy(std::int64_t version) override;

  std::string User() const override;
  std::vector<std::string> CheckPages() override;
  void Backup(const std::string& path) override;

  /// Throws for anything but success.
  void Check(int code) const;
  [[noreturn]] void Fail(int code) const;

 private:
  std::string ReasonFor(int code) const;

  struct Closer {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
  };
  std::string path_;
  double wait_;
  std::unique_ptr<sqlite3, Closer> handle_;
  int readings_ = 0;             // under way
  bool isReadingAlone_ = false;  // the first of them began a transaction
};

/// CreateStore and OpenStore of a file.
std::unique_ptr<Database> CreateSqliteFile(const std::string& path, double wait);
std::unique_ptr<Database> OpenSqliteFile(const std::string& path, double wait);

}  // namespace vrx::store

#endif  // VRXSTORE_SQLITE_SQLITE_DATABASE_H_
