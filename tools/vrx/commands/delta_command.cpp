// vrx delta: differences of pairs of colours.

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>

#include <vrxio/csv/value_columns.h>
#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
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
  std::string tolerance;  // empty for no verdicts
  double warning = 0.75;
  Format format = Format::kTable;
};

// The difference of a pair under one illuminant.
class PairDifference {
 public:
  PairDifference(const CDifferenceSettings& settings, int32_t observer, bool fromXyz)
      : settings_(settings), observer_(observer), fromXyz_(fromXyz) {}

  /// `values`: the three of the standard, the three of the sample, the measuring angle in degrees.
  const CDeltaValues& Of(const std::vector<double>& values, vrxIlluminant illuminant) {
    SetColor(illuminant, &values[0], standard_, standardLab_);
    SetColor(illuminant, &values[3], sample_, sampleLab_);
    const double angle = std::fabs(values[6]);  // the gloss lies on both sides
    ComputeDifference(settings_, illuminant, observer_, standard_, sample_, angle, delta_);
    return delta_;
  }
  /// L*a*b* of the last pair, whatever the system works in.
  const CLabValues& StandardLab() const { return standardLab_; }
  const CLabValues& SampleLab() const { return sampleLab_; }

 private:
  // L*a*b* that was given stays as it is; whatever else the system needs is computed from the values.
  void SetColor(vrxIlluminant illuminant, const double* values, CColorValues& color, CLabValues& lab) const {
    if (fromXyz_) {
      std::copy_n(values, 3, color.tristimulus.begin());
      FillCoordinates(vrxSystemLab, illuminant, observer_, color);
    } else {
      std::copy_n(values, 3, color.lab.begin());
      ChromaHue(color.lab);
      LabToXyz(illuminant, observer_, color.lab, color.tristimulus);
    }
    lab = color.lab;
    if (FindDifferenceSystem(settings_.system)->space != CoordinateSpace::kLab) {
      FillCoordinates(settings_.system, illuminant, observer_, color);
    }
  }

  CDifferenceSettings settings_;
  int32_t observer_;
  bool fromXyz_;
  CColorValues standard_, sample_;
  CLabValues standardLab_, sampleLab_;
  CDeltaValues delta_;
};

// Judges differences by a box: the library's context with one illuminant, of which only the tolerance and the colours
// serve, since the angle of a pair need not be that of a geometry.
class PairJudge {
 public:
  PairJudge(const DeltaOptions& options, const CDifferenceSettings& settings) {
    calc_.method = settings.system;
    calc_.methodSettings = settings;
    calc_.warningFactor = CheckedWarning(options.warning);
    calc_.boxTolerances.SetAngleCount(1);
    calc_.boxTolerances[0][0].SetSize(1);
    if (!options.tolerance.empty()) {
      calc_.boxTolerances[0][0][0] = BoxOf(options.tolerance, settings.system);
    }
    for (CColorValuesIllDataArray* values : {&calc_.valuesA, &calc_.valuesB}) {
      values->SetSize(1);
      (*values)[0].SetSize(1);
    }
    calc_.labDifferences.SetSize(1);
    calc_.labDifferences[0].SetSize(1);
  }

  IlluminantJudgement Of(const CLabValues& standard, const CLabValues& sample,
                         const CDeltaValues& difference) {
    calc_.valuesB[0][0].lab = standard;
    calc_.valuesA[0][0].lab = sample;
    DeltaEab(standard, sample, calc_.labDifferences[0][0]);
    return JudgementOf(calc_.JudgeAt(0, 0, 0, difference), difference, false);
  }

 private:
  CVarexCalc calc_;
};

// Writes differences in one of the three formats, with words and verdicts where there are any.
class DeltaRows {
 public:
  DeltaRows(const CDifferenceSettings& settings, int32_t observer, const Format& format, bool withVerdicts,
            OutputStream& output)
      : format_(format),
        withVerdicts_(withVerdicts),
        system_(ShortNameOf(settings.system)),
        observer_(DegreesOf(observer)),
        columns_(DifferenceColumnsOf(settings.system)),
        array_(output) {
    if (format == Format::kTable) output.Append(TitleOf(settings) + "\n\n");
    if (format != Format::kJson) rows_ = MakeRowWriter(format, output, Columns());
  }

  /// `judgement`: null without verdicts.
  void Add(std::string_view id, vrxIlluminant illuminant, const CDeltaValues& delta,
           const IlluminantJudgement* judgement) {
    if (format_ == Format::kJson) return AddObject(id, illuminant, delta, judgement);
    rows_->Text(id);
    if (format_ == Format::kCsv) rows_->Text(system_);
    rows_->Text(CodeOf(illuminant));
    rows_->Integer(observer_);
    if (format_ == Format::kCsv) {
      for (const double element : delta) rows_->Number(element);
    } else {
      for (const DifferenceColumn& column : columns_) rows_->Number(delta[column.element]);
    }
    if (judgement != nullptr) AddVerdicts(*judgement);
    rows_->EndRow();
  }

