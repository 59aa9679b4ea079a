// A report: one HTML file that needs nothing else. Its pieces are made here, in C++, once for the screen, the printer and
// the screen reader; a short script sorts, filters and pages the tables and marks a chosen trial in the pictures.
//
//   ReportPage page(options, "Colours");
//   page.BeginSection("results", "Results");
//   page.AddTable(table, "All colours");
//   page.AddChart(MakeChart(data));
//   page.EndSection();
//   page.Save();

#ifndef TOOLS_VRX_REPORT_REPORT_PAGE_H_
#define TOOLS_VRX_REPORT_REPORT_PAGE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxstore/records/records.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/tolerance/box_tolerance.h>

#include "pictures/swatches.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/report/charts.h"
#include "tools/vrx/report/picture_file.h"
#include "tools/vrx/report/report_texts.h"

namespace vrx::tool {

class Command;

struct ReportOptions {
  std::string file;  ///< empty when no report is asked for
  std::string title;
  std::string logo;
  std::string author;
  std::string customer, lot;
  std::string approval;  ///< who is to sign; empty for no line

  bool IsWanted() const { return !file.empty(); }
};

/// Adds `--report`, `--report-title`, `--report-logo`, `--report-author`, `--report-customer`, `--report-lot` and
/// `--report-approval`.
void AddReportOptions(Command& owner, ReportOptions& options);

/// A colour as a display shows it.
using ShownColour = pictures::Swatch;
/// Tristimulus values as a display shows them.
ShownColour Shown(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz);

/// A column of a table in a report.
struct ReportColumn {
  enum class Kind { kText, kWords, kName, kChoice, kNumber, kVerdict, kColours, kReason };
  std::string heading;
  Kind kind = Kind::
      kText;  ///< kWords stay on one line in print, kName shows its trial when it is chosen, kChoice can be chosen from a list, kReason marks the cell under the heading that it begins with
  int32_t decimals = 2;
};

/// Rows of a table, up to 100,000. A column of texts that gets numbers is one of numbers. All rows go to the page's data; the
/// first ones are also written out, so that there is something to read, and to print, where no script runs.
class ReportTable final : public RowWriter {
 public:
  explicit ReportTable(std::vector<ReportColumn> columns) : columns_(std::move(columns)) {}

  void Text(std::string_view text, Tint tint = Tint::kPlain) override;
  void Words(std::string_view, std::string_view shown) override { Text(shown); }
  /// A bad one is marked.
  void Number(double value, Tint tint = Tint::kPlain) override;
  void Known(double value) override { Number(IsUnset(value) ? 0.0 : value); }
  void Integer(int64_t value) override;
  void Put(Verdict verdict);
  void Put(const ShownColour& standard, const ShownColour& trial);
  /// Throws InputError for too many rows.
  void EndRow() override;
  void Finish() override {}

  std::size_t RowCount() const { return count_; }
  /// The table as HTML, and its columns and rows as JSON. `number` tells the tables of a page apart.
  std::string Html(std::size_t number, std::string_view caption) const;
  std::string Json() const;

 private:
  static constexpr std::size_t kMost = 100'000;
  static constexpr std::size_t kWrittenOut = 300;  // rows up to which a table is written out as a whole
  static constexpr std::size_t kFirst = 100;       // rows that are written out of a longer one

  void PutCell(std::string_view json, std::string_view html);
  ReportColumn& Column() { return columns_[column_]; }

  std::vector<ReportColumn> columns_;
  std::size_t column_ = 0;
  std::size_t count_ = 0;
  std::string json_;
  std::string html_;
  std::size_t firstEnd_ = 0;  // of the first rows in html_
};

/// `text` as a string of JSON that may stand in a script element.
std::string JsonText(std::string_view text);
/// "● pass" and its kin, as HTML: a shape, a word and a colour.
std::string VerdictHtml(Verdict verdict);
/// A pair of touching swatches with a note where the display cannot show one, as HTML.
std::string SwatchesHtml(const ShownColour& standard, const ShownColour& trial);
/// A fixed number of decimals; "-" when unset.
std::string FixedText(double value, int32_t decimals = 2);

class ReportPage {
 public:
  /// `heading`: what stands in place of a title that the options leave open.
  ReportPage(const ReportOptions& options, std::string_view heading);

  /// A part of the page under a heading; what is added from now on is in it. `id` is for links.
  void BeginSection(std::string_view id, std::string_view heading, std::string_view attributes = {});
  void EndSection();
  /// A heading within a section.
  void AddSubheading(std::string_view heading);
  /// Text, and HTML that the caller made of escaped text.
  void AddParagraph(std::string_view text);
  void AddHtml(std::string_view html) { body_ += html; }
  /// A list of terms and their descriptions, which begins with the customer and the lot of the options.
  void BeginFacts();
  void AddFact(ReportText term, std::string_view description, std::string_view small = {});
  /// The job that the results are from, with the head of its trail.
  void AddJob(const store::JobInfo& info);
  /// An input file with its hash. Throws InputError when the report is to be written to it.
  void AddFile(ReportText term, const std::string& path);
  /// How the samples of a file were measured, and when: from the first to the last date, which may be one, or unknown.
  void AddMeasured(const std::string& conditions, const std::string& from, const std::string& to);
  /// What a reader is to know before he trusts the results.
  void AddWarnings(const std::vector<InputWarning>& warnings);
  /// Who wrote the report, when, and with which version.
  void AddOrigin();
  void EndFacts();
  /// Neighbouring pictures, side by side where there is room.
  void BeginRow() { body_ += "<div class=\"row\">\n"; }
  void EndRow() { body_ += "</div>\n"; }
  /// `attributes` of the figure, for the script.
  void AddChart(const Chart& chart, std::string_view attributes = {});
  /// A finished table.
  void AddTable(const ReportTable& table, std::string_view caption);
  /// A member of the page's data, for the script: JSON.
  void AddData(std::string_view name, std::string_view json);

  /// The page as a whole.
  std::string Html() const;
  /// Writes the file of the options: PDF when its name ends so, HTML otherwise. Throws InputError when that fails.
  void Save() const;

 private:
  std::string ApprovalHtml() const;

  const ReportOptions& options_;
  std::string title_;
  std::string logo_;  // a data URL
  std::string body_;
  std::string tables_;
  std::size_t tableCount_ = 0;
  std::string data_;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_REPORT_PAGE_H_
