#include <vrxmath/matching/recipe_types.h>

namespace vrx {

CRecipeSettings::CRecipeSettings() {
  illuminants[0] = vrxIllumD65;
  illuminants[1] = vrxIllumA;
  illuminants[2] = vrxIllumCWF;
}

}  // namespace vrx
