// A file read into memory whole, up to a limit.

#ifndef VRXIO_TEXT_WHOLE_FILE_H_
#define VRXIO_TEXT_WHOLE_FILE_H_

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace vrx::io {

/// Reads a file, or standard input for "-". `isPromising` sees the beginning of the file, up to 1 MiB; when it answers
/// false no more is read, and what was read is returned: an endless device that is not what it should be ends there.
/// Throws InputError when the file cannot be read or has more than `limit` bytes.
std::string ReadWholeFile(const std::string& path, std::size_t limit,
                          const std::function<bool(std::string_view beginning)>& isPromising = nullptr);

}  // namespace vrx::io

#endif  // VRXIO_TEXT_WHOLE_FILE_H_
