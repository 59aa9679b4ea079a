// What the functions over the tables of a job share.

#ifndef VRXSTORE_DATABASE_PARTS_H_
#define VRXSTORE_DATABASE_PARTS_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vrxstore/database/database.h>
#include <vrxstore/records/records.h>
#include <vrxstore/store.h>

namespace vrx::store {

/// Now in UTC, "2026-11-26T07:30:00Z", by the clock in use.
std::string NowText();

/// Appends a row to the trail in the transaction that is under way; gives its number. `what`, `subject` and `content` as in
/// TrailRow.
std::int64_t AppendTrail(Database& database, const Author& author, std::string_view what,
                         std::string_view subject, std::string_view content = {});
/// The rows of the trail in their order, and the last one; before the first one 0 with a digest of zeros.
std::unique_ptr<TrailCursor> ReadTrail(Database& database);
TrailRow TrailHead(Database& database);

/// The number of a description of how curves were measured, which is stored once.
class MeasuringTable {
 public:
  explicit MeasuringTable(Database& database);
  /// Stores the description where it is new.
  std::int64_t NumberOf(std::string_view content);

 private:
  Database& database_;
  Statement find_, insert_;
  std::string last_;
  std::int64_t lastNumber_ = 0;
};

/// A geometry in the column "Angle", where none is NULL.
inline std::int32_t GeometryIn(const Statement& row, int column) {
  return row.IsNull(column) ? io::kNoGeometry : row.Small(column);
}

/// " AND (column IS NULL OR filter)" for a geometry, in the words of the library's angle filter; nothing for none. `table`: the name
/// of the table with a column "Angle", as a query calls it.
std::string AngleCondition(const std::string& table, std::int32_t geometry);

/// A geometry to bind.
inline std::optional<std::int64_t> GeometryToBind(std::int32_t geometry) {
  if (geometry == io::kNoGeometry) return std::nullopt;
  return geometry;
}

/// The next number of a table. Only a transaction that writes may ask, since it keeps others from taking the same one.
std::int64_t NextNumber(Database& database, const std::string& table);

/// The samples of a column; their place in the message when there is another number of them.
void TakeCurve(const Database& database, const Statement& row, int column, const char* table,
               std::int64_t number, Curve& curve);

/// Store::AddStandards.
AddedStandards StoreStandards(Database& database, std::span<const Standard> standards, const Author& author);

/// Store::BeginBatch and Store::Trials.
std::unique_ptr<BatchWriter> WriteBatch(Database& database, const std::string& source, const Author& author);
std::unique_ptr<TrialCursor> ReadTrials(Database& database, const TrialFilter& filter);

/// Store::Recipes, Store::AddRecipes and Store::RemoveRecipe.
std::vector<MadeRecipe> ReadRecipes(Database& database);
AddedRecipes StoreRecipes(Database& database, std::span<const MadeRecipe> recipes, const Author& author);
void DropRecipe(Database& database, std::int64_t number, const Author& author);

/// The query of ReadTrials, for a look at its plan.
std::string TrialQuery(const Database& database, const TrialFilter& filter);

}  // namespace vrx::store

#endif  // VRXSTORE_DATABASE_PARTS_H_
