
#include "tools/vrx/judging/standards.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/same_file.h"
#include "tools/vrx/base/text.h"

namespace vrx::tool {

namespace {

[[noreturn]] void FailNoStandard(const std::string& file, std::string_view id, int32_t geometry,
                                 const std::string& suggestion = {}) {
  const std::string of = geometry == kNoGeometry ? "" : " of geometry " + GeometryName(geometry);
  throw InputError(file + ": there is no standard \"" + std::string(id) + "\"" + of + suggestion);
}

// Whether trials may belong to standards of their own: each has the id of one, and not all have the first one's.
class ForgottenPairs {
 public:
  ForgottenPairs() = default;
  /// Reads the ids of the standards, and goes back to the first one.
  ForgottenPairs(CurveReader& standards, bool offersPairs) : offersPairs_(offersPairs) {
    constexpr std::size_t kMost = 4'000'000;
    try {
      CurveRow row;
      while (ids_.size() < kMost && standards.Next(row)) {
        if (ids_.empty()) first_ = row.id;
        ids_.insert(std::hash<std::string_view>()(row.id));
      }
    } catch (const InputError&) {  // rows that nobody asks for may be of any kind
    }
    standards.Rewind();
    isOpen_ = ids_.size() > 1;
  }

  bool IsOpen() const { return isOpen_; }
  void Take(const CurveRow& trial) {
    if (!isOpen_) return;
    isOpen_ = ids_.contains(std::hash<std::string_view>()(trial.id));
    hasOther_ = hasOther_ || trial.id != first_;
  }
  /// Behind the last trial.
  void Ask(const CurveReader& standards, const std::string& trials) const {
    if (!isOpen_ || !hasOther_) return;
    throw InputError(trials + ": each trial has the id of a standard in " + standards.Source().Name() + ": " +
                     (offersPairs_ ? "--pairs compares it with that one, " : "") + "--standard-id " + first_ +
                     " compares all with the first");
  }

 private:
  std::unordered_set<std::size_t> ids_;  // as hashes
  std::string first_;
  bool isOpen_ = false, hasOther_ = false;
  bool offersPairs_ = true;
};

// What is still open of the question once the trials were looked at, if they can be.
ForgottenPairs LookForPairs(CurveReader& standards, CurveReader& trials, bool offersPairs) {
  const bool canBePairs = standards.HasNames() && trials.HasNames() && standards.Source().CanSeek() &&
                          !AreOneFile(standards.Source().Name(), trials.Source().Name());
  if (!canBePairs) return {};
  ForgottenPairs pairs(standards, offersPairs);
  if (!pairs.IsOpen() || !trials.Source().CanSeek()) return pairs;
  try {
    CurveRow row;
    while (pairs.IsOpen() && trials.Next(row)) pairs.Take(row);
  } catch (const InputError&) {  // is told when the row is judged
  }
  trials.Rewind();
  pairs.Ask(standards, trials.Source().Name());
  return {};
}

class OneStandardForAll final : public Standards {
 public:
  OneStandardForAll(CurveReader reader, const std::string& id, ForgottenPairs pairs, std::string trials)
      : reader_(std::move(reader)),
        id_(id),
        isNamed_(!id.empty()),
        pairs_(std::move(pairs)),
        trials_(std::move(trials)) {
    ReadRows();
    if (!isNamed_ && !reader_.HasGeometries()) LookForOthers();
  }

  const Standard& Of(const CurveRow& trial) override {
    pairs_.Take(trial);
    const std::size_t place = PlaceOf(trial.geometry);
    Standard& standard = standards_[place];
    if (standard.stamp == 0) {
      const Row& row = RowFor(trial.geometry);
      const int32_t geometry = trial.geometry != kNoGeometry ? trial.geometry : row.geometry;
      standard = {place + 1, id_, geometry, row.sample, row.date, {}, row.gloss};
    }
    return standard;
  }
  const CurveReader& Reader() const override { return reader_; }
  void EndTrials() override {
    pairs_.Ask(reader_, trials_);
    const std::string& file = reader_.Source().Name();
    if (isNamed_ || !hasOthers_ || trials_.empty() || AreOneFile(file, trials_)) return;
    PrintMessage(file + ": warning: only its first standard, " + id_ + ", is used; --standard-id names one");
  }

 private:
  struct Row {
    int32_t geometry;
    Sample sample;
    std::string date;
    StatedGloss gloss;
  };

  // Where the standard of a geometry stands; the first place is that of none.
  static std::size_t PlaceOf(int32_t geometry) {
    const int32_t place = geometry - kNoGeometry;
    return static_cast<std::size_t>(place);
  }

