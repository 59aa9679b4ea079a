#include <vrxio/csv/csv_layout.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <vrxio/measurement/headings.h>
#include <vrxio/measurement/value_scale.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/text.h>

namespace vrx::io {
namespace {

constexpr std::size_t kMostLines = 400;   // that are looked at
constexpr double kShortestInTable = 200;  // nm; bare numbers below are values, not wavelengths
constexpr double kLongestInTable = 2600;  // nm
constexpr std::size_t kFewestWavelengths = 3;

struct Line {
  std::size_t offset;
  int64_t number;
  std::string_view text;
  char separator = ',';
  std::vector<std::string> fields;
};

std::string_view TrimmedLine(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

char SeparatorOf(std::string_view text) {
  for (const char candidate : {';', '\t'}) {
    if (text.find(candidate) != std::string_view::npos) return candidate;
  }
  return ',';
}

// The fields of a line, unquoted; empty ones at its end do not count.
std::vector<std::string> FieldsOf(std::string_view text, char separator) {
  std::vector<std::string> fields(1);
  bool quoted = false;
  for (const char c : text) {
    if (c == '"') {
      quoted = !quoted;
    } else if (c == separator && !quoted) {
      if (separator != ' ' || !fields.back().empty()) fields.emplace_back();
    } else {
      fields.back() += c;
    }
  }
  for (std::string& field : fields) field = TrimmedLine(field);
  while (fields.size() > 1 && fields.back().empty()) fields.pop_back();
  return fields;
}

std::vector<Line> LinesOf(std::string_view beginning) {
  std::vector<Line> lines;
  std::size_t offset = beginning.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  for (int64_t number = 1; offset < beginning.size() && lines.size() < kMostLines; ++number) {
    const std::size_t end = std::min(beginning.find('\n', offset), beginning.size());
    const std::string_view text = TrimmedLine(beginning.substr(offset, end - offset));
    if (!text.empty() && !IsClosingMark(text)) {
      lines.push_back({offset, number, text, SeparatorOf(text), {}});
      lines.back().fields = FieldsOf(text, lines.back().separator);
    }
    offset = end + 1;
  }
  return lines;
}

bool AreNumbers(const std::vector<std::string>& fields, std::size_t from = 0);

// Whether blanks separate what may be a row of data: where they do its fields are numbers, and where commas do they are not.
bool AreBlankSeparated(const Line& line) {
  if (line.separator != ',' || line.text.find(' ') == std::string_view::npos) return false;
  const std::vector<std::string> fields = FieldsOf(line.text, ' ');
  constexpr std::size_t kTexts = 2;  // an id and a name may stand before the values
  const std::size_t from = std::min(kTexts, fields.size() - 1);
  return fields.size() >= 2 && AreNumbers(fields, from) &&
         (line.fields.size() < 2 || !AreNumbers(line.fields, 1));
}

// Makes the fields of a table that blanks separate: its rows, and the lines before them that have as many fields or, without a
// heading for the first one, one fewer.
void SplitAtBlanks(std::vector<Line>& lines) {
  std::vector<bool> areRows;
  areRows.reserve(lines.size());
  for (const Line& line : lines) areRows.push_back(AreBlankSeparated(line));
  for (std::size_t i = lines.size(); i-- > 0;) {
    Line& line = lines[i];
    std::vector<std::string> fields = FieldsOf(line.text, ' ');
    const bool isAbove = i + 1 < lines.size() && lines[i + 1].separator == ' ' && line.separator == ',' &&
                         line.fields.size() == 1 &&
                         (fields.size() == lines[i + 1].fields.size() ||
                          (areRows[i + 1] && fields.size() + 1 == lines[i + 1].fields.size()));
    if (!areRows[i] && !isAbove) continue;
    line.separator = ' ';
    line.fields = std::move(fields);
  }
}

bool IsNumber(const std::string& field, double& value) {
  return ParseDecimal(field, ',', value);
}

bool AreNumbers(const std::vector<std::string>& fields, std::size_t from) {
  double value;
  return std::all_of(fields.begin() + static_cast<std::ptrdiff_t>(std::min(from, fields.size())),
                     fields.end(), [&](const std::string& field) { return IsNumber(field, value); });
}

bool AreMonotonic(const std::vector<double>& values) {
  return std::ranges::adjacent_find(values, std::ranges::less_equal()) == values.end() ||
         std::ranges::adjacent_find(values, std::ranges::greater_equal()) == values.end();
}

// True for a record that names the columns of a table of measurements.
bool IsHeader(const Line& line) {
  std::vector<double> wavelengths;
  bool areBare = true;
  std::size_t colors = 0, texts = 0;
  for (const std::string& field : line.fields) {
    const Heading heading = MeaningOf(field);
    double number;
    if (heading.role == ColumnRole::kWavelength) {
      wavelengths.push_back(heading.wavelength);
      areBare = areBare && IsNumber(field, number);
    }
    colors += heading.role == ColumnRole::kColor;
    texts += !field.empty() && !IsNumber(field, number);
  }
  if (wavelengths.size() < kFewestWavelengths) return colors >= 3;
  if (!areBare) return true;
  // Numbers alone may be values as well: as wavelengths they go one way and stand together.
  return AreMonotonic(wavelengths) && std::ranges::min(wavelengths) >= kShortestInTable &&
         wavelengths.size() + texts >= line.fields.size() - std::min<std::size_t>(line.fields.size(), 2);
}

// The number of records from `first` on that begin with wavelengths going one way and have nothing but numbers.
std::size_t CountWavelengthRows(const std::vector<Line>& lines, std::size_t first) {
  std::vector<double> wavelengths;
  for (std::size_t i = first; i < lines.size(); ++i) {
    const std::vector<std::string>& fields = lines[i].fields;
    const double wavelength = WavelengthOf(fields.front());
    if (fields.size() < 2 || fields.size() != lines[first].fields.size() || wavelength < kShortestInTable ||
        wavelength > kLongestInTable || !AreNumbers(fields, 1)) {
      break;
    }
    wavelengths.push_back(wavelength);
    if (!AreMonotonic(wavelengths)) break;
  }
  return wavelengths.size();
}

// A record of units such as "nm,%,%".
bool AreUnits(const std::vector<std::string>& fields) {
  return std::ranges::all_of(fields,
                             [](const std::string& field) {
                               const std::string plain = PlainText(field);
                               double number;
                               const bool isSign = field.find_first_of("%[-") != std::string::npos &&
                                                   plain.size() <= 2 && !IsNumber(field, number);
                               return field.empty() || isSign || plain == "nm" || plain == "percent" ||
                                      plain == "reflectance";
                             }) &&
         std::ranges::any_of(fields, [](const std::string& field) { return !field.empty(); });
}

// The value of a remark before the header, "Instrument: X" or "Date;2024-05-01"; empty where there is none.
std::string_view RemarkOf(std::string_view text) {
  const std::size_t end = text.find_first_of(":=;,\t");
  if (end == std::string_view::npos) return {};
  std::string_view value = TrimmedLine(text.substr(end + 1));
  while (!value.empty() && std::string_view(":=;,\t\" ").find(value.front()) != std::string_view::npos) {
    value.remove_prefix(1);
  }
  while (!value.empty() && std::string_view(";,\t\" ").find(value.back()) != std::string_view::npos) {
    value.remove_suffix(1);
  }
  return value;
}

bool TakeRemark(std::string_view text, MeasuringConditions& conditions) {
  while (text.starts_with('#') || text.starts_with(' ')) text.remove_prefix(1);
  const std::size_t end = text.find_first_of(":=;,\t");
  return end != std::string_view::npos && TakeCondition(text.substr(0, end), RemarkOf(text), conditions);
}

class LayoutFinder {
 public:
  LayoutFinder(const std::string& name, std::string_view beginning, const ReadOptions& options)
      : name_(name), options_(options), lines_(LinesOf(beginning)) {
    SplitAtBlanks(lines_);
  }

  CsvLayout Find() {
    if (lines_.empty()) return layout_;  // the reader says that the file is empty
    if (!options_.wavelengths.empty() && !options_.columns.empty())
      throw InputError("--wavelengths and --columns cannot be used together");
    if (!options_.wavelengths.empty()) return WithoutHeader();
    if (!options_.columns.empty()) return WithColumns();
    std::size_t i = 0;
    for (; i < lines_.size(); ++i) {
      if (IsComment(i)) continue;
      if (IsHeader(lines_[i])) return InColumns(i);
      if (CountWavelengthRows(lines_, i) >= kFewestWavelengths) return InRows(i);
    }
    RefuseNumbers();
    return layout_;  // the first record is the header, of which the reader says what is wrong with it
  }

 private:
  bool IsComment(std::size_t i) const { return lines_[i].text.starts_with('#'); }

  [[noreturn]] void Fail(const Line& line, const std::string& reason) const {
    throw InputError(name_ + ", line " + std::to_string(line.number) + ": " + reason);
  }

  // Takes up what stands before record `end`, and makes it the first one.
  void StartAt(std::size_t end) {
    for (std::size_t i = 0; i < end; ++i) {
      if (IsLightPower(lines_[i].text) || IsLightPower(RemarkOf(lines_[i].text))) RefuseLight(lines_[i]);
      layout_.dialect.skipComments = layout_.dialect.skipComments || IsComment(i);
      const std::string otherGeometry = layout_.conditions.otherGeometry;
      const bool isCondition = TakeRemark(lines_[i].text, layout_.conditions);
      const bool isKept = options_.keepsOthers && otherGeometry != layout_.conditions.otherGeometry;
      if (isCondition || options_.keepsOthers) RequireText(lines_[i]);
      if (!isCondition || isKept) layout_.unusedLines.emplace_back(lines_[i].text);
    }
    layout_.dialect.headerOffset = lines_[end].offset;
    layout_.dialect.headerLine = lines_[end].number;
    layout_.dialect.separator = lines_[end].separator;
  }

  void RequireText(const Line& line) const {
    if (const char* const fault = TextFault(line.text, true)) Fail(line, fault);
  }

  [[noreturn]] void RefuseLight(const Line& line) const {
    Fail(line, "the values are the power of a light, not reflectances");
  }

  // A heading fewer than columns: the first column, of the numbers or names of the rows, has none.
  void AddFirstHeading(std::size_t header, std::size_t row) {
    if (row >= lines_.size()) return;
    const std::vector<std::string>&names = lines_[header].fields, &fields = lines_[row].fields;
    double number = 0;
    const bool maybeId = !IsNumber(fields.front(), number) || number == std::floor(number);
    if (fields.size() != names.size() + 1 || !maybeId) return;
    for (std::size_t i = 0; i < names.size(); ++i) {
      double value;
      if (MeaningOf(names[i]).role >= ColumnRole::kWavelength && !IsNumber(fields[i + 1], value)) return;
    }
    RequireText(lines_[header]);
    layout_.dialect.columns.emplace_back();
    layout_.dialect.columns.insert(layout_.dialect.columns.end(), names.begin(), names.end());
    layout_.dialect.headerOffset = lines_[header + 1].offset;
    layout_.dialect.headerLine = lines_[header + 1].number;
  }

  CsvLayout InColumns(std::size_t header) {
    using Orientation = ReadOptions::Wavelengths;
    const std::string first = PlainText(lines_[header].fields.front());
    const bool maybeRows = (first.empty() || IsWavelengthWord(first)) &&
                           CountWavelengthRows(lines_, header + 1) >= kFewestWavelengths;
    if (maybeRows && options_.orientation == Orientation::kByContent) {
      Fail(lines_[header],
           "the wavelengths may be in the columns or in the rows; choose with --wavelengths-in columns or "
           "--wavelengths-in rows");
    }
    if (options_.orientation == Orientation::kInRows) {
      if (CountWavelengthRows(lines_, header + 1) > 0) return InRows(header + 1);
      const auto isWavelength = [](const std::string& field) { return WavelengthOf(field) > 0; };
      if (std::ranges::any_of(lines_[header].fields, isWavelength)) {
        Fail(lines_[header], "the wavelengths are in the columns, not in the rows as --wavelengths-in says");
      }
    }
    StartAt(header);
    const bool isLight =
        header + 1 < lines_.size() && std::ranges::any_of(lines_[header + 1].fields, IsLightPower);
    if (isLight) RefuseLight(lines_[header + 1]);
    layout_.hasUnits = header + 1 < lines_.size() && AreUnits(lines_[header + 1].fields);
    if (layout_.hasUnits) TakeUnits(header + 1);
    const std::size_t row = header + (layout_.hasUnits ? 2 : 1);
    RefuseDecimalCommas(header, row);
    AddFirstHeading(header, row);
    return layout_;
  }

  static bool IsWavelengthWord(const std::string& plain) {
    return plain.starts_with("nm") || plain.starts_with("wavelength") || plain == "wl" || plain == "lambda";
  }

  void TakeUnits(std::size_t line) {
    layout_.sayPercent = layout_.sayPercent || std::ranges::any_of(lines_[line].fields, IsPercentUnit);
  }

  // "400,5,410,6": the comma separates and is the decimal sign as well.
  void RefuseDecimalCommas(std::size_t header, std::size_t row) const {
    if (row >= lines_.size() || lines_[header].separator != ',') return;
    const std::size_t columns = lines_[header].fields.size();
    const std::size_t fields = lines_[row].fields.size();
    std::size_t values = 0;
    for (const std::string& field : lines_[header].fields) values += WavelengthOf(field) > 0;
    if (values > 0 && fields == columns + values) {
      Fail(lines_[row],
           "commas separate the columns and seem to be decimal signs too; save the file with semicolons, "
           "tabs or decimal points");
    }
  }

  CsvLayout InRows(std::size_t first) {
    if (options_.orientation == ReadOptions::Wavelengths::kInColumns) {
      Fail(lines_[first], "the wavelengths are in the rows, not in the columns as --wavelengths-in says");
    }
    const std::vector<std::string>& fields = lines_[first].fields;
    std::size_t header = first;
    while (header > 0 && lines_[header - 1].fields.size() == fields.size() &&
           AreUnits(lines_[header - 1].fields)) {
      --header;
      layout_.hasUnits = true;
      TakeUnits(header);
    }
    const bool hasNames = options_.orientation == ReadOptions::Wavelengths::kInRows ||
                          (header > 0 && !AreNumbers(lines_[header - 1].fields, 1));
    const bool isNamed =
        header > 0 && !IsComment(header - 1) && lines_[header - 1].fields.size() == fields.size() && hasNames;
    StartAt(isNamed ? header - 1 : first);
    layout_.hasUnits = layout_.hasUnits && isNamed;
    layout_.wavelengthsInRows = true;
    layout_.dialect.separator = lines_[first].separator;
    if (isNamed) TakeUnits(header - 1);
    if (isNamed) return layout_;
    layout_.dialect.columns.emplace_back("nm");
    for (std::size_t i = 1; i < fields.size(); ++i) layout_.dialect.columns.push_back(std::to_string(i));
    return layout_;
  }

  CsvLayout WithoutHeader() {
    std::size_t first = 0;
    while (first + 1 < lines_.size() && IsComment(first)) ++first;
    const std::vector<double> wavelengths = ParseWavelengthRange(options_.wavelengths, "--wavelengths");
    const std::size_t columns = lines_[first].fields.size();
    if (IsHeader(lines_[first])) {
      Fail(lines_[first], "the file has a header of its own; --wavelengths is for files without one");
    }
    StartAt(first);
    std::vector<std::string>& names = layout_.dialect.columns;
    if (columns > wavelengths.size()) names.emplace_back("id");
    if (columns > wavelengths.size() + 1) names.emplace_back("name");
    for (const double nm : wavelengths) names.push_back(ShortestText(nm));
    if (names.size() != columns) {
      Fail(lines_[first], "the rows have " + std::to_string(columns) + " columns, --wavelengths names " +
                              std::to_string(wavelengths.size()) + "; an id and a name may come before them");
    }
    return layout_;
  }

  CsvLayout WithColumns() {
    std::size_t first = 0;
    while (first + 1 < lines_.size() && IsComment(first)) ++first;
    if (IsHeader(lines_[first])) {
      Fail(lines_[first], "the file has a header of its own; --columns is for files without one");
    }
    StartAt(first);
    layout_.dialect.columns = options_.columns;
    if (lines_[first].fields.size() == options_.columns.size()) return layout_;
    Fail(lines_[first], "the rows have " + std::to_string(lines_[first].fields.size()) +
                            " columns, --columns names " + std::to_string(options_.columns.size()));
  }

  // A table of numbers alone: what its columns may be.
  void RefuseNumbers() const {
    const auto line = std::ranges::find_if(lines_, [](const Line& l) { return !l.text.starts_with('#'); });
    if (line == lines_.end()) return;
    const std::vector<std::string>& fields = line->fields;
    double value;
    const std::size_t from = IsNumber(fields.front(), value) ? 0 : 1;
    if (fields.size() < kFewestWavelengths + from || !AreNumbers(fields, from)) return;
    std::string text = std::to_string(fields.size()) +
                       " columns without a header; name their wavelengths, such as --wavelengths ";
    const struct {
      std::size_t count;
      const char* range;
    } kUsual[] = {{31, "400-700/10"}, {36, "380-730/10"}, {39, "360-740/10"}, {40, "360-750/10"},
                  {43, "360-780/10"}, {16, "400-700/20"}, {61, "400-700/5"},  {81, "380-780/5"},
                  {301, "400-700/1"}, {401, "380-780/1"}};
    std::string ranges;
    for (std::size_t count = fields.size(); count + 1 >= fields.size() && count > 0; --count) {
      for (const auto& usual : kUsual) {
        if (usual.count == count) ranges += (ranges.empty() ? "" : " or ") + std::string(usual.range);
      }
    }
    const bool mayBeColors = fields.size() - from == 3;
    Fail(*line, text + (ranges.empty() ? "380-730/10" : ranges) +
                    (mayBeColors ? std::string(", or the columns, such as --columns ") +
                                       (from > 0 ? "id," : "") + "L,a,b"
                                 : ""));
  }

  const std::string& name_;
  const ReadOptions& options_;
  std::vector<Line> lines_;
  CsvLayout layout_;
};

}  // namespace

CsvLayout FindCsvLayout(const std::string& name, std::string_view beginning, const ReadOptions& options) {
  return LayoutFinder(name, beginning, options).Find();
}

}  // namespace vrx::io
