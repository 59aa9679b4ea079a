// vrx index: whiteness, tint and yellowness of curves or tristimulus values, contrast ratio of drawdowns,
// metamerism against a standard.

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/foundation/string_numbers.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/judging/standards.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/report/result_report.h"

namespace vrx::tool {
namespace {

struct IndexOptions {
  std::string file;
  std::string standard;
  std::string standardId;
  bool pairs = false;
  bool formulas = false;
  ViewingOptions viewing;
  CurveInputOptions input;
  Format format = Format::kTable;
  ReportOptions report;
};

// Writes one index a row.
class IndexRows {
 public:
  IndexRows(const IndexOptions& options, OutputStream& output)
      : illuminants_(options.viewing.Illuminants()),
        observer_(options.viewing.Observer()),
        format_(options.format),
        report_(options.report, ReportText::kIndices),
        rows_(report_.Rows(options.format, output,
                           {{"id"}, {"illuminant"}, {"observer"}, {"index"}, {"form"}, {"value", "", 3}})) {
    report_.AddFile(ReportText::kInputFile, options.file);
    report_.AddFile(ReportText::kStandardsFile, options.standard);
    report_.AddViewing(illuminants_, observer_);
  }

  ResultReport& Report() { return report_; }

  const std::vector<vrxIlluminant>& Illuminants() const { return illuminants_; }
  int32_t Observer() const { return observer_; }

  /// The whiteness family of one colour. A table leaves out what does not exist under the illuminant.
  void AddFamily(std::string_view id, vrxIlluminant illuminant, const CTrisValues& xyz) {
    for (const ColorIndex& index : ColorIndices()) {
      for (const IndexForm form : {IndexForm::kDirect, IndexForm::kRecalculated}) {
        const IndexFunction function = index.Function(form);
        if (function == nullptr) continue;
        Add(id, illuminant, IndexLabel(index, form).ToUtf8(), form, function(illuminant, observer_, xyz));
      }
    }
  }

  void Add(std::string_view id, vrxIlluminant illuminant, const std::string& label, IndexForm form,
           double value) {
    if (format_ == Format::kTable && IsUnset(value)) return;
    rows_->Text(id);
    rows_->Text(CodeOf(illuminant));
    rows_->Integer(DegreesOf(observer_));
    rows_->Text(label);
    rows_->Text(form == IndexForm::kDirect ? "direct" : "recalculated");
    rows_->Number(value);
    rows_->EndRow();
  }

  void Finish() {
    rows_->Finish();
    report_.Save();
  }

 private:
  std::vector<vrxIlluminant> illuminants_;
  int32_t observer_;
  Format format_;
  ResultReport report_;
  std::unique_ptr<RowWriter> rows_;
};

// The geometries of a drawdown, as a background and as a transmission measurement.
struct DrawdownGeometries {
  int32_t overWhite, overBlack;
};
constexpr DrawdownGeometries kDrawdowns[] = {{29, 30}, {34, 35}};

// Puts the two measurements of a drawdown together, which follow each other in the file.
class Drawdowns {
 public:
  explicit Drawdowns(IndexRows& rows) : rows_(rows) {}

  void Take(const CurveRow& row) {
    for (const auto& [overWhite, overBlack] : kDrawdowns) {
      if (row.id != id_) break;
      if (row.geometry == overBlack && geometry_ == overWhite) AddRatio(row.id, row.curve, curve_);
      if (row.geometry == overWhite && geometry_ == overBlack) AddRatio(row.id, curve_, row.curve);
    }
    id_ = row.id;
    geometry_ = row.geometry;
    curve_ = row.curve;
  }

 private:
  void AddRatio(std::string_view id, const CReflData& black, const CReflData& white) {
    const std::string label = CString::Load(kStringContrastRatio).ToUtf8();
    CTrisValues overBlack, overWhite;
    for (const vrxIlluminant illuminant : rows_.Illuminants()) {
      black.Tristimulus(illuminant, rows_.Observer(), overBlack);
      white.Tristimulus(illuminant, rows_.Observer(), overWhite);
      rows_.Add(id, illuminant, label, IndexForm::kDirect, ContrastRatio(overBlack, overWhite));
    }
  }

