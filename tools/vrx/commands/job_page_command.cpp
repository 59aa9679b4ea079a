// vrx job page: the state of a job as static pages for a web server or a shared folder.

#include <algorithm>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <vrxio/text/path.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/job_commands.h"
#include "tools/vrx/job/job_filter.h"
#include "tools/vrx/judging/verdict_texts.h"
#include "tools/vrx/report/job_series.h"
#include "tools/vrx/report/report_page.h"

namespace vrx::tool {
namespace {

struct PageOptions {
  JobOptions job;
  std::string folder;
};

constexpr std::size_t kShownTrials = 200;  // of a standard, and of those that failed
constexpr std::size_t kShownBatches = 100;

// How many trials of a standard there were, and when the last one was stored.
struct StandardState {
  int64_t trials = 0, failed = 0, accepted = 0;
  std::string last;
};

// The last trials, as many as are shown.
class LastTrials {
 public:
  void Add(store::StoredTrial trial) {
    trials_.push_back(std::move(trial));
    if (trials_.size() > kShownTrials) trials_.pop_front();
  }
  const std::deque<store::StoredTrial>& Trials() const { return trials_; }

 private:
  std::deque<store::StoredTrial> trials_;
};

class JobPages {
 public:
  JobPages(const PageOptions& options, store::Store& job)
      : options_(options), job_(job), info_(job.Info()), entries_(job.Standards()), last_(job, {}) {}

  void Write() {
    CountTrials();
    std::error_code code;
    std::filesystem::create_directories(io::PathOf(options_.folder), code);
    if (code) throw InputError(options_.folder + ": " + code.message());
    for (std::size_t i = 0; i < entries_.size(); ++i) WriteStandard(i);
    WriteIndex();
    TellEarlier(options_.job.Shown(), last_);
  }

 private:
  // Counts all trials by their last judgements and keeps none but those that failed last: a job may hold millions.
  void CountTrials() {
    const auto cursor = job_.Trials({});
    for (store::StoredTrial trial; cursor->Next(trial); trial = {}) {
      if (!last_.Counts(trial)) continue;
      StandardState& state = states_[trial.standard];
      ++state.trials;
      state.accepted += trial.IsAccepted();
      state.last = trial.taken;
      if (trial.judgement.Worst() != kFail) continue;
      ++state.failed;
      failed_.Add(std::move(trial));
    }
  }

  LastTrials TrialsOf(const std::string& standard) {
    LastTrials last;
    const auto cursor = job_.Trials({.standard = standard});
    for (store::StoredTrial trial; cursor->Next(trial); trial = {}) {
      if (last_.Counts(trial)) last.Add(std::move(trial));
    }
    return last;
  }

  static std::string FileOf(std::size_t i) { return "standard-" + std::to_string(i + 1) + ".html"; }

  ReportOptions OptionsFor(const std::string& file, const std::string& title) const {
    ReportOptions page;
    page.file = options_.folder + "/" + file;
    page.title = title;
    return page;
  }

  void AddJobFacts(ReportPage& page) const {
    page.BeginSection("conditions", Text(ReportText::kJob));
    page.BeginFacts();
    page.AddJob(info_);
    page.AddOrigin();
    page.EndFacts();
    if (last_.Earlier() > 0) page.AddWarnings({{options_.job.Shown(), EarlierText(last_)}});
    page.EndSection();
  }

  // Trials with their outcomes, the last ones first.
  static ReportTable TableOf(const std::deque<store::StoredTrial>& trials, bool withStandard) {
    using Kind = ReportColumn::Kind;
    std::vector<ReportColumn> columns{{Text(ReportText::kJobStored)},
                                      {Text(ReportText::kTrial), Kind::kName}};
    if (withStandard) columns.push_back({Text(ReportText::kStandard), Kind::kChoice});
    columns.push_back({Text(ReportText::kIlluminant), Kind::kChoice});
    columns.push_back({"\u0394E", Kind::kNumber});
    columns.push_back({Text(ReportText::kVerdicts), Kind::kVerdict});
    columns.push_back({Text(ReportText::kReason)});
    columns.push_back({Text(ReportText::kAccepted)});
    ReportTable table(std::move(columns));
    for (auto trial = trials.rbegin(); trial != trials.rend(); ++trial) {
      for (std::size_t i = 0; i < trial->judgement.under.size(); ++i)
        AddOutcome(table, *trial, i, withStandard);
    }
    return table;
  }

  static void AddOutcome(ReportTable& table, const store::StoredTrial& trial, std::size_t i,
                         bool withStandard) {
    const JudgementUnder& under = trial.judgement.under[i];
    table.Text(trial.taken);
    table.Text(trial.name);
    if (withStandard) table.Text(trial.standard);
    table.Text(CodeOf(trial.conditions.illuminants[i]));
    table.Number(under.difference.back());
    table.Put(under.verdict);
    table.Text(ReasonText(under.breach, under.verdict, trial.conditions.difference.system));
    table.Text(!trial.decision ? "" : trial.decision->isAccepted ? trial.decision->by : "-");
    table.EndRow();
  }

