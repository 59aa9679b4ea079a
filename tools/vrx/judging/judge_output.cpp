
#include "tools/vrx/judging/judge_output.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <utility>

#include "tools/vrx/base/text.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/judging/verdict_texts.h"
#include "tools/vrx/output/json_output.h"

namespace vrx::tool {

namespace {

// Whether results say at which interval curves were summed; 10 nm goes without saying.
bool IsFine(const JudgeSettings& settings) {
  return settings.interval != kWavelengthStep;
}

// The texts that every row repeats, as UTF-8, made once.
struct Texts {
  explicit Texts(const JudgeSettings& settings)
      : observer(DegreesOf(settings.observer)), interval(settings.interval) {
    for (const vrxIlluminant illuminant : settings.illuminants)
      illuminants.push_back(ShownIlluminant(illuminant));
    for (int32_t code = 0; code < kAngleCodes; ++code) geometries.push_back(GeometryName(code));
  }
  std::string_view Geometry(int32_t geometry) const {
    return geometry < 0 ? std::string_view() : geometries[static_cast<std::size_t>(geometry)];
  }

  int32_t observer;
  int32_t interval;  // in nm
  std::vector<std::string> illuminants;
  std::vector<std::string> geometries;
};

// The grade as it is reported.
double HalfStepOf(const JudgementUnder& under) {
  return under.available ? HalfStepGrade(under.grade) : kUnset;
}

// A text that is copied 16 bytes at a time where it is not longer, without a branch on its length.
class ShortText {
 public:
  explicit ShortText(std::string text) : length_(text.size()), padded_(std::move(text)) {
    padded_.resize(std::max(length_, kStep));
  }
  std::size_t Bytes() const { return padded_.size(); }
  /// `out` has room for Bytes().
  char* Write(char* out) const {
    std::memcpy(out, padded_.data(), length_ <= kStep ? kStep : length_);
    return out + length_;
  }

 private:
  static constexpr std::size_t kStep = 16;

  std::size_t length_;
  std::string padded_;
};

// The rows of csv for trials.
class CsvJudgeRows {
 public:
  CsvJudgeRows(const JudgeSettings& settings, bool inNumbers)
      : byEllipse_(settings.ByEllipse()),
        byGrade_(settings.grade.has_value()),
        byInconstancy_(settings.inconstancy.has_value()) {
    const Texts texts(settings);
    geometries_ = texts.geometries;
    for (const DifferenceColumn& column : DifferenceColumnsOf(settings.difference.system)) {
      elements_.push_back(static_cast<std::size_t>(column.element));
    }
    numbersOfRow_ = elements_.size() + (byEllipse_ ? 2 : 1) + (byGrade_ ? 2 : 0) + (byInconstancy_ ? 1 : 0);
    std::string conditions = texts.observer == 10 ? ",10" : ",2";
    if (IsFine(settings)) conditions += "," + std::to_string(texts.interval);
    for (const std::string& illuminant : texts.illuminants) {
      conditions_.emplace_back(illuminant + conditions);
      longestRest_ = std::max(longestRest_, conditions_.back().Bytes());
    }
    std::size_t longestWord = 0;
    for (std::int32_t word = kShadeNone; word <= kBluer; ++word) {
      words_.emplace_back("," + TextOf(static_cast<ShadeWord>(word)));
      longestWord = std::max(longestWord, words_.back().Bytes());
    }
    for (const Verdict verdict : {kFail, kWarning, kPass}) {
      verdicts_.emplace_back(
          std::string(",").append(inNumbers ? std::to_string(verdict) : LookOf(verdict).text));
      longestWord = std::max(longestWord, verdicts_.back().Bytes());
    }
    for (auto limit = static_cast<std::int32_t>(BrokenLimit::kNone);
         limit <= static_cast<std::int32_t>(BrokenLimit::kInconstancy); ++limit) {
      reasons_.emplace_back("," + NameOfLimit(static_cast<BrokenLimit>(limit), settings.difference.system));
      longestWord = std::max(longestWord, reasons_.back().Bytes());
    }
    constexpr std::size_t kTexts = 3 + 3 + 1, kLineEnd = 1;  // words, verdicts and the reason
    longestRest_ += numbersOfRow_ * (1 + OutputStream::kLongestNumber) + kTexts * longestWord + kLineEnd;
  }

