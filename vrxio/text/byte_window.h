// A file seen through a window that moves on: what the readers of forms that are not tables stand on.

#ifndef VRXIO_TEXT_BYTE_WINDOW_H_
#define VRXIO_TEXT_BYTE_WINDOW_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <vrxio/text/input_stream.h>

namespace vrx::io {

/// Holds the bytes from a position on, as many as its user asks for. Memory is that of the longest stretch asked for.
class ByteWindow {
 public:
  /// The longest stretch that the window may have to hold.
  static constexpr std::size_t kMaxBytes = std::size_t{16} << 20;

  /// `form` is that of the file, for messages: "CxF3".
  ByteWindow(InputStream input, std::string_view form);

  const InputStream& Input() const { return input_; }

  /// The bytes at hand from the position on. Valid until More or SeekTo. One more byte stands behind it, a line end, so
  /// that a scan over a number needs no limit.
  std::string_view Bytes() const { return {buffer_.get() + begin_, used_ - begin_}; }
  /// Brings more bytes behind those; false at the end of the file. Throws InputError beyond kMaxBytes.
  bool More();
  /// Moves the position on by `count` bytes, which must be at hand, and counts their lines.
  void Skip(std::size_t count);
  /// Throws bytes away until `text` stands at the position; false when it does not come any more. `text` is short.
  bool SkipTo(std::string_view text);

  /// A line for messages, "f.cxf (CxF3), line 3"; the file alone for a line that is not known.
  std::string PlaceOf(int64_t line) const;

  uint64_t Offset() const { return offset_ + begin_; }
  /// The line at the position, from 1; 0 when it is not known after a jump.
  int64_t Line() const { return line_; }
  /// The line `ahead` bytes on from the position.
  int64_t LineAhead(std::size_t ahead) const;
  void SeekTo(uint64_t offset, int64_t line);

 private:
  InputStream input_;
  std::string_view form_;  // a literal
  std::size_t chunk_;      // bytes asked for at a time
  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_;
  uint64_t offset_ = 0;  // of the buffer in the file
  std::size_t begin_ = 0;
  std::size_t used_ = 0;
  int64_t line_ = 1;
  bool atEnd_ = false;
};

}  // namespace vrx::io

#endif  // VRXIO_TEXT_BYTE_WINDOW_H_
