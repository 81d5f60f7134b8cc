// One account's own store of messages.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "account/conversations/chat_key.h"
#include "account/conversations/chat_state.h"
#include "account/store/conversation_table.h"
#include "account/store/message_places.h"
#include "account/store/message_search.h"
#include "account/store/open_stores.h"
#include "imsdk/biz/message.h"

namespace imsdk::account {

// A message that was not delivered, as the store has it.
struct Unsent {
  biz::IMMessage message;
  bool complete = true;  // false: its files could not be read, so it cannot be sent
};

// How a message came that this device did not send or receive itself.
enum class Synced {
  kLive,    // now, from another device of the account
  kRoamed,  // from the server's history
};

// A message that was taken back, as it was before; `ChatState::Forget` takes `unread`, which has it
// when it was a received one that nobody had read.
struct Withdrawn {
  biz::IMMessage message;
  std::int64_t arrival = 0;
  std::vector<NoLongerUnread> unread;
};

// Each message costs the full-text index some work, and others wait for the store meanwhile.
inline constexpr std::int32_t kDeletedAtOnce = 100;

// What a deletion did; `ChatState::Remove` takes it.
struct Removed {
  std::int32_t count = 0;
  std::vector<NoLongerUnread> unread;
  Position newest;  // of what is left; the end when nothing is
  Position oldest;  // of what `DeleteNext` removed
};

// Used on the account's worker only. Every function may throw `sqlite::Error`. Those that change
// more than one row belong into a transaction of the caller's (`GroupCommit` gives one).
class MessageStore {
 public:
  MessageStore(const std::filesystem::path& file, const biz::IMUserID& self,
               std::shared_ptr<OpenStores> open);

  sqlite::Database& database() { return lazy_.Use(); }
  void Close() { lazy_.Close(); }
  // What is kept of a conversation as a whole: completeness, read boundary, shield.
  ConversationTable& conversations() { return conversations_; }
  MessageSearch& search() { return search_; }

  // Adds a message of this account.
  void AddOutgoing(const biz::IMMessage& message, bool complete);
  // Adds a message from a peer, read or not, as it says itself; returns its arrival, or nothing
  // when the store has it already or it was deleted here.
  std::optional<std::int64_t> AddIncoming(const biz::IMMessage& message,
                                          ChatKind kind = kSingleChat);
  // Adds a message of a single chat; one from the account itself is outgoing. Returns its arrival,
  // or nothing when the store has it already or it was deleted here, by itself or with all others.
  std::optional<std::int64_t> AddSynced(const biz::IMMessage& message, Synced how);
  // Nothing happens to a message that was withdrawn.
  void SetStatus(const biz::IMUserID& cid, std::int64_t msgid, biz::IMMsgStatus status,
                 std::int64_t svrtime);

  // Marks what the peer sent as read, as far as it arrived up to `arrival`.
  void MarkRead(const ChatKey& key, std::int64_t arrival);
  // Marks what the peer sent up to a position as read; for `ChatState::Forget`.
  std::vector<NoLongerUnread> MarkReadUpTo(const ChatKey& key, const Position& position);
  // Takes a message of `sender` back: no body, no extra, read. Nothing when it is unknown, somebody
  // else's or was withdrawn before.
  std::optional<Withdrawn> Withdraw(const biz::IMUserID& cid, const biz::IMUserID& sender,
                                    std::int64_t msgid);
  // Removes messages for good; what is still being sent and what is unknown is passed over.
  Removed Delete(const ChatKey& key, const std::vector<std::int64_t>& msgids);
  // Begins the deletion of all messages: roaming brings none of them back. Returns the newest one's
  // position; `DeleteNext` takes what is not newer, then what is not newer than the oldest one it
  // removed, until it removes fewer than `kDeletedAtOnce`.
  Position BeginDeleteAll(const ChatKey& key);
  Removed DeleteNext(const ChatKey& key, const Position& upto);

  // The peer has read messages of the account. Returns those whose flag changed.
  std::vector<biz::IMFlagMsgReaded> SetPeerRead(const biz::IMUserID& cid,
                                                const std::vector<std::int64_t>& msgids);
  // Flags of the account's own messages; of the newest 200, oldest first, when `msgids` is empty.
  std::vector<biz::IMFlagMsgReaded> PeerReadFlags(const biz::IMUserID& cid,
                                                  const std::vector<std::int64_t>& msgids);
  // Those of the peer's messages that were not reported read, notes of the client excepted; without
  // `msgids` the oldest 1,000 of those that are read.
  std::vector<std::int64_t> Reportable(const biz::IMUserID& cid,
                                       const std::vector<std::int64_t>& msgids);
  void SetReported(const biz::IMUserID& cid, const std::vector<std::int64_t>& msgids);

  std::optional<biz::IMMessage> Find(const ChatKey& key, std::int64_t msgid);
  // In any single chat.
  std::optional<biz::IMMessage> FindAnywhere(std::int64_t msgid);
  // A page of a conversation by (msgtime, msgid), of what lies from its boundary on unless the
  // request ignores that. `autoroam` changes nothing here.
  biz::IMMessagePage Page(const ChatKey& key, const biz::IMPageRequest& request);

  std::vector<StoredConversation> Conversations();
  // The newest unread messages, newest first, for `ChatState::AddUnread`.
  std::vector<Arrived> NewestUnread(std::size_t count);
  // Messages that were being sent when the account stopped, oldest first.
  std::vector<Unsent> Sending();
  // Conversation and identifier of every message that failed.
  std::vector<std::pair<biz::IMUserID, std::int64_t>> Failed();
  std::optional<Unsent> FindUnsent(const biz::IMUserID& cid, std::int64_t msgid);

 private:
  struct Adding {
    bool outgoing = false;
    bool complete = true;
    bool live = true;
  };
  // The message's arrival, or nothing when the store has it already or it was deleted.
  std::optional<std::int64_t> Add(const biz::IMMessage& message, ChatKind kind,
                                  const Adding& adding);
  std::int64_t NextArrival();
  bool WasDeleted(std::int64_t conversation, const biz::IMMessage& message, bool live);
  Position NewestOf(std::int64_t conversation);

  const biz::IMUserID self_;
  LazyStore lazy_;
  ConversationTable conversations_{lazy_};
  MessagePlaces places_{lazy_};
  MessageSearch search_{lazy_, conversations_, places_, self_};
  std::int64_t last_arrival_ = 0;  // 0: not known yet
};

}  // namespace imsdk::account
