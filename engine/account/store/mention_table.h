// The mentions of an account's store: which are unread, which the server was not told of.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "account/store/conversation_table.h"
#include "account/store/open_stores.h"
#include "link/mention_operations.h"

namespace imsdk::account {

// How far the mention of a message is read. The numbers are in stores.
enum class MentionState : std::int32_t {
  kUnread = 0,
  kRead = 1,  // the server does not know yet
  kTold = 2,
};

// Users as a text of the store, each part with its length in front.
std::wstring PackUsers(const std::vector<biz::IMUserID>& users);
std::vector<biz::IMUserID> UnpackUsers(const std::wstring& packed);

// Used on the account's worker only. Every function may throw `sqlite::Error`.
class MentionTable {
 public:
  MentionTable(LazyStore& store, ConversationTable& conversations)
      : store_(store), conversations_(conversations) {}

  std::int32_t CountUnread(const biz::IMConversationID& cid);
  // Marks unread mentions, all when none are named, as read and not told; returns them.
  std::vector<link::MessageName> MarkRead(const biz::IMConversationID& cid,
                                          const std::vector<std::int64_t>& msgids);
  // The server knows that these are read. Returns those that were unread here.
  std::vector<link::MessageName> SetTold(const biz::IMConversationID& cid,
                                         const std::vector<link::MessageName>& messages);
  // Those that the server is to be told of, at most `link::kMostMentions`.
  std::vector<link::MessageName> Untold(const biz::IMConversationID& cid);
  std::vector<biz::IMConversationID> WithUntold();

 private:
  LazyStore& store_;
  ConversationTable& conversations_;
};

}  // namespace imsdk::account
