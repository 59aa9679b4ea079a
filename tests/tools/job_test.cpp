// vrx job and vrx judge --job as a laboratory uses them.

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/job_fixture.h"

namespace {

using vrx::test::Job;

// What comes from a job is what comes from a file.
TEST_F(Job, JudgesAsWithoutOne) {
  AddStandards();
  const std::string kConditions = " --system lab --tolerance 1.5 --illuminants D65,A";
  const std::pair<std::string, std::string> kRows[] = {
      {"judge --job j t.csv --standard-id grey", "judge s.csv t.csv --standard-id grey" + kConditions},
      {"judge --job j named.csv", "judge s.csv named.csv" + kConditions},
      {"judge --job j s.csv --pairs", "judge s.csv s.csv --pairs" + kConditions},
      {"judge --job j t.csv --nearest --again", "judge s.csv t.csv --standard-id grey" + kConditions},
      {"judge --job j t.csv --standard-id grey --tolerance 0.5 --system cmc --again",
       "judge s.csv t.csv --standard-id grey --tolerance 0.5 --system cmc --illuminants D65,A"},
      {"judge --job j t.csv --standard-id white --average --warning 0.5",
       "judge s.csv t.csv --standard-id white --average --warning 0.5" + kConditions},
      {"search named.csv --job j", "search named.csv s.csv"},
  };
  for (const auto& [withJob, without] : kRows) {
    std::string expected = Good(without + " --format json"), found = Good(withJob + " --format json");
    EXPECT_EQ(found, expected) << withJob;
  }
  EXPECT_EQ(Fact("batches"), "6");
  ExpectVerified();
}

TEST_F(Job, ABatchIsStoredOnce) {
  AddStandards();
  const std::string kJudge = "judge --job j t.csv --standard-id grey --format csv";
  const std::string first = Good(kJudge);
  const Result second = Run(kJudge);
  EXPECT_EQ(second.out, first);
  EXPECT_NE(second.err.find("has these trials already, as batch 1"), std::string::npos) << second.err;
  EXPECT_EQ(Fact("trials"), "3");
  Good(kJudge + " --again");
  EXPECT_EQ(Fact("trials"), "6");
  // A fault in the last row leaves nothing behind.
  folder_.Write("broken.csv", folder_.Read("t.csv") + Flat("t4", "x"));
  EXPECT_EQ(Run("judge --job j broken.csv --standard-id grey").status, 2);
  EXPECT_EQ(Fact("trials"), "6");
  ExpectVerified();
}

// The same trials under limits that changed: the verdicts that are shown are not those of the job, and it says so.
TEST_F(Job, VerdictsThatAreNotStoredAreCounted) {
  AddStandards();
  const std::string kJudge = "judge --job j t.csv --standard-id grey";
  Good(kJudge);
  const auto judged = [&](const std::string& options) { return Run(kJudge + options).err; };
  // t1 passes, t2 is a warning and t3 a failure; with 5 all pass.
  const std::pair<std::string, std::string> kRows[] = {
      {"", ""},
      {" --tolerance 5", "2 of 3 trials have other verdicts than in the job; --again stores these"},
      {" --illuminants A", ""},
      {" --illuminants A --tolerance 5", "2 of 3"},
  };
  for (const auto& [options, expected] : kRows) {
    const std::string said = judged(options);
    EXPECT_NE(said.find("nothing was stored"), std::string::npos) << options << said;
    EXPECT_EQ(said.find("other verdicts") != std::string::npos, !expected.empty()) << options << said;
    EXPECT_NE(said.find(expected), std::string::npos) << options << said;
  }
  Good("job add-standard s.csv --job j --tolerance 5");
  EXPECT_NE(judged("").find("2 of 3"), std::string::npos);
  Good(kJudge + " --again");
  // The batch that was stored last is the one that counts.
  EXPECT_NE(judged("").find("as batch 2"), std::string::npos);
  EXPECT_EQ(judged("").find("other verdicts"), std::string::npos);
  ExpectVerified();
}

// A master that is measured anew keeps what it is judged by, but for what the options name.
TEST_F(Job, ANewVersionKeepsWhatIsNotGiven) {
  folder_.Write("new.csv", Header() + Flat("grey", "40.2"));
  folder_.Write("white.csv", "standard,plus0,minus0,plus1,minus1,plus2,minus2,total\nwhite,9,9,9,9,9,9,9\n");
  const std::string kOwn = " --system cie2000 --tolerance 1 --illuminants D65 --observer 2";
  struct Row {
    std::string options, system, illuminants, limits, said;
  };
  const Row kRows[] = {
      {"", "cie2000 parameters=1:1:1", "D65", "total 1", "grey: limits and conditions of version 1 are kept"},
      {" --tolerance 2", "cie2000 parameters=1:1:1", "D65", "total 2",
       "grey: conditions of version 1 are kept"},
      {" --illuminants A", "cie2000 parameters=1:1:1", "A", "total 1",
       "grey: limits and other conditions of version 1 are kept"},
      {" --parameters 2 --tolerance 1", "cie2000 parameters=2:1:1", "D65", "total 1",
       "grey: other conditions of version 1 are kept"},
      {" --system cmc --illuminants A --tolerance 3", "cmc", "A", "total 3",
       "grey: other conditions of version 1 are kept"},
      {" --tolerances white.csv", "cie2000 parameters=1:1:1", "D65", "total 1",
       "grey: limits and conditions of version 1 are kept"},
      {kOwn, "cie2000 parameters=1:1:1", "D65", "total 1", ""},
  };
  int number = 0;
  for (const Row& row : kRows) {
    const std::string job = " --job j" + std::to_string(number++);
    Good("job create" + job);
    Good("job add-standard s.csv" + job + kOwn);
    const Result added = Run("job add-standard new.csv" + job + row.options);
    EXPECT_NE(added.err.find("1 changed"), std::string::npos) << row.options << added.err;
    EXPECT_NE(added.err.find(row.said), std::string::npos) << row.options << added.err;
    EXPECT_EQ(added.err.find("are kept") == std::string::npos, row.said.empty()) << row.options << added.err;
    const std::string shown = Good("job show grey --format csv" + job);
    for (const std::string& text : {"system=" + row.system, "illuminants=" + row.illuminants + " observer=2",
                                    "limits," + row.limits + "\n"})
      EXPECT_NE(shown.find(text), std::string::npos) << row.options << "\n" << shown;
    Good("judge t.csv --standard-id white" + job);
  }
  Good("job add-standard s.csv --job j" + kOwn + " --verdict box --limits dL=1");
  ExpectRefused({{"job add-standard new.csv --job j --system cmc", "of standard \"grey\" are for cie2000"},
                 {"job add-standard new.csv --job j --parameters 2", "--parameters: the limits of standard"},
                 {"job add-standard new.csv --job j --tolerance 2", "no component has a limit"}});
  Good("job add-standard s.csv --job j");
  EXPECT_EQ(Column("job standards --job j", "version"), (std::vector<std::string>{"1", "1", "1"}));
  Good(
      "job add-standard new.csv --job j --tolerance 1 --verdict total --illuminants D65,A --most-inconstancy "
      "2");
  for (const char* command : {"job add-standard new.csv", "judge t.csv --standard-id grey"})
    ExpectRefused({{command + std::string(" --job j --illuminants D65"), "inconstancy, which needs two"}});
}

// Of a master that was measured under fewer geometries the others were in use, and their trials would lose their standard.
TEST_F(Job, FewerGeometriesAreAQuestion) {
  const auto file = [this](const char* name, const std::vector<std::string>& geometries,
                           const std::string& level) {
    std::string rows = Header("id,geometry");
    for (const std::string& geometry : geometries) rows += Flat("m," + geometry + "deg", level);
    folder_.Write(name, rows);
  };
  file("all.csv", {"15", "45", "110"}, "30");
  file("turned.csv", {"110", "15", "45"}, "30");
  file("one.csv", {"45"}, "30");
  file("anew.csv", {"45"}, "31");
  file("more.csv", {"45", "75"}, "32");
  folder_.Write("none.csv", Header() + Flat("m", "30"));
  const auto added = [this](const std::string& arguments) {
    return Run("job add-standard " + arguments + " --job j").err;
  };
  const auto geometries = [this] {
    const std::string shown = Good("job show m --job j --format csv");
    std::string names;
    for (const std::string name : {"15", "45", "75", "110"})
      if (shown.find("\"curve, " + name + "\u00B0\"") != std::string::npos) names += name + " ";
    return names;
  };
  Good("job add-standard all.csv --job j");
  EXPECT_NE(added("turned.csv").find("1 unchanged"), std::string::npos);
  const std::string kAsked =
      "standard \"m\" has curves of 15\u00B0, 110\u00B0 in version 1, which the new one does not have: "
      "--missing-geometries keep";
  for (const char* name : {"one.csv", "anew.csv", "more.csv"})
    ExpectRefused({{"job add-standard " + std::string(name) + " --job j", kAsked}});
  ExpectRefused(
      {{"job add-standard none.csv --job j", "has curves of 15\u00B0, 45\u00B0, 110\u00B0 in version 1"},
       {"job add-standard one.csv --job j --missing-geometries x", "must be keep or drop"}});
  EXPECT_EQ(Fact("rows of the trail"), "2");
  EXPECT_NE(added("one.csv --missing-geometries keep").find("1 unchanged"), std::string::npos);
  const std::string kept = added("more.csv --missing-geometries keep");
  EXPECT_NE(kept.find("m: curves of 15\u00B0, 110\u00B0 of version 1 are kept"), std::string::npos) << kept;
  EXPECT_EQ(geometries(), "15 45 75 110 ");
  Good("job add-standard anew.csv --job j --missing-geometries drop");
  EXPECT_EQ(geometries(), "45 ");
  // A curve whose geometry nobody had said may be given one.
  Good("job add-standard s.csv --job j");
  folder_.Write("grey.csv", Header("id,geometry") + Flat("grey,45deg", "40"));
  Good("job add-standard grey.csv --job j");
  ExpectVerified();
}

// A rule that looks at what the limits that are kept do not limit would pass everything.
TEST_F(Job, ARuleNeedsLimitsThatItLooksAt) {
  const std::string kOwn = "job add-standard s.csv --system lab --illuminants D65 --job ";
  Good(kOwn + "j --tolerance 2 --limits dL=1");
  Good("job create total");
  Good(kOwn + "total --tolerance 2");
  for (const char* command : {"job add-standard s.csv", "judge t.csv --standard-id grey"}) {
    const std::string with = std::string(command) + " --job ";
    ExpectRefused({{with + "total --verdict box",
                    "--verdict box: the limits of standard \"grey\" limit no component"}});
    Good(with + "j --verdict box");
  }
  EXPECT_EQ(Column("judge t.csv --standard-id grey --job j --verdict box --again", "verdict"),
            (std::vector<std::string>{"pass", "fail", "fail"}));
}

// Limits of a standard for angles or lights of which the lot had none decided nothing: a lot may have been measured at one of three.
TEST_F(Job, LimitsThatServedNothingAreNamed) {
  folder_.Write(
      "m.csv", Header("id,geometry") + Flat("m,15deg", "30") + Flat("m,45deg", "30") + Flat("n,45deg", "30"));
  folder_.Write("lot.csv", Header("id,geometry,standard") + Flat("a,45deg,m", "30.1"));
  std::string limits = "standard,geometry,illuminant,plus0,minus0,plus1,minus1,plus2,minus2,total\n";
  for (const char* row : {"m,15deg,", "m,45deg,", "m,45deg,A", "n,15deg,"})
    limits += row + std::string(",1,1,1,1,1,1,1\n");
  folder_.Write("limits.csv", limits);
  Good("job add-standard m.csv --job j --system lab --illuminants D65 --tolerances limits.csv");
  const Result judged = Run("judge lot.csv --job j");
  EXPECT_NE(judged.err.find(
                "j: warning: nothing was judged that these limits of the job are for: standard m, 15\u00B0; "
                "standard m, 45\u00B0, A\n"),
            std::string::npos)
      << judged.err;
  EXPECT_NE(Run("judge lot.csv --job j --tolerances limits.csv").err.find("3 of 4 rows"), std::string::npos);
  EXPECT_EQ(Run("judge lot.csv --job j --tolerance 1").err.find("limits"), std::string::npos);
}

TEST_F(Job, AnUnknownStandardIsNoEmptyAnswer) {
  AddStandards();
  Good("judge --job j t.csv --standard-id grey");
  for (const char* command : {"history", "rejudge --tolerance 1", "trend", "statistics"})
    ExpectRefused({{std::string("job ") + command + " gray --job j",
                    "there is no standard \"gray\"; did you mean grey?"}});
  for (const char* command :
       {"job show gray", "job remove gray", "job rename gray x", "judge t.csv --standard-id gray"})
    ExpectRefused({{std::string(command) + " --job j", "there is no standard \"gray\"; did you mean grey?"}});
  // One that was taken out of use, and one without trials, are known.
  Good("job remove grey --job j --with-trials");
  EXPECT_EQ(Column("job history grey --job j", "trial").size(), 6U);
  EXPECT_EQ(Column("job history white --job j", "trial").size(), 0U);
}

TEST_F(Job, WhatIsOpenIsAsked) {
  folder_.Write("colours.csv", "id,L,a,b\nc,50,0,0\n");
  ExpectRefused({
      {"judge t.csv", "TRIALS is required"},
      {"judge", "STANDARD is required"},
      {"judge s.csv t.csv --nearest", "--nearest needs --job"},
      {"judge --job none t.csv", "there is no such job"},
      {"judge --job s.csv t.csv", "no job of vrx"},
      {"judge --job j t.csv", "the job has no standards"},
      {"job create j", "a file already"},
      {"job info", "no job is named"},
      {"job show grey --job j", "no standard \"grey\""},
      {"job history --job j --geometry x", "--geometry: unknown geometry \"x\""},
      {"job trend --job j", "no trials of these"},
      {"job accept t1 --job j", "no trial \"t1\""},
      {"fit-tolerance", "ACCEPTED: name a file"},
      {"search t.csv", "STANDARDS is required"},
  });
  AddStandards();
  folder_.Write("other.csv", Header() + Flat("other", "30"));
  folder_.Write("twice.csv", Header() + Flat("a", "30") + Flat("a", "31"));
  Good("job add-standard other.csv --job j --system cie2000 --tolerance 1");
  ExpectRefused({
      {"judge --job j t.csv --standard-id none", "no standard \"none\""},
      {"judge --job j t.csv", "are judged under different conditions"},
      {"judge --job j t.csv --standard-id grey --system cmc", "are for lab"},
      {"judge --job j s.csv t.csv", "name the file of the trials alone"},
      {"judge --job j colours.csv --standard-id grey", "colours but no curves"},
      {"job add-standard twice.csv --job j", "appears twice"},
      {"fit-tolerance --job j", "name the standard"},
  });
  Good("judge --job j t.csv --standard-id grey");
  Good("judge --job j t.csv --standard-id other --again");
  ExpectRefused({{"judge --job j t.csv --system lab --illuminants D65 --tolerance 1", "do not name theirs"},
                 {"job accept t1 --job j", "2 trials are called \"t1\"; name one by its number: #1"},
                 {"job remove grey --job j", "has 3 trials"},
                 {"job trend --job j --value dX", "is not one of"}});
}

// A mixture that was made again is a recipe of its own; what is there is not added twice, and one leaves by its number alone.
TEST_F(Job, RecipesAreKeptByTheirContent) {
  const std::string paints = VRX_SOURCE_DIR "/examples/acrylic_paints.json";
  const auto made = [](const std::string& name, const std::string& level) {
    return Flat(name + ",1:94;Carbon Black:6", level);
  };
  folder_.Write("made.csv", Header("id,formula") + made("A7", "40.5") + made("A8", "41"));
  folder_.Write("again.csv", Header("id,formula") + made("A8", "41") + made("A7", "40.75"));
  const std::string add = "job add-recipes '" + paints + "' ";
  Good(add + "made.csv --job j --by 'J. Doe'");
  EXPECT_NE(Run(add + "again.csv --job j").err.find("1 added, 1 unchanged"), std::string::npos);
  using Texts = std::vector<std::string>;
  EXPECT_EQ(Column("job recipes --job j", "recipe"), (Texts{"A7", "A8", "A7"}));
  EXPECT_EQ(Column("job recipes --job j", "amounts")[0], "94 Titanium White + 6 Carbon Black");
  const std::pair<std::string, std::string> kRefused[] = {
      {"job remove-recipe 1 --job j", "#12"},    {"job remove-recipe '#1.5' --job j", "#12"},
      {"job remove-recipe '#0' --job j", "#12"}, {"job remove-recipe '#9' --job j", "no recipe 9"},
      {add + "s.csv --job j", "\"formula\""},    {"job accept '#1.5' --job j", "no trial \"#1.5\""},
  };
  for (const auto& [arguments, reason] : kRefused) {
    const Result result = Run(arguments);
    EXPECT_EQ(result.status, 2) << arguments;
    EXPECT_NE(result.err.find(reason), std::string::npos) << arguments << "\n" << result.err;
  }
  Good("job remove-recipe '#1' --job j --why 'weighed wrongly'");
  EXPECT_EQ(Column("job recipes --job j", "number"), (Texts{"2", "3"}));
  EXPECT_EQ(Fact("recipes"), "2");
  ExpectVerified();
  Good(add + "made.csv --job j");  // one that was removed comes back
  EXPECT_EQ(Fact("recipes"), "3");
}

TEST_F(Job, WhatIsExportedMakesTheSameJob) {
  folder_.Write("g.csv", Header("id,geometry,date") + Flat("m,15deg,2026-11-01", "30.1") +
                             Flat("m,45deg,2026-11-02", "20.7"));
  Good("job add-standard g.csv --job j");
  for (const char* form : {"csv", "cgats", "json"}) {
    const std::string copy = std::string("copy-") + form, file = copy + ".txt";
    Good("job export " + file + " --to " + form + " --job j");
    Good("job create " + copy);
    Good("job add-standard " + file + " --job " + copy);
    EXPECT_EQ(Good("job show m --job j --format csv"), Good("job show m --format csv --job " + copy)) << form;
    EXPECT_EQ(Good("judge --job j g.csv --pairs --again --format csv"),
              Good("judge g.csv --pairs --format csv --job " + copy))
        << form;
  }
  Good("job backup saved --job j");
  EXPECT_EQ(Fact("head of the trail"), Fact("head of the trail", "saved"));
  Good("job export trials.csv --trials --job j");
  EXPECT_NE(folder_.Read("trials.csv").find("standard"), std::string::npos);
  ExpectVerified("saved");
}

TEST_F(Job, AcceptedTrialsMakeATolerance) {
  std::string accepted = Header() + Flat("grey", "40"), trials = Header();
  for (int i = 0; i < 12; ++i) {
    std::string row = "a" + std::to_string(i);
    for (int k = 0; k < 31; ++k) row += "," + std::to_string(40 + 0.1 * ((i * 7 + k * (i % 3 + 1)) % 9));
    accepted += row + "\n";
    trials += row + "\n";
  }
  folder_.Write("accepted.csv", accepted);
  folder_.Write("trials.csv", trials + Flat("far", "70"));
  AddStandards();
  Good("judge --job j trials.csv --standard-id grey");
  std::string fitted = Good("fit-tolerance --job j --standard-id grey --format csv");
  EXPECT_EQ(fitted, Good("fit-tolerance accepted.csv --system lab --illuminants D65,A --format csv"));
  // They were accepted about one curve and are fitted about another.
  const std::string kFit = "fit-tolerance --job j --standard-id ";
  EXPECT_EQ(Run(kFit + "grey").err.find("earlier curve"), std::string::npos);
  folder_.Write("anew.csv", Header() + Flat("grey", "40.1"));
  Good("job add-standard anew.csv --job j");
  EXPECT_NE(Run(kFit + "grey").err.find("12 of 12 accepted trials were held against an earlier curve"),
            std::string::npos);
  folder_.Write("far.csv", Header() + Flat("far", "70"));
  Good("judge --job j far.csv --standard-id white");
  ExpectRefused({{kFit + "gray", "there is no standard \"gray\"; did you mean grey?"},
                 {kFit + "white", "of the 1 trials of standard \"white\" none is accepted"}});
}

TEST_F(Job, ProfilesFillInOptions) {
  const std::string kAtHome = "version > v.txt; export XDG_CONFIG_HOME=$PWD; " VRX_TOOL " ";
  const std::string kByHand =
      "judge s.csv t.csv --standard-id grey --system cie2000 --illuminants TL84,A --tolerance 0.7";
  Good("--" + kAtHome +
       "job add-profile ACME --system cie2000 --illuminants TL84,A --tolerance 0.7 --id-column id");
  const std::string expected = Good(kByHand + " --format csv");
  const auto printed = [&](const std::string& arguments) { return Good("--" + kAtHome + arguments); };
  EXPECT_EQ(printed("judge s.csv t.csv --standard-id grey --profile acme --format csv"), expected);
  EXPECT_EQ(printed("judge s.csv t.csv --standard-id grey --profile=ACME --tolerance 0.1 --format csv"),
            Good(kByHand.substr(0, kByHand.rfind(' ')) + " 0.1 --format csv"));
  Good("job add-profile ACME --job j --by 'J. Doe' --system cmc");
  AddStandards();
  EXPECT_NE(Good("judge --job j t.csv --standard-id grey --profile ACME --tolerance 1").find("CMC"),
            std::string::npos);
  EXPECT_EQ(Column("job profiles --job j", "options").at(0), "--system cmc");
  EXPECT_EQ(printed("judge s.csv t.csv --standard-id grey --profile print --tolerance 1 --format csv"),
            printed("judge s.csv t.csv --standard-id grey --illuminants D50 --observer 2 --system cie2000 "
                    "--tolerance 1 --format csv"));
  ExpectRefused({{"judge s.csv t.csv --profile ACM --job j", "there is no profile \"ACM\""},
                 {"job add-profile X --job j", "at least one option"},
                 {"job add-profile X --job j --system none", "none"}});
}

// What a name stood for is told when it is replaced, and a name in other letters is no second profile, of which one would count unseen.
TEST_F(Job, AProfileIsReplacedAloud) {
  Good("job add-profile ACME --job j --system cmc --tolerance 1");
  EXPECT_EQ(Run("job add-profile ACME --job j --system cmc --tolerance 1").err, "");
  const Result replaced = Run("job add-profile ACME --job j --system cie2000");
  EXPECT_NE(replaced.err.find("profile \"ACME\" is replaced; it was --system cmc --tolerance 1"),
            std::string::npos)
      << replaced.err;
  ExpectRefused({{"job add-profile acme --job j --system cmc", "there is a profile \"ACME\" already"}});
  EXPECT_EQ(Column("job profiles --job j", "options").at(0), "--system cie2000");
}

// What a standard had does not come with its curves: into a file, or back into use.
TEST_F(Job, ConditionsThatStayBehindAreTold) {
  AddStandards();
  EXPECT_NE(
      Run("job export out.csv --job j").err.find("conditions and limits of 3 standards stay in the job"),
      std::string::npos);
  Good("job remove grey --job j");
  const std::string said = Run("job add-standard s.csv --job j").err;
  EXPECT_NE(said.find("j: grey: in use again; conditions and limits of before are not kept"),
            std::string::npos)
      << said;
  EXPECT_NE(said.find("white, black: limits and conditions of version 1 are kept"), std::string::npos)
      << said;
}

TEST_F(Job, AWatchedFolderIsTakenOnce) {
  AddStandards();
  std::filesystem::create_directory(folder_ / "in");
  const std::string kWatch = "watch in --job j --standard-id grey --once --settle 0";
  folder_.Write("in/a.csv", folder_.Read("t.csv"));
  folder_.Write("in/b.csv", "id,x\n1,2\n");
  folder_.Write("in/.part", "unfinished");
  Good(kWatch);
  EXPECT_EQ(Fact("trials"), "3");
  EXPECT_EQ(folder_.Read("in/done/a.csv"), folder_.Read("t.csv"));
  EXPECT_NE(folder_.Read("in/refused/b.csv.reason.txt").find("b.csv"), std::string::npos);
  // Stored, but not moved before the process was killed; and the same name with other content.
  folder_.Write("in/a.csv", folder_.Read("t.csv"));
  Good(kWatch);
  EXPECT_EQ(Fact("trials"), "3");
  folder_.Write("in/a.csv", Header() + Flat("t9", "39"));
  Good(kWatch);
  EXPECT_EQ(Fact("trials"), "4");
  EXPECT_NE(folder_.Read("in/done/a-3.csv"), "");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_ / "in"),
                          std::filesystem::directory_iterator()),
            3);
  // A fault of the job leaves the files where they are.
  folder_.Write("in/c.csv", folder_.Read("t.csv"));
  EXPECT_EQ(Run("watch in --job none --once --settle 0").status, 2);
  EXPECT_EQ(Run("watch none --job j --standard-id grey --once").status, 2);
  EXPECT_NE(folder_.Read("in/c.csv"), "");
  // What may still be written to stays, and is named.
  folder_.Write("in/half.csv.tmp", folder_.Read("t.csv"));
  const auto left = Run("watch in --job j --standard-id grey --once --settle 3600");
  EXPECT_EQ(left.status, 0);
  EXPECT_NE(left.err.find("c.csv: left where it is: it changed less than 3600 s ago"), std::string::npos)
      << left.err;
  const auto half = Run("watch in --job j --standard-id grey --once --settle 0");
  EXPECT_NE(half.err.find("half.csv.tmp: left where it is: its name"), std::string::npos) << half.err;
  EXPECT_TRUE(std::filesystem::exists(folder_ / "in/half.csv.tmp"));
  ExpectVerified();
}

