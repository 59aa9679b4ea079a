// Display names of component kinds, optical models and factors, from the string table.

#ifndef VRXMATH_COLORANT_COMPONENT_NAMES_H_
#define VRXMATH_COLORANT_COMPONENT_NAMES_H_

#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// How the colorants of a system mix. The numbers are persistent.
enum OpticalModel : int32_t {
  kModelCoatings = 0,       ///< two-constant Kubelka-Munk
  kModelPlastics = 1,       ///< two-constant
  kModelTransparents = 2,   ///< one-constant
  kModelTextiles = 3,       ///< one-constant
  kModelFilter = 4,         ///< Beer's law
  kModelTradeSales = 5,     ///< two-constant
  kModelMetallics = 6,      ///< radiative transfer
  kModelMultiFlux = 7,      ///< radiative transfer
  kModelContinuousDye = 8,  ///< one-constant
};

/// The name of a component kind; that of kind 1 is "Base" under the models of coatings and trade sales and
/// "Resin" under any other. "Unknown" for a number that is no kind.
[[nodiscard]] VRX_API CString ComponentKindName(int32_t kind, int32_t opticalModel);

/// "industry|optical model", such as "Coatings|2 Constant"; empty for a number that is no model.
[[nodiscard]] VRX_API CString OpticalModelName(int32_t opticalModel);

/// The name of the factor of a component: paste under trade sales, colour concentrate under plastics,
/// dispersion under any other model. `brief` gives the short name, such as "Paste" for "Paste Factors".
[[nodiscard]] VRX_API CString FactorName(int32_t opticalModel, bool brief);

}  // namespace vrx

#endif  // VRXMATH_COLORANT_COMPONENT_NAMES_H_
