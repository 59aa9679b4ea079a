// vrx delta: differences of pairs of colours.

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vrxio/csv/value_columns.h>
#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/judging/judging_options.h"
#include "tools/vrx/judging/verdict_texts.h"
#include "tools/vrx/output/json_output.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct DeltaOptions {
  std::string pairs;
  ViewingOptions viewing;
  SystemOptions system;
  CurveInputOptions input;  // only the scale of X, Y, Z
  LimitOptions limits;      // no verdicts without a tolerance or limits
  Format format = Format::kTable;
};

// Pairs on their way to the output, judged many at once.
class PairJudge {
 public:
  PairJudge(const JudgeSettings& settings, bool hasAngles) : judge_(settings), hasAngles_(hasAngles) {}

  std::size_t Size() const { return ids_.size(); }
  /// `values`: the three of the standard, the three of the sample, the measuring angle in degrees.
  void Add(std::string_view id, const std::vector<double>& values, Sample::Kind kind) {
    if (standards_.size() == Size()) standards_.emplace_back(), samples_.emplace_back();
    Standard& standard = standards_[Size()];
    Sample& sample = samples_[Size()];
    standard.sample.kind = sample.kind = kind;
    std::copy_n(values.begin(), 3, standard.sample.color.begin());
    std::copy_n(values.begin() + 3, 3, sample.color.begin());
    if (hasAngles_) standard.angle = values[6];
    ids_.emplace_back(id);
  }
  /// Calls visit(id, judgement) for the pairs in turn, and lets go of them.
  template <class VISIT>
  void Judge(const VISIT& visit) {
    std::vector<const Sample*> samples;
    for (std::size_t i = 0; i < Size(); ++i) samples.push_back(&samples_[i]);
    judge_.Evaluate(std::span(standards_).first(Size()), samples);
    for (std::size_t i = 0; i < Size(); ++i) visit(ids_[i], judge_.Row(i));
    ids_.clear();
  }

 private:
  tool::Judge judge_;
  bool hasAngles_;  // a column of them; else that of the settings
  std::vector<std::string> ids_;
  std::vector<Standard> standards_;  // at least as many
  std::vector<Sample> samples_;
};

// Writes differences in one of the three formats, with words and verdicts where there are any.
class DeltaRows {
 public:
  DeltaRows(const CDifferenceSettings& settings, int32_t observer, const Format& format, bool withVerdicts,
            OutputStream& output)
      : format_(format),
        withVerdicts_(withVerdicts),
        number_(settings.system),
        system_(ShortNameOf(settings.system)),
        observer_(DegreesOf(observer)),
        columns_(DifferenceColumnsOf(settings.system)),
        array_(output) {
    if (format == Format::kTable) output.Append(TitleOf(settings) + "\n\n");
    if (format != Format::kJson) rows_ = MakeRowWriter(format, output, Columns());
  }

  void Add(std::string_view id, vrxIlluminant illuminant, const JudgementUnder& judgement) {
    if (format_ == Format::kJson) return AddObject(id, illuminant, judgement);
    const auto& delta = judgement.difference;
    rows_->Text(id);
    if (format_ == Format::kCsv) rows_->Text(system_);
    rows_->Text(ShownIlluminant(illuminant));
    rows_->Integer(observer_);
    for (const DifferenceColumn& column : columns_) {
      judgement.available ? rows_->Known(ElementOf(delta, column)) : rows_->Number(ElementOf(delta, column));
    }
    if (withVerdicts_) AddVerdicts(judgement);
    rows_->EndRow();
  }

  void Finish() { rows_ ? rows_->Finish() : array_.Finish(); }

 private:
  std::vector<Column> Columns() const {
    std::vector<Column> columns{{"id"}};
    if (format_ == Format::kCsv) columns.push_back({"system"});
    for (const char* name : {"illuminant", "observer"}) columns.push_back({name});
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      const std::string& heading = columns_[i].heading;
      columns.push_back({.name = format_ == Format::kCsv ? ElementName(heading) : heading,
                         .decimals = 4,
                         .room = RoomOfElement(i, columns_.size())});
    }
    if (!withVerdicts_) return columns;
    if (format_ == Format::kCsv) {
      for (const char* name : {"word0", "word1", "word2"}) columns.push_back({name});
    } else {
      columns.push_back({"words"});
    }
    for (const char* name : {"box", "total"}) columns.push_back({.name = name, .room = Room::kSpare});
    columns.push_back({.name = "verdict", .room = Room::kWhole});
    columns.push_back({.name = "reason", .room = Room::kWhole});
    if (format_ == Format::kCsv) columns.push_back({"excess"});
    return columns;
  }

  static double ElementOf(const std::array<double, 7>& delta, const DifferenceColumn& column) {
    return delta[static_cast<std::size_t>(column.element)];
  }

  void AddVerdicts(const JudgementUnder& judgement) {
    if (format_ == Format::kCsv) {
      for (const ShadeWord word : judgement.words) rows_->Text(TextOf(word));
    } else {
      rows_->Text(JoinedWords(judgement.words));
    }
    for (const Verdict verdict : {judgement.components, judgement.total, judgement.verdict}) {
      rows_->Text(LookOf(verdict).text, LookOf(verdict).tint);
    }
    if (format_ != Format::kCsv) return rows_->Text(ReasonText(judgement.breach, judgement.verdict, number_));
    rows_->Text(NameOfLimit(judgement.breach.limit, number_));
    rows_->Number(judgement.breach.Excess());
  }

  void AddObject(std::string_view id, vrxIlluminant illuminant, const JudgementUnder& judgement) {
    JsonObject object;
    object.Text("id", id);
    object.Text("system", system_);
    object.Text("illuminant", ShownIlluminant(illuminant));
    object.Integer("observer", observer_);
    for (const double element : judgement.difference) object.AppendNumber("elements", element);
    JsonObject columns;
    for (const DifferenceColumn& column : columns_) {
      columns.Number(column.heading, ElementOf(judgement.difference, column), judgement.available);
    }
    object.Object("columns", columns);
    if (withVerdicts_) {
      for (const ShadeWord word : judgement.words) object.AppendText("words", TextOf(word));
      object.Integer("box", judgement.components);
      object.Integer("total", judgement.total);
      object.Integer("verdict", judgement.verdict);
      AddReason(judgement.breach, number_, object);
    }
    array_.Add(object);
  }

  Format format_;
  bool withVerdicts_;
  int32_t number_;
  std::string system_;
  int32_t observer_;
  std::vector<DifferenceColumn> columns_;
  std::unique_ptr<RowWriter> rows_;
  JsonArrayWriter array_;
};

