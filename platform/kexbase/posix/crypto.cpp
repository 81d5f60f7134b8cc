#include <openssl/evp.h>
#include <sys/random.h>

#include <cerrno>
#include <cstdlib>

#include "kexbase/os.h"

namespace base::internal {

void FillRandom(void* out, size_t size) {
  auto* at = static_cast<unsigned char*>(out);
  while (size > 0) {
    const ssize_t got = getrandom(at, size, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) std::abort();
    at += got;
    size -= static_cast<size_t>(got);
  }
}

bool Md5(std::string_view data, std::array<unsigned char, 16>* digest) {
  return EVP_Digest(data.data(), data.size(), digest->data(), nullptr, EVP_md5(), nullptr) == 1;
}

}  // namespace base::internal
