// Weighed drawdowns from CSV files: curves with what they were made of and how they were read.

#ifndef TOOLS_VRX_INPUT_DRAWDOWN_FILE_H_
#define TOOLS_VRX_INPUT_DRAWDOWN_FILE_H_

#include <string>
#include <vector>

#include <vrxmath/matching/calibration.h>

#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/input/surface_options.h"

namespace vrx::tool {

struct DrawdownFile {
  std::vector<std::string> names;        ///< of the components, in the order of the columns
  std::vector<bool> isBase;              ///< of each: true of a base or resin
  bool areShares = false;                ///< in percent or of 1; else parts in any one unit
  bool isOnSubstrate = false;            ///< shares are of a substrate, and need not add up
  CDrawdownArray drawdowns;              ///< in the order of their first rows
  io::CommonGeometry geometry;           ///< of all curves, those of the file that is `known` among them
  std::vector<std::string> unusedCards;  ///< rows of cards that no film uses, as messages name them
};

/// Reads a file of curves with a column per component: `share:NAME`, in percent or as fractions of 1, which must add up;
/// or `amount:NAME` and `base:NAME` (or `resin:NAME`), parts in any one unit. A column `surface` says `opaque` (what a row
/// is without that column), or `black card`, `white card`, `film over black` and `film over white`, four rows of one id
/// that make a film. Cards with the id `card` serve every film that has none of its own.
/// With `known` the components are those of that file, and a column `formula` ("1:94;carbon black:6") may stand in the
/// place of theirs. On a `substrate`, whose name this is, shares are of it and need not add up, as dyers state them; without
/// a column of its own it gets one. Throws InputError, with file and row, for shares that do not add up and for films that
/// miss a row, and for curves of which the file says that they are not what `taken` says.
DrawdownFile ReadDrawdowns(const std::string& path, const CurveInputOptions& options,
                           const TakenSpecular& taken, const DrawdownFile* known = nullptr,
                           const std::string& substrate = {});

}  // namespace vrx::tool

#endif  // TOOLS_VRX_INPUT_DRAWDOWN_FILE_H_
