#include "account/store/message_store.h"

#include <algorithm>
#include <utility>

#include "account/conversations/page_limits.h"
#include "account/store/message_schema.h"

namespace imsdk::account {

MessageStore::MessageStore(const std::filesystem::path& file, const biz::IMUserID& self,
                           std::shared_ptr<OpenStores> open)
    : self_(self), lazy_(file, std::move(open), PrepareMessageStore) {}

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

bool MessageStore::WasDeleted(std::int64_t conversation, const biz::IMMessage& message, bool live) {
  auto row = database().Prepare("SELECT 1 FROM deleted WHERE msgid=? AND conversation=?",
                                message.msgid, conversation);
  if (row.Step()) return true;
  // A live message may be behind by its sender's clock and yet be new.
  return !live && PositionOf(message) <= conversations_.DeletedUpTo(conversation);
}

std::optional<std::int64_t> MessageStore::Add(const biz::IMMessage& message, ChatKind kind,
                                              const Adding& adding) {
  const std::int64_t conversation = conversations_.Make({message.cid, kind});
  if (WasDeleted(conversation, message, adding.live)) return std::nullopt;
  const std::int64_t arrival = NextArrival();
  database()
      .Prepare(
          "INSERT INTO messages(place, arrival, conversation, msgid, msgtime, outgoing, msgtype, "
          "msgstatus, svrtime, readflag, complete, others, fixmsgread, autochatmsg, syschatmsg, "
          "body) VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?) "
          "ON CONFLICT(msgid, conversation) DO NOTHING",
          places_.Choose(PositionOf(message)), arrival, conversation, message.msgid,
          message.msgtime, adding.outgoing, message.msgtype, message.msgstatus, message.svrtime,
          message.readflag, adding.complete, message.extinfo.others, message.extinfo.fixmsgread,
          message.extinfo.autochatmsg, message.extinfo.syschatmsg, message.msgbody)
      .Run();
  if (database().Changes() != 1) return std::nullopt;
  if (adding.live) conversations_.Cover(conversation, PositionOf(message));
  return arrival;
}

void MessageStore::AddOutgoing(const biz::IMMessage& message, bool complete) {
  Add(message, kSingleChat, {.outgoing = true, .complete = complete});
}

std::optional<std::int64_t> MessageStore::AddIncoming(const biz::IMMessage& message,
                                                      ChatKind kind) {
  return Add(message, kind, {});
}

std::optional<std::int64_t> MessageStore::AddSynced(const biz::IMMessage& message, Synced how) {
  return Add(message, kSingleChat,
             {.outgoing = message.fromid == self_, .live = how == Synced::kLive});
}

std::optional<biz::IMMessage> MessageStore::Find(const ChatKey& key, std::int64_t msgid) {
  auto row = database().Prepare(MESSAGE_QUERY "WHERE m.msgid=? AND m.conversation=?", msgid,
                                conversations_.Find(key));
  if (!row.Step()) return std::nullopt;
  return ReadMessage(row, self_);
}

std::optional<biz::IMMessage> MessageStore::FindAnywhere(std::int64_t msgid) {
  auto row = database().Prepare(MESSAGE_QUERY "WHERE m.msgid=? AND c.kind=0", msgid);
  if (!row.Step()) return std::nullopt;
  return ReadMessage(row, self_);
}

biz::IMMessagePage MessageStore::Page(const ChatKey& key, const biz::IMPageRequest& request) {
  const std::int32_t count = CountOf(request.count);
  const Position at{request.msgtime, request.msgid};
  // Without a position the page is the newest one, whichever way it goes on.
  const bool older = request.gohistory || at.is_end();
  PlaceRange range = search_.CompletePart(key, request.ignoreboundary);
  range.GoOnFrom(places_, at, older);
  const std::int64_t conversation = conversations_.Find(key);
  // One more than asked for tells whether the store goes on.
  const std::int64_t limit = std::int64_t{count} + 1;
  auto row = older ? database().Prepare(MESSAGE_QUERY
                                        "WHERE m.conversation=? AND m.place BETWEEN ? AND ? "
                                        "ORDER BY m.place DESC LIMIT ?",
                                        conversation, range.first, range.last, limit)
                   : database().Prepare(MESSAGE_QUERY
                                        "WHERE m.conversation=? AND m.place BETWEEN ? AND ? "
                                        "ORDER BY m.place LIMIT ?",
                                        conversation, range.first, range.last, limit);
  biz::IMMessagePage page;
  page.outofcache = true;
  std::size_t text = 0;
  while (row.Step()) {
    if (page.msgs.size() == static_cast<std::size_t>(count) || text > kMostText) {
      page.outofcache = false;
      break;
    }
    page.msgs.push_back(ReadMessage(row, self_));
    text += page.msgs.back().msgbody.size();
  }
  if (older) std::reverse(page.msgs.begin(), page.msgs.end());
  return page;
}

Position MessageStore::NewestOf(std::int64_t conversation) {
  auto row = database().Prepare(
      "SELECT msgtime, msgid FROM messages WHERE conversation=? ORDER BY place DESC LIMIT 1",
      conversation);
  return row.Step() ? Position{row.Int64(0), row.Int64(1)} : Position{};
}

std::vector<StoredConversation> MessageStore::Conversations() {
  auto row = database().Prepare(
      "SELECT c.appkey, c.nick, c.kind, m.msgtime, m.msgid, "
      "(SELECT count(*) FROM messages WHERE conversation=c.id AND readflag=0 AND msgstatus=3), "
      "(SELECT max(arrival) FROM messages WHERE conversation=c.id AND readflag=0 AND msgstatus=3) "
      "FROM conversations c JOIN messages m ON m.place="
      "(SELECT place FROM messages WHERE conversation=c.id ORDER BY place DESC LIMIT 1)");
  std::vector<StoredConversation> found;
  while (row.Step()) {
    found.push_back({{{row.Wide(0), row.Wide(1)}, static_cast<ChatKind>(row.Int32(2))},
                     {row.Int64(3), row.Int64(4)},
                     row.Int64(6),
                     row.Int32(5)});
    // What comes is told from these even when all of them are read by then.
    last_arrival_ = std::max(last_arrival_, row.Int64(6));
  }
  return found;
}

std::vector<Arrived> MessageStore::NewestUnread(std::size_t count) {
  auto row = database().Prepare(MESSAGE_QUERY
                                "WHERE m.place IN (SELECT place FROM messages "
                                "WHERE readflag=0 AND msgstatus=3 "
                                "ORDER BY arrival DESC LIMIT ?) ORDER BY m.arrival DESC",
                                static_cast<std::int64_t>(count));
  std::vector<Arrived> found;
  while (row.Step()) {
    found.push_back({ReadMessage(row, self_), row.Int64(kArrivalColumn),
                     static_cast<ChatKind>(row.Int32(kKindColumn)), true});
  }
  return found;
}

std::vector<Unsent> MessageStore::Sending() {
  auto row = database().Prepare(MESSAGE_QUERY
                                "WHERE m.msgstatus IN (0, 2) AND m.msgstatus=0 ORDER BY m.msgid");
  std::vector<Unsent> found;
  while (row.Step()) found.push_back({ReadMessage(row, self_), row.Bool(kCompleteColumn)});
  return found;
}

std::vector<std::pair<biz::IMUserID, std::int64_t>> MessageStore::Failed() {
  auto row = database().Prepare(
      "SELECT c.appkey, c.nick, m.msgid FROM messages m JOIN conversations c "
      "ON c.id=m.conversation WHERE m.msgstatus IN (0, 2) AND m.msgstatus=2");
  std::vector<std::pair<biz::IMUserID, std::int64_t>> found;
  while (row.Step()) found.push_back({{row.Wide(0), row.Wide(1)}, row.Int64(2)});
  return found;
}

std::optional<Unsent> MessageStore::FindUnsent(const biz::IMUserID& cid, std::int64_t msgid) {
  auto row = database().Prepare(MESSAGE_QUERY
                                "WHERE m.msgid=? AND m.conversation=? AND m.msgstatus IN (0, 2)",
                                msgid, conversations_.Find(cid));
  if (!row.Step()) return std::nullopt;
  return Unsent{ReadMessage(row, self_), row.Bool(kCompleteColumn)};
}

}  // namespace imsdk::account
