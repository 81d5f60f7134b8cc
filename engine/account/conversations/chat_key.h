// What names a conversation of an account, and a place in it.
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <utility>

#include "imsdk/biz/message.h"
#include "imsdk/biz/user_id.h"

namespace imsdk::account {

// The numbers are in stores.
enum ChatKind : std::int32_t { kSingleChat = 0, kSystemChat = 1, kSubscribeChat = 2 };

// A virtual conversation and a user's may bear one name; they are two conversations. A user alone
// stands for the single chat with it.
struct ChatKey {
  ChatKey() = default;
  // Implicit, so that what deals with single chats only need not say so.
  ChatKey(biz::IMUserID user, ChatKind of = kSingleChat) : cid(std::move(user)), kind(of) {}

  biz::IMUserID cid;
  ChatKind kind = kSingleChat;

  bool is_virtual() const { return kind != kSingleChat; }
  friend bool operator==(const ChatKey&, const ChatKey&) = default;
};

// Where a message stands in its conversation.
struct Position {
  std::int64_t msgtime = 0;
  std::int64_t msgid = 0;

  bool is_end() const { return msgtime == 0 && msgid == 0; }
  friend auto operator<=>(const Position&, const Position&) = default;
};

inline Position PositionOf(const biz::IMMessage& message) {
  return {message.msgtime, message.msgid};
}

// A received message, and its place in the order in which the store got its messages.
struct Arrived {
  biz::IMMessage message;
  std::int64_t arrival = 0;
  ChatKind kind = kSingleChat;
  bool offline = false;  // came while the account was not logged in

  ChatKey key() const { return {message.cid, kind}; }
};

// A message that was unread in the store and is so no more: read elsewhere, withdrawn or deleted.
struct NoLongerUnread {
  Position position;
  std::int64_t arrival = 0;
};

}  // namespace imsdk::account

template <>
struct std::hash<imsdk::account::ChatKey> {
  std::size_t operator()(const imsdk::account::ChatKey& key) const noexcept {
    return std::hash<imsdk::biz::IMUserID>{}(key.cid) + static_cast<std::size_t>(key.kind);
  }
};
