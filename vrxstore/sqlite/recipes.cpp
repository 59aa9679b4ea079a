// Recipes that were made, in an SQLite file.

#include <vrxstore/records/stored_form.h>
#include <vrxstore/records/trail.h>
#include <vrxstore/sqlite/parts.h>

namespace vrx::store {
namespace {

void StoreRecipe(Connection& connection, MeasuringTable& measuring, const MadeRecipe& recipe,
                 const std::string& digest) {
  std::string bytes;
  AppendDoubles(recipe.curve.samples, bytes);
  const std::int64_t how = measuring.NumberOf(recipe.curve.measuring);
  Statement insert(connection,
                   "INSERT INTO recipe(name, added, amounts, Angle, samples, measured, measuring, digest) "
                   "VALUES(?, ?, ?, CAST(NULLIF(?, '') AS INTEGER), ?, ?, ?, ?)");
  insert
      .Bind(recipe.name, NowText(), AmountsText(recipe), GeometryText(recipe.curve.geometry), BlobOf(bytes),
            recipe.curve.date, how, BlobOf(digest))
      .Run();
}

// Whether a recipe of a digest is there; one that was removed comes back to be new again.
bool IsThere(Connection& connection, const std::string& digest, bool& isBack) {
  Statement find(connection, "SELECT id, removed FROM recipe WHERE digest = ?");
  if (!find.Bind(BlobOf(digest)).Step()) return false;
  const std::int64_t number = find.Integer(0);
  isBack = find.Integer(1) != 0;
  find.Reset();
  if (isBack) {
    Statement update(connection, "UPDATE recipe SET removed = 0 WHERE id = ?");
    update.Bind(number).Run();
  }
  return true;
}

}  // namespace

AddedRecipes StoreRecipes(Connection& connection, std::span<const MadeRecipe> recipes, const Author& author) {
  AddedRecipes added;
  Transaction transaction(connection);
  MeasuringTable measuring(connection);
  for (const MadeRecipe& recipe : recipes) {
    if (recipe.name.empty()) throw StoreError(connection.Path() + ": a recipe needs a name");
    if (recipe.amounts.empty())
      throw StoreError(connection.Path() + ": recipe \"" + recipe.name + "\" has no amounts");
    const std::string digest = DigestOf(recipe);
    bool isBack = false;
    if (IsThere(connection, digest, isBack) && !isBack) {
      ++added.unchanged;
      continue;
    }
    if (!isBack) StoreRecipe(connection, measuring, recipe, digest);
    AppendTrail(connection, author, "add recipe", recipe.name, digest);
    ++added.added;
  }
  transaction.Commit();
  return added;
}

std::vector<MadeRecipe> ReadRecipes(Connection& connection) {
  std::vector<MadeRecipe> recipes;
  Statement rows(connection,
                 "SELECT r.id, r.name, r.added, r.amounts, r.Angle, r.samples, r.measured, m.content FROM "
                 "recipe r JOIN measuring m ON m.id = r.measuring WHERE r.removed = 0 ORDER BY r.id");
  while (rows.Step()) {
    MadeRecipe& recipe = recipes.emplace_back();
    recipe.number = rows.Integer(0);
    recipe.name = rows.Text(1);
    recipe.added = rows.Text(2);
    TakeAmounts(rows.Text(3), recipe);
    recipe.curve.geometry = GeometryIn(rows, 4);
    TakeCurve(connection, rows.Text(5), "recipe", recipe.number, recipe.curve.samples);
    recipe.curve.date = rows.Text(6);
    recipe.curve.measuring = rows.Text(7);
  }
  return recipes;
}

void DropRecipe(Connection& connection, std::int64_t number, const Author& author) {
  Transaction transaction(connection);
  Statement find(connection, "SELECT name FROM recipe WHERE id = ? AND removed = 0");
  if (!find.Bind(number).Step())
    throw StoreError(connection.Path() + ": there is no recipe " + std::to_string(number));
  const std::string name(find.Text(0));
  find.Reset();
  Statement update(connection, "UPDATE recipe SET removed = 1 WHERE id = ?");
  update.Bind(number).Run();
  AppendTrail(connection, author, "remove recipe", std::to_string(number) + ": " + name);
  transaction.Commit();
}

}  // namespace vrx::store
