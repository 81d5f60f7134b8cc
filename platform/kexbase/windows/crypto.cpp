#include <windows.h>
// After windows.h, which it needs.
#include <bcrypt.h>

#include <algorithm>
#include <cstdlib>

#include "kexbase/os.h"

namespace base::internal {

namespace {

class Md5Hash {
 public:
  Md5Hash() {
    if (BCryptOpenAlgorithmProvider(&algorithm_, BCRYPT_MD5_ALGORITHM, nullptr, 0) < 0) return;
    if (BCryptCreateHash(algorithm_, &hash_, nullptr, 0, nullptr, 0, 0) < 0) hash_ = nullptr;
  }
  ~Md5Hash() {
    if (hash_) BCryptDestroyHash(hash_);
    if (algorithm_) BCryptCloseAlgorithmProvider(algorithm_, 0);
  }
  Md5Hash(const Md5Hash&) = delete;
  Md5Hash& operator=(const Md5Hash&) = delete;

  bool Add(std::string_view data) {
    if (!hash_) return false;
    constexpr size_t kPiece = size_t{1} << 30;  // lengths are 32-bit here
    while (!data.empty()) {
      const std::string_view piece = data.substr(0, kPiece);
      auto* bytes = reinterpret_cast<PUCHAR>(const_cast<char*>(piece.data()));
      if (BCryptHashData(hash_, bytes, static_cast<ULONG>(piece.size()), 0) < 0) return false;
      data.remove_prefix(piece.size());
    }
    return true;
  }

  bool Finish(std::array<unsigned char, 16>* digest) {
    return BCryptFinishHash(hash_, digest->data(), static_cast<ULONG>(digest->size()), 0) >= 0;
  }

 private:
  BCRYPT_ALG_HANDLE algorithm_ = nullptr;
  BCRYPT_HASH_HANDLE hash_ = nullptr;
};

}  // namespace

void FillRandom(void* out, size_t size) {
  auto* bytes = static_cast<PUCHAR>(out);
  const auto count = static_cast<ULONG>(size);
  if (BCryptGenRandom(nullptr, bytes, count, BCRYPT_USE_SYSTEM_PREFERRED_RNG) < 0) std::abort();
}

bool Md5(std::string_view data, std::array<unsigned char, 16>* digest) {
  Md5Hash hash;
  return hash.Add(data) && hash.Finish(digest);
}

}  // namespace base::internal
