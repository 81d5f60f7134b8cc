// Mentions: messages of tribes that are meant for some of the members, or for all.
//
// A message mentions members, all of them, or nobody. Each member sees by `IMTribeAt` how a message
// relates to it; its sender is told who has read the mention. Only tribes have mentions: other
// conversations refuse what is asked of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "imsdk/biz/bounds.h"
#include "imsdk/biz/user_id.h"

namespace imsdk::biz {

// The numbers of the enumerations are in stores and on pages.

// Whom a message mentions.
enum TribeAtMsgType : std::int32_t {
  kAtNobody = 0,
  kAtMembers = 1,  // those in `atmembers`
  kAtAll = 2,      // all who were members when the server got it
};

// How a message relates to the account that sees it.
enum TribeAtRelation : std::int32_t {
  kAtRelationNone = 0,    // it mentions nobody, or others only
  kAtRelationMember = 1,  // it mentions the account by name
  kAtRelationAll = 2,     // it mentions all members, the account among them
  kAtRelationSender = 3,  // the account's own message that mentions somebody
};

// Most members that one message can mention by name.
inline constexpr std::size_t kMaxMentioned = 1'000;

// The mention of a message, as one account sees it. In a message to send, kind and members count;
// the rest is not looked at.
struct IMTribeAt {
  std::int32_t msgreaded = 0;    // an `IMReadFlag`: whether the account has read the mention of it
  std::int32_t atmsgtype = 0;    // a `TribeAtMsgType`
  std::int32_t relation2me = 0;  // a `TribeAtRelation`
  std::vector<IMUserID> atmembers{};  // in the sender's order; empty unless members are mentioned

  friend bool operator==(const IMTribeAt&, const IMTribeAt&) = default;

  static constexpr auto Bounds() {
    return Bounded(Entries("atmembers", &IMTribeAt::atmembers, kMaxMentioned));
  }
};

// Of how many of those whom an own message mentions the server knows that they have read it, and of
// how many not. Who has left the tribe counts as neither unless it had read it.
struct IMAtReadCounts {
  std::int64_t msgid = 0;
  std::int32_t readedcount = 0;
  std::int32_t unreadcount = 0;
};

// Unread mentions of the account in one conversation, and how far own messages that mention were
// read.
struct IMAtUnread {
  std::int32_t count = 0;
  std::vector<IMAtReadCounts> counts;
};

// Who has read a mention and who has not, each in the order of their names.
struct IMAtReaders {
  std::vector<IMUserID> unreadusers;
  std::vector<IMUserID> readedusers;
};

// The messages around one, itself among them.
struct IMAtContextRequest {
  std::int64_t msgid = 0;
  IMUserID fromid{};       // its sender; empty as in `IMMsgRequest`
  std::int32_t count = 0;  // at most this many altogether; 0 or less lets the engine choose

  static constexpr auto Bounds() { return Bounded(Inner("fromid", &IMAtContextRequest::fromid)); }
};

// A member to mention.
struct IMAtMemberRequest {
  IMUserID userid;  // empty: all members

  static constexpr auto Bounds() { return Bounded(Inner("userid", &IMAtMemberRequest::userid)); }
};

// What a page needs to write a mention.
struct IMAtMember {
  IMUserID userid;
  std::wstring display;  // the name to show in the tribe; empty for all members
};

// Mentions were read.
struct IMAtReaded {
  // Who has read them: other members, or the account itself on another device or on this one.
  std::vector<IMUserID> readers;
  // The messages. Counts are those of the account's own messages, and 0 for others.
  std::vector<IMAtReadCounts> counts;
};

}  // namespace imsdk::biz
