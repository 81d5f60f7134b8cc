// What pages can do with tribes beyond the bridge's methods: bridgehost's own addition.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "bridge_library.h"
#include "imsdk/biz/user_id.h"

namespace imsdk::host {

// Serves calls by name: CreateTribe, JoinTribe, InviteToTribe, QuitTribe, TransferTribe,
// EnableTribe, SetTribe and SetAttention. Requests are records of the messaging core with a few
// plain keys beside them; what each takes stands in `page_protocol.cpp`. Any thread.
class TribeCalls {
 public:
  struct Answer {
    bool failed = false;
    std::wstring payload;  // JSON: {"code","subcode","result",...}
  };
  // Called exactly once, on an engine's thread or before `Serve` returns.
  using Done = std::function<void(Answer answer)>;

  // `library` lives longer than calls are made.
  explicit TribeCalls(const BridgeLibrary& library) : library_(library) {}

  // Does what is asked for in the name of `account`. Answers with the engine's codes, and
  // `E_NOTIMPL` for an unknown name, `E_INVALIDARG` for a request that is no JSON object,
  // `E_UNEXPECTED` when the account is not logged in or the engine drops the call.
  void Serve(const biz::IMUserID& account, std::wstring_view name, std::string json,
             Done done) const;

 private:
  const BridgeLibrary& library_;
};

}  // namespace imsdk::host
