#include <vrxio/byte_window.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include <vrxio/input_error.h>

namespace vrx::io {

namespace {

constexpr std::size_t kChunk = std::size_t{256} << 10;

}  // namespace

ByteWindow::ByteWindow(InputStream input)
    : input_(std::move(input)),
      buffer_(std::make_unique_for_overwrite<char[]>(2 * kChunk + 1)),
      capacity_(2 * kChunk) {}

bool ByteWindow::More() {
  if (atEnd_) return false;
  if (begin_ > 0) {
    std::memmove(buffer_.get(), buffer_.get() + begin_, used_ - begin_);
    offset_ += begin_;
    used_ -= begin_;
    begin_ = 0;
  }
  if (used_ >= kMaxBytes) {
    throw InputError(input_.name + ", line " + std::to_string(line_) +
                     ": what begins here is longer than 16 MiB");
  }
  if (capacity_ - used_ < kChunk) {
    auto larger = std::make_unique_for_overwrite<char[]>(2 * capacity_ + 1);
    std::memcpy(larger.get(), buffer_.get(), used_);
    buffer_ = std::move(larger);
    capacity_ *= 2;
  }
  input_.stream->read(buffer_.get() + used_, static_cast<std::streamsize>(kChunk));
  if (input_.stream->bad()) throw InputError(input_.name + ": cannot be read");
  const auto got = static_cast<std::size_t>(input_.stream->gcount());
  used_ += got;
  buffer_[used_] = '\n';
  atEnd_ = got < kChunk;
  return got > 0;
}

void ByteWindow::Skip(std::size_t count) {
  if (line_ > 0) line_ = LineAhead(count);
  begin_ += count;
}

bool ByteWindow::SkipTo(std::string_view text) {
  while (true) {
    const std::string_view bytes = Bytes();
    const std::size_t found = bytes.find(text);
    if (found != std::string_view::npos) {
      Skip(found);
      return true;
    }
    Skip(bytes.size() - std::min(bytes.size(), text.size() - 1));
    if (!More()) return false;
  }
}

int64_t ByteWindow::LineAhead(std::size_t ahead) const {
  const char* const start = buffer_.get() + begin_;
  return line_ > 0 ? line_ + std::count(start, start + ahead, '\n') : 0;
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