// Whether pairs get verdicts.
bool HasLimits(const LimitOptions& limits) {
  return !limits.tolerance.empty() || !limits.limits.empty();
}

JudgeSettings SettingsOf(const DeltaOptions& options) {
  JudgeSettings settings;
  settings.illuminants = options.viewing.Illuminants();
  settings.observer = options.viewing.Observer();
  settings.difference = options.system.Settings();
  settings.angle = options.system.Angle();
  if (HasLimits(options.limits)) {
    SetLimits(options.limits, settings);
    RequireLimitsOfComponents(settings);
  } else if (!options.limits.verdict.empty() || options.limits.warning != LimitOptions().warning) {
    throw InputError("--verdict and --warning: give the limits, by --tolerance or --limits");
  }
  return settings;
}

void RunDelta(DeltaOptions& options) {
  CsvReader csv(options.pairs);
  const bool fromXyz = HasColumns(csv.Header(), {"X1", "Y1", "Z1"});
  ValueRows values = fromXyz ? ValueRows(csv, {"X1", "Y1", "Z1", "X2", "Y2", "Z2", "angle"}, 6,
                                         options.input.Reading().scale)
                             : ValueRows(csv, {"L1", "a1", "b1", "L2", "a2", "b2", "angle"}, 6);
  options.viewing.Follow(csv.Name(), values.Light());
  const JudgeSettings settings = SettingsOf(options);
  OutputStream output;
  DeltaRows rows(settings.difference, settings.observer, options.format, HasLimits(options.limits), output);
  const auto write = [&](const std::string& id, const Judgement& judgement) {
    for (std::size_t i = 0; i < judgement.under.size(); ++i) {
      rows.Add(id, settings.illuminants[i], judgement.under[i]);
    }
  };
  constexpr std::size_t kTogether = 512;
  const bool hasAngles = HasColumns(csv.Header(), {"angle"});
  PairJudge pairs(settings, hasAngles);
  try {
    while (values.Next()) {
      pairs.Add(values.Id(), values.Values(), fromXyz ? Sample::kXyz : Sample::kLab);
      if (pairs.Size() == kTogether) pairs.Judge(write);
    }
  } catch (...) {  // the rows before a bad one are written
    pairs.Judge(write);
    throw;
  }
  pairs.Judge(write);
  rows.Finish();
  output.Finish();
  options.system.WarnAboutAngle(hasAngles);
}

}  // namespace

void AddDelta(Command& tool) {
  const auto options = std::make_shared<DeltaOptions>();
  Command command = tool.AddCommand("delta", "Compute the differences of pairs of colours in any system");
  command
      .AddOption(
          "PAIRS", options->pairs,
          "Columns L1,a1,b1,L2,a2,b2 or X1,Y1,Z1,X2,Y2,Z2, optionally id and angle (- for standard input)")
      .ReadsFile()
      .Required();
  AddScaleOptions(command, options->input);
  AddSystemOptions(command, options->system, "cmc");
  AddViewingOptions(command, options->viewing, "D65");
  AddToleranceOptions(command, options->limits, "none: no verdicts");
  AddFormatOption(command, options->format);
  command.SetNotes(
      "The first colour of each row is the standard, the second the sample. The illuminant is used to "
      "convert\n"
      "between L*a*b* and tristimulus values; the angle, in degrees, is used by audi and din6175. With\n"
      "--tolerance each pair gets words and verdicts, as in vrx judge.\n\n"
      "Examples:\n"
      "  vrx delta pairs.csv --system cie2000\n"
      "  vrx delta pairs.csv --system cmc --parameters 1,1 --format csv\n"
      "  printf 'L1,a1,b1,L2,a2,b2\\n50,2.6772,-79.7751,50,0,-82.7485\\n' | vrx delta - --system 11\n");
  command.SetAction([options] {
    RunDelta(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
