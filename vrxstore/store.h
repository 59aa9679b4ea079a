// A job: standards, trials, verdicts and their history, kept in a database. One interface, behind which a back end keeps the
// rows: an SQLite file, or a PostgreSQL server.
//
//   const auto store = OpenStore("plant.vrxjob");
//   store->AddStandards({&standard, 1}, {.by = "J. Doe"});
//   const auto batch = store->BeginBatch("monday.csv", {});
//   batch->Add(trial);                     // with its judgement
//   const StoredBatch stored = batch->Commit();
//
// Every function that changes something does so in one transaction, with its row of the trail; what was not committed is not
// there. All of them throw StoreError, and InputError for samples that cannot be stored. One thread at a time, and one
// transaction: between BeginBatch and Commit only reading functions may be called. What reads row by row ends before the store does, and
// on a server with the next change.

#ifndef VRXSTORE_STORE_H_
#define VRXSTORE_STORE_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <vrxstore/records/records.h>

namespace vrx::store {

/// Curves of the current versions of standards, one by one, in the order in which the standards were first added.
class CurveCursor {
 public:
  struct Row {
    std::int64_t place = 0;  ///< of the curve, for Seek
    std::string standard;
    MeasuredCurve curve;
  };
  virtual ~CurveCursor() = default;
  /// False behind the last one.
  virtual bool Next(Row& row) = 0;
  /// Makes the curve at a place the next one; 0: the first.
  virtual void Seek(std::int64_t place) = 0;
};

/// Trials with their judgements, one by one, in the order of their storing.
class TrialCursor {
 public:
  virtual ~TrialCursor() = default;
  virtual bool Next(StoredTrial& trial) = 0;
};

/// Rows of the trail in their order.
class TrailCursor {
 public:
  virtual ~TrailCursor() = default;
  virtual bool Next(TrailRow& row) = 0;
};

/// Trials on their way into a job, in one transaction. Without a commit nothing of them stays.
class BatchWriter {
 public:
  virtual ~BatchWriter() = default;
  /// Takes a trial and its judgement. Throws InputError for a standard that the job does not have.
  virtual void Add(const NewTrial& trial) = 0;
  /// Stores the batch, unless one of the same trials is there and nobody wants it `again`: `wasThere` is true then, and number and
  /// time are those of the last such one. A batch without trials is not stored and has the number 0.
  virtual StoredBatch Commit(bool again = false) = 0;
};

class Store {
 public:
  virtual ~Store() = default;

  /// Name, version and counts, and the head of the trail, all of one moment.
  virtual JobInfo Info() = 0;

  /// Standards, in the order in which they were first added.
  virtual std::vector<StandardEntry> Standards() = 0;
  /// A version of a standard, 0 for the current one; none where there is no such standard or version, or where it was removed.
  virtual std::optional<Standard> FindStandard(const std::string& name, std::int32_t version = 0) = 0;
  /// Curves of all current standards, of one of them, and of those in the range of an angle filter.
  virtual std::unique_ptr<CurveCursor> StandardCurves(const std::string& standard = {},
                                                      std::int32_t geometry = io::kNoGeometry) = 0;
  /// Whether any curve of a standard has a geometry.
  virtual bool HaveGeometries() = 0;
  /// Adds standards; one whose name is there and whose content is another becomes its next version. Throws StoreError where a version
  /// that one of them `follows` is no longer the current one, and adds none.
  virtual AddedStandards AddStandards(std::span<const Standard> standards, const Author& author) = 0;
  /// Takes a standard out of use; its versions stay where trials refer to them, for which `evenWithTrials` must be set. Throws
  /// StoreError otherwise, and for one that is not there.
  virtual void RemoveStandard(const std::string& name, bool evenWithTrials, const Author& author) = 0;
  /// Throws StoreError for a standard that is not there, and for a name that is empty or was ever used.
  virtual void RenameStandard(const std::string& from, const std::string& to, const Author& author) = 0;

  /// `source`: where the trials come from, for people.
  virtual std::unique_ptr<BatchWriter> BeginBatch(const std::string& source, const Author& author) = 0;
  /// The trials that a filter lets through, with their judgements and the last decision about each.
  virtual std::unique_ptr<TrialCursor> Trials(const TrialFilter& filter) = 0;
  /// The batches in the order of their storing.
  virtual std::vector<BatchEntry> Batches() = 0;
  /// The raw readings of a trial that is a mean; empty for another.
  virtual std::vector<Curve> Readings(std::int64_t trial) = 0;
  /// Sets a person's decision about a trial; earlier ones stay behind it. Throws StoreError for a trial that is not there.
  virtual void Decide(std::int64_t trial, bool isAccepted, const Author& author) = 0;

  /// The profiles by name.
  virtual std::vector<Profile> Profiles() = 0;
  /// Adds a profile, or gives one of its name other options.
  virtual void SetProfile(const Profile& profile, const Author& author) = 0;

  /// The recipes in the order in which they were added.
  virtual std::vector<MadeRecipe> Recipes() = 0;
  /// Adds recipes; one that is there with the same name, amounts and curve is not added again. A mixture that was made again is a
  /// recipe of its own. Throws StoreError for one without a name or amounts.
  virtual AddedRecipes AddRecipes(std::span<const MadeRecipe> recipes, const Author& author) = 0;
  /// Takes a recipe out of use; it stays in the trail. Throws StoreError for one that is not there.
  virtual void RemoveRecipe(std::int64_t number, const Author& author) = 0;

  /// The rows of the trail, the first one first.
  virtual std::unique_ptr<TrailCursor> Trail() = 0;

  /// What the back end itself finds wrong with its pages and indices; empty when nothing is.
  virtual std::vector<std::string> CheckPages() = 0;
  /// Copies the job into a new file, as it stands at one moment. Throws StoreError for a file that is there, and for a job on a
  /// server, whose own programs do this.
  virtual void Backup(const std::string& path) = 0;
  /// What opening it changed, as a sentence for people: an older job gets the tables of today. Empty where nothing was.
  virtual const std::string& Notice() const = 0;
};

/// How long a change waits for others that are under way.
inline constexpr double kUsualWait = 60;

/// Makes a new job in a file, which must not be there, or in the empty database that a URL names (IsOnServer in job_address.h), or
/// opens one. `wait`: seconds. Throws StoreError for what cannot be used: another program's, a newer version's, none at all. A job
/// of an older version gets the tables of today in one transaction, after a file was copied to one beside it, named by that version
/// ("plant.vrxjob.v1").
std::unique_ptr<Store> CreateStore(const std::string& job, const std::string& name, const Author& author,
                                   double wait = kUsualWait);
std::unique_ptr<Store> OpenStore(const std::string& job, double wait = kUsualWait);

}  // namespace vrx::store

#endif  // VRXSTORE_STORE_H_
