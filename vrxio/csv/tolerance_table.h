// Files of limits: boxes or ellipsoids per standard, geometry and illuminant.

#ifndef VRXIO_CSV_TOLERANCE_TABLE_H_
#define VRXIO_CSV_TOLERANCE_TABLE_H_

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/tolerance/box_tolerance.h>
#include <vrxmath/tolerance/ellipse_tolerance.h>

#include <vrxio/csv/csv_reader.h>
#include <vrxio/measurement/names.h>

namespace vrx::io {

/// A box from one number, which becomes all seven limits, or from seven in index order. Throws InputError for
/// another count and for limits that leave nothing inside the box.
CBoxTolData BoxFromNumbers(const std::vector<double>& numbers);

/// The conditions that the limits of a file hold for, beside the standard, the geometry and the illuminant of each row.
struct LimitScope {
  int32_t system = vrxSystemLab;
  int32_t observer = kObserver10;
};

/// Whether something was used, as several threads may say at a time.
class UseMark {
 public:
  UseMark() = default;
  UseMark(const UseMark& other) : isUsed_(other.IsUsed()) {}
  UseMark& operator=(const UseMark& other) {
    isUsed_ = other.IsUsed();
    return *this;
  }
  ~UseMark() = default;

  void Use() const {
    if (!IsUsed()) isUsed_.store(true, std::memory_order_relaxed);
  }
  bool IsUsed() const { return isUsed_.load(std::memory_order_relaxed); }

 private:
  mutable std::atomic<bool> isUsed_{false};
};

/// LIMITS is CBoxTolData or CEllipseData.
template <class LIMITS>
class LimitTable {
 public:
  /// The largest number of rows that a file may have.
  static constexpr std::size_t kMaxRows = 200'000;

  /// Reads a file: columns `standard`, `geometry` and `illuminant`, each of which may be missing or empty and
  /// then means all of them, and a column for each of the limits: `plus0,minus0,plus1,minus1,plus2,minus2,
  /// total` of a box, `centreL,centreA,centreB,lightness,major,minor,angle,total,factor` of an ellipsoid.
  /// Columns `system` and `observer` may say what a row was made for. Throws InputError, also for two rows
  /// that speak of the same, for a row that was made for something else than `scope`, and for a file without rows.
  void Load(CsvReader& csv, const LimitScope& scope);

  /// A row that is made elsewhere, and those of a standard, "" for those of all. An earlier row of the same is replaced.
  struct Row {
    int32_t geometry = kNoGeometry, illuminant = -1;  ///< -1: all
    LIMITS limits;
  };
  void Add(const std::string& standard, const Row& row);
  std::vector<Row> RowsOf(const std::string& standard) const;

  /// The limits of a standard, geometry and illuminant; null where no row applies. Of several rows that apply
  /// the one that names the standard goes first, then the one that names the geometry, then the one that
  /// names the illuminant.
  const LIMITS* Find(std::string_view standard, int32_t geometry, vrxIlluminant illuminant) const;

  bool IsEmpty() const { return rows_.empty(); }
  std::size_t Size() const;
  /// Rows that Find never gave, in the order of the file: "line 3 (standard p02)", and those that were made elsewhere without a line:
  /// "standard p02, SCI". The row for whatever has no limits of its own is none of them.
  std::vector<std::string> UnusedRows() const;
  /// Those of them that belong to a standard of which another row was given: "standard p02, SCI". The row for whatever of this standard
  /// has no other is none of them.
  std::vector<std::string> UnusedRowsOfUsed() const;

 private:
  struct Entry {
    LIMITS limits;
    int64_t line;
    UseMark mark;
  };
  // By standard ("" for all), then by geometry and illuminant (-1 for all).
  using Entries = std::map<std::pair<int32_t, int32_t>, Entry>;
  using Key = std::pair<int32_t, int32_t>;
  static std::string ScopeText(const std::string& standard, const Key& key);
  static const Entry* FindIn(const Entries& entries, int32_t geometry, int32_t illuminant);

  std::map<std::string, Entries, std::less<>> rows_;
};

using BoxTable = LimitTable<CBoxTolData>;
using EllipseTable = LimitTable<CEllipseData>;

/// The columns of the nine numbers of an ellipsoid, in the order of their indices.
std::span<const std::string_view> EllipseColumns();

}  // namespace vrx::io

#endif  // VRXIO_CSV_TOLERANCE_TABLE_H_
