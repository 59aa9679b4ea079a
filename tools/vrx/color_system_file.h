// Colour systems and formulas from JSON files; docs/colour_system_file.md describes them.

#ifndef TOOLS_VRX_COLOR_SYSTEM_FILE_H_
#define TOOLS_VRX_COLOR_SYSTEM_FILE_H_

#include <string>
#include <vector>

#include <vrxmath/colorant/colorant_rules.h>
#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/formula/formula.h>

namespace vrx::tool {

struct ColorSystem {
  CColorantSystemData data;  ///< its `componentsA` tell the order of the file
  CColorantRulesData rules;
};

/// The components in the order of the file. They live in the system.
std::vector<const CComponent*> ComponentsInOrder(const ColorSystem& system);

/// Reads a colour system. Throws InputError, with file and field, for anything that it cannot be.
ColorSystem ReadColorSystem(const std::string& path);

/// Writes a file that ReadColorSystem reads back to the same curves. Throws OutputError when that fails.
void WriteColorSystem(const std::string& path, const ColorSystem& system);

struct NamedFormula {
  std::string name;
  CDbFormula formula;
};

/// Reads the formulas of a file; their components are those of `system`.
std::vector<NamedFormula> ReadFormulas(const std::string& path, const ColorSystem& system);

/// Writes a file that ReadFormulas reads. Throws OutputError when that fails.
void WriteFormulas(const std::string& path, const std::vector<NamedFormula>& formulas);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_COLOR_SYSTEM_FILE_H_
