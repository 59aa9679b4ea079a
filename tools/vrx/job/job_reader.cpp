#include "tools/vrx/job/job_reader.h"

#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

#include <vrxstore/records/stored_form.h>
#include <vrxstore/standard_names.h>

#include "tools/vrx/base/command.h"

namespace vrx::tool {
namespace {

// What readers of a job have in common: their layouts, which change with the description of how curves were measured.
class JobReader : public MeasurementReader {
 public:
  explicit JobReader(std::string name) : name_(std::move(name)) {}

  const MeasurementLayout& FirstLayout() const override { return *first_; }
  std::string_view FormName() const override { return "job"; }
  bool HasIds() const override { return true; }
  bool HasXyz() const override { return false; }
  const std::string& Name() const override { return name_; }
  uint64_t Size() const override { return 0; }
  uint64_t Position() const override { return 0; }
  bool CanSeek() const override { return true; }

 protected:
  const MeasurementLayout& LayoutOf(const std::string& measuring) {
    const auto [entry, isNew] = layouts_.try_emplace(measuring);
    if (isNew) {
      for (int32_t i = 0; i < kWavelengths; ++i) entry->second.wavelengths.push_back(WavelengthAt(i));
      entry->second.conditions = store::MeasuringFrom(measuring);
    }
    if (first_ == nullptr) first_ = &entry->second;
    return entry->second;
  }

 private:
  std::string name_;
  std::map<std::string, MeasurementLayout> layouts_;
  const MeasurementLayout* first_ = nullptr;
};

class StandardsOfJob final : public JobReader {
 public:
  StandardsOfJob(store::Store& store, const std::string& file, const std::string& standard)
      : JobReader(file), haveGeometries_(store.HaveGeometries()), cursor_(store.StandardCurves(standard)) {
    if (!cursor_->Next(row_)) {
      throw InputError(file + (standard.empty() ? ": the job has no standards"
                                                : ": " + store::UnknownStandardText(store, standard)));
    }
    LayoutOf(row_.curve.measuring);
    Rewind();
  }

  bool Next(Measurement& sample) override {
    if (!Fetch()) return false;
    sample = {};
    sample.id = row_.standard;
    sample.date = row_.curve.date;
    sample.geometry = row_.curve.geometry;
    sample.reflectance = row_.curve.samples;
    sample.layout = &LayoutOf(row_.curve.measuring);
    return true;
  }
  bool HasNames() const override { return false; }
  bool HasGeometries() const override { return haveGeometries_; }
  uint64_t Offset() const override { return static_cast<uint64_t>(row_.place); }
  void SeekTo(uint64_t offset) override {
    if (isKept_) {
      next_ = offset == 0 ? 0 : places_.at(static_cast<int64_t>(offset));
    } else {
      isKeeping_ = offset == 0;
      kept_.clear();
      cursor_->Seek(static_cast<int64_t>(offset));
    }
  }
  void Rewind() override { SeekTo(0); }
  std::string RowPlace() const override { return Name() + ", standard \"" + row_.standard + "\""; }

 private:
  // The next row: of the job, or of what was kept of it once it was read from one end to the other, where that is not much.
  bool Fetch() {
    if (isKept_) {
      if (next_ == kept_.size()) return false;
      row_ = kept_[next_++];
      return true;
    }
    constexpr std::size_t kMost = 20'000;
    if (cursor_->Next(row_)) {
      isKeeping_ = isKeeping_ && kept_.size() < kMost;
      if (isKeeping_) kept_.push_back(row_);
      return true;
    }
    isKept_ = isKeeping_;
    for (std::size_t i = 0; isKept_ && i < kept_.size(); ++i) places_.emplace(kept_[i].place, i);
    next_ = kept_.size();
    return false;
  }

  bool haveGeometries_;
  std::unique_ptr<store::CurveCursor> cursor_;
  store::CurveCursor::Row row_;
  bool isKeeping_ = false, isKept_ = false;
  std::vector<store::CurveCursor::Row> kept_;
  std::unordered_map<int64_t, std::size_t> places_;  // in kept_
  std::size_t next_ = 0;
};

class TrialsOfJob final : public JobReader {
 public:
  TrialsOfJob(store::Store& store, const std::string& file, store::TrialFilter filter,
              const store::LastJudgements& last, bool acceptedOnly)
      : JobReader(file), store_(store), filter_(std::move(filter)), last_(last), acceptedOnly_(acceptedOnly) {
    Rewind();
    Measurement sample;
    if (!Next(sample)) throw InputError(file + ": the job has no trials of these");
    Rewind();
  }

  bool Next(Measurement& sample) override {
    do {
      if (!cursor_->Next(trial_)) return false;
    } while (trial_.number < from_ || !last_.Counts(trial_) || (acceptedOnly_ && !trial_.IsAccepted()));
    sample = {};
    sample.id = trial_.name;
    sample.name = trial_.title;
    sample.standard = trial_.standard;
    sample.date = trial_.date;
    sample.geometry = trial_.geometry;
    sample.reflectance = trial_.samples;
    sample.layout = &LayoutOf(trial_.measuring);
    return true;
  }
  bool HasNames() const override { return true; }
  bool HasStandards() const override { return true; }
  bool HasGeometries() const override { return true; }
  uint64_t Offset() const override { return static_cast<uint64_t>(trial_.number); }
  void SeekTo(uint64_t offset) override {
    cursor_ = store_.Trials(filter_);
    from_ = static_cast<int64_t>(offset);
  }
  void Rewind() override { SeekTo(0); }
  std::string RowPlace() const override { return Name() + ", trial " + std::to_string(trial_.number); }

 private:
  store::Store& store_;
  store::TrialFilter filter_;
  const store::LastJudgements& last_;
  bool acceptedOnly_;
  int64_t from_ = 0;
  std::unique_ptr<store::TrialCursor> cursor_;
  store::StoredTrial trial_;
};

}  // namespace

std::unique_ptr<MeasurementReader> ReadStandards(store::Store& store, const std::string& file,
                                                 const std::string& standard) {
  return std::make_unique<StandardsOfJob>(store, file, standard);
}

std::unique_ptr<MeasurementReader> ReadTrials(store::Store& store, const std::string& file,
                                              const store::TrialFilter& filter,
                                              const store::LastJudgements& last, bool acceptedOnly) {
  return std::make_unique<TrialsOfJob>(store, file, filter, last, acceptedOnly);
}

}  // namespace vrx::tool
