#include "account/store/completeness.h"

#include <limits>

namespace imsdk::account {

namespace {

Position PositionOf(const link::Message& message) { return {message.msgtime, message.msgid}; }

}  // namespace

bool Lacks(const Completeness& complete, const biz::IMPageRequest& request,
           const biz::IMMessagePage& page) {
  if (complete.whole) return false;
  const Position at{request.msgtime, request.msgid};
  if (request.gohistory || at.is_end()) return page.outofcache;
  return complete.from.is_end() || at < complete.from;
}

Completeness Extended(const Completeness& before, const link::HistoryRequest& request,
                      const link::History& history) {
  Completeness after = before;
  const Position at{request.position.msgtime, request.position.msgid};
  const auto& found = history.msgs;
  if (request.older || at.is_end()) {
    // The answer has everything from its first message to the request's end. That says something
    // only when it meets what is complete.
    Position end = at;
    if (request.etime > 0) {
      const Position past{request.etime, std::numeric_limits<std::int64_t>::max()};
      if (end.is_end() || past < end) end = past;
    }
    const bool meets = end.is_end() || (!before.from.is_end() && end >= before.from);
    if (!meets) return after;
    if (!found.empty() && (after.from.is_end() || PositionOf(found.front()) < after.from)) {
      after.from = PositionOf(found.front());
    }
    if (!history.more && request.btime <= 0) after.whole = true;
    return after;
  }
  if (found.empty() || before.from.is_end() || at >= before.from) return after;
  const bool whole_range = request.btime <= 0 && request.etime <= 0;
  if (whole_range && (!history.more || PositionOf(found.back()) >= before.from)) {
    after.from = PositionOf(found.front());
  }
  return after;
}

}  // namespace imsdk::account
