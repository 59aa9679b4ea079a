// vrx job add-recipes, recipes, remove-recipe: recipes that were made, for vrx match --library.

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/job_commands.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/job/job_options.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/recipes/job_recipes.h"

namespace vrx::tool {
namespace {

struct RecipesOptions {
  JobOptions job;
  std::string system, recipe;
  std::vector<std::string> files;
  CurveInputOptions input;
  Format format = Format::kTable;
};

void RunAddRecipes(const RecipesOptions& options) {
  const ColorSystem system = ReadColorSystem(options.system);
  std::vector<store::MadeRecipe> recipes;
  for (const std::string& file : options.files) {
    for (store::MadeRecipe& recipe : RecipesOfFile(file, system, options.input))
      recipes.push_back(std::move(recipe));
  }
  const store::AddedRecipes added = OpenJob(options.job)->AddRecipes(recipes, options.job.Author());
  PrintMessage(options.job.Shown() + ": recipes: " + std::to_string(added.added) + " added, " +
               std::to_string(added.unchanged) + " unchanged");
}

void RunListRecipes(const RecipesOptions& options) {
  const auto job = OpenJob(options.job);
  OutputStream output;
  const auto rows = MakeRowWriter(options.format, output,
                                  {{"number"},
                                   {"recipe"},
                                   {.name = "added", .room = Room::kSpare},
                                   {.name = "measured", .room = Room::kSpare},
                                   {"amounts"}});
  for (const store::MadeRecipe& recipe : job->Recipes()) {
    rows->Integer(recipe.number);
    for (const std::string& text : {recipe.name, recipe.added, recipe.curve.date, AmountsOf(recipe)})
      rows->Text(text);
    rows->EndRow();
  }
  rows->Finish();
  output.Finish();
}

void RunRemoveRecipe(const RecipesOptions& options) {
  const std::optional<int64_t> number = NumberInJob(options.recipe);
  if (!number) throw InputError("NUMBER: must be that of a recipe, as in #12");
  OpenJob(options.job)->RemoveRecipe(*number, options.job.Author());
}

}  // namespace

void AddJobRecipes(Command& job) {
  const auto options = std::make_shared<RecipesOptions>();
  Command add = job.AddCommand("add-recipes", "Keep recipes that were made, for vrx match --library");
  add.AddOption("SYSTEM", options->system, "JSON file of the colour system of the recipes")
      .ReadsFile()
      .Required();
  add.AddOption("FILE", options->files, "Files of measured curves with a column formula")
      .ReadsFile()
      .Required();
  AddCurveInputOptions(add, options->input);
  AddJobChangeOptions(add, options->job);
  SetAction(add, options, RunAddRecipes);
  add.SetNotes(
      "The components of a recipe are kept by name: another colour system that has them can use it.\n\n"
      "Example:\n"
      "  vrx job add-recipes system.json leftovers.csv --job plant.vrxjob\n");
  Command list = job.AddCommand("recipes", "List the recipes of a job");
  AddJobOptions(list, options->job);
  AddFormatOption(list, options->format);
  SetAction(list, options, RunListRecipes);
  list.SetNotes("Example:\n  vrx job recipes --job plant.vrxjob\n");
  Command remove = job.AddCommand("remove-recipe", "Take a recipe out of use");
  remove.AddOption("NUMBER", options->recipe, "Number of the recipe in the job, as in #12").Required();
  AddJobChangeOptions(remove, options->job);
  SetAction(remove, options, RunRemoveRecipe);
  remove.SetNotes("Example:\n  vrx job remove-recipe \"#1\" --job plant.vrxjob --why \"weighed wrongly\"\n");
}

}  // namespace vrx::tool
