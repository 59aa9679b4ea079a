#include <vrxstore/digest/digest.h>

#include <nettle/base64.h>
#include <nettle/sha2.h>

namespace vrx::store {
namespace {

const uint8_t* Octets(std::string_view text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

}  // namespace

struct Digest::State {
  sha256_ctx context;
};

Digest::Digest() : state_(std::make_unique<State>()) {
  sha256_init(&state_->context);
}
Digest::~Digest() = default;

void Digest::Add(std::string_view bytes) {
  sha256_update(&state_->context, bytes.size(), Octets(bytes));
}

std::string Digest::Finish() {
  std::string digest(SHA256_DIGEST_SIZE, '\0');
  sha256_digest(&state_->context, digest.size(), reinterpret_cast<uint8_t*>(digest.data()));
  return digest;
}

std::string Base64(std::string_view bytes) {
  std::string text(BASE64_ENCODE_RAW_LENGTH(bytes.size()), '\0');
  base64_encode_raw(text.data(), bytes.size(), Octets(bytes));
  return text;
}

}  // namespace vrx::store