  IndexRows& rows_;
  std::string id_;
  int32_t geometry_ = kNoGeometry;
  CReflData curve_;
};

// Metamerism against the standard between the first illuminant and each other one.
void AddMetamerism(const CurveRow& row, const CReflData& standard, IndexRows& rows) {
  const vrxIlluminant reference = rows.Illuminants().front();
  const std::string label = CString::Load(kStringMetamerismIndex).ToUtf8() + ": " + CodeOf(reference);
  for (std::size_t i = 1; i < rows.Illuminants().size(); ++i) {
    const vrxIlluminant test = rows.Illuminants()[i];
    rows.Add(row.id, test, label, IndexForm::kDirect,
             MetamerismIndex(reference, test, rows.Observer(), standard, row.curve));
  }
}

// The curves that metamerism is reckoned against; null without --standard.
std::unique_ptr<Standards> OpenStandards(const IndexOptions& options) {
  if (options.standard.empty()) return nullptr;
  CurveReader reader = OpenCurves(options.standard, options.input);
  return options.pairs ? PairedStandards(std::move(reader))
                       : OneStandard(std::move(reader), options.standardId);
}

void AddCurves(CurveReader curves, Standards* standards, IndexRows& rows) {
  ProgressBar progress(curves.Source().Size());
  Drawdowns drawdowns(rows);
  CurveRow row;
  CTrisValues xyz;
  rows.Report().SetMeasured(curves);
  while (curves.Next(row)) {
    rows.Report().AddCurve(row.curve);
    for (const vrxIlluminant illuminant : rows.Illuminants()) {
      row.curve.Tristimulus(illuminant, rows.Observer(), xyz);
      rows.AddFamily(row.id, illuminant, xyz);
    }
    drawdowns.Take(row);
    if (standards != nullptr) AddMetamerism(row, standards->Of(row).sample.curve, rows);
    progress.Update(curves.Source().Position());
  }
  WarnAboutInput(curves);
}

void AddColors(CurveReader colors, IndexRows& rows) {
  CurveRow row;
  CTrisValues xyz;
  while (colors.Next(row)) {
    std::ranges::copy(row.color, xyz.begin());
    for (const vrxIlluminant illuminant : rows.Illuminants()) rows.AddFamily(row.id, illuminant, xyz);
  }
}

// The formula behind a label.
struct IndexFormula {
  uint32_t label;
  const char* formula;
  const char* direct;        // the illuminants and observers of the direct form
  const char* recalculated;  // what the other form does
};
constexpr IndexFormula kFormulas[] = {
    {kStringIndexLabel, "3.388 Z - 3 Y", "C/2", "Z to the white of C/2"},
    {kStringIndexLabel + 1, "Y + 800 (xn - x) + 1700 (yn - y)",
     "C, D65, D50 with the white points of ASTM E313", "any other white"},
    {kStringIndexLabel + 2, "Y + 800 (xn - x) + 1700 (yn - y)", "D65", "the white of any illuminant"},
    {kStringIndexLabel + 3, "k (xn - x) - 650 (yn - y), k = 1000 (2 degrees) or 900 (10 degrees)", "D65",
     "the white of any illuminant"},
    {kStringIndexLabel + 4, "Y + 3.4 Z - 3.895 X (2 degrees), Y + 3.448 Z - 3.904 X (10 degrees)", "D65",
     "X and Z to the white of D65/2, the formula of 2 degrees"},
    {kStringIndexLabel + 5, "L - 3 b + 3 a in Hunter Lab", "any", ""},
    {kStringIndexLabel + 6, "L - 3 b in Hunter Lab", "any", ""},
    {kStringIndexLabel + 7, "3.3834 Z - 3 Y", "C/2", "Z to the white of C/2"},
    {kStringIndexLabel + 8, "100 (1 - 0.847 Z / Y)", "C/2", "Z to the white of C/2"},
    {kStringIndexLabel + 9,
     "100 (Cx X - Cz Z) / Y: C/2 1.2769, 1.0592; C/10 1.2871, 1.0781; D65/2 1.2985, 1.1335; D65/10 1.3013, "
     "1.1498",
     "C, D65", "X and Z to the white of C/2, the formula of C/2"},
    {kStringIndexLabel + 10, "100 (1.28 X - 1.06 Z) / Y", "C/2", "X and Z to the white of C/2"},
    {kStringIndexLabel + 11, "100 (a X - b Z) / Y: C/2 1.277, 1.059; D65/2 1.298, 1.133; D65/10 1.301, 1.149",
     "C/2, D65", "X and Z to the white of C/2, the formula of C/2"},
    {kStringFurtherIndexLabel, "k (xn - x) - 650 (yn - y), k = 1000 (2 degrees) or 900 (10 degrees)",
     "C, D65, D50 with the white points of ASTM E313", "any other white"},
    {kStringFurtherIndexLabel + 1, "253.1 - 620.88511 Z / (1.275 X + Y + 0.635025 Z)", "C/2", ""},
};

void WriteIndexFormulas(const Format& format) {
  OutputStream output;
  const auto rows =
      MakeRowWriter(format, output, {{"index"}, {"formula"}, {"direct", "direct for"}, {"recalculated"}});
  for (const ColorIndex& index : ColorIndices()) {
    const IndexFormula& row = *std::ranges::find(kFormulas, index.label, &IndexFormula::label);
    rows->Text(IndexLabel(index, IndexForm::kDirect).ToUtf8());
    for (const char* text : {row.formula, row.direct, row.recalculated}) rows->Text(text);
    rows->EndRow();
  }
  rows->Finish();
  output.Finish();
}

void RunIndex(const IndexOptions& options) {
  if (options.formulas) return WriteIndexFormulas(options.format);
  if (options.file.empty()) throw InputError("FILE is required");
  OutputStream output;
  IndexRows rows(options, output);
  const std::unique_ptr<Standards> standards = OpenStandards(options);
  CurveReader samples = OpenCurves(options.file, options.input, Content::kCurvesOrColors);
  const Sample::Kind kind = samples.Kind();
  if (kind == Sample::kCurve) {
    AddCurves(std::move(samples), standards.get(), rows);
  } else if (standards) {
    samples.Source().FailRow("--standard needs curves, which have wavelengths in their header");
  } else {
    if (kind == Sample::kLab) samples.Source().FailRow("the header names neither wavelengths nor X,Y,Z");
    AddColors(std::move(samples), rows);
  }
  rows.Finish();
  output.Finish();
}

}  // namespace

void AddIndex(Command& tool) {
  const auto options = std::make_shared<IndexOptions>();
  Command command = tool.AddCommand("index", "Whiteness, tint and yellowness, metamerism, contrast ratio");
  command.AddOption("FILE", options->file, "Curves, or columns X,Y,Z (- reads standard input)").ReadsFile();
  Option standard = command
                        .AddOption("--standard", options->standard,
                                   "Curves of the standard, or standards: adds the CIE special metamerism "
                                   "index of every curve between the "
                                   "first illuminant and each other one")
                        .ReadsFile();
  standard.Shows("FILE");
  Option id =
      command.AddOption("--standard-id", options->standardId, "Which row of --standard is the standard");
  id.Shows("ID [the first row]").Needs(standard);
  command.AddFlag("--pairs", options->pairs, "The standard of each curve is the one of the same id")
      .Excludes(id)
      .Needs(standard);
  command.AddFlag("--formulas", options->formulas, "List the indices with their formulas instead");
  AddViewingOptions(command, options->viewing, "D65,C");
  AddCurveInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  AddReportOptions(command, options->report);
  command.SetNotes(
      "An index is direct under the illuminants and observers for which it was published, and recalculated\n"
      "to their white under any other. A table leaves out what does not exist; csv has an empty field for\n"
      "it. --formulas says what stands behind each name. Two rows of one id, one \"Over Black\" and one "
      "\"Over White\", also give their contrast ratio.\n\n"
      "Examples:\n"
      "  vrx index paper.csv                                # under D65 and C, 10 degrees\n"
      "  vrx index paper.csv --illuminants C --observer 2   # as most of them were published\n"
      "  vrx index lot.csv --standard master.csv --illuminants D65,A,T84 --format csv\n");
  command.SetAction([options] {
    RunIndex(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
