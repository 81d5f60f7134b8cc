#include "embedded/verify_table.h"

#include <algorithm>
#include <limits>

namespace imsdk::embedded {

namespace {

constexpr std::int32_t kUsualCount = 20;
constexpr std::int32_t kMostInPage = 200;
constexpr std::int32_t kMostBeyond = 1000;

#define VERIFY_COLUMNS \
  "id, audience, conversation, sender, subject, type, msgtime, words, manager FROM verify "

StoredVerify ReadVerify(const sqlite::Statement& row) {
  return {row.Int64(0), row.Int64(1), row.Int64(2),
          row.Int64(3), row.Int64(4), static_cast<biz::TribeVerifyType>(row.Int32(5)),
          row.Int64(6), row.Wide(7),  row.Int64(8)};
}

#define PAGE_QUERY(order)                                                                      \
  "SELECT v.id, s.appkey, s.nick, t.id, t.name, v.msgtime, v.words, m.appkey, m.nick, v.type " \
  "FROM verify v JOIN accounts s ON s.id=v.sender JOIN tribes t ON "                           \
  "t.conversation=v.conversation LEFT JOIN accounts m ON m.id=v.manager "                      \
  "WHERE v.audience IN (SELECT ?1 UNION ALL SELECT -conversation FROM members "                \
  "WHERE account=?1 AND level>1) AND v.id>?2 AND v.id<?3 AND v.msgtime>=?4 AND v.msgtime<=?5 " \
  "AND NOT EXISTS(SELECT 1 FROM verify_deleted d WHERE d.account=?1 AND d.verify=v.id) "       \
  "ORDER BY v.id" order " LIMIT ?6"

}  // namespace

std::int64_t VerifyTable::Add(const StoredVerify& verify) {
  database_
      .Prepare(
          "INSERT INTO verify(audience, conversation, sender, subject, type, msgtime, words, "
          "manager) VALUES(?,?,?,?,?,?,?,?)",
          verify.audience, verify.conversation, verify.sender, verify.subject, verify.type,
          verify.msgtime, verify.words, verify.manager)
      .Run();
  return database_.LastInsertId();
}

std::optional<StoredVerify> VerifyTable::Find(std::int64_t id) {
  auto row = database_.Prepare("SELECT " VERIFY_COLUMNS "WHERE id=?", id);
  if (!row.Step()) return std::nullopt;
  return ReadVerify(row);
}

std::vector<StoredVerify> VerifyTable::Open(std::int64_t conversation, std::int64_t subject) {
  auto row =
      database_.Prepare("SELECT " VERIFY_COLUMNS "WHERE conversation=? AND subject=? AND type<3",
                        conversation, subject);
  std::vector<StoredVerify> open;
  while (row.Step()) open.push_back(ReadVerify(row));
  return open;
}

void VerifyTable::SetWords(std::int64_t id, const std::wstring& words) {
  database_.Prepare("UPDATE verify SET words=? WHERE id=?", words, id).Run();
}

void VerifyTable::Decide(const StoredVerify& decided) {
  database_
      .Prepare("UPDATE verify SET type=?, words=?, manager=? WHERE id=?", decided.type,
               decided.words, decided.manager, decided.id)
      .Run();
}

std::vector<biz::IMTribeVerifyMsg> VerifyTable::Page(std::int64_t account,
                                                     const biz::IMTribeVerifyPage& page) {
  constexpr std::int64_t kEnd = std::numeric_limits<std::int64_t>::max();
  const bool older = page.msgid == 0 || page.gohistory != 0;
  const std::int64_t after = older ? 0 : page.msgid;
  const std::int64_t before = older && page.msgid != 0 ? page.msgid : kEnd;
  const std::int32_t most = page.ignoreboundary != 0 ? kMostBeyond : kMostInPage;
  const std::int32_t count = page.count <= 0 ? kUsualCount : std::min(page.count, most);
  auto row = database_.Prepare(older ? PAGE_QUERY(" DESC") : PAGE_QUERY(""), account, after, before,
                               page.btime, page.etime == 0 ? kEnd : page.etime, count);
  std::vector<biz::IMTribeVerifyMsg> msgs;
  while (row.Step()) {
    biz::IMTribeVerifyMsg& msg = msgs.emplace_back();
    msg.msgid = row.Int64(0);
    msg.fromid = {row.Wide(1), row.Wide(2)};
    msg.fromname = msg.fromid.nick;
    msg.tribeid = {row.Int64(3)};
    msg.tribename = row.Wide(4);
    msg.msgtime = row.Int64(5);
    msg.authinfo = row.Wide(6);
    msg.managerid = {row.Wide(7), row.Wide(8)};
    msg.type = static_cast<biz::TribeVerifyType>(row.Int32(9));
  }
  if (older) std::reverse(msgs.begin(), msgs.end());
  return msgs;
}

void VerifyTable::Delete(std::int64_t account, std::int64_t id) {
  database_
      .Prepare("INSERT OR IGNORE INTO verify_deleted(account, verify) VALUES(?,?)", account, id)
      .Run();
}

}  // namespace imsdk::embedded