  // Takes the rows of a trial, which must live until they are written: at the latest by Finish.
  void Add(const TrialJudgement& judgement, OutputStream& text) {
    for (std::size_t i = 0; i < judgement.under.size(); ++i) {
      if ((rows_.size() + 1) * numbersOfRow_ > OutputStream::Numbers::kMost) Finish(text);
      rows_.push_back({&judgement, i});
    }
  }

  // Writes the rows that were taken. Their numbers are many: digits are found for several at once.
  void Finish(OutputStream& text) {
    std::array<double, OutputStream::Numbers::kMost> numbers;
    std::size_t count = 0;
    for (const Row& row : rows_) {
      const JudgementUnder& under = row.trial->under[row.illuminant];
      for (const std::size_t element : elements_) numbers[count++] = under.difference[element];
      numbers[count++] = under.breach.Excess();
      if (byEllipse_) numbers[count++] = under.ellipsoidValue;
      if (byGrade_) {
        numbers[count++] = under.grade;
        numbers[count++] = HalfStepOf(under);
      }
      if (byInconstancy_) numbers[count++] = under.inconstancy;
    }
    const OutputStream::Numbers texts(text, std::span(numbers).first(count));
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      const Row& row = rows_[i];
      if (i == 0 || row.illuminant == 0) SetNames(*row.trial, text);
      WriteRow(row, texts, i * numbersOfRow_, text);
      if (row.illuminant + 1 == conditions_.size()) ends_.push_back(text.Text().size());
    }
    rows_.clear();
  }

  // Where the texts of the trials end, in a stream in memory, since Clear.
  const std::vector<std::size_t>& Ends() const { return ends_; }
  void Clear() { ends_.clear(); }

 private:
  struct Row {
    const TrialJudgement* trial;
    std::size_t illuminant;
  };

  void SetNames(const TrialJudgement& judgement, const OutputStream& text) {
    names_.clear();
    for (const std::string* name : {&judgement.standard, &judgement.trial}) {
      text.AddCsvField(*name, names_);
      names_ += ',';
    }
    if (judgement.geometry >= 0) names_ += geometries_[static_cast<std::size_t>(judgement.geometry)];
    names_ += ',';
  }

  void WriteRow(const Row& row, const OutputStream::Numbers& numbers, std::size_t number,
                OutputStream& text) const {
    const JudgementUnder& under = row.trial->under[row.illuminant];
    text.Append(names_);
    char* at = conditions_[row.illuminant].Write(text.Room(longestRest_));
    for (std::size_t i = 0; i < elements_.size(); ++i) {
      *at++ = ',';
      at = numbers.Write(number++, at, under.available);
    }
    for (const ShadeWord word : under.words) at = words_[static_cast<std::size_t>(word)].Write(at);
    for (const Verdict verdict : {under.components, under.total, under.verdict}) {
      at = verdicts_[static_cast<std::size_t>(verdict)].Write(at);
    }
    at = reasons_[static_cast<std::size_t>(under.breach.limit)].Write(at);
    *at++ = ',';
    at = numbers.Write(number++, at, under.breach.HasExcess());
    if (byEllipse_) {
      *at++ = ',';
      at = numbers.Write(number++, at);
    }
    for (int32_t k = 0; byGrade_ && k < 2; ++k) {
      *at++ = ',';
      at = numbers.Write(number++, at, under.available);
    }
    if (byInconstancy_) {
      *at++ = ',';
      at = numbers.Write(number++, at, under.available && row.illuminant > 0);
    }
    *at++ = '\n';
    text.EndPart(at);
  }

