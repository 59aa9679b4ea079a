// How the commands that look for recipes run a search: with a progress bar, an ear for Ctrl-C, and words for what is refused.

#ifndef TOOLS_VRX_RECIPES_RECIPE_SEARCH_H_
#define TOOLS_VRX_RECIPES_RECIPE_SEARCH_H_

#include <cstddef>
#include <functional>
#include <string>

#include <vrxmath/matching/recipe.h>

#include "tools/vrx/base/terminal.h"
#include "tools/vrx/output/color_system_file.h"

namespace vrx::tool {

/// The names of the parts of a search in messages.
struct SearchNames {
  std::string system;   ///< the file
  std::string limits;   ///< the file; may be empty
  std::string target;   ///< file and row
  std::string batch;    ///< of a correction: where its curve stands
  std::string formula;  ///< and its formula
};

/// Throws InputError, with file and field, unless the outcome is kNone.
void RefuseFaults(const RecipeOutcome& outcome, const ColorSystem& system, const CRecipeSettings& settings,
                  const SearchNames& names);

/// Refuses what a search would refuse of its target, before any subset is solved: so that a bad target behind good ones
/// is told at once and leaves no results. `search` runs a search with the settings that it is given.
void CheckSearch(const ColorSystem& system, const CRecipeSettings& settings, const SearchNames& names,
                 const std::function<RecipeOutcome(const CRecipeSettings&)>& search);

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