  // Without geometries the first row of the file is all there is to read, unless another one was asked for.
  void ReadRows() {
    CurveRow row;
    while (reader_.Next(row)) {
      if (id_.empty()) id_ = row.id;
      hasOthers_ = hasOthers_ || row.id != id_;
      if (row.id != id_) {
        KeepForSuggestion(row.id);
        continue;
      }
      const auto same = [&](const Row& other) { return other.geometry == row.geometry; };
      if (std::ranges::any_of(rows_, same)) {
        reader_.Source().FailRow("standard \"" + id_ + "\" has a row" +
                                 (reader_.HasGeometries() ? " of this geometry" : "") + " already");
      }
      rows_.push_back({row.geometry, row, std::string(row.date), StatedGloss(reader_.Conditions())});
      if (!reader_.HasGeometries() && !isNamed_) return;
    }
    if (rows_.empty() && id_.empty()) throw InputError(reader_.Source().Name() + ": there is no row");
    if (rows_.empty())
      FailNoStandard(reader_.Source().Name(), id_, kNoGeometry, io::DidYouMean(id_, otherIds_));
    otherIds_.clear();
  }

  // The first ids that are not the one that was asked for, which may be misspelt.
  void KeepForSuggestion(std::string_view id) {
    constexpr std::size_t kMost = 10'000;
    const bool isNeeded = isNamed_ && rows_.empty() && otherIds_.size() < kMost;
    if (isNeeded && (otherIds_.empty() || otherIds_.back() != id)) otherIds_.emplace_back(id);
  }

  // A second row of the standard in a file of its own: nobody said which of the two it is.
  void LookForOthers() {
    const bool hasOwnFile = !trials_.empty() && !AreOneFile(reader_.Source().Name(), trials_);
    bool isTwice = false;
    try {
      CurveRow row;
      while (!isTwice && reader_.Next(row)) {
        hasOthers_ = hasOthers_ || row.id != id_;
        isTwice = row.id == id_ && hasOwnFile;
        if (!hasOwnFile) break;
      }
    } catch (const InputError&) {  // rows that nobody asks for may be of any kind
      hasOthers_ = true;
    }
    if (isTwice) reader_.Source().FailRow("standard \"" + id_ + "\" has a row already");
  }

  // The row of a geometry, else the one without; a trial without a geometry may take an only row.
  const Row& RowFor(int32_t geometry) const {
    for (const int32_t wanted : {geometry, kNoGeometry}) {
      const auto found = std::ranges::find(rows_, wanted, &Row::geometry);
      if (found != rows_.end()) return *found;
    }
    if (geometry == kNoGeometry && rows_.size() == 1) return rows_.front();
    FailNoStandard(reader_.Source().Name(), id_, geometry);
  }

  CurveReader reader_;
  std::string id_;
  bool isNamed_;
  bool hasOthers_ = false;  // rows of other standards, which nobody named
  std::vector<std::string> otherIds_;
  ForgottenPairs pairs_;
  std::string trials_;  // their file
  std::vector<Row> rows_;
  std::array<Standard, kAngleCodes + 1> standards_;  // by place
};

// The standard that a trial names, or that of its own id.
class StandardOfItsOwn final : public Standards {
 public:
  explicit StandardOfItsOwn(CurveReader reader) : reader_(std::move(reader)) {}

  const Standard& Of(const CurveRow& trial) override {
    if (!Fits(trial)) Advance(trial);
    const int32_t geometry = trial.geometry != kNoGeometry ? trial.geometry : row_.geometry;
    ++standard_.stamp;
    standard_.id = row_.id;
    standard_.geometry = geometry;
    standard_.sample = row_;
    standard_.date = row_.date;
    standard_.gloss = StatedGloss(reader_.Conditions());
    return standard_;
  }
  const CurveReader& Reader() const override { return reader_; }
  void EndTrials() override {
    if (!indexed_ && hasRow_) ReadOn(nullptr);
  }

 private:
  // A row of the file: the hash of its id, its offset above its geometry, counted from 1, and its number where that is its id.
  struct Entry {
    std::size_t hash;
    uint64_t place;
    uint64_t number;

    int32_t Geometry() const { return static_cast<int32_t>(place & kGeometryMask) - 1; }
    uint64_t Offset() const { return place >> kGeometryBits; }
  };
  static constexpr std::size_t kMaxEntries = 4'000'000;
  static constexpr int kGeometryBits = 8;
  static constexpr uint64_t kGeometryMask = (1U << kGeometryBits) - 1;
  static constexpr int32_t kAnyGeometryOfAll = -2;

  Entry EntryOf(const CurveRow& row) const {
    uint64_t number = 0;
    std::from_chars(row.id.data(), row.id.data() + row.id.size(), number);
    return {std::hash<std::string_view>()(row.id),
            reader_.Source().Offset() << kGeometryBits | static_cast<uint64_t>(row.geometry + 1), number};
  }

