#include "server/run_token.h"

#include <fcntl.h>
#include <sodium.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <system_error>
#include <utility>

namespace imsdk::host {
namespace {

constexpr std::size_t kHashBytes = 32;
constexpr std::size_t kHashText = 2 * kHashBytes;
constexpr std::size_t kTokenBytes = 24;
constexpr std::size_t kEarlierRuns = 8;

std::string Hash(std::string_view token) {
  std::array<unsigned char, kHashBytes> hash{};
  crypto_generichash(hash.data(), hash.size(), reinterpret_cast<const unsigned char*>(token.data()),
                     token.size(), nullptr, 0);
  std::array<char, kHashText + 1> text{};
  sodium_bin2hex(text.data(), text.size(), hash.data(), hash.size());
  return text.data();
}

std::string FreshToken() {
  std::array<unsigned char, kTokenBytes> random{};
  randombytes_buf(random.data(), random.size());
  constexpr int kVariant = sodium_base64_VARIANT_URLSAFE_NO_PADDING;
  std::array<char, sodium_base64_ENCODED_LEN(kTokenBytes, kVariant)> text{};
  sodium_bin2base64(text.data(), text.size(), random.data(), random.size(), kVariant);
  return text.data();
}

}  // namespace

std::unique_ptr<RunToken> RunToken::Open(std::filesystem::path file, std::string fixed,
                                         std::int64_t now) {
  if (sodium_init() < 0) return nullptr;
  std::unique_ptr<RunToken> token(new RunToken(std::move(file)));
  token->text_ = fixed.empty() ? FreshToken() : std::move(fixed);
  token->known_.push_back({Hash(token->text_), 0});
  token->ReadEarlier(now);
  return token;
}

void RunToken::ReadEarlier(std::int64_t now) {
  std::ifstream in(file_);
  Known earlier;
  while (known_.size() <= kEarlierRuns && in >> earlier.hash >> earlier.expires) {
    if (earlier.expires == 0) earlier.expires = now + kGraceMs;
    if (earlier.hash.size() == kHashText && earlier.expires > now) known_.push_back(earlier);
  }
}

bool RunToken::Accepts(std::string_view token, std::int64_t now) const {
  const std::string hash = Hash(token);
  bool good = false;
  for (const Known& known : known_) {
    const bool same = sodium_memcmp(hash.data(), known.hash.data(), kHashText) == 0;
    const bool fresh = known.expires == 0 || known.expires > now;
    good |= same && fresh;
  }
  return good;
}

bool RunToken::Save() const {
  std::string text;
  for (const Known& known : known_) {
    text += known.hash + ' ' + std::to_string(known.expires) + '\n';
  }
  const std::string fresh = file_.string() + ".new";
  const int out = ::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (out < 0) return false;
  const bool written = ::write(out, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  const bool closed = ::close(out) == 0;
  std::error_code failure;
  if (written && closed) std::filesystem::rename(fresh, file_, failure);
  return written && closed && !failure;
}

void RunToken::Retire() const {
  std::error_code ignored;
  std::filesystem::remove(file_, ignored);
}

bool IsTokenText(std::string_view text) {
  constexpr std::string_view kLetters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
  return !text.empty() && text.size() <= 256 &&
         text.find_first_not_of(kLetters) == std::string_view::npos;
}

}  // namespace imsdk::host
