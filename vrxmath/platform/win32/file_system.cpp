#include <vrxmath/platform/file_system.h>

#include <algorithm>

#include <vrxmath/platform/win32/win32.h>

namespace vrx {
namespace {

using platform_internal::Handle;
using platform_internal::SystemPath;

class OpenFile : public ExclusiveFile {
 public:
  explicit OpenFile(Handle file) : file_(std::move(file)) {}

  uint64_t Length() const override {
    LARGE_INTEGER length = {};
    return ::GetFileSizeEx(file_.Get(), &length) ? static_cast<uint64_t>(length.QuadPart) : 0;
  }

  bool Append(std::string_view bytes) override {
    if (!::SetFilePointerEx(file_.Get(), {}, nullptr, FILE_END)) return false;
    while (!bytes.empty()) {
      const auto count = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1U << 30));
      DWORD written = 0;
      if (!::WriteFile(file_.Get(), bytes.data(), count, &written, nullptr) || written == 0) return false;
      bytes.remove_prefix(written);
    }
    return true;
  }

  bool SetLength(uint64_t length) override {
    LARGE_INTEGER end = {};
    end.QuadPart = static_cast<LONGLONG>(length);
    return ::SetFilePointerEx(file_.Get(), end, nullptr, FILE_BEGIN) && ::SetEndOfFile(file_.Get());
  }

 private:
  Handle file_;
};

class FileSystemOfWindows : public FileSystem {
 public:
  bool DirectoryExists(const CString& path) override {
    const DWORD attributes = ::GetFileAttributesW(SystemPath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  }

  // Sharing nothing keeps everyone else out, readers as well, until the file is closed.
  std::unique_ptr<ExclusiveFile> OpenExclusive(const CString& path) override {
    Handle file(::CreateFileW(SystemPath(path).c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.IsOpen() || ::GetFileType(file.Get()) != FILE_TYPE_DISK) return nullptr;
    return std::make_unique<OpenFile>(std::move(file));
  }

  bool Delete(const CString& path) override { return ::DeleteFileW(SystemPath(path).c_str()) != 0; }
};

}  // namespace

FileSystem& platform_internal::SystemFiles() {
  static FileSystemOfWindows files;
  return files;
}

}  // namespace vrx