// A batch has one description of how it was measured: trials of two ways are no batch, and none of them is kept.
TEST_F(Job, TrialsOfDifferentConditionsAreRefused) {
  AddStandards();
  const auto table = [](const std::string& filter, const std::string& id) {
    std::string fields = "SAMPLE_ID", values = id;
    for (int nm = 400; nm <= 700; nm += 10) {
      fields += " nm" + std::to_string(nm);
      values += " 40.5";
    }
    return "CGATS.17\nFILTER " + filter + "\nNUMBER_OF_FIELDS 32\nBEGIN_DATA_FORMAT\n" + fields +
           "\nEND_DATA_FORMAT\nNUMBER_OF_SETS 1\nBEGIN_DATA\n" + values + "\nEND_DATA\n";
  };
  folder_.Write("one.txt", table("M0", "a"));
  folder_.Write("mixed.txt", table("M0", "b") + table("M2", "c"));
  std::filesystem::create_directory(folder_ / "in");
  folder_.Write("in/mixed.txt", folder_.Read("mixed.txt"));
  const std::string kReason = "measurements of different conditions are mixed (M0 and M2)";
  Good("judge --job j one.txt --standard-id grey");
  ExpectRefused({{"judge --job j mixed.txt --standard-id grey", kReason}});
  Good("watch in --job j --standard-id grey --once --settle 0");
  EXPECT_NE(folder_.Read("in/refused/mixed.txt.reason.txt").find(kReason), std::string::npos);
  EXPECT_EQ(Fact("trials"), "1");
  EXPECT_NE(Good("job export - --to cgats --trials --job j").find("M0"), std::string::npos);
  ExpectVerified();
}

#if defined(__linux__)
// A full disk: nothing of the batch is there, and the job is whole.
TEST_F(Job, AFullDiskLeavesTheJobWhole) {
  AddStandards();
  Good("judge --job j t.csv --standard-id grey");
  std::string many = Header();
  for (int i = 0; i < 3000; ++i) many += Flat("m" + std::to_string(i), "40." + std::to_string(i));
  folder_.Write("many.csv", many);
  const Result full = Run("--version; trap '' XFSZ; ulimit -f 200; " VRX_TOOL
                          " judge --job j many.csv --standard-id grey > /dev/null");
  EXPECT_EQ(full.status, 2) << full.err;
  EXPECT_NE(full.err.find("vrx: j: "), std::string::npos) << full.err;
  EXPECT_EQ(Fact("trials"), "3");
  ExpectVerified();
  Good("judge --job j many.csv --standard-id grey");
  EXPECT_EQ(Fact("trials"), "3003");
}
#endif

}  // namespace
