// One account's own store of messages.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "account/store/conversation_table.h"
#include "account/store/file_table.h"
#include "account/store/mention_table.h"
#include "account/store/message_places.h"
#include "account/store/message_search.h"
#include "account/store/open_stores.h"
#include "account/store/parts.h"
#include "account/store/positions.h"
#include "account/store/search_index.h"
#include "account/store/tribe_table.h"
#include "imsdk/biz/message.h"

namespace imsdk::account {

// A conversation as the store knows it when the account logs in.
struct StoredConversation {
  biz::IMConversationID cid;
  Position newest;  // the end when it has no message
  std::int64_t last_arrival = 0;
  std::int32_t unread = 0;
};

// A message that was not delivered, as the store has it.
struct Unsent {
  biz::IMMessage message;
  bool complete = true;  // false: its files could not be read, so it cannot be sent
};

// A message as it came over the link: as the account sees it, and what the server knows besides.
struct Incoming {
  biz::IMMessage message;
  std::string place{};        // in the server's history
  std::int64_t previous = 0;  // its sender's message before it
};

// What a fetch from the server's history brought.
struct KeptHistory {
  std::int32_t fresh = 0;                // messages that the store did not have
  std::optional<biz::IMMessage> newest;  // of them
  std::vector<Arrived> missed;           // those that should have come by themselves
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
  MessageStore(const sqlite::StorePlace& place, const biz::IMUserID& self,
               std::shared_ptr<OpenStores> open);

  sqlite::Database& database() { return lazy_.Use(); }
  void Close() { lazy_.Close(); }
  // What the store was found to have lost when it was opened, once.
  std::optional<sqlite::Loss> TakeLoss() { return lazy_.TakeLoss(); }
  // What is kept of a conversation as a whole: read boundary, membership, shield.
  ConversationTable& conversations() { return conversations_; }
  Parts& parts() { return parts_; }
  FileTable& files() { return files_; }
  // Finds what is in the index.
  MessageSearch& search() { return search_; }
  SearchIndex& index() { return index_; }
  MentionTable& mentions() { return mentions_; }
  TribeTable& tribes() { return tribes_; }

  // How far the server has been read, in the server's own words; empty at the beginning.
  std::string LinkPosition();
  void SetLinkPosition(const std::string& position);
  // The server knows the position no more: what has come since is fetched as history. All that is
  // here lies below a hole.
  void LosePosition();
  // Does what can be done at once about a loss; the rest comes from the server.
  void Recover(const sqlite::Loss& loss);
  // Whether the server is to send what was lost, and the name under which it knows the store of
  // this life, for one that was lost is to it another device.
  bool IsMending() { return sqlite::IsMending(database()); }
  std::string Generation() { return sqlite::GenerationOf(database()); }
  void SetMended() { sqlite::SetMended(database()); }

  // message_arrivals.cpp

  // Adds a message of this account.
  void AddOutgoing(const biz::IMMessage& message, bool complete);
  // Adds a note of the client, or what else comes from nowhere but this device.
  std::optional<std::int64_t> AddIncoming(const biz::IMMessage& message) {
    return AddLive({message});
  }
  // Adds a message that the server sent by itself, read or not, as it says itself. Returns its
  // arrival, or nothing when the account was told of it before or it was deleted here. One that
  // only history has brought so far is new.
  std::optional<std::int64_t> AddLive(const Incoming& incoming);
  // Whether the message is new and its sender's one before it is missing.
  bool MissesPrevious(const Incoming& incoming);
  // The part begins anew with this message, above a hole in which the one before it is looked for.
  void OpenHole(const Incoming& incoming);
  // Adds what a fetch brought, oldest first. Nothing of it is new, unless it fills a hole.
  KeptHistory AddHistory(Walk& walk, const link::GetHistory& request, const std::string& next,
                         const std::vector<Incoming>& messages);
  // Adds messages that were fetched from here and there. Nothing of it is new, and nothing is known
  // of what lies between them.
  KeptHistory AddScattered(const std::vector<Incoming>& messages);
  // The server has a message of this account. Returns it with the status that it had, when it was
  // not known to be sent.
  std::optional<biz::IMMessage> SetArchived(const biz::IMConversationID& cid, std::int64_t msgid,
                                            std::int64_t svrtime, const std::string& place);

  // message_changes.cpp

  // Nothing happens to a message that was withdrawn; one that is sent does not fail any more.
  void SetStatus(const biz::IMConversationID& cid, std::int64_t msgid, biz::IMMsgStatus status,
                 std::int64_t svrtime, const std::string& place = {});
  // Marks what others sent as read, as far as it arrived up to `arrival`.
  void MarkRead(const biz::IMConversationID& cid, std::int64_t arrival);
  // Marks what others sent up to a position as read; for `ChatState::Forget`.
  std::vector<NoLongerUnread> MarkReadUpTo(const biz::IMConversationID& cid,
                                           const Position& position);
  // Takes a message of `sender` back: no body, no extra, read. Nothing when it is unknown, somebody
  // else's or was withdrawn before.
  std::optional<Withdrawn> Withdraw(const biz::IMConversationID& cid, const biz::IMUserID& sender,
                                    std::int64_t msgid);
  // Removes messages for good, whoever has sent them; what is still being sent and what is unknown
  // is passed over.
  Removed Delete(const biz::IMConversationID& cid, const std::vector<std::int64_t>& msgids);
  // Begins the deletion of all messages: roaming brings none of them back. Returns the newest one's
  // position; `DeleteNext` takes what is not newer, then what is not newer than the oldest one it
  // removed, until it removes fewer than `kDeletedAtOnce`.
  Position BeginDeleteAll(const biz::IMConversationID& cid);
  Removed DeleteNext(const biz::IMConversationID& cid, const Position& upto);
  // Forgets how far the conversation is complete.
  void ClearComplete(const biz::IMConversationID& cid);

