
#include "tools/vrx/report/judge_report.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <utility>

#include <vrxio/text/decimal.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/judging/shade.h>

#include "tools/vrx/base/text.h"
#include "tools/vrx/judging/verdict_texts.h"

namespace vrx::tool {
namespace {

// Where a report's pictures end: some 10 KB each, and nobody turns so many pages.
constexpr std::size_t kMostViews = 300;
constexpr std::size_t kMostMetamers = 12;

std::string ViewId(std::size_t v) {
  return "view" + std::to_string(v);
}

std::string ViewAttribute(std::size_t v) {
  return "data-view=\"" + std::to_string(v) + "\"";
}

std::string LabText(ReportText text, const Lab& color) {
  return TextOf(text, {FixedText(color.L), FixedText(color.a), FixedText(color.b), FixedText(color.C),
                       FixedText(color.h, 1)});
}

// Which half of the swatches is which.
std::string HalvesHtml() {
  return "<span class=\"halves\"><span>" + Escaped(Text(ReportText::kStandard)) + "</span><span>" +
         Escaped(Text(ReportText::kTrial)) + "</span></span>";
}

std::array<std::size_t, 3> SizesOf(const VerdictCounts& counts) {
  std::array<std::size_t, 3> sizes{};
  std::ranges::transform(counts, sizes.begin(),
                         [](int64_t count) { return static_cast<std::size_t>(count); });
  return sizes;
}

std::string CurveJson(const PlottedCurve& curve) {
  std::string json = "[";
  for (const float value : curve)
    json += (json.size() > 1 ? "," : "") + FixedText(static_cast<double>(value));
  return json + "]";
}

std::string HeadingCell(std::string_view heading) {
  return "<th scope=\"col\">" + Escaped(heading) + "</th>";
}

std::string NumberCell(double value) {
  return "<td class=\"number\">" + FixedText(value) + "</td>";
}

// "-0.30 ... 0.50": an interval about the standard.
std::string IntervalText(const std::string& heading, Interval interval) {
  const auto text = [](double bound) {
    const std::string_view infinity = bound < 0 ? "-\xE2\x88\x9E" : "\xE2\x88\x9E";
    return std::isinf(bound) ? std::string(infinity) : FixedText(bound);
  };
  return heading + " " + text(interval.lower) + " ... " + text(interval.upper);
}

}  // namespace

JudgeReport::JudgeReport(const ReportOptions& options, const JudgeSettings& settings, JudgeFiles files,
                         const Comparison& comparison)
    : settings_(settings),
      files_(std::move(files)),
      comparison_(comparison),
      judged_(settings),
      page_(options, Text(ReportText::kTitle)),
      withName_(comparison.Trials().HasIdsAndNames()),
      withGeometry_(comparison.Trials().HasGeometries()) {
  const CurveReader& trials = comparison.Trials();
  if (trials.Kind() == Sample::kCurve)
    judged_.SetMeasured(trials.Grid().FirstWavelength(), trials.Grid().LastWavelength());
}

void JudgeReport::Finish(const JudgeSummaries& summaries) {
  Compose(summaries);
  page_.Save();
}

std::string JudgeReport::FinishText(const JudgeSummaries& summaries) {
  Compose(summaries);
  return page_.Html();
}

void JudgeReport::Compose(const JudgeSummaries& summaries) {
  showsStandards_ = ShowsStandards();
  page_.AddHtml("<div class=\"first\">\n");
  AddVerdicts(summaries);
  AddConditions();
  page_.AddHtml("</div>\n");
  AddResults();
  page_.AddHtml("<p class=\"legend\">" + Escaped(Text(ReportText::kLegend)) + "</p>\n");
  if (judged_.Views().size() > 1) AddOverview();
  AddStandards();
  AddColours();
}

std::string JudgeReport::WordsOf(const JudgedResult& result) const {
  std::string words;
  for (const ShadeWord word : result.words) {
    if (word == kShadeNone) continue;
    if (!words.empty()) words += ", ";
    words += CString(ShadeWordText(word)).ToUtf8();
  }
  return words;
}

// The first screen ----------------------------------------------------------------------------------------------

void JudgeReport::AddVerdicts(const JudgeSummaries& summaries) {
  Counts counts{};
  for (const JudgedTrial& trial : judged_.Trials()) {
    ++counts[static_cast<std::size_t>(-trial.Badness().first)];
  }
  const Verdict worst = counts[kFail] > 0 ? kFail : counts[kWarning] > 0 ? kWarning : kPass;
  page_.BeginSection("verdict", Text(ReportText::kVerdicts));
  page_.AddHtml(
      "<p class=\"overall\">" + VerdictHtml(worst) + " <span>" +
      Escaped(TextOf(judged_.IlluminantCount() > 1 ? ReportText::kOfTrialsByWorst : ReportText::kOfTrials,
                     {CountsText(counts), std::to_string(judged_.Trials().size())})) +
      "</span></p>\n");
  if (std::ranges::any_of(summaries, &JudgeSummary::HasLots)) AddLots();
  AddReasons(counts[kFail]);
  page_.AddHtml("<div class=\"cards\">\n");
  for (std::size_t i = 0; i < judged_.IlluminantCount(); ++i) AddIlluminantCard(summaries[i], i);
  page_.AddHtml("</div>\n");
  page_.EndSection();
}

// Trials are measurements: a lot has one for each geometry, and fails as one.
void JudgeReport::AddLots() {
  LotVerdicts lots;
  for (const JudgedTrial& trial : judged_.Trials())
    lots.Add(judged_.Views()[trial.view].standard, trial.id, static_cast<Verdict>(-trial.Badness().first));
  page_.AddHtml("<p class=\"reasons\">" +
                Escaped(TextOf(ReportText::kLotsByWorst,
                               {CountsText(SizesOf(lots.Counts())), std::to_string(lots.Lots())})) +
                "</p>\n");
}

// Which limits the trials that fail have broken, each under the first illuminant under which it fails.
void JudgeReport::AddReasons(std::size_t failed) {
  if (failed == 0) return;
  std::map<BrokenLimit, std::size_t> counts;
  for (const JudgedTrial& trial : judged_.Trials()) {
    const auto first = std::ranges::find(trial.results, kFail, &JudgedResult::verdict);
    if (first != trial.results.end()) ++counts[first->breach.limit];
  }
  std::vector<std::pair<std::size_t, BrokenLimit>> order;
  order.reserve(counts.size());
  for (const auto& [limit, count] : counts) order.emplace_back(count, limit);
  std::ranges::stable_sort(order, std::greater<>(), [](const auto& entry) { return entry.first; });
  std::string reasons;
  for (const auto& [count, limit] : order) {
    const std::string name = ReasonText({limit, 0.0, std::nan("")}, kFail, settings_.difference.system);
    reasons +=
        (reasons.empty() ? "" : ", ") + TextOf(ReportText::kReasonCount, {std::to_string(count), name});
  }
  page_.AddHtml("<p class=\"reasons\">" +
                Escaped(TextOf(ReportText::kFailReasons,
                               {std::to_string(failed), std::to_string(judged_.Trials().size()), reasons})) +
                "</p>\n");
}

void JudgeReport::AddIlluminantCard(const JudgeSummary& summary, std::size_t i) {
  static constexpr const char* kClasses[] = {"fail", "warning", "pass"};
  std::string bar, list;
  for (const Verdict verdict : {kPass, kWarning, kFail}) {
    const std::string count = std::to_string(summary.verdicts[static_cast<std::size_t>(verdict)]);
    list += "<li><b>" + count + "</b> " + VerdictHtml(verdict) + "</li>";
    if (count == "0") continue;
    bar += std::string("<span class=\"") + kClasses[static_cast<std::size_t>(verdict)] +
           "\" style=\"flex-grow:" + count + "\"></span>";
  }
  const std::string lots =
      summary.HasLots()
          ? "<p>" + Escaped(TextOf(ReportText::kLots, {CountsText(SizesOf(summary.lots.Counts()))})) +
                "</p>\n"
          : "";
  const std::string& total = judged_.TotalHeading();
  const std::string hue = summary.hueHeading.empty()
                              ? ""
                              : Escaped(TextOf(ReportText::kMeanHue, {summary.hueHeading})) + " <b>" +
                                    FixedText(summary.hues.Mean()) + "</b><br>";
  page_.AddHtml("<div class=\"card\"><h3>" + Escaped(judged_.IlluminantAt(i)) +
                "</h3>\n<div class=\"bar\" aria-hidden=\"true\">" + bar + "</div>\n<ul>" + list + "</ul>\n" +
                lots + "<p>" + Escaped(TextOf(ReportText::kMean, {total})) + " <b>" +
                FixedText(summary.totals.Mean()) + "</b><br>" +
                Escaped(TextOf(ReportText::kMostBelow, {total})) + " <b>" +
                FixedText(summary.totals.Percentile(JudgeSummary::kHighPercentile)) + "</b><br>" + hue +
                Escaped(TextOf(ReportText::kLargest, {total})) + " <b>" +
                FixedText(summary.totals.Largest()) + "</b> <span class=\"small\"><bdi>" +
                Escaped(Shortened(summary.largestTrial, kLongestCell)) + "</bdi></span></p></div>\n");
}

std::string JudgeReport::ToleranceText() const {
  if (settings_.buildEllipses) {
    const auto place = FindDifferenceSystem(settings_.difference.system)->ellipsoidFactor;
    const double factor = settings_.difference.parameters[static_cast<std::size_t>(place)];
    return TextOf(ReportText::kToleranceSystem, {FixedText(factor)});
  }
  const CBoxTolData& box = settings_.box;
  if (std::ranges::all_of(box, [&](double limit) { return limit == box[0]; })) {
    return TextOf(ReportText::kToleranceOne, {FixedText(box[0])});
  }
  std::string limits;
  for (int32_t k = 0; k < 3; ++k) {
    if (std::isinf(box.Limits(k).lower) && std::isinf(box.Limits(k).upper)) continue;
    limits += (limits.empty() ? "" : ", ") +
              IntervalText(judged_.Columns()[static_cast<std::size_t>(k)].heading, box.Limits(k));
  }
  if (limits.empty()) return TextOf(ReportText::kToleranceTotal, {FixedText(box[CBoxTolData::kTotal])});
  return TextOf(ReportText::kToleranceBox, {limits, FixedText(box[CBoxTolData::kTotal])});
}

std::string JudgeReport::ScaleText() const {
  const GradeCondition& grade = *settings_.grade;
  const std::string scale =
      Text(grade.scale == GreyScale::kChange ? ReportText::kGradeChange : ReportText::kGradeStaining);
  return grade.least > 0 ? TextOf(ReportText::kLeastGrade, {scale, GradeText(grade.least)}) : scale;
}

// The date of the whole file stands where samples have none of their own.
void JudgeReport::AddMeasured(const CurveReader& rows, const Dates& dates) {
  const std::string& ofFile = rows.FirstConditions().date;
  dates.from.empty() ? page_.AddMeasured(MeasuringText(rows), ofFile, ofFile)
                     : page_.AddMeasured(MeasuringText(rows), dates.from, dates.to);
}

// The title of the system, with the angle where it counts and some geometry does not say it.
std::string JudgeReport::SystemText() const {
  std::string text = TitleOf(settings_.difference);
  if (hasOpenAngle_ && FindDifferenceSystem(settings_.difference.system)->readsAngle)
    text.append(", ").append(ShortestText(settings_.angle)).append("\u00B0");
  return text;
}

void JudgeReport::AddConditions() {
  page_.BeginSection("conditions", Text(ReportText::kConditions));
  page_.AddWarnings(WarningsOf(comparison_.StandardRows(), comparison_.Trials()));
  page_.BeginFacts();
  if (job_.file.empty()) {
    if (!files_.standards.empty()) page_.AddFile(ReportText::kStandardsFile, files_.standards);
  } else {
    page_.AddFact(ReportText::kJob, job_.file.substr(job_.file.find_last_of("/\\") + 1),
                  TextOf(ReportText::kTrailRow, {job_.row, job_.digest}));
  }
  AddMeasured(comparison_.StandardRows(), standardDates_);
  if (!files_.trials.empty()) page_.AddFile(ReportText::kTrialsFile, files_.trials);
  AddMeasured(comparison_.Trials(), trialDates_);
  if (!files_.profile.empty()) page_.AddFact(ReportText::kProfile, files_.profile);
  page_.AddFact(ReportText::kSystem, SystemText());
  if (!files_.limits.empty()) page_.AddFile(ReportText::kTolerance, files_.limits);
  const bool hasLimits = settings_.buildEllipses ||
                         !std::ranges::all_of(settings_.box, [](double limit) { return std::isinf(limit); });
  if (hasLimits && (files_.limits.empty() || settings_.buildEllipses || !settings_.ByEllipse())) {
    page_.AddFact(ReportText::kTolerance, ToleranceText(),
                  files_.limits.empty() ? "" : Text(ReportText::kElsewhere));
  }
  if (settings_.grade) page_.AddFact(ReportText::kGrade, ScaleText());
  if (settings_.inconstancy) {
    page_.AddFact(ReportText::kInconstancy,
                  TextOf(ReportText::kAtMost, {FixedText(settings_.inconstancy->most)}));
  }
  page_.AddFact(ReportText::kWarningLimit,
                TextOf(ReportText::kWarningFrom, {FixedText(settings_.warningFactor)}));
  page_.AddFact(ReportText::kObserver,
                TextOf(ReportText::kObserverDegrees, {std::to_string(DegreesOf(settings_.observer))}));
  if (settings_.interval != kWavelengthStep)
    page_.AddFact(ReportText::kSums, TextOf(ReportText::kSumsEvery, {std::to_string(settings_.interval)}));
  page_.AddOrigin();
  page_.EndFacts();
  page_.EndSection();
}

// A column of the same standard in every row, or of the trials' own ids, says nothing.
bool JudgeReport::ShowsStandards() const {
  const std::vector<JudgedView>& views = judged_.Views();
  const bool isOne =
      std::ranges::all_of(views, [&](const JudgedView& view) { return view.standard == views[0].standard; });
  return !isOne && std::ranges::any_of(judged_.Trials(), [&](const JudgedTrial& trial) {
    return trial.id != views[trial.view].standard;
  });
}

// The table -----------------------------------------------------------------------------------------------------

std::vector<ReportColumn> JudgeReport::Columns() const {
  using Kind = ReportColumn::Kind;
  std::vector<ReportColumn> columns{{Text(ReportText::kTrial), Kind::kName}};
  if (withName_) columns.push_back({Text(ReportText::kName)});
  if (showsStandards_) columns.push_back({Text(ReportText::kStandard)});
  if (withGeometry_) columns.push_back({Text(ReportText::kGeometry), Kind::kChoice});
  columns.push_back({Text(ReportText::kIlluminant), Kind::kChoice});
  columns.push_back({Text(ReportText::kVerdicts), Kind::kVerdict});
  columns.push_back({Text(ReportText::kReason), Kind::kReason});
  columns.push_back({Text(ReportText::kColours), Kind::kColours});
  for (const DifferenceColumn& column : judged_.Columns()) columns.push_back({column.heading, Kind::kNumber});
  columns.push_back({Text(ReportText::kWords), Kind::kWords});
  if (settings_.ByEllipse()) columns.push_back({Text(ReportText::kEllipsoidValue), Kind::kNumber});
  if (settings_.grade) {
    columns.push_back({Text(ReportText::kGrade), Kind::kNumber});
    columns.push_back({Text(ReportText::kGradeStep)});
  }
  if (settings_.inconstancy) columns.push_back({Text(ReportText::kInconstancy), Kind::kNumber});
  return columns;
}

void JudgeReport::AddRow(ReportTable& table, const JudgedTrial& trial, std::size_t i) const {
  const JudgedView& view = judged_.Views()[trial.view];
  const JudgedResult& result = trial.results[i];
  table.Text(trial.id);
  if (withName_) table.Text(trial.name);
  if (showsStandards_) table.Text(view.standard);
  if (withGeometry_) table.Text(GeometryName(view.geometry));
  table.Text(judged_.IlluminantAt(i));
  const int32_t system = settings_.difference.system;
  table.Put(result.verdict);
  table.Text(ReasonText(result.breach, result.verdict, system));
  table.Put(view.colours[i].shown, result.colour);
  const int32_t broken = ElementOf(result.breach.limit, system);
  for (const DifferenceColumn& column : judged_.Columns()) {
    table.Number(result.difference[static_cast<std::size_t>(column.element)],
                 column.element == broken ? LookOf(result.verdict).tint : Tint::kPlain);
  }
  table.Text(WordsOf(result));
  if (settings_.ByEllipse()) table.Number(result.ellipsoidValue);
  if (settings_.grade) {
    const bool isBroken = result.breach.limit == BrokenLimit::kGrade;
    table.Number(result.grade, isBroken ? Tint::kBad : Tint::kPlain);
    table.Text(result.available ? GradeText(HalfStepGrade(result.grade)) : "");
  }
  if (settings_.inconstancy) {
    const bool isBroken = result.breach.limit == BrokenLimit::kInconstancy;
    table.Number(result.inconstancy, isBroken ? LookOf(result.verdict).tint : Tint::kPlain);
  }
  table.EndRow();
}

void JudgeReport::AddResults() {
  page_.BeginSection("results", Text(ReportText::kResults));
  page_.AddParagraph(Text(ReportText::kTableHint));
  ReportTable table(Columns());
  for (const JudgedTrial& trial : judged_.Trials()) {
    for (std::size_t i = 0; i < judged_.IlluminantCount(); ++i) AddRow(table, trial, i);
  }
  page_.AddTable(table, Text(ReportText::kTable));
  page_.EndSection();
}

// The colours themselves, a row for each of the results; shut at first, and on paper as it is on the screen.
void JudgeReport::AddColours() {
  using Kind = ReportColumn::Kind;
  std::vector<ReportColumn> columns{{Text(ReportText::kTrial)}};
  if (withName_) columns.push_back({Text(ReportText::kName)});
  columns.push_back({Text(ReportText::kStandard)});
  if (withGeometry_) columns.push_back({Text(ReportText::kGeometry), Kind::kChoice});
  columns.push_back({Text(ReportText::kIlluminant), Kind::kChoice});
  const std::size_t first = columns.size();
  for (const ReportText whose : {ReportText::kStandard, ReportText::kTrial}) {
    for (const char* name : {" L*", " a*", " b*", " C*"})
      columns.push_back({Text(whose) + name, Kind::kNumber});
    columns.push_back({Text(whose) + " h", Kind::kNumber, 1});
  }
  ReportTable table(columns);
  for (const JudgedTrial& trial : judged_.Trials()) {
    const JudgedView& view = judged_.Views()[trial.view];
    for (std::size_t i = 0; i < judged_.IlluminantCount(); ++i) {
      table.Text(trial.id);
      if (withName_) table.Text(trial.name);
      table.Text(view.standard);
      if (withGeometry_) table.Text(GeometryName(view.geometry));
      table.Text(judged_.IlluminantAt(i));
      for (const Lab& lab : {view.colours[i].lab, trial.results[i].trial.lab})
        for (const double value : {lab.L, lab.a, lab.b, lab.C, lab.h}) table.Number(value);
      table.EndRow();
    }
  }
  page_.AddHtml("<details id=\"colours\">\n<summary>" + Escaped(Text(ReportText::kAbsolute)) +
                "</summary>\n");
  page_.AddTable(table, Text(ReportText::kAbsolute));
  page_.AddHtml("</details>\n");
  page_.AddData("trialLab", std::to_string(first + 5));
}

// Pictures ------------------------------------------------------------------------------------------------------

void JudgeReport::AddOverview() {
  std::vector<std::size_t> all(judged_.Trials().size());
  std::iota(all.begin(), all.end(), std::size_t{0});
  page_.BeginSection("overview", Text(ReportText::kOverview));
  page_.AddChart(judged_.Trend(all), "data-all=\"\"");
  page_.BeginRow();
  for (std::size_t i = 0; i < judged_.IlluminantCount(); ++i) page_.AddChart(judged_.Histogram(all, i));
  page_.EndRow();
  page_.EndSection();
}

// All of them, or of very many those with the worst results; in their order.
std::vector<std::size_t> JudgeReport::ViewsToShow() {
  std::vector<std::pair<std::pair<int32_t, double>, std::size_t>> order;
  for (std::size_t v = 0; v < judged_.Views().size(); ++v) {
    std::pair<int32_t, double> worst{-kPass, 0};
    for (const std::size_t t : judged_.Views()[v].trials)
      worst = std::max(worst, judged_.Trials()[t].Badness());
    order.push_back({worst, v});
  }
  if (order.size() > kMostViews) {
    std::ranges::stable_sort(order, std::greater<>(), [](const auto& entry) { return entry.first; });
    order.resize(kMostViews);
    page_.AddHtml("<p class=\"note\">" +
                  Escaped(TextOf(ReportText::kStandardsLeftOut,
                                 {std::to_string(kMostViews), std::to_string(judged_.Views().size())})) +
                  "</p>\n");
  }
  std::vector<std::size_t> views;
  views.reserve(order.size());
  for (const auto& entry : order) views.push_back(entry.second);
  std::ranges::sort(views);
  return views;
}

void JudgeReport::AddStandards() {
  const std::vector<std::size_t> views = ViewsToShow();
  std::vector<std::vector<std::size_t>> standards;  // a standard's views, one per geometry
  std::map<std::string, std::size_t> placeOf;
  for (const std::size_t v : views) {
    const auto [entry, isNew] = placeOf.try_emplace(judged_.Views()[v].standard, standards.size());
    if (isNew) standards.emplace_back();
    standards[entry->second].push_back(v);
  }
  for (const std::vector<std::size_t>& standard : standards) AddStandard(standard);
  AddScriptData(views);
}

void JudgeReport::AddStandard(const std::vector<std::size_t>& views) {
  const JudgedView& first = judged_.Views()[views[0]];
  page_.BeginSection("standard" + std::to_string(views[0]),
                     Text(ReportText::kStandard) + " " + first.standard, "class=\"standard\"");
  if (judged_.AreAngles(views)) {
    page_.BeginRow();
    for (std::size_t i = 0; i < judged_.IlluminantCount(); ++i) page_.AddChart(judged_.OverAngles(views, i));
    page_.EndRow();
  }
  for (const std::size_t v : views) AddView(v, views.size() > 1 || first.geometry >= 0);
  page_.EndSection();
}

void JudgeReport::AddView(std::size_t v, bool withHeading) {
  const JudgedView& view = judged_.Views()[v];
  page_.AddHtml("<div class=\"view\" id=\"" + ViewId(v) + "\">\n");
  if (withHeading)
    page_.AddSubheading(GeometryName(view.geometry).empty() ? view.standard : GeometryName(view.geometry));
  AddPairs(v);
  const bool areSeveral = view.trials.size() > 1, haveSeveral = judged_.IlluminantCount() > 1;
  page_.BeginRow();
  if (view.hasCurve) page_.AddChart(judged_.Curves(view), ViewAttribute(v));
  if (haveSeveral && areSeveral) page_.AddChart(judged_.OverIlluminants(view), ViewAttribute(v));
  if (view.hasCurve && haveSeveral && !areSeveral) AddMetamerism(view);
  page_.EndRow();
  page_.BeginRow();
  for (std::size_t i = 0; i < judged_.IlluminantCount(); ++i) {
    page_.AddChart(judged_.Plane(view, i),
                   ViewAttribute(v) + " data-illuminant=\"" + std::to_string(i) + "\"");
  }
  page_.EndRow();
  if (view.hasCurve && haveSeveral && areSeveral) AddMetamerism(view);
  constexpr std::size_t kForHistogram = 8;
  if (areSeveral) page_.AddChart(judged_.Trend(view.trials), ViewAttribute(v));
  if (view.trials.size() >= kForHistogram) {
    page_.BeginRow();
    for (std::size_t i = 0; i < judged_.IlluminantCount(); ++i)
      page_.AddChart(judged_.Histogram(view.trials, i));
    page_.EndRow();
  }
  page_.AddHtml("</div>\n");
}

// The standard beside its worst trial under each illuminant.
void JudgeReport::AddPairs(std::size_t v) {
  const JudgedView& view = judged_.Views()[v];
  const JudgedTrial& trial = judged_.Trials()[judged_.WorstFirst(view)[0]];
  std::string html = "<div class=\"pairs\" " + ViewAttribute(v) + ">\n<p class=\"shown\"><b><bdi>" +
                     Escaped(trial.id) + "</bdi></b>";
  if (!trial.name.empty() && trial.name != trial.id) html += " <bdi>" + Escaped(trial.name) + "</bdi>";
  if (view.trials.size() > 1) {
    html += " <span class=\"small\">" +
            Escaped(TextOf(ReportText::kWorstShown, {std::to_string(view.trials.size())})) + "</span>";
  }
  html += "</p>\n";
  for (std::size_t i = 0; i < judged_.IlluminantCount(); ++i) {
    const JudgedResult& result = trial.results[i];
    html += "<figure class=\"pair\" data-illuminant=\"" + std::to_string(i) + "\">" +
            SwatchesHtml(view.colours[i].shown, result.colour) + "<figcaption>" + HalvesHtml() + "<b>" +
            Escaped(judged_.IlluminantAt(i)) + "</b> " + Escaped(judged_.TotalHeading()) +
            " <b class=\"total\">" + FixedText(result.Total()) + "</b> " + VerdictHtml(result.verdict) +
            "<br><span class=\"words\">" + Escaped(WordsOf(result)) + "</span><br><span class=\"small\">" +
            Escaped(LabText(ReportText::kStandardLab, view.colours[i].lab)) +
            "</span><br><span class=\"small lab\">" +
            Escaped(LabText(ReportText::kTrialLab, result.trial.lab)) + "</span></figcaption></figure>\n";
  }
  page_.AddHtml(html + "</div>\n");
}

// The total and the special index of trials under each illuminant: those of one trial below each other, those of several,
// the worst ones, side by side.
void JudgeReport::AddMetamerism(const JudgedView& view) {
  std::string html = "<div class=\"across\" tabindex=\"0\" role=\"group\" aria-label=\"" +
                     Escaped(Text(ReportText::kMetamerism)) + "\">\n<table class=\"metamerism\">\n<caption>" +
                     Escaped(Text(ReportText::kMetamerism)) + "<br><span class=\"small\">" +
                     Escaped(TextOf(ReportText::kMetamerismHint, {judged_.IlluminantAt(0)})) +
                     "</span></caption>\n<thead><tr>";
  html +=
      view.trials.size() == 1 ? MetamerismOfOne(judged_.Trials()[view.trials[0]]) : MetamerismOfSeveral(view);
  page_.AddHtml(html + "</tbody>\n</table>\n</div>\n");
}

std::string JudgeReport::MetamerismOfOne(const JudgedTrial& trial) const {
  std::string html = HeadingCell(Text(ReportText::kIlluminant)) + HeadingCell(judged_.TotalHeading()) +
                     HeadingCell(Text(ReportText::kIndex)) + "</tr></thead>\n<tbody>\n";
  for (std::size_t i = 0; i < trial.results.size(); ++i) {
    html += "<tr><th scope=\"row\">" + Escaped(judged_.IlluminantAt(i)) + "</th>" +
            NumberCell(trial.results[i].Total()) + NumberCell(trial.results[i].metamerism) + "</tr>\n";
  }
  return html;
}

std::string JudgeReport::MetamerismOfSeveral(const JudgedView& view) const {
  std::string html = HeadingCell(Text(ReportText::kTrial));
  for (std::size_t i = 0; i < judged_.IlluminantCount(); ++i) {
    html += HeadingCell(judged_.TotalHeading() + " " + judged_.IlluminantAt(i));
  }
  for (std::size_t i = 1; i < judged_.IlluminantCount(); ++i) {
    html += HeadingCell(Text(ReportText::kIndex) + " " + judged_.IlluminantAt(i));
  }
  html += "</tr></thead>\n<tbody>\n";
  std::vector<std::size_t> trials = judged_.WorstFirst(view);
  trials.resize(std::min(trials.size(), kMostMetamers));
  for (const std::size_t t : trials) {
    const JudgedTrial& trial = judged_.Trials()[t];
    html += "<tr><th scope=\"row\"><bdi>" + Escaped(trial.id) + "</bdi></th>";
    for (const JudgedResult& result : trial.results) html += NumberCell(result.Total());
    for (std::size_t i = 1; i < trial.results.size(); ++i) html += NumberCell(trial.results[i].metamerism);
    html += "</tr>\n";
  }
  return html;
}

// The data by which the script marks a trial in the pictures: by trial its view and, where that has others too, its points and
// its curve. Everything else stands in the table.
void JudgeReport::AddScriptData(const std::vector<std::size_t>& views) {
  std::vector<bool> isShown(judged_.Views().size());
  for (const std::size_t v : views) isShown[v] = true;
  std::string json = "[";
  for (const JudgedTrial& trial : judged_.Trials()) {
    json += json.size() > 1 ? ",\n[" : "[";
    json += isShown[trial.view] ? std::to_string(trial.view) : "-1";
    if (isShown[trial.view] && judged_.Views()[trial.view].trials.size() > 1) {
      json += ",[";
      for (const JudgedResult& result : trial.results) {
        for (const double value : result.plotted)
          json += (json.back() == '[' ? "" : ",") +
                  (std::isfinite(value) && !IsUnset(value) ? FixedText(value, 3) : "null");
      }
      json += "]";
      if (trial.hasCurve) json += "," + CurveJson(trial.curve);
    }
    json += "]";
  }
  page_.AddData("trials", json + "]");
  json = "{";
  for (const std::size_t v : views) {
    if (judged_.Views()[v].trials.size() < 2 || !judged_.Views()[v].hasCurve) continue;
    json +=
        (json.size() > 1 ? ",\"" : "\"") + std::to_string(v) + "\":" + CurveJson(judged_.Views()[v].curve);
  }
  page_.AddData("standards", json + "}");
  page_.AddData("samples", "[" + std::to_string(judged_.FirstSample()) + "," +
                               std::to_string(judged_.LastSample()) + "]");
  std::vector<std::size_t> all(judged_.Trials().size());
  std::iota(all.begin(), all.end(), std::size_t{0});
  const std::vector<std::size_t> places = judged_.TrendPlaces(all);
  if (!places.empty() && *std::ranges::max_element(places) < places.size()) {
    json = "[";
    for (const std::size_t place : places) json += (json.size() > 1 ? "," : "") + std::to_string(place);
    page_.AddData("orders", json + "]");
  }
  page_.AddData("illuminants", std::to_string(judged_.IlluminantCount()));
  const std::vector<ReportColumn> columns = Columns();
  const auto placeOf = [&](ReportColumn::Kind kind) {
    return std::ranges::find(columns, kind, &ReportColumn::kind) - columns.begin();
  };
  const auto words = placeOf(ReportColumn::Kind::kWords);  // behind the total
  page_.AddData("places", "{\"total\":" + std::to_string(words - 1) + ",\"words\":" + std::to_string(words) +
                              ",\"verdict\":" + std::to_string(placeOf(ReportColumn::Kind::kVerdict)) +
                              ",\"colours\":" + std::to_string(placeOf(ReportColumn::Kind::kColours)) + "}");
}

}  // namespace vrx::tool
