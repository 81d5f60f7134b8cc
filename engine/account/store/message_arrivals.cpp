// How messages come into the store: sent, told by the server, fetched from its history.
#include <algorithm>

#include "account/store/message_schema.h"
#include "account/store/message_store.h"

namespace imsdk::account {

namespace {

// Among how many of the newest messages a sender's earlier one is looked for.
constexpr std::int64_t kLookedThrough = 1000;

}  // namespace

std::int64_t MessageStore::FindSender(const biz::IMUserID& user) {
  if (user == self_) return kOwn;
  auto row =
      database().Prepare("SELECT id FROM users WHERE appkey=? AND nick=?", user.appkey, user.nick);
  return row.Step() ? row.Int64(0) : -1;
}

std::int64_t MessageStore::SenderOf(const biz::IMUserID& user) {
  if (const std::int64_t known = FindSender(user); known >= 0) return known;
  database().Prepare("INSERT INTO users(appkey, nick) VALUES(?,?)", user.appkey, user.nick).Run();
  return database().LastInsertId();
}

std::int64_t MessageStore::NextArrival() {
  if (last_arrival_ == 0) {
    // Arrivals are compared with those of unread messages only.
    auto row = database().Prepare(
        "SELECT coalesce(max(arrival), 0) FROM messages INDEXED BY messages_unread "
        "WHERE readflag=0 AND msgstatus=3");
    if (row.Step()) last_arrival_ = row.Int64(0);
  }
  return ++last_arrival_;
}

bool MessageStore::WasDeleted(std::int64_t conversation, std::int64_t sender, std::int64_t msgid) {
  auto row =
      database().Prepare("SELECT 1 FROM deleted WHERE msgid=? AND conversation=? AND sender=?",
                         msgid, conversation, sender);
  return row.Step();
}

std::int64_t MessageStore::Add(const biz::IMMessage& message, const std::string& place,
                               const Adding& adding) {
  const std::int64_t row = places_.Choose(PositionOf(message));
  const auto state = static_cast<std::int32_t>(
      message.tribeat.msgreaded == biz::kMsgRead ? MentionState::kTold : MentionState::kUnread);
  database()
      .Prepare(
          "INSERT INTO messages(place, arrival, part, conversation, sender, msgid, msgtime, "
          "msgtype, msgstatus, svrtime, server_place, readflag, complete, others, fixmsgread, "
          "autochatmsg, syschatmsg, body, at_type, relation, at_read, at_members) "
          "VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?) "
          "ON CONFLICT(msgid, conversation, sender) DO NOTHING",
          row, adding.arrival, adding.part, adding.conversation, adding.sender, message.msgid,
          message.msgtime, message.msgtype, message.msgstatus, message.svrtime, place,
          message.readflag, adding.complete, message.extinfo.others, message.extinfo.fixmsgread,
          message.extinfo.autochatmsg, message.extinfo.syschatmsg, message.msgbody,
          message.tribeat.atmsgtype, message.tribeat.relation2me, std::int64_t{state},
          PackUsers(message.tribeat.atmembers))
      .Run();
  return database().Changes() == 1 ? row : 0;
}

void MessageStore::AddOutgoing(const biz::IMMessage& message, bool complete) {
  const std::int64_t conversation = conversations_.Make(message.cid);
  const std::int64_t part = parts_.Cover(conversation, PositionOf(message), {});
  Add(message, {}, {conversation, kOwn, part, NextArrival(), complete});
}

std::optional<MessageStore::Row> MessageStore::Look(std::int64_t conversation, std::int64_t sender,
                                                    std::int64_t msgid) {
  auto row = database().Prepare(
      "SELECT place, part, arrival FROM messages WHERE msgid=? AND conversation=? AND sender=?",
      msgid, conversation, sender);
  if (!row.Step()) return std::nullopt;
  return Row{row.Int64(0), row.Int64(1), row.Int64(2)};
}

void MessageStore::Learn(std::int64_t row, std::int64_t svrtime, const std::string& place) {
  database()
      .Prepare(
          "UPDATE messages SET svrtime=iif(svrtime=0, ?2, svrtime), "
          "server_place=iif(server_place='', ?3, server_place) "
          "WHERE place=?1 AND (svrtime=0 OR server_place='')",
          row, svrtime, place)
      .Run();
}

std::optional<std::int64_t> MessageStore::AddLive(const Incoming& incoming) {
  const biz::IMMessage& message = incoming.message;
  const std::int64_t conversation = conversations_.Make(message.cid);
  const std::int64_t sender = SenderOf(message.fromid);
  if (WasDeleted(conversation, sender, message.msgid)) return std::nullopt;
  if (const auto known = Look(conversation, sender, message.msgid)) {
    Learn(known->place, message.svrtime, incoming.place);
    if (known->arrival != 0) return std::nullopt;
    const std::int64_t arrival = NextArrival();
    database()
        .Prepare(
            "UPDATE messages SET arrival=?2, readflag=iif(msgstatus=3, ?3, readflag) "
            "WHERE place=?1",
            known->place, arrival, message.readflag)
        .Run();
    return arrival;
  }
  const std::int64_t arrival = NextArrival();
  const std::int64_t part = parts_.Cover(conversation, PositionOf(message), incoming.place);
  Add(message, incoming.place, {conversation, sender, part, arrival});
  if (parts_.Unwant(conversation, sender, message.msgid)) parts_.Found(conversation);
  return arrival;
}

bool MessageStore::HasBefore(std::int64_t conversation, std::int64_t part, std::int64_t sender,
                             std::int64_t msgid) {
  auto row = database().Prepare(
      "SELECT 1 FROM (SELECT sender, msgid, part FROM messages WHERE conversation=? "
      "ORDER BY place DESC LIMIT ?) WHERE sender=? AND part=? AND msgid<? LIMIT 1",
      conversation, kLookedThrough, sender, part, msgid);
  return row.Step();
}

bool MessageStore::MissesPrevious(const Incoming& incoming) {
  const biz::IMMessage& message = incoming.message;
  if (incoming.previous == 0) return false;
  const std::int64_t conversation = conversations_.Find(message.cid);
  const std::int64_t sender = FindSender(message.fromid);
  if (conversation == 0) return false;
  return !Look(conversation, sender, incoming.previous) &&
         !WasDeleted(conversation, sender, incoming.previous) &&
         !Look(conversation, sender, message.msgid) && !parts_.Current(conversation).empty();
}

void MessageStore::OpenHole(const Incoming& incoming) {
  const std::int64_t conversation = conversations_.Find(incoming.message.cid);
  const std::int64_t sender = SenderOf(incoming.message.fromid);
  const auto has_before = [&](const Part& part) {
    return HasBefore(conversation, part.number, sender, incoming.previous);
  };
  const bool inside = has_before(parts_.Current(conversation));
  const auto below = parts_.Below(conversation);
  if (inside || !below) parts_.OpenHole(conversation);
  parts_.Want(conversation, sender, incoming.previous, inside || (below && has_before(*below)));
}

KeptHistory MessageStore::AddHistory(Walk& walk, const link::GetHistory& request,
                                     const std::string& next,
                                     const std::vector<Incoming>& messages) {
  const std::int64_t conversation = conversations_.Make(request.cid);
  const Position deleted = conversations_.DeletedUpTo(conversation);
  const auto below = parts_.Below(conversation);
  // A walk that comes down from what is complete finds what was missed.
  const bool fills = below && parts_.ComesDown(conversation, walk, request);
  struct Look {
    std::int64_t sender = 0;
    std::optional<Row> row;
  };
  std::vector<Look> looks;
  std::size_t reached = messages.size();  // the first one that proves to lie below the hole
  for (std::size_t i = 0; i < messages.size(); ++i) {
    const biz::IMMessage& message = messages[i].message;
    const std::int64_t sender = SenderOf(message.fromid);
    looks.push_back({sender, this->Look(conversation, sender, message.msgid)});
    const auto& row = looks.back().row;
    const bool old = row && below && row->part == below->number &&
                     (below->whole || PositionOf(message) >= below->reach);
    const bool wanted = below && parts_.Unwant(conversation, sender, message.msgid);
    if (old || wanted) reached = std::min(reached, i);
  }
  if (fills) {
    for (std::size_t i = 0; i < messages.size(); ++i) {
      parts_.PassBy(conversation, looks[i].sender, messages[i].message.msgid);
    }
    parts_.Tire(conversation);
  }

  KeptHistory kept;
  std::vector<Walked> walked;
  for (std::size_t i = 0; i < messages.size(); ++i) {
    const auto& [sender, row] = looks[i];
    biz::IMMessage message = messages[i].message;
    const Position position = PositionOf(message);
    if (row) {
      Learn(row->place, message.svrtime, messages[i].place);
      walked.push_back({row->place, row->part, position});
      continue;
    }
    if (position <= deleted || WasDeleted(conversation, sender, message.msgid)) {
      walked.push_back({0, 0, position, position <= deleted});
      continue;
    }
    const bool missed = fills && (reached == messages.size() || i >= reached) &&
                        message.msgstatus != biz::kMsgWithdrawn;
    if (!missed && message.msgstatus == biz::kMsgReceived) message.readflag = biz::kMsgRead;
    const std::int64_t arrival = missed ? NextArrival() : 0;
    walked.push_back(
        {Add(message, messages[i].place, {conversation, sender, 0, arrival}), 0, position});
    ++kept.fresh;
    if (missed) kept.missed.push_back({message, arrival});
    kept.newest = std::move(message);
  }
  parts_.TakeIn(conversation, walk, request, next, walked,
                messages.empty() ? std::string() : messages.front().place);
  return kept;
}

KeptHistory MessageStore::AddScattered(const std::vector<Incoming>& messages) {
  KeptHistory kept;
  for (const Incoming& incoming : messages) {
    biz::IMMessage message = incoming.message;
    const std::int64_t conversation = conversations_.Make(message.cid);
    const std::int64_t sender = SenderOf(message.fromid);
    if (const auto known = Look(conversation, sender, message.msgid)) {
      Learn(known->place, message.svrtime, incoming.place);
      continue;
    }
    if (PositionOf(message) <= conversations_.DeletedUpTo(conversation) ||
        WasDeleted(conversation, sender, message.msgid)) {
      continue;
    }
    if (message.msgstatus == biz::kMsgReceived) message.readflag = biz::kMsgRead;
    Add(message, incoming.place, {conversation, sender, 0, 0});
    ++kept.fresh;
    kept.newest = std::move(message);
  }
  return kept;
}

std::optional<biz::IMMessage> MessageStore::SetArchived(const biz::IMConversationID& cid,
                                                        std::int64_t msgid, std::int64_t svrtime,
                                                        const std::string& place) {
  std::optional<biz::IMMessage> unsent;
  std::int64_t row = 0;
  {
    auto found =
        database().Prepare(MESSAGE_QUERY "WHERE m.msgid=? AND m.conversation=? AND m.sender=0",
                           msgid, conversations_.Find(cid));
    if (!found.Step()) return std::nullopt;
    unsent = ReadMessage(found, self_);
    row = found.Int64(kPlaceColumn);
  }
  Learn(row, svrtime, place);
  if (unsent->msgstatus != biz::kMsgSending && unsent->msgstatus != biz::kMsgFailed) {
    return std::nullopt;
  }
  database().Prepare("UPDATE messages SET msgstatus=1 WHERE place=?", row).Run();
  return unsent;
}

}  // namespace imsdk::account
