// How the readers complain.

#ifndef VRXIO_TEXT_INPUT_ERROR_H_
#define VRXIO_TEXT_INPUT_ERROR_H_

#include <stdexcept>
#include <string_view>

#include <vrxio/text/shown_text.h>

namespace vrx::io {

/// A file, or a name that a person gave, cannot be used. `what()` is a sentence that names the file, the line and the
/// column where there are any, and the reason. What the sentence quotes of a file is cut and cannot command a terminal
/// (MessageText).
class InputError : public std::runtime_error {
 public:
  explicit InputError(std::string_view text) : std::runtime_error(MessageText(text)) {}
};

}  // namespace vrx::io

#endif  // VRXIO_TEXT_INPUT_ERROR_H_
