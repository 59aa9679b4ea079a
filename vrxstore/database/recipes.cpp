// Recipes that were made, in the tables of a job.

#include <vrxstore/database/parts.h>
#include <vrxstore/records/stored_form.h>
#include <vrxstore/records/trail.h>

namespace vrx::store {
namespace {

void StoreRecipe(Database& database, MeasuringTable& measuring, const MadeRecipe& recipe,
                 const std::string& digest) {
  const std::int64_t how = measuring.NumberOf(recipe.curve.measuring);
  Statement insert(database,
                   "INSERT INTO recipe(id, name, added, amounts, \"Angle\", samples, measured, measuring, "
                   "digest) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)");
  insert
      .Bind(NextNumber(database, "recipe"), recipe.name, NowText(), AmountsText(recipe),
            GeometryToBind(recipe.curve.geometry), CurveOf(recipe.curve.samples), recipe.curve.date, how,
            BlobOf(digest))
      .Run();
}

// Whether a recipe of a digest is there; one that was removed comes back to be new again.
bool IsThere(Database& database, const std::string& digest, bool& isBack) {
  Statement find(database, "SELECT id, removed FROM recipe WHERE digest = ?");
  if (!find.Bind(BlobOf(digest)).Step()) return false;
  const std::int64_t number = find.Integer(0);
  isBack = find.Integer(1) != 0;
  find.Reset();
  if (isBack) {
    Statement update(database, "UPDATE recipe SET removed = 0 WHERE id = ?");
    update.Bind(number).Run();
  }
  return true;
}

}  // namespace

AddedRecipes StoreRecipes(Database& database, std::span<const MadeRecipe> recipes, const Author& author) {
  AddedRecipes added;
  Transaction transaction(database);
  MeasuringTable measuring(database);
  for (const MadeRecipe& recipe : recipes) {
    if (recipe.name.empty()) throw StoreError(database.Name() + ": a recipe needs a name");
    if (recipe.amounts.empty())
      throw StoreError(database.Name() + ": recipe \"" + recipe.name + "\" has no amounts");
    const std::string digest = DigestOf(recipe);
    bool isBack = false;
    if (IsThere(database, digest, isBack) && !isBack) {
      ++added.unchanged;
      continue;
    }
    if (!isBack) StoreRecipe(database, measuring, recipe, digest);
    AppendTrail(database, author, "add recipe", recipe.name, digest);
    ++added.added;
  }
  transaction.Commit();
  return added;
}

std::vector<MadeRecipe> ReadRecipes(Database& database) {
  std::vector<MadeRecipe> recipes;
  Statement rows(
      database,
      "SELECT r.id, r.name, r.added, r.amounts, r.\"Angle\", r.samples, r.measured, m.content FROM "
      "recipe r JOIN measuring m ON m.id = r.measuring WHERE r.removed = 0 ORDER BY r.id");
  while (rows.Step()) {
    MadeRecipe& recipe = recipes.emplace_back();
    recipe.number = rows.Integer(0);
    recipe.name = rows.Text(1);
    recipe.added = rows.Text(2);
    TakeAmounts(rows.Text(3), recipe);
    recipe.curve.geometry = GeometryIn(rows, 4);
    TakeCurve(database, rows, 5, "recipe", recipe.number, recipe.curve.samples);
    recipe.curve.date = rows.Text(6);
    recipe.curve.measuring = rows.Text(7);
  }
  return recipes;
}

void DropRecipe(Database& database, std::int64_t number, const Author& author) {
  Transaction transaction(database);
  Statement find(database, "SELECT name FROM recipe WHERE id = ? AND removed = 0");
  if (!find.Bind(number).Step())
    throw StoreError(database.Name() + ": there is no recipe " + std::to_string(number));
  const std::string name(find.Text(0));
  find.Reset();
  Statement update(database, "UPDATE recipe SET removed = 1 WHERE id = ?");
  update.Bind(number).Run();
  AppendTrail(database, author, "remove recipe", std::to_string(number) + ": " + name);
  transaction.Commit();
}

}  // namespace vrx::store
