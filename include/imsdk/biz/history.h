// Requests and answers of a conversation's history: search, pictures, roaming.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "imsdk/biz/message.h"
#include "imsdk/biz/user_id.h"

namespace imsdk::biz {

// Callbacks are called once, on an engine thread or before the operation returns. An engine that
// stops calls what is open with `kEngineNotLoggedIn` or drops it uncalled.
using IMDoneCallback = std::function<void(const ResultCode&)>;
using IMPageCallback = std::function<void(const ResultCode&, IMMessagePage)>;
using IMCountCallback = std::function<void(const ResultCode&, std::int32_t count)>;
using IMFlagsCallback = std::function<void(const ResultCode&, std::vector<IMFlagMsgReaded>)>;

// A place in a conversation's order, (msgtime, msgid). Both 0: none.
struct IMMsgPosition {
  std::int64_t msgtime = 0;
  std::int64_t msgid = 0;
};
using IMPositionCallback = std::function<void(const ResultCode&, const IMMsgPosition&)>;

// What to search for. A message fits when it contains every keyword: words by their beginning,
// letters of scripts without spaces and emoji anywhere; case and accents make no difference.
// Keywords without any letter, digit or emoji fit nothing. Keywords of over 1,024 letters together
// and over 64 kinds are refused with `kEngineTooLarge`.
struct IMSearchRequest {
  std::vector<std::wstring> keywords{};
  std::vector<std::int32_t> msgtypes{};  // empty: all
  std::int64_t btime = 0;                // msgtime from here on; 0: from the beginning
  std::int64_t etime = 0;                // msgtime up to and with this; 0: to the end
  // By number: page `page`, counted from 1, the newest messages on the first one, with totals.
  bool needpage = false;
  std::int32_t page = 0;
  // Otherwise by position, as in `IMPageRequest`.
  std::int64_t msgtime = 0;
  std::int64_t msgid = 0;
  bool gohistory = false;
  bool ignoreboundary = false;
  std::int32_t count = 0;  // messages on a page; 0 or less lets the engine choose
};

// A page of what was found, oldest first. The numbers are 0 unless they were asked for.
struct IMSearchPage {
  std::int32_t currentpage = 0;
  std::int32_t totalpage = 0;
  std::int32_t totalcount = 0;
  std::vector<IMMessage> msgs;
};
using IMSearchCallback = std::function<void(const ResultCode&, IMSearchPage)>;
using IMUsersCallback = std::function<void(const ResultCode&, std::vector<IMUserID>)>;

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
};
// Oldest first.
using IMPicturesCallback = std::function<void(const ResultCode&, std::vector<IMMsgPicture>)>;

// Which messages to fetch from the server into the account's store: those of [btime, etime], the
// newest `count` of them. Times as in `IMSearchRequest`.
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
using IMRoamCallback = std::function<void(const ResultCode&, const IMRoamed&)>;

enum IMRoaming : std::int32_t { kRoamingOff = 0, kRoamingOn = 1 };

// Whether the server hands out the account's history. It has no messages to give from before
// `opentime` (milliseconds since the Unix epoch; 0: since ever).
struct IMRoamStatus {
  std::int64_t opentime = 0;
  std::int32_t roamstatus = kRoamingOff;
};
using IMRoamStatusCallback = std::function<void(const ResultCode&, const IMRoamStatus&)>;

}  // namespace imsdk::biz
