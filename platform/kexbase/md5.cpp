#include "kexbase/md5.h"

#include <array>

#include "kexbase/os.h"

namespace base {

std::string MD5String(std::string_view data) {
  std::array<unsigned char, 16> digest;
  if (!internal::Md5(data, &digest)) return {};
  std::string text;
  text.reserve(2 * digest.size());
  for (const unsigned char byte : digest) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

}  // namespace base
