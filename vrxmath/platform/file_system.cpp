#include <vrxmath/platform/file_system.h>

namespace vrx {
namespace {

FileSystem*& Replacement() {
  static FileSystem* files = nullptr;
  return files;
}

}  // namespace

ExclusiveFile::~ExclusiveFile() = default;
FileSystem::~FileSystem() = default;

FileSystem& CurrentFileSystem() {
  return Replacement() != nullptr ? *Replacement() : platform_internal::SystemFiles();
}

void SetFileSystem(FileSystem* files) {
  Replacement() = files;
}

}  // namespace vrx
