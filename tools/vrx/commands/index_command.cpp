// vrx index: whiteness, tint and yellowness of curves or tristimulus values, other single figures of a colour, contrast ratio
// of drawdowns, metamerism against a standard.

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/ganz_griesser.h>
#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/colorimetry/single_figures.h>
#include <vrxmath/foundation/string_numbers.h>

#include <vrxio/csv/whiteness_file.h>

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
  std::string indices;
  std::string ganzGriesser;  // file of parameters
  bool pairs = false;
  bool formulas = false;
  bool wide = false;
  ViewingOptions viewing;
  CurveInputOptions input;
  Format format = Format::kTable;
  ReportOptions report;
};

constexpr std::string_view kInconstancy = "inconstancy";

// Which of the indices and figures were asked for.
class FigureSelection {
 public:
  /// Names from the tables, and "wi", "ti", "yi" for a family; an empty list is the whiteness family.
  explicit FigureSelection(const std::string& list) : isDefault_(list.empty()) {
    std::istringstream names(list);
    for (std::string name; std::getline(names, name, ',');) {
      if (!IsKnown(name)) throw InputError("--indices: unknown index \"" + name + "\"; see --formulas");
      names_.push_back(name);
    }
  }
  bool Has(std::string_view name) const {
    const auto covers = [name](const std::string& given) {
      return given == name || (IsFamily(given) && name.starts_with(given + "-"));
    };
    return std::ranges::any_of(names_, covers);
  }
  bool Has(const ColorIndex& index) const { return isDefault_ || Has(index.name); }

 private:
  static bool IsFamily(std::string_view name) { return name == "wi" || name == "ti" || name == "yi"; }
  static bool IsKnown(std::string_view name) {
    return name == kInconstancy || IsFamily(name) ||
           std::ranges::find(ColorIndices(), name, &ColorIndex::name) != ColorIndices().end() ||
           std::ranges::find(ColorFigures(), name, &ColorFigure::name) != ColorFigures().end();
  }

  bool isDefault_;
  std::vector<std::string> names_;
};

// The columns of the wide form: a sample a row, each index under each illuminant.
std::vector<Column> WideColumns(const FigureSelection& selection,
                                const std::vector<vrxIlluminant>& illuminants, bool hasGanzGriesser) {
  std::vector<Column> columns{{"id"}, {"observer"}};
  for (const vrxIlluminant illuminant : illuminants) {
    const std::string code = ShownIlluminant(illuminant);
    for (const ColorIndex& index : ColorIndices()) {
      if (selection.Has(index)) columns.push_back({std::string(index.name) + " " + code, "", 3});
    }
    for (const ColorFigure& figure : ColorFigures()) {
      if (selection.Has(figure.name))
        columns.push_back({std::string(figure.name) + " " + code, "", figure.decimals});
    }
    const bool isTest = illuminant != illuminants.front();
    if (isTest && selection.Has(kInconstancy))
      columns.push_back({std::string(kInconstancy) + " " + code, "", 3});
    if (hasGanzGriesser && illuminant == vrxIllumD65) {
      columns.push_back({"wi-gg " + code, "", 3});
      columns.push_back({"ti-gg " + code, "", 3});
    }
    columns.push_back({"cie limits " + code});
  }
  return columns;
}

std::vector<Column> LongColumns() {
  return {{"id"}, {"illuminant"}, {"observer"}, {"index"}, {"form"}, {"value", "", 3}, {"note"}};
}

// A sample as rows name it.
struct SampleName {
  std::string_view id;
  int32_t geometry = kNoGeometry;
};

// The columns with one for the geometry behind the id, where the file has any.
std::vector<Column> WithGeometry(bool hasGeometries, std::vector<Column> columns) {
  if (hasGeometries) columns.insert(columns.begin() + 1, Column{"geometry"});
  return columns;
}

