#include <vrxio/text/byte_window.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <utility>

#include <vrxio/text/input_error.h>

namespace vrx::io {

namespace {

constexpr std::size_t kLargestChunk = std::size_t{256} << 10;

// In blocks whose count a byte holds, so that the compiler compares a whole register of bytes at a time.
int64_t CountLineEnds(const char* at, const char* end) {
  constexpr std::ptrdiff_t kBlock = 128;
  int64_t count = 0;
  for (; end - at >= kBlock; at += kBlock) {
    uint8_t ends = 0;
    for (std::ptrdiff_t i = 0; i < kBlock; ++i) ends = static_cast<uint8_t>(ends + (at[i] == '\n' ? 1 : 0));
    count += ends;
  }
  return count + std::count(at, end, '\n');
}

}  // namespace

// A file that is shorter than a chunk is read whole, with its end.
ByteWindow::ByteWindow(InputStream input, std::string_view form)
    : input_(std::move(input)),
      form_(form),
      chunk_(input_.size > 0 ? static_cast<std::size_t>(std::min<uint64_t>(input_.size + 1, kLargestChunk))
                             : kLargestChunk),
      buffer_(std::make_unique_for_overwrite<char[]>(2 * chunk_ + 1)),
      capacity_(2 * chunk_) {}

std::string ByteWindow::PlaceOf(int64_t line) const {
  const std::string file = input_.name + " (" + std::string(form_) + ")";
  return line > 0 ? file + ", line " + std::to_string(line) : file;
}

bool ByteWindow::More() {
  if (atEnd_) return false;
  if (begin_ > 0) {
    std::memmove(buffer_.get(), buffer_.get() + begin_, used_ - begin_);
    offset_ += begin_;
    used_ -= begin_;
    begin_ = 0;
  }
  if (used_ >= kMaxBytes) {
    throw InputError(PlaceOf(line_) + ": what begins here is longer than 16 MiB");
  }
  if (capacity_ - used_ < chunk_) {
    auto larger = std::make_unique_for_overwrite<char[]>(2 * capacity_ + 1);
    std::memcpy(larger.get(), buffer_.get(), used_);
    buffer_ = std::move(larger);
    capacity_ *= 2;
  }
  input_.stream->read(buffer_.get() + used_, static_cast<std::streamsize>(chunk_));
  if (input_.stream->bad()) FailReading(input_);
  const auto got = static_cast<std::size_t>(input_.stream->gcount());
  used_ += got;
  buffer_[used_] = '\n';
  atEnd_ = got < chunk_;
  return got > 0;
}

void ByteWindow::Skip(std::size_t count) {
  if (line_ > 0) line_ = LineAhead(count);
  begin_ += count;
}

// The search looks at one byte in as many as `text` has where they do not occur in it (Horspool 1980).
bool ByteWindow::SkipTo(std::string_view text) {
  const std::boyer_moore_horspool_searcher searcher(text.begin(), text.end());
  while (true) {
    const std::string_view bytes = Bytes();
    const auto found = std::search(bytes.begin(), bytes.end(), searcher);
    if (found != bytes.end()) {
      Skip(static_cast<std::size_t>(found - bytes.begin()));
      return true;
    }
    Skip(bytes.size() - std::min(bytes.size(), text.size() - 1));
    if (!More()) return false;
  }
}

int64_t ByteWindow::LineAhead(std::size_t ahead) const {
  const char* const start = buffer_.get() + begin_;
  return line_ > 0 ? line_ + CountLineEnds(start, start + ahead) : 0;
}

void ByteWindow::SeekTo(uint64_t offset, int64_t line) {
  input_.stream->clear();
  input_.stream->seekg(static_cast<std::streamoff>(offset));
  offset_ = offset;
  begin_ = used_ = 0;
  atEnd_ = false;
  line_ = line;
}

}  // namespace vrx::io
