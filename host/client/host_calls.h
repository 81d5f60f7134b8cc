// What pages can do beyond the bridge's methods: bridgehost's own addition.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "bridge_library.h"
#include "imsdk/biz/user_id.h"

namespace imsdk::host {

// Serves calls by group and name: tribes made, joined and handed over, contacts asked for and put
// in order. What each takes and gives stands in `page/host_methods.cpp`. Any thread.
class HostCalls {
 public:
  struct Answer {
    bool failed = false;
    std::wstring payload;  // JSON: {"code","subcode","result",...}
  };
  // Called exactly once, on an engine's thread or before `Serve` returns.
  using Done = std::function<void(Answer answer)>;

  // `library` lives longer than calls are made.
  explicit HostCalls(const BridgeLibrary& library) : library_(library) {}

  // Whether calls of this method ("bridgehost.tribes.invoke") are the host's to serve.
  static bool Has(std::wstring_view method);
  // Does what is asked for in the name of `account`. Answers with the engine's codes, and
  // `E_NOTIMPL` for an unknown name, `E_INVALIDARG` for a request that is no JSON object,
  // `E_UNEXPECTED` when the account is not logged in or the engine drops the call.
  void Serve(const biz::IMUserID& account, std::wstring_view method, std::wstring_view name,
             std::string json, Done done) const;

 private:
  const BridgeLibrary& library_;
};

}  // namespace imsdk::host