// Writes one index a row, or one sample.
class IndexRows {
 public:
  IndexRows(const IndexOptions& options, bool hasGeometries, OutputStream& output)
      : hasGeometries_(hasGeometries),
        selection_(options.indices),
        illuminants_(options.viewing.Illuminants()),
        observer_(options.viewing.Observer()),
        format_(options.format),
        wide_(options.wide),
        ganzGriesser_(ParametersOf(options)),
        report_(options.report, ReportText::kIndices),
        rows_(report_.Rows(options.format, output,
                           WithGeometry(hasGeometries, options.wide ? WideColumns(selection_, illuminants_,
                                                                                  ganzGriesser_.has_value())
                                                                    : LongColumns()))) {
    report_.AddFile(ReportText::kInputFile, options.file);
    report_.AddFile(ReportText::kStandardsFile, options.standard);
    if (!options.ganzGriesser.empty()) report_.AddFile(ReportText::kInputFile, options.ganzGriesser);
    report_.AddViewing(illuminants_, observer_);
  }

  ResultReport& Report() { return report_; }

  const std::vector<vrxIlluminant>& Illuminants() const { return illuminants_; }
  int32_t Observer() const { return observer_; }
  bool NeedsCurves() const { return selection_.Has(kInconstancy); }

  /// A sample that has a curve.
  void AddSample(const SampleName& sample, const CReflData& curve) {
    StartSample(sample);
    CTrisValues xyz;
    for (const vrxIlluminant illuminant : illuminants_) {
      curve.Tristimulus(illuminant, observer_, xyz);
      AddColor(sample, illuminant, xyz);
      if (illuminant != illuminants_.front()) AddInconstancy(sample, illuminant, curve);
      AddGanzGriesser(sample, illuminant, xyz);
      EndIlluminant(illuminant, xyz);
    }
    EndSample();
  }
  /// A sample of which the colour alone is known.
  void AddSample(const SampleName& sample, const CTrisValues& xyz) {
    StartSample(sample);
    for (const vrxIlluminant illuminant : illuminants_) {
      AddColor(sample, illuminant, xyz);
      AddGanzGriesser(sample, illuminant, xyz);
      EndIlluminant(illuminant, xyz);
    }
    EndSample();
  }

  /// An index of a pair, which the wide form leaves out. A table leaves out what does not exist under the illuminant.
  void Add(const SampleName& sample, vrxIlluminant illuminant, const std::string& label, IndexForm form,
           double value, std::string_view note = "") {
    if (wide_ || (format_ == Format::kTable && IsUnset(value))) return;
    PutName(sample);
    rows_->Text(ShownIlluminant(illuminant));
    rows_->Integer(DegreesOf(observer_));
    rows_->Text(label);
    rows_->Text(form == IndexForm::kDirect ? "direct" : "recalculated");
    rows_->Number(value);
    rows_->Text(note);
    rows_->EndRow();
  }

  void Finish() {
    rows_->Finish();
    report_.Save();
  }

 private:
  void AddColor(const SampleName& sample, vrxIlluminant illuminant, const CTrisValues& xyz) {
    for (const ColorIndex& index : ColorIndices()) {
      if (selection_.Has(index)) AddIndex(sample, illuminant, index, xyz);
    }
    for (const ColorFigure& figure : ColorFigures()) {
      if (!selection_.Has(figure.name)) continue;
      const double value = figure.function(illuminant, observer_, xyz);
      wide_ ? rows_->Number(value)
            : Add(sample, illuminant, std::string(figure.label), IndexForm::kDirect, value);
    }
  }

  // The parameters that were asked for, which are for D65 and 10 degrees.
  std::optional<GanzGriesser> ParametersOf(const IndexOptions& options) const {
    if (options.ganzGriesser.empty()) return std::nullopt;
    const bool isThere = std::ranges::find(illuminants_, vrxIllumD65) != illuminants_.end();
    if (!isThere || observer_ != kObserver10)
      throw InputError("--ganz-griesser: the parameters are for D65 and 10 degrees");
    return ReadGanzGriesser(options.ganzGriesser);
  }

