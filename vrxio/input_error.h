// How the readers complain.

#ifndef VRXIO_INPUT_ERROR_H_
#define VRXIO_INPUT_ERROR_H_

#include <stdexcept>

namespace vrx::io {

/// A file, or a name that a person gave, cannot be used. `what()` is a sentence that names the file, the line and the
/// column where there are any, and the reason.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace vrx::io

#endif  // VRXIO_INPUT_ERROR_H_
