#include "embedded/credentials.h"

#include <sodium.h>

#include <array>

namespace imsdk::embedded {

namespace {

constexpr std::size_t kBytes = 32;

std::string Hex(const std::array<unsigned char, kBytes>& bytes) {
  std::string text(kBytes * 2 + 1, '\0');
  sodium_bin2hex(text.data(), text.size(), bytes.data(), bytes.size());
  text.pop_back();
  return text;
}

}  // namespace

bool InitCredentials() { return sodium_init() >= 0; }

std::string HashPassword(const std::string& password, const HashCost& cost) {
  std::array<char, crypto_pwhash_STRBYTES> hash{};
  if (crypto_pwhash_str(hash.data(), password.data(), password.size(), cost.passes, cost.memory) !=
      0) {
    return {};
  }
  return hash.data();
}

bool VerifyPassword(const std::string& hash, const std::string& password) {
  return crypto_pwhash_str_verify(hash.c_str(), password.data(), password.size()) == 0;
}

std::string NewToken() {
  std::array<unsigned char, kBytes> bytes;
  randombytes_buf(bytes.data(), bytes.size());
  return Hex(bytes);
}

std::string HashToken(const std::string& token) {
  std::array<unsigned char, kBytes> hash;
  crypto_generichash(hash.data(), hash.size(), reinterpret_cast<const unsigned char*>(token.data()),
                     token.size(), nullptr, 0);
  return Hex(hash);
}

}  // namespace imsdk::embedded
