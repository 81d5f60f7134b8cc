// What happens to messages after they came: sent, read, reported, withdrawn, deleted.
#include <algorithm>

#include "account/store/message_schema.h"
#include "account/store/message_store.h"

namespace imsdk::account {

namespace {

constexpr std::int64_t kMostFlags = 200;
constexpr std::int64_t kMostReported = 1000;

// After all messages were deleted, a server that missed the acknowledgement may send the last ones
// again. They are known by themselves, as a position says nothing about a live message.
constexpr std::int64_t kRemembered = 1000;

}  // namespace

void MessageStore::SetStatus(const biz::IMConversationID& cid, std::int64_t msgid,
                             biz::IMMsgStatus status, std::int64_t svrtime,
                             const std::string& place) {
  database()
      .Prepare(
          "UPDATE messages SET msgstatus=?1, svrtime=iif(?2=0, svrtime, ?2), "
          "server_place=iif(?3='', server_place, ?3) "
          "WHERE msgid=?4 AND conversation=?5 AND sender=0 AND msgstatus<>4 "
          "AND (msgstatus<>1 OR ?1<>2)",
          std::int64_t{status}, svrtime, place, msgid, conversations_.Find(cid))
      .Run();
}

void MessageStore::MarkRead(const biz::IMConversationID& cid, std::int64_t arrival) {
  const std::int64_t conversation = conversations_.Find(cid);
  {
    auto row = database().Prepare(
        "SELECT msgtime, msgid FROM messages INDEXED BY messages_unread "
        "WHERE conversation=?1 AND readflag=0 AND msgstatus=3 AND arrival<=?2 AND place < "
        "(SELECT coalesce(min(place), 9223372036854775807) FROM messages INDEXED BY "
        "messages_unread WHERE conversation=?1 AND readflag=0 AND msgstatus=3 AND arrival>?2) "
        "ORDER BY place DESC LIMIT 1",
        conversation, arrival);
    if (row.Step()) {
      conversations_.RaiseReadBoundary(conversation, {row.Int64(0), row.Int64(1)});
    }
  }
  database()
      .Prepare(
          "UPDATE messages INDEXED BY messages_unread SET readflag=1 "
          "WHERE conversation=? AND arrival<=? AND readflag=0 AND msgstatus=3",
          conversation, arrival)
      .Run();
}

std::vector<NoLongerUnread> MessageStore::MarkReadUpTo(const biz::IMConversationID& cid,
                                                       const Position& position) {
  const std::int64_t conversation = conversations_.Find(cid);
  auto row = database().Prepare(
      "UPDATE messages INDEXED BY messages_unread SET readflag=1 "
      "WHERE conversation=? AND readflag=0 AND msgstatus=3 AND place<? "
      "RETURNING msgtime, msgid, arrival",
      conversation, places_.FirstAfter(position));
  std::vector<NoLongerUnread> read;
  while (row.Step()) read.push_back({{row.Int64(0), row.Int64(1)}, row.Int64(2)});
  conversations_.RaiseReadBoundary(conversation, position);
  return read;
}

std::optional<Withdrawn> MessageStore::Withdraw(const biz::IMConversationID& cid,
                                                const biz::IMUserID& sender, std::int64_t msgid) {
  Withdrawn withdrawn;
  std::int64_t place = 0;
  {
    auto row = database().Prepare(
        MESSAGE_QUERY "WHERE m.msgid=? AND m.conversation=? AND m.sender=? AND m.msgstatus<>4",
        msgid, conversations_.Find(cid), FindSender(sender));
    if (!row.Step()) return std::nullopt;
    withdrawn.message = ReadMessage(row, self_);
    withdrawn.arrival = row.Int64(kArrivalColumn);
    place = row.Int64(kPlaceColumn);
  }
  if (withdrawn.message.msgstatus == biz::kMsgReceived &&
      withdrawn.message.readflag == biz::kMsgUnread) {
    withdrawn.unread.push_back({PositionOf(withdrawn.message), withdrawn.arrival});
  }
  database()
      .Prepare(
          "UPDATE messages SET msgstatus=4, readflag=1, body='', others='', at_type=0, "
          "relation=0, at_members='' WHERE place=?",
          place)
      .Run();
  return withdrawn;
}

Removed MessageStore::Delete(const biz::IMConversationID& cid,
                             const std::vector<std::int64_t>& msgids) {
  const std::int64_t conversation = conversations_.Find(cid);
  Removed removed;
  for (const std::int64_t msgid : msgids) {
    std::vector<std::int64_t> senders;
    {
      auto row = database().Prepare(
          "DELETE FROM messages WHERE msgid=? AND conversation=? AND msgstatus<>0 "
          "RETURNING msgtime, arrival, readflag=0 AND msgstatus=3, sender",
          msgid, conversation);
      while (row.Step()) {
        ++removed.count;
        if (row.Bool(2)) removed.unread.push_back({{row.Int64(0), msgid}, row.Int64(1)});
        senders.push_back(row.Int64(3));
      }
    }
    for (const std::int64_t sender : senders) {
      database()
          .Prepare("INSERT OR IGNORE INTO deleted(msgid, conversation, sender) VALUES(?,?,?)",
                   msgid, conversation, sender)
          .Run();
    }
  }
  removed.newest = NewestOf(conversation);
  return removed;
}

void MessageStore::ClearComplete(const biz::IMConversationID& cid) {
  const std::int64_t conversation = conversations_.Find(cid);
  parts_.Clear(conversation, NewestOf(conversation));
}

Position MessageStore::BeginDeleteAll(const biz::IMConversationID& cid) {
  const std::int64_t conversation = conversations_.Find(cid);
  const Position newest = NewestOf(conversation);
  conversations_.SetDeletedUpTo(conversation,
                                std::max(conversations_.DeletedUpTo(conversation), newest));
  parts_.SetWhole(conversation);
  database()
      .Prepare(
          "INSERT OR IGNORE INTO deleted(msgid, conversation, sender) "
          "SELECT msgid, conversation, sender FROM messages WHERE conversation=? AND msgstatus<>0 "
          "ORDER BY place DESC LIMIT ?",
          conversation, kRemembered)
      .Run();
  return newest;
}

Removed MessageStore::DeleteNext(const biz::IMConversationID& cid, const Position& upto) {
  const std::int64_t conversation = conversations_.Find(cid);
  Removed removed;
  {
    auto row = database().Prepare(
        "DELETE FROM messages WHERE place IN (SELECT place FROM messages "
        "WHERE conversation=? AND msgstatus<>0 AND place<? ORDER BY place DESC LIMIT ?) "
        "RETURNING msgtime, msgid, arrival, readflag=0 AND msgstatus=3",
        conversation, places_.FirstAfter(upto), std::int64_t{kDeletedAtOnce});
    while (row.Step()) {
      const Position position{row.Int64(0), row.Int64(1)};
      if (removed.count++ == 0 || position < removed.oldest) removed.oldest = position;
      if (row.Bool(3)) removed.unread.push_back({position, row.Int64(2)});
    }
  }
  removed.newest = NewestOf(conversation);
  return removed;
}

std::vector<biz::IMFlagMsgReaded> MessageStore::SetPeerRead(
    const biz::IMConversationID& cid, const std::vector<std::int64_t>& msgids) {
  const std::int64_t conversation = conversations_.Find(cid);
  std::vector<biz::IMFlagMsgReaded> changed;
  for (const std::int64_t msgid : msgids) {
    auto row = database().Prepare(
        "UPDATE messages SET readflag=1 WHERE msgid=? AND conversation=? AND sender=0 "
        "AND readflag=0 AND msgstatus<>4 RETURNING msgtime",
        msgid, conversation);
    if (row.Step()) changed.push_back({cid, msgid, row.Int64(0), biz::kMsgRead});
  }
  return changed;
}

std::vector<biz::IMFlagMsgReaded> MessageStore::PeerReadFlags(
    const biz::IMConversationID& cid, const std::vector<std::int64_t>& msgids) {
  const std::int64_t conversation = conversations_.Find(cid);
  std::vector<biz::IMFlagMsgReaded> flags;
  if (msgids.empty()) {
    auto row = database().Prepare(
        "SELECT msgid, msgtime, readflag FROM messages INDEXED BY messages_own "
        "WHERE conversation=? AND sender=0 AND syschatmsg=0 ORDER BY msgid DESC LIMIT ?",
        conversation, kMostFlags);
    while (row.Step()) flags.push_back({cid, row.Int64(0), row.Int64(1), row.Int32(2)});
    std::reverse(flags.begin(), flags.end());
  }
  for (const std::int64_t msgid : msgids) {
    auto row = database().Prepare(
        "SELECT msgtime, readflag FROM messages WHERE msgid=? AND conversation=? AND sender=0",
        msgid, conversation);
    if (row.Step()) flags.push_back({cid, msgid, row.Int64(0), row.Int32(1)});
  }
  return flags;
}

std::vector<std::int64_t> MessageStore::Reportable(const biz::IMConversationID& cid,
                                                   const std::vector<std::int64_t>& msgids) {
  const std::int64_t conversation = conversations_.Find(cid);
  std::vector<std::int64_t> found;
  if (msgids.empty()) {
    auto row = database().Prepare(
        "SELECT msgid FROM messages INDEXED BY messages_unreported WHERE conversation=? "
        "AND msgstatus=3 AND readflag=1 AND fixmsgread=0 AND syschatmsg=0 ORDER BY place LIMIT ?",
        conversation, kMostReported);
    while (row.Step()) found.push_back(row.Int64(0));
  }
  for (const std::int64_t msgid : msgids) {
    auto row = database().Prepare(
        "SELECT 1 FROM messages WHERE msgid=? AND conversation=? AND msgstatus=3 "
        "AND fixmsgread=0 AND syschatmsg=0",
        msgid, conversation);
    if (row.Step()) found.push_back(msgid);
  }
  return found;
}

void MessageStore::SetReported(const biz::IMConversationID& cid,
                               const std::vector<std::int64_t>& msgids) {
  const std::int64_t conversation = conversations_.Find(cid);
  for (const std::int64_t msgid : msgids) {
    database()
        .Prepare(
            "UPDATE messages SET fixmsgread=1 WHERE msgid=? AND conversation=? AND msgstatus=3",
            msgid, conversation)
        .Run();
  }
}

}  // namespace imsdk::account
