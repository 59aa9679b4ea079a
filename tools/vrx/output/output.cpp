
#include "tools/vrx/output/output.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

#include <vrxmath/foundation/numbers.h>

#include "tools/vrx/base/command_line.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/output/json_output.h"
#include "tools/vrx/output/shortest_decimal.h"

namespace vrx::tool {

void AddFormatOption(Command& owner, Format& format) {
  Command command = owner.Group("Output");
  command.AddChoice("--format", format.kind, {"table", "csv", "json"}, "Format of the results");
  command.AddOption("--digits", format.digits, "Number of decimals in tables and csv")
      .Shows("0 to 9 [as many as needed]")
      .Check([](const std::string& text) {
        return text.size() == 1 && text >= "0" && text <= "9" ? "" : "must be a whole number from 0 to 9";
      });
  command.AddFlag("--csv-safe", format.csvSafe,
                  "Put an apostrophe before any text in csv that a spreadsheet would run as a formula");
  command.AddFlag("--decimal-comma", format.decimalComma,
                  "Write decimal commas in csv, and semicolons between columns");
}

namespace {

constexpr std::size_t kLongestFixed = OutputStream::kLongestNumber;  // sign, 309 digits, point and decimals

// The digits of `value` with so many decimals, by whole-number arithmetic, and where they end; null where that
// might round the wrong way: for large numbers and for those half-way between two neighbours.
char* WriteShortFixed(double value, int decimals, char* out) {
  static constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
  constexpr double kLargest = 1e9;    // below it the product is off by less than 1e-7
  constexpr double kDoubtful = 1e-6;  // about a half
  const double scaled = std::fabs(value) * kPowersOfTen[decimals];
  if (!(scaled < kLargest)) return nullptr;
  auto digits = static_cast<uint32_t>(scaled);
  const double fraction = scaled - digits;
  if (std::fabs(fraction - 0.5) < kDoubtful) return nullptr;
  digits += fraction > 0.5 ? 1 : 0;
  char text[12];
  char* end = std::to_chars(text, text + sizeof text, digits).ptr;
  if (std::signbit(value)) *out++ = '-';
  for (std::ptrdiff_t missing = decimals + 1 - (end - text); missing > 0; --missing) {
    std::move_backward(text, end, end + 1);
    *text = '0';
    ++end;
  }
  out = std::copy(text, end - decimals, out);
  if (decimals > 0) *out++ = '.';
  return std::copy(end - decimals, end, out);
}

// Writes `value` as AppendFixed promises and returns the number of characters.
std::size_t WriteFixed(double value, int decimals, char* out, bool isKnown = false) {
  if (!isKnown && IsUnset(value)) {
    *out = '-';
    return 1;
  }
  if (std::isnan(value)) value = std::fabs(value);  // its sign says nothing
  char* end = WriteShortFixed(value, decimals, out);
  if (end == nullptr) {
    end = std::to_chars(out, out + kLongestFixed, value, std::chars_format::fixed, decimals).ptr;
  }
  if (*out == '-' && std::all_of(out + 1, end, [](char c) { return c == '0' || c == '.'; })) {
    std::copy(out + 1, end--, out);
  }
  return static_cast<std::size_t>(end - out);
}

// Line by line on a terminal: one of Windows decodes each write by itself, and two writes could share a character.
bool WriteAll(std::FILE* file, std::string_view text, bool byLines) {
  while (!text.empty()) {
    const std::size_t size = byLines ? std::min(text.find('\n'), text.size() - 1) + 1 : text.size();
    if (std::fwrite(text.data(), 1, size, file) != size || std::fflush(file) != 0) return false;
    text.remove_prefix(size);
  }
  return true;
}

}  // namespace

// OutputStream ------------------------------------------------------------------------------------------

OutputStream::OutputStream(std::FILE* file)
    : file_(file),
      onTerminal_(IsTerminal(file)),
      buffer_(std::make_unique_for_overwrite<char[]>(kBufferBytes)) {}

OutputStream::OutputStream(const Format& format, bool onTerminal)
    : onTerminal_(onTerminal),
      format_(format),
      room_(kBufferBytes / 8),
      buffer_(std::make_unique_for_overwrite<char[]>(room_)) {}

OutputStream::~OutputStream() {
  if (finished_ || !sent_ || file_ == nullptr) return;
  constexpr std::string_view kMark = "\n# incomplete: the reason is on standard error\n";
  std::fwrite(kMark.data(), 1, kMark.size(), file_);
  std::fflush(file_);
}

void OutputStream::Send() {
  if (file_ == nullptr) return Grow();
  sent_ = sent_ || used_ > 0;
  if (format_.decimalComma && format_.kind == Format::kCsv) TurnPointsIntoCommas();
  const std::size_t bytes = std::exchange(used_, 0);
  if (!WriteAll(file_, {buffer_.get(), bytes}, onTerminal_)) {
    finished_ = true;  // there is nobody left to warn
    if (errno == EPIPE) throw ReaderGone();
    throw OutputError(std::string("cannot write the results: ") + std::strerror(errno));
  }
}

// Outside of quotes a comma separates and a point is one of a number: texts that have either are quoted.
void OutputStream::TurnPointsIntoCommas() {
  for (char& c : std::span(buffer_.get(), used_)) {
    if (c == '"') isQuoted_ = !isQuoted_;
    if (isQuoted_) continue;
    if (c == ',')
      c = ';';
    else if (c == '.')
      c = ',';
  }
}

void OutputStream::Grow() {
  auto larger = std::make_unique_for_overwrite<char[]>(2 * room_);
  std::memcpy(larger.get(), buffer_.get(), used_);
  buffer_ = std::move(larger);
  room_ *= 2;
}

char* OutputStream::Room(std::size_t bytes) {
  if (room_ - used_ < bytes) Send();
  return buffer_.get() + used_;
}

void OutputStream::AppendInParts(std::string_view text) {
  while (text.size() > room_ - used_) {
    const std::size_t part = room_ - used_;
    std::memcpy(buffer_.get() + used_, text.data(), part);
    used_ = room_;
    text.remove_prefix(part);
    Send();
  }
  Append(text);
}

void OutputStream::AppendSpaces(std::size_t count) {
  static constexpr std::string_view kSpaces = "                                ";
  for (; count > kSpaces.size(); count -= kSpaces.size()) Append(kSpaces);
  Append(kSpaces.substr(0, count));
}

void OutputStream::AppendShown(std::string_view text) {
  onTerminal_ ? Append(ShownText(text)) : Append(text);
}

void OutputStream::AppendNumber(double value, bool isKnown) {
  EndPart(WriteNumber(value, Room(kLongestNumber), isKnown));
}

char* OutputStream::WriteNumber(double value, char* out, bool isKnown) const {
  if (!isKnown && IsUnset(value)) return out;
  if (format_.digits != Format::kShortest && !std::isnan(value)) {
    return out + WriteFixed(value, format_.digits, out, isKnown);
  }
  if (value == 0.0) {  // of either sign
    *out = '0';
    return out + 1;
  }
  if (std::isnan(value)) return std::copy_n("nan", 3, out);  // whatever its sign
  return WriteShortest(value, out);
}

void OutputStream::AppendFixed(double value, int decimals) {
  used_ += WriteFixed(value, decimals, Room(kLongestFixed));
}

void OutputStream::AppendCsvText(std::string_view text) {
  field_.clear();
  AddCsvField(text, field_);
  Append(field_);
}

namespace {

// With `marksToo` points and semicolons are quoted too.
void AddQuoted(std::string_view text, bool marksToo, std::string& to) {
  bool isPlain = true;  // without an early end: names are short
  for (const char c : text) isPlain &= c != ',' && c != '"' && c != '\r' && c != '\n';
  if (marksToo) isPlain &= text.find_first_of(".;") == std::string_view::npos;
  if (isPlain) {
    to += text;
    return;
  }
  to += '"';
  for (const char c : text) {
    if (c == '"') to += '"';
    to += c;
  }
  to += '"';
}

}  // namespace

void OutputStream::AddCsvField(std::string_view text, std::string& to) const {
  if (!onTerminal_ && !format_.csvSafe) return AddQuoted(text, format_.decimalComma, to);
  const bool isFormula = format_.csvSafe && io::StartsFormula(text);
  AddQuoted((isFormula ? "'" : "") + (onTerminal_ ? ShownText(text) : std::string(text)),
            format_.decimalComma, to);
}

void OutputStream::Finish() {
  Send();
  finished_ = true;
}

// Rows --------------------------------------------------------------------------------------------------

std::string Tinted(std::string_view text, Tint tint, bool useColour) {
  static constexpr const char* kCodes[] = {"", "\x1b[32m", "\x1b[33m", "\x1b[31m", "\x1b[1m"};
  if (!useColour || tint == Tint::kPlain) return std::string(text);
  return kCodes[static_cast<std::size_t>(tint)] + std::string(text) + "\x1b[0m";
}

namespace {

class CsvRows final : public RowWriter {
 public:
  CsvRows(OutputStream& output, const Format& format, const std::vector<Column>& columns) : output_(output) {
    output_.SetFormat(format);
    for (const Column& column : columns) Text(column.name, Tint::kPlain);
    EndRow();
  }
  void Text(std::string_view text, Tint) override {
    Separate();
    output_.AppendCsvText(text);
  }
  void Words(std::string_view plain, std::string_view) override { Text(plain, Tint::kPlain); }
  void Number(double value, Tint) override {
    Separate();
    output_.AppendNumber(value);
  }
  void Known(double value) override {
    Separate();
    output_.AppendNumber(value, true);
  }
  void Integer(int64_t value) override {
    Separate();
    output_.Append(std::to_string(value));
  }
  void EndRow() override {
    output_.Append('\n');
    first_ = true;
  }
  void Finish() override {}

