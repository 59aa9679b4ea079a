#include <vrxio/text/whole_file.h>

#include <iostream>
#include <span>

#include <vrxio/text/input_error.h>
#include <vrxio/text/input_stream.h>
#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/files.h>

namespace vrx::io {
namespace {

// Bytes of the file, or of standard input, as many as there are room for.
class Source {
 public:
  explicit Source(const std::string& path) : path_(path), isInput_(path == "-") {
    if (!isInput_ && !file_.Open(path)) throw InputError(path + ": " + file_.GetError());
  }
  std::size_t Read(std::span<char> out) {
    if (isInput_) {
      std::cin.read(out.data(), static_cast<std::streamsize>(out.size()));
      if (std::cin.bad()) FailReading(WrapInput(std::cin, "standard input"));
      return static_cast<std::size_t>(std::cin.gcount());
    }
    try {
      return file_.Read(std::as_writable_bytes(out));
    } catch (const CArchiveException&) {
      throw InputError(path_ + ": cannot be read: " + file_.GetError());
    }
  }

 private:
  std::string path_;
  bool isInput_;
  FileReader file_;
};

}  // namespace

std::string ReadWholeFile(const std::string& path, std::size_t limit,
                          const std::function<bool(std::string_view beginning)>& isPromising) {
  constexpr std::size_t kChunk = std::size_t{1} << 20;
  Source source(path);
  std::string content;
  std::size_t got = kChunk;
  while (got == kChunk) {
    const std::size_t used = content.size();
    content.resize(used + kChunk);
    got = source.Read(std::span(content).subspan(used));
    content.resize(used + got);
    if (content.size() > limit) {
      throw InputError(path + ": larger than " + std::to_string(limit >> 20) + " MiB");
    }
    if (used == 0 && isPromising && !isPromising(content)) break;
  }
  return content;
}

}  // namespace vrx::io
