#include <vrxio/csv/csv_reader.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <utility>

#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/shown_text.h>
#include <vrxio/text/text.h>

namespace vrx::io {

namespace {

constexpr std::size_t kLargestChunk = std::size_t{64} << 10;
constexpr std::size_t kSmallestChunk = std::size_t{8} << 10;  // after a jump, most of a chunk is not wanted
constexpr int64_t kUnknownLine = std::numeric_limits<int64_t>::min() / 2;  // and on from there
constexpr std::size_t kBufferBytes = CsvReader::kMaxRecordBytes + kLargestChunk;

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

// Makes fractions whole / scale percent, so that one rounding is left.
void MovePoints(std::span<double> wholes, std::span<double> scales) {
  for (std::size_t i = 0; i < wholes.size(); ++i) {
    if (scales[i] >= 100) {
      scales[i] /= 100;
    } else {
      wholes[i] *= 100 / scales[i];
      scales[i] = 1;
    }
  }
}

}  // namespace

bool IsClosingMark(std::string_view line) {
  constexpr std::size_t kLongest = 80;
  line = Trimmed(line);
  if (line.size() > kLongest) return false;
  if (line.starts_with(">>>")) return true;
  constexpr std::string_view kMarks[] = {"end", "eof", "endoffile", "enddata", "endofdata"};
  constexpr std::string_view kSigns = "[]#<>*=- .:";
  std::string word;
  for (const char c : line) {
    if (c >= 'A' && c <= 'Z') {
      word += static_cast<char>(c - 'A' + 'a');
    } else if (c >= 'a' && c <= 'z') {
      word += c;
    } else if (c != '_' && kSigns.find(c) == std::string_view::npos) {
      return false;
    }
  }
  return std::ranges::find(kMarks, word) != std::end(kMarks);
}

CsvReader::CsvReader(const std::string& path) : CsvReader(OpenText(path), CsvDialect()) {}

CsvReader::CsvReader(std::istream& stream, std::string name)
    : CsvReader(WrapInput(stream, std::move(name)), CsvDialect()) {}

CsvReader::CsvReader(InputStream input, CsvDialect dialect)
    : input_(std::move(input)), dialect_(std::move(dialect)) {
  Start();
}

void CsvReader::Start() {
  buffer_ = std::make_unique_for_overwrite<char[]>(kBufferBytes + 1 + NumberShape::kBytes);
  chunk_ = kLargestChunk;
  ReadHeader();
}

// Reads more of the file behind what is there; false at its end.
bool CsvReader::Fill() {
  if (atEnd_) return false;
  if (begin_ > 0) {
    std::memmove(buffer_.get(), buffer_.get() + begin_, used_ - begin_);
    bufferOffset_ += begin_;
    used_ -= begin_;
    begin_ = 0;
  }
  const std::size_t wanted = std::min(chunk_, kBufferBytes - used_);
  input_.stream->read(buffer_.get() + used_, static_cast<std::streamsize>(wanted));
  if (input_.stream->bad()) FailReading(input_);
  const auto got = static_cast<std::size_t>(input_.stream->gcount());
  used_ += got;
  buffer_[used_] = '\n';
  atEnd_ = got < wanted;
  chunk_ = std::min(2 * chunk_, kLargestChunk);
  return got > 0;
}

// The line end of the record at begin_; null when nothing is left. A line end between quotes is part of a
// field, and a record with an odd number of quotes has one open.
const char* CsvReader::FindRecordEnd() {
  std::size_t searched = 0;  // bytes from begin_ on without the line end
  bool open = false;
  while (true) {
    char* const start = buffer_.get() + begin_;
    const std::size_t held = used_ - begin_;
    const void* const found = std::memchr(start + searched, '\n', held - searched);
    const std::size_t stop =
        found != nullptr ? static_cast<std::size_t>(static_cast<const char*>(found) - start) : held;
    if (std::memchr(start + searched, '"', stop - searched) != nullptr) {
      open ^= std::count(start + searched, start + stop, '"') % 2 != 0;
    }
    if (stop > kMaxRecordBytes) FailRow("the row is longer than 1 MiB");
    if (found != nullptr && !open) return start + stop;
    searched = found != nullptr ? stop + 1 : stop;
    if (found == nullptr && !Fill()) {
      if (open) FailRow("a quoted field is not closed");
      return held > 0 ? buffer_.get() + used_ : nullptr;
    }
  }
}

bool CsvReader::Next() {
  while (true) {
    line_ = nextLine_;
    column_ = 0;
    at_ = nullptr;
    const char* const end = FindRecordEnd();
    if (end == nullptr) return false;
    char* const start = buffer_.get() + begin_;
    offset_ = bufferOffset_ + begin_;
    const auto length = static_cast<std::size_t>(end - start);
    begin_ = std::min(begin_ + length + 1, used_);
    nextLine_ += 1 + (std::memchr(start, '"', length) ? std::count(start, start + length, '\n') : 0);
    recordEnd_ = start + length;
    if (recordEnd_ > start && recordEnd_[-1] == '\r') --recordEnd_;
    if (Trimmed(Between(start, recordEnd_)).empty()) continue;
    if (dialect_.skipComments && *start == '#') continue;
    const bool mayClose = *start == '>' || *start == '[' || *start == '#' || *start == 'e' || *start == 'E';
    if (mayClose && IsClosingMark(Between(start, recordEnd_))) continue;
    at_ = start;
    if (separator_ == ' ') CollapseBlanks();
    return true;
  }
}

// Makes one blank of each run of them, in place; those in quotes stay.
void CsvReader::CollapseBlanks() {
  char* write = at_;
  bool quoted = false;
  for (const char* read = at_; read != recordEnd_; ++read) {
    if (*read == '"') quoted = !quoted;
    if (quoted || !IsBlank(*read)) {
      *write++ = *read;
    } else if (write != at_ && write[-1] != ' ') {
      *write++ = ' ';
    }
  }
  if (write != at_ && write[-1] == ' ') --write;
  recordEnd_ = write;
}

// Lines before the header.
void CsvReader::SkipPreamble() {
  while (Position() < dialect_.headerOffset) {
    const uint64_t ahead = dialect_.headerOffset - Position();
    begin_ += static_cast<std::size_t>(std::min<uint64_t>(ahead, used_ - begin_));
    if (begin_ == used_ && !Fill()) break;
  }
  nextLine_ = dialect_.headerLine;
}

void CsvReader::ReadHeader() {
  if (!Fill()) throw InputError(input_.name + ": the file is empty");
  const std::string_view start(buffer_.get(), used_);
  if (start.starts_with("\xEF\xBB\xBF")) begin_ = 3;
  if (start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF")) {
    throw InputError(input_.name + ": the file is UTF-16; save it as UTF-8");
  }
  SkipPreamble();
  separator_ = dialect_.separator;
  header_ = dialect_.columns;
  if (header_.empty()) TakeHeader();
  decimalSeparator_ = separator_ == ',' ? '.' : ',';
  bodyOffset_ = Position();
  bodyLine_ = nextLine_;
}

void CsvReader::TakeHeader() {
  if (!Next()) throw InputError(input_.name + ": the file is empty");
  const std::string_view record = Between(at_, recordEnd_);
  for (const char candidate : {';', '\t', ','}) {
    if (dialect_.separator != 0) break;
    separator_ = candidate;
    if (record.find(candidate) != std::string_view::npos) break;
  }
  while (at_ != nullptr) {
    if (header_.size() == kMaxColumns) FailRow("more than 10000 columns");
    header_.emplace_back();  // the field being read is within the header
    header_.back() = Text();
  }
  while (header_.size() > 1 && header_.back().empty()) header_.pop_back();
}

void CsvReader::SkipRecord() {
  Next();
  bodyOffset_ = Position();
  bodyLine_ = nextLine_;
}

void CsvReader::Rewind() {
  SeekTo(bodyOffset_);
  chunk_ = kLargestChunk;
  nextLine_ = bodyLine_;
}

void CsvReader::SeekTo(uint64_t offset) {
  input_.stream->clear();
  input_.stream->seekg(static_cast<std::streamoff>(offset));
  bufferOffset_ = offset;
  begin_ = used_ = 0;
  atEnd_ = false;
  chunk_ = kSmallestChunk;
  nextLine_ = kUnknownLine;
}

// Fields --------------------------------------------------------------------------------------------------

void CsvReader::RequireField() {
  if (at_ == nullptr) {
    FailRow("the row is short: it has " + std::to_string(column_) + " of " + std::to_string(header_.size()) +
            " columns");
  }
  if (column_ >= header_.size()) FailLong();
  ++column_;
}

void CsvReader::EndRecord() {
  if (at_ == nullptr) return;
  const std::string_view rest = Between(at_, recordEnd_);
  if (rest.find_first_not_of(std::string{separator_, ' ', '\t'}) != std::string_view::npos) FailLong();
}

bool CsvReader::AreEmpty(std::span<const std::size_t> columns) const {
  std::size_t column = 0, next = 0;
  bool quoted = false;
  for (const char* at = at_; at != nullptr && at != recordEnd_ && next < columns.size(); ++at) {
    if (*at == '"') quoted = !quoted;
    if (*at == separator_ && !quoted) {
      if (column++ == columns[next]) ++next;
    } else if (column == columns[next] && *at != '"' && *at != '-' && !IsBlank(*at)) {
      return false;
    }
  }
  return true;
}

void CsvReader::FailLong() const {
  FailRow("the row is long: it has more than " + std::to_string(header_.size()) + " columns");
}

// The text of a quoted field that begins at `at`, and the cursor behind the field. The quotes are taken out
// in place.
std::string_view CsvReader::Unquoted(char* at) {
  char* const text = ++at;
  char* write = text;  // never ahead of `at`
  while (true) {
    for (; at != recordEnd_ && *at != '"'; ++at) *write++ = *at;
    if (at == recordEnd_) Fail("a quoted field is not closed");
    if (++at == recordEnd_ || *at != '"') break;
    *write++ = *at++;
  }
  while (at != recordEnd_ && *at == ' ' && separator_ != ' ') ++at;
  if (at != recordEnd_ && *at != separator_) Fail("text follows a quoted field");
  at_ = at == recordEnd_ ? nullptr : at + 1;
  return Between(text, write);
}

// The next field, without its quotes, as it stands.
std::string_view CsvReader::RawField() {
  RequireField();
  char* start = at_;
  while (start != recordEnd_ && *start == ' ') ++start;
  if (start != recordEnd_ && *start == '"') return Unquoted(start);
  char* const end = std::find(at_, recordEnd_, separator_);
  const std::string_view field = Between(at_, end);
  at_ = end == recordEnd_ ? nullptr : end + 1;
  if (field.find('"') != std::string_view::npos) Fail("a quote stands inside a field without quotes");
  return field;
}

std::string_view CsvReader::Text() {
  const std::string_view text = Trimmed(RawField());
  if (const char* const fault = TextFault(text, false)) Fail(fault);
  return text;
}

double CsvReader::SlowNumber(bool asPercent) {
  const std::string_view text = Trimmed(RawField());
  double value = 0;
  if (text.empty()) Fail("the field is empty; expected a number");
  const bool isNumber = asPercent ? ParseFractionAsPercent(text, value, decimalSeparator_)
                                  : ParseDecimal(text, decimalSeparator_, value);
  if (!isNumber) Fail("\"" + Shown(text) + "\" is not a number");
  return value;
}

double CsvReader::Number() {
  double value;
  Numbers({&value, 1});
  return value;
}

// Numbers as files mostly have them, up to the first other one; returns their count.
std::size_t CsvReader::ShortNumbers(std::span<double> values, bool asPercent) {
  if (at_ == nullptr) return 0;
  constexpr std::size_t kMost = 64;
  std::array<double, kMost> scales;  // divided by at the end, two or more at a time
  const std::size_t most = std::min({values.size(), kMost, header_.size() - column_});
  const char *at = at_, *const end = recordEnd_;
  const char separator = separator_;
  NumberShape shape = shape_;
  std::size_t count = 0;
  for (; count < most && at <= end; ++count) {
    const char* stop = at + shape.Length();
    if (!shape.Read(at, values[count]) || !((stop == end) | (*stop == separator))) {
      ShortDecimal number;
      stop = ReadShortDecimal(at, decimalSeparator_, number);
      if (stop == nullptr || (stop != end && *stop != separator)) break;
      values[count] = number.whole;
      scales[count] = kPowersOfTen[number.decimals];
      shape = NumberShape::Of(at, stop, number);
    } else {
      scales[count] = shape.Scale();
    }
    at = stop + 1;
  }
  if (asPercent) MovePoints(values.first(count), scales);
  for (std::size_t i = 0; i < count; ++i) values[i] /= scales[i];
  shape_ = shape;
  at_ = at > end ? nullptr : at_ + (at - at_);
  column_ += count;
  return count;
}

void CsvReader::Numbers(std::span<double> values, bool asPercent) {
  while (true) {
    values = values.subspan(ShortNumbers(values, asPercent));
    if (values.empty()) return;
    values.front() = SlowNumber(asPercent);
    values = values.subspan(1);
  }
}

// Messages ------------------------------------------------------------------------------------------------

std::string CsvReader::Place() const {
  return input_.name + (line_ > 0 ? ", line " + std::to_string(line_) : ", byte " + std::to_string(offset_));
}

void CsvReader::FailRow(const std::string& reason) const {
  throw InputError(Place() + ": " + reason);
}

void CsvReader::Fail(const std::string& reason) const {
  FailAt(column_ - 1, reason);
}

void CsvReader::FailAt(std::size_t column, const std::string& reason) const {
  throw InputError(PlaceAt(column) + ": " + reason);
}

std::string CsvReader::PlaceAt(std::size_t column) const {
  const bool isNamed = column < header_.size() && !header_[column].empty();
  const std::string heading = isNamed ? " (" + Shown(header_[column]) + ")" : std::string();
  return Place() + ", column " + std::to_string(column + 1) + heading;
}

}  // namespace vrx::io
