// vrx sort: trials in the blocks of a shade-sorting grid about their standard.

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/tolerance/box_tolerance.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
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

// A digit for each dimension, 0 to 9 and A, as "555" for the block of the standard.
std::string DigitsOf(int32_t code) {
  constexpr std::string_view kDigits = "0123456789A";
  std::string text;
  for (const int32_t cell : {code >> 8, code >> 4 & 0xF, code & 0xF})
    text += kDigits[static_cast<std::size_t>(cell)];
  return text;
}

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
      rows->Text(DigitsOf(trial.code));
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
      rows->Text(DigitsOf(code));
      rows->Integer(count);
      rows->EndRow();
    }
    rows->Finish();
  }

  CBlockSizeData blocks_;
  const JudgeSettings& settings_;
  std::vector<SortedTrial> trials_;
};

void RunSort(SortOptions& options) {
  if (options.viewing.Illuminants().size() != 1)
    throw InputError("--illuminants: this command takes exactly one");
  const bool oneFile = options.standard.empty();
  if (options.trials == "-" && (oneFile || options.standard == "-")) {
    throw InputError("the standard and the trials cannot both come from standard input: name a file");
  }
  CurveReader standardRows =
      OpenCurves(oneFile ? options.trials : options.standard, options.input, Content::kCurvesOrColors);
  CurveReader trials = OpenCurves(options.trials, options.input, Content::kCurvesOrColors);
  options.viewing.Follow({&standardRows, &trials});
  if (trials.HasStandards() && options.standardId.empty()) {
    throw InputError(trials.Source().Name() +
                     ": the trials name their standards in a column; --standard-id sorts all around one");
  }
  const auto standards =
      OneStandard(std::move(standardRows), options.standardId, oneFile ? nullptr : &trials, false);
  JudgeSettings settings;
  settings.illuminants = options.viewing.Illuminants();
  settings.observer = options.viewing.Observer();
  settings.difference = options.system.Settings();
  settings.angle = options.system.Angle();
  Sorter sorter(BlocksOf(options.blocks), settings);
  Judge judge(settings);
  CurveRow trial;
  while (trials.Next(trial)) {
    const Standard& standard = standards->Of(trial);
    if (oneFile && standard.id == trial.id) continue;
    judge.Evaluate(standard, trial);
    sorter.Add(trials, trial, judge);
  }
  standards->EndTrials();
  OutputStream output;
  sorter.Write(options.format, trials.HasIdsAndNames(), trials.HasGeometries(), output);
  output.Finish();
  WarnAboutInput(trials);
}

}  // namespace

void AddSort(Command& tool) {
  const auto options = std::make_shared<SortOptions>();
  Command command = tool.AddCommand("sort", "Sort trials into shade blocks, such as 555");
  command.AddOption("TRIALS", options->trials, "Curves or colours of the trials (- for standard input)")
      .ReadsFile()
      .Required();
  command.AddOption("--standard", options->standard, "File with the curve or colour of the standard")
      .ReadsFile()
      .Shows("FILE [TRIALS]");
  command.AddOption("--standard-id", options->standardId, "Id of the row to use as the standard")
      .Shows("ID [first row]");
  command
      .AddOption("--blocks", options->blocks,
                 "Size of a block: one number, or one for each of the three components")
      .Shows("SIZES [1,1,1]");
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
      "  vrx sort batch.csv --standard master.csv --system cmc --blocks 0.5,0.5,0.4 --format csv\n");
  command.SetAction([options] {
    RunSort(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
