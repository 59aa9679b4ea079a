// Where the readers get their bytes from: a file, standard input or a stream, looked at before it is read, and brought to
// UTF-8 with line feeds where it is something else.

#ifndef VRXIO_TEXT_INPUT_STREAM_H_
#define VRXIO_TEXT_INPUT_STREAM_H_

#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>
#include <string>
#include <string_view>

namespace vrx::io {

/// An open file, or what stands for one.
struct InputStream {
  std::string name;  ///< what messages call it
  std::unique_ptr<std::istream> owned;
  std::istream* stream = nullptr;  ///< `owned`, or somebody else's that outlives this
  uint64_t size = 0;               ///< bytes of a file; 0 for a pipe or a stream, which know no size
};

/// Opens a file, or standard input for "-". Throws InputError with the system's reason.
InputStream OpenInput(const std::string& path);

/// The same for a stream, which must outlive it.
InputStream WrapInput(std::istream& stream, std::string name);

/// Throws InputError that the stream could not be read, with the system's reason where it gave one.
[[noreturn]] void FailReading(const InputStream& input);

/// The largest file that has to be held in memory because it is not plain UTF-8 with line feeds, or a pipe that has to be
/// read twice.
inline constexpr std::size_t kLargestHeldFile = std::size_t{1} << 28;

/// As many bytes as tell how a file is laid out.
inline constexpr std::size_t kBeginning = std::size_t{256} << 10;

/// The first bytes of a file, up to `limit`; it then stands at its start again, a pipe included.
std::string PeekInput(InputStream& input, std::size_t limit);

/// Reads what is left into memory, so that it can be read more than once. Throws InputError beyond kLargestHeldFile.
void HoldInput(InputStream& input);

/// Turns a file into UTF-8 with line feeds when it is UTF-16 with a byte-order mark, when it is Latin-1 and `isLatin1`
/// says so, or when its lines end in carriage returns alone; `beginning` is what PeekInput gave. Returns what was done,
/// for a note; empty when nothing was. Throws InputError for UTF-16 that is not valid, for what is no text, and beyond
/// kLargestHeldFile.
std::string DecodeInput(InputStream& input, std::string_view beginning, bool isLatin1);

/// OpenInput and DecodeInput together, of a file that is not Latin-1.
InputStream OpenText(const std::string& path);

}  // namespace vrx::io

#endif  // VRXIO_TEXT_INPUT_STREAM_H_
