#include <vrxstore/database/parts.h>

#include <array>
#include <cstdio>
#include <vector>

#include <vrxio/text/decimal.h>
#include <vrxstore/records/trail.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/platform/clock.h>

namespace vrx::store {
namespace {

constexpr std::size_t kDigestBytes = 32;

TrailRow RowOf(const Statement& row) {
  TrailRow result;
  result.number = row.Integer(0);
  result.at = row.Text(1);
  result.user = row.Text(2);
  result.by = row.Text(3);
  result.what = row.Text(4);
  result.subject = row.Text(5);
  result.why = row.Text(6);
  result.content = row.Text(7);
  result.previous = row.Text(8);
  result.digest = row.Text(9);
  return result;
}

constexpr const char* kTrailColumns =
    "SELECT id, at, \"user\", by, what, subject, why, content, previous, digest FROM trail ORDER BY id";

class TrailOfTable final : public TrailCursor {
 public:
  explicit TrailOfTable(Database& database) : rows_(database, kTrailColumns, RowCount::kAny) {}
  bool Next(TrailRow& row) override {
    if (!rows_.Step()) return false;
    row = RowOf(rows_);
    return true;
  }

 private:
  Statement rows_;
};

}  // namespace

std::string NowText() {
  const CalendarTime now = UtcCalendar(CurrentClock().UtcSeconds());
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "%04u-%02u-%02uT%02u:%02u:%02uZ", now.year, now.month, now.day,
                now.hour, now.minute, now.second);
  return text.data();
}

TrailRow TrailHead(Database& database) {
  Statement last(database, std::string(kTrailColumns) + " DESC LIMIT 1");
  if (last.Step()) return RowOf(last);
  TrailRow none;
  none.digest.assign(kDigestBytes, '\0');
  return none;
}

std::int64_t AppendTrail(Database& database, const Author& author, std::string_view what,
                         std::string_view subject, std::string_view content) {
  const TrailRow head = TrailHead(database);
  TrailRow row{head.number + 1,      NowText(),  database.User(),      author.by,   std::string(what),
               std::string(subject), author.why, std::string(content), head.digest, {}};
  row.digest = DigestOf(row);
  Statement insert(database, "INSERT INTO trail VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  insert
      .Bind(row.number, row.at, row.user, row.by, row.what, row.subject, row.why, BlobOf(row.content),
            BlobOf(row.previous), BlobOf(row.digest))
      .Run();
  return row.number;
}

std::unique_ptr<TrailCursor> ReadTrail(Database& database) {
  return std::make_unique<TrailOfTable>(database);
}

MeasuringTable::MeasuringTable(Database& database)
    : database_(database),
      find_(database, "SELECT id FROM measuring WHERE content = ?"),
      insert_(database, "INSERT INTO measuring(id, content) VALUES(?, ?)") {}

std::int64_t MeasuringTable::NumberOf(std::string_view content) {
  if (lastNumber_ != 0 && content == last_) return lastNumber_;
  if (find_.Bind(content).Step()) {
    lastNumber_ = find_.Integer(0);
    find_.Reset();
  } else {
    lastNumber_ = NextNumber(database_, "measuring");
    insert_.Bind(lastNumber_, content).Run();
  }
  last_ = content;
  return lastNumber_;
}

std::string AngleCondition(const std::string& table, std::int32_t geometry) {
  if (geometry == io::kNoGeometry) return {};
  const std::string column = table + ".\"Angle\"";
  constexpr std::string_view kName = "Angle";
  std::string filter = AngleFilter(static_cast<std::uint8_t>(geometry)).ToUtf8();
  for (std::size_t at = filter.find(kName); at != std::string::npos;
       at = filter.find(kName, at + column.size())) {
    filter.replace(at, kName.size(), column);
  }
  return " AND (" + column + " IS NULL OR " + filter + ")";
}

std::int64_t NextNumber(Database& database, const std::string& table) {
  return IntegerOf(database, "SELECT COALESCE(MAX(id), 0) + 1 FROM " + table);
}

void TakeCurve(const Database& database, const Statement& row, int column, const char* table,
               std::int64_t number, Curve& curve) {
  try {
    row.TakeDoubles(column, curve);
  } catch (const StoreError& error) {
    throw StoreError(database.Name() + ": table " + table + ", row " + std::to_string(number) + ": " +
                     error.what());
  }
}

std::string BusyReason(double wait) {
  return "another process is writing into it, and did not end within " + io::ShortestText(wait) +
         " s; nothing of this run was stored: run it again, or wait longer with --wait";
}

}  // namespace vrx::store
