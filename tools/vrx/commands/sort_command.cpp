// vrx sort: trials in the blocks of a shade-sorting grid about their standard.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <vrxio/text/decimal.h>
#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/judging/shade_groups.h>
#include <vrxmath/tolerance/box_tolerance.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/judging/judging_options.h"
#include "tools/vrx/judging/standard_library.h"
#include "tools/vrx/judging/standards.h"
#include "tools/vrx/judging/verdict_texts.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct SortOptions {
  std::string trials;
  std::string standard;
  std::string standardId;
  std::string blocks = "1,1,1";
  double groups = 0;  ///< the largest difference within one; 0: blocks
  ViewingOptions viewing;
  SystemOptions system;
  CurveInputOptions input;
  Format format = Format::kTable;
};

struct SortedTrial {
  int32_t code;
  std::string id, name, geometry;
  std::array<double, 3> difference;
};

CBlockSizeData BlocksOf(const std::string& text) {
  const std::vector<double> sizes = ParseNumbers(text, "--blocks");
  CBlockSizeData blocks;
  if (sizes.size() == 1) {
    blocks.Fill(sizes[0]);
  } else if (sizes.size() == 3) {
    std::ranges::copy(sizes, blocks.begin());
  } else {
    throw InputError("--blocks: must be one size, or one for each of the three components");
  }
  if (std::ranges::any_of(blocks, [](double size) { return !(size > 0); })) {
    throw InputError("--blocks: sizes must be above 0");
  }
  return blocks;
}

CColorValues RecordOf(const Color& color) {
  CColorValues record;
  record.tristimulus.SetValues(color.xyz);
  record.lab.SetValues(color.lab);
  return record;
}

// Sorts by blocks; within one, trials keep their order.
class Sorter {
 public:
  Sorter(const CBlockSizeData& blocks, const JudgeSettings& settings)
      : blocks_(blocks), settings_(settings) {}

  /// Takes a trial that `judge` judged.
  void Add(const CurveReader& reader, const CurveRow& trial, const Judge& judge) {
    constexpr std::size_t kMost = 200'000;
    if (trials_.size() == kMost) reader.Source().FailRow("more than 200000 trials to sort");
    const JudgementUnder judgement = judge.Row().under.front();
    CColorValues standard = RecordOf(judge.StandardColor(0, 0)), sample = RecordOf(judgement.trial);
    if (FindDifferenceSystem(settings_.difference.system)->space != CoordinateSpace::kLab) {
      for (CColorValues* color : {&standard, &sample}) {
        FillCoordinates(settings_.difference.system, settings_.illuminants[0], settings_.observer, *color);
      }
    }
    const double code = BlockCode(blocks_, standard, sample, settings_.illuminants[0], settings_.observer,
                                  settings_.difference);
    const auto& difference = judgement.difference;
    trials_.push_back({static_cast<int32_t>(code),
                       std::string(trial.id),
                       std::string(trial.name),
                       GeometryName(trial.geometry),
                       {difference[0], difference[1], difference[2]}});
  }

  void Write(const Format& format, bool withName, bool withGeometry, OutputStream& output) {
    std::ranges::stable_sort(trials_, {}, &SortedTrial::code);
    const std::vector<DifferenceColumn> headings = DifferenceColumnsOf(settings_.difference.system);
    std::vector<Column> columns{{"block"}, {"trial"}};
    if (withName) columns.push_back({"name"});
    if (withGeometry) columns.push_back({"geometry"});
    for (std::size_t k = 0; k < 3; ++k) {
      const auto heading = std::ranges::find(headings, static_cast<int32_t>(k), &DifferenceColumn::element);
      const bool isShown = heading != headings.end();
      columns.push_back({isShown ? ElementName(heading->heading) : "e" + std::to_string(k),
                         isShown ? heading->heading : ""});
    }
    if (format == Format::kTable) output.Append(TitleOf(settings_.difference) + "\n\n");
    const auto rows = MakeRowWriter(format, output, std::move(columns));
    for (const SortedTrial& trial : trials_) {
      rows->Text(BlockText(trial.code));
      rows->Text(trial.id);
      if (withName) rows->Text(trial.name);
      if (withGeometry) rows->Text(trial.geometry);
      for (const double element : trial.difference) rows->Number(element);
      rows->EndRow();
    }
    rows->Finish();
    if (format == Format::kTable) WriteCounts(output);
  }

