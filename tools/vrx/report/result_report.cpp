
#include "tools/vrx/report/result_report.h"

#include <span>
#include <utility>

#include "tools/vrx/base/text.h"
#include "tools/vrx/input/conditions.h"

namespace vrx::tool {
namespace {

// Rows for a command's usual output and its report.
class BothRows final : public RowWriter {
 public:
  // `shown`: of each column, whether the report has it.
  BothRows(std::unique_ptr<RowWriter> usual, RowWriter& report, std::vector<bool> shown)
      : usual_(std::move(usual)), report_(report), shown_(std::move(shown)) {}
  void Text(std::string_view text, Tint tint) override {
    usual_->Text(text, tint);
    if (IsShownNext()) report_.Text(text, tint);
  }
  void Words(std::string_view plain, std::string_view shown) override {
    usual_->Words(plain, shown);
    if (IsShownNext()) report_.Words(plain, shown);
  }
  void Number(double value, Tint tint) override {
    usual_->Number(value, tint);
    if (IsShownNext()) report_.Number(value, tint);
  }
  void Known(double value) override {
    usual_->Known(value);
    if (IsShownNext()) report_.Known(value);
  }
  void Integer(int64_t value) override {
    usual_->Integer(value);
    if (IsShownNext()) report_.Integer(value);
  }
  void EndRow() override {
    usual_->EndRow();
    report_.EndRow();
    column_ = 0;
  }
  void Finish() override { usual_->Finish(); }

 private:
  bool IsShownNext() { return shown_[column_++]; }

