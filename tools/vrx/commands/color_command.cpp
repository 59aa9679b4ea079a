// vrx color: the coordinates of curves or colours in every space.

#include <memory>
#include <string>
#include <utility>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/color_spaces.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/input/readings.h"
#include "tools/vrx/input/sample_color.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/report/result_report.h"

namespace vrx::tool {
namespace {

struct ColorOptions {
  std::string file;
  ViewingOptions viewing;
  bool average = false;
  CurveInputOptions input;
  Format format = Format::kTable;
  ReportOptions report;
};

// Writes colours under every illuminant of a run. A colour is given by its tristimulus values, from which
// `lab` is computed, or by both.
class ColorRows {
 public:
  ColorRows(const ColorOptions& options, bool hasGeometries, OutputStream& output)
      : hasGeometries_(hasGeometries),
        illuminants_(options.viewing.Illuminants()),
        observer_(options.viewing.Observer()),
        interval_(options.input.Interval()),
        report_(options.report, ReportText::kCoordinates),
        rows_(report_.Rows(options.format, output, Columns(hasGeometries, interval_))),
        planes_(illuminants_.size()) {
    report_.AddFile(ReportText::kInputFile, options.file);
    report_.AddViewing(illuminants_, observer_);
    report_.AddInterval(interval_);
  }

  /// Names the file that the curves that follow come from.
  void SetMeasured(const CurveReader& curves) { report_.SetMeasured(curves); }
  /// Says what is odd about them, once they were read.
  void EndInput(const CurveReader& curves) {
    WarnAboutInput(curves);
    report_.AddInput(curves);
  }

  void AddCurve(const CurveRow& sample) {
    report_.AddCurve(sample.curve);
    for (const vrxIlluminant illuminant : illuminants_) {
      xyz_.SetValues(XyzOf(sample, illuminant, observer_));
      XyzToLab(illuminant, observer_, xyz_, lab_);
      AddRow(sample, illuminant);
    }
  }

  void AddXyz(const CurveRow& sample) {
    std::ranges::copy(sample.color, xyz_.begin());
    for (const vrxIlluminant illuminant : illuminants_) {
      XyzToLab(illuminant, observer_, xyz_, lab_);
      AddRow(sample, illuminant);
    }
  }

  void AddLab(const CurveRow& sample) {
    std::ranges::copy(sample.color, lab_.begin());
    ChromaHue(lab_);
    for (const vrxIlluminant illuminant : illuminants_) {
      LabToXyz(illuminant, observer_, lab_, xyz_);
      AddRow(sample, illuminant);
    }
  }

  void Finish() {
    rows_->Finish();
    for (std::size_t i = 0; i < planes_.size(); ++i) {
      planes_[i].title = ShownLight(illuminants_[i], observer_);
      planes_[i].plane.xHeading = u"a*";
      planes_[i].plane.yHeading = u"b*";
      planes_[i].plane.areJudged = false;
      report_.AddPlane(planes_[i]);
    }
    report_.Save();
  }

 private:
  static std::vector<Column> Columns(bool hasGeometries, int32_t interval) {
    std::vector<Column> columns{{"id"}};
    if (hasGeometries) columns.push_back({"geometry"});
    columns.push_back({"illuminant"});
    columns.push_back({.name = "observer", .room = Room::kSpare});
    if (interval != kWavelengthStep) columns.push_back({"interval"});
    for (const char* name : {"X", "Y", "Z"}) columns.push_back({name});
    for (const char* name : {"x", "y"}) columns.push_back({name, "", 4});
    for (const char* name : {"L", "a", "b"}) columns.push_back({name});
    for (const char* name : {"C", "h", "Lu", "u", "v", "Cuv", "huv", "LH", "aH", "bH"}) {
      columns.push_back({.name = name, .room = Room::kSpare});
    }
    return columns;
  }

  void AddRow(const CurveRow& sample, vrxIlluminant illuminant) {
    double x, y;
    Chromaticity(xyz_, x, y);
    XyzToLuv(illuminant, observer_, xyz_, luv_);
    XyzToHunter(illuminant, observer_, xyz_, hunter_);
    rows_->Text(sample.id);
    if (hasGeometries_) rows_->Text(GeometryName(sample.geometry));
    rows_->Text(ShownIlluminant(illuminant));
    rows_->Integer(DegreesOf(observer_));
    if (interval_ != kWavelengthStep) rows_->Integer(interval_);
    for (const double value : xyz_) rows_->Number(value);
    rows_->Number(x);
    rows_->Number(y);
    for (const double value : lab_) rows_->Number(value);
    for (const double value : luv_) rows_->Number(value);
    for (std::ptrdiff_t i = 0; i < 3; ++i) rows_->Number(hunter_[i]);
    rows_->EndRow();
    if (report_.IsWanted()) AddToPictures(sample.id, illuminant);
  }

