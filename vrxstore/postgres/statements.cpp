#include <vrxstore/postgres/statements.h>

#include <utility>

namespace vrx::store {
namespace {

constexpr int kRowsTogether = 500;

void RefuseZeroByte(const PostgresDatabase& database, std::string_view text) {
  if (text.find('\0') != std::string_view::npos)
    throw io::InputError(database.Name() + ": " + kZeroByteReason);
}

}  // namespace

std::string WithServerPlaces(const std::string& sql) {
  std::string text;
  int place = 0;
  for (std::size_t i = 0; i < sql.size(); ++i) {
    if (sql[i] != '?') {
      text += sql[i];
      continue;
    }
    text += '$';
    const bool isNumbered = i + 1 < sql.size() && sql[i + 1] >= '1' && sql[i + 1] <= '9';
    if (!isNumbered) text += std::to_string(++place);
  }
  return text;
}

void ServerStatement::BindInteger(std::optional<std::int64_t> value) {
  if (!value) return values_.AddNull(kInt8Type);
  std::string bytes;
  AppendWire(*value, bytes);
  values_.Add(kInt8Type, std::move(bytes));
}
void ServerStatement::BindNumber(std::optional<double> value) {
  if (!value) return values_.AddNull(kFloat8Type);
  std::string bytes;
  AppendWireDouble(*value, bytes);
  values_.Add(kFloat8Type, std::move(bytes));
}
void ServerStatement::BindText(std::optional<std::string_view> text) {
  if (!text) return values_.AddNull(kTextType);
  RefuseZeroByte(database_, *text);
  values_.Add(kTextType, std::string(*text));
}
void ServerStatement::BindBytes(std::string_view bytes) {
  values_.Add(kBytesType, std::string(bytes));
}
void ServerStatement::BindDoubles(std::span<const double> numbers) {
  std::string bytes;
  AppendWireDoubles(numbers, bytes);
  values_.Add(kFloat8ArrayType, std::move(bytes));
}

void ServerStatement::Reset() {
  values_.Clear();
  result_.reset();
  row_ = -1;
  isRun_ = false;
}

bool ServerStatement::Step() {
  if (!isRun_) {
    isRun_ = true;
    row_ = -1;
    result_ = FirstRows();
  }
  if (result_ == nullptr) return false;
  if (++row_ < PQntuples(result_.get())) return true;
  result_ = NextRows();
  row_ = 0;
  if (result_ != nullptr && PQntuples(result_.get()) > 0) return true;
  result_.reset();
  return false;
}

std::string_view ServerStatement::BytesOf(int column) const {
  return {PQgetvalue(result_.get(), row_, column),
          static_cast<std::size_t>(PQgetlength(result_.get(), row_, column))};
}

std::int64_t ServerStatement::Integer(int column) const {
  if (IsNull(column)) return 0;
  switch (PQftype(result_.get(), column)) {
    case kBoolType:
    case kInt2Type:
    case kInt4Type:
    case kInt8Type:
      return WireInteger(BytesOf(column));
    default:
      database_.Fail("a column of its tables has no whole numbers");
  }
}

std::string_view ServerStatement::Text(int column) const {
  if (IsNull(column)) return {};
  const Oid type = PQftype(result_.get(), column);
  if (type != kTextType && type != kBytesType)
    database_.Fail("a column of its tables is neither text nor bytes");
  return BytesOf(column);
}

void ServerStatement::TakeDoubles(int column, std::span<double> numbers) const {
  if (PQftype(result_.get(), column) != kFloat8ArrayType)
    database_.Fail("a column of its tables is no array of numbers");
  TakeWireDoubles(BytesOf(column), numbers);
}

void ServerCursor::Reset() {
  Close();
  ServerStatement::Reset();
}

ServerResult ServerCursor::FirstRows() {
  database_.BeginReading();
  moment_ = database_.Moment();
  name_ = database_.NextCursor();
  try {
    database_.Run("DECLARE " + name_ + " NO SCROLL CURSOR FOR " + sql_, values_);
    return NextRows();
  } catch (...) {
    Close();
    throw;
  }
}

ServerResult ServerCursor::NextRows() {
  if (name_.empty()) return nullptr;
  if (moment_ != database_.Moment()) database_.Fail("it was changed while it was read");
  ServerResult rows = database_.Run("FETCH " + std::to_string(kRowsTogether) + " FROM " + name_);
  if (PQntuples(rows.get()) < kRowsTogether) Close();
  return rows;
}

void ServerCursor::Close() noexcept {
  if (name_.empty()) return;
  if (moment_ == database_.Moment()) {
    try {
      database_.Execute(("CLOSE " + name_).c_str());
    } catch (const StoreError&) {
      // A transaction that failed closes it, too.
    }
    database_.EndReading();
  }
  name_.clear();
}

RowsToCopy::RowsToCopy(PostgresDatabase& database, const std::string& table, const std::string& columns)
    : database_(database), target_(table + "(" + columns + ")") {
  const ServerResult none = database.Run("SELECT " + columns + " FROM " + table + " LIMIT 0");
  for (int i = 0; i < PQnfields(none.get()); ++i) types_.push_back(PQftype(none.get(), i));
  database.Register(this);
}

void RowsToCopy::Reset() {
  row_.clear();
  column_ = 0;
  AppendWire(static_cast<std::int16_t>(types_.size()), row_);
}

bool RowsToCopy::Step() {
  constexpr std::size_t kTogether = std::size_t{1} << 20;
  rows_ += row_;
  database_.SendRows(kTogether);
  return false;
}

void RowsToCopy::Send() {
  if (rows_.empty()) return;
  database_.Copy(target_, rows_);
  rows_.clear();
}

void RowsToCopy::AppendField(std::string_view bytes) {
  AppendWire(static_cast<std::int32_t>(bytes.size()), row_);
  row_ += bytes;
  ++column_;
}

void RowsToCopy::BindInteger(std::optional<std::int64_t> value) {
  field_.clear();
  if (!value) {
    AppendWire(std::int32_t{-1}, row_);
    ++column_;
    return;
  }
  types_.at(column_) == kInt8Type ? AppendWire(*value, field_)
                                  : AppendWire(static_cast<std::int32_t>(*value), field_);
  AppendField(field_);
}
void RowsToCopy::BindNumber(std::optional<double> value) {
  if (!value) return BindInteger(std::nullopt);
  field_.clear();
  AppendWireDouble(*value, field_);
  AppendField(field_);
}
void RowsToCopy::BindText(std::optional<std::string_view> text) {
  if (!text) return BindInteger(std::nullopt);
  RefuseZeroByte(database_, *text);
  AppendField(*text);
}
void RowsToCopy::BindBytes(std::string_view bytes) {
  AppendField(bytes);
}
void RowsToCopy::BindDoubles(std::span<const double> numbers) {
  field_.clear();
  AppendWireDoubles(numbers, field_);
  AppendField(field_);
}

}  // namespace vrx::store
