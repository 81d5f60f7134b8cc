// The client's chat windows, implemented by the host.
#pragma once

#include <string>

#include "imsdk/biz/conversation_id.h"
#include "kexcom/ref_counted.h"

namespace imsdk::client {

// Tells whether a person can see a conversation now. Found in the component registry; without it
// no window counts as visible. Any thread; must not wait.
class IChatWindowService : public IKexCOMRefCounted {
 public:
  static constexpr char kServiceId[] = "imsdk.client.IChatWindowService";

  // The view `browserId` works for `account` from now on, or for nobody: when it is bound, at each
  // login and logout, and at its end. Its windows are that account's. Called by the bridge.
  virtual void SetViewAccount(const std::wstring& browserId, const biz::IMUserID& account) = 0;
  // Whether a chat window of `account` shows the conversation `cid` on the screen.
  virtual bool IsVisible(const biz::IMUserID& account, const biz::IMConversationID& cid) = 0;
  // Whether such a window has the input focus.
  virtual bool IsActivated(const biz::IMUserID& account, const biz::IMConversationID& cid) = 0;

 protected:
  ~IChatWindowService() = default;
};

}  // namespace imsdk::client
