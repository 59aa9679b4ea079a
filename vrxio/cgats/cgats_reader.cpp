#include <vrxio/cgats/cgats_reader.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <utility>
#include <vector>

#include <vrxio/measurement/headings.h>
#include <vrxio/measurement/sample_columns.h>
#include <vrxio/text/byte_window.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/shown_text.h>
#include <vrxio/text/text.h>

namespace vrx::io {
namespace {

constexpr std::size_t kMaxLineBytes = std::size_t{1} << 20;
constexpr std::size_t kMaxFields = 10'000;
constexpr std::size_t kMaxTables = 1000;

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

// The next word of a line, unquoted, taken off it; null data at its end. "#" in front of a word ends the line. Two quotes in a
// quoted word are part of it, as some programs write one.
std::string_view TakeWord(std::string_view& line) {
  while (!line.empty() && IsBlank(line.front())) line.remove_prefix(1);
  if (line.empty() || line.front() == '#') {
    line = {};
    return {};
  }
  if (line.front() == '"') {
    line.remove_prefix(1);
    std::size_t end = std::min(line.find('"'), line.size());
    while (end + 1 < line.size() && line[end + 1] == '"')
      end = std::min(line.find('"', end + 2), line.size());
    const std::string_view word = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    return word.data() != nullptr ? word : std::string_view("");
  }
  std::size_t end = 0;
  while (end < line.size() && !IsBlank(line[end])) ++end;
  const std::string_view word = line.substr(0, end);
  line.remove_prefix(end);
  return word;
}

// A line without the comment at its end: a "#" in front of a word, outside of quotes.
std::string_view WithoutComment(std::string_view line) {
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"') quoted = !quoted;
    if (line[i] == '#' && !quoted && (i == 0 || IsBlank(line[i - 1]))) return line.substr(0, i);
  }
  return line;
}

// The fields of a line that tabs separate; empty ones at its end do not count.
std::vector<std::string_view> TabFields(std::string_view line) {
  std::vector<std::string_view> fields;
  while (true) {
    const std::size_t end = std::min(line.find('\t'), line.size());
    std::string_view field = line.substr(0, end);
    while (!field.empty() && IsBlank(field.front())) field.remove_prefix(1);
    while (!field.empty() && IsBlank(field.back())) field.remove_suffix(1);
    if (field.size() >= 2 && field.front() == '"' && field.back() == '"')
      field = field.substr(1, field.size() - 2);
    fields.push_back(field);
    if (end == line.size()) break;
    line.remove_prefix(end + 1);
  }
  while (!fields.empty() && fields.back().empty()) fields.pop_back();
  return fields;
}

// One table of the file, as far as its rows are concerned.
struct Table {
  SampleColumns columns;
  const MeasurementLayout* layout = nullptr;
  std::vector<std::string> fieldNames;
  std::size_t fields = 0;
  uint64_t firstRow = 0;  // where its rows begin: byte and line
  int64_t firstLine = 0;
  int64_t declaredSets = -1;
  bool tabsSeparate = false;
  std::size_t linesPerRow = 1;
  std::vector<std::string>
      pairWavelengths;  // by field: the text of the wavelength that every row must have there
  bool asksForScale = false;
};

class CgatsReader final : public MeasurementReader {
 public:
  CgatsReader(InputStream input, const ReadOptions& options)
      : options_(options), window_(std::move(input), "CGATS") {
    if (window_.More() && window_.Bytes().starts_with("\xEF\xBB\xBF")) window_.Skip(3);
    if (!OpenTable()) Fail("there is no table of curves or colours in it");
    if (CanSeek()) FindScale();
  }

  bool Next(Measurement& sample) override {
    while (!isEnded_) {
      if (ReadRow(sample)) return true;
      EndTable();
      isEnded_ = !OpenTable();
    }
    if (rows_ == 0) Fail("there is no row");
    if (IsScaleOpen()) AskForScale();
    return false;
  }

