// What a job asks of a database, whichever keeps it: statements whose values are bound, transactions, and what each does in its
// own way. The statements themselves are written once, in SQL that all of them understand.

#ifndef VRXSTORE_DATABASE_DATABASE_H_
#define VRXSTORE_DATABASE_DATABASE_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vrxstore/records/records.h>

namespace vrx::store {

/// The version of the tables that this library makes and reads.
inline constexpr std::int32_t kSchemaVersion = 2;

/// Places that are bound one after the other; what is bound must live until the last step.
class BoundPlaces {
 public:
  virtual ~BoundPlaces() = default;

  virtual void BindInteger(std::optional<std::int64_t> value) = 0;
  virtual void BindNumber(std::optional<double> value) = 0;
  /// Throws InputError for a text with a zero byte in it.
  virtual void BindText(std::optional<std::string_view> text) = 0;
  virtual void BindBytes(std::string_view bytes) = 0;
  /// Doubles that come back to the bit.
  virtual void BindDoubles(std::span<const double> numbers) = 0;

  /// Forgets rows and values.
  virtual void Reset() = 0;
  /// Goes to the next row; false behind the last one, when the statement is reset, and always where none is given.
  virtual bool Step() = 0;
};

/// A statement as a database prepared it.
class PreparedStatement : public BoundPlaces {
 public:
  /// Columns of the row, from 0. Integer gives 0 and Text nothing for NULL; both throw StoreError for values of another kind.
  virtual std::int64_t Integer(int column) const = 0;
  virtual bool IsNull(int column) const = 0;
  /// Text or bytes, which live until the next step.
  virtual std::string_view Text(int column) const = 0;
  /// Throws StoreError unless there are as many as `numbers` holds.
  virtual void TakeDoubles(int column, std::span<double> numbers) const = 0;
};

/// Whether a statement gives a few rows, or any number of them, which are then read as they are asked for.
enum class RowCount : std::uint8_t { kFew, kAny };

class Database {
 public:
  virtual ~Database() = default;

  /// As messages call it: a file, or an address without its password.
  virtual const std::string& Name() const = 0;

  /// Places are `?`, or `?1` where one stands twice.
  virtual std::unique_ptr<PreparedStatement> Prepare(const std::string& sql, RowCount count) = 0;
  /// A statement that inserts rows into a table, of values in the order of `columns` ("id, name"). Rows may reach the table as late
  /// as the commit, after those of every table for which this was called before.
  virtual std::unique_ptr<BoundPlaces> PrepareRows(const std::string& table, const std::string& columns) = 0;
  /// Runs statements without values and results.
  virtual void Execute(const char* sql) = 0;
  /// Between two tables that are looked up in the order in which a statement names them.
  virtual const char* JoinInOrder() const = 0;

  /// Begins a transaction that writes. It keeps other writers out until its end, and waits for them as long as it was told to.
  virtual void BeginWriting() = 0;
  virtual void Commit() = 0;
  /// Harmless where no transaction is under way, and where the connection is lost.
  virtual void Rollback() noexcept = 0;
  /// Begins and ends a moment that several statements read; these may lie in each other and in a transaction.
  virtual void BeginReading() = 0;
  virtual void EndReading() noexcept = 0;

  /// Throws StoreError where there is anything already, in the transaction that is to make a job.
  virtual void RequireEmpty() = 0;
  /// The version of its tables. Throws StoreError for what is no job.
  virtual std::int64_t SchemaVersion() = 0;
  virtual void SetSchemaVersion(std::int32_t version) = 0;
  /// The statements that make the tables of version 1, or that bring those of the version before to this one. A new job goes
  /// through all of them, so that an old one ends with the same tables.
  virtual const char* TablesOf(std::int32_t version) const = 0;
  /// Keeps a copy of a job before its tables are changed, in the transaction that changes them, where the database can; gives
  /// the sentence that says where it is.
  virtual std::string KeepCopy(std::int64_t version) = 0;

