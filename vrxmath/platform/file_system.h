// The few operations on files that the diagnostic log needs, as one replaceable object.

#ifndef VRXMATH_PLATFORM_FILE_SYSTEM_H_
#define VRXMATH_PLATFORM_FILE_SYSTEM_H_

#include <cstdint>
#include <memory>
#include <string_view>

#include <vrxmath/export.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// A file open for writing by nobody else. Closed when destroyed.
class VRX_API ExclusiveFile {
 public:
  virtual ~ExclusiveFile();
  /// The length in bytes.
  [[nodiscard]] virtual uint64_t Length() const = 0;
  /// Writes behind the end. False when not all of it could be written; the file may then hold a part of it.
  [[nodiscard]] virtual bool Append(std::string_view bytes) = 0;
  virtual bool SetLength(uint64_t length) = 0;
};

/// Where files are. Paths are what the host and the user gave, separators included.
class VRX_API FileSystem {
 public:
  virtual ~FileSystem();
  [[nodiscard]] virtual bool DirectoryExists(const CString& path) = 0;
  /// Opens a file with its content for writing, or creates it. Null when it cannot be written, when it is no
  /// plain file, and when someone else has it open this way.
  [[nodiscard]] virtual std::unique_ptr<ExclusiveFile> OpenExclusive(const CString& path) = 0;
  virtual bool Delete(const CString& path) = 0;
};

/// The file system in use: the system's, unless it was replaced.
[[nodiscard]] VRX_API FileSystem& CurrentFileSystem();

/// Replaces the file system for the whole process; null restores the system's. It must outlive its use.
VRX_API void SetFileSystem(FileSystem* files);

namespace platform_internal {
FileSystem& SystemFiles();
}  // namespace platform_internal

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_FILE_SYSTEM_H_
