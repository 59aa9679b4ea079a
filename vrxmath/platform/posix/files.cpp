#include <vrxmath/platform/files.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/posix/link_target.h>

namespace vrx {
namespace {

std::string SystemError() {
  return std::strerror(errno);
}

// The reason for which a file of this status must not be replaced; empty when it may be. A device or a pipe would become a
// plain file, and renaming would get around a write protection.
std::string ReasonToKeep(const std::string& path, const struct stat& status) {
  if (S_ISDIR(status.st_mode)) return "is a directory";
  if (!S_ISREG(status.st_mode)) return "is not a regular file";
  return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0 ? std::string() : SystemError();
}

// Makes a file beside `path` that did not exist before. Returns its descriptor and name; -1 on failure.
std::pair<int, std::string> CreateBeside(const std::string& path, mode_t mode) {
  static std::atomic<unsigned> counter = 0;
  constexpr int kAttempts = 100;  // leftovers of a process with the same number may be in the way
  for (int i = 0; i < kAttempts; ++i) {
    const std::string name =
        path + '.' + std::to_string(::getpid()) + '-' + std::to_string(counter++) + ".tmp";
    const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (descriptor >= 0 || errno != EEXIST) return {descriptor, name};
  }
  return {-1, {}};
}

}  // namespace

FileReader::~FileReader() {
  Close();
}

void FileReader::Close() {
  if (file_ != nullptr) std::fclose(std::exchange(file_, nullptr));
  remaining_ = 0;
}

bool FileReader::Open(const std::string& path) {
  Close();
  error_.clear();
  file_ = std::fopen(path.c_str(), "rb");
  struct stat status = {};
  if (file_ == nullptr || ::fstat(::fileno(file_), &status) != 0) {
    error_ = SystemError();
  } else if (S_ISDIR(status.st_mode)) {
    error_ = "is a directory";
  }
  if (!error_.empty()) {
    Close();
    return false;
  }
  if (S_ISREG(status.st_mode)) remaining_ = static_cast<uint64_t>(status.st_size);
  return true;
}

std::size_t FileReader::Read(std::span<std::byte> out) {
  if (file_ == nullptr) return 0;
  const std::size_t count = std::fread(out.data(), 1, out.size(), file_);
  if (count < out.size() && std::ferror(file_) != 0) {
    error_ = SystemError();
    throw CArchiveException(CArchiveException::kIoError);
  }
  remaining_ -= std::min<uint64_t>(remaining_, count);
  return count;
}

void FileReader::Write(std::span<const std::byte>) {
  throw CArchiveException(CArchiveException::kReadOnly);
}

FileReplacer::~FileReplacer() {
  Discard();
}

void FileReplacer::Discard() {
  if (file_ != nullptr) std::fclose(std::exchange(file_, nullptr));
  if (!temporaryPath_.empty()) ::unlink(temporaryPath_.c_str());
  temporaryPath_.clear();
}

bool FileReplacer::Open(const std::string& path) {
  Discard();
  path_ = platform_internal::LinkTarget(path);
  struct stat status = {};
  const bool exists = ::stat(path_.c_str(), &status) == 0;
  error_ = exists ? ReasonToKeep(path_, status) : errno == ENOENT ? std::string() : SystemError();
  if (!error_.empty()) return false;
  // A new file gets the usual mode, less what the process masks; an old one keeps its own.
  const mode_t mode = exists ? status.st_mode & 07777 : 0666;
  const auto [descriptor, name] = CreateBeside(path_, mode & 0777);
  if (descriptor >= 0) {
    temporaryPath_ = name;
    if (!exists || ::fchmod(descriptor, mode) == 0) file_ = ::fdopen(descriptor, "wb");
  }
  if (file_ == nullptr) {
    error_ = SystemError();
    if (descriptor >= 0) ::close(descriptor);
    Discard();
  }
  return file_ != nullptr;
}

bool FileReplacer::Commit() {
  if (file_ == nullptr) {
    error_ = "is not open";
    return false;
  }
  const bool flushed = std::ferror(file_) == 0 && std::fflush(file_) == 0 && ::fsync(::fileno(file_)) == 0;
  const bool closed = std::fclose(std::exchange(file_, nullptr)) == 0;
  if (!flushed || !closed || ::rename(temporaryPath_.c_str(), path_.c_str()) != 0) {
    error_ = SystemError();
    Discard();
    return false;
  }
  temporaryPath_.clear();
  return true;
}

std::size_t FileReplacer::Read(std::span<std::byte>) {
  throw CArchiveException(CArchiveException::kWriteOnly);
}

void FileReplacer::Write(std::span<const std::byte> bytes) {
  if (file_ == nullptr || std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) {
    error_ = file_ == nullptr ? "is not open" : SystemError();
    throw CArchiveException(CArchiveException::kIoError);
  }
}

}  // namespace vrx
