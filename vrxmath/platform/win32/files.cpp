#include <vrxmath/platform/files.h>

#include <algorithm>
#include <atomic>
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#include <utility>
#include <vector>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/win32/win32.h>

namespace vrx {
namespace {

using platform_internal::FromSystem;
using platform_internal::Handle;
using platform_internal::SystemError;
using platform_internal::SystemPath;

std::wstring WidePath(const std::string& utf8) {
  return SystemPath(CString::FromUtf8(utf8));
}

std::string Utf8(std::wstring_view path) {
  return CString(FromSystem(path)).ToUtf8();
}

Handle OpenForAttributes(const std::wstring& path) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  return Handle(::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

// The file that a path leads to, links followed; the path itself where nothing is there yet.
std::wstring ResolveLinks(const std::wstring& path) {
  const Handle file = OpenForAttributes(path);
  std::wstring resolved(32768, L'\0');
  const auto room = static_cast<DWORD>(resolved.size());
  const DWORD length =
      file.IsOpen() ? ::GetFinalPathNameByHandleW(file.Get(), resolved.data(), room, FILE_NAME_NORMALIZED)
                    : 0;
  resolved.resize(length < room ? length : 0);
  return resolved.empty() ? path : resolved;
}

// Why what is at `path` must not be replaced; empty when it may be, or when nothing is there. A rename would
// get around a write protection, and put a plain file in the place of a device.
std::string ReasonToKeep(const std::wstring& path, DWORD attributes) {
  if (attributes == INVALID_FILE_ATTRIBUTES) return {};
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return "is a directory";
  if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) return SystemError(ERROR_ACCESS_DENIED);
  const Handle file(::CreateFileW(path.c_str(), GENERIC_WRITE,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, 0, nullptr));
  if (!file.IsOpen()) return SystemError();
  return ::GetFileType(file.Get()) == FILE_TYPE_DISK ? std::string() : "is not a regular file";
}

// Gives `to` the attributes and the access list of `from`; a folder's defaults stay where that is not allowed.
void CopyAccess(const std::wstring& from, const std::wstring& to, DWORD attributes) {
  DWORD bytes = 0;
  ::GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &bytes);
  std::vector<std::byte> access(bytes);
  if (bytes > 0 && ::GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, access.data(), bytes, &bytes))
    ::SetFileSecurityW(to.c_str(), DACL_SECURITY_INFORMATION, access.data());
  ::SetFileAttributesW(to.c_str(), attributes);
}

// Makes a file beside `path` that did not exist before. Null on failure.
std::pair<std::FILE*, std::wstring> CreateBeside(const std::wstring& path) {
  static std::atomic<unsigned> counter = 0;
  constexpr int kAttempts = 100;  // leftovers of a process with the same number may be in the way
  for (int i = 0; i < kAttempts; ++i) {
    const std::wstring name =
        path + L'.' + std::to_wstring(::GetCurrentProcessId()) + L'-' + std::to_wstring(counter++) + L".tmp";
    int descriptor = -1;
    const errno_t failure = ::_wsopen_s(&descriptor, name.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY,
                                        _SH_DENYNO, _S_IREAD | _S_IWRITE);
    if (failure == 0) return {::_fdopen(descriptor, "wb"), name};
    if (failure != EEXIST) break;
  }
  return {nullptr, {}};
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
  const std::wstring name = WidePath(path);
  const DWORD attributes = ::GetFileAttributesW(name.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    error_ = "is a directory";
    return false;
  }
  file_ = ::_wfopen(name.c_str(), L"rb");
  if (file_ == nullptr) {
    error_ = SystemError(_doserrno);
    return false;
  }
  const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(file_)));
  LARGE_INTEGER size = {};
  if (::GetFileType(handle) == FILE_TYPE_DISK && ::GetFileSizeEx(handle, &size))
    remaining_ = static_cast<uint64_t>(size.QuadPart);
  return true;
}

std::size_t FileReader::Read(std::span<std::byte> out) {
  if (file_ == nullptr) return 0;
  const std::size_t count = std::fread(out.data(), 1, out.size(), file_);
  if (count < out.size() && std::ferror(file_) != 0) {
    error_ = SystemError(_doserrno);
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
  if (!temporaryPath_.empty()) ::DeleteFileW(WidePath(temporaryPath_).c_str());
  temporaryPath_.clear();
}

bool FileReplacer::Open(const std::string& path) {
  Discard();
  const std::wstring target = ResolveLinks(WidePath(path));
  path_ = Utf8(target);
  const DWORD attributes = ::GetFileAttributesW(target.c_str());
  error_ = ReasonToKeep(target, attributes);
  if (!error_.empty()) return false;
  const auto [file, name] = CreateBeside(target);
  if (file == nullptr) {
    error_ = SystemError(_doserrno);
    return false;
  }
  file_ = file;
  temporaryPath_ = Utf8(name);
  if (attributes != INVALID_FILE_ATTRIBUTES) CopyAccess(target, name, attributes);
  return true;
}

// One rename that writes through: readers see the old file or the new one. ReplaceFileW would take several
// steps and can end between them with neither in place.
bool FileReplacer::Commit() {
  if (file_ == nullptr) {
    error_ = "is not open";
    return false;
  }
  const bool flushed = std::ferror(file_) == 0 && std::fflush(file_) == 0 && ::_commit(::_fileno(file_)) == 0;
  const bool closed = std::fclose(std::exchange(file_, nullptr)) == 0;
  constexpr DWORD kFlags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  if (!flushed || !closed ||
      !::MoveFileExW(WidePath(temporaryPath_).c_str(), WidePath(path_).c_str(), kFlags)) {
    error_ = SystemError(flushed && closed ? ::GetLastError() : ERROR_WRITE_FAULT);
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
    error_ = file_ == nullptr ? "is not open" : SystemError(ERROR_WRITE_FAULT);
    throw CArchiveException(CArchiveException::kIoError);
  }
}

}  // namespace vrx