 private:
  void WriteCounts(OutputStream& output) const {
    std::map<int32_t, int64_t> counts;
    for (const SortedTrial& trial : trials_) ++counts[trial.code];
    output.Append('\n');
    const auto rows = MakeRowWriter(Format::kTable, output, {{"block"}, {"trials"}});
    for (const auto& [code, count] : counts) {
      rows->Text(BlockText(code));
      rows->Integer(count);
      rows->EndRow();
    }
    rows->Finish();
  }

  CBlockSizeData blocks_;
  const JudgeSettings& settings_;
  std::vector<SortedTrial> trials_;
};

// Trials in groups of which any two differ by no more than a limit.
class Grouper {
 public:
  explicit Grouper(const SortOptions& options)
      : options_(options),
        conditions_{options.system.Settings(), options.viewing.Illuminants(), options.viewing.Observer()},
        colors_(conditions_) {}

  void Read(CurveReader& trials) {
    constexpr std::size_t kMost = 5000;
    CurveRow trial;
    while (trials.Next(trial)) {
      if (colors_.Size() == kMost) trials.Source().FailRow("more than 5000 trials to put into groups");
      colors_.Add(trial);
      names_.emplace_back(trial.name);
    }
    colors_.Compute();
    SortByColour();
    groups_ = ShadeGroups(order_, options_.groups,
                          [this](std::size_t a, std::size_t b) { return Difference(a, b); });
  }

  void Write(const Format& format, bool withName, bool withGeometry, OutputStream& output) {
    std::vector<Column> columns{{"group"}, {"trial"}};
    if (withName) columns.push_back({"name"});
    if (withGeometry) columns.push_back({"geometry"});
    columns.push_back({.name = "farthest"});
    const auto rows = MakeRowWriter(format, output, std::move(columns));
    for (std::size_t g = 0; g < groups_.size(); ++g) {
      for (const std::size_t trial : groups_[g]) {
        rows->Integer(static_cast<int64_t>(g + 1));
        rows->Text(colors_.Name(trial));
        if (withName) rows->Text(names_[trial]);
        if (withGeometry) rows->Text(GeometryName(colors_.Geometry(trial)));
        rows->Known(FarthestOf(trial, groups_[g]));
        rows->EndRow();
      }
    }
    rows->Finish();
    TellWorst(groups_.size());
  }

 private:
  // By L*, a*, b* and id: the groups do not depend on the order of rows.
  void SortByColour() {
    order_.resize(colors_.Size());
    for (std::size_t i = 0; i < order_.size(); ++i) order_[i] = i;
    std::ranges::stable_sort(order_, [this](std::size_t a, std::size_t b) {
      const Lab &x = colors_.At(0, a).lab, &y = colors_.At(0, b).lab;
      return std::tie(x.L, x.a, x.b, colors_.Name(a)) < std::tie(y.L, y.a, y.b, colors_.Name(b));
    });
  }

  double Difference(std::size_t a, std::size_t b) const {
    if (colors_.Geometry(a) != colors_.Geometry(b)) return HUGE_VAL;
    const double angle = options_.system.AngleOf(colors_.Geometry(a));
    return DifferenceEitherWay(conditions_.difference, colors_.At(0, a), colors_.At(0, b), angle);
  }

  double FarthestOf(std::size_t trial, const std::vector<std::size_t>& group) {
    double farthest = 0;
    for (const std::size_t other : group) {
      const double difference = other == trial ? 0 : Difference(trial, other);
      if (difference > farthest) farthest = difference;
      if (difference > worst_) {
        worst_ = difference;
        pair_ = {std::min(trial, other), std::max(trial, other)};
      }
    }
    return farthest;
  }

  void TellWorst(std::size_t groups) const {
    std::string text = options_.trials + ": " + std::to_string(groups) +
                       (groups == 1 ? " group" : " groups") + " of " + std::to_string(order_.size()) +
                       " trials";
    if (worst_ > 0) {
      text += "; the worst pair within one is " + colors_.Name(pair_[0]) + " and " + colors_.Name(pair_[1]) +
              ", which differ by " + FixedDecimals(worst_, 2);
    }
    PrintMessage(text);
  }

  const SortOptions& options_;
  SearchConditions conditions_;
  NamedColors colors_;
  std::vector<std::string> names_;
  std::vector<std::size_t> order_;                // of the trials, by colour
  std::vector<std::vector<std::size_t>> groups_;  // of trials, the largest first
  double worst_ = 0;
  std::array<std::size_t, 2> pair_{};
};

