// The limits of a run: one box for everything, or a file with boxes per standard, geometry and illuminant.

#ifndef TOOLS_VRX_TOLERANCE_TABLE_H_
#define TOOLS_VRX_TOLERANCE_TABLE_H_

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/tolerance/box_tolerance.h>

#include "tools/vrx/csv_reader.h"

namespace vrx::tool {

/// A box from one number, which becomes all seven limits, or from seven in index order. Throws InputError for
/// another count and for limits that leave nothing inside the box.
CBoxTolData BoxFromNumbers(const std::vector<double>& numbers);

class ToleranceTable {
 public:
  /// The largest number of rows that a tolerance file may have.
  static constexpr std::size_t kMaxRows = 200'000;

  /// The box where no row of a file applies; all limits 1.5 when new.
  void SetDefault(const CBoxTolData& box) { default_ = box; }

  /// Reads a file: columns `standard`, `geometry` and `illuminant`, each of which may be missing or empty and
  /// then means all of them, and the limits `plus0,minus0,plus1,minus1,plus2,minus2,total`. Throws
  /// InputError, also for two rows that speak of the same.
  void Load(CsvReader& csv);

  /// The box of a standard, geometry and illuminant. Of several rows that apply the one that names the
  /// standard goes first, then the one that names the geometry, then the one that names the illuminant.
  const CBoxTolData& Find(std::string_view standard, int32_t geometry, vrxIlluminant illuminant) const;

  /// True when every box is the default.
  bool IsUniform() const { return rows_.empty(); }

 private:
  // By standard ("" for all), then by geometry and illuminant (-1 for all).
  using Boxes = std::map<std::pair<int32_t, int32_t>, CBoxTolData>;
  static const CBoxTolData* FindIn(const Boxes& boxes, int32_t geometry, int32_t illuminant);

  std::map<std::string, Boxes, std::less<>> rows_;
  CBoxTolData default_;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_TOLERANCE_TABLE_H_
