// Who asks the server for something, and what becomes of it.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "embedded/streams.h"
#include "imsdk/biz/contact.h"
#include "imsdk/biz/conversation_id.h"
#include "imsdk/biz/tribe.h"
#include "imsdk/biz/user_id.h"

namespace imsdk::embedded {

struct Caller {
  biz::IMUserID user;
  std::int64_t account = 0;
  std::int64_t device = 0;
};

// Something new in a stream.
struct News {
  Stream stream;
  std::int64_t position = 0;
  std::int64_t device = 0;  // knows it already; 0 for none
};

// An account sees a tribe's streams from `position` on, or up to it.
struct StayChange {
  std::int64_t account = 0;
  std::int64_t conversation = 0;
  std::int64_t position = 0;
  bool member = true;
};

// A typing state for the sessions that an account has now.
struct Typing {
  std::int64_t account = 0;
  biz::IMConversationID cid;
  std::int32_t status = 0;
};

// The session that asks begins to watch who is online in a tribe, or ends that.
struct WatchChange {
  biz::IMTribeID tribe;
  std::int64_t conversation = 0;
  bool on = true;
};

// How an account may see another one. May have changed.
struct Glance {
  std::int64_t viewer = 0;
  std::int64_t account = 0;

  friend auto operator<=>(const Glance&, const Glance&) = default;
};

// What sessions are to be told once the work is on the disk.
struct Effects {
  std::vector<StayChange> stays;
  std::vector<News> news;
  std::vector<Glance> glances;
  std::optional<Typing> typing;
  std::optional<WatchChange> watch;
  std::int64_t upto = 0;  // the newest position when the work was done
  // The answer waits until its session was sent all that is new, so that a message comes as new
  // before it comes as history.
  bool after_news = false;

  void Add(Effects&& more) {
    stays.insert(stays.end(), more.stays.begin(), more.stays.end());
    news.insert(news.end(), more.news.begin(), more.news.end());
    glances.insert(glances.end(), more.glances.begin(), more.glances.end());
  }
};

// What a desk answers.
template <class R>
struct Outcome {
  Outcome() = default;
  Outcome(biz::ResultCode failure) : result(std::move(failure)) {}
  Outcome(R good) : reply(std::move(good)) {}

  biz::ResultCode result;
  R reply{};
  Effects effects;
};

inline biz::ResultCode Failure(biz::EngineCode code, std::wstring text) {
  return {code, 0, std::move(text)};
}
inline biz::ResultCode UnknownUser() {
  return Failure(biz::kEngineUnknownUser, L"there is no such user");
}
inline biz::ResultCode ServerStops() { return Failure(biz::kEngineNoLink, L"the server stops"); }
inline biz::ResultCode Refusal(biz::TribeRefusal why, std::wstring text) {
  return {biz::kEngineRefused, why, std::move(text)};
}
inline biz::ResultCode Refusal(biz::IMContactRefusal why, std::wstring text) {
  return {biz::kEngineRefused, why, std::move(text)};
}
inline biz::ResultCode NotAMember() {
  return Refusal(biz::kTribeNotAMember, L"the account is no member of this tribe");
}
inline biz::ResultCode TribeIsClosed() {
  return Refusal(biz::kTribeIsClosed, L"the tribe is closed");
}

}  // namespace imsdk::embedded
