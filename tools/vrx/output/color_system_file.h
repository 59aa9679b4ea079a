// Writing colour systems and formulas to files, whole or not at all.

#ifndef TOOLS_VRX_OUTPUT_COLOR_SYSTEM_FILE_H_
#define TOOLS_VRX_OUTPUT_COLOR_SYSTEM_FILE_H_

#include <string>
#include <vector>

#include <vrxio/systems/color_system_file.h>

#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {

/// Writes a file that ReadColorSystem reads back to the same curves. Throws OutputError when that fails.
void WriteColorSystem(const std::string& path, const ColorSystem& system);

/// Writes a file that ReadFormulas reads. Throws OutputError when that fails.
void WriteFormulas(const std::string& path, const std::vector<NamedFormula>& formulas);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_COLOR_SYSTEM_FILE_H_