  // Totals in the order of time, a strip for each series; those that began last where there are many.
  static void AddTrend(const std::deque<store::StoredTrial>& trials, ReportPage& page) {
    SeriesList list;
    std::vector<pictures::TotalsSeries> totals;
    for (const store::StoredTrial& trial : trials) {
      for (std::size_t i = 0; i < trial.conditions.illuminants.size(); ++i) {
        const std::size_t number = list.NumberOf(trial, i);
        if (number == totals.size()) totals.emplace_back();
        totals[number].totals.push_back(TotalOf(trial, i));
      }
    }
    const std::vector<std::string> headings = list.Headings(std::vector<std::string>(totals.size()));
    const std::size_t drawn = std::min(totals.size(), kDrawnSeries);
    TrendChart chart{Text(ReportText::kTrend), {}};
    for (std::size_t number = totals.size() - drawn; number < totals.size(); ++number) {
      pictures::TrendData& strip = chart.strips.emplace_back();
      strip.heading = ForPicture(headings[number]);
      strip.orderHeading = ForPicture(Text(ReportText::kOrderAxis));
      totals[number].name = strip.heading;
      strip.series.push_back(std::move(totals[number]));
    }
    if (drawn < totals.size())
      page.AddParagraph(
          TextOf(ReportText::kLastCharts, {std::to_string(drawn), std::to_string(totals.size())}));
    page.AddChart(MakeChart(chart));
  }

  static pictures::GradedTotal TotalOf(const store::StoredTrial& trial, std::size_t i) {
    const JudgementUnder& under = trial.judgement.under[i];
    const double limit = TotalLimitOf(trial.limits[i]);
    return {under.difference.back(), limit, limit * trial.conditions.warningFactor, under.verdict, true};
  }

  void WriteStandard(std::size_t i) {
    const store::StandardEntry& entry = entries_[i];
    const ReportOptions options = OptionsFor(FileOf(i), entry.name);
    ReportPage page(options, entry.name);
    page.AddHtml("<p><a href=\"index.html\">" + Escaped(info_.name) + "</a></p>\n");
    const LastTrials last = TrialsOf(entry.name);
    page.BeginSection("results", Text(ReportText::kTrialsFile));
    if (!last.Trials().empty()) {
      AddTrend(last.Trials(), page);
      page.AddTable(TableOf(last.Trials(), false), Text(ReportText::kTrialsFile));
    }
    page.EndSection();
    AddJobFacts(page);
    page.Save();
  }

  std::string StandardsHtml() {
    std::string html = "<div class=\"scroll\"><table>\n<thead><tr>";
    for (const ReportText heading : {ReportText::kStandard, ReportText::kTrialsFile, ReportText::kAccepted,
                                     ReportText::kFail, ReportText::kJobStored})
      html += "<th scope=\"col\">" + Escaped(Text(heading)) + "</th>";
    html += "</tr></thead>\n<tbody>\n";
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      const StandardState& state = states_[entries_[i].name];
      html += "<tr><td><a href=\"" + FileOf(i) + "\">" + Escaped(ShownText(entries_[i].name)) + "</a></td>";
      for (const int64_t count : {state.trials, state.accepted, state.failed})
        html += "<td class=\"number\">" + std::to_string(count) + "</td>";
      html += "<td>" + Escaped(state.last) + "</td></tr>\n";
    }
    return html + "</tbody></table></div>\n";
  }

  void WriteIndex() {
    const ReportOptions options = OptionsFor("index.html", info_.name);
    ReportPage page(options, info_.name);
    AddJobFacts(page);
    page.BeginSection("results", Text(ReportText::kStandardsFile));
    page.AddHtml(StandardsHtml());
    page.EndSection();
    if (!failed_.Trials().empty()) {
      page.BeginSection("failed", Text(ReportText::kJobFailed));
      page.AddTable(TableOf(failed_.Trials(), true), Text(ReportText::kJobFailed));
      page.EndSection();
    }
    AddBatches(page);
    page.Save();
  }

  void AddBatches(ReportPage& page) {
    const std::vector<store::BatchEntry> batches = job_.Batches();
    if (batches.empty()) return;
    ReportTable table({{"#", ReportColumn::Kind::kNumber, 0},
                       {Text(ReportText::kJobStored)},
                       {Text(ReportText::kTrialsFile), ReportColumn::Kind::kNumber, 0},
                       {Text(ReportText::kInputFile)}});
    const std::size_t first = batches.size() > kShownBatches ? batches.size() - kShownBatches : 0;
    for (std::size_t i = batches.size(); i-- > first;) {
      table.Integer(batches[i].number);
      table.Text(batches[i].taken);
      table.Integer(batches[i].trials);
      table.Text(batches[i].source);
      table.EndRow();
    }
    page.BeginSection("lots", Text(ReportText::kJobLots));
    page.AddTable(table, Text(ReportText::kJobLots));
    page.EndSection();
  }

  const PageOptions& options_;
  store::Store& job_;
  store::JobInfo info_;
  std::vector<store::StandardEntry> entries_;
  store::LastJudgements last_;
  std::map<std::string, StandardState> states_;
  LastTrials failed_;
};

}  // namespace

void AddJobPage(Command& job) {
  const auto options = std::make_shared<PageOptions>();
  Command command = job.AddCommand("page", "Write the state of a job as pages for a browser");
  command.AddOption("--output", options->folder, "Folder for the pages; index.html is the first")
      .Shows("DIR")
      .Required();
  AddJobOptions(command, options->job);
  command.SetNotes("Example:\n  vrx job page --output pages --job plant.vrxjob\n");
  command.SetAction([options] {
    const auto store = OpenJob(options->job);
    JobPages(*options, *store).Write();
    return kExitPass;
  });
}

}  // namespace vrx::tool
