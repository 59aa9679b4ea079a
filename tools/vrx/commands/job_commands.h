// The commands within `vrx job`, by what they are about.

#ifndef TOOLS_VRX_COMMANDS_JOB_COMMANDS_H_
#define TOOLS_VRX_COMMANDS_JOB_COMMANDS_H_

namespace vrx::tool {

class Command;

void AddJobStandards(Command& job);  ///< add-standard, standards, show, remove, rename
void AddJobProfiles(Command& job);   ///< add-profile, profiles
void AddJobPage(Command& job);       ///< page
void AddJobRecipes(Command& job);    ///< add-recipes, recipes, remove-recipe
void AddJobHistory(Command& job);    ///< history
void AddJobCharts(Command& job);     ///< trend, statistics
void AddJobRejudge(Command& job);    ///< rejudge

}  // namespace vrx::tool

#endif  // TOOLS_VRX_COMMANDS_JOB_COMMANDS_H_
