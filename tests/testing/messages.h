// Takes the place of the message box and counts what the library wants to tell the user.

#ifndef TESTS_TESTING_MESSAGES_H_
#define TESTS_TESTING_MESSAGES_H_

#include <string>
#include <utility>
#include <vector>

#include <vrxmath/platform/message_box.h>

namespace vrx::test {

/// While it lives, messages are recorded instead of shown.
class MessageRecorder {
 public:
  MessageRecorder() {
    SetMessageBoxHandler(
        [](WideView text, MessageIcon icon, void* self) {
          auto* recorder = static_cast<MessageRecorder*>(self);
          recorder->texts_.push_back(CString(text).ToUtf8());
          recorder->lastIcon_ = icon;
        },
        this);
  }
  MessageRecorder(const MessageRecorder&) = delete;
  MessageRecorder& operator=(const MessageRecorder&) = delete;
  ~MessageRecorder() { SetMessageBoxHandler(nullptr); }

  /// The messages since the last call.
  std::vector<std::string> Take() { return std::exchange(texts_, {}); }
  MessageIcon LastIcon() const { return lastIcon_; }

 private:
  std::vector<std::string> texts_;
  MessageIcon lastIcon_ = MessageIcon::kNone;
};

/// The messages that the recorder holds after so many index errors.
inline std::vector<std::string> IndexErrors(std::size_t count = 1) {
  return std::vector<std::string>(count, "Index out of bounds in CArrayVarex");
}

}  // namespace vrx::test

#endif  // TESTS_TESTING_MESSAGES_H_