  std::unique_ptr<RowWriter> usual_;
  RowWriter& report_;
  std::vector<bool> shown_;
  std::size_t column_ = 0;
};

// The amounts of a target's recipes, a component a row and a recipe a column.
std::string AmountsHtml(const ReportTarget& target) {
  if (target.amounts.empty()) return "";
  const std::string caption = Escaped(Text(ReportText::kAmounts));
  std::string html =
      "<div class=\"scroll\" tabindex=\"0\" role=\"region\" aria-label=\"" + caption + ": " +
      Escaped(Shortened(target.id, kLongestCell)) + "\">\n<table class=\"amounts\">\n<caption>" + caption +
      "</caption>\n<thead><tr><th scope=\"col\">" + Escaped(Text(ReportText::kComponent)) + "</th>";
  for (const std::string& heading : target.headings)
    html += "<th scope=\"col\" class=\"number\"><bdi>" + Escaped(Shortened(heading, kLongestCell)) +
            "</bdi></th>";
  html += "</tr></thead>\n<tbody>\n";
  for (const ReportTarget::AmountRow& row : target.amounts) {
    html += "<tr><th scope=\"row\"><bdi>" + Escaped(Shortened(row.component, kLongestCell)) + "</bdi></th>";
    for (const std::string& amount : row.amounts) html += "<td class=\"number\">" + Escaped(amount) + "</td>";
    html += "</tr>\n";
  }
  return html + "</tbody>\n</table>\n</div>\n";
}

std::string PairHtml(const ShownColour& first, const ShownColour& second, std::string_view name) {
  return "<figure class=\"pair\">" + SwatchesHtml(first, second) + "<figcaption><bdi>" + Escaped(name) +
         "</bdi></figcaption></figure>\n";
}

bool IsChosenFrom(std::string_view name) {
  return name == "illuminant" || name == "geometry" || name == "index" || name == "form";
}

}  // namespace

ResultReport::ResultReport(const ReportOptions& options, ReportText heading)
    : options_(options), heading_(Text(heading)) {
  if (options_.IsWanted()) page_.emplace(options_, heading_);
}

std::unique_ptr<RowWriter> ResultReport::Rows(const Format& format, OutputStream& output,
                                              std::vector<Column> columns) {
  std::vector<ReportColumn> shown;
  shown.reserve(columns.size());
  std::vector<bool> isShown;
  for (const Column& column : columns) {
    isShown.push_back(column.inReport);
    if (!column.inReport) continue;
    shown.push_back({column.heading.empty() ? column.name : column.heading,
                     IsChosenFrom(column.name) ? ReportColumn::Kind::kChoice : ReportColumn::Kind::kText,
                     column.decimals});
  }
  auto usual = MakeRowWriter(format, output, std::move(columns));
  if (!page_) return usual;
  return std::make_unique<BothRows>(std::move(usual), table_.emplace(std::move(shown)), std::move(isShown));
}

void ResultReport::AddFile(ReportText term, const std::string& path) {
  if (page_ && !path.empty()) facts_.push_back({term, path, true});
}

void ResultReport::AddFact(ReportText term, std::string_view description) {
  if (page_) facts_.push_back({term, std::string(description), false});
}

void ResultReport::AddJob(const store::JobInfo& info) {
  if (page_) job_ = info;
}

void ResultReport::AddViewing(const std::vector<vrxIlluminant>& illuminants, int32_t observer) {
  std::string codes;
  for (const vrxIlluminant illuminant : illuminants)
    codes += (codes.empty() ? "" : ", ") + ShownIlluminant(illuminant);
  AddFact(ReportText::kIlluminants, codes);
  AddFact(ReportText::kObserver, TextOf(ReportText::kObserverDegrees, {std::to_string(DegreesOf(observer))}));
}

void ResultReport::AddInterval(int32_t interval) {
  if (interval == kWavelengthStep) return;
  AddFact(ReportText::kSums, TextOf(ReportText::kSumsEvery, {std::to_string(interval)}));
}

void ResultReport::AddInput(const CurveReader& curves) {
  AddInput(MeasuringText(curves), curves.FirstConditions().date, WarningsOf(curves));
}

void ResultReport::AddInput(const CurveReader& standards, const CurveReader& trials) {
  AddInput(MeasuringText(standards), standards.FirstConditions().date, {});
  AddInput(MeasuringText(trials), trials.FirstConditions().date, WarningsOf(standards, trials));
}

void ResultReport::AddInput(std::string conditions, std::string date,
                            const std::vector<InputWarning>& warnings) {
  measured_.push_back({std::move(conditions), std::move(date)});
  warnings_.insert(warnings_.end(), warnings.begin(), warnings.end());
}

void ResultReport::SetMeasured(const CurveReader& curves) {
  if (curves.Kind() != Sample::kCurve) return;
  range_.Set(curves.Grid().FirstWavelength(), curves.Grid().LastWavelength());
}

void ResultReport::AddCurve(const CReflData& curve) {
  if (page_) curves_.push_back(Plotted(curve));
}

void ResultReport::AddColour(std::string_view id, const ShownColour& colour) {
  if (page_) swatches_ += PairHtml(colour, colour, Shortened(id, kLongestCell));
}

void ResultReport::AddTarget(const ReportTarget& target) {
  if (!page_) return;
  Target& shown = targets_.emplace_back();
  shown.name = Shortened(target.id, kLongestCell);
  shown.swatches = PairHtml(target.target, target.nearest, Text(ReportText::kTargetAndFirst));
  for (const CReflData& curve : target.curves) shown.curves.push_back(Plotted(curve));
  shown.amounts = AmountsHtml(target);
  if (IsUnset(target.lower) || IsUnset(target.upper)) return;
  shown.lower = Plotted(target.lower), shown.upper = Plotted(target.upper);
  shown.error = FixedText(target.error);
}

void ResultReport::SetStandard(const CReflData& curve) {
  if (page_) standard_ = Plotted(curve);
}

void ResultReport::AddPlane(const PlaneChart& chart) {
  if (page_) planes_.push_back(chart);
}

void ResultReport::AddControlChart(ControlChart chart, std::string_view note) {
  if (!page_) return;
  control_ = std::move(chart);
  note_ = note;
}

void ResultReport::Save() {
  if (!page_) return;
  page_->BeginSection("conditions", Text(ReportText::kConditions));
  page_->AddWarnings(warnings_);
  page_->BeginFacts();
  if (job_) page_->AddJob(*job_);
  for (const Fact& fact : facts_) {
    fact.isFile ? page_->AddFile(fact.term, fact.text) : page_->AddFact(fact.term, fact.text);
  }
  for (const auto& [conditions, date] : measured_) page_->AddMeasured(conditions, date, date);
  page_->AddOrigin();
  page_->EndFacts();
  page_->EndSection();
  page_->BeginSection("results", Text(ReportText::kResults));
  page_->AddTable(*table_, heading_);
  page_->EndSection();
  if (!curves_.empty() || !planes_.empty()) {
    page_->BeginSection("pictures", Text(ReportText::kPictures));
    if (!swatches_.empty()) page_->AddHtml("<div class=\"pairs colours\">\n" + swatches_ + "</div>\n");
    if (swatches_.find("</span>*") != std::string::npos)
      page_->AddParagraph("* " + Text(ReportText::kOutOfGamut));
    if (!curves_.empty()) {
      CurvesChart chart;
      chart.title = Text(standard_ ? ReportText::kCurves : ReportText::kCurvesOnly);
      chart.range = range_;
      if (standard_) chart.standard = &*standard_;
      for (const PlottedCurve& curve : curves_) chart.trials.push_back(&curve);
      page_->AddChart(MakeChart(chart));
    }
    page_->BeginRow();
    for (const PlaneChart& plane : planes_) page_->AddChart(MakeChart(plane));
    page_->EndRow();
    page_->EndSection();
  }
  if (!control_.strips.empty()) {
    page_->BeginSection("pictures", Text(ReportText::kPictures));
    page_->AddParagraph(Text(ReportText::kControlHint));
    if (!note_.empty()) page_->AddParagraph(note_);
    page_->AddChart(MakeChart(control_));
    page_->EndSection();
  }
  if (!targets_.empty()) AddTargets();
  page_->Save();
}

void ResultReport::AddTargets() {
  page_->BeginSection("pictures", Text(ReportText::kPictures));
  if (!note_.empty()) page_->AddParagraph(note_);
  bool isAnyBeyond = false;
  for (const Target& target : targets_) {
    page_->AddSubheading(target.name);
    page_->AddHtml("<div class=\"pairs\">\n" + target.swatches + "</div>\n");
    isAnyBeyond = isAnyBeyond || target.swatches.find("</span>*") != std::string::npos;
    page_->AddHtml(target.amounts);
    if (target.curves.empty()) continue;
    CurvesChart chart;
    chart.title = target.lower ? TextOf(ReportText::kTargetCurvesBand, {target.error})
                               : Text(ReportText::kTargetCurves);
    chart.range = range_;
    chart.areRecipes = true;
    if (target.lower && target.upper) chart.lower = &*target.lower, chart.upper = &*target.upper;
    chart.standard = &target.curves.front();
    for (const PlottedCurve& curve : std::span(target.curves).subspan(1)) chart.trials.push_back(&curve);
    page_->AddChart(MakeChart(chart));
  }
  if (isAnyBeyond) page_->AddParagraph("* " + Text(ReportText::kOutOfGamut));
  page_->EndSection();
}

}  // namespace vrx::tool