  const MeasurementLayout& FirstLayout() const override { return *tables_.front()->layout; }
  std::string_view FormName() const override { return "CGATS"; }
  bool HasIds() const override { return Columns().Has(ColumnRole::kId); }
  bool HasNames() const override { return Columns().Has(ColumnRole::kName); }
  bool HasStandards() const override { return Columns().Has(ColumnRole::kStandard); }
  bool HasGeometries() const override { return Columns().Has(ColumnRole::kGeometry); }
  bool HasXyz() const override { return Columns().HasXyz(); }
  int64_t CountUnmeasured() const override { return unmeasured_; }
  const std::string& Name() const override { return window_.Input().name; }
  uint64_t Size() const override { return window_.Input().size; }
  uint64_t Position() const override { return window_.Offset(); }
  uint64_t Offset() const override { return rowOffset_; }
  bool CanSeek() const override { return window_.Input().size > 0; }
  std::string RowPlace() const override { return PlaceOf(rowLine_); }

  void SeekTo(uint64_t offset) override {
    const auto later =
        std::ranges::find_if(tables_, [&](const auto& table) { return table->firstRow > offset; });
    UseTable(**std::prev(later));
    window_.SeekTo(offset, 0);
    pending_ = 0;
    setsInTable_ = kUnknown;
    isEnded_ = false;
  }
  void Rewind() override {
    UseTable(*tables_.front());
    window_.SeekTo(table_->firstRow, table_->firstLine);
    pending_ = 0;
    rows_ = setsInTable_ = unmeasured_ = 0;
    isEnded_ = false;
  }

 private:
  static constexpr int64_t kUnknown = -1'000'000'000'000'000;

  const SampleColumns& Columns() const { return tables_.front()->columns; }

  // X, Y, Z without curves have the scale open, until one of any table comes to 2. Of curves the first rows of a table tell it.
  bool IsScaleOpen() const {
    const auto isOpen = [](const auto& table) {
      return table->asksForScale && table->columns.Scale().IsOpen();
    };
    const auto isKnown = [](const auto& table) {
      return table->asksForScale && !table->columns.Scale().IsOpen();
    };
    return std::ranges::any_of(tables_, isOpen) && std::ranges::none_of(tables_, isKnown);
  }
  void FindScale() {
    if (!IsScaleOpen()) return;
    Measurement sample;
    while (IsScaleOpen() && Next(sample)) {
    }
    Rewind();
  }
  [[noreturn]] void AskForScale() const {
    const auto largest = [](const auto& table) { return table->columns.Scale().Largest(); };
    (*std::ranges::max_element(tables_, {}, largest))->columns.Scale().Ask(Name());
  }

  std::string PlaceOf(int64_t line) const { return window_.PlaceOf(line); }
  [[noreturn]] void FailAt(int64_t line, const std::string& reason) const {
    throw InputError(PlaceOf(line) + ": " + reason);
  }
  [[noreturn]] void Fail(const std::string& reason) const { FailAt(line_, reason); }

  void RequireText(std::string_view text) const {
    if (const char* const fault = TextFault(text, true)) Fail(fault);
  }

  // The next line without its end; false at the end of the file. It lives until the next one is read.
  bool NextLine(std::string_view& line) {
    window_.Skip(pending_);
    pending_ = 0;
    std::size_t searched = 0;
    while (true) {
      const std::string_view bytes = window_.Bytes();
      const std::size_t end = bytes.find('\n', searched);
      if (end != std::string_view::npos || (searched = bytes.size(), !window_.More())) {
        const std::string_view all = window_.Bytes();
        if (all.empty()) return false;
        const std::size_t length = std::min(all.find('\n', 0), all.size());
        line_ = window_.Line();
        line = all.substr(0, length);
        pending_ = std::min(length + 1, all.size());
        return true;
      }
      if (searched > kMaxLineBytes) Fail("a line is longer than 1 MiB");
    }
  }

  // A table that follows without names of its own goes on with those of this one.
  void UseTable(Table& table) {
    table_ = &table;
    fields_ = table.fieldNames;
  }

  // Keywords --------------------------------------------------------------------------------------------