 private:
  void Separate() {
    if (!std::exchange(first_, false)) output_.Append(',');
  }

  OutputStream& output_;
  bool first_ = true;
};

class JsonRows final : public RowWriter {
 public:
  JsonRows(OutputStream& output, std::vector<Column> columns)
      : array_(output), columns_(std::move(columns)) {}
  void Text(std::string_view text, Tint) override { object_.Text(NextName(), text); }
  void Words(std::string_view plain, std::string_view) override { object_.Text(NextName(), plain); }
  void Number(double value, Tint) override { object_.Number(NextName(), value); }
  void Known(double value) override { object_.Number(NextName(), value, true); }
  void Integer(int64_t value) override { object_.Integer(NextName(), value); }
  void EndRow() override {
    array_.Add(object_);
    object_ = JsonObject();
    column_ = 0;
  }
  void Finish() override { array_.Finish(); }

 private:
  const std::string& NextName() { return columns_[column_++].name; }

  JsonArrayWriter array_;
  std::vector<Column> columns_;
  JsonObject object_;
  std::size_t column_ = 0;
};

// Rows are held back until there are enough of them to choose the widths, then written as they come; a later
// cell that is wider pushes its row to the right.
class TableRows final : public RowWriter {
 public:
  TableRows(OutputStream& output, const Format& format, std::vector<Column> columns)
      : output_(output), columns_(std::move(columns)), useColour_(UseColour()) {
    for (Column& column : columns_) {
      if (format.digits != Format::kShortest) column.decimals = format.digits;
      if (column.heading.empty()) column.heading = column.name;
      widths_.push_back(DisplayWidth(column.heading));
    }
    leftOut_.resize(columns_.size());
  }
  void Text(std::string_view text, Tint tint) override {
    const std::string shown = Shortened(text, isFitted_ ? widths_[column_] : kLongestCell);
    Put({shown, tint, false});
  }
  void Words(std::string_view, std::string_view shown) override { Text(shown, Tint::kPlain); }
  void Number(double value, Tint tint) override {
    char text[kLongestFixed];
    Put({{text, WriteFixed(value, columns_[column_].decimals, text)}, tint, true});
  }
  void Known(double value) override {
    char text[kLongestFixed];
    Put({{text, WriteFixed(value, columns_[column_].decimals, text, true)}, Tint::kPlain, true});
  }
  void Integer(int64_t value) override { Put({std::to_string(value), Tint::kPlain, true}); }
  void EndRow() override {
    if (laidOut_) EndLine();
    column_ = 0;
    if (!laidOut_ && held_.size() == kHeldRows * columns_.size()) LayOut();
  }
  void Finish() override {
    if (!laidOut_) LayOut();
    std::string names;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      if (leftOut_[i]) names += (names.empty() ? "" : ", ") + columns_[i].heading;
    }
    if (!names.empty()) output_.Append("\n(no room for: " + names + ")\n");
  }

