// vrx job history, trend, statistics, rejudge and page: what a job answers about its trials.

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "tests/tools/job_fixture.h"

namespace {

using vrx::test::Job;

TEST_F(Job, PeopleDecide) {
  AddStandards();
  Good("judge --job j t.csv --standard-id grey");
  Good("job accept t3 --job j --by 'J. Doe' --why 'accepted although 3'");
  Good("job reject '#1' --job j --by 'J. Doe'");
  using Texts = std::vector<std::string>;
  EXPECT_EQ(Column("job history --job j", "decision"),
            (Texts{"rejected", "rejected", "", "", "accepted", "accepted"}));
  EXPECT_EQ(Column("job history --job j --until 2000", "number"), Texts());
  EXPECT_EQ(Column("job history white --job j", "number"), Texts());
  // t1 is on the standard, t2 within 1.5, t3 beyond it.
  EXPECT_EQ(Column("job history grey --job j", "verdict"),
            (Texts{"pass", "pass", "warning", "warning", "fail", "fail"}));
  EXPECT_EQ(Column("job history grey --job j", "reason"), (Texts{"", "", "dEab", "dEab", "dEab", "dEab"}));
  EXPECT_EQ(Column("job statistics --job j", "accepted"), (Texts{"2", "2"}));
  EXPECT_EQ(Column("job rejudge --job j --tolerance 0.5", "number"), Texts{"2"});
  EXPECT_EQ(Column("job rejudge --job j --tolerance 5", "new"), (Texts{"pass", "pass"}));
  EXPECT_EQ(Column("job trail --job j", "by"), (Texts{"", "", "", "", "", "J. Doe", "J. Doe"}));
  Good("job rename grey other --job j --why 'new name'");
  Good("job remove white --job j");
  EXPECT_EQ(Column("job standards --job j", "standard"), (Texts{"other", "black"}));
  ExpectVerified();
}

// What is not named stays as the trial was judged; what nothing would limit is refused, since it passes everything.
TEST_F(Job, OtherLimitsKeepWhatTheyDoNotName) {
  Good("job add-standard s.csv --job j --system lab --tolerance 5 --limits dL=1.5 --illuminants D65");
  Good("judge --job j t.csv --standard-id grey");  // dL of 0, 1.4 and 3.1
  using Texts = std::vector<std::string>;
  EXPECT_EQ(Column("job history --job j", "verdict"), (Texts{"pass", "warning", "fail"}));
  const auto changed = [this](const std::string& options) {
    return Column("job rejudge --job j " + options, "new");
  };
  EXPECT_EQ(Column("job statistics --job j --value dL", "tolerance_lower"), Texts{"-1.5"});
  EXPECT_EQ(changed("--verdict total"), (Texts{"pass", "pass"}));
  EXPECT_EQ(changed("--verdict total --warning 0.5"), (Texts{"pass", "warning"}));
  EXPECT_EQ(changed("--warning 1"), Texts{"pass"});
  EXPECT_EQ(changed("--tolerance 1"), Texts{"fail"});
  EXPECT_EQ(changed("--limits dL=3.5 --tolerance 9"), (Texts{"pass", "warning"}));
  ExpectRefused({{"job rejudge --job j", "name other limits by --tolerance or --limits"},
                 {"job rejudge --job j --verdict box --tolerance 1", "#1 would be judged by its components"},
                 {"job rejudge --job j --warning 2", "--warning: must be"},
                 {"job rejudge --job j --verdict none", "--verdict: must be"}});
  Good("judge --job j t.csv --standard-id grey --verdict box --again");
  ExpectRefused(
      {{"job rejudge --job j --tolerance 1", "#4 was judged by its components, which nothing limits"}});
  EXPECT_EQ(changed("--tolerance 1 --verdict worse"), Texts{"fail"});
}

// Times are compared as they are written out: what is none would be before or after all of them.
TEST_F(Job, DatesAreWrittenOut) {
  AddStandards();
  Good("judge --job j t.csv --standard-id grey");
  for (const char* date :
       {"2026-1", "2026-13", "2026-11-5", "2026-11-32", "26-11-05", "5.11.2026", "yesterday",
        "'2026-11-05 14:30'", "2026-11-05T24", "2026-11-05T14:3", "2026-11-05T14:30:00+01"}) {
    for (const char* option : {"--since ", "--until "})
      ExpectRefused({{"job history --job j " + std::string(option) + date, "must be a date such as 2026"}});
  }
  for (const char* date :
       {"2000", "2000-02", "2000-02-29", "2000-02-29T09", "2000-02-29T09:59", "2000-02-29T09:59:59Z"})
    EXPECT_EQ(Column(std::string("job history --job j --since ") + date, "trial").size(), 6U) << date;
  ExpectRefused(
      {{"job history --job j --since 2026-12 --until 2026-11-30", "2026-12 is after --until 2026-11-30"}});
  Good("job history --job j --since 2026-11 --until 2026-11-01");
  Good("job history --job j --since 2026-11-05 --until 2026-11");
}

// Twenty trials that scatter a little, and one that does not belong there.
TEST_F(Job, ATrendShowsWhatDoesNotBelong) {
  AddStandards();
  std::string rows = Header();
  for (int i = 0; i < 20; ++i)
    rows += Flat("t" + std::to_string(i), std::vector<std::string>{"40.1", "40.3", "40.2", "40.15",
                                                                   "40.35"}[static_cast<std::size_t>(i % 5)]);
  folder_.Write("lots.csv", rows + Flat("stray", "46"));
  Good("judge --job j lots.csv --standard-id grey");
  const std::vector<std::string> rules =
      Column("job trend grey --job j --illuminant D65 --value dL", "rules");
  ASSERT_EQ(rules.size(), 21U);
  // It draws the centre away from all others.
  EXPECT_EQ(std::ranges::count(rules, std::string()), 7);
  EXPECT_EQ(std::ranges::count(rules, std::string("8-on-one-side")), 13);
  EXPECT_EQ(rules.back(), "beyond-3-sigma");
  const std::vector<std::string> values = Column("job trend grey --job j --illuminant D65", "value");
  double sum = 0;
  for (const std::string& value : values) sum += std::stod(value);
  EXPECT_NEAR(std::stod(Column("job statistics grey --job j --illuminant D65", "mean").at(0)), sum / 21,
              1e-12);
  // The same as pages, which name the job and the head of its trail.
  const std::string head = Column("job info --job j", "value").at(11);
  for (const auto& [command, words] :
       {std::pair{"trend grey --value dL --illuminant D65",
                  "grey, D65/10\u00B0, dL: 21 values, 14 with a signal"},
        std::pair{"trend grey", "grey, D65/10\u00B0, dE"}, std::pair{"statistics", "signals"},
        std::pair{"history grey", "stray"}}) {
    Good(std::string("job ") + command + " --job j --report page.html");
    const std::string page = folder_.Read("page.html");
    for (const std::string& text : {std::string(words), head})
      EXPECT_NE(page.find(text), std::string::npos) << text;
  }
}

// Differences from another curve of the standard, by another observer or another formula are no series: a process that stands still
// would show a step, and one that moves with its standard none. Other limits end no series, nor does another order of lights.
TEST_F(Job, AChartHasOneReference) {
  using Texts = std::vector<std::string>;
  folder_.Write("anew.csv", Header() + Flat("grey", "41"));
  folder_.Write("old.csv", Header() + Flat("grey", "40"));
  int lot = 0;
  const auto judge = [&](const std::string& options = "") {
    const std::string file = "lot" + std::to_string(lot++) + ".csv";
    const std::string number = std::to_string(lot);
    folder_.Write(file, Header() + Flat("a" + number, "40.5") + Flat("b" + number, "40.6"));
    Good("judge --job j --standard-id grey " + file + options);
  };
  Good("job add-standard old.csv --job j --system cmc --ellipse --tolerance 1 --illuminants D65,A");
  judge();
  Good("job add-standard old.csv --job j --ellipse --tolerance 1.2");
  judge();
  Good("job add-standard anew.csv --job j");
  judge();
  Good("job add-standard old.csv --job j --illuminants A,D65");
  judge();
  const std::string kSeries = "job statistics --job j --illuminant D65";
  EXPECT_EQ(Column(kSeries, "versions"), (Texts{"1-2 4", "3"}));
  EXPECT_EQ(Column("job statistics --job j --illuminant A", "trials").size(), 2U);
  EXPECT_EQ(Column("job trend --job j --illuminant D65", "range").at(6), "") << "the new reference begins";
  judge(" --observer 2");
  judge(" --system cmc --parameters 1:1 --ellipse");
  judge(" --system cmc --parameters 1.001:1 --ellipse");
  EXPECT_EQ(Column(kSeries, "observer").size(), 5U);
  Good("job trend --job j --illuminant D65 --report trend.html");
  Good("job page --job j --output pages");
  for (const char* page : {"trend.html", "pages/standard-1.html"}) {
    const std::string html = folder_.Read(page);
    for (const char* text : {"cf = 1.20, version 1-2 4", "cf = 1.20, version 3", "D65/2\u00B0"})
      EXPECT_NE(html.find(text), std::string::npos) << page << ": " << text;
  }
}

// What a browser shows of a job: the counts of each standard, what failed and why, and names as texts.
TEST_F(Job, PagesShowTheState) {
  const std::string kName = "<img src=x onerror=alert(1)> & \"red\"";
  folder_.Write("odd.csv", Header() + Flat("\"<img src=x onerror=alert(1)> & \"\"red\"\"\"", "40") +
                               Flat("unused", "60"));
  Good("job add-standard odd.csv --job j --system lab --tolerance 1.5 --illuminants D65");
  Good("judge --job j t.csv --standard-id '" + kName + "'");
  Good("job accept t3 --job j --by 'J. Doe'");
  Good("job page --job j --output pages");
  const std::string index = folder_.Read("pages/index.html"), page = folder_.Read("pages/standard-1.html");
  for (const std::string& html : {index, page}) {
    EXPECT_EQ(html.find("<img"), std::string::npos);
    EXPECT_NE(html.find("&lt;img src=x onerror=alert(1)&gt; &amp; &quot;red&quot;"), std::string::npos);
    EXPECT_NE(html.find(Fact("head of the trail")), std::string::npos);
  }
  // Trials, accepted, failed: two pass by themselves, t3 by a person's word, and its verdict stays.
  EXPECT_NE(index.find("<td class=\"number\">3</td><td class=\"number\">3</td><td class=\"number\">1</td>"),
            std::string::npos);
  EXPECT_NE(index.find("<td class=\"number\">0</td><td class=\"number\">0</td><td class=\"number\">0</td>"),
            std::string::npos);
  EXPECT_NE(index.find("t.csv"), std::string::npos) << "the batch and where it came from";
  for (const char* text : {"t1", "t2", "t3", "J. Doe"}) EXPECT_NE(page.find(text), std::string::npos);
  EXPECT_EQ(folder_.Read("pages/standard-2.html").find("t1"), std::string::npos);
}

TEST_F(Job, AReportShowsTheHeadOfTheTrail) {
  AddStandards();
  Good("judge --job j t.csv --standard-id grey --report r.html");
  const std::string report = folder_.Read("r.html"), head = Fact("head of the trail");
  ASSERT_EQ(head.size(), 64U);
  EXPECT_NE(report.find("Trail, row 5: " + head), std::string::npos);
}

// A lot that is judged again under other limits, or that comes in a file that grew, is one lot: it would weigh twice in a mean, in Cpk
// and in the count of what was accepted. A chart of another light or formula has it, too.
TEST_F(Job, ALotCountsOnceByItsLastJudgement) {
  using Texts = std::vector<std::string>;
  AddStandards();
  const std::string kJudge = "judge --job j --standard-id grey ";
  Good(kJudge + "t.csv");  // 1 to 3: pass, warning, fail
  Good("job accept t3 --job j");
  folder_.Write("grown.csv", folder_.Read("t.csv") + Flat("t4", "40.5"));
  Good(kJudge + "grown.csv --tolerance 0.8");                 // 4 to 7: pass, fail, fail, pass
  Good(kJudge + "t.csv --again --system cmc --tolerance 9");  // 8 to 10: all pass
  folder_.Write("alike.csv", Header("id,date") + Flat("t1,2026-11-02", "40"));
  Good(kJudge + "alike.csv");  // 11: as t1, of another day

  EXPECT_EQ(Column("job history --job j --until 2999", "later"),
            (Texts{"#8",  "#8", "#9", "#9", "#10", "#10", "#8", "#8", "#9", "#9", "#10",
                   "#10", "",   "",   "",   "",    "",    "",   "",   "",   "",   ""}));
  const std::string kSeries = "statistics --job j --illuminant D65";
  EXPECT_EQ(Column("job " + kSeries, "trials"), (Texts{"5", "3"}));
  EXPECT_EQ(Column("job " + kSeries, "accepted"), (Texts{"5", "3"}));
  EXPECT_EQ(Column("job trend --job j --illuminant D65", "number"),
            (Texts{"4", "5", "6", "7", "11", "8", "9", "10"}));
  EXPECT_EQ(Column("job rejudge --job j --tolerance 0.01", "number"), (Texts{"7", "9", "10"}));
  for (const std::string& command :
       {kSeries, std::string("trend --job j"), std::string("export o.csv --trials --job j"),
        std::string("rejudge --tolerance 1 --job j"), std::string("page --output pages --job j")}) {
    EXPECT_NE(Run("job " + command)
                  .err.find("6 earlier judgements of trials that were stored again are not counted, "
                            "nor what people decided on 1 of them"),
              std::string::npos)
        << command;
  }
  const std::string exported = folder_.Read("o.csv");
  EXPECT_EQ(std::ranges::count(exported, '\n'), 6) << "a heading and five trials";
  Good("job " + kSeries + " --report r.html");
  EXPECT_NE(folder_.Read("r.html").find("6 earlier judgements"), std::string::npos);
  // Trials, accepted, failed.
  EXPECT_NE(folder_.Read("pages/index.html")
                .find("<td class=\"number\">5</td><td class=\"number\">5</td><td class=\"number\">0</td>"),
            std::string::npos);
  EXPECT_NE(folder_.Read("pages/standard-1.html").find("6 earlier judgements"), std::string::npos);
}

}  // namespace