void RunGroups(SortOptions& options) {
  if (!(options.groups > 0)) throw InputError("--groups: must be above 0");
  CurveReader trials = OpenCurves(options.trials, options.input, Content::kCurvesOrColors);
  options.viewing.Follow({&trials});
  Grouper grouper(options);
  grouper.Read(trials);
  OutputStream output;
  grouper.Write(options.format, trials.HasIdsAndNames(), trials.HasGeometries(), output);
  output.Finish();
  WarnAboutInput(trials);
  options.system.WarnAboutAngle(trials.HasGeometries());
}

void RunSort(SortOptions& options, const Command& command) {
  options.viewing.RequireOneIlluminant();
  if (command.IsGiven("--groups")) return RunGroups(options);
  const bool oneFile = options.standard.empty();
  if (options.trials == "-" && (oneFile || options.standard == "-")) {
    throw InputError("the standard and the trials cannot both come from standard input: name a file");
  }
  CurveReader standardRows =
      oneFile ? OpenCurves(options.trials, options.input, Content::kCurvesOrColors)
              : OpenCurves(options.standard, options.input.OfStandards(), Content::kCurvesOrColors);
  CurveReader trials = OpenCurves(options.trials, options.input, Content::kCurvesOrColors);
  options.viewing.Follow({&standardRows, &trials});
  if (trials.HasStandards() && options.standardId.empty()) {
    throw InputError(trials.Source().Name() +
                     ": the trials name their standards in a column; --standard-id sorts all around one");
  }
  const auto standards =
      OneStandard(std::move(standardRows), options.standardId, oneFile ? nullptr : &trials, false);
  const JudgeSettings settings = SettingsUnder(options.viewing, options.system);
  Sorter sorter(BlocksOf(options.blocks), settings);
  Judge judge(settings);
  OwnRows own;
  bool hasTrials = false;
  CurveRow trial;
  while (trials.Next(trial)) {
    const Standard& standard = standards->Of(trial);
    if (oneFile && own.Take(standard, trial)) continue;
    judge.Evaluate(standard, trial);
    sorter.Add(trials, trial, judge);
    hasTrials = true;
  }
  if (!hasTrials) throw InputError(trials.Source().Name() + ": there are no trials beside the standard");
  standards->EndTrials();
  OutputStream output;
  sorter.Write(options.format, trials.HasIdsAndNames(), trials.HasGeometries(), output);
  output.Finish();
  if (oneFile) {
    WarnAboutInput(trials);
  } else {
    WarnAboutInput(standards->Reader(), trials);
  }
}

}  // namespace

void AddSort(Command& tool) {
  const auto options = std::make_shared<SortOptions>();
  Command command = tool.AddCommand("sort", "Sort trials into shade blocks, such as 555");
  command.AddOption("TRIALS", options->trials, "Curves or colours of the trials (- for standard input)")
      .ReadsFile()
      .Required();
  Option standard =
      command.AddOption("--standard", options->standard, "File with the curve or colour of the standard");
  standard.ReadsFile().Shows("FILE [TRIALS]");
  Option id = command.AddOption("--standard-id", options->standardId, "Id of the row to use as the standard");
  id.Shows("ID [first row]");
  Option blocks = command.AddOption("--blocks", options->blocks,
                                    "Size of a block: one number, or one for each of the three components");
  blocks.Shows("SIZES [1,1,1]");
  command
      .AddOption("--groups", options->groups,
                 "Put trials into groups instead, of which any two differ by no more than this")
      .Shows("DIFFERENCE")
      .Excludes(standard)
      .Excludes(id)
      .Excludes(blocks);
  AddSystemOptions(command, options->system, "lab");
  AddViewingOptions(command, options->viewing, "D65");
  AddCurveInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "The digits of a block stand for the first three components of the difference: 5 is the block around "
      "the\n"
      "standard, 1 to 9 are nine blocks side by side, and 0 and A are everything beyond them. Trials of one\n"
      "block are listed together; a trial on an edge belongs to the block above it.\n\n"
      "Examples:\n"
      "  vrx sort examples/chart_ohta.csv --standard-id P19 --blocks 10\n"
      "  vrx sort batch.csv --standard master.csv --system cmc --blocks 0.5,0.5,0.4 --format csv\n"
      "  vrx sort batch.csv --groups 5 --system cie2000         # any two of a group differ by 5 at most\n");
  command.SetAction([options, command] {
    RunSort(*options, command);
    return kExitPass;
  });
}

}  // namespace vrx::tool
