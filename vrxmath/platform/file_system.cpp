#include <vrxmath/platform/file_system.h>

namespace vrx {
namespace {

FileSystem*& FilesReplacement() {
  static FileSystem* files = nullptr;
  return files;
}

}  // namespace

ExclusiveFile::~ExclusiveFile() = default;
FileSystem::~FileSystem() = default;

FileSystem& CurrentFileSystem() {
  return FilesReplacement() != nullptr ? *FilesReplacement() : platform_internal::SystemFiles();
}

void SetFileSystem(FileSystem* files) {
  FilesReplacement() = files;
}

}  // namespace vrx
