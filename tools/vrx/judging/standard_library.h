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
  /// The colours of rows alone, in their order.
  ColorTable Of(const std::vector<std::size_t>& rows) const {
    ColorTable some{std::vector<ColorTable::Under>(colors_.under.size())};
    for (std::size_t j = 0; j < colors_.under.size(); ++j) {
      const ColorTable::Under& all = colors_.under[j];
      for (const std::size_t row : rows) {
        const auto at = static_cast<std::ptrdiff_t>(row);
        some.under[j].xyz.insert(some.under[j].xyz.end(), all.xyz.begin() + 3 * at,
                                 all.xyz.begin() + 3 * at + 3);
        some.under[j].lab.insert(some.under[j].lab.end(), all.lab.begin() + 5 * at,
                                 all.lab.begin() + 5 * at + 5);
      }
    }
    return some;
  }
  std::vector<ColorBatch> Batches() const { return colors_.Batches(); }

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

/// The standards among which samples of one geometry look: those of the same and those without one. A sample whose file says
/// nothing looks among all.
class Libraries {
 public:
  explicit Libraries(const NamedColors& standards) : standards_(standards) {}

  struct Library {
    std::vector<std::size_t> rows;  // of the standards; empty for all of them
    ColorTable colors;
    std::vector<ColorBatch> batches;

    std::size_t RowOf(std::size_t place) const { return rows.empty() ? place : rows[place]; }
    bool IsEmpty() const { return batches.empty(); }
  };

  const Library& For(int32_t geometry) {
    const auto [entry, isNew] = libraries_.try_emplace(geometry);
    if (isNew) Fill(geometry, entry->second);
    return entry->second;
  }

 private:
  void Fill(int32_t geometry, Library& library) const {
    const std::vector<int32_t>& geometries = standards_.Geometries();
    const auto fits = [geometry](int32_t other) {
      return geometry == kNoGeometry || other == kNoGeometry || other == geometry;
    };
    if (std::ranges::all_of(geometries, fits)) {
      library.batches = standards_.Batches();
      return;
    }
    for (std::size_t i = 0; i < geometries.size(); ++i) {
      if (fits(geometries[i])) library.rows.push_back(i);
    }
    if (library.rows.empty()) return;
    library.colors = standards_.Of(library.rows);
    library.batches = library.colors.Batches();
  }

  const NamedColors& standards_;
  std::map<int32_t, Library> libraries_;
};

/// The standard that is nearest to each trial by the settings' system, the worst of its differences under the illuminants counting.
std::unique_ptr<Standards> NearestStandards(CurveReader reader, const JudgeSettings& settings);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_STANDARD_LIBRARY_H_
