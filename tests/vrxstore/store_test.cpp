// A job in a file and on a server: what goes in comes out to the bit, what is not committed is not there, and what somebody
// changed is found.

#include <array>
#include <bit>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <vrxstore/database/parts.h>
#include <vrxstore/job_address.h>
#include <vrxstore/records/stored_form.h>
#include <vrxstore/rejudge.h>
#include <vrxstore/sqlite/schema.h>
#include <vrxstore/sqlite/sqlite_database.h>
#include <vrxstore/store.h>
#include <vrxstore/verify.h>
#include <vrxmath/foundation/numbers.h>

#include "tests/testing/temporary_folder.h"
#include "tests/vrxstore/refusal.h"
#include "tests/vrxstore/test_server.h"

namespace vrx::store {
namespace {

using test::Refusal;

Curve Slope(double from, double step) {
  Curve curve{};
  for (std::size_t i = 0; i < curve.size(); ++i) curve[i] = from + step * static_cast<double>(i);
  return curve;
}

bool HasBits(std::span<const double> a, std::span<const double> b) {
  return std::ranges::equal(
      a, b, [](double x, double y) { return std::bit_cast<uint64_t>(x) == std::bit_cast<uint64_t>(y); });
}

JudgeConditions OddConditions() {
  JudgeConditions conditions;
  conditions.difference = DefaultSettings(vrxSystemCie2000);
  conditions.difference.parameters = {1.0 / 3, 1, 2, 1};
  conditions.difference.ownFormula = true;
  conditions.illuminants = {vrxIllumA, vrxIllumD65};
  conditions.observer = kObserver2;
  conditions.angle = 0.1;
  conditions.rule = VerdictRule::kComponents;
  conditions.warningFactor = 0.7;
  conditions.grade = {GreyScale::kStaining, 3.5};
  conditions.inconstancy = {1.25};
  return conditions;
}

enum class BackEnd { kFile, kServer };

class AnyStoreTest : public testing::TestWithParam<BackEnd> {
 protected:
  void SetUp() override {
    if (GetParam() != BackEnd::kServer) return;
    if (!test::HaveServer()) GTEST_SKIP() << "scripts/with_postgres.sh runs this with a server";
    path_ = test::NewServerDatabase();
  }

  std::unique_ptr<Store> Made() { return CreateStore(path_, "works", {"J. Doe", "a test"}); }

  static Standard StandardOf(const std::string& name, double from, int32_t geometry = io::kNoGeometry) {
    Standard standard;
    standard.name = name;
    standard.curves.push_back({geometry, Slope(from, 0.25), "2026-11-01", "instrument\tSpectro 3000\n"});
    return standard;
  }

  // Judges curves against a standard of the store and stores them as a batch.
  StoredBatch Store3(Store& store, const std::string& standard, double offset, bool again = false) {
    const auto writer = store.BeginBatch("three.csv", {"J. Doe", ""});
    const Standard found = store.FindStandard(standard).value();
    const JudgeConditions conditions;
    const std::vector<JudgeLimits> limits(conditions.illuminants.size(), TotalLimit(1.0));
    for (int i = 0; i < 3; ++i) {
      const Curve trial = Slope(20 + offset + i, 0.25);
      const JudgeStandards made(conditions, CurveBatch{found.curves[0].samples}, {limits[0]});
      JudgementTable table;
      JudgeTrials(conditions, made, {}, CurveBatch{trial}, table);
      const Judgement judgement = table.Row(0);
      const std::string name = "t" + std::to_string(i);
      const std::vector<Curve> readings(i == 2 ? 2 : 0, trial);
      NewTrial row;
      row.name = name;
      row.title = "second name";
      row.standard = standard;
      row.samples = trial;
      row.readings = readings;
      row.conditions = &conditions;
      row.limits = limits;
      row.judgement = &judgement;
      writer->Add(row);
    }
    return writer->Commit(again);
  }

  // Statements of another program.
  void Change(const std::string& sql) {
    if (IsOnServer(path_)) return test::ChangeServer(path_, sql);
    SqliteDatabase(path_, true, 1).Execute(sql.c_str());
  }