 private:
  struct Cell {
    std::string_view text;
    Tint tint;
    bool toTheRight;
  };
  struct HeldCell {
    std::string text;
    Tint tint;
    bool toTheRight;
  };
  static constexpr std::size_t kHeldRows = 256;
  static constexpr std::size_t kGap = 2;                        // blanks between columns
  static constexpr std::size_t kNarrowest = 8, kLongName = 32;  // texts, shortened as far as goes or hardly

  void Put(const Cell& cell) {
    if (laidOut_) return Write(cell);
    held_.push_back({std::string(cell.text), cell.tint, cell.toTheRight});
    widths_[column_] = std::max(widths_[column_], DisplayWidth(cell.text));
    ++column_;
  }
  void LayOut();
  [[nodiscard]] std::size_t Width() const;
  void FitTo(std::size_t terminalWidth);
  [[nodiscard]] std::size_t LeastWidth(std::size_t i, std::size_t width) const;
  void LeaveOut(Room room, std::size_t terminalWidth, std::size_t textWidth);
  void Write(const Cell& cell);
  void EndLine() {
    output_.Append('\n');
    column_ = blanks_ = 0;
  }

  OutputStream& output_;
  std::vector<Column> columns_;
  std::vector<std::size_t> widths_;
  bool useColour_;
  bool laidOut_ = false;
  bool isFitted_ = false;  // columns of text are narrower than they would like to be
  std::vector<bool> leftOut_;
  std::size_t column_ = 0;
  std::size_t blanks_ = 0;  // before the next cell of the line
  std::vector<HeldCell> held_;
};

std::size_t TableRows::Width() const {
  std::size_t width = 0;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (!leftOut_[i]) width += (width > 0 ? kGap : 0) + widths_[i];
  }
  return width;
}

