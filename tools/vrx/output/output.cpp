
#include "tools/vrx/output/output.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

#include <vrxmath/foundation/numbers.h>

#include "tools/vrx/command_line.h"
#include "tools/vrx/output/json_output.h"
#include "tools/vrx/output/terminal.h"

namespace vrx::tool {

void AddFormatOption(Command& command, Format& format) {
  command.AddChoice("--format", format, {"table", "csv", "json"}, "How the results are written");
}

namespace {

constexpr std::size_t kLongestFixed = 330;  // sign, 309 digits, point and decimals

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
std::size_t WriteFixed(double value, int decimals, char* out) {
  if (IsUnset(value)) {
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

}  // namespace

// OutputStream ------------------------------------------------------------------------------------------

OutputStream::OutputStream(std::FILE* file)
    : file_(file), buffer_(std::make_unique_for_overwrite<char[]>(kBufferBytes)) {}

OutputStream::~OutputStream() {
  if (finished_ || !sent_) return;
  constexpr std::string_view kMark = "\n# incomplete: the reason is on standard error\n";
  std::fwrite(kMark.data(), 1, kMark.size(), file_);
  std::fflush(file_);
}

void OutputStream::Send() {
  sent_ = sent_ || used_ > 0;
  const std::size_t bytes = std::exchange(used_, 0);
  if (std::fwrite(buffer_.get(), 1, bytes, file_) != bytes || std::fflush(file_) != 0) {
    finished_ = true;  // there is nobody left to warn
    throw OutputError(std::string("cannot write the results: ") + std::strerror(errno));
  }
}

char* OutputStream::Room(std::size_t bytes) {
  if (kBufferBytes - used_ < bytes) Send();
  return buffer_.get() + used_;
}

void OutputStream::Append(std::string_view text) {
  if (text.empty()) return;  // its pointer may be null, which memcpy must not see
  while (text.size() > kBufferBytes - used_) {
    const std::size_t part = kBufferBytes - used_;
    std::memcpy(buffer_.get() + used_, text.data(), part);
    used_ = kBufferBytes;
    text.remove_prefix(part);
    Send();
  }
  std::memcpy(buffer_.get() + used_, text.data(), text.size());
  used_ += text.size();
}

void OutputStream::AppendSpaces(std::size_t count) {
  static constexpr std::string_view kSpaces = "                                ";
  for (; count > kSpaces.size(); count -= kSpaces.size()) Append(kSpaces);
  Append(kSpaces.substr(0, count));
}

void OutputStream::AppendNumber(double value) {
  if (IsUnset(value)) return;
  if (std::isnan(value)) return Append("nan");  // whatever its sign
  constexpr std::size_t kLongest = 32;
  char* const at = Room(kLongest);
  used_ += static_cast<std::size_t>(std::to_chars(at, at + kLongest, value).ptr - at);
}

void OutputStream::AppendFixed(double value, int decimals) {
  used_ += WriteFixed(value, decimals, Room(kLongestFixed));
}

void OutputStream::AppendCsvText(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) return Append(text);
  Append('"');
  for (const char c : text) {
    if (c == '"') Append('"');
    Append(c);
  }
  Append('"');
}

void OutputStream::Finish() {
  Send();
  finished_ = true;
}

// JSON --------------------------------------------------------------------------------------------------

nlohmann::ordered_json JsonNumber(double value) {
  if (IsUnset(value) || !std::isfinite(value)) return nullptr;
  return value;
}

void JsonArrayWriter::Add(const nlohmann::ordered_json& element) {
  output_.Append(std::exchange(empty_, false) ? "[\n" : ",\n");
  output_.Append(element.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

void JsonArrayWriter::Finish() {
  output_.Append(empty_ ? "[]\n" : "\n]\n");
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
  CsvRows(OutputStream& output, const std::vector<Column>& columns) : output_(output) {
    for (const Column& column : columns) Text(column.name, Tint::kPlain);
    EndRow();
  }
  void Text(std::string_view text, Tint) override {
    Separate();
    output_.AppendCsvText(text);
  }
  void Number(double value, Tint) override {
    Separate();
    output_.AppendNumber(value);
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
  void Text(std::string_view text, Tint) override { Put(std::string(text)); }
  void Number(double value, Tint) override { Put(JsonNumber(value)); }
  void Integer(int64_t value) override { Put(value); }
  void EndRow() override {
    array_.Add(object_);
    object_ = nlohmann::ordered_json::object();
    column_ = 0;
  }
  void Finish() override { array_.Finish(); }

 private:
  void Put(nlohmann::ordered_json value) { object_[columns_[column_++].name] = std::move(value); }

  JsonArrayWriter array_;
  std::vector<Column> columns_;
  nlohmann::ordered_json object_ = nlohmann::ordered_json::object();
  std::size_t column_ = 0;
};

// Line ends and what a terminal obeys: neither may break a table.
bool IsControl(char c) {
  return (c >= '\0' && c < ' ') || c == 0x7F;
}

// Characters that a UTF-8 text takes on a screen, taking each code point for one.
std::size_t DisplayWidth(std::string_view text) {
  return static_cast<std::size_t>(
      std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

// Rows are held back until there are enough of them to choose the widths, then written as they come; a later
// cell that is wider pushes its row to the right.
class TableRows final : public RowWriter {
 public:
  TableRows(OutputStream& output, std::vector<Column> columns)
      : output_(output), columns_(std::move(columns)), useColour_(UseColour()) {
    for (Column& column : columns_) {
      if (column.heading.empty()) column.heading = column.name;
      widths_.push_back(DisplayWidth(column.heading));
    }
  }
  void Text(std::string_view text, Tint tint) override {
    if (std::ranges::none_of(text, IsControl)) return Put({text, tint, false});
    std::string plain(text);
    std::ranges::replace_if(plain, IsControl, ' ');
    Put({plain, tint, false});
  }
  void Number(double value, Tint tint) override {
    char text[kLongestFixed];
    Put({{text, WriteFixed(value, columns_[column_].decimals, text)}, tint, true});
  }
  void Integer(int64_t value) override { Put({std::to_string(value), Tint::kPlain, true}); }
  void EndRow() override {
    if (laidOut_) output_.Append('\n');
    column_ = 0;
    if (!laidOut_ && held_.size() == kHeldRows * columns_.size()) LayOut();
  }
  void Finish() override {
    if (!laidOut_) LayOut();
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
  static constexpr std::size_t kGap = 2;  // blanks between columns

  void Put(const Cell& cell) {
    if (laidOut_) return Write(cell);
    held_.push_back({std::string(cell.text), cell.tint, cell.toTheRight});
    widths_[column_] = std::max(widths_[column_], DisplayWidth(cell.text));
    ++column_;
  }
  void LayOut();
  void Write(const Cell& cell);

  OutputStream& output_;
  std::vector<Column> columns_;
  std::vector<std::size_t> widths_;
  bool useColour_;
  bool laidOut_ = false;
  std::size_t column_ = 0;
  std::vector<HeldCell> held_;
};

void TableRows::LayOut() {
  laidOut_ = true;
  const auto endRow = [this] {
    output_.Append('\n');
    column_ = 0;
  };
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    Write({columns_[i].heading, Tint::kHeading, !held_.empty() && held_[i].toTheRight});
  }
  endRow();
  for (const HeldCell& cell : std::exchange(held_, {})) {
    Write({cell.text, cell.tint, cell.toTheRight});
    if (column_ == columns_.size()) endRow();
  }
}

void TableRows::Write(const Cell& cell) {
  const std::size_t width = DisplayWidth(cell.text);
  const std::size_t padding = widths_[column_] > width ? widths_[column_] - width : 0;
  const bool isLast = ++column_ == columns_.size();
  if (cell.toTheRight) output_.AppendSpaces(padding);
  if (useColour_ && cell.tint != Tint::kPlain) {
    output_.Append(Tinted(cell.text, cell.tint, true));
  } else {
    output_.Append(cell.text);
  }
  if (!isLast) output_.AppendSpaces((cell.toTheRight ? 0 : padding) + kGap);
}

}  // namespace

std::unique_ptr<RowWriter> MakeRowWriter(Format format, OutputStream& output, std::vector<Column> columns) {
  if (format == Format::kCsv) return std::make_unique<CsvRows>(output, columns);
  if (format == Format::kJson) return std::make_unique<JsonRows>(output, std::move(columns));
  return std::make_unique<TableRows>(output, std::move(columns));
}

}  // namespace vrx::tool
