// Which conversations are on the screen now.
#pragma once

#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "imsdk/client/chat_window.h"

namespace imsdk::host {

// The chat windows of all views, as their pages report them. A window belongs to the account that
// its view works for now; a page that names the account of a window has it count only while that is
// so.
class ChatWindows final : public RefPtrCounted<client::IChatWindowService> {
 public:
  void SetViewAccount(const std::wstring& browserId, const biz::IMUserID& account) override;
  bool IsVisible(const biz::IMUserID& account, const biz::IMConversationID& cid) override;
  bool IsActivated(const biz::IMUserID& account, const biz::IMConversationID& cid) override;

  // The account that a view works for now; empty for nobody's. Any thread.
  biz::IMUserID AccountOf(const std::wstring& browserId);

  // Takes over what the page of a view said in UTF-8 JSON: {"cid":{"appkey","nick"},
  // "visible":1|0,"activated":1|0} and, if it likes, "account":{"appkey","nick"}. False when the
  // text is not of this form or over 2 KiB. Any thread.
  bool Report(const std::wstring& browserId, std::string_view json);

  // Forgets a view that ends. Any thread.
  void Drop(const std::wstring& browserId);

 private:
  struct Window {
    biz::IMUserID account;  // empty: its view's
    biz::IMUserID cid;      // pages do not tell a user from a virtual one
    bool visible;
    bool activated;
  };

  struct View {
    biz::IMUserID account;  // empty: nobody's
    std::vector<Window> windows;
  };

  // Whether a window of `account` on `cid` has the flag.
  bool Any(const biz::IMUserID& account, const biz::IMConversationID& cid, bool Window::*flag);

  std::mutex lock_;
  std::unordered_map<std::wstring, View> views_;  // by browser id; under lock_
};

}  // namespace imsdk::host
