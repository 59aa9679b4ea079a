// Files: reading one, and replacing one so that no reader ever sees half of it. Paths are UTF-8.

#ifndef VRXMATH_PLATFORM_FILES_H_
#define VRXMATH_PLATFORM_FILES_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

#include <vrxmath/export.h>
#include <vrxmath/platform/archive.h>

namespace vrx {

/// A file that is read from its start to its end.
class VRX_API FileReader : public ByteStore {
 public:
  FileReader() = default;
  FileReader(const FileReader&) = delete;
  FileReader& operator=(const FileReader&) = delete;
  ~FileReader() override;

  /// Opens `path`. False when it does not exist, is a directory or may not be read; `GetError` says why.
  [[nodiscard]] bool Open(const std::string& path);
  [[nodiscard]] const std::string& GetError() const { return error_; }

  /// Throws CArchiveException (kIoError) when the device fails; `GetError` says why.
  [[nodiscard]] std::size_t Read(std::span<std::byte> out) override;
  /// Always throws CArchiveException (kReadOnly).
  void Write(std::span<const std::byte> bytes) override;
  /// Bytes to the end of a regular file; 0 for a pipe, which does not know. Counted forms (arrays, texts) can
  /// therefore not be read from a pipe.
  [[nodiscard]] uint64_t Remaining() const override { return remaining_; }

 private:
  void Close();

  std::FILE* file_ = nullptr;
  uint64_t remaining_ = 0;
  std::string error_;
};

/// Replaces a file as a whole: bytes go to a temporary file beside it, which takes its place in one step at
/// `Commit`. Without a commit nothing changes, whatever happens to the process.
class VRX_API FileReplacer : public ByteStore {
 public:
  FileReplacer() = default;
  FileReplacer(const FileReplacer&) = delete;
  FileReplacer& operator=(const FileReplacer&) = delete;
  /// Removes the temporary file unless it was committed.
  ~FileReplacer() override;

  /// Begins a new content for `path`, following links. The new file keeps the access mode of the old one.
  /// False when no file can be made there, or when what is there is no regular file or is write-protected;
  /// `GetError` says why.
  [[nodiscard]] bool Open(const std::string& path);
  /// Flushes to the device and puts the new content in place. False, with the old content kept, when that
  /// fails.
  [[nodiscard]] bool Commit();
  [[nodiscard]] const std::string& GetError() const { return error_; }

  /// Always throws CArchiveException (kWriteOnly).
  [[nodiscard]] std::size_t Read(std::span<std::byte> out) override;
  /// Throws CArchiveException (kIoError) when the device is full or fails; `GetError` says why.
  void Write(std::span<const std::byte> bytes) override;
  [[nodiscard]] uint64_t Remaining() const override { return 0; }

 private:
  void Discard();

  std::FILE* file_ = nullptr;
  std::string path_;
  std::string temporaryPath_;
  std::string error_;
};

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_FILES_H_
