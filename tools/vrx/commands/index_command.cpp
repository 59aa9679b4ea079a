// vrx index: whiteness, tint and yellowness of curves or tristimulus values, contrast ratio of drawdowns,
// metamerism against a standard.

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/foundation/string_numbers.h>

#include <vrxio/value_columns.h>
#include "tools/vrx/commands/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/conditions.h"
#include "tools/vrx/curve_input.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/output/terminal.h"

namespace vrx::tool {
namespace {

struct IndexOptions {
  std::string file;
  std::string standard;
  ViewingOptions viewing;
  CurveInputOptions input;
  Format format = Format::kTable;
};

// Writes one index a row.
class IndexRows {
 public:
  IndexRows(const IndexOptions& options, OutputStream& output)
      : illuminants_(options.viewing.Illuminants()),
        observer_(options.viewing.Observer()),
        format_(options.format),
        rows_(MakeRowWriter(options.format, output,
                            {{"id"}, {"illuminant"}, {"observer"}, {"index"}, {"form"}, {"value", "", 3}})) {}

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

  void Finish() { rows_->Finish(); }

 private:
  std::vector<vrxIlluminant> illuminants_;
  int32_t observer_;
  Format format_;
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

std::optional<CReflData> ReadStandard(const IndexOptions& options) {
  if (options.standard.empty()) return std::nullopt;
  CurveReader reader = OpenCurves(options.standard, options.input);
  CurveRow row;
  if (!reader.Next(row)) throw InputError(options.standard + ": there is no row");
  return row.curve;
}

void AddCurves(CurveReader curves, const std::optional<CReflData>& standard, IndexRows& rows) {
  ProgressBar progress(curves.Csv().Size());
  Drawdowns drawdowns(rows);
  CurveRow row;
  CTrisValues xyz;
  while (curves.Next(row)) {
    for (const vrxIlluminant illuminant : rows.Illuminants()) {
      row.curve.Tristimulus(illuminant, rows.Observer(), xyz);
      rows.AddFamily(row.id, illuminant, xyz);
    }
    drawdowns.Take(row);
    if (standard) AddMetamerism(row, *standard, rows);
    progress.Update(curves.Csv().Position());
  }
  WarnAboutFractions(curves);
}

void AddValues(CsvReader& csv, IndexRows& rows) {
  if (!HasColumns(csv.Header(), {"X", "Y", "Z"}))
    csv.FailRow("the header names neither wavelengths nor X,Y,Z");
  ValueRows values(csv, {"X", "Y", "Z"}, 3);
  CTrisValues xyz;
  while (values.Next()) {
    std::ranges::copy(values.Values(), xyz.begin());
    for (const vrxIlluminant illuminant : rows.Illuminants()) rows.AddFamily(values.Id(), illuminant, xyz);
  }
}

void RunIndex(const IndexOptions& options) {
  OutputStream output;
  IndexRows rows(options, output);
  const std::optional<CReflData> standard = ReadStandard(options);
  CsvReader csv(options.file);
  if (HasWavelengths(csv.Header())) {
    AddCurves(OpenCurves(std::move(csv), options.input), standard, rows);
  } else if (standard) {
    csv.FailRow("--standard needs curves, which have wavelengths in their header");
  } else {
    AddValues(csv, rows);
  }
  rows.Finish();
  output.Finish();
}

}  // namespace

void AddIndex(Command& tool) {
  const auto options = std::make_shared<IndexOptions>();
  Command command = tool.AddCommand("index", "Whiteness, tint and yellowness, metamerism, contrast ratio");
  command.AddOption("FILE", options->file, "Curves, or columns X,Y,Z (- reads standard input)").Required();
  command
      .AddOption("--standard", options->standard,
                 "Curves whose first row is the standard: adds the CIE special metamerism index of every "
                 "curve between the first illuminant and each other one")
      .Shows("FILE");
  AddViewingOptions(command, options->viewing, "D65,C");
  AddCurveInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "An index is direct under the illuminants and observers for which it was published, and recalculated\n"
      "to their white under any other. A table leaves out what does not exist; csv has an empty field for\n"
      "it. Two rows of one id, one \"Over Black\" and one \"Over White\", also give their contrast ratio.\n\n"
      "Examples:\n"
      "  vrx index paper.csv                                under D65 and C, 10 degrees\n"
      "  vrx index paper.csv --illuminants C --observer 2   as most of them were published\n"
      "  vrx index lot.csv --standard master.csv --illuminants D65,A,T84 --format csv\n");
  command.SetAction([options] {
    RunIndex(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