  bool byEllipse_, byGrade_, byInconstancy_;
  std::vector<std::size_t> elements_;  // of a difference that the system shows
  std::size_t numbersOfRow_ = 0;
  std::vector<std::string> geometries_;
  std::vector<ShortText> conditions_;  // illuminant and observer
  std::vector<ShortText> words_;       // by shade word, behind a comma
  std::vector<ShortText> verdicts_;    // by verdict, likewise
  std::vector<ShortText> reasons_;     // by broken limit, likewise
  std::size_t longestRest_ = 0;        // of a row without the names
  std::string names_;                  // of the trial that is written, with commas
  std::vector<Row> rows_;              // taken and not yet written
  std::vector<std::size_t> ends_;
};

class CsvJudgeTexts final : public JudgeTexts {
 public:
  CsvJudgeTexts(const JudgeSettings& settings, bool inNumbers, const OutputStream& output)
      : rows_(settings, inNumbers), stream_(OutputStream::InMemory(output)) {}
  void Clear() override {
    stream_.Clear();
    rows_.Clear();
  }
  void Add(const TrialJudgement& judgement) override { rows_.Add(judgement, stream_); }
  void Finish() override { rows_.Finish(stream_); }
  std::string_view Text(std::size_t trial) const override {
    const std::size_t begin = trial > 0 ? rows_.Ends()[trial - 1] : 0;
    return stream_.Text().substr(begin, rows_.Ends()[trial] - begin);
  }

 private:
  CsvJudgeRows rows_;
  OutputStream stream_;
};

class CsvJudgeOutput final : public JudgeOutput {
 public:
  CsvJudgeOutput(OutputStream& output, const JudgeSettings& settings, bool inNumbers)
      : output_(output), settings_(settings), inNumbers_(inNumbers), rows_(settings, inNumbers) {
    output_.Append("standard,trial,geometry,illuminant,observer");
    if (IsFine(settings)) output_.Append(",interval");
    for (const DifferenceColumn& column : DifferenceColumnsOf(settings.difference.system)) {
      output_.Append("," + ElementName(column.heading));
    }
    output_.Append(",word0,word1,word2,box,total,verdict,reason,excess");
    if (settings.ByEllipse()) output_.Append(",ellipse");
    if (settings.grade) output_.Append(",grade,half_step");
    if (settings.inconstancy) output_.Append(",inconstancy");
    output_.Append('\n');
  }
  void Add(const TrialJudgement& judgement) override {
    rows_.Add(judgement, output_);
    rows_.Finish(output_);
    rows_.Clear();
  }
  std::unique_ptr<JudgeTexts> MakeTexts() const override {
    return std::make_unique<CsvJudgeTexts>(settings_, inNumbers_, output_);
  }
  void AddText(std::string_view text) override { output_.Append(text); }
  void Finish(const JudgeSummaries&) override {}

 private:
  OutputStream& output_;
  const JudgeSettings& settings_;
  bool inNumbers_;
  CsvJudgeRows rows_;
};

class JsonJudgeOutput final : public JudgeOutput {
 public:
  JsonJudgeOutput(OutputStream& output, const JudgeSettings& settings)
      : array_(output),
        texts_(settings),
        system_(settings.difference.system),
        byEllipse_(settings.ByEllipse()),
        byGrade_(settings.grade.has_value()),
        byInconstancy_(settings.inconstancy.has_value()) {
    for (const int32_t element : DifferenceColumnElements(system_))
      isShown_[static_cast<std::size_t>(element)] = true;
  }
  void Add(const TrialJudgement& judgement) override {
    for (std::size_t i = 0; i < texts_.illuminants.size(); ++i) {
      const JudgementUnder& under = judgement.under[i];
      JsonObject object;
      object.Text("standard", judgement.standard);
      object.Text("trial", judgement.trial);
      if (judgement.geometry < 0) {
        object.Null("geometry");
      } else {
        object.Text("geometry", texts_.Geometry(judgement.geometry));
      }
      object.Text("illuminant", texts_.illuminants[i]);
      object.Integer("observer", texts_.observer);
      if (texts_.interval != kWavelengthStep) object.Integer("interval", texts_.interval);
      for (std::size_t k = 0; k < under.difference.size(); ++k)
        object.AppendNumber("elements", under.difference[k], under.available && isShown_[k]);
      for (const ShadeWord word : under.words) object.AppendText("words", TextOf(word));
      object.Integer("box", under.components);
      object.Integer("total", under.total);
      object.Integer("verdict", under.verdict);
      AddReason(under.breach, system_, object);
      if (byEllipse_) object.Number("ellipse", under.ellipsoidValue);
      if (byGrade_) {
        object.Number("grade", under.grade, under.available);
        object.Number("half_step", HalfStepOf(under), under.available);
      }
      if (byInconstancy_) object.Number("inconstancy", under.inconstancy, under.available && i > 0);
      array_.Add(object);
    }
  }
  void Finish(const JudgeSummaries&) override { array_.Finish(); }

