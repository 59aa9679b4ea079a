
#include "tools/vrx/input/curve_input.h"

#include <algorithm>
#include <utility>

#include <vrxio/csv/correction_file.h>
#include <vrxio/files/measurement_files.h>
#include <vrxio/measurement/value_scale.h>
#include <vrxio/text/decimal.h>
#include "tools/vrx/base/command.h"
#include "tools/vrx/base/command_line.h"
#include "tools/vrx/base/text.h"

namespace vrx::tool {

namespace {

void Remark(const std::string& file, const std::string& text) {
  PrintMessage(file + ": " + text);
}

}  // namespace

void AddScaleOptions(Command& owner, CurveInputOptions& options) {
  Command command = owner.Group("Input");
  command.AddFlag("--fraction", options.fraction, "Read reflectances and X,Y,Z as fractions, 0 to 1");
  command.AddFlag("--percent", options.percent, "Read reflectances and X,Y,Z as percent");
}

void AddReadOptions(Command& owner, CurveInputOptions& options) {
  Command command = owner.Group("Input");
  command.AddChoice("--input-format", options.read.form, {"auto", "csv", "cgats", "cxf", "json"},
                    "Format of the files");
  AddScaleOptions(command, options);
  command.AddFlag("--force", options.read.force, "Accept fractions above 2");
  command.AddFlag("--lenient", options.read.lenient,
                  "Skip unknown columns and other deviations, with a warning");
  command.AddOption("--id-column", options.read.idColumn, "Heading of the column that has the ids")
      .Shows("NAME");
  command.AddOption("--ignore-columns", options.ignoredColumns, "Columns to ignore, separated by commas")
      .Shows("LIST");
  command.AddFlag("--latin1", options.read.latin1, "Read the text as Latin-1, not UTF-8");
  command.AddOption("--columns", options.columns, "Columns of a table without a header, such as id,L,a,b")
      .Shows("LIST");
  command
      .AddOption("--wavelengths", options.read.wavelengths, "Wavelengths of a table without a header, in nm")
      .Shows("FIRST-LAST/STEP");
  command.AddChoice("--wavelengths-in", options.read.orientation, {"auto", "columns", "rows"},
                    "Where a table has its wavelengths");
  command
      .AddOption("--profile", options.profile,
                 "Take the options of this profile (vrx job add-profile) that are not given")
      .Shows("NAME");
}

void AddUncorrectedInputOptions(Command& owner, CurveInputOptions& options) {
  Command command = owner.Group("Input");
  AddReadOptions(command, options);
  command
      .AddOption("--bandpass", options.bandpass,
                 "Correct for the bandpass of an instrument that does not do so itself")
      .Shows("stearns");
  command.AddFlag("--verbose", options.verbose, "Report on standard error how the wavelengths are used");
}

void AddCurveInputOptions(Command& owner, CurveInputOptions& options) {
  AddUncorrectedInputOptions(owner, options);
  Command command = owner.Group("Input");
  const Option correction =
      command
          .AddOption("--correction", options.correction,
                     "Correct curves by this file (vrx instruments --factors --format csv)")
          .ReadsFile()
          .Shows("FILE");
  command
      .AddChoice("--corrected", options.corrected, {"all", "trials"},
                 "What the correction is for, if standards have a file of their own")
      .Shows("all|trials [question]")
      .Needs(correction);
}

void AddIntervalOption(Command& owner, CurveInputOptions& options) {
  owner.AddChoice("--interval", options.sums, {"10", "5", "1"},
                  "Sum curves at this interval in nm, by weights of its own");
}

void RequireCurvesToSum(const CurveInputOptions& options, std::initializer_list<const CurveReader*> files) {
  const auto areColors = [](const CurveReader* file) { return file->Kind() != Sample::kCurve; };
  if (options.sums != CurveInputOptions::Sums::kTen && std::ranges::all_of(files, areColors))
    throw InputError((*files.begin())->Source().Name() +
                     ": --interval sums curves, and the file has colours");
}

CurveInputOptions CurveInputOptions::OfStandards() const {
  CurveInputOptions own = *this;
  if (correction.empty()) return own;
  if (corrected == Corrected::kUnsaid) {
    throw InputError(
        "--correction: were the standards measured with the same instrument? --corrected all corrects them, "
        "too, "
        "--corrected trials the trials alone");
  }
  if (corrected == Corrected::kTrials) own.correction.clear();
  return own;
}

ReadOptions CurveInputOptions::Reading() const {
  if (fraction && percent) throw InputError("--fraction and --percent cannot be used together");
  if (!bandpass.empty() && bandpass != "stearns") throw InputError("--bandpass: must be stearns");
  ReadOptions reading = read;
  if (fraction) reading.scale = ReadOptions::Scale::kFraction;
  if (percent) reading.scale = ReadOptions::Scale::kPercent;
  if (!ignoredColumns.empty()) reading.ignoredColumns = SplitList(ignoredColumns, ',');
  if (!columns.empty()) reading.columns = SplitList(columns, ',');
  return reading;
}

CurveReader OpenCurves(const std::string& path, const CurveInputOptions& options, Content content,
                       bool (*isExtra)(std::string_view)) {
  return OpenCurves(OpenInput(path), options, content, isExtra);
}

CurveReader OpenCurves(InputStream input, const CurveInputOptions& options, Content content,
                       bool (*isExtra)(std::string_view)) {
  ReadOptions reading = options.Reading();
  reading.isExtra = isExtra;
  CurveReader curves(OpenMeasurements(std::move(input), reading), content, !options.bandpass.empty());
  if (reading.scale == ReadOptions::Scale::kPercent) curves.SayScale();
  const std::string& name = curves.Source().Name();
  if (options.verbose || reading.lenient) {
    for (const std::string& note : curves.Source().Notes())
      Remark(name, (options.verbose ? "" : "warning: ") + note);
  }
  if (!options.correction.empty() && options.sums != CurveInputOptions::Sums::kTen)
    throw InputError("--interval and --correction cannot be used together: a correction is made for 10 nm");
  curves.SumAt(options.Interval());
  if (!options.correction.empty()) {
    curves.CorrectBy(ReadCorrection(options.correction), options.correction);
    Remark(name, "corrected by " + options.correction);
  }
  if (curves.Kind() != Sample::kCurve) return curves;
  if (options.verbose) Remark(name, curves.SummedGrid().Description());
  if (!curves.GridWarning().empty()) Remark(name, "warning: " + curves.GridWarning());
  return curves;
}

namespace {

// What the conditions of two files contradict each other in; empty for nothing.
std::string ConflictOf(const CurveReader& standards, const CurveReader& trials) {
  MeasuringConditions ofStandards = standards.FirstConditions();
  MeasuringConditions ofTrials = trials.FirstConditions();
  if (standards.HasGeometries() && trials.HasGeometries()) {
    // Samples are paired by what their own geometry says, and by nothing else of their conditions.
    for (const int32_t geometry : {standards.FirstGeometry(), trials.FirstGeometry()}) {
      LeaveToGeometry(geometry, ofStandards);
      LeaveToGeometry(geometry, ofTrials);
    }
  } else if (standards.HasGeometries() || trials.HasGeometries()) {
    // The one file's samples of any geometry meet what the other says of all: it says so by its angles, or not at all.
    TakeGeometry(standards.FirstGeometry(), ofStandards);
    TakeGeometry(trials.FirstGeometry(), ofTrials);
    ofStandards.geometry = ofTrials.geometry = kNoGeometry;
  }
  std::string conflict = ConditionConflict(ofStandards, ofTrials);
  if (conflict.empty()) return conflict;
  return "measured under other conditions than " + standards.Source().Name() + ": " + conflict;
}

}  // namespace

std::vector<InputWarning> ScaleWarnings(const FileValues& a, const FileValues& b) {
  constexpr double kApart = 10;  // what is read of one colour on the two scales is a hundred times apart
  const FileValues& small = a.largest < b.largest ? a : b;
  const FileValues& large = a.largest < b.largest ? b : a;
  const bool areApart = small.largest > 0 && small.largest < kSurelyPercent &&
                        large.largest >= kSurelyPercent && large.largest >= kApart * small.largest;
  if (!areApart) return {};
  std::string text = "no value comes to 2 percent, and those of ";
  text.append(large.name).append(" come to ").append(ShortestText(large.largest));
  text.append(": the files seem to have different scales; if this one has fractions of 1, ")
      .append(kBringToOneScale);
  return {{small.name, std::move(text)}};
}

namespace {

// What two files have against each other.
std::vector<InputWarning> WarningsOfPair(const CurveReader& standards, const CurveReader& trials) {
  std::vector<InputWarning> warnings;
  if (standards.ScaleIsSaid())
    warnings = ScaleWarnings({standards.Source().Name(), standards.Largest()},
                             {trials.Source().Name(), trials.Largest()});
  std::string conflict = ConflictOf(standards, trials);
  if (!conflict.empty()) warnings.push_back({trials.Source().Name(), std::move(conflict)});
  return warnings;
}

}  // namespace

std::vector<InputWarning> WarningsOf(const CurveReader& curves) {
  const std::string& name = curves.Source().Name();
  std::vector<InputWarning> warnings;
  if (!curves.GridWarning().empty()) warnings.push_back({name, curves.GridWarning()});
  for (const std::string& warning : curves.SampleWarnings()) warnings.push_back({name, warning});
  return warnings;
}

std::vector<InputWarning> WarningsOf(const CurveReader& standards, const CurveReader& trials) {
  std::vector<InputWarning> warnings = WarningsOf(standards);
  for (InputWarning& warning : WarningsOf(trials)) warnings.push_back(std::move(warning));
  for (InputWarning& warning : WarningsOfPair(standards, trials)) warnings.push_back(std::move(warning));
  return warnings;
}

std::string MeasuringText(const CurveReader& curves) {
  const MeasuringConditions& conditions = curves.FirstConditions();
  std::string text;
  const auto add = [&text](const std::string& part) {
    if (!part.empty()) text.append(text.empty() ? "" : ", ").append(part);
  };
  add(conditions.instrument);
  if (!curves.HasGeometries()) {
    add(GeometryName(conditions.geometry));
    const bool isSaid = GeometryName(conditions.geometry).starts_with("SC");
    if (conditions.specular != Specular::kUnknown && !isSaid)
      add(conditions.specular == Specular::kIncluded ? "specular included" : "specular excluded");
    if (conditions.mCondition >= 0) add("M" + std::to_string(conditions.mCondition));
  }
  if (!conditions.filter.empty()) add("filter " + conditions.filter);
  if (!conditions.aperture.empty()) add("aperture " + conditions.aperture);
  if (!conditions.backing.empty()) add(conditions.backing + " backing");
  if (curves.Kind() != Sample::kCurve) add(LightText(conditions));
  return text;
}

void WarnAboutInput(const CurveReader& curves) {
  for (const std::string& warning : curves.SampleWarnings())
    Remark(curves.Source().Name(), "warning: " + warning);
}

void WarnAboutInput(const CurveReader& standards, const CurveReader& trials) {
  WarnAboutInput(standards);
  WarnAboutInput(trials);
  for (const InputWarning& warning : WarningsOfPair(standards, trials))
    Remark(warning.file, "warning: " + warning.text);
}

}  // namespace vrx::tool
