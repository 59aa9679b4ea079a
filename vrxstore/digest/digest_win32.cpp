#include <vrxstore/digest/digest.h>

#include <vrxmath/platform/win32/win32.h>

#include <bcrypt.h>
#include <stdexcept>
#include <wincrypt.h>

namespace vrx::store {
namespace {

void Check(NTSTATUS status) {
  if (status < 0) throw std::runtime_error("the operating system cannot compute SHA-256");
}

// The calls do not write through this pointer.
UCHAR* Octets(std::string_view text) {
  return reinterpret_cast<UCHAR*>(const_cast<char*>(text.data()));
}

}  // namespace

struct Digest::State {
  BCRYPT_ALG_HANDLE algorithm = nullptr;
  BCRYPT_HASH_HANDLE hash = nullptr;
};

Digest::Digest() : state_(std::make_unique<State>()) {
  Check(::BCryptOpenAlgorithmProvider(&state_->algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0));
  Check(::BCryptCreateHash(state_->algorithm, &state_->hash, nullptr, 0, nullptr, 0, 0));
}

Digest::~Digest() {
  ::BCryptDestroyHash(state_->hash);
  ::BCryptCloseAlgorithmProvider(state_->algorithm, 0);
}

void Digest::Add(std::string_view bytes) {
  Check(::BCryptHashData(state_->hash, Octets(bytes), static_cast<ULONG>(bytes.size()), 0));
}

std::string Digest::Finish() {
  std::string digest(32, '\0');
  Check(::BCryptFinishHash(state_->hash, Octets(digest), static_cast<ULONG>(digest.size()), 0));
  return digest;
}

std::string Base64(std::string_view bytes) {
  constexpr DWORD kForm = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;
  const auto count = static_cast<DWORD>(bytes.size());
  std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');  // the call adds a terminator
  auto length = static_cast<DWORD>(text.size());
  if (count > 0 && !::CryptBinaryToStringA(Octets(bytes), count, kForm, text.data(), &length))
    throw std::runtime_error("the operating system cannot encode Base64");
  text.resize(count > 0 ? length : 0);
  return text;
}

}  // namespace vrx::store