  void Finish() { rows_ ? rows_->Finish() : array_.Finish(); }

 private:
  std::vector<Column> Columns() const {
    std::vector<Column> columns{{"id"}};
    if (format_ == Format::kCsv) columns.push_back({"system"});
    for (const char* name : {"illuminant", "observer"}) columns.push_back({name});
    if (format_ == Format::kCsv) {
      for (const char* name : {"e0", "e1", "e2", "e3", "e4", "e5", "e6"}) columns.push_back({name});
    } else {
      for (std::size_t i = 0; i < columns_.size(); ++i) {
        columns.push_back(
            {.name = columns_[i].heading, .decimals = 4, .spare = columns_.size() == 7 && i < 3});
      }
    }
    if (!withVerdicts_) return columns;
    if (format_ == Format::kCsv) {
      for (const char* name : {"word0", "word1", "word2"}) columns.push_back({name});
    } else {
      columns.push_back({"words"});
    }
    for (const char* name : {"box", "total"}) columns.push_back({.name = name, .spare = true});
    columns.push_back({"verdict"});
    return columns;
  }

  void AddVerdicts(const IlluminantJudgement& judgement) {
    if (format_ == Format::kCsv) {
      for (const ShadeWord word : judgement.words) rows_->Text(TextOf(word));
    } else {
      rows_->Text(JoinedWords(judgement.words));
    }
    for (const Verdict verdict : {judgement.components, judgement.total, judgement.overall}) {
      if (format_ == Format::kCsv) {
        rows_->Integer(verdict);
      } else {
        rows_->Text(LookOf(verdict).text, LookOf(verdict).tint);
      }
    }
  }

  void AddObject(std::string_view id, vrxIlluminant illuminant, const CDeltaValues& delta,
                 const IlluminantJudgement* judgement) {
    nlohmann::ordered_json object;
    object["id"] = id;
    object["system"] = system_;
    object["illuminant"] = CodeOf(illuminant);
    object["observer"] = observer_;
    for (const double element : delta) object["elements"].push_back(JsonNumber(element));
    for (const DifferenceColumn& column : columns_) {
      object["columns"][column.heading] = JsonNumber(delta[column.element]);
    }
    if (judgement != nullptr) {
      for (const ShadeWord word : judgement->words) object["words"].push_back(TextOf(word));
      object["box"] = judgement->components;
      object["total"] = judgement->total;
      object["verdict"] = judgement->overall;
    }
    array_.Add(object);
  }

  Format format_;
  bool withVerdicts_;
  std::string system_;
  int32_t observer_;
  std::vector<DifferenceColumn> columns_;
  std::unique_ptr<RowWriter> rows_;
  JsonArrayWriter array_;
};

void RunDelta(const DeltaOptions& options) {
  const std::vector<vrxIlluminant> illuminants = options.viewing.Illuminants();
  const int32_t observer = options.viewing.Observer();
  const CDifferenceSettings settings = options.system.Settings();
  CsvReader csv(options.pairs);
  const bool fromXyz = HasColumns(csv.Header(), {"X1", "Y1", "Z1"});
  ValueRows values = fromXyz ? ValueRows(csv, {"X1", "Y1", "Z1", "X2", "Y2", "Z2", "angle"}, 6)
                             : ValueRows(csv, {"L1", "a1", "b1", "L2", "a2", "b2", "angle"}, 6);
  PairDifference difference(settings, observer, fromXyz);
  OutputStream output;
  const bool judges = !options.tolerance.empty();
  PairJudge judge(options, settings);
  DeltaRows rows(settings, observer, options.format, judges, output);
  while (values.Next()) {
    for (const vrxIlluminant illuminant : illuminants) {
      const CDeltaValues& delta = difference.Of(values.Values(), illuminant);
      IlluminantJudgement judgement;
      if (judges) judgement = judge.Of(difference.StandardLab(), difference.SampleLab(), delta);
      rows.Add(values.Id(), illuminant, delta, judges ? &judgement : nullptr);
    }
  }
  rows.Finish();
  output.Finish();
}

}  // namespace

void AddDelta(Command& tool) {
  const auto options = std::make_shared<DeltaOptions>();
  Command command = tool.AddCommand("delta", "Differences of pairs of colours in any system");
  command
      .AddOption("PAIRS", options->pairs,
                 "Columns L1,a1,b1,L2,a2,b2 or X1,Y1,Z1,X2,Y2,Z2, optionally id and angle (- reads standard "
                 "input)")
      .ReadsFile()
      .Required();
  AddSystemOptions(command, options->system, "cmc");
  AddViewingOptions(command, options->viewing, "D65");
  AddToleranceOptions(command, options->tolerance, options->warning, "none, and no verdicts");
  AddFormatOption(command, options->format);
  command.SetNotes(
      "The first colour of a row is the standard, the second the sample. The illuminant serves to convert\n"
      "between L*a*b* and tristimulus values; the angle, in degrees, is for audi and din6175. With "
      "--tolerance\n"
      "each pair gets words and verdicts as vrx judge gives them.\n\n"
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
