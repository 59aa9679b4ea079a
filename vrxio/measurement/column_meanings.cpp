#include <vrxio/measurement/column_meanings.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <vrxio/measurement/names.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/shown_text.h>
#include <vrxio/text/text.h>

namespace vrx::io {
namespace {

constexpr double kWidestStep = 20;      // nm
constexpr double kLastMeasured = 2600;  // nm: no instrument for colours goes on beyond
constexpr std::size_t kFewestTogether = 3;

class Finder {
 public:
  Finder(const std::vector<std::string>& headings, const ReadOptions& options)
      : headings_(headings), options_(options) {
    for (const std::string& heading : headings) found_.columns.push_back(MeaningOf(heading));
  }

  ColumnMeanings Find() {
    DropStrangers();
    for (std::size_t i = 0; i < headings_.size(); ++i) MarkOwn(i);
    ChooseId();
    return std::move(found_);
  }

 private:
  bool IsRole(std::size_t i, ColumnRole role) const { return found_.columns[i].role == role; }

  // Columns of wavelengths, shortest first.
  std::vector<std::size_t> WavelengthColumns() const {
    std::vector<std::size_t> columns;
    for (std::size_t i = 0; i < headings_.size(); ++i) {
      if (IsRole(i, ColumnRole::kWavelength)) columns.push_back(i);
    }
    std::ranges::stable_sort(columns, {}, [&](std::size_t i) { return found_.columns[i].wavelength; });
    return columns;
  }

  // Keeps the largest group of wavelengths without a hole, and of the others those that are spelt as its members are and may be
  // measured: of these a hole is told.
  void DropStrangers() {
    const std::vector<std::size_t> columns = WavelengthColumns();
    std::size_t best = 0, bestCount = 0;
    for (std::size_t begin = 0; begin < columns.size();) {
      std::size_t end = begin + 1;
      while (end < columns.size() && Nm(columns[end]) - Nm(columns[end - 1]) <= kWidestStep + 1) ++end;
      if (end - begin > bestCount) {
        best = begin;
        bestCount = end - begin;
      }
      begin = end;
    }
    if (bestCount < kFewestTogether || bestCount == columns.size()) return;
    const std::string spelling = SpellingOf(headings_[columns[best]]);
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (i >= best && i < best + bestCount) continue;
      const bool isAlike = SpellingOf(headings_[columns[i]]) == spelling && Nm(columns[i]) <= kLastMeasured;
      if (!isAlike) found_.columns[columns[i]] = {};
    }
  }

  double Nm(std::size_t column) const { return found_.columns[column].wavelength; }

  void MarkOwn(std::size_t i) {
    const bool isIgnored = std::ranges::any_of(options_.ignoredColumns, [&](const std::string& name) {
      return EqualsIgnoringCase(name, headings_[i]);
    });
    if (isIgnored) {
      found_.columns[i] = {ColumnRole::kIgnored};
    } else if (!IsRole(i, ColumnRole::kWavelength) && options_.isExtra != nullptr &&
               options_.isExtra(headings_[i])) {
      found_.columns[i] = {ColumnRole::kExtra};
    }
  }

  void ChooseId() {
    if (!options_.idColumn.empty()) return KeepId(Named());
    const bool hasNames = std::ranges::any_of(
        found_.columns, [](const Heading& column) { return column.role == ColumnRole::kName; });
    if (headings_.size() > 1 && headings_.front().empty() && IsRole(0, ColumnRole::kUnknown)) {
      found_.columns.front() = {ColumnRole::kId, 0, 0, kIdWithoutName};
    }
    std::size_t best = headings_.size();
    for (std::size_t i = 0; i < headings_.size(); ++i) {
      if (!IsRole(i, ColumnRole::kId)) continue;
      if (best == headings_.size() || found_.columns[i].rank < found_.columns[best].rank) best = i;
    }
    if (best == headings_.size() && !hasNames && options_.lenient) return KeepId(FirstUnknown());
    const bool isByName = best < headings_.size() && hasNames && found_.columns[best].rank > kIdOfMaker;
    KeepId(isByName ? headings_.size() : best);
  }

  std::size_t Named() const {
    for (std::size_t i = 0; i < headings_.size(); ++i) {
      if (EqualsIgnoringCase(headings_[i], options_.idColumn)) return i;
    }
    throw InputError("there is no column \"" + Shown(options_.idColumn) + "\", which --id-column names");
  }

  // A lenient reader's last resort; the number of columns when all are known.
  std::size_t FirstUnknown() {
    const auto unknown = std::ranges::find(found_.columns, ColumnRole::kUnknown, &Heading::role);
    const auto column = static_cast<std::size_t>(unknown - found_.columns.begin());
    if (column < headings_.size())
      found_.note = "the column " + Shown(headings_[column]) + " is used as the id";
    return column;
  }

  // Makes one column the ids. Others that could have them, of another rank, are passed over.
  void KeepId(std::size_t column) {
    const uint8_t rank =
        column < headings_.size() && IsRole(column, ColumnRole::kId) ? found_.columns[column].rank : 255;
    for (std::size_t i = 0; i < headings_.size(); ++i) {
      const bool isOther = i != column && IsRole(i, ColumnRole::kId);
      const bool isTwin = found_.columns[i].rank == rank && options_.idColumn.empty();
      if (isOther && !isTwin) found_.columns[i] = {ColumnRole::kDevice};
    }
    if (column < headings_.size()) found_.columns[column] = {ColumnRole::kId};
  }

  const std::vector<std::string>& headings_;
  const ReadOptions& options_;
  ColumnMeanings found_;
};

}  // namespace

ColumnMeanings MeaningsOf(const std::vector<std::string>& headings, const ReadOptions& options) {
  return Finder(headings, options).Find();
}

}  // namespace vrx::io