  void AddGanzGriesser(const SampleName& sample, vrxIlluminant illuminant, const CTrisValues& xyz) {
    if (!ganzGriesser_ || illuminant != vrxIllumD65) return;
    const double whiteness = ganzGriesser_->Whiteness(xyz.Values()), tint = ganzGriesser_->Tint(xyz.Values());
    if (wide_) {
      rows_->Number(whiteness);
      rows_->Number(tint);
      return;
    }
    Add(sample, illuminant, "Whiteness: Ganz-Griesser", IndexForm::kDirect, whiteness);
    Add(sample, illuminant, "Tint: Ganz-Griesser", IndexForm::kDirect, tint);
  }

  // Both forms of an index; in the wide form the direct one where the index is defined for the illuminant.
  void AddIndex(const SampleName& sample, vrxIlluminant illuminant, const ColorIndex& index,
                const CTrisValues& xyz) {
    if (wide_) {
      IndexTerms terms;
      const bool direct = index.recalculated == nullptr || index.directTerms(illuminant, observer_, terms);
      return rows_->Number((direct ? index.direct : index.recalculated)(illuminant, observer_, xyz));
    }
    const bool isCie = index.name == "wi-cie" || index.name == "ti-cie";
    const bool outside = isCie && !IsUnset(xyz) && !IsWithinCieLimits(illuminant, observer_, xyz);
    for (const IndexForm form : {IndexForm::kDirect, IndexForm::kRecalculated}) {
      const IndexFunction function = index.Function(form);
      if (function == nullptr) continue;
      Add(sample, illuminant, IndexLabel(index, form).ToUtf8(), form, function(illuminant, observer_, xyz),
          outside ? "outside the limits of the CIE equations" : "");
    }
  }

  void AddInconstancy(const SampleName& sample, vrxIlluminant test, const CReflData& curve) {
    if (!selection_.Has(kInconstancy)) return;
    const vrxIlluminant reference = illuminants_.front();
    const double value =
        InconstancyIndex(reference, test, observer_, curve, DefaultSettings(vrxSystemCie2000));
    wide_ ? rows_->Number(value)
          : Add(sample, test, "Colour inconstancy (CAT16, CIEDE2000): " + ShownIlluminant(reference),
                IndexForm::kDirect, value);
  }

  void PutName(const SampleName& sample) {
    rows_->Text(sample.id);
    if (hasGeometries_) rows_->Text(GeometryName(sample.geometry));
  }

  void StartSample(const SampleName& sample) {
    if (!wide_) return;
    PutName(sample);
    rows_->Integer(DegreesOf(observer_));
  }
  void EndIlluminant(vrxIlluminant illuminant, const CTrisValues& xyz) {
    if (wide_)
      rows_->Text(IsUnset(xyz) ? "" : IsWithinCieLimits(illuminant, observer_, xyz) ? "within" : "outside");
  }
  void EndSample() {
    if (wide_) rows_->EndRow();
  }

  bool hasGeometries_;
  FigureSelection selection_;
  std::vector<vrxIlluminant> illuminants_;
  int32_t observer_;
  Format format_;
  bool wide_;
  std::optional<GanzGriesser> ganzGriesser_;
  ResultReport report_;
  std::unique_ptr<RowWriter> rows_;
};

// The geometries of a drawdown, as a background and as a transmission measurement.
struct DrawdownGeometries {
  int32_t overWhite, overBlack;
};
constexpr DrawdownGeometries kDrawdowns[] = {{29, 30}, {34, 35}};

// Puts the two measurements of a drawdown together, wherever they are in the file.
class Drawdowns {
 public:
  explicit Drawdowns(IndexRows& rows) : rows_(rows) {}

  void Take(const CurveReader& curves, const CurveRow& row) {
    for (std::size_t kind = 0; kind < std::size(kDrawdowns); ++kind) {
      const bool isOverWhite = row.geometry == kDrawdowns[kind].overWhite;
      if (!isOverWhite && row.geometry != kDrawdowns[kind].overBlack) continue;
      Drawdown& drawdown = drawdowns_[{kind, std::string(row.id)}];
      (isOverWhite ? drawdown.overWhite : drawdown.overBlack) += 1;
      if (drawdown.overWhite == 0 || drawdown.overBlack == 0) {
        drawdown.first = std::make_unique<CReflData>(row.curve);
        continue;
      }
      RequireOneReadingEach(curves, row.id, drawdown);
      isOverWhite ? AddRatio(row.id, *drawdown.first, row.curve)
                  : AddRatio(row.id, row.curve, *drawdown.first);
      drawdown.first.reset();
    }
  }