  test::TemporaryFolder folder_;
  std::string path_ = folder_ / "job";
};
INSTANTIATE_TEST_SUITE_P(File, AnyStoreTest, testing::Values(BackEnd::kFile));
INSTANTIATE_TEST_SUITE_P(Server, AnyStoreTest, testing::Values(BackEnd::kServer));

// What only files have.
class FileTest : public AnyStoreTest {
 protected:
  static std::int64_t VersionOf(const std::string& path) {
    SqliteDatabase database(path, false, 1);
    return IntegerOf(database, "PRAGMA user_version");
  }
};
INSTANTIATE_TEST_SUITE_P(Store, FileTest, testing::Values(BackEnd::kFile));

TEST_P(AnyStoreTest, StandardsComeBackToTheBit) {
  const std::vector<std::string> names{"plain",
                                       "it's \"quoted\"; DROP TABLE standard;--",
                                       "line\nend\ttab",
                                       std::string(10'000, 'n'),
                                       "\xC3\xA4\xE2\x82\xAC",
                                       " blank "};
  Curve odd = Slope(1e-5, 1.0 / 3);
  odd[0] = -0.0;
  odd[1] = std::numeric_limits<double>::denorm_min();
  odd[2] = kUnset;
  {
    const auto store = Made();
    for (const std::string& name : names) {
      Standard standard = StandardOf(name, 10, 12);
      standard.curves[0].samples = odd;
      standard.conditions = OddConditions();
      CBoxTolData box = TotalLimit(0.1);
      box[1] = -0.05;
      standard.limits = {{io::kNoGeometry, StandardLimits::kAllIlluminants, box},
                         {12, vrxIllumA, SystemEllipsoid()},
                         {io::kNoGeometry, vrxIllumD65, CEllipseData()}};
      EXPECT_EQ(store->AddStandards({&standard, 1}, {}).added, 1);
    }
    const Standard zero = StandardOf(std::string("a\0b", 3), 1);
    EXPECT_NE(Refusal([&] { store->AddStandards({&zero, 1}, {}); }).find("zero byte"), std::string::npos);
  }
  const auto store = OpenStore(path_);
  ASSERT_EQ(store->Standards().size(), names.size());
  const auto cursor = store->StandardCurves();
  CurveCursor::Row row;
  for (const std::string& name : names) {
    const Standard standard = store->FindStandard(name).value();
    EXPECT_TRUE(HasBits(standard.curves.at(0).samples, odd));
    EXPECT_EQ(ConditionsText(standard.conditions.value()), ConditionsText(OddConditions()));
    ASSERT_EQ(standard.limits.size(), 3U);
    EXPECT_EQ(std::get<CBoxTolData>(standard.limits[0].limits)[1], -0.05);
    EXPECT_EQ(standard.limits[1].illuminant, vrxIllumA);
    EXPECT_TRUE(std::holds_alternative<SystemEllipsoid>(standard.limits[1].limits));
    ASSERT_TRUE(cursor->Next(row));
    EXPECT_EQ(row.standard, name);
    EXPECT_EQ(row.curve, standard.curves[0]);
  }
  EXPECT_FALSE(cursor->Next(row));
}

TEST_P(AnyStoreTest, StandardsHaveVersions) {
  const auto store = Made();
  const Standard first = StandardOf("s", 20), second = StandardOf("s", 21), other = StandardOf("o", 5);
  EXPECT_EQ(store->AddStandards({&first, 1}, {}).added, 1);
  EXPECT_EQ(store->AddStandards({&first, 1}, {}).unchanged, 1);
  Store3(*store, "s", 0);
  EXPECT_EQ(store->AddStandards({&second, 1}, {}).changed, 1);
  store->AddStandards({&other, 1}, {});
  EXPECT_EQ(store->FindStandard("s")->version, 2);
  EXPECT_EQ(store->FindStandard("s", 1)->curves, first.curves);
  StoredTrial trial;
  ASSERT_TRUE(store->Trials({})->Next(trial));
  EXPECT_EQ(trial.standardVersion, 1);
  EXPECT_TRUE(HasBits(trial.standardSamples, first.curves[0].samples));
  EXPECT_NE(Refusal([&] { store->RemoveStandard("s", false, {}); }).find("has 3 trials"), std::string::npos);
  EXPECT_NE(Refusal([&] { store->RenameStandard("s", "o", {}); }).find("already"), std::string::npos);
  EXPECT_NE(Refusal([&] { store->RenameStandard("x", "y", {}); }).find("no standard \"x\""),
            std::string::npos);
  store->RenameStandard("s", "renamed", {});
  store->RemoveStandard("renamed", true, {});
  EXPECT_EQ(store->Standards().size(), 1U);
  EXPECT_EQ(VerifyStore(*store).faults, std::vector<std::string>());
  Standard again = first;
  again.name = "renamed";
  EXPECT_EQ(store->AddStandards({&again, 1}, {}).changed, 1);
  EXPECT_EQ(store->FindStandard("renamed")->version, 3);
}

// What was made from a version that is no longer the current one would undo the change that came between.
TEST_P(AnyStoreTest, AStandardFollowsTheVersionItWasMadeFrom) {
  const auto store = Made();
  const auto add = [&](double level, std::optional<int32_t> follows) {
    Standard standard = StandardOf("s", level), other = StandardOf("before " + std::to_string(level), 5);
    standard.follows = follows;
    const std::array both{other, standard};
    return Refusal([&] { store->AddStandards(both, {}); });
  };
  const std::string kAdded = "nothing was refused", kChanged = "was changed by another process meanwhile";
  EXPECT_NE(add(20, 1).find(kChanged), std::string::npos) << "it was removed";
  EXPECT_EQ(add(20, 0), kAdded);
  EXPECT_NE(add(21, 0).find(kChanged), std::string::npos) << "another process added it";
  EXPECT_EQ(add(21, 1), kAdded);
  EXPECT_NE(add(22, 1).find(kChanged), std::string::npos);
  EXPECT_EQ(add(22, std::nullopt), kAdded);
  store->RemoveStandard("s", true, {});
  EXPECT_EQ(add(23, 0), kAdded);
  EXPECT_EQ(store->FindStandard("s")->version, 4);
  EXPECT_EQ(store->Standards().size(), 5U) << "of what was refused nothing was added";
}

// The curves that a geometry asks for are those that the library's filter texts select, and those of none.
TEST_P(AnyStoreTest, AnglesAreFiltered) {
  const auto store = Made();
  for (const int32_t geometry : {-1, 0, 4, 12, 13, 14, 16}) {
    const Standard standard = StandardOf("g" + std::to_string(geometry), 20, geometry);
    store->AddStandards({&standard, 1}, {});
  }
  const std::vector<std::pair<int32_t, std::string>> kRows{{-1, "g-1 g0 g4 g12 g13 g14 g16 "},
                                                           {12, "g-1 g0 g12 g14 "},
                                                           {16, "g-1 g0 g12 g16 "},
                                                           {4, "g-1 g0 g4 "}};
  for (const auto& [geometry, names] : kRows) {
    std::string found;
    const auto cursor = store->StandardCurves({}, geometry);
    for (CurveCursor::Row row; cursor->Next(row);) found += row.standard + " ";
    EXPECT_EQ(found, names);
  }
}

TEST_P(AnyStoreTest, TrialsComeBackWithTheirJudgements) {
  const auto store = Made();
  const Standard standard = StandardOf("s", 20);
  store->AddStandards({&standard, 1}, {});
  EXPECT_FALSE(Store3(*store, "s", 0).wasThere);
  const StoredBatch same = Store3(*store, "s", 0);
  EXPECT_TRUE(same.wasThere);
  EXPECT_EQ(same.number, 1);
  EXPECT_EQ(store->Info().trials, 3);
  EXPECT_FALSE(Store3(*store, "s", 0, true).wasThere);
  EXPECT_FALSE(Store3(*store, "s", 7).wasThere);
  { static_cast<void>(store->BeginBatch("dropped", {})); }
  EXPECT_EQ(store->Info().batches, 3);
  EXPECT_EQ(store->Readings(3).size(), 2U);

  store->Decide(2, true, {"J. Doe", "accepted although 1.2"});
  store->Decide(2, false, {"M. Roe", "on second thoughts"});
  EXPECT_NE(Refusal([&] { store->Decide(99, true, {}); }).find("no trial 99"), std::string::npos);
  const struct {
    TrialFilter filter;
    std::vector<int64_t> numbers;
  } kRows[] = {{{}, {1, 2, 3, 4, 5, 6, 7, 8, 9}},
               {{.standard = "s", .name = "t1"}, {2, 5, 8}},
               {{.standard = "none"}, {}},
               {{.number = 4}, {4}},
               {{.batch = 3}, {7, 8, 9}},
               {{.since = "2999"}, {}},
               {{.until = "2999-01-01"}, {1, 2, 3, 4, 5, 6, 7, 8, 9}},
               {{.until = "1999"}, {}}};
  for (const auto& row : kRows) {
    std::vector<int64_t> numbers;
    const auto cursor = store->Trials(row.filter);
    for (StoredTrial trial; cursor->Next(trial);) {
      numbers.push_back(trial.number);
      EXPECT_TRUE(AreSame(trial.judgement, JudgeAgain({&trial, 1}).front()));
      EXPECT_EQ(trial.decision.has_value(), trial.number == 2);
    }
    EXPECT_EQ(numbers, row.numbers);
  }
  StoredTrial trial;
  ASSERT_TRUE(store->Trials({.number = 2})->Next(trial));
  EXPECT_FALSE(trial.IsAccepted());
  EXPECT_EQ(trial.decision->by, "M. Roe");
  const Verification verified = VerifyStore(*store);
  EXPECT_EQ(verified.faults, std::vector<std::string>());
  EXPECT_EQ(verified.judgements, 9);
  EXPECT_EQ(verified.head.number, store->Info().head.number);

  if (IsOnServer(path_)) {
    EXPECT_NE(Refusal([&] { store->Backup(folder_ / "copy"); }).find("pg_dump"), std::string::npos);
    return;
  }
  store->Backup(folder_ / "copy");
  EXPECT_EQ(VerifyStore(*OpenStore(folder_ / "copy")).head.digest, verified.head.digest);
  EXPECT_NE(Refusal([&] { store->Backup(folder_ / "copy"); }).find("already"), std::string::npos);
}

// What somebody changed by another program.
TEST_P(AnyStoreTest, ChangesAreFound) {
  const struct {
    std::string trigger, sql, fault;  // the trigger that is in the way
  } kRows[] = {
      {"", "UPDATE outcome SET broken = 5 WHERE judgement = 2", "trial 2 (t1): its judgement"},
      {"", "UPDATE settings SET conditions = replace(conditions, '2:1', '1:1')", "its judgement"},
      {"trial_keeps_words",
       "UPDATE trial SET samples = (SELECT samples FROM trial WHERE id = 2) WHERE id = 1",
       "batch 1: its trials are not"},
      {"", "DELETE FROM outcome WHERE judgement = 3; DELETE FROM judgement WHERE id = 3",
       "batch 1: its trials are not"},
      {"trail_keeps_words", "UPDATE trail SET by = 'nobody' WHERE id = 2", "the trail is broken at row 2"},
      {"trail_keeps_rows", "DELETE FROM trail WHERE id = 2", "the trail is broken at row 3"},
      {"trail_keeps_rows", "DELETE FROM trail WHERE id = 3", "the trail knows nothing of it"},
      {"", "UPDATE judgement SET curve = 77 WHERE id = 1", "is not there"},
  };
  const std::string way = IsOnServer(path_) ? "SET session_replication_role = replica; " : "";
  for (const auto& [trigger, sql, fault] : kRows) {
    if (IsOnServer(path_)) Change("DROP SCHEMA public CASCADE; CREATE SCHEMA public");
    std::filesystem::remove(path_);
    {
      const auto store = Made();
      const Standard standard = StandardOf("s", 20);
      store->AddStandards({&standard, 1}, {});
      Store3(*store, "s", 0);
      ASSERT_EQ(VerifyStore(*store).faults, std::vector<std::string>());
    }
    if (!trigger.empty()) {
      EXPECT_NE(Refusal([&, &change = sql] { Change(change); }).find("stay"), std::string::npos);
    }
    Change((trigger.empty() || IsOnServer(path_) ? way : "DROP TRIGGER " + trigger + "; ") + sql);
    std::string all;
    const auto store = OpenStore(path_);
    for (const std::string& one : VerifyStore(*store).faults) all += one + "\n";
    EXPECT_NE(all.find(fault), std::string::npos) << sql << "\n" << all;
  }
}

TEST_P(FileTest, OtherFilesAreRefusedAndStayAsTheyAre) {
  const std::pair<std::string, std::string> kRows[] = {
      {"PRAGMA user_version = 99", "made by a newer one"},
      {"PRAGMA application_id = 7", "a database of another program"},
  };
  for (const auto& [sql, reason] : kRows) {
    std::filesystem::remove(path_);
    Made();
    Change(sql);
    const std::string before = folder_.Read("job");
    EXPECT_NE(Refusal([&] { OpenStore(path_); }).find(reason), std::string::npos);
    EXPECT_EQ(folder_.Read("job"), before);
  }
  folder_.Write("text",
                "id,400,410\nan ordinary file that is longer than the header of a database, as they go\n");
  EXPECT_NE(Refusal([&] { OpenStore(folder_ / "text"); }).find("no job of vrx"), std::string::npos);
  folder_.Write("empty", "");
  EXPECT_NE(Refusal([&] { OpenStore(folder_ / "empty"); }).find("no job of vrx"), std::string::npos);
  EXPECT_NE(Refusal([&] { OpenStore(folder_ / "none"); }).find("no such job"), std::string::npos);
  EXPECT_NE(Refusal([&] { CreateStore(path_, "n", {}); }).find("a file already"), std::string::npos);
  EXPECT_NE(Refusal([&] { CreateStore("/proc/job", "n", {}); }).find("cannot be opened"), std::string::npos);
  EXPECT_NE(CreateStore(folder_ / "empty", "n", {}), nullptr);
}

TEST_P(AnyStoreTest, RecipesComeBackAndAreNotDoubled) {
  const MadeRecipe recipe{
      0, "A7", {{"White 7", 94}, {"7: it's;", 1.0 / 3}}, {3, Slope(1.0 / 3, 1), "2026", ""}, ""};
  {
    const auto store = Made();
    EXPECT_EQ(store->AddRecipes({&recipe, 1}, {}).added, 1);
    EXPECT_EQ(store->AddRecipes({&recipe, 1}, {}).unchanged, 1);
    MadeRecipe again = recipe;  // made again: another curve
    again.curve.samples[0] += 1e-9;
    EXPECT_EQ(store->AddRecipes({&again, 1}, {}).added, 1);
    store->RemoveRecipe(2, {});
    EXPECT_NE(Refusal([&] { store->RemoveRecipe(2, {}); }).find("no recipe 2"), std::string::npos);
    const std::vector<MadeRecipe> faulty{
        {0, "", {{"a", 1}}, {}, ""}, {0, "a", {}, {}, ""}, {0, "a", {{"a\tb", 1}}, {}, ""}};
    for (const MadeRecipe& one : faulty) EXPECT_THROW(store->AddRecipes({&one, 1}, {}), StoreError);
  }
  const auto store = OpenStore(path_);
  ASSERT_EQ(store->Recipes().size(), 1U);
  EXPECT_EQ(store->Recipes()[0].amounts, recipe.amounts);
  EXPECT_EQ(store->Recipes()[0].curve, recipe.curve);
  EXPECT_EQ(VerifyStore(*store).faultCount, 0);
  Change("UPDATE recipe SET amounts = 'White 7\t95\n' WHERE id = 1");
  EXPECT_EQ(VerifyStore(*store).faultCount, 1);
}

// A job of each earlier version gets the tables of today, keeps what it holds to the bit, and leaves a copy of itself.
TEST_P(FileTest, OlderJobsAreMigrated) {
  Made();
  const auto tables = [this] {
    SqliteDatabase connection(path_, false, 1);
    Statement rows(connection,
                   "SELECT type || ' ' || name || ' ' || sql FROM sqlite_schema WHERE sql <> '' ORDER BY 1");
    std::vector<std::string> list;
    while (rows.Step()) list.emplace_back(rows.Text(0));
    return list;
  };
  const std::vector<std::string> ofToday = tables();
  for (int version = 1; version < kSchemaVersion; ++version) {
    SCOPED_TRACE(version);
    const std::string copy = path_ + ".v" + std::to_string(version);
    std::filesystem::remove(path_);
    std::ostringstream stored;
    stored << std::ifstream(VRX_SOURCE_DIR "/tests/vrxstore/tables/version_" + std::to_string(version) +
                            ".sql")
                  .rdbuf();
    Change(stored.str());
    std::filesystem::create_directory(copy + ".new");  // in the copy's way
    folder_.Write("job.v" + std::to_string(version) + ".new/file", "");
    EXPECT_NE(Refusal([&] { OpenStore(path_); }).find("could not be brought to version"), std::string::npos);
    EXPECT_EQ(VersionOf(path_), version);
    std::filesystem::remove_all(copy + ".new");
    {
      const auto store = OpenStore(path_);
      EXPECT_NE(store->Notice().find(copy), std::string::npos);
      const JobInfo info = store->Info();
      EXPECT_EQ(info.schema, kSchemaVersion);
      EXPECT_EQ(info.trials, 2);
      EXPECT_EQ(info.decisions, 1);
      EXPECT_EQ(info.head.what, "migrate tables");
      EXPECT_EQ(store->Profiles().size(), 1U);
      const Verification found = VerifyStore(*store);
      EXPECT_EQ(found.judgements, 2);
      EXPECT_EQ(found.faultCount, 0);
    }
    EXPECT_EQ(OpenStore(path_)->Notice(), "");
    EXPECT_EQ(VersionOf(copy), version);
    EXPECT_EQ(tables(), ofToday);
  }
}

// Bytes that went wrong anywhere in the file are a fault or harmless, never a crash; the file is not written to.
TEST_P(FileTest, DamageIsTold) {
  {
    const auto store = Made();
    const Standard standard = StandardOf("s", 20);
    store->AddStandards({&standard, 1}, {});
    Store3(*store, "s", 0);
  }
  const std::string whole = folder_.Read("job");
  int found = 0, all = 0;
  for (std::size_t at = 16; at < whole.size(); at += 509) {
    std::string damaged = whole;
    for (std::size_t k = at; k < std::min(at + 40, whole.size()); ++k)
      damaged[k] = static_cast<char>(~damaged[k]);
    folder_.Write("damaged", damaged);
    ++all;
    try {
      const auto store = OpenStore(folder_ / "damaged");
      store->Standards();
      found += VerifyStore(*store).faultCount > 0;
    } catch (const io::InputError&) {
      ++found;
    }
  }
  EXPECT_GT(found, all / 20);  // most of a small job is room that nothing uses
  folder_.Write("short", whole.substr(0, whole.size() / 2));
  EXPECT_NE(Refusal([&] { VerifyStore(*OpenStore(folder_ / "short")); }).find("damaged"), std::string::npos);
}

TEST_P(AnyStoreTest, AWriterThatWaitsInVainSaysSo) {
  const auto store = Made();
  const auto batch = store->BeginBatch("long", {});
  const auto other = OpenStore(path_, 0.05);
  EXPECT_EQ(other->Info().trials, 0);
  EXPECT_NE(Refusal([&] {
              other->SetProfile({"p", {}}, {});
            }).find("another process is writing into it"),
            std::string::npos);
}

// A standard's history is looked up, whatever the job holds; curves come in order without a sort.
TEST_P(FileTest, QueriesUseIndices) {
  Made();
  SqliteDatabase connection(path_, false, 1);
  const auto plan = [&](const std::string& sql) {
    std::string text;
    Statement rows(connection, "EXPLAIN QUERY PLAN " + sql);
    while (rows.Step()) text += std::string(rows.Text(3)) + "\n";
    return text;
  };
  const std::string history = plan(TrialQuery(connection, {.standard = "s", .since = "2026"}));
  EXPECT_NE(history.find("SEARCH j USING INDEX judgement_of_standard"), std::string::npos) << history;
  EXPECT_EQ(history.find("SCAN"), std::string::npos) << history;
  for (const TrialFilter& filter : {TrialFilter{.name = "t"}, TrialFilter{.batch = 1}, TrialFilter{}})
    EXPECT_EQ(plan(TrialQuery(connection, filter)).find("TEMP B-TREE"), std::string::npos)
        << plan(TrialQuery(connection, filter));
}

}  // namespace
}  // namespace vrx::store
