#include <vrxstore/sqlite/parts.h>

#include <array>
#include <cstdio>
#include <pwd.h>
#include <unistd.h>
#include <vector>

#include <vrxstore/records/stored_form.h>
#include <vrxstore/records/trail.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/platform/clock.h>

namespace vrx::store {
namespace {

constexpr std::size_t kDigestBytes = 32;

// The name under which the process runs; its number where it has none.
std::string UserName() {
  constexpr std::size_t kMost = 16384;
  std::vector<char> texts(kMost);
  passwd entry{};
  passwd* found = nullptr;
  const uid_t user = geteuid();
  if (getpwuid_r(user, &entry, texts.data(), texts.size(), &found) == 0 && found != nullptr)
    return found->pw_name;
  return std::to_string(user);
}

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
    "SELECT id, at, user, by, what, subject, why, content, previous, digest FROM trail ORDER BY id";

class SqliteTrail final : public TrailCursor {
 public:
  explicit SqliteTrail(Connection& connection) : rows_(connection, kTrailColumns) {}
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

TrailRow TrailHead(Connection& connection) {
  Statement last(connection, std::string(kTrailColumns) + " DESC LIMIT 1");
  if (last.Step()) return RowOf(last);
  TrailRow none;
  none.digest.assign(kDigestBytes, '\0');
  return none;
}

std::int64_t AppendTrail(Connection& connection, const Author& author, std::string_view what,
                         std::string_view subject, std::string_view content) {
  const TrailRow head = TrailHead(connection);
  TrailRow row{head.number + 1,      NowText(),  UserName(),           author.by,   std::string(what),
               std::string(subject), author.why, std::string(content), head.digest, {}};
  row.digest = DigestOf(row);
  Statement insert(connection, "INSERT INTO trail VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  insert
      .Bind(row.number, row.at, row.user, row.by, row.what, row.subject, row.why, BlobOf(row.content),
            BlobOf(row.previous), BlobOf(row.digest))
      .Run();
  return row.number;
}

std::unique_ptr<TrailCursor> ReadTrail(Connection& connection) {
  return std::make_unique<SqliteTrail>(connection);
}

MeasuringTable::MeasuringTable(Connection& connection)
    : connection_(connection),
      find_(connection, "SELECT id FROM measuring WHERE content = ?"),
      insert_(connection, "INSERT INTO measuring(content) VALUES(?)") {}

std::int64_t MeasuringTable::NumberOf(std::string_view content) {
  if (lastNumber_ != 0 && content == last_) return lastNumber_;
  if (find_.Bind(content).Step()) {
    lastNumber_ = find_.Integer(0);
    find_.Reset();
  } else {
    insert_.Bind(content).Run();
    lastNumber_ = connection_.LastRow();
  }
  last_ = content;
  return lastNumber_;
}

std::string AngleCondition(const std::string& table, std::int32_t geometry) {
  if (geometry == io::kNoGeometry) return {};
  std::string filter = AngleFilter(static_cast<std::uint8_t>(geometry)).ToUtf8();
  for (std::size_t at = filter.find("Angle"); at != std::string::npos;
       at = filter.find("Angle", at + table.size() + 6)) {
    filter.insert(at, table + ".");
  }
  return " AND (" + table + ".Angle IS NULL OR " + filter + ")";
}

void TakeCurve(const Connection& connection, std::string_view bytes, const char* table, std::int64_t number,
               Curve& curve) {
  try {
    DoublesFrom(bytes, curve);
  } catch (const StoreError& error) {
    throw StoreError(connection.Path() + ": table " + table + ", row " + std::to_string(number) + ": " +
                     error.what());
  }
}

}  // namespace vrx::store
