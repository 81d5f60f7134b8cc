// What the account's store keeps of each conversation as a whole.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "account/store/open_stores.h"
#include "account/store/positions.h"
#include "imsdk/biz/conversation_id.h"

namespace imsdk::account {

// Used on the account's worker only. Every function may throw `sqlite::Error`. Setters make the
// conversation when it is new; getters answer defaults then.
class ConversationTable {
 public:
  explicit ConversationTable(LazyStore& store) : store_(store) {}

  // The number of a conversation, or 0. `Make` makes it when it is new.
  std::int64_t Find(const biz::IMConversationID& cid);
  std::int64_t Make(const biz::IMConversationID& cid);

  // The newest received message up to which everything is read; the end when nothing was.
  Position ReadBoundary(std::int64_t conversation);
  // Never moves it back.
  void RaiseReadBoundary(std::int64_t conversation, const Position& to);

  // The newest message that `MessageStore::BeginDeleteAll` gave up.
  Position DeletedUpTo(std::int64_t conversation);
  void SetDeletedUpTo(std::int64_t conversation, const Position& to);

  bool ShieldsAutoReply(const biz::IMConversationID& cid);
  void SetShieldAutoReply(const biz::IMConversationID& cid, bool shield);

  // Whether the account is a member of the tribe. Returns true when that is news. A tribe that was
  // left stays, to be read.
  bool SetMember(const biz::IMConversationID& cid, bool member);

  // Conversations whose newest history is to be fetched, and those with a hole, also after a
  // restart.
  void SetWanting(std::int64_t conversation, bool wanting);
  std::vector<biz::IMConversationID> Wanting();

 private:
  LazyStore& store_;
};

// The identifier in the columns of `CONVERSATION_COLUMNS`, from this one on.
#define CONVERSATION_COLUMNS "c.type, c.appkey, c.nick, c.tribe"
biz::IMConversationID ReadConversation(const sqlite::Statement& row, int column);

}  // namespace imsdk::account
