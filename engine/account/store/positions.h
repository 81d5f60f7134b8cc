// Where messages stand: in the order of time, and in the order in which they came.
#pragma once

#include <compare>
#include <cstdint>

#include "imsdk/biz/message.h"

namespace imsdk::account {

// Where a message stands in its conversation.
struct Position {
  std::int64_t msgtime = 0;
  std::int64_t msgid = 0;

  bool is_end() const { return msgtime == 0 && msgid == 0; }
  friend auto operator<=>(const Position&, const Position&) = default;
};

inline Position PositionOf(const biz::IMMessage& message) {
  return {message.msgtime, message.msgid};
}

// A received message, and its place in the order in which the account was told of its messages.
struct Arrived {
  biz::IMMessage message;
  std::int64_t arrival = 0;
  bool offline = false;  // came while the account was not logged in
};

// A message that was unread in the store and is so no more: read elsewhere, withdrawn or deleted.
struct NoLongerUnread {
  Position position;
  std::int64_t arrival = 0;
};

}  // namespace imsdk::account
