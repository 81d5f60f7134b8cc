// What an account can ask its server for about mentions; `Capabilities::mentions` says whether it
// can. Refusals are as those about tribes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "imsdk/biz/bounds.h"
#include "imsdk/biz/mentions.h"
#include "link/message.h"

namespace imsdk::link {

// A message of a conversation: two senders of a tribe may have one identifier.
struct MessageName {
  biz::IMUserID from;
  std::int64_t msgid = 0;

  friend bool operator==(const MessageName&, const MessageName&) = default;

  static constexpr auto Bounds() { return biz::Bounded(biz::Inner("fromid", &MessageName::from)); }
};

// The most messages that are named at once.
inline constexpr std::size_t kMostMentions = 1000;

// The account has read these mentions of it. Their senders and its other devices hear of it; what
// does not mention it, and what it has read before, is passed over.
struct ReadMentions {
  using Reply = struct Nothing;
  biz::IMTribeID tribe;
  std::vector<MessageName> messages;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Entries("msgids", &ReadMentions::messages, kMostMentions));
  }
};

// How far own messages that mention are read. Others are passed over.
struct CountMentionReaders {
  using Reply = struct MentionCounts;
  biz::IMTribeID tribe;
  std::vector<std::int64_t> msgids;

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Entries("msgids", &CountMentionReaders::msgids, kMostMentions));
  }
};
struct MentionCounts {
  std::vector<biz::IMAtReadCounts> counts;
};

// Who has read an own message that mentions, and who has not, in parts. `kEngineNotFound` when it
// is not the account's or mentions nobody.
struct GetMentionReaders {
  using Reply = struct MentionReaders;
  biz::IMTribeID tribe;
  std::int64_t msgid = 0;
  std::string place{};

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Letters("place", &GetMentionReaders::place, biz::kMaxSecretLetters));
  }
};
struct MentionReader {
  biz::IMUserID user;
  bool read = false;
};
struct MentionReaders {
  std::vector<MentionReader> readers;
  std::string next{};
};

// The messages around one that the account may see, itself among them; about as many are older as
// are newer. `kEngineNotFound` when there is no such message.
struct GetContext {
  using Reply = struct Context;
  biz::IMConversationID cid;
  MessageName message;
  std::int32_t count = 0;  // at most this many; the server has a limit of its own

  static constexpr auto Bounds() {
    return biz::Bounded(biz::Inner("cid", &GetContext::cid), biz::Inner("", &GetContext::message));
  }
};
struct Context {
  std::vector<Message> msgs;  // oldest first
  bool ends = false;          // nothing further in one of the directions
};

}  // namespace imsdk::link
