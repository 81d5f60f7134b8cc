// What an account has in memory about its conversations: order, unread counts, new messages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

#include "account/store/message_store.h"
#include "account/store/positions.h"
#include "imsdk/biz/chat_mgr.h"
#include "kexbase/lock.h"

namespace imsdk::account {

// The cache of new messages holds at most this many, and at most so much text (in characters);
// the oldest ones give way. Their unread counts stay.
inline constexpr std::size_t kMostCachedMessages = 2000;
inline constexpr std::size_t kMostCachedText = 8 * 1024 * 1024;

// What the store did to messages is told here after its commit; what a page reads is marked here
// first and in the store later. Both meet in one rule: a received message is unread here exactly
// when it arrived after everything that was marked. Any thread; each operation holds a short lock.
class ChatState {
 public:
  void AddConversation(const StoredConversation& stored);
  // One that may be new and have no message.
  void AddConversation(const biz::IMConversationID& cid);
  // An unread message that the store had already. Its conversation was added.
  void AddUnread(Arrived stored);
  // A message that is not unread: the account's own, a note, a reply that nobody is told of.
  void AddSeen(const biz::IMMessage& message);
  void AddIncoming(std::vector<Arrived> messages);
  // These are not unread any more. Told after `AddIncoming` of the same messages, never instead of
  // it. What was marked as read here meanwhile counts once.
  void Forget(const biz::IMConversationID& cid, const std::vector<NoLongerUnread>& messages);
  // After a deletion: the conversation's newest message is another one, or there is none.
  void Remove(const biz::IMConversationID& cid, const std::vector<NoLongerUnread>& unread,
              const Position& newest);

  biz::IMMessagePage NewMessages(const biz::IMConversationID& cid,
                                 const biz::IMPageRequest& request) const;
  // The new messages that came while the account was not logged in, oldest first. `outofcache`:
  // there are unread ones that the cache let go of, so some may be missing.
  biz::IMMessagePage OfflineMessages(const biz::IMConversationID& cid) const;
  std::int32_t Unread(const biz::IMConversationID& cid) const;
  // The conversations of these kinds that have a message, the newest one first.
  std::vector<biz::IMUnreadCount> Conversations(const ChatKinds& kinds) const;
  // Whether there is such a conversation.
  bool Knows(const biz::IMConversationID& cid) const;
  // Marks everything that arrived as read. Returns the last arrival that this takes in, or 0 when
  // there was nothing unread.
  std::int64_t MarkRead(const biz::IMConversationID& cid);
  // 0 or less, or more than `kMostCachedMessages`, sets that.
  void SetMaxCache(std::int32_t count);

 private:
  // Messages are never changed, so a page is put together outside the lock.
  struct New {
    std::shared_ptr<const biz::IMMessage> message;
    bool offline = false;
  };
  // Two senders may have a message of one position each, so its arrival tells it apart.
  using Place = std::pair<Position, std::int64_t>;
  using Cached = std::map<Place, New>;

  struct Conversation {
    Position newest;  // the end when there is no message
    std::int64_t last_arrival = 0;
    std::int64_t read_arrival = 0;  // what arrived up to here is read
    std::int32_t unread = 0;
    Cached cached;
  };

  void Cache(Conversation& conversation, Arrived arrived);
  void Uncache(Conversation& conversation, Cached::iterator entry);
  void ShrinkCache();
  void ForgetIn(Conversation& conversation, const std::vector<NoLongerUnread>& messages);

  mutable base::Lock lock_;
  // Nodes of the map stay where they are, so that `cached_` may point to them.
  std::unordered_map<biz::IMConversationID, Conversation> conversations_;
  std::set<std::pair<Place, Conversation*>> cached_;  // of all conversations, oldest first
  std::size_t cached_text_ = 0;
  std::size_t most_cached_ = kMostCachedMessages;
};

}  // namespace imsdk::account
