// Dilutions: components that are weighed in as a mixture of others.

#ifndef TOOLS_VRX_INPUT_DILUTIONS_H_
#define TOOLS_VRX_INPUT_DILUTIONS_H_

#include <string>

#include "tools/vrx/input/drawdown_file.h"

namespace vrx::tool {

/// Puts what dilutions hold in their place. `path` is a CSV file with the columns `component`, `of` and `amount`: how much
/// of a component is in one part of a dilution, such as `1/10 carbon,carbon,0.1`. What is missing to a whole part is the
/// base, if there is one. Dilutions of dilutions come after these. Throws InputError, with file and row, for a dilution that
/// is not in the drawdowns, for one of more than a part, and for one with a rest where there is not exactly one base.
void ExpandDilutions(const std::string& path, DrawdownFile& file);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_INPUT_DILUTIONS_H_
