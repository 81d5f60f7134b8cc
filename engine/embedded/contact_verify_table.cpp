#include "embedded/contact_verify_table.h"

#include <algorithm>
#include <limits>

namespace imsdk::embedded {

namespace {

constexpr std::int32_t kUsualCount = 20;
constexpr std::int32_t kMostInPage = 200;

#define VERIFY_QUERY "SELECT id, audience, sender, type, msgtime, words, gid FROM contact_verify "
#define IS_OPEN "type IN (1,6,7) "

std::optional<StoredContactVerify> ReadVerify(sqlite::Statement row) {
  if (!row.Step()) return std::nullopt;
  return StoredContactVerify{
      row.Int64(0), row.Int64(1), row.Int64(2), static_cast<biz::IMContactVerifyType>(row.Int32(3)),
      row.Int64(4), row.Wide(5),  row.Int64(6)};
}

#define MESSAGE_QUERY                                                                        \
  "SELECT v.id, v.type, v.msgtime, v.words, v.gid, a.appkey, a.nick, "                       \
  "coalesce(nullif(p.display, ''), a.nick), coalesce(p.portrait, '') FROM contact_verify v " \
  "JOIN accounts a ON a.id=v.sender LEFT JOIN profiles p ON p.account=v.sender "
#define PAGE_QUERY(order)                                              \
  MESSAGE_QUERY                                                        \
  "WHERE v.audience=?1 AND v.deleted=0 AND v.id>=?2 AND v.id<=?3 AND " \
  "v.msgtime>=?4 AND v.msgtime<=?5 ORDER BY v.id" order " LIMIT ?6"

biz::IMContactVerifyMsg ReadMessage(const sqlite::Statement& row) {
  biz::IMContactVerifyMsg msg;
  msg.msgid = row.Int64(0);
  msg.type = static_cast<biz::IMContactVerifyType>(row.Int32(1));
  msg.msgtime = row.Int64(2);
  msg.authinfo = row.Wide(3);
  msg.gidinpeergroup = row.Int64(4);
  msg.fromid.userid = {row.Wide(5), row.Wide(6)};
  msg.fromid.display = msg.fromname = row.Wide(7);
  msg.fromid.portrait = row.Wide(8);
  return msg;
}

}  // namespace

std::int64_t ContactVerifyTable::Add(const StoredContactVerify& verify) {
  database_
      .Prepare(
          "INSERT INTO contact_verify(audience, sender, type, msgtime, words, gid) "
          "VALUES(?,?,?,?,?,?)",
          verify.audience, verify.sender, verify.type, verify.msgtime, verify.words, verify.gid)
      .Run();
  return database_.LastInsertId();
}

std::optional<StoredContactVerify> ContactVerifyTable::Find(std::int64_t audience,
                                                            std::int64_t id) {
  return ReadVerify(
      database_.Prepare(VERIFY_QUERY "WHERE id=? AND audience=? AND deleted=0", id, audience));
}

std::optional<StoredContactVerify> ContactVerifyTable::Open(std::int64_t audience,
                                                            std::int64_t sender) {
  return ReadVerify(database_.Prepare(VERIFY_QUERY "WHERE audience=? AND sender=? AND " IS_OPEN
                                                   "ORDER BY id DESC LIMIT 1",
                                      audience, sender));
}

std::int64_t ContactVerifyTable::CountOpen(std::int64_t sender) {
  auto row =
      database_.Prepare("SELECT count(*) FROM contact_verify WHERE sender=? AND " IS_OPEN, sender);
  row.Step();
  return row.Int64(0);
}

void ContactVerifyTable::Change(const StoredContactVerify& verify) {
  database_
      .Prepare(
          "UPDATE contact_verify SET type=?2, msgtime=?3, words=?4, gid=?5, "
          "deleted=deleted AND ?2<>1 WHERE id=?1",
          verify.id, verify.type, verify.msgtime, verify.words, verify.gid)
      .Run();
}

std::vector<biz::IMContactVerifyMsg> ContactVerifyTable::Page(
    std::int64_t audience, const biz::IMContactVerifyPage& page) {
  constexpr std::int64_t kEnd = std::numeric_limits<std::int64_t>::max();
  const bool older = page.msgid == 0 || page.gohistory != 0;
  const std::int64_t beside = page.ignoreboundary != 0 ? 1 : 0;
  // No identifier is that near to the end of the numbers; whoever names one gets nothing.
  const std::int64_t from = older ? 0 : std::min(page.msgid, kEnd - 1) + beside;
  const std::int64_t upto =
      !older || page.msgid == 0 ? kEnd : std::max<std::int64_t>(page.msgid, 1) - beside;
  const std::int32_t count = page.count <= 0 ? kUsualCount : std::min(page.count, kMostInPage);
  auto row = database_.Prepare(older ? PAGE_QUERY(" DESC") : PAGE_QUERY(""), audience, from, upto,
                               page.btime, page.etime == 0 ? kEnd : page.etime, count);
  std::vector<biz::IMContactVerifyMsg> msgs;
  while (row.Step()) msgs.push_back(ReadMessage(row));
  if (older) std::reverse(msgs.begin(), msgs.end());
  return msgs;
}

biz::IMContactVerifyMsg ContactVerifyTable::Message(std::int64_t id) {
  auto row = database_.Prepare(MESSAGE_QUERY "WHERE v.id=?", id);
  return row.Step() ? ReadMessage(row) : biz::IMContactVerifyMsg{};
}

void ContactVerifyTable::Delete(std::int64_t audience, std::int64_t id) {
  database_.Prepare("UPDATE contact_verify SET deleted=1 WHERE audience=? AND id=?", audience, id)
      .Run();
}

}  // namespace imsdk::embedded
