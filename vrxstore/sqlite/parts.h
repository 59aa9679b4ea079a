// What the functions of the SQLite back end share.

#ifndef VRXSTORE_SQLITE_PARTS_H_
#define VRXSTORE_SQLITE_PARTS_H_

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vrxstore/records/records.h>
#include <vrxstore/sqlite/connection.h>
#include <vrxstore/store.h>

namespace vrx::store {

/// Now in UTC, "2026-11-26T07:30:00Z", by the clock in use.
std::string NowText();

/// Appends a row to the trail in the transaction that is under way; gives its number. `what`, `subject` and `content` as in
/// TrailRow.
std::int64_t AppendTrail(Connection& connection, const Author& author, std::string_view what,
                         std::string_view subject, std::string_view content = {});
/// The rows of the trail in their order, and the last one; before the first one 0 with a digest of zeros.
std::unique_ptr<TrailCursor> ReadTrail(Connection& connection);
TrailRow TrailHead(Connection& connection);

/// The number of a description of how curves were measured, which is stored once.
class MeasuringTable {
 public:
  explicit MeasuringTable(Connection& connection);
  /// Stores the description where it is new.
  std::int64_t NumberOf(std::string_view content);

 private:
  Connection& connection_;
  Statement find_, insert_;
  std::string last_;
  std::int64_t lastNumber_ = 0;
};

/// A geometry in the column Angle, where none is NULL.
inline std::int32_t GeometryIn(const Statement& row, int column) {
  return row.IsNull(column) ? io::kNoGeometry : static_cast<std::int32_t>(row.Integer(column));
}

/// " AND (column IS NULL OR filter)" for a geometry, in the words of the library's angle filter; nothing for none. `table`: the name
/// of the table with a column Angle, as a query calls it.
std::string AngleCondition(const std::string& table, std::int32_t geometry);

/// A geometry to bind through CAST(NULLIF(?, '') AS INTEGER): NULL for none.
inline std::string GeometryText(std::int32_t geometry) {
  return geometry == io::kNoGeometry ? std::string() : std::to_string(geometry);
}

/// Doubles of a column; its place in the message when there is another number of them.
void TakeCurve(const Connection& connection, std::string_view bytes, const char* table, std::int64_t number,
               Curve& curve);

/// Store::BeginBatch and Store::Trials.
std::unique_ptr<BatchWriter> WriteBatch(Connection& connection, const std::string& source,
                                        const Author& author);
std::unique_ptr<TrialCursor> ReadTrials(Connection& connection, const TrialFilter& filter);

/// Store::Recipes, Store::AddRecipes and Store::RemoveRecipe.
std::vector<MadeRecipe> ReadRecipes(Connection& connection);
AddedRecipes StoreRecipes(Connection& connection, std::span<const MadeRecipe> recipes, const Author& author);
void DropRecipe(Connection& connection, std::int64_t number, const Author& author);

/// The query of ReadTrials, for a look at its plan.
std::string TrialQuery(const TrialFilter& filter);

}  // namespace vrx::store

#endif  // VRXSTORE_SQLITE_PARTS_H_
