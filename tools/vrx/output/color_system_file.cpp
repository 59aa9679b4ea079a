
#include "tools/vrx/output/color_system_file.h"

#include "tools/vrx/output/file_output.h"

namespace vrx::tool {

void WriteColorSystem(const std::string& path, const ColorSystem& system) {
  ReplaceFile(path, ColorSystemText(system));
}

void WriteFormulas(const std::string& path, const std::vector<NamedFormula>& formulas) {
  ReplaceFile(path, FormulasText(formulas));
}

}  // namespace vrx::tool
