#include <vrxio/csv_reader.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>
#include <utility>

#include <vrxio/decimal.h>
#include <vrxio/input_error.h>

namespace vrx::io {

namespace {

constexpr std::size_t kLargestChunk = std::size_t{256} << 10;
constexpr std::size_t kSmallestChunk = std::size_t{8} << 10;  // after a jump, most of a chunk is not wanted
constexpr int64_t kUnknownLine = std::numeric_limits<int64_t>::min() / 2;  // and on from there
constexpr std::size_t kBufferBytes = CsvReader::kMaxRecordBytes + kLargestChunk;

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

// A text for a message: not too long, and without characters that a terminal obeys.
std::string Shown(std::string_view text) {
  constexpr std::size_t kLongest = 40;
  std::string shown(text.substr(0, kLongest));
  std::ranges::replace_if(
      shown, [](char c) { return (c >= '\0' && c < ' ') || c == 0x7F; }, '?');
  return text.size() > kLongest ? shown + "..." : shown;
}

// Length of the UTF-8 sequence at the start of `text`; 0 when it is not valid.
std::size_t SequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const std::size_t length = byte(0) < 0x80   ? 1
                             : byte(0) < 0xC2 ? 0
                             : byte(0) < 0xE0 ? 2
                             : byte(0) < 0xF0 ? 3
                             : byte(0) < 0xF5 ? 4
                                              : 0;
  if (length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  const bool overlongOrSurrogate = (byte(0) == 0xE0 && byte(1) < 0xA0) || (byte(0) == 0xED && byte(1) > 0x9F);
  const bool outside = (byte(0) == 0xF0 && byte(1) < 0x90) || (byte(0) == 0xF4 && byte(1) > 0x8F);
  return overlongOrSurrogate || outside ? 0 : length;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = SequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::unique_ptr<std::istream> OpenFile(const std::string& path) {
  errno = 0;
  auto file = std::make_unique<std::ifstream>(path, std::ios::binary);
  if (!*file) throw InputError(path + ": " + (errno != 0 ? std::strerror(errno) : "cannot be opened"));
  return file;
}

}  // namespace

CsvReader::CsvReader(const std::string& path)
    : owned_(path == "-" ? nullptr : OpenFile(path)),
      stream_(owned_ ? owned_.get() : &std::cin),
      name_(owned_ ? path : "standard input") {
  if (owned_) {
    stream_->seekg(0, std::ios::end);
    if (const std::streamoff size = stream_->tellg(); *stream_ && size > 0) {
      size_ = static_cast<uint64_t>(size);
    }
    stream_->clear();
    stream_->seekg(0);
    stream_->clear();  // a pipe cannot seek, and need not
  }
  Start();
}

CsvReader::CsvReader(std::istream& stream, std::string name) : stream_(&stream), name_(std::move(name)) {
  Start();
}

void CsvReader::Start() {
  buffer_ = std::make_unique_for_overwrite<char[]>(kBufferBytes + 1);
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
  stream_->read(buffer_.get() + used_, static_cast<std::streamsize>(wanted));
  if (stream_->bad()) throw InputError(name_ + ": cannot be read");
  const auto got = static_cast<std::size_t>(stream_->gcount());
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
    if (Trimmed({start, recordEnd_}).empty()) continue;
    at_ = start;
    return true;
  }
}

void CsvReader::ReadHeader() {
  if (!Fill()) throw InputError(name_ + ": the file is empty");
  const std::string_view start(buffer_.get(), used_);
  if (start.starts_with("\xEF\xBB\xBF")) begin_ = 3;
  if (start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF")) {
    throw InputError(name_ + ": the file is UTF-16; save it as UTF-8");
  }
  if (!Next()) throw InputError(name_ + ": the file is empty");
  const std::string_view record(at_, recordEnd_);
  for (const char candidate : {';', '\t', ','}) {
    separator_ = candidate;
    if (record.find(candidate) != std::string_view::npos) break;
  }
  decimalSeparator_ = separator_ == ',' ? '.' : ',';
  while (at_ != nullptr) {
    if (header_.size() == kMaxColumns) FailRow("more than 10000 columns");
    header_.emplace_back();  // the field being read is within the header
    header_.back() = Text();
  }
  bodyOffset_ = Position();
  bodyLine_ = nextLine_;
}

void CsvReader::Rewind() {
  SeekTo(bodyOffset_);
  chunk_ = kLargestChunk;
  nextLine_ = bodyLine_;
}

void CsvReader::SeekTo(uint64_t offset) {
  stream_->clear();
  stream_->seekg(static_cast<std::streamoff>(offset));
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
  if (column_ >= header_.size()) EndRecord();
  ++column_;
}

void CsvReader::EndRecord() {
  if (at_ == nullptr) return;
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
  while (at != recordEnd_ && *at == ' ') ++at;
  if (at != recordEnd_ && *at != separator_) Fail("text follows a quoted field");
  at_ = at == recordEnd_ ? nullptr : at + 1;
  return {text, write};
}

// The next field, without its quotes, as it stands.
std::string_view CsvReader::RawField() {
  RequireField();
  char* start = at_;
  while (start != recordEnd_ && *start == ' ') ++start;
  if (start != recordEnd_ && *start == '"') return Unquoted(start);
  char* const end = std::find(at_, recordEnd_, separator_);
  const std::string_view field(at_, end);
  at_ = end == recordEnd_ ? nullptr : end + 1;
  if (field.find('"') != std::string_view::npos) Fail("a quote stands inside a field without quotes");
  return field;
}

std::string_view CsvReader::Text() {
  const std::string_view text = Trimmed(RawField());
  if (!IsUtf8(text)) Fail("the text is not UTF-8");
  return text;
}

double CsvReader::SlowNumber() {
  const std::string_view text = Trimmed(RawField());
  double value = 0;
  if (text.empty()) Fail("the field is empty; a number is expected");
  if (!ParseDecimal(text, decimalSeparator_, value)) Fail("\"" + Shown(text) + "\" is not a number");
  return value;
}

double CsvReader::Number() {
  double value;
  Numbers({&value, 1});
  return value;
}

void CsvReader::Numbers(std::span<double> values) {
  for (double& value : values) {
    if (at_ != nullptr && column_ < header_.size()) {
      const char* const stop = ParseShortDecimal(at_, decimalSeparator_, value);
      if (stop != nullptr && (stop == recordEnd_ || *stop == separator_)) {
        at_ = stop == recordEnd_ ? nullptr : at_ + (stop + 1 - at_);
        ++column_;
        continue;
      }
    }
    value = SlowNumber();
  }
}

// Messages ------------------------------------------------------------------------------------------------

std::string CsvReader::Place() const {
  return name_ + (line_ > 0 ? ", line " + std::to_string(line_) : ", byte " + std::to_string(offset_));
}

void CsvReader::FailRow(const std::string& reason) const {
  throw InputError(Place() + ": " + reason);
}

void CsvReader::Fail(const std::string& reason) const {
  FailAt(column_ - 1, reason);
}

void CsvReader::FailAt(std::size_t column, const std::string& reason) const {
  const bool isNamed = column < header_.size() && !header_[column].empty();
  const std::string heading = isNamed ? " (" + Shown(header_[column]) + ")" : std::string();
  throw InputError(Place() + ", column " + std::to_string(column + 1) + heading + ": " + reason);
}

}  // namespace vrx::io
