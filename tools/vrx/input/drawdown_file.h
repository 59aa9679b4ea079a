// Weighed drawdowns from CSV files: curves with what they were made of and how they were read.

#ifndef TOOLS_VRX_INPUT_DRAWDOWN_FILE_H_
#define TOOLS_VRX_INPUT_DRAWDOWN_FILE_H_

#include <string>
#include <vector>

#include <vrxmath/matching/calibration.h>

#include "tools/vrx/input/curve_input.h"

namespace vrx::tool {

struct DrawdownFile {
  std::vector<std::string> names;  ///< of the components, in the order of the columns
  CDrawdownArray drawdowns;        ///< in the order of their first rows
};

/// Reads a file of curves with columns `share:NAME`, one per component, in percent or as fractions of 1, and `surface`:
/// `opaque` (what a row is without that column), or `black card`, `white card`, `film over black` and `film over
/// white`, four rows of one id that make a film. Cards with the id `card` serve every film that has none of its own.
/// Throws InputError, with file and row, for shares that do not add up and for films that miss a row.
DrawdownFile ReadDrawdowns(const std::string& path, const CurveInputOptions& options);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_INPUT_DRAWDOWN_FILE_H_
