// Standards as colours, among which samples look for the nearest.

#ifndef TOOLS_VRX_JUDGING_STANDARD_LIBRARY_H_
#define TOOLS_VRX_JUDGING_STANDARD_LIBRARY_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <vrxmath/batch/nearest.h>
#include <vrxmath/batch/sample_colors.h>
#include <vrxmath/colorimetry/difference_systems.h>

#include <vrxio/files/curve_reader.h>

#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/judging/judge.h"
#include "tools/vrx/judging/standards.h"

namespace vrx::tool {

/// The conditions that colours are computed for.
struct SearchConditions {
  CDifferenceSettings difference;
  std::vector<vrxIlluminant> illuminants;
  int32_t observer = kObserver10;
};

/// Colours under every illuminant, and their names.
class NamedColors {
 public:
  /// `conditions` must outlive it.
  explicit NamedColors(const SearchConditions& conditions)
      : conditions_(conditions), colors_{std::vector<ColorTable::Under>(conditions.illuminants.size())} {}

  void Add(const CurveRow& row) {
    constexpr std::size_t kTogether = 512;
    names_.emplace_back(row.id);
    geometries_.push_back(row.geometry);
    waiting_.Add(row);
    if (++waitingCount_ == kTogether) Compute();
  }
  /// Computes the colours of the rows that were added.
  void Compute() {
    if (waitingCount_ == 0) return;
    const ColorTable added = ColorsOf(waiting_.View(), conditions_.difference.system, conditions_.illuminants,
                                      conditions_.observer);
    for (std::size_t j = 0; j < colors_.under.size(); ++j) {
      Append(added.under[j].xyz, colors_.under[j].xyz);
      Append(added.under[j].lab, colors_.under[j].lab);
    }
    waiting_.Clear();
    waitingCount_ = 0;
  }
  void Clear() {
    names_.clear();
    geometries_.clear();
    for (ColorTable::Under& under : colors_.under) under.xyz.clear(), under.lab.clear();
  }

  std::size_t Size() const { return names_.size(); }
  const std::string& Name(std::size_t i) const { return names_[i]; }
  int32_t Geometry(std::size_t i) const { return geometries_[i]; }
  const std::vector<int32_t>& Geometries() const { return geometries_; }
  Color At(std::size_t illuminant, std::size_t i) const { return colors_.At(illuminant, i); }
  const ColorTable& Colors() const { return colors_; }

 private:
  static void Append(const std::vector<double>& numbers, std::vector<double>& to) {
    to.insert(to.end(), numbers.begin(), numbers.end());
  }

  const SearchConditions& conditions_;
  std::vector<std::string> names_;
  std::vector<int32_t> geometries_;
  ColorTable colors_;
  SampleBuffer waiting_;
  std::size_t waitingCount_ = 0;
};

/// The standard that is nearest to each trial by the settings' system, the worst of its differences under the illuminants counting.
std::unique_ptr<Standards> NearestStandards(CurveReader reader, const JudgeSettings& settings);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_STANDARD_LIBRARY_H_
