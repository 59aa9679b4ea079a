// SHA-256 and Base64, by nettle or, on Windows, by the system.

#ifndef TOOLS_VRX_REPORT_DIGEST_H_
#define TOOLS_VRX_REPORT_DIGEST_H_

#include <memory>
#include <string>
#include <string_view>

namespace vrx::tool {

/// The SHA-256 digest of bytes that come in parts. Throws OutputError where the system computes none.
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

/// Base64 without line ends (RFC 4648). Throws OutputError where the system makes none.
std::string Base64(std::string_view bytes);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_DIGEST_H_
