// How the commands that look for recipes run a search: with a progress bar, an ear for Ctrl-C, and words for what is refused.

#ifndef TOOLS_VRX_RECIPES_RECIPE_SEARCH_H_
#define TOOLS_VRX_RECIPES_RECIPE_SEARCH_H_

#include <cstddef>
#include <functional>
#include <string>

#include <vrxmath/matching/recipe_faults.h>

#include "tools/vrx/base/terminal.h"
#include "tools/vrx/output/color_system_file.h"

namespace vrx::tool {

/// Names for messages about a search: of the file of a colour system, of the file of limits, which may be empty, and of a
/// target; settings are options, and what asks for the lowest cost is --sort.
RecipeNames NamesFor(const std::string& system, const std::string& limits, const std::string& target);

/// Throws InputError, with file and field, unless the outcome is kNone.
void RefuseFaults(const RecipeOutcome& outcome, const ColorSystem& system, const CRecipeSettings& settings,
                  const RecipeNames& names);

/// Progress over several searches.
class SearchProgress {
 public:
  explicit SearchProgress(std::size_t searches);

  /// The callback for the search of a number from 0. It throws Interrupted after Ctrl-C.
  std::function<bool(double)> OfSearch(std::size_t number);

 private:
  InterruptWatch interrupt_;
  ProgressBar bar_;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_RECIPES_RECIPE_SEARCH_H_
