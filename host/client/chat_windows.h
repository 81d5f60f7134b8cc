// Which conversations are on the screen now.
#pragma once

#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "imsdk/client/chat_window.h"

namespace imsdk::host {

// The chat windows of all views, as their pages report them. A page that does not say which account
// its window belongs to speaks for any account of its view.
class ChatWindows final : public RefPtrCounted<client::IChatWindowService> {
 public:
  bool IsVisible(const biz::IMUserID& account, const biz::IMConversationID& cid) override;
  bool IsActivated(const biz::IMUserID& account, const biz::IMConversationID& cid) override;

  // Takes over what the page of `view` said in UTF-8 JSON: {"cid":{"appkey","nick"},
  // "visible":1|0,"activated":1|0} and, if it likes, "account":{"appkey","nick"}; without it
  // `account` stands, which may be empty. False when the text is not of this form. Any thread.
  bool Report(const void* view, const biz::IMUserID& account, std::string_view json);

  // Forgets the windows of a view that ends. Any thread.
  void Drop(const void* view);

 private:
  struct Window {
    biz::IMUserID account;  // empty: any
    biz::IMUserID cid;      // pages do not tell a user from a virtual one
    bool visible;
    bool activated;
  };

  // Whether a window of `account` on `cid` has the flag.
  bool Any(const biz::IMUserID& account, const biz::IMConversationID& cid, bool Window::*flag);

  std::mutex lock_;
  std::unordered_map<const void*, std::vector<Window>> views_;  // under lock_
};

}  // namespace imsdk::host
