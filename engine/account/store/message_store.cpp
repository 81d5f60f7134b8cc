#include "account/store/message_store.h"

#include <algorithm>
#include <utility>

#include "account/conversations/page_limits.h"
#include "account/store/message_schema.h"

namespace imsdk::account {

namespace {

// Messages of one time and one identifier, each of another sender.
constexpr std::int64_t kMostTwins = 32;

}  // namespace

MessageStore::MessageStore(const sqlite::StorePlace& place, const biz::IMUserID& self,
                           std::shared_ptr<OpenStores> open)
    : self_(self), lazy_(place, std::move(open), PrepareMessageStore) {}

std::string MessageStore::LinkPosition() {
  auto row = database().Prepare("SELECT position FROM session");
  return row.Step() ? row.Text(0) : std::string();
}

void MessageStore::SetLinkPosition(const std::string& position) {
  database().Prepare("UPDATE session SET position=?", position).Run();
}

void MessageStore::LosePosition() {
  SetLinkPosition({});
  std::vector<std::int64_t> known;
  {
    // Virtual ones have no history on the server.
    auto row = database().Prepare("SELECT id FROM conversations WHERE type IN (0, 3)");
    while (row.Step()) known.push_back(row.Int64(0));
  }
  for (const std::int64_t conversation : known) {
    if (parts_.Current(conversation).empty()) continue;
    parts_.OpenHole(conversation);
    conversations_.SetWanting(conversation, true);
  }
}

void MessageStore::Recover(const sqlite::Loss& loss) {
  // A store that fell back is right as far as it goes. What was read out of a damaged one may lack
  // anything, so it says nothing of how far the server was read.
  if (loss.kind == sqlite::Loss::Kind::kFellBack) return;
  SetLinkPosition({});
  if (loss.complete) return;
  // Numbers of conversations and users that are lost are given to others.
  database().Execute(
      "DELETE FROM messages WHERE conversation NOT IN (SELECT id FROM conversations) "
      "OR (sender<>0 AND sender NOT IN (SELECT id FROM users))");
  for (const char* table : {"below_holes", "holes", "deleted"}) {
    database().Execute((std::string("DELETE FROM ") + table +
                        " WHERE conversation NOT IN (SELECT id FROM conversations)")
                           .c_str());
  }
}

std::optional<biz::IMMessage> MessageStore::Find(const biz::IMConversationID& cid,
                                                 std::int64_t msgid, const biz::IMUserID& from) {
  auto row = database().Prepare(MESSAGE_QUERY
                                "WHERE m.msgid=?1 AND m.conversation=?2 AND (?3 OR m.sender=?4) "
                                "ORDER BY m.place DESC LIMIT 1",
                                msgid, conversations_.Find(cid), std::int64_t{from.empty()},
                                FindSender(from));
  if (!row.Step()) return std::nullopt;
  return ReadMessage(row, self_);
}

std::optional<biz::IMMessage> MessageStore::FindAnywhere(std::int64_t msgid) {
  auto row =
      database().Prepare(MESSAGE_QUERY "WHERE m.msgid=? ORDER BY m.place DESC LIMIT 1", msgid);
  if (!row.Step()) return std::nullopt;
  return ReadMessage(row, self_);
}

std::string MessageStore::ServerPlace(const biz::IMConversationID& cid, const Position& position) {
  // A page may know the time of an own message from before it was set right.
  auto row = database().Prepare(
      "SELECT server_place FROM messages WHERE msgid=?1 AND conversation=?2 "
      "ORDER BY msgtime=?3 DESC LIMIT 1",
      position.msgid, conversations_.Find(cid), position.msgtime);
  return row.Step() ? row.Text(0) : std::string();
}

biz::IMMessagePage MessageStore::Page(const biz::IMConversationID& cid,
                                      const biz::IMPageRequest& request) {
  const std::int32_t count = CountOf(request.count);
  const Position at{request.msgtime, request.msgid};
  // Without a position the page is the newest one, whichever way it goes on.
  const bool older = request.gohistory || at.is_end();
  const std::int64_t conversation = conversations_.Find(cid);
  auto [range, part] = search_.VisiblePart(conversation, request.ignoreboundary);
  range.GoOnFrom(places_, at, older);
  // One more than asked for tells whether the store goes on; a few have the position of the last.
  const std::int64_t limit = std::int64_t{count} + kMostTwins;
  auto row = older ? database().Prepare(MESSAGE_QUERY
                                        "WHERE m.conversation=?1 AND m.place BETWEEN ?2 AND ?3 "
                                        "AND (?4=-1 OR m.part=?4) ORDER BY m.place DESC LIMIT ?5",
                                        conversation, range.first, range.last, part, limit)
                   : database().Prepare(MESSAGE_QUERY
                                        "WHERE m.conversation=?1 AND m.place BETWEEN ?2 AND ?3 "
                                        "AND (?4=-1 OR m.part=?4) ORDER BY m.place LIMIT ?5",
                                        conversation, range.first, range.last, part, limit);
  biz::IMMessagePage page;
  page.outofcache = true;
  std::size_t text = 0;
  while (row.Step()) {
    biz::IMMessage message = ReadMessage(row, self_);
    // The next page begins behind the position, so messages of one position stay together.
    const bool twin = !page.msgs.empty() && PositionOf(page.msgs.back()) == PositionOf(message);
    if (!twin && (page.msgs.size() >= static_cast<std::size_t>(count) || text > kMostText)) {
      page.outofcache = false;
      break;
    }
    text += message.msgbody.size();
    page.msgs.push_back(std::move(message));
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
      "SELECT " CONVERSATION_COLUMNS
      ", coalesce(m.msgtime, 0), coalesce(m.msgid, 0), "
      "(SELECT count(*) FROM messages WHERE conversation=c.id AND readflag=0 AND msgstatus=3), "
      "(SELECT max(arrival) FROM messages WHERE conversation=c.id AND readflag=0 AND msgstatus=3) "
      "FROM conversations c LEFT JOIN messages m ON m.place="
      "(SELECT place FROM messages WHERE conversation=c.id ORDER BY place DESC LIMIT 1) "
      "WHERE m.place IS NOT NULL OR c.type=3");
  std::vector<StoredConversation> found;
  while (row.Step()) {
    found.push_back(
        {ReadConversation(row, 0), {row.Int64(4), row.Int64(5)}, row.Int64(7), row.Int32(6)});
    // What comes is told from these even when all of them are read by then.
    last_arrival_ = std::max(last_arrival_, row.Int64(7));
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
  while (row.Step()) found.push_back({ReadMessage(row, self_), row.Int64(kArrivalColumn), true});
  return found;
}

std::vector<Unsent> MessageStore::Sending() {
  auto row = database().Prepare(MESSAGE_QUERY
                                "WHERE m.msgstatus IN (0, 2) AND m.msgstatus=0 ORDER BY m.msgid");
  std::vector<Unsent> found;
  while (row.Step()) found.push_back({ReadMessage(row, self_), row.Bool(kCompleteColumn)});
  return found;
}

std::vector<std::pair<biz::IMConversationID, std::int64_t>> MessageStore::Failed() {
  auto row = database().Prepare("SELECT " CONVERSATION_COLUMNS
                                ", m.msgid FROM messages m JOIN conversations c "
                                "ON c.id=m.conversation "
                                "WHERE m.msgstatus IN (0, 2) AND m.msgstatus=2");
  std::vector<std::pair<biz::IMConversationID, std::int64_t>> found;
  while (row.Step()) found.push_back({ReadConversation(row, 0), row.Int64(4)});
  return found;
}

std::optional<Unsent> MessageStore::FindUnsent(const biz::IMConversationID& cid,
                                               std::int64_t msgid) {
  auto row = database().Prepare(MESSAGE_QUERY
                                "WHERE m.msgid=? AND m.conversation=? AND m.sender=0 "
                                "AND m.msgstatus IN (0, 2)",
                                msgid, conversations_.Find(cid));
  if (!row.Step()) return std::nullopt;
  return Unsent{ReadMessage(row, self_), row.Bool(kCompleteColumn)};
}

std::int64_t MessageStore::TimeToSend(const biz::IMConversationID& cid, std::int64_t now) {
  auto row = database().Prepare(
      "SELECT iif(sender=0, msgtime, min(msgtime, svrtime)) FROM messages WHERE conversation=? "
      "ORDER BY place DESC LIMIT 1",
      conversations_.Find(cid));
  return row.Step() ? std::max(now, row.Int64(0) + 1) : now;
}

std::int64_t MessageStore::OwnBefore(const biz::IMConversationID& cid, std::int64_t msgid) {
  auto row = database().Prepare(
      "SELECT msgid FROM messages INDEXED BY messages_own WHERE conversation=? AND sender=0 "
      "AND msgid<? AND msgstatus IN (0, 1, 4) ORDER BY msgid DESC LIMIT 1",
      conversations_.Find(cid), msgid);
  return row.Step() ? row.Int64(0) : 0;
}

}  // namespace imsdk::account
