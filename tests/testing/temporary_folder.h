// A folder of the test's own, gone when the test ends.

#ifndef TESTS_TESTING_TEMPORARY_FOLDER_H_
#define TESTS_TESTING_TEMPORARY_FOLDER_H_

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>

namespace vrx::test {

/// Narrow names are UTF-8 in the tests, on Windows too.
inline std::filesystem::path Utf8Path(const std::string& name) {
  return std::u8string(name.begin(), name.end());
}

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::random_device random;
    do {
      path_ = std::filesystem::temp_directory_path() / ("vrxmath-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  /// The full path of an entry of the folder.
  std::string operator/(const std::string& name) const {
    const std::u8string path = (path_ / Utf8Path(name)).u8string();
    return {path.begin(), path.end()};
  }

  /// Writes a file of this content and returns its full path.
  std::string Write(const std::string& name, const std::string& content) const {
    std::ofstream(path_ / Utf8Path(name), std::ios::binary) << content;
    return *this / name;
  }
  std::string Read(const std::string& name) const {
    std::ostringstream content;
    content << std::ifstream(path_ / Utf8Path(name), std::ios::binary).rdbuf();
    return content.str();
  }
  /// The number of entries, so that a test sees what was left behind.
  std::ptrdiff_t CountEntries() const {
    return std::distance(std::filesystem::directory_iterator(path_), std::filesystem::directory_iterator());
  }

 private:
  std::filesystem::path path_;
};

}  // namespace vrx::test

#endif  // TESTS_TESTING_TEMPORARY_FOLDER_H_
