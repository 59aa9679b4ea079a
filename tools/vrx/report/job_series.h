// Which outcomes of a job may stand in one chart.

#ifndef TOOLS_VRX_REPORT_JOB_SERIES_H_
#define TOOLS_VRX_REPORT_JOB_SERIES_H_

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include <vrxstore/records/records.h>

namespace vrx::tool {

/// The most series that a page draws.
inline constexpr std::size_t kDrawnSeries = 24;

/// What the outcomes of a series have in common: their differences are from one curve of a standard, and computed alike.
struct SeriesFacts {
  std::string standard, geometry, illuminant;
  std::int32_t observer = 0;  ///< in degrees
  /// Its title by the last trial, with the angle where that counts and no geometry says it.
  std::string system;
  std::set<std::int32_t> versions;  ///< of the standard: those with this curve that trials were held against

  /// "2", "1-3 5".
  std::string VersionsText() const;
};

/// Sorts outcomes into series. A standard that is measured anew moves the origin of every difference from it, so what was held
/// against another curve is a series of its own; a version that changed limits alone goes on with its series.
class SeriesList {
 public:
  /// The number of the series of an outcome of a trial: from 0, in the order in which they begin.
  std::size_t NumberOf(const store::StoredTrial& trial, std::size_t outcome);
  /// By number.
  const std::vector<SeriesFacts>& All() const { return all_; }
  /// Their numbers by the name of the standard, those of one standard in the order in which they begin.
  std::vector<std::size_t> Order() const;
  /// A name for each of them, by number: "grey, 45/0, D65/10°, dL", with system and version where only these tell two apart.
  /// `elements`: by number.
  std::vector<std::string> Headings(const std::vector<std::string>& elements) const;

 private:
  std::vector<SeriesFacts> all_;
  std::vector<CDifferenceSettings> last_;  // of each of them
  std::unordered_map<std::string, std::size_t> numbers_;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_JOB_SERIES_H_
