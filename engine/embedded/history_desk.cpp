#include "embedded/history_desk.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "embedded/address_book.h"
#include "embedded/message_row.h"

namespace imsdk::embedded {

namespace {

// The most of a conversation that goes into one answer.
constexpr std::int32_t kMostInHistory = 1000;

}  // namespace

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

biz::ResultCode HistoryDesk::OpenFor(const Caller& caller, const biz::IMConversationID& cid,
                                     Window* window) {
  const auto self = store_.accounts().Find(caller.user);
  if (!self || self->roaming.roamstatus != biz::kRoamingOn) {
    return Failure(biz::kEngineRefused, L"the account's roaming is off");
  }
  const Found found = FindConversation(store_, caller, cid);
  // Nobody learns from an empty answer whether there is such a user.
  if (!found.result.ok() && cid.is_tribe()) return found.result;
  window->caller = caller.account;
  window->conversation = found.conversation;
  window->opened = self->roaming.opentime;
  window->joined = found.stay ? found.stay->joined : 0;
  window->hidden = found.open_history ? 0 : window->joined;
  return {};
}

link::Message HistoryDesk::Show(const Window& window, const sqlite::Statement& row) {
  link::Message message = ReadMessage(store_.database(), row, window.caller);
  // Whoever cannot see the message before need not miss it.
  if (row.Int64(kPreviousColumn) <= window.hidden) message.previous = 0;
  if (message.at.type != biz::kAtNobody) {
    const Position position = row.Int64(kPositionColumn);
    message.at.before = position <= window.joined;
    message.at.read = store_.mentions().HasRead(position, window.caller);
  }
  return message;
}

bool HistoryDesk::ReadPart(const Window& window, const Part& part,
                           std::vector<link::Message>* msgs) {
#define HISTORY_QUERY(order)                                                               \
  "SELECT " MESSAGE_COLUMNS "0 FROM messages m " CID_JOINS("m.conversation") MESSAGE_JOINS \
      "WHERE m.conversation=?1 AND m.position>?2 AND m.position<?3 ORDER BY m.position" order
// Of all that mention somebody there is an index.
#define MENTIONS_QUERY(order)                                                             \
  "SELECT " MESSAGE_COLUMNS                                                               \
  "0 FROM messages m INDEXED BY messages_at " CID_JOINS("m.conversation") MESSAGE_JOINS   \
      "WHERE m.conversation=?1 AND m.position>?2 AND m.position<?3 AND m.at_type<>0 AND " \
      "m.sender<>?4 AND (m.at_type=2 OR EXISTS(SELECT 1 FROM mentioned WHERE "            \
      "message=m.position AND account=?4)) ORDER BY m.position" order
  sqlite::Database& database = store_.database();
  auto row = part.mentions
                 ? database.Prepare(part.older ? MENTIONS_QUERY(" DESC") : MENTIONS_QUERY(""),
                                    window.conversation, part.range.after, part.range.before,
                                    window.caller)
                 : database.Prepare(part.older ? HISTORY_QUERY(" DESC") : HISTORY_QUERY(""),
                                    window.conversation, part.range.after, part.range.before);
#undef MENTIONS_QUERY
#undef HISTORY_QUERY
  std::size_t text = 0;
  bool more = false;
  while (!more && row.Step()) {
    more = msgs->size() == part.count || text >= kMostBytes;
    if (more) break;
    msgs->push_back(Show(window, row));
    text += TextOf(msgs->back());
  }
  if (part.older) std::reverse(msgs->begin(), msgs->end());
  return more;
}

Outcome<link::History> HistoryDesk::Answer(const Caller& caller, const link::GetHistory& request) {
  Window window;
  if (const auto why = OpenFor(caller, request.cid, &window); !why.ok()) return why;
  Outcome<link::History> outcome;
  outcome.effects.after_news = true;
  if (window.conversation == 0) return outcome;

  Part part;
  part.mentions = request.mentions;
  part.count = static_cast<std::size_t>(std::clamp(request.count, 1, kMostInHistory));
  Range& range = part.range;
  range = OpenRange(window.conversation, std::max(request.btime, window.opened), request.etime);
  range.after = std::max(range.after, request.mentions ? window.joined : window.hidden);
  part.older = request.older || (request.place.empty() && request.time == 0);
  if (!request.place.empty()) {
    const auto place = ParsePosition(request.place);
    if (!place) return Failure(biz::kEngineNotFound, L"the history has no such place");
    if (part.older) range.before = std::min(range.before, *place);
    if (!part.older) range.after = std::max(range.after, *place);
  } else if (request.time != 0) {
    const Range there = OpenRange(window.conversation, part.older ? 0 : request.time,
                                  part.older ? request.time : 0);
    range.after = std::max(range.after, there.after);
    range.before = std::min(range.before, there.before);
  }
  std::vector<link::Message>& msgs = outcome.reply.msgs;
  const bool more = ReadPart(window, part, &msgs);
  if (more) outcome.reply.next = part.older ? msgs.front().place : msgs.back().place;
  return outcome;
}

Outcome<link::Context> HistoryDesk::Answer(const Caller& caller, const link::GetContext& request) {
  Window window;
  if (const auto why = OpenFor(caller, request.cid, &window); !why.ok()) return why;
  Position place = 0;
  if (const auto sender = store_.accounts().Find(request.message.from)) {
    const auto known = store_.mail().Find(window.conversation, sender->id, request.message.msgid);
    if (known) place = known->position;
  }
  const Range open = OpenRange(window.conversation, window.opened, 0);
  const Position after = std::max(open.after, window.hidden);
  if (place <= after) return Failure(biz::kEngineNotFound, L"there is no such message");
  Outcome<link::Context> outcome;
  outcome.effects.after_news = true;
  const auto count = static_cast<std::size_t>(std::clamp(request.count, 1, kMostInHistory));
  const std::size_t older = count / 2;
  // The message itself begins the newer part, which is never empty therefore.
  const bool older_left =
      ReadPart(window, {{after, place}, true, false, older}, &outcome.reply.msgs);
  std::vector<link::Message> newer;
  const bool newer_left =
      ReadPart(window, {{place - 1, kNever}, false, false, count - older}, &newer);
  outcome.reply.msgs.insert(outcome.reply.msgs.end(), std::make_move_iterator(newer.begin()),
                            std::make_move_iterator(newer.end()));
  outcome.reply.ends = !older_left || !newer_left;
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