  // Reads on to the rows of the next table that has curves or colours; false when there is none.
  bool OpenTable() {
    // A table goes on with the fields of the one before if it names none.
    conditions_ = MeasuringConditions();
    declaredSets_ = declaredFields_ = -1;
    norm_ = 0;
    areXyzPercent_ = false;
    std::string_view line;
    while (NextLine(line)) {
      std::string_view rest = line;
      const std::string_view word = TakeWord(rest);
      if (word.empty()) continue;
      if (word == "BEGIN_DATA_FORMAT") {
        ReadFields(rest);
      } else if (word == "BEGIN_DATA") {
        if (BeginData()) return true;
        SkipData();
      } else {
        TakeKeyword(word, rest);
      }
    }
    return false;
  }

  void ReadFields(std::string_view rest) {
    fields_.clear();
    while (true) {
      for (std::string_view word = TakeWord(rest); !word.empty(); word = TakeWord(rest)) {
        if (word == "END_DATA_FORMAT") return;
        if (fields_.size() == kMaxFields) Fail("more than 10000 fields");
        fields_.emplace_back(word);
      }
      if (!NextLine(rest)) Fail("the file ends within the names of the fields");
    }
  }

  void TakeKeyword(std::string_view word, std::string_view rest) {
    const std::string_view value = TakeWord(rest);
    double number = 0;
    const bool isNumber = ParseDecimal(value, '.', number);
    if (word == "NUMBER_OF_SETS" || word == "NUMBER_OF_FIELDS") {
      if (!isNumber || number < 0) Fail(std::string(word) + " is not a number");
      const int64_t count = number < 9e15 ? static_cast<int64_t>(number) : int64_t{9'000'000'000'000'000};
      (word == "NUMBER_OF_SETS" ? declaredSets_ : declaredFields_) = count;
    } else if (word == "SPECTRAL_NORM") {
      if (!isNumber || !(number > 0)) Fail("SPECTRAL_NORM is not a number above 0");
      norm_ = number;
    } else if (word == "NORMALIZED_TO_Y_100") {
      areXyzPercent_ = value == "YES";
    } else if (word == "MEAS_TYPE" && IsLight(value)) {
      Fail("the values are the power of a light, not reflectances");
    } else {
      TakeWords(word, value);
    }
  }

  static bool IsLight(std::string_view measured) {
    return measured.starts_with("EMI") || measured.starts_with("AMB") || measured.starts_with("FLASH");
  }

  // A word about the measurement, or another one, which may be kept.
  void TakeWords(std::string_view word, std::string_view value) {
    const MeasuringConditions before = conditions_;
    const bool isCondition = TakeCondition(word, value, conditions_);
    const bool isUsed = before.otherGeometry == conditions_.otherGeometry && before != conditions_;
    const bool isKept = options_.keepsOthers && !value.empty() && !isUsed && !IsStructure(word);
    if (isCondition || isKept) RequireText(value);
    if (isKept) AddRemark(word, value);
  }

  // Words that say again what the table shows.
  static bool IsStructure(std::string_view word) {
    constexpr std::string_view kWords[] = {"KEYWORD", "SPECTRAL_BANDS", "SPECTRAL_START_NM",
                                           "SPECTRAL_END_NM"};
    return std::ranges::find(kWords, word) != std::end(kWords);
  }

  // Rows ------------------------------------------------------------------------------------------------

  // Finds out what the fields mean; false when there are neither curves nor colours among them.
  bool BeginData() {
    if (fields_.empty()) Fail("BEGIN_DATA without BEGIN_DATA_FORMAT");
    const bool isTold = declaredFields_ >= 0 && declaredFields_ != static_cast<int64_t>(fields_.size());
    // The rows are held against the names, so the number says nothing more; files in use have it wrong.
    if (isTold) {
      Note("NUMBER_OF_FIELDS is " + std::to_string(declaredFields_) + ", but " +
           std::to_string(fields_.size()) + " are named");
    }
    const bool hasValues = std::ranges::any_of(fields_, [](const std::string& field) {
      return MeaningOf(field).role >= ColumnRole::kWavelength || IsPairValue(field);
    });
    if (!hasValues) {
      Note("a table without curves and colours, line " + std::to_string(line_));
      PassOver("the table in line " + std::to_string(line_));
      return false;
    }
    // A file that is read again has its tables already.
    const uint64_t firstRow = window_.Offset() + pending_;
    const auto known =
        std::ranges::find_if(tables_, [&](const auto& table) { return table->firstRow == firstRow; });
    if (known != tables_.end()) {
      UseTable(**known);
      setsInTable_ = 0;
      return true;
    }
    if (tables_.size() == kMaxTables) Fail("more than 1000 tables");
    auto table = std::make_unique<Table>();
    window_.Skip(std::exchange(pending_, 0));
    table->firstRow = window_.Offset();
    table->firstLine = window_.Line();
    NameFields(*table);
    table->columns =
        SampleColumns(names_, options_, true, [this](std::size_t column, const std::string& reason) {
          const std::string field =
              column < names_.size() ? ", field " + names_[column].substr(0, 40) : std::string();
          FailAt(line_, reason + field);
        });
    if (!table->columns.Choice().empty()) Note(table->columns.Choice());
    if (!table->columns.Unused().empty()) Note("fields that are not used: " + table->columns.Unused());
    table->fieldNames = fields_;
    table->fields = fields_.size();
    table->declaredSets = declaredSets_;
    LookAtRows(*table);
    table_ = table.get();
    table_->layout = &table_->columns.Begin(conditions_, scale_);
    table_->asksForScale = table_->columns.Scale().IsOpen();
    tables_.push_back(std::move(table));
    setsInTable_ = 0;
    return true;
  }

  void SkipData() {
    std::string_view line;
    while (NextLine(line)) {
      if (TakeWord(line) == "END_DATA") return;
    }
    Fail("the file ends within a table");
  }

  static bool IsPairValue(std::string_view field) {
    return field == "SPECTRAL_PCT" || field == "SPECTRAL_DEC";
  }

  // The fields as columns. Where they come in pairs, SPECTRAL_NM and SPECTRAL_PCT or SPECTRAL_DEC, the wavelengths stand in the
  // rows: those of the first row are taken, and every other row must have the same.
  void NameFields(Table& table) {
    names_ = fields_;
    areUsed_.clear();
    hasPairs_ = false;
    const std::vector<std::string_view> lines = FirstRows();
    std::vector<std::string_view> row;
    for (std::size_t i = 0; i + 1 < fields_.size(); ++i) {
      if (fields_[i] != "SPECTRAL_NM" || !IsPairValue(fields_[i + 1])) continue;
      if (!std::exchange(hasPairs_, true)) row = FirstRow(lines);
      if (row.size() < fields_.size()) Fail("the first row is short, or there is none");
      names_[i + 1] = "nm" + std::string(row[i]);
      if (WavelengthOf(names_[i + 1]) == 0) Fail("\"" + Shown(row[i]) + "\" is not a wavelength in nm");
      table.pairWavelengths.resize(fields_.size());
      table.pairWavelengths[i] = row[i];
      isDecimal_ = fields_[i + 1] == "SPECTRAL_DEC";
    }
  }

  std::vector<std::string_view> FirstRow(const std::vector<std::string_view>& lines) const {
    std::vector<std::string_view> row;
    for (const std::string_view line : lines) {
      std::vector<std::string_view> fields = TabFields(line);
      const std::vector<std::string_view> words = WordsOf(line);
      if (row.empty() && words.size() != fields_.size() && fields.size() == fields_.size()) return fields;
      row.insert(row.end(), words.begin(), words.end());
      if (row.size() >= fields_.size()) break;
    }
    return row;
  }

  // Learns from the first rows how fields are separated, how many lines a row has, and the scale.
  void LookAtRows(Table& table) {
    const std::vector<std::string_view> lines = FirstRows();
    std::size_t words = 0;
    for (std::size_t i = 0; i < lines.size() && words < table.fields; ++i) {
      words += WordsOf(lines[i]).size();
      if (i == 0 && words != table.fields && TabFields(lines[i]).size() == table.fields) {
        table.tabsSeparate = true;
        break;
      }
      if (words == table.fields) table.linesPerRow = i + 1;
    }
    double largest = -1;
    std::size_t field = 0;
    for (const std::string_view line : lines) {
      if (table.tabsSeparate) field = 0;
      for (const std::string_view word : table.tabsSeparate ? TabFields(line) : WordsOf(line)) {
        double value;
        if (field == table.fields) field = 0;
        const bool isValue = IsUsedValue(field++);
        if (isValue && ParseDecimal(word, ',', value)) largest = std::max(largest, value);
      }
    }
    SetScale(table, largest);
  }

  // The whole lines of the next 64 KiB of rows.
  std::vector<std::string_view> FirstRows() {
    constexpr std::size_t kEnough = std::size_t{64} << 10;
    while (window_.Bytes().size() < kEnough && window_.More()) {
    }
    std::string_view bytes = window_.Bytes();
    std::vector<std::string_view> lines;
    for (std::size_t seen = 0; !bytes.empty() && seen < kEnough;) {
      const std::size_t end = std::min(bytes.find('\n'), bytes.size());
      const std::string_view line = bytes.substr(0, end);
      bytes.remove_prefix(std::min(end + 1, bytes.size()));
      seen += line.size() + 1;
      std::string_view rest = line;
      const std::string_view word = TakeWord(rest);
      if (word == "END_DATA") break;
      if (word.data() != nullptr) lines.push_back(line);
    }
    return lines;
  }

  static std::vector<std::string_view> WordsOf(std::string_view line) {
    std::vector<std::string_view> words;
    for (std::string_view word = TakeWord(line); word.data() != nullptr; word = TakeWord(line))
      words.push_back(word);
    return words;
  }

  // Whether a field is a reflectance within the library's grid; what lies far outside may be noise.
  bool IsUsedValue(std::size_t field) {
    if (areUsed_.empty()) {
      for (const std::string& name : names_) {
        const Heading meaning = MeaningOf(name);
        areUsed_.push_back(meaning.role == ColumnRole::kWavelength && meaning.wavelength >= 360 &&
                           meaning.wavelength <= 750);
      }
    }
    return areUsed_[field];
  }

  // The standard leaves the scale open, and files come with both. A white or light patch tells them apart (value_scale.h).
  void SetScale(Table& table, double largest) {
    using Scale = ReadOptions::Scale;
    scale_ = ValueScale();
    scale_.mayExceed = options_.force;
    if (options_.scale == Scale::kPercent) return;
    if (options_.scale == Scale::kFraction) {
      scale_.norm = 1;
      scale_.isFraction = true;
    } else if (!table.columns.HasCurves()) {
      scale_.isOpen = !areXyzPercent_ && !table.columns.SayPercent();
    } else if (norm_ > 0) {
      scale_.norm = norm_;
    } else if (hasPairs_) {
      if (isDecimal_) scale_.norm = 1;
    } else if (table.columns.SayPercent()) {
      return;
    } else if (largest <= kSurelyFraction) {
      scale_.norm = 1;
      scale_.isFraction = scale_.isGuess = true;
      Note("values are read as fractions of 1: none of the first ones is above 1.5");
    } else if (largest < kSurelyPercent) {
      throw ScaleError(PlaceOf(line_), "the largest of the first values is between 1.5 and 2");
    }
  }

  // Counts a row that begins in this line.
  void BeginRow() {
    rowLine_ = line_;
    rowOffset_ = window_.Offset();
  }

  // The next row, with the blanks before it; false behind the last one.
  bool NextRow(std::string_view& line, std::string_view& rest) {
    do {
      if (!NextLine(line)) Fail("the file ends within a table: END_DATA is missing");
      rest = line;
      while (!rest.empty() && IsBlank(rest.front())) rest.remove_prefix(1);
    } while (rest.empty() || rest.front() == '#');
    if (rest.starts_with("END_DATA")) return false;
    BeginRow();
    if (table_->linesPerRow > 1) rest = line = JoinLines(line);
    return true;
  }

  // Whether all values of a row are empty or dashes.
  bool IsUnmeasured(std::string_view line) const {
    const std::vector<std::string_view> row = table_->tabsSeparate ? TabFields(line) : WordsOf(line);
    if (row.size() != table_->fields) return false;
    for (const SampleColumns::Run& run : table_->columns.Runs()) {
      for (std::size_t i = 0; run.meaning.role >= ColumnRole::kWavelength && i < run.count; ++i) {
        if (!row[run.column + i].empty() && row[run.column + i] != "-") return false;
      }
    }
    return true;
  }

  bool ReadRow(Measurement& sample) {
    std::string_view line, rest;
    while (true) {
      if (!NextRow(line, rest)) return false;
      if (!options_.lenient || !IsUnmeasured(line)) break;
      ++rows_;
      ++setsInTable_;
      ++unmeasured_;
    }
    sample = Measurement();
    if (table_->tabsSeparate) {
      ReadTabFields(line, sample);
    } else {
      ReadFieldsOf(rest, sample);
    }
    ++rows_;
    ++setsInTable_;
    table_->columns.Finish(rows_, sample);
    return true;
  }

  // The lines of one row, as one.
  std::string_view JoinLines(std::string_view first) {
    joined_ = WithoutComment(first);
    const uint64_t offset = rowOffset_;
    for (std::size_t i = 1; i < table_->linesPerRow;) {
      std::string_view line;
      if (!NextLine(line) || line.starts_with("END_DATA")) Fail("the table ends within a row");
      std::string_view rest = line;
      if (TakeWord(rest).data() == nullptr) continue;  // a comment, or blank
      ++i;
      joined_ += ' ';
      joined_ += WithoutComment(line);
      if (joined_.size() > kMaxLineBytes) Fail("a row is longer than 1 MiB");
    }
    rowOffset_ = offset;
    return joined_;
  }

  void ReadFieldsOf(std::string_view rest, Measurement& sample) {
    std::size_t field = 0;
    for (const SampleColumns::Run& run : table_->columns.Runs()) {
      if (run.meaning.role >= ColumnRole::kWavelength) {
        ReadValues(rest, run, field);
      } else {
        const std::string_view word = TakeWord(rest);
        if (word.data() == nullptr) FailShort(field);
        ++field;
        TakeText(run, word, sample);
      }
    }
    if (TakeWord(rest).data() != nullptr)
      Fail("the row is long: it has more than " + std::to_string(table_->fields) + " fields");
  }

  void ReadValues(std::string_view& rest, const SampleColumns::Run& run, std::size_t& field) {
    const bool areFractions = table_->columns.AreFractions(run);
    for (double& value : table_->columns.Values(run)) {
      while (!rest.empty() && (rest.front() == ' ' || rest.front() == '\t')) rest.remove_prefix(1);
      const char* const stop = rest.empty()   ? nullptr
                               : areFractions ? ShortDecimal<2>(rest, value)
                                              : ShortDecimal<0>(rest, value);
      if (stop != nullptr) {
        rest.remove_prefix(static_cast<std::size_t>(stop - rest.data()));
      } else {
        const std::string_view word = TakeWord(rest);
        if (word.data() == nullptr) FailShort(field);
        TakeNumber(word, field, areFractions, value);
      }
      ++field;
    }
  }

  // The end of a short number at the start of `rest` that a blank or the end of the line follows; null for any other. A
  // byte that is no part of a number stands behind every line.
  template <std::size_t kShift>
  static const char* ShortDecimal(std::string_view rest, double& value) {
    const char* const end = rest.data() + rest.size();
    const char* const stop = ParseShortDecimal<kShift>(rest.data(), '.', value);
    return stop != nullptr && (stop == end || IsBlank(*stop)) ? stop : nullptr;
  }

  void ReadTabFields(std::string_view line, Measurement& sample) {
    const std::vector<std::string_view> row = TabFields(line);
    if (row.size() < table_->fields) FailShort(row.size());
    if (row.size() > table_->fields) Fail("the row is long");
    std::size_t field = 0;
    for (const SampleColumns::Run& run : table_->columns.Runs()) {
      if (run.meaning.role < ColumnRole::kWavelength) {
        TakeText(run, row[field++], sample);
        continue;
      }
      for (double& value : table_->columns.Values(run)) {
        TakeNumber(row[field], field, table_->columns.AreFractions(run), value);
        ++field;
      }
    }
  }

  void TakeText(const SampleColumns::Run& run, std::string_view text, Measurement& sample) {
    if (run.meaning.role == ColumnRole::kPairWavelength) return CheckWavelength(run.column, text);
    const bool isUsed = run.meaning.role > ColumnRole::kDevice ||
                        (run.meaning.role == ColumnRole::kDevice && options_.keepsOthers);
    if (isUsed) RequireText(text);
    table_->columns.TakeText(run, text, sample);
  }

  void CheckWavelength(std::size_t field, std::string_view text) const {
    if (table_->pairWavelengths.empty() || table_->pairWavelengths[field] == text) return;
    double first = 0, here = 0;
    const std::string& expected = table_->pairWavelengths[field];
    if (expected.empty()) return;
    if (ParseDecimal(expected, ',', first) && ParseDecimal(text, ',', here) && first == here) return;
    Fail("field " + std::to_string(field + 1) + ": the wavelength is " + Shown(text) + ", and " +
         Shown(expected) + " in the first row");
  }

  void TakeNumber(std::string_view word, std::size_t field, bool isFraction, double& value) const {
    if (isFraction ? ParseFractionAsPercent(word, value, ',') : ParseDecimal(word, ',', value)) return;
    Fail("field " + std::to_string(field + 1) + ": \"" + Shown(word) + "\" is not a number");
  }

  [[noreturn]] void FailShort(std::size_t fields) const {
    Fail("the row is short: it has " + std::to_string(fields) + " of " + std::to_string(table_->fields) +
         " fields");
  }

  // After END_DATA: the number of rows that the table announced.
  void EndTable() {
    const int64_t declared = table_->declaredSets;
    if (declared < 0 || setsInTable_ < 0 || declared == setsInTable_) return;
    Deviate("NUMBER_OF_SETS is " + std::to_string(declared) + ", but there are " +
            std::to_string(setsInTable_));
  }

  void Deviate(const std::string& what) {
    if (!options_.lenient) Fail(what + "; --lenient ignores it");
    Note(what);
  }

  ReadOptions options_;
  ByteWindow window_;
  bool isEnded_ = false;
  std::size_t pending_ = 0;  // bytes of the line that was read last
  int64_t line_ = 1;

  // From the keywords before a table.
  MeasuringConditions conditions_;
  std::vector<std::string> fields_;
  std::vector<std::string> names_;  // the fields, those of pairs by their wavelengths
  std::vector<bool> areUsed_;       // of the names
  bool hasPairs_ = false, isDecimal_ = false;
  int64_t declaredSets_ = -1, declaredFields_ = -1;
  double norm_ = 0;
  bool areXyzPercent_ = false;
  ValueScale scale_;

  std::vector<std::unique_ptr<Table>> tables_;
  Table* table_ = nullptr;
  int64_t rows_ = 0, setsInTable_ = 0, unmeasured_ = 0;
  int64_t rowLine_ = 0;
  uint64_t rowOffset_ = 0;
  std::string joined_;
};

}  // namespace

bool IsCgats(std::string_view beginning) {
  if (beginning.starts_with("\xEF\xBB\xBF")) beginning.remove_prefix(3);
  const std::size_t first = beginning.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos || beginning[first] == '<' || beginning[first] == '{') return false;
  while (!beginning.empty()) {
    const std::size_t end = std::min(beginning.find('\n'), beginning.size());
    std::string_view line = beginning.substr(0, end);
    const std::string_view word = TakeWord(line);
    if (word == "BEGIN_DATA_FORMAT" || word == "BEGIN_DATA" || word == "NUMBER_OF_FIELDS") return true;
    beginning.remove_prefix(std::min(end + 1, beginning.size()));
  }
  return false;
}

std::unique_ptr<MeasurementReader> ReadCgats(InputStream input, const ReadOptions& options) {
  return std::make_unique<CgatsReader>(std::move(input), options);
}

}  // namespace vrx::io
