// One account's own store of messages.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "account/chat_state.h"
#include "account/open_stores.h"
#include "imsdk/biz/message.h"

namespace imsdk::account {

// A message that was not delivered, as the store has it.
struct Unsent {
  biz::IMMessage message;
  bool complete = true;  // false: its files could not be read, so it cannot be sent
};

// Used on the account's worker only. Every function may throw `sqlite::Error`.
class MessageStore {
 public:
  MessageStore(const std::filesystem::path& file, const biz::IMUserID& self,
               std::shared_ptr<OpenStores> open);

  sqlite::Database& database() { return lazy_.Use(); }
  void Close() { lazy_.Close(); }

  // Adds a message of this account.
  void AddOutgoing(const biz::IMMessage& message, bool complete);
  // Adds a message from a peer; returns its arrival, or nothing when the store has it already.
  std::optional<std::int64_t> AddIncoming(const biz::IMMessage& message);
  void SetStatus(const biz::IMUserID& cid, std::int64_t msgid, biz::IMMsgStatus status,
                 std::int64_t svrtime);
  // Marks what the peer sent as read, as far as it arrived up to `arrival`.
  void MarkRead(const biz::IMUserID& cid, std::int64_t arrival);

  // A page of a conversation by (msgtime, msgid).
  biz::IMMessagePage Page(const biz::IMUserID& cid, const biz::IMPageRequest& request);
  std::vector<StoredConversation> Conversations();
  // The newest unread messages, newest first.
  std::vector<biz::IMMessage> NewestUnread(std::size_t count);
  // Messages that were being sent when the account stopped, oldest first.
  std::vector<Unsent> Sending();
  // Conversation and identifier of every message that failed.
  std::vector<std::pair<biz::IMUserID, std::int64_t>> Failed();
  std::optional<Unsent> FindUnsent(const biz::IMUserID& cid, std::int64_t msgid);

 private:
  // The number of a conversation, or 0. `Conversation` makes it when it is new.
  std::int64_t FindConversation(const biz::IMUserID& cid);
  std::int64_t Conversation(const biz::IMUserID& cid);
  bool Add(const biz::IMMessage& message, bool outgoing, bool complete);
  biz::IMMessage Read(const sqlite::Statement& row) const;

  const biz::IMUserID self_;
  LazyStore lazy_;
};

}  // namespace imsdk::account
