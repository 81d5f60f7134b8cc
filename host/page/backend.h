// What the server needs from the rest of the host.
#pragma once

#include <functional>
#include <string>

#include "bridge/imsdkbridge.h"
#include "imsdk/biz/user_id.h"
#include "kexcom/ref_counted.h"

namespace imsdk::host {

// The outcome of logging an account in on behalf of its page.
struct LoginOutcome {
  int status = 200;    // 404: no such account; 503: it could not be logged in now
  std::string reason;  // for the page's developer, when refused
  biz::IMUserID user;
};

// Bridges, accounts and files behind the server. Any thread. Lives longer than the server runs;
// callbacks must be dropped before the server is destroyed.
class Backend {
 public:
  virtual ~Backend() = default;
  // A new bridge object, or null when none can be made.
  virtual RefPtr<bridge::IIMSDKBridge> NewBridge() = 0;
  // Logs in the account `nick` (UTF-8). `done` is called at most once, on any thread or before
  // this returns.
  virtual void LogIn(const std::string& nick, std::function<void(LoginOutcome)> done) = 0;
  // Tries to bring the file `path` (UTF-8, relative to the data folder) to this machine. `done` is
  // called at most once, on any thread or before this returns, whether the file came or not.
  virtual void Fetch(const std::string& path, std::function<void()> done) = 0;
};

}  // namespace imsdk::host
