// What an action is refused with.

#ifndef TESTS_VRXSTORE_REFUSAL_H_
#define TESTS_VRXSTORE_REFUSAL_H_

#include <functional>
#include <string>

#include <vrxio/text/input_error.h>

namespace vrx::test {

/// The message with which an action is refused, or that it was not.
inline std::string Refusal(const std::function<void()>& act) {
  try {
    act();
  } catch (const io::InputError& error) {
    return error.what();
  }
  return "nothing was refused";
}

}  // namespace vrx::test

#endif  // TESTS_VRXSTORE_REFUSAL_H_
