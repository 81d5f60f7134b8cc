// The token that a page must show, and its survival of a crash of the host.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace imsdk::host {

// The token of this run. While the host runs, the token's hash lies in a file that only the user
// can read; when the host was killed, the next run finds it there and goes on accepting the token
// for `kGraceMs`, so that open pages come back by themselves. Times are milliseconds since the Unix
// epoch, UTC.
class RunToken {
 public:
  static constexpr std::int64_t kGraceMs = 12LL * 3600 * 1000;

  // Reads what an earlier run left in `file`. `fixed` is the token of this run; empty for a fresh
  // random one. Null without the system's randomness.
  static std::unique_ptr<RunToken> Open(std::filesystem::path file, std::string fixed,
                                        std::int64_t now);

  // The token in the clear, fit for a URL.
  const std::string& text() const { return text_; }

  // Whether `token` is good at `now`. Takes the same time wherever it differs. Any thread.
  bool Accepts(std::string_view token, std::int64_t now) const;

  // Leaves the hashes for a next run (mode 0600). False when the file cannot be written.
  bool Save() const;
  // A clean end: takes the file away, so no token outlives this run.
  void Retire() const;

 private:
  struct Known {
    std::string hash;          // hexadecimal
    std::int64_t expires = 0;  // 0: the running token
  };

  explicit RunToken(std::filesystem::path file) : file_(std::move(file)) {}
  void ReadEarlier(std::int64_t now);

  std::filesystem::path file_;
  std::string text_;
  std::vector<Known> known_;  // the running token first
};

// Whether `text` can serve as a token: 1 to 256 letters, digits, "-", ".", "_" and "~".
bool IsTokenText(std::string_view text);

}  // namespace imsdk::host