  // Rows come illuminant by illuminant.
  void AddToPictures(std::string_view id, vrxIlluminant illuminant) {
    constexpr std::size_t kMostSwatches = 500;
    const std::size_t i = count_ % planes_.size(), sample = count_ / planes_.size();
    if (i == 0 && sample < kMostSwatches) report_.AddColour(id, Shown(illuminant, observer_, xyz_));
    planes_[i].plane.trials.push_back({lab_[CLabValues::kA], lab_[CLabValues::kB], kUnset, kPass, {}});
    ++count_;
  }

  bool hasGeometries_;
  std::vector<vrxIlluminant> illuminants_;
  int32_t observer_;
  int32_t interval_;  // at which curves are summed, in nm
  ResultReport report_;
  std::unique_ptr<RowWriter> rows_;
  std::vector<PlaneChart> planes_;  // by illuminant
  std::size_t count_ = 0;           // of rows
  CTrisValues xyz_;
  CLabValues lab_, luv_, hunter_;
};

void AddSample(const CurveRow& row, ColorRows& rows) {
  row.kind == Sample::kCurve ? rows.AddCurve(row)
  : row.kind == Sample::kXyz ? rows.AddXyz(row)
                             : rows.AddLab(row);
}

void AddMeans(CurveReader samples, ColorRows& rows) {
  rows.SetMeasured(samples);
  for (const Readings& readings : ReadReadings(samples, 0)) {
    AddSample(readings.Mean(), rows);
  }
  rows.EndInput(samples);
}

void AddSamples(CurveReader curves, ColorRows& rows) {
  rows.SetMeasured(curves);
  ProgressBar progress(curves.Source().Size());
  CurveRow row;
  while (curves.Next(row)) {
    AddSample(row, rows);
    progress.Update(curves.Source().Position());
  }
  rows.EndInput(curves);
}

void RunColor(ColorOptions& options) {
  CurveReader samples = OpenCurves(options.file, options.input, Content::kCurvesOrColors);
  RequireCurvesToSum(options.input, {&samples});
  options.viewing.Follow({&samples});
  OutputStream output;
  ColorRows rows(options, samples.HasGeometries(), output);
  options.average ? AddMeans(std::move(samples), rows) : AddSamples(std::move(samples), rows);
  rows.Finish();
  output.Finish();
}

}  // namespace

void AddColor(Command& tool) {
  const auto options = std::make_shared<ColorOptions>();
  Command command =
      tool.AddCommand("color", "Compute coordinates of curves or colours in every colour space");
  command.AddOption("FILE", options->file, "Curves, or columns X,Y,Z or L,a,b (- for standard input)")
      .ReadsFile()
      .Required();
  AddViewingOptions(command, options->viewing, UsualIlluminants());
  command.AddFlag("--average", options->average, "Average the rows of each id");
  AddCurveInputOptions(command, options->input);
  AddIntervalOption(command, options->input);
  AddFormatOption(command, options->format);
  AddReportOptions(command, options->report);
  command.SetNotes(
      "Columns: X, Y, Z; chromaticity x, y; CIE L*a*b* as L, a, b, C, h; CIE L*u*v* as Lu, u, v, Cuv, huv;\n"
      "Hunter Lab as LH, aH, bH. Hues are in degrees. Curves finer than 10 nm are taken at every 10 nm; "
      "with\n"
      "--interval they are summed at 5 or 1 nm, which a column interval says.\n\n"
      "Examples:\n"
      "  vrx color batch.csv                                      # under D65, A and CWF, 10 degrees\n"
      "  vrx color batch.csv --illuminants D50 --observer 2 --format csv\n"
      "  vrx color master.csv --interval 5                        # measured at 5 nm or finer\n"
      "  printf 'L,a,b\\n50,20,-30\\n' | vrx color - --illuminants D65\n");
  command.SetAction([options] {
    RunColor(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
