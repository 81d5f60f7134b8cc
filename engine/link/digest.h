// The MD5 digest of what comes in pieces: both sides of a transfer check it.
#pragma once

#include <openssl/evp.h>

#include <array>
#include <memory>
#include <string>
#include <string_view>

namespace imsdk::link {

class Digest {
 public:
  Digest() : context_(EVP_MD_CTX_new()) {
    good_ = context_ && EVP_DigestInit_ex(context_.get(), EVP_md5(), nullptr) == 1;
  }

  void Add(std::string_view piece) {
    good_ = good_ && EVP_DigestUpdate(context_.get(), piece.data(), piece.size()) == 1;
  }

  // Lower-case hexadecimal digits; empty when the system's cryptography refuses.
  std::string Finish() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
    unsigned length = 0;
    if (!good_ || EVP_DigestFinal_ex(context_.get(), bytes.data(), &length) != 1) return {};
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (unsigned i = 0; i < length; ++i) {
      text += {kDigits[bytes[i] >> 4], kDigits[bytes[i] & 15]};
    }
    return text;
  }

 private:
  struct Free {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
  };
  const std::unique_ptr<EVP_MD_CTX, Free> context_;
  bool good_;
};

}  // namespace imsdk::link
