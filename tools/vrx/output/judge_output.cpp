
#include "tools/vrx/output/judge_output.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <vrxmath/judging/shade.h>

#include "tools/vrx/output/json_output.h"

namespace vrx::tool {

namespace {

constexpr std::size_t kShadeWords = 11;

// What every row says again, as UTF-8, made once.
struct Texts {
  explicit Texts(const JudgeSettings& settings) : observer(DegreesOf(settings.observer)) {
    for (const vrxIlluminant illuminant : settings.illuminants) illuminants.push_back(CodeOf(illuminant));
    for (std::size_t i = 0; i < kShadeWords; ++i) {
      words[i] = CString(ShadeWordText(static_cast<ShadeWord>(i))).ToUtf8();
    }
    for (int32_t code = 0; code < kAngleCodes; ++code) geometries.push_back(GeometryName(code));
  }
  const std::string& Word(ShadeWord word) const { return words[static_cast<std::size_t>(word)]; }
  std::string_view Geometry(int32_t geometry) const {
    return geometry < 0 ? std::string_view() : geometries[static_cast<std::size_t>(geometry)];
  }

  int32_t observer;
  std::vector<std::string> illuminants;
  std::array<std::string, kShadeWords> words;
  std::vector<std::string> geometries;
};

struct VerdictLook {
  const char* text;
  Tint tint;
};
VerdictLook LookOf(Verdict verdict) {
  static constexpr VerdictLook kLooks[] = {
      {"fail", Tint::kBad}, {"warning", Tint::kWarning}, {"pass", Tint::kGood}};
  return kLooks[static_cast<std::size_t>(verdict)];
}

class CsvJudgeOutput final : public JudgeOutput {
 public:
  CsvJudgeOutput(OutputStream& output, const JudgeSettings& settings)
      : output_(output), texts_(settings), byEllipse_(settings.ByEllipse()) {
    output_.Append(
        "standard,trial,geometry,illuminant,observer,e0,e1,e2,e3,e4,e5,e6,word0,word1,word2,box,total,"
        "verdict");
    output_.Append(byEllipse_ ? ",ellipse\n" : "\n");
  }
  void Add(const CurveRow& trial, const Judge& judge) override {
    for (std::size_t i = 0; i < texts_.illuminants.size(); ++i) AddRow(trial, judge, i);
  }
  void Finish() override {}

 private:
  void AddRow(const CurveRow& trial, const Judge& judge, std::size_t i) {
    output_.AppendCsvText(judge.StandardId());
    output_.Append(',');
    output_.AppendCsvText(trial.id);
    for (const std::string_view text :
         {texts_.Geometry(trial.geometry), std::string_view(texts_.illuminants[i])}) {
      output_.Append(',');
      output_.Append(text);
    }
    output_.Append(texts_.observer == 10 ? ",10" : ",2");
    for (const double element : judge.Difference(i)) {
      output_.Append(',');
      output_.AppendNumber(element);
    }
    const CEvaluation& result = judge.Result(i);
    for (const ShadeWord word : result.shade.words) {
      output_.Append(',');
      output_.Append(texts_.Word(word));
    }
    for (const Verdict verdict : {judge.Components(i), result.total, result.overall}) {
      output_.Append(',');
      output_.Append(static_cast<char>('0' + verdict));
    }
    if (byEllipse_) {
      output_.Append(',');
      output_.AppendNumber(judge.EllipseValue(i));
    }
    output_.Append('\n');
  }

  OutputStream& output_;
  Texts texts_;
  bool byEllipse_;
};

class JsonJudgeOutput final : public JudgeOutput {
 public:
  JsonJudgeOutput(OutputStream& output, const JudgeSettings& settings)
      : array_(output), texts_(settings), byEllipse_(settings.ByEllipse()) {}
  void Add(const CurveRow& trial, const Judge& judge) override {
    for (std::size_t i = 0; i < texts_.illuminants.size(); ++i) {
      const CEvaluation& result = judge.Result(i);
      nlohmann::ordered_json object;
      object["standard"] = judge.StandardId();
      object["trial"] = trial.id;
      object["geometry"] = trial.geometry < 0 ? nlohmann::ordered_json()
                                              : nlohmann::ordered_json(texts_.Geometry(trial.geometry));
      object["illuminant"] = texts_.illuminants[i];
      object["observer"] = texts_.observer;
      for (const double element : judge.Difference(i)) object["elements"].push_back(JsonNumber(element));
      for (const ShadeWord word : result.shade.words) object["words"].push_back(texts_.Word(word));
      object["box"] = judge.Components(i);
      object["total"] = result.total;
      object["verdict"] = result.overall;
      if (byEllipse_) object["ellipse"] = JsonNumber(judge.EllipseValue(i));
      array_.Add(object);
    }
  }
  void Finish() override { array_.Finish(); }

