// SHA-256 by the examples of FIPS 180-4 and NIST's long message, Base64 by those of RFC 4648.

#include <vrxstore/digest/digest.h>

#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace vrx::store {
namespace {

std::string HashOf(const std::string& text, std::size_t part) {
  Digest digest;
  for (std::size_t at = 0; at < text.size(); at += part) digest.Add(text.substr(at, part));
  return HexText(digest.Finish());
}

// In parts of any size: blocks have 64 bytes, and the length of the last one decides how it is filled up.
TEST(Digest, IsThePublishedOne) {
  const std::pair<std::string, const char*> kRows[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {"abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopq"
       "rs"
       "tnopqrstu",
       "cf5b16a778af8380036ce59e7b0492370b249b11e8f07a51afac45037afee9d1"},
      {std::string(1'000'000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  for (const auto& [text, hash] : kRows) {
    for (const std::size_t part : {std::size_t{7}, std::size_t{64}, std::size_t{1} << 20})
      EXPECT_EQ(HashOf(text, part), hash) << text.size() << " bytes by " << part;
  }
}

TEST(Base64, IsThePublishedOne) {
  const std::pair<const char*, const char*> kRows[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}, {"\xFB\xFF", "+/8="}};
  for (const auto& [text, base64] : kRows) EXPECT_EQ(Base64(text), base64) << text;
}

}  // namespace
}  // namespace vrx::store
