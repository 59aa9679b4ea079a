// Standards on their way into the tables of a job.

#include <vrxstore/database/parts.h>
#include <vrxstore/records/stored_form.h>
#include <vrxstore/records/trail.h>

namespace vrx::store {
namespace {

// Writes standards in the transaction that is under way.
class StandardWriter {
 public:
  StandardWriter(Database& database, const Author& author)
      : database_(database),
        author_(author),
        measuring_(database),
        find_(database,
              "SELECT s.id, s.version, s.removed, v.digest FROM standard s JOIN standard_version v ON "
              "v.standard = s.id AND v.version = s.version WHERE s.name = ?"),
        standard_(database, "INSERT INTO standard(id, name, version) VALUES(?, ?, 1)"),
        update_(database, "UPDATE standard SET version = ?, removed = 0 WHERE id = ?"),
        version_(
            database,
            "INSERT INTO standard_version(id, standard, version, added, conditions, digest) VALUES(?, ?, "
            "?, ?, ?, ?)"),
        curve_(database,
               "INSERT INTO curve(id, standard_version, \"Angle\", samples, measured, measuring) VALUES(?, "
               "?, ?, "
               "?, ?, ?)"),
        limits_(
            database,
            "INSERT INTO tolerance(id, standard_version, \"Angle\", illuminant, limits) VALUES(?, ?, ?, ?, "
            "?)"),
        nextStandard_(NextNumber(database, "standard")),
        nextVersion_(NextNumber(database, "standard_version")),
        nextCurve_(NextNumber(database, "curve")),
        nextLimits_(NextNumber(database, "tolerance")) {}

  void Add(const Standard& standard, AddedStandards& added) {
    if (standard.name.empty()) throw StoreError(database_.Name() + ": a standard needs a name");
    if (standard.curves.empty())
      throw StoreError(database_.Name() + ": standard \"" + standard.name + "\" has no curve");
    const std::string digest = DigestOf(standard);
    const bool isThere = find_.Bind(standard.name).Step();
    RequireFollowed(standard, isThere && find_.Integer(2) == 0 ? find_.Small(1) : 0);
    if (!isThere) {
      standard_.Bind(nextStandard_, standard.name).Run();
      AddVersion(standard, nextStandard_++, 1, digest);
      AppendTrail(database_, author_, "add standard", standard.name, digest);
      ++added.added;
      return;
    }
    const std::int64_t number = find_.Integer(0);
    const std::int32_t version = find_.Small(1) + 1;
    const bool isOutOfUse = find_.Integer(2) != 0;
    const bool isSame = !isOutOfUse && find_.Text(3) == digest;
    find_.Reset();
    if (isSame) {
      ++added.unchanged;
      return;
    }
    AddVersion(standard, number, version, digest);
    update_.Bind(version, number).Run();
    AppendTrail(database_, author_, "change standard",
                standard.name + " to version " + std::to_string(version), digest);
    ++added.changed;
    if (isOutOfUse) added.returned.push_back(standard.name);
  }

 private:
  // Limits and curves that were taken from a version would undo a change that another process made since.
  void RequireFollowed(const Standard& standard, std::int32_t current) {
    if (!standard.follows || *standard.follows == current) return;
    find_.Reset();
    throw StoreError(database_.Name() + ": standard \"" + standard.name +
                     "\" was changed by another process meanwhile; nothing was added, repeat the command");
  }

  void AddVersion(const Standard& standard, std::int64_t number, std::int32_t version,
                  const std::string& digest) {
    const std::int64_t row = nextVersion_++;
    const std::optional<std::string> conditions =
        standard.conditions ? std::optional(ConditionsText(*standard.conditions)) : std::nullopt;
    version_.Bind(row, number, version, NowText(), conditions, BlobOf(digest)).Run();
    for (const MeasuredCurve& curve : standard.curves) {
      const std::int64_t how = measuring_.NumberOf(curve.measuring);
      curve_.Bind(nextCurve_++, row, GeometryToBind(curve.geometry), CurveOf(curve.samples), curve.date, how)
          .Run();
    }
    for (const StandardLimits& one : standard.limits) {
      std::optional<std::int64_t> illuminant;
      if (one.illuminant != StandardLimits::kAllIlluminants) illuminant = one.illuminant;
      limits_
          .Bind(nextLimits_++, row, GeometryToBind(one.geometry), illuminant,
                BlobOf(LimitsBytes({&one.limits, 1})))
          .Run();
    }
  }

  Database& database_;
  const Author& author_;
  MeasuringTable measuring_;
  Statement find_, standard_, update_, version_, curve_, limits_;
  std::int64_t nextStandard_, nextVersion_, nextCurve_, nextLimits_;
};

}  // namespace

AddedStandards StoreStandards(Database& database, std::span<const Standard> standards, const Author& author) {
  AddedStandards added;
  Transaction transaction(database);
  StandardWriter writer(database, author);
  for (const Standard& standard : standards) writer.Add(standard, added);
  transaction.Commit();
  return added;
}

}  // namespace vrx::store
