#include <vrxmath/platform/file_system.h>

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vrx {
namespace {

class PosixFile : public ExclusiveFile {
 public:
  explicit PosixFile(int descriptor) : descriptor_(descriptor) {}
  PosixFile(const PosixFile&) = delete;
  PosixFile& operator=(const PosixFile&) = delete;
  ~PosixFile() override { ::close(descriptor_); }

  uint64_t Length() const override {
    struct stat status = {};
    return ::fstat(descriptor_, &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
  }

  bool Append(std::string_view bytes) override {
    if (::lseek(descriptor_, 0, SEEK_END) < 0) return false;
    while (!bytes.empty()) {
      const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }

  bool SetLength(uint64_t length) override {
    return ::ftruncate(descriptor_, static_cast<off_t>(length)) == 0;
  }

  // True when the file is a plain one, nobody else holds it, and `path` still leads to it: whoever held it
  // until now may have deleted it.
  bool Claim(const std::string& path) const {
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(descriptor_, &opened) == 0 && S_ISREG(opened.st_mode) &&
           ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0 && ::stat(path.c_str(), &named) == 0 &&
           named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
  }

 private:
  int descriptor_;
};

class PosixFileSystem : public FileSystem {
 public:
  bool DirectoryExists(const CString& path) override {
    struct stat status = {};
    return ::stat(path.ToUtf8().c_str(), &status) == 0 && S_ISDIR(status.st_mode);
  }

  std::unique_ptr<ExclusiveFile> OpenExclusive(const CString& path) override {
    const std::string name = path.ToUtf8();
    const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor < 0) return nullptr;
    auto file = std::make_unique<PosixFile>(descriptor);
    if (!file->Claim(name)) return nullptr;
    return file;
  }

  bool Delete(const CString& path) override { return ::unlink(path.ToUtf8().c_str()) == 0; }
};

}  // namespace

FileSystem& platform_internal::SystemFiles() {
  static PosixFileSystem files;
  return files;
}

}  // namespace vrx