  /// The user for the trail.
  virtual std::string User() const = 0;
  /// Store::CheckPages and Store::Backup.
  virtual std::vector<std::string> CheckPages() = 0;
  virtual void Backup(const std::string& path) = 0;
};

/// Bytes and doubles to bind.
struct BytesToBind {
  std::string_view bytes;
};
inline BytesToBind BlobOf(std::string_view bytes) {
  return {bytes};
}
struct DoublesToBind {
  std::span<const double> numbers;
};
inline DoublesToBind CurveOf(std::span<const double> numbers) {
  return {numbers};
}

/// What binds values to the places of a statement, never into its text. SELF is the class that derives from it, FORM what a
/// database made of the statement.
template <class SELF, class FORM>
class Binding {
 public:
  /// Binds the values of the statement's places, from the first on, and resets it before.
  template <class... VALUE>
  SELF& Bind(const VALUE&... values) {
    form_->Reset();
    (BindOne(values), ...);
    return static_cast<SELF&>(*this);
  }
  void Reset() { form_->Reset(); }
  /// Runs a statement that gives no rows.
  void Run() { static_cast<void>(form_->Step()); }

 protected:
  explicit Binding(std::unique_ptr<FORM> form) : form_(std::move(form)) {}
  const FORM& Form() const { return *form_; }
  FORM& Form() { return *form_; }

 private:
  void BindOne(std::int64_t value) { form_->BindInteger(value); }
  void BindOne(std::int32_t value) { form_->BindInteger(value); }
  void BindOne(std::optional<std::int64_t> value) { form_->BindInteger(value); }
  void BindOne(double value) { form_->BindNumber(value); }
  void BindOne(std::optional<double> value) { form_->BindNumber(value); }
  void BindOne(std::string_view text) { form_->BindText(text); }
  void BindOne(const std::string& text) { form_->BindText(text); }
  void BindOne(const char* text) { form_->BindText(text); }
  void BindOne(const std::optional<std::string>& text) { form_->BindText(text); }
  void BindOne(const BytesToBind& value) { form_->BindBytes(value.bytes); }
  void BindOne(const DoublesToBind& value) { form_->BindDoubles(value.numbers); }

  std::unique_ptr<FORM> form_;
};

/// Rows for a table, one by one (Database::PrepareRows).
class RowInserter : public Binding<RowInserter, BoundPlaces> {
 public:
  /// `database` must outlive it.
  RowInserter(Database& database, const std::string& table, const std::string& columns)
      : Binding(database.PrepareRows(table, columns)) {}
};

/// A prepared statement.
class Statement : public Binding<Statement, PreparedStatement> {
 public:
  /// `database` must outlive it.
  Statement(Database& database, const std::string& sql, RowCount count = RowCount::kFew)
      : Binding(database.Prepare(sql, count)) {}

  bool Step() { return Form().Step(); }
  std::int64_t Integer(int column) const { return Form().Integer(column); }
  std::int32_t Small(int column) const { return static_cast<std::int32_t>(Integer(column)); }
  bool IsNull(int column) const { return Form().IsNull(column); }
  std::string_view Text(int column) const { return Form().Text(column); }
  void TakeDoubles(int column, std::span<double> numbers) const { Form().TakeDoubles(column, numbers); }
};

/// The integer of a query's only row.
inline std::int64_t IntegerOf(Database& database, const std::string& sql) {
  Statement statement(database, sql);
  return statement.Step() ? statement.Integer(0) : 0;
}

/// A transaction that writes, and that goes back unless it is committed.
class Transaction {
 public:
  explicit Transaction(Database& database) : database_(database) { database.BeginWriting(); }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction() { Rollback(); }
  void Commit() {
    database_.Commit();
    isOpen_ = false;
  }
  void Rollback() noexcept {
    if (isOpen_) database_.Rollback();
    isOpen_ = false;
  }

 private:
  Database& database_;
  bool isOpen_ = true;
};

/// A moment that several statements read: nothing is written in between.
class Snapshot {
 public:
  explicit Snapshot(Database& database) : database_(database) { database.BeginReading(); }
  Snapshot(const Snapshot&) = delete;
  Snapshot& operator=(const Snapshot&) = delete;
  ~Snapshot() { database_.EndReading(); }

 private:
  Database& database_;
};

/// The reason why a writer that waited `wait` seconds for others went away.
std::string BusyReason(double wait);
/// The reason for a text with a zero byte.
inline constexpr const char* kZeroByteReason =
    "a name or a text has a zero byte in it, which a job does not keep";

}  // namespace vrx::store

#endif  // VRXSTORE_DATABASE_DATABASE_H_
