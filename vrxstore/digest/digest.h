// SHA-256 and Base64, by nettle, on Windows by the system, and in WebAssembly by code of its own.

#ifndef VRXSTORE_DIGEST_DIGEST_H_
#define VRXSTORE_DIGEST_DIGEST_H_

#include <memory>
#include <string>
#include <string_view>

namespace vrx::store {

/// The SHA-256 digest of bytes that come in parts. Throws std::runtime_error where the system computes none.
class Digest {
 public:
  Digest();
  ~Digest();
  Digest(const Digest&) = delete;
  Digest& operator=(const Digest&) = delete;

  void Add(std::string_view bytes);
  /// The 32 bytes of the digest; call once.
  std::string Finish();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// Bytes as hexadecimal digits, as `sha256sum` prints them.
inline std::string HexText(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    text += kDigits[static_cast<unsigned char>(c) >> 4];
    text += kDigits[static_cast<unsigned char>(c) & 15];
  }
  return text;
}

/// Base64 without line ends (RFC 4648). Throws std::runtime_error where the system makes none.
std::string Base64(std::string_view bytes);

}  // namespace vrx::store

#endif  // VRXSTORE_DIGEST_DIGEST_H_
