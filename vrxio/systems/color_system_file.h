// Colour systems and formulas from JSON files; docs/colour_system_file.md describes them.

#ifndef VRXIO_SYSTEMS_COLOR_SYSTEM_FILE_H_
#define VRXIO_SYSTEMS_COLOR_SYSTEM_FILE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <vrxio/measurement/names.h>
#include <vrxmath/colorant/colorant_rules.h>
#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/colorant/component_calibration.h>
#include <vrxmath/colorant/optical_transforms.h>
#include <vrxmath/formula/formula.h>

namespace vrx::io {

/// A colour system of a file: its components with their optical data, and what may not stand together.
struct ColorSystem {
  CColorantSystemData data;  ///< its `componentsA` tell the order of the file
  CColorantRulesData rules;  ///< empty when the file has none
  /// How the surface entered the curves that it was calibrated on; none when the file does not say.
  std::optional<SaundersonMode> specular;
  int32_t geometry = kNoGeometry;         ///< of these curves, where all said the same
  std::string calibratedOn;               ///< what these curves were; may be empty
  CComponentCalibrationArray calibrated;  ///< of the components of which the file tells it, in its order
};

/// The words of the file for `specular`, in the order of SaundersonMode: included, excluded, none.
std::string_view SpecularName(SaundersonMode mode);

/// How the surface enters the curves of a system: as its file says, else as `given`, else included. `complaint` is empty
/// unless the file and what is given contradict each other, and then says how.
SaundersonMode SpecularOf(const ColorSystem& system, std::optional<SaundersonMode> given,
                          std::string& complaint);

/// The components in the order of the file. They live in the system.
std::vector<const CComponent*> ComponentsInOrder(const ColorSystem& system);

/// Reads a colour system. Throws InputError, with file and field, for anything that it cannot be.
ColorSystem ReadColorSystem(const std::string& path);

/// The text of a file that ReadColorSystem reads back to the same curves.
std::string ColorSystemText(const ColorSystem& system);

/// A formula with the name that its file gives it.
struct NamedFormula {
  std::string name;    ///< UTF-8
  CDbFormula formula;  ///< lines in the order of the file, amounts in any one unit
};

/// Reads the formulas of a file; their components are those of `system`. Throws InputError likewise.
std::vector<NamedFormula> ReadFormulas(const std::string& path, const ColorSystem& system);

/// The text of a file that ReadFormulas reads.
std::string FormulasText(const std::vector<NamedFormula>& formulas);

}  // namespace vrx::io

#endif  // VRXIO_SYSTEMS_COLOR_SYSTEM_FILE_H_