// Leaves columns out by their room, takes back what fits beside the others, and shortens texts where that is not enough.
void TableRows::FitTo(std::size_t terminalWidth) {
  LeaveOut(Room::kSpare, terminalWidth, kLongName);
  LeaveOut(Room::kLast, terminalWidth, kNarrowest);
  for (std::size_t width = Width(); width > terminalWidth; --width) {
    std::size_t widest = columns_.size();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      if (!leftOut_[i] && widths_[i] > LeastWidth(i, kNarrowest) &&
          (widest == columns_.size() || widths_[i] > widths_[widest]))
        widest = i;
    }
    if (widest == columns_.size()) return;
    --widths_[widest];
    isFitted_ = true;
  }
}

// The width that column `i` asks for where its texts may be shortened to `width`.
std::size_t TableRows::LeastWidth(std::size_t i, std::size_t width) const {
  const bool isText = !held_.empty() && !held_[i].toTheRight;
  if (!isText || columns_[i].room != Room::kNeeded) return widths_[i];
  return std::min(widths_[i], std::max(width, DisplayWidth(columns_[i].heading)));
}

// Leaves columns of one room out, the last ones first, until the others fit with texts of `textWidth`, and takes back
// what fits beside those.
void TableRows::LeaveOut(Room room, std::size_t terminalWidth, std::size_t textWidth) {
  const auto wanted = [&](std::size_t i) { return kGap + LeastWidth(i, textWidth); };
  const std::size_t most = terminalWidth + kGap;
  std::size_t all = 0;
  for (std::size_t i = 0; i < columns_.size(); ++i) all += leftOut_[i] ? 0 : wanted(i);
  std::vector<std::size_t> out;
  for (std::size_t i = columns_.size(); i-- > 0 && all > most;) {
    if (columns_[i].room != room) continue;
    leftOut_[i] = true;
    out.push_back(i);
    all -= wanted(i);
  }
  for (; !out.empty(); out.pop_back()) {
    const std::size_t i = out.back();
    if (all + wanted(i) > most) continue;
    leftOut_[i] = false;
    all += wanted(i);
  }
}

void TableRows::LayOut() {
  laidOut_ = true;
  if (const std::size_t terminal = TerminalWidth(); terminal > 0) FitTo(terminal);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    Write({columns_[i].heading, Tint::kHeading, !held_.empty() && held_[i].toTheRight});
  }
  EndLine();
  for (const HeldCell& cell : std::exchange(held_, {})) {
    const bool isCut = !cell.toTheRight && DisplayWidth(cell.text) > widths_[column_];
    Write({isCut ? Shortened(cell.text, widths_[column_]) : cell.text, cell.tint, cell.toTheRight});
    if (column_ == columns_.size()) EndLine();
  }
}

void TableRows::Write(const Cell& cell) {
  const std::size_t column = column_++;
  if (leftOut_[column]) return;
  const std::size_t width = DisplayWidth(cell.text);
  const std::size_t padding = widths_[column] > width ? widths_[column] - width : 0;
  output_.AppendSpaces(blanks_ + (cell.toTheRight ? padding : 0));
  if (useColour_ && cell.tint != Tint::kPlain) {
    output_.Append(Tinted(cell.text, cell.tint, true));
  } else {
    output_.Append(cell.text);
  }
  blanks_ = (cell.toTheRight ? 0 : padding) + kGap;
}

}  // namespace

std::unique_ptr<RowWriter> MakeRowWriter(const Format& format, OutputStream& output,
                                         std::vector<Column> columns) {
  if (format == Format::kCsv) return std::make_unique<CsvRows>(output, format, columns);
  if (format == Format::kJson) return std::make_unique<JsonRows>(output, std::move(columns));
  return std::make_unique<TableRows>(output, format, std::move(columns));
}

}  // namespace vrx::tool
