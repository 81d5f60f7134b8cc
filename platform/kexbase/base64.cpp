#include "kexbase/base64.h"

#include <array>
#include <cstdint>

namespace base {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint32_t kForeign = 0x80000000;

constexpr std::array<uint32_t, 256> MakeDigits() {
  std::array<uint32_t, 256> digits{};
  digits.fill(kForeign);
  for (size_t i = 0; i < kAlphabet.size(); ++i) {
    digits[static_cast<unsigned char>(kAlphabet[i])] = static_cast<uint32_t>(i);
  }
  return digits;
}

constexpr std::array<uint32_t, 256> kDigits = MakeDigits();

uint32_t Digit(char c) { return kDigits[static_cast<unsigned char>(c)]; }

// Four characters as 24 bits; one that is not of the alphabet sets kForeign.
uint32_t Group(std::string_view four) {
  const uint32_t bits =
      Digit(four[0]) << 18 | Digit(four[1]) << 12 | Digit(four[2]) << 6 | Digit(four[3]);
  const uint32_t all = Digit(four[0]) | Digit(four[1]) | Digit(four[2]) | Digit(four[3]);
  return (bits & 0xFFFFFF) | (all & kForeign);
}

void PutBytes(uint32_t bits, size_t count, char* out) {
  for (size_t i = 0; i < count; ++i) out[i] = static_cast<char>(bits >> (16 - 8 * i));
}

// The last group, which may end in one or two "=".
bool DecodeLast(std::string_view four, std::string* out) {
  size_t padding = 0;
  while (padding < 2 && four[3 - padding] == '=') ++padding;
  char digits[4] = {four[0], four[1], four[2], four[3]};
  for (size_t i = 4 - padding; i < 4; ++i) digits[i] = 'A';  // zero bits
  const uint32_t bits = Group({digits, 4});
  const uint32_t unused = (uint32_t{1} << (8 * padding)) - 1;
  if ((bits & (kForeign | unused)) != 0) return false;
  char bytes[3];
  PutBytes(bits, 3 - padding, bytes);
  out->append(bytes, 3 - padding);
  return true;
}

}  // namespace

bool Base64Decode(std::string_view text, std::string* out) {
  out->clear();
  if (text.size() % 4 != 0) return false;
  if (text.empty()) return true;
  const size_t full = text.size() / 4 - 1;  // groups that cannot be padded
  out->reserve(full * 3 + 3);
  out->resize(full * 3);
  uint32_t seen = 0;
  for (size_t i = 0; i < full; ++i) {
    const uint32_t bits = Group(text.substr(4 * i, 4));
    seen |= bits;
    PutBytes(bits, 3, out->data() + 3 * i);
  }
  if ((seen & kForeign) == 0 && DecodeLast(text.substr(4 * full), out)) return true;
  out->clear();
  return false;
}

}  // namespace base