  // Messages of the account were read. Returns those whose flag changed.
  std::vector<biz::IMFlagMsgReaded> SetPeerRead(const biz::IMConversationID& cid,
                                                const std::vector<std::int64_t>& msgids);
  // Flags of the account's own messages; of the newest 200, oldest first, when `msgids` is empty.
  std::vector<biz::IMFlagMsgReaded> PeerReadFlags(const biz::IMConversationID& cid,
                                                  const std::vector<std::int64_t>& msgids);
  // Those of the others' messages that were not reported read, notes of the client excepted;
  // without `msgids` the oldest 1,000 of those that are read.
  std::vector<std::int64_t> Reportable(const biz::IMConversationID& cid,
                                       const std::vector<std::int64_t>& msgids);
  void SetReported(const biz::IMConversationID& cid, const std::vector<std::int64_t>& msgids);

  // The message of this sender; without one, the newest that has the identifier.
  std::optional<biz::IMMessage> Find(const biz::IMConversationID& cid, std::int64_t msgid,
                                     const biz::IMUserID& from = {});
  // In any conversation, the newest that has the identifier.
  std::optional<biz::IMMessage> FindAnywhere(std::int64_t msgid);
  // Where the server's history has a message; empty when that is not known.
  std::string ServerPlace(const biz::IMConversationID& cid, const Position& position);
  // A page of a conversation by (msgtime, msgid), of its complete part unless the request ignores
  // the boundary. `autoroam` changes nothing here.
  biz::IMMessagePage Page(const biz::IMConversationID& cid, const biz::IMPageRequest& request);

  // Those that have messages, and tribes.
  std::vector<StoredConversation> Conversations();
  // The newest unread messages, newest first, for `ChatState::AddUnread`.
  std::vector<Arrived> NewestUnread(std::size_t count);
  // Messages that were being sent when the account stopped, oldest first.
  std::vector<Unsent> Sending();
  // Conversation and identifier of every message that failed.
  std::vector<std::pair<biz::IMConversationID, std::int64_t>> Failed();
  std::optional<Unsent> FindUnsent(const biz::IMConversationID& cid, std::int64_t msgid);
  // The time for a message that is sent at `now`: later than the conversation's newest one, so that
  // a clock that was set back does not put it out of sight behind others. A time that only the
  // clock of another sender says does not count.
  std::int64_t TimeToSend(const biz::IMConversationID& cid, std::int64_t now);
  // The account's own message before this one in the conversation, of those that did not fail; 0
  // when there is none.
  std::int64_t OwnBefore(const biz::IMConversationID& cid, std::int64_t msgid);

 private:
  // A message that is there.
  struct Row {
    std::int64_t place = 0;
    std::int64_t part = 0;
    std::int64_t arrival = 0;
  };
  struct Adding {
    std::int64_t conversation = 0;
    std::int64_t sender = 0;
    std::int64_t part = 0;     // 0: outside of it
    std::int64_t arrival = 0;  // 0: nobody is told of it
    bool complete = true;
  };

  // The number by which messages name their sender; `SenderOf` makes it, the other returns -1 for a
  // user who is new.
  std::int64_t SenderOf(const biz::IMUserID& user);
  std::int64_t FindSender(const biz::IMUserID& user);
  // The message's row, or 0 when the store has it already.
  std::int64_t Add(const biz::IMMessage& message, const std::string& place, const Adding& adding);
  std::optional<Row> Look(std::int64_t conversation, std::int64_t sender, std::int64_t msgid);
  // The server may tell later what it did not know at first.
  void Learn(std::int64_t row, std::int64_t svrtime, const std::string& place);
  bool HasBefore(std::int64_t conversation, std::int64_t part, std::int64_t sender,
                 std::int64_t msgid);
  std::int64_t NextArrival();
  bool WasDeleted(std::int64_t conversation, std::int64_t sender, std::int64_t msgid);
  Position NewestOf(std::int64_t conversation);

  const biz::IMUserID self_;
  LazyStore lazy_;
  ConversationTable conversations_{lazy_};
  Parts parts_{lazy_};
  FileTable files_{lazy_};
  MentionTable mentions_{lazy_, conversations_};
  TribeTable tribes_{lazy_};
  MessagePlaces places_{lazy_};
  MessageSearch search_{lazy_, conversations_, parts_, places_, self_};
  SearchIndex index_{lazy_};
  std::int64_t last_arrival_ = 0;  // 0: not known yet
};

}  // namespace imsdk::account
