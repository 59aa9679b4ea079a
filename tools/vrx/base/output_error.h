// Results that cannot be written.

#ifndef TOOLS_VRX_BASE_OUTPUT_ERROR_H_
#define TOOLS_VRX_BASE_OUTPUT_ERROR_H_

#include <stdexcept>

namespace vrx::tool {

/// Results could not be written: the disk is full.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Whoever read the results has gone, as `head` does when it has its lines: nobody is left who would want a message.
class ReaderGone : public OutputError {
 public:
  ReaderGone() : OutputError("nobody reads the results") {}
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_BASE_OUTPUT_ERROR_H_
