// Names of files, which are UTF-8 everywhere, as the standard library's paths and back.

#ifndef VRXIO_TEXT_PATH_H_
#define VRXIO_TEXT_PATH_H_

#include <filesystem>
#include <string>
#include <string_view>

namespace vrx::io {

inline std::filesystem::path PathOf(std::string_view utf8) {
  return {std::u8string(utf8.begin(), utf8.end())};
}

inline std::string Utf8Of(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

}  // namespace vrx::io

#endif  // VRXIO_TEXT_PATH_H_