 private:
  JsonArrayWriter array_;
  Texts texts_;
  bool byEllipse_;
};

// What a table says of an illuminant at its end.
struct Summary {
  std::array<int64_t, 3> verdicts{};  // by verdict
  double sum = 0;                     // of total differences
  double largest = 0;
  std::string largestTrial;

  void Add(const CurveRow& trial, const Judge& judge, std::size_t i) {
    const double total = judge.Difference(i)[6];
    ++verdicts[static_cast<std::size_t>(judge.Result(i).overall)];
    sum += total;
    if (!(total > largest)) return;
    largest = total;
    largestTrial = trial.id;
  }
};

class TableJudgeOutput final : public JudgeOutput {
 public:
  TableJudgeOutput(OutputStream& output, const JudgeSettings& settings, bool withName, bool withGeometry)
      : output_(output),
        texts_(settings),
        columns_(DifferenceColumnsOf(settings.difference.system)),
        withName_(withName),
        withGeometry_(withGeometry),
        byEllipse_(settings.ByEllipse()),
        summaries_(settings.illuminants.size()),
        rows_(MakeRowWriter(Format::kTable, output, Columns())) {
    output_.Append(TitleOf(settings.difference) + ", " +
                   IlluminantName(settings.illuminants[0], settings.observer, kNameObserver).ToUtf8() +
                   "\n\n");
  }

  void Add(const CurveRow& trial, const Judge& judge) override {
    for (std::size_t i = 0; i < summaries_.size(); ++i) {
      AddRow(trial, judge, i);
      summaries_[i].Add(trial, judge, i);
    }
  }

  void Finish() override {
    rows_->Finish();
    output_.Append('\n');
    WriteSummary();
  }

 private:
  std::vector<Column> Columns() const {
    std::vector<Column> columns{{"standard"}, {"trial"}};
    if (withName_) columns.push_back({"name"});
    if (withGeometry_) columns.push_back({"geometry"});
    columns.push_back({"illuminant"});
    for (const DifferenceColumn& column : columns_) columns.push_back({column.heading});
    columns.push_back({"words"});
    if (byEllipse_) columns.push_back({"value"});
    for (const char* name : {byEllipse_ ? "ellipse" : "box", "total", "verdict"}) columns.push_back({name});
    return columns;
  }

  void AddRow(const CurveRow& trial, const Judge& judge, std::size_t i) {
    const CEvaluation& result = judge.Result(i);
    rows_->Text(judge.StandardId());
    rows_->Text(trial.id);
    if (withName_) rows_->Text(trial.name);
    if (withGeometry_) rows_->Text(texts_.Geometry(trial.geometry));
    rows_->Text(texts_.illuminants[i]);
    for (const DifferenceColumn& column : columns_) rows_->Number(judge.Difference(i)[column.element]);
    words_.clear();
    for (const ShadeWord word : result.shade.words) {
      if (word == kShadeNone) continue;
      if (!words_.empty()) words_ += ", ";
      words_ += texts_.Word(word);
    }
    rows_->Text(words_);
    if (byEllipse_) rows_->Number(judge.EllipseValue(i));
    for (const Verdict verdict : {judge.Components(i), result.total, result.overall}) {
      rows_->Text(LookOf(verdict).text, LookOf(verdict).tint);
    }
    rows_->EndRow();
  }

  void WriteSummary() {
    const std::string total = columns_.back().heading;
    const auto rows = MakeRowWriter(Format::kTable, output_,
                                    {{"illuminant"},
                                     {"samples"},
                                     {"pass"},
                                     {"warning"},
                                     {"fail"},
                                     {"mean", "mean " + total},
                                     {"largest", "largest " + total},
                                     {"of", "of trial"}});
    for (std::size_t i = 0; i < summaries_.size(); ++i) {
      const Summary& summary = summaries_[i];
      const auto [fail, warning, pass] = summary.verdicts;
      rows->Text(texts_.illuminants[i]);
      for (const int64_t count : {fail + warning + pass, pass, warning, fail}) rows->Integer(count);
      rows->Number(summary.sum / static_cast<double>(fail + warning + pass));
      rows->Number(summary.largest);
      rows->Text(summary.largestTrial);
      rows->EndRow();
    }
    rows->Finish();
  }

  OutputStream& output_;
  Texts texts_;
  std::vector<DifferenceColumn> columns_;
  bool withName_;
  bool withGeometry_;
  bool byEllipse_;
  std::vector<Summary> summaries_;
  std::unique_ptr<RowWriter> rows_;
  std::string words_;
};

}  // namespace

std::unique_ptr<JudgeOutput> MakeJudgeOutput(const Format& format, OutputStream& output,
                                             const JudgeSettings& settings, const CurveReader& trials) {
  output.SetFormat(format);
  if (format == Format::kCsv) return std::make_unique<CsvJudgeOutput>(output, settings);
  if (format == Format::kJson) return std::make_unique<JsonJudgeOutput>(output, settings);
  return std::make_unique<TableJudgeOutput>(output, settings, trials.HasIdsAndNames(),
                                            trials.HasGeometries());
}

}  // namespace vrx::tool
