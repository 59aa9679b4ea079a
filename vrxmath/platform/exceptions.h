// The three exceptions that the library raises: a bad argument, exhausted memory, and an archive that cannot
// give or take what was asked. Colour mathematics raises none of them; see docs/design/errors.md.

#ifndef VRXMATH_PLATFORM_EXCEPTIONS_H_
#define VRXMATH_PLATFORM_EXCEPTIONS_H_

#include <exception>

#include <vrxmath/export.h>

namespace vrx {

/// Base of the library's exceptions. `what()` is English text for a developer, not for the user of the host.
class VRX_API CException : public std::exception {
 public:
  ~CException() override;
};

/// A size, position or count that no container can honour.
class VRX_API CInvalidArgException : public CException {
 public:
  ~CInvalidArgException() override;
  const char* what() const noexcept override;
};

/// An allocation failed. Whatever was being resized is unchanged.
class VRX_API CMemoryException : public CException {
 public:
  ~CMemoryException() override;
  const char* what() const noexcept override;
};

/// An archive operation failed; `cause` says how.
class VRX_API CArchiveException : public CException {
 public:
  /// The numbers are persistent: hosts compare them.
  enum Cause {
    kReadOnly = 2,    ///< writing into an archive opened for reading
    kEndOfFile = 3,   ///< fewer bytes left than asked for
    kWriteOnly = 4,   ///< reading from an archive opened for writing
    kBadFormat = 5,   ///< bytes that do not form the record expected
    kNewVersion = 6,  ///< a form written by a newer library
    kIoError = 7,     ///< the file below the archive failed
  };

  explicit CArchiveException(Cause cause) : cause_(cause) {}
  ~CArchiveException() override;
  [[nodiscard]] Cause GetCause() const { return cause_; }
  const char* what() const noexcept override;

 private:
  Cause cause_;
};

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_EXCEPTIONS_H_