 private:
  struct Drawdown {
    std::size_t overWhite = 0, overBlack = 0;  // readings
    std::unique_ptr<CReflData> first;          // until the other one is there
  };

  // Of several readings nobody said which two belong together.
  static void RequireOneReadingEach(const CurveReader& curves, std::string_view id,
                                    const Drawdown& drawdown) {
    if (drawdown.overWhite + drawdown.overBlack == 2) return;
    curves.Source().FailRow("\"" + std::string(id) +
                            "\" has several readings over white or over black, of which contrast ratios "
                            "differ; vrx average makes one of each");
  }

  void AddRatio(std::string_view id, const CReflData& black, const CReflData& white) {
    const std::string label = CString::Load(kStringContrastRatio).ToUtf8();
    CTrisValues overBlack, overWhite;
    for (const vrxIlluminant illuminant : rows_.Illuminants()) {
      black.Tristimulus(illuminant, rows_.Observer(), overBlack);
      white.Tristimulus(illuminant, rows_.Observer(), overWhite);
      rows_.Add({id}, illuminant, label, IndexForm::kDirect, ContrastRatio(overBlack, overWhite));
    }
  }

  IndexRows& rows_;
  std::map<std::pair<std::size_t, std::string>, Drawdown> drawdowns_;  // by place in kDrawdowns and id
};

// Metamerism against the standard between the first illuminant and each other one.
void AddMetamerism(const CurveRow& row, const CReflData& standard, IndexRows& rows) {
  const vrxIlluminant reference = rows.Illuminants().front();
  const std::string label =
      CString::Load(kStringMetamerismIndex).ToUtf8() + ": " + ShownIlluminant(reference);
  for (std::size_t i = 1; i < rows.Illuminants().size(); ++i) {
    const vrxIlluminant test = rows.Illuminants()[i];
    rows.Add({row.id, row.geometry}, test, label, IndexForm::kDirect,
             MetamerismIndex(reference, test, rows.Observer(), standard, row.curve));
  }
}

// The curves that metamerism is reckoned against; null without --standard.
std::unique_ptr<Standards> OpenStandards(const IndexOptions& options, CurveReader& samples) {
  if (options.standard.empty()) return nullptr;
  CurveReader reader = OpenCurves(options.standard, options.input.OfStandards());
  return StandardsForTrials(std::move(reader), options.standardId, options.pairs, samples);
}

void AddCurves(CurveReader curves, Standards* standards, IndexRows& rows) {
  ProgressBar progress(curves.Source().Size());
  Drawdowns drawdowns(rows);
  CurveRow row;
  rows.Report().SetMeasured(curves);
  while (curves.Next(row)) {
    rows.Report().AddCurve(row.curve);
    rows.AddSample({row.id, row.geometry}, row.curve);
    drawdowns.Take(curves, row);
    if (standards != nullptr) AddMetamerism(row, standards->Of(row).sample.curve, rows);
    progress.Update(curves.Source().Position());
  }
  if (standards == nullptr) {
    WarnAboutInput(curves);
    return rows.Report().AddInput(curves);
  }
  standards->EndTrials();
  WarnAboutInput(standards->Reader(), curves);
  rows.Report().AddInput(standards->Reader(), curves);
}

void AddColors(CurveReader colors, IndexRows& rows) {
  CurveRow row;
  CTrisValues xyz;
  if (rows.NeedsCurves()) colors.Source().FailRow("inconstancy needs curves");
  while (colors.Next(row)) {
    std::ranges::copy(row.color, xyz.begin());
    rows.AddSample({row.id, row.geometry}, xyz);
  }
  WarnAboutInput(colors);
  rows.Report().AddInput(colors);
}

