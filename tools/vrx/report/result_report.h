// The report of a command whose results are rows: the conditions, the rows, and pictures. Where no report is asked for,
// everything here does nothing.

#ifndef TOOLS_VRX_REPORT_RESULT_REPORT_H_
#define TOOLS_VRX_REPORT_RESULT_REPORT_H_

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <vrxio/files/curve_reader.h>
#include <vrxstore/records/records.h>
#include <vrxmath/colorimetry/illuminants.h>

#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/report/charts.h"
#include "tools/vrx/report/report_page.h"

namespace vrx::tool {

/// A target and what was found for it.
struct ReportTarget {
  /// Amounts by component, one text for each of `headings`, which may be empty.
  struct AmountRow {
    std::string component;
    std::vector<std::string> amounts;
  };

  std::string id;
  ShownColour target, nearest;
  std::vector<CReflData> curves;  ///< the target's first and then those of what was found; or none
  CReflData lower, upper;         ///< between which the first that was found is expected; or unset
  double error = kUnset;          ///< by which these differ from it
  std::vector<std::string> headings;
  std::vector<AmountRow> amounts;
};

class ResultReport {
 public:
  /// `options` must outlive it. Throws InputError for a logo that is none.
  ResultReport(const ReportOptions& options, ReportText heading);

  bool IsWanted() const { return page_.has_value(); }

  /// The writer of a command's rows: the usual one, and beside it the report's, which must outlive it.
  std::unique_ptr<RowWriter> Rows(const Format& format, OutputStream& output, std::vector<Column> columns);

  /// Inputs and conditions, in the order of the calls.
  void AddFile(ReportText term, const std::string& path);
  void AddFact(ReportText term, std::string_view description);
  /// The job that the rows are from, with the head of its trail.
  void AddJob(const store::JobInfo& info);
  void AddViewing(const std::vector<vrxIlluminant>& illuminants, int32_t observer);
  /// The interval in nm at which curves were summed; 10 goes without saying.
  void AddInterval(int32_t interval);

  /// How the samples of a file were measured, and what a reader is to know of them. Call it once they were read.
  void AddInput(const CurveReader& curves);
  void AddInput(const CurveReader& standards, const CurveReader& trials);
  void AddInput(std::string conditions, std::string date, const std::vector<InputWarning>& warnings);

  /// What else a reader is to know of a file.
  void AddWarning(const InputWarning& warning) { warnings_.push_back(warning); }

  /// The curves of the pictures, and that of the standard where there is one for all.
  void SetMeasured(const CurveReader& curves);
  void AddCurve(const CReflData& curve);
  void SetStandard(const CReflData& curve);
  /// A swatch with its name.
  void AddColour(std::string_view id, const ShownColour& colour);
  /// A target beside what came nearest to it, with the curves and amounts of all that was found.
  void AddTarget(const ReportTarget& target);
  /// The text before the pictures of targets.
  void SetNote(std::string_view note) { note_ = note; }
  void AddPlane(const PlaneChart& chart);
  /// Charts of individuals. `note`: a sentence before them, or empty.
  void AddControlChart(ControlChart chart, std::string_view note);

  /// Writes the report. Throws InputError or OutputError when that fails.
  void Save();

 private:
  struct Fact {
    ReportText term;
    std::string text;
    bool isFile;
  };

  struct Target {
    std::string name;
    std::string swatches;  // HTML
    std::vector<PlottedCurve> curves;
    std::optional<PlottedCurve> lower, upper;
    std::string error;
    std::string amounts;  // HTML
  };

  void AddTargets();

  const ReportOptions& options_;
  std::optional<ReportPage> page_;  // none when no report is asked for
  std::string heading_;
  std::optional<ReportTable> table_;
  std::optional<store::JobInfo> job_;
  std::vector<Fact> facts_;
  std::vector<std::array<std::string, 2>> measured_;  // conditions and date
  std::vector<InputWarning> warnings_;
  MeasuredRange range_;
  std::vector<PlottedCurve> curves_;
  std::optional<PlottedCurve> standard_;
  std::string swatches_;  // HTML
  std::vector<PlaneChart> planes_;
  ControlChart control_;
  std::vector<Target> targets_;
  std::string note_;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_RESULT_REPORT_H_