 private:
  JsonArrayWriter array_;
  Texts texts_;
  int32_t system_;
  bool byEllipse_, byGrade_, byInconstancy_;
  std::array<bool, 7> isShown_{};  // elements that the system has
};

class TableJudgeOutput final : public JudgeOutput {
 public:
  TableJudgeOutput(const Format& format, OutputStream& output, const JudgeSettings& settings,
                   const JudgeColumns& shown)
      : format_(format),
        output_(output),
        settings_(settings),
        texts_(settings),
        columns_(DifferenceColumnsOf(settings.difference.system)),
        shown_(shown),
        byEllipse_(settings.ByEllipse()),
        rows_(MakeRowWriter(format, output, Columns())) {}

  void Add(const TrialJudgement& judgement) override {
    if (!std::exchange(hasTitle_, true)) WriteTitle(judgement.standard);
    for (std::size_t i = 0; i < judgement.under.size(); ++i) AddRow(judgement, i);
  }

  void Finish(const JudgeSummaries& summaries) override {
    if (!hasTitle_) WriteTitle("");
    rows_->Finish();
    output_.Append('\n');
    WriteSummaries(format_, output_, settings_, summaries);
  }

 private:
  void WriteTitle(const std::string& standard) {
    output_.Append(TitleOf(settings_.difference) + ", " +
                   IlluminantName(settings_.illuminants[0], settings_.observer, kNameObserver).ToUtf8());
    if (IsFine(settings_)) output_.Append(", sums at " + std::to_string(settings_.interval) + " nm");
    if (shown_.standards == JudgeColumns::kOne && !standard.empty()) {
      output_.Append(", standard " + Shortened(standard, kLongestCell));
    }
    output_.Append("\n\n");
  }

  std::vector<Column> Columns() const {
    std::vector<Column> columns;
    if (shown_.standards == JudgeColumns::kNamed) columns.push_back({"standard"});
    columns.push_back({"trial"});
    if (shown_.name) columns.push_back({"name"});
    if (shown_.geometry) columns.push_back({"geometry"});
    columns.push_back({"illuminant"});
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      columns.push_back({.name = columns_[i].heading, .room = RoomOfElement(i, columns_.size())});
    }
    columns.push_back({.name = "words", .room = Room::kSpare});
    if (byEllipse_) columns.push_back({"value"});
    if (settings_.grade) columns.insert(columns.end(), {{"grade"}, {"step"}});
    if (settings_.inconstancy) columns.push_back({"inconstancy"});
    for (const char* name : {byEllipse_ ? "ellipse" : "box", "total"}) {
      columns.push_back({.name = name, .room = Room::kSpare});
    }
    columns.push_back({.name = "verdict", .room = Room::kWhole});
    columns.push_back({.name = "reason", .room = Room::kWhole});
    return columns;
  }

  void AddRow(const TrialJudgement& judgement, std::size_t i) {
    const JudgementUnder& under = judgement.under[i];
    if (shown_.standards == JudgeColumns::kNamed) rows_->Text(judgement.standard);
    rows_->Text(judgement.trial);
    if (shown_.name) rows_->Text(judgement.name);
    if (shown_.geometry) rows_->Text(texts_.Geometry(judgement.geometry));
    rows_->Text(texts_.illuminants[i]);
    for (const DifferenceColumn& column : columns_) {
      const double element = under.difference[static_cast<std::size_t>(column.element)];
      under.available ? rows_->Known(element) : rows_->Number(element);
    }
    rows_->Text(JoinedWords(under.words));
    if (byEllipse_) rows_->Number(under.ellipsoidValue);
    if (settings_.grade) {
      under.available ? rows_->Known(under.grade) : rows_->Number(kUnset);
      rows_->Text(GradeText(HalfStepOf(under)));
    }
    if (settings_.inconstancy)
      under.available&& i > 0 ? rows_->Known(under.inconstancy) : rows_->Number(kUnset);
    for (const Verdict verdict : {under.components, under.total, under.verdict}) {
      rows_->Text(LookOf(verdict).text, LookOf(verdict).tint);
    }
    rows_->Text(ReasonText(under.breach, under.verdict, settings_.difference.system),
                LookOf(under.verdict).tint);
    rows_->EndRow();
  }

