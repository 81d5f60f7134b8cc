// JSON arguments as traces may show them: passwords and tokens are masked.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace imsdk::bridge {

// Whether what stands under this key is never traced.
bool IsSecretKey(std::string_view key);

// What a request may hold.
struct Secrets {
  bool taken = false;                  // by the module that it goes to
  std::vector<std::string_view> keys;  // secret here, beside those that are secret everywhere
};

// A JSON argument for `CTraceProxy::Brief`. Shown are the values that were read, those under secret
// keys as "***" whatever they are, also inside texts that are JSON themselves. An argument without
// a secret is shown as it was written. One that is no JSON may hold anything: its length is shown
// when it goes to a module that takes secrets or has the name of one in it. So may one that is no
// object, for a module that takes secrets.
//
// Refers to `json`. Looks at it only when somebody wants the line, once.
class SecretFree {
 public:
  SecretFree(const std::wstring& json, Secrets secrets)
      : json_(json), secrets_(std::move(secrets)) {}

  // The text, which stands in `*made` unless it is the argument itself.
  std::wstring_view operator()(std::wstring* made) const;

 private:
  const std::wstring& json_;
  const Secrets secrets_;
};

}  // namespace imsdk::bridge
