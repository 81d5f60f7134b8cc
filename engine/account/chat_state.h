// What an account has in memory about its conversations: order, unread counts, new messages.
#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

#include "imsdk/biz/message.h"
#include "imsdk/biz/single_chat.h"
#include "kexbase/lock.h"

namespace imsdk::account {

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

// A message from a peer, and its place in the order in which the store got its messages.
struct Arrived {
  biz::IMMessage message;
  std::int64_t arrival = 0;
};

// A conversation as the store knows it when the account logs in.
struct StoredConversation {
  biz::IMUserID cid;
  Position newest;
  std::int64_t last_arrival = 0;
  std::int32_t unread = 0;
};

// The cache of new messages holds at most this many, and at most so much text (in characters);
// the oldest ones give way. Their unread counts stay.
inline constexpr std::size_t kMostCachedMessages = 2000;
inline constexpr std::size_t kMostCachedText = 8 * 1024 * 1024;

// Any thread; each operation holds a short lock.
class ChatState {
 public:
  void AddConversation(const StoredConversation& stored);
  // An unread message that the store had already. Its conversation was added.
  void AddUnread(biz::IMMessage message);
  void AddOutgoing(const biz::IMMessage& message);
  void AddIncoming(std::vector<Arrived> messages);

  biz::IMMessagePage NewMessages(const biz::IMUserID& cid, const biz::IMPageRequest& request) const;
  std::int32_t Unread(const biz::IMUserID& cid) const;
  std::vector<biz::IMUnreadCount> Conversations() const;
  // Marks everything that arrived as read. Returns the last arrival that this takes in, or 0 when
  // there was nothing unread.
  std::int64_t MarkRead(const biz::IMUserID& cid);

 private:
  // Messages are never changed, so a page is put together outside the lock.
  using Cached = std::map<Position, std::shared_ptr<const biz::IMMessage>>;

  struct Conversation {
    Position newest;
    std::int64_t last_arrival = 0;
    std::int32_t unread = 0;
    Cached cached;
  };

  void Cache(Conversation& conversation, biz::IMMessage message);
  void Uncache(Conversation& conversation, Cached::iterator entry);

  mutable base::Lock lock_;
  // Nodes of the map stay where they are, so that `cached_` may point to them.
  std::unordered_map<biz::IMUserID, Conversation> conversations_;
  std::set<std::pair<Position, Conversation*>> cached_;  // of all conversations, oldest first
  std::size_t cached_text_ = 0;
};

}  // namespace imsdk::account
