// A connection to an SQLite file and its prepared statements. What goes wrong becomes a StoreError that says in a sentence
// what a person can do about it.

#ifndef VRXSTORE_SQLITE_CONNECTION_H_
#define VRXSTORE_SQLITE_CONNECTION_H_

#include <cstdint>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace vrx::store {

class Connection;

/// A prepared statement. Values are bound, never written into its text.
class Statement {
 public:
  /// `connection` must outlive it.
  Statement(Connection& connection, const std::string& sql);

  /// Binds the values of the statement's parameters, from the first on, and resets it before.
  template <class... VALUE>
  Statement& Bind(const VALUE&... values) {
    Reset();
    int place = 0;
    (BindOne(++place, values), ...);
    return *this;
  }
  Statement& Reset();
  /// Goes to the next row; false behind the last one, when the statement is reset.
  bool Step();
  /// Runs a statement that gives no rows.
  void Run() { static_cast<void>(Step()); }

  /// Bytes that live until the next step; `Blob` and `Text` are of one column.
  struct Bytes {
    std::string_view view;
  };
  std::int64_t Integer(int column) const { return sqlite3_column_int64(statement_.get(), column); }
  bool IsNull(int column) const { return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL; }
  /// Of a column of text or bytes. Throws StoreError for a number.
  std::string_view Text(int column) const;

 private:
  void BindOne(int place, std::int64_t value);
  void BindOne(int place, std::int32_t value) { BindOne(place, static_cast<std::int64_t>(value)); }
  void BindOne(int place, double value);
  void BindOne(int place, std::string_view text);
  void BindOne(int place, const std::string& text) { BindOne(place, std::string_view(text)); }
  void BindOne(int place, const char* text) { BindOne(place, std::string_view(text)); }
  void BindOne(int place, const Bytes& bytes);
  void BindOne(int place, std::nullptr_t null);
  void Check(int code) const;

  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  Connection& connection_;
  std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

/// Bytes to bind.
inline Statement::Bytes BlobOf(std::string_view bytes) {
  return {bytes};
}

class Connection {
 public:
  /// Opens a file that is there, or makes one. `wait`: seconds for which a locked file is waited for.
  Connection(std::string path, bool creates, double wait);

  const std::string& Path() const { return path_; }
  sqlite3* Handle() const { return handle_.get(); }
  double Wait() const { return wait_; }

  /// Runs statements without parameters and results.
  void Execute(const char* sql);
  std::int64_t Number(const std::string& sql);
  std::int64_t LastRow() const { return sqlite3_last_insert_rowid(handle_.get()); }

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
};

/// A transaction that writes: it takes the lock for writing at its begin, waits for it as long as the connection does, and goes
/// back unless it is committed.
class Transaction {
 public:
  explicit Transaction(Connection& connection);
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();
  void Commit();
  void Rollback();

 private:
  Connection& connection_;
  bool isOpen_ = true;
};

/// A moment that several statements read: nothing is written in between.
class Snapshot {
 public:
  explicit Snapshot(Connection& connection);
  Snapshot(const Snapshot&) = delete;
  Snapshot& operator=(const Snapshot&) = delete;
  ~Snapshot();

 private:
  Connection& connection_;
  bool isOwn_;  // none is under way already
};

}  // namespace vrx::store

#endif  // VRXSTORE_SQLITE_CONNECTION_H_
