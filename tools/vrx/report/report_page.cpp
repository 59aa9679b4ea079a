
#include "tools/vrx/report/report_page.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include <vrxio/text/decimal.h>
#include <vrxstore/digest/digest.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/platform/clock.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/output/file_output.h"
#include "tools/vrx/report/report_assets.h"
#include "tools/vrx/report/report_files.h"

namespace vrx::tool {
namespace {

// A name in whatever direction it is written, apart from the text about it.
std::string Isolated(std::string_view text) {
  return "<bdi>" + Escaped(text) + "</bdi>";
}

std::string_view NameOf(ReportColumn::Kind kind) {
  static constexpr std::string_view kNames[] = {"text",   "words",   "name",    "choice",
                                                "number", "verdict", "colours", "reason"};
  return kNames[static_cast<std::size_t>(kind)];
}

std::string VerdictWord(Verdict verdict) {
  return Text(verdict == kPass      ? ReportText::kPass
              : verdict == kWarning ? ReportText::kWarning
                                    : ReportText::kFail);
}

bool EndsIn(std::string_view path, std::string_view end) {
  return path.size() > end.size() && EqualsIgnoringCase(path.substr(path.size() - end.size()), end);
}

bool IsPdf(std::string_view path) {
  return EndsIn(path, ".pdf");
}

// Also keeps a slip of the keyboard from replacing a file of measurements.
std::string RefuseOtherNames(const std::string& path) {
  if (IsPdf(path) || EndsIn(path, ".html") || EndsIn(path, ".htm")) return {};
  return "the name of a report must end in .html or .pdf";
}

std::string TwoDigits(int32_t number) {
  return {static_cast<char>('0' + number / 10 % 10), static_cast<char>('0' + number % 10)};
}

// The moment of writing, in local time; that of SOURCE_DATE_EPOCH, in UTC, for a report that is to be the same again.
std::string Now() {
  CalendarTime time;
  const char* epoch = std::getenv("SOURCE_DATE_EPOCH");
  if (epoch != nullptr && *epoch != '\0') {
    time = UtcCalendar(std::strtoll(epoch, nullptr, 10));
  } else {
    time = CurrentClock().ToLocal(CurrentClock().UtcSeconds());
  }
  if (!time.IsValid()) return "-";
  return std::to_string(time.year) + "-" + TwoDigits(time.month) + "-" + TwoDigits(time.day) + " " +
         TwoDigits(time.hour) + ":" + TwoDigits(time.minute);
}

// What stands over every printed page but the first. Every character but letters, digits and blanks is written by its number and
// the blank that ends it, as a style sheet may have it.
std::string ContinuedStyle(std::string_view text) {
  std::string content;
  const CString wide = CString::FromUtf8(text);
  std::u32string characters;
  for (std::size_t i = 0; i < wide.View().size(); ++i) {
    char32_t character = wide.View()[i];
    if (character >= 0xD800 && character < 0xDC00 && i + 1 < wide.View().size())
      character = 0x10000 + ((character - 0xD800) << 10) + (wide.View()[++i] - 0xDC00U);
    characters += character;
  }
  for (const char32_t c : characters) {
    if (c == U' ' || (c < 128 && std::isalnum(static_cast<int>(c)) != 0)) {
      content += static_cast<char>(c);
      continue;
    }
    char escape[12];
    std::snprintf(escape, sizeof escape, "\\%06x ", static_cast<unsigned>(c));
    content += escape;
  }
  return "@page {\n  @top-left { content: \"" + content +
         "\"; font: 8pt system-ui, \"DejaVu Sans\", sans-serif; color: #444; }\n}\n"
         "@page :first { @top-left { content: none; } }\n";
}

// The texts of the script, under the names by which it asks.
std::string ScriptTexts() {
  static constexpr struct {
    const char* name;
    ReportText text;
  } kTexts[] = {{"search", ReportText::kSearch},     {"all", ReportText::kAll},
                {"rows", ReportText::kRows},         {"previous", ReportText::kPrevious},
                {"next", ReportText::kNext},         {"shown", ReportText::kRowsShown},
                {"none", ReportText::kNoRows},       {"selected", ReportText::kSelected},
                {"filtered", ReportText::kFiltered}, {"gamut", ReportText::kOutOfGamut},
                {"trialLab", ReportText::kTrialLab}};
  std::string json = "{\"verdicts\":[";
  for (const Verdict verdict : {kFail, kWarning, kPass}) {
    json += (verdict == kFail ? "" : ",") + JsonText(VerdictWord(verdict));
  }
  json += "]";
  for (const auto& entry : kTexts)
    json += ",\"" + std::string(entry.name) + "\":" + JsonText(Text(entry.text));
  return json + "}";
}

}  // namespace

void AddReportOptions(Command& owner, ReportOptions& options) {
  Command command = owner.Group("Report");
  command.AddOption("--report", options.file, "Also write a report with pictures; a PDF needs Chromium")
      .Shows("FILE.html|FILE.pdf")
      .Check(RefuseOtherNames)
      .WritesFile();
  command.AddOption("--report-title", options.title, "Title of the report").Shows("TEXT");
  command.AddOption("--report-logo", options.logo, "Picture for the head of the report: PNG, JPEG or SVG")
      .Shows("FILE")
      .ReadsFile();
  command.AddOption("--report-customer", options.customer, "Customer to name in the report").Shows("TEXT");
  command.AddOption("--report-lot", options.lot, "Lot or order to name in the report").Shows("TEXT");
  command
      .AddOption("--report-approval", options.approval,
                 "Who approves; adds a line for the signature and the date at the end")
      .Shows("NAME");
  command.AddOption("--report-author", options.author, "Name to show as the author of the report")
      .Shows("NAME");
}

ShownColour Shown(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return pictures::SwatchOf(xyz, illuminant, observer);
}

std::string JsonText(std::string_view text) {
  std::string json = "\"";
  for (const char c : ShownText(text)) {
    switch (c) {
      case '"':
      case '\\':
        json.append("\\").append(1, c);
        break;
      case '<':  // neither "</script" nor "<!--" may stand in a script element
        json += "\\u003c";
        break;
      default:
        json += c;
    }
  }
  return json + "\"";
}

std::string FixedText(double value, int32_t decimals) {
  if (IsUnset(value)) return "-";
  return FixedDecimals(std::fabs(value) < 0.5 * std::pow(10.0, -decimals) ? 0.0 : value, decimals);
}

std::string VerdictHtml(Verdict verdict) {
  static constexpr const char* kClasses[] = {"fail", "warning", "pass"};
  return std::string("<span class=\"verdict ") + kClasses[static_cast<std::size_t>(verdict)] + "\">" +
         Escaped(VerdictWord(verdict)) + "</span>";
}

std::string SwatchesHtml(const ShownColour& standard, const ShownColour& trial) {
  const std::string first = pictures::HexColor(standard.color), second = pictures::HexColor(trial.color);
  const bool inGamut = standard.inGamut && trial.inGamut;
  return "<span class=\"swatches\" role=\"img\" aria-label=\"" + first + " | " + second +
         (inGamut ? "" : ", " + Escaped(Text(ReportText::kOutOfGamut))) +
         "\"><span style=\"background:" + first + "\"></span><span style=\"background:" + second +
         "\"></span></span>" + (inGamut ? "" : "*");
}

// Tables ------------------------------------------------------------------------------------------------------

void ReportTable::PutCell(std::string_view json, std::string_view html) {
  json_ += column_ == 0 ? (count_ == 0 ? "[" : ",\n[") : ",";
  json_ += json;
  if (count_ < kWrittenOut) {
    if (column_ == 0) html_ += "<tr>";
    html_ += html;
  }
  ++column_;
}

void ReportTable::Text(std::string_view text, Tint) {
  const std::string shown = Shortened(text, kLongestCell);
  const bool areWords =
      Column().kind == ReportColumn::Kind::kWords || Column().kind == ReportColumn::Kind::kReason;
  PutCell(JsonText(shown), (areWords ? "<td class=\"words\">" : "<td>") + Isolated(shown) + "</td>");
}

void ReportTable::Number(double value, Tint tint) {
  if (Column().kind == ReportColumn::Kind::kText) Column().kind = ReportColumn::Kind::kNumber;
  const std::string fixed = FixedText(value, Column().decimals);
  const bool isNumber = !IsUnset(value) && std::isfinite(value);
  PutCell(isNumber         ? fixed
          : IsUnset(value) ? "null"
                           : JsonText(fixed),
          std::string("<td class=\"number") +
              (tint == Tint::kBad       ? " broken"
               : tint == Tint::kWarning ? " near"
                                        : "") +
              "\">" + fixed + "</td>");
}

void ReportTable::Integer(int64_t value) {
  if (Column().kind == ReportColumn::Kind::kText)
    Column() = {Column().heading, ReportColumn::Kind::kNumber, 0};
  const std::string text = std::to_string(value);
  PutCell(text, "<td class=\"number\">" + text + "</td>");
}

void ReportTable::Put(Verdict verdict) {
  PutCell(std::to_string(verdict), "<td>" + VerdictHtml(verdict) + "</td>");
}

void ReportTable::Put(const ShownColour& standard, const ShownColour& trial) {
  const bool inGamut = standard.inGamut && trial.inGamut;
  PutCell(
      "\"" + pictures::HexColor(standard.color) + pictures::HexColor(trial.color) + (inGamut ? "\"" : "*\""),
      "<td>" + SwatchesHtml(standard, trial) + "</td>");
}

void ReportTable::EndRow() {
  if (count_ == kMost) {
    throw InputError("--report: more than " + std::to_string(kMost) +
                     " rows; report a part, or write csv or json");
  }
  json_ += "]";
  if (count_ < kWrittenOut) html_ += "</tr>\n";
  if (++count_ == kFirst) firstEnd_ = html_.size();
  column_ = 0;
}

std::string ReportTable::Html(std::size_t number, std::string_view caption) const {
  std::string html = "<div class=\"table\" data-table=\"" + std::to_string(number) +
                     "\">\n<div class=\"controls\"></div>\n<div class=\"scroll\" tabindex=\"0\" "
                     "role=\"region\" aria-label=\"" +
                     Escaped(caption) + "\">\n<table>\n<thead><tr>";
  for (const ReportColumn& column : columns_) {
    html += "<th scope=\"col\">" + Escaped(column.heading) + "</th>";
  }
  const bool isWhole = count_ <= kWrittenOut;
  html += "</tr></thead>\n<tbody>\n" + (isWhole ? html_ : html_.substr(0, firstEnd_)) +
          "</tbody>\n</table>\n</div>\n";
  html += "<p class=\"status\" role=\"status\">";
  if (!isWhole) {
    html += Escaped(TextOf(ReportText::kFirstRows, {std::to_string(kFirst), std::to_string(count_)}));
  }
  return html + "</p>\n</div>\n";
}

std::string ReportTable::Json() const {
  std::string json = "{\"columns\":[";
  for (const ReportColumn& column : columns_) {
    if (json.back() != '[') json += ",";
    json += "{\"heading\":" + JsonText(column.heading) + ",\"kind\":\"" + std::string(NameOf(column.kind)) +
            "\",\"decimals\":" + std::to_string(column.decimals) + "}";
  }
  return json + "],\"rows\":[\n" + json_ + "\n]}";
}

// The page ----------------------------------------------------------------------------------------------------

ReportPage::ReportPage(const ReportOptions& options, std::string_view heading)
    : options_(options), title_(options.title.empty() ? heading : options.title) {
  if (!options.logo.empty()) logo_ = PictureUrl(options.logo);
}

void ReportPage::BeginSection(std::string_view id, std::string_view heading, std::string_view attributes) {
  body_ += "<section id=\"" + Escaped(id) + "\"" + (attributes.empty() ? "" : " ") + std::string(attributes) +
           ">\n<h2 tabindex=\"-1\">" + Isolated(heading) + "</h2>\n";
}

void ReportPage::EndSection() {
  body_ += "</section>\n";
}

void ReportPage::AddSubheading(std::string_view heading) {
  body_ += "<h3>" + Isolated(heading) + "</h3>\n";
}

void ReportPage::AddParagraph(std::string_view text) {
  body_ += "<p>" + Escaped(text) + "</p>\n";
}

void ReportPage::BeginFacts() {
  body_ += "<dl class=\"facts\">\n";
  if (!options_.customer.empty()) AddFact(ReportText::kCustomer, options_.customer);
  if (!options_.lot.empty()) AddFact(ReportText::kLot, options_.lot);
}

void ReportPage::AddFact(ReportText term, std::string_view description, std::string_view small) {
  body_ += "<div><dt>" + Escaped(Text(term)) + "</dt><dd>" + Isolated(description);
  if (!small.empty()) body_ += " <span class=\"small\">" + Escaped(small) + "</span>";
  body_ += "</dd></div>\n";
}

void ReportPage::AddJob(const store::JobInfo& info) {
  AddFact(
      ReportText::kJob, info.name,
      TextOf(ReportText::kTrailRow, {std::to_string(info.head.number), store::HexText(info.head.digest)}));
}

void ReportPage::AddFile(ReportText term, const std::string& path) {
  const std::string hash = HashOfFile(path);
  AddFact(term, path == "-" ? "standard input" : path.substr(path.find_last_of("/\\") + 1),
          hash.empty() ? Text(ReportText::kNotHashed) : "SHA-256 " + hash);
}

void ReportPage::AddMeasured(const std::string& conditions, const std::string& from, const std::string& to) {
  std::string when = from;
  if (to != from) when = TextOf(ReportText::kFromTo, {from, to});
  const bool both = !conditions.empty() && !when.empty();
  if (!conditions.empty() || !when.empty())
    AddFact(ReportText::kMeasured, conditions + (both ? ", " : "") + when);
}

void ReportPage::AddWarnings(const std::vector<InputWarning>& warnings) {
  for (const auto& [file, text] : warnings) {
    body_ += "<p class=\"note\"><b>" + Escaped(Text(ReportText::kAttention)) + "</b> " +
             Isolated(file.substr(file.find_last_of("/\\") + 1)) + ": " + Isolated(text) + "</p>\n";
  }
}

std::string ReportPage::ApprovalHtml() const {
  if (options_.approval.empty()) return {};
  return "<p class=\"approval\"><span>" + Escaped(Text(ReportText::kApproved)) + " " +
         Isolated(options_.approval) + "</span><span>" + Escaped(Text(ReportText::kDate)) + "</span></p>\n";
}

void ReportPage::AddOrigin() {
  if (!options_.author.empty()) AddFact(ReportText::kAuthor, options_.author);
  AddFact(ReportText::kWritten, Now(), TextOf(ReportText::kWrittenBy, {VRX_VERSION}));
}

void ReportPage::EndFacts() {
  body_ += "</dl>\n";
}

void ReportPage::AddChart(const Chart& chart, std::string_view attributes) {
  const std::string picture = pictures::PaintInlineSvg(chart.picture, chart.width, chart.height,
                                                       ShownText(chart.title + ". " + chart.summary));
  constexpr int32_t kWide = 400;
  body_ += std::string("<figure class=\"chart") + (chart.width > kWide ? " wide" : "") + "\" data-scales=\"" +
           Escaped(chart.Scales()) + "\"" + (attributes.empty() ? "" : " ") + std::string(attributes) +
           ">\n<figcaption>" + Escaped(chart.title) + "</figcaption>\n" + picture + "</figure>\n";
}

void ReportPage::AddTable(const ReportTable& table, std::string_view caption) {
  body_ += table.Html(tableCount_++, caption);
  if (!tables_.empty()) tables_ += ",";
  tables_ += table.Json();
}

void ReportPage::AddData(std::string_view name, std::string_view json) {
  data_ += ",\n" + JsonText(name) + ":" + std::string(json);
}

std::string ReportPage::Html() const {
  const std::string title = Escaped(title_);
  std::string html =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; "
      "style-src 'unsafe-inline'; script-src 'sha256-" +
      store::Base64(Sha256(kReportScript)) +
      "'\">\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<meta name=\"color-scheme\" content=\"light dark\">\n<title>" +
      title + "</title>\n<style>\n";
  html += kReportStyle;
  html += ContinuedStyle(TextOf(ReportText::kContinued, {ShownText(title_)}));
  html += "</style>\n</head>\n<body>\n<a class=\"skip\" href=\"#results\">" +
          Escaped(Text(ReportText::kSkip)) + "</a>\n<header>\n";
  if (!logo_.empty()) {
    html += "<img class=\"logo\" alt=\"" + Escaped(Text(ReportText::kLogo)) + "\" src=\"" + logo_ + "\">\n";
  }
  html += "<h1>" + Isolated(title_) + "</h1>\n</header>\n<main>\n";
  html += body_;
  html += ApprovalHtml();
  html += "</main>\n<script type=\"application/json\" id=\"data\">{\"texts\":" + ScriptTexts() +
          ",\n\"tables\":[" + tables_ + "]" + data_ + "}</script>\n<script>";
  html += kReportScript;
  return html + "</script>\n</body>\n</html>\n";
}

void ReportPage::Save() const {
  if (IsPdf(options_.file)) {
    PrintToPdf(Html(), options_.file);
  } else {
    ReplaceFile(options_.file, Html());
  }
}

}  // namespace vrx::tool