void WriteIndexFormulas(const Format& format) {
  OutputStream output;
  const auto rows = MakeRowWriter(
      format, output, {{"index"}, {"name"}, {"formula"}, {"direct", "direct for"}, {"recalculated"}});
  for (const ColorIndex& index : ColorIndices()) {
    const auto& [formula, direct, recalculated] = index.text;
    rows->Text(IndexLabel(index, IndexForm::kDirect).ToUtf8());
    for (const std::string_view text : {index.name, formula, direct, recalculated}) rows->Text(text);
    rows->EndRow();
  }
  for (const ColorFigure& figure : ColorFigures()) {
    for (const std::string_view text : {figure.label, figure.name, figure.text}) rows->Text(text);
    rows->Text("any");
    rows->Text("");
    rows->EndRow();
  }
  rows->Finish();
  output.Finish();
}

void RunIndex(IndexOptions& options) {
  if (options.formulas) return WriteIndexFormulas(options.format);
  if (options.file.empty()) throw InputError("FILE is required");
  CurveReader samples = OpenCurves(options.file, options.input, Content::kCurvesOrColors);
  const std::unique_ptr<Standards> standards = OpenStandards(options, samples);
  const Sample::Kind kind = samples.Kind();
  if (kind != Sample::kLab) options.viewing.Follow({&samples});
  OutputStream output;
  IndexRows rows(options, samples.HasGeometries(), output);
  if (rows.NeedsCurves() && rows.Illuminants().size() == 1) {
    throw InputError(
        "--indices: inconstancy is the change from the first illuminant to another; --illuminants names one");
  }
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
  Command command =
      tool.AddCommand("index", "Compute whiteness, tint, yellowness, metamerism and contrast ratio");
  command.AddOption("FILE", options->file, "Curves, or columns X,Y,Z (- for standard input)").ReadsFile();
  Option standard = command
                        .AddOption("--standard", options->standard,
                                   "Curves of the standard or standards; adds the CIE special metamerism "
                                   "index of each curve between the first illuminant and every other one")
                        .ReadsFile();
  standard.Shows("FILE");
  Option id = command.AddOption("--standard-id", options->standardId,
                                "Id of the row of --standard to use as the standard");
  id.Shows("ID [first row]").Needs(standard);
  command.AddFlag("--pairs", options->pairs, "Compare each curve with the standard of the same id")
      .Excludes(id)
      .Needs(standard);
  command
      .AddOption(
          "--indices", options->indices,
          "Indices to compute: names that --formulas lists; wi, ti or yi for a whole family; inconstancy")
      .Shows("LIST [wi,ti,yi]");
  command
      .AddOption(
          "--ganz-griesser", options->ganzGriesser,
          "Add Ganz-Griesser whiteness and tint by the parameters of this instrument (vrx fit-whiteness "
          "--parameters --format csv); under D65 and 10 degrees")
      .ReadsFile()
      .Shows("FILE");
  command.AddFlag("--wide", options->wide, "Write one row per sample and one column per index")
      .Excludes(standard);
  command.AddFlag("--formulas", options->formulas, "List the indices and their formulas instead");
  AddViewingOptions(command, options->viewing, "D65,C");
  AddCurveInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  AddReportOptions(command, options->report);
  command.SetNotes(
      "An index is computed directly under the illuminants and observers for which it was published, and\n"
      "recalculated to their white under any others. Tables leave out what does not exist; csv has an empty\n"
      "field for it. --formulas shows the formula behind each name. Two rows of one id, one \"Over Black\" "
      "and\n"
      "one \"Over White\", also give a contrast ratio.\n\n"
      "Examples:\n"
      "  vrx index paper.csv                                # under D65 and C, 10 degrees\n"
      "  vrx index paper.csv --illuminants C --observer 2   # as most of them were published\n"
      "  vrx index lot.csv --standard master.csv --pairs --illuminants D65,A,T84 --format csv\n"
      "  vrx index paper.csv --indices wi-cie,ti-cie,dominant --wide --illuminants D65\n");
  command.SetAction([options] {
    RunIndex(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
