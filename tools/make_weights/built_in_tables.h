// The 52 built-in weighting tables, computed from the published spectra and observers.

#ifndef TOOLS_MAKE_WEIGHTS_BUILT_IN_TABLES_H_
#define TOOLS_MAKE_WEIGHTS_BUILT_IN_TABLES_H_

#include <filesystem>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/weighting.h>

namespace vrx::make_weights {

struct BuiltInTable {
  std::string name;      ///< the resource's name, such as "ILL02_10"
  std::string spectrum;  ///< what it was computed from, such as "D65"
  WeightingTable table;
};

/// All tables, in the order of illuminant number and observer, from the library's published spectra and from white_points.txt in
/// `published`. Throws std::runtime_error, with the file's name, when a figure is missing or malformed.
std::vector<BuiltInTable> ComputeBuiltInTables(const std::filesystem::path& published);

}  // namespace vrx::make_weights

#endif  // TOOLS_MAKE_WEIGHTS_BUILT_IN_TABLES_H_
