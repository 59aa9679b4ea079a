#include <vrxio/text/input_stream.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <streambuf>
#include <system_error>
#include <utility>

#include <vrxio/text/input_error.h>
#include <vrxio/text/path.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx::io {
namespace {

// The bytes that were read of a pipe already, and then the pipe, which it may own.
class ResumedStream final : public std::istream {
 public:
  ResumedStream(std::string beginning, std::unique_ptr<std::istream> owner, std::istream& rest)
      : std::istream(nullptr), owner_(std::move(owner)), buffer_(std::move(beginning), rest) {
    rdbuf(&buffer_);
  }

 private:
  class Buffer final : public std::streambuf {
   public:
    Buffer(std::string beginning, std::istream& rest) : chunk_(std::move(beginning)), rest_(rest) {
      setg(chunk_.data(), chunk_.data(), chunk_.data() + chunk_.size());
    }

   protected:
    int_type underflow() override {
      chunk_.resize(std::size_t{64} << 10);
      rest_.read(chunk_.data(), static_cast<std::streamsize>(chunk_.size()));
      const auto got = static_cast<std::size_t>(rest_.gcount());
      setg(chunk_.data(), chunk_.data(), chunk_.data() + got);
      return got > 0 ? traits_type::to_int_type(chunk_.front()) : traits_type::eof();
    }

   private:
    std::string chunk_;
    std::istream& rest_;
  };

  std::unique_ptr<std::istream> owner_;
  Buffer buffer_;
};

std::string ReadUpTo(InputStream& input, std::size_t limit) {
  if (input.size > 0) limit = static_cast<std::size_t>(std::min<uint64_t>(limit, input.size));
  std::string bytes(limit, '\0');
  input.stream->read(bytes.data(), static_cast<std::streamsize>(limit));
  if (input.stream->bad()) FailReading(input);
  bytes.resize(static_cast<std::size_t>(input.stream->gcount()));
  return bytes;
}

std::string ReadAll(InputStream& input) {
  std::string content;
  while (true) {
    const std::string chunk = ReadUpTo(input, std::size_t{1} << 20);
    if (chunk.empty()) return content;
    content += chunk;
    if (content.size() > kLargestHeldFile) {
      throw InputError(input.name +
                       ": more than 256 MiB of a text that has to be held in memory; UTF-8 files with "
                       "line feeds have no such limit");
    }
  }
}

void Replace(InputStream& input, std::string content) {
  input.size = content.size();
  input.owned = std::make_unique<std::istringstream>(std::move(content));
  input.stream = input.owned.get();
}

std::string Utf16ToUtf8(const InputStream& input, std::string_view bytes) {
  const bool littleEndian = bytes[0] == '\xFF';
  if (bytes.size() % 2 != 0) throw InputError(input.name + ": UTF-16 that ends within a character");
  std::u16string units;
  units.reserve(bytes.size() / 2);
  for (std::size_t i = 2; i < bytes.size(); i += 2) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    units += static_cast<char16_t>(littleEndian ? first | second << 8 : first << 8 | second);
  }
  return CString(units).ToUtf8();
}

std::string Latin1ToUtf8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0 | byte >> 6);
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

// Files that people take for a table at times: a workbook, and text whose form cannot be told.
void RefuseWhatIsNoText(const InputStream& input, std::string_view beginning) {
  constexpr std::size_t kFewBytes = 16;  // of a header, which has no zeros
  if (beginning.starts_with("PK\x03\x04") || beginning.starts_with("\xD0\xCF\x11\xE0")) {
    throw InputError(input.name + ": is not a text file; save the sheet of a workbook as CSV");
  }
  if (beginning.substr(0, kFewBytes).find('\0') != std::string_view::npos) {
    throw InputError(input.name +
                     ": is not a text file, or is UTF-16 without a byte-order mark; save it as UTF-8");
  }
}

bool HasLonelyReturns(std::string_view text) {
  return text.find('\r') != std::string_view::npos && text.find('\n') == std::string_view::npos;
}

}  // namespace

InputStream OpenInput(const std::string& path) {
  InputStream input;
  if (path == "-") {
    input.name = "standard input";
    input.stream = &std::cin;
    return input;
  }
  input.name = path;
  errno = 0;
  const std::filesystem::path name = PathOf(path);
  std::error_code ignored;
  if (std::filesystem::is_directory(name, ignored)) throw InputError(path + ": is a directory");
  auto file = std::make_unique<std::ifstream>(name, std::ios::binary);
  if (!*file) throw InputError(path + ": " + (errno != 0 ? std::strerror(errno) : "cannot be opened"));
  file->seekg(0, std::ios::end);
  if (const std::streamoff size = file->tellg(); *file && size > 0) input.size = static_cast<uint64_t>(size);
  file->clear();
  file->seekg(0);
  file->clear();  // a pipe cannot seek, and need not
  input.owned = std::move(file);
  input.stream = input.owned.get();
  return input;
}

void FailReading(const InputStream& input) {
  const int error = errno;
  throw InputError(input.name + ": cannot be read" +
                   (error != 0 ? std::string(": ") + std::strerror(error) : ""));
}

InputStream WrapInput(std::istream& stream, std::string name) {
  InputStream input;
  input.name = std::move(name);
  input.stream = &stream;
  return input;
}

std::string PeekInput(InputStream& input, std::size_t limit) {
  std::string beginning = ReadUpTo(input, limit);
  input.stream->clear();
  if (input.size > 0) {
    input.stream->seekg(0);
    return beginning;
  }
  std::istream& rest = *input.stream;
  input.owned = std::make_unique<ResumedStream>(beginning, std::move(input.owned), rest);
  input.stream = input.owned.get();
  return beginning;
}

void HoldInput(InputStream& input) {
  Replace(input, ReadAll(input));
}

std::string DecodeInput(InputStream& input, std::string_view beginning, bool isLatin1) {
  const bool isUtf16 = beginning.starts_with("\xFF\xFE") || beginning.starts_with("\xFE\xFF");
  if (!isUtf16) RefuseWhatIsNoText(input, beginning);
  if (!isUtf16 && !isLatin1 && !HasLonelyReturns(beginning)) return {};
  std::string content = ReadAll(input);
  if (isUtf16) {
    content = Utf16ToUtf8(input, content);
  } else if (isLatin1) {
    content = Latin1ToUtf8(content);
  }
  const bool lonelyReturns = HasLonelyReturns(content);
  if (lonelyReturns) std::ranges::replace(content, '\r', '\n');
  Replace(input, std::move(content));
  std::string note = isUtf16 ? "the text is UTF-16" : isLatin1 ? "the text is read as Latin-1" : "";
  if (lonelyReturns) note += std::string(note.empty() ? "" : ", ") + "lines end in carriage returns alone";
  return note;
}

InputStream OpenText(const std::string& path) {
  InputStream input = OpenInput(path);
  DecodeInput(input, PeekInput(input, kBeginning), false);
  return input;
}

}  // namespace vrx::io