  bool Holds(std::string_view id, int32_t geometry) const {
    return hasRow_ && row_.id == id && row_.geometry == geometry;
  }
  static std::string_view StandardOf(const CurveRow& trial) {
    return trial.standard.empty() ? trial.id : trial.standard;
  }
  // Whether the row that is held is the trial's for sure. One without a geometry is where the file has no geometries;
  // elsewhere another row may have the trial's own.
  bool Fits(const CurveRow& trial) const {
    return Holds(StandardOf(trial), trial.geometry) ||
           (!reader_.HasGeometries() && Holds(StandardOf(trial), kNoGeometry));
  }

  // Reads the next row of the file. When it is a second one of the standard before, and not for `trial`, nobody said
  // which of the two that standard is.
  void ReadOn(const CurveRow* trial) {
    const bool hadRow = hasRow_;
    const int32_t geometry = row_.geometry;
    lastId_ = row_.id;
    hasRow_ = reader_.Next(row_);
    if (hadRow && Holds(lastId_, geometry) && (trial == nullptr || !Fits(*trial))) FailTwice(lastId_);
  }
  [[noreturn]] void FailTwice(std::string_view id) const {
    reader_.Source().FailRow("standard \"" + std::string(id) + "\" appears twice");
  }

  // The next row of the file, or wherever the trial's standard is.
  void Advance(const CurveRow& trial) {
    if (!indexed_) {
      ReadOn(&trial);
      if (Fits(trial)) return;
      MakeIndex();
    }
    const std::string_view id = StandardOf(trial);
    if (Find(id, trial.geometry) || Find(id, kNoGeometry)) return;
    // A trial whose file says nothing takes an only row, whatever its geometry.
    if (trial.geometry == kNoGeometry && Find(id, kAnyGeometryOfAll)) return;
    FailNoStandard(reader_.Source().Name(), id, trial.geometry);
  }

  void MakeIndex() {
    if (!reader_.Source().CanSeek()) {
      throw InputError(reader_.Source().Name() +
                       ": the trials are in a different order from the standards, which " +
                       "cannot be searched in a pipe; give a file");
    }
    indexed_ = true;
    reader_.Rewind();
    CurveRow row;
    while (reader_.Next(row)) {
      if (index_.size() == kMaxEntries) {
        reader_.Source().FailRow("more than 4 million standards in a different order from the trials");
      }
      index_.push_back(EntryOf(row));
    }
    std::ranges::sort(index_, {}, &Entry::hash);
  }

  // Makes the row of an id and geometry, or its only row, the current one; false when there is none.
  bool Find(std::string_view id, int32_t geometry) {
    const Entry* match = nullptr;
    const bool isAny = geometry == kAnyGeometryOfAll;
    const std::size_t hash = std::hash<std::string_view>()(id);
    auto at = std::ranges::lower_bound(index_, hash, {}, &Entry::hash);
    for (; at != index_.end() && at->hash == hash; ++at) {
      if (!isAny && at->Geometry() != geometry) continue;
      Load(*at);
      if (row_.id != id) continue;
      if (match != nullptr && isAny) return false;
      if (match != nullptr) FailTwice(id);
      match = &*at;
    }
    if (match != nullptr) Load(*match);
    return match != nullptr;
  }

  // A row without an id is called by its number in the file, which a reader that goes back to it no longer knows.
  void Load(const Entry& entry) {
    reader_.SeekTo(entry.Offset());
    hasRow_ = reader_.Next(row_);
    if (reader_.HasNames()) return;
    number_ = std::to_string(entry.number);
    row_.id = number_;
  }

  CurveReader reader_;
  CurveRow row_;
  std::string number_;  // of a row without an id
  std::string lastId_;
  Standard standard_;
  bool hasRow_ = false;
  bool indexed_ = false;
  std::vector<Entry> index_;
};

}  // namespace

std::unique_ptr<Standards> OneStandard(CurveReader reader, const std::string& id, CurveReader* trials,
                                       bool offersPairs) {
  const bool isOpen = id.empty() && trials != nullptr;
  ForgottenPairs pairs = isOpen ? LookForPairs(reader, *trials, offersPairs) : ForgottenPairs();
  return std::make_unique<OneStandardForAll>(std::move(reader), id, std::move(pairs),
                                             isOpen ? trials->Source().Name() : std::string());
}

std::unique_ptr<Standards> PairedStandards(CurveReader reader) {
  return std::make_unique<StandardOfItsOwn>(std::move(reader));
}

std::unique_ptr<Standards> StandardsForTrials(CurveReader reader, const std::string& id, bool pairs,
                                              CurveReader& trials) {
  if (trials.HasStandards() && !id.empty())
    throw InputError("--standard-id: the trials already name their standards in a column");
  if (pairs || trials.HasStandards()) return PairedStandards(std::move(reader));
  return OneStandard(std::move(reader), id, &trials);
}

}  // namespace vrx::tool
