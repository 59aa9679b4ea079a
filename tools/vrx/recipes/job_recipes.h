// Recipes that were made, on their way into a job and out of it. A job keeps components by name: the numbers are those of one colour
// system.

#ifndef TOOLS_VRX_RECIPES_JOB_RECIPES_H_
#define TOOLS_VRX_RECIPES_JOB_RECIPES_H_

#include <string>
#include <vector>

#include <vrxstore/store.h>

#include "tools/vrx/output/color_system_file.h"
#include "tools/vrx/recipes/correction.h"

namespace vrx::tool {

/// The recipes of a file of curves with a column `formula`, for a job.
std::vector<store::MadeRecipe> RecipesOfFile(const std::string& path, const ColorSystem& system,
                                             const CurveInputOptions& input);

/// The recipes of a job whose components the colour system has; a message tells of the others. Throws InputError when none is
/// left, and for a curve whose geometry is not what is `taken`.
std::vector<NamedBatch> RecipesOfJob(const std::string& job, const ColorSystem& system,
                                     const TakenSpecular& taken);

/// The amounts of a recipe as "94 Titanium White + 4.5 Cerulean Blue", in the order in which they were given.
std::string AmountsOf(const store::MadeRecipe& recipe);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_RECIPES_JOB_RECIPES_H_
