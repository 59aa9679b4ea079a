// Statements on a PostgreSQL server: those whose rows come at once, cursors, and rows for COPY.

#ifndef VRXSTORE_POSTGRES_STATEMENTS_H_
#define VRXSTORE_POSTGRES_STATEMENTS_H_

#include <cstdint>
#include <string>
#include <vector>

#include <vrxstore/postgres/postgres_database.h>
#include <vrxstore/postgres/wire.h>

namespace vrx::store {

/// A statement with its places as the server names them: `$1` for `?1`, or for the first `?`.
std::string WithServerPlaces(const std::string& sql);

/// Binds values and reads rows; the rows of a few are all here.
class ServerStatement : public PreparedStatement {
 public:
  ServerStatement(PostgresDatabase& database, const std::string& sql)
      : database_(database), sql_(WithServerPlaces(sql)) {}

  void BindInteger(std::optional<std::int64_t> value) override;
  void BindNumber(std::optional<double> value) override;
  void BindText(std::optional<std::string_view> text) override;
  void BindBytes(std::string_view bytes) override;
  void BindDoubles(std::span<const double> numbers) override;

  void Reset() override;
  bool Step() override;

  std::int64_t Integer(int column) const override;
  bool IsNull(int column) const override { return PQgetisnull(result_.get(), row_, column) != 0; }
  std::string_view Text(int column) const override;
  void TakeDoubles(int column, std::span<double> numbers) const override;

 protected:
  /// Gets the first rows, or the next ones.
  virtual ServerResult FirstRows() { return database_.RunPrepared(sql_, values_); }
  virtual ServerResult NextRows() { return nullptr; }

  PostgresDatabase& database_;
  std::string sql_;
  ServerValues values_;

 private:
  std::string_view BytesOf(int column) const;

  ServerResult result_;
  int row_ = -1;
  bool isRun_ = false;
};

/// A statement whose rows come from a cursor of the server, some hundred at a time.
class ServerCursor final : public ServerStatement {
 public:
  using ServerStatement::ServerStatement;
  ServerCursor(const ServerCursor&) = delete;
  ServerCursor& operator=(const ServerCursor&) = delete;
  ~ServerCursor() override { Close(); }
  void Reset() override;

 protected:
  ServerResult FirstRows() override;
  ServerResult NextRows() override;

 private:
  void Close() noexcept;

  std::string name_;  // empty: none is open
  std::int64_t moment_ = 0;
};

/// Rows that go into a table by COPY, in its binary format.
class RowsToCopy final : public BoundPlaces {
 public:
  RowsToCopy(PostgresDatabase& database, const std::string& table, const std::string& columns);
  RowsToCopy(const RowsToCopy&) = delete;
  RowsToCopy& operator=(const RowsToCopy&) = delete;
  ~RowsToCopy() override { database_.Unregister(this); }

  void BindInteger(std::optional<std::int64_t> value) override;
  void BindNumber(std::optional<double> value) override;
  void BindText(std::optional<std::string_view> text) override;
  void BindBytes(std::string_view bytes) override;
  void BindDoubles(std::span<const double> numbers) override;

  /// Begins a row, of which nothing is kept until the step.
  void Reset() override;
  bool Step() override;

  std::size_t Size() const { return rows_.size(); }
  void Send();
  void Drop() { rows_.clear(); }

 private:
  void AppendField(std::string_view bytes);

  PostgresDatabase& database_;
  std::string target_;
  std::vector<Oid> types_;  // of the columns
  std::string rows_, row_, field_;
  std::size_t column_ = 0;  // that is bound next
};

}  // namespace vrx::store

#endif  // VRXSTORE_POSTGRES_STATEMENTS_H_
