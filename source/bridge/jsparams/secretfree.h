// JSON arguments as traces may show them: passwords and tokens are masked.
#pragma once

#include <string>
#include <string_view>

namespace imsdk::bridge {

// `json` without the values of the keys "password" and "token". Refers to `json` when there are
// none, so it must not outlive it.
class SecretFree {
 public:
  explicit SecretFree(const std::wstring& json);
  SecretFree(const SecretFree&) = delete;
  SecretFree& operator=(const SecretFree&) = delete;
  operator std::wstring_view() const { return text_; }

 private:
  std::wstring masked_;
  std::wstring_view text_;
};

}  // namespace imsdk::bridge
