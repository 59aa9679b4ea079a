#include <vrxmath/platform/exceptions.h>

namespace vrx {

// The destructors stand here so that each class has one home for its type information.
CException::~CException() = default;
CInvalidArgException::~CInvalidArgException() = default;
CMemoryException::~CMemoryException() = default;
CArchiveException::~CArchiveException() = default;

const char* CInvalidArgException::what() const noexcept {
  return "invalid argument";
}

const char* CMemoryException::what() const noexcept {
  return "out of memory";
}

const char* CArchiveException::what() const noexcept {
  switch (cause_) {
    case kReadOnly:
      return "archive is open for reading only";
    case kEndOfFile:
      return "archive ends before the data does";
    case kWriteOnly:
      return "archive is open for writing only";
    case kBadFormat:
      return "archive data is malformed";
    case kNewVersion:
      return "archive was written by a newer version";
    case kIoError:
      return "archive file failed";
  }
  return "archive error";
}

}  // namespace vrx
