#include "kexbase/guid.h"

#include <array>

#include "kexbase/os.h"

namespace base {

std::string GenerateGUID() {
  std::array<unsigned char, 16> bytes;
  internal::FillRandom(bytes.data(), bytes.size());
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);  // version 4
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);  // the variant of RFC 4122
  std::string text;
  text.reserve(36);
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += "0123456789ABCDEF"[bytes[i] >> 4];
    text += "0123456789ABCDEF"[bytes[i] & 15];
  }
  return text;
}

}  // namespace base
