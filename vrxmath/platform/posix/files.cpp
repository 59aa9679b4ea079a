#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/files.h>

namespace vrx {
namespace {

std::string SystemError() {
  return std::strerror(errno);
}

}  // namespace

FileReader::~FileReader() {
  if (file_ != nullptr) std::fclose(file_);
}

bool FileReader::Open(const std::string& path) {
  if (file_ != nullptr) std::fclose(std::exchange(file_, nullptr));
  remaining_ = 0;
  file_ = std::fopen(path.c_str(), "rb");
  struct stat status = {};
  if (file_ == nullptr || ::fstat(::fileno(file_), &status) != 0) {
    error_ = SystemError();
    return false;
  }
  if (S_ISDIR(status.st_mode)) {
    error_ = "is a directory";
    return false;
  }
  if (S_ISREG(status.st_mode)) remaining_ = static_cast<uint64_t>(status.st_size);
  return true;
}

std::size_t FileReader::Read(std::span<std::byte> out) {
  if (file_ == nullptr) return 0;
  const std::size_t count = std::fread(out.data(), 1, out.size(), file_);
  if (count < out.size() && std::ferror(file_) != 0) throw CArchiveException(CArchiveException::kIoError);
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
  // A link is followed, so that what it points to is replaced and not the link.
  char* resolved = ::realpath(path.c_str(), nullptr);
  path_ = resolved != nullptr ? resolved : path;
  std::free(resolved);
  temporaryPath_ = path_ + ".XXXXXX";
  const int descriptor = ::mkstemp(temporaryPath_.data());
  if (descriptor < 0) {
    error_ = SystemError();
    temporaryPath_.clear();
    return false;
  }
  // The temporary is private to its owner; the file keeps the mode it had, or gets the usual one.
  struct stat status = {};
  const mode_t mask = ::umask(0);
  ::umask(mask);
  const mode_t mode = ::stat(path_.c_str(), &status) == 0 ? status.st_mode & 07777 : 0666 & ~mask;
  file_ = ::fchmod(descriptor, mode) == 0 ? ::fdopen(descriptor, "wb") : nullptr;
  if (file_ == nullptr) {
    error_ = SystemError();
    ::close(descriptor);
    Discard();
  }
  return file_ != nullptr;
}

bool FileReplacer::Commit() {
  if (file_ == nullptr) return false;
  const bool flushed = std::fflush(file_) == 0 && ::fsync(::fileno(file_)) == 0;
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
    throw CArchiveException(CArchiveException::kIoError);
  }
}

}  // namespace vrx