  Format format_;
  OutputStream& output_;
  const JudgeSettings& settings_;
  Texts texts_;
  std::vector<DifferenceColumn> columns_;
  JudgeColumns shown_;
  bool byEllipse_;
  bool hasTitle_ = false;
  std::unique_ptr<RowWriter> rows_;
};

}  // namespace

std::unique_ptr<JudgeOutput> MakeJudgeOutput(const Format& format, OutputStream& output,
                                             const JudgeSettings& settings, const JudgeColumns& columns) {
  output.SetFormat(format);
  if (format == Format::kCsv) {
    return std::make_unique<CsvJudgeOutput>(output, settings, columns.verdictNumbers);
  }
  if (format == Format::kJson) return std::make_unique<JsonJudgeOutput>(output, settings);
  return std::make_unique<TableJudgeOutput>(format, output, settings, columns);
}

void WriteSummaries(const Format& format, OutputStream& output, const JudgeSettings& settings,
                    const JudgeSummaries& summaries) {
  const std::string total = DifferenceColumnsOf(settings.difference.system).back().heading;
  const std::string& hueHeading = summaries.front().hueHeading;
  const std::string hue = hueHeading.empty() ? "mean hue" : "mean |" + hueHeading + "|";
  std::vector<Column> columns{{"illuminant"}};
  if (IsFine(settings)) columns.push_back({"interval"});
  for (const char* const count : {"samples", "pass", "warning", "fail"}) columns.push_back({count});
  const bool hasLots = std::ranges::any_of(summaries, &JudgeSummary::HasLots);
  if (hasLots) {
    columns.push_back({"lots"});
    columns.push_back({.name = "lots_pass", .heading = "lots pass", .room = Room::kSpare});
    columns.push_back({.name = "lots_warning", .heading = "lots warning", .room = Room::kSpare});
    columns.push_back({"lots_fail", "lots fail"});
  }
  const std::vector<Column> figures{{"mean", "mean " + total},
                                    {.name = "deviation", .heading = "st. dev.", .room = Room::kSpare},
                                    {.name = "median", .room = Room::kSpare},
                                    {.name = "percentile95", .heading = "95 % below", .room = Room::kSpare},
                                    {"largest"},
                                    {"trial", "of trial"},
                                    {.name = "mean_hue", .heading = hue, .room = Room::kSpare}};
  columns.insert(columns.end(), figures.begin(), figures.end());
  const auto rows = MakeRowWriter(format, output, columns);
  for (std::size_t i = 0; i < summaries.size(); ++i) {
    const JudgeSummary& summary = summaries[i];
    const auto [fail, warning, pass] = summary.verdicts;
    rows->Text(ShownIlluminant(settings.illuminants[i]));
    if (IsFine(settings)) rows->Integer(settings.interval);
    for (const int64_t count : {summary.Samples(), pass, warning, fail}) rows->Integer(count);
    if (hasLots) {
      const auto [lotsFail, lotsWarning, lotsPass] = summary.lots.Counts();
      for (const int64_t count : {summary.lots.Lots(), lotsPass, lotsWarning, lotsFail}) rows->Integer(count);
    }
    rows->Number(summary.totals.Mean());
    rows->Number(summary.totals.StandardDeviation());
    rows->Number(summary.totals.Percentile(50));
    rows->Number(summary.totals.Percentile(JudgeSummary::kHighPercentile));
    rows->Number(summary.totals.Largest());
    rows->Text(summary.largestTrial);
    rows->Number(summary.hues.Mean());
    rows->EndRow();
  }
  rows->Finish();
}

}  // namespace vrx::tool
