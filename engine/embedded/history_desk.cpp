#include "embedded/history_desk.h"

#include <algorithm>
#include <optional>

#include "embedded/address_book.h"
#include "embedded/message_row.h"

namespace imsdk::embedded {

namespace {

// The most of a conversation that goes into one answer.
constexpr std::int32_t kMostInHistory = 1000;

}  // namespace

// Without both ends.
struct HistoryDesk::Range {
  Position after = 0;
  Position before = kNever;
};

Position HistoryDesk::FirstFrom(std::int64_t conversation, std::int64_t time) {
  auto row = store_.database().Prepare(
      "SELECT position FROM messages WHERE conversation=? AND svrtime>=? "
      "ORDER BY svrtime, position LIMIT 1",
      conversation, time);
  return row.Step() ? row.Int64(0) : kNever;
}

HistoryDesk::Range HistoryDesk::OpenRange(std::int64_t conversation, std::int64_t from_time,
                                          std::int64_t to_time) {
  // A conversation's times grow with its positions.
  Range range;
  if (from_time > 0) range.after = FirstFrom(conversation, from_time) - 1;
  if (to_time > 0) range.before = FirstFrom(conversation, to_time + 1);
  return range;
}

Outcome<link::History> HistoryDesk::Answer(const Caller& caller, const link::GetHistory& request) {
  const auto self = store_.accounts().Find(caller.user);
  if (!self || self->roaming.roamstatus != biz::kRoamingOn) {
    return Failure(biz::kEngineRefused, L"the account's roaming is off");
  }
  const Found found = FindConversation(store_, caller, request.cid);
  // Nobody learns from an empty answer whether there is such a user.
  if (!found.result.ok() && request.cid.is_tribe()) return found.result;
  Outcome<link::History> outcome;
  outcome.effects.after_news = true;
  if (found.conversation == 0) return outcome;

  Range range =
      OpenRange(found.conversation, std::max(request.btime, self->roaming.opentime), request.etime);
  const Position hidden = found.stay && !found.open_history ? found.stay->joined : 0;
  range.after = std::max(range.after, hidden);
  const bool older = request.older || (request.place.empty() && request.time == 0);
  if (!request.place.empty()) {
    const auto place = ParsePosition(request.place);
    if (!place) return Failure(biz::kEngineNotFound, L"the history has no such place");
    if (older) range.before = std::min(range.before, *place);
    if (!older) range.after = std::max(range.after, *place);
  } else if (request.time != 0) {
    const Range there =
        OpenRange(found.conversation, older ? 0 : request.time, older ? request.time : 0);
    range.after = std::max(range.after, there.after);
    range.before = std::min(range.before, there.before);
  }

#define HISTORY_QUERY(order)                                                               \
  "SELECT " MESSAGE_COLUMNS "0 FROM messages m " CID_JOINS("m.conversation") MESSAGE_JOINS \
      "WHERE m.conversation=? AND m.position>? AND m.position<? ORDER BY m.position" order
  auto row = store_.database().Prepare(older ? HISTORY_QUERY(" DESC") : HISTORY_QUERY(""),
                                       found.conversation, range.after, range.before);
#undef HISTORY_QUERY
  const auto count = static_cast<std::size_t>(std::clamp(request.count, 1, kMostInHistory));
  std::vector<link::Message>& msgs = outcome.reply.msgs;
  std::size_t text = 0;
  while (row.Step()) {
    if (msgs.size() == count || text >= kMostBytes) {
      outcome.reply.next = msgs.back().place;
      break;
    }
    msgs.push_back(ReadMessage(store_.database(), row, caller.account));
    // Whoever cannot see the message before need not miss it.
    if (row.Int64(kPreviousColumn) <= hidden) msgs.back().previous = 0;
    text += TextOf(msgs.back());
  }
  if (older) std::reverse(msgs.begin(), msgs.end());
  return outcome;
}

Outcome<biz::IMRoamStatus> HistoryDesk::Answer(const Caller& caller,
                                               const link::GetRoaming& /*request*/) {
  const auto account = store_.accounts().Find(caller.user);
  if (!account) return UnknownUser();
  return account->roaming;
}

Outcome<link::Nothing> HistoryDesk::Answer(const Caller& caller, const link::SetRoaming& request) {
  if (request.status != biz::kRoamingOff && request.status != biz::kRoamingOn) {
    return Failure(biz::kEngineRefused, L"there is no such status");
  }
  const auto account = store_.accounts().Find(caller.user);
  if (!account) return UnknownUser();
  biz::IMRoamStatus roaming = account->roaming;
  if (roaming.roamstatus == request.status) return {};
  roaming.roamstatus = request.status;
  if (request.status == biz::kRoamingOn) roaming.opentime = store_.LaterThanAll();
  store_.accounts().SetRoaming(account->id, roaming);
  return {};
}

}  // namespace imsdk::embedded
