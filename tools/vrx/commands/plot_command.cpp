// vrx plot: one of the pictures of a report as a file of its own.

#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/judging/comparison.h"
#include "tools/vrx/judging/judging_options.h"
#include "tools/vrx/output/file_output.h"
#include "tools/vrx/report/charts.h"
#include "tools/vrx/report/judged_trials.h"
#include "tools/vrx/report/picture_file.h"

namespace vrx::tool {
namespace {

enum class Kind { kCurves, kPlane, kTrend, kHistogram, kIlluminants, kAngles };

struct PlotOptions {
  Kind kind = Kind::kCurves;
  ComparisonOptions comparison;
  JudgingOptions judging;
  std::string trialId;
  std::string geometry;
  std::string output;
  double scale = 1;
};

JudgedTrials JudgeTrials(const PlotOptions& options, Comparison& comparison, const JudgeSettings& settings) {
  const int32_t geometry = ParseGeometry(options.geometry);
  if (geometry == kUnknownGeometry) {
    throw InputError("--geometry: " + io::GeometryRefusal(options.geometry));
  }
  JudgedTrials judged(settings);
  if (comparison.Trials().Kind() == Sample::kCurve) {
    judged.SetMeasured(comparison.Trials().Grid().FirstWavelength(),
                       comparison.Trials().Grid().LastWavelength());
  }
  Judge judge(settings);
  TrialJudgement judgement;
  bool areAnglesKnown = true;
  comparison.ForEachTrial([&](const CurveRow& trial, const Standard& standard) {
    if (!options.trialId.empty() && trial.id != options.trialId) return;
    if (geometry != kNoGeometry && trial.geometry != geometry) return;
    judge.Evaluate(standard, trial);
    judge.Take(0, judgement);
    judged.Add(trial, judgement, standard, judge, 0);
    areAnglesKnown = areAnglesKnown && SystemOptions::HasAngle(standard.geometry);
  });
  comparison.WarnAboutInput();
  options.judging.system.WarnAboutAngle(areAnglesKnown);
  if (judged.Trials().empty()) throw InputError(options.comparison.trials + ": there is no such trial");
  return judged;
}

// The standard of a picture that shows one.
const JudgedView& OneView(const JudgedTrials& judged) {
  if (judged.Views().size() > 1) {
    throw InputError(
        "the trials belong to several standards or geometries; --standard-id, --trial-id and --geometry "
        "choose");
  }
  return judged.Views()[0];
}

template <class T>
std::vector<std::size_t> PlacesOf(const std::vector<T>& list) {
  std::vector<std::size_t> places(list.size());
  std::iota(places.begin(), places.end(), std::size_t{0});
  return places;
}

Chart ChartOf(Kind kind, const JudgedTrials& judged) {
  switch (kind) {
    case Kind::kCurves:
      if (!OneView(judged).hasCurve) throw InputError("colours have no curves to plot");
      return judged.Curves(OneView(judged));
    case Kind::kPlane:
      return judged.Plane(OneView(judged), 0);
    case Kind::kTrend:
      return judged.Trend(PlacesOf(judged.Trials()));
    case Kind::kHistogram:
      return judged.Histogram(PlacesOf(judged.Trials()), 0);
    case Kind::kIlluminants:
      return judged.OverIlluminants(OneView(judged));
    case Kind::kAngles:
      break;
  }
  const std::vector<std::size_t> views = PlacesOf(judged.Views());
  for (const JudgedView& view : judged.Views()) {
    if (view.standard != judged.Views()[0].standard) OneView(judged);
  }
  if (!judged.AreAngles(views)) throw InputError("the trials have no two aspecular angles");
  return judged.OverAngles(views, 0);
}

std::string ShortTitleOf(const CDifferenceSettings& difference) {
  return DifferenceSystemName(difference.system, NameLength::kShort, difference.parameters).ToUtf8();
}

// The title above the picture: of which standard it is, and by which difference.
std::string ChartTitle(const JudgedTrials& judged, const Chart& chart) {
  std::string title = chart.title + ", " + ShortTitleOf(judged.Settings().difference);
  if (judged.Views().size() == 1) title.insert(0, JudgedTrials::NameOf(judged.Views()[0]) + ", ");
  return title;
}

// A text in lines of at most `letters`, broken between words where it can be.
std::vector<CString> Lines(const std::string& text, std::size_t letters) {
  std::vector<CString> lines;
  CString rest = ForPicture(text);
  while (static_cast<std::size_t>(rest.GetLength()) > letters) {
    const WideView view = rest.View();
    const std::size_t blank = view.substr(0, letters + 1).rfind(u' ');
    const std::size_t end = blank == WideView::npos || blank == 0 ? letters : blank;
    lines.emplace_back(view.substr(0, end));
    rest = CString(view.substr(end == blank ? end + 1 : end));
  }
  lines.push_back(rest);
  return lines;
}

// The chart below its title, which has as many lines as it needs.
pictures::Picture Titled(const Chart& chart, const std::string& title, int32_t& height) {
  constexpr int32_t kLine = 18, kLetter = 8, kSize = 13;
  pictures::Picture picture;
  height = 10;
  for (const CString& line : Lines(title, static_cast<std::size_t>((chart.width - 20) / kLetter))) {
    picture.Text({10, static_cast<double>(height), chart.width - 20.0, kLine - 3.0}, line,
                 pictures::Role::kText, pictures::Align::kStart, kSize);
    height += kLine;
  }
  picture.Append(chart.picture, 0, height);
  height += chart.height;
  return picture;
}

int RunPlot(PlotOptions& options) {
  PictureFormatOf(options.output);  // refuses other names before the work
  if (!(options.scale >= 0.25 && options.scale <= 20))
    throw InputError("--scale: must be a factor from 0.25 to 20");
  Comparison comparison(options.comparison, options.judging.viewing);
  const JudgeSettings settings = SettingsOf(options.judging);
  const JudgedTrials judged = JudgeTrials(options, comparison, settings);
  if (options.trialId.empty() && options.geometry.empty()) WarnAboutLimits(options.judging, settings);
  const Chart chart = ChartOf(options.kind, judged);
  int32_t height = 0;
  const pictures::Picture picture = Titled(chart, ChartTitle(judged, chart), height);
  SavePicture(picture, {chart.width, height, pictures::Role::kPaper, options.scale}, options.output);
  return kExitPass;
}

}  // namespace

void AddPlot(Command& tool) {
  const auto options = std::make_shared<PlotOptions>();
  Command command = tool.AddCommand("plot", "Draw one of the charts of a report as SVG or PNG");
  command
      .AddChoice("KIND", options->kind, {"curves", "plane", "trend", "histogram", "illuminants", "angles"},
                 "Chart to draw, see below")
      .Required();
  AddComparisonOptions(command, options->comparison, Content::kCurvesOrColors);
  command.AddOption("--output", options->output, "File to write; its name decides between PNG and SVG")
      .WritesFile()
      .Required()
      .Shows("FILE.png|FILE.svg");
  command.AddOption("--scale", options->scale, "Enlarge a PNG by this factor").Shows("FACTOR [1]");
  command.AddOption("--trial-id", options->trialId, "Draw only the trials with this id").Shows("ID [all]");
  command.AddOption("--geometry", options->geometry, "Draw only the trials with this geometry")
      .Shows("NAME [all]");
  AddJudgingOptions(command, options->judging, UsualIlluminants());
  command.SetNotes(
      "  curves       reflectances of the standard and the trials, and their differences\n"
      "  plane        chromatic components with the limits, and the lightness, under the first illuminant\n"
      "  trend        total differences in the order of the trials, with their limits\n"
      "  histogram    how often each size of total difference occurs, under the first illuminant\n"
      "  illuminants  total differences under each illuminant\n"
      "  angles       total differences at each aspecular angle, under the first illuminant\n"
      "Dots mark passes, triangles warnings and crosses fails.\n\n"
      "Examples:\n"
      "  vrx plot plane standard.csv batch.csv --output batch.svg --illuminants D65\n"
      "  vrx plot curves master.csv lot.csv --pairs --trial-id P07 --output P07.png --scale 2\n"
      "  vrx plot trend master.csv lot.csv --pairs --output trend.png\n");
  command.SetAction([options] { return RunPlot(*options); });
}

}  // namespace vrx::tool
