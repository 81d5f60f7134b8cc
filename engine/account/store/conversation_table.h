// What the account's store keeps of each conversation as a whole.
#pragma once

#include <cstdint>

#include "account/conversations/chat_key.h"
#include "account/store/open_stores.h"

namespace imsdk::account {

// From which position on the store has every message of a conversation. A position at the end means
// from nowhere on: the store is known to be complete for no part.
struct Completeness {
  Position from;
  bool whole = false;  // reaches the beginning of the conversation, whatever `from` says
};

// Used on the account's worker only. Every function may throw `sqlite::Error`. Setters make the
// conversation when it is new; getters answer defaults then.
class ConversationTable {
 public:
  explicit ConversationTable(LazyStore& store) : store_(store) {}

  // The number of a conversation, or 0. `Make` makes it when it is new.
  std::int64_t Find(const ChatKey& key);
  std::int64_t Make(const ChatKey& key);

  Completeness Complete(const ChatKey& key);
  // A conversation's first live message is its boundary by itself; virtual ones are whole.
  void SetComplete(const ChatKey& key, const Position& from, bool whole);
  // The boundary moves to the newest message.
  void ClearComplete(const ChatKey& key);
  // A live message came. Clocks differ: one that is a little older than the boundary moves it, so
  // that the answer to a first message does not stay behind it.
  void Cover(std::int64_t conversation, const Position& live);

  // The newest received message up to which everything is read; the end when nothing was.
  Position ReadBoundary(const ChatKey& key);
  // Never moves it back.
  void RaiseReadBoundary(std::int64_t conversation, const Position& to);

  // The newest message that `MessageStore::BeginDeleteAll` gave up.
  Position DeletedUpTo(std::int64_t conversation);
  void SetDeletedUpTo(std::int64_t conversation, const Position& to);

  bool ShieldsAutoReply(const ChatKey& key);
  void SetShieldAutoReply(const ChatKey& key, bool shield);

 private:
  LazyStore& store_;
};

}  // namespace imsdk::account
