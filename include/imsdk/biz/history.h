// Requests and answers of a conversation's history: pages, read state, search, pictures, roaming.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "imsdk/biz/conversation_id.h"
#include "imsdk/biz/message.h"
#include "imsdk/biz/user_id.h"

namespace imsdk::biz {

// Where a page of messages starts and how it goes on. The position is (msgtime, msgid), both 0
// for the newest end of the conversation; the message at the position is not part of the page.
struct IMPageRequest {
  std::int64_t msgtime = 0;
  std::int64_t msgid = 0;
  std::int32_t count = 0;       // at most this many; 0 or less lets the engine choose
  bool gohistory = false;       // towards older messages
  bool ignoreboundary = false;  // do not stop at the boundary of what was roamed
  bool autoroam = false;        // fetch from the server what the store lacks
};

// A page of messages, oldest first.
struct IMMessagePage {
  // The cache or store holds nothing further in the direction that was asked for, or dropped
  // messages that the request wanted.
  bool outofcache = false;
  std::vector<IMMessage> msgs;
  // Why the server could not be asked for what the store lacks of the page; 0 when it was asked, or
  // did not have to be.
  std::int32_t roamcode = 0;
};

// A number of messages.
struct IMCount {
  std::int32_t count = 0;
};

// A place in a conversation's order, (msgtime, msgid). Both 0: none.
struct IMMsgPosition {
  std::int64_t msgtime = 0;
  std::int64_t msgid = 0;
};

// One message of a conversation.
struct IMMsgRequest {
  std::int64_t msgid = 0;
  // Its sender. Empty: whoever has one with this identifier, the newest of several.
  IMUserID fromid{};

  static constexpr auto Bounds() { return Bounded(Inner("fromid", &IMMsgRequest::fromid)); }
};

// Several messages of a conversation: whatever there has one of the identifiers. What none means,
// the operation says.
struct IMMsgsRequest {
  std::vector<std::int64_t> msgids{};

  static constexpr auto Bounds() {
    return Bounded(Entries("msgids", &IMMsgsRequest::msgids, kMaxIDs));
  }
};

// What to delete: the messages named, or all there are now.
struct IMDeleteRequest {
  std::vector<std::int64_t> msgids{};
  bool all = false;

  static constexpr auto Bounds() {
    return Bounded(Entries("msgids", &IMDeleteRequest::msgids, kMaxIDs));
  }
};

// A message to take back. The times are those that the page knows it by; the identifier counts.
struct IMWithdrawRequest {
  std::int64_t msgid = 0;
  std::int64_t msgtime = 0;
  std::int64_t svrtime = 0;
};

// Flags of messages.
struct IMReadFlags {
  std::vector<IMFlagMsgReaded> items;
};

// What to search for. A message fits when it contains every keyword: words by their beginning,
// letters of scripts without spaces and emoji anywhere; case and accents make no difference.
// Keywords without any letter, digit or emoji fit nothing; one that is there twice counts once.
struct IMSearchRequest {
  std::vector<IMUserID> fromids{};          // the senders; empty: all
  std::vector<std::int32_t> atrelations{};  // `TribeAtRelation`; empty: all
  std::vector<std::wstring> keywords{};
  std::vector<std::int32_t> msgtypes{};  // empty: all
  std::int64_t btime = 0;                // msgtime from here on; 0: from the beginning
  std::int64_t etime = 0;                // msgtime up to and with this; 0: to the end
  // By position, as in `IMPageRequest`.
  std::int64_t msgtime = 0;
  std::int64_t msgid = 0;
  bool gohistory = false;
  bool ignoreboundary = false;
  std::int32_t count = 0;  // messages on a page; 0 or less lets the engine choose
  // Or by number: page `page`, counted from 1, the newest messages on the first one, with totals.
  bool needpage = false;
  std::int32_t page = 0;

  // Each word, each letter of a script without spaces and each kind is a reader of the index of its
  // own.
  static constexpr auto Bounds() {
    return Bounded(Entries("fromids", &IMSearchRequest::fromids, kMaxMentioned),
                   Entries("atrelations", &IMSearchRequest::atrelations, 64),
                   Entries("keywords", &IMSearchRequest::keywords, 1024),
                   Letters("keywords", &IMSearchRequest::keywords, 1024),
                   Entries("msgtypes", &IMSearchRequest::msgtypes, 64));
  }
};

// A page of what was found, oldest first. The numbers are 0 unless they were asked for.
struct IMSearchPage {
  std::int32_t currentpage = 0;
  std::int32_t totalpage = 0;
  std::int32_t totalcount = 0;
  std::vector<IMMessage> msgs;
};

// Several conversations.
struct IMConversations {
  std::vector<IMConversationID> cids;
};

// Which pictures of a conversation. The position is (msgtime, pictureid), both empty for the newest
// end; the picture at the position is not part of the answer.
struct IMPictureRequest {
  std::int64_t btime = 0;  // as in `IMSearchRequest`
  std::int64_t etime = 0;
  std::int64_t msgtime = 0;
  std::wstring pictureid{};
  bool ignoreboundary = false;
  bool gohistory = false;
  std::int32_t count = 0;

  static constexpr auto Bounds() {
    return Bounded(Letters("pictureid", &IMPictureRequest::pictureid, kMaxNameLetters));
  }
};

// Oldest first.
struct IMPictures {
  std::vector<IMMsgPicture> pictures;
};

// Which messages to fetch from the server into the account's store: those of [btime, etime], the
// newest `count` of them. Times as in `IMSearchRequest`; a server may go by its own clock.
struct IMRoamRequest {
  std::int64_t btime = 0;
  std::int64_t etime = 0;
  std::int32_t count = 0;  // 0 or less lets the engine choose
  bool autoroam = false;   // go on until the range is fetched, whatever `count` says
};

struct IMRoamed {
  std::int32_t roamedcount = 0;  // messages that came
  std::int32_t affectcount = 0;  // of them those that the store did not have
};

enum IMRoaming : std::int32_t { kRoamingOff = 0, kRoamingOn = 1 };

// Whether the server hands out the account's history. It has no messages to give from before
// `opentime` (milliseconds since the Unix epoch; 0: since ever).
struct IMRoamStatus {
  std::int64_t opentime = 0;
  std::int32_t roamstatus = kRoamingOff;
};

struct IMSetRoamRequest {
  std::int32_t roamstatus = kRoamingOff;  // an `IMRoaming`
};

}  // namespace imsdk::biz
