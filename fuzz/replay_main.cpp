// Runs a fuzz target over the files and folders named on the command line, so that any build can replay a
// corpus.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);

namespace {

int replayed = 0;

void Replay(const std::filesystem::path& path) {
  if (std::filesystem::is_directory(path)) {
    for (const auto& entry : std::filesystem::directory_iterator(path)) Replay(entry.path());
    return;
  }
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(content.data()), content.size());
  ++replayed;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> paths;  // a target may go to another folder
  for (int i = 1; i < argc; ++i) paths.push_back(std::filesystem::absolute(argv[i]));
  for (const std::filesystem::path& path : paths) Replay(path);
  std::printf("%d inputs replayed\n", replayed);
  return replayed > 0 ? 0 : 1;
}
